#include "PlaylistRestore.h"

#include "PlaylistAction.h"

bool HOST_RestorePlaylist(marlo::SinkContentTransferSubsystem* openHome, const HOST_SavedPlaylist& playlist,
                          std::string* error) {
  std::string afterId = "0";
  HOST_Arguments out;
  for (const HOST_SavedTrack& track : playlist.tracks) {
    if (!HOST_PerformPlaylistAction(openHome, "Insert",
                                    {{"AfterId", afterId}, {"Uri", track.uri}, {"Metadata", track.metadata}}, &out,
                                    error))
      return false;
    const std::string* newId = HOST_FindArgument(out, "NewId");
    if (newId == nullptr) {
      *error = "Insert answered no NewId";
      return false;
    }
    afterId = *newId;
  }
  return HOST_PerformPlaylistAction(openHome, "SetRepeat", {{"Value", playlist.repeat ? "true" : "false"}}, &out,
                                    error) &&
         HOST_PerformPlaylistAction(openHome, "SetShuffle", {{"Value", playlist.shuffle ? "true" : "false"}}, &out,
                                    error);
}
