// The runtime's one way into libxml2, the XML parser of the whole product.
//
// Every document is parsed with the same safe options: no network access, no DTD loading, no expansion of
// external entities, no messages on stderr. Parsing the same text always gives the same tree.
#ifndef DMR_RUNTIME_XML_H_
#define DMR_RUNTIME_XML_H_

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstddef>
#include <memory>
#include <string>

namespace dmr_runtime {

// Frees a parsed document however the scope that owns it ends.
struct XmlDocFree {
  void operator()(xmlDoc* doc) const { xmlFreeDoc(doc); }
};
using XmlDocument = std::unique_ptr<xmlDoc, XmlDocFree>;

// Parses `length` bytes of `text`. With `recover`, libxml2 repairs what it can (unescaped '&', undeclared
// prefixes, unclosed elements) instead of failing. Null for text that is not XML (or no memory); the
// caller frees the result with xmlFreeDoc, or owns it as an XmlDocument.
xmlDoc* ParseXmlText(const char* text, std::size_t length, bool recover);

// Parses the file at `path`, strictly. Null when it cannot be read or is not well-formed XML.
xmlDoc* ParseXmlFile(const char* path);

// The value of the attribute `name` (any namespace) of `node`, appended to `out`; false when absent.
bool GetAttribute(const xmlNode* node, const char* name, std::string* out);

// The text content of `node` (entities decoded), appended to `out`.
void AppendTextContent(const xmlNode* node, std::string* out);

// True when `node` is an element whose local name is `name` in a namespace-well-formed document: an element
// whose prefix was never declared does not match, because libxml2 then keeps "prefix:name" as its name.
// For documents read strictly, where such an element makes the document unacceptable.
bool IsElementNamed(const xmlNode* node, const char* name);

// True when `node` is an element whose local name is `name`, also when the document uses a prefix it never
// declared: libxml2 then keeps the whole "prefix:name" as the element's name, and media servers often do
// just that (dc:title, upnp:class without their xmlns).
bool HasLocalName(const xmlNode* node, const char* name);

}  // namespace dmr_runtime

#endif  // DMR_RUNTIME_XML_H_
