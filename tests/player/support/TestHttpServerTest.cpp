// The test HTTP server's answers, byte for byte on the wire.
#include <gtest/gtest.h>

#include <chrono>

#include "LoopbackClient.h"
#include "Stopwatch.h"
#include "TestHttpServer.h"

namespace {

using std::chrono::milliseconds;

std::vector<std::uint8_t> Pattern(std::size_t size) {
  std::vector<std::uint8_t> bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 7 + i / 256);
  return bytes;
}

std::string Text(const std::vector<std::uint8_t>& bytes, std::size_t first, std::size_t count) {
  return std::string(reinterpret_cast<const char*>(bytes.data()) + first, count);
}

class TestHttpServerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_NE(server_.Port(), 0);
    server_.AddFile("/a.bin", bytes_, "application/octet-stream");
  }

  PLAYER_TestHttpServer server_;
  const std::vector<std::uint8_t> bytes_ = Pattern(1000);
};

}  // namespace

TEST_F(TestHttpServerTest, GetAnswersTheWholeFileWithLengthTypeAndAcceptRanges) {
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/a.bin");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "HTTP/1.1 200 OK");
  EXPECT_EQ(reply->Header("Content-Length"), "1000");
  EXPECT_EQ(reply->Header("Content-Type"), "application/octet-stream");
  EXPECT_EQ(reply->Header("Accept-Ranges"), "bytes");
  EXPECT_EQ(reply->Header("Content-Range"), std::nullopt);
  EXPECT_EQ(reply->body, Text(bytes_, 0, 1000));
}

TEST_F(TestHttpServerTest, RangeRequestAnswers206WithExactlyThoseBytes) {
  std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/a.bin", "Range: bytes=10-19\r\n");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "HTTP/1.1 206 Partial Content");
  EXPECT_EQ(reply->Header("Content-Range"), "bytes 10-19/1000");
  EXPECT_EQ(reply->Header("Content-Length"), "10");
  EXPECT_EQ(reply->body, Text(bytes_, 10, 10));

  reply = FetchOnce(server_.Port(), "GET", "/a.bin", "Range: bytes=995-\r\n");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 206);
  EXPECT_EQ(reply->Header("Content-Range"), "bytes 995-999/1000");
  EXPECT_EQ(reply->body, Text(bytes_, 995, 5));
}

TEST_F(TestHttpServerTest, RangePastTheEndAnswers416WithTheSize) {
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/a.bin", "Range: bytes=1000-\r\n");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "HTTP/1.1 416 Range Not Satisfiable");
  EXPECT_EQ(reply->Header("Content-Range"), "bytes */1000");
  EXPECT_EQ(reply->Header("Content-Length"), "0");
  EXPECT_EQ(reply->body, "");
}

TEST_F(TestHttpServerTest, HeadAnswersTheHeadersOfGetWithoutABody) {
  std::optional<HttpReply> reply = FetchOnce(server_.Port(), "HEAD", "/a.bin");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 200);
  EXPECT_EQ(reply->Header("Content-Length"), "1000");
  EXPECT_EQ(reply->Header("Accept-Ranges"), "bytes");
  EXPECT_EQ(reply->body, "");

  reply = FetchOnce(server_.Port(), "HEAD", "/a.bin", "Range: bytes=0-99\r\n");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 206);
  EXPECT_EQ(reply->Header("Content-Length"), "100");
  EXPECT_EQ(reply->body, "");
}

TEST_F(TestHttpServerTest, UnknownPathAnswers404AndIsCounted) {
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/missing.wav");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->statusLine, "HTTP/1.1 404 Not Found");
  EXPECT_EQ(server_.RequestCount("/missing.wav"), 1u);
}

TEST_F(TestHttpServerTest, OtherMethodsAnswer501) {
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "POST", "/a.bin");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 501);
}

TEST_F(TestHttpServerTest, PersistentConnectionServesOneRequestAfterAnother) {
  LoopbackClient client(server_.Port());
  ASSERT_TRUE(client.Connected());
  ASSERT_TRUE(client.Send("GET /a.bin HTTP/1.1\r\nHost: x\r\n\r\n"));
  std::optional<HttpReply> reply = client.ReadReply();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Header("Connection"), "keep-alive");
  EXPECT_EQ(reply->body, Text(bytes_, 0, 1000));
  ASSERT_TRUE(
      client.Send("HEAD /a.bin HTTP/1.1\r\nHost: x\r\n\r\nGET /a.bin HTTP/1.1\r\nRange: bytes=-3\r\n\r\n"));
  reply = client.ReadReply(/*headRequest=*/true);
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 200);
  reply = client.ReadReply();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->body, Text(bytes_, 997, 3));
  EXPECT_EQ(server_.RequestCount("/a.bin"), 3u);
}

