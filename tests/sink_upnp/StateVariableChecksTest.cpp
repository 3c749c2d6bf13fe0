#include <gtest/gtest.h>

#include <cctype>
#include <cstdint>
#include <string>
#include <vector>

#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"
#include "sink_upnp/StateVariableChecks.h"

namespace {

using CheckFn = int32_t (*)(const char*);

const std::vector<std::string> kTransportStates = {
    "STOPPED", "PLAYING", "TRANSITIONING", "PAUSED_PLAYBACK", "PAUSED_RECORDING", "RECORDING", "NO_MEDIA_PRESENT",
};
const std::vector<std::string> kTransportStatuses = {"OK", "ERROR_OCCURRED"};
const std::vector<std::string> kStorageMedia = {
    "UNKNOWN",  "DV",       "MINI-DV",    "VHS",      "W-VHS",     "S-VHS", "D-VHS",  "VHSC",
    "VIDEO8",   "HI8",      "CD-ROM",     "CD-DA",    "CD-R",      "CD-RW", "VIDEO-CD", "SACD",
    "MD-AUDIO", "MD-PICTURE", "DVD-ROM",  "DVD-VIDEO", "DVD-R",    "DVD+RW", "DVD-RW", "DVD-RAM",
    "DVD-AUDIO", "DAT",     "LD",         "HDD",      "MICRO-MV",  "NETWORK", "NONE", "NOT_IMPLEMENTED",
};
const std::vector<std::string> kPlayModes = {
    "NORMAL", "SHUFFLE", "REPEAT_ONE", "REPEAT_ALL", "RANDOM", "DIRECT_1", "INTRO",
};
const std::vector<std::string> kWriteStatuses = {"WRITABLE", "PROTECTED", "NOT_WRITABLE", "UNKNOWN",
                                                 "NOT_IMPLEMENTED"};
const std::vector<std::string> kQualityModes = {
    "0:EP", "1:LP", "2:SP", "0:BASIC", "1:MEDIUM", "2:HIGH", "NOT_IMPLEMENTED",
};

bool Contains(const std::vector<std::string>& list, const std::string& text) {
  for (const std::string& entry : list) {
    if (entry == text) return true;
  }
  return false;
}

// Texts one step away from each entry: other case, surrounding blanks, one byte short or long. Those that
// happen to be entries themselves ("CD-RW" one short is "CD-R") are left out.
std::vector<std::string> NearMisses(const std::vector<std::string>& list) {
  std::vector<std::string> misses = {"", " ", "\t"};
  for (const std::string& entry : list) {
    std::string lower = entry;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    std::string mixed = entry;
    mixed[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(mixed[0])));
    const std::string candidates[] = {
        lower, mixed, " " + entry, entry + " ", entry + "\n", entry.substr(0, entry.size() - 1), entry + "X",
        entry + entry,
    };
    for (const std::string& candidate : candidates) {
      if (!Contains(list, candidate)) misses.push_back(candidate);
    }
  }
  return misses;
}

void ExpectAcceptsEveryEntry(CheckFn check, const std::vector<std::string>& list) {
  for (const std::string& entry : list) EXPECT_EQ(check(entry.c_str()), 0) << "\"" << entry << "\"";
}

void ExpectRefusesNearMisses(CheckFn check, const std::vector<std::string>& list) {
  for (const std::string& miss : NearMisses(list)) EXPECT_EQ(check(miss.c_str()), -961) << "\"" << miss << "\"";
}

// ---- Transport state ----

TEST(CheckTransportState, AcceptsEveryState) { ExpectAcceptsEveryEntry(SINK_UPNP_CheckTransportState, kTransportStates); }

TEST(CheckTransportState, RefusesNearMisses) { ExpectRefusesNearMisses(SINK_UPNP_CheckTransportState, kTransportStates); }

TEST(CheckTransportState, IsCaseSensitive) {
  EXPECT_EQ(SINK_UPNP_CheckTransportState("PLAYING"), 0);
  EXPECT_EQ(SINK_UPNP_CheckTransportState("playing"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTransportState("Playing"), -961);
}

TEST(CheckTransportState, RefusesTheOpenHomeSpellings) {
  for (const char* text : {"Stopped", "Playing", "Paused", "Buffering"}) {
    EXPECT_EQ(SINK_UPNP_CheckTransportState(text), -961) << text;
  }
}

TEST(CheckTransportState, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckTransportState(nullptr), -1); }

