#include "sink_upnp/UPnPError.h"

#include "marlo/ActionResponse.h"
#include "sink_upnp/ResultCode.h"

namespace {

struct UPnPError {
  int32_t code;
  const char* description;
};

// The descriptions are fixed texts that control points show; 715's curly quotes are part of it.
const UPnPError kErrors[] = {
    {401, "Invalid Action"},
    {402, "Invalid Args"},
    {701, "Transition not available"},
    {705, "Transport is locked"},
    {706, "Invalid connection reference"},
    {710, "Seek mode not supported"},
    {711, "Illegal seek target"},
    {712, "Play mode not supported"},
    {714, "Illegal MIME-type"},
    {715, "Content \u2018BUSY\u2019"},
    {716, "Resource not found"},
    {717, "Play speed not supported"},
    {718, "Invalid InstanceID"},
};

bool Contains(const int32_t* numbers, std::size_t count, int32_t number) {
  for (std::size_t i = 0; i < count; ++i) {
    if (numbers[i] == number) return true;
  }
  return false;
}

}  // namespace

const char* SINK_UPNP_UPnPErrorDescription(int32_t code) {
  for (const UPnPError& error : kErrors) {
    if (error.code == code) return error.description;
  }
  return nullptr;
}

int32_t SINK_UPNP_WriteUPnPError(marlo::ActionResponse* response, int32_t code) {
  const char* description = SINK_UPNP_UPnPErrorDescription(code);
  if (response == nullptr || description == nullptr) return SINK_UPNP_ERR_GENERIC;
  response->SetErrorCode(code);
  response->SetErrorDescription(description);
  return SINK_UPNP_OK;
}

// An accepted number is settled the moment the application gives it: written once, answered with 0.
int32_t SINK_UPNP_AnswerTransferResult(marlo::ActionResponse* response, int32_t result,
                                       const int32_t* accepted, std::size_t acceptedCount) {
  return SINK_UPNP_SettleActionResult(response, result, accepted, acceptedCount, true);
}

int32_t SINK_UPNP_ForwardTransferResult(marlo::ActionResponse* response, int32_t result,
                                        const int32_t* accepted, std::size_t acceptedCount) {
  if (result == 0) return SINK_UPNP_OK;
  if (!Contains(accepted, acceptedCount, result)) return SINK_UPNP_ERR_GENERIC;
  SINK_UPNP_WriteUPnPError(response, result);
  return result;
}

int32_t SINK_UPNP_SettleActionResult(marlo::ActionResponse* response, int32_t result, const int32_t* known,
                                     std::size_t knownCount, bool writeAgain) {
  if (result == 0) return SINK_UPNP_OK;
  if (!Contains(known, knownCount, result)) return SINK_UPNP_ERR_GENERIC;
  if (writeAgain) SINK_UPNP_WriteUPnPError(response, result);
  return SINK_UPNP_OK;
}
