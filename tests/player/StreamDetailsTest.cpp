#include <gtest/gtest.h>

#include "StreamDetails.h"

namespace {

class PlayerStreamDetails : public ::testing::Test {
 protected:
  static void SetUpTestSuite() { gst_init(nullptr, nullptr); }
};

TEST_F(PlayerStreamDetails, CodecDescriptionsHaveShortNames) {
  bool lossless = false;
  EXPECT_EQ(PLAYER_ShortCodecName("Free Lossless Audio Codec (FLAC)", &lossless), "FLAC");
  EXPECT_TRUE(lossless);
  EXPECT_EQ(PLAYER_ShortCodecName("MPEG-1 Layer 3 (MP3)", &lossless), "MP3");
  EXPECT_FALSE(lossless);
  EXPECT_EQ(PLAYER_ShortCodecName("Vorbis", &lossless), "Vorbis");
  EXPECT_EQ(PLAYER_ShortCodecName("Something New", &lossless), "Something New");
  EXPECT_FALSE(lossless);
}

TEST_F(PlayerStreamDetails, DecodedCapsGiveRateChannelsAndDepth) {
  GstCaps* caps = gst_caps_from_string(
      "audio/x-raw, format=(string)S24_32LE, layout=(string)interleaved, rate=(int)96000, channels=(int)2, "
      "channel-mask=(bitmask)0x3");
  GstTagList* tags = gst_tag_list_new(GST_TAG_AUDIO_CODEC, "Free Lossless Audio Codec (FLAC)", nullptr);
  const PLAYER_StreamDetails details = PLAYER_ReadStreamDetails(caps, tags);
  EXPECT_EQ(details.sampleRate, 96000u);
  EXPECT_EQ(details.channels, 2u);
  EXPECT_EQ(details.bitDepth, 24u);
  EXPECT_EQ(details.codecName, "FLAC");
  EXPECT_TRUE(details.lossless);
  gst_tag_list_unref(tags);
  gst_caps_unref(caps);
}

TEST_F(PlayerStreamDetails, WavContainerIsLosslessWithItsPcmRate) {
  GstCaps* caps = gst_caps_from_string(
      "audio/x-raw, format=(string)S16LE, layout=(string)interleaved, rate=(int)44100, channels=(int)2, "
      "channel-mask=(bitmask)0x3");
  GstTagList* tags = gst_tag_list_new(GST_TAG_CONTAINER_FORMAT, "WAV", GST_TAG_AUDIO_CODEC,
                                      "Uncompressed 16-bit PCM audio", nullptr);
  const PLAYER_StreamDetails details = PLAYER_ReadStreamDetails(caps, tags);
  EXPECT_EQ(details.codecName, "WAV");
  EXPECT_TRUE(details.lossless);
  EXPECT_EQ(details.bitRate, 44100u * 2 * 16);
  gst_tag_list_unref(tags);
  gst_caps_unref(caps);
}

TEST_F(PlayerStreamDetails, FloatOutputSaysNothingOfTheDepth) {
  GstCaps* caps = gst_caps_from_string(
      "audio/x-raw, format=(string)F32LE, layout=(string)interleaved, rate=(int)44100, channels=(int)1");
  const PLAYER_StreamDetails details = PLAYER_ReadStreamDetails(caps, nullptr);
  EXPECT_EQ(details.bitDepth, 0u);
  EXPECT_EQ(details.sampleRate, 44100u);
  gst_caps_unref(caps);
}

}  // namespace
