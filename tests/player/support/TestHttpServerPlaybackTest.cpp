// GStreamer's own HTTP source against the test HTTP server: what the player's tests stand on.
#include <gtest/gtest.h>

#include <chrono>

#include "PcmDecoder.h"
#include "PlaybinRun.h"
#include "Stopwatch.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "WavReader.h"

namespace {

using std::chrono::milliseconds;

class TestHttpServerPlaybackTest : public ::testing::Test {
 protected:
  // Makes the file `track` describes and serves it at "/<name><extension>"; returns its path on the server.
  std::string Serve(const PLAYER_TrackParameters& track) {
    const std::optional<PLAYER_MediaFile> file = media_.Make(track);
    if (!file) return "";
    const std::optional<std::vector<std::uint8_t>> bytes = PLAYER_ReadFileBytes(file->path);
    if (!bytes) return "";
    const std::string path = file->path.substr(file->path.rfind('/'));
    server_.AddFile(path, *bytes, file->mimeType);
    return path;
  }

  PLAYER_TestMedia media_;
  PLAYER_TestHttpServer server_;
};

PLAYER_TrackParameters Track(PLAYER_MediaFormat format, const std::string& name) {
  PLAYER_TrackParameters track;
  track.format = format;
  track.durationMilliseconds = 500;
  track.name = name;
  return track;
}

}  // namespace

TEST_F(TestHttpServerPlaybackTest, PlaybinPlaysServedFilesOfEveryFormatToTheEnd) {
  const std::pair<PLAYER_MediaFormat, const char*> formats[] = {
      {PLAYER_MediaFormat::kWav, "a"},
      {PLAYER_MediaFormat::kFlac, "b"},
      {PLAYER_MediaFormat::kOggVorbis, "c"},
      {PLAYER_MediaFormat::kMp3, "d"},
  };
  for (const auto& [format, name] : formats) {
    const std::string path = Serve(Track(format, name));
    ASSERT_FALSE(path.empty());
    PlaybinRun run(server_.Url(path));
    ASSERT_TRUE(run.SetState(GST_STATE_PLAYING)) << path << ": " << run.Error();
    EXPECT_TRUE(run.WaitForEnd()) << path << ": " << run.Error();
    EXPECT_GE(server_.RequestCount(path), 1u) << path;
    const std::optional<PLAYER_HttpRequest> request = server_.LastRequest(path);
    ASSERT_TRUE(request) << path;
    EXPECT_FALSE(request->Header("User-Agent").value_or("").empty()) << path;
  }
}

TEST_F(TestHttpServerPlaybackTest, SeekInAServedWavAsksForTheRangeFromTheTargetSample) {
  PLAYER_TrackParameters track = Track(PLAYER_MediaFormat::kWav, "long");
  track.durationMilliseconds = 2000;
  const std::string path = Serve(track);
  ASSERT_FALSE(path.empty());
  PlaybinRun run(server_.Url(path));
  ASSERT_TRUE(run.SetState(GST_STATE_PAUSED)) << run.Error();
  ASSERT_TRUE(run.Seek(milliseconds(1000))) << run.Error();
  const std::optional<PLAYER_HttpRequest> request = server_.LastRequest(path);
  ASSERT_TRUE(request);
  // The data of the file starts after its 44-byte header; one second of 16-bit stereo at 44.1 kHz later.
  EXPECT_EQ(request->Header("Range"), "bytes=" + std::to_string(44 + 44100 * 4) + "-");
}

TEST_F(TestHttpServerPlaybackTest, ServedFlacDecodesToTheSamplesOfItsWav) {
  PLAYER_TrackParameters track = Track(PLAYER_MediaFormat::kFlac, "tone");
  const std::string path = Serve(track);
  ASSERT_FALSE(path.empty());
  track.format = PLAYER_MediaFormat::kWav;
  const std::optional<PLAYER_MediaFile> wav = media_.Make(track);
  ASSERT_TRUE(wav);
  const std::optional<PLAYER_Pcm> expected = PLAYER_ReadWavPcm(wav->path);
  const std::optional<PLAYER_Pcm> served = PLAYER_DecodeToPcm(server_.Url(path));
  ASSERT_TRUE(expected);
  ASSERT_TRUE(served);
  EXPECT_TRUE(PLAYER_SamePcm(*served, *expected));
}

TEST_F(TestHttpServerPlaybackTest, UnknownPathIsAnErrorOfPlaybinWithinASecond) {
  // A first pipeline loads the plug-ins, which takes most of a second in a fresh process under the
  // sanitizers; the bound below is for the answer alone.
  const std::string path = Serve(Track(PLAYER_MediaFormat::kWav, "a"));
  ASSERT_FALSE(path.empty());
  {
    PlaybinRun warmUp(server_.Url(path));
    ASSERT_TRUE(warmUp.SetState(GST_STATE_PAUSED)) << warmUp.Error();
  }
  PlaybinRun run(server_.Url("/missing.wav"));
  const Stopwatch watch;
  EXPECT_FALSE(run.SetState(GST_STATE_PAUSED, milliseconds(2000)));
  EXPECT_NE(run.Error().find("Not Found"), std::string::npos) << run.Error();
  EXPECT_LT(watch.Milliseconds(), 1000);
  EXPECT_EQ(server_.RequestCount("/missing.wav"), 1u);
}
