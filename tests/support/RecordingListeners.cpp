#include "RecordingListeners.h"

#include "corva/MediaMetaData.h"

std::vector<ListenerCall> RecordingAVTEventListener::Calls() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return calls_;
}

void RecordingAVTEventListener::Record(const char* operation, const char* value) {
  std::lock_guard<std::mutex> guard(mutex_);
  calls_.push_back({operation, value != nullptr ? value : "(null)", ""});
}

void RecordingAVTEventListener::RecordMetaData(const char* operation, corva::MediaMetaData* metaData) {
  std::lock_guard<std::mutex> guard(mutex_);
  if (metaData == nullptr) {
    calls_.push_back({operation, "(null)", ""});
    return;
  }
  calls_.push_back({operation, metaData->GetMetaDataText(), metaData->GetTitle()});
}

void RecordingAVTEventListener::NotifyTransportState(const char* v) { Record("NotifyTransportState", v); }
void RecordingAVTEventListener::NotifyTransportStatus(const char* v) { Record("NotifyTransportStatus", v); }
void RecordingAVTEventListener::NotifyPlaybackStorageMedium(const char* v) {
  Record("NotifyPlaybackStorageMedium", v);
}
void RecordingAVTEventListener::NotifyRecordStorageMedium(const char* v) {
  Record("NotifyRecordStorageMedium", v);
}
void RecordingAVTEventListener::NotifyPossiblePlaybackStorageMedia(const char* v) {
  Record("NotifyPossiblePlaybackStorageMedia", v);
}
void RecordingAVTEventListener::NotifyPossibleRecordStorageMedia(const char* v) {
  Record("NotifyPossibleRecordStorageMedia", v);
}
void RecordingAVTEventListener::NotifyCurrentPlayMode(const char* v) { Record("NotifyCurrentPlayMode", v); }
void RecordingAVTEventListener::NotifyTransportPlaySpeed(const char* v) {
  Record("NotifyTransportPlaySpeed", v);
}
void RecordingAVTEventListener::NotifyRecordMediumWriteStatus(const char* v) {
  Record("NotifyRecordMediumWriteStatus", v);
}
void RecordingAVTEventListener::NotifyCurrentRecordQualityMode(const char* v) {
  Record("NotifyCurrentRecordQualityMode", v);
}
void RecordingAVTEventListener::NotifyPossibleRecordQualityModes(const char* v) {
  Record("NotifyPossibleRecordQualityModes", v);
}
void RecordingAVTEventListener::NotifyNumberOfTracks(const char* v) { Record("NotifyNumberOfTracks", v); }
void RecordingAVTEventListener::NotifyCurrentTrack(const char* v) { Record("NotifyCurrentTrack", v); }
void RecordingAVTEventListener::NotifyCurrentTrackDuration(const char* v) {
  Record("NotifyCurrentTrackDuration", v);
}
void RecordingAVTEventListener::NotifyCurrentMediaDuration(const char* v) {
  Record("NotifyCurrentMediaDuration", v);
}
void RecordingAVTEventListener::NotifyCurrentTrackMetaData(corva::MediaMetaData* m) {
  RecordMetaData("NotifyCurrentTrackMetaData", m);
}
void RecordingAVTEventListener::NotifyCurrentTrackURI(const char* v) { Record("NotifyCurrentTrackURI", v); }
void RecordingAVTEventListener::NotifyAVTransportURI(const char* v) { Record("NotifyAVTransportURI", v); }
void RecordingAVTEventListener::NotifyAVTransportURIMetaData(corva::MediaMetaData* m) {
  RecordMetaData("NotifyAVTransportURIMetaData", m);
}
void RecordingAVTEventListener::NotifyNextAVTransportURI(const char* v) {
  Record("NotifyNextAVTransportURI", v);
}
void RecordingAVTEventListener::NotifyNextAVTransportURIMetaData(corva::MediaMetaData* m) {
  RecordMetaData("NotifyNextAVTransportURIMetaData", m);
}
void RecordingAVTEventListener::NotifyCurrentTransportActions(const char* v) {
  Record("NotifyCurrentTransportActions", v);
}

std::vector<ListenerCall> RecordingCMSEventListener::Calls() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return calls_;
}

void RecordingCMSEventListener::Record(const char* operation, const char* value) {
  std::lock_guard<std::mutex> guard(mutex_);
  calls_.push_back({operation, value != nullptr ? value : "(null)", ""});
}

void RecordingCMSEventListener::NotifySourceProtocolInfo(const char* v) {
  Record("NotifySourceProtocolInfo", v);
}
void RecordingCMSEventListener::NotifySinkProtocolInfo(const char* v) { Record("NotifySinkProtocolInfo", v); }
void RecordingCMSEventListener::NotifyCurrentConnectionIDs(const char* v) {
  Record("NotifyCurrentConnectionIDs", v);
}
