#include "RequestGuard.h"

#include <gtest/gtest.h>

#include <string>

namespace {

TEST(RequestGuardBodyLength, AcceptsUpToTheLimitAndRefusesOneByteMore) {
  EXPECT_TRUE(HOST_BodyLengthAllowed(0));
  EXPECT_TRUE(HOST_BodyLengthAllowed(HOST_kMaxRequestBodyBytes));
  EXPECT_FALSE(HOST_BodyLengthAllowed(HOST_kMaxRequestBodyBytes + 1));
  EXPECT_FALSE(HOST_BodyLengthAllowed(10u * 1024 * 1024));
}

TEST(RequestGuardBodyLength, IsTheSoapReadersLimit) {
  EXPECT_EQ(HOST_kMaxRequestBodyBytes, HOST_kMaxSoapRequestBytes);
  EXPECT_EQ(HOST_kMaxRequestBodyBytes, 2u * 1024 * 1024);
}

TEST(RequestGuardHostHeader, AcceptsTheServersAddressWithItsPortOrWithoutPort) {
  EXPECT_TRUE(HOST_HostHeaderNamesServer("10.203.0.1:49152", "10.203.0.1", 49152));
  EXPECT_TRUE(HOST_HostHeaderNamesServer("10.203.0.1", "10.203.0.1", 49152));
}

TEST(RequestGuardHostHeader, AcceptsAMissingHeader) {
  EXPECT_TRUE(HOST_HostHeaderNamesServer(nullptr, "10.203.0.1", 49152));
}

TEST(RequestGuardHostHeader, RefusesANameEvenOneThatWouldResolveToTheServer) {
  EXPECT_FALSE(HOST_HostHeaderNamesServer("attacker.example:49152", "10.203.0.1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("attacker.example", "10.203.0.1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("localhost:49152", "127.0.0.1", 49152));
}

TEST(RequestGuardHostHeader, RefusesAnotherAddressOrAnotherPort) {
  EXPECT_FALSE(HOST_HostHeaderNamesServer("10.203.0.2:49152", "10.203.0.1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("10.203.0.1:80", "10.203.0.1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("127.0.0.1:49152", "10.203.0.1", 49152));
}

TEST(RequestGuardHostHeader, RefusesMalformedValues) {
  for (const char* header : {"", ":49152", "10.203.0.1:", "10.203.0.1:0", "10.203.0.1:65536", "10.203.0.1:49152x",
                             "10.203.0.1:+49152", "10.203.0.1:49152:1", "0x0a.203.0.1:49152", "10.203.1:49152",
                             "[10.203.0.1]:49152", "10.203.0.1 :49152"}) {
    EXPECT_FALSE(HOST_HostHeaderNamesServer(header, "10.203.0.1", 49152)) << header;
  }
}

TEST(RequestGuardHostHeader, ComparesIpv6LiteralsAsAddressesInBrackets) {
  EXPECT_TRUE(HOST_HostHeaderNamesServer("[fe80::1]:49152", "fe80::1", 49152));
  EXPECT_TRUE(HOST_HostHeaderNamesServer("[FE80:0:0::1]:49152", "fe80::1", 49152));
  EXPECT_TRUE(HOST_HostHeaderNamesServer("[fe80::1]", "fe80::1", 49152));
  EXPECT_TRUE(HOST_HostHeaderNamesServer("[fe80::1%25eth0]:49152", "fe80::1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("fe80::1", "fe80::1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("[fe80::2]:49152", "fe80::1", 49152));
  EXPECT_FALSE(HOST_HostHeaderNamesServer("[fe80::1:49152", "fe80::1", 49152));
}

TEST(RequestGuardSubnet, ComparesThePrefixBitsOnly) {
  EXPECT_TRUE(HOST_SameSubnet("10.203.0.2", "10.203.0.1", 24));
  EXPECT_TRUE(HOST_SameSubnet("10.203.0.254", "10.203.0.1", 24));
  EXPECT_FALSE(HOST_SameSubnet("10.203.1.2", "10.203.0.1", 24));
  EXPECT_TRUE(HOST_SameSubnet("10.203.1.2", "10.203.0.1", 23));
  EXPECT_FALSE(HOST_SameSubnet("10.203.0.129", "10.203.0.1", 25));
  EXPECT_TRUE(HOST_SameSubnet("192.0.2.1", "10.203.0.1", 0));
  EXPECT_TRUE(HOST_SameSubnet("10.203.0.1", "10.203.0.1", 32));
  EXPECT_FALSE(HOST_SameSubnet("10.203.0.2", "10.203.0.1", 32));
}

TEST(RequestGuardSubnet, RefusesMixedFamiliesOversizedPrefixesAndNames) {
  EXPECT_FALSE(HOST_SameSubnet("::ffff:10.203.0.2", "10.203.0.1", 24));
  EXPECT_FALSE(HOST_SameSubnet("10.203.0.2", "10.203.0.1", 33));
  EXPECT_FALSE(HOST_SameSubnet("renderer.local", "10.203.0.1", 24));
  EXPECT_TRUE(HOST_SameSubnet("fe80::1234", "fe80::1", 64));
  EXPECT_FALSE(HOST_SameSubnet("fe81::1", "fe80::1", 64));
}

const char kServer[] = "10.203.0.1";

bool Allowed(const char* callback) {
  std::string reason;
  const bool allowed = HOST_CallbackAllowed(callback, kServer, 24, &reason);
  EXPECT_EQ(allowed, reason.empty()) << reason;
  return allowed;
}

TEST(RequestGuardCallback, AcceptsAddressesOnTheServersNetwork) {
  EXPECT_TRUE(Allowed("<http://10.203.0.2:4000/events>"));
  EXPECT_TRUE(Allowed("<http://10.203.0.77/>"));
  EXPECT_TRUE(Allowed("<http://10.203.0.2:4000/a> <http://10.203.0.3:4000/b>"));
  EXPECT_TRUE(Allowed("<HTTP://10.203.0.2:4000>"));
  EXPECT_TRUE(Allowed("<http://10.203.0.2:4000?x=1>"));
}

TEST(RequestGuardCallback, RefusesAHostOffTheNetwork) {
  EXPECT_FALSE(Allowed("<http://192.0.2.1:80/events>"));
  EXPECT_FALSE(Allowed("<http://10.204.0.2:4000/events>"));
  EXPECT_FALSE(Allowed("<http://127.0.0.1:631/>"));
  // One bad URL among good ones refuses the whole subscription.
  EXPECT_FALSE(Allowed("<http://10.203.0.2:4000/a><http://192.0.2.1/b>"));
}

TEST(RequestGuardCallback, RefusesNamesOtherSchemesAndMalformedLists) {
  for (const char* callback : {"", "   ", "http://10.203.0.2:4000/", "<>", "<10.203.0.2:4000>",
                               "<https://10.203.0.2/>", "<http://router.local:4000/>", "<http://2130706433/>",
                               "<http://user@10.203.0.2/>", "<http://10.203.0.2:99999/>", "<http://10.203.0.2/",
                               "<http://10.203.0.2/> junk", "<http://[::1]:4000/>", "<http://[10.203.0.2]/>"}) {
    EXPECT_FALSE(Allowed(callback)) << '"' << callback << '"';
  }
  EXPECT_FALSE(HOST_CallbackAllowed(nullptr, kServer, 24, nullptr));
}

TEST(RequestGuardCallback, WithoutAKnownNetworkNothingIsAccepted) {
  EXPECT_FALSE(HOST_CallbackAllowed("<http://10.203.0.2:4000/>", kServer, 128, nullptr));
  EXPECT_FALSE(HOST_CallbackAllowed("<http://10.203.0.1:4000/>", kServer, 128, nullptr));
}

TEST(RequestGuardCallback, ComparesIpv6CallbacksWithTheServersIpv6Network) {
  EXPECT_TRUE(HOST_CallbackAllowed("<http://[fe80::2]:4000/>", "fe80::1", 64, nullptr));
  EXPECT_FALSE(HOST_CallbackAllowed("<http://[2001:db8::2]:4000/>", "fe80::1", 64, nullptr));
}

TEST(RequestGuardSoapAction, AcceptsTheServiceQuotedOrNotWholeOrCutAtTheHash) {
  const char* type = "urn:av-openhome-org:service:Playlist:1";
  EXPECT_TRUE(HOST_SoapActionNamesService("\"urn:av-openhome-org:service:Playlist:1#Insert\"", type));
  EXPECT_TRUE(HOST_SoapActionNamesService("urn:av-openhome-org:service:Playlist:1#Insert", type));
  EXPECT_TRUE(HOST_SoapActionNamesService("\"urn:av-openhome-org:service:Playlist:1", type));
}

TEST(RequestGuardSoapAction, RefusesAnotherServiceAnotherVersionOrNoService) {
  const char* type = "urn:av-openhome-org:service:Playlist:1";
  for (const char* header : {"\"urn:schemas-upnp-org:service:AVTransport:1#Insert\"", "\"#Insert\"", "#Insert",
                             "\"urn:av-openhome-org:service:Playlist:2#Insert\"", "\"urn:av-openhome-org:service:Playlist\"",
                             "", "\"", "Insert", "\"urn:av-openhome-org:service:Playlist:1 #Insert\""}) {
    EXPECT_FALSE(HOST_SoapActionNamesService(header, type)) << header;
  }
  EXPECT_FALSE(HOST_SoapActionNamesService(nullptr, type));
}

TEST(RequestGuardTimeout, ReadsSecondsAndFallsBackForAnythingElse) {
  EXPECT_EQ(HOST_TimeoutSeconds("Second-300", 7), 300u);
  EXPECT_EQ(HOST_TimeoutSeconds("second-1800", 7), 1800u);
  for (const char* header : {"infinite", "Second-infinite", "Second-", "Second--5", "Second-0", "Second-12x",
                             "Second-99999999999999999999", "Minute-5", ""}) {
    EXPECT_EQ(HOST_TimeoutSeconds(header, 7), 7u) << header;
  }
  EXPECT_EQ(HOST_TimeoutSeconds(nullptr, 7), 7u);
}

TEST(SubscriptionLedger, RefusesOneMoreThanTheCapPerPath) {
  HOST_SubscriptionLedger ledger;
  for (std::size_t i = 0; i < HOST_kMaxSubscriptionsPerService; ++i) {
    ASSERT_TRUE(ledger.MayAdd("/Playlist/event", 0));
    ledger.Added("/Playlist/event", "uuid:" + std::to_string(i), 300);
  }
  EXPECT_FALSE(ledger.MayAdd("/Playlist/event", 0));
  EXPECT_TRUE(ledger.MayAdd("/AVTransport/event", 0));
  EXPECT_EQ(ledger.Count("/Playlist/event", 0), HOST_kMaxSubscriptionsPerService);
}

TEST(SubscriptionLedger, ForgetsSubscriptionsThatEndedOrWereCancelled) {
  HOST_SubscriptionLedger ledger;
  ledger.Added("/p", "uuid:a", 300);
  ledger.Added("/p", "uuid:b", 300);
  ledger.Removed("uuid:a");
  EXPECT_EQ(ledger.Count("/p", 0), 1u);
  EXPECT_EQ(ledger.Count("/p", 299), 1u);
  EXPECT_EQ(ledger.Count("/p", 300), 0u);
}

TEST(SubscriptionLedger, ARenewalMovesTheEndAndAnUnknownSidChangesNothing) {
  HOST_SubscriptionLedger ledger;
  ledger.Added("/p", "uuid:a", 300);
  ledger.Renewed("uuid:a", 600);
  ledger.Renewed("uuid:unknown", 900);
  EXPECT_EQ(ledger.Count("/p", 599), 1u);
  EXPECT_EQ(ledger.Count("/p", 600), 0u);
}

}  // namespace
