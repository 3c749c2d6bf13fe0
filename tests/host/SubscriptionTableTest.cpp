#include <gtest/gtest.h>

#include <string>

#include "SubscriptionTable.h"

TEST(SubscriptionTimeout, ReadsSecondsAndInfinite) {
  int64_t seconds = 0;
  EXPECT_TRUE(HOST_ParseSubscriptionTimeout("Second-1800", &seconds));
  EXPECT_EQ(seconds, 1800);
  EXPECT_TRUE(HOST_ParseSubscriptionTimeout("second-300", &seconds));
  EXPECT_EQ(seconds, 300);
  EXPECT_TRUE(HOST_ParseSubscriptionTimeout("Second-infinite", &seconds));
  EXPECT_EQ(seconds, -1);
  for (const char* refused :
       {"", "Second-", "1800", "Second--5", "Second-12a", "Second-1234567890", "Minute-3"})
    EXPECT_FALSE(HOST_ParseSubscriptionTimeout(refused, &seconds)) << refused;
}

TEST(SubscriptionCallback, FirstUrlOfTheHeader) {
  EXPECT_EQ(HOST_FirstCallbackUrl("<http://10.0.0.2:4004/event>"), "http://10.0.0.2:4004/event");
  EXPECT_EQ(HOST_FirstCallbackUrl("<http://a/1><http://b/2>"), "http://a/1");
  EXPECT_EQ(HOST_FirstCallbackUrl("http://bare/"), "http://bare/");
  EXPECT_EQ(HOST_FirstCallbackUrl("<unclosed"), "<unclosed");
}

TEST(SubscriptionTable, SubscribeRenewUnsubscribeAndExpire) {
  HOST_SubscriptionTable table;
  table.Subscribed("uuid:1", "AVTransport", "<http://10.0.0.2:4004/a>", "10.0.0.2", "Second-300", 1000);
  table.Subscribed("uuid:2", "Playlist", "<http://10.0.0.3:5/p>", "10.0.0.3", "Second-infinite", 1000);
  table.Subscribed("uuid:3", "AVTransport", "<http://10.0.0.1:9/b>", "10.0.0.1", "garbage", 1000);

  std::vector<HOST_StatusSubscription> current = table.Current(1100);
  ASSERT_EQ(current.size(), 3u);
  // By service, then callback.
  EXPECT_EQ(current[0].callback, "http://10.0.0.1:9/b");
  EXPECT_EQ(current[0].expiresInSeconds, 1700);  // no readable TIMEOUT: 30 minutes
  EXPECT_EQ(current[1].service, "AVTransport");
  EXPECT_EQ(current[1].callback, "http://10.0.0.2:4004/a");
  EXPECT_EQ(current[1].from, "10.0.0.2");
  EXPECT_EQ(current[1].expiresInSeconds, 200);
  EXPECT_EQ(current[2].service, "Playlist");
  EXPECT_EQ(current[2].expiresInSeconds, -1);

  table.Renewed("uuid:1", "Second-300", 1250);
  table.Renewed("uuid:unknown", "Second-300", 1250);
  table.Unsubscribed("uuid:3");
  current = table.Current(1400);
  ASSERT_EQ(current.size(), 2u);
  EXPECT_EQ(current[0].callback, "http://10.0.0.2:4004/a");
  EXPECT_EQ(current[0].expiresInSeconds, 150);

  // Gone at its expiry; the one that never expires stays.
  current = table.Current(1550);
  ASSERT_EQ(current.size(), 1u);
  EXPECT_EQ(current[0].service, "Playlist");
  EXPECT_EQ(table.Size(), 1u);
}

TEST(SubscriptionTable, ANewSubscriptionBeyondTheCapacityPushesOutTheFirstToExpire) {
  HOST_SubscriptionTable table;
  table.Subscribed("uuid:forever", "Info", "<http://f/>", "f", "Second-infinite", 0);
  for (std::size_t i = 1; i < HOST_SubscriptionTable::kCapacity; ++i) {
    const std::string number = std::to_string(i);
    table.Subscribed("uuid:" + number, "Time", "<http://t/" + number + ">", "t",
                     "Second-" + std::to_string(1000 + i), 0);
  }
  ASSERT_EQ(table.Size(), HOST_SubscriptionTable::kCapacity);
  table.Subscribed("uuid:new", "Time", "<http://n/>", "n", "Second-5000", 0);
  const std::vector<HOST_StatusSubscription> current = table.Current(0);
  ASSERT_EQ(current.size(), HOST_SubscriptionTable::kCapacity);
  bool forever = false;
  bool fresh = false;
  for (const HOST_StatusSubscription& subscription : current) {
    EXPECT_NE(subscription.callback, "http://t/1");  // it expired first
    forever |= subscription.callback == "http://f/";
    fresh |= subscription.callback == "http://n/";
  }
  EXPECT_TRUE(forever);
  EXPECT_TRUE(fresh);
}
