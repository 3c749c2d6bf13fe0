// Media made by the tests: exact lengths, reproducible samples, lossless formats bit for bit.
#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "PcmDecoder.h"
#include "TestMedia.h"
#include "WavReader.h"

namespace {

PLAYER_TrackParameters Track(PLAYER_MediaFormat format, int rate, int channels, int bits, double frequency) {
  PLAYER_TrackParameters track;
  track.format = format;
  track.durationMilliseconds = 500;
  track.rate = rate;
  track.channels = channels;
  track.bits = bits;
  track.frequency = frequency;
  return track;
}

}  // namespace

TEST(TestMedia, WavHoldsExactlyTheFramesOfItsDurationInItsFormat) {
  PLAYER_TestMedia media;
  const std::optional<PLAYER_MediaFile> file = media.Make(Track(PLAYER_MediaFormat::kWav, 48000, 1, 16, 440));
  ASSERT_TRUE(file);
  EXPECT_EQ(file->frames, 24000u);
  EXPECT_EQ(file->mimeType, "audio/wav");
  const std::optional<PLAYER_Pcm> pcm = PLAYER_ReadWavPcm(file->path);
  ASSERT_TRUE(pcm);
  EXPECT_EQ(pcm->rate, 48000);
  EXPECT_EQ(pcm->channels, 1);
  EXPECT_EQ(pcm->bits, 16);
  EXPECT_EQ(pcm->Frames(), 24000u);
}

TEST(TestMedia, FrameCountOverridesTheDurationForLengthsOfNoWholeBuffer) {
  PLAYER_TestMedia media;
  PLAYER_TrackParameters track = Track(PLAYER_MediaFormat::kFlac, 44100, 2, 16, 440);
  track.frames = 22099;  // 7 buffers of 3157: no multiple of a usual buffer size
  const std::optional<PLAYER_MediaFile> file = media.Make(track);
  ASSERT_TRUE(file);
  EXPECT_EQ(file->frames, 22099u);
  const std::optional<PLAYER_Pcm> pcm = PLAYER_DecodeToPcm(file->path);
  ASSERT_TRUE(pcm);
  EXPECT_EQ(pcm->Frames(), 22099u);
}

TEST(TestMedia, LossyFormatsDecodeToAboutTheirFrames) {
  PLAYER_TestMedia media;
  const std::optional<PLAYER_MediaFile> ogg =
      media.Make(Track(PLAYER_MediaFormat::kOggVorbis, 44100, 2, 16, 440));
  const std::optional<PLAYER_MediaFile> mp3 = media.Make(Track(PLAYER_MediaFormat::kMp3, 48000, 2, 16, 440));
  ASSERT_TRUE(ogg);
  ASSERT_TRUE(mp3);
  EXPECT_EQ(ogg->mimeType, "audio/ogg");
  EXPECT_EQ(mp3->mimeType, "audio/mpeg");
  const std::optional<PLAYER_Pcm> oggPcm = PLAYER_DecodeToPcm(ogg->path);
  const std::optional<PLAYER_Pcm> mp3Pcm = PLAYER_DecodeToPcm(mp3->path);
  ASSERT_TRUE(oggPcm);
  ASSERT_TRUE(mp3Pcm);
  EXPECT_EQ(oggPcm->rate, 44100);
  EXPECT_GE(oggPcm->Frames(), ogg->frames);
  EXPECT_LE(oggPcm->Frames(), ogg->frames + 1);
  EXPECT_EQ(mp3Pcm->rate, 48000);
  EXPECT_GE(mp3Pcm->Frames(), mp3->frames);
}

TEST(TestMedia, Flac16DecodesBitForBitToTheWavOfTheSameTone) {
  PLAYER_TestMedia media;
  const std::optional<PLAYER_MediaFile> flac =
      media.Make(Track(PLAYER_MediaFormat::kFlac, 44100, 2, 16, 523.25));
  const std::optional<PLAYER_MediaFile> wav =
      media.Make(Track(PLAYER_MediaFormat::kWav, 44100, 2, 16, 523.25));
  ASSERT_TRUE(flac);
  ASSERT_TRUE(wav);
  EXPECT_EQ(flac->mimeType, "audio/flac");
  const std::optional<PLAYER_Pcm> decoded = PLAYER_DecodeToPcm(flac->path);
  const std::optional<PLAYER_Pcm> expected = PLAYER_ReadWavPcm(wav->path);
  ASSERT_TRUE(decoded);
  ASSERT_TRUE(expected);
  EXPECT_EQ(expected->Frames(), 22050u);
  EXPECT_TRUE(PLAYER_SamePcm(*decoded, *expected));
}

