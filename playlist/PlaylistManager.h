// PLAYLIST_PlaylistManager: the OpenHome playlist of the OpenHome service object: the tracks in playlist
// order, the ids given to them, the current position, and the repeat and shuffle modes. It knows nothing of
// UPnP, state variables or playback; it keeps the list and answers with records.
//
// Model. `tracks` holds the records by value in playlist order (index 0 first); `order` holds one entry
// per track, walked side by side with `tracks`, whose value is the track's position in shuffled play order
// (0 plays first). In normal order the entries are meant to be 0, 1, 2, ...; shuffling only swaps values
// between entries and never renumbers them. Ids start at 1 and only grow for the manager's whole life;
// nothing gives an id back.
//
// currentIndex is the current position: a list index in normal order, a shuffled position after a
// shuffled step. GetCurrentTrackData, SeekIndexTrackData and DeleteId read and write it as a list index in
// both modes; that mixing is the playlist's own rule.
//
// Cost. Counts are taken and positions found by walking the list from the front, so every operation is
// linear in the number of tracks (at most 1001); no index or map is kept.
//
// Records. The records returned by the query operations are the list elements themselves, owned by the
// manager and valid until that track is deleted. Ids are passed to the query and delete operations as
// signed 32-bit values and compared with the stored 64-bit ids after sign extension, so only ids below
// 2^31 can be found.
//
// Results: 0 (SINK_UPNP_OK), -1 (SINK_UPNP_ERR_GENERIC), -999 (SINK_UPNP_ERR_NULL_ARGUMENT: a null argument,
// and also a negative id or a mode other than 0 or 1), -989 (DMR_CMN_ERR_NO_MEMORY). Nothing throws; nothing
// is printed except the one line of CheckNext.
//
// Thread safety: none. The cursors are shared working state even in the query operations, so calls on one
// manager must not overlap; the OpenHome service runs its actions one at a time.
#ifndef PLAYLIST_PLAYLIST_MANAGER_H_
#define PLAYLIST_PLAYLIST_MANAGER_H_

#include <cstdint>
#include <list>
#include <string>
#include <vector>

#include "playlist/PlaylistData.h"
#include "sink_upnp/Export.h"

class PLAYLIST_PlaylistManagerTestPeer;

class SINK_UPNP_EXPORT PLAYLIST_PlaylistManager {
 public:
  // Two empty lists, both cursors at their list's end; position 0, no id given yet (the first is 1),
  // normal order, repeat off.
  PLAYLIST_PlaylistManager();
  // Destroys every track (freeing its strings) and every order entry.
  virtual ~PLAYLIST_PlaylistManager();

  PLAYLIST_PlaylistManager(const PLAYLIST_PlaylistManager&) = delete;
  PLAYLIST_PlaylistManager& operator=(const PLAYLIST_PlaylistManager&) = delete;

  // Do nothing; return 0.
  int32_t Initialize();
  int32_t Finalize();

  // Adds a track with copies of `uri` and `metadata` behind the track whose id is `afterId` (0: first).
  // Returns 0 and stores the new track's id in *newId. Fails with -999 when an argument is null; -1 when
  // the playlist already holds more than 1000 tracks (so it grows to 1001); -989 when the record cannot
  // be allocated; -1 when a string cannot be copied. Up to here nothing changes. After that the id is used
  // up even when the call fails, and *newId holds it: -1 when no track has the id `afterId` (nothing is
  // placed), -989 when no list node can be had.
  // The new track's order entry is appended at the end of `order` with the value N (the former count),
  // wherever the track went. The first track placed in an empty playlist sets currentIndex to 0.
  int32_t Insert(const char* uri, const char* metadata, uint64_t afterId, uint64_t* newId);
  // Removes the track with `id` and its order entry. Stores in *wasCurrent 1 when it was the track at
  // currentIndex, else 0. Returns 0; -999 when wasCurrent is null or id < 0; -1 when no track has that
  // id. In shuffled order it then draws a new order with the track at currentIndex first. currentIndex
  // moves back by one when the track was before it, and goes to 0 when the current track was the last one.
  int32_t DeleteId(int32_t id, int* wasCurrent);
  // Removes every track and order entry, sets currentIndex 0 (only when there was a track); keeps the ids
  // given, shuffle and repeat. Always 0.
  int32_t DeleteAll();

