#include "sink_upnp/AnswerFromStore.h"

#include "dmr_cmn/String.h"
#include "marlo/ActionResponse.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ResultCode.h"

int32_t SINK_UPNP_AnswerFromStore(SINK_UPNP_OpenHomeStateVariableManager* store, marlo::ActionResponse* response,
                                  std::initializer_list<SINK_UPNP_OutVariable> arguments) {
  DMR_CMN_String value;
  static_cast<void>(value.SetCString(""));
  for (const SINK_UPNP_OutVariable& argument : arguments) {
    static_cast<void>(store->GetStateVariable(argument.index, &value));
    if (response->SetArgumentValue(argument.name, value.GetCString()) != 0) return SINK_UPNP_ERR_GENERIC;
  }
  return SINK_UPNP_OK;
}
