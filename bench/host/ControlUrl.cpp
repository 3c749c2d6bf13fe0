#include "ControlUrl.h"

#include <libxml/parser.h>
#include <libxml/tree.h>

#include <cstring>

namespace {

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";

// The text of the first child element of `parent` named `name`, empty when there is none.
std::string ChildText(xmlNode* parent, const char* name) {
  for (xmlNode* child = parent->children; child != nullptr; child = child->next) {
    if (child->type != XML_ELEMENT_NODE || std::strcmp(reinterpret_cast<const char*>(child->name), name) != 0)
      continue;
    xmlChar* content = xmlNodeGetContent(child);
    std::string text = content != nullptr ? reinterpret_cast<const char*>(content) : "";
    xmlFree(content);
    return text;
  }
  return "";
}

// Depth-first search for the <service> element of AVTransport:1; returns its controlURL.
std::string FindControl(xmlNode* node) {
  for (; node != nullptr; node = node->next) {
    if (node->type != XML_ELEMENT_NODE) continue;
    if (std::strcmp(reinterpret_cast<const char*>(node->name), "service") == 0 &&
        ChildText(node, "serviceType") == kAVTransport)
      return ChildText(node, "controlURL");
    std::string found = FindControl(node->children);
    if (!found.empty()) return found;
  }
  return "";
}

}  // namespace

bool FindAVTransportControl(const std::string& location, HttpEndpoint* control, std::string* error) {
  HttpEndpoint description;
  if (!ParseHttpUrl(location, &description)) {
    *error = "not an http://address:port/ URL: " + location;
    return false;
  }
  HttpConnection connection;
  HttpResponse response;
  const std::string request = "GET " + description.path + " HTTP/1.1\r\nHost: " + description.address + ":" +
                              std::to_string(description.port) + "\r\nConnection: close\r\n\r\n";
  if (!connection.Open(description) || !connection.Exchange(request, &response)) {
    *error = "fetching " + location + ": " + connection.error();
    return false;
  }
  if (response.status != 200) {
    *error = "fetching " + location + ": status " + std::to_string(response.status);
    return false;
  }
  xmlDoc* document = xmlReadMemory(response.body.data(), static_cast<int>(response.body.size()), location.c_str(),
                                   nullptr, XML_PARSE_NONET | XML_PARSE_NOERROR | XML_PARSE_NOWARNING);
  if (document == nullptr) {
    *error = "the description at " + location + " is not XML";
    return false;
  }
  const std::string url = FindControl(xmlDocGetRootElement(document));
  xmlFreeDoc(document);
  if (url.empty()) {
    *error = "the description at " + location + " has no AVTransport:1 control URL";
    return false;
  }
  *control = description;
  if (url[0] == '/') {
    control->path = url;
    return true;
  }
  if (!ParseHttpUrl(url, control)) {
    *error = "cannot follow the control URL " + url;
    return false;
  }
  return true;
}
