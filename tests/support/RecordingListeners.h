// Recording application listeners, for tests: each call is kept as (operation, value) in call order.
// The metadata operations record the DIDL-Lite text they were given (and the title parsed from it).
#ifndef TESTS_SUPPORT_RECORDING_LISTENERS_H_
#define TESTS_SUPPORT_RECORDING_LISTENERS_H_

#include <mutex>
#include <string>
#include <vector>

#include "dmr_cmn/AVTEventListener.h"
#include "dmr_cmn/CMSEventListener.h"

struct ListenerCall {
  std::string operation;  // "NotifyTransportState", ...
  std::string value;      // the value; for metadata operations the DIDL-Lite text
  std::string title;      // metadata operations only: the parsed title

  bool operator==(const ListenerCall& other) const {
    return operation == other.operation && value == other.value && title == other.title;
  }
};

class RecordingAVTEventListener : public DMR_CMN_AVTEventListener {
 public:
  std::vector<ListenerCall> Calls() const;

  void NotifyTransportState(const char* value) override;
  void NotifyTransportStatus(const char* value) override;
  void NotifyPlaybackStorageMedium(const char* value) override;
  void NotifyRecordStorageMedium(const char* value) override;
  void NotifyPossiblePlaybackStorageMedia(const char* value) override;
  void NotifyPossibleRecordStorageMedia(const char* value) override;
  void NotifyCurrentPlayMode(const char* value) override;
  void NotifyTransportPlaySpeed(const char* value) override;
  void NotifyRecordMediumWriteStatus(const char* value) override;
  void NotifyCurrentRecordQualityMode(const char* value) override;
  void NotifyPossibleRecordQualityModes(const char* value) override;
  void NotifyNumberOfTracks(const char* value) override;
  void NotifyCurrentTrack(const char* value) override;
  void NotifyCurrentTrackDuration(const char* value) override;
  void NotifyCurrentMediaDuration(const char* value) override;
  void NotifyCurrentTrackMetaData(corva::MediaMetaData* metaData) override;
  void NotifyCurrentTrackURI(const char* value) override;
  void NotifyAVTransportURI(const char* value) override;
  void NotifyAVTransportURIMetaData(corva::MediaMetaData* metaData) override;
  void NotifyNextAVTransportURI(const char* value) override;
  void NotifyNextAVTransportURIMetaData(corva::MediaMetaData* metaData) override;
  void NotifyCurrentTransportActions(const char* value) override;

 private:
  void Record(const char* operation, const char* value);
  void RecordMetaData(const char* operation, corva::MediaMetaData* metaData);

  mutable std::mutex mutex_;
  std::vector<ListenerCall> calls_;
};

class RecordingCMSEventListener : public DMR_CMN_CMSEventListener {
 public:
  std::vector<ListenerCall> Calls() const;

  void NotifySourceProtocolInfo(const char* value) override;
  void NotifySinkProtocolInfo(const char* value) override;
  void NotifyCurrentConnectionIDs(const char* value) override;

 private:
  void Record(const char* operation, const char* value);

  mutable std::mutex mutex_;
  std::vector<ListenerCall> calls_;
};

#endif  // TESTS_SUPPORT_RECORDING_LISTENERS_H_
