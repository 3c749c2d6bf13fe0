// The runtime's side of fault injection, private to the runtime: each fallible operation asks
// FaultPointFails before it does anything.
//
// A process that never uses the fault-injection control (the daemon, the player) must not pay for it on
// every string read or lock: until the control's first Reset or Arm, a fault point is one relaxed load of a
// flag that never changes and a branch that is never taken. Only then does the call reach the control,
// which counts it (an atomic add on a shared counter) and checks whether it is armed.
#ifndef DMR_RUNTIME_FAULT_POINT_H_
#define DMR_RUNTIME_FAULT_POINT_H_

#include <atomic>
#include <cstdint>

#include "FaultInjection.h"

namespace dmr_runtime {

// Set by the control's first Reset or Arm, never cleared. Hidden, so that the runtime loads it directly
// rather than through the dynamic linker's table; nothing outside the runtime reads it.
extern std::atomic<bool> gFaultInjectionInUse [[gnu::visibility("hidden")]];

// True when the operation at `point` must fail, with its result code in *code (when not null).
inline bool FaultPointFails(DMR_CMN_FaultPoint point, int32_t* code) {
  if (__builtin_expect(!gFaultInjectionInUse.load(std::memory_order_relaxed), 1)) return false;
  return DMR_CMN_FaultInjection::ShouldFail(point, code);
}

}  // namespace dmr_runtime

#endif  // DMR_RUNTIME_FAULT_POINT_H_
