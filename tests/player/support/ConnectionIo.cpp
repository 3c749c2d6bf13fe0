#include "ConnectionIo.h"

#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

namespace {

constexpr std::size_t kMaxHeadBytes = 64 * 1024;
constexpr std::size_t kChunkBytes = 16 * 1024;
// Paced sends go in slices of this much of a second, so that the rate is even at the scale a player's
// buffering sees.
constexpr std::size_t kPaceSlicesPerSecond = 50;

}  // namespace

bool PLAYER_ConnectionIo::Wait(short events, int timeoutMilliseconds) {
  pollfd fds[2] = {{fd_, events, 0}, {stopFd_, POLLIN, 0}};
  for (;;) {
    const int ready = poll(fds, 2, timeoutMilliseconds);
    if (ready < 0 && errno == EINTR) continue;
    if (ready <= 0 || (fds[1].revents & POLLIN) != 0) return false;
    // An error or hang-up on the socket counts as ready: the read or write that follows reports it.
    return true;
  }
}

std::optional<std::string> PLAYER_ConnectionIo::ReadRequestHead() {
  for (;;) {
    // A head ends at the first empty line; a bare LF ending is accepted as well as CRLF.
    std::size_t end = buffered_.find("\r\n\r\n");
    std::size_t skip = 4;
    const std::size_t bare = buffered_.find("\n\n");
    if (bare != std::string::npos && (end == std::string::npos || bare < end)) {
      end = bare;
      skip = 2;
    }
    if (end != std::string::npos) {
      std::string head = buffered_.substr(0, end);
      buffered_.erase(0, end + skip);
      return head;
    }
    if (buffered_.size() > kMaxHeadBytes || !Wait(POLLIN, -1)) return std::nullopt;
    char chunk[4096];
    const ssize_t received = recv(fd_, chunk, sizeof chunk, 0);
    if (received < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) continue;
    if (received <= 0) return std::nullopt;
    buffered_.append(chunk, static_cast<std::size_t>(received));
  }
}

void PLAYER_ConnectionIo::StartPacing(std::size_t bytesPerSecond) {
  bytesPerSecond_ = bytesPerSecond;
  pacedBytes_ = 0;
  paceStart_ = std::chrono::steady_clock::now();
}

bool PLAYER_ConnectionIo::Send(const char* data, std::size_t size) {
  std::size_t sent = 0;
  while (sent < size) {
    std::size_t chunk = std::min(size - sent, kChunkBytes);
    if (bytesPerSecond_ != 0) {
      chunk = std::min(chunk, std::max<std::size_t>(1, bytesPerSecond_ / kPaceSlicesPerSecond));
      const auto due = paceStart_ + std::chrono::microseconds(
                                        static_cast<long long>(pacedBytes_ * 1000000ULL / bytesPerSecond_));
      const auto now = std::chrono::steady_clock::now();
      if (due > now && !Sleep(std::chrono::ceil<std::chrono::milliseconds>(due - now))) return false;
    }
    if (!Wait(POLLOUT, -1)) return false;
    const ssize_t written = send(fd_, data + sent, chunk, MSG_NOSIGNAL);
    if (written < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) continue;
    if (written <= 0) return false;
    sent += static_cast<std::size_t>(written);
    pacedBytes_ += static_cast<std::size_t>(written);
  }
  return true;
}

bool PLAYER_ConnectionIo::Sleep(std::chrono::milliseconds duration) {
  pollfd stop = {stopFd_, POLLIN, 0};
  const auto deadline = std::chrono::steady_clock::now() + duration;
  for (;;) {
    const auto left =
        std::chrono::ceil<std::chrono::milliseconds>(deadline - std::chrono::steady_clock::now());
    if (left.count() <= 0) return true;
    const int ready = poll(&stop, 1, static_cast<int>(left.count()));
    if (ready > 0) return false;
    if (ready < 0 && errno != EINTR) return false;
  }
}