// ---- Transport status ----

TEST(CheckTransportStatus, AcceptsBothStatuses) {
  ExpectAcceptsEveryEntry(SINK_UPNP_CheckTransportStatus, kTransportStatuses);
}

TEST(CheckTransportStatus, RefusesNearMisses) {
  ExpectRefusesNearMisses(SINK_UPNP_CheckTransportStatus, kTransportStatuses);
  EXPECT_EQ(SINK_UPNP_CheckTransportStatus("ERROR"), -961);
}

TEST(CheckTransportStatus, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckTransportStatus(nullptr), -1); }

// ---- Storage medium ----

TEST(CheckPlaybackStorageMedium, AcceptsEveryMedium) {
  ASSERT_EQ(kStorageMedia.size(), 32u);
  ExpectAcceptsEveryEntry(SINK_UPNP_CheckPlaybackStorageMedium, kStorageMedia);
}

TEST(CheckPlaybackStorageMedium, RefusesNearMisses) {
  ExpectRefusesNearMisses(SINK_UPNP_CheckPlaybackStorageMedium, kStorageMedia);
  for (const char* text : {"NONE,NETWORK", "DVD+R", "CD", "DVD", "MINIDV", "Hi8"}) {
    EXPECT_EQ(SINK_UPNP_CheckPlaybackStorageMedium(text), -961) << text;
  }
}

TEST(CheckPlaybackStorageMedium, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckPlaybackStorageMedium(nullptr), -1); }

// ---- Play mode ----

TEST(CheckCurrentPlayMode, AcceptsEveryMode) { ExpectAcceptsEveryEntry(SINK_UPNP_CheckCurrentPlayMode, kPlayModes); }

TEST(CheckCurrentPlayMode, RefusesNearMisses) {
  ExpectRefusesNearMisses(SINK_UPNP_CheckCurrentPlayMode, kPlayModes);
  for (const char* text : {"DIRECT_2", "REPEAT", "DIRECT"}) EXPECT_EQ(SINK_UPNP_CheckCurrentPlayMode(text), -961) << text;
}

TEST(CheckCurrentPlayMode, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckCurrentPlayMode(nullptr), -1); }

// ---- Play speed ----

TEST(CheckTransportPlaySpeed, AcceptsOneOnly) { EXPECT_EQ(SINK_UPNP_CheckTransportPlaySpeed("1"), 0); }

TEST(CheckTransportPlaySpeed, RefusesFractionsAndOtherSpeeds) {
  for (const char* text : {"1/2", "2", "-1", "0", "01", "1.0", "+1", "1 ", " 1", "", "11", "1/1"}) {
    EXPECT_EQ(SINK_UPNP_CheckTransportPlaySpeed(text), -961) << "\"" << text << "\"";
  }
}

TEST(CheckTransportPlaySpeed, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckTransportPlaySpeed(nullptr), -1); }

// ---- Write status ----

TEST(CheckRecordMediumWriteStatus, AcceptsEveryStatus) {
  ExpectAcceptsEveryEntry(SINK_UPNP_CheckRecordMediumWriteStatus, kWriteStatuses);
}

TEST(CheckRecordMediumWriteStatus, RefusesNearMisses) {
  ExpectRefusesNearMisses(SINK_UPNP_CheckRecordMediumWriteStatus, kWriteStatuses);
  EXPECT_EQ(SINK_UPNP_CheckRecordMediumWriteStatus("NOT_PROTECTED"), -961);
}

TEST(CheckRecordMediumWriteStatus, NullTextIsAnError) {
  EXPECT_EQ(SINK_UPNP_CheckRecordMediumWriteStatus(nullptr), -1);
}

// ---- Quality mode ----

TEST(CheckCurrentRecordQualityMode, AcceptsEveryMode) {
  ExpectAcceptsEveryEntry(SINK_UPNP_CheckCurrentRecordQualityMode, kQualityModes);
}

TEST(CheckCurrentRecordQualityMode, RefusesNearMisses) {
  ExpectRefusesNearMisses(SINK_UPNP_CheckCurrentRecordQualityMode, kQualityModes);
  for (const char* text : {"0:LP", "1:EP", "EP", "2:BASIC", "0", "0:"}) {
    EXPECT_EQ(SINK_UPNP_CheckCurrentRecordQualityMode(text), -961) << text;
  }
}

