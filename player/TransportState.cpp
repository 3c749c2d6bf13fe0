#include "TransportState.h"

const char* PLAYER_TransportStateText(PLAYER_TransportState state) {
  switch (state) {
    case PLAYER_TransportState::NoMediaPresent:
      return "NO_MEDIA_PRESENT";
    case PLAYER_TransportState::Stopped:
      return "STOPPED";
    case PLAYER_TransportState::Transitioning:
      return "TRANSITIONING";
    case PLAYER_TransportState::Playing:
      return "PLAYING";
    case PLAYER_TransportState::PausedPlayback:
      return "PAUSED_PLAYBACK";
  }
  return "STOPPED";
}

std::string PLAYER_TransportActions(PLAYER_TransportState state, bool hasNext, bool hasPrevious) {
  std::string actions;
  switch (state) {
    case PLAYER_TransportState::NoMediaPresent:
      return "";
    case PLAYER_TransportState::Stopped:
      actions = "Play,Seek";
      break;
    case PLAYER_TransportState::Transitioning:
      actions = "Stop";
      break;
    case PLAYER_TransportState::Playing:
      actions = "Pause,Stop,Seek";
      break;
    case PLAYER_TransportState::PausedPlayback:
      actions = "Play,Stop,Seek";
      break;
  }
  if (hasNext) actions += ",Next";
  if (hasPrevious) actions += ",Previous";
  return actions;
}
