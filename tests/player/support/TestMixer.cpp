#include "TestMixer.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <vector>

#include "TemporaryDirectory.h"

#ifndef DMR_TEST_MIXER_PLUGIN
#error "DMR_TEST_MIXER_PLUGIN must name the test mixer plug-in's library"
#endif

namespace {

// Debian's top-level ALSA configuration, which ALSA_CONFIG_PATH replaces: included first, so that every
// other device stays as the system defines it.
constexpr char kSystemConfiguration[] = "/usr/share/alsa/alsa.conf";
constexpr char kConfigPathVariable[] = "ALSA_CONFIG_PATH";

struct Device {
  const char* name;
  const char* options;
};
constexpr Device kDevices[] = {
    {"testmixer", ""},
    {"testmixer_linear", " decibels false"},
    {"testmixer_noswitch", " switch false"},
    {"testmixer_coarse", " decibels false maximum 20"},
    {"testmixer_refusing", " refuse true"},
};

}  // namespace

PLAYER_TestMixer::PLAYER_TestMixer() {
  directory_ = PLAYER_MakeTemporaryDirectory("player-mixer-");
  if (directory_.empty()) return;

  std::ostringstream config;
  config << "<" << kSystemConfiguration << ">\n";
  config << "ctl_type.testmixer { lib \"" << DMR_TEST_MIXER_PLUGIN << "\" }\n";
  for (const Device& device : kDevices) {
    config << "ctl." << device.name << " { type testmixer file \"" << StatePath(device.name) << "\""
           << device.options << " }\n";
  }
  const std::string path = directory_ + "/asound.conf";
  std::ofstream file(path);
  file << config.str();
  file.close();
  if (!file) {
    ADD_FAILURE() << "cannot write " << path;
    return;
  }

  const char* saved = std::getenv(kConfigPathVariable);
  hadConfigPath_ = saved != nullptr;
  if (saved != nullptr) savedConfigPath_ = saved;
  // alsa-lib reads the variable each time it opens a device, and reloads its configuration when the
  // files it names change.
  setenv(kConfigPathVariable, path.c_str(), 1);
}

PLAYER_TestMixer::~PLAYER_TestMixer() {
  if (directory_.empty()) return;
  if (hadConfigPath_) {
    setenv(kConfigPathVariable, savedConfigPath_.c_str(), 1);
  } else {
    unsetenv(kConfigPathVariable);
  }
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string PLAYER_TestMixer::StatePath(const std::string& device) const {
  return directory_ + "/" + device + ".state";
}

std::optional<PLAYER_TestMixerState> PLAYER_TestMixer::Read(const std::string& device) const {
  std::ifstream file(StatePath(device));
  std::string volumeWord;
  std::string switchWord;
  PLAYER_TestMixerState state;
  if (!(file >> volumeWord >> state.left >> state.right >> switchWord >> state.leftOn >> state.rightOn) ||
      volumeWord != "volume" || switchWord != "switch") {
    return std::nullopt;
  }
  return state;
}

void PLAYER_TestMixer::Write(const std::string& device, const PLAYER_TestMixerState& state) const {
  std::ofstream file(StatePath(device));
  file << "volume " << state.left << " " << state.right << "\nswitch " << state.leftOn << " " << state.rightOn
       << "\n";
  file.close();
  if (!file) ADD_FAILURE() << "cannot write " << StatePath(device);
}
