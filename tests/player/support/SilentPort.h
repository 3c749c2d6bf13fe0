// PLAYER_SilentPort: a TCP port on 127.0.0.1 that accepts connections and never answers, for the tests of
// a URI whose server does not respond.
//
// The socket listens and is never accepted from: the kernel completes each client's handshake (up to the
// backlog), so a connect succeeds at once, and then nothing is ever read or written. Closed on destruction,
// which resets the waiting clients.
#ifndef TESTS_PLAYER_SUPPORT_SILENT_PORT_H_
#define TESTS_PLAYER_SUPPORT_SILENT_PORT_H_

#include <cstdint>
#include <string>

class PLAYER_SilentPort {
 public:
  // Listens on an ephemeral port; a test failure (and Port() 0) if it cannot.
  PLAYER_SilentPort();
  ~PLAYER_SilentPort();

  PLAYER_SilentPort(const PLAYER_SilentPort&) = delete;
  PLAYER_SilentPort& operator=(const PLAYER_SilentPort&) = delete;

  std::uint16_t Port() const { return port_; }
  // "http://127.0.0.1:<port>" followed by `pathAndQuery`.
  std::string Url(const std::string& pathAndQuery) const;

 private:
  int fd_ = -1;
  std::uint16_t port_ = 0;
};

#endif  // TESTS_PLAYER_SUPPORT_SILENT_PORT_H_
