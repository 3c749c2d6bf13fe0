// PLAYER_AlsaMixer on the test mixer device (support/TestMixerPlugin.cpp), whose element's values the test
// reads back from the device's state file.
#include <gtest/gtest.h>

#include <string>
#include <utility>

#include "AlsaMixer.h"
#include "TestMixer.h"

namespace {

constexpr char kDecibels[] = "testmixer";
constexpr char kLinear[] = "testmixer_linear";
constexpr char kNoSwitch[] = "testmixer_noswitch";
constexpr char kCoarse[] = "testmixer_coarse";
constexpr char kControl[] = "Master";

class PlayerAlsaMixer : public ::testing::Test {
 protected:
  // A mixer opened on "Master" of `device`; a test failure when it does not open.
  void Open(PLAYER_AlsaMixer* mixer, const char* device) {
    std::string error;
    ASSERT_TRUE(mixer->Open(device, kControl, &error)) << error;
  }
  int Volume(PLAYER_AlsaMixer& mixer) {
    int percent = -1;
    EXPECT_TRUE(mixer.GetVolume(&percent));
    return percent;
  }
  bool Muted(PLAYER_AlsaMixer& mixer) {
    bool muted = false;
    EXPECT_TRUE(mixer.GetMute(&muted));
    return muted;
  }
  // Both raw channel values of `device`, as the device holds them; -1 when it holds nothing.
  std::pair<long, long> Raw(const char* device) {
    const auto state = card_.Read(device);
    return state ? std::make_pair(state->left, state->right) : std::make_pair(-1L, -1L);
  }

  PLAYER_TestMixer card_;
};

TEST_F(PlayerAlsaMixer, OpensTheElementAndTellsWhatItHas) {
  PLAYER_AlsaMixer full;
  ASSERT_NO_FATAL_FAILURE(Open(&full, kDecibels));
  EXPECT_TRUE(full.HasDecibels());
  EXPECT_TRUE(full.HasSwitch());
  PLAYER_AlsaMixer linear;
  ASSERT_NO_FATAL_FAILURE(Open(&linear, kLinear));
  EXPECT_FALSE(linear.HasDecibels());
  EXPECT_TRUE(linear.HasSwitch());
  PLAYER_AlsaMixer noSwitch;
  ASSERT_NO_FATAL_FAILURE(Open(&noSwitch, kNoSwitch));
  EXPECT_TRUE(noSwitch.HasDecibels());
  EXPECT_FALSE(noSwitch.HasSwitch());
}

TEST_F(PlayerAlsaMixer, OpenNamesTheDeviceOrElementThatIsMissing) {
  PLAYER_AlsaMixer noDevice;
  std::string error;
  EXPECT_FALSE(noDevice.Open("nosuchmixerdevice", kControl, &error));
  EXPECT_NE(error.find("\"nosuchmixerdevice\""), std::string::npos) << error;

  PLAYER_AlsaMixer noElement;
  error.clear();
  EXPECT_FALSE(noElement.Open(kDecibels, "Headphone", &error));
  EXPECT_NE(error.find("\"Headphone\""), std::string::npos) << error;
  EXPECT_NE(error.find("\"testmixer\""), std::string::npos) << error;

  // A mixer that did not open does nothing and says so.
  int percent = -1;
  bool muted = false;
  EXPECT_FALSE(noElement.GetVolume(&percent));
  EXPECT_FALSE(noElement.SetVolume(50));
  EXPECT_FALSE(noElement.GetMute(&muted));
  EXPECT_FALSE(noElement.SetMute(true));
  EXPECT_EQ(percent, -1);
}

TEST_F(PlayerAlsaMixer, EveryLevelComesBackAsItWasSet) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kDecibels));
  for (int percent = 0; percent <= 100; ++percent) {
    ASSERT_TRUE(mixer.SetVolume(percent));
    EXPECT_EQ(Volume(mixer), percent);
  }
}

TEST_F(PlayerAlsaMixer, BothChannelsFollowTheCubicCurveOverTheDecibelRange) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kDecibels));
  // Raw value = (gain + 51.00 dB) / 0.20 dB, nearest; the gains are those of VolumeCurveTest.
  const std::pair<int, long> expected[] = {{0, 0},    {1, 8},    {10, 62},  {25, 120},
                                           {50, 182}, {90, 243}, {99, 254}, {100, 255}};
  for (const auto& [percent, raw] : expected) {
    ASSERT_TRUE(mixer.SetVolume(percent));
    EXPECT_EQ(Raw(kDecibels), std::make_pair(raw, raw)) << percent;
  }
}

TEST_F(PlayerAlsaMixer, AMixerOpenedAfreshReadsEveryLevelFromTheElement) {
  PLAYER_AlsaMixer writer;
  ASSERT_NO_FATAL_FAILURE(Open(&writer, kDecibels));
  for (int percent = 0; percent <= 100; ++percent) {
    ASSERT_TRUE(writer.SetVolume(percent));
    PLAYER_AlsaMixer reader;
    ASSERT_NO_FATAL_FAILURE(Open(&reader, kDecibels));
    EXPECT_EQ(Volume(reader), percent);
  }
}

