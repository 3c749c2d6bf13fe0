#include "MainLoopRunner.h"

namespace {

constexpr guint kWakeIntervalMilliseconds = 10;

gboolean KeepTicking(gpointer) { return G_SOURCE_CONTINUE; }

}  // namespace

PLAYER_MainLoopRunner::PLAYER_MainLoopRunner() : context_(g_main_context_new()) {
  g_main_context_push_thread_default(context_);
}

PLAYER_MainLoopRunner::~PLAYER_MainLoopRunner() {
  g_main_context_pop_thread_default(context_);
  g_main_context_unref(context_);
}

bool PLAYER_MainLoopRunner::RunUntil(const std::function<bool()>& predicate, int timeoutMilliseconds) {
  if (predicate()) return true;
  const gint64 deadline =
      g_get_monotonic_time() + static_cast<gint64>(timeoutMilliseconds) * G_TIME_SPAN_MILLISECOND;
  GSource* ticker = g_timeout_source_new(kWakeIntervalMilliseconds);
  g_source_set_callback(ticker, KeepTicking, nullptr, nullptr);
  g_source_attach(ticker, context_);
  bool held = false;
  while (!held && g_get_monotonic_time() < deadline) {
    g_main_context_iteration(context_, TRUE);
    held = predicate();
  }
  g_source_destroy(ticker);
  g_source_unref(ticker);
  return held;
}

void PLAYER_MainLoopRunner::RunFor(int milliseconds) {
  RunUntil([] { return false; }, milliseconds);
}
