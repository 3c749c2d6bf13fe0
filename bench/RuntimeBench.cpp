// What the runtime's operations on the event and action paths cost. The state variable store calls them
// with its lock held, so they must stay far below a network round trip (about 200 µs).
#include <benchmark/benchmark.h>

#include <new>
#include <string>

#include "CountingEventHandler.h"
#include "corva/MediaMetaData.h"
#include "dmr_cmn/String.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/EventHandler.h"
#include "marlo/LastChange.h"

namespace {

std::string TrackMetaData(std::size_t approximateSize) {
  std::string didl =
      "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
      "<item id=\"1\" parentID=\"0\" restricted=\"1\"><dc:title>Track &amp; Title</dc:title>"
      "<upnp:artist>Artist</upnp:artist><upnp:album>Album</upnp:album>"
      "<upnp:class>object.item.audioItem.musicTrack</upnp:class>";
  while (didl.size() < approximateSize) {
    didl += "<res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:04:31.000\" size=\"31000000\" "
            "sampleFrequency=\"44100\" nrAudioChannels=\"2\">http://127.0.0.1:8200/music/track.flac</res>";
  }
  return didl + "</item></DIDL-Lite>";
}

void BM_StringSetCString(benchmark::State& state) {
  DMR_CMN_String s;
  for (auto _ : state) benchmark::DoNotOptimize(s.SetCString("PAUSED_PLAYBACK"));
}
BENCHMARK(BM_StringSetCString);

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
