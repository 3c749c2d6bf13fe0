#include "HttpRequest.h"

#include <strings.h>

#include <sstream>

namespace {

std::string Trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return "";
  const std::size_t last = text.find_last_not_of(" \t\r");
  return text.substr(first, last - first + 1);
}

}  // namespace

std::optional<std::string> PLAYER_HttpRequest::Header(const std::string& name) const {
  for (const auto& header : headers) {
    if (strcasecmp(header.first.c_str(), name.c_str()) == 0) return header.second;
  }
  return std::nullopt;
}

bool PLAYER_ParseHttpRequestHead(const std::string& head, PLAYER_HttpRequest* request) {
  std::istringstream lines(head);
  std::string line;
  if (!std::getline(lines, line)) return false;
  if (!line.empty() && line.back() == '\r') line.pop_back();
  std::istringstream requestLine(line);
  std::string rest;
  if (!(requestLine >> request->method >> request->target >> request->version) || (requestLine >> rest)) {
    return false;
  }
  if (request->version != "HTTP/1.1" && request->version != "HTTP/1.0") return false;
  request->path = request->target.substr(0, request->target.find('?'));
  request->headers.clear();
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty()) break;
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos || colon == 0) return false;
    request->headers.emplace_back(line.substr(0, colon), Trim(line.substr(colon + 1)));
  }
  return true;
}
