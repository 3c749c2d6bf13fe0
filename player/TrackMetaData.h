// DIDL-Lite texts the player writes itself: the current track's metadata with a radio stream's title.
#ifndef PLAYER_TRACK_META_DATA_H_
#define PLAYER_TRACK_META_DATA_H_

#include <cstdint>
#include <string>

// The metadata `original` (DIDL-Lite, possibly empty) rewritten as one item whose dc:title is `title`;
// its class, artist, album, album art and first resource are kept, and `uri` is the resource when the
// original has none.
std::string PLAYER_MetaDataWithTitle(const std::string& original, const std::string& uri,
                                     const std::string& title);

// `text` with the five XML special characters escaped.
std::string PLAYER_EscapeXml(const std::string& text);

// The duration a DIDL-Lite text gives its first resource, in nanoseconds; -1 without one.
int64_t PLAYER_MetaDataDuration(const std::string& metadata);

#endif  // PLAYER_TRACK_META_DATA_H_
