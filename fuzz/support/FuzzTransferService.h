// FuzzTransferService: the application's transfer service as a fuzz input plays it. Every command and query
// answers a code the input chooses (mostly 0, else a UPnP error number a command may or may not report, a
// failure code, or any 32-bit number), fills its OUT strings with texts the input chooses, and may report a
// state back into the attached store as the player does (ChangeStateVariable of a variable and value the
// input chooses, then SendEvent), so that the service objects meet every answer an application can give.
//
// Until StartAnswering() it answers 0 and reports nothing: the host's setup is not the subject.
#ifndef FUZZ_SUPPORT_FUZZ_TRANSFER_SERVICE_H_
#define FUZZ_SUPPORT_FUZZ_TRANSFER_SERVICE_H_

#include <cstdint>

#include "FuzzScript.h"
#include "sink_core/TransferService.h"

class FuzzTransferService : public SINK_CORE_TransferService {
 public:
  explicit FuzzTransferService(FuzzScript* script) : script_(script) {}

  // From now on the input chooses the answers.
  void StartAnswering() { answering_ = true; }
  // Answers 0 again and reports nothing (for the host's teardown).
  void StopAnswering() { answering_ = false; }
  // The OpenHome playlist the service object attached (null from the standard service object).
  PLAYLIST_PlaylistManager* Playlist() const { return playlist_; }

  int32_t Initialize(marlo::Properties*) override { return 0; }
  int32_t Finalize() override { return 0; }
  int32_t StartEngine() override { return 0; }
  int32_t StopEngine() override { return 0; }
  int32_t GetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) override;
  int32_t SetVolume(unsigned long, unsigned long, DMR_CMN_String*) override;
  int32_t SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) override;
  int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager* manager) override;
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) override;
  int32_t WarnTimeOut(unsigned long, unsigned long* timeout, const char** text) override;
  int32_t SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri, DMR_CMN_String* metaData) override;
  int32_t Play(unsigned long, unsigned long, DMR_CMN_String* speed) override;
  int32_t Stop(unsigned long, unsigned long) override;
  int32_t Pause(unsigned long, unsigned long) override;
  int32_t Seek(unsigned long, unsigned long, DMR_CMN_String* unit, DMR_CMN_String* target) override;
  int32_t Next(unsigned long, unsigned long) override;
  int32_t Previous(unsigned long, unsigned long) override;
  int32_t GetDeviceCapabilities(unsigned long, unsigned long, DMR_CMN_String* playMedia, DMR_CMN_String* recMedia,
                                DMR_CMN_String* recQualityModes) override;
  int32_t GetMediaInfo(unsigned long, unsigned long, DMR_CMN_String* nrTracks, DMR_CMN_String* mediaDuration,
                       DMR_CMN_String* currentURI, DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                       DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium, DMR_CMN_String* recordMedium,
                       DMR_CMN_String* writeStatus) override;
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
  int32_t SetPlayMode(unsigned long, unsigned long, DMR_CMN_String* playMode) override;
  int32_t GetMute(unsigned long, unsigned long, DMR_CMN_String* mute) override;
  int32_t SetMute(unsigned long, unsigned long, DMR_CMN_String* mute) override;
  int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager*) override;

 private:
  // The answer of a command or query.
  int32_t Answer();
  // Fills an OUT string (or leaves it as it came).
  void Fill(DMR_CMN_String* out);
  // A command's answer, after which the application may report a new state to the attached store.
  int32_t Command();
  // Reads an IN string whole, so that a string handed over in a bad state is caught by AddressSanitizer.
  static void Read(const DMR_CMN_String* in);

  FuzzScript* script_;
  bool answering_ = false;
  SINK_UPNP_SinkCTSSStateVariableManager* standardStore_ = nullptr;
  SINK_UPNP_OpenHomeStateVariableManager* openHomeStore_ = nullptr;
  PLAYLIST_PlaylistManager* playlist_ = nullptr;
};

#endif  // FUZZ_SUPPORT_FUZZ_TRANSFER_SERVICE_H_
