// The daemon's volume events: one volume seen by both services, RenderingControl's LastChange moderated
// to one every 200 ms, and the whole state for a new subscriber.
#include "HostServicesFixture.h"

using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::Return;
using ::testing::_;

TEST_F(HostServicesFixture, ChangeThroughRenderingControlIsEventedByBothServices) {
  EXPECT_EQ(PerformMaster("GetVolume").errorCode, 0);  // what subscribers already know
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "55"}}).errorCode, 0);
  EXPECT_THAT(BatchesOf(kVolumeType), ElementsAre(ElementsAre(Pair("Volume", "55"))));
  const std::vector<HOST_EventBatch> lastChanges = BatchesOf(kRenderingControlType);
  ASSERT_EQ(lastChanges.size(), 1u);
  ASSERT_EQ(lastChanges[0].size(), 1u);
  EXPECT_EQ(lastChanges[0][0].first, "LastChange");
  EXPECT_EQ(MasterLevel(lastChanges[0][0].second), std::make_pair(std::string("55"), std::string("0")));
}

TEST_F(HostServicesFixture, ChangeThroughOpenHomeIsSeenByRenderingControl) {
  EXPECT_EQ(Perform(kVolumeType, "Volume", {}).errorCode, 0);
  EXPECT_EQ(Perform(kVolumeType, "SetMute", {{"Value", "true"}}).errorCode, 0);
  EXPECT_THAT(BatchesOf(kVolumeType), ElementsAre(ElementsAre(Pair("Mute", "true"))));
  const std::vector<HOST_EventBatch> lastChanges = BatchesOf(kRenderingControlType);
  ASSERT_EQ(lastChanges.size(), 1u);
  EXPECT_EQ(MasterLevel(lastChanges[0][0].second), std::make_pair(std::string("30"), std::string("1")));
  EXPECT_THAT(PerformMaster("GetMute").out, ElementsAre(Pair("CurrentMute", "1")));
}

TEST_F(HostServicesFixture, SettingTheSameValueSendsNoEvent) {
  EXPECT_EQ(Perform(kVolumeType, "SetVolume", {{"Value", "30"}}).errorCode, 0);
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "30"}}).errorCode, 0);
  EXPECT_TRUE(events_.batches.empty());
}

TEST_F(HostServicesFixture, BurstOfChangesGivesOneLastChangeAtTheEndOfTheInterval) {
  EXPECT_EQ(PerformMaster("GetVolume").errorCode, 0);
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "40"}}).errorCode, 0);
  ASSERT_EQ(BatchesOf(kRenderingControlType).size(), 1u);  // the leading edge, at once
  for (const char* value : {"41", "42", "43", "44"}) {
    clock_.Advance(10);
    EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", value}}).errorCode, 0);
  }
  EXPECT_EQ(BatchesOf(kRenderingControlType).size(), 1u);
  EXPECT_EQ(BatchesOf(kVolumeType).size(), 5u);  // OpenHome events each change
  clock_.Advance(159);
  EXPECT_EQ(BatchesOf(kRenderingControlType).size(), 1u);
  clock_.Advance(1);
  const std::vector<HOST_EventBatch> lastChanges = BatchesOf(kRenderingControlType);
  ASSERT_EQ(lastChanges.size(), 2u);
  EXPECT_EQ(MasterLevel(lastChanges[1][0].second).first, "44");
  clock_.Advance(1000);
  EXPECT_EQ(BatchesOf(kRenderingControlType).size(), 2u);
}

TEST_F(HostServicesFixture, QueryOfLastChangeIsTheWholeRenderingControlState) {
  volume_ = 12;
  mute_ = true;
  std::string value;
  ASSERT_TRUE(services_->Query(kRenderingControlType, "LastChange", &value));
  EXPECT_NE(value.find("urn:schemas-upnp-org:metadata-1-0/RCS/"), std::string::npos) << value;
  EXPECT_NE(value.find("<PresetNameList val=\"FactoryDefaults\"/>"), std::string::npos) << value;
  EXPECT_EQ(MasterLevel(value), std::make_pair(std::string("12"), std::string("1")));
  EXPECT_FALSE(services_->Query(kRenderingControlType, "Volume", &value));
  EXPECT_TRUE(events_.batches.empty());
}

TEST_F(HostServicesFixture, QueryOfVolumeVariablesAnswersEachEventedOne) {
  volume_ = 77;
  const std::pair<const char*, const char*> expected[] = {
      {"Volume", "77"},     {"Mute", "false"},        {"Balance", "0"},    {"Fade", "0"},
      {"VolumeLimit", "100"}, {"VolumeMax", "100"},   {"VolumeUnity", "80"}, {"VolumeSteps", "100"},
      {"VolumeMilliDbPerStep", "1024"}, {"BalanceMax", "0"}, {"FadeMax", "0"}};
  for (const auto& [name, text] : expected) {
    std::string value;
    ASSERT_TRUE(services_->Query(kVolumeType, name, &value)) << name;
    EXPECT_EQ(value, text) << name;
  }
  std::string value = "untouched";
  EXPECT_FALSE(services_->Query(kVolumeType, "Loudness", &value));
  EXPECT_EQ(value, "untouched");
}

TEST_F(HostServicesFixture, QueryWithoutThePlayersLevelHasNoVolumeValue) {
  EXPECT_CALL(player_, GetVolume(_, 0, _)).WillRepeatedly(Return(501));
  std::string value = "untouched";
  EXPECT_FALSE(services_->Query(kRenderingControlType, "LastChange", &value));
  EXPECT_FALSE(services_->Query(kVolumeType, "Volume", &value));
  EXPECT_EQ(value, "untouched");
  EXPECT_TRUE(services_->Query(kVolumeType, "VolumeMax", &value));
  EXPECT_EQ(value, "100");
}
