#include "ReadListBound.h"

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <map>
#include <vector>

#include "PlaylistAction.h"
#include "PlaylistSnapshot.h"

namespace {

// How often each id is named in `idList`.
std::map<int32_t, std::size_t> CountIds(const char* idList) {
  std::map<int32_t, std::size_t> counts;
  std::string piece;
  for (const char* start = idList;;) {
    const char* blank = std::strchr(start, ' ');
    const std::size_t length = blank != nullptr ? static_cast<std::size_t>(blank - start) : std::strlen(start);
    piece.assign(start, length);
    ++counts[static_cast<int32_t>(std::strtol(piece.c_str(), nullptr, 10))];
    if (blank == nullptr) break;
    start = blank + 1;
  }
  return counts;
}

// The length of the TrackList answered for `idList`; false when the action failed.
bool TrackListLength(marlo::SinkContentTransferSubsystem* openHome, const std::string& idList, std::size_t* length) {
  HOST_Arguments out;
  std::string error;
  if (!HOST_PerformPlaylistAction(openHome, "ReadList", {{"IdList", idList}}, &out, &error)) return false;
  const std::string* trackList = HOST_FindArgument(out, "TrackList");
  if (trackList == nullptr) return false;
  *length = trackList->size();
  return true;
}

}  // namespace

bool HOST_ReadListWithinBound(marlo::SinkContentTransferSubsystem* openHome, const char* idList,
                              std::size_t maxBytes, std::size_t* size) {
  std::size_t ignored = 0;
  std::size_t& total = size != nullptr ? *size : ignored;
  total = 0;
  if (openHome == nullptr || idList == nullptr) return true;

  HOST_Arguments out;
  std::string error;
  std::vector<uint32_t> ids;
  if (!HOST_PerformPlaylistAction(openHome, "IdArray", {}, &out, &error)) return true;
  const std::string* array = HOST_FindArgument(out, "Array");
  if (array == nullptr || !HOST_DecodeIdArray(*array, &ids)) return true;

  // The document's frame: what an IdList that names no track answers.
  std::size_t frame = 0;
  if (!TrackListLength(openHome, "", &frame)) return true;
  total = frame;
  if (total > maxBytes) return false;
  const std::map<int32_t, std::size_t> counts = CountIds(idList);
  for (const uint32_t id : ids) {
    const auto named = counts.find(static_cast<int32_t>(id));
    if (named == counts.end()) continue;
    std::size_t withEntry = 0;
    // A track whose entry cannot be answered alone makes the whole answer fail in the service object.
    if (!TrackListLength(openHome, std::to_string(id), &withEntry) || withEntry < frame) continue;
    const std::size_t entry = withEntry - frame;
    if (entry != 0 && named->second > (maxBytes - total) / entry) {
      total += (maxBytes - total) / entry * entry + entry;
      return false;
    }
    total += entry * named->second;
  }
  return total <= maxBytes;
}
