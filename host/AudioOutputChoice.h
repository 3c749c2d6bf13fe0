// Turns the configured audio output into the player's options. "auto" means the system's real audio
// output when the machine has one (a sound card, or a PulseAudio/PipeWire server of the user), and else
// the real-time null output, so that a renderer on a server or in CI still plays in real time.
#ifndef HOST_AUDIO_OUTPUT_CHOICE_H_
#define HOST_AUDIO_OUTPUT_CHOICE_H_

#include <string>

#include "Configuration.h"
#include "player/Player.h"

struct HOST_AudioOutputChoice {
  PLAYER_Output output = PLAYER_Output::Null;
  std::string device;
  std::string why;  // one line for the log
};

HOST_AudioOutputChoice HOST_ChooseAudioOutput(HOST_AudioOutput output, const std::string& device);

// Whether the machine has an audio output a person would hear: an ALSA playback device, or a sound server
// in the user's runtime directory.
bool HOST_HasAudioDevice();

#endif  // HOST_AUDIO_OUTPUT_CHOICE_H_
