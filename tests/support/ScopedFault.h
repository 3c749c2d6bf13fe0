// ScopedFault: arms one fault point for the life of the object and resets all fault injection after it,
// so that no test leaves a point armed for the next.
#ifndef TESTS_SUPPORT_SCOPED_FAULT_H_
#define TESTS_SUPPORT_SCOPED_FAULT_H_

#include <cstdint>

#include "FaultInjection.h"

class ScopedFault {
 public:
  ScopedFault(DMR_CMN_FaultPoint point, unsigned long nth, int32_t code, bool persistent = false)
      : point_(point) {
    DMR_CMN_FaultInjection::Arm(point, nth, code, persistent);
  }
  ~ScopedFault() { DMR_CMN_FaultInjection::Reset(); }

  ScopedFault(const ScopedFault&) = delete;
  ScopedFault& operator=(const ScopedFault&) = delete;

  // How many calls the armed point has failed so far.
  unsigned long Fired() const { return DMR_CMN_FaultInjection::FiredCount(point_); }

 private:
  DMR_CMN_FaultPoint point_;
};

#endif  // TESTS_SUPPORT_SCOPED_FAULT_H_
