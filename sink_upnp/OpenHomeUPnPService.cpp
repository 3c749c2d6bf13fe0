// The OpenHome service object's frame: lifecycle, registrations, the state variable query of the five
// services and the dispatch of their 33 actions. What it shares with the standard service lives in
// ServiceFrame.h; this file holds only where OpenHome differs.
#include "sink_upnp/OpenHomeUPnPService.h"

#include <cstring>

#include "dmr_cmn/String.h"
#include "marlo/Properties.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ProtocolInfoConfiguration.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/ServiceFrame.h"

namespace {

using Frame = SINK_UPNP_ServiceFrame<SINK_UPNP_OpenHomeUPnPService>;
using Service = SINK_UPNP_OpenHomeUPnPService;
using Manager = SINK_UPNP_OpenHomeStateVariableManager;

// A service's variables by name; a name can lead to different variables in different services.
struct NamedVariable {
  const char* name;
  SINK_UPNP_StateVariableName_t index;
};

const NamedVariable kPlaylistVariables[] = {
    {"TransportState", SINK_UPNP_PLAYLIST_TRANSPORT_STATE},
    {"Repeat", SINK_UPNP_PLAYLIST_REPEAT},
    {"Shuffle", SINK_UPNP_PLAYLIST_SHUFFLE},
    {"Id", SINK_UPNP_PLAYLIST_ID},
    {"IdArray", SINK_UPNP_PLAYLIST_ID_ARRAY},
    {"TracksMax", SINK_UPNP_PLAYLIST_TRACKS_MAX},
    {"ProtocolInfo", SINK_UPNP_PLAYLIST_PROTOCOL_INFO},
    {"Index", SINK_UPNP_PLAYLIST_INDEX},
    {"Relative", SINK_UPNP_PLAYLIST_RELATIVE},
    {"Absolute", SINK_UPNP_PLAYLIST_ABSOLUTE},
    {"IdList", SINK_UPNP_PLAYLIST_ID_LIST},
    {"TrackList", SINK_UPNP_PLAYLIST_TRACK_LIST},
    {"Uri", SINK_UPNP_PLAYLIST_URI},
    {"Metadata", SINK_UPNP_PLAYLIST_METADATA},
    {"IdArrayToken", SINK_UPNP_PLAYLIST_ID_ARRAY_TOKEN},
    {"IdArrayChanged", SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED},
};
const NamedVariable kProductVariables[] = {
    {"ManufacturerName", SINK_UPNP_PRODUCT_MANUFACTURER_NAME},
    {"ManufacturerInfo", SINK_UPNP_PRODUCT_MANUFACTURER_INFO},
    {"ManufacturerUrl", SINK_UPNP_PRODUCT_MANUFACTURER_URL},
    {"ManufacturerImageUri", SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI},
    {"ModelName", SINK_UPNP_PRODUCT_MODEL_NAME},
    {"ModelInfo", SINK_UPNP_PRODUCT_MODEL_INFO},
    {"ModelUrl", SINK_UPNP_PRODUCT_MODEL_URL},
    {"ModelImageUri", SINK_UPNP_PRODUCT_MODEL_IMAGE_URI},
    {"ProductRoom", SINK_UPNP_PRODUCT_PRODUCT_ROOM},
    {"ProductName", SINK_UPNP_PRODUCT_PRODUCT_NAME},
    {"ProductInfo", SINK_UPNP_PRODUCT_PRODUCT_INFO},
    {"ProductUrl", SINK_UPNP_PRODUCT_PRODUCT_URL},
    {"ProductImageUri", SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI},
    {"Standby", SINK_UPNP_PRODUCT_STANDBY},
    {"SourceIndex", SINK_UPNP_PRODUCT_SOURCE_INDEX},
    {"SourceCount", SINK_UPNP_PRODUCT_SOURCE_COUNT},
    {"SourceXml", SINK_UPNP_PRODUCT_SOURCE_XML},
    {"Attributes", SINK_UPNP_PRODUCT_ATTRIBUTES},
};
const NamedVariable kTimeVariables[] = {
    {"TrackCount", SINK_UPNP_TIME_TRACK_COUNT},
    {"Duration", SINK_UPNP_TIME_DURATION},
    {"Seconds", SINK_UPNP_TIME_SECONDS},
};
const NamedVariable kInfoVariables[] = {
    {"TrackCount", SINK_UPNP_INFO_TRACK_COUNT},
    {"DetailsCount", SINK_UPNP_INFO_DETAILS_COUNT},
    {"MetatextCount", SINK_UPNP_INFO_METATEXT_COUNT},
    {"Uri", SINK_UPNP_INFO_URI},
    {"Metadata", SINK_UPNP_INFO_METADATA},
    {"Duration", SINK_UPNP_INFO_DURATION},
    {"BitRate", SINK_UPNP_INFO_BIT_RATE},
    {"BitDepth", SINK_UPNP_INFO_BIT_DEPTH},
    {"SampleRate", SINK_UPNP_INFO_SAMPLE_RATE},
    {"Lossless", SINK_UPNP_INFO_LOSSLESS},
    {"CodecName", SINK_UPNP_INFO_CODEC_NAME},
    {"Metatext", SINK_UPNP_INFO_METATEXT},
};
const NamedVariable kSenderVariables[] = {
    {"PresentationUrl", SINK_UPNP_SENDER_PRESENTATION_URL},
    {"Metadata", SINK_UPNP_SENDER_METADATA},
    {"Audio", SINK_UPNP_SENDER_AUDIO},
    {"Status", SINK_UPNP_SENDER_STATUS},
    {"Attributes", SINK_UPNP_SENDER_ATTRIBUTES},
};

struct OpenHomeService {
  const char* type;
  const NamedVariable* variables;
  std::size_t count;
};

template <std::size_t N>
constexpr OpenHomeService Served(const char* type, const NamedVariable (&variables)[N]) {
  return {type, variables, N};
}

// In the order the exact names are compared.
const OpenHomeService kServices[] = {
    Served("urn:av-openhome-org:service:Playlist:1", kPlaylistVariables),
    Served("urn:av-openhome-org:service:Product:1", kProductVariables),
    Served("urn:av-openhome-org:service:Time:1", kTimeVariables),
    Served("urn:av-openhome-org:service:Info:1", kInfoVariables),
    Served("urn:av-openhome-org:service:Sender:1", kSenderVariables),
};

// True when `name` begins with one of the service types, each compared over its own length only.
bool BeginsWithServiceType(const char* name) {
  for (const OpenHomeService& service : kServices) {
    if (std::strncmp(name, service.type, std::strlen(service.type)) == 0) return true;
  }
  return false;
}

const OpenHomeService* FindService(const char* name) {
  for (const OpenHomeService& service : kServices) {
    if (std::strcmp(name, service.type) == 0) return &service;
  }
  return nullptr;
}

bool FindVariable(const OpenHomeService& service, const char* name, SINK_UPNP_StateVariableName_t* index) {
  for (std::size_t i = 0; i < service.count; ++i) {
    if (std::strcmp(service.variables[i].name, name) == 0) {
      *index = service.variables[i].index;
      return true;
    }
  }
  return false;
}

}  // namespace

