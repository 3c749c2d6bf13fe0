#include <gtest/gtest.h>

#include <new>

#include "ScopedFault.h"
#include "dmr_cmn/Lock.h"

namespace {

TEST(Lock, LockAndUnlockAnswerZeroOnceInitialized) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  EXPECT_EQ(lock.Lock(), 0);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, EveryOperationFailsBeforeInitialize) {
  DMR_CMN_Lock lock;
  EXPECT_EQ(lock.Lock(), -1);
  EXPECT_EQ(lock.Unlock(), -1);
  EXPECT_EQ(lock.Finalize(), -1);
}

TEST(Lock, SecondInitializeFails) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  EXPECT_EQ(lock.Initialize(), -1);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, TakingTheLockTwiceOnOneThreadFailsInsteadOfHanging) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  ASSERT_EQ(lock.Lock(), 0);
  EXPECT_EQ(lock.Lock(), -1);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, UnlockOfAFreeLockFails) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  EXPECT_EQ(lock.Unlock(), -1);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, FinalizeOfAHeldLockFailsAndTheLockStaysUsable) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  ASSERT_EQ(lock.Lock(), 0);
  EXPECT_EQ(lock.Finalize(), -1);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Lock(), 0);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, CanBeInitializedAgainAfterFinalize) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  ASSERT_EQ(lock.Finalize(), 0);
  EXPECT_EQ(lock.Initialize(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, CreatedWithNothrowNew) {
  DMR_CMN_Lock* lock = new (std::nothrow) DMR_CMN_Lock;
  ASSERT_NE(lock, nullptr);
  ASSERT_EQ(lock->Initialize(), 0);
  ASSERT_EQ(lock->Finalize(), 0);
  delete lock;
}

TEST(Lock, InjectedCreationFailureGivesNoLock) {
  ScopedFault fault(DMR_CMN_FaultPoint::kLockCreation, 1, 0);
  DMR_CMN_Lock* lock = new (std::nothrow) DMR_CMN_Lock;
  EXPECT_EQ(lock, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
}

TEST(Lock, InjectedInitializeFailureLeavesTheLockUninitialized) {
  DMR_CMN_Lock lock;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLockInitialize, 1, -1);
    EXPECT_EQ(lock.Initialize(), -1);
  }
  EXPECT_EQ(lock.Lock(), -1);
  EXPECT_EQ(lock.Initialize(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, InjectedLockFailureDoesNotTakeTheLock) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLockLock, 1, -1);
    EXPECT_EQ(lock.Lock(), -1);
  }
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, InjectedUnlockFailureLeavesTheLockHeld) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  ASSERT_EQ(lock.Lock(), 0);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLockUnlock, 1, -1);
    EXPECT_EQ(lock.Unlock(), -1);
  }
  EXPECT_EQ(lock.Finalize(), -1);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

TEST(Lock, InjectedFinalizeFailureKeepsTheLockWorking) {
  DMR_CMN_Lock lock;
  ASSERT_EQ(lock.Initialize(), 0);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kLockFinalize, 1, -1);
    EXPECT_EQ(lock.Finalize(), -1);
  }
  EXPECT_EQ(lock.Lock(), 0);
  EXPECT_EQ(lock.Unlock(), 0);
  EXPECT_EQ(lock.Finalize(), 0);
}

}  // namespace
