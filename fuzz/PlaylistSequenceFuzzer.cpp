// Checks the OpenHome playlist model driven by arbitrary sequences of its operations (Insert, DeleteId,
// DeleteAll, the seeks, Next, Prev, CheckNext, the modes, ShufflePlaylist, and fills up to its 1001-track
// limit), with shuffles drawn from the input: after every step the playlist keeps its invariants (unique
// ids, an IdArray and a TrackList that match the list, one order entry per track, the current position
// inside the list), each operation did what it answered, and the order entries are a permutation of
// what they were, up to the entry an Insert appends or a DeleteId removes, the reset to 0, 1, 2, ... in
// normal order, and the one documented exception (a shuffle that keeps a track first when no entry held 0).
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "FuzzScript.h"
#include "PlaylistInvariants.h"
#include "PlaylistTestPeer.h"
#include "ScriptedShuffle.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;

constexpr const char* kUris[] = {"http://127.0.0.1:9/a.flac", "", "http://127.0.0.1:9/b.mp3?x=1&y=2"};
constexpr const char* kMetadata[] = {"", "<DIDL-Lite/>", "&<>\"'"};
constexpr int kMaxSteps = 96;

// An id to pass: one of the list's (first, last, current or any), 0, a negative one, or anything.
int64_t ChooseId(FuzzScript& script, const std::vector<uint64_t>& ids, uint32_t current) {
  const uint8_t choice = script.Byte();
  if (!ids.empty() && choice < 160) {
    switch (choice % 4) {
      case 0: return static_cast<int64_t>(ids.front());
      case 1: return static_cast<int64_t>(ids.back());
      case 2: return static_cast<int64_t>(current < ids.size() ? ids[current] : 0);
      default: return static_cast<int64_t>(ids[script.Between<std::size_t>(0, ids.size() - 1)]);
    }
  }
  if (choice < 192) return 0;
  if (choice < 208) return -1;
  return script.Number<int64_t>();
}

std::vector<uint32_t> Sorted(std::vector<uint32_t> values) {
  std::sort(values.begin(), values.end());
  return values;
}

// The order entries after a step that started from `expected` (as a sorted multiset).
void CheckOrder(const PLAYLIST_PlaylistManager& playlist, const std::vector<uint32_t>& expected, bool shuffled) {
  const std::vector<uint32_t> after = Sorted(Peer::Order(playlist));
  if (after == expected) return;
  if (!shuffled) {
    // The reset of normal order.
    bool identity = true;
    for (std::size_t k = 0; k < after.size(); ++k) identity = identity && after[k] == k;
    if (identity) return;
  }
  // A shuffle that keeps a track first when no entry held 0: that track's entry became 0.
  FUZZ_CHECK(!expected.empty() && expected.front() != 0 && after.size() == expected.size() && after.front() == 0);
  std::vector<uint32_t> rest(after.begin() + 1, after.end());
  std::size_t missing = 0;
  for (std::size_t i = 0, j = 0; i < expected.size(); ++i) {
    if (j < rest.size() && rest[j] == expected[i]) {
      ++j;
    } else {
      ++missing;
    }
  }
  FUZZ_CHECK(missing == 1);
}

