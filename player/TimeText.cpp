#include "TimeText.h"

#include <cstdio>

namespace {

constexpr int64_t kSecond = 1000000000;

// Reads decimal digits at `position` into *value (at most `maximumDigits`); false without any digit.
bool ReadNumber(const std::string& text, std::size_t* position, int maximumDigits, int64_t* value) {
  int digits = 0;
  *value = 0;
  while (*position < text.size() && text[*position] >= '0' && text[*position] <= '9') {
    if (++digits > maximumDigits) return false;
    *value = *value * 10 + (text[*position] - '0');
    ++*position;
  }
  return digits > 0;
}

}  // namespace

int64_t PLAYER_ParseTime(const std::string& text) {
  std::size_t position = 0;
  int64_t hours = 0;
  int64_t minutes = 0;
  int64_t seconds = 0;
  // Past 2562047 hours the nanoseconds leave a signed 64-bit number.
  if (!ReadNumber(text, &position, 9, &hours) || hours > 2562047) return -1;
  if (position >= text.size() || text[position++] != ':') return -1;
  if (!ReadNumber(text, &position, 2, &minutes) || minutes > 59) return -1;
  if (position >= text.size() || text[position++] != ':') return -1;
  if (!ReadNumber(text, &position, 2, &seconds) || seconds > 59) return -1;
  int64_t total = ((hours * 60 + minutes) * 60 + seconds) * kSecond;
  if (position == text.size()) return total;
  if (text[position++] != '.') return -1;

  // Either decimal fraction digits, or F0/F1 (a fraction as numerator and denominator).
  const std::size_t fractionStart = position;
  int64_t numerator = 0;
  if (!ReadNumber(text, &position, 18, &numerator)) return -1;
  if (position == text.size()) {
    int64_t scale = kSecond;
    int64_t fraction = 0;
    for (std::size_t i = fractionStart; i < text.size() && scale > 1; ++i) {
      scale /= 10;
      fraction += (text[i] - '0') * scale;
    }
    return total + fraction;
  }
  if (text[position++] != '/' || position - fractionStart > 10) return -1;
  int64_t denominator = 0;
  if (!ReadNumber(text, &position, 9, &denominator) || position != text.size()) return -1;
  if (denominator == 0 || numerator >= denominator) return -1;
  return total + numerator * kSecond / denominator;
}

std::string PLAYER_FormatTime(int64_t nanoseconds) {
  if (nanoseconds < 0) nanoseconds = 0;
  const int64_t total = nanoseconds / kSecond;
  char text[32];
  std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld", static_cast<long long>(total / 3600),
                static_cast<long long>(total / 60 % 60), static_cast<long long>(total % 60));
  return text;
}

std::string PLAYER_FormatSeconds(int64_t nanoseconds) {
  if (nanoseconds < 0) return "0";
  return std::to_string(nanoseconds / kSecond);
}
