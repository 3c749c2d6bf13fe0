#include "HttpConnection.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

bool ParseHttpUrl(const std::string& url, HttpEndpoint* endpoint) {
  const std::string scheme = "http://";
  if (url.compare(0, scheme.size(), scheme) != 0) return false;
  std::string::size_type at = scheme.size();
  std::string::size_type addressEnd;
  if (at < url.size() && url[at] == '[') {
    addressEnd = url.find(']', at);
    if (addressEnd == std::string::npos) return false;
    endpoint->address = url.substr(at + 1, addressEnd - at - 1);
    ++addressEnd;
  } else {
    addressEnd = url.find(':', at);
    if (addressEnd == std::string::npos) return false;
    endpoint->address = url.substr(at, addressEnd - at);
  }
  if (addressEnd >= url.size() || url[addressEnd] != ':') return false;
  const std::string::size_type pathStart = url.find('/', addressEnd);
  const std::string port = url.substr(
      addressEnd + 1, pathStart == std::string::npos ? std::string::npos : pathStart - addressEnd - 1);
  char* end = nullptr;
  const long number = std::strtol(port.c_str(), &end, 10);
  if (port.empty() || *end != '\0' || number <= 0 || number > 65535) return false;
  endpoint->port = static_cast<uint16_t>(number);
  endpoint->path = pathStart == std::string::npos ? "/" : url.substr(pathStart);
  return true;
}

HttpConnection::~HttpConnection() { Close(); }

bool HttpConnection::Fail(const std::string& what) {
  error_ = what + (errno != 0 ? std::string(": ") + std::strerror(errno) : std::string());
  Close();
  return false;
}

bool HttpConnection::Open(const HttpEndpoint& endpoint) {
  Close();
  errno = 0;
  sockaddr_storage address{};
  socklen_t length = 0;
  auto* v4 = reinterpret_cast<sockaddr_in*>(&address);
  auto* v6 = reinterpret_cast<sockaddr_in6*>(&address);
  if (inet_pton(AF_INET, endpoint.address.c_str(), &v4->sin_addr) == 1) {
    v4->sin_family = AF_INET;
    v4->sin_port = htons(endpoint.port);
    length = sizeof(*v4);
  } else if (inet_pton(AF_INET6, endpoint.address.c_str(), &v6->sin6_addr) == 1) {
    v6->sin6_family = AF_INET6;
    v6->sin6_port = htons(endpoint.port);
    length = sizeof(*v6);
  } else {
    return Fail("not an address literal: " + endpoint.address);
  }
  descriptor_ = socket(address.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor_ < 0) return Fail("socket");
  const int on = 1;
  setsockopt(descriptor_, IPPROTO_TCP, TCP_NODELAY, &on, sizeof(on));
  if (connect(descriptor_, reinterpret_cast<sockaddr*>(&address), length) != 0) return Fail("connect");
  return true;
}

bool HttpConnection::PeerHasClosed() const {
  if (descriptor_ < 0) return true;
  pollfd ready{descriptor_, POLLIN | POLLRDHUP, 0};
  if (poll(&ready, 1, 0) <= 0) return false;
  char byte;
  return recv(descriptor_, &byte, 1, MSG_PEEK | MSG_DONTWAIT) <= 0;
}

void HttpConnection::Close() {
  if (descriptor_ >= 0) close(descriptor_);
  descriptor_ = -1;
  buffer_.clear();
}

namespace {

// The value of header `name` in the header block `head`, empty when it is absent.
std::string HeaderValue(const std::string& head, const char* name) {
  const std::size_t nameLength = std::strlen(name);
  std::string::size_type line = head.find("\r\n");
  while (line != std::string::npos && line + 2 < head.size()) {
    const std::string::size_type start = line + 2;
    const std::string::size_type end = head.find("\r\n", start);
    const std::string::size_type stop = end == std::string::npos ? head.size() : end;
    if (stop - start > nameLength && head[start + nameLength] == ':' &&
        strncasecmp(head.c_str() + start, name, nameLength) == 0) {
      std::string::size_type value = start + nameLength + 1;
      while (value < stop && head[value] == ' ') ++value;
      return head.substr(value, stop - value);
    }
    line = end;
  }
  return "";
}

}  // namespace

bool HttpConnection::Exchange(const std::string& request, HttpResponse* response) {
  errno = 0;
  if (descriptor_ < 0) return Fail("not connected");
  std::size_t sent = 0;
  while (sent < request.size()) {
    const ssize_t count = send(descriptor_, request.data() + sent, request.size() - sent, MSG_NOSIGNAL);
    if (count <= 0) return Fail("send");
    sent += static_cast<std::size_t>(count);
  }
  char chunk[16384];
  std::string::size_type headEnd;
  while ((headEnd = buffer_.find("\r\n\r\n")) == std::string::npos) {
    const ssize_t count = recv(descriptor_, chunk, sizeof(chunk), 0);
    if (count <= 0) return Fail(count == 0 ? "closed by the server before a response" : "recv");
    buffer_.append(chunk, static_cast<std::size_t>(count));
  }
  const std::string head = buffer_.substr(0, headEnd);
  if (head.compare(0, 9, "HTTP/1.1 ") != 0 && head.compare(0, 9, "HTTP/1.0 ") != 0)
    return Fail("not an HTTP response");
  response->status = std::atoi(head.c_str() + 9);
  const std::string length = HeaderValue(head, "Content-Length");
  if (length.empty()) return Fail("a response without Content-Length");
  const std::size_t bodyLength = std::strtoul(length.c_str(), nullptr, 10);
  response->closes = strcasecmp(HeaderValue(head, "Connection").c_str(), "close") == 0;
  const std::size_t total = headEnd + 4 + bodyLength;
  while (buffer_.size() < total) {
    const ssize_t count = recv(descriptor_, chunk, sizeof(chunk), 0);
    if (count <= 0) return Fail(count == 0 ? "closed by the server within a response" : "recv");
    buffer_.append(chunk, static_cast<std::size_t>(count));
  }
  response->body.assign(buffer_, headEnd + 4, bodyLength);
  buffer_.erase(0, total);
  return true;
}