TEST_F(TestHttpServerTest, ConnectionCloseRequestIsAnsweredThenClosed) {
  LoopbackClient client(server_.Port());
  ASSERT_TRUE(client.Send("GET /a.bin HTTP/1.1\r\nConnection: close\r\n\r\n"));
  const std::optional<HttpReply> reply = client.ReadReply();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Header("Connection"), "close");
  EXPECT_TRUE(client.PeerClosed());
}

TEST_F(TestHttpServerTest, KeepsTheCountAndTheLastRequestOfEachPathWithoutItsQuery) {
  EXPECT_EQ(server_.RequestCount("/a.bin"), 0u);
  EXPECT_EQ(server_.LastRequest("/a.bin"), std::nullopt);
  ASSERT_TRUE(FetchOnce(server_.Port(), "GET", "/a.bin?n=1", "User-Agent: Tester/1\r\n"));
  ASSERT_TRUE(FetchOnce(server_.Port(), "HEAD", "/a.bin?n=2", "User-Agent: Tester/2\r\n"));
  EXPECT_EQ(server_.RequestCount("/a.bin"), 2u);
  const std::optional<PLAYER_HttpRequest> last = server_.LastRequest("/a.bin");
  ASSERT_TRUE(last);
  EXPECT_EQ(last->method, "HEAD");
  EXPECT_EQ(last->target, "/a.bin?n=2");
  EXPECT_EQ(last->Header("user-agent"), "Tester/2");
}

TEST_F(TestHttpServerTest, DelayedResourceAnswersAfterItsDelay) {
  PLAYER_HttpFileOptions options;
  options.delay = milliseconds(300);
  server_.AddFile("/slow.bin", bytes_, "application/octet-stream", options);
  const Stopwatch watch;
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/slow.bin");
  const long long elapsed = watch.Milliseconds();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 200);
  EXPECT_GE(elapsed, 300);
  EXPECT_LT(elapsed, 1500);
}

TEST_F(TestHttpServerTest, PacedResourceTakesItsSizeOverItsRate) {
  PLAYER_HttpFileOptions options;
  options.bytesPerSecond = 20000;
  server_.AddFile("/paced.bin", Pattern(6000), "application/octet-stream", options);
  const Stopwatch watch;
  const std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/paced.bin");
  const long long elapsed = watch.Milliseconds();
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->body.size(), 6000u);
  // 6000 bytes at 20000 per second: the last slice is due at 300 ms less one slice (20 ms).
  EXPECT_GE(elapsed, 270);
  EXPECT_LT(elapsed, 1500);
}

TEST_F(TestHttpServerTest, WithoutRangeRequestsTheWholeFileIsAnsweredAndNoRangesAreOffered) {
  PLAYER_HttpFileOptions options;
  options.rangeRequests = false;
  server_.AddFile("/plain.bin", bytes_, "application/octet-stream", options);
  const std::optional<HttpReply> reply =
      FetchOnce(server_.Port(), "GET", "/plain.bin", "Range: bytes=10-19\r\n");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 200);
  EXPECT_EQ(reply->Header("Accept-Ranges"), std::nullopt);
  EXPECT_EQ(reply->body.size(), 1000u);
}

TEST_F(TestHttpServerTest, RemovedOrReplacedFileIsAnsweredAsItIsNow) {
  server_.AddFile("/a.bin", Pattern(10), "audio/wav");
  std::optional<HttpReply> reply = FetchOnce(server_.Port(), "GET", "/a.bin");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Header("Content-Type"), "audio/wav");
  EXPECT_EQ(reply->body.size(), 10u);
  server_.Remove("/a.bin");
  reply = FetchOnce(server_.Port(), "GET", "/a.bin");
  ASSERT_TRUE(reply);
  EXPECT_EQ(reply->Status(), 404);
}

TEST_F(TestHttpServerTest, StopEndsIdleAndWaitingConnectionsAtOnce) {
  PLAYER_HttpFileOptions options;
  options.delay = std::chrono::seconds(30);
  server_.AddFile("/never.bin", bytes_, "application/octet-stream", options);
  LoopbackClient idle(server_.Port());
  LoopbackClient waiting(server_.Port());
  ASSERT_TRUE(idle.Connected());
  ASSERT_TRUE(waiting.Send("GET /never.bin HTTP/1.1\r\n\r\n"));
  // Stop must find both connections being served, so wait until the server has read the request.
  for (int i = 0; i < 200 && server_.RequestCount("/never.bin") == 0; ++i) {
    std::this_thread::sleep_for(milliseconds(5));
  }
  ASSERT_EQ(server_.RequestCount("/never.bin"), 1u);
  const Stopwatch watch;
  server_.Stop();
  EXPECT_LT(watch.Milliseconds(), 500);
  EXPECT_TRUE(idle.PeerClosed());
  EXPECT_TRUE(waiting.PeerClosed());
  EXPECT_EQ(waiting.ReadToClose(), "");
}
