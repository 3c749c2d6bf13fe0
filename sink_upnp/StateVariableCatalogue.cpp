#include "sink_upnp/StateVariableCatalogue.h"

#include "sink_upnp/TransportState.h"

// The names of both tables, in index order; they differ only in the name of index 76.
#define SINK_UPNP_STATE_VARIABLE_NAMES(codecName) \
    "TransportState",               /* 0 */ \
    "TransportStatus",              /* 1 */ \
    "PlaybackStorageMedium",        /* 2 */ \
    "RecordStorageMedium",          /* 3 */ \
    "PossiblePlaybackStorageMedia", /* 4 */ \
    "PossibleRecordStorageMedia",   /* 5 */ \
    "CurrentPlayMode",              /* 6 */ \
    "TransportPlaySpeed",           /* 7 */ \
    "RecordMediumWriteStatus",      /* 8 */ \
    "CurrentRecordQualityMode",     /* 9 */ \
    "PossibleRecordQualityModes",   /* 10 */ \
    "NumberOfTracks",               /* 11 */ \
    "CurrentTrack",                 /* 12 */ \
    "CurrentTrackDuration",         /* 13 */ \
    "CurrentMediaDuration",         /* 14 */ \
    "CurrentTrackMetaData",         /* 15 */ \
    "CurrentTrackURI",              /* 16 */ \
    "AVTransportURI",               /* 17 */ \
    "AVTransportURIMetaData",       /* 18 */ \
    "NextAVTransportURI",           /* 19 */ \
    "NextAVTransportURIMetaData",   /* 20 */ \
    "RelativeTimePosition",         /* 21 */ \
    "AbsoluteTimePosition",         /* 22 */ \
    "RelativeCounterPosition",      /* 23 */ \
    "AbsoluteCounterPosition",      /* 24 */ \
    "CurrentTransportActions",      /* 25 */ \
    "SourceProtocolInfo",           /* 26 */ \
    "SinkProtocolInfo",             /* 27 */ \
    "CurrentConnectionIDs",         /* 28 */ \
    "TransportState",               /* 29 */ \
    "Repeat",                       /* 30 */ \
    "Shuffle",                      /* 31 */ \
    "Id",                           /* 32 */ \
    "IdArray",                      /* 33 */ \
    "TracksMax",                    /* 34 */ \
    "ProtocolInfo",                 /* 35 */ \
    "Index",                        /* 36 */ \
    "Relative",                     /* 37 */ \
    "Absolute",                     /* 38 */ \
    "IdList",                       /* 39 */ \
    "TrackList",                    /* 40 */ \
    "Uri",                          /* 41 */ \
    "Metadata",                     /* 42 */ \
    "IdArrayToken",                 /* 43 */ \
    "IdArrayChanged",               /* 44 */ \
    "ManufacturerName",             /* 45 */ \
    "ManufacturerInfo",             /* 46 */ \
    "ManufacturerUrl",              /* 47 */ \
    "ManufacturerImageUri",         /* 48 */ \
    "ModelName",                    /* 49 */ \
    "ModelInfo",                    /* 50 */ \
    "ModelUrl",                     /* 51 */ \
    "ModelImageUri",                /* 52 */ \
    "ProductRoom",                  /* 53 */ \
    "ProductName",                  /* 54 */ \
    "ProductInfo",                  /* 55 */ \
    "ProductUrl",                   /* 56 */ \
    "ProductImageUri",              /* 57 */ \
    "Standby",                      /* 58 */ \
    "SourceIndex",                  /* 59 */ \
    "SourceCount",                  /* 60 */ \
    "SourceXml",                    /* 61 */ \
    "Attributes",                   /* 62 */ \
    "TrackCount",                   /* 63 */ \
    "Duration",                     /* 64 */ \
    "Seconds",                      /* 65 */ \
    "TrackCount",                   /* 66 */ \
    "DetailsCount",                 /* 67 */ \
    "MetatextCount",                /* 68 */ \
    "Uri",                          /* 69 */ \
    "Metadata",                     /* 70 */ \
    "Duration",                     /* 71 */ \
    "BitRate",                      /* 72 */ \
    "BitDepth",                     /* 73 */ \
    "SampleRate",                   /* 74 */ \
    "Lossless",                     /* 75 */ \
    codecName,                      /* 76 */ \
    "Metatext",                     /* 77 */ \
    "PresentationUrl",              /* 78 */ \
    "Metadata",                     /* 79 */ \
    "Audio",                        /* 80 */ \
    "Status",                       /* 81 */ \
    "Attributes",                   /* 82 */

