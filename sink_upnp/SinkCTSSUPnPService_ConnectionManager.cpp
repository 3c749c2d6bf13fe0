// The three ConnectionManager actions. Like the AVTransport queries they ask the application for the
// answer and copy it into the reply; they do not read the store (the ConnectionManager state variables
// are answered by GetStateVariable). They carry no instance: the transfer service calls have none.
#include <cstdint>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/AcceptedErrors.h"
#include "sink_upnp/ActionArguments.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSUPnPService.h"
#include "sink_upnp/UPnPError.h"

namespace {

// The renderer has the single connection 0; any other "ConnectionID" is refused before the application
// is asked.
constexpr int32_t kInvalidConnectionReference = 706;

// The UPnP error numbers each action may report from the application; any other number fails it.
using Accepted = SINK_UPNP_AcceptedErrors;

// The OUT arguments, in the order they are written.
constexpr const char* kGetProtocolInfoOut[] = {"Source", "Sink"};
constexpr const char* kGetCurrentConnectionIDsOut[] = {"ConnectionIDs"};
constexpr const char* kGetCurrentConnectionInfoOut[] = {
    "RcsID",     "AVTransportID", "ProtocolInfo", "PeerConnectionManager", "PeerConnectionID",
    "Direction", "Status"};

}  // namespace

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetProtocolInfo(unsigned long actionHandle,
                                                              marlo::ActionRequest* request,
                                                              marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String out[2];
  const int32_t result = transferService->GetProtocolInfo(actionHandle, &out[0], &out[1]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kConnectionManagerQuery, kGetProtocolInfoOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentConnectionIDs(unsigned long actionHandle,
                                                                      marlo::ActionRequest* request,
                                                                      marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String out[1];
  const int32_t result = transferService->GetCurrentConnectionIDs(actionHandle, &out[0]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kConnectionManagerQuery,
                               kGetCurrentConnectionIDsOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentConnectionInfo(unsigned long actionHandle,
                                                                       marlo::ActionRequest* request,
                                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* connectionIdText = nullptr;
  if (!SINK_UPNP_ReadArguments(request, response, {{"ConnectionID", &connectionIdText}})) return SINK_UPNP_OK;
  if (!SINK_UPNP_RequireZero(response, connectionIdText, kInvalidConnectionReference)) return SINK_UPNP_OK;
  DMR_CMN_String connectionId;
  const int32_t copied = SINK_UPNP_CopyArgument(connectionIdText, &connectionId);
  if (copied != 0) return copied;
  DMR_CMN_String out[7];
  const int32_t result = transferService->GetCurrentConnectionInfo(
      actionHandle, &connectionId, &out[0], &out[1], &out[2], &out[3], &out[4], &out[5], &out[6]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kConnectionManagerQuery,
                               kGetCurrentConnectionInfoOut, out);
}
