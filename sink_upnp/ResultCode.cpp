#include "sink_upnp/ResultCode.h"

int32_t SINK_UPNP_ToServiceResult(int32_t result) {
  if (result == SINK_UPNP_OK) return SINK_UPNP_OK;
  if (result == DMR_CMN_ERR_NO_MEMORY) return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
  return SINK_UPNP_ERR_SERVICE_FAILURE;
}
