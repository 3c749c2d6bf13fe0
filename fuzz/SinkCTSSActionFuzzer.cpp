// Checks PerformAction of the AVTransport/ConnectionManager service object, started as the daemon starts
// it, with arbitrary action names and argument sets against an application answering arbitrary codes
// (also GetStateVariable and WarnTimeOut between the actions): every answer is a documented result,
// nothing crashes or leaks, and the object still stops and finalizes cleanly.
#include <cstddef>
#include <cstdint>

#include "ActionScript.h"
#include "FuzzCheck.h"
#include "FuzzScript.h"
#include "FuzzTransferService.h"
#include "QuietEventHandler.h"
#include "dmr_cmn/AVTEventListener.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

namespace {

constexpr const char* kServiceTypes[] = {
    "urn:schemas-upnp-org:service:AVTransport:1",
    "urn:schemas-upnp-org:service:ConnectionManager:1",
    "urn:schemas-upnp-org:service:RenderingControl:1",
};
constexpr const char* kActions[] = {
    "SetAVTransportURI",     "GetMediaInfo",      "GetTransportInfo",        "GetPositionInfo",
    "GetDeviceCapabilities", "GetTransportSettings", "GetCurrentTransportActions", "Stop",
    "Play",                  "Pause",             "Seek",                    "Next",
    "Previous",              "GetProtocolInfo",   "GetCurrentConnectionIDs", "GetCurrentConnectionInfo",
    "SetPlayMode",           "SetNextAVTransportURI", "Record",              "play",
};
constexpr const char* kArguments[] = {
    "InstanceID", "Speed", "CurrentURI", "CurrentURIMetaData", "Unit", "Target", "NewPlayMode", "ConnectionID",
};
constexpr const char* kVariables[] = {
    "LastChange", "SourceProtocolInfo", "SinkProtocolInfo", "CurrentConnectionIDs", "TransportState", "",
};
constexpr ActionWords kWords = {kServiceTypes, 3, kActions, sizeof kActions / sizeof kActions[0],
                                kArguments,    sizeof kArguments / sizeof kArguments[0]};
// Enough steps for a sequence to matter; more only slows each run.
constexpr int kMaxSteps = 48;

void Step(FuzzScript& script, SINK_UPNP_SinkCTSSUPnPService& service) {
  const uint8_t kind = script.Byte();
  if (kind < 224) {
    marlo::ActionRequest request;
    marlo::ActionResponse response;
    FillRequest(script, kWords, &request);
    // A zero handle and a null request are the host's mistakes the object must refuse.
    const unsigned long handle = kind < 220 ? 0x0E11 : 0;
    const int32_t result = service.PerformAction(kind == 221 ? nullptr : &request, &response, handle);
    CheckServed(result, response);
  } else if (kind < 248) {
    marlo::StateVariable variable;
    const int32_t result = service.GetStateVariable(script.Pick(kServiceTypes, 80).c_str(),
                                                    script.Pick(kVariables, 40).c_str(), &variable);
    FUZZ_CHECK(result == 0 || result == -1996 || result == -1998);
    if (result == 0) FUZZ_CHECK(variable.GetValue() != nullptr);
  } else {
    unsigned long timeout = 0;
    const char* text = nullptr;
    const int32_t result = service.WarnTimeOut(script.Number<uint32_t>(), &timeout, &text);
    FUZZ_CHECK(result == 0 || result == -1999);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  FuzzScript script(data, size);
  FuzzTransferService transfer(&script);
  QuietEventHandler avTransport;
  QuietEventHandler connectionManager;
  DMR_CMN_AVTEventListener listener;
  marlo::Properties properties;
  FUZZ_CHECK(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*") == 0);
  FUZZ_CHECK(properties.SetProperty("sinkctss.protocolInfo_1", "http-get:*:audio/mpeg:*") == 0);

  // The daemon's order (host/Renderer.cpp).
  SINK_UPNP_SinkCTSSUPnPService service;
  FUZZ_CHECK(service.Initialize(&properties) == 0);
  FUZZ_CHECK(service.RegisterAVTransportServiceEventListener(&avTransport) == 0);
  FUZZ_CHECK(service.RegisterConnectionManagerServiceEventListener(&connectionManager) == 0);
  FUZZ_CHECK(service.RegisterApplicationAVTEventListener(&listener) == 0);
  FUZZ_CHECK(service.RegisterTransferService(&transfer) == 0);
  FUZZ_CHECK(service.Start() == 0);

  transfer.StartAnswering();
  for (int step = 0; step < kMaxSteps && !script.Done(); ++step) Step(script, service);
  transfer.StopAnswering();

  FUZZ_CHECK(service.Stop() == 0);
  FUZZ_CHECK(service.UnregisterAVTransportServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterConnectionManagerServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterApplicationAVTEventListener() == 0);
  FUZZ_CHECK(service.Finalize() == 0);
  return 0;
}
