// HOST_LogRing: the last lines of the daemon's log, kept in memory for the status page.
//
// HOST_Log hands every line of level Info or above to HOST_RecentLog(), whatever level the log writes
// (a --quiet daemon still shows on its page what it did). The ring keeps the newest kCapacity lines; a
// line longer than kMaxText bytes is cut at a character boundary and marked with "...".
//
// On purpose fixed storage: Add never allocates, so that logging keeps working when memory has run out,
// as HOST_Log itself does.
//
// Thread-safety: Add and Lines may be called from any thread at any time; one mutex guards the ring, held
// for one copy of at most kMaxText bytes.
#ifndef HOST_LOG_RING_H_
#define HOST_LOG_RING_H_

#include <cstddef>
#include <cstdint>
#include <mutex>
#include <string>
#include <vector>

#include "Log.h"

class HOST_LogRing {
 public:
  static constexpr std::size_t kCapacity = 50;
  static constexpr std::size_t kMaxText = 480;

  struct Line {
    uint64_t sequence;         // 1 for the first line ever added, then one more per line
    int64_t unixMilliseconds;  // when it was added (the system clock)
    HOST_LogLevel level;
    std::string text;  // without the level word and the line end
  };

  HOST_LogRing() = default;
  HOST_LogRing(const HOST_LogRing&) = delete;
  HOST_LogRing& operator=(const HOST_LogRing&) = delete;

  // Keeps `length` bytes of `text` (not terminated) as the newest line, dropping the oldest when full.
  void Add(HOST_LogLevel level, const char* text, std::size_t length);

  // The lines kept, oldest first.
  std::vector<Line> Lines() const;

  // How many lines were ever added (the sequence of the newest).
  uint64_t Added() const;

 private:
  struct Slot {
    uint64_t sequence;
    int64_t unixMilliseconds;
    HOST_LogLevel level;
    std::size_t length;
    char text[kMaxText + 3];
  };

  mutable std::mutex mutex_;
  Slot slots_[kCapacity] = {};  // guarded by mutex_; slot (sequence - 1) % kCapacity holds a line
  uint64_t added_ = 0;          // guarded by mutex_
};

// The daemon's one ring, fed by HOST_Log. Never destroyed, so that a thread logging while the process
// exits finds it.
HOST_LogRing& HOST_RecentLog();

#endif  // HOST_LOG_RING_H_
