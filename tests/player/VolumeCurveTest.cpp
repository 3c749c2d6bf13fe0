#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "VolumeCurve.h"

namespace {

// A common hardware range: -51.00 dB to 0.00 dB, in hundredths.
constexpr long kMinDb = -5100;
constexpr long kMaxDb = 0;
// ALSA's gain for "muted", the minimum of a scale whose lowest step silences.
constexpr long kMutedDb = -9999999;

TEST(PlayerVolumeCurve, CubicEndsAreTheRangesEnds) {
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.0, kMinDb, kMaxDb), kMinDb);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(1.0, kMinDb, kMaxDb), kMaxDb);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(-0.5, kMinDb, kMaxDb), kMinDb);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(1.5, kMinDb, kMaxDb), kMaxDb);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(std::nan(""), kMinDb, kMaxDb), kMinDb);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(1.0, -3000, -600), -600);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.0, -3000, -600), -3000);
}

TEST(PlayerVolumeCurve, CubicMovesTheCubeRootOfTheAmplitudeBetweenTheEnds) {
  // The cube root of -51 dB's amplitude is 10^(-5100/6000) = 0.14125; half way to 1 is 0.57063, whose
  // cube is -14.62 dB.
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.5, kMinDb, kMaxDb), -1462);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.01, kMinDb, kMaxDb), -4946);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.1, kMinDb, kMaxDb), -3862);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.25, kMinDb, kMaxDb), -2692);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.9, kMinDb, kMaxDb), -234);
  // A range whose top is below 0 dB is the same curve moved down.
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.5, -3000, -600), -1533);
}

TEST(PlayerVolumeCurve, CubicOnAMutedMinimumIsThePlainCube) {
  // Half the scale is an eighth of the amplitude: -18.06 dB; a tenth is a thousandth: -60 dB.
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.5, kMutedDb, kMaxDb), -1806);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.1, kMutedDb, kMaxDb), -6000);
  EXPECT_EQ(PLAYER_CubicVolumeToDb(0.0, kMutedDb, kMaxDb), kMutedDb);
  EXPECT_DOUBLE_EQ(PLAYER_CubicDbToVolume(kMutedDb, kMutedDb, kMaxDb), 0.0);
  EXPECT_NEAR(PLAYER_CubicDbToVolume(-6000, kMutedDb, kMaxDb), 0.1, 1e-9);
}

TEST(PlayerVolumeCurve, EveryPercentHasItsOwnGainAndComesBack) {
  long previous = std::numeric_limits<long>::min();
  for (int percent = 0; percent <= 100; ++percent) {
    const long db = PLAYER_CubicVolumeToDb(percent / 100.0, kMinDb, kMaxDb);
    EXPECT_GT(db, previous) << percent;
    previous = db;
    EXPECT_EQ(PLAYER_VolumePercent(PLAYER_CubicDbToVolume(db, kMinDb, kMaxDb)), percent) << db;
  }
}

TEST(PlayerVolumeCurve, CubicInverseStaysWithinTheScale) {
  EXPECT_DOUBLE_EQ(PLAYER_CubicDbToVolume(kMinDb, kMinDb, kMaxDb), 0.0);
  EXPECT_DOUBLE_EQ(PLAYER_CubicDbToVolume(kMinDb - 100, kMinDb, kMaxDb), 0.0);
  EXPECT_DOUBLE_EQ(PLAYER_CubicDbToVolume(kMaxDb, kMinDb, kMaxDb), 1.0);
  EXPECT_DOUBLE_EQ(PLAYER_CubicDbToVolume(kMaxDb + 600, kMinDb, kMaxDb), 1.0);
  EXPECT_NEAR(PLAYER_CubicDbToVolume(-1462, kMinDb, kMaxDb), 0.5, 0.001);
}

TEST(PlayerVolumeCurve, LinearSpreadsTheScaleOverTheRawRange) {
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(0.0, 0, 255), 0);
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(1.0, 0, 255), 255);
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(0.5, 0, 255), 128);  // 127.5, rounded away from zero
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(0.37, 0, 255), 94);  // 94.35
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(0.25, -10, 10), -5);
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(-1.0, -10, 10), -10);
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(2.0, -10, 10), 10);
  EXPECT_DOUBLE_EQ(PLAYER_LinearRawToVolume(0, -10, 10), 0.5);
  EXPECT_DOUBLE_EQ(PLAYER_LinearRawToVolume(-20, -10, 10), 0.0);
  EXPECT_DOUBLE_EQ(PLAYER_LinearRawToVolume(20, -10, 10), 1.0);
}

TEST(PlayerVolumeCurve, LinearOnAnEmptyRangeIsItsOnlyValue) {
  EXPECT_EQ(PLAYER_LinearVolumeToRaw(0.5, 7, 7), 7);
  EXPECT_DOUBLE_EQ(PLAYER_LinearRawToVolume(7, 7, 7), 1.0);
}

TEST(PlayerVolumeCurve, EveryPercentComesBackFromALinearRangeOfAtLeastAHundredSteps) {
  for (long steps : {100L, 101L, 255L, 65536L}) {
    for (int percent = 0; percent <= 100; ++percent) {
      const long raw = PLAYER_LinearVolumeToRaw(percent / 100.0, 0, steps);
      EXPECT_EQ(PLAYER_VolumePercent(PLAYER_LinearRawToVolume(raw, 0, steps)), percent) << steps;
    }
  }
}

TEST(PlayerVolumeCurve, PercentIsRoundedAndKeptWithinTheScale) {
  EXPECT_EQ(PLAYER_VolumePercent(0.004), 0);
  EXPECT_EQ(PLAYER_VolumePercent(0.006), 1);
  EXPECT_EQ(PLAYER_VolumePercent(0.994), 99);
  EXPECT_EQ(PLAYER_VolumePercent(0.996), 100);
  EXPECT_EQ(PLAYER_VolumePercent(-0.2), 0);
  EXPECT_EQ(PLAYER_VolumePercent(1.2), 100);
  EXPECT_EQ(PLAYER_VolumePercent(std::nan("")), 0);
}

}  // namespace
