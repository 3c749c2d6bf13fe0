#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "ScopedFault.h"
#include "dmr_cmn/Memory.h"

namespace {

TEST(Memory, MallocGivesAWritableBlockReleasedWithFree) {
  char* block = static_cast<char*>(DMR_CMN_Malloc(64));
  ASSERT_NE(block, nullptr);
  std::memset(block, 'x', 64);
  std::free(block);
}

TEST(Memory, ZeroBytesStillGiveABlock) {
  void* block = DMR_CMN_Malloc(0);
  EXPECT_NE(block, nullptr);
  std::free(block);
}

TEST(Memory, InjectedFailureGivesNull) {
  ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
  EXPECT_EQ(DMR_CMN_Malloc(16), nullptr);
  void* next = DMR_CMN_Malloc(16);
  EXPECT_NE(next, nullptr);
  std::free(next);
}

}  // namespace
