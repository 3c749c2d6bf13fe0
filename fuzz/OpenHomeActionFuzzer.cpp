// Checks PerformAction of the OpenHome service object, started as the daemon starts it, with arbitrary
// action names and argument sets against an application answering arbitrary codes (also GetStateVariable
// and WarnTimeOut between the actions, and now and then a playlist filled up to its limit):
// every answer is a documented result, the playlist keeps its invariants after every step (unique ids, an
// IdArray and a TrackList that match the list), nothing crashes or leaks, and the object still stops and
// finalizes cleanly.
#include <cstddef>
#include <cstdint>
#include <string>

#include "ActionScript.h"
#include "FuzzCheck.h"
#include "FuzzScript.h"
#include "FuzzTransferService.h"
#include "PlaylistInvariants.h"
#include "QuietEventHandler.h"
#include "ScriptedShuffle.h"
#include "playlist/PlaylistManager.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/OpenHomeUPnPService.h"

namespace {

constexpr const char* kServiceTypes[] = {
    "urn:av-openhome-org:service:Playlist:1", "urn:av-openhome-org:service:Product:1",
    "urn:av-openhome-org:service:Time:1",     "urn:av-openhome-org:service:Info:1",
    "urn:av-openhome-org:service:Sender:1",   "urn:av-openhome-org:service:Playlist:10",
};
constexpr const char* kActions[] = {
    "Insert",      "DeleteId",   "DeleteAll",      "Stop",        "Play",      "Pause",        "SeekSecondAbsolute",
    "Next",        "Previous",   "SeekId",         "SeekIndex",   "Repeat",    "SetRepeat",    "Shuffle",
    "SetShuffle",  "Id",         "TransportState", "Read",        "ReadList",  "Standby",      "SetStandby",
    "SourceXml",   "SetSourceIndex", "IdArray",    "TracksMax",   "Manufacturer", "Model",     "Product",
    "SourceIndex", "Track",      "Details",        "Metatext",    "Time",      "PresentationUrl", "Audio",
    "IdArrayChanged", "ProtocolInfo", "SeekSecondRelative",
};
constexpr const char* kArguments[] = {"AfterId", "Uri", "Metadata", "Value", "IdList", "Id", "Index", "Token"};
constexpr const char* kVariables[] = {
    "IdArray", "TransportState", "Repeat", "Shuffle", "Id",       "TracksMax", "ProtocolInfo", "Standby",
    "SourceXml", "ProductName", "Seconds", "Duration", "Metadata", "Uri",      "CodecName",    "Status", "",
};
constexpr ActionWords kWords = {kServiceTypes, sizeof kServiceTypes / sizeof kServiceTypes[0],
                                kActions,      sizeof kActions / sizeof kActions[0],
                                kArguments,    sizeof kArguments / sizeof kArguments[0]};
constexpr int kMaxSteps = 48;
constexpr unsigned long kHandle = 0x0E11;

// `fillsLeft`: how many times the input may still fill the playlist directly.
void Step(FuzzScript& script, SINK_UPNP_OpenHomeUPnPService& service, PLAYLIST_PlaylistManager* playlist,
          int* fillsLeft) {
  const uint8_t kind = script.Byte();
  if (kind < 216) {
    marlo::ActionRequest request;
    marlo::ActionResponse response;
    FillRequest(script, kWords, &request);
    const unsigned long handle = kind < 212 ? kHandle : 0;
    const int32_t result = service.PerformAction(kind == 213 ? nullptr : &request, &response, handle);
    CheckServed(result, response);
  } else if (kind < 240) {
    marlo::StateVariable variable;
    const int32_t result = service.GetStateVariable(script.Pick(kServiceTypes, 80).c_str(),
                                                    script.Pick(kVariables, 40).c_str(), &variable);
    FUZZ_CHECK(result == 0 || result == -1996 || result == -1998 || result == -1999);
    if (result == 0) FUZZ_CHECK(variable.GetValue() != nullptr);
  } else if (kind < 250) {
    unsigned long timeout = 0;
    const char* text = nullptr;
    const int32_t result = service.WarnTimeOut(script.Number<uint32_t>(), &timeout, &text);
    FUZZ_CHECK(result == 0 || result == -1999);
  } else if (*fillsLeft > 0) {
    --*fillsLeft;
    // Tracks put straight into the playlist, as the daemon restores a saved one, up to and beyond its
    // 1001 tracks, so that the actions meet a full playlist. (Through the Insert action each would event the
    // whole IdArray: a million steps to fill it.)
    const int count = 4 * script.Byte() + script.Between(0, 3);
    for (int i = 0; i < count; ++i) {
      uint64_t newId = 0;
      const int32_t inserted = playlist->Insert(("http://127.0.0.1:9/" + std::to_string(i)).c_str(), "", 0, &newId);
      FUZZ_CHECK(inserted == 0 || (inserted == -1 && playlist->GetTrackCount() == 1001));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  FuzzScript script(data, size);
  ScriptedShuffle shuffle(&script);
  FuzzTransferService transfer(&script);
  QuietEventHandler playlist, product, time, info, sender;
  marlo::Properties properties;
  FUZZ_CHECK(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*") == 0);
  FUZZ_CHECK(properties.SetProperty("device.docroot", FUZZ_DOCROOT) == 0);

  // The daemon's order (host/Renderer.cpp).
  SINK_UPNP_OpenHomeUPnPService service;
  FUZZ_CHECK(service.Initialize(&properties) == 0);
  FUZZ_CHECK(service.RegisterPlaylistServiceEventListener(&playlist) == 0);
  FUZZ_CHECK(service.RegisterProductServiceEventListener(&product) == 0);
  FUZZ_CHECK(service.RegisterTimeServiceEventListener(&time) == 0);
  FUZZ_CHECK(service.RegisterInfoServiceEventListener(&info) == 0);
  FUZZ_CHECK(service.RegisterSenderServiceEventListener(&sender) == 0);
  FUZZ_CHECK(service.RegisterTransferService(&transfer) == 0);
  FUZZ_CHECK(service.Start() == 0);
  FUZZ_CHECK(transfer.Playlist() != nullptr);

  transfer.StartAnswering();
  int fillsLeft = 1;
  for (int step = 0; step < kMaxSteps && !script.Done(); ++step) {
    Step(script, service, transfer.Playlist(), &fillsLeft);
    // The documents of a long playlist now and then; everything else after every step.
    CheckPlaylistInvariants(*transfer.Playlist(), step % 16 == 15);
  }
  CheckPlaylistInvariants(*transfer.Playlist());
  transfer.StopAnswering();

  FUZZ_CHECK(service.Stop() == 0);
  FUZZ_CHECK(service.UnregisterPlaylistServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterProductServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterTimeServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterInfoServiceEventListener() == 0);
  FUZZ_CHECK(service.UnregisterSenderServiceEventListener() == 0);
  FUZZ_CHECK(service.Finalize() == 0);
  return 0;
}
