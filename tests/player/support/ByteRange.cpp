#include "ByteRange.h"

#include <cctype>

namespace {

// Parses the digits of `text` into `value`; false for an empty text, anything but digits, or an overflow.
bool ParseNumber(const std::string& text, std::uint64_t* value) {
  if (text.empty() || text.size() > 18) return false;
  *value = 0;
  for (char c : text) {
    if (!std::isdigit(static_cast<unsigned char>(c))) return false;
    *value = *value * 10 + static_cast<std::uint64_t>(c - '0');
  }
  return true;
}

}  // namespace

PLAYER_ByteRange PLAYER_ResolveByteRange(const std::string& header, std::uint64_t size) {
  PLAYER_ByteRange whole;
  const std::string prefix = "bytes=";
  if (header.compare(0, prefix.size(), prefix) != 0) return whole;
  const std::string rangeSet = header.substr(prefix.size());
  const std::size_t dash = rangeSet.find('-');
  if (dash == std::string::npos || rangeSet.find(',') != std::string::npos) return whole;
  const std::string from = rangeSet.substr(0, dash);
  const std::string to = rangeSet.substr(dash + 1);

  PLAYER_ByteRange range;
  range.kind = PLAYER_ByteRange::Kind::kPart;
  std::uint64_t first = 0;
  std::uint64_t last = 0;
  if (from.empty()) {
    std::uint64_t suffix = 0;
    if (!ParseNumber(to, &suffix)) return whole;
    if (suffix == 0 || size == 0) return PLAYER_ByteRange{PLAYER_ByteRange::Kind::kUnsatisfiable, 0, 0};
    range.first = suffix >= size ? 0 : size - suffix;
    range.last = size - 1;
    return range;
  }
  if (!ParseNumber(from, &first)) return whole;
  if (to.empty()) {
    last = UINT64_MAX;
  } else if (!ParseNumber(to, &last) || last < first) {
    return whole;
  }
  if (first >= size) return PLAYER_ByteRange{PLAYER_ByteRange::Kind::kUnsatisfiable, 0, 0};
  range.first = first;
  range.last = last >= size ? size - 1 : last;
  return range;
}
