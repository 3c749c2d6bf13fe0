// Joining tracks without a gap: what the output wrote is exactly the samples of the tracks one after
// the other, bit for bit, and the stores move to the next track when it starts.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "MediaServing.h"
#include "Pcm.h"
#include "PcmDecoder.h"
#include "RendererHarness.h"
#include "WavReader.h"
#include "dmr_cmn/String.h"

namespace {

// The player writes what it plays to a WAV file, in real time.
class PlayerGapless : public RendererHarness {
 protected:
  PLAYER_Options Options() override {
    PLAYER_Options options = RendererHarness::Options();
    options.output = PLAYER_Output::WavFile;
    options.device = output_;
    return options;
  }

  // The samples the output wrote equal those of `tracks` one after the other.
  void ExpectOutputIsTheTracksJoined(const std::vector<ServedTrack>& tracks) {
    std::vector<PLAYER_Pcm> parts;
    for (const ServedTrack& track : tracks) {
      auto pcm = PLAYER_DecodeToPcm(track.file.path);
      ASSERT_TRUE(pcm);
      parts.push_back(*pcm);
    }
    const auto written = PLAYER_ReadWavPcm(output_);
    ASSERT_TRUE(written);
    const PLAYER_Pcm expected = PLAYER_ConcatenatePcm(parts);
    EXPECT_EQ(written->Frames(), expected.Frames());
    EXPECT_TRUE(PLAYER_SamePcm(*written, expected));
  }

  // The standard service does not dispatch SetNextAVTransportURI (the daemon serves it beside the
  // plug-in), so it is called on the player as the daemon will.
  int32_t SetNextUri(const std::string& uri) {
    DMR_CMN_String next;
    DMR_CMN_String metadata;
    next.SetCString(uri.c_str());
    metadata.SetCString("");
    return player_->SetNextAVTransportURI(7, 0, &next, &metadata);
  }

  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
  std::string output_ = media_.PathFor("output.wav");
};

TEST_F(PlayerGapless, NextUriOfWavTracksJoinsWithoutLosingASample) {
  const ServedTrack first = ServeTone(media_, server_, "/first.wav", 1000, 440);
  const ServedTrack second = ServeTone(media_, server_, "/second.wav", 1000, 660);
  ASSERT_FALSE(first.uri.empty());
  ASSERT_FALSE(second.uri.empty());
  ASSERT_NO_FATAL_FAILURE(PlayUri(first.uri));
  ASSERT_EQ(SetNextUri(second.uri), 0);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI), second.uri);

  ASSERT_TRUE(
      RunUntil([&] { return TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI) == second.uri; }, 4000));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_AV_TRANSPORT_URI), second.uri);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI), "");
  // The move reached the subscribers.
  EXPECT_TRUE(RunUntil(
      [&] {
        for (const auto& batch : transportHandler_.Batches()) {
          if (batch[0].second.find("<CurrentTrackURI val=\"" + second.uri + "\"") != std::string::npos)
            return true;
        }
        return false;
      },
      2000))
      << LastEvented(transportHandler_, "LastChange");

  ASSERT_TRUE(WaitForState("STOPPED", 4000));
  ExpectOutputIsTheTracksJoined({first, second});
}

TEST_F(PlayerGapless, NextUriOfFlacTracksJoinsWithoutLosingASample) {
  PLAYER_TrackParameters spec;
  spec.format = PLAYER_MediaFormat::kFlac;
  spec.durationMilliseconds = 1000;
  spec.frequency = 330;
  const ServedTrack first = ServeTrack(media_, server_, "/first.flac", spec);
  spec.frequency = 550;
  const ServedTrack second = ServeTrack(media_, server_, "/second.flac", spec);
  ASSERT_FALSE(first.uri.empty());
  ASSERT_FALSE(second.uri.empty());
  ASSERT_NO_FATAL_FAILURE(PlayUri(first.uri));
  ASSERT_EQ(SetNextUri(second.uri), 0);
  ASSERT_TRUE(
      RunUntil([&] { return TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI) == second.uri; }, 4000));
  ASSERT_TRUE(WaitForState("STOPPED", 4000));
  ExpectOutputIsTheTracksJoined({first, second});
}