// On purpose "CodeName", one letter short, in the standard table: it is the name the standard store's
// LastChange documents and look-ups by name use. Do not "fix" it; the OpenHome table holds "CodecName".
const char* SINK_UPNP_stateVariableNameTable[SINK_UPNP_STATE_VARIABLE_COUNT] = {
    SINK_UPNP_STATE_VARIABLE_NAMES("CodeName")};

const char* SINK_UPNP_stateVariableNameTableForOpenHome[SINK_UPNP_STATE_VARIABLE_COUNT] = {
    SINK_UPNP_STATE_VARIABLE_NAMES("CodecName")};

#undef SINK_UPNP_STATE_VARIABLE_NAMES


// Zero-initialised storage: no change is due before an OpenHome store exists.
int32_t SINK_UPNP_changeStateVariableTablet[SINK_UPNP_STATE_VARIABLE_COUNT];

// 20 is enough: the largest service group, Product, has 18 variables.
DMR_CMN_String notifyArgumentName[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];
DMR_CMN_String notifyArgumentValue[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];
static_assert(SINK_UPNP_NOTIFY_ARGUMENT_COUNT >= 62 - 45 + 1, "the Product group must fit the staging area");

const char SINK_UPNP_SOURCE_LIST_XML[] =
    "<SourceList><Source><Name>Playlist</Name><Type>Playlist</Type><Visible>true</Visible></Source>"
    "</SourceList>";

namespace {

// Short names so that each row of the catalogue fits one line.
constexpr SINK_UPNP_InitialValue kLit = SINK_UPNP_InitialValue::kLiteral;
constexpr SINK_UPNP_InitialValue kPInfo = SINK_UPNP_InitialValue::kProtocolInfo;
constexpr SINK_UPNP_InitialValue kDesc = SINK_UPNP_InitialValue::kDescription;
constexpr SINK_UPNP_InitialValue kDUrl = SINK_UPNP_InitialValue::kDescriptionUrl;
constexpr SINK_UPNP_InitialValue kSList = SINK_UPNP_InitialValue::kSourceList;

constexpr SINK_UPNP_Check kAny = SINK_UPNP_Check::kAny;
constexpr SINK_UPNP_Check kTState = SINK_UPNP_Check::kTransportState;
constexpr SINK_UPNP_Check kTStatus = SINK_UPNP_Check::kTransportStatus;
constexpr SINK_UPNP_Check kMedium = SINK_UPNP_Check::kStorageMedium;
constexpr SINK_UPNP_Check kPMode = SINK_UPNP_Check::kPlayMode;
constexpr SINK_UPNP_Check kSpeed = SINK_UPNP_Check::kPlaySpeed;
constexpr SINK_UPNP_Check kWrite = SINK_UPNP_Check::kWriteStatus;
constexpr SINK_UPNP_Check kQMode = SINK_UPNP_Check::kQualityMode;
constexpr SINK_UPNP_Check kU32 = SINK_UPNP_Check::kUnsigned32;
constexpr SINK_UPNP_Check kS32 = SINK_UPNP_Check::kSigned32;

constexpr SINK_UPNP_ChangeRoute kNone = SINK_UPNP_ChangeRoute::kNone;
constexpr SINK_UPNP_ChangeRoute kLC = SINK_UPNP_ChangeRoute::kLastChange;
constexpr SINK_UPNP_ChangeRoute kLCTS = SINK_UPNP_ChangeRoute::kLastChangeAndTransportState;
constexpr SINK_UPNP_ChangeRoute kFlag = SINK_UPNP_ChangeRoute::kFlag;
constexpr SINK_UPNP_ChangeRoute kNotify = SINK_UPNP_ChangeRoute::kNotify;

// A store starts without media, and the OpenHome transport state (29) starts as the word that follows that.
constexpr const SINK_UPNP_TransportStateWords& kStartState =
    SINK_UPNP_TransportStateWordsOf(SINK_UPNP_TransportState::kNoMediaPresent);
constexpr const char* kNoMedia = kStartState.avTransport;
constexpr const char* kOhStart = kStartState.openHome;

}  // namespace

