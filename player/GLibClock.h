// PLAYER_GLibClock: PLAYER_Clock on a GLib main context (timeout sources attached to it).
#ifndef PLAYER_GLIB_CLOCK_H_
#define PLAYER_GLIB_CLOCK_H_

#include <glib.h>

#include <cstdint>
#include <functional>
#include <map>

#include "Clock.h"

class PLAYER_GLibClock : public PLAYER_Clock {
 public:
  // `context` null: GLib's global default context.
  explicit PLAYER_GLibClock(GMainContext* context);
  ~PLAYER_GLibClock() override;
  PLAYER_GLibClock(const PLAYER_GLibClock&) = delete;
  PLAYER_GLibClock& operator=(const PLAYER_GLibClock&) = delete;

  int64_t NowMilliseconds() override;
  uint64_t Schedule(int64_t delayMilliseconds, std::function<void()> callback) override;
  void Cancel(uint64_t timer) override;

 private:
  struct Timer;
  static gboolean Fire(gpointer data);

  GMainContext* context_;
  uint64_t lastId_ = 0;
  std::map<uint64_t, GSource*> timers_;
};

#endif  // PLAYER_GLIB_CLOCK_H_
