// Reads the OpenHome playlist out of its service object through the Playlist actions a control point
// would use: "IdArray" for the order, "ReadList" for each track's URI and metadata, "Repeat" and "Shuffle".
// Main loop only, between two actions of control points, so that the playlist cannot change meanwhile.
#ifndef HOST_PLAYLIST_SNAPSHOT_H_
#define HOST_PLAYLIST_SNAPSHOT_H_

#include <cstdint>
#include <string>
#include <vector>

#include "SavedPlaylist.h"

namespace marlo {
class SinkContentTransferSubsystem;
}

// Fills *playlist; false with *error when an action failed or answered what the Playlist service never
// answers (an IdArray that is not Base64 of whole ids, a TrackList that is not the one track asked for).
bool HOST_TakePlaylistSnapshot(marlo::SinkContentTransferSubsystem* openHome, HOST_SavedPlaylist* playlist,
                               std::string* error);

// The ids of an IdArray value: Base64 (padded, no line breaks) of 32-bit big-endian ids. False for text
// that is not exactly that.
bool HOST_DecodeIdArray(const std::string& text, std::vector<uint32_t>* ids);

// The track of a TrackList answered for the one id `id`. The URI in it is not escaped (the metadata is), so
// the document is not XML when the URI holds '&' or '<': it is cut at its fixed frame instead, and only the
// metadata is parsed as XML text, strictly. False when the text is not exactly that frame.
bool HOST_ReadSingleTrackList(const std::string& text, uint32_t id, HOST_SavedTrack* track);

#endif  // HOST_PLAYLIST_SNAPSHOT_H_