// `fillsLeft`: how many fills the input may still ask for. Insert counts the list twice, so filling to the
// limit costs a million steps: one fill per input keeps the target fast.
// `checkEverything`: also the IdArray and the TrackList of a long playlist (PlaylistInvariants.h).
void Step(FuzzScript& script, PLAYLIST_PlaylistManager& playlist, int* fillsLeft, bool checkEverything) {
  const std::vector<uint64_t> ids = Peer::Ids(playlist);
  const uint32_t current = Peer::CurrentIndex(playlist);
  const uint64_t lastId = Peer::LastId(playlist);
  std::vector<uint32_t> order = Peer::Order(playlist);

  uint8_t operation = script.Byte() % 15;
  if (operation == 14 && *fillsLeft == 0) operation = 0;
  switch (operation) {
    case 0: {  // Insert
      const int64_t afterId = ChooseId(script, ids, current);
      uint64_t newId = 0;
      const int32_t result = playlist.Insert(script.Pick(kUris, 32).c_str(), script.Pick(kMetadata, 32).c_str(),
                                             static_cast<uint64_t>(afterId), &newId);
      const std::vector<uint64_t> now = Peer::Ids(playlist);
      if (result == 0) {
        FUZZ_CHECK(newId == lastId + 1 && now.size() == ids.size() + 1);
        const auto placed = std::find(now.begin(), now.end(), newId);
        FUZZ_CHECK(placed != now.end());
        if (afterId == 0) {
          FUZZ_CHECK(placed == now.begin());
        } else {
          FUZZ_CHECK(placed != now.begin() && *(placed - 1) == static_cast<uint64_t>(afterId));
        }
        order.push_back(static_cast<uint32_t>(ids.size()));
      } else {
        FUZZ_CHECK(result == -1 && now == ids);
        const bool full = ids.size() > 1000;
        FUZZ_CHECK(Peer::LastId(playlist) == (full ? lastId : lastId + 1));
      }
      break;
    }
    case 1: {  // DeleteId
      const int64_t chosen = ChooseId(script, ids, current);
      const int32_t id = static_cast<int32_t>(chosen);
      int wasCurrent = -7;
      const int32_t result = playlist.DeleteId(id, &wasCurrent);
      const auto found = std::find(ids.begin(), ids.end(), static_cast<uint64_t>(static_cast<int64_t>(id)));
      if (id < 0) {
        FUZZ_CHECK(result == -999 && wasCurrent == 0);
      } else if (found == ids.end()) {
        FUZZ_CHECK(result == -1 && wasCurrent == 0);
      } else {
        const std::size_t place = static_cast<std::size_t>(found - ids.begin());
        FUZZ_CHECK(result == 0 && wasCurrent == (place == current ? 1 : 0));
        order.erase(order.begin() + static_cast<std::ptrdiff_t>(place));
        std::vector<uint64_t> expected = ids;
        expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(place));
        FUZZ_CHECK(Peer::Ids(playlist) == expected);
      }
      break;
    }
    case 2:  // DeleteAll
      FUZZ_CHECK(playlist.DeleteAll() == 0);
      FUZZ_CHECK(playlist.GetTrackCount() == 0 && Peer::LastId(playlist) == lastId);
      order.clear();
      break;
    case 3: {
      const PLAYLIST_PlaylistData* track = playlist.GetCurrentTrackData();
      FUZZ_CHECK(ids.empty() ? track == nullptr : track != nullptr && track->getId() == ids[current]);
      break;
    }
    case 4: {  // SeekIndexTrackData
      const int32_t index = script.Flag() ? script.Between<int32_t>(-1, 4) : script.Number<int32_t>();
      const PLAYLIST_PlaylistData* track = playlist.SeekIndexTrackData(index);
      if (index >= 0 && static_cast<std::size_t>(index) < ids.size()) {
        FUZZ_CHECK(track != nullptr && track->getId() == ids[static_cast<std::size_t>(index)]);
        FUZZ_CHECK(Peer::CurrentIndex(playlist) == static_cast<uint32_t>(index));
      } else {
        FUZZ_CHECK(track == nullptr && Peer::CurrentIndex(playlist) == current);
      }
      break;
    }
    case 5:
    case 6: {  // SeekIdTrackData, GetSpecificIdTrackData
      const int32_t id = static_cast<int32_t>(ChooseId(script, ids, current));
      const PLAYLIST_PlaylistData* track =
          operation == 5 ? playlist.SeekIdTrackData(id) : playlist.GetSpecificIdTrackData(id);
      const auto found = std::find(ids.begin(), ids.end(), static_cast<uint64_t>(static_cast<int64_t>(id)));
      if (found == ids.end()) {
        FUZZ_CHECK(track == nullptr && Peer::CurrentIndex(playlist) == current);
      } else {
        FUZZ_CHECK(track != nullptr && track->getId() == *found);
        const uint32_t place = static_cast<uint32_t>(found - ids.begin());
        FUZZ_CHECK(Peer::CurrentIndex(playlist) == (operation == 5 ? place : current));
      }
      break;
    }
    case 7:
    case 8:
    case 9: {  // Next, GetNextTrackData, Prev
      const PLAYLIST_PlaylistData* track = operation == 7   ? playlist.Next()
                                           : operation == 8 ? playlist.GetNextTrackData()
                                                            : playlist.Prev();
      if (track != nullptr) {
        FUZZ_CHECK(std::find(ids.begin(), ids.end(), track->getId()) != ids.end());
      }
      if (operation == 8) FUZZ_CHECK(Peer::CurrentIndex(playlist) == current && Peer::Order(playlist) == order);
      break;
    }
    case 10: {
      const int next = playlist.CheckNext();
      FUZZ_CHECK(next == 0 || next == 1);
      break;
    }
    case 11:
    case 12: {  // SetRepeat, SetShuffle
      const int value = script.Flag() ? script.Between(0, 1) : script.Number<int>();
      const int before = operation == 11 ? playlist.GetRepeat() : playlist.GetShuffle();
      const int32_t result = operation == 11 ? playlist.SetRepeat(value) : playlist.SetShuffle(value);
      const int now = operation == 11 ? playlist.GetRepeat() : playlist.GetShuffle();
      if (value == 0 || value == 1) {
        FUZZ_CHECK(result == 0 && now == value);
      } else {
        FUZZ_CHECK(result == -999 && now == before);
      }
      break;
    }
    case 13: {  // ShufflePlaylist
      const int64_t keepFirst = script.Flag() ? script.Between<int64_t>(-1, static_cast<int64_t>(ids.size()))
                                              : script.Number<int64_t>();
      FUZZ_CHECK(playlist.ShufflePlaylist(keepFirst) == 0);
      break;
    }
    default: {  // a fill at the end, up to and beyond the limit
      --*fillsLeft;
      const int count = 4 * script.Byte() + script.Between(0, 3);
      std::size_t tracks = ids.size();
      uint64_t last = ids.empty() ? 0 : ids.back();
      for (int i = 0; i < count; ++i) {
        uint64_t newId = 0;
        const int32_t result = playlist.Insert("http://127.0.0.1:9/fill", "", last, &newId);
        if (result == 0) {
          order.push_back(static_cast<uint32_t>(tracks++));
          last = newId;
        } else {
          FUZZ_CHECK(result == -1 && tracks == 1001);
        }
      }
      break;
    }
  }
  CheckPlaylistInvariants(playlist, checkEverything);
  CheckOrder(playlist, Sorted(order), playlist.GetShuffle() == 1);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  FuzzScript script(data, size);
  ScriptedShuffle shuffle(&script);
  PLAYLIST_PlaylistManager playlist;
  FUZZ_CHECK(playlist.Initialize() == 0);
  int fillsLeft = 1;
  for (int step = 0; step < kMaxSteps && !script.Done(); ++step) {
    Step(script, playlist, &fillsLeft, step % 16 == 15);
  }
  CheckPlaylistInvariants(playlist);
  FUZZ_CHECK(playlist.Finalize() == 0);
  return 0;
}
