// What the Info service tells of the playing stream: its real format from the decoder, and a radio
// stream's titles.
#include <gtest/gtest.h>

#include <string>

#include "MediaServing.h"
#include "RendererHarness.h"
#include "WavReader.h"

namespace {

class PlayerInfo : public RendererHarness {
 protected:
  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
};

TEST_F(PlayerInfo, FlacFileShowsItsDepthRateAndCodec) {
  PLAYER_TrackParameters spec;
  spec.format = PLAYER_MediaFormat::kFlac;
  spec.bits = 24;
  spec.rate = 48000;
  spec.durationMilliseconds = 2000;
  const ServedTrack track = ServeTrack(media_, server_, "/hires.flac", spec);
  ASSERT_FALSE(track.uri.empty());
  ASSERT_NO_FATAL_FAILURE(PlayUri(track.uri));
  ASSERT_TRUE(WaitForState("PLAYING"));
  ASSERT_TRUE(RunUntil([&] { return OpenHomeVariable(SINK_UPNP_INFO_SAMPLE_RATE) == "48000"; }, 3000));
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_BIT_DEPTH), "24");
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_LOSSLESS), "true");
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_CODEC_NAME), "FLAC");
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_URI), track.uri);
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_DURATION), "2");
  EXPECT_NE(OpenHomeVariable(SINK_UPNP_INFO_DETAILS_COUNT), "0");
  // Evented to Info's subscribers.
  EXPECT_TRUE(RunUntil([&] { return LastEvented(infoHandler_, "CodecName") == "FLAC"; }, 2000));
}

TEST_F(PlayerInfo, ANewUriClearsTheLastStreamsDetails) {
  PLAYER_TrackParameters parameters;
  parameters.format = PLAYER_MediaFormat::kFlac;
  parameters.durationMilliseconds = 2000;
  const ServedTrack track = ServeTrack(media_, server_, "/song.flac", parameters);
  ASSERT_NO_FATAL_FAILURE(PlayUri(track.uri));
  ASSERT_TRUE(RunUntil([&] { return OpenHomeVariable(SINK_UPNP_INFO_CODEC_NAME) == "FLAC"; }, 3000));
  ASSERT_EQ(Transport("Stop").error, 0);
  ASSERT_EQ(Transport("SetAVTransportURI", {{"CurrentURI", server_.Url("/other.wav")}}).error, 0);
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_CODEC_NAME), "");
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_SAMPLE_RATE), "0");
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_URI), server_.Url("/other.wav"));
}

TEST_F(PlayerInfo, Mp3FileIsLossy) {
  PLAYER_TrackParameters spec;
  spec.format = PLAYER_MediaFormat::kMp3;
  spec.durationMilliseconds = 2000;
  const ServedTrack track = ServeTrack(media_, server_, "/song.mp3", spec);
  ASSERT_FALSE(track.uri.empty());
  ASSERT_NO_FATAL_FAILURE(PlayUri(track.uri));
  ASSERT_TRUE(RunUntil([&] { return OpenHomeVariable(SINK_UPNP_INFO_CODEC_NAME) == "MP3"; }, 3000));
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_LOSSLESS), "false");
  EXPECT_NE(OpenHomeVariable(SINK_UPNP_INFO_BIT_RATE), "0");
}

TEST_F(PlayerInfo, RadioTitleChangesReachMetatextAndTheTrackMetadata) {
  PLAYER_TrackParameters spec;
  spec.format = PLAYER_MediaFormat::kMp3;
  spec.durationMilliseconds = 3000;
  const auto file = media_.Make(spec);
  ASSERT_TRUE(file);
  auto bytes = PLAYER_ReadFileBytes(file->path);
  ASSERT_TRUE(bytes);
  PLAYER_IcyStreamOptions radio;
  radio.bytesPerSecond = 16000;  // about the stream's own rate, as a station sends it
  server_.AddIcyStream("/radio", std::move(*bytes), 4096, {"Song A"}, radio);
  ASSERT_NO_FATAL_FAILURE(PlayUri(server_.Url("/radio")));
  ASSERT_TRUE(RunUntil(
      [&] { return OpenHomeVariable(SINK_UPNP_INFO_METATEXT).find("Song A") != std::string::npos; }, 5000));
  EXPECT_NE(TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_METADATA).find("<dc:title>Song A</dc:title>"),
            std::string::npos);
  EXPECT_TRUE(RunUntil(
      [&] { return LastEvented(infoHandler_, "Metatext").find("Song A") != std::string::npos; }, 2000));

  server_.SetIcyTitle("/radio", "Song B");
  EXPECT_TRUE(RunUntil(
      [&] { return OpenHomeVariable(SINK_UPNP_INFO_METATEXT).find("Song B") != std::string::npos; }, 5000));
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_INFO_METATEXT_COUNT), "2");
  EXPECT_EQ(Transport("Stop").error, 0);
}

}  // namespace
