// The daemon's moderation of service events: one property set per service every 200 ms at most, merged.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "ManualClock.h"
#include "LastChangeMerge.h"
#include "ModeratedEvents.h"
#include "RendererFixture.h"

using ::testing::ElementsAre;
using ::testing::Pair;

namespace {

constexpr char kPlaylist[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kInfo[] = "urn:av-openhome-org:service:Info:1";
constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";

class ModeratedEvents : public ::testing::Test {
 protected:
  PLAYER_ManualClock clock_;
  RecordingEventSink network_;
  HOST_ModeratedEvents events_{&network_, &clock_};
};

}  // namespace

TEST_F(ModeratedEvents, FirstChangeOfAQuietServiceGoesOutAtOnce) {
  events_.Notify(kPlaylist, {{"IdArray", "AAAAAQ=="}});
  ASSERT_EQ(network_.batches.size(), 1u);
  EXPECT_EQ(network_.batches[0].first, kPlaylist);
  EXPECT_THAT(network_.batches[0].second, ElementsAre(Pair("IdArray", "AAAAAQ==")));
}

TEST_F(ModeratedEvents, ChangesWithinTheIntervalGoOutMergedAtItsEnd) {
  events_.Notify(kPlaylist, {{"IdArray", "a"}});
  clock_.Advance(50);
  events_.Notify(kPlaylist, {{"IdArray", "b"}, {"TransportState", "Playing"}});
  events_.Notify(kPlaylist, {{"Repeat", "true"}, {"IdArray", "c"}});
  ASSERT_EQ(network_.batches.size(), 1u);
  clock_.Advance(149);
  EXPECT_EQ(network_.batches.size(), 1u) << "held until the interval ends";
  clock_.Advance(1);
  ASSERT_EQ(network_.batches.size(), 2u);
  EXPECT_THAT(network_.batches[1].second,
              ElementsAre(Pair("IdArray", "c"), Pair("TransportState", "Playing"), Pair("Repeat", "true")));
}

TEST_F(ModeratedEvents, ChangeAfterAQuietIntervalGoesOutAtOnceAgain) {
  events_.Notify(kPlaylist, {{"IdArray", "a"}});
  clock_.Advance(200);
  events_.Notify(kPlaylist, {{"IdArray", "b"}});
  ASSERT_EQ(network_.batches.size(), 2u);
  EXPECT_THAT(network_.batches[1].second, ElementsAre(Pair("IdArray", "b")));
}

TEST_F(ModeratedEvents, ServicesAreModeratedEachOnItsOwn) {
  events_.Notify(kPlaylist, {{"IdArray", "a"}});
  events_.Notify(kInfo, {{"TrackCount", "1"}});
  ASSERT_EQ(network_.batches.size(), 2u);
  EXPECT_EQ(network_.batches[1].first, kInfo);
}

namespace {
std::string AvtDocument(const std::string& variables) {
  return "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\"><InstanceID val=\"0\">" + variables +
         "</InstanceID></Event>";
}
}  // namespace

TEST_F(ModeratedEvents, LastChangeDocumentsWithinTheIntervalBecomeOneWithTheChangesOfBoth) {
  events_.Notify(kAVTransport, {{"LastChange", AvtDocument("<TransportState val=\"STOPPED\"/>")}});
  events_.Notify(kAVTransport, {{"LastChange", AvtDocument("<TransportState val=\"TRANSITIONING\"/>"
                                                           "<AVTransportURI val=\"http://a/1\"/>")}});
  events_.Notify(kAVTransport, {{"LastChange", AvtDocument("<TransportState val=\"PLAYING\"/>"
                                                           "<CurrentTrack val=\"1\"/>")}});
  ASSERT_EQ(network_.batches.size(), 1u);
  clock_.Advance(200);
  ASSERT_EQ(network_.batches.size(), 2u);
  EXPECT_THAT(network_.batches[1].second,
              ElementsAre(Pair("LastChange", AvtDocument("<TransportState val=\"PLAYING\"/>"
                                                         "<AVTransportURI val=\"http://a/1\"/>"
                                                         "<CurrentTrack val=\"1\"/>"))));
}

TEST(HostLastChangeMerge, ChannelsAreKeptApartAndAnUnreadableDocumentGivesTheLater) {
  const std::string rcs = "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/RCS/\"><InstanceID val=\"0\">";
  const std::string merged = HOST_MergeLastChange(
      rcs + "<Volume channel=\"Master\" val=\"10\"/><Mute channel=\"Master\" val=\"0\"/></InstanceID></Event>",
      rcs + "<Volume channel=\"Master\" val=\"12\"/><Volume channel=\"LF\" val=\"3\"/></InstanceID></Event>");
  EXPECT_EQ(merged, rcs + "<Volume channel=\"Master\" val=\"12\"/><Mute channel=\"Master\" val=\"0\"/>"
                          "<Volume channel=\"LF\" val=\"3\"/></InstanceID></Event>");
  EXPECT_EQ(HOST_MergeLastChange("<Event", rcs + "</InstanceID></Event>"), rcs + "</InstanceID></Event>");
}

TEST_F(ModeratedEvents, FlushSendsWhatWaitsAndNothingElse) {
  events_.Notify(kPlaylist, {{"IdArray", "a"}});
  events_.Notify(kPlaylist, {{"IdArray", "b"}});
  events_.Flush();
  ASSERT_EQ(network_.batches.size(), 2u);
  EXPECT_THAT(network_.batches[1].second, ElementsAre(Pair("IdArray", "b")));
  events_.Flush();
  clock_.Advance(1000);
  EXPECT_EQ(network_.batches.size(), 2u) << "nothing sent twice";
}
