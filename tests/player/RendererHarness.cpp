#include "RendererHarness.h"

#include <cstdio>

#include "OpenHomeUPnPServiceTestPeer.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

namespace {

constexpr unsigned long kHandle = 7;
constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManager[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kPlaylist[] = "urn:av-openhome-org:service:Playlist:1";

}  // namespace

PLAYER_Options RendererHarness::Options() {
  PLAYER_Options options;
  options.output = PLAYER_Output::Null;
  options.context = loop_.Context();
  return options;
}

void RendererHarness::StartRenderer(PLAYER_Clock* clock) {
  std::string error;
  player_ = std::make_unique<PLAYER_GStreamerPlayer>(Options(), clock, &error);
  ASSERT_TRUE(player_->Ready()) << error;
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/wav:*"), 0);
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", "http-get:*:audio/flac:*"), 0);

  ASSERT_EQ(transport_.Initialize(&properties_), 0);
  ASSERT_EQ(transport_.RegisterAVTransportServiceEventListener(&transportHandler_), 0);
  ASSERT_EQ(transport_.RegisterConnectionManagerServiceEventListener(&connectionHandler_), 0);
  ASSERT_EQ(transport_.RegisterTransferService(player_.get()), 0);
  ASSERT_EQ(transport_.Start(), 0);

  ASSERT_EQ(openHome_.Initialize(&properties_), 0);
  ASSERT_EQ(openHome_.RegisterPlaylistServiceEventListener(&playlistHandler_), 0);
  ASSERT_EQ(openHome_.RegisterProductServiceEventListener(&productHandler_), 0);
  ASSERT_EQ(openHome_.RegisterTimeServiceEventListener(&timeHandler_), 0);
  ASSERT_EQ(openHome_.RegisterInfoServiceEventListener(&infoHandler_), 0);
  ASSERT_EQ(openHome_.RegisterSenderServiceEventListener(&senderHandler_), 0);
  ASSERT_EQ(openHome_.RegisterTransferService(player_.get()), 0);
  ASSERT_EQ(openHome_.Start(), 0);
  started_ = true;
}

void RendererHarness::TearDown() {
  if (!started_) return;
  // The player lets go of the stores before the services delete them.
  EXPECT_EQ(player_->Finalize(), 0);
  EXPECT_EQ(transport_.Stop(), 0);
  EXPECT_EQ(transport_.UnregisterAVTransportServiceEventListener(), 0);
  EXPECT_EQ(transport_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(transport_.Finalize(), 0);
  EXPECT_EQ(openHome_.Stop(), 0);
  EXPECT_EQ(openHome_.UnregisterPlaylistServiceEventListener(), 0);
  EXPECT_EQ(openHome_.UnregisterProductServiceEventListener(), 0);
  EXPECT_EQ(openHome_.UnregisterTimeServiceEventListener(), 0);
  EXPECT_EQ(openHome_.UnregisterInfoServiceEventListener(), 0);
  EXPECT_EQ(openHome_.UnregisterSenderServiceEventListener(), 0);
  EXPECT_EQ(openHome_.Finalize(), 0);
  player_.reset();
}

RendererHarness::Reply RendererHarness::Perform(marlo::SinkContentTransferSubsystem& service,
                                                const char* serviceType, const char* action, const Args& in) {
  marlo::ActionRequest request;
  marlo::ActionResponse response;
  EXPECT_EQ(request.SetServiceType(serviceType), 0);
  EXPECT_EQ(request.SetActionName(action), 0);
  for (const auto& argument : in)
    EXPECT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
  Reply reply;
  reply.result = service.PerformAction(&request, &response, kHandle);
  reply.error = response.GetErrorCode();
  reply.description = response.GetErrorDescription() != nullptr ? response.GetErrorDescription() : "";
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    reply.out[response.GetArgumentName(i)] = response.GetArgumentValueAt(i);
  }
  return reply;
}

RendererHarness::Reply RendererHarness::Transport(const char* action, Args in) {
  in.insert(in.begin(), {"InstanceID", "0"});
  return Perform(transport_, kAVTransport, action, in);
}

RendererHarness::Reply RendererHarness::Connection(const char* action, Args in) {
  return Perform(transport_, kConnectionManager, action, in);
}

RendererHarness::Reply RendererHarness::OpenHome(const char* action, Args in) {
  return Perform(openHome_, kPlaylist, action, in);
}

void RendererHarness::PlayUri(const std::string& uri, const std::string& metadata) {
  Reply set = Transport("SetAVTransportURI", {{"CurrentURI", uri}, {"CurrentURIMetaData", metadata}});
  ASSERT_EQ(set.result, 0);
  ASSERT_EQ(set.error, 0) << set.description;
  Reply play = Transport("Play", {{"Speed", "1"}});
  ASSERT_EQ(play.result, 0);
  ASSERT_EQ(play.error, 0) << play.description;
}

std::string RendererHarness::TransportVariable(SINK_UPNP_StateVariableName_t index) {
  DMR_CMN_String value;
  EXPECT_EQ(SINK_UPNP_SinkCTSSUPnPServiceTestPeer::FrameStore(transport_)->GetStateVariable(index, &value),
            0);
  return value.GetCString() != nullptr ? value.GetCString() : "";
}

std::string RendererHarness::OpenHomeVariable(SINK_UPNP_StateVariableName_t index) {
  DMR_CMN_String value;
  EXPECT_EQ(SINK_UPNP_OpenHomeUPnPServiceTestPeer::Store(openHome_)->GetStateVariable(index, &value), 0);
  return value.GetCString() != nullptr ? value.GetCString() : "";
}

bool RendererHarness::RunUntil(const std::function<bool()>& predicate, int milliseconds) {
  return loop_.RunUntil(predicate, milliseconds);
}

bool RendererHarness::WaitForState(const std::string& state, int milliseconds) {
  return RunUntil([&] { return TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE) == state; }, milliseconds);
}

