#include "FuzzTransferService.h"

#include <cstring>

#include "FuzzCheck.h"
#include "dmr_cmn/String.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

// What an application answers besides 0: every UPnP number some command may report, numbers none may
// report, failure codes of the layers below, and no-memory.
constexpr int32_t kAnswers[] = {402, 701, 705, 710, 711, 712, 714, 715, 716, 717, 718,
                                401, 501, 719, 1,   -1,  -989, -1999, 2147483647};

// OUT texts and reported values: the words the store and the handlers compare against, and texts that
// need escaping.
constexpr const char* kTexts[] = {
    "",
    "0",
    "1",
    "PLAYING",
    "STOPPED",
    "PAUSED_PLAYBACK",
    "TRANSITIONING",
    "NO_MEDIA_PRESENT",
    "RECORDING",
    "OK",
    "ERROR_OCCURRED",
    "NORMAL",
    "REPEAT_ALL",
    "NOT_IMPLEMENTED",
    "00:00:01",
    "0:03:25.000",
    "2147483647",
    "-1",
    "http://127.0.0.1:9/a.flac",
    "http-get:*:audio/flac:*",
    "Play,Stop,Pause,Seek,Next,Previous",
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
    "xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\"><item id=\"1\" parentID=\"0\" restricted=\"1\">"
    "<dc:title>A &amp; B</dc:title><upnp:class>object.item.audioItem.musicTrack</upnp:class>"
    "<res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:03:25.000\">http://127.0.0.1:9/a.flac</res>"
    "</item></DIDL-Lite>",
    "&<>\"'",
};

}  // namespace

int32_t FuzzTransferService::Answer() {
  if (!answering_) return 0;
  const uint8_t choice = script_->Byte();
  // Mostly success, so that the actions get past the application to what follows it.
  if (choice < 160) return 0;
  if (choice == 255) return script_->Number<int32_t>();
  return kAnswers[choice % (sizeof kAnswers / sizeof kAnswers[0])];
}

void FuzzTransferService::Fill(DMR_CMN_String* out) {
  FUZZ_CHECK(out != nullptr);
  if (!answering_ || script_->Flag()) return;
  FUZZ_CHECK(out->SetCString(script_->Pick(kTexts, 64).c_str()) == 0);
}

void FuzzTransferService::Read(const DMR_CMN_String* in) {
  FUZZ_CHECK(in != nullptr);
  const char* text = in->GetCString();
  if (text != nullptr) FUZZ_CHECK(std::strlen(text) == in->GetLength());
}

int32_t FuzzTransferService::Command() {
  const int32_t answer = Answer();
  if (!answering_ || script_->Byte() < 128) return answer;
  // The player reports a new value of a variable (the transport state most often) and asks for the event.
  const uint8_t which = script_->Byte();
  const int index = which < 96 ? SINK_UPNP_AVT_TRANSPORT_STATE : which % (SINK_UPNP_STATE_VARIABLE_COUNT + 1);
  DMR_CMN_String value;
  FUZZ_CHECK(value.SetCString(script_->Pick(kTexts, 64).c_str()) == 0);
  const auto name = static_cast<SINK_UPNP_StateVariableName_t>(index);
  int32_t changed = 0;
  int32_t sent = 0;
  if (standardStore_ != nullptr) {
    changed = standardStore_->ChangeStateVariable(name, &value);
    sent = standardStore_->SendEvent();
  } else if (openHomeStore_ != nullptr) {
    changed = openHomeStore_->ChangeStateVariable(name, &value);
    sent = openHomeStore_->SendEvent();
  }
  // Accepted, refused as a value the variable does not take, or an index outside the catalogue: nothing
  // else can happen while every host operation succeeds.
  FUZZ_CHECK(changed == 0 || changed == -961 || changed == -962);
  // Sent, nothing pending, or no thread for it.
  FUZZ_CHECK(sent == 0 || sent == -962 || sent == -963);
  return answer;
}

