#include <gtest/gtest.h>

#include <cstdint>

#include "FaultInjection.h"
#include "ScopedFault.h"

namespace {

constexpr DMR_CMN_FaultPoint kPoint = DMR_CMN_FaultPoint::kLastChangeSetType;

class FaultInjection : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};

TEST_F(FaultInjection, UnarmedPointNeverFailsButCountsCalls) {
  int32_t code = 123;
  for (int i = 0; i < 5; ++i) EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_EQ(code, 123);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(kPoint), 5u);
  EXPECT_EQ(DMR_CMN_FaultInjection::FiredCount(kPoint), 0u);
}

TEST_F(FaultInjection, NthCallFailsOnceWithTheArmedCode) {
  DMR_CMN_FaultInjection::Arm(kPoint, 3, -1999);
  int32_t code = 0;
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_EQ(code, -1999);
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_EQ(DMR_CMN_FaultInjection::FiredCount(kPoint), 1u);
}

TEST_F(FaultInjection, PersistentFaultKeepsFailingUntilDisarmed) {
  DMR_CMN_FaultInjection::Arm(kPoint, 2, -1, true);
  int32_t code = 0;
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_EQ(DMR_CMN_FaultInjection::FiredCount(kPoint), 2u);
  DMR_CMN_FaultInjection::Disarm(kPoint);
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
}

TEST_F(FaultInjection, PointsAreIndependent) {
  DMR_CMN_FaultInjection::Arm(kPoint, 1, -1);
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(DMR_CMN_FaultPoint::kLockLock, nullptr));
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
}

TEST_F(FaultInjection, ResetDisarmsAndClearsCounts) {
  DMR_CMN_FaultInjection::Arm(kPoint, 1, -1, true);
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(kPoint), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::FiredCount(kPoint), 0u);
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
}

TEST_F(FaultInjection, ScopedFaultResetsEverythingWhenItEnds) {
  {
    ScopedFault fault(kPoint, 5, -1);
    EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
  }
  for (int i = 0; i < 10; ++i) EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
}

TEST_F(FaultInjection, ArmingAgainRestartsTheCountdown) {
  DMR_CMN_FaultInjection::Arm(kPoint, 2, -1);
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, nullptr));
  DMR_CMN_FaultInjection::Arm(kPoint, 2, -2);
  int32_t code = 0;
  EXPECT_FALSE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_TRUE(DMR_CMN_FaultInjection::ShouldFail(kPoint, &code));
  EXPECT_EQ(code, -2);
}

}  // namespace
