#include "playlist/PlaylistData.h"

#include <cstdlib>
#include <cstring>

#include "dmr_cmn/Memory.h"
#include "sink_upnp/ResultCode.h"

namespace {

// A heap copy of `text` with its terminator, or null when there is no memory.
char* CopyText(const char* text) {
  const std::size_t size = std::strlen(text) + 1;
  char* copy = static_cast<char*>(DMR_CMN_Malloc(size));
  if (copy != nullptr) std::memcpy(copy, text, size);
  return copy;
}

// The shared rule of the two write-once setters.
int32_t SetOnce(char** field, const char* text) {
  if (text == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  if (*field != nullptr) return SINK_UPNP_ERR_GENERIC;
  // A failed copy stores its null result: the field stays unset and the setter may be called again.
  *field = CopyText(text);
  return *field == nullptr ? DMR_CMN_ERR_NO_MEMORY : SINK_UPNP_OK;
}

// Out of line, so that the compiler does not pair the free() with an inlined allocation it cannot see
// through and warn of a mismatch that is none: DMR_CMN_Malloc hands out malloc() blocks.
[[gnu::noinline]] void ReleaseBlock(void* block) noexcept { std::free(block); }

}  // namespace

PLAYLIST_PlaylistData::PLAYLIST_PlaylistData() noexcept
    : metadata_(nullptr), trackNumber_(0), id_(0), uri_(nullptr), shuffleTrackNumber_(0) {}

PLAYLIST_PlaylistData::~PLAYLIST_PlaylistData() {
  ReleaseBlock(metadata_);
  ReleaseBlock(uri_);
}

void* PLAYLIST_PlaylistData::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return DMR_CMN_Malloc(size);
}

void PLAYLIST_PlaylistData::operator delete(void* block) noexcept { ReleaseBlock(block); }

void PLAYLIST_PlaylistData::operator delete(void* block, const std::nothrow_t&) noexcept {
  ReleaseBlock(block);
}

int32_t PLAYLIST_PlaylistData::setUri(const char* uri) { return SetOnce(&uri_, uri); }

int32_t PLAYLIST_PlaylistData::setMetaData(const char* metadata) { return SetOnce(&metadata_, metadata); }

// The three number setters refuse 0 with -999: the contract's null-argument code stands for "no value" here.
int32_t PLAYLIST_PlaylistData::setId(uint64_t id) {
  if (id == 0) return SINK_UPNP_ERR_NULL_ARGUMENT;
  id_ = id;
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistData::setTrackNumber(uint32_t trackNumber) {
  if (trackNumber == 0) return SINK_UPNP_ERR_NULL_ARGUMENT;
  trackNumber_ = trackNumber;
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistData::setShuffleTrackNumber(uint32_t shuffleTrackNumber) {
  if (shuffleTrackNumber == 0) return SINK_UPNP_ERR_NULL_ARGUMENT;
  shuffleTrackNumber_ = shuffleTrackNumber;
  return SINK_UPNP_OK;
}
