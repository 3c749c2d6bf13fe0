#include <gtest/gtest.h>

#include "HttpRequest.h"

TEST(HttpRequestHead, ParsesRequestLineAndHeadersAndLooksHeadersUpWithoutCase) {
  PLAYER_HttpRequest request;
  ASSERT_TRUE(PLAYER_ParseHttpRequestHead(
      "GET /a.wav?n=1 HTTP/1.1\r\nHost: 127.0.0.1\r\nicy-metadata:  1 \r\nRange: bytes=0-", &request));
  EXPECT_EQ(request.method, "GET");
  EXPECT_EQ(request.target, "/a.wav?n=1");
  EXPECT_EQ(request.path, "/a.wav");
  EXPECT_EQ(request.version, "HTTP/1.1");
  ASSERT_EQ(request.headers.size(), 3u);
  EXPECT_EQ(request.Header("Icy-MetaData"), "1");
  EXPECT_EQ(request.Header("RANGE"), "bytes=0-");
  EXPECT_EQ(request.Header("User-Agent"), std::nullopt);
}

TEST(HttpRequestHead, AcceptsBareLineFeeds) {
  PLAYER_HttpRequest request;
  ASSERT_TRUE(PLAYER_ParseHttpRequestHead("HEAD / HTTP/1.0\nA: b", &request));
  EXPECT_EQ(request.method, "HEAD");
  EXPECT_EQ(request.Header("a"), "b");
}

TEST(HttpRequestHead, RejectsWhatIsNotAnHttp1Request) {
  PLAYER_HttpRequest request;
  EXPECT_FALSE(PLAYER_ParseHttpRequestHead("", &request));
  EXPECT_FALSE(PLAYER_ParseHttpRequestHead("GET /", &request));
  EXPECT_FALSE(PLAYER_ParseHttpRequestHead("GET / HTTP/2.0", &request));
  EXPECT_FALSE(PLAYER_ParseHttpRequestHead("GET / HTTP/1.1 extra", &request));
  EXPECT_FALSE(PLAYER_ParseHttpRequestHead("GET / HTTP/1.1\r\nno colon here", &request));
}
