// The player behind the AVTransport service: real media over HTTP from a server on 127.0.0.1, played on
// the real-time null output, driven through the service object's actions.
#include <gtest/gtest.h>

#include <chrono>
#include <string>
#include <vector>

#include "MediaServing.h"
#include "RendererHarness.h"
#include "SilentPort.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "WavReader.h"
#include "dmr_cmn/String.h"
#include "player/Player.h"
#include "sink_core/TransferService.h"

namespace {

class PlayerTransport : public RendererHarness {
 protected:
  std::string ServeWav(const std::string& path, int milliseconds, double frequency = 440.0) {
    return ServeTone(media_, server_, path, milliseconds, frequency).uri;
  }

  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
};

TEST_F(PlayerTransport, PlayGoesThroughTransitioningToPlayingInTheStoreAndTheEvents) {
  const std::string uri = ServeWav("/tone.wav", 3000);
  ASSERT_FALSE(uri.empty());
  ASSERT_NO_FATAL_FAILURE(PlayUri(uri));
  // The answer to GetTransportInfo right after Play is never STOPPED.
  const std::string state = Transport("GetTransportInfo").out["CurrentTransportState"];
  EXPECT_TRUE(state == "TRANSITIONING" || state == "PLAYING") << state;
  ASSERT_TRUE(WaitForState("PLAYING"));
  ASSERT_TRUE(RunUntil([&] {
    const auto states = EventedTransportStates();
    return !states.empty() && states.back() == "PLAYING";
  }));
  const std::vector<std::string> states = EventedTransportStates();
  ASSERT_GE(states.size(), 3u);
  EXPECT_EQ(states[states.size() - 3], "STOPPED");
  EXPECT_EQ(states[states.size() - 2], "TRANSITIONING");
  EXPECT_EQ(states[states.size() - 1], "PLAYING");
}

TEST_F(PlayerTransport, StoreShowsTransitioningWhileTheServerIsSlowToAnswer) {
  const auto file = media_.Make(PLAYER_TrackParameters());
  ASSERT_TRUE(file);
  auto bytes = PLAYER_ReadFileBytes(file->path);
  ASSERT_TRUE(bytes);
  PLAYER_HttpFileOptions slow;
  slow.delay = std::chrono::milliseconds(2500);
  server_.AddFile("/slow.wav", std::move(*bytes), file->mimeType, slow);
  ASSERT_NO_FATAL_FAILURE(PlayUri(server_.Url("/slow.wav")));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "TRANSITIONING");
  EXPECT_EQ(Transport("GetTransportInfo").out["CurrentTransportState"], "TRANSITIONING");
  EXPECT_TRUE(WaitForState("PLAYING", 8000));
}

TEST_F(PlayerTransport, PositionAdvancesWhilePlaying) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 4000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(2200);
  const double position = PositionSeconds();
  EXPECT_GE(position, 1.0);
  EXPECT_LE(position, 3.0);
  EXPECT_EQ(Transport("GetPositionInfo").out["TrackDuration"], "00:00:04");
}

TEST_F(PlayerTransport, SeekRelativeTimeLandsWithinHalfASecond) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 6000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  Reply sought = Transport("Seek", {{"Unit", "REL_TIME"}, {"Target", "0:00:04"}});
  EXPECT_EQ(sought.result, 0);
  EXPECT_EQ(sought.error, 0);
  // Whole seconds: 4 means the position is within [4.0, 5.0), and it is read within 0.4 s of the seek.
  loop_.RunFor(100);
  EXPECT_EQ(PositionSeconds(), 4.0);
}

TEST_F(PlayerTransport, SeekBeyondTheTrackIsAnIllegalTarget) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 2000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  EXPECT_EQ(Transport("Seek", {{"Unit", "REL_TIME"}, {"Target", "0:00:09"}}).error, 711);
  EXPECT_EQ(Transport("Seek", {{"Unit", "REL_TIME"}, {"Target", "soon"}}).error, 711);
  EXPECT_EQ(Transport("Seek", {{"Unit", "X_DLNA_REL_BYTE"}, {"Target", "100"}}).error, 710);
}

