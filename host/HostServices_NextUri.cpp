// AVTransport's SetNextAVTransportURI, answered by the daemon on the player's next-track slot: the
// plug-in has no next-track command, and gapless playback from AV control points needs one.
#include "HostServices.h"
#include "HostServicesParts.h"
#include "Log.h"
#include "UPnPErrors.h"
#include "dmr_cmn/String.h"
#include "sink_core/TransferService.h"

namespace {

struct PlayerError {
  int32_t code;
  const char* description;
};

// The errors AVTransport:1 gives SetNextAVTransportURI that the player may answer, with their texts.
// The plug-in keeps its own table out of reach of the daemon (it exports only its service objects).
const PlayerError kPlayerErrors[] = {
    {402, "Invalid Args"},
    {701, "Transition not available"},
    {714, "Illegal MIME-type"},
    {715, "Content \u2018BUSY\u2019"},
    {716, "Resource not found"},
    {718, "Invalid InstanceID"},
};

}  // namespace

HOST_ActionOutcome HOST_HostServices::PerformNextUri(const marlo::ActionRequest& request, unsigned long handle) {
  std::string instance;
  std::string uri;
  std::string metadata;
  if (!HOST_ReadArgument(request, "InstanceID", &instance) || !HOST_ReadArgument(request, "NextURI", &uri) ||
      !HOST_ReadArgument(request, "NextURIMetaData", &metadata))
    return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
  if (instance != "0") return HOST_Fault(HOST_kInvalidInstanceId, HOST_kInvalidInstanceIdText);
  DMR_CMN_String uriText;
  DMR_CMN_String metadataText;
  if (uriText.SetCString(uri.c_str()) != 0 || metadataText.SetCString(metadata.c_str()) != 0)
    return HOST_Fault(HOST_kActionFailed, HOST_kActionFailedText);
  const int32_t result = player_->SetNextAVTransportURI(handle, 0, &uriText, &metadataText);
  if (result == 0) return HOST_ActionOutcome();
  for (const PlayerError& error : kPlayerErrors)
    if (error.code == result) return HOST_Fault(error.code, error.description);
  HOST_Log(HOST_LogLevel::Warning, "AVTransport SetNextAVTransportURI: the player answered %d",
           static_cast<int>(result));
  return HOST_Fault(HOST_kActionFailed, HOST_kActionFailedText);
}
