#include "host/ProductSheet.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>

namespace {

struct DocumentDeleter {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};
using Document = std::unique_ptr<xmlDoc, DocumentDeleter>;

constexpr char kEmptySheet[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
    "<root xmlns=\"urn:schemas-upnp-org:device-1-0\"><device></device></root>\n";

bool Named(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

xmlNode* RootDevice(xmlDoc* document) {
  xmlNode* root = xmlDocGetRootElement(document);
  if (root == nullptr) return nullptr;
  for (xmlNode* child = root->children; child != nullptr; child = child->next)
    if (Named(child, "device")) return child;
  return nullptr;
}

// The first element named `name` among the descendants of `parent`, in document order: the one the
// OpenHome object reads.
xmlNode* FirstDescendant(xmlNode* parent, const char* name) {
  for (xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE) continue;
    if (Named(child, name)) return child;
    if (xmlNode* found = FirstDescendant(child, name)) return found;
  }
  return nullptr;
}

bool SetText(xmlNode* device, const char* name, const std::string& text) {
  xmlNode* element = FirstDescendant(device, name);
  if (element == nullptr) {
    element = xmlNewChild(device, device->ns, reinterpret_cast<const xmlChar*>(name), nullptr);
    if (element == nullptr) return false;
  }
  xmlNodeSetContent(element, nullptr);
  // Added as text, not parsed: '&' and '<' of a name are escaped when the sheet is written.
  xmlNodeAddContentLen(element, reinterpret_cast<const xmlChar*>(text.data()), static_cast<int>(text.size()));
  return true;
}

Document Parse(const char* text, std::size_t size) {
  return Document(xmlReadMemory(text, static_cast<int>(size), "openhome.xml", nullptr, XML_PARSE_NONET));
}

}  // namespace

std::string HOST_ProductSheet(const std::string& sheet, const HOST_ProductNames& names, std::string* problem) {
  Document document = Parse(sheet.data(), sheet.size());
  if (document == nullptr || RootDevice(document.get()) == nullptr) {
    *problem = document == nullptr ? "not well-formed XML" : "no <device> below the root element";
    document = Parse(kEmptySheet, sizeof(kEmptySheet) - 1);
    if (document == nullptr) return "";
  }
  xmlNode* device = RootDevice(document.get());
  if (!SetText(device, "ProductRoom", names.room)) return "";
  if (!names.name.empty() && !SetText(device, "ProductName", names.name)) return "";
  xmlChar* text = nullptr;
  int size = 0;
  xmlDocDumpMemoryEnc(document.get(), &text, &size, "utf-8");
  if (text == nullptr) return "";
  std::string result(reinterpret_cast<const char*>(text), static_cast<std::size_t>(size));
  xmlFree(text);
  return result;
}
