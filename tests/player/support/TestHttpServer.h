// PLAYER_TestHttpServer: an HTTP/1.1 server on 127.0.0.1 (an ephemeral port) that serves what a test
// registered, for players and their HTTP sources to fetch. It listens from construction to Stop or
// destruction, serving each connection on a thread of its own.
//
// Files: GET and HEAD, Content-Length, "Accept-Ranges: bytes", one range per request ("bytes=a-b",
// "bytes=a-", "bytes=-n") answered 206 with Content-Range, 416 for a range that starts past the end;
// persistent connections (HTTP/1.1 keep-alive, until the client says "Connection: close"). Unknown paths
// are answered 404, other methods 501. Paths are matched without the query ("/x.wav?n=1" is "/x.wav").
//
// ICY streams (an internet radio): a request with "Icy-MetaData: 1" gets an HTTP/1.0 answer (or an
// "ICY 200 OK" one) with icy-name, icy-metaint and no Content-Length, and a metadata block after every
// metaInterval audio bytes (see IcyMetadata.h); without that header, the plain audio. The audio bytes loop
// until the client goes, the server stops, or the stream's maximum duration has passed.
//
// Every request is counted per path (unknown paths too) and the last one per path is kept. All methods are
// thread-safe. Only 127.0.0.1 is ever bound or answered.
#ifndef TESTS_PLAYER_SUPPORT_TEST_HTTP_SERVER_H_
#define TESTS_PLAYER_SUPPORT_TEST_HTTP_SERVER_H_

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "HttpRequest.h"
#include "HttpResourceOptions.h"

class PLAYER_HttpResource;

class PLAYER_TestHttpServer {
 public:
  // Starts listening on 127.0.0.1; a test failure (and Port() 0) if it cannot.
  PLAYER_TestHttpServer();
  // Stops.
  ~PLAYER_TestHttpServer();

  PLAYER_TestHttpServer(const PLAYER_TestHttpServer&) = delete;
  PLAYER_TestHttpServer& operator=(const PLAYER_TestHttpServer&) = delete;

  std::uint16_t Port() const { return port_; }
  // "http://127.0.0.1:<port>" followed by `pathAndQuery` ("/x.wav").
  std::string Url(const std::string& pathAndQuery) const;

  // Serves `bytes` at `path` (which starts with "/"), replacing what was there.
  void AddFile(const std::string& path, std::vector<std::uint8_t> bytes, const std::string& contentType,
               const PLAYER_HttpFileOptions& options = {});

  // Serves an ICY stream of `audioBytes` at `path`, with a metadata block every `metaInterval` audio bytes
  // to clients that ask for metadata, announcing `titles` in turn (see PLAYER_IcyStreamOptions).
  void AddIcyStream(const std::string& path, std::vector<std::uint8_t> audioBytes, std::size_t metaInterval,
                    std::vector<std::string> titles, const PLAYER_IcyStreamOptions& options = {});

  // The ICY stream at `path` announces `title` in its next metadata block (a test failure for a path that
  // is not an ICY stream).
  void SetIcyTitle(const std::string& path, const std::string& title);

  // Serves nothing at `path` from now on (404).
  void Remove(const std::string& path);

  // Requests received for `path` so far, whatever their answer.
  std::size_t RequestCount(const std::string& path) const;
  // The last request received for `path`; nothing before the first.
  std::optional<PLAYER_HttpRequest> LastRequest(const std::string& path) const;

  // Closes the listening socket and every connection, and joins every thread. Idempotent.
  void Stop();

 private:
  void AcceptLoop();
  void ServeConnection(int fd);
  // Counts and keeps `request`; returns what is served at its path (null: nothing).
  std::shared_ptr<const PLAYER_HttpResource> Record(const PLAYER_HttpRequest& request);
  void Add(const std::string& path, std::shared_ptr<const PLAYER_HttpResource> resource);

  std::uint16_t port_ = 0;
  int listenFd_ = -1;
  int stopFd_ = -1;  // an eventfd: readable once Stop has begun
  std::thread acceptor_;

  // The connection threads: only the acceptor thread touches the list until Stop has joined it.
  struct Connection {
    std::thread thread;
    bool finished = false;  // guarded by mutex_
  };
  std::list<Connection> connections_;

  mutable std::mutex mutex_;
  std::map<std::string, std::shared_ptr<const PLAYER_HttpResource>> resources_;  // guarded by mutex_
  std::map<std::string, std::size_t> requestCounts_;                             // guarded by mutex_
  std::map<std::string, PLAYER_HttpRequest> lastRequests_;                       // guarded by mutex_
};

#endif  // TESTS_PLAYER_SUPPORT_TEST_HTTP_SERVER_H_
