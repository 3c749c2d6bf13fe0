// How an ICY stream answers: the headers, then the audio loop with its metadata blocks.
#include <algorithm>

#include "HttpResource.h"
#include "IcyMetadata.h"

namespace {

constexpr std::size_t kAudioChunkBytes = 8 * 1024;

}  // namespace

std::shared_ptr<PLAYER_HttpResource> PLAYER_HttpResource::IcyStream(std::vector<std::uint8_t> audioBytes,
                                                                    std::size_t metaInterval,
                                                                    std::vector<std::string> titles,
                                                                    const PLAYER_IcyStreamOptions& options) {
  std::shared_ptr<PLAYER_HttpResource> resource(new PLAYER_HttpResource());
  resource->bytes_ = std::move(audioBytes);
  resource->contentType_ = options.contentType;
  resource->metaInterval_ = metaInterval;
  resource->icyOptions_ = options;
  resource->titles_ = std::make_unique<PLAYER_IcyTitles>(std::move(titles));
  return resource;
}

bool PLAYER_HttpResource::ServeIcy(PLAYER_ConnectionIo& io, const PLAYER_HttpRequest& request) const {
  const bool withMetadata = metaInterval_ > 0 && request.Header("Icy-MetaData").value_or("") == "1";
  // On purpose no Content-Length: a radio stream has no end, and the client reads it until the server
  // closes the connection, as it does for every ICY answer.
  std::string head = icyOptions_.icyStatusLine ? "ICY 200 OK\r\n" : "HTTP/1.0 200 OK\r\n";
  head += "Content-Type: " + contentType_ + "\r\n";
  head += "icy-name: " + icyOptions_.stationName + "\r\n";
  head += "icy-pub: 0\r\n";
  if (withMetadata) head += "icy-metaint: " + std::to_string(metaInterval_) + "\r\n";
  head += "\r\n";
  if (io.Send(head) && request.method == "GET" && !bytes_.empty()) StreamIcy(io, withMetadata);
  return false;
}

void PLAYER_HttpResource::StreamIcy(PLAYER_ConnectionIo& io, bool withMetadata) const {
  const auto end = std::chrono::steady_clock::now() + icyOptions_.maxDuration;
  const char* audio = reinterpret_cast<const char*>(bytes_.data());
  std::size_t position = 0;  // in the audio loop
  std::size_t untilMetadata = metaInterval_;
  std::size_t untilSwitch = icyOptions_.titleSwitchBytes;
  std::uint64_t announced = 0;  // the title version last sent; versions start at 1
  io.StartPacing(icyOptions_.bytesPerSecond);
  while (std::chrono::steady_clock::now() < end) {
    std::size_t chunk = std::min(kAudioChunkBytes, bytes_.size() - position);
    if (withMetadata) chunk = std::min(chunk, untilMetadata);
    if (untilSwitch != 0) chunk = std::min(chunk, untilSwitch);
    if (!io.Send(audio + position, chunk)) return;
    position = (position + chunk) % bytes_.size();
    if (untilSwitch != 0 && (untilSwitch -= chunk) == 0) {
      titles_->Advance();
      untilSwitch = icyOptions_.titleSwitchBytes;
    }
    if (withMetadata && (untilMetadata -= chunk) == 0) {
      const auto [version, title] = titles_->Current();
      const std::string block =
          version == announced ? PLAYER_IcyUnchangedBlock() : PLAYER_IcyMetadataBlock(title);
      announced = version;
      if (!io.Send(block)) return;
      untilMetadata = metaInterval_;
    }
  }
}
