#include <gst/gst.h>
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

#include "MainLoopRunner.h"
#include "PipelineRun.h"
#include "Stopwatch.h"

namespace {

using std::chrono::milliseconds;

gboolean SetFlag(gpointer data) {
  *static_cast<bool*>(data) = true;
  return G_SOURCE_REMOVE;
}

gboolean CountTick(gpointer data) {
  ++*static_cast<int*>(data);
  return G_SOURCE_CONTINUE;
}

// Attaches a source made by `make` with `callback` to `context`; the context holds the only reference.
void Attach(GSource* source, GSourceFunc callback, gpointer data, GMainContext* context) {
  g_source_set_callback(source, callback, data, nullptr);
  g_source_attach(source, context);
  g_source_unref(source);
}

}  // namespace

TEST(MainLoopRunner, IsTheThreadDefaultContextWhileItLives) {
  GMainContext* before = g_main_context_get_thread_default();
  {
    PLAYER_MainLoopRunner runner;
    EXPECT_EQ(g_main_context_get_thread_default(), runner.Context());
    EXPECT_NE(runner.Context(), g_main_context_default());
  }
  EXPECT_EQ(g_main_context_get_thread_default(), before);
}

TEST(MainLoopRunner, RunUntilDispatchesItsSourcesUntilThePredicateHolds) {
  PLAYER_MainLoopRunner runner;
  bool fired = false;
  Attach(g_timeout_source_new(30), SetFlag, &fired, runner.Context());
  const Stopwatch watch;
  EXPECT_TRUE(runner.RunUntil([&] { return fired; }, 2000));
  EXPECT_GE(watch.Milliseconds(), 30);
  EXPECT_LT(watch.Milliseconds(), 1000);
}

TEST(MainLoopRunner, RunUntilChecksThePredicateBeforeDispatchingAnything) {
  PLAYER_MainLoopRunner runner;
  bool dispatched = false;
  Attach(g_idle_source_new(), SetFlag, &dispatched, runner.Context());
  EXPECT_TRUE(runner.RunUntil([] { return true; }, 1000));
  EXPECT_FALSE(dispatched);
}

TEST(MainLoopRunner, RunUntilGivesUpAfterItsTimeout) {
  PLAYER_MainLoopRunner runner;
  const Stopwatch watch;
  EXPECT_FALSE(runner.RunUntil([] { return false; }, 100));
  EXPECT_GE(watch.Milliseconds(), 100);
  EXPECT_LT(watch.Milliseconds(), 600);
}

TEST(MainLoopRunner, RunUntilSeesAPredicateThatAnotherThreadMakesTrue) {
  PLAYER_MainLoopRunner runner;
  std::atomic<bool> set{false};
  std::thread setter([&] {
    std::this_thread::sleep_for(milliseconds(50));
    set = true;
  });
  const Stopwatch watch;
  EXPECT_TRUE(runner.RunUntil([&] { return set.load(); }, 2000));
  EXPECT_LT(watch.Milliseconds(), 1000);
  setter.join();
}

TEST(MainLoopRunner, RunForDispatchesForTheWholeTime) {
  PLAYER_MainLoopRunner runner;
  int ticks = 0;
  Attach(g_timeout_source_new(20), CountTick, &ticks, runner.Context());
  const Stopwatch watch;
  runner.RunFor(200);
  EXPECT_GE(watch.Milliseconds(), 200);
  EXPECT_LT(watch.Milliseconds(), 700);
  EXPECT_GE(ticks, 5);
}

TEST(MainLoopRunner, BusWatchAddedOnTheTestThreadIsDispatchedByIt) {
  PLAYER_EnsureGstreamer();
  PLAYER_MainLoopRunner runner;
  PLAYER_GstElementPtr pipeline(gst_pipeline_new(nullptr));
  gst_object_ref_sink(pipeline.get());
  PLAYER_GstBusPtr bus(gst_element_get_bus(pipeline.get()));
  bool received = false;
  // gst_bus_add_watch attaches to the thread-default context: the runner's.
  const guint watch = gst_bus_add_watch(
      bus.get(),
      [](GstBus*, GstMessage* message, gpointer data) -> gboolean {
        if (GST_MESSAGE_TYPE(message) == GST_MESSAGE_APPLICATION) *static_cast<bool*>(data) = true;
        return G_SOURCE_CONTINUE;
      },
      &received);
  ASSERT_NE(watch, 0u);
  std::thread poster([&] {
    gst_bus_post(bus.get(), gst_message_new_application(nullptr, gst_structure_new_empty("test")));
  });
  EXPECT_TRUE(runner.RunUntil([&] { return received; }, 2000));
  poster.join();
  gst_bus_remove_watch(bus.get());
}
