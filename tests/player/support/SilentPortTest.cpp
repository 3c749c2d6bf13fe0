#include <gtest/gtest.h>

#include <chrono>

#include "LoopbackClient.h"
#include "SilentPort.h"
#include "Stopwatch.h"

using std::chrono::milliseconds;

TEST(SilentPort, ConnectSucceedsAndThenNothingIsEverAnswered) {
  PLAYER_SilentPort port;
  ASSERT_NE(port.Port(), 0);
  EXPECT_EQ(port.Url("/x.wav"), "http://127.0.0.1:" + std::to_string(port.Port()) + "/x.wav");
  LoopbackClient client(port.Port(), milliseconds(300));
  ASSERT_TRUE(client.Connected());
  ASSERT_TRUE(client.Send("GET /x.wav HTTP/1.1\r\nHost: x\r\n\r\n"));
  const Stopwatch watch;
  EXPECT_EQ(client.Read(1), "");
  EXPECT_GE(watch.Milliseconds(), 300);
  EXPECT_FALSE(client.PeerClosed());
}

TEST(SilentPort, DestructionClosesThePort) {
  std::uint16_t number = 0;
  {
    PLAYER_SilentPort port;
    number = port.Port();
    ASSERT_NE(number, 0);
  }
  LoopbackClient client(number);
  EXPECT_FALSE(client.Connected());
}
