// The TrackList document of the OpenHome Playlist service: the fixed pieces it is made of, shared by
// PLAYLIST_PlaylistManager::PlaylistXml and the ReadList action, and the ReadList way of building it.
//
// One line, no whitespace between elements, no XML declaration:
//   <TrackList><Entry><Id>5</Id><Uri>...</Uri><Metadata>...</Metadata></Entry>...</TrackList>
// The id is written in decimal without sign or leading zeros.
#ifndef PLAYLIST_TRACK_LIST_H_
#define PLAYLIST_TRACK_LIST_H_

#include <cstdint>
#include <string>

class PLAYLIST_PlaylistManager;

inline constexpr char PLAYLIST_trackListOpening[] = "<TrackList>";
inline constexpr char PLAYLIST_trackListEntryOpening[] = "<Entry><Id>";
inline constexpr char PLAYLIST_trackListIdToUri[] = "</Id><Uri>";
inline constexpr char PLAYLIST_trackListUriToMetadata[] = "</Uri><Metadata>";
inline constexpr char PLAYLIST_trackListEntryClosing[] = "</Metadata></Entry>";
inline constexpr char PLAYLIST_trackListClosing[] = "</TrackList>";

// Appends one entry (id, uri and metadata as given, nothing escaped) to *out. Returns 0; -999 when out,
// uri or metadata is null; -989 when there is no memory (*out unchanged).
int32_t PLAYLIST_AppendTrackListEntry(std::string* out, uint64_t id, const char* uri, const char* metadata);

// Escapes a metadata text for the document. Answers the escaped text (read before the next call) or null
// when it cannot. The ReadList action passes the OpenHome state variable manager's XML escaping.
using PLAYLIST_TrackListEscape = const char* (*)(void* context, const char* text);

// The ReadList document for `idList`, stored in *out (its former content replaced). The list is split at
// each single blank (two blanks in a row give an empty piece); each piece is read with strtol in base 10
// (not a number: 0; a number followed by other characters: its leading number) and taken as a signed
// 32-bit id, looked up with GetSpecificIdTrackData (the current position does not move). An id naming no
// track adds nothing; an id asked for twice is listed twice, in the order of the list. Each entry has the
// stored id, the URI as stored and the metadata as `escape(context, metadata)` answers it.
// Returns 0; -999 when manager, idList, escape or out is null; -1 when escape answers null; -989 when there
// is no memory. On failure *out is unchanged.
int32_t PLAYLIST_BuildTrackList(PLAYLIST_PlaylistManager* manager, const char* idList,
                                PLAYLIST_TrackListEscape escape, void* context, std::string* out);

#endif  // PLAYLIST_TRACK_LIST_H_
