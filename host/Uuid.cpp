#include "Uuid.h"

#include <sys/random.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>

namespace {

// Where the dashes go in the text form.
bool IsDashPosition(std::size_t index) { return index == 8 || index == 13 || index == 18 || index == 23; }

bool IsHexDigit(char c) { return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F'); }

}  // namespace

bool HOST_NewRandomUuid(std::string* uuid) {
  uint8_t bytes[16];
  std::size_t filled = 0;
  while (filled < sizeof(bytes)) {
    const ssize_t got = ::getrandom(bytes + filled, sizeof(bytes) - filled, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    filled += static_cast<std::size_t>(got);
  }
  bytes[6] = static_cast<uint8_t>((bytes[6] & 0x0f) | 0x40);  // version 4: random
  bytes[8] = static_cast<uint8_t>((bytes[8] & 0x3f) | 0x80);  // variant 1: RFC 4122

  static const char kHex[] = "0123456789abcdef";
  std::string text;
  for (std::size_t i = 0; i < sizeof(bytes); ++i) {
    if (i == 4 || i == 6 || i == 8 || i == 10) text += '-';
    text += kHex[bytes[i] >> 4];
    text += kHex[bytes[i] & 0x0f];
  }
  uuid->swap(text);
  return true;
}

bool HOST_IsUuidText(std::string_view text) {
  if (text.size() != 36) return false;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (IsDashPosition(i) ? text[i] != '-' : !IsHexDigit(text[i])) return false;
  }
  return true;
}
