// PLAYER_HttpRequest: one request as the test HTTP server received it, kept so that tests check what a
// client sent (its User-Agent, whether it asked for ICY metadata, the range it asked for).
#ifndef TESTS_PLAYER_SUPPORT_HTTP_REQUEST_H_
#define TESTS_PLAYER_SUPPORT_HTTP_REQUEST_H_

#include <optional>
#include <string>
#include <utility>
#include <vector>

struct PLAYER_HttpRequest {
  std::string method;                                        // "GET", "HEAD", ...
  std::string target;                                        // as sent: "/x.wav?token=1"
  std::string path;                                          // the target without its query: "/x.wav"
  std::string version;                                       // "HTTP/1.1"
  std::vector<std::pair<std::string, std::string>> headers;  // names as sent, values trimmed, in order

  // The value of the first header called `name`, compared without case; nothing when there is none.
  std::optional<std::string> Header(const std::string& name) const;
};

// Parses a request head: the request line and the header lines, each ending in CRLF (a bare LF is
// accepted), without the blank line that ends the head. Returns false for a head that is not HTTP/1.x.
bool PLAYER_ParseHttpRequestHead(const std::string& head, PLAYER_HttpRequest* request);

#endif  // TESTS_PLAYER_SUPPORT_HTTP_REQUEST_H_
