#include "JsonWriter.h"

#include <cstdio>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";  // U+FFFD
constexpr char kEllipsis[] = "\xE2\x80\xA6";     // U+2026
constexpr std::size_t kEllipsisBytes = sizeof(kEllipsis) - 1;

bool Continuation(unsigned char byte) { return (byte & 0xC0) == 0x80; }

// The length of the well-formed UTF-8 character at the start of `text`, or 0 when it is not one
// (overlong forms, surrogates and values above U+10FFFF are not).
std::size_t CharacterLength(std::string_view text) {
  const auto at = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = at(0);
  if (lead < 0x80) return 1;
  std::size_t length = 0;
  unsigned char low = 0x80;
  unsigned char high = 0xBF;
  if (lead >= 0xC2 && lead <= 0xDF) {
    length = 2;
  } else if (lead >= 0xE0 && lead <= 0xEF) {
    length = 3;
    if (lead == 0xE0) low = 0xA0;
    if (lead == 0xED) high = 0x9F;
  } else if (lead >= 0xF0 && lead <= 0xF4) {
    length = 4;
    if (lead == 0xF0) low = 0x90;
    if (lead == 0xF4) high = 0x8F;
  } else {
    return 0;
  }
  if (text.size() < length || at(1) < low || at(1) > high) return 0;
  for (std::size_t i = 2; i < length; ++i)
    if (!Continuation(at(i))) return 0;
  return length;
}

// Appends the escaped form of the character at the start of `text` and answers how many bytes it used.
std::size_t EscapeCharacter(std::string_view text, std::string* out) {
  const unsigned char c = static_cast<unsigned char>(text[0]);
  switch (c) {
    case '"':
      *out += "\\\"";
      return 1;
    case '\\':
      *out += "\\\\";
      return 1;
    case '\n':
      *out += "\\n";
      return 1;
    case '\r':
      *out += "\\r";
      return 1;
    case '\t':
      *out += "\\t";
      return 1;
    default:
      break;
  }
  // On purpose also '<', '>', '&' and '\'': the text then never means markup, whatever it lands in.
  if (c < 0x20 || c == 0x7F || c == '<' || c == '>' || c == '&' || c == '\'') {
    char escaped[8];
    std::snprintf(escaped, sizeof(escaped), "\\u%04x", c);
    *out += escaped;
    return 1;
  }
  const std::size_t length = CharacterLength(text);
  if (length == 0) {
    *out += kReplacement;
    return 1;
  }
  // U+2028 and U+2029 end a line in JavaScript source.
  if (length == 3 && c == 0xE2 && static_cast<unsigned char>(text[1]) == 0x80 &&
      (static_cast<unsigned char>(text[2]) == 0xA8 || static_cast<unsigned char>(text[2]) == 0xA9)) {
    *out += static_cast<unsigned char>(text[2]) == 0xA8 ? "\\u2028" : "\\u2029";
    return 3;
  }
  out->append(text.data(), length);
  return length;
}

}  // namespace

std::string HOST_JsonEscape(std::string_view text, std::size_t limit) {
  std::string out;
  out.reserve(text.size() < 256 ? text.size() + 8 : 256);
  // Where the text would be cut if it turns out too long: the end of the last character that still
  // leaves room for the ellipsis.
  std::size_t cut = 0;
  for (std::size_t i = 0; i < text.size();) {
    i += EscapeCharacter(text.substr(i), &out);
    if (out.size() > limit) {
      out.resize(cut);
      if (limit >= kEllipsisBytes) out += kEllipsis;
      return out;
    }
    if (limit >= kEllipsisBytes && out.size() <= limit - kEllipsisBytes) cut = out.size();
  }
  return out;
}

void HOST_JsonWriter::BeforeValue() {
  if (afterKey_) {
    afterKey_ = false;
    return;
  }
  if (!open_.empty()) {
    if (open_.back().nonEmpty) text_ += ',';
    open_.back().nonEmpty = true;
  }
}

void HOST_JsonWriter::BeginObject() {
  BeforeValue();
  text_ += '{';
  open_.push_back({true, false});
}

void HOST_JsonWriter::BeginArray() {
  BeforeValue();
  text_ += '[';
  open_.push_back({false, false});
}

void HOST_JsonWriter::End() {
  if (open_.empty()) return;
  text_ += open_.back().object ? '}' : ']';
  open_.pop_back();
}

void HOST_JsonWriter::Key(std::string_view name) {
  BeforeValue();
  text_ += '"';
  text_ += HOST_JsonEscape(name);
  text_ += "\":";
  afterKey_ = true;
}

void HOST_JsonWriter::String(std::string_view text, std::size_t limit) {
  BeforeValue();
  text_ += '"';
  text_ += HOST_JsonEscape(text, limit);
  text_ += '"';
}

void HOST_JsonWriter::Number(int64_t value) {
  BeforeValue();
  text_ += std::to_string(value);
}

void HOST_JsonWriter::Bool(bool value) {
  BeforeValue();
  text_ += value ? "true" : "false";
}

void HOST_JsonWriter::Null() {
  BeforeValue();
  text_ += "null";
}

void HOST_JsonWriter::Member(std::string_view name, std::string_view text, std::size_t limit) {
  Key(name);
  String(text, limit);
}

void HOST_JsonWriter::Member(std::string_view name, int64_t value) {
  Key(name);
  Number(value);
}

void HOST_JsonWriter::MemberBool(std::string_view name, bool value) {
  Key(name);
  Bool(value);
}
