// PLAYER_HttpResource: one thing the test HTTP server serves at a path, and how it answers a request for
// it. Immutable once made, except for an ICY stream's current title, which is thread-safe; connection
// threads share it through a shared_ptr, so that replacing or removing it never pulls it from under a
// connection that is still sending it.
#ifndef TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_H_
#define TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_H_

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ConnectionIo.h"
#include "HttpRequest.h"
#include "HttpResourceOptions.h"
#include "IcyTitles.h"

class PLAYER_HttpResource {
 public:
  static std::shared_ptr<PLAYER_HttpResource> File(std::vector<std::uint8_t> bytes, std::string contentType,
                                                   const PLAYER_HttpFileOptions& options);
  static std::shared_ptr<PLAYER_HttpResource> IcyStream(std::vector<std::uint8_t> audioBytes,
                                                        std::size_t metaInterval,
                                                        std::vector<std::string> titles,
                                                        const PLAYER_IcyStreamOptions& options);

  // Answers `request` (a GET or a HEAD) on `io`, after the resource's delay. Returns whether the connection
  // may carry another request: `keepAlive` for a complete file answer, false once the client has gone or
  // the server stops, and always false for an ICY stream, whose end is the end of the connection.
  bool Serve(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request, bool keepAlive) const;

  // Null for a file.
  PLAYER_IcyTitles* Titles() const { return titles_.get(); }

 private:
  PLAYER_HttpResource() = default;
  bool ServeFile(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request, bool keepAlive) const;
  bool ServeIcy(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request) const;
  // Sends the audio loop with its metadata blocks (every metaInterval_ bytes when `withMetadata`).
  void StreamIcy(PLAYER_ConnectionIo& io, bool withMetadata) const;

  std::vector<std::uint8_t> bytes_;
  std::string contentType_;
  PLAYER_HttpFileOptions fileOptions_;
  // ICY streams only.
  std::size_t metaInterval_ = 0;
  PLAYER_IcyStreamOptions icyOptions_;
  std::unique_ptr<PLAYER_IcyTitles> titles_;
};

// Answers with `status` ("404 Not Found") and a short text body (its headers only when `headOnly`).
// Returns whether the connection may carry another request.
bool PLAYER_ServeStatus(PLAYER_ConnectionIo& io, const std::string& status, bool headOnly, bool keepAlive);

#endif  // TESTS_PLAYER_SUPPORT_HTTP_RESOURCE_H_
