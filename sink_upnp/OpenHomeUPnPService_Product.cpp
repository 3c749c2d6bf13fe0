// The OpenHome Product, Info and Time actions: the renderer's descriptions, the current track's details,
// the metatext and the time, all as the application stored them; and the Product service's standby and
// source actions, answered with fixed values because the renderer has exactly one source, its playlist,
// and is never in standby. None reads an IN argument, calls the application or writes a UPnP error.
#include <cstdint>

#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "sink_upnp/AnswerFromStore.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

int32_t WriteFixed(marlo::ActionResponse* response, const char* name, const char* text) {
  return response->SetArgumentValue(name, text) == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
}

}  // namespace

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteManufacturer(unsigned long, marlo::ActionRequest* request,
                                                           marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"Name", SINK_UPNP_PRODUCT_MANUFACTURER_NAME},
                                    {"Info", SINK_UPNP_PRODUCT_MANUFACTURER_INFO},
                                    {"Url", SINK_UPNP_PRODUCT_MANUFACTURER_URL},
                                    {"ImageUri", SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteModel(unsigned long, marlo::ActionRequest* request,
                                                    marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"Name", SINK_UPNP_PRODUCT_MODEL_NAME},
                                    {"Info", SINK_UPNP_PRODUCT_MODEL_INFO},
                                    {"Url", SINK_UPNP_PRODUCT_MODEL_URL},
                                    {"ImageUri", SINK_UPNP_PRODUCT_MODEL_IMAGE_URI}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteProduct(unsigned long, marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"Room", SINK_UPNP_PRODUCT_PRODUCT_ROOM},
                                    {"Name", SINK_UPNP_PRODUCT_PRODUCT_NAME},
                                    {"Info", SINK_UPNP_PRODUCT_PRODUCT_INFO},
                                    {"Url", SINK_UPNP_PRODUCT_PRODUCT_URL},
                                    {"ImageUri", SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteStandby(unsigned long, marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return WriteFixed(response, "Value", "0");
}

// Accepted and ignored: standby cannot be entered.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSetStandby(unsigned long, marlo::ActionRequest* request,
                                                         marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSourceXml(unsigned long, marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  // The fixed list, not the SourceXml variable: the one source cannot change, whatever the variable holds.
  return WriteFixed(response, "Value", SINK_UPNP_SOURCE_LIST_XML);
}

// With one source there is nothing to select: the requested index is not read, and the action answers
// like a query of the current index.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSetSourceIndex(unsigned long, marlo::ActionRequest* request,
                                                             marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response, {{"Value", SINK_UPNP_PRODUCT_SOURCE_INDEX}});
}

// The Info service's copies of the track, not the playlist's variables.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteTrack(unsigned long, marlo::ActionRequest* request,
                                                    marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"Uri", SINK_UPNP_INFO_URI}, {"Meta", SINK_UPNP_INFO_METADATA}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteDetails(unsigned long, marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"Duration", SINK_UPNP_INFO_DURATION},
                                    {"BitRate", SINK_UPNP_INFO_BIT_RATE},
                                    {"BitDepth", SINK_UPNP_INFO_BIT_DEPTH},
                                    {"SampleRate", SINK_UPNP_INFO_SAMPLE_RATE},
                                    {"Lossless", SINK_UPNP_INFO_LOSSLESS},
                                    {"CodecName", SINK_UPNP_INFO_CODEC_NAME}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteMetatext(unsigned long, marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response, {{"Value", SINK_UPNP_INFO_METATEXT}});
}

// The Time service's own duration (64), not the Info service's (71).
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteTime(unsigned long, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response,
                                   {{"TrackCount", SINK_UPNP_TIME_TRACK_COUNT},
                                    {"Duration", SINK_UPNP_TIME_DURATION},
                                    {"Seconds", SINK_UPNP_TIME_SECONDS}});
}
