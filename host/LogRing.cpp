#include "LogRing.h"

#include <chrono>
#include <cstring>
#include <new>

namespace {

// The longest prefix of text[0, length) of at most `limit` bytes that does not end inside a UTF-8
// character: a cut never leaves half a character for the page to show as garbage.
std::size_t CutAtCharacter(const char* text, std::size_t length, std::size_t limit) {
  if (length <= limit) return length;
  std::size_t cut = limit;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return cut;
}

}  // namespace

void HOST_LogRing::Add(HOST_LogLevel level, const char* text, std::size_t length) {
  const int64_t now = std::chrono::duration_cast<std::chrono::milliseconds>(
                          std::chrono::system_clock::now().time_since_epoch())
                          .count();
  const std::size_t kept = CutAtCharacter(text, length, kMaxText);
  std::lock_guard<std::mutex> lock(mutex_);
  ++added_;
  Slot& slot = slots_[(added_ - 1) % kCapacity];
  slot.sequence = added_;
  slot.unixMilliseconds = now;
  slot.level = level;
  std::memcpy(slot.text, text, kept);
  slot.length = kept;
  if (kept < length) {
    std::memcpy(slot.text + kept, "...", 3);
    slot.length += 3;
  }
}

std::vector<HOST_LogRing::Line> HOST_LogRing::Lines() const {
  std::vector<Line> lines;
  lines.reserve(kCapacity);
  std::lock_guard<std::mutex> lock(mutex_);
  const uint64_t first = added_ > kCapacity ? added_ - kCapacity + 1 : 1;
  for (uint64_t sequence = first; sequence <= added_; ++sequence) {
    const Slot& slot = slots_[(sequence - 1) % kCapacity];
    lines.push_back({slot.sequence, slot.unixMilliseconds, slot.level, std::string(slot.text, slot.length)});
  }
  return lines;
}

uint64_t HOST_LogRing::Added() const {
  std::lock_guard<std::mutex> lock(mutex_);
  return added_;
}

HOST_LogRing& HOST_RecentLog() {
  // Constructed on first use (thread-safe) in static storage, so that even the first line needs no
  // memory; never destroyed.
  alignas(HOST_LogRing) static unsigned char storage[sizeof(HOST_LogRing)];
  static HOST_LogRing* ring = new (storage) HOST_LogRing();
  return *ring;
}
