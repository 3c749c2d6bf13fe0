// The AVTransport transport states the player moves through, their words, and the actions each allows.
#ifndef PLAYER_TRANSPORT_STATE_H_
#define PLAYER_TRANSPORT_STATE_H_

#include <string>

enum class PLAYER_TransportState { NoMediaPresent, Stopped, Transitioning, Playing, PausedPlayback };

// "NO_MEDIA_PRESENT", "STOPPED", "TRANSITIONING", "PLAYING", "PAUSED_PLAYBACK".
const char* PLAYER_TransportStateText(PLAYER_TransportState state);

// CurrentTransportActions: the actions the state allows, comma-separated ("Play,Seek"); "Next" and
// "Previous" only where there is a track to step to.
std::string PLAYER_TransportActions(PLAYER_TransportState state, bool hasNext, bool hasPrevious);

#endif  // PLAYER_TRANSPORT_STATE_H_
