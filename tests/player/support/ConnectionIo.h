// PLAYER_ConnectionIo: the blocking reads, writes and waits of one connection of the test HTTP server.
// Each of them also watches the server's stop descriptor and gives up as soon as it becomes readable, so
// that stopping the server never waits for a slow or silent client.
//
// Used by the one thread that serves the connection; not thread-safe.
#ifndef TESTS_PLAYER_SUPPORT_CONNECTION_IO_H_
#define TESTS_PLAYER_SUPPORT_CONNECTION_IO_H_

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

class PLAYER_ConnectionIo {
 public:
  // `fd` is a non-blocking connected socket (not owned); `stopFd` becomes readable when the server stops.
  PLAYER_ConnectionIo(int fd, int stopFd) : fd_(fd), stopFd_(stopFd) {}

  // The next request head, without the blank line that ends it. Nothing when the client closes or fails,
  // the server stops, or the head grows past 64 KiB. Bytes after the head stay buffered for the next call.
  std::optional<std::string> ReadRequestHead();

  // Sends all of `data`, at most `bytesPerSecond` on average since the last call of StartPacing when that
  // is nonzero. False when the client has gone or the server stops.
  bool Send(const char* data, std::size_t size);
  bool Send(const std::string& data) { return Send(data.data(), data.size()); }

  // Starts a new pace for Send: 0 sends as fast as the client reads.
  void StartPacing(std::size_t bytesPerSecond);

  // Waits `duration`; false when the server stops meanwhile.
  bool Sleep(std::chrono::milliseconds duration);

 private:
  // Waits until `events` are ready on the socket, for at most `timeoutMilliseconds` (-1: no limit). False
  // when the server stops first, or on timeout.
  bool Wait(short events, int timeoutMilliseconds);

  int fd_;
  int stopFd_;
  std::string buffered_;
  std::size_t bytesPerSecond_ = 0;
  std::size_t pacedBytes_ = 0;
  std::chrono::steady_clock::time_point paceStart_;
};

#endif  // TESTS_PLAYER_SUPPORT_CONNECTION_IO_H_