// The actions of all five services, in the order they are compared; the service an action was addressed
// to is not looked at. The Sender actions, and the Playlist's protocol list and IdArray change test, are
// not served.
struct SINK_UPNP_OpenHomeUPnPServiceDispatch {
  static const Frame::Action kTable[33];
};

const Frame::Action SINK_UPNP_OpenHomeUPnPServiceDispatch::kTable[33] = {
    {"Insert", &Service::ExecuteInsert},
    {"DeleteId", &Service::ExecuteDeleteId},
    {"DeleteAll", &Service::ExecuteDeleteAll},
    {"Stop", &Service::ExecuteStop},
    {"Play", &Service::ExecutePlay},
    {"Pause", &Service::ExecutePause},
    {"SeekSecondAbsolute", &Service::ExecuteSeekSecondAbsolute},
    {"Next", &Service::ExecuteNext},
    {"Previous", &Service::ExecutePrevious},
    {"SeekId", &Service::ExecuteSeekId},
    {"SeekIndex", &Service::ExecuteSeekIndex},
    {"Repeat", &Service::ExecuteRepeat},
    {"SetRepeat", &Service::ExecuteSetRepeat},
    {"Shuffle", &Service::ExecuteShuffle},
    {"SetShuffle", &Service::ExecuteSetShuffle},
    {"Id", &Service::ExecuteId},
    {"TransportState", &Service::ExecuteTransportState},
    {"Read", &Service::ExecuteRead},
    {"ReadList", &Service::ExecuteReadList},
    {"Standby", &Service::ExecuteStandby},
    {"SetStandby", &Service::ExecuteSetStandby},
    {"SourceXml", &Service::ExecuteSourceXml},
    {"SetSourceIndex", &Service::ExecuteSetSourceIndex},
    {"IdArray", &Service::ExecuteIdArray},
    {"TracksMax", &Service::ExecuteTracksMax},
    {"Manufacturer", &Service::ExecuteManufacturer},
    {"Model", &Service::ExecuteModel},
    {"Product", &Service::ExecuteProduct},
    {"SourceIndex", &Service::ExecuteSourceIndex},
    {"Track", &Service::ExecuteTrack},
    {"Details", &Service::ExecuteDetails},
    {"Metatext", &Service::ExecuteMetatext},
    {"Time", &Service::ExecuteTime},
};

