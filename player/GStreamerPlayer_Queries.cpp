// PLAYER_GStreamerPlayer: the AVTransport and ConnectionManager queries, answered from the live pipeline.
// Every OUT string is filled on every answer.
#include <string>

#include "GStreamerPlayer.h"
#include "TimeText.h"
#include "dmr_cmn/String.h"

namespace {

constexpr int32_t kInvalidArgs = 402;
constexpr int32_t kInvalidConnectionReference = 706;

// Fills each OUT string in turn; 402 (no memory to answer with) at the first that cannot be filled.
int32_t Answer(std::initializer_list<std::pair<DMR_CMN_String*, std::string>> values) {
  for (const auto& value : values) {
    if (value.first == nullptr || value.first->SetCString(value.second.c_str()) != 0) return kInvalidArgs;
  }
  return 0;
}

}  // namespace

int32_t PLAYER_GStreamerPlayer::GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String* playMedia,
                                                      DMR_CMN_String* recMedia,
                                                      DMR_CMN_String* recQualityModes) {
  return Answer(
      {{playMedia, "NONE,NETWORK"}, {recMedia, "NOT_IMPLEMENTED"}, {recQualityModes, "NOT_IMPLEMENTED"}});
}

int32_t PLAYER_GStreamerPlayer::GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String* nrTracks,
                                             DMR_CMN_String* mediaDuration, DMR_CMN_String* currentURI,
                                             DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                                             DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium,
                                             DMR_CMN_String* recordMedium, DMR_CMN_String* writeStatus) {
  const bool present = !current_.uri.empty();
  return Answer({{nrTracks, present ? "1" : "0"},
                 {mediaDuration, PLAYER_FormatTime(present ? QueryDuration() : -1)},
                 {currentURI, current_.uri},
                 {currentURIMetaData, current_.metadata},
                 {nextURI, hasNext_ ? next_.uri : ""},
                 {nextURIMetaData, hasNext_ ? next_.metadata : ""},
                 {playMedium, present ? "NETWORK" : "NONE"},
                 {recordMedium, "NOT_IMPLEMENTED"},
                 {writeStatus, "NOT_IMPLEMENTED"}});
}

int32_t PLAYER_GStreamerPlayer::GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String* track,
                                                DMR_CMN_String* trackDuration, DMR_CMN_String* trackMetaData,
                                                DMR_CMN_String* trackURI, DMR_CMN_String* relTime,
                                                DMR_CMN_String* absTime, DMR_CMN_String* relCount,
                                                DMR_CMN_String* absCount) {
  const bool present = !current_.uri.empty();
  const bool moving = state_ == PLAYER_TransportState::Playing ||
                      state_ == PLAYER_TransportState::PausedPlayback ||
                      state_ == PLAYER_TransportState::Transitioning;
  const std::string position = PLAYER_FormatTime(moving ? QueryPosition() : pendingSeek_);
  // The metadata as the store has it: with a radio stream's current title.
  const std::string metadata = writer_.TransportStore() != nullptr || writer_.OpenHomeStore() != nullptr
                                   ? writer_.Read(SINK_UPNP_AVT_CURRENT_TRACK_METADATA)
                                   : current_.metadata;
  return Answer({{track, present ? "1" : "0"},
                 {trackDuration, PLAYER_FormatTime(present ? QueryDuration() : -1)},
                 {trackMetaData, present ? metadata : ""},
                 {trackURI, current_.uri},
                 {relTime, position},
                 {absTime, position},
                 {relCount, "2147483647"},
                 {absCount, "2147483647"}});
}

int32_t PLAYER_GStreamerPlayer::GetTransportInfo(unsigned long, unsigned long,
                                                 DMR_CMN_String* currentTransportState,
                                                 DMR_CMN_String* currentTransportStatus,
                                                 DMR_CMN_String* currentSpeed) {
  return Answer({{currentTransportState, PLAYER_TransportStateText(state_)},
                 {currentTransportStatus, errorOccurred_ ? "ERROR_OCCURRED" : "OK"},
                 {currentSpeed, "1"}});
}

int32_t PLAYER_GStreamerPlayer::GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String* playMode,
                                                     DMR_CMN_String* recQualityMode) {
  return Answer({{playMode, playMode_}, {recQualityMode, "NOT_IMPLEMENTED"}});
}

int32_t PLAYER_GStreamerPlayer::GetCurrentTransportActions(unsigned long, unsigned long,
                                                           DMR_CMN_String* actions) {
  return Answer({{actions, writer_.TransportStore() != nullptr || writer_.OpenHomeStore() != nullptr
                               ? writer_.Read(SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS)
                               : PLAYER_TransportActions(state_, hasNext_, false)}});
}

int32_t PLAYER_GStreamerPlayer::GetCurrentConnectionIDs(unsigned long, DMR_CMN_String* connectionIds) {
  // The renderer has the one connection 0.
  return Answer({{connectionIds, "0"}});
}

int32_t PLAYER_GStreamerPlayer::GetCurrentConnectionInfo(unsigned long, DMR_CMN_String* connectionId,
                                                         DMR_CMN_String* rcsId, DMR_CMN_String* avTransportId,
                                                         DMR_CMN_String* protocolInfo,
                                                         DMR_CMN_String* peerConnectionManager,
                                                         DMR_CMN_String* peerConnectionId,
                                                         DMR_CMN_String* direction, DMR_CMN_String* status) {
  // The renderer has the one connection 0.
  if (connectionId == nullptr || connectionId->GetCString() == nullptr ||
      std::string(connectionId->GetCString()) != "0") {
    return kInvalidConnectionReference;
  }
  return Answer({{rcsId, "0"},
                 {avTransportId, "0"},
                 {protocolInfo, ""},
                 {peerConnectionManager, ""},
                 {peerConnectionId, "-1"},
                 {direction, "Input"},
                 {status, errorOccurred_ ? "ContentFormatMismatch" : "OK"}});
}

int32_t PLAYER_GStreamerPlayer::GetProtocolInfo(unsigned long, DMR_CMN_String* source, DMR_CMN_String* sink) {
  // The sink list is the one the renderer was configured with, as its store holds it.
  std::string sinkList = writer_.Read(SINK_UPNP_CMS_SINK_PROTOCOL_INFO);
  if (sinkList.empty()) {
    for (const std::string& entry : PLAYER_SupportedProtocolInfo())
      sinkList += (sinkList.empty() ? "" : ",") + entry;
  }
  return Answer({{source, ""}, {sink, sinkList}});
}
