// The OpenHome playlist as the daemon keeps it across restarts: the tracks in playlist order (URI and
// metadata, not the ids, which the playlist gives anew when the tracks go back in), and the two modes.
#ifndef HOST_SAVED_PLAYLIST_H_
#define HOST_SAVED_PLAYLIST_H_

#include <string>
#include <vector>

struct HOST_SavedTrack {
  std::string uri;
  std::string metadata;
  bool operator==(const HOST_SavedTrack& other) const { return uri == other.uri && metadata == other.metadata; }
};

struct HOST_SavedPlaylist {
  std::vector<HOST_SavedTrack> tracks;
  bool repeat = false;
  bool shuffle = false;
  bool operator==(const HOST_SavedPlaylist& other) const {
    return tracks == other.tracks && repeat == other.repeat && shuffle == other.shuffle;
  }
};

#endif  // HOST_SAVED_PLAYLIST_H_
