#include "dmr_cmn/Memory.h"

#include <cstdlib>

#include "FaultPoint.h"

void* DMR_CMN_Malloc(std::size_t size) noexcept {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kMemoryAllocation, nullptr)) return nullptr;
  // malloc(0) may answer null; a caller asking for nothing still gets a block it can free.
  return std::malloc(size == 0 ? 1 : size);
}
