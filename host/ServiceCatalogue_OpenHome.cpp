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

using host_catalogue_rows::In;
using host_catalogue_rows::kEvented;
using host_catalogue_rows::kNotEvented;
using host_catalogue_rows::Out;
using host_catalogue_rows::Variable;

HOST_ServiceDescription HOST_DescribePlaylist() {
  std::vector<HOST_Action> actions = {
      {"Insert", {In("AfterId", "Id"), In("Uri", "Uri"), In("Metadata", "Metadata"), Out("NewId", "Id")}},
      {"DeleteId", {In("Value", "Id")}},
      {"DeleteAll", {}},
      {"Stop", {}},
      {"Play", {}},
      {"Pause", {}},
      {"SeekSecondAbsolute", {In("Value", "A_ARG_TYPE_Seconds")}},
      {"Next", {}},
      {"Previous", {}},
      {"SeekId", {In("Value", "Id")}},
      {"SeekIndex", {In("Value", "A_ARG_TYPE_Index")}},
      {"Repeat", {Out("Value", "Repeat")}},
      {"SetRepeat", {In("Value", "Repeat")}},
      {"Shuffle", {Out("Value", "Shuffle")}},
      {"SetShuffle", {In("Value", "Shuffle")}},
      {"Id", {Out("Value", "Id")}},
      {"TransportState", {Out("Value", "A_ARG_TYPE_TransportState")}},
      {"Read", {In("Id", "Id"), Out("Uri", "Uri"), Out("Meta", "Metadata")}},
      {"ReadList", {In("IdList", "A_ARG_TYPE_IdList"), Out("TrackList", "A_ARG_TYPE_TrackList")}},
      {"IdArray", {Out("Token", "A_ARG_TYPE_Token"), Out("Array", "IdArray")}},
      {"TracksMax", {Out("Value", "TracksMax")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("TransportState", "string", kEvented, {"Playing", "Paused", "Stopped", "Buffering"}),
      Variable("Repeat", "boolean", kEvented),
      Variable("Shuffle", "boolean", kEvented),
      Variable("Id", "ui4", kEvented),
      Variable("IdArray", "bin.base64", kEvented),
      Variable("TracksMax", "ui4", kNotEvented),
      Variable("ProtocolInfo", "string", kNotEvented),
      // The current track's URI and metadata, flagged by the store when the application changes them.
      Variable("Uri", "string", kEvented),
      Variable("Metadata", "string", kEvented),
      // The words of the "TransportState" action, which differ from the evented variable's.
      Variable("A_ARG_TYPE_TransportState", "string", kNotEvented, {"PLAYING", "PAUSED", "STOPPED", "BUFFERING"}),
      Variable("A_ARG_TYPE_Seconds", "ui4", kNotEvented),
      Variable("A_ARG_TYPE_Index", "ui4", kNotEvented),
      Variable("A_ARG_TYPE_IdList", "string", kNotEvented),
      Variable("A_ARG_TYPE_TrackList", "string", kNotEvented),
      Variable("A_ARG_TYPE_Token", "ui4", kNotEvented),
  };
  return {"Playlist",
          "urn:av-openhome-org:service:Playlist:1",
          "urn:av-openhome-org:serviceId:Playlist",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeProduct() {
  std::vector<HOST_Action> actions = {
      {"Standby", {Out("Value", "Standby")}},
      {"SetStandby", {In("Value", "Standby")}},
      {"SourceXml", {Out("Value", "SourceXml")}},
      {"SetSourceIndex", {In("Value", "SourceIndex"), Out("Value", "SourceIndex")}},
      {"Manufacturer",
       {Out("Name", "ManufacturerName"), Out("Info", "ManufacturerInfo"), Out("Url", "ManufacturerUrl"),
        Out("ImageUri", "ManufacturerImageUri")}},
      {"Model",
       {Out("Name", "ModelName"), Out("Info", "ModelInfo"), Out("Url", "ModelUrl"),
        Out("ImageUri", "ModelImageUri")}},
      {"Product",
       {Out("Room", "ProductRoom"), Out("Name", "ProductName"), Out("Info", "ProductInfo"),
        Out("Url", "ProductUrl"), Out("ImageUri", "ProductImageUri")}},
      {"SourceIndex", {Out("Value", "SourceIndex")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("ManufacturerName", "string", kNotEvented),
      Variable("ManufacturerInfo", "string", kNotEvented),
      Variable("ManufacturerUrl", "string", kNotEvented),
      Variable("ManufacturerImageUri", "string", kNotEvented),
      Variable("ModelName", "string", kNotEvented),
      Variable("ModelInfo", "string", kNotEvented),
      Variable("ModelUrl", "string", kNotEvented),
      Variable("ModelImageUri", "string", kNotEvented),
      Variable("ProductRoom", "string", kNotEvented),
      Variable("ProductName", "string", kNotEvented),
      Variable("ProductInfo", "string", kNotEvented),
      Variable("ProductUrl", "string", kNotEvented),
      Variable("ProductImageUri", "string", kNotEvented),
      Variable("Standby", "boolean", kNotEvented),
      Variable("SourceIndex", "ui4", kNotEvented),
      Variable("SourceCount", "ui4", kNotEvented),
      Variable("SourceXml", "string", kNotEvented),
      Variable("Attributes", "string", kNotEvented),
  };
  return {"Product",
          "urn:av-openhome-org:service:Product:1",
          "urn:av-openhome-org:serviceId:Product",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeTime() {
  std::vector<HOST_Action> actions = {
      {"Time", {Out("TrackCount", "TrackCount"), Out("Duration", "Duration"), Out("Seconds", "Seconds")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("TrackCount", "ui4", kEvented),
      Variable("Duration", "ui4", kEvented),
      Variable("Seconds", "ui4", kEvented),
  };
  return {"Time",
          "urn:av-openhome-org:service:Time:1",
          "urn:av-openhome-org:serviceId:Time",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

HOST_ServiceDescription HOST_DescribeInfo() {
  std::vector<HOST_Action> actions = {
      {"Track", {Out("Uri", "Uri"), Out("Meta", "Metadata")}},
      {"Details",
       {Out("Duration", "Duration"), Out("BitRate", "BitRate"), Out("BitDepth", "BitDepth"),
        Out("SampleRate", "SampleRate"), Out("Lossless", "Lossless"), Out("CodecName", "CodecName")}},
      {"Metatext", {Out("Value", "Metatext")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("TrackCount", "ui4", kEvented),
      Variable("DetailsCount", "ui4", kEvented),
      Variable("MetatextCount", "ui4", kEvented),
      Variable("Uri", "string", kEvented),
      Variable("Metadata", "string", kEvented),
      Variable("Duration", "ui4", kEvented),
      Variable("BitRate", "ui4", kEvented),
      Variable("BitDepth", "ui4", kEvented),
      Variable("SampleRate", "ui4", kEvented),
      Variable("Lossless", "boolean", kEvented),
      Variable("CodecName", "string", kEvented),
      Variable("Metatext", "string", kEvented),
  };
  return {"Info",
          "urn:av-openhome-org:service:Info:1",
          "urn:av-openhome-org:serviceId:Info",
          HOST_Responder::OpenHomeServices,
          std::move(actions),
          std::move(variables)};
}

// The renderer sends nothing: the service object serves none of the Sender's actions, and its variables
// keep the values the store starts with.
HOST_ServiceDescription HOST_DescribeSender() {
  std::vector<HOST_StateVariable> variables = {
      Variable("PresentationUrl", "string", kNotEvented),
      Variable("Metadata", "string", kNotEvented),
      Variable("Audio", "boolean", kNotEvented),
      // On purpose without a list of allowed values: the store starts it as "Disable".
      Variable("Status", "string", kNotEvented),
      Variable("Attributes", "string", kNotEvented),
  };
  return {"Sender",
          "urn:av-openhome-org:service:Sender:1",
          "urn:av-openhome-org:serviceId:Sender",
          HOST_Responder::OpenHomeServices,
          {},
          std::move(variables)};
}

// Answered by the daemon; every variable is evented.
HOST_ServiceDescription HOST_DescribeVolume() {
  std::vector<HOST_Action> actions = {
      {"Characteristics",
       {Out("VolumeMax", "VolumeMax"), Out("VolumeUnity", "VolumeUnity"), Out("VolumeSteps", "VolumeSteps"),
        Out("VolumeMilliDbPerStep", "VolumeMilliDbPerStep"), Out("BalanceMax", "BalanceMax"),
        Out("FadeMax", "FadeMax")}},
      {"SetVolume", {In("Value", "Volume")}},
      {"VolumeInc", {}},
      {"VolumeDec", {}},
      {"Volume", {Out("Value", "Volume")}},
      {"SetBalance", {In("Value", "Balance")}},
      {"BalanceInc", {}},
      {"BalanceDec", {}},
      {"Balance", {Out("Value", "Balance")}},
      {"SetFade", {In("Value", "Fade")}},
      {"FadeInc", {}},
      {"FadeDec", {}},
      {"Fade", {Out("Value", "Fade")}},
      {"SetMute", {In("Value", "Mute")}},
      {"Mute", {Out("Value", "Mute")}},
      {"VolumeLimit", {Out("Value", "VolumeLimit")}},
  };
  std::vector<HOST_StateVariable> variables = {
      Variable("Volume", "ui4", kEvented),
      Variable("Mute", "boolean", kEvented),
      Variable("Balance", "i4", kEvented),
      Variable("Fade", "i4", kEvented),
      Variable("VolumeLimit", "ui4", kEvented),
      Variable("VolumeMax", "ui4", kEvented),
      Variable("VolumeUnity", "ui4", kEvented),
      Variable("VolumeSteps", "ui4", kEvented),
      Variable("VolumeMilliDbPerStep", "ui4", kEvented),
      Variable("BalanceMax", "ui4", kEvented),
      Variable("FadeMax", "ui4", kEvented),
  };
  return {"Volume",
          "urn:av-openhome-org:service:Volume:1",
          "urn:av-openhome-org:serviceId:Volume",
          HOST_Responder::Host,
          std::move(actions),
          std::move(variables)};
}
