// The UPnP forum's renderer services: AVTransport:1 and ConnectionManager:1, answered by the plug-in's
// standard service object, and RenderingControl:1, answered by the daemon.
//
// AVTransport and ConnectionManager list exactly the actions the service object dispatches (plus the one
// the daemon answers for it), each IN argument in the order the handler reads it and each OUT argument in
// the order it writes it. Only the variables the service object events are evented: "LastChange" of
// AVTransport, and ConnectionManager's three, whose values the daemon asks the service object for.
#include "host/ServiceCatalogueRows.h"

using host_catalogue_rows::In;
using host_catalogue_rows::kEvented;
using host_catalogue_rows::kHostAnswers;
using host_catalogue_rows::kNotEvented;
using host_catalogue_rows::Out;
using host_catalogue_rows::RangedVariable;
using host_catalogue_rows::Variable;

namespace {

// Names used by several arguments; the table keeps pointers to them, so they live as long as the process.
constexpr char kInstance[] = "A_ARG_TYPE_InstanceID";
constexpr char kChannel[] = "A_ARG_TYPE_Channel";

}  // namespace

HOST_ServiceDescription HOST_DescribeAVTransport() {
  std::vector<HOST_Action> actions = {
      {"SetAVTransportURI",
       {In("InstanceID", kInstance), In("CurrentURI", "AVTransportURI"),
        In("CurrentURIMetaData", "AVTransportURIMetaData")}},
      // The plug-in has no next-track command: the daemon answers this one itself.
      {"SetNextAVTransportURI",
       {In("InstanceID", kInstance), In("NextURI", "NextAVTransportURI"),
        In("NextURIMetaData", "NextAVTransportURIMetaData")},
       kHostAnswers},
      {"GetMediaInfo",
       {In("InstanceID", kInstance), Out("NrTracks", "NumberOfTracks"), Out("MediaDuration", "CurrentMediaDuration"),
        Out("CurrentURI", "AVTransportURI"), Out("CurrentURIMetaData", "AVTransportURIMetaData"),
        Out("NextURI", "NextAVTransportURI"), Out("NextURIMetaData", "NextAVTransportURIMetaData"),
        Out("PlayMedium", "PlaybackStorageMedium"), Out("RecordMedium", "RecordStorageMedium"),
        Out("WriteStatus", "RecordMediumWriteStatus")}},
      {"GetTransportInfo",
       {In("InstanceID", kInstance), Out("CurrentTransportState", "TransportState"),
        Out("CurrentTransportStatus", "TransportStatus"), Out("CurrentSpeed", "TransportPlaySpeed")}},
      {"GetPositionInfo",
       {In("InstanceID", kInstance), Out("Track", "CurrentTrack"), Out("TrackDuration", "CurrentTrackDuration"),
        Out("TrackMetaData", "CurrentTrackMetaData"), Out("TrackURI", "CurrentTrackURI"),
        Out("RelTime", "RelativeTimePosition"), Out("AbsTime", "AbsoluteTimePosition"),
        Out("RelCount", "RelativeCounterPosition"), Out("AbsCount", "AbsoluteCounterPosition")}},
      {"GetDeviceCapabilities",
       {In("InstanceID", kInstance), Out("PlayMedia", "PossiblePlaybackStorageMedia"),
        Out("RecMedia", "PossibleRecordStorageMedia"), Out("RecQualityModes", "PossibleRecordQualityModes")}},
      {"GetTransportSettings",
       {In("InstanceID", kInstance), Out("PlayMode", "CurrentPlayMode"),
        Out("RecQualityMode", "CurrentRecordQualityMode")}},
      {"GetCurrentTransportActions", {In("InstanceID", kInstance), Out("Actions", "CurrentTransportActions")}},
      {"Stop", {In("InstanceID", kInstance)}},
      {"Play", {In("InstanceID", kInstance), In("Speed", "TransportPlaySpeed")}},
      {"Pause", {In("InstanceID", kInstance)}},
      {"Seek",
       {In("InstanceID", kInstance), In("Unit", "A_ARG_TYPE_SeekMode"), In("Target", "A_ARG_TYPE_SeekTarget")}},
      {"Next", {In("InstanceID", kInstance)}},
      {"Previous", {In("InstanceID", kInstance)}},
      {"SetPlayMode", {In("InstanceID", kInstance), In("NewPlayMode", "CurrentPlayMode")}},
  };
  // The allowed values are the ones the store accepts for each variable.
  const std::vector<const char*> storageMedia = {
      "UNKNOWN",   "DV",       "MINI-DV",    "VHS",     "W-VHS",     "S-VHS",     "D-VHS",  "VHSC",
      "VIDEO8",    "HI8",      "CD-ROM",     "CD-DA",   "CD-R",      "CD-RW",     "VIDEO-CD", "SACD",
      "MD-AUDIO",  "MD-PICTURE", "DVD-ROM",  "DVD-VIDEO", "DVD-R",   "DVD+RW",    "DVD-RW", "DVD-RAM",
      "DVD-AUDIO", "DAT",      "LD",         "HDD",     "MICRO-MV",  "NETWORK",   "NONE",   "NOT_IMPLEMENTED"};
  std::vector<HOST_StateVariable> variables = {
      Variable("TransportState", "string", kNotEvented,
               {"STOPPED", "PLAYING", "TRANSITIONING", "PAUSED_PLAYBACK", "PAUSED_RECORDING", "RECORDING",
                "NO_MEDIA_PRESENT"}),
      Variable("TransportStatus", "string", kNotEvented, {"OK", "ERROR_OCCURRED"}),
      Variable("PlaybackStorageMedium", "string", kNotEvented, storageMedia),
      Variable("RecordStorageMedium", "string", kNotEvented, storageMedia),
      Variable("PossiblePlaybackStorageMedia", "string", kNotEvented),
      Variable("PossibleRecordStorageMedia", "string", kNotEvented),
      Variable("CurrentPlayMode", "string", kNotEvented,
               {"NORMAL", "SHUFFLE", "REPEAT_ONE", "REPEAT_ALL", "RANDOM", "DIRECT_1", "INTRO"}),
      Variable("TransportPlaySpeed", "string", kNotEvented, {"1"}),
      Variable("RecordMediumWriteStatus", "string", kNotEvented,
               {"WRITABLE", "PROTECTED", "NOT_WRITABLE", "UNKNOWN", "NOT_IMPLEMENTED"}),
      Variable("CurrentRecordQualityMode", "string", kNotEvented,
               {"0:EP", "1:LP", "2:SP", "0:BASIC", "1:MEDIUM", "2:HIGH", "NOT_IMPLEMENTED"}),
      Variable("PossibleRecordQualityModes", "string", kNotEvented),
      Variable("NumberOfTracks", "ui4", kNotEvented),
      Variable("CurrentTrack", "ui4", kNotEvented),
      Variable("CurrentTrackDuration", "string", kNotEvented),
      Variable("CurrentMediaDuration", "string", kNotEvented),
      Variable("CurrentTrackMetaData", "string", kNotEvented),
      Variable("CurrentTrackURI", "string", kNotEvented),
      Variable("AVTransportURI", "string", kNotEvented),
      Variable("AVTransportURIMetaData", "string", kNotEvented),
      Variable("NextAVTransportURI", "string", kNotEvented),
      Variable("NextAVTransportURIMetaData", "string", kNotEvented),
      Variable("RelativeTimePosition", "string", kNotEvented),
      Variable("AbsoluteTimePosition", "string", kNotEvented),
      Variable("RelativeCounterPosition", "i4", kNotEvented),
      Variable("AbsoluteCounterPosition", "i4", kNotEvented),
      Variable("CurrentTransportActions", "string", kNotEvented),
      // Every change above reaches subscribers inside this one document.
      Variable("LastChange", "string", kEvented),
      // The seek modes the renderer's player serves; it answers 710 for any other.
      Variable("A_ARG_TYPE_SeekMode", "string", kNotEvented, {"ABS_TIME", "REL_TIME", "TRACK_NR"}),
      Variable("A_ARG_TYPE_SeekTarget", "string", kNotEvented),
      Variable(kInstance, "ui4", kNotEvented),
  };
  return {"AVTransport",
          "urn:schemas-upnp-org:service:AVTransport:1",
          "urn:upnp-org:serviceId:AVTransport",
          HOST_Responder::StandardServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeConnectionManager() {
  std::vector<HOST_Action> actions = {
      {"GetProtocolInfo", {Out("Source", "SourceProtocolInfo"), Out("Sink", "SinkProtocolInfo")}},
      {"GetCurrentConnectionIDs", {Out("ConnectionIDs", "CurrentConnectionIDs")}},
      {"GetCurrentConnectionInfo",
       {In("ConnectionID", "A_ARG_TYPE_ConnectionID"), Out("RcsID", "A_ARG_TYPE_RcsID"),
        Out("AVTransportID", "A_ARG_TYPE_AVTransportID"), Out("ProtocolInfo", "A_ARG_TYPE_ProtocolInfo"),
        Out("PeerConnectionManager", "A_ARG_TYPE_ConnectionManager"),
        Out("PeerConnectionID", "A_ARG_TYPE_ConnectionID"), Out("Direction", "A_ARG_TYPE_Direction"),
        Out("Status", "A_ARG_TYPE_ConnectionStatus")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("SourceProtocolInfo", "string", kEvented),
      Variable("SinkProtocolInfo", "string", kEvented),
      Variable("CurrentConnectionIDs", "string", kEvented),
      Variable("A_ARG_TYPE_ConnectionStatus", "string", kNotEvented,
               {"OK", "ContentFormatMismatch", "InsufficientBandwidth", "UnreliableChannel", "Unknown"}),
      Variable("A_ARG_TYPE_ConnectionManager", "string", kNotEvented),
      Variable("A_ARG_TYPE_Direction", "string", kNotEvented, {"Input", "Output"}),
      Variable("A_ARG_TYPE_ProtocolInfo", "string", kNotEvented),
      Variable("A_ARG_TYPE_ConnectionID", "i4", kNotEvented),
      Variable("A_ARG_TYPE_AVTransportID", "i4", kNotEvented),
      Variable("A_ARG_TYPE_RcsID", "i4", kNotEvented),
  };
  return {"ConnectionManager",
          "urn:schemas-upnp-org:service:ConnectionManager:1",
          "urn:upnp-org:serviceId:ConnectionManager",
          HOST_Responder::StandardServices,
          std::move(actions),
          std::move(variables)};
}

// The renderer has the one output channel "Master" and the one preset "FactoryDefaults".
HOST_ServiceDescription HOST_DescribeRenderingControl() {
  std::vector<HOST_Action> actions = {
      {"ListPresets", {In("InstanceID", kInstance), Out("CurrentPresetNameList", "PresetNameList")}},
      {"SelectPreset", {In("InstanceID", kInstance), In("PresetName", "A_ARG_TYPE_PresetName")}},
      {"GetVolume", {In("InstanceID", kInstance), In("Channel", kChannel), Out("CurrentVolume", "Volume")}},
      {"SetVolume", {In("InstanceID", kInstance), In("Channel", kChannel), In("DesiredVolume", "Volume")}},
      {"GetMute", {In("InstanceID", kInstance), In("Channel", kChannel), Out("CurrentMute", "Mute")}},
      {"SetMute", {In("InstanceID", kInstance), In("Channel", kChannel), In("DesiredMute", "Mute")}},
      {"GetVolumeDB", {In("InstanceID", kInstance), In("Channel", kChannel), Out("CurrentVolume", "VolumeDB")}},
      {"SetVolumeDB", {In("InstanceID", kInstance), In("Channel", kChannel), In("DesiredVolume", "VolumeDB")}},
      {"GetVolumeDBRange",
       {In("InstanceID", kInstance), In("Channel", kChannel), Out("MinValue", "VolumeDB"),
        Out("MaxValue", "VolumeDB")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("PresetNameList", "string", kNotEvented),
      Variable("LastChange", "string", kEvented),
      Variable("Mute", "boolean", kNotEvented),
      RangedVariable("Volume", "ui2", kNotEvented, "0", "100", "1"),
      // Its range is the one GetVolumeDBRange reports.
      Variable("VolumeDB", "i2", kNotEvented),
      Variable(kChannel, "string", kNotEvented, {"Master"}),
      Variable(kInstance, "ui4", kNotEvented),
      Variable("A_ARG_TYPE_PresetName", "string", kNotEvented, {"FactoryDefaults"}),
  };
  return {"RenderingControl",
          "urn:schemas-upnp-org:service:RenderingControl:1",
          "urn:upnp-org:serviceId:RenderingControl",
          HOST_Responder::Host,
          std::move(actions),
          std::move(variables)};
}
