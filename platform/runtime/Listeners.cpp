// The application listeners' default operations: a listener overrides only what it wants to hear.
#include "dmr_cmn/AVTEventListener.h"
#include "dmr_cmn/CMSEventListener.h"

DMR_CMN_AVTEventListener::~DMR_CMN_AVTEventListener() = default;
void DMR_CMN_AVTEventListener::NotifyTransportState(const char*) {}
void DMR_CMN_AVTEventListener::NotifyTransportStatus(const char*) {}
void DMR_CMN_AVTEventListener::NotifyPlaybackStorageMedium(const char*) {}
void DMR_CMN_AVTEventListener::NotifyRecordStorageMedium(const char*) {}
void DMR_CMN_AVTEventListener::NotifyPossiblePlaybackStorageMedia(const char*) {}
void DMR_CMN_AVTEventListener::NotifyPossibleRecordStorageMedia(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentPlayMode(const char*) {}
void DMR_CMN_AVTEventListener::NotifyTransportPlaySpeed(const char*) {}
void DMR_CMN_AVTEventListener::NotifyRecordMediumWriteStatus(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentRecordQualityMode(const char*) {}
void DMR_CMN_AVTEventListener::NotifyPossibleRecordQualityModes(const char*) {}
void DMR_CMN_AVTEventListener::NotifyNumberOfTracks(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentTrack(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentTrackDuration(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentMediaDuration(const char*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentTrackMetaData(corva::MediaMetaData*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentTrackURI(const char*) {}
void DMR_CMN_AVTEventListener::NotifyAVTransportURI(const char*) {}
void DMR_CMN_AVTEventListener::NotifyAVTransportURIMetaData(corva::MediaMetaData*) {}
void DMR_CMN_AVTEventListener::NotifyNextAVTransportURI(const char*) {}
void DMR_CMN_AVTEventListener::NotifyNextAVTransportURIMetaData(corva::MediaMetaData*) {}
void DMR_CMN_AVTEventListener::NotifyCurrentTransportActions(const char*) {}

DMR_CMN_CMSEventListener::~DMR_CMN_CMSEventListener() = default;
void DMR_CMN_CMSEventListener::NotifySourceProtocolInfo(const char*) {}
void DMR_CMN_CMSEventListener::NotifySinkProtocolInfo(const char*) {}
void DMR_CMN_CMSEventListener::NotifyCurrentConnectionIDs(const char*) {}
