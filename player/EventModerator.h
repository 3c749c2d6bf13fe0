// PLAYER_EventModerator: sends an evented change at once, and coalesces the changes that follow within
// the moderation interval into one send at its end, so that subscribers get at most one event per
// interval (AVTransport's LastChange: 200 ms) and never wait longer than one interval for the latest
// value.
//
// Runs on the player's thread only, on a PLAYER_Clock.
#ifndef PLAYER_EVENT_MODERATOR_H_
#define PLAYER_EVENT_MODERATOR_H_

#include <cstdint>
#include <functional>

#include "Clock.h"

class PLAYER_EventModerator {
 public:
  PLAYER_EventModerator(PLAYER_Clock& clock, int64_t intervalMilliseconds, std::function<void()> send);
  ~PLAYER_EventModerator();
  PLAYER_EventModerator(const PLAYER_EventModerator&) = delete;
  PLAYER_EventModerator& operator=(const PLAYER_EventModerator&) = delete;

  // Something changed: send now when the last send is at least one interval old, else once at the end
  // of the interval (a send already scheduled carries this change too).
  void Changed();
  // Sends a scheduled send now (nothing when none is scheduled); the interval starts again from here.
  void Flush();
  // Forgets a scheduled send (the changes stay pending in the store for the next one).
  void Cancel();
  bool Scheduled() const { return timer_ != 0; }

 private:
  void Send();

  PLAYER_Clock& clock_;
  const int64_t interval_;
  std::function<void()> send_;
  bool sentBefore_ = false;
  int64_t lastSend_ = 0;
  uint64_t timer_ = 0;
};

#endif  // PLAYER_EVENT_MODERATOR_H_
