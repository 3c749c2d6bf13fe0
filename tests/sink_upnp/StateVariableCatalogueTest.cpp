#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <string>

#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using IV = SINK_UPNP_InitialValue;
using CK = SINK_UPNP_Check;
using CR = SINK_UPNP_ChangeRoute;

// The catalogue as the design states it, written out here independently of the product's tables.
struct ExpectedRow {
  SINK_UPNP_StateVariableName_t enumerator;
  const char* standardName;
  const char* openHomeName;
  IV initialValue;
  const char* standardInitialValue;
  const char* openHomeInitialValue;
  CK check;
  CR standardRoute;
  CR openHomeRoute;
};

// clang-format off
const ExpectedRow kExpected[] = {
  {SINK_UPNP_AVT_TRANSPORT_STATE, "TransportState", "TransportState", IV::kLiteral, "NO_MEDIA_PRESENT", "NO_MEDIA_PRESENT", CK::kTransportState, CR::kLastChange, CR::kLastChangeAndTransportState},
  {SINK_UPNP_AVT_TRANSPORT_STATUS, "TransportStatus", "TransportStatus", IV::kLiteral, "OK", "OK", CK::kTransportStatus, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM, "PlaybackStorageMedium", "PlaybackStorageMedium", IV::kLiteral, "NONE", "NONE", CK::kStorageMedium, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM, "RecordStorageMedium", "RecordStorageMedium", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kStorageMedium, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_POSSIBLE_PLAYBACK_STORAGE_MEDIA, "PossiblePlaybackStorageMedia", "PossiblePlaybackStorageMedia", IV::kLiteral, "NONE,NETWORK", "NONE,NETWORK", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_POSSIBLE_RECORD_STORAGE_MEDIA, "PossibleRecordStorageMedia", "PossibleRecordStorageMedia", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_PLAY_MODE, "CurrentPlayMode", "CurrentPlayMode", IV::kLiteral, "NORMAL", "NORMAL", CK::kPlayMode, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "TransportPlaySpeed", "TransportPlaySpeed", IV::kLiteral, "1", "1", CK::kPlaySpeed, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_RECORD_MEDIUM_WRITE_STATUS, "RecordMediumWriteStatus", "RecordMediumWriteStatus", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kWriteStatus, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_RECORD_QUALITY_MODE, "CurrentRecordQualityMode", "CurrentRecordQualityMode", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kQualityMode, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_POSSIBLE_RECORD_QUALITY_MODES, "PossibleRecordQualityModes", "PossibleRecordQualityModes", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_NUMBER_OF_TRACKS, "NumberOfTracks", "NumberOfTracks", IV::kLiteral, "0", "0", CK::kUnsigned32, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_TRACK, "CurrentTrack", "CurrentTrack", IV::kLiteral, "0", "0", CK::kUnsigned32, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_TRACK_DURATION, "CurrentTrackDuration", "CurrentTrackDuration", IV::kLiteral, "00000:00:00", "00000:00:00", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_MEDIA_DURATION, "CurrentMediaDuration", "CurrentMediaDuration", IV::kLiteral, "00000:00:00", "00000:00:00", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_TRACK_METADATA, "CurrentTrackMetaData", "CurrentTrackMetaData", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_CURRENT_TRACK_URI, "CurrentTrackURI", "CurrentTrackURI", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_AV_TRANSPORT_URI, "AVTransportURI", "AVTransportURI", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_AV_TRANSPORT_URI_METADATA, "AVTransportURIMetaData", "AVTransportURIMetaData", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI, "NextAVTransportURI", "NextAVTransportURI", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI_METADATA, "NextAVTransportURIMetaData", "NextAVTransportURIMetaData", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_AVT_RELATIVE_TIME_POSITION, "RelativeTimePosition", "RelativeTimePosition", IV::kLiteral, "00000:00:00", "00000:00:00", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_AVT_ABSOLUTE_TIME_POSITION, "AbsoluteTimePosition", "AbsoluteTimePosition", IV::kLiteral, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "RelativeCounterPosition", "RelativeCounterPosition", IV::kLiteral, "2147483647", "2147483647", CK::kSigned32, CR::kNone, CR::kNone},
  {SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION, "AbsoluteCounterPosition", "AbsoluteCounterPosition", IV::kLiteral, "2147483647", "2147483647", CK::kSigned32, CR::kNone, CR::kNone},
  {SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, "CurrentTransportActions", "CurrentTransportActions", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO, "SourceProtocolInfo", "SourceProtocolInfo", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_CMS_SINK_PROTOCOL_INFO, "SinkProtocolInfo", "SinkProtocolInfo", IV::kProtocolInfo, nullptr, nullptr, CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_CMS_CURRENT_CONNECTION_IDS, "CurrentConnectionIDs", "CurrentConnectionIDs", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_TRANSPORT_STATE, "TransportState", "TransportState", IV::kLiteral, "Stopped", "Stopped", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_REPEAT, "Repeat", "Repeat", IV::kLiteral, "false", "false", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_SHUFFLE, "Shuffle", "Shuffle", IV::kLiteral, "false", "false", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_ID, "Id", "Id", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_PLAYLIST_ID_ARRAY, "IdArray", "IdArray", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_TRACKS_MAX, "TracksMax", "TracksMax", IV::kLiteral, "1000", "1000", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_PROTOCOL_INFO, "ProtocolInfo", "ProtocolInfo", IV::kProtocolInfo, nullptr, nullptr, CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_INDEX, "Index", "Index", IV::kLiteral, "", "", CK::kAny, CR::kNotify, CR::kNone},
  {SINK_UPNP_PLAYLIST_RELATIVE, "Relative", "Relative", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_ABSOLUTE, "Absolute", "Absolute", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_ID_LIST, "IdList", "IdList", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_TRACK_LIST, "TrackList", "TrackList", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_URI, "Uri", "Uri", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_PLAYLIST_METADATA, "Metadata", "Metadata", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_PLAYLIST_ID_ARRAY_TOKEN, "IdArrayToken", "IdArrayToken", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED, "IdArrayChanged", "IdArrayChanged", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_PRODUCT_MANUFACTURER_NAME, "ManufacturerName", "ManufacturerName", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MANUFACTURER_INFO, "ManufacturerInfo", "ManufacturerInfo", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MANUFACTURER_URL, "ManufacturerUrl", "ManufacturerUrl", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI, "ManufacturerImageUri", "ManufacturerImageUri", IV::kDescriptionUrl, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MODEL_NAME, "ModelName", "ModelName", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MODEL_INFO, "ModelInfo", "ModelInfo", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MODEL_URL, "ModelUrl", "ModelUrl", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_MODEL_IMAGE_URI, "ModelImageUri", "ModelImageUri", IV::kDescriptionUrl, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_PRODUCT_ROOM, "ProductRoom", "ProductRoom", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_PRODUCT_NAME, "ProductName", "ProductName", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_PRODUCT_INFO, "ProductInfo", "ProductInfo", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_PRODUCT_URL, "ProductUrl", "ProductUrl", IV::kDescription, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI, "ProductImageUri", "ProductImageUri", IV::kDescriptionUrl, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_STANDBY, "Standby", "Standby", IV::kLiteral, "false", "false", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_SOURCE_INDEX, "SourceIndex", "SourceIndex", IV::kLiteral, "0", "0", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_SOURCE_COUNT, "SourceCount", "SourceCount", IV::kLiteral, "1", "1", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_SOURCE_XML, "SourceXml", "SourceXml", IV::kSourceList, nullptr, nullptr, CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_PRODUCT_ATTRIBUTES, "Attributes", "Attributes", IV::kLiteral, "Info Time Volume", "Info Time Volume", CK::kAny, CR::kLastChange, CR::kLastChange},
  {SINK_UPNP_TIME_TRACK_COUNT, "TrackCount", "TrackCount", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_TIME_DURATION, "Duration", "Duration", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_TIME_SECONDS, "Seconds", "Seconds", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_TRACK_COUNT, "TrackCount", "TrackCount", IV::kLiteral, "", "0", CK::kAny, CR::kLastChange, CR::kFlag},
  {SINK_UPNP_INFO_DETAILS_COUNT, "DetailsCount", "DetailsCount", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_METATEXT_COUNT, "MetatextCount", "MetatextCount", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_INFO_URI, "Uri", "Uri", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kFlag},
  {SINK_UPNP_INFO_METADATA, "Metadata", "Metadata", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kFlag},
  {SINK_UPNP_INFO_DURATION, "Duration", "Duration", IV::kLiteral, "", "0", CK::kAny, CR::kLastChange, CR::kFlag},
  {SINK_UPNP_INFO_BIT_RATE, "BitRate", "BitRate", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_BIT_DEPTH, "BitDepth", "BitDepth", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_SAMPLE_RATE, "SampleRate", "SampleRate", IV::kLiteral, "0", "0", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_LOSSLESS, "Lossless", "Lossless", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_CODEC_NAME, "CodeName", "CodecName", IV::kLiteral, "", "", CK::kAny, CR::kNone, CR::kFlag},
  {SINK_UPNP_INFO_METATEXT, "Metatext", "Metatext", IV::kLiteral, "", "false", CK::kAny, CR::kNotify, CR::kNone},
  {SINK_UPNP_SENDER_PRESENTATION_URL, "PresentationUrl", "PresentationUrl", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kNone},
  {SINK_UPNP_SENDER_METADATA, "Metadata", "Metadata", IV::kLiteral, "", "", CK::kAny, CR::kLastChange, CR::kNone},
  {SINK_UPNP_SENDER_AUDIO, "Audio", "Audio", IV::kLiteral, "false", "false", CK::kAny, CR::kNone, CR::kNone},
  {SINK_UPNP_SENDER_STATUS, "Status", "Status", IV::kLiteral, "", "Disable", CK::kAny, CR::kLastChange, CR::kNone},
  {SINK_UPNP_SENDER_ATTRIBUTES, "Attributes", "Attributes", IV::kLiteral, "", "Info Time Volume", CK::kAny, CR::kLastChange, CR::kNone},
};
// clang-format on