  // The track at currentIndex taken as a list index; null when there is none.
  PLAYLIST_PlaylistData* GetCurrentTrackData();
  // The track at list index `index`, which becomes currentIndex; null (nothing moves) when there is none.
  PLAYLIST_PlaylistData* SeekIndexTrackData(int32_t index);
  // The first track with `id`, whose index becomes currentIndex; null (nothing moves) when there is none.
  PLAYLIST_PlaylistData* SeekIdTrackData(int32_t id);
  // The first track with `id`, moving nothing; null when there is none.
  PLAYLIST_PlaylistData* GetSpecificIdTrackData(int32_t id);
  // One step forward (in shuffled order, to the next shuffled position). At the end: with repeat off,
  // draws the order afresh (normal order: identity; shuffled: list index 0 first) and returns null;
  // with repeat on, draws it afresh (nothing fixed) and returns the first track. Null, nothing moved,
  // when no record exists for the target.
  PLAYLIST_PlaylistData* Next();
  // The track Next would step to, moving nothing and drawing no new order, so that a player can prepare
  // the next track before the current one ends. Null at the end of the list with repeat off, and at the
  // end of a shuffled order with repeat on (Next draws that order afresh, so it cannot be known before);
  // at the end of the list in normal order with repeat on, the first track.
  PLAYLIST_PlaylistData* GetNextTrackData();
  // One step back in normal order (with repeat on, from the first track to the last). In shuffled order
  // exactly Next: there is no way back through a shuffled order.
  PLAYLIST_PlaylistData* Prev();
  // 1 when a next track exists: before the last index; at the last index, the repeat flag. Beyond the
  // last index prints "CheckNext Invalid Value " and a newline on standard output and answers 0.
  int CheckNext();

  // 0 or 1: stored, returns 0. Any other value (negatives too): -999, nothing changes.
  int32_t SetRepeat(int repeat);
  int GetRepeat();
  // 0 or 1: stored, returns 0; any other value -999. Off to on draws a new order with the track at
  // currentIndex (a list index) first and sets currentIndex 0; on to off sets currentIndex to the list
  // index of the track at the current shuffled position; setting the same value again does nothing.
  int32_t SetShuffle(int shuffle);
  int GetShuffle();
  // Normal order: resets `order` to 0, 1, 2, .... Shuffled order: seeds the generator with the time in
  // whole seconds and draws a Fisher-Yates permutation of the values of `order` from the top; then, when
  // 0 <= keepFirst < N, the track at list index keepFirst takes position 0 and the track that had drawn 0
  // takes the position keepFirst had drawn. Always 0.
  int32_t ShufflePlaylist(int64_t keepFirst);
  // The cached number of tracks.
  uint32_t GetTrackCount();

  // The RFC 4648 Base64 text (standard alphabet, "=" padding, no line breaks) of `input`, which replaces
  // the former content of `output`. Returns 1; -989 when there is no memory (output unchanged).
  int encode_base64(const std::vector<unsigned char>& input, std::string& output);
  // The IdArray: the low 32 bits of every track's id, big-endian, in playlist order, Base64-encoded
  // ("" for an empty playlist), copied with its terminator into the caller's buffer *out, which holds at
  // least 4 x ceil(4N / 3) + 1 bytes for N tracks (9 bytes per track and one more always do). Returns 0;
  // -999 when out or *out is null; -989 when there is no memory (the buffer is then unchanged).
  int32_t GetIdArray(char** out);
  // Appends the TrackList document of every track in playlist order to *out (its former content stays in
  // front); neither URI nor metadata is escaped. Returns 0; -1 when out is null; -989 when there is no
  // memory (*out unchanged).
  int32_t PlaylistXml(std::string* out);

 private:
  friend class PLAYLIST_PlaylistManagerTestPeer;

  using TrackList = std::list<PLAYLIST_PlaylistData>;
  using OrderList = std::list<uint32_t>;

  // The number of tracks, counted by walking the list.
  DMR_CMN_HIDDEN uint32_t CountTracks();
  // Walks `steps` tracks from the front and leaves trackCursor_ there; false when the list is shorter.
  DMR_CMN_HIDDEN bool WalkTracksTo(uint32_t steps);
  // Walks tracks and order side by side from the front to the first track whose id is `id` sign-extended;
  // its place in *place. False when none has it.
  DMR_CMN_HIDDEN bool FindId(int32_t id, uint32_t* place);
  // Walks `steps` order entries from the front; false when the list is shorter.
  DMR_CMN_HIDDEN bool WalkOrderTo(uint32_t steps);
  // The shuffled branch of Next: walks tracks and order side by side and answers the track whose order
  // entry is `position`, the last one when several are; null when none is.
  DMR_CMN_HIDDEN PLAYLIST_PlaylistData* FindShuffledPosition(uint32_t position);
  // Where the track behind `afterId` goes (Insert's placement tests, in their order); false when nowhere.
  DMR_CMN_HIDDEN bool FindPlace(uint64_t afterId, uint32_t count, TrackList::iterator* place);

  // In this order, the manager's fixed layout.
  TrackList tracks_;
  OrderList order_;
  TrackList::iterator trackCursor_;  // working cursor of the walks over tracks_
  OrderList::iterator orderCursor_;  // working cursor of the walks over order_
  uint32_t currentIndex_;
  uint32_t trackCount_;  // refreshed by Insert, DeleteId and DeleteAll
  uint64_t lastId_;      // the id most recently given; the next is lastId_ + 1
  int32_t shuffle_;      // 0 normal order, 1 shuffled
  int32_t repeat_;       // 0 stop at the end, 1 wrap around
};

#endif  // PLAYLIST_PLAYLIST_MANAGER_H_
