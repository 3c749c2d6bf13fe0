// The player's volume and mute on a hardware mixer element: the player made with PLAYER_CreatePlayer and
// driven through its transfer service, on the test mixer device (support/TestMixerPlugin.cpp).
#include <glib.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>

#include "GStreamerPlayer.h"
#include "MainLoopRunner.h"
#include "TestMixer.h"
#include "dmr_cmn/String.h"
#include "player/Player.h"
#include "sink_core/TransferService.h"

namespace {

constexpr char kDevice[] = "testmixer";
constexpr char kControl[] = "Master";

using Operation = int32_t (SINK_CORE_TransferService::*)(unsigned long, unsigned long, DMR_CMN_String*);

class PlayerMixer : public ::testing::Test {
 protected:
  // A player on the null output whose mixer options are `device` and `control`; the warning it gives
  // goes to *warning.
  std::unique_ptr<SINK_CORE_TransferService> Create(const std::string& device, const std::string& control,
                                                    std::string* warning) {
    PLAYER_Options options;
    options.output = PLAYER_Output::Null;
    options.context = loop_.Context();
    options.mixerDevice = device;
    options.mixerControl = control;
    std::string error;
    auto player = PLAYER_CreatePlayer(options, &error, warning);
    EXPECT_NE(player, nullptr) << error;
    return player;
  }

  static int32_t Call(SINK_CORE_TransferService& player, Operation operation, const std::string& text,
                      std::string* answer = nullptr) {
    DMR_CMN_String value;
    if (!text.empty()) {
      EXPECT_EQ(value.SetCString(text.c_str()), 0);
    }
    const int32_t result = (player.*operation)(7, 0, &value);
    if (answer != nullptr) *answer = value.GetCString() != nullptr ? value.GetCString() : "";
    return result;
  }
  static std::string Answer(SINK_CORE_TransferService& player, Operation operation) {
    std::string answer;
    EXPECT_EQ(Call(player, operation, "", &answer), 0);
    return answer;
  }

  // The pipeline's software volume and mute.
  static std::pair<double, bool> Software(SINK_CORE_TransferService& player) {
    gdouble volume = -1.0;
    gboolean muted = TRUE;
    g_object_get(static_cast<PLAYER_GStreamerPlayer&>(player).Pipeline(), "volume", &volume, "mute", &muted,
                 nullptr);
    return {volume, muted != FALSE};
  }

  PLAYER_MainLoopRunner loop_;
  PLAYER_TestMixer card_;
};

TEST_F(PlayerMixer, EveryLevelRoundTripsThroughTheElement) {
  std::string warning = "not emptied";
  auto player = Create(kDevice, kControl, &warning);
  ASSERT_NE(player, nullptr);
  EXPECT_EQ(warning, "");
  EXPECT_TRUE(static_cast<PLAYER_GStreamerPlayer&>(*player).HasHardwareMixer());
  for (int percent = 0; percent <= 100; ++percent) {
    ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, std::to_string(percent)), 0);
    EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetVolume), std::to_string(percent));
  }
}

TEST_F(PlayerMixer, TheElementsRawValueFollowsTheCubicCurve) {
  std::string warning;
  auto player = Create(kDevice, kControl, &warning);
  ASSERT_NE(player, nullptr);
  // Raw value = (gain + 51.00 dB) / 0.20 dB; 50 is 0.57063 cubed = -14.62 dB, 10 is -38.62 dB.
  const std::pair<const char*, long> expected[] = {{"0", 0}, {"10", 62}, {"50", 182}, {"100", 255}};
  for (const auto& [level, raw] : expected) {
    ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, level), 0);
    const auto state = card_.Read(kDevice);
    ASSERT_TRUE(state) << level;
    EXPECT_EQ(state->left, raw) << level;
    EXPECT_EQ(state->right, raw) << level;
  }
}

TEST_F(PlayerMixer, MuteTurnsTheElementsSwitchOffAndOn) {
  std::string warning;
  auto player = Create(kDevice, kControl, &warning);
  ASSERT_NE(player, nullptr);
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "1"), 0);
  auto state = card_.Read(kDevice);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->leftOn, 0);
  EXPECT_EQ(state->rightOn, 0);
  EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetMute), "1");
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "false"), 0);
  state = card_.Read(kDevice);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->leftOn, 1);
  EXPECT_EQ(state->rightOn, 1);
  EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetMute), "0");
}

TEST_F(PlayerMixer, SoftwareVolumeStaysFullAndUnmutedWhileTheElementIsUsed) {
  std::string warning;
  auto player = Create(kDevice, kControl, &warning);
  ASSERT_NE(player, nullptr);
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "30"), 0);
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "1"), 0);
  EXPECT_EQ(Software(*player), std::make_pair(1.0, false));
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "0"), 0);
  EXPECT_EQ(Software(*player), std::make_pair(1.0, false));
}

