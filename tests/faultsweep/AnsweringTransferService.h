// AnsweringTransferService: an application that accepts every command and answers every query, for the
// fault sweep. Unlike a GoogleMock, it does nothing that counts as a failable runtime operation beyond
// filling the OUT strings of a query, so the operations a sweep counts are the plug-in's own and the few
// the application must do to answer.
#ifndef TESTS_FAULTSWEEP_ANSWERING_TRANSFER_SERVICE_H_
#define TESTS_FAULTSWEEP_ANSWERING_TRANSFER_SERVICE_H_

#include <cstdint>

#include "sink_core/TransferService.h"

class AnsweringTransferService : public SINK_CORE_TransferService {
 public:
  int32_t Initialize(marlo::Properties*) override { return 0; }
  int32_t Finalize() override { return 0; }
  int32_t StartEngine() override { return 0; }
  int32_t StopEngine() override { return 0; }
  int32_t GetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) override;
  int32_t SetVolume(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager*) override { return 0; }
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager*) override { return 0; }
  int32_t WarnTimeOut(unsigned long, unsigned long* timeout, const char** text) override;
  int32_t SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t Play(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t Stop(unsigned long, unsigned long) override { return 0; }
  int32_t Pause(unsigned long, unsigned long) override { return 0; }
  int32_t Seek(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 0; }
  int32_t Next(unsigned long, unsigned long) override { return 0; }
  int32_t Previous(unsigned long, unsigned long) override { return 0; }
  int32_t GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String* playMedia,
                                DMR_CMN_String* recMedia, DMR_CMN_String* recQualityModes) override;
  int32_t GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String* nrTracks, DMR_CMN_String* mediaDuration,
                       DMR_CMN_String* currentURI, DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                       DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium,
                       DMR_CMN_String* recordMedium, DMR_CMN_String* writeStatus) override;
  int32_t GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String* track, DMR_CMN_String* trackDuration,
                          DMR_CMN_String* trackMetaData, DMR_CMN_String* trackURI, DMR_CMN_String* relTime,
                          DMR_CMN_String* absTime, DMR_CMN_String* relCount, DMR_CMN_String* absCount) override;
  int32_t GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                           DMR_CMN_String* speed) override;
  int32_t GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String* playMode,
                               DMR_CMN_String* recQualityMode) override;
  int32_t GetCurrentTransportActions(unsigned long, unsigned long, DMR_CMN_String* actions) override;
  int32_t GetCurrentConnectionIDs(unsigned long, DMR_CMN_String* connectionIds) override;
  int32_t GetCurrentConnectionInfo(unsigned long, DMR_CMN_String* connectionId, DMR_CMN_String* rcsId,
                                   DMR_CMN_String* avTransportId, DMR_CMN_String* protocolInfo,
                                   DMR_CMN_String* peerConnectionManager, DMR_CMN_String* peerConnectionId,
                                   DMR_CMN_String* direction, DMR_CMN_String* status) override;
  int32_t GetProtocolInfo(unsigned long, DMR_CMN_String* source, DMR_CMN_String* sink) override;
  int32_t SetPlayMode(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetMute(unsigned long, unsigned long, DMR_CMN_String* mute) override;
  int32_t SetMute(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager*) override { return 0; }
};

#endif  // TESTS_FAULTSWEEP_ANSWERING_TRANSFER_SERVICE_H_