static_assert(std::size(kExpected) == 83, "the expected catalogue has one row per variable");

// Taken while the library is loaded, before any test can touch the shared tables, so that these checks
// hold whatever other tests of this binary do later.
bool AllChangeFlagsZero() {
  for (int32_t flag : SINK_UPNP_changeStateVariableTablet) {
    if (flag != 0) return false;
  }
  return true;
}
bool AllStagingStringsUnset() {
  for (int i = 0; i < SINK_UPNP_NOTIFY_ARGUMENT_COUNT; ++i) {
    if (notifyArgumentName[i].GetCString() != nullptr || notifyArgumentName[i].GetLength() != 0) return false;
    if (notifyArgumentValue[i].GetCString() != nullptr || notifyArgumentValue[i].GetLength() != 0) return false;
  }
  return true;
}
const bool kChangeFlagsZeroAtLoad = AllChangeFlagsZero();
const bool kStagingStringsUnsetAtLoad = AllStagingStringsUnset();

const char* Str(const char* text) { return text == nullptr ? "(null)" : text; }

// ---- Indices ----

TEST(StateVariableCatalogue, HoldsEightyThreeVariables) {
  EXPECT_EQ(SINK_UPNP_STATE_VARIABLE_COUNT, 83);
  EXPECT_EQ(std::size(SINK_UPNP_stateVariableNameTable), 83u);
  EXPECT_EQ(std::size(SINK_UPNP_stateVariableNameTableForOpenHome), 83u);
  EXPECT_EQ(std::size(SINK_UPNP_changeStateVariableTablet), 83u);
  EXPECT_EQ(std::size(SINK_UPNP_stateVariableCatalogue), 83u);
}

