// EscapeXml: the escaping the ReadList action applies to metadata (the five XML special characters), in
// the form of the playlist's escaping callback: `context` is the std::string that holds the result.
//
// Header-only on purpose: the playlist benchmark includes it by path as well, and a benchmark has no
// business linking the test support library (GoogleTest and all).
#ifndef TESTS_SUPPORT_ESCAPE_XML_H_
#define TESTS_SUPPORT_ESCAPE_XML_H_

#include <string>

inline const char* EscapeXml(void* context, const char* text) {
  std::string* buffer = static_cast<std::string*>(context);
  buffer->clear();
  for (const char* c = text; *c != '\0'; ++c) {
    switch (*c) {
      case '&':
        buffer->append("&amp;");
        break;
      case '<':
        buffer->append("&lt;");
        break;
      case '>':
        buffer->append("&gt;");
        break;
      case '"':
        buffer->append("&quot;");
        break;
      case '\'':
        buffer->append("&apos;");
        break;
      default:
        buffer->push_back(*c);
    }
  }
  return buffer->c_str();
}

#endif  // TESTS_SUPPORT_ESCAPE_XML_H_
