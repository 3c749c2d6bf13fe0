// Result codes of the host UPnP device stack (marlo::).
#ifndef MARLO_RESULT_H_
#define MARLO_RESULT_H_

#include <cstdint>

namespace marlo {

constexpr int32_t kOk = 0;
// Out of memory.
constexpr int32_t kErrorNoMemory = -1997;
// A null or malformed argument.
constexpr int32_t kErrorInvalidArgument = -1998;
// Any other failure: wrong state, missing data.
constexpr int32_t kErrorFailure = -1999;

}  // namespace marlo

#endif  // MARLO_RESULT_H_