TEST(StateVariableCatalogue, EveryEnumeratorHasItsIndex) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_EQ(static_cast<int>(kExpected[i].enumerator), i) << "row " << i << " " << kExpected[i].standardName;
  }
}

TEST(StateVariableCatalogue, ServiceGroupsStartAndEndAtTheirIndices) {
  EXPECT_EQ(SINK_UPNP_AVT_TRANSPORT_STATE, 0);
  EXPECT_EQ(SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, 25);
  EXPECT_EQ(SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO, 26);
  EXPECT_EQ(SINK_UPNP_CMS_CURRENT_CONNECTION_IDS, 28);
  EXPECT_EQ(SINK_UPNP_PLAYLIST_TRANSPORT_STATE, 29);
  EXPECT_EQ(SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED, 44);
  EXPECT_EQ(SINK_UPNP_PRODUCT_MANUFACTURER_NAME, 45);
  EXPECT_EQ(SINK_UPNP_PRODUCT_ATTRIBUTES, 62);
  EXPECT_EQ(SINK_UPNP_TIME_TRACK_COUNT, 63);
  EXPECT_EQ(SINK_UPNP_TIME_SECONDS, 65);
  EXPECT_EQ(SINK_UPNP_INFO_TRACK_COUNT, 66);
  EXPECT_EQ(SINK_UPNP_INFO_METATEXT, 77);
  EXPECT_EQ(SINK_UPNP_SENDER_PRESENTATION_URL, 78);
  EXPECT_EQ(SINK_UPNP_SENDER_ATTRIBUTES, 82);
}

