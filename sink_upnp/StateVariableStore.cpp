#include "sink_upnp/StateVariableStore.h"

namespace {

// The entity of each character that XML text must not carry as it is, indexed by the byte; null for the
// others.
struct EntityTable {
  const char* entity[256] = {};
  unsigned char length[256] = {};
  EntityTable() {
    Set('&', "&amp;");
    Set('<', "&lt;");
    Set('>', "&gt;");
    Set('"', "&quot;");
    Set('\'', "&apos;");
  }
  void Set(char c, const char* text) {
    entity[static_cast<unsigned char>(c)] = text;
    length[static_cast<unsigned char>(c)] = static_cast<unsigned char>(std::strlen(text));
  }
};
const EntityTable kEntities;

// The transport listener's operation for each AVTransport variable that has one.
using TextNotification = void (DMR_CMN_AVTEventListener::*)(const char*);
using MetaDataNotification = void (DMR_CMN_AVTEventListener::*)(corva::MediaMetaData*);

struct ListenerOperation {
  TextNotification text;
  MetaDataNotification metaData;
};

const ListenerOperation kListenerOperations[SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS + 1] = {
    {&DMR_CMN_AVTEventListener::NotifyTransportState, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyTransportStatus, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyPlaybackStorageMedium, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyRecordStorageMedium, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyPossiblePlaybackStorageMedia, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyPossibleRecordStorageMedia, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentPlayMode, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyTransportPlaySpeed, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyRecordMediumWriteStatus, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentRecordQualityMode, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyPossibleRecordQualityModes, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyNumberOfTracks, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentTrack, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentTrackDuration, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentMediaDuration, nullptr},
    {nullptr, &DMR_CMN_AVTEventListener::NotifyCurrentTrackMetaData},
    {&DMR_CMN_AVTEventListener::NotifyCurrentTrackURI, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyAVTransportURI, nullptr},
    {nullptr, &DMR_CMN_AVTEventListener::NotifyAVTransportURIMetaData},
    {&DMR_CMN_AVTEventListener::NotifyNextAVTransportURI, nullptr},
    {nullptr, &DMR_CMN_AVTEventListener::NotifyNextAVTransportURIMetaData},
    {nullptr, nullptr},  // RelativeTimePosition .. AbsoluteCounterPosition never reach a listener
    {nullptr, nullptr},
    {nullptr, nullptr},
    {nullptr, nullptr},
    {&DMR_CMN_AVTEventListener::NotifyCurrentTransportActions, nullptr},
};

}  // namespace

char* SINK_UPNP_EscapeXmlText(const char* text, char* result, std::size_t size) {
  if (text == nullptr || result == nullptr || size == 0) return nullptr;
  // One pass rather than moving the rest of the text at each entity: the cost grows with the text
  // alone. `end` keeps the buffer's last byte for the terminator.
  char* out = result;
  const char* const end = result + size - 1;
  for (const unsigned char* c = reinterpret_cast<const unsigned char*>(text); *c != '\0'; ++c) {
    const std::size_t length = kEntities.length[*c];
    if (length == 0) {
      if (out == end) return nullptr;
      *out++ = static_cast<char>(*c);
    } else {
      // A text whose escaped form would not fit is refused whole rather than cut inside an entity.
      if (static_cast<std::size_t>(end - out) < length) return nullptr;
      std::memcpy(out, kEntities.entity[*c], length);
      out += length;
    }
  }
  *out = '\0';
  return result;
}

void SINK_UPNP_NotifyAVTListener(DMR_CMN_AVTEventListener* listener, int32_t index, const char* value) {
  if (listener == nullptr || index < 0 || index > SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS) return;
  const ListenerOperation& operation = kListenerOperations[index];
  if (operation.text != nullptr) {
    (listener->*operation.text)(value);
  } else if (operation.metaData != nullptr) {
    // Built for this call only: the listener copies what it keeps.
    corva::MediaMetaData metaData;
    metaData.SetConformMetaData(value);
    (listener->*operation.metaData)(&metaData);
  }
}