TEST_F(PlayerTransport, PauseAndPlayResume) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 4000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(1200);
  Reply paused = Transport("Pause");
  EXPECT_EQ(paused.result, 0);
  EXPECT_EQ(paused.error, 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "PAUSED_PLAYBACK");
  const double at = PositionSeconds();
  loop_.RunFor(1200);
  EXPECT_EQ(PositionSeconds(), at);
  EXPECT_EQ(Transport("Play", {{"Speed", "1"}}).error, 0);
  EXPECT_TRUE(WaitForState("PLAYING"));
}

TEST_F(PlayerTransport, EndOfStreamStops) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/short.wav", 700)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  EXPECT_TRUE(WaitForState("STOPPED", 4000));
  EXPECT_EQ(Transport("GetTransportInfo").out["CurrentTransportStatus"], "OK");
  EXPECT_EQ(Transport("GetPositionInfo").out["RelTime"], "00:00:00");
}

TEST_F(PlayerTransport, MissingResourceIsResourceNotFound) {
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", server_.Url("/missing.wav")}}).error, 0);
  const auto start = std::chrono::steady_clock::now();
  Reply play = Transport("Play", {{"Speed", "1"}});
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(1500));
  EXPECT_EQ(play.result, 0);
  EXPECT_EQ(play.error, 716);
  EXPECT_EQ(play.description, "Resource not found");
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "STOPPED");
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
}

TEST_F(PlayerTransport, UnplayableTypeIsIllegalMimeType) {
  server_.AddFile("/noise.wav", std::vector<std::uint8_t>(20000, 0x5a), "audio/wav");
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", server_.Url("/noise.wav")}}).error, 0);
  Reply play = Transport("Play", {{"Speed", "1"}});
  EXPECT_EQ(play.error, 714);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
}

// An HTTP source that gives up on a silent server after 3 s, past the 1.5 s an action waits.
class PlayerTransportWithShortNetworkTimeout : public PlayerTransport {
 protected:
  PLAYER_Options Options() override {
    PLAYER_Options options = PlayerTransport::Options();
    options.networkTimeoutSeconds = 3;
    return options;
  }
};

TEST_F(PlayerTransportWithShortNetworkTimeout, SilentServerIsAnsweredWithinTheBoundAndReportedLater) {
  // GStreamer warmed up first, so that only the wait for the server is measured.
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/warm-up.wav", 500)));
  ASSERT_EQ(Transport("Stop").error, 0);
  PLAYER_SilentPort silent;
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", silent.Url("/never.wav")}}).error, 0);
  const auto start = std::chrono::steady_clock::now();
  Reply play = Transport("Play", {{"Speed", "1"}});
  const auto took = std::chrono::steady_clock::now() - start;
  EXPECT_EQ(play.result, 0);
  EXPECT_EQ(play.error, 0);
  EXPECT_LT(took, std::chrono::milliseconds(2000));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "TRANSITIONING");
  // The HTTP source gives up after the network timeout the test set.
  EXPECT_TRUE(
      RunUntil([&] { return TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS) == "ERROR_OCCURRED"; }, 8000));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "STOPPED");
}

TEST_F(PlayerTransport, PlayWithoutMediaIsTransitionNotAvailable) {
  Reply play = Transport("Play", {{"Speed", "1"}});
  EXPECT_EQ(play.error, 701);
  EXPECT_EQ(play.description, "Transition not available");
}

TEST_F(PlayerTransport, PauseWhileStoppedAnswersZeroAndChangesNothing) {
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", ServeWav("/tone.wav", 1000)}}).error, 0);
  Reply paused = Transport("Pause");
  EXPECT_EQ(paused.result, 0);
  EXPECT_EQ(paused.error, 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "STOPPED");
}

TEST_F(PlayerTransport, OtherSpeedsAreNotSupported) {
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", ServeWav("/tone.wav", 1000)}}).error, 0);
  EXPECT_EQ(Transport("Play", {{"Speed", "2"}}).error, 717);
}

