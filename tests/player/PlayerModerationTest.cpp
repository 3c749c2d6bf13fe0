// AVTransport's LastChange moderation in the running renderer, on a clock the test advances.
#include <gtest/gtest.h>

#include "ManualClock.h"
#include "MediaServing.h"
#include "RendererHarness.h"
#include "TestHttpServer.h"
#include "TestMedia.h"

namespace {

class PlayerModeration : public RendererHarness {
 protected:
  void SetUp() override { StartRenderer(&clock_); }
  PLAYER_ManualClock clock_;
  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
};

TEST_F(PlayerModeration, HundredChangesWithinTwoHundredMillisecondsGiveOneLastChange) {
  // A first change goes out at once and opens the interval.
  ASSERT_EQ(Transport("SetPlayMode", {{"NewPlayMode", "REPEAT_ONE"}}).error, 0);
  ASSERT_TRUE(transportHandler_.WaitForBatches(1));
  for (int change = 0; change < 100; ++change) {
    clock_.Advance(1);
    ASSERT_EQ(Transport("SetPlayMode", {{"NewPlayMode", change % 2 == 0 ? "NORMAL" : "REPEAT_ALL"}}).error,
              0);
  }
  clock_.Advance(50);
  EXPECT_EQ(transportHandler_.BatchCount(), 1u);
  clock_.Advance(50);
  ASSERT_TRUE(transportHandler_.WaitForBatches(2));
  const auto batches = transportHandler_.Batches();
  ASSERT_EQ(batches.size(), 2u);
  // The one event carries the last value.
  EXPECT_NE(batches[1][0].second.find("<CurrentPlayMode val=\"REPEAT_ALL\"/>"), std::string::npos);
  clock_.Advance(1000);
  EXPECT_FALSE(transportHandler_.WaitForBatches(3, std::chrono::milliseconds(200)));
}

TEST_F(PlayerModeration, NothingIsEventedWhileNothingChanges) {
  ASSERT_EQ(Transport("SetPlayMode", {{"NewPlayMode", "NORMAL"}}).error, 0);
  clock_.Advance(5000);
  EXPECT_FALSE(transportHandler_.WaitForBatches(1, std::chrono::milliseconds(200)));
}

}  // namespace

TEST_F(PlayerModeration, NewTransportStateIsEventedAtOnceWithinTheInterval) {
  ASSERT_EQ(Transport("SetPlayMode", {{"NewPlayMode", "REPEAT_ONE"}}).error, 0);
  ASSERT_TRUE(transportHandler_.WaitForBatches(1));
  clock_.Advance(1);
  // The clock stands still from here: nothing moderated could go out, a new transport state still does.
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeTone(media_, server_, "/tone.wav", 3000, 440.0).uri));
  ASSERT_TRUE(WaitForState("PLAYING"));
  bool playingEvented = false;
  for (int attempt = 0; attempt < 50 && !playingEvented; ++attempt) {
    for (const auto& batch : transportHandler_.Batches())
      if (!batch.empty() && batch[0].second.find("<TransportState val=\"PLAYING\"/>") != std::string::npos)
        playingEvented = true;
    if (!playingEvented) transportHandler_.WaitForBatches(transportHandler_.BatchCount() + 1, std::chrono::milliseconds(100));
  }
  EXPECT_TRUE(playingEvented) << "PLAYING waited for the moderation interval";
}
