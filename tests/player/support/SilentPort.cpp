#include "SilentPort.h"

#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace {

constexpr int kBacklog = 64;

}  // namespace

PLAYER_SilentPort::PLAYER_SilentPort() {
  fd_ = socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  if (fd_ < 0 || bind(fd_, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0 ||
      listen(fd_, kBacklog) != 0 || getsockname(fd_, reinterpret_cast<sockaddr*>(&address), &length) != 0) {
    ADD_FAILURE() << "PLAYER_SilentPort cannot listen on 127.0.0.1: " << std::strerror(errno);
    return;
  }
  port_ = ntohs(address.sin_port);
}

PLAYER_SilentPort::~PLAYER_SilentPort() {
  if (fd_ >= 0) close(fd_);
}

std::string PLAYER_SilentPort::Url(const std::string& pathAndQuery) const {
  return "http://127.0.0.1:" + std::to_string(port_) + pathAndQuery;
}
