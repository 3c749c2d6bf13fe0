// Checks the reader of the saved playlist's file (HOST_ReadPlaylistText) with arbitrary text: a refused
// text leaves the playlist untouched and says why; an accepted one has at most 1001 tracks, each with a
// URI, and writing it out (HOST_WritePlaylistText) and reading that again gives the same playlist.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "PlaylistFile.h"
#include "SavedPlaylist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const HOST_SavedPlaylist untouched{{{"http://127.0.0.1:9/kept", "kept"}}, true, false};
  HOST_SavedPlaylist playlist = untouched;
  std::string error;
  if (!HOST_ReadPlaylistText(text, &playlist, &error)) {
    FUZZ_CHECK(!error.empty());
    FUZZ_CHECK(playlist == untouched);
    return 0;
  }
  FUZZ_CHECK(playlist.tracks.size() <= kMaxSavedTracks);
  for (const HOST_SavedTrack& track : playlist.tracks) FUZZ_CHECK(!track.uri.empty());
  HOST_SavedPlaylist again;
  FUZZ_CHECK(HOST_ReadPlaylistText(HOST_WritePlaylistText(playlist), &again, &error));
  FUZZ_CHECK(again == playlist);
  return 0;
}
