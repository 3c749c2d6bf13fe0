#include "HttpResource.h"

#include "ByteRange.h"

std::shared_ptr<PLAYER_HttpResource> PLAYER_HttpResource::File(std::vector<std::uint8_t> bytes,
                                                               std::string contentType,
                                                               const PLAYER_HttpFileOptions& options) {
  std::shared_ptr<PLAYER_HttpResource> resource(new PLAYER_HttpResource());
  resource->bytes_ = std::move(bytes);
  resource->contentType_ = std::move(contentType);
  resource->fileOptions_ = options;
  return resource;
}

bool PLAYER_HttpResource::Serve(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request,
                                bool keepAlive) const {
  const std::chrono::milliseconds delay = titles_ ? icyOptions_.delay : fileOptions_.delay;
  if (delay.count() > 0 && !io.Sleep(delay)) return false;
  return titles_ ? ServeIcy(io, request) : ServeFile(io, request, keepAlive);
}

namespace {

std::string ConnectionHeader(bool keepAlive) {
  return keepAlive ? "Connection: keep-alive\r\n" : "Connection: close\r\n";
}

}  // namespace

bool PLAYER_HttpResource::ServeFile(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request,
                                    bool keepAlive) const {
  const std::uint64_t size = bytes_.size();
  PLAYER_ByteRange range;
  range.last = size == 0 ? 0 : size - 1;
  const std::optional<std::string> rangeHeader = request.Header("Range");
  if (fileOptions_.rangeRequests && rangeHeader) range = PLAYER_ResolveByteRange(*rangeHeader, size);

  std::string head;
  if (range.kind == PLAYER_ByteRange::Kind::kUnsatisfiable) {
    head = "HTTP/1.1 416 Range Not Satisfiable\r\nContent-Range: bytes */" + std::to_string(size) +
           "\r\nContent-Length: 0\r\n";
  } else if (range.kind == PLAYER_ByteRange::Kind::kPart) {
    head = "HTTP/1.1 206 Partial Content\r\nContent-Range: bytes " + std::to_string(range.first) + "-" +
           std::to_string(range.last) + "/" + std::to_string(size) +
           "\r\nContent-Length: " + std::to_string(range.last - range.first + 1) + "\r\n";
  } else {
    head = "HTTP/1.1 200 OK\r\nContent-Length: " + std::to_string(size) + "\r\n";
  }
  head += "Content-Type: " + contentType_ + "\r\n";
  if (fileOptions_.rangeRequests) head += "Accept-Ranges: bytes\r\n";
  head += ConnectionHeader(keepAlive) + "\r\n";
  if (!io.Send(head)) return false;
  if (request.method == "HEAD" || range.kind == PLAYER_ByteRange::Kind::kUnsatisfiable || size == 0) {
    return keepAlive;
  }
  io.StartPacing(fileOptions_.bytesPerSecond);
  const char* data = reinterpret_cast<const char*>(bytes_.data());
  return io.Send(data + range.first, static_cast<std::size_t>(range.last - range.first + 1)) && keepAlive;
}

bool PLAYER_ServeStatus(PLAYER_ConnectionIo& io, const std::string& status, bool headOnly, bool keepAlive) {
  const std::string body = status + "\n";
  return io.Send("HTTP/1.1 " + status +
                 "\r\nContent-Type: text/plain\r\nContent-Length: " + std::to_string(body.size()) + "\r\n" +
                 ConnectionHeader(keepAlive) + "\r\n" + (headOnly ? std::string() : body)) &&
         keepAlive;
}
