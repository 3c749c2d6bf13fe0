// SINK_CORE_TransferService: the application's playback engine, as the renderer services drive it.
//
// The service objects hand every command that moves the renderer (set a URI, play, pause, stop, seek,
// skip) and most AVTransport and ConnectionManager queries to this interface; the application answers
// each with 0 or a UPnP error number (402, 701, 705, ...), and reports its state back by changing state
// variables in the store it was attached to.
//
// Arguments: `actionHandle` identifies the action being served (nonzero); `instanceId` is the AVTransport
// instance (always 0). Every DMR_CMN_String* belongs to the caller: an IN string holds a text the caller
// filled in, an OUT string is empty and is filled by the application.
//
// The order of the operations is the renderer's ABI (the slot numbers of the interface table count the
// two destructor entries as 1 and 2): AttachOpenHomeStateVariableManager is slot 10, WarnTimeOut 12,
// SetAVTransportURI to Previous 13 to 19, AttachPlaylistManager 32. New operations go at the end.
#ifndef SINK_CORE_TRANSFER_SERVICE_H_
#define SINK_CORE_TRANSFER_SERVICE_H_

#include <cstdint>

class DMR_CMN_String;
class PLAYLIST_PlaylistManager;
class SINK_UPNP_OpenHomeStateVariableManager;
class SINK_UPNP_SinkCTSSStateVariableManager;
namespace marlo {
class Properties;
}

class SINK_CORE_TransferService {
 public:
  virtual ~SINK_CORE_TransferService() = default;

  // The application's own lifecycle, driven by whoever hosts it (slots 3 to 6).
  virtual int32_t Initialize(marlo::Properties* properties) = 0;
  virtual int32_t Finalize() = 0;
  virtual int32_t StartEngine() = 0;
  virtual int32_t StopEngine() = 0;

  // RenderingControl volume, 0 to 100 as decimal text (slots 7 and 8).
  virtual int32_t GetVolume(unsigned long actionHandle, unsigned long instanceId,
                            DMR_CMN_String* volume) = 0;
  virtual int32_t SetVolume(unsigned long actionHandle, unsigned long instanceId,
                            DMR_CMN_String* volume) = 0;
  // Gapless playback: the URI to play after the current one (slot 9).
  virtual int32_t SetNextAVTransportURI(unsigned long actionHandle, unsigned long instanceId,
                                        DMR_CMN_String* uri, DMR_CMN_String* metaData) = 0;

  // The store of the OpenHome service object, through which the application reports its state (slot 10).
  virtual int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager* manager) = 0;
  // The store of the AVTransport/ConnectionManager service object (slot 11).
  virtual int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) = 0;
  // The host's timer `id` ran out (slot 12).
  virtual int32_t WarnTimeOut(unsigned long id, unsigned long* timeout, const char** text) = 0;

  // AVTransport commands (slots 13 to 19).
  virtual int32_t SetAVTransportURI(unsigned long actionHandle, unsigned long instanceId,
                                    DMR_CMN_String* uri, DMR_CMN_String* metaData) = 0;
  virtual int32_t Play(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* speed) = 0;
  virtual int32_t Stop(unsigned long actionHandle, unsigned long instanceId) = 0;
  virtual int32_t Pause(unsigned long actionHandle, unsigned long instanceId) = 0;
  virtual int32_t Seek(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* unit,
                       DMR_CMN_String* target) = 0;
  virtual int32_t Next(unsigned long actionHandle, unsigned long instanceId) = 0;
  virtual int32_t Previous(unsigned long actionHandle, unsigned long instanceId) = 0;

  // AVTransport queries (slots 20 to 25).
  virtual int32_t GetDeviceCapabilities(unsigned long actionHandle, unsigned long instanceId,
                                        DMR_CMN_String* playMedia, DMR_CMN_String* recMedia,
                                        DMR_CMN_String* recQualityModes) = 0;
  virtual int32_t GetMediaInfo(unsigned long actionHandle, unsigned long instanceId,
                               DMR_CMN_String* nrTracks, DMR_CMN_String* mediaDuration,
                               DMR_CMN_String* currentURI, DMR_CMN_String* currentURIMetaData,
                               DMR_CMN_String* nextURI, DMR_CMN_String* nextURIMetaData,
                               DMR_CMN_String* playMedium, DMR_CMN_String* recordMedium,
                               DMR_CMN_String* writeStatus) = 0;
  virtual int32_t GetPositionInfo(unsigned long actionHandle, unsigned long instanceId,
                                  DMR_CMN_String* track, DMR_CMN_String* trackDuration,
                                  DMR_CMN_String* trackMetaData, DMR_CMN_String* trackURI,
                                  DMR_CMN_String* relTime, DMR_CMN_String* absTime,
                                  DMR_CMN_String* relCount, DMR_CMN_String* absCount) = 0;
  virtual int32_t GetTransportInfo(unsigned long actionHandle, unsigned long instanceId,
                                   DMR_CMN_String* currentTransportState,
                                   DMR_CMN_String* currentTransportStatus,
                                   DMR_CMN_String* currentSpeed) = 0;
  virtual int32_t GetTransportSettings(unsigned long actionHandle, unsigned long instanceId,
                                       DMR_CMN_String* playMode, DMR_CMN_String* recQualityMode) = 0;
  virtual int32_t GetCurrentTransportActions(unsigned long actionHandle, unsigned long instanceId,
                                             DMR_CMN_String* actions) = 0;

  // ConnectionManager queries (slots 26 to 28); they carry no instance.
  virtual int32_t GetCurrentConnectionIDs(unsigned long actionHandle, DMR_CMN_String* connectionIds) = 0;
  virtual int32_t GetCurrentConnectionInfo(unsigned long actionHandle, DMR_CMN_String* connectionId,
                                           DMR_CMN_String* rcsId, DMR_CMN_String* avTransportId,
                                           DMR_CMN_String* protocolInfo,
                                           DMR_CMN_String* peerConnectionManager,
                                           DMR_CMN_String* peerConnectionId, DMR_CMN_String* direction,
                                           DMR_CMN_String* status) = 0;
  virtual int32_t GetProtocolInfo(unsigned long actionHandle, DMR_CMN_String* source,
                                  DMR_CMN_String* sink) = 0;

  // AVTransport play mode (slot 29).
  virtual int32_t SetPlayMode(unsigned long actionHandle, unsigned long instanceId,
                              DMR_CMN_String* playMode) = 0;

  // RenderingControl mute, "0" or "1" (slots 30 and 31).
  virtual int32_t GetMute(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* mute) = 0;
  virtual int32_t SetMute(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* mute) = 0;

  // The OpenHome playlist whose track is about to be set (null from the AVTransport service); called
  // before every SetAVTransportURI and when the transfer service is registered (slot 32).
  virtual int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager* playlistManager) = 0;
};

#endif  // SINK_CORE_TRANSFER_SERVICE_H_
