// Checks marlo::LastChange: SetXMLText of arbitrary text answers 0 or -1998 and never crashes; the walk of
// what it read (sets, names, values, channels) ends and hands out only valid texts; and what was read, or
// built with SetStateVariable from arbitrary names and values, is written as well-formed XML that reads
// back the same (the writer's escaping and the reader agree).
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "FuzzScript.h"
#include "marlo/LastChange.h"

namespace {

struct Variable {
  std::string name;
  std::string value;
  bool hasChannel;
  std::string channel;
  bool operator==(const Variable& other) const {
    return name == other.name && value == other.value && hasChannel == other.hasChannel && channel == other.channel;
  }
};
struct Set {
  unsigned long instanceId;
  std::vector<Variable> variables;
  bool operator==(const Set& other) const { return instanceId == other.instanceId && variables == other.variables; }
};

// The walk a reader of the document makes; it must end, and every name and value must be there.
std::vector<Set> Walk(const marlo::LastChange& document) {
  std::vector<Set> sets;
  for (int i = 0;; ++i) {
    const marlo::LastChange::VariableSet* set = document.GetVariableSet(i);
    if (set == nullptr) break;
    FUZZ_CHECK(i < 100000);
    Set read{document.GetInstanceId(set), {}};
    for (int j = 0;; ++j) {
      const char* name = document.GetVariableName(set, j);
      const char* value = document.GetVariableValue(set, j);
      const char* channel = document.GetVariableChannel(set, j);
      if (name == nullptr) {
        FUZZ_CHECK(value == nullptr && channel == nullptr);
        break;
      }
      FUZZ_CHECK(name[0] != '\0' && value != nullptr);
      read.variables.push_back({name, value, channel != nullptr, channel != nullptr ? channel : ""});
    }
    sets.push_back(read);
  }
  FUZZ_CHECK(document.GetVariableName(nullptr, 0) == nullptr);
  return sets;
}

// `document` is written as well-formed XML, and what a reader gets from it is stable: written and read again,
// the same sets and the same text. With `sets`, the reading gives exactly those. (A document built with
// SetStateVariable may read back otherwise, on purpose: bytes that are not valid XML text are dropped or
// replaced, so two channels that differed only in them become one.)
void CheckRoundTrip(marlo::LastChange& document, const std::vector<Set>* sets) {
  const char* xml = document.GetXMLText();
  FUZZ_CHECK(xml != nullptr);
  marlo::LastChange read;
  FUZZ_CHECK(read.SetXMLText(xml) == 0);
  const std::vector<Set> readSets = Walk(read);
  if (sets != nullptr) FUZZ_CHECK(readSets == *sets);
  const char* rewritten = read.GetXMLText();
  FUZZ_CHECK(rewritten != nullptr);
  const std::string text = rewritten;
  marlo::LastChange again;
  FUZZ_CHECK(again.SetXMLText(text.c_str()) == 0);
  FUZZ_CHECK(Walk(again) == readSets);
  const char* third = again.GetXMLText();
  FUZZ_CHECK(third != nullptr && text == third);
}

constexpr const char* kNames[] = {"TransportState", "CurrentTrackURI", "Volume", "Mute", "_x", "a-b.c", "A1", "",
                                  "1a", "a:b", "\xC3\xA9t\xC3\xA9"};
constexpr const char* kValues[] = {"PLAYING", "", "&<>\"'", "a\tb\nc\rd", "\x01\x1F", "\xC3\xA9", "\xFF\xFE", "0"};
constexpr const char* kChannels[] = {"Master", "LF", "", "&\""};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size == 0) return 0;
  marlo::LastChange document;
  FUZZ_CHECK(document.SetType(data[0] & 1) == 0);
  if ((data[0] & 2) == 0) {
    // Reading: the rest of the input is the document.
    const std::string text(reinterpret_cast<const char*>(data + 1), size - 1);
    const int32_t result = document.SetXMLText(text.c_str());
    FUZZ_CHECK(result == 0 || result == -1998);
    const std::vector<Set> sets = Walk(document);
    if (result != 0) FUZZ_CHECK(sets.empty());
    CheckRoundTrip(document, &sets);
    return 0;
  }
  // Building: variables the input names, then the same reading.
  FuzzScript script(data + 1, size - 1);
  while (!script.Done()) {
    const unsigned long instance = script.Between<unsigned long>(0, 3);
    const std::string name = script.Pick(kNames, 16);
    const std::string value = script.Pick(kValues, 64);
    const bool hasChannel = script.Flag();
    const std::string channel = script.Pick(kChannels, 16);
    const int32_t result =
        document.SetStateVariable(instance, name.c_str(), value.c_str(), hasChannel ? channel.c_str() : nullptr);
    FUZZ_CHECK(result == 0 || result == -1998);
  }
  Walk(document);
  CheckRoundTrip(document, nullptr);
  return 0;
}