TEST(TestMedia, Flac24DecodesBitForBitToThe24BitWavOfTheSameTone) {
  PLAYER_TestMedia media;
  const std::optional<PLAYER_MediaFile> flac =
      media.Make(Track(PLAYER_MediaFormat::kFlac, 48000, 2, 24, 330));
  const std::optional<PLAYER_MediaFile> wav = media.Make(Track(PLAYER_MediaFormat::kWav, 48000, 2, 24, 330));
  ASSERT_TRUE(flac);
  ASSERT_TRUE(wav);
  EXPECT_EQ(flac->bits, 24);
  const std::optional<PLAYER_Pcm> decoded = PLAYER_DecodeToPcm(flac->path, PLAYER_PcmFormat::kS24LE);
  const std::optional<PLAYER_Pcm> expected = PLAYER_ReadWavPcm(wav->path);
  ASSERT_TRUE(decoded);
  ASSERT_TRUE(expected);
  EXPECT_EQ(expected->bits, 24);
  EXPECT_EQ(expected->Frames(), 24000u);
  EXPECT_TRUE(PLAYER_SamePcm(*decoded, *expected));
}

TEST(TestMedia, SameParametersGiveTheSameSamplesAndAnotherFrequencyOthers) {
  PLAYER_TestMedia media;
  const std::optional<PLAYER_MediaFile> a1 = media.Make(Track(PLAYER_MediaFormat::kWav, 44100, 2, 16, 440));
  const std::optional<PLAYER_MediaFile> a2 = media.Make(Track(PLAYER_MediaFormat::kWav, 44100, 2, 16, 440));
  const std::optional<PLAYER_MediaFile> b = media.Make(Track(PLAYER_MediaFormat::kWav, 44100, 2, 16, 660));
  ASSERT_TRUE(a1 && a2 && b);
  EXPECT_NE(a1->path, a2->path);
  const std::optional<PLAYER_Pcm> pcmA1 = PLAYER_ReadWavPcm(a1->path);
  const std::optional<PLAYER_Pcm> pcmA2 = PLAYER_ReadWavPcm(a2->path);
  const std::optional<PLAYER_Pcm> pcmB = PLAYER_ReadWavPcm(b->path);
  ASSERT_TRUE(pcmA1 && pcmA2 && pcmB);
  EXPECT_TRUE(PLAYER_SamePcm(*pcmA1, *pcmA2));
  EXPECT_FALSE(PLAYER_SamePcm(*pcmA1, *pcmB));
  EXPECT_TRUE(PLAYER_SamePcm(PLAYER_ConcatenatePcm({*pcmA1, *pcmB}), PLAYER_ConcatenatePcm({*pcmA2, *pcmB})));
  EXPECT_EQ(PLAYER_ConcatenatePcm({*pcmA1, *pcmB}).Frames(), 2 * 22050u);
}

TEST(TestMedia, NamedFileAndPathsForOutputAreInsideItsDirectoryWhichGoesWithIt) {
  std::string directory;
  {
    PLAYER_TestMedia media;
    directory = media.Directory();
    ASSERT_TRUE(std::filesystem::is_directory(directory));
    PLAYER_TrackParameters track = Track(PLAYER_MediaFormat::kWav, 44100, 2, 16, 440);
    track.name = "first";
    const std::optional<PLAYER_MediaFile> file = media.Make(track);
    ASSERT_TRUE(file);
    EXPECT_EQ(file->path, directory + "/first.wav");
    EXPECT_EQ(media.PathFor("out.wav"), directory + "/out.wav");
  }
  EXPECT_FALSE(std::filesystem::exists(directory));
}

TEST(TestMedia, ImpossibleTracksAndUndecodableFilesAreTestFailuresSayingWhy) {
  PLAYER_TestMedia media;
  EXPECT_NONFATAL_FAILURE(media.Make(Track(PLAYER_MediaFormat::kFlac, 44100, 2, 20, 440)),
                          "bits must be 16 or 24");
  EXPECT_NONFATAL_FAILURE(media.Make(Track(PLAYER_MediaFormat::kWav, 0, 2, 16, 440)),
                          "rate must be positive");
  // MP3 has no layout for six channels: the encoder refuses them.
  EXPECT_NONFATAL_FAILURE(media.Make(Track(PLAYER_MediaFormat::kMp3, 44100, 6, 16, 440)), "cannot make");
  EXPECT_NONFATAL_FAILURE(PLAYER_DecodeToPcm(media.PathFor("absent.flac")), "cannot decode");
}
