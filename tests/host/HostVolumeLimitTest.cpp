// The configured volume limit and startup volume, on both volume services.
#include <optional>

#include "HostServicesFixture.h"

using ::testing::_;
using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::Pair;

TEST_F(HostServicesFixture, VolumeLimitIsReportedByTheActionAndTheEvents) {
  Configure({60, std::nullopt});
  EXPECT_THAT(Perform(kVolumeType, "VolumeLimit", {}).out, ElementsAre(Pair("Value", "60")));
  std::string value;
  ASSERT_TRUE(services_->Query(kVolumeType, "VolumeLimit", &value));
  EXPECT_EQ(value, "60");
  // The characteristics stay those of the scale: the limit is not the maximum.
  EXPECT_THAT(Perform(kVolumeType, "Characteristics", {}).out, Contains(Pair("VolumeMax", "100")));
}

TEST_F(HostServicesFixture, VolumeSetVolumeAboveTheLimitSetsTheLimit) {
  Configure({60, std::nullopt});
  const HOST_ActionOutcome outcome = Perform(kVolumeType, "SetVolume", {{"Value", "90"}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_EQ(volume_, 60u);
  EXPECT_EQ(Perform(kVolumeType, "SetVolume", {{"Value", "101"}}).errorCode, 402);
  EXPECT_EQ(volume_, 60u);
}

TEST_F(HostServicesFixture, RenderingControlSetVolumeAboveTheLimitSetsTheLimit) {
  Configure({45, std::nullopt});
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "100"}}).errorCode, 0);
  EXPECT_EQ(volume_, 45u);
  EXPECT_THAT(PerformMaster("GetVolume").out, ElementsAre(Pair("CurrentVolume", "45")));
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "20"}}).errorCode, 0);
  EXPECT_EQ(volume_, 20u);
}

TEST_F(HostServicesFixture, VolumeIncStopsAtTheLimitWithoutError) {
  Configure({31, std::nullopt});
  EXPECT_EQ(Perform(kVolumeType, "VolumeInc", {}).errorCode, 0);
  EXPECT_EQ(volume_, 31u);
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  EXPECT_EQ(Perform(kVolumeType, "VolumeInc", {}).errorCode, 0);
  EXPECT_EQ(volume_, 31u);
}

TEST_F(HostServicesFixture, StartupVolumeIsSetAtStart) {
  Configure({100, 12u});
  services_->ApplyStartupVolume();
  EXPECT_EQ(volume_, 12u);
  EXPECT_THAT(Perform(kVolumeType, "Volume", {}).out, ElementsAre(Pair("Value", "12")));
}

TEST_F(HostServicesFixture, StartupVolumeAboveTheLimitStartsAtTheLimit) {
  Configure({50, 80u});
  services_->ApplyStartupVolume();
  EXPECT_EQ(volume_, 50u);
}

TEST_F(HostServicesFixture, VolumeFoundAboveTheLimitAtStartIsLoweredToIt) {
  volume_ = 90;
  Configure({70, std::nullopt});
  services_->ApplyStartupVolume();
  EXPECT_EQ(volume_, 70u);
}

TEST_F(HostServicesFixture, VolumeWithinTheLimitAndNoStartupVolumeIsLeftAlone) {
  volume_ = 40;
  Configure({70, std::nullopt});
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  services_->ApplyStartupVolume();
  EXPECT_EQ(volume_, 40u);
}

TEST_F(HostServicesFixture, StartupVolumeIsWhatTheFirstSubscriberIsTold) {
  Configure({100, 25u});
  services_->ApplyStartupVolume();
  std::string value;
  ASSERT_TRUE(services_->Query(kVolumeType, "Volume", &value));
  EXPECT_EQ(value, "25");
  ASSERT_TRUE(services_->Query(kRenderingControlType, "LastChange", &value));
  EXPECT_EQ(MasterLevel(value).first, "25");
}