TEST(CheckCurrentRecordQualityMode, NullTextIsAnError) {
  EXPECT_EQ(SINK_UPNP_CheckCurrentRecordQualityMode(nullptr), -1);
}

// ---- Signed 32-bit ----

TEST(CheckTypeInteger4Byte, AcceptsEmptyTextAndLoneMinus) {
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte(""), 0);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("-"), 0);
}

TEST(CheckTypeInteger4Byte, AcceptsBothEndsOfTheRange) {
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("-2147483648"), 0);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("2147483647"), 0);
}

TEST(CheckTypeInteger4Byte, AcceptsOrdinaryNumbers) {
  for (const char* text : {"0", "5", "-5", "-0", "00", "123456789", "-0000000001", "00000000001"}) {
    EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte(text), 0) << text;
  }
}

TEST(CheckTypeInteger4Byte, RefusesNumbersJustOutsideTheRange) {
  // Eleven characters at most, so a 64-bit `long` would hold all of these: the range must be tested itself.
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("2147483648"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("-2147483649"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("99999999999"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("-9999999999"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("4294967295"), -961);
}

TEST(CheckTypeInteger4Byte, RefusesALeadingPlus) { EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("+5"), -961); }

TEST(CheckTypeInteger4Byte, RefusesTwelveCharactersByLengthAlone) {
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("000000000001"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte("-00000000001"), -961);
}

TEST(CheckTypeInteger4Byte, RefusesEveryNonDigitAfterTheSign) {
  for (const char* text : {"--1", "1-", "5 ", " 5", "\t5", "0x10", "1e3", "1.5", "a", "-a", "12a4", "- 1", "1,000"}) {
    EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte(text), -961) << "\"" << text << "\"";
  }
}

TEST(CheckTypeInteger4Byte, NullTextIsAnError) { EXPECT_EQ(SINK_UPNP_CheckTypeInteger4Byte(nullptr), -1); }

// ---- Unsigned 32-bit ----

TEST(CheckTypeUnsignedInteger4Byte, AcceptsEmptyText) { EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte(""), 0); }

TEST(CheckTypeUnsignedInteger4Byte, AcceptsBothEndsOfTheRange) {
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("0"), 0);
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("4294967295"), 0);
}

TEST(CheckTypeUnsignedInteger4Byte, AcceptsOrdinaryNumbers) {
  for (const char* text : {"1", "42", "0000000001", "2147483648", "0000000000"}) {
    EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte(text), 0) << text;
  }
}

TEST(CheckTypeUnsignedInteger4Byte, RefusesNumbersAboveTheRange) {
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("4294967296"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("9999999999"), -961);
}

TEST(CheckTypeUnsignedInteger4Byte, RefusesNegativeNumbers) {
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("-1"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("-0"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("-"), -961);
}

TEST(CheckTypeUnsignedInteger4Byte, RefusesElevenDigitsByLengthAlone) {
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("00000000001"), -961);
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte("00000000000"), -961);
}

TEST(CheckTypeUnsignedInteger4Byte, RefusesEveryNonDigit) {
  for (const char* text : {"+5", " 5", "5 ", "0x10", "1e3", "1.5", "a", "12a4", "1,000"}) {
    EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte(text), -961) << "\"" << text << "\"";
  }
}

TEST(CheckTypeUnsignedInteger4Byte, NullTextIsAnError) {
  EXPECT_EQ(SINK_UPNP_CheckTypeUnsignedInteger4Byte(nullptr), -1);
}

// ---- Check by index ----

SINK_UPNP_StateVariableName_t Index(int i) { return static_cast<SINK_UPNP_StateVariableName_t>(i); }

// The rule of each index as the catalogue states it; null for "any".
CheckFn ExpectedRule(int i) {
  switch (i) {
    case 0: return SINK_UPNP_CheckTransportState;
    case 1: return SINK_UPNP_CheckTransportStatus;
    case 2: case 3: return SINK_UPNP_CheckPlaybackStorageMedium;
    case 6: return SINK_UPNP_CheckCurrentPlayMode;
    case 7: return SINK_UPNP_CheckTransportPlaySpeed;
    case 8: return SINK_UPNP_CheckRecordMediumWriteStatus;
    case 9: return SINK_UPNP_CheckCurrentRecordQualityMode;
    case 11: case 12: return SINK_UPNP_CheckTypeUnsignedInteger4Byte;
    case 23: case 24: return SINK_UPNP_CheckTypeInteger4Byte;
    default: return nullptr;
  }
}

