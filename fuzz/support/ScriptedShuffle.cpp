#include "ScriptedShuffle.h"

#include <cstdint>
#include <ctime>

#include "playlist/ShuffleRandomSource.h"

namespace {

// The source's operations are plain functions: they reach the input through these (one target runs one
// input at a time).
FuzzScript* g_script = nullptr;
uint32_t g_state = 0;

std::time_t ScriptTime(std::time_t* now) {
  const std::time_t value = g_script != nullptr ? g_script->Byte() : 0;
  if (now != nullptr) *now = value;
  return value;
}

void Seed(unsigned int seed) { g_state = seed; }

long Draw() {
  g_state = g_state * 1103515245u + 12345u;
  const uint32_t value = g_state >> 1;
  // One draw in 61: the top of random()'s range, which a naive scaling would take one place too far.
  if (value % 61 == 0) return 2147483647;
  return static_cast<long>(value);
}

const PLAYLIST_ShuffleRandomSource kScripted = {&ScriptTime, &Seed, &Draw};

}  // namespace

ScriptedShuffle::ScriptedShuffle(FuzzScript* script) {
  g_script = script;
  g_state = 0;
  PLAYLIST_SetShuffleRandomSource(&kScripted);
}

ScriptedShuffle::~ScriptedShuffle() {
  PLAYLIST_SetShuffleRandomSource(nullptr);
  g_script = nullptr;
}
