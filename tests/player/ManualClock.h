// PLAYER_ManualClock: a PLAYER_Clock whose time moves only when a test advances it; due timers run
// inside Advance, in the order of their due times.
#ifndef TESTS_PLAYER_MANUAL_CLOCK_H_
#define TESTS_PLAYER_MANUAL_CLOCK_H_

#include <cstdint>
#include <functional>
#include <map>
#include <utility>

#include "Clock.h"

class PLAYER_ManualClock : public PLAYER_Clock {
 public:
  int64_t NowMilliseconds() override { return now_; }
  uint64_t Schedule(int64_t delayMilliseconds, std::function<void()> callback) override {
    const uint64_t id = ++lastId_;
    timers_.emplace(std::make_pair(now_ + (delayMilliseconds < 0 ? 0 : delayMilliseconds), id),
                    std::move(callback));
    return id;
  }
  void Cancel(uint64_t timer) override {
    for (auto entry = timers_.begin(); entry != timers_.end(); ++entry) {
      if (entry->first.second == timer) {
        timers_.erase(entry);
        return;
      }
    }
  }
  // Moves the time on by `milliseconds`, running every timer that falls due on the way.
  void Advance(int64_t milliseconds) {
    const int64_t end = now_ + milliseconds;
    while (!timers_.empty() && timers_.begin()->first.first <= end) {
      auto entry = timers_.begin();
      now_ = entry->first.first;
      std::function<void()> callback = std::move(entry->second);
      timers_.erase(entry);
      callback();
    }
    now_ = end;
  }
  std::size_t Pending() const { return timers_.size(); }

 private:
  int64_t now_ = 1000000;
  uint64_t lastId_ = 0;
  std::map<std::pair<int64_t, uint64_t>, std::function<void()>> timers_;
};

#endif  // TESTS_PLAYER_MANUAL_CLOCK_H_
