#include "Xml.h"

#include <climits>
#include <cstring>
#include <memory>

namespace dmr_runtime {
namespace {

// XML_PARSE_NONET: never fetch anything; no XML_PARSE_NOENT / DTDLOAD: external entities stay
// unexpanded; NOERROR/NOWARNING: the parser prints nothing.
constexpr int kSafeOptions = XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING;

// libxml2 sets up its global state lazily and not thread-safely; doing it once when the runtime is
// loaded lets several threads parse at once.
struct ParserSetUp {
  ParserSetUp() { xmlInitParser(); }
};
const ParserSetUp gParserSetUp;

// A text libxml2 allocated, freed however the append that copies it ends (std::bad_alloc included).
struct XmlFree {
  void operator()(xmlChar* text) const { xmlFree(text); }
};
using XmlText = std::unique_ptr<xmlChar, XmlFree>;

}  // namespace

xmlDoc* ParseXmlText(const char* text, std::size_t length, bool recover) {
  if (text == nullptr || length > static_cast<std::size_t>(INT_MAX)) return nullptr;
  const int options = kSafeOptions | (recover ? XML_PARSE_RECOVER : 0);
  return xmlReadMemory(text, static_cast<int>(length), nullptr, nullptr, options);
}

xmlDoc* ParseXmlFile(const char* path) {
  if (path == nullptr) return nullptr;
  return xmlReadFile(path, nullptr, kSafeOptions);
}

bool IsElementNamed(const xmlNode* node, const char* name) {
  return node != nullptr && node->type == XML_ELEMENT_NODE && node->name != nullptr && name != nullptr &&
         std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

bool GetAttribute(const xmlNode* node, const char* name, std::string* out) {
  if (node == nullptr || node->type != XML_ELEMENT_NODE) return false;
  for (const xmlAttr* attribute = node->properties; attribute != nullptr; attribute = attribute->next) {
    if (attribute->name == nullptr ||
        std::strcmp(reinterpret_cast<const char*>(attribute->name), name) != 0) {
      continue;
    }
    const XmlText value(xmlNodeListGetString(attribute->doc, attribute->children, 1));
    if (value != nullptr) out->append(reinterpret_cast<const char*>(value.get()));
    return true;
  }
  return false;
}

void AppendTextContent(const xmlNode* node, std::string* out) {
  if (node == nullptr) return;
  const XmlText content(xmlNodeGetContent(node));
  if (content != nullptr) out->append(reinterpret_cast<const char*>(content.get()));
}

bool HasLocalName(const xmlNode* node, const char* name) {
  if (node == nullptr || node->type != XML_ELEMENT_NODE || node->name == nullptr || name == nullptr) {
    return false;
  }
  const char* local = reinterpret_cast<const char*>(node->name);
  const char* colon = std::strrchr(local, ':');
  if (colon != nullptr) local = colon + 1;
  return std::strcmp(local, name) == 0;
}

}  // namespace dmr_runtime
