#include "sink_upnp/ServiceFrame.h"

#include "marlo/Result.h"
#include "marlo/StateVariable.h"

int32_t SINK_UPNP_WriteStateVariable(marlo::StateVariable* out, const char* variableName,
                                     DMR_CMN_String* value) {
  const char* text = value->GetCString();
  if (text == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  const int32_t written = out->SetValue(variableName, text);
  if (written == marlo::kErrorNoMemory) return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
  return written == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_SERVICE_FAILURE;
}
