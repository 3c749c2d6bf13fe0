// The saved playlist's file in the state directory (the daemon names it "playlist-<UUID of the device>.xml"):
//
//   <?xml version="1.0" encoding="utf-8"?>
//   <Playlist version="1" repeat="false" shuffle="true">
//     <Track>
//       <Uri>http://192.168.1.2:9000/a.flac?x=1&amp;y=2</Uri>
//       <Metadata>&lt;DIDL-Lite ...</Metadata>
//     </Track>
//   </Playlist>
//
// The reader is strict and bounded, since the file is input that may be cut short by a full disk, damaged,
// or written by hand: a file of at most kMaxPlaylistFileBytes, well-formed, without a DTD, with exactly
// that structure (no other element, attribute or text), at most kMaxSavedTracks tracks, each with a
// non-empty URI. Anything else is refused whole, with the reason; the daemon then starts empty.
#ifndef HOST_PLAYLIST_FILE_H_
#define HOST_PLAYLIST_FILE_H_

#include <cstddef>
#include <string>

#include "SavedPlaylist.h"

// The playlist refuses an Insert only once it holds 1001 tracks, so a saved one may hold that many.
constexpr std::size_t kMaxSavedTracks = 1001;
// 1001 tracks with about 30 KB of metadata each; a real playlist's file is a few megabytes at most.
constexpr std::size_t kMaxPlaylistFileBytes = 32u << 20;

// The file's text for `playlist`. Text that is not UTF-8 or holds characters XML does not allow is
// written with U+FFFD in their place (no such text gets into the playlist through SOAP).
std::string HOST_WritePlaylistText(const HOST_SavedPlaylist& playlist);

// Reads the text of a file; false with *error saying what is wrong (*playlist then untouched).
bool HOST_ReadPlaylistText(const std::string& text, HOST_SavedPlaylist* playlist, std::string* error);

enum class HOST_PlaylistFileStatus { Read, Missing, Refused };

// Reads the file at `path`: Missing when there is none, Refused with *error when it cannot be read, is
// larger than kMaxPlaylistFileBytes or is refused by HOST_ReadPlaylistText.
HOST_PlaylistFileStatus HOST_ReadPlaylistFile(const std::string& path, HOST_SavedPlaylist* playlist,
                                              std::string* error);

// Renames a refused file to `path` + ".bad" (replacing an older one), so that it is kept for a look but
// never read again. False with *error when the rename failed.
bool HOST_SetPlaylistFileAside(const std::string& path, std::string* error);

#endif  // HOST_PLAYLIST_FILE_H_