TEST_F(PlayerTransport, SetUriWhilePlayingSwitchesAndKeepsPlaying) {
  const std::string first = ServeWav("/first.wav", 5000, 440);
  const std::string second = ServeWav("/second.wav", 5000, 880);
  ASSERT_NO_FATAL_FAILURE(PlayUri(first));
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(1500);
  EXPECT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", second}}).error, 0);
  EXPECT_TRUE(WaitForState("PLAYING"));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI), second);
  EXPECT_EQ(Transport("GetMediaInfo").out["CurrentURI"], second);
  EXPECT_LT(PositionSeconds(), 1.5);
}

TEST_F(PlayerTransport, StopIsAcceptedInEveryState) {
  EXPECT_EQ(Transport("Stop").error, 0);
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 3000)));
  EXPECT_EQ(Transport("Stop").error, 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "STOPPED");
  EXPECT_EQ(Transport("Stop").error, 0);
}

TEST_F(PlayerTransport, QueriesFillEveryOutArgument) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 3000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  Reply media = Transport("GetMediaInfo");
  EXPECT_EQ(media.out.size(), 9u);
  EXPECT_EQ(media.out["NrTracks"], "1");
  EXPECT_EQ(media.out["PlayMedium"], "NETWORK");
  Reply position = Transport("GetPositionInfo");
  EXPECT_EQ(position.out.size(), 8u);
  EXPECT_EQ(position.out["Track"], "1");
  Reply settings = Transport("GetTransportSettings");
  EXPECT_EQ(settings.out["PlayMode"], "NORMAL");
  EXPECT_EQ(Transport("GetCurrentTransportActions").out["Actions"], "Pause,Stop,Seek");
  EXPECT_EQ(Transport("GetDeviceCapabilities").out["PlayMedia"], "NONE,NETWORK");
  Reply protocol = Connection("GetProtocolInfo");
  EXPECT_EQ(protocol.out["Sink"], "http-get:*:audio/wav:*,http-get:*:audio/flac:*");
  EXPECT_EQ(Connection("GetCurrentConnectionIDs").out["ConnectionIDs"], "0");
  EXPECT_EQ(Connection("GetCurrentConnectionInfo", {{"ConnectionID", "0"}}).out.size(), 7u);
}

TEST_F(PlayerTransport, UnsupportedPlayModeIsRefused) {
  Reply refused = Transport("SetPlayMode", {{"NewPlayMode", "SHUFFLE"}});
  EXPECT_EQ(refused.result, 0);
  EXPECT_EQ(refused.error, 712);
  EXPECT_EQ(refused.description, "Play mode not supported");
  EXPECT_EQ(Transport("SetPlayMode", {{"NewPlayMode", "REPEAT_ONE"}}).error, 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_CURRENT_PLAY_MODE), "REPEAT_ONE");
}

}  // namespace

namespace {

// The RenderingControl pair, called on the player as the daemon will serve them.
class PlayerVolume : public PlayerTransport {
 protected:
  int32_t Call(int32_t (PLAYER_GStreamerPlayer::*operation)(unsigned long, unsigned long, DMR_CMN_String*),
               const std::string& text, std::string* answer = nullptr) {
    DMR_CMN_String value;
    if (!text.empty()) value.SetCString(text.c_str());
    const int32_t result = (player_.get()->*operation)(7, 0, &value);
    if (answer != nullptr) *answer = value.GetCString() != nullptr ? value.GetCString() : "";
    return result;
  }
};

TEST_F(PlayerVolume, VolumeIsKeptOnTheHundredStepScale) {
  std::string volume;
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::GetVolume, "", &volume), 0);
  EXPECT_EQ(volume, "100");
  for (const char* level : {"0", "1", "37", "50", "99", "100"}) {
    EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetVolume, level), 0);
    EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::GetVolume, "", &volume), 0);
    EXPECT_EQ(volume, level);
  }
}

TEST_F(PlayerVolume, VolumeOutOfRangeOrNoNumberIsRefused) {
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetVolume, "101"), 601);
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetVolume, "-1"), 402);
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetVolume, "loud"), 402);
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetVolume, ""), 402);
}

TEST_F(PlayerVolume, MuteTakesBothSpellingsOfABoolean) {
  std::string mute;
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetMute, "1"), 0);
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::GetMute, "", &mute), 0);
  EXPECT_EQ(mute, "1");
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetMute, "false"), 0);
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::GetMute, "", &mute), 0);
  EXPECT_EQ(mute, "0");
  EXPECT_EQ(Call(&PLAYER_GStreamerPlayer::SetMute, "maybe"), 402);
}

