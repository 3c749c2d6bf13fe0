#include <gtest/gtest.h>

#include "TimeText.h"

namespace {

constexpr int64_t kSecond = 1000000000;

TEST(PlayerTimeText, ReadsHoursMinutesAndSeconds) {
  EXPECT_EQ(PLAYER_ParseTime("0:00:00"), 0);
  EXPECT_EQ(PLAYER_ParseTime("1:02:05"), 3725 * kSecond);
  EXPECT_EQ(PLAYER_ParseTime("00:03:25"), 205 * kSecond);
  EXPECT_EQ(PLAYER_ParseTime("123:00:01"), (123 * 3600 + 1) * kSecond);
}

TEST(PlayerTimeText, ReadsADecimalFraction) {
  EXPECT_EQ(PLAYER_ParseTime("0:00:01.5"), kSecond + kSecond / 2);
  EXPECT_EQ(PLAYER_ParseTime("0:00:01.250"), kSecond + kSecond / 4);
  EXPECT_EQ(PLAYER_ParseTime("0:00:00.123456789123"), 123456789);
}

TEST(PlayerTimeText, ReadsAFractionAsNumeratorOverDenominator) {
  EXPECT_EQ(PLAYER_ParseTime("0:00:02.1/4"), 2 * kSecond + kSecond / 4);
  EXPECT_EQ(PLAYER_ParseTime("0:00:02.4/4"), -1);
  EXPECT_EQ(PLAYER_ParseTime("0:00:02.1/0"), -1);
}

TEST(PlayerTimeText, RefusesHoursPastWhatNanosecondsCanHold) {
  EXPECT_EQ(PLAYER_ParseTime("2562047:00:00"), 2562047LL * 3600 * kSecond);
  EXPECT_EQ(PLAYER_ParseTime("2562048:00:00"), -1);
  EXPECT_EQ(PLAYER_ParseTime("999999999:00:00"), -1);
}

TEST(PlayerTimeText, TakesOneDigitMinutesAndSeconds) { EXPECT_EQ(PLAYER_ParseTime("0:1:5"), 65 * kSecond); }

TEST(PlayerTimeText, RefusesWhatIsNoTime) {
  for (const char* text : {"", "5", "1:2", "0:60:00", "0:00:60", "-0:00:01", "0:00:01.", "0:00:01x",
                           "a:00:00", "0:000:01", " 0:00:01", "0:00:01.5/"}) {
    EXPECT_EQ(PLAYER_ParseTime(text), -1) << text;
  }
}

TEST(PlayerTimeText, WritesAtLeastTwoHourDigits) {
  EXPECT_EQ(PLAYER_FormatTime(0), "00:00:00");
  EXPECT_EQ(PLAYER_FormatTime(205 * kSecond + 999999999), "00:03:25");
  EXPECT_EQ(PLAYER_FormatTime(3725 * kSecond), "01:02:05");
  EXPECT_EQ(PLAYER_FormatTime(100 * 3600 * kSecond), "100:00:00");
}

TEST(PlayerTimeText, WritesAnUnknownTimeAsZero) {
  EXPECT_EQ(PLAYER_FormatTime(-1), "00:00:00");
  EXPECT_EQ(PLAYER_FormatSeconds(-1), "0");
}

TEST(PlayerTimeText, WritesWholeSeconds) {
  EXPECT_EQ(PLAYER_FormatSeconds(205 * kSecond + kSecond / 2), "205");
}

}  // namespace
