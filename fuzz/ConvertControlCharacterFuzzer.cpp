// Checks ConvertControlCharacter of both state variable stores: for an arbitrary text, repeated as often as
// the input's first two bytes say (so that short inputs reach the 204800-byte escaping buffer's limit),
// the answer is exactly the text with & < > " ' escaped, or null exactly when that and its terminator
// would not fit the buffer.
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>

#include "EscapeXml.h"
#include "FuzzCheck.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableStore.h"

namespace {

// A little beyond the buffer: every text longer than this is refused as surely as one just over.
constexpr std::size_t kMaxText = SINK_UPNP_ESCAPE_BUFFER_SIZE + 64;

void Check(const char* answer, const std::string& expected) {
  if (expected.size() + 1 > SINK_UPNP_ESCAPE_BUFFER_SIZE) {
    FUZZ_CHECK(answer == nullptr);
  } else {
    FUZZ_CHECK(answer != nullptr && expected == answer);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  if (size < 2) return 0;
  // The stores keep no state between calls but their buffers: one of each serves every input.
  static SINK_UPNP_SinkCTSSStateVariableManager standard;
  static SINK_UPNP_OpenHomeStateVariableManager openHome;

  const std::size_t repeat = 1 + (static_cast<std::size_t>(data[0]) << 8 | data[1]);
  std::string piece(reinterpret_cast<const char*>(data + 2), size - 2);
  piece = piece.substr(0, piece.find('\0'));
  std::string text;
  for (std::size_t i = 0; i < repeat && text.size() <= kMaxText; ++i) text += piece;

  std::string escaped;
  EscapeXml(&escaped, text.c_str());
  Check(standard.ConvertControlCharacter(text.c_str()), escaped);
  Check(openHome.ConvertControlCharacter(text.c_str()), escaped);
  return 0;
}