// ---- Names ----

TEST(StateVariableNames, StandardTableHoldsEveryNameInIndexOrder) {
  for (int i = 0; i < 83; ++i) {
    ASSERT_NE(SINK_UPNP_stateVariableNameTable[i], nullptr) << "index " << i;
    EXPECT_STREQ(SINK_UPNP_stateVariableNameTable[i], kExpected[i].standardName) << "index " << i;
  }
}

TEST(StateVariableNames, OpenHomeTableHoldsEveryNameInIndexOrder) {
  for (int i = 0; i < 83; ++i) {
    ASSERT_NE(SINK_UPNP_stateVariableNameTableForOpenHome[i], nullptr) << "index " << i;
    EXPECT_STREQ(SINK_UPNP_stateVariableNameTableForOpenHome[i], kExpected[i].openHomeName) << "index " << i;
  }
}

TEST(StateVariableNames, TablesDifferOnlyAtTheCodecName) {
  for (int i = 0; i < 83; ++i) {
    const bool same =
        std::strcmp(SINK_UPNP_stateVariableNameTable[i], SINK_UPNP_stateVariableNameTableForOpenHome[i]) == 0;
    EXPECT_EQ(same, i != SINK_UPNP_INFO_CODEC_NAME) << "index " << i;
  }
}

TEST(StateVariableNames, StandardTableKeepsCodeNameWithoutTheC) {
  EXPECT_STREQ(SINK_UPNP_stateVariableNameTable[SINK_UPNP_INFO_CODEC_NAME], "CodeName");
  EXPECT_STREQ(SINK_UPNP_stateVariableNameTableForOpenHome[SINK_UPNP_INFO_CODEC_NAME], "CodecName");
}

TEST(StateVariableNames, EachTableKnowsOnlyItsOwnFormOfTheCodecName) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_STRNE(SINK_UPNP_stateVariableNameTable[i], "CodecName") << "index " << i;
    EXPECT_STRNE(SINK_UPNP_stateVariableNameTableForOpenHome[i], "CodeName") << "index " << i;
  }
}

TEST(StateVariableNames, RepeatedNamesOccurExactlyAtTheirIndices) {
  struct Repeated {
    const char* name;
    std::string indices;
  };
  const Repeated repeated[] = {
      {"TransportState", "0 29 "}, {"TrackCount", "63 66 "},   {"Duration", "64 71 "},
      {"Uri", "41 69 "},           {"Metadata", "42 70 79 "}, {"Attributes", "62 82 "},
  };
  for (const char* const* table : {SINK_UPNP_stateVariableNameTable, SINK_UPNP_stateVariableNameTableForOpenHome}) {
    for (const Repeated& r : repeated) {
      std::string found;
      for (int i = 0; i < 83; ++i) {
        if (std::strcmp(table[i], r.name) == 0) found += std::to_string(i) + " ";
      }
      EXPECT_EQ(found, r.indices) << r.name;
    }
  }
}

TEST(StateVariableNames, NoOtherNameRepeats) {
  const char* const repeated[] = {"TransportState", "TrackCount", "Duration", "Uri", "Metadata", "Attributes"};
  for (int i = 0; i < 83; ++i) {
    bool isRepeatedName = false;
    for (const char* name : repeated) isRepeatedName |= std::strcmp(name, SINK_UPNP_stateVariableNameTable[i]) == 0;
    if (isRepeatedName) continue;
    for (int j = i + 1; j < 83; ++j) {
      EXPECT_STRNE(SINK_UPNP_stateVariableNameTable[i], SINK_UPNP_stateVariableNameTable[j]) << i << " and " << j;
    }
  }
}

// ---- Initial values ----

TEST(StateVariableInitialValues, EveryRowHasItsKindOfInitialValue) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[i].initialValue, kExpected[i].initialValue) << "index " << i;
  }
}

TEST(StateVariableInitialValues, StandardColumnHoldsEveryLiteral) {
  for (int i = 0; i < 83; ++i) {
    const char* actual = SINK_UPNP_stateVariableCatalogue[i].standardInitialValue;
    if (kExpected[i].standardInitialValue == nullptr) {
      EXPECT_EQ(actual, nullptr) << "index " << i << " has no literal but holds " << Str(actual);
    } else {
      ASSERT_NE(actual, nullptr) << "index " << i;
      EXPECT_STREQ(actual, kExpected[i].standardInitialValue) << "index " << i;
    }
  }
}

