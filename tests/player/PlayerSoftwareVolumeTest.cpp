// The volume in software: what the output writes is the track's samples scaled by the volume, so a volume
// of 0 writes silence for the whole track and full volume writes the track bit for bit.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "MediaServing.h"
#include "Pcm.h"
#include "PcmDecoder.h"
#include "RendererHarness.h"
#include "WavReader.h"
#include "dmr_cmn/String.h"

namespace {

class PlayerSoftwareVolume : public RendererHarness {
 protected:
  PLAYER_Options Options() override {
    PLAYER_Options options = RendererHarness::Options();
    options.output = PLAYER_Output::WavFile;
    options.device = output_;
    return options;
  }

  void SetVolume(const char* level) {
    DMR_CMN_String value;
    value.SetCString(level);
    ASSERT_EQ(player_->SetVolume(7, 0, &value), 0);
  }

  // Plays `track` to its end and answers what the output wrote.
  PLAYER_Pcm PlayToTheEnd(const ServedTrack& track) {
    PlayUri(track.uri);
    EXPECT_TRUE(WaitForState("PLAYING"));
    EXPECT_TRUE(WaitForState("STOPPED", 5000));
    auto written = PLAYER_ReadWavPcm(output_);
    EXPECT_TRUE(written);
    return written ? *written : PLAYER_Pcm();
  }

  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
  std::string output_ = media_.PathFor("output.wav");
};

TEST_F(PlayerSoftwareVolume, VolumeZeroWritesSilenceForTheWholeTrack) {
  const ServedTrack track = ServeTone(media_, server_, "/tone.wav", 1000);
  ASSERT_FALSE(track.uri.empty());
  ASSERT_NO_FATAL_FAILURE(SetVolume("0"));
  const PLAYER_Pcm written = PlayToTheEnd(track);
  auto decoded = PLAYER_DecodeToPcm(track.file.path);
  ASSERT_TRUE(decoded);
  EXPECT_EQ(written.Frames(), decoded->Frames());
  EXPECT_GT(written.data.size(), 0u);
  EXPECT_TRUE(std::all_of(written.data.begin(), written.data.end(), [](std::uint8_t byte) { return byte == 0; }));
}

TEST_F(PlayerSoftwareVolume, FullVolumeWritesTheTrackBitForBit) {
  const ServedTrack track = ServeTone(media_, server_, "/tone.wav", 1000);
  ASSERT_FALSE(track.uri.empty());
  ASSERT_NO_FATAL_FAILURE(SetVolume("100"));
  const PLAYER_Pcm written = PlayToTheEnd(track);
  auto decoded = PLAYER_DecodeToPcm(track.file.path);
  ASSERT_TRUE(decoded);
  EXPECT_TRUE(PLAYER_SamePcm(written, *decoded));
}

}  // namespace
