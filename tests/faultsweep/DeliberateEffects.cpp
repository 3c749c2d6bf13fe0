#include "DeliberateEffects.h"

#include <gtest/gtest.h>

#include "dmr_cmn/Result.h"
#include "marlo/Result.h"

namespace {

using FP = DMR_CMN_FaultPoint;

struct Cause {
  LastingEffect effect;
  FP point;
  bool anyCode;  // every code of the point, or only...
  int32_t code;  // ...this one
};

// Which failures may leave which effect, one row a cause.
constexpr Cause kCauses[] = {
    {LastingEffect::kStoreLockHeld, FP::kLockUnlock, true, 0},
    {LastingEffect::kStoreLockHeld, FP::kStringGetCString, true, 0},
    {LastingEffect::kStoreLockHeld, FP::kStringAllocation, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kStoreLockHeld, FP::kStringEquals, true, 0},
    {LastingEffect::kStoreLockHeld, FP::kLastChangeSetStateVariable, false, marlo::kErrorNoMemory},
    {LastingEffect::kStoreLockHeld, FP::kEventingThreadNotify, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kUnrenderablePendingDocument, FP::kLastChangeSetType, false, marlo::kErrorNoMemory},
    {LastingEffect::kEventingThreadKept, FP::kEventingThreadInitialize, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kEventingThreadKept, FP::kThreadStart, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kEventingThreadKept, FP::kEventingThreadStop, true, 0},
    {LastingEffect::kEventingThreadKept, FP::kThreadJoin, true, 0},
    {LastingEffect::kEventingThreadKept, FP::kEventingThreadFinalize, true, 0},
    {LastingEffect::kEventHandlerKept, FP::kEventingThreadStop, true, 0},
    {LastingEffect::kEventHandlerKept, FP::kThreadJoin, true, 0},
    {LastingEffect::kEventHandlerKept, FP::kEventingThreadFinalize, true, 0},
    {LastingEffect::kEventingThreadLostWithStore, FP::kEventingThreadInitialize, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kEventingThreadLostWithStore, FP::kThreadStart, false, DMR_CMN_ERR_GENERIC},
    {LastingEffect::kEventingThreadLostWithStore, FP::kEventingThreadStop, true, 0},
    {LastingEffect::kEventingThreadLostWithStore, FP::kThreadJoin, true, 0},
    {LastingEffect::kEventingThreadLostWithStore, FP::kEventingThreadFinalize, true, 0},
};

constexpr int kEffectCount = static_cast<int>(LastingEffect::kEventingThreadLostWithStore) + 1;
unsigned long gObserved[kEffectCount] = {};

}  // namespace

const char* LastingEffectName(LastingEffect effect) {
  switch (effect) {
    case LastingEffect::kStoreLockHeld:
      return "the store's lock held";
    case LastingEffect::kEventingThreadKept:
      return "an eventing thread kept in the store";
    case LastingEffect::kEventHandlerKept:
      return "an event handler kept by the service";
    case LastingEffect::kUnrenderablePendingDocument:
      return "a pending document that cannot be rendered";
    case LastingEffect::kEventingThreadLostWithStore:
      return "an eventing thread lost with the store";
  }
  return "?";
}

bool MayLeave(const FaultKind& kind, LastingEffect effect) {
  for (const Cause& cause : kCauses) {
    if (cause.effect == effect && cause.point == kind.point && (cause.anyCode || cause.code == kind.code)) {
      return true;
    }
  }
  return false;
}

void ExpectOnlyDeliberateEffects(const FaultCase& fault, const std::vector<LastingEffect>& observed) {
  for (LastingEffect effect : observed) {
    ++gObserved[static_cast<int>(effect)];
    EXPECT_TRUE(fault.IsFaulted() && MayLeave(fault.Kind(), effect))
        << LastingEffectName(effect) << " after " << fault.Describe();
  }
}

std::string DescribeObservedEffects() {
  std::string text;
  for (int effect = 0; effect < kEffectCount; ++effect) {
    if (gObserved[effect] == 0) continue;
    if (!text.empty()) text += ", ";
    text += std::string(LastingEffectName(static_cast<LastingEffect>(effect))) + " " +
            std::to_string(gObserved[effect]);
  }
  return text.empty() ? "none" : text;
}

void ResetObservedEffects() {
  for (unsigned long& count : gObserved) count = 0;
}
