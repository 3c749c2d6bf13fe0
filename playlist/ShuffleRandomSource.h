// PLAYLIST_ShuffleRandomSource: where ShufflePlaylist gets its randomness. The product uses the system's
// time(), srand() and random(): the generator is seeded with the time in whole seconds on every shuffle, so
// two shuffles started within the same second draw the same values.
//
// The seam exists so that tests can make shuffles deterministic (a fixed time, or scripted random values)
// without changing the product's behaviour: nothing but a test calls PLAYLIST_SetShuffleRandomSource, and
// with the default source ShufflePlaylist calls exactly time(NULL), srand() and random().
//
// Thread safety: the source is process-wide and not guarded; set it only while no playlist shuffles.
#ifndef PLAYLIST_SHUFFLE_RANDOM_SOURCE_H_
#define PLAYLIST_SHUFFLE_RANDOM_SOURCE_H_

#include <ctime>

struct PLAYLIST_ShuffleRandomSource {
  std::time_t (*time)(std::time_t* now);
  void (*srand)(unsigned int seed);
  long (*random)();
};

// The system's time, srand and random.
const PLAYLIST_ShuffleRandomSource* PLAYLIST_SystemShuffleRandomSource();
// The source ShufflePlaylist uses now.
const PLAYLIST_ShuffleRandomSource* PLAYLIST_GetShuffleRandomSource();
// Makes ShufflePlaylist use `source` (which must outlive its use); null restores the system's source.
void PLAYLIST_SetShuffleRandomSource(const PLAYLIST_ShuffleRandomSource* source);

#endif  // PLAYLIST_SHUFFLE_RANDOM_SOURCE_H_
