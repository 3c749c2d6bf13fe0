// What PerformAction costs the host on top of the application, for both service objects, against a
// transfer service that answers at once:
// - the standard service: the first-looked-up query ("GetTransportInfo", three OUT arguments) and the last
//   entry of its table ("SetPlayMode");
// - the OpenHome service with a full playlist (1000 tracks): a store query ("Time"), the IdArray of every
//   track, a ReadList of 100 ids, a SeekId (stop, load, play), and an Insert with its DeleteId.
#include <benchmark/benchmark.h>

#include <string>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/EventHandler.h"
#include "marlo/Properties.h"
#include "ImmediateTransferService.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

namespace {

class IgnoringHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const*, const char* const*, long) override {}
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

// A started OpenHome service whose playlist holds `tracks` tracks with 1 kB of metadata each.
class StartedOpenHomeService {
 public:
  explicit StartedOpenHomeService(int tracks) {
    properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*");
    service_.Initialize(&properties_);
    service_.RegisterPlaylistServiceEventListener(&handler_);
    service_.RegisterTransferService(&transfer_);
    service_.Start();
    const std::string metadata(1024, 'm');
    for (int i = 0; i < tracks; ++i) {
      const std::string uri = "http://10.0.0.2/music/" + std::to_string(i) + ".flac";
      Perform("Insert", {{"AfterId", std::to_string(i)}, {"Uri", uri}, {"Metadata", metadata}});
    }
  }
  ~StartedOpenHomeService() {
    service_.Stop();
    service_.UnregisterPlaylistServiceEventListener();
    service_.Finalize();
  }

  int32_t Perform(const char* action, std::initializer_list<std::pair<std::string, std::string>> arguments) {
    marlo::ActionRequest request;
    request.SetActionName(action);
    for (const auto& argument : arguments) request.AddArgument(argument.first.c_str(), argument.second.c_str());
    marlo::ActionResponse response;
    return service_.PerformAction(&request, &response, 1);
  }
  SINK_UPNP_OpenHomeUPnPService& service() { return service_; }

 private:
  marlo::Properties properties_;
  IgnoringHandler handler_;
  ImmediateTransferService transfer_;
  SINK_UPNP_OpenHomeUPnPService service_;
};

constexpr int kFullPlaylist = 1000;

void RunOpenHomeAction(benchmark::State& state, const char* action, const char* argument, const std::string& value) {
  StartedOpenHomeService started(kFullPlaylist);
  marlo::ActionRequest request;
  request.SetActionName(action);
  if (argument != nullptr) request.AddArgument(argument, value.c_str());
  for (auto _ : state) {
    marlo::ActionResponse response;
    benchmark::DoNotOptimize(started.service().PerformAction(&request, &response, 1));
  }
}

void BM_OpenHomeTime(benchmark::State& state) { RunOpenHomeAction(state, "Time", nullptr, ""); }
BENCHMARK(BM_OpenHomeTime);

void BM_OpenHomeIdArray(benchmark::State& state) { RunOpenHomeAction(state, "IdArray", nullptr, ""); }
BENCHMARK(BM_OpenHomeIdArray);

void BM_OpenHomeReadList100(benchmark::State& state) {
  std::string ids;
  for (int id = 1; id <= 1000; id += 10) ids += (ids.empty() ? "" : " ") + std::to_string(id);
  RunOpenHomeAction(state, "ReadList", "IdList", ids);
}
BENCHMARK(BM_OpenHomeReadList100);

void BM_OpenHomeSeekIdMiddle(benchmark::State& state) { RunOpenHomeAction(state, "SeekId", "Value", "500"); }
BENCHMARK(BM_OpenHomeSeekIdMiddle);

// An Insert in the middle of the playlist and the DeleteId that removes it again, so that the playlist
// keeps its size; both publish the IdArray of 1000 tracks.
void BM_OpenHomeInsertAndDeleteId(benchmark::State& state) {
  StartedOpenHomeService started(kFullPlaylist);
  uint64_t nextId = kFullPlaylist + 1;
  for (auto _ : state) {
    started.Perform("Insert", {{"AfterId", "500"}, {"Uri", "http://10.0.0.2/new.flac"}, {"Metadata", ""}});
    started.Perform("DeleteId", {{"Value", std::to_string(nextId++)}});
  }
}
BENCHMARK(BM_OpenHomeInsertAndDeleteId);

}  // namespace
