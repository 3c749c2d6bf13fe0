// The catalogue of the renderer's 83 state variables, shared by the AVTransport/ConnectionManager store
// and the OpenHome store: each variable's index, its names on the wire, its initial value, the check a new
// value must pass and what a change of it sets in motion in each store.
//
// Index ranges are the services' own groups: AVTransport 0-25, ConnectionManager 26-28, Playlist 29-44,
// Product 45-62, Time 63-65, Info 66-77, Sender 78-82. Several names occur more than once ("TransportState"
// 0 and 29, "TrackCount" 63 and 66, ...); a look-up by name takes the lowest matching index.
#ifndef SINK_UPNP_STATE_VARIABLE_CATALOGUE_H_
#define SINK_UPNP_STATE_VARIABLE_CATALOGUE_H_

#include <cstdint>

#include "dmr_cmn/String.h"

enum SINK_UPNP_StateVariableName_t {
  SINK_UPNP_AVT_TRANSPORT_STATE = 0,
  SINK_UPNP_AVT_TRANSPORT_STATUS,
  SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM,
  SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM,
  SINK_UPNP_AVT_POSSIBLE_PLAYBACK_STORAGE_MEDIA,
  SINK_UPNP_AVT_POSSIBLE_RECORD_STORAGE_MEDIA,
  SINK_UPNP_AVT_CURRENT_PLAY_MODE,
  SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED,
  SINK_UPNP_AVT_RECORD_MEDIUM_WRITE_STATUS,
  SINK_UPNP_AVT_CURRENT_RECORD_QUALITY_MODE,
  SINK_UPNP_AVT_POSSIBLE_RECORD_QUALITY_MODES,  // 10
  SINK_UPNP_AVT_NUMBER_OF_TRACKS,
  SINK_UPNP_AVT_CURRENT_TRACK,
  SINK_UPNP_AVT_CURRENT_TRACK_DURATION,
  SINK_UPNP_AVT_CURRENT_MEDIA_DURATION,
  SINK_UPNP_AVT_CURRENT_TRACK_METADATA,
  SINK_UPNP_AVT_CURRENT_TRACK_URI,
  SINK_UPNP_AVT_AV_TRANSPORT_URI,
  SINK_UPNP_AVT_AV_TRANSPORT_URI_METADATA,
  SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI,
  SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI_METADATA,  // 20
  SINK_UPNP_AVT_RELATIVE_TIME_POSITION,
  SINK_UPNP_AVT_ABSOLUTE_TIME_POSITION,
  SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION,
  SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION,
  SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS,
  SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO,
  SINK_UPNP_CMS_SINK_PROTOCOL_INFO,
  SINK_UPNP_CMS_CURRENT_CONNECTION_IDS,
  SINK_UPNP_PLAYLIST_TRANSPORT_STATE,
  SINK_UPNP_PLAYLIST_REPEAT,  // 30
  SINK_UPNP_PLAYLIST_SHUFFLE,
  SINK_UPNP_PLAYLIST_ID,
  SINK_UPNP_PLAYLIST_ID_ARRAY,
  SINK_UPNP_PLAYLIST_TRACKS_MAX,
  SINK_UPNP_PLAYLIST_PROTOCOL_INFO,
  SINK_UPNP_PLAYLIST_INDEX,
  SINK_UPNP_PLAYLIST_RELATIVE,
  SINK_UPNP_PLAYLIST_ABSOLUTE,
  SINK_UPNP_PLAYLIST_ID_LIST,
  SINK_UPNP_PLAYLIST_TRACK_LIST,  // 40
  SINK_UPNP_PLAYLIST_URI,
  SINK_UPNP_PLAYLIST_METADATA,
  SINK_UPNP_PLAYLIST_ID_ARRAY_TOKEN,
  SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED,
  SINK_UPNP_PRODUCT_MANUFACTURER_NAME,
  SINK_UPNP_PRODUCT_MANUFACTURER_INFO,
  SINK_UPNP_PRODUCT_MANUFACTURER_URL,
  SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI,
  SINK_UPNP_PRODUCT_MODEL_NAME,
  SINK_UPNP_PRODUCT_MODEL_INFO,  // 50
  SINK_UPNP_PRODUCT_MODEL_URL,
  SINK_UPNP_PRODUCT_MODEL_IMAGE_URI,
  SINK_UPNP_PRODUCT_PRODUCT_ROOM,
  SINK_UPNP_PRODUCT_PRODUCT_NAME,
  SINK_UPNP_PRODUCT_PRODUCT_INFO,
  SINK_UPNP_PRODUCT_PRODUCT_URL,
  SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI,
  SINK_UPNP_PRODUCT_STANDBY,
  SINK_UPNP_PRODUCT_SOURCE_INDEX,
  SINK_UPNP_PRODUCT_SOURCE_COUNT,  // 60
  SINK_UPNP_PRODUCT_SOURCE_XML,
  SINK_UPNP_PRODUCT_ATTRIBUTES,
  SINK_UPNP_TIME_TRACK_COUNT,
  SINK_UPNP_TIME_DURATION,
  SINK_UPNP_TIME_SECONDS,
  SINK_UPNP_INFO_TRACK_COUNT,
  SINK_UPNP_INFO_DETAILS_COUNT,
  SINK_UPNP_INFO_METATEXT_COUNT,
  SINK_UPNP_INFO_URI,
  SINK_UPNP_INFO_METADATA,  // 70
  SINK_UPNP_INFO_DURATION,
  SINK_UPNP_INFO_BIT_RATE,
  SINK_UPNP_INFO_BIT_DEPTH,
  SINK_UPNP_INFO_SAMPLE_RATE,
  SINK_UPNP_INFO_LOSSLESS,
  SINK_UPNP_INFO_CODEC_NAME,
  SINK_UPNP_INFO_METATEXT,
  SINK_UPNP_SENDER_PRESENTATION_URL,
  SINK_UPNP_SENDER_METADATA,
  SINK_UPNP_SENDER_AUDIO,  // 80
  SINK_UPNP_SENDER_STATUS,
  SINK_UPNP_SENDER_ATTRIBUTES,
};

