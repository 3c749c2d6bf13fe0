// HttpConnection: one TCP connection to an HTTP/1.1 server, for a client that measures the server and
// nothing else: a request goes out in one write, a response is read up to its Content-Length, no TLS, no
// redirects, no chunked bodies (a response that uses them counts as a failure).
#ifndef BENCH_HOST_HTTP_CONNECTION_H_
#define BENCH_HOST_HTTP_CONNECTION_H_

#include <cstdint>
#include <string>

// Where a request goes: an IPv4 or IPv6 address literal, a port and the request's path.
struct HttpEndpoint {
  std::string address;
  uint16_t port = 0;
  std::string path;
};

// Reads "http://ADDRESS:PORT/PATH" (IPv6 in brackets). Returns false for anything else.
bool ParseHttpUrl(const std::string& url, HttpEndpoint* endpoint);

struct HttpResponse {
  int status = 0;
  std::string body;
  bool closes = false;  // the server said "Connection: close"
};

class HttpConnection {
 public:
  HttpConnection() = default;
  ~HttpConnection();
  HttpConnection(const HttpConnection&) = delete;
  HttpConnection& operator=(const HttpConnection&) = delete;

  // Connects (with TCP_NODELAY, as a control point's small requests want). Returns false with error() set.
  bool Open(const HttpEndpoint& endpoint);
  // Sends `request` whole and reads one response into *response. Returns false with error() set when the
  // socket fails, the server closes first, or the response has no Content-Length.
  bool Exchange(const std::string& request, HttpResponse* response);
  void Close();
  // True when the server has closed its end (or reset it) while the connection was idle: what an HTTP
  // client checks before it sends on a kept-alive connection, without waiting.
  bool PeerHasClosed() const;
  bool IsOpen() const { return descriptor_ >= 0; }
  const std::string& error() const { return error_; }

 private:
  bool Fail(const std::string& what);
  int descriptor_ = -1;
  std::string buffer_;  // bytes read past the last response
  std::string error_;
};

#endif  // BENCH_HOST_HTTP_CONNECTION_H_
