// Result codes of the renderer plug-in, shared by the state variable stores, the playlist and both
// service objects. Every operation returns a signed 32-bit result; 0 is success.
#ifndef SINK_UPNP_RESULT_CODE_H_
#define SINK_UPNP_RESULT_CODE_H_

#include <cstdint>

#include "dmr_cmn/Result.h"

constexpr int32_t SINK_UPNP_OK = 0;
// Store and playlist level.
constexpr int32_t SINK_UPNP_ERR_GENERIC = -1;
constexpr int32_t SINK_UPNP_ERR_INVALID_VALUE = -961;
constexpr int32_t SINK_UPNP_ERR_OUT_OF_RANGE = -962;
constexpr int32_t SINK_UPNP_ERR_NOT_REGISTERED = -963;
constexpr int32_t SINK_UPNP_ERR_THREAD_START = -966;
constexpr int32_t SINK_UPNP_ERR_NULL_ARGUMENT = -999;
constexpr int32_t SINK_UPNP_ERR_NOT_INITIALIZED = -1000;
// Service level.
constexpr int32_t SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED = -1995;
constexpr int32_t SINK_UPNP_ERR_SERVICE_BAD_VALUE = -1996;
constexpr int32_t SINK_UPNP_ERR_SERVICE_NO_MEMORY = -1997;
constexpr int32_t SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT = -1998;
constexpr int32_t SINK_UPNP_ERR_SERVICE_FAILURE = -1999;

static_assert(SINK_UPNP_ERR_THREAD_START == DMR_CMN_ERR_THREAD_START,
              "a thread that will not start has one code in the runtime and the plug-in");

// The translation a service-level operation applies to a result from the layer below it: 0 stays 0, no
// memory (-989) becomes SINK_UPNP_ERR_SERVICE_NO_MEMORY (-1997), anything else
// SINK_UPNP_ERR_SERVICE_FAILURE (-1999).
int32_t SINK_UPNP_ToServiceResult(int32_t result);

#endif  // SINK_UPNP_RESULT_CODE_H_
