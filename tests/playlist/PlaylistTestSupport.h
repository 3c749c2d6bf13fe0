// Helpers shared by the playlist tests: a scripted random source for the shuffle, and short-hands to
// fill a playlist.
#ifndef TESTS_PLAYLIST_PLAYLIST_TEST_SUPPORT_H_
#define TESTS_PLAYLIST_PLAYLIST_TEST_SUPPORT_H_

#include <cstdint>
#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "playlist/PlaylistManager.h"
#include "playlist/ShuffleRandomSource.h"

// Replaces the shuffle's random source for its life: time() answers `now`, srand() is recorded (and,
// with `realGenerator`, passed on to the C library so that random() draws the real sequence), random()
// answers the scripted values in turn (0 once they run out) or, with `realGenerator`, the C library's.
class ScopedShuffleSource {
 public:
  explicit ScopedShuffleSource(std::time_t now = 1700000000, bool realGenerator = false);
  ~ScopedShuffleSource();
  ScopedShuffleSource(const ScopedShuffleSource&) = delete;
  ScopedShuffleSource& operator=(const ScopedShuffleSource&) = delete;

  void Script(const std::vector<long>& values);
  void SetTime(std::time_t now);
  // The seeds passed to srand(), in order.
  const std::vector<unsigned int>& Seeds() const;
  // The values random() answered, in order.
  const std::vector<long>& Drawn() const;
  // How many scripted values are still unused.
  std::size_t Remaining() const;
};

// Inserts a track "uri<n>" / "meta<n>" behind `afterId`; answers the new id (0 when the insert failed).
uint64_t AddTrack(PLAYLIST_PlaylistManager* manager, uint64_t afterId = UINT64_MAX);
// Appends `count` tracks at the end; answers their ids.
std::vector<uint64_t> AddTracks(PLAYLIST_PlaylistManager* manager, int count);
// The id of the current track, 0 when there is none.
uint64_t CurrentId(PLAYLIST_PlaylistManager* manager);
// The ids of the tracks in list order, read through the IdArray.
std::vector<uint32_t> DecodeIdArray(const std::string& text);

#endif  // TESTS_PLAYLIST_PLAYLIST_TEST_SUPPORT_H_
