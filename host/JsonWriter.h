// HOST_JsonWriter: writes one JSON document (RFC 8259) in one pass, for the status page's answer.
//
// Every string goes out as valid UTF-8 and safe to place anywhere: '"', '\' and the control characters
// are escaped, and so are '<', '>', '&', '\'' and U+2028/U+2029, so that the text can never close a tag or
// a script should someone paste it into HTML. A byte sequence that is not UTF-8 (a title in Latin-1,
// a URI cut in the middle of a character) becomes U+FFFD, once per bad byte.
//
// A string may be given a limit: the most bytes its escaped form (quotes excluded) may take. A longer
// text is cut at a character boundary and ends with "…", so that the limit bounds the document whatever
// a control point sent.
//
// The caller keeps the structure well formed (Key before each member of an object, End for each Begin);
// the writer only places the commas and colons.
#ifndef HOST_JSON_WRITER_H_
#define HOST_JSON_WRITER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

class HOST_JsonWriter {
 public:
  // No limit on a string's escaped length.
  static constexpr std::size_t kNoLimit = static_cast<std::size_t>(-1);

  void BeginObject();
  void BeginArray();
  // Ends the innermost object or array.
  void End();
  // The name of the next member of the current object.
  void Key(std::string_view name);

  void String(std::string_view text, std::size_t limit = kNoLimit);
  void Number(int64_t value);
  void Bool(bool value);
  void Null();

  // Key and value together.
  void Member(std::string_view name, std::string_view text, std::size_t limit = kNoLimit);
  void Member(std::string_view name, int64_t value);
  void MemberBool(std::string_view name, bool value);

  // The document so far.
  const std::string& Text() const { return text_; }

 private:
  void BeforeValue();

  struct Open {
    bool object;    // else an array
    bool nonEmpty;  // holds a value already: the next one needs a comma
  };

  std::string text_;
  std::vector<Open> open_;
  bool afterKey_ = false;
};

// The escaped form of `text` without quotes, cut to `limit` bytes as described above.
std::string HOST_JsonEscape(std::string_view text, std::size_t limit = HOST_JsonWriter::kNoLimit);

#endif  // HOST_JSON_WRITER_H_