TEST_F(PlayerTransport, NextWithoutANextUriIsTransitionNotAvailable) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 3000)));
  EXPECT_EQ(Transport("Next").error, 701);
  EXPECT_EQ(Transport("Previous").error, 701);
}

TEST_F(PlayerTransport, NextGoesToTheNextUri) {
  const std::string second = ServeWav("/second.wav", 3000, 880);
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/first.wav", 3000)));
  DMR_CMN_String next;
  DMR_CMN_String metadata;
  next.SetCString(second.c_str());
  metadata.SetCString("");
  ASSERT_EQ(player_->SetNextAVTransportURI(7, 0, &next, &metadata), 0);
  EXPECT_EQ(Transport("GetCurrentTransportActions").out["Actions"], "Pause,Stop,Seek,Next");
  EXPECT_EQ(Transport("Next").error, 0);
  EXPECT_TRUE(WaitForState("PLAYING"));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI), second);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI), "");
}

TEST_F(PlayerTransport, SeekToTrackOneRestartsTheTrackAndNoOtherTrackExists) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 4000)));
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(1200);
  EXPECT_EQ(Transport("Seek", {{"Unit", "TRACK_NR"}, {"Target", "1"}}).error, 0);
  loop_.RunFor(100);
  EXPECT_EQ(PositionSeconds(), 0.0);
  EXPECT_EQ(Transport("Seek", {{"Unit", "TRACK_NR"}, {"Target", "2"}}).error, 711);
}

TEST_F(PlayerTransport, SeekWhileStoppedStartsThereAtPlay) {
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", ServeWav("/tone.wav", 5000)}}).error, 0);
  EXPECT_EQ(Transport("Seek", {{"Unit", "ABS_TIME"}, {"Target", "00:00:03"}}).error, 0);
  EXPECT_EQ(Transport("GetPositionInfo").out["RelTime"], "00:00:03");
  ASSERT_EQ(Transport("Play", {{"Speed", "1"}}).error, 0);
  ASSERT_TRUE(WaitForState("PLAYING"));
  EXPECT_GE(PositionSeconds(), 3.0);
}

TEST_F(PlayerTransport, EmptyUriTakesTheMediaAway) {
  ASSERT_NO_FATAL_FAILURE(PlayUri(ServeWav("/tone.wav", 3000)));
  EXPECT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", ""}}).error, 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(Transport("GetMediaInfo").out["NrTracks"], "0");
}

TEST_F(PlayerTransport, UriWithoutASourceIsResourceNotFound) {
  const Reply set = Transport("SetAVTransportURI", {{"CurrentURI", "nosuchscheme://host/x.wav"}});
  EXPECT_EQ(set.error, 716);
  EXPECT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", "not a uri"}}).error, 716);
  // Only what media servers give is played: no local file, descriptor or socket of the renderer.
  for (const char* uri : {"file:///etc/passwd", "fd://0", "udp://127.0.0.1:5999"}) {
    EXPECT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", uri}}).error, 716) << uri;
  }
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
}

TEST(PlayerOutput, AnOutputWhosePluginIsMissingSaysSo) {
  gst_init(nullptr, nullptr);
  GstElementFactory* alsa = gst_element_factory_find("alsasink");
  PLAYER_Options options;
  options.output = PLAYER_Output::Alsa;
  options.device = "hw:0";
  std::string error;
  auto player = PLAYER_CreatePlayer(options, &error);
  if (alsa != nullptr) {
    EXPECT_NE(player, nullptr);
    gst_object_unref(alsa);
  } else {
    EXPECT_EQ(player, nullptr);
    EXPECT_NE(error.find("alsasink"), std::string::npos) << error;
  }
}

TEST(PlayerOutput, WavOutputNeedsAPath) {
  PLAYER_Options options;
  options.output = PLAYER_Output::WavFile;
  std::string error;
  EXPECT_EQ(PLAYER_CreatePlayer(options, &error), nullptr);
  EXPECT_NE(error.find("path"), std::string::npos) << error;
}

}  // namespace
