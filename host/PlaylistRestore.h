// Puts a saved playlist back into the OpenHome service object through the Playlist actions a control
// point would use: "Insert" of each track after the one before ("0", the front, for the first), then
// "SetRepeat" and "SetShuffle". The playlist must be empty (it is, right after Start). Main loop only.
#ifndef HOST_PLAYLIST_RESTORE_H_
#define HOST_PLAYLIST_RESTORE_H_

#include <string>

#include "SavedPlaylist.h"

namespace marlo {
class SinkContentTransferSubsystem;
}

// False with *error at the first action that failed; the tracks inserted before it stay.
bool HOST_RestorePlaylist(marlo::SinkContentTransferSubsystem* openHome, const HOST_SavedPlaylist& playlist,
                          std::string* error);

#endif  // HOST_PLAYLIST_RESTORE_H_
