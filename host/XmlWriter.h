// HOST_XmlWriter: writes one XML document into memory with libxml2's text writer, for the documents the
// daemon serves (SCPDs, the device description).
//
// The output is deterministic: an XML declaration with version 1.0 and encoding utf-8, one element a line,
// indented by two blanks. Every text and attribute value is escaped by libxml2, and first made into valid
// XML text: a byte sequence that is not UTF-8, or a character XML does not allow (control characters other
// than tab, line feed and carriage return), becomes U+FFFD, so that whatever a configuration holds, the
// document stays well-formed.
//
//   HOST_XmlWriter writer;
//   writer.Start("root", "urn:example");
//   writer.Element("name", "a & b");
//   writer.End();
//   std::string xml = writer.Finish();
//
// Not thread-safe; one writer writes one document.
#ifndef HOST_XML_WRITER_H_
#define HOST_XML_WRITER_H_

#include <string>

struct _xmlBuffer;
struct _xmlTextWriter;

class HOST_XmlWriter {
 public:
  HOST_XmlWriter();
  ~HOST_XmlWriter();

  HOST_XmlWriter(const HOST_XmlWriter&) = delete;
  HOST_XmlWriter& operator=(const HOST_XmlWriter&) = delete;

  // Opens element `name`; with `namespaceUri`, declares it as the default namespace (xmlns="...").
  void Start(const char* name, const char* namespaceUri = nullptr);
  // Opens element `prefix`:`name` and declares the prefix (xmlns:prefix="namespaceUri").
  void StartPrefixed(const char* prefix, const char* name, const char* namespaceUri);
  // Adds an attribute to the element just opened.
  void Attribute(const char* name, const std::string& value);
  // Writes <name>text</name>.
  void Element(const char* name, const std::string& text);
  // Writes <prefix:name xmlns:prefix="namespaceUri">text</prefix:name>.
  void PrefixedElement(const char* prefix, const char* name, const char* namespaceUri,
                       const std::string& text);
  // Closes the element opened last.
  void End();

  // Closes every element still open and answers the document; "" when libxml2 failed on the way (no
  // memory). The writer takes no more calls after it.
  std::string Finish();

 private:
  void Check(int result);

  _xmlBuffer* buffer_;
  _xmlTextWriter* writer_;
  bool failed_;
};

// `text` as valid XML character data: each byte sequence that is not UTF-8 and each character XML 1.0 does
// not allow replaced by U+FFFD. Exposed for tests.
std::string HOST_ValidXmlText(const std::string& text);

#endif  // HOST_XML_WRITER_H_
