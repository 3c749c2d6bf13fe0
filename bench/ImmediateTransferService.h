// ImmediateTransferService: an application that answers every operation at once, so that a benchmark
// measures what the service objects cost on top of the application. The queries fill their OUT strings
// with short texts.
#ifndef BENCH_IMMEDIATE_TRANSFER_SERVICE_H_
#define BENCH_IMMEDIATE_TRANSFER_SERVICE_H_

#include "dmr_cmn/String.h"
#include "sink_core/TransferService.h"

class ImmediateTransferService : public SINK_CORE_TransferService {
 public:
  int32_t Initialize(marlo::Properties*) override { return 0; }
  int32_t Finalize() override { return 0; }
  int32_t StartEngine() override { return 0; }
  int32_t StopEngine() override { return 0; }
  int32_t GetVolume(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetVolume(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager*) override { return 0; }
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager*) override { return 0; }
  int32_t WarnTimeOut(unsigned long, unsigned long*, const char**) override { return 0; }
  int32_t SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t Play(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t Stop(unsigned long, unsigned long) override { return 0; }
  int32_t Pause(unsigned long, unsigned long) override { return 0; }
  int32_t Seek(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 0; }
  int32_t Next(unsigned long, unsigned long) override { return 0; }
  int32_t Previous(unsigned long, unsigned long) override { return 0; }
  int32_t GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*,
                                DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                       DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                       DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetPositionInfo(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                          DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                          DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                           DMR_CMN_String* speed) override {
    state->SetCString("PLAYING");
    status->SetCString("OK");
    speed->SetCString("1");
    return 0;
  }
  int32_t GetTransportSettings(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetCurrentTransportActions(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetCurrentConnectionIDs(unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetCurrentConnectionInfo(unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                                   DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
                                   DMR_CMN_String*) override {
    return 0;
  }
  int32_t GetProtocolInfo(unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 0; }
  int32_t SetPlayMode(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t GetMute(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t SetMute(unsigned long, unsigned long, DMR_CMN_String*) override { return 0; }
  int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager*) override { return 0; }
};

#endif  // BENCH_IMMEDIATE_TRANSFER_SERVICE_H_
