// How the test HTTP server serves one registered resource: a file, or an ICY stream.
#ifndef TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_OPTIONS_H_
#define TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_OPTIONS_H_

#include <chrono>
#include <cstddef>
#include <string>

struct PLAYER_HttpFileOptions {
  // Waited before every answer (after the request has been counted), e.g. for a slow server.
  std::chrono::milliseconds delay{0};
  // false: Range headers are ignored (always 200 and the whole file) and no Accept-Ranges is sent.
  bool rangeRequests = true;
  // Nonzero: the body is sent at about this rate rather than as fast as the client reads.
  std::size_t bytesPerSecond = 0;
};

struct PLAYER_IcyStreamOptions {
  std::string stationName = "Station One";  // icy-name
  std::string contentType = "audio/mpeg";
  // Nonzero: the stream moves on to its next title after every this many audio bytes a connection sends.
  std::size_t titleSwitchBytes = 0;
  // true: the status line is "ICY 200 OK" instead of "HTTP/1.0 200 OK".
  bool icyStatusLine = false;
  std::chrono::milliseconds delay{0};
  std::size_t bytesPerSecond = 0;
  // The stream ends (the connection is closed) after this long, so that no test can hang on it.
  std::chrono::milliseconds maxDuration{60000};
};

#endif  // TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_OPTIONS_H_
