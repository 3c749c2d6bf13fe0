#include "EventModerator.h"

#include <utility>

PLAYER_EventModerator::PLAYER_EventModerator(PLAYER_Clock& clock, int64_t intervalMilliseconds,
                                             std::function<void()> send)
    : clock_(clock), interval_(intervalMilliseconds), send_(std::move(send)) {}

PLAYER_EventModerator::~PLAYER_EventModerator() { Cancel(); }

void PLAYER_EventModerator::Changed() {
  if (timer_ != 0) return;
  const int64_t now = clock_.NowMilliseconds();
  if (!sentBefore_ || now - lastSend_ >= interval_) {
    Send();
    return;
  }
  timer_ = clock_.Schedule(lastSend_ + interval_ - now, [this] {
    timer_ = 0;
    Send();
  });
}

void PLAYER_EventModerator::Flush() {
  if (timer_ == 0) return;
  Cancel();
  Send();
}

void PLAYER_EventModerator::Cancel() {
  if (timer_ == 0) return;
  clock_.Cancel(timer_);
  timer_ = 0;
}

void PLAYER_EventModerator::Send() {
  sentBefore_ = true;
  lastSend_ = clock_.NowMilliseconds();
  send_();
}
