#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

#include "WavReader.h"

namespace {

void Append32(std::vector<std::uint8_t>* bytes, std::uint32_t value) {
  for (int i = 0; i < 4; ++i) bytes->push_back(static_cast<std::uint8_t>(value >> (8 * i)));
}
void Append16(std::vector<std::uint8_t>* bytes, std::uint16_t value) {
  bytes->push_back(static_cast<std::uint8_t>(value));
  bytes->push_back(static_cast<std::uint8_t>(value >> 8));
}
void AppendText(std::vector<std::uint8_t>* bytes, const std::string& text) {
  bytes->insert(bytes->end(), text.begin(), text.end());
}

// A "fmt " chunk body: format tag, channels, rate, byte rate, block align, bits.
std::vector<std::uint8_t> Format(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate,
                                 std::uint16_t bits) {
  std::vector<std::uint8_t> body;
  Append16(&body, tag);
  Append16(&body, channels);
  Append32(&body, rate);
  Append32(&body, rate * channels * bits / 8);
  Append16(&body, static_cast<std::uint16_t>(channels * bits / 8));
  Append16(&body, bits);
  return body;
}

void AppendChunk(std::vector<std::uint8_t>* bytes, const std::string& id,
                 const std::vector<std::uint8_t>& body, std::uint32_t declared) {
  AppendText(bytes, id);
  Append32(bytes, declared);
  bytes->insert(bytes->end(), body.begin(), body.end());
  if (body.size() % 2 == 1) bytes->push_back(0);
}
void AppendChunk(std::vector<std::uint8_t>* bytes, const std::string& id,
                 const std::vector<std::uint8_t>& body) {
  AppendChunk(bytes, id, body, static_cast<std::uint32_t>(body.size()));
}

std::vector<std::uint8_t> Riff() {
  std::vector<std::uint8_t> bytes;
  AppendText(&bytes, "RIFF");
  Append32(&bytes, 0);  // the reader does not rely on the RIFF size
  AppendText(&bytes, "WAVE");
  return bytes;
}

const std::vector<std::uint8_t> kSamples = {1, 2, 3, 4, 5, 6, 7, 8};

}  // namespace

TEST(WavReader, FindsFormatAndDataAmongOtherChunksOfOddSize) {
  std::vector<std::uint8_t> bytes = Riff();
  AppendChunk(&bytes, "LIST", {9, 9, 9});
  AppendChunk(&bytes, "fmt ", Format(1, 2, 48000, 16));
  AppendChunk(&bytes, "junk", {0});
  AppendChunk(&bytes, "data", kSamples);
  AppendChunk(&bytes, "LIST", {9, 9});
  std::string error;
  const std::optional<PLAYER_Pcm> pcm = PLAYER_ParseWavPcm(bytes, &error);
  ASSERT_TRUE(pcm) << error;
  EXPECT_EQ(pcm->rate, 48000);
  EXPECT_EQ(pcm->channels, 2);
  EXPECT_EQ(pcm->bits, 16);
  EXPECT_EQ(pcm->data, kSamples);
  EXPECT_EQ(pcm->Frames(), 2u);
}

TEST(WavReader, ExtensibleFormatWithThePcmSubFormatIsRead) {
  std::vector<std::uint8_t> format = Format(0xFFFE, 1, 44100, 24);
  Append16(&format, 22);  // cbSize
  Append16(&format, 24);  // valid bits
  Append32(&format, 4);   // channel mask
  Append16(&format, 1);   // the sub-format GUID, starting with the PCM tag
  format.resize(format.size() + 14, 0);
  std::vector<std::uint8_t> bytes = Riff();
  AppendChunk(&bytes, "fmt ", format);
  AppendChunk(&bytes, "data", {1, 2, 3, 4, 5, 6});
  std::string error;
  const std::optional<PLAYER_Pcm> pcm = PLAYER_ParseWavPcm(bytes, &error);
  ASSERT_TRUE(pcm) << error;
  EXPECT_EQ(pcm->bits, 24);
  EXPECT_EQ(pcm->Frames(), 2u);
}

TEST(WavReader, DataChunkDeclaredPastTheEndYieldsTheBytesThere) {
  std::vector<std::uint8_t> bytes = Riff();
  AppendChunk(&bytes, "fmt ", Format(1, 2, 44100, 16));
  AppendChunk(&bytes, "data", kSamples, 0x7FFF0000);
  std::string error;
  const std::optional<PLAYER_Pcm> pcm = PLAYER_ParseWavPcm(bytes, &error);
  ASSERT_TRUE(pcm) << error;
  EXPECT_EQ(pcm->data, kSamples);
}

TEST(WavReader, RejectsOtherFilesOtherEncodingsAndMissingChunks) {
  const auto Reason = [](const std::vector<std::uint8_t>& bytes) {
    std::string error;
    return PLAYER_ParseWavPcm(bytes, &error) ? std::string("parsed") : error;
  };
  EXPECT_EQ(Reason({'R', 'I', 'F', 'X'}), "not a RIFF/WAVE file");

  std::vector<std::uint8_t> floating = Riff();
  AppendChunk(&floating, "fmt ", Format(3, 2, 44100, 32));
  AppendChunk(&floating, "data", kSamples);
  EXPECT_EQ(Reason(floating), "not integer PCM (format tag 3)");

  std::vector<std::uint8_t> noData = Riff();
  AppendChunk(&noData, "fmt ", Format(1, 2, 44100, 16));
  EXPECT_EQ(Reason(noData), "no data chunk");

  std::vector<std::uint8_t> dataFirst = Riff();
  AppendChunk(&dataFirst, "data", kSamples);
  AppendChunk(&dataFirst, "fmt ", Format(1, 2, 44100, 16));
  EXPECT_EQ(Reason(dataFirst), "data chunk before the fmt chunk");
}

TEST(WavReader, MissingFileIsATestFailureNamingIt) {
  EXPECT_NONFATAL_FAILURE(EXPECT_FALSE(PLAYER_ReadWavPcm("/nonexistent/x.wav").has_value()),
                          "cannot open /nonexistent/x.wav");
}