TEST(StateVariableInitialValues, OpenHomeColumnHoldsEveryLiteral) {
  for (int i = 0; i < 83; ++i) {
    const char* actual = SINK_UPNP_stateVariableCatalogue[i].openHomeInitialValue;
    if (kExpected[i].openHomeInitialValue == nullptr) {
      EXPECT_EQ(actual, nullptr) << "index " << i << " has no literal but holds " << Str(actual);
    } else {
      ASSERT_NE(actual, nullptr) << "index " << i;
      EXPECT_STREQ(actual, kExpected[i].openHomeInitialValue) << "index " << i;
    }
  }
}

TEST(StateVariableInitialValues, OnlyLiteralRowsCarryTexts) {
  for (int i = 0; i < 83; ++i) {
    const SINK_UPNP_StateVariableEntry& row = SINK_UPNP_stateVariableCatalogue[i];
    const bool literal = row.initialValue == SINK_UPNP_InitialValue::kLiteral;
    EXPECT_EQ(row.standardInitialValue != nullptr, literal) << "index " << i;
    EXPECT_EQ(row.openHomeInitialValue != nullptr, literal) << "index " << i;
  }
}

TEST(StateVariableInitialValues, ColumnsDifferOnlyAt66And71And77And81And82) {
  std::string differing;
  for (int i = 0; i < 83; ++i) {
    const SINK_UPNP_StateVariableEntry& row = SINK_UPNP_stateVariableCatalogue[i];
    if (row.standardInitialValue == nullptr || row.openHomeInitialValue == nullptr) continue;
    if (std::strcmp(row.standardInitialValue, row.openHomeInitialValue) != 0) differing += std::to_string(i) + " ";
  }
  EXPECT_EQ(differing, "66 71 77 81 82 ");
}

TEST(StateVariableInitialValues, OpenHomeMetatextStartsFalseAndLosslessEmpty) {
  EXPECT_STREQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_INFO_METATEXT].openHomeInitialValue, "false");
  EXPECT_STREQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_INFO_LOSSLESS].openHomeInitialValue, "");
}

TEST(StateVariableInitialValues, BothProtocolInfoVariablesTakeTheArgument) {
  EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_CMS_SINK_PROTOCOL_INFO].initialValue,
            SINK_UPNP_InitialValue::kProtocolInfo);
  EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_PLAYLIST_PROTOCOL_INFO].initialValue,
            SINK_UPNP_InitialValue::kProtocolInfo);
  EXPECT_STREQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO].standardInitialValue, "");
}

TEST(StateVariableInitialValues, ThirteenProductVariablesComeFromTheDescriptionAndThreeOfThemAreUrls) {
  std::string description;
  std::string url;
  for (int i = 0; i < 83; ++i) {
    const SINK_UPNP_InitialValue kind = SINK_UPNP_stateVariableCatalogue[i].initialValue;
    if (kind == SINK_UPNP_InitialValue::kDescription) description += std::to_string(i) + " ";
    if (kind == SINK_UPNP_InitialValue::kDescriptionUrl) url += std::to_string(i) + " ";
  }
  EXPECT_EQ(description, "45 46 47 49 50 51 53 54 55 56 ");
  EXPECT_EQ(url, "48 52 57 ");
}

TEST(StateVariableInitialValues, SourceXmlStartsAsTheFixedSourceList) {
  EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[SINK_UPNP_PRODUCT_SOURCE_XML].initialValue,
            SINK_UPNP_InitialValue::kSourceList);
  EXPECT_STREQ(SINK_UPNP_SOURCE_LIST_XML,
               "<SourceList><Source><Name>Playlist</Name><Type>Playlist</Type><Visible>true</Visible></Source>"
               "</SourceList>");
}

// ---- Checks ----

TEST(StateVariableChecksInCatalogue, EveryRowHasItsCheck) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[i].check, kExpected[i].check) << "index " << i;
  }
}

TEST(StateVariableChecksInCatalogue, OnlyElevenVariablesAreChecked) {
  std::string checked;
  for (int i = 0; i < 83; ++i) {
    if (SINK_UPNP_stateVariableCatalogue[i].check != SINK_UPNP_Check::kAny) checked += std::to_string(i) + " ";
  }
  EXPECT_EQ(checked, "0 1 2 3 6 7 8 9 11 12 23 24 ");
}

// ---- Change routes ----

TEST(StateVariableRoutes, EveryRowHasItsStandardRoute) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[i].standardRoute, kExpected[i].standardRoute) << "index " << i;
  }
}