SINK_UPNP_OpenHomeUPnPService::SINK_UPNP_OpenHomeUPnPService()
    : avtServiceEventHandler(nullptr),
      cmsServiceEventHandler(nullptr),
      productServiceEventHandler(nullptr),
      playlistServiceEventHandler(nullptr),
      infoServiceEventHandler(nullptr),
      timeServiceEventHandler(nullptr),
      senderServiceEventHandler(nullptr),
      stateVariableManager(nullptr),
      transferService(nullptr),
      initialized(0),
      started(0),
      protocolInfoList(nullptr) {}

// The store goes without Finalize: what that would release is the host's to have released first. The
// playlist goes with the object, after this body. The protocol list and the transfer service are the
// host's to settle.
SINK_UPNP_OpenHomeUPnPService::~SINK_UPNP_OpenHomeUPnPService() {
  delete stateVariableManager;
  stateVariableManager = nullptr;
}

int32_t SINK_UPNP_OpenHomeUPnPService::Initialize(marlo::Properties* properties) {
  const int32_t result = Frame::CreateStore(*this, properties);
  if (result != 0) return result;
  // The store reads the OpenHome description below this folder when the service starts. Whatever the
  // property holds, null included, is handed on unchecked.
  stateVariableManager->SetDocRoot(const_cast<char*>(properties->GetProperty("device.docroot")));
  initialized = 1;
  return SINK_UPNP_OK;
}

// Only the AVTransport and ConnectionManager handlers must be gone: a Finalize with an OpenHome handler
// still registered succeeds. The playlist is kept.
int32_t SINK_UPNP_OpenHomeUPnPService::Finalize() { return Frame::Finalize(*this); }

