// The fourteen AVTransport actions. The handlers hold no transport logic: each checks its IN arguments,
// hands the command or query to the application's transfer service, and turns the answer into OUT
// arguments or a UPnP error. Which transitions are allowed is the application's to decide; a handler only
// decides which of the application's UPnP error numbers its action may report.
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

// The renderer has the single AVTransport instance 0; "InstanceID" is checked to be "0" as text.
constexpr unsigned long kInstance = 0;

// The UPnP error numbers each action may report from the application; any other number fails it.
using Accepted = SINK_UPNP_AcceptedErrors;

// The OUT arguments of the queries, in the order they are written (the order of the action's argument
// list, which is also the order of the transfer service's OUT parameters).
constexpr const char* kGetMediaInfoOut[] = {"NrTracks",           "MediaDuration", "CurrentURI",
                                            "CurrentURIMetaData", "NextURI",       "NextURIMetaData",
                                            "PlayMedium",         "RecordMedium",  "WriteStatus"};
constexpr const char* kGetTransportInfoOut[] = {"CurrentTransportState", "CurrentTransportStatus",
                                                "CurrentSpeed"};
constexpr const char* kGetPositionInfoOut[] = {"Track",   "TrackDuration", "TrackMetaData", "TrackURI",
                                               "RelTime", "AbsTime",       "RelCount",      "AbsCount"};
constexpr const char* kGetDeviceCapabilitiesOut[] = {"PlayMedia", "RecMedia", "RecQualityModes"};
constexpr const char* kGetTransportSettingsOut[] = {"PlayMode", "RecQualityMode"};
constexpr const char* kGetCurrentTransportActionsOut[] = {"Actions"};

}  // namespace

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteSetAVTransportURI(unsigned long actionHandle,
                                                                marlo::ActionRequest* request,
                                                                marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  // URI and metadata are optional: a missing one is handed over as "", so that only a missing
  // "InstanceID" draws 402. Neither is checked here; the application judges what it can play.
  const char* uriText = request->GetArgumentValue("CurrentURI");
  const char* metaDataText = request->GetArgumentValue("CurrentURIMetaData");
  DMR_CMN_String uri;
  int32_t copied = SINK_UPNP_CopyArgument(uriText != nullptr ? uriText : "", &uri);
  if (copied != 0) return copied;
  DMR_CMN_String metaData;
  copied = SINK_UPNP_CopyArgument(metaDataText != nullptr ? metaDataText : "", &metaData);
  if (copied != 0) return copied;
  // This service has no playlist of its own: the application is told so before every new URI, and
  // whatever it answers to that does not change the action's outcome.
  static_cast<void>(transferService->AttachPlaylistManager(nullptr));
  const int32_t result = transferService->SetAVTransportURI(actionHandle, kInstance, &uri, &metaData);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kSetAVTransportURI);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetMediaInfo(unsigned long actionHandle,
                                                           marlo::ActionRequest* request,
                                                           marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[9];
  const int32_t result = transferService->GetMediaInfo(actionHandle, kInstance, &out[0], &out[1], &out[2],
                                                       &out[3], &out[4], &out[5], &out[6], &out[7], &out[8]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetMediaInfoOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetTransportInfo(unsigned long actionHandle,
                                                               marlo::ActionRequest* request,
                                                               marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[3];
  const int32_t result =
      transferService->GetTransportInfo(actionHandle, kInstance, &out[0], &out[1], &out[2]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetTransportInfoOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetPositionInfo(unsigned long actionHandle,
                                                              marlo::ActionRequest* request,
                                                              marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[8];
  const int32_t result = transferService->GetPositionInfo(actionHandle, kInstance, &out[0], &out[1], &out[2],
                                                          &out[3], &out[4], &out[5], &out[6], &out[7]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetPositionInfoOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetDeviceCapabilities(unsigned long actionHandle,
                                                                    marlo::ActionRequest* request,
                                                                    marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[3];
  const int32_t result =
      transferService->GetDeviceCapabilities(actionHandle, kInstance, &out[0], &out[1], &out[2]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetDeviceCapabilitiesOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetTransportSettings(unsigned long actionHandle,
                                                                   marlo::ActionRequest* request,
                                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[2];
  const int32_t result = transferService->GetTransportSettings(actionHandle, kInstance, &out[0], &out[1]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetTransportSettingsOut, out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentTransportActions(unsigned long actionHandle,
                                                                         marlo::ActionRequest* request,
                                                                         marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  DMR_CMN_String out[1];
  const int32_t result = transferService->GetCurrentTransportActions(actionHandle, kInstance, &out[0]);
  return SINK_UPNP_AnswerQuery(response, result, Accepted::kAVTransportQuery, kGetCurrentTransportActionsOut,
                               out);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteStop(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  const int32_t result = transferService->Stop(actionHandle, kInstance);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kStop);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecutePlay(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* speedText = nullptr;
  if (!SINK_UPNP_ReadInstanceArguments(request, response, {{"Speed", &speedText}})) return SINK_UPNP_OK;
  // Any speed text goes to the application, which answers 717 for one it cannot play at.
  DMR_CMN_String speed;
  const int32_t copied = SINK_UPNP_CopyArgument(speedText, &speed);
  if (copied != 0) return copied;
  const int32_t result = transferService->Play(actionHandle, kInstance, &speed);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kPlay);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecutePause(unsigned long actionHandle, marlo::ActionRequest* request,
                                                    marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  const int32_t result = transferService->Pause(actionHandle, kInstance);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kPause);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteSeek(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* unitText = nullptr;
  const char* targetText = nullptr;
  if (!SINK_UPNP_ReadInstanceArguments(request, response, {{"Unit", &unitText}, {"Target", &targetText}})) {
    return SINK_UPNP_OK;
  }
  // The seek mode and its target are the application's to parse; it answers 710 or 711.
  DMR_CMN_String unit;
  int32_t copied = SINK_UPNP_CopyArgument(unitText, &unit);
  if (copied != 0) return copied;
  DMR_CMN_String target;
  copied = SINK_UPNP_CopyArgument(targetText, &target);
  if (copied != 0) return copied;
  const int32_t result = transferService->Seek(actionHandle, kInstance, &unit, &target);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kSeek);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteNext(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  const int32_t result = transferService->Next(actionHandle, kInstance);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kNext);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecutePrevious(unsigned long actionHandle,
                                                       marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (!SINK_UPNP_ReadInstanceArguments(request, response)) return SINK_UPNP_OK;
  const int32_t result = transferService->Previous(actionHandle, kInstance);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kPrevious);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::ExecuteSetPlayMode(unsigned long actionHandle,
                                                          marlo::ActionRequest* request,
                                                          marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* modeText = nullptr;
  if (!SINK_UPNP_ReadInstanceArguments(request, response, {{"NewPlayMode", &modeText}})) return SINK_UPNP_OK;
  // The application answers 712 for a mode it does not know.
  DMR_CMN_String mode;
  const int32_t copied = SINK_UPNP_CopyArgument(modeText, &mode);
  if (copied != 0) return copied;
  const int32_t result = transferService->SetPlayMode(actionHandle, kInstance, &mode);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kSetPlayMode);
}
