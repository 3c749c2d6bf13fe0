// DMR_CMN_AVTEventListener: the application's listener for AVTransport state changes.
//
// The renderer calls one operation per changed AVTransport variable after each event it sends, with the
// new value. The three metadata operations receive the value parsed as DIDL-Lite; the object lives only
// for the call, so a listener copies what it keeps. The calls are made with the renderer's store locked:
// a listener must not call back into the store that notifies it.
//
// The order of the operations is fixed (it is the order of the interface table the renderer calls
// through). Every operation does nothing by default, so a listener overrides only what it needs.
#ifndef DMR_CMN_AVT_EVENT_LISTENER_H_
#define DMR_CMN_AVT_EVENT_LISTENER_H_

namespace corva {
class MediaMetaData;
}

class DMR_CMN_AVTEventListener {
 public:
  virtual ~DMR_CMN_AVTEventListener();

  virtual void NotifyTransportState(const char* value);
  virtual void NotifyTransportStatus(const char* value);
  virtual void NotifyPlaybackStorageMedium(const char* value);
  virtual void NotifyRecordStorageMedium(const char* value);
  virtual void NotifyPossiblePlaybackStorageMedia(const char* value);
  virtual void NotifyPossibleRecordStorageMedia(const char* value);
  virtual void NotifyCurrentPlayMode(const char* value);
  virtual void NotifyTransportPlaySpeed(const char* value);
  virtual void NotifyRecordMediumWriteStatus(const char* value);
  virtual void NotifyCurrentRecordQualityMode(const char* value);
  virtual void NotifyPossibleRecordQualityModes(const char* value);
  virtual void NotifyNumberOfTracks(const char* value);
  virtual void NotifyCurrentTrack(const char* value);
  virtual void NotifyCurrentTrackDuration(const char* value);
  virtual void NotifyCurrentMediaDuration(const char* value);
  virtual void NotifyCurrentTrackMetaData(corva::MediaMetaData* metaData);
  virtual void NotifyCurrentTrackURI(const char* value);
  virtual void NotifyAVTransportURI(const char* value);
  virtual void NotifyAVTransportURIMetaData(corva::MediaMetaData* metaData);
  virtual void NotifyNextAVTransportURI(const char* value);
  virtual void NotifyNextAVTransportURIMetaData(corva::MediaMetaData* metaData);
  virtual void NotifyCurrentTransportActions(const char* value);
};

#endif  // DMR_CMN_AVT_EVENT_LISTENER_H_
