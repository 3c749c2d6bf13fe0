// ScriptedShuffle: while one lives, the playlist's shuffles are the input's: each shuffle's "time" (its
// seed) is a byte of the input and its random values come from a small generator seeded with it, now and
// then the largest value random() may answer. A run is then the same every time, whatever the clock says,
// and the fuzzer still chooses how each shuffle falls.
#ifndef FUZZ_SUPPORT_SCRIPTED_SHUFFLE_H_
#define FUZZ_SUPPORT_SCRIPTED_SHUFFLE_H_

#include "FuzzScript.h"

class ScriptedShuffle {
 public:
  explicit ScriptedShuffle(FuzzScript* script);
  // Gives the playlist the system's source back.
  ~ScriptedShuffle();

  ScriptedShuffle(const ScriptedShuffle&) = delete;
  ScriptedShuffle& operator=(const ScriptedShuffle&) = delete;
};

#endif  // FUZZ_SUPPORT_SCRIPTED_SHUFFLE_H_
