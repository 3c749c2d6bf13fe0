// The runtime's primitives under several threads at once: the lock and the fault-injection counters.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <thread>
#include <vector>

#include "FaultInjection.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/Result.h"

namespace {

constexpr int kThreads = 4;

struct LockDeleter {
  void operator()(DMR_CMN_Lock* lock) const { delete lock; }
};
using LockPtr = std::unique_ptr<DMR_CMN_Lock, LockDeleter>;

LockPtr NewInitializedLock() {
  LockPtr lock(new (std::nothrow) DMR_CMN_Lock);
  if (lock != nullptr && lock->Initialize() != DMR_CMN_OK) lock.reset();
  return lock;
}

// A one-way signal between two threads; waits give up after a while so a broken lock fails the test
// instead of hanging it.
class Signal {
 public:
  void Raise() {
    std::lock_guard<std::mutex> guard(mutex_);
    raised_ = true;
    changed_.notify_all();
  }
  bool Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, std::chrono::seconds(5), [this] { return raised_; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  bool raised_ = false;
};

// Runs `body(index)` on kThreads threads that all start together, and joins them.
template <typename Body>
void RunTogether(Body body) {
  Signal go;
  std::vector<std::thread> threads;
  for (int t = 0; t < kThreads; ++t) {
    threads.emplace_back([&go, &body, t] {
      go.Wait();
      body(t);
    });
  }
  go.Raise();
  for (std::thread& thread : threads) thread.join();
}

// Resets fault injection before and after a test, so that no count or armed point leaks across tests.
class FaultInjectionUnderContention : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};

TEST(LockUnderContention, GivesMutualExclusionAcrossThreads) {
  constexpr int kIncrementsEach = 20000;
  LockPtr owned = NewInitializedLock();
  ASSERT_NE(nullptr, owned);
  DMR_CMN_Lock* const lock = owned.get();
  // Deliberately not atomic: only the lock keeps the increments from being lost.
  long counter = 0;
  std::atomic<int> failures{0};

  RunTogether([&](int) {
    for (int i = 0; i < kIncrementsEach; ++i) {
      if (lock->Lock() == DMR_CMN_OK) {
        ++counter;
        if (lock->Unlock() != DMR_CMN_OK) ++failures;
      } else {
        ++failures;
      }
    }
  });

  EXPECT_EQ(0, failures.load());
  EXPECT_EQ(static_cast<long>(kThreads) * kIncrementsEach, counter);
  EXPECT_EQ(DMR_CMN_OK, lock->Finalize());
}

TEST(LockUnderContention, FinalizeWhileAnotherThreadHoldsItAnswersMinusOneAndTheLockStillWorks) {
  LockPtr owned = NewInitializedLock();
  ASSERT_NE(nullptr, owned);
  DMR_CMN_Lock* const lock = owned.get();
  Signal held;
  Signal release;
  int32_t unlockResult = DMR_CMN_ERR_GENERIC;
  std::thread holder([&] {
    if (lock->Lock() != DMR_CMN_OK) return;
    held.Raise();
    release.Wait();
    unlockResult = lock->Unlock();
  });
  const bool wasHeld = held.Wait();

  const int32_t finalizeResult = lock->Finalize();
  release.Raise();
  holder.join();

  ASSERT_TRUE(wasHeld);
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, finalizeResult);
  EXPECT_EQ(DMR_CMN_OK, unlockResult);
  EXPECT_EQ(DMR_CMN_OK, lock->Lock());
  EXPECT_EQ(DMR_CMN_OK, lock->Unlock());
  EXPECT_EQ(DMR_CMN_OK, lock->Finalize());
}

TEST(LockUnderContention, UnlockFromAThreadThatDoesNotHoldItAnswersMinusOne) {
  LockPtr owned = NewInitializedLock();
  ASSERT_NE(nullptr, owned);
  DMR_CMN_Lock* const lock = owned.get();
  Signal held;
  Signal release;
  int32_t unlockResult = DMR_CMN_ERR_GENERIC;
  std::thread holder([&] {
    if (lock->Lock() != DMR_CMN_OK) return;
    held.Raise();
    release.Wait();
    unlockResult = lock->Unlock();
  });
  const bool wasHeld = held.Wait();

  const int32_t foreignUnlock = lock->Unlock();
  release.Raise();
  holder.join();

  ASSERT_TRUE(wasHeld);
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, foreignUnlock);
  // The foreign Unlock released nothing: the holder's own Unlock still succeeds.
  EXPECT_EQ(DMR_CMN_OK, unlockResult);
  EXPECT_EQ(DMR_CMN_OK, lock->Finalize());
}

TEST_F(FaultInjectionUnderContention, CallCountsStayExact) {
  constexpr unsigned long kCallsEach = 10000;
  std::atomic<unsigned long> failed{0};

  RunTogether([&](int) {
    for (unsigned long i = 0; i < kCallsEach; ++i) {
      int32_t code = 0;
      if (DMR_CMN_FaultInjection::ShouldFail(DMR_CMN_FaultPoint::kProtocolInfoGet, &code)) ++failed;
    }
  });

  EXPECT_EQ(kThreads * kCallsEach, DMR_CMN_FaultInjection::CallCount(DMR_CMN_FaultPoint::kProtocolInfoGet));
  EXPECT_EQ(0u, failed.load());
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::FiredCount(DMR_CMN_FaultPoint::kProtocolInfoGet));
}

TEST_F(FaultInjectionUnderContention, AnNthCallFaultFiresExactlyOnce) {
  constexpr unsigned long kCallsEach = 10000;
  std::atomic<unsigned long> failed{0};
  std::atomic<int> wrongCode{0};
  DMR_CMN_FaultInjection::Arm(DMR_CMN_FaultPoint::kProtocolInfoGet, 5000, -4242);

  RunTogether([&](int) {
    for (unsigned long i = 0; i < kCallsEach; ++i) {
      int32_t code = 0;
      if (DMR_CMN_FaultInjection::ShouldFail(DMR_CMN_FaultPoint::kProtocolInfoGet, &code)) {
        ++failed;
        if (code != -4242) ++wrongCode;
      }
    }
  });

  EXPECT_EQ(1u, failed.load());
  EXPECT_EQ(0, wrongCode.load());
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::FiredCount(DMR_CMN_FaultPoint::kProtocolInfoGet));
  EXPECT_EQ(kThreads * kCallsEach, DMR_CMN_FaultInjection::CallCount(DMR_CMN_FaultPoint::kProtocolInfoGet));
}

TEST_F(FaultInjectionUnderContention, APersistentFaultFailsEveryCallFromTheNthOn) {
  constexpr unsigned long kCallsEach = 10000;
  constexpr unsigned long kNth = 30001;
  std::atomic<unsigned long> failed{0};
  DMR_CMN_FaultInjection::Arm(DMR_CMN_FaultPoint::kProtocolInfoGet, kNth, -4243, true);

  RunTogether([&](int) {
    for (unsigned long i = 0; i < kCallsEach; ++i) {
      int32_t code = 0;
      if (DMR_CMN_FaultInjection::ShouldFail(DMR_CMN_FaultPoint::kProtocolInfoGet, &code)) ++failed;
    }
  });

  const unsigned long expected = kThreads * kCallsEach - (kNth - 1);
  EXPECT_EQ(expected, failed.load());
  EXPECT_EQ(expected, DMR_CMN_FaultInjection::FiredCount(DMR_CMN_FaultPoint::kProtocolInfoGet));
}

}  // namespace
