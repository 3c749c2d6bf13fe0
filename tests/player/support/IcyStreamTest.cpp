// The test HTTP server's ICY streams: the bytes on the wire, and the titles a real playbin reads from them.
#include <gtest/gtest.h>

#include <chrono>

#include "IcyMetadata.h"
#include "LoopbackClient.h"
#include "PlaybinRun.h"
#include "Stopwatch.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "WavReader.h"

namespace {

using std::chrono::milliseconds;

const std::string kBlockA = PLAYER_IcyMetadataBlock("Song A");
const std::string kBlockB = PLAYER_IcyMetadataBlock("Song B");
const std::string kBlockC = PLAYER_IcyMetadataBlock("Song C");
const std::string kUnchanged = PLAYER_IcyUnchangedBlock();

std::vector<std::uint8_t> Audio(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i % 251);
  return bytes;
}

// The audio loop from `position`, `count` bytes of it.
std::string Loop(const std::vector<std::uint8_t>& audio, std::size_t position, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) text += static_cast<char>(audio[(position + i) % audio.size()]);
  return text;
}

// Reads one metadata block off the wire: its length byte, then 16 bytes per unit.
std::string ReadBlock(LoopbackClient& client) {
  const std::string length = client.Read(1);
  if (length.empty()) return "";
  return length + client.Read(static_cast<unsigned char>(length[0]) * 16u);
}

std::optional<HttpReply> Connect(LoopbackClient& client, const std::string& method, bool metadata) {
  if (!client.Send(method + " /radio HTTP/1.1\r\nHost: x\r\n" + (metadata ? "Icy-MetaData: 1\r\n" : "") +
                   "\r\n")) {
    return std::nullopt;
  }
  return client.ReadReply(/*headRequest=*/true);
}

class IcyStreamTest : public ::testing::Test {
 protected:
  PLAYER_TestHttpServer server_;
  const std::vector<std::uint8_t> audio_ = Audio(1000);
};

}  // namespace

TEST_F(IcyStreamTest, WithoutIcyMetadataTheAudioLoopsPlainWithoutALength) {
  server_.AddIcyStream("/radio", audio_, 100, {"Song A"});
  LoopbackClient client(server_.Port());
  const std::optional<HttpReply> reply = Connect(client, "GET", false);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "HTTP/1.0 200 OK");
  EXPECT_EQ(reply->Header("Content-Type"), "audio/mpeg");
  EXPECT_EQ(reply->Header("icy-name"), "Station One");
  EXPECT_EQ(reply->Header("icy-metaint"), std::nullopt);
  EXPECT_EQ(reply->Header("Content-Length"), std::nullopt);
  EXPECT_EQ(client.Read(2500), Loop(audio_, 0, 2500));
}

TEST_F(IcyStreamTest, WithIcyMetadataABlockFollowsEveryIntervalAndAnnouncesOnlyChanges) {
  server_.AddIcyStream("/radio", audio_, 300, {"Song A"});
  LoopbackClient client(server_.Port());
  const std::optional<HttpReply> reply = Connect(client, "GET", true);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Header("icy-metaint"), "300");
  EXPECT_EQ(reply->Header("Content-Length"), std::nullopt);
  EXPECT_EQ(client.Read(300), Loop(audio_, 0, 300));
  EXPECT_EQ(ReadBlock(client), kBlockA);
  for (std::size_t position = 300; position < 1500; position += 300) {
    EXPECT_EQ(client.Read(300), Loop(audio_, position, 300));
    EXPECT_EQ(ReadBlock(client), kUnchanged);
  }
  const std::optional<PLAYER_HttpRequest> request = server_.LastRequest("/radio");
  ASSERT_TRUE(request);
  EXPECT_EQ(request->Header("Icy-MetaData"), "1");
}

TEST_F(IcyStreamTest, SetIcyTitleIsAnnouncedInALaterBlock) {
  server_.AddIcyStream("/radio", audio_, 300, {"Song A"});
  LoopbackClient client(server_.Port());
  ASSERT_TRUE(Connect(client, "GET", true));
  ASSERT_EQ(client.Read(300).size(), 300u);
  ASSERT_EQ(ReadBlock(client), kBlockA);
  server_.SetIcyTitle("/radio", "Song B");
  // The server may have sent a lot ahead into the socket before the change: every block up to the new
  // title says "unchanged", and the audio stays in step.
  std::size_t position = 300;
  std::string block;
  for (int i = 0; i < 100000 && block != kBlockB; ++i, position += 300) {
    ASSERT_EQ(client.Read(300), Loop(audio_, position, 300));
    block = ReadBlock(client);
    ASSERT_TRUE(block == kUnchanged || block == kBlockB) << "block " << i;
  }
  EXPECT_EQ(block, kBlockB);
}

