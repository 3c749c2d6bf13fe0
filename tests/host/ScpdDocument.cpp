#include "ScpdDocument.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>
#include <memory>

namespace {

constexpr char kServiceNamespace[] = "urn:schemas-upnp-org:service-1-0";

struct DocumentDeleter {
  void operator()(xmlDoc* document) const { xmlFreeDoc(document); }
};

bool IsElement(const xmlNode* node, const char* name) {
  return node->type == XML_ELEMENT_NODE && node->ns != nullptr &&
         std::strcmp(reinterpret_cast<const char*>(node->ns->href), kServiceNamespace) == 0 &&
         std::strcmp(reinterpret_cast<const char*>(node->name), name) == 0;
}

// The element children of `parent` called `name` in the service namespace, in document order.
std::vector<const xmlNode*> Children(const xmlNode* parent, const char* name) {
  std::vector<const xmlNode*> children;
  if (parent == nullptr) return children;
  for (const xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (IsElement(child, name)) children.push_back(child);
  }
  return children;
}

const xmlNode* Child(const xmlNode* parent, const char* name) {
  const std::vector<const xmlNode*> children = Children(parent, name);
  return children.empty() ? nullptr : children.front();
}

std::string Text(const xmlNode* node) {
  if (node == nullptr) return "";
  xmlChar* content = xmlNodeGetContent(node);
  std::string text = content != nullptr ? reinterpret_cast<const char*>(content) : "";
  xmlFree(content);
  return text;
}

std::string ChildText(const xmlNode* parent, const char* name) { return Text(Child(parent, name)); }

ScpdAction ReadAction(const xmlNode* node) {
  ScpdAction action;
  action.name = ChildText(node, "name");
  for (const xmlNode* argument : Children(Child(node, "argumentList"), "argument")) {
    action.arguments.push_back({ChildText(argument, "name"), ChildText(argument, "direction"),
                                ChildText(argument, "relatedStateVariable")});
  }
  return action;
}

ScpdVariable ReadVariable(const xmlNode* node) {
  ScpdVariable variable;
  xmlChar* sendEvents = xmlGetProp(node, reinterpret_cast<const xmlChar*>("sendEvents"));
  variable.sendEvents = sendEvents != nullptr ? reinterpret_cast<const char*>(sendEvents) : "";
  xmlFree(sendEvents);
  variable.name = ChildText(node, "name");
  variable.dataType = ChildText(node, "dataType");
  for (const xmlNode* value : Children(Child(node, "allowedValueList"), "allowedValue")) {
    variable.allowedValues.push_back(Text(value));
  }
  const xmlNode* range = Child(node, "allowedValueRange");
  variable.minimum = ChildText(range, "minimum");
  variable.maximum = ChildText(range, "maximum");
  variable.step = ChildText(range, "step");
  return variable;
}

std::vector<std::string> NamesOf(const std::vector<ScpdArgument>& arguments, const char* direction) {
  std::vector<std::string> names;
  for (const ScpdArgument& argument : arguments) {
    if (argument.direction == direction) names.push_back(argument.name);
  }
  return names;
}

}  // namespace

std::vector<std::string> ScpdAction::InNames() const { return NamesOf(arguments, "in"); }
std::vector<std::string> ScpdAction::OutNames() const { return NamesOf(arguments, "out"); }

const ScpdAction* ScpdDocument::FindAction(const std::string& name) const {
  for (const ScpdAction& action : actions) {
    if (action.name == name) return &action;
  }
  return nullptr;
}

const ScpdVariable* ScpdDocument::FindVariable(const std::string& name) const {
  for (const ScpdVariable& variable : variables) {
    if (variable.name == name) return &variable;
  }
  return nullptr;
}

std::vector<std::string> ScpdDocument::EventedNames() const {
  std::vector<std::string> names;
  for (const ScpdVariable& variable : variables) {
    if (variable.sendEvents == "yes") names.push_back(variable.name);
  }
  return names;
}

bool LoadScpd(const std::string& path, ScpdDocument* document, std::string* error) {
  // No recovery: a document libxml2 would have to repair is an error, as it is for a strict control point.
  const std::unique_ptr<xmlDoc, DocumentDeleter> parsed(
      xmlReadFile(path.c_str(), nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING));
  if (parsed == nullptr) {
    const xmlError* last = xmlGetLastError();
    *error = last != nullptr && last->message != nullptr ? last->message : "unreadable";
    return false;
  }
  const xmlNode* root = xmlDocGetRootElement(parsed.get());
  *document = ScpdDocument{};
  document->rootName = reinterpret_cast<const char*>(root->name);
  document->rootNamespace = root->ns != nullptr ? reinterpret_cast<const char*>(root->ns->href) : "";
  const xmlNode* specVersion = Child(root, "specVersion");
  document->specMajor = ChildText(specVersion, "major");
  document->specMinor = ChildText(specVersion, "minor");
  const xmlNode* actionList = Child(root, "actionList");
  document->hasActionList = actionList != nullptr;
  for (const xmlNode* action : Children(actionList, "action"))
    document->actions.push_back(ReadAction(action));
  for (const xmlNode* variable : Children(Child(root, "serviceStateTable"), "stateVariable")) {
    document->variables.push_back(ReadVariable(variable));
  }
  return true;
}

ScpdDocument LoadBuiltScpd(const std::string& name) {
  ScpdDocument document;
  std::string error;
  const std::string path = std::string(HOST_BUILD_DOCROOT) + "/scpd/" + name + ".xml";
  EXPECT_TRUE(LoadScpd(path, &document, &error)) << path << ": " << error;
  return document;
}
