#include "playlist/TrackList.h"

#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "playlist/PlaylistManager.h"
#include "sink_upnp/ResultCode.h"

namespace {

// Appends without a result: std::bad_alloc goes to the caller, who restores the text.
void AppendEntry(std::string* out, uint64_t id, const char* uri, const char* metadata) {
  char decimal[24];
  std::snprintf(decimal, sizeof decimal, "%" PRIu64, id);
  out->append(PLAYLIST_trackListEntryOpening);
  out->append(decimal);
  out->append(PLAYLIST_trackListIdToUri);
  out->append(uri);
  out->append(PLAYLIST_trackListUriToMetadata);
  out->append(metadata);
  out->append(PLAYLIST_trackListEntryClosing);
}

}  // namespace

int32_t PLAYLIST_AppendTrackListEntry(std::string* out, uint64_t id, const char* uri, const char* metadata) {
  if (out == nullptr || uri == nullptr || metadata == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  const std::size_t before = out->size();
  try {
    AppendEntry(out, id, uri, metadata);
  } catch (const std::bad_alloc&) {
    out->resize(before);
    return DMR_CMN_ERR_NO_MEMORY;
  }
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_BuildTrackList(PLAYLIST_PlaylistManager* manager, const char* idList,
                                PLAYLIST_TrackListEscape escape, void* context, std::string* out) {
  if (manager == nullptr || idList == nullptr || escape == nullptr || out == nullptr) {
    return SINK_UPNP_ERR_NULL_ARGUMENT;
  }
  try {
    std::string document(PLAYLIST_trackListOpening);
    std::string piece;
    const char* start = idList;
    for (;;) {
      const char* blank = std::strchr(start, ' ');
      const std::size_t length =
          blank != nullptr ? static_cast<std::size_t>(blank - start) : std::strlen(start);
      // Each piece is read on its own, so that an empty piece reads 0 instead of the number behind it.
      piece.assign(start, length);
      const long value = std::strtol(piece.c_str(), nullptr, 10);
      // The id goes to the lookup as a signed 32-bit value, the width every playlist query takes; a wider
      // number keeps its low 32 bits.
      const PLAYLIST_PlaylistData* track = manager->GetSpecificIdTrackData(static_cast<int32_t>(value));
      if (track != nullptr) {
        const char* escaped = escape(context, track->getMetaData());
        if (escaped == nullptr) return SINK_UPNP_ERR_GENERIC;
        AppendEntry(&document, track->getId(), track->getUri(), escaped);
      }
      if (blank == nullptr) break;
      start = blank + 1;
    }
    document.append(PLAYLIST_trackListClosing);
    out->swap(document);
  } catch (const std::bad_alloc&) {
    return DMR_CMN_ERR_NO_MEMORY;
  }
  return SINK_UPNP_OK;
}
