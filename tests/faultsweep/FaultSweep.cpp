#include "FaultSweep.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "DeliberateEffects.h"
#include "dmr_cmn/Result.h"
#include "marlo/Result.h"

namespace {

using FP = DMR_CMN_FaultPoint;

// A code no caller knows: the operation failed for a reason it cannot name.
constexpr int32_t kUnknownFailure = -1234;

// How far past the clean run's count of an operation a sweep may go before it is taken for a loop.
constexpr unsigned long kRunaway = 64;

}  // namespace

// Each fallible runtime operation with the failures its callers are told apart by: no memory where the
// operation has such an answer, and another failure.
const FaultKind kFaultKinds[] = {
    {FP::kMemoryAllocation, 0, "kMemoryAllocation"},
    {FP::kStringAllocation, DMR_CMN_ERR_NO_MEMORY, "kStringAllocation(-989)"},
    {FP::kStringAllocation, DMR_CMN_ERR_GENERIC, "kStringAllocation(-1)"},
    {FP::kStringGetCString, 0, "kStringGetCString"},
    {FP::kStringEquals, kUnknownFailure, "kStringEquals(-1234)"},
    {FP::kLockCreation, 0, "kLockCreation"},
    {FP::kLockInitialize, DMR_CMN_ERR_GENERIC, "kLockInitialize(-1)"},
    {FP::kLockLock, DMR_CMN_ERR_GENERIC, "kLockLock(-1)"},
    {FP::kLockUnlock, DMR_CMN_ERR_GENERIC, "kLockUnlock(-1)"},
    {FP::kLockFinalize, DMR_CMN_ERR_GENERIC, "kLockFinalize(-1)"},
    {FP::kThreadStart, DMR_CMN_ERR_THREAD_START, "kThreadStart(-966)"},
    {FP::kThreadStart, DMR_CMN_ERR_GENERIC, "kThreadStart(-1)"},
    {FP::kThreadJoin, DMR_CMN_ERR_GENERIC, "kThreadJoin(-1)"},
    {FP::kEventingThreadCreation, 0, "kEventingThreadCreation"},
    {FP::kEventingThreadInitialize, DMR_CMN_ERR_NO_MEMORY, "kEventingThreadInitialize(-989)"},
    {FP::kEventingThreadInitialize, DMR_CMN_ERR_GENERIC, "kEventingThreadInitialize(-1)"},
    {FP::kEventingThreadStop, DMR_CMN_ERR_GENERIC, "kEventingThreadStop(-1)"},
    {FP::kEventingThreadFinalize, DMR_CMN_ERR_GENERIC, "kEventingThreadFinalize(-1)"},
    {FP::kEventingThreadNotify, DMR_CMN_ERR_NO_MEMORY, "kEventingThreadNotify(-989)"},
    {FP::kEventingThreadNotify, DMR_CMN_ERR_GENERIC, "kEventingThreadNotify(-1)"},
    {FP::kLastChangeCreation, 0, "kLastChangeCreation"},
    {FP::kLastChangeSetType, marlo::kErrorFailure, "kLastChangeSetType(-1999)"},
    {FP::kLastChangeSetType, marlo::kErrorNoMemory, "kLastChangeSetType(-1997)"},
    {FP::kLastChangeSetStateVariable, marlo::kErrorFailure, "kLastChangeSetStateVariable(-1999)"},
    {FP::kLastChangeSetStateVariable, marlo::kErrorNoMemory, "kLastChangeSetStateVariable(-1997)"},
    {FP::kLastChangeGetXMLText, 0, "kLastChangeGetXMLText"},
    {FP::kLastChangeSetXMLText, marlo::kErrorFailure, "kLastChangeSetXMLText(-1999)"},
    {FP::kProtocolInfoCreation, 0, "kProtocolInfoCreation"},
    {FP::kProtocolInfoSet, marlo::kErrorNoMemory, "kProtocolInfoSet(-1997)"},
    {FP::kProtocolInfoSet, marlo::kErrorInvalidArgument, "kProtocolInfoSet(-1998)"},
    {FP::kProtocolInfoGet, marlo::kErrorNoMemory, "kProtocolInfoGet(-1997)"},
    {FP::kProtocolInfoGet, marlo::kErrorFailure, "kProtocolInfoGet(-1999)"},
    {FP::kStateVariableSetValue, marlo::kErrorNoMemory, "kStateVariableSetValue(-1997)"},
    {FP::kStateVariableSetValue, marlo::kErrorFailure, "kStateVariableSetValue(-1999)"},
    {FP::kActionResponseSetArgument, marlo::kErrorNoMemory, "kActionResponseSetArgument(-1997)"},
    {FP::kActionResponseSetArgument, marlo::kErrorInvalidArgument, "kActionResponseSetArgument(-1998)"},
    {FP::kMetaDataSet, DMR_CMN_ERR_NO_MEMORY, "kMetaDataSet(-989)"},
    {FP::kMetaDataSet, marlo::kErrorFailure, "kMetaDataSet(-1999)"},
};
const int kFaultKindCount = static_cast<int>(sizeof(kFaultKinds) / sizeof(kFaultKinds[0]));

