// What the state variable store costs on the paths a renderer runs all the time: a change, an unchanged
// value, sending the pending changes, the full LastChange document a new subscriber gets, and escaping a
// track's metadata. Each must stay far below a network round trip (about 200 µs).
#include <benchmark/benchmark.h>

#include <string>

#include "CountingEventHandler.h"
#include "TrackMetaData.h"
#include "dmr_cmn/String.h"
#include "marlo/EventHandler.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

namespace {

// A started store: initialized, its AVTransport eventing thread registered, initial values set.
class StartedStore {
 public:
  StartedStore() {
    store_.Initialize();
    store_.RegisterAVTransportServiceEventListener(&handler_);
    DMR_CMN_String protocolInfo;
    protocolInfo.SetCString("http-get:*:audio/mpeg:*,http-get:*:audio/flac:*");
    store_.InitializeVariables(&protocolInfo);
  }
  ~StartedStore() {
    store_.UnregisterAVTransportServiceEventListener();
    store_.Finalize();
  }
  SINK_UPNP_SinkCTSSStateVariableManager& store() { return store_; }
  CountingEventHandler& handler() { return handler_; }

 private:
  SINK_UPNP_SinkCTSSStateVariableManager store_;
  CountingEventHandler handler_;
};

void BM_ChangeStateVariableNewValue(benchmark::State& state) {
  StartedStore started;
  DMR_CMN_String values[2];
  values[0].SetCString("PLAYING");
  values[1].SetCString("PAUSED_PLAYBACK");
  long i = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(
        started.store().ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &values[i++ & 1]));
  }
}
BENCHMARK(BM_ChangeStateVariableNewValue);

void BM_ChangeStateVariableSameValue(benchmark::State& state) {
  StartedStore started;
  DMR_CMN_String value;
  value.SetCString("PLAYING");
  started.store().ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &value);
  for (auto _ : state) {
    benchmark::DoNotOptimize(started.store().ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &value));
  }
}
BENCHMARK(BM_ChangeStateVariableSameValue);

// SendEvent with five AVTransport changes pending; the changes themselves are made outside the timing.
void BM_SendEventFivePendingChanges(benchmark::State& state) {
  StartedStore started;
  DMR_CMN_String values[5][2];
  const char* texts[5][2] = {{"PLAYING", "PAUSED_PLAYBACK"},
                             {"3", "4"},
                             {"0:04:31", "0:03:12"},
                             {"http://127.0.0.1:8200/3.flac", "http://127.0.0.1:8200/4.flac"},
                             {"Pause,Stop,Seek", "Play,Stop"}};
  const SINK_UPNP_StateVariableName_t indices[5] = {
      SINK_UPNP_AVT_TRANSPORT_STATE, SINK_UPNP_AVT_CURRENT_TRACK, SINK_UPNP_AVT_CURRENT_TRACK_DURATION,
      SINK_UPNP_AVT_CURRENT_TRACK_URI, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS};
  for (int v = 0; v < 5; ++v) {
    values[v][0].SetCString(texts[v][0]);
    values[v][1].SetCString(texts[v][1]);
  }
  long sent = 0;
  for (auto _ : state) {
    state.PauseTiming();
    for (int v = 0; v < 5; ++v) started.store().ChangeStateVariable(indices[v], &values[v][sent & 1]);
    state.ResumeTiming();
    benchmark::DoNotOptimize(started.store().SendEvent());
    ++sent;
  }
  started.handler().WaitFor(sent);
}
BENCHMARK(BM_SendEventFivePendingChanges);

void BM_GetLastChange(benchmark::State& state) {
  StartedStore started;
  DMR_CMN_String metaData;
  metaData.SetCString(TrackMetaData(4096).c_str());
  started.store().ChangeStateVariable(SINK_UPNP_AVT_CURRENT_TRACK_METADATA, &metaData);
  DMR_CMN_String out;
  for (auto _ : state) benchmark::DoNotOptimize(started.store().GetLastChange(&out));
}
BENCHMARK(BM_GetLastChange);

void BM_ConvertControlCharacter4KB(benchmark::State& state) {
  SINK_UPNP_SinkCTSSStateVariableManager store;
  const std::string didl = TrackMetaData(4096);
  for (auto _ : state) benchmark::DoNotOptimize(store.ConvertControlCharacter(didl.c_str()));
  state.SetBytesProcessed(static_cast<int64_t>(state.iterations() * didl.size()));
}
BENCHMARK(BM_ConvertControlCharacter4KB);

}  // namespace
