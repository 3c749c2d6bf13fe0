#include "PlaylistTestSupport.h"

#include <cstdlib>
#include <string>

#include "PlaylistTestPeer.h"

namespace {

struct SourceState {
  std::time_t now = 0;
  bool realGenerator = false;
  std::deque<long> script;
  std::vector<unsigned int> seeds;
  std::vector<long> drawn;
};

SourceState* gState = nullptr;

std::time_t FakeTime(std::time_t* out) {
  if (out != nullptr) *out = gState->now;
  return gState->now;
}

void FakeSrand(unsigned int seed) {
  gState->seeds.push_back(seed);
  if (gState->realGenerator) std::srand(seed);
}

long FakeRandom() {
  long value = 0;
  if (gState->realGenerator) {
    value = ::random();
  } else if (!gState->script.empty()) {
    value = gState->script.front();
    gState->script.pop_front();
  }
  gState->drawn.push_back(value);
  return value;
}

const PLAYLIST_ShuffleRandomSource kFakeSource = {&FakeTime, &FakeSrand, &FakeRandom};

}  // namespace

ScopedShuffleSource::ScopedShuffleSource(std::time_t now, bool realGenerator) {
  gState = new SourceState;
  gState->now = now;
  gState->realGenerator = realGenerator;
  PLAYLIST_SetShuffleRandomSource(&kFakeSource);
}

ScopedShuffleSource::~ScopedShuffleSource() {
  PLAYLIST_SetShuffleRandomSource(nullptr);
  delete gState;
  gState = nullptr;
}

void ScopedShuffleSource::Script(const std::vector<long>& values) {
  gState->script.assign(values.begin(), values.end());
}

void ScopedShuffleSource::SetTime(std::time_t now) { gState->now = now; }

const std::vector<unsigned int>& ScopedShuffleSource::Seeds() const { return gState->seeds; }

const std::vector<long>& ScopedShuffleSource::Drawn() const { return gState->drawn; }

std::size_t ScopedShuffleSource::Remaining() const { return gState->script.size(); }

uint64_t AddTrack(PLAYLIST_PlaylistManager* manager, uint64_t afterId) {
  if (afterId == UINT64_MAX) {
    const std::vector<uint64_t> ids = PLAYLIST_PlaylistManagerTestPeer::Ids(*manager);
    afterId = ids.empty() ? 0 : ids.back();
  }
  const std::string n = std::to_string(PLAYLIST_PlaylistManagerTestPeer::LastId(*manager) + 1);
  uint64_t id = 0;
  if (manager->Insert(("uri" + n).c_str(), ("meta" + n).c_str(), afterId, &id) != 0) return 0;
  return id;
}

std::vector<uint64_t> AddTracks(PLAYLIST_PlaylistManager* manager, int count) {
  std::vector<uint64_t> ids;
  for (int i = 0; i < count; ++i) ids.push_back(AddTrack(manager));
  return ids;
}

uint64_t CurrentId(PLAYLIST_PlaylistManager* manager) {
  const PLAYLIST_PlaylistData* track = manager->GetCurrentTrackData();
  return track != nullptr ? track->getId() : 0;
}

std::vector<uint32_t> DecodeIdArray(const std::string& text) {
  static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> bytes;
  unsigned int bits = 0;
  int bitCount = 0;
  for (char c : text) {
    if (c == '=') break;
    const std::size_t value = kAlphabet.find(c);
    if (value == std::string::npos) return {0xFFFFFFFFu};  // not Base64: never a list of ids
    bits = (bits << 6) | static_cast<unsigned int>(value);
    bitCount += 6;
    if (bitCount >= 8) {
      bitCount -= 8;
      bytes.push_back(static_cast<unsigned char>((bits >> bitCount) & 0xFF));
    }
  }
  std::vector<uint32_t> ids;
  for (std::size_t i = 0; i + 3 < bytes.size(); i += 4) {
    ids.push_back((uint32_t{bytes[i]} << 24) | (uint32_t{bytes[i + 1]} << 16) |
                  (uint32_t{bytes[i + 2]} << 8) | uint32_t{bytes[i + 3]});
  }
  return ids;
}
