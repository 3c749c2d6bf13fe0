// The renderer as the daemon runs it, on the real GStreamer player (null output): both service objects,
// the daemon's own services, the event bridges and the router, with WAV tracks from a server on
// 127.0.0.1. The main loop serves actions while the streaming threads report to the player and the
// eventing threads hand their batches over; the binary runs under ThreadSanitizer (label "threads"), where
// any report fails it.
#include <gtest/gtest.h>
#include <glib.h>

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "EventSink.h"
#include "MainLoopRunner.h"
#include "MediaServing.h"
#include "Renderer.h"
#include "marlo/Properties.h"
#include "player/Player.h"
#include "sink_core/TransferService.h"

namespace {

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kRenderingControl[] = "urn:schemas-upnp-org:service:RenderingControl:1";
constexpr char kPlaylist[] = "urn:av-openhome-org:service:Playlist:1";

using Arguments = std::vector<std::pair<std::string, std::string>>;

// The batches the main loop delivered; only the main loop writes or reads them.
class CountingEventSink : public HOST_EventSink {
 public:
  void Notify(const std::string& serviceType, const HOST_EventBatch&) override { services.push_back(serviceType); }
  std::size_t Count(const std::string& serviceType) const {
    return static_cast<std::size_t>(std::count(services.begin(), services.end(), serviceType));
  }
  std::vector<std::string> services;
};

std::string Body(const char* serviceType, const std::string& action, const Arguments& arguments) {
  std::string body =
      "<?xml version=\"1.0\"?><s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
      "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body><u:" + action + " xmlns:u=\"" +
      serviceType + "\">";
  for (const auto& [name, value] : arguments) body += "<" + name + ">" + value + "</" + name + ">";
  return body + "</u:" + action + "></s:Body></s:Envelope>";
}

std::string Out(const HOST_ActionOutcome& outcome, const std::string& name) {
  for (const auto& [key, value] : outcome.out) {
    if (key == name) return value;
  }
  return "";
}

class RendererPlaybackTest : public ::testing::Test {
 protected:
  void SetUp() override {
    first_ = ServeTone(media_, server_, "/first.wav", 3000).uri;
    second_ = ServeTone(media_, server_, "/second.wav", 3000, 660.0).uri;
    ASSERT_FALSE(first_.empty());
    ASSERT_FALSE(second_.empty());
    PLAYER_Options options;
    options.output = PLAYER_Output::Null;
    options.context = loop_.Context();
    std::string error;
    player_ = PLAYER_CreatePlayer(options, &error);
    ASSERT_NE(player_, nullptr) << error;
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/wav:*"), 0);
    renderer_ = std::make_unique<HOST_Renderer>(player_.get(), &events_, loop_.Context());
    HOST_StepFailure failure;
    ASSERT_TRUE(renderer_->Prepare(&properties_, &failure)) << failure.step << " " << failure.result;
    ASSERT_TRUE(renderer_->Start("127.0.0.1", &failure)) << failure.step << " " << failure.result;
  }

  void TearDown() override {
    if (renderer_ != nullptr) {
      HOST_StepFailure failure;
      EXPECT_TRUE(renderer_->Shutdown(&failure)) << failure.step << " " << failure.result;
      loop_.RunFor(50);
      renderer_.reset();
    }
    player_.reset();
    server_.Stop();
  }

  HOST_ActionOutcome Perform(const char* serviceType, const std::string& action, const Arguments& arguments) {
    const std::string body = Body(serviceType, action, arguments);
    return renderer_->Router().Perform(serviceType, body.data(), body.size());
  }

  // An action the renderer must answer without a fault.
  HOST_ActionOutcome Expect(const char* serviceType, const std::string& action, const Arguments& arguments) {
    HOST_ActionOutcome outcome = Perform(serviceType, action, arguments);
    EXPECT_EQ(outcome.errorCode, 0) << action << ": " << outcome.errorDescription;
    return outcome;
  }

  HOST_ActionOutcome Transport(const std::string& action, Arguments arguments = {}) {
    arguments.insert(arguments.begin(), {"InstanceID", "0"});
    return Expect(kAVTransport, action, arguments);
  }

  // Serves GetTransportInfo and GetPositionInfo from the main loop, as control points polling would,
  // until the transport reports `state`.
  bool ServeUntilState(const std::string& state, int milliseconds = 5000) {
    return loop_.RunUntil(
        [&] {
          Transport("GetPositionInfo");
          return Out(Transport("GetTransportInfo"), "CurrentTransportState") == state;
        },
        milliseconds);
  }

  PLAYER_MainLoopRunner loop_;
  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
  std::string first_;
  std::string second_;
  std::unique_ptr<SINK_CORE_TransferService> player_;
  marlo::Properties properties_;
  CountingEventSink events_;
  std::unique_ptr<HOST_Renderer> renderer_;
};

TEST_F(RendererPlaybackTest, PlayStopSeekAndNextTrackWhileTheMainLoopServesActionsAndEvents) {
  for (int round = 0; round < 3; ++round) {
    Transport("SetAVTransportURI", {{"CurrentURI", first_}, {"CurrentURIMetaData", ""}});
    Transport("SetNextAVTransportURI", {{"NextURI", second_}, {"NextURIMetaData", ""}});
    Transport("Play", {{"Speed", "1"}});
    ASSERT_TRUE(ServeUntilState("PLAYING")) << "round " << round;
    Transport("Seek", {{"Unit", "REL_TIME"}, {"Target", "00:00:01"}});
    Expect(kRenderingControl, "SetVolume", {{"InstanceID", "0"}, {"Channel", "Master"}, {"DesiredVolume", "40"}});
    loop_.RunFor(200);
    Transport("Next");
    ASSERT_TRUE(ServeUntilState("PLAYING")) << "round " << round;
    EXPECT_EQ(Out(Transport("GetMediaInfo"), "CurrentURI"), second_);
    Transport("Stop");
    ASSERT_TRUE(ServeUntilState("STOPPED")) << "round " << round;
  }
  loop_.RunFor(300);
  EXPECT_GT(events_.Count(kAVTransport), 0u);
}

TEST_F(RendererPlaybackTest, OpenHomePlaylistPlaysOnIntoItsNextTrackWhileTheMainLoopServesActions) {
  const HOST_ActionOutcome first =
      Expect(kPlaylist, "Insert", {{"AfterId", "0"}, {"Uri", first_}, {"Metadata", ""}});
  const std::string firstId = Out(first, "NewId");
  Expect(kPlaylist, "Insert", {{"AfterId", firstId}, {"Uri", second_}, {"Metadata", ""}});
  Expect(kPlaylist, "SeekId", {{"Value", firstId}});
  Expect(kPlaylist, "Play", {});
  ASSERT_TRUE(ServeUntilState("PLAYING"));
  Expect(kPlaylist, "SeekSecondAbsolute", {{"Value", "2"}});
  // The first track ends on a streaming thread and the player moves on to the second.
  EXPECT_TRUE(loop_.RunUntil(
      [&] {
        Expect(kPlaylist, "IdArray", {});
        return Out(Expect(kPlaylist, "Id", {}), "Value") != firstId;
      },
      8000));
  Expect(kPlaylist, "Stop", {});
  ASSERT_TRUE(ServeUntilState("STOPPED"));
  loop_.RunFor(300);
  EXPECT_GT(events_.Count(kPlaylist), 0u);
}

}  // namespace