double RendererHarness::PositionSeconds() {
  Reply reply = Transport("GetPositionInfo");
  const std::string time = reply.out["RelTime"];
  unsigned hours = 0;
  unsigned minutes = 0;
  unsigned seconds = 0;
  if (std::sscanf(time.c_str(), "%u:%u:%u", &hours, &minutes, &seconds) != 3) return -1;
  return hours * 3600.0 + minutes * 60.0 + seconds;
}

std::vector<std::string> RendererHarness::EventedTransportStates() {
  std::vector<std::string> states;
  const std::string opening = "<TransportState val=\"";
  for (const auto& batch : transportHandler_.Batches()) {
    for (const auto& pair : batch) {
      const std::size_t start = pair.first == "LastChange" ? pair.second.find(opening) : std::string::npos;
      if (start == std::string::npos) continue;
      const std::size_t value = start + opening.size();
      states.push_back(pair.second.substr(value, pair.second.find('"', value) - value));
    }
  }
  return states;
}

std::string RendererHarness::LastEvented(const RecordingEventHandler& handler, const std::string& name) {
  std::string value;
  for (const auto& batch : handler.Batches()) {
    for (const auto& pair : batch) {
      if (pair.first == name) value = pair.second;
    }
  }
  return value;
}

uint64_t RendererHarness::InsertTrack(const std::string& uri, const std::string& metadata) {
  // Each track goes behind the one inserted before it (0: first).
  Reply inserted = OpenHome(
      "Insert", {{"AfterId", std::to_string(lastInsertedId_)}, {"Uri", uri}, {"Metadata", metadata}});
  EXPECT_EQ(inserted.result, 0);
  EXPECT_EQ(inserted.error, 0) << inserted.description;
  lastInsertedId_ = std::stoull(inserted.out["NewId"]);
  return lastInsertedId_;
}
