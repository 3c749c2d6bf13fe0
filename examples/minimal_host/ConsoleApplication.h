// ConsoleApplication: the smallest application a host can hand to the plug-in. It "plays" nothing: it
// keeps the URI it was given and reports its transport state through the store the service object
// attached, as a real player does when its pipeline changes state.
#ifndef MINIMAL_HOST_CONSOLE_APPLICATION_H_
#define MINIMAL_HOST_CONSOLE_APPLICATION_H_

#include <string>

#include "sink_core/TransferService.h"

class ConsoleApplication : public SINK_CORE_TransferService {
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
  // The store through which this application reports its state; kept until the host lets go of it.
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) override {
    store_ = manager;
    return 0;
  }
  int32_t WarnTimeOut(unsigned long, unsigned long*, const char**) override { return 0; }

  // The commands: each answers 0 (done) or a UPnP error number.
  int32_t SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri, DMR_CMN_String*) override;
  int32_t Play(unsigned long, unsigned long, DMR_CMN_String*) override;
  int32_t Stop(unsigned long, unsigned long) override;
  int32_t Pause(unsigned long, unsigned long) override { return 701; }  // "Transition not available"
  int32_t Seek(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override { return 701; }
  int32_t Next(unsigned long, unsigned long) override { return 701; }
  int32_t Previous(unsigned long, unsigned long) override { return 701; }

  // The queries answer from the store, which holds what the application last reported.
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
                           DMR_CMN_String* speed) override;
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

  // Lets go of the store: the host calls it before it finalizes the service object, which deletes it.
  void DetachStore() { store_ = nullptr; }

 private:
  // Stores a new transport state and events it, as a player does from its own thread.
  int32_t Report(const char* transportState);

  SINK_UPNP_SinkCTSSStateVariableManager* store_ = nullptr;
  std::string uri_;
};

#endif  // MINIMAL_HOST_CONSOLE_APPLICATION_H_
