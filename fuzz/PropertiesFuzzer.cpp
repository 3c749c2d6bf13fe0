// Checks marlo::Properties::LoadText with arbitrary text: it answers 0 or -1998; on 0 every property it
// holds has a non-empty key without surrounding blanks and GetProperty agrees with ForEach; on -1998
// nothing of the text is kept (the property set before it is all there is).
#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "FuzzCheck.h"
#include "marlo/Properties.h"

namespace {

std::map<std::string, std::string> All(const marlo::Properties& properties) {
  std::map<std::string, std::string> all;
  properties.ForEach([&](const char* key, const char* value) {
    FUZZ_CHECK(key != nullptr && value != nullptr);
    all.emplace(key, value);
  });
  return all;
}

// The blanks the reader trims.
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  marlo::Properties properties;
  FUZZ_CHECK(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*") == 0);
  const std::map<std::string, std::string> before = All(properties);

  const int32_t result = properties.LoadText(text.c_str());
  FUZZ_CHECK(result == 0 || result == -1998);
  const std::map<std::string, std::string> after = All(properties);
  if (result != 0) {
    FUZZ_CHECK(after == before);
    return 0;
  }
  for (const auto& [key, value] : after) {
    FUZZ_CHECK(!key.empty() && !IsBlank(key.front()) && !IsBlank(key.back()));
    FUZZ_CHECK(value.empty() || (!IsBlank(value.front()) && !IsBlank(value.back())));
    const char* got = properties.GetProperty(key.c_str());
    FUZZ_CHECK(got != nullptr && value == got);
  }
  return 0;
}