TEST(StateVariableRoutes, EveryRowHasItsOpenHomeRoute) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_EQ(SINK_UPNP_stateVariableCatalogue[i].openHomeRoute, kExpected[i].openHomeRoute) << "index " << i;
  }
}

TEST(StateVariableRoutes, StandardStoreNotifiesOnlyIndexAndMetatext) {
  std::string notified;
  for (int i = 0; i < 83; ++i) {
    if (SINK_UPNP_stateVariableCatalogue[i].standardRoute == SINK_UPNP_ChangeRoute::kNotify) {
      notified += std::string(SINK_UPNP_stateVariableNameTable[i]) + " ";
    }
  }
  EXPECT_EQ(notified, "Index Metatext ");
}

TEST(StateVariableRoutes, OpenHomeStoreFlagsExactlyItsEventedVariables) {
  std::string flagged;
  for (int i = 0; i < 83; ++i) {
    if (SINK_UPNP_stateVariableCatalogue[i].openHomeRoute == SINK_UPNP_ChangeRoute::kFlag) {
      flagged += std::to_string(i) + " ";
    }
  }
  EXPECT_EQ(flagged, "32 41 42 63 64 65 66 67 69 70 71 72 73 74 75 76 ");
}

TEST(StateVariableRoutes, OnlyTheTransportStateAlsoMovesTheOpenHomeTransportState) {
  for (int i = 0; i < 83; ++i) {
    const SINK_UPNP_StateVariableEntry& row = SINK_UPNP_stateVariableCatalogue[i];
    EXPECT_NE(row.standardRoute, SINK_UPNP_ChangeRoute::kLastChangeAndTransportState) << "index " << i;
    EXPECT_EQ(row.openHomeRoute == SINK_UPNP_ChangeRoute::kLastChangeAndTransportState, i == 0) << "index " << i;
  }
}

TEST(StateVariableRoutes, NoVariableOfTheOpenHomeStoreIsNotified) {
  for (int i = 0; i < 83; ++i) {
    EXPECT_NE(SINK_UPNP_stateVariableCatalogue[i].openHomeRoute, SINK_UPNP_ChangeRoute::kNotify) << "index " << i;
  }
}

// ---- The LastChange mask ----

TEST(NotInLastChangeMask, HasExactlyBits21To24And26To28) {
  uint32_t expected = 0;
  for (int bit : {21, 22, 23, 24, 26, 27, 28}) expected |= 1u << bit;
  EXPECT_EQ(SINK_UPNP_NOT_IN_LAST_CHANGE_MASK, expected);
  EXPECT_EQ(SINK_UPNP_NOT_IN_LAST_CHANGE_MASK, 0x1DE00000u);
}

TEST(NotInLastChangeMask, MarksExactlyTheFirstTwentyNineVariablesThatSkipLastChange) {
  for (int i = 0; i <= 28; ++i) {
    const bool masked = (SINK_UPNP_NOT_IN_LAST_CHANGE_MASK & (1u << i)) != 0;
    const bool skipsLastChange = SINK_UPNP_stateVariableCatalogue[i].standardRoute == SINK_UPNP_ChangeRoute::kNone;
    EXPECT_EQ(masked, skipsLastChange) << "index " << i;
  }
}

// ---- Shared tables ----

TEST(ChangeFlagTable, StartsWithEveryWordZero) {
  EXPECT_TRUE(kChangeFlagsZeroAtLoad);
}

TEST(ChangeFlagTable, HoldsOneSigned32BitWordPerVariable) {
  EXPECT_EQ(sizeof(SINK_UPNP_changeStateVariableTablet), 83 * sizeof(int32_t));
}

TEST(NotifyStaging, HoldsTwentyNamesAndTwentyValues) {
  EXPECT_EQ(SINK_UPNP_NOTIFY_ARGUMENT_COUNT, 20);
  EXPECT_EQ(std::size(notifyArgumentName), 20u);
  EXPECT_EQ(std::size(notifyArgumentValue), 20u);
}

TEST(NotifyStaging, StartsWithEveryStringUnset) {
  EXPECT_TRUE(kStagingStringsUnsetAtLoad);
}

TEST(NotifyStaging, IsLargeEnoughForTheLargestServiceGroup) {
  EXPECT_GE(SINK_UPNP_NOTIFY_ARGUMENT_COUNT, SINK_UPNP_PRODUCT_ATTRIBUTES - SINK_UPNP_PRODUCT_MANUFACTURER_NAME + 1);
}

}  // namespace
