// Result codes of the host's common runtime (DMR_CMN_*).
//
// Every fallible operation of the runtime returns a signed 32-bit result; 0 is success.
#ifndef DMR_CMN_RESULT_H_
#define DMR_CMN_RESULT_H_

#include <cstdint>

constexpr int32_t DMR_CMN_OK = 0;
// Any failure that has no code of its own.
constexpr int32_t DMR_CMN_ERR_GENERIC = -1;
// A thread could not be created.
constexpr int32_t DMR_CMN_ERR_THREAD_START = -966;
// Out of memory.
constexpr int32_t DMR_CMN_ERR_NO_MEMORY = -989;

#endif  // DMR_CMN_RESULT_H_
