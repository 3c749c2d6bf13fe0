// FaultSweep: SQLite's way of proving that a scenario survives every host failure. The scenario runs once
// without a fault, and the runtime counts the failable operations it performs; then, for every way a
// runtime operation can fail (kFaultKinds) and for n = 1, 2, ..., the scenario runs again with exactly the
// n-th operation of that kind failing, until a run completes without the fault having fired (a failure may
// change the path, so the count of the clean run is where the loop starts looking, not where it stops).
// The same loop then runs in SQLite's second mode: the n-th operation of the kind and every later one
// fail (a resource that has run out stays out).
//
// The scenario does its own arranging and checking; it arms the case right before the part under test
// (FaultCase::Arm) and disarms it right after (FaultCase::Disarm), so that what it arranges and probes is
// never faulted.
#ifndef TESTS_FAULTSWEEP_FAULT_SWEEP_H_
#define TESTS_FAULTSWEEP_FAULT_SWEEP_H_

#include <cstdint>
#include <functional>
#include <string>

#include "FaultInjection.h"

// One way a runtime operation fails: the fault point and the code it answers (ignored by the points that
// answer null). Where an operation has more than one kind of failure that its callers tell apart (no
// memory or another failure, say), each is a kind of its own.
struct FaultKind {
  DMR_CMN_FaultPoint point;
  int32_t code;
  const char* name;
};

extern const FaultKind kFaultKinds[];
extern const int kFaultKindCount;

// One run of a scenario: no fault at all, or the `nth` operation of `kind` failing.
class FaultCase {
 public:
  static FaultCase None() { return FaultCase(nullptr, 0, false); }
  // With `persistent`, every operation of the kind from the nth on fails.
  FaultCase(const FaultKind* kind, unsigned long nth, bool persistent)
      : kind_(kind), nth_(nth), persistent_(persistent) {}

  bool IsFaulted() const { return kind_ != nullptr; }
  const FaultKind& Kind() const { return *kind_; }
  // Sets every count to 0 and arms the fault, if any.
  void Arm() const;
  // Disarms every point; answers whether the fault fired (always false without one). Later runtime calls
  // of the scenario (its checks and probes) are then never faulted.
  bool Disarm() const;
  // "kLockUnlock(-1) #3" or "kLockUnlock(-1) from #3 on", for failure messages.
  std::string Describe() const;
  // The failable operations performed between Arm and Disarm (the failed one included).
  unsigned long Operations() const { return operations_; }

 private:
  const FaultKind* kind_;
  unsigned long nth_;
  bool persistent_;
  mutable unsigned long operations_ = 0;
};

struct FaultSweepSummary {
  unsigned long cleanRunOperations = 0;  // failable operations of the run without a fault
  unsigned long faultsInjected = 0;      // runs in which the fault fired, in both modes
};

// Runs `scenario` without a fault and then once per fault that can fire in it, as described above.
// `scenario` answers whether its fault fired (FaultCase::Disarm). A scenario whose fault keeps firing far
// beyond the clean run's count is reported as a test failure instead of looping for ever.
FaultSweepSummary SweepFaults(const std::function<bool(const FaultCase&)>& scenario);

// Records the summary as the test's properties (faults_injected, clean_run_operations) and, when the
// environment variable DMR_FAULT_SWEEP_SUMMARY is set, prints one line for the scenario.
void ReportSweep(const std::string& scenario, const FaultSweepSummary& summary);

#endif  // TESTS_FAULTSWEEP_FAULT_SWEEP_H_
