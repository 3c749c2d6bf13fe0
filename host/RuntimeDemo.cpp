// A walk through the open runtime, the way the renderer daemon will use it: configuration properties,
// the sink protocol list, a LastChange document delivered by an eventing thread, DIDL-Lite metadata.
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <new>

#include "corva/MediaMetaData.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/EventHandler.h"
#include "marlo/LastChange.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"

namespace {

// Prints what a subscriber of the AVTransport service would be sent.
class PrintingEventHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const* names, const char* const* values, long count) override {
    std::lock_guard<std::mutex> guard(mutex_);
    for (long i = 0; i < count; ++i) std::printf("   event  %s = %s\n", names[i], values[i]);
    ++batches_;
    delivered_.notify_all();
  }
  void WaitFor(int batches) {
    std::unique_lock<std::mutex> lock(mutex_);
    delivered_.wait(lock, [&] { return batches_ >= batches; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable delivered_;
  int batches_ = 0;
};

const char kTrackMetaData[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
    "<item id=\"42\" parentID=\"7\" restricted=\"1\"><dc:title>Morning &amp; Evening</dc:title>"
    "<upnp:artist>The Demo Band</upnp:artist><upnp:album>Loopback</upnp:album>"
    "<upnp:class>object.item.audioItem.musicTrack</upnp:class>"
    "<res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:03:25.000\" sampleFrequency=\"44100\" "
    "nrAudioChannels=\"2\">http://127.0.0.1:8200/music/42.flac</res></item></DIDL-Lite>";

int ShowProtocolList(const marlo::Properties& properties) {
  std::printf("1. Sink protocol list from the configuration\n");
  char key[32];
  for (int index = 0; index < 100; ++index) {
    std::snprintf(key, sizeof key, "sinkctss.protocolInfo_%d", index);
    const char* value = properties.GetProperty(key);
    if (value == nullptr) break;
    marlo::ProtocolInfo* entry = new (std::nothrow) marlo::ProtocolInfo;
    if (entry == nullptr) return 1;
    char* text = nullptr;
    if (entry->Set(value) == 0 && entry->Get(&text) == 0) {
      std::printf("   %-26s %s (content format %s)\n", key, text, entry->GetContentFormat());
      delete[] text;
    } else {
      std::printf("   %-26s refused: \"%s\"\n", key, value);
    }
    delete entry;
  }
  return 0;
}

int ShowEventing() {
  std::printf("2. A LastChange document through an eventing thread\n");
  marlo::LastChange* document = new (std::nothrow) marlo::LastChange;
  if (document == nullptr || document->SetType(marlo::LastChange::kTypeAVTransport) != 0) return 1;
  document->SetStateVariable(0, "TransportState", "TRANSITIONING", nullptr);
  document->SetStateVariable(0, "AVTransportURI", "http://127.0.0.1:8200/music/42.flac", nullptr);
  document->SetStateVariable(0, "TransportState", "PLAYING", nullptr);

  PrintingEventHandler handler;
  DMR_CMN_UPnPEventingThread* thread = new (std::nothrow) DMR_CMN_UPnPEventingThread;
  if (thread == nullptr || thread->Initialize(&handler) != 0 || thread->Start() != 0) return 1;
  thread->NotifyUpdate("LastChange", document->GetXMLText());
  handler.WaitFor(1);
  thread->Stop();
  thread->Join();
  thread->Finalize();
  delete thread;

  marlo::LastChange decoded;
  decoded.SetXMLText(document->GetXMLText());
  std::printf("   decoded again:\n");
  for (int i = 0; const marlo::LastChange::VariableSet* set = decoded.GetVariableSet(i); ++i) {
    for (int j = 0; const char* name = decoded.GetVariableName(set, j); ++j) {
      std::printf("     instance %lu: %s = %s\n", decoded.GetInstanceId(set), name,
                  decoded.GetVariableValue(set, j));
    }
  }
  delete document;
  return 0;
}

int ShowMetaData() {
  std::printf("3. DIDL-Lite metadata of a track\n");
  corva::MediaMetaData metaData;
  if (metaData.SetConformMetaData(kTrackMetaData) != 0) return 1;
  std::printf("   title  %s\n   artist %s\n   album  %s\n   class  %s\n", metaData.GetTitle(),
              metaData.GetArtist(), metaData.GetAlbum(), metaData.GetClass());
  std::printf("   res    %s (%s, %s, %s Hz, %s channels)\n", metaData.GetURI(), metaData.GetProtocolInfo(),
              metaData.GetDuration(), metaData.GetSampleFrequency(), metaData.GetNrAudioChannels());
  return 0;
}

}  // namespace

int main() {
  marlo::Properties properties;
  properties.LoadText(
      "# a renderer's configuration\n"
      "sinkctss.protocolInfo_0 = http-get:*:audio/mpeg:*\n"
      "sinkctss.protocolInfo_1 = http-get:*:audio/flac:*\n"
      "sinkctss.protocolInfo_2 = http-get:*:audio/L16;rate=44100;channels=2:DLNA.ORG_PN=LPCM\n"
      "sinkctss.protocolInfo_3 = not a protocol info\n");
  if (ShowProtocolList(properties) != 0 || ShowEventing() != 0 || ShowMetaData() != 0) {
    std::fprintf(stderr, "runtime demonstration failed\n");
    return 1;
  }
  std::printf("The renderer daemon is not built yet; this was the runtime it will stand on.\n");
  return 0;
}
