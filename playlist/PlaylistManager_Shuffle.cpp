// The shuffled order: ShufflePlaylist, SetShuffle, GetShuffle, and the random source they draw from.
#include <cstdlib>
#include <ctime>

#include "playlist/PlaylistManager.h"
#include "playlist/ShuffleRandomSource.h"
#include "sink_upnp/ResultCode.h"

namespace {

std::time_t SystemTime(std::time_t* now) { return std::time(now); }
void SystemSrand(unsigned int seed) { std::srand(seed); }
// random() and srand() share one generator in the C library, so srand() seeds the values drawn here.
long SystemRandom() { return ::random(); }

const PLAYLIST_ShuffleRandomSource kSystemSource = {&SystemTime, &SystemSrand, &SystemRandom};
const PLAYLIST_ShuffleRandomSource* gSource = &kSystemSource;

// The largest value random() answers.
constexpr double kRandomMax = 2147483647.0;

}  // namespace

const PLAYLIST_ShuffleRandomSource* PLAYLIST_SystemShuffleRandomSource() { return &kSystemSource; }

const PLAYLIST_ShuffleRandomSource* PLAYLIST_GetShuffleRandomSource() { return gSource; }

void PLAYLIST_SetShuffleRandomSource(const PLAYLIST_ShuffleRandomSource* source) {
  gSource = source != nullptr ? source : &kSystemSource;
}

int32_t PLAYLIST_PlaylistManager::ShufflePlaylist(int64_t keepFirst) {
  const uint32_t count = CountTracks();
  trackCursor_ = tracks_.begin();
  orderCursor_ = order_.begin();

  if (shuffle_ == 0) {
    // The one place where the order goes back to identity.
    uint32_t k = 0;
    for (orderCursor_ = order_.begin(); orderCursor_ != order_.end() && k < count; ++orderCursor_, ++k) {
      *orderCursor_ = k;
    }
    return SINK_UPNP_OK;
  }

  const PLAYLIST_ShuffleRandomSource& source = *gSource;
  // Seeded on every call with the time in whole seconds, on purpose: each shuffle draws a fresh order, and
  // the seed comes through the replaceable source so that tests can script it.
  source.srand(static_cast<unsigned int>(source.time(nullptr)));
  // Fisher-Yates from the top down; only values move between entries, nothing is renumbered.
  if (count >= 2) {
    for (uint32_t i = count - 1; i >= 1; --i) {
      const long drawn = source.random();
      long j = static_cast<long>((static_cast<double>(drawn) / kRandomMax) * (static_cast<double>(i) + 1.0));
      // Our decision: random() may answer 2147483647 itself, which gives i + 1, one place beyond the range;
      // that draw takes i. (Below 0 only a source outside random()'s range could go; it takes 0.)
      if (j > static_cast<long>(i)) j = static_cast<long>(i);
      if (j < 0) j = 0;
      if (!WalkOrderTo(i)) break;
      OrderList::iterator upper = orderCursor_;
      if (!WalkOrderTo(static_cast<uint32_t>(j))) break;
      const uint32_t value = *upper;
      *upper = *orderCursor_;
      *orderCursor_ = value;
    }
  }

  if (keepFirst < 0 || count == 0 || keepFirst >= static_cast<int64_t>(count)) return SINK_UPNP_OK;
  // The track at list index keepFirst plays first; the track that had drawn position 0 takes the position
  // keepFirst had drawn. When no entry holds 0 any more, only keepFirst's entry is set.
  if (!WalkOrderTo(static_cast<uint32_t>(keepFirst))) return SINK_UPNP_OK;
  OrderList::iterator kept = orderCursor_;
  const uint32_t keptValue = *kept;
  for (orderCursor_ = order_.begin(); orderCursor_ != order_.end(); ++orderCursor_) {
    if (*orderCursor_ == 0) {
      *orderCursor_ = keptValue;
      break;
    }
  }
  *kept = 0;
  return SINK_UPNP_OK;
}

int32_t PLAYLIST_PlaylistManager::SetShuffle(int shuffle) {
  // -999 here: a value other than 0 or 1, refused with the contract's null-argument code.
  if (static_cast<unsigned int>(shuffle) > 1) return SINK_UPNP_ERR_NULL_ARGUMENT;
  const int32_t previous = shuffle_;
  shuffle_ = shuffle;
  if (previous == 0 && shuffle == 1) {
    // The current track (currentIndex_ as a list index) plays first in the new order.
    ShufflePlaylist(currentIndex_);
    currentIndex_ = 0;
  } else if (previous == 1 && shuffle == 0) {
    // Back to the list index of the track at the current shuffled position; the order is kept as drawn.
    uint32_t k = 0;
    for (orderCursor_ = order_.begin(); orderCursor_ != order_.end(); ++orderCursor_, ++k) {
      if (*orderCursor_ == currentIndex_) {
        currentIndex_ = k;
        break;
      }
    }
  }
  // Setting the mode it already has does nothing; in particular a second SetShuffle(1) draws nothing.
  return SINK_UPNP_OK;
}

int PLAYLIST_PlaylistManager::GetShuffle() { return shuffle_; }
