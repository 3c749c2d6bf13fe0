// PLAYER_MainLoopRunner: a private GLib main context for one test, pushed as the thread-default context of
// the thread that creates it, and run by the test in bounded steps.
//
// Code under test that attaches its sources (a GStreamer bus watch, idle callbacks handed over from
// streaming threads, timers) to the thread-default context, or to Context(), runs only while the test
// calls RunUntil or RunFor, on the test thread. Nothing waits unboundedly: the test says how long.
//
// Create, use and destroy it on one thread; destroy it on the thread that created it (the context is
// popped from that thread's stack).
#ifndef TESTS_PLAYER_SUPPORT_MAIN_LOOP_RUNNER_H_
#define TESTS_PLAYER_SUPPORT_MAIN_LOOP_RUNNER_H_

#include <glib.h>

#include <functional>

class PLAYER_MainLoopRunner {
 public:
  PLAYER_MainLoopRunner();
  ~PLAYER_MainLoopRunner();

  PLAYER_MainLoopRunner(const PLAYER_MainLoopRunner&) = delete;
  PLAYER_MainLoopRunner& operator=(const PLAYER_MainLoopRunner&) = delete;

  GMainContext* Context() const { return context_; }

  // Dispatches the context's sources until `predicate` holds or `timeoutMilliseconds` have passed; returns
  // whether it holds. The predicate is checked first (no iteration when it already holds) and after every
  // iteration. Iterations block in poll; a 10 ms timer on the context wakes them, so a predicate that
  // another thread makes true is seen within about 10 ms without busy waiting.
  bool RunUntil(const std::function<bool()>& predicate, int timeoutMilliseconds);

  // Dispatches the context's sources for `milliseconds`.
  void RunFor(int milliseconds);

 private:
  GMainContext* context_;
};

#endif  // TESTS_PLAYER_SUPPORT_MAIN_LOOP_RUNNER_H_