TEST_F(PlayerAlsaMixer, AnElementWithoutDecibelsIsSpreadLinearly) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kLinear));
  ASSERT_TRUE(mixer.SetVolume(50));
  EXPECT_EQ(Raw(kLinear), std::make_pair(128L, 128L));  // 127.5
  ASSERT_TRUE(mixer.SetVolume(37));
  EXPECT_EQ(Raw(kLinear), std::make_pair(94L, 94L));  // 94.35
  for (int percent = 0; percent <= 100; ++percent) {
    ASSERT_TRUE(mixer.SetVolume(percent));
    EXPECT_EQ(Volume(mixer), percent);
    PLAYER_AlsaMixer reader;
    ASSERT_NO_FATAL_FAILURE(Open(&reader, kLinear));
    EXPECT_EQ(Volume(reader), percent);
  }
}

TEST_F(PlayerAlsaMixer, ALevelACoarseElementCannotHoldIsAnsweredAsItWasSet) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kCoarse));
  // 21 raw values for 101 levels: most levels share their raw value with a neighbour.
  for (int percent = 0; percent <= 100; ++percent) {
    ASSERT_TRUE(mixer.SetVolume(percent));
    EXPECT_EQ(Volume(mixer), percent);
  }
  ASSERT_TRUE(mixer.SetVolume(37));
  EXPECT_EQ(Raw(kCoarse), std::make_pair(7L, 7L));  // 7.4
  // A mixer that did not set it reads what the element holds: 7 of 20.
  PLAYER_AlsaMixer reader;
  ASSERT_NO_FATAL_FAILURE(Open(&reader, kCoarse));
  EXPECT_EQ(Volume(reader), 35);
}

TEST_F(PlayerAlsaMixer, ALevelOffTheScaleIsTakenAsItsNearestEnd) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kDecibels));
  ASSERT_TRUE(mixer.SetVolume(50));  // away from the device's initial full volume, so that 150 writes
  ASSERT_TRUE(mixer.SetVolume(150));
  EXPECT_EQ(Raw(kDecibels), std::make_pair(255L, 255L));
  EXPECT_EQ(Volume(mixer), 100);
  ASSERT_TRUE(mixer.SetVolume(-5));
  EXPECT_EQ(Raw(kDecibels), std::make_pair(0L, 0L));
  EXPECT_EQ(Volume(mixer), 0);
}

TEST_F(PlayerAlsaMixer, MuteTurnsTheSwitchOffAndLeavesTheVolume) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kDecibels));
  ASSERT_TRUE(mixer.SetVolume(50));
  EXPECT_FALSE(Muted(mixer));
  ASSERT_TRUE(mixer.SetMute(true));
  auto state = card_.Read(kDecibels);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->leftOn, 0);
  EXPECT_EQ(state->rightOn, 0);
  EXPECT_EQ(state->left, 182);
  EXPECT_TRUE(Muted(mixer));
  EXPECT_EQ(Volume(mixer), 50);
  // The volume moves while muted, and the switch stays off.
  ASSERT_TRUE(mixer.SetVolume(25));
  EXPECT_EQ(Raw(kDecibels), std::make_pair(120L, 120L));
  EXPECT_TRUE(Muted(mixer));
  ASSERT_TRUE(mixer.SetMute(false));
  state = card_.Read(kDecibels);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->leftOn, 1);
  EXPECT_EQ(state->rightOn, 1);
  EXPECT_FALSE(Muted(mixer));
  EXPECT_EQ(Volume(mixer), 25);
}

TEST_F(PlayerAlsaMixer, WithoutASwitchMuteIsTheMinimumAndUnmuteRestoresTheLevel) {
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kNoSwitch));
  ASSERT_TRUE(mixer.SetVolume(60));
  EXPECT_EQ(Raw(kNoSwitch), std::make_pair(200L, 200L));
  ASSERT_TRUE(mixer.SetMute(true));
  EXPECT_EQ(Raw(kNoSwitch), std::make_pair(0L, 0L));
  EXPECT_TRUE(Muted(mixer));
  EXPECT_EQ(Volume(mixer), 60);
  // Muting twice keeps the level to restore.
  ASSERT_TRUE(mixer.SetMute(true));
  EXPECT_EQ(Volume(mixer), 60);
  // A level set while muted waits for the unmute.
  ASSERT_TRUE(mixer.SetVolume(30));
  EXPECT_EQ(Raw(kNoSwitch), std::make_pair(0L, 0L));
  EXPECT_EQ(Volume(mixer), 30);
  ASSERT_TRUE(mixer.SetMute(false));
  EXPECT_EQ(Raw(kNoSwitch), std::make_pair(135L, 135L));
  EXPECT_FALSE(Muted(mixer));
  EXPECT_EQ(Volume(mixer), 30);
}

TEST_F(PlayerAlsaMixer, OpensOnWhatTheDeviceHolds) {
  card_.Write(kDecibels, PLAYER_TestMixerState{182, 182, 0, 0});
  PLAYER_AlsaMixer mixer;
  ASSERT_NO_FATAL_FAILURE(Open(&mixer, kDecibels));
  EXPECT_EQ(Volume(mixer), 50);
  EXPECT_TRUE(Muted(mixer));
}

}  // namespace
