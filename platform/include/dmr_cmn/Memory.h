// Raw memory from the host's common runtime.
#ifndef DMR_CMN_MEMORY_H_
#define DMR_CMN_MEMORY_H_

#include <cstddef>

// Returns `size` bytes from the C allocator, or null when there is no memory. The block is released with
// free(). Unlike plain malloc(), the runtime's fault injection can make this call fail on demand, so code
// that has a result for "no memory" allocates through it and its failure path can be tested.
void* DMR_CMN_Malloc(std::size_t size) noexcept;

#endif  // DMR_CMN_MEMORY_H_
