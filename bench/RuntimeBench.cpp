// What the runtime's operations on the event and action paths cost. The state variable store calls them
// with its lock held, so they must stay far below a network round trip (about 200 µs).
#include <benchmark/benchmark.h>

#include <new>
#include <string>

#include "CountingEventHandler.h"
#include "TrackMetaData.h"
#include "corva/MediaMetaData.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/String.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/EventHandler.h"
#include "marlo/LastChange.h"

namespace {

void BM_StringSetCString(benchmark::State& state) {
  DMR_CMN_String s;
  for (auto _ : state) benchmark::DoNotOptimize(s.SetCString("PAUSED_PLAYBACK"));
}
BENCHMARK(BM_StringSetCString);

// The store reads its values with GetCString and takes its lock for every change and query: what a fault
// point costs there is paid on every action. Run on two threads as well, each with its own string and lock,
// so that anything the threads share (a counter, say) shows as a slower call.
void BM_StringGetCString(benchmark::State& state) {
  DMR_CMN_String s;
  s.SetCString("PAUSED_PLAYBACK");
  for (auto _ : state) benchmark::DoNotOptimize(s.GetCString());
}
BENCHMARK(BM_StringGetCString)->ThreadRange(1, 2);

void BM_LockLockUnlock(benchmark::State& state) {
  DMR_CMN_Lock lock;
  lock.Initialize();
  for (auto _ : state) {
    benchmark::DoNotOptimize(lock.Lock());
    benchmark::DoNotOptimize(lock.Unlock());
  }
  lock.Finalize();
}
BENCHMARK(BM_LockLockUnlock)->ThreadRange(1, 2);

// A pending document receiving five AVTransport changes, then turned into text: one SendEvent's work.
void BM_LastChangeFiveChangesToText(benchmark::State& state) {
  for (auto _ : state) {
    marlo::LastChange* document = new (std::nothrow) marlo::LastChange;
    document->SetType(marlo::LastChange::kTypeAVTransport);
    document->SetStateVariable(0, "TransportState", "PLAYING", nullptr);
    document->SetStateVariable(0, "CurrentTrack", "3", nullptr);
    document->SetStateVariable(0, "CurrentTrackDuration", "0:04:31", nullptr);
    document->SetStateVariable(0, "CurrentTrackURI", "http://127.0.0.1:8200/music/3.flac", nullptr);
    document->SetStateVariable(0, "CurrentTransportActions", "Pause,Stop,Seek,Next,Previous", nullptr);
    benchmark::DoNotOptimize(document->GetXMLText());
    delete document;
  }
}
BENCHMARK(BM_LastChangeFiveChangesToText);

// The full document of every variable (76 entries, one a 4 KB DIDL-Lite text), as a query for LastChange
// builds it.
void BM_LastChangeFullDocumentToText(benchmark::State& state) {
  const std::string metaData = TrackMetaData(4096);
  for (auto _ : state) {
    marlo::LastChange document;
    document.SetType(marlo::LastChange::kTypeAVTransport);
    for (int i = 0; i < 76; ++i) {
      const std::string name = "Variable" + std::to_string(i);
      document.SetStateVariable(0, name.c_str(), i == 15 ? metaData.c_str() : "NOT_IMPLEMENTED", nullptr);
    }
    benchmark::DoNotOptimize(document.GetXMLText());
  }
}
BENCHMARK(BM_LastChangeFullDocumentToText);

// A LastChange text with entities nested ten deep (10^9 copies if expanded) is refused without expanding.
void BM_LastChangeRefusesEntityExpansion(benchmark::State& state) {
  std::string text = "<?xml version=\"1.0\"?><!DOCTYPE Event [<!ENTITY lol0 \"lol\">";
  for (int level = 1; level <= 9; ++level) {
    text += "<!ENTITY lol" + std::to_string(level) + " \"";
    for (int i = 0; i < 10; ++i) text += "&lol" + std::to_string(level - 1) + ";";
    text += "\">";
  }
  text += "]><Event><InstanceID val=\"0\"><A val=\"&lol9;\"/></InstanceID></Event>";
  for (auto _ : state) {
    marlo::LastChange document;
    benchmark::DoNotOptimize(document.SetXMLText(text.c_str()));
  }
}
BENCHMARK(BM_LastChangeRefusesEntityExpansion);

void BM_LastChangeParseFiveChanges(benchmark::State& state) {
  marlo::LastChange source;
  source.SetType(marlo::LastChange::kTypeAVTransport);
  source.SetStateVariable(0, "TransportState", "PLAYING", nullptr);
  source.SetStateVariable(0, "CurrentTrack", "3", nullptr);
  source.SetStateVariable(0, "CurrentTrackMetaData", TrackMetaData(1024).c_str(), nullptr);
  source.SetStateVariable(0, "CurrentTrackURI", "http://127.0.0.1:8200/music/3.flac", nullptr);
  source.SetStateVariable(0, "CurrentTransportActions", "Pause,Stop,Seek", nullptr);
  const std::string xml = source.GetXMLText();
  marlo::LastChange parsed;
  for (auto _ : state) benchmark::DoNotOptimize(parsed.SetXMLText(xml.c_str()));
}
BENCHMARK(BM_LastChangeParseFiveChanges);

void BM_MediaMetaDataParse4KB(benchmark::State& state) {
  const std::string didl = TrackMetaData(4096);
  corva::MediaMetaData metaData;
  for (auto _ : state) benchmark::DoNotOptimize(metaData.SetConformMetaData(didl.c_str()));
}
BENCHMARK(BM_MediaMetaDataParse4KB);

// What a caller holding the store's lock pays to hand one LastChange document to an eventing thread.
void BM_EventingThreadNotifyUpdate(benchmark::State& state) {
  const std::string xml(2048, 'x');
  CountingEventHandler handler;
  DMR_CMN_UPnPEventingThread* thread = new (std::nothrow) DMR_CMN_UPnPEventingThread;
  thread->Initialize(&handler);
  thread->Start();
  long sent = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(thread->NotifyUpdate("LastChange", xml.c_str()));
    ++sent;
  }
  handler.WaitFor(sent);
  thread->Stop();
  thread->Join();
  thread->Finalize();
  delete thread;
}
BENCHMARK(BM_EventingThreadNotifyUpdate);

}  // namespace
