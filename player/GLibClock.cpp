#include "GLibClock.h"

#include <utility>

struct PLAYER_GLibClock::Timer {
  PLAYER_GLibClock* clock;
  uint64_t id;
  std::function<void()> callback;
};

PLAYER_GLibClock::PLAYER_GLibClock(GMainContext* context)
    : context_(context != nullptr ? g_main_context_ref(context) : nullptr) {}

PLAYER_GLibClock::~PLAYER_GLibClock() {
  for (auto& entry : timers_) {
    g_source_destroy(entry.second);
    g_source_unref(entry.second);
  }
  if (context_ != nullptr) g_main_context_unref(context_);
}

int64_t PLAYER_GLibClock::NowMilliseconds() { return g_get_monotonic_time() / 1000; }

uint64_t PLAYER_GLibClock::Schedule(int64_t delayMilliseconds, std::function<void()> callback) {
  const uint64_t id = ++lastId_;
  GSource* source = g_timeout_source_new(static_cast<guint>(delayMilliseconds < 0 ? 0 : delayMilliseconds));
  auto* timer = new Timer{this, id, std::move(callback)};
  g_source_set_callback(source, &PLAYER_GLibClock::Fire, timer,
                        [](gpointer data) { delete static_cast<Timer*>(data); });
  g_source_attach(source, context_);
  timers_.emplace(id, source);
  return id;
}

void PLAYER_GLibClock::Cancel(uint64_t timer) {
  auto found = timers_.find(timer);
  if (found == timers_.end()) return;
  g_source_destroy(found->second);
  g_source_unref(found->second);
  timers_.erase(found);
}

gboolean PLAYER_GLibClock::Fire(gpointer data) {
  auto* timer = static_cast<Timer*>(data);
  PLAYER_GLibClock* clock = timer->clock;
  // The callback may schedule or cancel timers, so the entry goes before it runs; the Timer itself lives
  // until the source is finalized after this returns.
  auto found = clock->timers_.find(timer->id);
  if (found != clock->timers_.end()) {
    g_source_unref(found->second);
    clock->timers_.erase(found);
  }
  std::function<void()> callback = std::move(timer->callback);
  callback();
  return G_SOURCE_REMOVE;
}
