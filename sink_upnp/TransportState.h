// SINK_UPNP_TransportState: the words of the transport state, one table for both service objects.
//
// The application reports the state in the AVTransport words, into the TransportState variable (0); the
// store refuses any other word there. The OpenHome store keeps the Playlist service's TransportState
// variable (29) in step with it in OpenHome's words, and the Playlist "TransportState" action answers in
// the same words in upper case, so that both services' replies spell a state alike. The two recording
// states have no OpenHome counterpart.
#ifndef SINK_UPNP_TRANSPORT_STATE_H_
#define SINK_UPNP_TRANSPORT_STATE_H_

// The states, in the order of the table's rows.
enum class SINK_UPNP_TransportState {
  kStopped,
  kPlaying,
  kTransitioning,
  kPausedPlayback,
  kPausedRecording,
  kRecording,
  kNoMediaPresent,
};

struct SINK_UPNP_TransportStateWords {
  const char* avTransport;    // the TransportState variable (0)
  const char* openHome;       // the Playlist TransportState variable (29) following it; null: left as it is
  const char* openHomeReply;  // the Playlist "TransportState" action's answer; null: the action fails
};

// One row a state, in the order of SINK_UPNP_TransportState.
inline constexpr SINK_UPNP_TransportStateWords SINK_UPNP_transportStateTable[] = {
    {"STOPPED", "Stopped", "STOPPED"},
    {"PLAYING", "Playing", "PLAYING"},
    {"TRANSITIONING", "Buffering", "BUFFERING"},
    {"PAUSED_PLAYBACK", "Paused", "PAUSED"},
    {"PAUSED_RECORDING", nullptr, nullptr},
    {"RECORDING", nullptr, nullptr},
    {"NO_MEDIA_PRESENT", "Stopped", "STOPPED"},
};

// The row of `state`.
constexpr const SINK_UPNP_TransportStateWords& SINK_UPNP_TransportStateWordsOf(
    SINK_UPNP_TransportState state) {
  return SINK_UPNP_transportStateTable[static_cast<int>(state)];
}

// The AVTransport word of `state`.
constexpr const char* SINK_UPNP_AVTransportWord(SINK_UPNP_TransportState state) {
  return SINK_UPNP_TransportStateWordsOf(state).avTransport;
}

// The row whose AVTransport word is `text`, or null for null or any other text.
const SINK_UPNP_TransportStateWords* SINK_UPNP_FindTransportState(const char* text);

// The OpenHome word that follows the AVTransport word `text`; null for a recording state or any other text.
const char* SINK_UPNP_OpenHomeTransportState(const char* text);

#endif  // SINK_UPNP_TRANSPORT_STATE_H_