TEST_F(PlayerGapless, OpenHomePlaylistPlaysEveryTrackInTurnWithoutLosingASample) {
  const ServedTrack one = ServeTone(media_, server_, "/one.wav", 700, 300);
  const ServedTrack two = ServeTone(media_, server_, "/two.wav", 700, 500);
  const ServedTrack three = ServeTone(media_, server_, "/three.wav", 700, 700);
  const uint64_t idOne = InsertTrack(one.uri);
  const uint64_t idTwo = InsertTrack(two.uri);
  const uint64_t idThree = InsertTrack(three.uri);
  Reply play = OpenHome("Play");
  ASSERT_EQ(play.result, 0);
  ASSERT_EQ(play.error, 0) << play.description;

  // "Id" follows the tracks as they start.
  std::vector<std::string> ids;
  ASSERT_TRUE(RunUntil(
      [&] {
        const std::string id = OpenHomeVariable(SINK_UPNP_PLAYLIST_ID);
        if (ids.empty() || ids.back() != id) ids.push_back(id);
        return TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE) == "STOPPED" && ids.size() >= 3;
      },
      6000));
  EXPECT_EQ(
      ids, (std::vector<std::string>{std::to_string(idOne), std::to_string(idTwo), std::to_string(idThree)}));
  EXPECT_EQ(LastEvented(playlistHandler_, "Id"), std::to_string(idThree));
  ExpectOutputIsTheTracksJoined({one, two, three});
}

// The next track fails (a 404) while the current one still plays: the current one plays to its end,
// and only then does the renderer stop with the error.
TEST_F(PlayerGapless, AFailingNextUriLetsTheCurrentTrackEndBeforeTheErrorShows) {
  const ServedTrack first = ServeTone(media_, server_, "/first.wav", 1500, 440);
  ASSERT_NO_FATAL_FAILURE(PlayUri(first.uri));
  ASSERT_EQ(SetNextUri(server_.Url("/missing.wav")), 0);
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(1000);
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS), "OK");
  ASSERT_TRUE(WaitForState("STOPPED", 3000));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI), server_.Url("/missing.wav"));
  // The first track was played whole.
  const auto written = PLAYER_ReadWavPcm(output_);
  ASSERT_TRUE(written);
  EXPECT_EQ(written->Frames(), first.file.frames);
}

// In a playlist the track that cannot be played is passed over.
TEST_F(PlayerGapless, AFailingPlaylistTrackIsPassedOver) {
  const ServedTrack one = ServeTone(media_, server_, "/one.wav", 700, 300);
  const ServedTrack three = ServeTone(media_, server_, "/three.wav", 700, 700);
  InsertTrack(one.uri);
  InsertTrack(server_.Url("/missing.wav"));
  const uint64_t idThree = InsertTrack(three.uri);
  ASSERT_EQ(OpenHome("Play").error, 0);
  ASSERT_TRUE(
      RunUntil([&] { return OpenHomeVariable(SINK_UPNP_PLAYLIST_ID) == std::to_string(idThree); }, 5000));
  ASSERT_TRUE(WaitForState("STOPPED", 4000));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_TRANSPORT_STATUS), "OK");
}

// Once the next track is queued, the pipeline reads it already: a seek restarts the current track there.
TEST_F(PlayerGapless, SeekWhileTheNextTrackIsQueuedStaysInTheCurrentTrack) {
  const ServedTrack one = ServeTone(media_, server_, "/one.wav", 4000, 300);
  const ServedTrack two = ServeTone(media_, server_, "/two.wav", 4000, 500);
  const uint64_t idOne = InsertTrack(one.uri);
  InsertTrack(two.uri);
  ASSERT_EQ(OpenHome("Play").error, 0);
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(1200);  // a local file is read whole long before its end: the next one is queued by now
  const Reply sought = Transport("Seek", {{"Unit", "REL_TIME"}, {"Target", "0:00:03"}});
  EXPECT_EQ(sought.error, 0);
  ASSERT_TRUE(WaitForState("PLAYING"));
  loop_.RunFor(200);
  EXPECT_EQ(PositionSeconds(), 3.0);
  EXPECT_EQ(OpenHomeVariable(SINK_UPNP_PLAYLIST_ID), std::to_string(idOne));
  EXPECT_EQ(TransportVariable(SINK_UPNP_AVT_CURRENT_TRACK_URI), one.uri);
}

}  // namespace
