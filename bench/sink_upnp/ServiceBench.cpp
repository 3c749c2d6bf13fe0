// What PerformAction costs the host on top of the application: dispatch of the first-looked-up query
// ("GetTransportInfo", three OUT arguments) and of the last entry of the table ("SetPlayMode"), against a
// transfer service that answers at once.
#include <benchmark/benchmark.h>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/EventHandler.h"
#include "marlo/Properties.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

namespace {

class IgnoringHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const*, const char* const*, long) override {}
};

// Answers every operation at once, filling OUT strings with short texts.
class ImmediateTransferService : public SINK_CORE_TransferService {
 public:
  int32_t Initialize(marlo::Properties*) override { return 0; }
  int32_t Finalize() override { return 0; }
  int32_t StartEngine() override { return 0; }
  int32_t StopEngine() override { return 0; }
  int32_t GetVolume(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetVolume(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager*) override { return 0; }
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager*) override { return 0; }
  int32_t WarnTimeOut(unsigned long, unsigned long*, const char**) override { return 0; }
  int32_t SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t Play(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t Stop(unsigned long, unsigned long) override { return 0; }
  int32_t Pause(unsigned long, unsigned long) override { return 0; }
  int32_t Seek(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 0; }
  int32_t Next(unsigned long, unsigned long) override { return 0; }
  int32_t Previous(unsigned long, unsigned long) override { return 0; }
  int32_t GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*,
                                DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                       DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                       DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                          DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                          DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                           DMR_CMN_String* speed) override {
    state->SetCString("PLAYING");
    status->SetCString("OK");
    speed->SetCString("1");
    return 0;
  }
  int32_t GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetCurrentTransportActions(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetCurrentConnectionIDs(unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetCurrentConnectionInfo(unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                                   DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                                   DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetProtocolInfo(unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 0; }
  int32_t SetPlayMode(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetMute(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetMute(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager*) override { return 0; }
};

// A started standard service.
class StartedService {
 public:
  StartedService() {
    properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*");
    service_.Initialize(&properties_);
    service_.RegisterAVTransportServiceEventListener(&handler_);
    service_.RegisterConnectionManagerServiceEventListener(&handler_);
    service_.RegisterTransferService(&transfer_);
    service_.Start();
  }
  ~StartedService() {
    service_.Stop();
    service_.UnregisterAVTransportServiceEventListener();
    service_.UnregisterConnectionManagerServiceEventListener();
    service_.Finalize();
  }
  SINK_UPNP_SinkCTSSUPnPService& service() { return service_; }

 private:
  marlo::Properties properties_;
  IgnoringHandler handler_;
  ImmediateTransferService transfer_;
  SINK_UPNP_SinkCTSSUPnPService service_;
};

void RunAction(benchmark::State& state, const char* action, const char* argument, const char* value) {
  StartedService started;
  marlo::ActionRequest request;
  request.SetActionName(action);
  request.AddArgument("InstanceID", "0");
  if (argument != nullptr) request.AddArgument(argument, value);
  for (auto _ : state) {
    marlo::ActionResponse response;
    benchmark::DoNotOptimize(started.service().PerformAction(&request, &response, 1));
  }
}

void BM_PerformActionGetTransportInfo(benchmark::State& state) {
  RunAction(state, "GetTransportInfo", nullptr, nullptr);
}
BENCHMARK(BM_PerformActionGetTransportInfo);

void BM_PerformActionSetPlayMode(benchmark::State& state) {
  RunAction(state, "SetPlayMode", "NewPlayMode", "NORMAL");
}
BENCHMARK(BM_PerformActionSetPlayMode);

}  // namespace