void FaultCase::Arm() const {
  DMR_CMN_FaultInjection::Reset();
  if (kind_ != nullptr) DMR_CMN_FaultInjection::Arm(kind_->point, nth_, kind_->code, persistent_);
}

bool FaultCase::Disarm() const {
  const bool fired = kind_ != nullptr && DMR_CMN_FaultInjection::FiredCount(kind_->point) > 0;
  operations_ = 0;
  for (int point = 0; point < static_cast<int>(FP::kCount); ++point) {
    operations_ += DMR_CMN_FaultInjection::CallCount(static_cast<FP>(point));
  }
  DMR_CMN_FaultInjection::Reset();
  return fired;
}

std::string FaultCase::Describe() const {
  if (kind_ == nullptr) return "no fault";
  return std::string(kind_->name) + (persistent_ ? " from #" : " #") + std::to_string(nth_) +
         (persistent_ ? " on" : "");
}

FaultSweepSummary SweepFaults(const std::function<bool(const FaultCase&)>& scenario) {
  FaultSweepSummary summary;
  ResetObservedEffects();
  const FaultCase clean = FaultCase::None();
  {
    SCOPED_TRACE("run without a fault");
    scenario(clean);
  }
  summary.cleanRunOperations = clean.Operations();
  if (::testing::Test::HasFatalFailure()) return summary;

  for (bool persistent : {false, true}) {
    for (int k = 0; k < kFaultKindCount; ++k) {
      const FaultKind& kind = kFaultKinds[k];
      for (unsigned long nth = 1;; ++nth) {
        const FaultCase fault(&kind, nth, persistent);
        SCOPED_TRACE(fault.Describe());
        if (!scenario(fault)) break;
        ++summary.faultsInjected;
        if (::testing::Test::HasFatalFailure()) return summary;
        if (nth > summary.cleanRunOperations + kRunaway) {
          ADD_FAILURE() << "the fault " << fault.Describe() << " keeps firing";
          break;
        }
      }
    }
  }
  return summary;
}

void ReportSweep(const std::string& scenario, const FaultSweepSummary& summary) {
  ::testing::Test::RecordProperty("faults_injected", std::to_string(summary.faultsInjected));
  ::testing::Test::RecordProperty("clean_run_operations", std::to_string(summary.cleanRunOperations));
  const std::string effects = DescribeObservedEffects();
  ::testing::Test::RecordProperty("deliberate_effects_undone", effects);
  if (std::getenv("DMR_FAULT_SWEEP_SUMMARY") != nullptr) {
    std::printf("fault sweep %s: %lu failable operations without a fault, %lu faults injected; deliberate "
                "effects undone: %s\n",
                scenario.c_str(), summary.cleanRunOperations, summary.faultsInjected, effects.c_str());
  }
}
