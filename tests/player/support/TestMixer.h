// PLAYER_TestMixer: the test mixer device (support/TestMixerPlugin.cpp) made available to the process for
// as long as the object lives.
//
// It writes an ALSA configuration into a temporary directory (the system's alsa.conf, the plug-in's
// library, and the control devices below) and points alsa-lib at it through ALSA_CONFIG_PATH, which it
// restores on destruction. Each device keeps its element's values in a state file of its own, which the
// test reads back and can set before a device opens. Without ALSA headers: the test sees numbers.
//
// Devices, each with one element "Master" (stereo volume 0..255 unless said otherwise):
//   "testmixer"          decibels -51.00..0.00 dB (0.20 dB a step) and a playback switch
//   "testmixer_linear"   no decibels, a playback switch
//   "testmixer_noswitch" decibels, no switch
//   "testmixer_coarse"   volume 0..20, no decibels, a playback switch
//   "testmixer_refusing" as "testmixer", but every write fails (EIO)
//
// One object at a time in a process; not thread-safe.
#ifndef TESTS_PLAYER_SUPPORT_TEST_MIXER_H_
#define TESTS_PLAYER_SUPPORT_TEST_MIXER_H_

#include <optional>
#include <string>

struct PLAYER_TestMixerState {
  long left = 0;
  long right = 0;
  long leftOn = 1;  // the playback switch, 1: sound
  long rightOn = 1;
};

class PLAYER_TestMixer {
 public:
  // A test failure when the directory or the configuration cannot be written.
  PLAYER_TestMixer();
  ~PLAYER_TestMixer();
  PLAYER_TestMixer(const PLAYER_TestMixer&) = delete;
  PLAYER_TestMixer& operator=(const PLAYER_TestMixer&) = delete;

  // What the device `device` holds; nothing when it has not written its state yet and none was set.
  std::optional<PLAYER_TestMixerState> Read(const std::string& device) const;
  // Sets what `device` holds when it is next opened.
  void Write(const std::string& device, const PLAYER_TestMixerState& state) const;

 private:
  std::string StatePath(const std::string& device) const;

  std::string directory_;
  bool hadConfigPath_ = false;
  std::string savedConfigPath_;
};

#endif  // TESTS_PLAYER_SUPPORT_TEST_MIXER_H_
