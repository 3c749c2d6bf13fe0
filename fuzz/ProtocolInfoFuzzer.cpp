// Checks marlo::ProtocolInfo::Set with arbitrary text: it answers 0 or -1998; a refused text leaves the
// entry as it was; an accepted one has four non-empty fields without ',' or control characters (the first
// three without ':'), Get prints them joined by ':', and setting that print again gives the same fields.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "FuzzCheck.h"
#include "marlo/ProtocolInfo.h"

namespace {

constexpr char kKnown[] = "http-get:*:audio/flac:*";

std::string Printed(const marlo::ProtocolInfo& entry) {
  char* out = nullptr;
  FUZZ_CHECK(entry.Get(&out) == 0 && out != nullptr);
  const std::string printed(out);
  delete[] out;
  return printed;
}

void CheckField(const char* field, bool colonAllowed) {
  FUZZ_CHECK(field != nullptr && field[0] != '\0');
  for (const char* c = field; *c != '\0'; ++c) {
    const unsigned char byte = static_cast<unsigned char>(*c);
    FUZZ_CHECK(byte >= 0x20 && byte != 0x7F && byte != ',');
    FUZZ_CHECK(colonAllowed || byte != ':');
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  marlo::ProtocolInfo entry;
  FUZZ_CHECK(entry.Set(kKnown) == 0);
  const int32_t result = entry.Set(text.c_str());
  FUZZ_CHECK(result == 0 || result == -1998);
  if (result != 0) {
    FUZZ_CHECK(Printed(entry) == kKnown);
    return 0;
  }
  CheckField(entry.GetProtocol(), false);
  CheckField(entry.GetNetwork(), false);
  CheckField(entry.GetContentFormat(), false);
  CheckField(entry.GetAdditionalInfo(), true);
  const std::string printed = Printed(entry);
  FUZZ_CHECK(printed == std::string(entry.GetProtocol()) + ":" + entry.GetNetwork() + ":" + entry.GetContentFormat() +
                            ":" + entry.GetAdditionalInfo());
  marlo::ProtocolInfo again;
  FUZZ_CHECK(again.Set(printed.c_str()) == 0);
  FUZZ_CHECK(Printed(again) == printed);
  return 0;
}
