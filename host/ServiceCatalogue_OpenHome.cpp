// The OpenHome services: Product, Playlist, Time, Info and Sender, answered by the plug-in's OpenHome
// service object, and Volume, answered by the daemon.
//
// The plug-in's services list exactly the actions its dispatch table serves for each of them, with the
// argument names its handlers read and write, which is not always the OpenHome definition: "Read" and
// "Track" answer "Meta" (not "Metadata"), "SetSourceIndex" answers the current index as an OUT "Value", and
// "TransportState" answers the transport state in upper case. A control point reads what it will get.
//
// A variable is evented exactly when the OpenHome store or the service object sends it on that service's
// eventing thread: the store sends the variables a change flags (and the Playlist's "TransportState" when
// the transport state changes), the service object sends "Repeat", "Shuffle" and "IdArray" itself, and the
// application sends the Info service's "MetatextCount" and "Metatext". Nothing of Product or Sender is sent
// (the store hands Product changes to the application's listener only); a control point reads Product's
// values through its actions.
#include "host/ServiceCatalogueRows.h"
#include "host/ServiceTypes.h"

HOST_ServiceDescription HOST_DescribePlaylist() {
  std::vector<HOST_Action> actions = {
      {"Insert",
       {HOST_In("AfterId", "Id"), HOST_In("Uri", "Uri"), HOST_In("Metadata", "Metadata"),
        HOST_Out("NewId", "Id")}},
      {"DeleteId", {HOST_In("Value", "Id")}},
      {"DeleteAll", {}},
      {"Stop", {}},
      {"Play", {}},
      {"Pause", {}},
      {"SeekSecondAbsolute", {HOST_In("Value", "A_ARG_TYPE_Seconds")}},
      {"Next", {}},
      {"Previous", {}},
      {"SeekId", {HOST_In("Value", "Id")}},
      {"SeekIndex", {HOST_In("Value", "A_ARG_TYPE_Index")}},
      {"Repeat", {HOST_Out("Value", "Repeat")}},
      {"SetRepeat", {HOST_In("Value", "Repeat")}},
      {"Shuffle", {HOST_Out("Value", "Shuffle")}},
      {"SetShuffle", {HOST_In("Value", "Shuffle")}},
      {"Id", {HOST_Out("Value", "Id")}},
      {"TransportState", {HOST_Out("Value", "A_ARG_TYPE_TransportState")}},
      {"Read", {HOST_In("Id", "Id"), HOST_Out("Uri", "Uri"), HOST_Out("Meta", "Metadata")}},
      {"ReadList", {HOST_In("IdList", "A_ARG_TYPE_IdList"), HOST_Out("TrackList", "A_ARG_TYPE_TrackList")}},
      {"IdArray", {HOST_Out("Token", "A_ARG_TYPE_Token"), HOST_Out("Array", "IdArray")}},
      {"TracksMax", {HOST_Out("Value", "TracksMax")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("TransportState", "string", HOST_EVENTED, {"Playing", "Paused", "Stopped", "Buffering"}),
      HOST_Variable("Repeat", "boolean", HOST_EVENTED),
      HOST_Variable("Shuffle", "boolean", HOST_EVENTED),
      HOST_Variable("Id", "ui4", HOST_EVENTED),
      HOST_Variable("IdArray", "bin.base64", HOST_EVENTED),
      HOST_Variable("TracksMax", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("ProtocolInfo", "string", HOST_NOT_EVENTED),
      // The current track's URI and metadata, flagged by the store when the application changes them.
      HOST_Variable("Uri", "string", HOST_EVENTED),
      HOST_Variable("Metadata", "string", HOST_EVENTED),
      // The words of the "TransportState" action, which differ from the evented variable's.
      HOST_Variable("A_ARG_TYPE_TransportState", "string", HOST_NOT_EVENTED,
                    {"PLAYING", "PAUSED", "STOPPED", "BUFFERING"}),
      HOST_Variable("A_ARG_TYPE_Seconds", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_Index", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_IdList", "string", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_TrackList", "string", HOST_NOT_EVENTED),
      HOST_Variable("A_ARG_TYPE_Token", "ui4", HOST_NOT_EVENTED),
  };
  return {"Playlist",
          HOST_kPlaylistType,
          "urn:av-openhome-org:serviceId:Playlist",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeProduct() {
  std::vector<HOST_Action> actions = {
      {"Standby", {HOST_Out("Value", "Standby")}},
      {"SetStandby", {HOST_In("Value", "Standby")}},
      {"SourceXml", {HOST_Out("Value", "SourceXml")}},
      {"SetSourceIndex", {HOST_In("Value", "SourceIndex"), HOST_Out("Value", "SourceIndex")}},
      {"Manufacturer",
       {HOST_Out("Name", "ManufacturerName"), HOST_Out("Info", "ManufacturerInfo"),
        HOST_Out("Url", "ManufacturerUrl"), HOST_Out("ImageUri", "ManufacturerImageUri")}},
      {"Model",
       {HOST_Out("Name", "ModelName"), HOST_Out("Info", "ModelInfo"), HOST_Out("Url", "ModelUrl"),
        HOST_Out("ImageUri", "ModelImageUri")}},
      {"Product",
       {HOST_Out("Room", "ProductRoom"), HOST_Out("Name", "ProductName"), HOST_Out("Info", "ProductInfo"),
        HOST_Out("Url", "ProductUrl"), HOST_Out("ImageUri", "ProductImageUri")}},
      {"SourceIndex", {HOST_Out("Value", "SourceIndex")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("ManufacturerName", "string", HOST_NOT_EVENTED),
      HOST_Variable("ManufacturerInfo", "string", HOST_NOT_EVENTED),
      HOST_Variable("ManufacturerUrl", "string", HOST_NOT_EVENTED),
      HOST_Variable("ManufacturerImageUri", "string", HOST_NOT_EVENTED),
      HOST_Variable("ModelName", "string", HOST_NOT_EVENTED),
      HOST_Variable("ModelInfo", "string", HOST_NOT_EVENTED),
      HOST_Variable("ModelUrl", "string", HOST_NOT_EVENTED),
      HOST_Variable("ModelImageUri", "string", HOST_NOT_EVENTED),
      HOST_Variable("ProductRoom", "string", HOST_NOT_EVENTED),
      HOST_Variable("ProductName", "string", HOST_NOT_EVENTED),
      HOST_Variable("ProductInfo", "string", HOST_NOT_EVENTED),
      HOST_Variable("ProductUrl", "string", HOST_NOT_EVENTED),
      HOST_Variable("ProductImageUri", "string", HOST_NOT_EVENTED),
      HOST_Variable("Standby", "boolean", HOST_NOT_EVENTED),
      HOST_Variable("SourceIndex", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("SourceCount", "ui4", HOST_NOT_EVENTED),
      HOST_Variable("SourceXml", "string", HOST_NOT_EVENTED),
      HOST_Variable("Attributes", "string", HOST_NOT_EVENTED),
  };
  return {"Product",
          HOST_kProductType,
          "urn:av-openhome-org:serviceId:Product",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeTime() {
  std::vector<HOST_Action> actions = {
      {"Time",
       {HOST_Out("TrackCount", "TrackCount"), HOST_Out("Duration", "Duration"),
        HOST_Out("Seconds", "Seconds")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("TrackCount", "ui4", HOST_EVENTED),
      HOST_Variable("Duration", "ui4", HOST_EVENTED),
      HOST_Variable("Seconds", "ui4", HOST_EVENTED),
  };
  return {"Time",
          HOST_kTimeType,
          "urn:av-openhome-org:serviceId:Time",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeInfo() {
  std::vector<HOST_Action> actions = {
      {"Track", {HOST_Out("Uri", "Uri"), HOST_Out("Meta", "Metadata")}},
      {"Details",
       {HOST_Out("Duration", "Duration"), HOST_Out("BitRate", "BitRate"), HOST_Out("BitDepth", "BitDepth"),
        HOST_Out("SampleRate", "SampleRate"), HOST_Out("Lossless", "Lossless"),
        HOST_Out("CodecName", "CodecName")}},
      {"Metatext", {HOST_Out("Value", "Metatext")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("TrackCount", "ui4", HOST_EVENTED),    HOST_Variable("DetailsCount", "ui4", HOST_EVENTED),
      HOST_Variable("MetatextCount", "ui4", HOST_EVENTED), HOST_Variable("Uri", "string", HOST_EVENTED),
      HOST_Variable("Metadata", "string", HOST_EVENTED),   HOST_Variable("Duration", "ui4", HOST_EVENTED),
      HOST_Variable("BitRate", "ui4", HOST_EVENTED),       HOST_Variable("BitDepth", "ui4", HOST_EVENTED),
      HOST_Variable("SampleRate", "ui4", HOST_EVENTED),    HOST_Variable("Lossless", "boolean", HOST_EVENTED),
      HOST_Variable("CodecName", "string", HOST_EVENTED),  HOST_Variable("Metatext", "string", HOST_EVENTED),
  };
  return {"Info",
          HOST_kInfoType,
          "urn:av-openhome-org:serviceId:Info",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

// The renderer sends nothing: the service object serves none of the Sender's actions, and its variables
// keep the values the store starts with.
HOST_ServiceDescription HOST_DescribeSender() {
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("PresentationUrl", "string", HOST_NOT_EVENTED),
      HOST_Variable("Metadata", "string", HOST_NOT_EVENTED),
      HOST_Variable("Audio", "boolean", HOST_NOT_EVENTED),
      // On purpose without a list of allowed values: the store starts it as "Disable".
      HOST_Variable("Status", "string", HOST_NOT_EVENTED),
      HOST_Variable("Attributes", "string", HOST_NOT_EVENTED),
  };
  return {"Sender",
          HOST_kSenderType,
          "urn:av-openhome-org:serviceId:Sender",
          HOST_Responder::OpenHomeServices,
          {},
          std::move(variables)};
}

// Answered by the daemon; every variable is evented.
HOST_ServiceDescription HOST_DescribeVolume() {
  std::vector<HOST_Action> actions = {
      {"Characteristics",
       {HOST_Out("VolumeMax", "VolumeMax"), HOST_Out("VolumeUnity", "VolumeUnity"),
        HOST_Out("VolumeSteps", "VolumeSteps"), HOST_Out("VolumeMilliDbPerStep", "VolumeMilliDbPerStep"),
        HOST_Out("BalanceMax", "BalanceMax"), HOST_Out("FadeMax", "FadeMax")}},
      {"SetVolume", {HOST_In("Value", "Volume")}},
      {"VolumeInc", {}},
      {"VolumeDec", {}},
      {"Volume", {HOST_Out("Value", "Volume")}},
      {"SetBalance", {HOST_In("Value", "Balance")}},
      {"BalanceInc", {}},
      {"BalanceDec", {}},
      {"Balance", {HOST_Out("Value", "Balance")}},
      {"SetFade", {HOST_In("Value", "Fade")}},
      {"FadeInc", {}},
      {"FadeDec", {}},
      {"Fade", {HOST_Out("Value", "Fade")}},
      {"SetMute", {HOST_In("Value", "Mute")}},
      {"Mute", {HOST_Out("Value", "Mute")}},
      {"VolumeLimit", {HOST_Out("Value", "VolumeLimit")}},
  };
  std::vector<HOST_StateVariable> variables = {
      HOST_Variable("Volume", "ui4", HOST_EVENTED),
      HOST_Variable("Mute", "boolean", HOST_EVENTED),
      HOST_Variable("Balance", "i4", HOST_EVENTED),
      HOST_Variable("Fade", "i4", HOST_EVENTED),
      HOST_Variable("VolumeLimit", "ui4", HOST_EVENTED),
      HOST_Variable("VolumeMax", "ui4", HOST_EVENTED),
      HOST_Variable("VolumeUnity", "ui4", HOST_EVENTED),
      HOST_Variable("VolumeSteps", "ui4", HOST_EVENTED),
      HOST_Variable("VolumeMilliDbPerStep", "ui4", HOST_EVENTED),
      HOST_Variable("BalanceMax", "ui4", HOST_EVENTED),
      HOST_Variable("FadeMax", "ui4", HOST_EVENTED),
  };
  return {"Volume",
          HOST_kVolumeType,
          "urn:av-openhome-org:serviceId:Volume",
          HOST_Responder::Host,
          std::move(actions),
          std::move(variables)};
}
