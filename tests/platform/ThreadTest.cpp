#include <gtest/gtest.h>

#include <atomic>

#include "ScopedFault.h"
#include "dmr_cmn/Result.h"
#include "dmr_cmn/Thread.h"

namespace {

class CountingThread : public DMR_CMN_Thread {
 public:
  ~CountingThread() override {
    if (IsRunning()) Join();
  }
  std::atomic<int> runs{0};

 protected:
  void Run() override { runs.fetch_add(1); }
};

TEST(Thread, StartRunsTheWorkOnceAndJoinWaitsForIt) {
  CountingThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EXPECT_TRUE(thread.IsRunning());
  ASSERT_EQ(thread.Join(), 0);
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(thread.runs.load(), 1);
}

TEST(Thread, SecondStartFails) {
  CountingThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EXPECT_EQ(thread.Start(), -1);
  ASSERT_EQ(thread.Join(), 0);
  EXPECT_EQ(thread.runs.load(), 1);
}

TEST(Thread, JoinWithoutStartFails) {
  CountingThread thread;
  EXPECT_EQ(thread.Join(), -1);
}

TEST(Thread, SecondJoinFails) {
  CountingThread thread;
  ASSERT_EQ(thread.Start(), 0);
  ASSERT_EQ(thread.Join(), 0);
  EXPECT_EQ(thread.Join(), -1);
}

TEST(Thread, InjectedStartFailureGivesMinus966AndCreatesNoThread) {
  CountingThread thread;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kThreadStart, 1, DMR_CMN_ERR_THREAD_START);
    EXPECT_EQ(thread.Start(), DMR_CMN_ERR_THREAD_START);
  }
  EXPECT_FALSE(thread.IsRunning());
  EXPECT_EQ(thread.Join(), -1);
  EXPECT_EQ(thread.runs.load(), 0);
}

TEST(Thread, InjectedJoinFailureLeavesTheThreadJoinable) {
  CountingThread thread;
  ASSERT_EQ(thread.Start(), 0);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kThreadJoin, 1, -3);
    EXPECT_EQ(thread.Join(), -3);
  }
  EXPECT_TRUE(thread.IsRunning());
  EXPECT_EQ(thread.Join(), 0);
}

}  // namespace
