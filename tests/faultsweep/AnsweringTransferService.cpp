#include "AnsweringTransferService.h"

#include <initializer_list>
#include <utility>

#include "dmr_cmn/String.h"

namespace {

// Fills each OUT string with its text. A copy that fails (the sweep may make it fail) leaves that string
// unset: the application answers with what it could fill, as a real one would.
int32_t Answer(std::initializer_list<std::pair<DMR_CMN_String*, const char*>> outs) {
  for (const auto& out : outs) out.first->SetCString(out.second);
  return 0;
}

}  // namespace

int32_t AnsweringTransferService::GetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) {
  return Answer({{volume, "50"}});
}

int32_t AnsweringTransferService::WarnTimeOut(unsigned long, unsigned long* timeout, const char** text) {
  *timeout = 0;
  *text = nullptr;
  return 0;
}

int32_t AnsweringTransferService::GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String* playMedia,
                                                        DMR_CMN_String* recMedia,
                                                        DMR_CMN_String* recQualityModes) {
  return Answer({{playMedia, "NETWORK"}, {recMedia, "NOT_IMPLEMENTED"}, {recQualityModes, "NOT_IMPLEMENTED"}});
}

int32_t AnsweringTransferService::GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String* nrTracks,
                                               DMR_CMN_String* mediaDuration, DMR_CMN_String* currentURI,
                                               DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                                               DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium,
                                               DMR_CMN_String* recordMedium, DMR_CMN_String* writeStatus) {
  return Answer({{nrTracks, "1"},
                 {mediaDuration, "0:03:00"},
                 {currentURI, "http://127.0.0.1:9/a.flac"},
                 {currentURIMetaData, ""},
                 {nextURI, ""},
                 {nextURIMetaData, ""},
                 {playMedium, "NETWORK"},
                 {recordMedium, "NOT_IMPLEMENTED"},
                 {writeStatus, "NOT_IMPLEMENTED"}});
}

int32_t AnsweringTransferService::GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String* track,
                                                  DMR_CMN_String* trackDuration, DMR_CMN_String* trackMetaData,
                                                  DMR_CMN_String* trackURI, DMR_CMN_String* relTime,
                                                  DMR_CMN_String* absTime, DMR_CMN_String* relCount,
                                                  DMR_CMN_String* absCount) {
  return Answer({{track, "1"},
                 {trackDuration, "0:03:00"},
                 {trackMetaData, ""},
                 {trackURI, "http://127.0.0.1:9/a.flac"},
                 {relTime, "0:00:10"},
                 {absTime, "0:00:10"},
                 {relCount, "2147483647"},
                 {absCount, "2147483647"}});
}

int32_t AnsweringTransferService::GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state,
                                                   DMR_CMN_String* status, DMR_CMN_String* speed) {
  return Answer({{state, "STOPPED"}, {status, "OK"}, {speed, "1"}});
}

int32_t AnsweringTransferService::GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String* playMode,
                                                       DMR_CMN_String* recQualityMode) {
  return Answer({{playMode, "NORMAL"}, {recQualityMode, "NOT_IMPLEMENTED"}});
}

int32_t AnsweringTransferService::GetCurrentTransportActions(unsigned long, unsigned long,
                                                             DMR_CMN_String* actions) {
  return Answer({{actions, "Play,Stop,Seek"}});
}

int32_t AnsweringTransferService::GetCurrentConnectionIDs(unsigned long, DMR_CMN_String* connectionIds) {
  return Answer({{connectionIds, "0"}});
}

int32_t AnsweringTransferService::GetCurrentConnectionInfo(
    unsigned long, DMR_CMN_String*, DMR_CMN_String* rcsId, DMR_CMN_String* avTransportId,
    DMR_CMN_String* protocolInfo, DMR_CMN_String* peerConnectionManager, DMR_CMN_String* peerConnectionId,
    DMR_CMN_String* direction, DMR_CMN_String* status) {
  return Answer({{rcsId, "0"},
                 {avTransportId, "0"},
                 {protocolInfo, "http-get:*:audio/flac:*"},
                 {peerConnectionManager, ""},
                 {peerConnectionId, "-1"},
                 {direction, "Input"},
                 {status, "OK"}});
}

int32_t AnsweringTransferService::GetProtocolInfo(unsigned long, DMR_CMN_String* source, DMR_CMN_String* sink) {
  return Answer({{source, ""}, {sink, "http-get:*:audio/flac:*"}});
}

int32_t AnsweringTransferService::GetMute(unsigned long, unsigned long, DMR_CMN_String* mute) {
  return Answer({{mute, "0"}});
}
