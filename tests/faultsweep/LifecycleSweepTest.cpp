// The host call order of both service objects, as the renderer daemon runs it (Prepare, Start, Shutdown),
// swept with every failable runtime operation failing in turn. After each run: every call answered a
// result its operation may give, only deliberate lasting effects remain (DeliberateEffects.h), and once
// those are undone the same object runs the whole order again, serves actions and events changes.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <set>
#include <string>

#include "DeliberateEffects.h"
#include "FaultSweep.h"
#include "SweptServices.h"

namespace {

// The results each host call may give, whatever fails beneath it and whatever failed before it.
struct AllowedResults {
  const char* step;
  std::initializer_list<int32_t> results;
};

constexpr AllowedResults kAllowedResults[] = {
    {"Initialize", {0, -1996, -1997, -1999}},
    {"RegisterAVTransportServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterConnectionManagerServiceEventListener", {0, -1995, -1999}},
    {"RegisterPlaylistServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterProductServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterTimeServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterInfoServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterSenderServiceEventListener", {0, -1995, -1997, -1999}},
    {"RegisterApplicationAVTEventListener", {0, -1}},
    {"RegisterTransferService", {0, -1, -1000}},
    {"Start", {0, -1995, -1997, -1999}},
    {"Stop", {0, -1995, -1999}},
    {"UnregisterAVTransportServiceEventListener", {0, -1995, -1999}},
    {"UnregisterConnectionManagerServiceEventListener", {0, -1995, -1999}},
    {"UnregisterPlaylistServiceEventListener", {0, -1995, -1999}},
    {"UnregisterProductServiceEventListener", {0, -1995, -1999}},
    {"UnregisterTimeServiceEventListener", {0, -1995, -1999}},
    {"UnregisterInfoServiceEventListener", {0, -1995, -1999}},
    {"UnregisterSenderServiceEventListener", {0, -1995, -1999}},
    {"UnregisterApplicationAVTEventListener", {0, -1}},
    {"Finalize", {0, -1995, -1999}},
};

void ExpectAllowed(const StepResult& step, const FaultCase& fault) {
  for (const AllowedResults& row : kAllowedResults) {
    if (std::strcmp(row.step, step.step) != 0) continue;
    if (!fault.IsFaulted()) {
      EXPECT_EQ(step.result, 0) << step.step;
      return;
    }
    const std::set<int32_t> allowed(row.results);
    EXPECT_EQ(allowed.count(step.result), 1u) << step.step << " answered " << step.result;
    return;
  }
  ADD_FAILURE() << "no allowed results for " << step.step;
}

// One run of the host call order on a new object of type T with `fault`.
template <typename T>
bool RunLifecycle(const FaultCase& fault) {
  auto object = std::make_unique<T>();
  fault.Arm();
  const std::vector<StepResult> steps = object->RunLifecycle();
  const bool fired = fault.Disarm();
  for (const StepResult& step : steps) ExpectAllowed(step, fault);

  ExpectOnlyDeliberateEffects(fault, object->UndoLastingEffects());
  object->RecoverToCreated();
  // The same object, from the start again: everything works.
  object->StartFaultFree();
  if (!::testing::Test::HasFatalFailure()) object->ExpectUsable();
  object->ShutdownFaultFree();
  return fired;
}

TEST(FaultSweepLifecycle, StandardObjectSurvivesEveryFailureOfTheHostCallOrder) {
  ReportSweep("standard lifecycle", SweepFaults(RunLifecycle<SweptStandardService>));
}

TEST(FaultSweepLifecycle, OpenHomeObjectSurvivesEveryFailureOfTheHostCallOrder) {
  ReportSweep("OpenHome lifecycle", SweepFaults(RunLifecycle<SweptOpenHomeService>));
}

}  // namespace
