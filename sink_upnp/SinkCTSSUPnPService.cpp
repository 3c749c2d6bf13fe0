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
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/UPnPError.h"

namespace {

constexpr char kAVTransportService[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManagerService[] = "urn:schemas-upnp-org:service:ConnectionManager:1";

using Handler = int32_t (SINK_UPNP_SinkCTSSUPnPService::*)(unsigned long, marlo::ActionRequest*,
                                                           marlo::ActionResponse*);

}  // namespace

// The actions of both services, in the order they are compared; the service an action was addressed to
// is not looked at.
struct SINK_UPNP_SinkCTSSUPnPServiceDispatch {
  struct Entry {
    const char* action;
    Handler handler;
  };
  static const Entry kTable[];
};

const SINK_UPNP_SinkCTSSUPnPServiceDispatch::Entry SINK_UPNP_SinkCTSSUPnPServiceDispatch::kTable[] = {
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
  if (properties == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  const int32_t prepared = PrepareProtocolInfo(properties);
  if (prepared == SINK_UPNP_ERR_OUT_OF_RANGE) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
  if (prepared != 0) return SINK_UPNP_ToServiceResult(prepared);

  // A store an earlier failed attempt left behind is replaced, not leaked.
  delete stateVariableManager;
  stateVariableManager = new (std::nothrow) SINK_UPNP_SinkCTSSStateVariableManager;
  if (stateVariableManager == nullptr) {
    CleanProtocolInfo();
    return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
  }
  const int32_t result = stateVariableManager->Initialize();
  if (result == DMR_CMN_ERR_NO_MEMORY) {
    CleanProtocolInfo();
    delete stateVariableManager;
    stateVariableManager = nullptr;
    return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
  }
  // Another failure leaves the store in place, as it always has.
  if (result != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
  initialized = 1;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::Finalize() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (avtServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (cmsServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (stateVariableManager->Finalize() != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
  delete stateVariableManager;
  stateVariableManager = nullptr;
  CleanProtocolInfo();
  initialized = 0;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::Start() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (avtServiceEventHandler == nullptr || cmsServiceEventHandler == nullptr || transferService == nullptr) {
    return SINK_UPNP_ERR_SERVICE_FAILURE;
  }
  char* joined = nullptr;
  const int32_t built = GetProtocolInfo(&joined);
  if (built != 0) return SINK_UPNP_ToServiceResult(built);
  DMR_CMN_String protocolInfo;
  const int32_t copied = protocolInfo.SetCString(joined);
  std::free(joined);
  if (copied != 0) return SINK_UPNP_ToServiceResult(copied);
  const int32_t reset = stateVariableManager->InitializeVariables(&protocolInfo);
  if (reset != 0) return SINK_UPNP_ToServiceResult(reset);
  started = 1;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::Stop() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  // Nothing else is told: the transfer service plays on, the store keeps its values.
  started = 0;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterAVTransportServiceEventListener(marlo::EventHandler* handler) {
  if (handler == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1 || avtServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  const int32_t result = stateVariableManager->RegisterAVTransportServiceEventListener(handler);
  if (result != 0) return SINK_UPNP_ToServiceResult(result);
  avtServiceEventHandler = handler;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterAVTransportServiceEventListener() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1 || avtServiceEventHandler == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (stateVariableManager->UnregisterAVTransportServiceEventListener() != 0) {
    return SINK_UPNP_ERR_SERVICE_FAILURE;
  }
  avtServiceEventHandler = nullptr;
  return SINK_UPNP_OK;
}

// Kept only: the ConnectionManager service sends no events, unlike AVTransport.
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterConnectionManagerServiceEventListener(
    marlo::EventHandler* handler) {
  if (handler == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (cmsServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  cmsServiceEventHandler = handler;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterConnectionManagerServiceEventListener() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (cmsServiceEventHandler == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  cmsServiceEventHandler = nullptr;
  return SINK_UPNP_OK;
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

// Answers with the store's codes, not the service's, as it always has.
int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterTransferService(SINK_CORE_TransferService* service) {
  if (service == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_GENERIC;
  if (service->AttachStateVariableManager(stateVariableManager) != 0) return SINK_UPNP_ERR_GENERIC;
  transferService = service;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener) {
  if (stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
  return stateVariableManager->RegisterApplicationAVTEventListener(listener);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterApplicationAVTEventListener() {
  if (stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
  return stateVariableManager->UnregisterApplicationAVTEventListener();
}

int32_t SINK_UPNP_SinkCTSSUPnPService::RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener) {
  if (stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
  return stateVariableManager->RegisterApplicationCMSEventListener(listener);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::UnregisterApplicationCMSEventListener() {
  if (stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
  return stateVariableManager->UnregisterApplicationCMSEventListener();
}

int32_t SINK_UPNP_SinkCTSSUPnPService::WarnTimeOut(unsigned long id, unsigned long* timeout,
                                                   const char** text) {
  if (timeout == nullptr || text == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  // Started implies a transfer service: Start refuses without one.
  if (transferService->WarnTimeOut(id, timeout, text) != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
  return SINK_UPNP_OK;
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

  const char* text = value.GetCString();
  if (text == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  const int32_t written = out->SetValue(variableName, text);
  if (written == marlo::kErrorNoMemory) return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
  return written == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_SERVICE_FAILURE;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::PerformAction(marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response,
                                                     unsigned long actionHandle) {
  if (request == nullptr || response == nullptr || actionHandle == 0) {
    return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  }
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;

  const char* action = request->GetActionName();
  if (action != nullptr) {
    for (const auto& entry : SINK_UPNP_SinkCTSSUPnPServiceDispatch::kTable) {
      if (std::strcmp(entry.action, action) == 0) {
        return SINK_UPNP_ToServiceResult((this->*entry.handler)(actionHandle, request, response));
      }
    }
  }
  SINK_UPNP_WriteUPnPError(response, 401);
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_SinkCTSSUPnPService::PrepareProtocolInfo(marlo::Properties* properties) {
  return SINK_UPNP_PrepareProtocolInfo(&protocolInfoList, properties);
}

int32_t SINK_UPNP_SinkCTSSUPnPService::GetProtocolInfo(char** out) {
  return SINK_UPNP_GetProtocolInfo(protocolInfoList, out);
}

void SINK_UPNP_SinkCTSSUPnPService::CleanProtocolInfo() { SINK_UPNP_CleanProtocolInfo(&protocolInfoList); }
