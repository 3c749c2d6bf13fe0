#include "TestHttpServer.h"

#include <arpa/inet.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <poll.h>
#include <strings.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "ConnectionIo.h"
#include "HttpResource.h"

namespace {

bool KeepsAlive(const PLAYER_HttpRequest& request) {
  const std::string connection = request.Header("Connection").value_or("");
  if (request.version == "HTTP/1.0") return strcasecmp(connection.c_str(), "keep-alive") == 0;
  return strcasecmp(connection.c_str(), "close") != 0;
}

}  // namespace

PLAYER_TestHttpServer::PLAYER_TestHttpServer() {
  stopFd_ = eventfd(0, EFD_CLOEXEC);
  listenFd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  address.sin_port = 0;
  socklen_t length = sizeof address;
  if (stopFd_ < 0 || listenFd_ < 0 ||
      bind(listenFd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(listenFd_, 64) != 0 ||
      getsockname(listenFd_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    ADD_FAILURE() << "PLAYER_TestHttpServer cannot listen on 127.0.0.1: " << std::strerror(errno);
    Stop();
    return;
  }
  port_ = ntohs(address.sin_port);
  acceptor_ = std::thread(&PLAYER_TestHttpServer::AcceptLoop, this);
}

PLAYER_TestHttpServer::~PLAYER_TestHttpServer() { Stop(); }

std::string PLAYER_TestHttpServer::Url(const std::string& pathAndQuery) const {
  return "http://127.0.0.1:" + std::to_string(port_) + pathAndQuery;
}

void PLAYER_TestHttpServer::Stop() {
  if (stopFd_ >= 0) {
    const std::uint64_t one = 1;
    // The eventfd stays readable from now on: every wait of every connection returns.
    if (write(stopFd_, &one, sizeof one) != sizeof one) ADD_FAILURE() << "cannot signal the server's stop";
  }
  if (acceptor_.joinable()) acceptor_.join();
  for (Connection& connection : connections_) connection.thread.join();
  connections_.clear();
  if (listenFd_ >= 0) close(listenFd_);
  if (stopFd_ >= 0) close(stopFd_);
  listenFd_ = -1;
  stopFd_ = -1;
}

void PLAYER_TestHttpServer::Add(const std::string& path,
                                std::shared_ptr<const PLAYER_HttpResource> resource) {
  std::lock_guard<std::mutex> guard(mutex_);
  resources_[path] = std::move(resource);
}

void PLAYER_TestHttpServer::AddFile(const std::string& path, std::vector<std::uint8_t> bytes,
                                    const std::string& contentType, const PLAYER_HttpFileOptions& options) {
  Add(path, PLAYER_HttpResource::File(std::move(bytes), contentType, options));
}

void PLAYER_TestHttpServer::AddIcyStream(const std::string& path, std::vector<std::uint8_t> audioBytes,
                                         std::size_t metaInterval, std::vector<std::string> titles,
                                         const PLAYER_IcyStreamOptions& options) {
  Add(path, PLAYER_HttpResource::IcyStream(std::move(audioBytes), metaInterval, std::move(titles), options));
}

void PLAYER_TestHttpServer::SetIcyTitle(const std::string& path, const std::string& title) {
  std::lock_guard<std::mutex> guard(mutex_);
  const auto found = resources_.find(path);
  if (found == resources_.end() || found->second->Titles() == nullptr) {
    ADD_FAILURE() << "SetIcyTitle: no ICY stream at " << path;
    return;
  }
  found->second->Titles()->Set(title);
}

void PLAYER_TestHttpServer::Remove(const std::string& path) {
  std::lock_guard<std::mutex> guard(mutex_);
  resources_.erase(path);
}

std::size_t PLAYER_TestHttpServer::RequestCount(const std::string& path) const {
  std::lock_guard<std::mutex> guard(mutex_);
  const auto found = requestCounts_.find(path);
  return found == requestCounts_.end() ? 0 : found->second;
}

std::optional<PLAYER_HttpRequest> PLAYER_TestHttpServer::LastRequest(const std::string& path) const {
  std::lock_guard<std::mutex> guard(mutex_);
  const auto found = lastRequests_.find(path);
  if (found == lastRequests_.end()) return std::nullopt;
  return found->second;
}

std::shared_ptr<const PLAYER_HttpResource> PLAYER_TestHttpServer::Record(const PLAYER_HttpRequest& request) {
  std::lock_guard<std::mutex> guard(mutex_);
  ++requestCounts_[request.path];
  lastRequests_[request.path] = request;
  const auto found = resources_.find(request.path);
  return found == resources_.end() ? nullptr : found->second;
}

void PLAYER_TestHttpServer::AcceptLoop() {
  pollfd fds[2] = {{listenFd_, POLLIN, 0}, {stopFd_, POLLIN, 0}};
  for (;;) {
    const int ready = poll(fds, 2, -1);
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0 || (fds[1].revents & POLLIN) != 0) return;
    const int fd = accept4(listenFd_, nullptr, nullptr, SOCK_NONBLOCK | SOCK_CLOEXEC);
    if (fd < 0) continue;
    // Join the connections that have ended, so that a long test does not gather threads.
    for (auto it = connections_.begin(); it != connections_.end();) {
      bool finished = false;
      {
        std::lock_guard<std::mutex> guard(mutex_);
        finished = it->finished;
      }
      if (finished) {
        it->thread.join();
        it = connections_.erase(it);
      } else {
        ++it;
      }
    }
    Connection& connection = connections_.emplace_back();
    connection.thread = std::thread([this, fd, &connection] {
      ServeConnection(fd);
      std::lock_guard<std::mutex> guard(mutex_);
      connection.finished = true;
    });
  }
}

void PLAYER_TestHttpServer::ServeConnection(int fd) {
  PLAYER_ConnectionIo io(fd, stopFd_);
  bool open = true;
  while (open) {
    const std::optional<std::string> head = io.ReadRequestHead();
    if (!head) break;
    PLAYER_HttpRequest request;
    if (!PLAYER_ParseHttpRequestHead(*head, &request)) {
      PLAYER_ServeStatus(io, "400 Bad Request", false, false);
      break;
    }
    const std::shared_ptr<const PLAYER_HttpResource> resource = Record(request);
    const bool keepAlive = KeepsAlive(request);
    const bool headOnly = request.method == "HEAD";
    if (request.method != "GET" && request.method != "HEAD") {
      open = PLAYER_ServeStatus(io, "501 Not Implemented", headOnly, keepAlive);
    } else if (!resource) {
      open = PLAYER_ServeStatus(io, "404 Not Found", headOnly, keepAlive);
    } else {
      open = resource->Serve(io, request, keepAlive);
    }
  }
  close(fd);
}
