#include "AudioOutputChoice.h"


#include <cstdlib>
#include <filesystem>

bool HOST_HasAudioDevice() {
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator("/dev/snd", error)) {
    const std::string name = entry.path().filename().string();
    // ALSA names playback devices pcmC<card>D<device>p.
    if (name.rfind("pcmC", 0) == 0 && !name.empty() && name.back() == 'p') return true;
  }
  if (std::getenv("PULSE_SERVER") != nullptr) return true;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  if (runtime != nullptr) {
    const std::filesystem::path directory(runtime);
    if (std::filesystem::exists(directory / "pulse" / "native", error) ||
        std::filesystem::exists(directory / "pipewire-0", error))
      return true;
  }
  return false;
}

HOST_AudioOutputChoice HOST_ChooseAudioOutput(HOST_AudioOutput output, const std::string& device) {
  HOST_AudioOutputChoice choice;
  choice.device = device;
  if (output == HOST_AudioOutput::Alsa) {
    choice.output = PLAYER_Output::Alsa;
    if (choice.device.empty()) choice.device = "default";
    choice.why = "audio output: ALSA device " + choice.device;
  } else if (output == HOST_AudioOutput::PulseAudio) {
    choice.output = PLAYER_Output::PulseAudio;
    choice.why = "audio output: PulseAudio" + (device.empty() ? std::string(" (the server's default sink)") : " sink " + device);
  } else if (output == HOST_AudioOutput::WavFile) {
    choice.output = PLAYER_Output::WavFile;
    choice.why = "audio output: the WAV file " + device;
  } else if (output == HOST_AudioOutput::Null) {
    choice.output = PLAYER_Output::Null;
    choice.why = "audio output: none (the real-time null output)";
  } else if (HOST_HasAudioDevice()) {
    choice.output = PLAYER_Output::Automatic;
    choice.why = "audio output: the system's audio device";
  } else {
    choice.output = PLAYER_Output::Null;
    choice.why = "no audio device found: playing into the real-time null output (choose one with --output)";
  }
  return choice;
}
