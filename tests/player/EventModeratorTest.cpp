#include <gtest/gtest.h>

#include "EventModerator.h"
#include "ManualClock.h"

namespace {

class PlayerEventModeration : public ::testing::Test {
 protected:
  PLAYER_ManualClock clock_;
  int sends_ = 0;
  PLAYER_EventModerator moderator_{clock_, 200, [this] { ++sends_; }};
};

TEST_F(PlayerEventModeration, FirstChangeIsSentAtOnce) {
  moderator_.Changed();
  EXPECT_EQ(sends_, 1);
  EXPECT_FALSE(moderator_.Scheduled());
}

TEST_F(PlayerEventModeration, AHundredChangesWithinOneIntervalGiveOneMoreEvent) {
  moderator_.Changed();
  ASSERT_EQ(sends_, 1);
  for (int change = 0; change < 100; ++change) {
    clock_.Advance(1);
    moderator_.Changed();
  }
  // 100 ms into the interval: nothing more has gone out; the one send comes at its end.
  EXPECT_EQ(sends_, 1);
  clock_.Advance(99);
  EXPECT_EQ(sends_, 1);
  clock_.Advance(1);
  EXPECT_EQ(sends_, 2);
  clock_.Advance(1000);
  EXPECT_EQ(sends_, 2);
}

TEST_F(PlayerEventModeration, AChangeAfterAQuietIntervalIsSentAtOnce) {
  moderator_.Changed();
  clock_.Advance(200);
  moderator_.Changed();
  EXPECT_EQ(sends_, 2);
}

TEST_F(PlayerEventModeration, ADelayedSendComesExactlyOneIntervalAfterTheLast) {
  moderator_.Changed();
  clock_.Advance(50);
  moderator_.Changed();
  clock_.Advance(149);
  EXPECT_EQ(sends_, 1);
  clock_.Advance(1);
  EXPECT_EQ(sends_, 2);
}

TEST_F(PlayerEventModeration, NothingIsSentWhileNothingChanges) {
  clock_.Advance(10000);
  EXPECT_EQ(sends_, 0);
  EXPECT_EQ(clock_.Pending(), 0u);
}

TEST_F(PlayerEventModeration, FlushSendsTheScheduledChangesAtOnceAndOpensANewInterval) {
  moderator_.Changed();
  clock_.Advance(10);
  moderator_.Changed();
  moderator_.Flush();
  EXPECT_EQ(sends_, 2);
  EXPECT_FALSE(moderator_.Scheduled());
  clock_.Advance(10);
  moderator_.Changed();
  EXPECT_EQ(sends_, 2);
  clock_.Advance(200);
  EXPECT_EQ(sends_, 3);
}

TEST_F(PlayerEventModeration, FlushWithNothingScheduledSendsNothing) {
  moderator_.Flush();
  EXPECT_EQ(sends_, 0);
}

TEST_F(PlayerEventModeration, CancelDropsTheScheduledSend) {
  moderator_.Changed();
  moderator_.Changed();
  ASSERT_TRUE(moderator_.Scheduled());
  moderator_.Cancel();
  clock_.Advance(1000);
  EXPECT_EQ(sends_, 1);
}

}  // namespace
