#include "LoopbackClient.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <sstream>

namespace {

std::optional<HttpReply> ParseHead(const std::string& head) {
  std::istringstream lines(head);
  HttpReply reply;
  if (!std::getline(lines, reply.statusLine)) return std::nullopt;
  if (!reply.statusLine.empty() && reply.statusLine.back() == '\r') reply.statusLine.pop_back();
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    const std::size_t colon = line.find(':');
    if (colon == std::string::npos) return std::nullopt;
    std::string value = line.substr(colon + 1);
    value.erase(0, value.find_first_not_of(' '));
    reply.headers.emplace_back(line.substr(0, colon), value);
  }
  return reply;
}

}  // namespace

int HttpReply::Status() const {
  const std::size_t space = statusLine.find(' ');
  return space == std::string::npos ? 0 : std::atoi(statusLine.c_str() + space + 1);
}

std::optional<std::string> HttpReply::Header(const std::string& name) const {
  for (const auto& header : headers) {
    if (strcasecmp(header.first.c_str(), name.c_str()) == 0) return header.second;
  }
  return std::nullopt;
}

LoopbackClient::LoopbackClient(std::uint16_t port, std::chrono::milliseconds timeout) : timeout_(timeout) {
  fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = htons(port);
  if (fd_ >= 0 && connect(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0) {
    close(fd_);
    fd_ = -1;
  }
}

LoopbackClient::~LoopbackClient() {
  if (fd_ >= 0) close(fd_);
}

bool LoopbackClient::Send(const std::string& text) {
  std::size_t sent = 0;
  while (fd_ >= 0 && sent < text.size()) {
    const ssize_t written = send(fd_, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    sent += static_cast<std::size_t>(written);
  }
  return fd_ >= 0;
}

bool LoopbackClient::Fill() {
  if (fd_ < 0 || closed_) return false;
  pollfd readable = {fd_, POLLIN, 0};
  if (poll(&readable, 1, static_cast<int>(timeout_.count())) <= 0) return false;
  char chunk[16384];
  const ssize_t received = recv(fd_, chunk, sizeof chunk, 0);
  if (received <= 0) {
    closed_ = true;
    return false;
  }
  buffered_.append(chunk, static_cast<std::size_t>(received));
  return true;
}

std::string LoopbackClient::Take(std::size_t count) {
  std::string taken = buffered_.substr(0, count);
  buffered_.erase(0, taken.size());
  return taken;
}

std::string LoopbackClient::Read(std::size_t count) {
  while (buffered_.size() < count && Fill()) {
  }
  return Take(count);
}

std::string LoopbackClient::ReadToClose() {
  while (Fill()) {
  }
  return Take(buffered_.size());
}

std::optional<HttpReply> LoopbackClient::ReadReply(bool headRequest) {
  std::size_t end;
  while ((end = buffered_.find("\r\n\r\n")) == std::string::npos) {
    if (!Fill()) return std::nullopt;
  }
  std::optional<HttpReply> reply = ParseHead(Take(end + 4).substr(0, end));
  if (!reply) return std::nullopt;
  const std::optional<std::string> length = reply->Header("Content-Length");
  if (!headRequest && length) reply->body = Read(std::strtoull(length->c_str(), nullptr, 10));
  return reply;
}

bool LoopbackClient::PeerClosed() {
  while (Fill()) {
  }
  return closed_;
}

std::optional<HttpReply> FetchOnce(std::uint16_t port, const std::string& method, const std::string& target,
                                   const std::string& extraHeaders) {
  LoopbackClient client(port);
  if (!client.Send(method + " " + target + " HTTP/1.1\r\nHost: 127.0.0.1\r\nConnection: close\r\n" +
                   extraHeaders + "\r\n")) {
    return std::nullopt;
  }
  const std::string whole = client.ReadToClose();
  const std::size_t end = whole.find("\r\n\r\n");
  if (end == std::string::npos) return std::nullopt;
  std::optional<HttpReply> reply = ParseHead(whole.substr(0, end));
  if (reply) reply->body = whole.substr(end + 4);
  return reply;
}
