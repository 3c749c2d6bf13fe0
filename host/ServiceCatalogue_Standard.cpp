// The UPnP forum's renderer services: AVTransport:1 and ConnectionManager:1, answered by the plug-in's
// standard service object, and RenderingControl:1, answered by the daemon.
//
// AVTransport and ConnectionManager list exactly the actions the service object dispatches (plus the one
// the daemon answers for it), each IN argument in the order the handler reads it and each OUT argument in
// the order it writes it. Only the variables the service object events are evented: "LastChange" of
// AVTransport, and ConnectionManager's three, whose values the daemon asks the service object for.
#include "host/ServiceCatalogueRows.h"
#include "host/ServiceTypes.h"

namespace {

// Names used by several arguments; the table keeps pointers to them, so they live as long as the process.
constexpr char kInstance[] = "A_ARG_TYPE_InstanceID";
constexpr char kChannel[] = "A_ARG_TYPE_Channel";

}  // namespace

HOST_ServiceDescription HOST_DescribeAVTransport() {
  std::vector<HOST_Action> actions = {
      {"SetAVTransportURI",
       {HOST_In("InstanceID", kInstance), HOST_In("CurrentURI", "AVTransportURI"),
        HOST_In("CurrentURIMetaData", "AVTransportURIMetaData")}},
      // The plug-in has no next-track command: the daemon answers this one itself.
      {"SetNextAVTransportURI",
       {HOST_In("InstanceID", kInstance), HOST_In("NextURI", "NextAVTransportURI"),
        HOST_In("NextURIMetaData", "NextAVTransportURIMetaData")},
       HOST_ANSWERED_BY_DAEMON},
      {"GetMediaInfo",
       {HOST_In("InstanceID", kInstance), HOST_Out("NrTracks", "NumberOfTracks"),
        HOST_Out("MediaDuration", "CurrentMediaDuration"), HOST_Out("CurrentURI", "AVTransportURI"),
        HOST_Out("CurrentURIMetaData", "AVTransportURIMetaData"), HOST_Out("NextURI", "NextAVTransportURI"),
        HOST_Out("NextURIMetaData", "NextAVTransportURIMetaData"),
        HOST_Out("PlayMedium", "PlaybackStorageMedium"), HOST_Out("RecordMedium", "RecordStorageMedium"),
        HOST_Out("WriteStatus", "RecordMediumWriteStatus")}},
      {"GetTransportInfo",
       {HOST_In("InstanceID", kInstance), HOST_Out("CurrentTransportState", "TransportState"),
        HOST_Out("CurrentTransportStatus", "TransportStatus"),
        HOST_Out("CurrentSpeed", "TransportPlaySpeed")}},
      {"GetPositionInfo",
       {HOST_In("InstanceID", kInstance), HOST_Out("Track", "CurrentTrack"),
        HOST_Out("TrackDuration", "CurrentTrackDuration"), HOST_Out("TrackMetaData", "CurrentTrackMetaData"),
        HOST_Out("TrackURI", "CurrentTrackURI"), HOST_Out("RelTime", "RelativeTimePosition"),
        HOST_Out("AbsTime", "AbsoluteTimePosition"), HOST_Out("RelCount", "RelativeCounterPosition"),
        HOST_Out("AbsCount", "AbsoluteCounterPosition")}},
      {"GetDeviceCapabilities",
       {HOST_In("InstanceID", kInstance), HOST_Out("PlayMedia", "PossiblePlaybackStorageMedia"),
        HOST_Out("RecMedia", "PossibleRecordStorageMedia"),
        HOST_Out("RecQualityModes", "PossibleRecordQualityModes")}},
      {"GetTransportSettings",
       {HOST_In("InstanceID", kInstance), HOST_Out("PlayMode", "CurrentPlayMode"),
        HOST_Out("RecQualityMode", "CurrentRecordQualityMode")}},
      {"GetCurrentTransportActions",
       {HOST_In("InstanceID", kInstance), HOST_Out("Actions", "CurrentTransportActions")}},
      {"Stop", {HOST_In("InstanceID", kInstance)}},
      {"Play", {HOST_In("InstanceID", kInstance), HOST_In("Speed", "TransportPlaySpeed")}},
      {"Pause", {HOST_In("InstanceID", kInstance)}},
      {"Seek",
       {HOST_In("InstanceID", kInstance), HOST_In("Unit", "A_ARG_TYPE_SeekMode"),
        HOST_In("Target", "A_ARG_TYPE_SeekTarget")}},
      {"Next", {HOST_In("InstanceID", kInstance)}},
      {"Previous", {HOST_In("InstanceID", kInstance)}},
      {"SetPlayMode", {HOST_In("InstanceID", kInstance), HOST_In("NewPlayMode", "CurrentPlayMode")}},
  };
  // The allowed values are the ones the store accepts for each variable.
  const std::vector<const char*> storageMedia = {"UNKNOWN",   "DV",         "MINI-DV",  "VHS",
                                                 "W-VHS",     "S-VHS",      "D-VHS",    "VHSC",
                                                 "VIDEO8",    "HI8",        "CD-ROM",   "CD-DA",
                                                 "CD-R",      "CD-RW",      "VIDEO-CD", "SACD",
                                                 "MD-AUDIO",  "MD-PICTURE", "DVD-ROM",  "DVD-VIDEO",
                                                 "DVD-R",     "DVD+RW",     "DVD-RW",   "DVD-RAM",
                                                 "DVD-AUDIO", "DAT",        "LD",       "HDD",
                                                 "MICRO-MV",  "NETWORK",    "NONE",     "NOT_IMPLEMENTED"};
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("TransportState", "string", HOST_NOT_EVENTED,
                    {"STOPPED", "PLAYING", "TRANSITIONING", "PAUSED_PLAYBACK", "PAUSED_RECORDING",
                     "RECORDING", "NO_MEDIA_PRESENT"}),
      HOST_Variable("TransportStatus", "string", HOST_NOT_EVENTED, {"OK", "ERROR_OCCURRED"}),
      HOST_Variable("PlaybackStorageMedium", "string", HOST_NOT_EVENTED, storageMedia),
      HOST_Variable("RecordStorageMedium", "string", HOST_NOT_EVENTED, storageMedia),
      HOST_Variable("PossiblePlaybackStorageMedia", "string", HOST_NOT_EVENTED),
      HOST_Variable("PossibleRecordStorageMedia", "string", HOST_NOT_EVENTED),
      HOST_Variable("CurrentPlayMode", "string", HOST_NOT_EVENTED,
                    {"NORMAL", "SHUFFLE", "REPEAT_ONE", "REPEAT_ALL", "RANDOM", "DIRECT_1", "INTRO"}),
      HOST_Variable("TransportPlaySpeed", "string", HOST_NOT_EVENTED, {"1"}),
      HOST_Variable("RecordMediumWriteStatus", "string", HOST_NOT_EVENTED,
                    {"WRITABLE", "PROTECTED", "NOT_WRITABLE", "UNKNOWN", "NOT_IMPLEMENTED"}),
      HOST_Variable("CurrentRecordQualityMode", "string", HOST_NOT_EVENTED,
                    {"0:EP", "1:LP", "2:SP", "0:BASIC", "1:MEDIUM", "2:HIGH", "NOT_IMPLEMENTED"}),
      HOST_Variable("PossibleRecordQualityModes", "string", HOST_NOT_EVENTED),
      HOST_Variable("NumberOfTracks", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("CurrentTrack", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("CurrentTrackDuration", "string", HOST_NOT_EVENTED),
      HOST_Variable("CurrentMediaDuration", "string", HOST_NOT_EVENTED),
      HOST_Variable("CurrentTrackMetaData", "string", HOST_NOT_EVENTED),
      HOST_Variable("CurrentTrackURI", "string", HOST_NOT_EVENTED),
      HOST_Variable("AVTransportURI", "string", HOST_NOT_EVENTED),
      HOST_Variable("AVTransportURIMetaData", "string", HOST_NOT_EVENTED),
      HOST_Variable("NextAVTransportURI", "string", HOST_NOT_EVENTED),
      HOST_Variable("NextAVTransportURIMetaData", "string", HOST_NOT_EVENTED),
      HOST_Variable("RelativeTimePosition", "string", HOST_NOT_EVENTED),
      HOST_Variable("AbsoluteTimePosition", "string", HOST_NOT_EVENTED),
      HOST_Variable("RelativeCounterPosition", "i4", HOST_NOT_EVENTED),
      HOST_Variable("AbsoluteCounterPosition", "i4", HOST_NOT_EVENTED),
      HOST_Variable("CurrentTransportActions", "string", HOST_NOT_EVENTED),
      // Every change above reaches subscribers inside this one document.
      HOST_Variable("LastChange", "string", HOST_EVENTED),
      // The seek modes the renderer's player serves; it answers 710 for any other.
      HOST_Variable("A_ARG_TYPE_SeekMode", "string", HOST_NOT_EVENTED, {"ABS_TIME", "REL_TIME", "TRACK_NR"}),
      HOST_Variable("A_ARG_TYPE_SeekTarget", "string", HOST_NOT_EVENTED),
      HOST_Variable(kInstance, "ui4", HOST_NOT_EVENTED),
  };
  return {"AVTransport",
          HOST_kAVTransportType,
          "urn:upnp-org:serviceId:AVTransport",
          HOST_Responder::StandardServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeConnectionManager() {
  std::vector<HOST_Action> actions = {
      {"GetProtocolInfo", {HOST_Out("Source", "SourceProtocolInfo"), HOST_Out("Sink", "SinkProtocolInfo")}},
      {"GetCurrentConnectionIDs", {HOST_Out("ConnectionIDs", "CurrentConnectionIDs")}},
      {"GetCurrentConnectionInfo",
       {HOST_In("ConnectionID", "A_ARG_TYPE_ConnectionID"), HOST_Out("RcsID", "A_ARG_TYPE_RcsID"),
        HOST_Out("AVTransportID", "A_ARG_TYPE_AVTransportID"),
        HOST_Out("ProtocolInfo", "A_ARG_TYPE_ProtocolInfo"),
        HOST_Out("PeerConnectionManager", "A_ARG_TYPE_ConnectionManager"),
        HOST_Out("PeerConnectionID", "A_ARG_TYPE_ConnectionID"),
        HOST_Out("Direction", "A_ARG_TYPE_Direction"), HOST_Out("Status", "A_ARG_TYPE_ConnectionStatus")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("SourceProtocolInfo", "string", HOST_EVENTED),
      HOST_Variable("SinkProtocolInfo", "string", HOST_EVENTED),
      HOST_Variable("CurrentConnectionIDs", "string", HOST_EVENTED),
      HOST_Variable("A_ARG_TYPE_ConnectionStatus", "string", HOST_NOT_EVENTED,
                    {"OK", "ContentFormatMismatch", "InsufficientBandwidth", "UnreliableChannel", "Unknown"}),
      HOST_Variable("A_ARG_TYPE_ConnectionManager", "string", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_Direction", "string", HOST_NOT_EVENTED, {"Input", "Output"}),
      HOST_Variable("A_ARG_TYPE_ProtocolInfo", "string", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_ConnectionID", "i4", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_AVTransportID", "i4", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_RcsID", "i4", HOST_NOT_EVENTED),
  };
  return {"ConnectionManager",
          HOST_kConnectionManagerType,
          "urn:upnp-org:serviceId:ConnectionManager",
          HOST_Responder::StandardServices,
          std::move(actions),
          std::move(variables)};
}

// The renderer has the one output channel "Master" and the one preset "FactoryDefaults".
HOST_ServiceDescription HOST_DescribeRenderingControl() {
  std::vector<HOST_Action> actions = {
      {"ListPresets",
       {HOST_In("InstanceID", kInstance), HOST_Out("CurrentPresetNameList", "PresetNameList")}},
      {"SelectPreset", {HOST_In("InstanceID", kInstance), HOST_In("PresetName", "A_ARG_TYPE_PresetName")}},
      {"GetVolume",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel), HOST_Out("CurrentVolume", "Volume")}},
      {"SetVolume",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel), HOST_In("DesiredVolume", "Volume")}},
      {"GetMute",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel), HOST_Out("CurrentMute", "Mute")}},
      {"SetMute",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel), HOST_In("DesiredMute", "Mute")}},
      {"GetVolumeDB",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel),
        HOST_Out("CurrentVolume", "VolumeDB")}},
      {"SetVolumeDB",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel),
        HOST_In("DesiredVolume", "VolumeDB")}},
      {"GetVolumeDBRange",
       {HOST_In("InstanceID", kInstance), HOST_In("Channel", kChannel), HOST_Out("MinValue", "VolumeDB"),
        HOST_Out("MaxValue", "VolumeDB")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("PresetNameList", "string", HOST_NOT_EVENTED),
      HOST_Variable("LastChange", "string", HOST_EVENTED),
      HOST_Variable("Mute", "boolean", HOST_NOT_EVENTED),
      HOST_RangedVariable("Volume", "ui2", HOST_NOT_EVENTED, "0", "100", "1"),
      // Its range is the one GetVolumeDBRange reports.
      HOST_Variable("VolumeDB", "i2", HOST_NOT_EVENTED),
      HOST_Variable(kChannel, "string", HOST_NOT_EVENTED, {"Master"}),
      HOST_Variable(kInstance, "ui4", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_PresetName", "string", HOST_NOT_EVENTED, {"FactoryDefaults"}),
  };
  return {"RenderingControl",
          HOST_kRenderingControlType,
          "urn:upnp-org:serviceId:RenderingControl",
          HOST_Responder::Host,
          std::move(actions),
          std::move(variables)};
}
