// CheckPlaylistInvariants: what must hold of an OpenHome playlist after every operation, whatever came
// before. A broken one aborts (FUZZ_CHECK):
//  - ids: every track's id lies in 1..the last id given, and no two tracks share one;
//  - counts: one order entry per track, and GetTrackCount is the number of tracks;
//  - current position: inside the list whenever the list is not empty;
//  - IdArray: GetIdArray answers the Base64 text of the tracks' ids in list order, as decoded here on
//    its own (4 bytes each, big-endian, the low 32 bits), in the buffer of 9 bytes per track the IdArray
//    action gives it;
//  - TrackList: PlaylistXml answers exactly the document of every track in list order.
#ifndef FUZZ_SUPPORT_PLAYLIST_INVARIANTS_H_
#define FUZZ_SUPPORT_PLAYLIST_INVARIANTS_H_

class PLAYLIST_PlaylistManager;

// All of the above. With `everything` false, a list of more than kCheapCheckTracks tracks gets only the
// checks that cost little (ids, counts, position); the IdArray and the TrackList of a long list, a few
// hundred kilobytes of text each, are checked only when asked, so that a target can take many steps on a
// full playlist and still check the documents now and then and at its end.
constexpr unsigned kCheapCheckTracks = 64;
void CheckPlaylistInvariants(PLAYLIST_PlaylistManager& playlist, bool everything = true);

#endif  // FUZZ_SUPPORT_PLAYLIST_INVARIANTS_H_
