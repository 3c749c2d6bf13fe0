// The playlist's list keeping and walking: Insert, the deletions, the seeks and the steps. The shuffled
// order is in PlaylistManager_Shuffle.cpp, the wire formats in PlaylistManager_Formats.cpp.
#include "playlist/PlaylistManager.h"

#include <cstdio>
#include <iterator>
#include <new>

#include "sink_upnp/ResultCode.h"

namespace {

// Insert refuses a track when the playlist holds more than this many. On purpose the test is "more than
// 1000", so a playlist grows to 1001 tracks, one beyond the maximum the Playlist service advertises.
constexpr uint32_t kInsertRefusedAbove = 1000;

// An id passed to the queries is a signed 32-bit value compared with the stored 64-bit id after sign
// extension: negative ids never match, and only ids below 2^31 can be found.
bool IdMatches(const PLAYLIST_PlaylistData& track, int32_t id) {
  return track.getId() == static_cast<uint64_t>(static_cast<int64_t>(id));
}

}  // namespace

// Our decision for the starting values: position 0, no id given (the first is 1), normal order, repeat off,
// which is what the service's state variable defaults assume.
PLAYLIST_PlaylistManager::PLAYLIST_PlaylistManager()
    : trackCursor_(tracks_.end()),
      orderCursor_(order_.end()),
      currentIndex_(0),
      trackCount_(0),
      lastId_(0),
      shuffle_(0),
      repeat_(0) {}

PLAYLIST_PlaylistManager::~PLAYLIST_PlaylistManager() = default;

int32_t PLAYLIST_PlaylistManager::Initialize() { return SINK_UPNP_OK; }

int32_t PLAYLIST_PlaylistManager::Finalize() { return SINK_UPNP_OK; }

uint32_t PLAYLIST_PlaylistManager::CountTracks() {
  uint32_t count = 0;
  for (trackCursor_ = tracks_.begin(); trackCursor_ != tracks_.end(); ++trackCursor_) ++count;
  return count;
}

bool PLAYLIST_PlaylistManager::WalkTracksTo(uint32_t steps) {
  trackCursor_ = tracks_.begin();
  for (uint32_t k = 0; k < steps && trackCursor_ != tracks_.end(); ++k) ++trackCursor_;
  return trackCursor_ != tracks_.end();
}

bool PLAYLIST_PlaylistManager::WalkOrderTo(uint32_t steps) {
  orderCursor_ = order_.begin();
  for (uint32_t k = 0; k < steps && orderCursor_ != order_.end(); ++k) ++orderCursor_;
  return orderCursor_ != order_.end();
}

bool PLAYLIST_PlaylistManager::FindId(int32_t id, uint32_t* place) {
  uint32_t k = 0;
  for (trackCursor_ = tracks_.begin(), orderCursor_ = order_.begin();
       trackCursor_ != tracks_.end() && orderCursor_ != order_.end(); ++trackCursor_, ++orderCursor_, ++k) {
    if (IdMatches(*trackCursor_, id)) {
      *place = k;
      return true;
    }
  }
  return false;
}

bool PLAYLIST_PlaylistManager::FindPlace(uint64_t afterId, uint32_t count, TrackList::iterator* place) {
  // The tests run in this order; the third is a shortcut for the common "behind the playing track" and
  // gives the same place as the fourth, since ids are unique.
  if (afterId == 0) {
    *place = tracks_.begin();
    return true;
  }
  if (count > 0 && tracks_.back().getId() == afterId) {
    *place = tracks_.end();
    return true;
  }
  if (WalkTracksTo(currentIndex_) && trackCursor_->getId() == afterId) {
    *place = std::next(trackCursor_);
    return true;
  }
  for (trackCursor_ = tracks_.begin(); trackCursor_ != tracks_.end(); ++trackCursor_) {
    if (trackCursor_->getId() == afterId) {
      *place = std::next(trackCursor_);
      return true;
    }
  }
  return false;
}