// The playlist's events and the application are needed to serve OpenHome; the AVTransport and
// ConnectionManager handlers are not.
int32_t SINK_UPNP_OpenHomeUPnPService::Start() {
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (playlistServiceEventHandler == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  if (transferService == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
  return Frame::ResetStoreAndStart(*this);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Stop() { return Frame::Stop(*this); }

// The OpenHome store has no AVTransport thread and refuses the handler once initialized, so this answers
// -1999 on an initialized object and keeps nothing.
int32_t SINK_UPNP_OpenHomeUPnPService::RegisterAVTransportServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::avtServiceEventHandler,
                                     &Manager::RegisterAVTransportServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterAVTransportServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::avtServiceEventHandler,
                                       &Manager::UnregisterAVTransportServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterConnectionManagerServiceEventListener(
    marlo::EventHandler* handler) {
  return Frame::RegisterConnectionManagerHandler(*this, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterConnectionManagerServiceEventListener() {
  return Frame::UnregisterConnectionManagerHandler(*this);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterPlaylistServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::playlistServiceEventHandler,
                                     &Manager::RegisterPlaylistServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterPlaylistServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::playlistServiceEventHandler,
                                       &Manager::UnregisterPlaylistServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterProductServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::productServiceEventHandler,
                                     &Manager::RegisterProductServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterProductServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::productServiceEventHandler,
                                       &Manager::UnregisterProductServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterTimeServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::timeServiceEventHandler,
                                     &Manager::RegisterTimeServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterTimeServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::timeServiceEventHandler,
                                       &Manager::UnregisterTimeServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterInfoServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::infoServiceEventHandler,
                                     &Manager::RegisterInfoServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterInfoServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::infoServiceEventHandler,
                                       &Manager::UnregisterInfoServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterSenderServiceEventListener(marlo::EventHandler* handler) {
  return Frame::RegisterEventHandler(*this, &Service::senderServiceEventHandler,
                                     &Manager::RegisterSenderServiceEventListener, handler);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterSenderServiceEventListener() {
  return Frame::UnregisterEventHandler(*this, &Service::senderServiceEventHandler,
                                       &Manager::UnregisterSenderServiceEventListener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterFormatDecoderSubsystem(marlo::FormatDecoderSubsystem*) {
  return SINK_UPNP_ERR_SERVICE_FAILURE;
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterFormatDecoderSubsystem() {
  return SINK_UPNP_ERR_SERVICE_FAILURE;
}

// Answers with the store's codes, not the service's, as the standard service does. The playlist goes to
// the application after the service is kept; the application cannot refuse it.
int32_t SINK_UPNP_OpenHomeUPnPService::RegisterTransferService(SINK_CORE_TransferService* service) {
  if (service == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (started == 1) return SINK_UPNP_ERR_GENERIC;
  if (service->AttachOpenHomeStateVariableManager(stateVariableManager) != 0) return SINK_UPNP_ERR_GENERIC;
  transferService = service;
  static_cast<void>(transferService->AttachPlaylistManager(&playlistManager));
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener) {
  return Frame::RegisterApplicationAVTEventListener(*this, listener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterApplicationAVTEventListener() {
  return Frame::UnregisterApplicationAVTEventListener(*this);
}

int32_t SINK_UPNP_OpenHomeUPnPService::RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener) {
  return Frame::RegisterApplicationCMSEventListener(*this, listener);
}

int32_t SINK_UPNP_OpenHomeUPnPService::UnregisterApplicationCMSEventListener() {
  return Frame::UnregisterApplicationCMSEventListener(*this);
}

int32_t SINK_UPNP_OpenHomeUPnPService::WarnTimeOut(unsigned long id, unsigned long* timeout,
                                                   const char** text) {
  return Frame::WarnTimeOut(*this, id, timeout, text);
}

// The service name is tested twice: first whether it begins with an OpenHome type (else -1998), then,
// after the state checks, whether it is one exactly (else -1999). A name with text appended to a type thus
// passes the first test and fails the second.
int32_t SINK_UPNP_OpenHomeUPnPService::GetStateVariable(const char* serviceName, const char* variableName,
                                                        marlo::StateVariable* out) {
  if (serviceName == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (!BeginsWithServiceType(serviceName)) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (variableName == nullptr || out == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
  if (initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
  if (started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
  const OpenHomeService* service = FindService(serviceName);
  if (service == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;

  DMR_CMN_String value;
  if (service == &kServices[0] && std::strcmp(variableName, "LastChange") == 0) {
    // The Playlist service's "LastChange" is the store's whole current document, as the AVTransport
    // service of the standard object delivers it.
    const int32_t result = stateVariableManager->GetLastChange(&value);
    // -962 from the store: there is no document to give, so the thing asked for does not exist.
    if (result == SINK_UPNP_ERR_OUT_OF_RANGE) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
    if (result != 0) return SINK_UPNP_ToServiceResult(result);
    return SINK_UPNP_WriteStateVariable(out, variableName, &value);
  }
  SINK_UPNP_StateVariableName_t index;
  if (!FindVariable(*service, variableName, &index)) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;
  const int32_t result = stateVariableManager->GetStateVariable(index, &value);
  if (result != 0) return SINK_UPNP_ToServiceResult(result);
  return SINK_UPNP_WriteStateVariable(out, variableName, &value);
}

int32_t SINK_UPNP_OpenHomeUPnPService::PerformAction(marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response,
                                                     unsigned long actionHandle) {
  return Frame::PerformAction(*this, SINK_UPNP_OpenHomeUPnPServiceDispatch::kTable, request, response,
                              actionHandle);
}

int32_t SINK_UPNP_OpenHomeUPnPService::PrepareProtocolInfo(marlo::Properties* properties) {
  return SINK_UPNP_PrepareProtocolInfo(&protocolInfoList, properties);
}

int32_t SINK_UPNP_OpenHomeUPnPService::GetProtocolInfo(char** out) {
  return SINK_UPNP_GetProtocolInfo(protocolInfoList, out);
}

void SINK_UPNP_OpenHomeUPnPService::CleanProtocolInfo() { SINK_UPNP_CleanProtocolInfo(&protocolInfoList); }
