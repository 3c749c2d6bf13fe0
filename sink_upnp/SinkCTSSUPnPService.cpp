#include "sink_upnp/SinkCTSSUPnPService.h"

#include <cstdlib>
#include <cstring>
#include <new>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Result.h"
#include "marlo/StateVariable.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/ProtocolInfoConfiguration.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/ServiceFrame.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/UPnPError.h"

namespace {

constexpr char kAVTransportService[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManagerService[] = "urn:schemas-upnp-org:service:ConnectionManager:1";

using Frame = SINK_UPNP_ServiceFrame<SINK_UPNP_SinkCTSSUPnPService>;

}  // namespace

// The actions of both services, in the order they are compared; the service an action was addressed to
// is not looked at.
struct SINK_UPNP_SinkCTSSUPnPServiceDispatch {
  static const Frame::Action kTable[17];
};

const Frame::Action SINK_UPNP_SinkCTSSUPnPServiceDispatch::kTable[17] = {
    {"SetAVTransportURI", &SINK_UPNP_SinkCTSSUPnPService::ExecuteSetAVTransportURI},
    {"GetMediaInfo", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetMediaInfo},
    {"GetTransportInfo", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetTransportInfo},
    {"GetPositionInfo", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetPositionInfo},
    {"GetDeviceCapabilities", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetDeviceCapabilities},
    {"GetTransportSettings", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetTransportSettings},
    {"GetCurrentTransportActions", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentTransportActions},
    {"Stop", &SINK_UPNP_SinkCTSSUPnPService::ExecuteStop},
    {"Play", &SINK_UPNP_SinkCTSSUPnPService::ExecutePlay},
    {"Pause", &SINK_UPNP_SinkCTSSUPnPService::ExecutePause},
    {"Seek", &SINK_UPNP_SinkCTSSUPnPService::ExecuteSeek},
    {"Next", &SINK_UPNP_SinkCTSSUPnPService::ExecuteNext},
    {"Previous", &SINK_UPNP_SinkCTSSUPnPService::ExecutePrevious},
    {"GetProtocolInfo", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetProtocolInfo},
    {"GetCurrentConnectionIDs", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentConnectionIDs},
    {"GetCurrentConnectionInfo", &SINK_UPNP_SinkCTSSUPnPService::ExecuteGetCurrentConnectionInfo},
    {"SetPlayMode", &SINK_UPNP_SinkCTSSUPnPService::ExecuteSetPlayMode},
};

SINK_UPNP_SinkCTSSUPnPService::SINK_UPNP_SinkCTSSUPnPService()
    : avtServiceEventHandler(nullptr),
      cmsServiceEventHandler(nullptr),
      stateVariableManager(nullptr),
      transferService(nullptr),
      initialized(0),
      started(0),
      protocolInfoList(nullptr) {}

// The host stops and finalizes first; nothing is freed here.
SINK_UPNP_SinkCTSSUPnPService::~SINK_UPNP_SinkCTSSUPnPService() = default;

int32_t SINK_UPNP_SinkCTSSUPnPService::Initialize(marlo::Properties* properties) {
  const int32_t result = Frame::CreateStore(*this, properties);
  if (result != 0) return result;
  initialized = 1;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::Finalize() { return Frame::Finalize(*this); }

int32_t SINK_UPNP_SinkCTSSUPnPService::Start() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (avtServiceEventHandler == nullptr || cmsServiceEventHandler == nullptr || transferService == nullptr) {
    return SINK_UPNP_ERR_SERVICE_FAILURE;
  }
  return Frame::ResetStoreAndStart(*this);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::Stop() { return Frame::Stop(*this); }

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterAVTransportServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &SINK_UPNP_SinkCTSSUPnPService::avtServiceEventHandler,
                                     &SINK_UPNP_SinkCTSSStateVariableManager::RegisterAVTransportServiceEventListener,
                                     handler);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterAVTransportServiceEventListener() {
  return Frame::UnregisterEventHandler(
      *this, &SINK_UPNP_SinkCTSSUPnPService::avtServiceEventHandler,
      &SINK_UPNP_SinkCTSSStateVariableManager::UnregisterAVTransportServiceEventListener);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterConnectionManagerServiceEventListener(
    marlo::EventHandler* handler) {
  return Frame::RegisterConnectionManagerHandler(*this, handler);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterConnectionManagerServiceEventListener() {
  return Frame::UnregisterConnectionManagerHandler(*this);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterPlaylistServiceEventListener(marlo::EventHandler*) {
  return SINK_UPNP_OK;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterPlaylistServiceEventListener() { return SINK_UPNP_OK; }
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterProductServiceEventListener(marlo::EventHandler*) {
  return SINK_UPNP_OK;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterProductServiceEventListener() { return SINK_UPNP_OK; }
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterTimeServiceEventListener(marlo::EventHandler*) {
  return SINK_UPNP_OK;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterTimeServiceEventListener() { return SINK_UPNP_OK; }
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterInfoServiceEventListener(marlo::EventHandler*) {
  return SINK_UPNP_OK;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterInfoServiceEventListener() { return SINK_UPNP_OK; }
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterSenderServiceEventListener(marlo::EventHandler*) {
  return SINK_UPNP_OK;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterSenderServiceEventListener() { return SINK_UPNP_OK; }

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterFormatDecoderSubsystem(marlo::FormatDecoderSubsystem*) {
  return SINK_UPNP_ERR_SERVICE_FAILURE;
}
int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterFormatDecoderSubsystem() {
  return SINK_UPNP_ERR_SERVICE_FAILURE;
}

// Answers with the store's codes, not the service's: the application's registration reaches the store
// directly, so its refusals read as the store's.
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterTransferService(SINK_CORE_TransferService* service) {
  if (service == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_GENERIC;
  if (service->AttachStateVariableManager(stateVariableManager) != 0) return SINK_UPNP_ERR_GENERIC;
  transferService = service;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener) {
  return Frame::RegisterApplicationAVTEventListener(*this, listener);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterApplicationAVTEventListener() {
  return Frame::UnregisterApplicationAVTEventListener(*this);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener) {
  return Frame::RegisterApplicationCMSEventListener(*this, listener);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterApplicationCMSEventListener() {
  return Frame::UnregisterApplicationCMSEventListener(*this);
}

// Started implies a transfer service here (Start refuses without one), so the frame's check for it never
// refuses for this service.
int32_t SINK_UPNP_SinkCTSSUPnPService::WarnTimeOut(unsigned long id, unsigned long* timeout,
                                                   const char** text) {
  return Frame::WarnTimeOut(*this, id, timeout, text);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::GetStateVariable(const char* serviceName, const char* variableName,
                                                        marlo::StateVariable* out) {
  if (serviceName == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  const bool avTransport = std::strcmp(serviceName, kAVTransportService) == 0;
  if (!avTransport && std::strcmp(serviceName, kConnectionManagerService) != 0) {
    return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  }
  if (variableName == nullptr || out == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;

  DMR_CMN_String value;
  if (avTransport) {
    if (std::strcmp(variableName, "LastChange") != 0) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
    const int32_t result = stateVariableManager->GetLastChange(&value);
    // -962 from the store: there is no document to give, so the thing asked for does not exist.
    if (result == SINK_UPNP_ERR_OUT_OF_RANGE) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
    if (result != 0) return SINK_UPNP_ToServiceResult(result);
  } else {
    SINK_UPNP_StateVariableName_t index;
    if (std::strcmp(variableName, "SourceProtocolInfo") == 0) {
      index = SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO;
    } else if (std::strcmp(variableName, "SinkProtocolInfo") == 0) {
      index = SINK_UPNP_CMS_SINK_PROTOCOL_INFO;
    } else if (std::strcmp(variableName, "CurrentConnectionIDs") == 0) {
      index = SINK_UPNP_CMS_CURRENT_CONNECTION_IDS;
    } else {
      return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
    }
    const int32_t result = stateVariableManager->GetStateVariable(index, &value);
    if (result != 0) return SINK_UPNP_ToServiceResult(result);
  }

  return SINK_UPNP_WriteStateVariable(out, variableName, &value);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::PerformAction(marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response,
                                                     unsigned long actionHandle) {
  return Frame::PerformAction(*this, SINK_UPNP_SinkCTSSUPnPServiceDispatch::kTable, request, response,
                              actionHandle);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::PrepareProtocolInfo(marlo::Properties* properties) {
  return SINK_UPNP_PrepareProtocolInfo(&protocolInfoList, properties);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::GetProtocolInfo(char** out) {
  return SINK_UPNP_GetProtocolInfo(protocolInfoList, out);
}

void SINK_UPNP_SinkCTSSUPnPService::CleanProtocolInfo() { SINK_UPNP_CleanProtocolInfo(&protocolInfoList); }