int32_t PLAYLIST_PlaylistManager::Insert(const char* uri, const char* metadata, uint64_t afterId,
                                         uint64_t* newId) {
  const uint32_t count = CountTracks();
  if (uri == nullptr || metadata == nullptr || newId == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  if (count > kInsertRefusedAbove) return SINK_UPNP_ERR_GENERIC;

  PLAYLIST_PlaylistData* staging = new (std::nothrow) PLAYLIST_PlaylistData;
  if (staging == nullptr) return DMR_CMN_ERR_NO_MEMORY;
  // A string that cannot be copied answers -1, not -989: the record is what the caller asked for memory.
  if (staging->setUri(uri) != SINK_UPNP_OK || staging->setMetaData(metadata) != SINK_UPNP_OK) {
    delete staging;
    return SINK_UPNP_ERR_GENERIC;
  }

  // From here the id is used up, even when the track ends up not placed: ids are never given twice.
  lastId_ += 1;
  const int32_t idResult = staging->setId(lastId_);
  *newId = lastId_;
  if (idResult != SINK_UPNP_OK) {  // only when lastId_ wrapped to 0
    delete staging;
    return SINK_UPNP_ERR_GENERIC;
  }

  TrackList::iterator place;
  const bool placed = FindPlace(afterId, count, &place);
  // Both list nodes are had before anything is linked, so that a track never goes in without its order
  // entry. The list nodes have no result of their own for "no memory"; -989 is our answer.
  TrackList trackNode;
  OrderList orderNode;
  if (placed) {
    try {
      orderNode.push_back(0);
      trackNode.push_back(*staging);  // shallow: the element now shares the staging record's strings
    } catch (const std::bad_alloc&) {
      delete staging;
      return DMR_CMN_ERR_NO_MEMORY;
    }
    // The element in the list owns the strings from now on; the staging record must not free them.
    staging->GiveUpStrings();
    tracks_.splice(place, trackNode);
  }
  delete staging;  // frees the strings only when the track was not placed

  const uint32_t newCount = CountTracks();
  if (newCount == 1) currentIndex_ = 0;
  trackCount_ = newCount;
  if (newCount == count) return SINK_UPNP_ERR_GENERIC;

  // On purpose the order entry goes at the end, with the former number of entries as its value, even for
  // a track placed at the front or in the middle: positions are reconciled only when the order is drawn
  // or reset again (ShufflePlaylist).
  orderNode.front() = static_cast<uint32_t>(order_.size());
  order_.splice(order_.end(), orderNode);
  orderCursor_ = std::prev(order_.end());
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistManager::DeleteId(int32_t id, int* wasCurrent) {
  // Our decision: a null wasCurrent is refused like every other null argument, before anything else.
  if (wasCurrent == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  const uint32_t count = CountTracks();
  *wasCurrent = 0;
  if (id < 0) return SINK_UPNP_ERR_NULL_ARGUMENT;  // -999 here: an id no track can have

  uint32_t place = 0;
  if (FindId(id, &place)) {
    if (place == currentIndex_) *wasCurrent = 1;
    trackCursor_ = tracks_.erase(trackCursor_);  // the record's destructor frees its strings
    orderCursor_ = order_.erase(orderCursor_);
    // The new order is drawn before the position is adjusted, with currentIndex_ taken as a list index.
    if (shuffle_ == 1) ShufflePlaylist(currentIndex_);
    if (currentIndex_ > place) {
      --currentIndex_;
    } else if (*wasCurrent == 1 && place == count - 1) {
      currentIndex_ = 0;
    }
    // When the current track goes from elsewhere in the list, currentIndex_ stays and so names the track
    // that moved into its place.
  }

  const uint32_t newCount = CountTracks();
  trackCount_ = newCount;
  return newCount == count ? SINK_UPNP_ERR_GENERIC : SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistManager::DeleteAll() {
  // On purpose an empty playlist keeps currentIndex_ as it is.
  if (tracks_.empty()) return SINK_UPNP_OK;
  tracks_.clear();
  order_.clear();
  trackCursor_ = tracks_.end();
  orderCursor_ = order_.end();
  currentIndex_ = 0;
  trackCount_ = 0;
  // lastId_ stays: ids continue from the last one given.
  return SINK_UPNP_OK;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::GetCurrentTrackData() {
  // Our decision: a position beyond the list answers null rather than reading past its end.
  if (tracks_.empty() || !WalkTracksTo(currentIndex_)) return nullptr;
  return &*trackCursor_;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::SeekIndexTrackData(int32_t index) {
  if (index < 0) return nullptr;
  const uint32_t count = CountTracks();
  if (count > 0 && static_cast<uint32_t>(index) > count - 1) return nullptr;
  // Our decision: an empty playlist has no record to seek to; null, and currentIndex_ stays.
  if (!WalkTracksTo(static_cast<uint32_t>(index))) return nullptr;
  currentIndex_ = static_cast<uint32_t>(index);
  return &*trackCursor_;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::SeekIdTrackData(int32_t id) {
  uint32_t k = 0;
  for (trackCursor_ = tracks_.begin(); trackCursor_ != tracks_.end(); ++trackCursor_, ++k) {
    if (IdMatches(*trackCursor_, id)) {
      currentIndex_ = k;
      return &*trackCursor_;
    }
  }
  // Our decision: "not found" is a null record (never the list's end position), currentIndex_ unchanged.
  return nullptr;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::GetSpecificIdTrackData(int32_t id) {
  for (trackCursor_ = tracks_.begin(); trackCursor_ != tracks_.end(); ++trackCursor_) {
    if (IdMatches(*trackCursor_, id)) return &*trackCursor_;
  }
  return nullptr;  // as SeekIdTrackData: a null record when no track has the id
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::FindShuffledPosition(uint32_t position) {
  PLAYLIST_PlaylistData* found = nullptr;
  // The walk does not stop at the first match: values are never renumbered, so after deletions and
  // appends two entries may hold the same position, and the last one wins.
  for (trackCursor_ = tracks_.begin(), orderCursor_ = order_.begin();
       trackCursor_ != tracks_.end() && orderCursor_ != order_.end(); ++trackCursor_, ++orderCursor_) {
    if (*orderCursor_ == position) found = &*trackCursor_;
  }
  return found;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::Next() {
  // With an empty playlist `last` is the largest unsigned value, so the first branch is taken and finds
  // no record.
  const uint32_t last = CountTracks() - 1;
  uint32_t target = 0;
  if (currentIndex_ < last) {
    target = currentIndex_ + 1;
  } else if (currentIndex_ == last) {
    if (repeat_ == 0) {
      // The end: the order is drawn again (reset to identity in normal order) and the position stays on
      // the last track.
      ShufflePlaylist(0);
      return nullptr;
    }
    ShufflePlaylist(-1);
    target = 0;
  } else {
    return nullptr;
  }

  PLAYLIST_PlaylistData* record = nullptr;
  if (shuffle_ == 1) {
    record = FindShuffledPosition(target);
  } else if (WalkTracksTo(target)) {
    record = &*trackCursor_;
  }
  // Our decision: no record for the target (an empty playlist, or a shuffled position no entry holds any
  // more) answers null and leaves currentIndex_ as it was.
  if (record == nullptr) return nullptr;
  currentIndex_ = target;
  return record;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::GetNextTrackData() {
  const uint32_t count = CountTracks();
  if (count == 0) return nullptr;
  uint32_t target = 0;
  if (currentIndex_ + 1 < count) {
    target = currentIndex_ + 1;
  } else if (currentIndex_ + 1 == count && repeat_ == 1 && shuffle_ == 0) {
    target = 0;  // the identity order Next draws at the end, whose first track is list index 0
  } else {
    return nullptr;
  }
  if (shuffle_ == 1) return FindShuffledPosition(target);
  return WalkTracksTo(target) ? &*trackCursor_ : nullptr;
}

PLAYLIST_PlaylistData* PLAYLIST_PlaylistManager::Prev() {
  // On purpose: a shuffled order has no way back, so Prev steps forward exactly as Next does.
  if (shuffle_ == 1) return Next();

  uint32_t target = 0;
  if (currentIndex_ == 0) {
    if (repeat_ == 0) return nullptr;
    target = trackCount_ - 1;  // the cached count, the one place besides GetTrackCount that uses it
  } else {
    target = currentIndex_ - 1;
  }
  // Our decision: no record there (an empty playlist with repeat on) answers null, nothing moves.
  if (!WalkTracksTo(target)) return nullptr;
  currentIndex_ = target;
  return &*trackCursor_;
}

int PLAYLIST_PlaylistManager::CheckNext() {
  const uint32_t last = CountTracks() - 1;
  if (currentIndex_ < last) return 1;
  if (currentIndex_ == last) return repeat_ == 1 ? 1 : 0;
  // The one line the plug-in ever prints.
  std::fputs("CheckNext Invalid Value \n", stdout);
  return 0;
}

int32_t PLAYLIST_PlaylistManager::SetRepeat(int repeat) {
  // -999 here: a value other than 0 or 1, refused with the contract's null-argument code.
  if (static_cast<unsigned int>(repeat) > 1) return SINK_UPNP_ERR_NULL_ARGUMENT;
  repeat_ = repeat;
  return SINK_UPNP_OK;
}

int PLAYLIST_PlaylistManager::GetRepeat() { return repeat_; }

uint32_t PLAYLIST_PlaylistManager::GetTrackCount() { return trackCount_; }
