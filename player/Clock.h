// PLAYER_Clock: the time and the timers the player's event moderation and position ticks run on, behind
// an interface so that tests advance time instead of sleeping.
#ifndef PLAYER_CLOCK_H_
#define PLAYER_CLOCK_H_

#include <cstdint>
#include <functional>

class PLAYER_Clock {
 public:
  virtual ~PLAYER_Clock() = default;
  // Monotonic milliseconds.
  virtual int64_t NowMilliseconds() = 0;
  // Calls `callback` once, `delayMilliseconds` from now, on the player's thread. Answers a nonzero id.
  virtual uint64_t Schedule(int64_t delayMilliseconds, std::function<void()> callback) = 0;
  // Forgets a timer that has not run yet; an id that has run or is unknown is ignored.
  virtual void Cancel(uint64_t timer) = 0;
};

#endif  // PLAYER_CLOCK_H_
