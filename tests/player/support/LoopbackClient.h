// LoopbackClient: a bare TCP client on 127.0.0.1 for the tests of the test servers themselves, which must
// see the exact bytes on the wire (a client library would hide them).
#ifndef TESTS_PLAYER_SUPPORT_LOOPBACK_CLIENT_H_
#define TESTS_PLAYER_SUPPORT_LOOPBACK_CLIENT_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

// An HTTP answer as read off the wire.
struct HttpReply {
  std::string statusLine;  // "HTTP/1.1 206 Partial Content"
  std::vector<std::pair<std::string, std::string>> headers;
  std::string body;

  int Status() const;  // the number of the status line; 0 if there is none
  std::optional<std::string> Header(const std::string& name) const;  // compared without case
};

class LoopbackClient {
 public:
  // Connects to 127.0.0.1:`port`; Connected() says whether it did. Every read below waits at most
  // `timeout` for each piece of data.
  explicit LoopbackClient(std::uint16_t port, std::chrono::milliseconds timeout = std::chrono::seconds(2));
  ~LoopbackClient();

  LoopbackClient(const LoopbackClient&) = delete;
  LoopbackClient& operator=(const LoopbackClient&) = delete;

  bool Connected() const { return fd_ >= 0; }

  bool Send(const std::string& text);

  // Reads until `count` bytes have been read, the peer closes, or the timeout; returns what was read.
  std::string Read(std::size_t count);
  // Reads until the peer closes or the timeout; returns what was read.
  std::string ReadToClose();
  // Reads one whole answer: the head, then as many body bytes as Content-Length says (none for a HEAD
  // request, `headRequest`). Nothing on timeout or a malformed head.
  std::optional<HttpReply> ReadReply(bool headRequest = false);
  // True when the peer closed the connection (a read returns end of stream within the timeout).
  bool PeerClosed();

 private:
  // Reads what is available into buffered_ waiting at most the timeout; false on timeout, close or error.
  bool Fill();
  std::string Take(std::size_t count);

  int fd_ = -1;
  std::chrono::milliseconds timeout_;
  std::string buffered_;
  bool closed_ = false;
};

// One request on a connection of its own, with "Connection: close", and the whole answer up to the close.
// `extraHeaders` are whole lines, each ending in CRLF.
std::optional<HttpReply> FetchOnce(std::uint16_t port, const std::string& method, const std::string& target,
                                   const std::string& extraHeaders = "");

#endif  // TESTS_PLAYER_SUPPORT_LOOPBACK_CLIENT_H_