// Columns: initial value kind, standard literal, OpenHome literal, check, standard route, OpenHome route.
// The OpenHome store's literal differs at 66, 71, 77, 81 and 82 only; its "false" for Metatext (77) and
// its empty Lossless (75) are intended.
const SINK_UPNP_StateVariableEntry SINK_UPNP_stateVariableCatalogue[SINK_UPNP_STATE_VARIABLE_COUNT] = {
    {kLit, kNoMedia, kNoMedia, kTState, kLC, kLCTS},                         // 0 TransportState
    {kLit, "OK", "OK", kTStatus, kLC, kLC},                                   // 1 TransportStatus
    {kLit, "NONE", "NONE", kMedium, kLC, kLC},                                // 2 PlaybackStorageMedium
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kMedium, kLC, kLC},          // 3 RecordStorageMedium
    {kLit, "NONE,NETWORK", "NONE,NETWORK", kAny, kLC, kLC},                   // 4 PossiblePlaybackStorageMedia
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kLC, kLC},             // 5 PossibleRecordStorageMedia
    {kLit, "NORMAL", "NORMAL", kPMode, kLC, kLC},                             // 6 CurrentPlayMode
    {kLit, "1", "1", kSpeed, kLC, kLC},                                       // 7 TransportPlaySpeed
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kWrite, kLC, kLC},           // 8 RecordMediumWriteStatus
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kQMode, kLC, kLC},           // 9 CurrentRecordQualityMode
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kLC, kLC},             // 10 PossibleRecordQualityModes
    {kLit, "0", "0", kU32, kLC, kLC},                                         // 11 NumberOfTracks
    {kLit, "0", "0", kU32, kLC, kLC},                                         // 12 CurrentTrack
    {kLit, "00000:00:00", "00000:00:00", kAny, kLC, kLC},                     // 13 CurrentTrackDuration
    {kLit, "00000:00:00", "00000:00:00", kAny, kLC, kLC},                     // 14 CurrentMediaDuration
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kLC, kLC},             // 15 CurrentTrackMetaData
    {kLit, "", "", kAny, kLC, kLC},                                           // 16 CurrentTrackURI
    {kLit, "", "", kAny, kLC, kLC},                                           // 17 AVTransportURI
    {kLit, "", "", kAny, kLC, kLC},                                           // 18 AVTransportURIMetaData
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kLC, kLC},             // 19 NextAVTransportURI
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kLC, kLC},             // 20 NextAVTransportURIMetaData
    {kLit, "00000:00:00", "00000:00:00", kAny, kNone, kNone},                 // 21 RelativeTimePosition
    {kLit, "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", kAny, kNone, kNone},         // 22 AbsoluteTimePosition
    {kLit, "2147483647", "2147483647", kS32, kNone, kNone},                   // 23 RelativeCounterPosition
    {kLit, "2147483647", "2147483647", kS32, kNone, kNone},                   // 24 AbsoluteCounterPosition
    {kLit, "", "", kAny, kLC, kLC},                                           // 25 CurrentTransportActions
    {kLit, "", "", kAny, kNone, kNone},                                       // 26 SourceProtocolInfo
    {kPInfo, nullptr, nullptr, kAny, kNone, kNone},                           // 27 SinkProtocolInfo
    {kLit, "0", "0", kAny, kNone, kNone},                                     // 28 CurrentConnectionIDs
    {kLit, kOhStart, kOhStart, kAny, kNone, kNone},                           // 29 TransportState
    {kLit, "false", "false", kAny, kNone, kNone},                             // 30 Repeat
    {kLit, "false", "false", kAny, kNone, kNone},                             // 31 Shuffle
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 32 Id
    {kLit, "", "", kAny, kNone, kNone},                                       // 33 IdArray
    {kLit, "1000", "1000", kAny, kNone, kNone},                               // 34 TracksMax
    {kPInfo, nullptr, nullptr, kAny, kNone, kNone},                           // 35 ProtocolInfo
    {kLit, "", "", kAny, kNotify, kNone},                                     // 36 Index
    {kLit, "", "", kAny, kNone, kNone},                                       // 37 Relative
    {kLit, "", "", kAny, kNone, kNone},                                       // 38 Absolute
    {kLit, "", "", kAny, kNone, kNone},                                       // 39 IdList
    {kLit, "", "", kAny, kNone, kNone},                                       // 40 TrackList
    {kLit, "", "", kAny, kNone, kFlag},                                       // 41 Uri
    {kLit, "", "", kAny, kNone, kFlag},                                       // 42 Metadata
    {kLit, "", "", kAny, kNone, kNone},                                       // 43 IdArrayToken
    {kLit, "", "", kAny, kNone, kNone},                                       // 44 IdArrayChanged
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 45 ManufacturerName
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 46 ManufacturerInfo
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 47 ManufacturerUrl
    {kDUrl, nullptr, nullptr, kAny, kLC, kLC},                                // 48 ManufacturerImageUri
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 49 ModelName
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 50 ModelInfo
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 51 ModelUrl
    {kDUrl, nullptr, nullptr, kAny, kLC, kLC},                                // 52 ModelImageUri
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 53 ProductRoom
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 54 ProductName
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 55 ProductInfo
    {kDesc, nullptr, nullptr, kAny, kLC, kLC},                                // 56 ProductUrl
    {kDUrl, nullptr, nullptr, kAny, kLC, kLC},                                // 57 ProductImageUri
    {kLit, "false", "false", kAny, kLC, kLC},                                 // 58 Standby
    {kLit, "0", "0", kAny, kLC, kLC},                                         // 59 SourceIndex
    {kLit, "1", "1", kAny, kLC, kLC},                                         // 60 SourceCount
    {kSList, nullptr, nullptr, kAny, kLC, kLC},                               // 61 SourceXml
    {kLit, "Info Time Volume", "Info Time Volume", kAny, kLC, kLC},           // 62 Attributes
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 63 TrackCount
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 64 Duration
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 65 Seconds
    {kLit, "", "0", kAny, kLC, kFlag},                                        // 66 TrackCount
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 67 DetailsCount
    {kLit, "0", "0", kAny, kNone, kNone},                                     // 68 MetatextCount
    {kLit, "", "", kAny, kLC, kFlag},                                         // 69 Uri
    {kLit, "", "", kAny, kLC, kFlag},                                         // 70 Metadata
    {kLit, "", "0", kAny, kLC, kFlag},                                        // 71 Duration
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 72 BitRate
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 73 BitDepth
    {kLit, "0", "0", kAny, kNone, kFlag},                                     // 74 SampleRate
    {kLit, "", "", kAny, kNone, kFlag},                                       // 75 Lossless
    {kLit, "", "", kAny, kNone, kFlag},                                       // 76 CodeName / CodecName
    {kLit, "", "false", kAny, kNotify, kNone},                                // 77 Metatext
    {kLit, "", "", kAny, kLC, kNone},                                         // 78 PresentationUrl
    {kLit, "", "", kAny, kLC, kNone},                                         // 79 Metadata
    {kLit, "false", "false", kAny, kNone, kNone},                             // 80 Audio
    {kLit, "", "Disable", kAny, kLC, kNone},                                  // 81 Status
    {kLit, "", "Info Time Volume", kAny, kLC, kNone},                         // 82 Attributes
};
