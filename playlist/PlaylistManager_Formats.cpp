// The playlist's wire formats: the Base64 IdArray and the TrackList document.
#include <cstdlib>
#include <cstring>
#include <new>

#include "dmr_cmn/Memory.h"
#include "playlist/PlaylistManager.h"
#include "playlist/TrackList.h"
#include "sink_upnp/ResultCode.h"

namespace {

constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

}  // namespace

int PLAYLIST_PlaylistManager::encode_base64(const std::vector<unsigned char>& input, std::string& output) {
  try {
    std::string text;
    text.reserve((input.size() + 2) / 3 * 4);
    const std::size_t size = input.size();
    for (std::size_t i = 0; i < size; ++i) {
      const unsigned char byte = input[i];
      const bool lastByte = i + 1 == size;
      switch (i % 3) {
        case 0:
          text.push_back(kAlphabet[byte >> 2]);
          if (lastByte) {
            text.push_back(kAlphabet[(byte & 3) << 4]);
            text.append("==");
          }
          break;
        case 1:
          text.push_back(kAlphabet[((input[i - 1] & 3) << 4) + (byte >> 4)]);
          if (lastByte) {
            text.push_back(kAlphabet[(byte & 15) << 2]);
            text.push_back('=');
          }
          break;
        default:
          text.push_back(kAlphabet[((input[i - 1] & 15) << 2) + (byte >> 6)]);
          text.push_back(kAlphabet[byte & 63]);
          break;
      }
    }
    output.swap(text);
  } catch (const std::bad_alloc&) {
    return DMR_CMN_ERR_NO_MEMORY;
  }
  return 1;
}

int32_t PLAYLIST_PlaylistManager::GetIdArray(char** out) {
  // A null buffer is refused like a null address: there is nowhere to write.
  if (out == nullptr || *out == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  std::string text;
  try {
    std::vector<unsigned char> bytes;
    bytes.reserve(tracks_.size() * 4);
    for (trackCursor_ = tracks_.begin(); trackCursor_ != tracks_.end(); ++trackCursor_) {
      // The low 32 bits of the id, most significant byte first; the high 32 bits are dropped.
      const uint32_t id = static_cast<uint32_t>(trackCursor_->getId());
      bytes.push_back(static_cast<unsigned char>(id >> 24));
      bytes.push_back(static_cast<unsigned char>(id >> 16));
      bytes.push_back(static_cast<unsigned char>(id >> 8));
      bytes.push_back(static_cast<unsigned char>(id));
    }
    if (encode_base64(bytes, text) != 1) return DMR_CMN_ERR_NO_MEMORY;
  } catch (const std::bad_alloc&) {
    return DMR_CMN_ERR_NO_MEMORY;
  }
  // The caller's buffer holds 9 bytes per track and one more (so that an empty playlist gets "" safely),
  // which covers the text of 4 x ceil(4N / 3) characters and its terminator.
  std::memcpy(*out, text.c_str(), text.size() + 1);
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistManager::PlaylistXml(std::string* out) {
  if (out == nullptr) return SINK_UPNP_ERR_GENERIC;
  const std::size_t before = out->size();
  int32_t result = SINK_UPNP_OK;
  try {
    out->append(PLAYLIST_trackListOpening);
  } catch (const std::bad_alloc&) {
    result = DMR_CMN_ERR_NO_MEMORY;
  }
  // Neither the URI nor the metadata is escaped here (the ReadList document escapes the metadata).
  for (trackCursor_ = tracks_.begin(); result == SINK_UPNP_OK && trackCursor_ != tracks_.end();
       ++trackCursor_) {
    result = PLAYLIST_AppendTrackListEntry(out, trackCursor_->getId(), trackCursor_->getUri(),
                                           trackCursor_->getMetaData());
  }
  if (result == SINK_UPNP_OK) {
    try {
      out->append(PLAYLIST_trackListClosing);
    } catch (const std::bad_alloc&) {
      result = DMR_CMN_ERR_NO_MEMORY;
    }
  }
  if (result != SINK_UPNP_OK) out->resize(before);
  return result;
}
