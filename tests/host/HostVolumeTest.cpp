// OpenHome Volume:1 as the daemon answers it, on the player's volume and mute.
#include "HostServicesFixture.h"

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::Return;

TEST_F(HostServicesFixture, VolumeCharacteristicsAreTheFixedOnes) {
  const HOST_ActionOutcome outcome = Perform(kVolumeType, "Characteristics", {});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("VolumeMax", "100"), Pair("VolumeUnity", "80"), Pair("VolumeSteps", "100"),
                                       Pair("VolumeMilliDbPerStep", "1024"), Pair("BalanceMax", "0"),
                                       Pair("FadeMax", "0")));
  EXPECT_THAT(Perform(kVolumeType, "VolumeLimit", {}).out, ElementsAre(Pair("Value", "100")));
}

TEST_F(HostServicesFixture, VolumeSetVolumeIsReadBackByVolume) {
  EXPECT_EQ(Perform(kVolumeType, "SetVolume", {{"Value", "64"}}).errorCode, 0);
  EXPECT_EQ(volume_, 64u);
  const HOST_ActionOutcome outcome = Perform(kVolumeType, "Volume", {});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("Value", "64")));
}

TEST_F(HostServicesFixture, VolumeAboveTheMaximumOrNotANumberIsInvalidArgs) {
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  for (const char* value : {"101", "-3", "x", ""}) {
    const HOST_ActionOutcome outcome = Perform(kVolumeType, "SetVolume", {{"Value", value}});
    EXPECT_EQ(outcome.errorCode, 402) << value;
    EXPECT_EQ(outcome.errorDescription, "Invalid Args") << value;
  }
  EXPECT_EQ(Perform(kVolumeType, "SetVolume", {}).errorCode, 402);
}

TEST_F(HostServicesFixture, VolumeIncAndDecMoveOneStep) {
  EXPECT_EQ(Perform(kVolumeType, "VolumeInc", {}).errorCode, 0);
  EXPECT_EQ(volume_, 31u);
  EXPECT_EQ(Perform(kVolumeType, "VolumeDec", {}).errorCode, 0);
  EXPECT_EQ(Perform(kVolumeType, "VolumeDec", {}).errorCode, 0);
  EXPECT_EQ(volume_, 29u);
}

TEST_F(HostServicesFixture, VolumeIncAndDecStopAtTheEndsWithoutError) {
  volume_ = 100;
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  EXPECT_EQ(Perform(kVolumeType, "VolumeInc", {}).errorCode, 0);
  volume_ = 0;
  EXPECT_EQ(Perform(kVolumeType, "VolumeDec", {}).errorCode, 0);
  EXPECT_EQ(volume_, 0u);
}

TEST_F(HostServicesFixture, VolumeMuteIsWrittenAsOpenHomeBooleans) {
  EXPECT_EQ(Perform(kVolumeType, "SetMute", {{"Value", "true"}}).errorCode, 0);
  EXPECT_TRUE(mute_);
  EXPECT_THAT(Perform(kVolumeType, "Mute", {}).out, ElementsAre(Pair("Value", "true")));
  EXPECT_EQ(Perform(kVolumeType, "SetMute", {{"Value", "0"}}).errorCode, 0);
  EXPECT_FALSE(mute_);
  EXPECT_THAT(Perform(kVolumeType, "Mute", {}).out, ElementsAre(Pair("Value", "false")));
  EXPECT_EQ(Perform(kVolumeType, "SetMute", {{"Value", "on"}}).errorCode, 402);
}

TEST_F(HostServicesFixture, VolumeBalanceAndFadeAreZeroAndCannotBeChanged) {
  EXPECT_THAT(Perform(kVolumeType, "Balance", {}).out, ElementsAre(Pair("Value", "0")));
  EXPECT_THAT(Perform(kVolumeType, "Fade", {}).out, ElementsAre(Pair("Value", "0")));
  for (const char* action : {"SetBalance", "BalanceInc", "BalanceDec", "SetFade", "FadeInc", "FadeDec"}) {
    const HOST_ActionOutcome outcome = Perform(kVolumeType, action, {{"Value", "0"}});
    EXPECT_EQ(outcome.errorCode, 501) << action;
    EXPECT_EQ(outcome.errorDescription, "Action Failed") << action;
  }
}

TEST_F(HostServicesFixture, VolumePlayerFailureIsActionFailed) {
  EXPECT_CALL(player_, GetVolume(_, 0, _)).WillRepeatedly(Return(501));
  EXPECT_EQ(Perform(kVolumeType, "Volume", {}).errorCode, 501);
  EXPECT_EQ(Perform(kVolumeType, "VolumeInc", {}).errorCode, 501);
  EXPECT_EQ(Perform(kVolumeType, "Nonsense", {}).errorCode, 401);
}