// Texts that tell the rules apart: each is accepted by some rules and refused by others.
const char* const kProbes[] = {
    "PLAYING", "OK", "NONE", "DVD-ROM", "NORMAL", "1", "WRITABLE", "0:EP", "NOT_IMPLEMENTED", "UNKNOWN",
    "-5", "4294967295", "2147483647", "-", "", "anything at all", "1/2",
};

TEST(CheckStateVariable, EveryIndexAppliesItsOwnRule) {
  for (int i = 0; i < 83; ++i) {
    const CheckFn rule = ExpectedRule(i);
    for (const char* probe : kProbes) {
      const int32_t expected = rule == nullptr ? 0 : rule(probe);
      EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(i), probe), expected) << "index " << i << " \"" << probe << "\"";
    }
  }
}

TEST(CheckStateVariable, UncheckedIndicesAcceptAnyText) {
  for (int i = 0; i < 83; ++i) {
    if (ExpectedRule(i) != nullptr) continue;
    for (const char* text : {"", "x", "playing", "<DIDL-Lite>&amp;</DIDL-Lite>", "-99999999999999"}) {
      EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(i), text), 0) << "index " << i << " \"" << text << "\"";
    }
  }
}

TEST(CheckStateVariable, TransportStateAcceptsPlayingAndRefusesLowercase) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, "playing"), -961);
}

TEST(CheckStateVariable, OpenHomeTransportStateIsNotChecked) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_PLAYLIST_TRANSPORT_STATE, "Playing"), 0);
}

TEST(CheckStateVariable, BothStorageMediaUseTheSameList) {
  for (const std::string& medium : kStorageMedia) {
    EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM, medium.c_str()), 0) << medium;
    EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM, medium.c_str()), 0) << medium;
  }
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM, "none"), -961);
}

TEST(CheckStateVariable, PossibleMediaListsAreNotChecked) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_POSSIBLE_PLAYBACK_STORAGE_MEDIA, "NONE,NETWORK"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_POSSIBLE_RECORD_QUALITY_MODES, "0:EP,1:LP"), 0);
}

TEST(CheckStateVariable, RelativeCounterPositionAcceptsEmptyMinusAndLowestValue) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, ""), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "-"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "-2147483648"), 0);
}

TEST(CheckStateVariable, RelativeCounterPositionRefusesPlusSignAndTooLarge) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "+5"), -961);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "2147483648"), -961);
}

TEST(CheckStateVariable, AbsoluteCounterPositionIsSigned32) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION, "-2147483648"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION, "2147483648"), -961);
}

TEST(CheckStateVariable, NumberOfTracksAcceptsTheLargestUnsigned) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_NUMBER_OF_TRACKS, "4294967295"), 0);
}

TEST(CheckStateVariable, NumberOfTracksRefusesTooLargeAndNegative) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_NUMBER_OF_TRACKS, "4294967296"), -961);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_NUMBER_OF_TRACKS, "-1"), -961);
}

TEST(CheckStateVariable, NumberOfTracksRefusesElevenDigitsEvenWhenSmall) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_NUMBER_OF_TRACKS, "00000000001"), -961);
}

TEST(CheckStateVariable, CurrentTrackIsUnsigned32) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_CURRENT_TRACK, "4294967295"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_CURRENT_TRACK, "-1"), -961);
}

TEST(CheckStateVariable, TransportPlaySpeedAcceptsOneOnly) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "1"), 0);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "1/2"), -961);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "2"), -961);
}

TEST(CheckStateVariable, NullTextIsAnErrorForEveryIndex) {
  for (int i = 0; i < 83; ++i) EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(i), nullptr), -1) << "index " << i;
}

TEST(CheckStateVariable, NullTextIsAnErrorBeforeTheIndexIsTested) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(83), nullptr), -1);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(-1), nullptr), -1);
}

TEST(CheckStateVariable, IndexPastTheLastIsOutOfRange) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(83), "PLAYING"), -962);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(83), ""), -962);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(127), "x"), -962);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(1000), "x"), -962);
}

TEST(CheckStateVariable, NegativeIndexIsOutOfRange) {
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(-1), "PLAYING"), -962);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(-1), ""), -962);
  EXPECT_EQ(SINK_UPNP_CheckStateVariable(Index(-83), "x"), -962);
}

TEST(CheckStateVariable, OutOfRangeIsTheStoreCode) { EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, -962); }

}  // namespace