int32_t FuzzTransferService::GetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) {
  Fill(volume);
  return Answer();
}
int32_t FuzzTransferService::SetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) {
  Read(volume);
  return Answer();
}
int32_t FuzzTransferService::SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri,
                                                   DMR_CMN_String* metaData) {
  Read(uri);
  Read(metaData);
  return Command();
}
int32_t FuzzTransferService::AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager* manager) {
  openHomeStore_ = manager;
  return 0;
}
int32_t FuzzTransferService::AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) {
  standardStore_ = manager;
  return 0;
}
int32_t FuzzTransferService::WarnTimeOut(unsigned long, unsigned long* timeout, const char** text) {
  FUZZ_CHECK(timeout != nullptr && text != nullptr);
  *timeout = 1000;
  *text = "timeout";
  return Answer();
}
int32_t FuzzTransferService::SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri,
                                               DMR_CMN_String* metaData) {
  Read(uri);
  Read(metaData);
  return Command();
}
int32_t FuzzTransferService::Play(unsigned long, unsigned long, DMR_CMN_String* speed) {
  Read(speed);
  return Command();
}
int32_t FuzzTransferService::Stop(unsigned long, unsigned long) { return Command(); }
int32_t FuzzTransferService::Pause(unsigned long, unsigned long) { return Command(); }
int32_t FuzzTransferService::Seek(unsigned long, unsigned long, DMR_CMN_String* unit, DMR_CMN_String* target) {
  Read(unit);
  Read(target);
  return Command();
}
int32_t FuzzTransferService::Next(unsigned long, unsigned long) { return Command(); }
int32_t FuzzTransferService::Previous(unsigned long, unsigned long) { return Command(); }
int32_t FuzzTransferService::GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String* playMedia,
                                                   DMR_CMN_String* recMedia, DMR_CMN_String* recQualityModes) {
  for (DMR_CMN_String* out : {playMedia, recMedia, recQualityModes}) Fill(out);
  return Answer();
}
int32_t FuzzTransferService::GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String* nrTracks,
                                          DMR_CMN_String* mediaDuration, DMR_CMN_String* currentURI,
                                          DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                                          DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium,
                                          DMR_CMN_String* recordMedium, DMR_CMN_String* writeStatus) {
  for (DMR_CMN_String* out : {nrTracks, mediaDuration, currentURI, currentURIMetaData, nextURI, nextURIMetaData,
                              playMedium, recordMedium, writeStatus}) {
    Fill(out);
  }
  return Answer();
}
int32_t FuzzTransferService::GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String* track,
                                             DMR_CMN_String* trackDuration, DMR_CMN_String* trackMetaData,
                                             DMR_CMN_String* trackURI, DMR_CMN_String* relTime,
                                             DMR_CMN_String* absTime, DMR_CMN_String* relCount,
                                             DMR_CMN_String* absCount) {
  for (DMR_CMN_String* out : {track, trackDuration, trackMetaData, trackURI, relTime, absTime, relCount, absCount}) {
    Fill(out);
  }
  return Answer();
}
int32_t FuzzTransferService::GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state,
                                              DMR_CMN_String* status, DMR_CMN_String* speed) {
  for (DMR_CMN_String* out : {state, status, speed}) Fill(out);
  return Answer();
}
int32_t FuzzTransferService::GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String* playMode,
                                                  DMR_CMN_String* recQualityMode) {
  Fill(playMode);
  Fill(recQualityMode);
  return Answer();
}
int32_t FuzzTransferService::GetCurrentTransportActions(unsigned long, unsigned long, DMR_CMN_String* actions) {
  Fill(actions);
  return Answer();
}
int32_t FuzzTransferService::GetCurrentConnectionIDs(unsigned long, DMR_CMN_String* connectionIds) {
  Fill(connectionIds);
  return Answer();
}
int32_t FuzzTransferService::GetCurrentConnectionInfo(unsigned long, DMR_CMN_String* connectionId,
                                                      DMR_CMN_String* rcsId, DMR_CMN_String* avTransportId,
                                                      DMR_CMN_String* protocolInfo,
                                                      DMR_CMN_String* peerConnectionManager,
                                                      DMR_CMN_String* peerConnectionId, DMR_CMN_String* direction,
                                                      DMR_CMN_String* status) {
  Read(connectionId);
  for (DMR_CMN_String* out :
       {rcsId, avTransportId, protocolInfo, peerConnectionManager, peerConnectionId, direction, status}) {
    Fill(out);
  }
  return Answer();
}
int32_t FuzzTransferService::GetProtocolInfo(unsigned long, DMR_CMN_String* source, DMR_CMN_String* sink) {
  Fill(source);
  Fill(sink);
  return Answer();
}
int32_t FuzzTransferService::SetPlayMode(unsigned long, unsigned long, DMR_CMN_String* playMode) {
  Read(playMode);
  return Command();
}
int32_t FuzzTransferService::GetMute(unsigned long, unsigned long, DMR_CMN_String* mute) {
  Fill(mute);
  return Answer();
}
int32_t FuzzTransferService::SetMute(unsigned long, unsigned long, DMR_CMN_String* mute) {
  Read(mute);
  return Answer();
}
int32_t FuzzTransferService::AttachPlaylistManager(PLAYLIST_PlaylistManager* playlist) {
  if (playlist != nullptr) playlist_ = playlist;
  return 0;
}
