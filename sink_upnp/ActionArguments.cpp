#include "sink_upnp/ActionArguments.h"

#include <cstring>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/UPnPError.h"

namespace {

constexpr int32_t kInvalidArgs = 402;
constexpr int32_t kInvalidInstanceId = 718;

// Stores each argument's value; true when none is missing. Writes nothing into the reply.
bool ReadAll(const marlo::ActionRequest* request, std::initializer_list<SINK_UPNP_InArgument> arguments) {
  bool complete = true;
  for (const SINK_UPNP_InArgument& argument : arguments) {
    *argument.value = request->GetArgumentValue(argument.name);
    if (*argument.value == nullptr) complete = false;
  }
  return complete;
}

}  // namespace

bool SINK_UPNP_ReadArguments(const marlo::ActionRequest* request, marlo::ActionResponse* response,
                             std::initializer_list<SINK_UPNP_InArgument> arguments) {
  if (ReadAll(request, arguments)) return true;
  SINK_UPNP_WriteUPnPError(response, kInvalidArgs);
  return false;
}

bool SINK_UPNP_RequireZero(marlo::ActionResponse* response, const char* text, int32_t upnpError) {
  if (text != nullptr && std::strcmp(text, "0") == 0) return true;
  SINK_UPNP_WriteUPnPError(response, upnpError);
  return false;
}

bool SINK_UPNP_ReadInstanceArguments(const marlo::ActionRequest* request, marlo::ActionResponse* response,
                                     std::initializer_list<SINK_UPNP_InArgument> others) {
  const char* instanceId = request->GetArgumentValue("InstanceID");
  const bool othersPresent = ReadAll(request, others);
  // Every argument is looked for before the instance's value is judged: a missing one decides first.
  if (instanceId == nullptr || !othersPresent) {
    SINK_UPNP_WriteUPnPError(response, kInvalidArgs);
    return false;
  }
  return SINK_UPNP_RequireZero(response, instanceId, kInvalidInstanceId);
}

int32_t SINK_UPNP_CopyArgument(const char* text, DMR_CMN_String* out) {
  const int32_t result = out->SetCString(text);
  if (result == 0) return SINK_UPNP_OK;
  return result == DMR_CMN_ERR_NO_MEMORY ? DMR_CMN_ERR_NO_MEMORY : SINK_UPNP_ERR_GENERIC;
}

int32_t SINK_UPNP_WriteOutArguments(marlo::ActionResponse* response, const char* const* names,
                                    const DMR_CMN_String* values, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    const char* text = values[i].GetCString();
    if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
    if (response->SetArgumentValue(names[i], text) != 0) return SINK_UPNP_ERR_GENERIC;
  }
  return SINK_UPNP_OK;
}
