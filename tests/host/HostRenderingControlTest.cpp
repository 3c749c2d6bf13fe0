// RenderingControl:1 as the daemon answers it, on the player's volume and mute.
#include "HostServicesFixture.h"

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::Return;

TEST_F(HostServicesFixture, RenderingControlListsTheOnePreset) {
  const HOST_ActionOutcome outcome = Perform(kRenderingControlType, "ListPresets", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("CurrentPresetNameList", "FactoryDefaults")));
}

TEST_F(HostServicesFixture, RenderingControlSelectsFactoryDefaultsWithoutChangingTheVolume) {
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  EXPECT_CALL(player_, SetMute(_, _, _)).Times(0);
  const HOST_ActionOutcome outcome =
      Perform(kRenderingControlType, "SelectPreset", {{"InstanceID", "0"}, {"PresetName", "FactoryDefaults"}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_TRUE(outcome.out.empty());
}

TEST_F(HostServicesFixture, RenderingControlUnknownPresetIsInvalidName) {
  HOST_ActionOutcome outcome =
      Perform(kRenderingControlType, "SelectPreset", {{"InstanceID", "0"}, {"PresetName", "Loud"}});
  EXPECT_EQ(outcome.errorCode, 701);
  EXPECT_EQ(outcome.errorDescription, "Invalid Name");
  outcome = Perform(kRenderingControlType, "SelectPreset", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 402);
}

TEST_F(HostServicesFixture, RenderingControlGetVolumeAndMuteReadThePlayer) {
  volume_ = 42;
  mute_ = true;
  HOST_ActionOutcome outcome = PerformMaster("GetVolume");
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("CurrentVolume", "42")));
  outcome = PerformMaster("GetMute");
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("CurrentMute", "1")));
}

TEST_F(HostServicesFixture, RenderingControlSetVolumeTakesZeroToHundred) {
  for (const char* value : {"0", "100", "55"}) {
    const HOST_ActionOutcome outcome = PerformMaster("SetVolume", {{"DesiredVolume", value}});
    EXPECT_EQ(outcome.errorCode, 0) << value;
    EXPECT_EQ(std::to_string(volume_), value);
  }
}

TEST_F(HostServicesFixture, RenderingControlVolumeOutsideTheRangeIsInvalidArgs) {
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  for (const char* value : {"101", "-1", "+5", "5.0", "abc", "", "99999999999"}) {
    const HOST_ActionOutcome outcome = PerformMaster("SetVolume", {{"DesiredVolume", value}});
    EXPECT_EQ(outcome.errorCode, 402) << value;
    EXPECT_EQ(outcome.errorDescription, "Invalid Args") << value;
  }
  EXPECT_EQ(PerformMaster("SetVolume").errorCode, 402);
}

TEST_F(HostServicesFixture, RenderingControlSetMuteTakesBothBooleanSpellings) {
  const std::pair<const char*, bool> cases[] = {{"1", true}, {"0", false}, {"true", true}, {"false", false}};
  for (const auto& [text, muted] : cases) {
    EXPECT_EQ(PerformMaster("SetMute", {{"DesiredMute", text}}).errorCode, 0) << text;
    EXPECT_EQ(mute_, muted) << text;
  }
  EXPECT_EQ(PerformMaster("SetMute", {{"DesiredMute", "yes"}}).errorCode, 402);
  EXPECT_EQ(PerformMaster("SetMute").errorCode, 402);
}

TEST_F(HostServicesFixture, RenderingControlChannelOtherThanMasterIsInvalidArgs) {
  EXPECT_CALL(player_, SetVolume(_, _, _)).Times(0);
  for (const char* action : {"GetVolume", "SetVolume", "GetMute", "SetMute", "GetVolumeDB"}) {
    HOST_ActionOutcome outcome = Perform(kRenderingControlType, action,
                                         {{"InstanceID", "0"}, {"Channel", "LF"}, {"DesiredVolume", "5"},
                                          {"DesiredMute", "1"}});
    EXPECT_EQ(outcome.errorCode, 402) << action;
    outcome = Perform(kRenderingControlType, action, {{"InstanceID", "0"}});
    EXPECT_EQ(outcome.errorCode, 402) << action;
  }
}

TEST_F(HostServicesFixture, RenderingControlOtherInstanceIsInvalidInstanceId) {
  for (const char* action : {"ListPresets", "SelectPreset", "GetVolume", "SetMute", "GetVolumeDBRange"}) {
    HOST_ActionOutcome outcome = Perform(kRenderingControlType, action,
                                         {{"InstanceID", "1"}, {"Channel", "Master"}, {"DesiredMute", "1"},
                                          {"PresetName", "FactoryDefaults"}});
    EXPECT_EQ(outcome.errorCode, 702) << action;
    EXPECT_EQ(outcome.errorDescription, "Invalid InstanceID") << action;
    outcome = Perform(kRenderingControlType, action, {{"Channel", "Master"}});
    EXPECT_EQ(outcome.errorCode, 402) << action;
  }
}

TEST_F(HostServicesFixture, RenderingControlPlayerFailureIsActionFailed) {
  EXPECT_CALL(player_, SetVolume(_, 0, _)).WillOnce(Return(501));
  EXPECT_EQ(PerformMaster("SetVolume", {{"DesiredVolume", "20"}}).errorCode, 501);
  EXPECT_CALL(player_, GetVolume(_, 0, _)).WillRepeatedly(Return(501));
  const HOST_ActionOutcome outcome = PerformMaster("GetVolume");
  EXPECT_EQ(outcome.errorCode, 501);
  EXPECT_EQ(outcome.errorDescription, "Action Failed");
}

TEST_F(HostServicesFixture, RenderingControlWithoutDbMixerAnswersDbActionsActionFailed) {
  EXPECT_EQ(PerformMaster("GetVolumeDB").errorCode, 501);
  EXPECT_EQ(PerformMaster("GetVolumeDBRange").errorCode, 501);
  EXPECT_EQ(PerformMaster("SetVolumeDB", {{"DesiredVolume", "-256"}}).errorCode, 501);
  EXPECT_EQ(PerformMaster("SetVolumeDB").errorCode, 402);
}

TEST_F(HostServicesFixture, RenderingControlUnknownActionIsInvalidAction) {
  const HOST_ActionOutcome outcome = PerformMaster("GetLoudness");
  EXPECT_EQ(outcome.errorCode, 401);
  EXPECT_EQ(outcome.errorDescription, "Invalid Action");
}