TEST_F(PlayerMixer, WhatTheScaleRefusesLeavesTheElementAlone) {
  std::string warning;
  auto player = Create(kDevice, kControl, &warning);
  ASSERT_NE(player, nullptr);
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "50"), 0);
  EXPECT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "101"), 601);
  EXPECT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "loud"), 402);
  EXPECT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "maybe"), 402);
  const auto state = card_.Read(kDevice);
  ASSERT_TRUE(state);
  EXPECT_EQ(state->left, 182);
  EXPECT_EQ(state->leftOn, 1);
}

TEST_F(PlayerMixer, AnElementThatRefusesAChangeIsActionFailed) {
  std::string warning;
  auto player = Create("testmixer_refusing", kControl, &warning);
  ASSERT_NE(player, nullptr);
  EXPECT_EQ(warning, "");
  EXPECT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "50"), 501);
  EXPECT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "1"), 501);
  // What it holds is still answered, and the software volume is not used instead.
  EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetVolume), "100");
  EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetMute), "0");
  EXPECT_EQ(Software(*player), std::make_pair(1.0, false));
}

TEST_F(PlayerMixer, AMissingElementFallsBackToSoftwareVolumeWithAWarning) {
  std::string warning;
  auto player = Create(kDevice, "Headphone", &warning);
  ASSERT_NE(player, nullptr);
  EXPECT_NE(warning.find("\"Headphone\""), std::string::npos) << warning;
  EXPECT_NE(warning.find("software"), std::string::npos) << warning;
  EXPECT_FALSE(static_cast<PLAYER_GStreamerPlayer&>(*player).HasHardwareMixer());
  // 50 on the cubic scale is an eighth of the amplitude, in the pipeline; the device is not touched.
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "50"), 0);
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetMute, "1"), 0);
  const auto software = Software(*player);
  EXPECT_NEAR(software.first, 0.125, 1e-9);
  EXPECT_TRUE(software.second);
  EXPECT_EQ(Answer(*player, &SINK_CORE_TransferService::GetVolume), "50");
  EXPECT_FALSE(card_.Read(kDevice));
}

TEST_F(PlayerMixer, AMissingDeviceFallsBackToSoftwareVolumeWithAWarning) {
  std::string warning;
  auto player = Create("nosuchmixerdevice", kControl, &warning);
  ASSERT_NE(player, nullptr);
  EXPECT_NE(warning.find("\"nosuchmixerdevice\""), std::string::npos) << warning;
  EXPECT_FALSE(static_cast<PLAYER_GStreamerPlayer&>(*player).HasHardwareMixer());
  ASSERT_EQ(Call(*player, &SINK_CORE_TransferService::SetVolume, "50"), 0);
  EXPECT_NEAR(Software(*player).first, 0.125, 1e-9);
}

TEST_F(PlayerMixer, ADeviceWithoutAControlIsAWarning) {
  for (const auto& [device, control] : {std::make_pair(kDevice, ""), std::make_pair("", kControl)}) {
    std::string warning;
    auto player = Create(device, control, &warning);
    ASSERT_NE(player, nullptr);
    EXPECT_NE(warning.find("both"), std::string::npos) << warning;
    EXPECT_FALSE(static_cast<PLAYER_GStreamerPlayer&>(*player).HasHardwareMixer());
  }
}

TEST_F(PlayerMixer, WithoutAMixerThereIsNoWarning) {
  std::string warning = "not emptied";
  auto player = Create("", "", &warning);
  ASSERT_NE(player, nullptr);
  EXPECT_EQ(warning, "");
  EXPECT_FALSE(static_cast<PLAYER_GStreamerPlayer&>(*player).HasHardwareMixer());
}

// Collects the player's warnings while it lives.
class WarningLog {
 public:
  WarningLog() {
    handler_ = g_log_set_handler("player", G_LOG_LEVEL_WARNING, &WarningLog::Record, &messages_);
  }
  ~WarningLog() { g_log_remove_handler("player", handler_); }
  const std::string& Messages() const { return messages_; }

 private:
  static void Record(const gchar*, GLogLevelFlags, const gchar* message, gpointer messages) {
    *static_cast<std::string*>(messages) += std::string(message) + "\n";
  }
  guint handler_ = 0;
  std::string messages_;
};

TEST_F(PlayerMixer, AHostThatTakesNoWarningFindsItInTheLog) {
  WarningLog log;
  auto player = Create(kDevice, "Headphone", nullptr);
  ASSERT_NE(player, nullptr);
  EXPECT_NE(log.Messages().find("\"Headphone\""), std::string::npos) << log.Messages();
}

}  // namespace