TEST_F(IcyStreamTest, TitlesMoveOnAfterTheConfiguredBytesAndWrapRound) {
  PLAYER_IcyStreamOptions options;
  options.titleSwitchBytes = 250;
  server_.AddIcyStream("/radio", audio_, 100, {"Song A", "Song B", "Song C"}, options);
  LoopbackClient client(server_.Port());
  ASSERT_TRUE(Connect(client, "GET", true));
  // Switches at 250, 500 (before that interval's block), 750 and 1000.
  const std::string expected[] = {kBlockA,    kUnchanged, kBlockB, kUnchanged, kBlockC,
                                  kUnchanged, kUnchanged, kBlockA, kUnchanged, kBlockB};
  for (std::size_t i = 0; i < std::size(expected); ++i) {
    ASSERT_EQ(client.Read(100), Loop(audio_, i * 100, 100)) << "interval " << i;
    EXPECT_EQ(ReadBlock(client), expected[i]) << "interval " << i;
  }
}

TEST_F(IcyStreamTest, IcyStatusLineAndHeadAnswerTheHeadersOnlyThenClose) {
  PLAYER_IcyStreamOptions options;
  options.icyStatusLine = true;
  options.stationName = "Station Two";
  server_.AddIcyStream("/radio", audio_, 100, {"Song A"}, options);
  LoopbackClient client(server_.Port());
  const std::optional<HttpReply> reply = Connect(client, "HEAD", true);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "ICY 200 OK");
  EXPECT_EQ(reply->Header("icy-name"), "Station Two");
  EXPECT_EQ(reply->Header("icy-metaint"), "100");
  EXPECT_TRUE(client.PeerClosed());
  EXPECT_EQ(client.ReadToClose(), "");
}

TEST_F(IcyStreamTest, StreamEndsAfterItsMaximumDuration) {
  PLAYER_IcyStreamOptions options;
  options.maxDuration = milliseconds(200);
  options.bytesPerSecond = 10000;
  server_.AddIcyStream("/radio", audio_, 100, {"Song A"}, options);
  LoopbackClient client(server_.Port());
  const Stopwatch watch;
  ASSERT_TRUE(Connect(client, "GET", true));
  EXPECT_TRUE(client.PeerClosed());
  const long long elapsed = watch.Milliseconds();
  EXPECT_GE(elapsed, 200);
  EXPECT_LT(elapsed, 1000);
}

TEST_F(IcyStreamTest, PlaybinReadsTheStreamTitleAndItsChangeAsTitleTags) {
  PLAYER_TestMedia media;
  PLAYER_TrackParameters track;
  track.format = PLAYER_MediaFormat::kMp3;
  const std::optional<PLAYER_MediaFile> mp3 = media.Make(track);
  ASSERT_TRUE(mp3);
  const std::optional<std::vector<std::uint8_t>> bytes = PLAYER_ReadFileBytes(mp3->path);
  ASSERT_TRUE(bytes);
  // Paced at about twice the encoded rate, so that the client's buffers hold little ahead of the change.
  PLAYER_IcyStreamOptions options;
  options.bytesPerSecond = 2 * bytes->size();
  server_.AddIcyStream("/radio", *bytes, 4096, {"Song A"}, options);

  PlaybinRun run(server_.Url("/radio"));
  ASSERT_TRUE(run.SetState(GST_STATE_PLAYING)) << run.Error();
  ASSERT_TRUE(run.WaitForTitle("Song A")) << run.Error();
  server_.SetIcyTitle("/radio", "Song B");
  ASSERT_TRUE(run.WaitForTitle("Song B")) << run.Error();
  const std::optional<PLAYER_HttpRequest> request = server_.LastRequest("/radio");
  ASSERT_TRUE(request);
  EXPECT_EQ(request->Header("Icy-MetaData"), "1");
}