constexpr int SINK_UPNP_STATE_VARIABLE_COUNT = 83;
constexpr int SINK_UPNP_NOTIFY_ARGUMENT_COUNT = 20;

// The names as they appear in events and LastChange documents, one table per store. They differ only at
// index 76: "CodeName" in the standard table, "CodecName" in the OpenHome one. The standard table's
// missing letter is on purpose: it is the name its LastChange documents and look-ups use.
extern const char* SINK_UPNP_stateVariableNameTable[SINK_UPNP_STATE_VARIABLE_COUNT];
extern const char* SINK_UPNP_stateVariableNameTableForOpenHome[SINK_UPNP_STATE_VARIABLE_COUNT];

// One word per variable: 1 while a change of it awaits its OpenHome event, else 0. One table for every
// OpenHome store of the process, on purpose (a process serves one OpenHome renderer): constructing a store
// clears it, a change in any store sets a flag, and the SendEvent of whichever store runs next clears it,
// sending that store's own value. Each store touches it under its own lock only, so two OpenHome stores
// must not change or send from two threads at once.
extern int32_t SINK_UPNP_changeStateVariableTablet[SINK_UPNP_STATE_VARIABLE_COUNT];

// Where the OpenHome store lays out one service's batch of names and values before handing it to that
// service's eventing thread (which copies it at once). Filled under that store's lock.
extern DMR_CMN_String notifyArgumentName[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];
extern DMR_CMN_String notifyArgumentValue[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];

// The variables among 0 to 28 that never enter a LastChange document: the two time and two counter
// positions (21-24) and the ConnectionManager variables (26-28).
constexpr uint32_t SINK_UPNP_NOT_IN_LAST_CHANGE_MASK =
    (1u << 21) | (1u << 22) | (1u << 23) | (1u << 24) | (1u << 26) | (1u << 27) | (1u << 28);

// Where a variable's initial value comes from.
enum class SINK_UPNP_InitialValue {
  kLiteral,         // the row's text
  kProtocolInfo,    // the sink protocol list the service built
  kDescription,     // the element of the variable's name below the root device of the device description
  kDescriptionUrl,  // the same, prefixed with "http://" and the server address
  kSourceList,      // SINK_UPNP_SOURCE_LIST_XML
};

// The rule a new value must pass.
enum class SINK_UPNP_Check {
  kAny,
  kTransportState,
  kTransportStatus,
  kStorageMedium,
  kPlayMode,
  kPlaySpeed,
  kWriteStatus,
  kQualityMode,
  kUnsigned32,
  kSigned32,
};

// What a stored change sets in motion.
enum class SINK_UPNP_ChangeRoute {
  kNone,                      // only stored
  kLastChange,                // entered into the pending LastChange document
  kLastChangeAndTransportState,  // as kLastChange; the OpenHome transport state (29) follows and is flagged
  kFlag,                      // the variable's change flag is set
  kNotify,                    // sent at once through the AVTransport eventing thread
};

struct SINK_UPNP_StateVariableEntry {
  SINK_UPNP_InitialValue initialValue;
  const char* standardInitialValue;  // kLiteral only; else null
  const char* openHomeInitialValue;  // kLiteral only; else null
  SINK_UPNP_Check check;
  SINK_UPNP_ChangeRoute standardRoute;
  SINK_UPNP_ChangeRoute openHomeRoute;
};

// One row per variable, in index order.
extern const SINK_UPNP_StateVariableEntry SINK_UPNP_stateVariableCatalogue[SINK_UPNP_STATE_VARIABLE_COUNT];

// The Product service's fixed list of sources: the playlist is the only one.
extern const char SINK_UPNP_SOURCE_LIST_XML[];

#endif  // SINK_UPNP_STATE_VARIABLE_CATALOGUE_H_
