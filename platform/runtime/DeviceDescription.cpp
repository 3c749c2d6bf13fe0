#include "marlo/DeviceDescription.h"

#include <cstdio>
#include <new>

#include <libxml/xmlerror.h>

#include "Xml.h"
#include "marlo/Result.h"

namespace marlo {
namespace {

xmlDoc* AsDoc(void* document) { return static_cast<xmlDoc*>(document); }

// Nodes handed out are the document's own elements under an opaque name.
const xmlNode* AsXml(const DeviceDescription::Node* node) { return reinterpret_cast<const xmlNode*>(node); }
const DeviceDescription::Node* AsNode(const xmlNode* node) {
  return reinterpret_cast<const DeviceDescription::Node*>(node);
}

// True when the file at `path` can be opened and read. libxml2 answers the same null for a file it
// cannot read and for one that is not XML; the caller needs to tell them apart.
bool IsReadable(const char* path) {
  std::FILE* file = std::fopen(path, "rb");
  if (file == nullptr) return false;
  // A directory opens but fails the first read.
  std::fgetc(file);
  const bool readable = std::ferror(file) == 0;
  std::fclose(file);
  return readable;
}

}  // namespace

DeviceDescription::DeviceDescription() : document_(nullptr) {}

DeviceDescription::~DeviceDescription() {
  if (document_ != nullptr) xmlFreeDoc(AsDoc(document_));
}

int32_t DeviceDescription::LoadDescription(const char* path) {
  if (path == nullptr) return kErrorInvalidArgument;
  if (!IsReadable(path)) return kErrorFailure;
  xmlResetLastError();
  xmlDoc* document = dmr_runtime::ParseXmlFile(path);
  if (document == nullptr) {
    const xmlError* error = xmlGetLastError();
    if (error != nullptr && error->code == XML_ERR_NO_MEMORY) return kErrorNoMemory;
    // On purpose the earlier document stays: a failed load changes nothing.
    return kErrorInvalidArgument;
  }
  if (document_ != nullptr) xmlFreeDoc(AsDoc(document_));
  document_ = document;
  value_.clear();
  return kOk;
}

const DeviceDescription::Node* DeviceDescription::GetRootDevice() const {
  if (document_ == nullptr) return nullptr;
  const xmlNode* root = xmlDocGetRootElement(AsDoc(document_));
  if (root == nullptr) return nullptr;
  for (const xmlNode* child = root->children; child != nullptr; child = child->next) {
    if (dmr_runtime::HasLocalName(child, "device")) return AsNode(child);
  }
  return nullptr;
}

const DeviceDescription::Node* DeviceDescription::GetNode(const Node* parent, const char* name,
                                                          int index) const {
  if (parent == nullptr || name == nullptr || index < 0) return nullptr;
  const xmlNode* top = AsXml(parent);
  const xmlNode* node = top->children;
  while (node != nullptr) {
    if (dmr_runtime::HasLocalName(node, name) && index-- == 0) return AsNode(node);
    // Only elements are entered: an entity reference's children belong to the entity's declaration.
    if (node->type == XML_ELEMENT_NODE && node->children != nullptr) {
      node = node->children;
      continue;
    }
    while (node != top && node->next == nullptr) node = node->parent;
    if (node == top) return nullptr;
    node = node->next;
  }
  return nullptr;
}

const char* DeviceDescription::GetElementValue(const Node* node) const {
  value_.clear();
  try {
    dmr_runtime::AppendTextContent(AsXml(node), &value_);
  } catch (const std::bad_alloc&) {
    value_.clear();
  }
  return value_.c_str();
}

}  // namespace marlo
