// PLAYER_AlsaMixer: one ALSA simple-mixer element (such as "Master" on "hw:0") as the renderer's volume
// and mute.
//
// Volume is the 0..100 scale of RenderingControl, mapped onto the element as VolumeCurve.h says: cubic
// over the element's decibel range when it has one, else linear over its raw range. Every playback
// channel of the element is set to the same level. A level the player set is answered back exactly as it
// was set while the element still holds what was written for it, because the element's steps may be
// coarser than the scale's (several levels landing on one raw value); once the element holds something
// else (another program changed it), the answer is read from the element.
//
// Mute uses the element's playback switch when it has one (the volume stays as it is). Without a switch,
// muting sets the element to its minimum and remembers the level, which unmuting restores; a volume set
// while so muted is remembered for that and leaves the element at its minimum.
//
// Changes another program makes are taken in (from the device's change notifications, without waiting)
// at the next call; nothing is evented.
//
// No ALSA type appears here, so that the player's header and what includes it stay free of ALSA.
// Threads: one thread at a time (the player's main thread).
#ifndef PLAYER_ALSA_MIXER_H_
#define PLAYER_ALSA_MIXER_H_

#include <string>

struct _snd_mixer;
struct _snd_mixer_elem;

class PLAYER_AlsaMixer {
 public:
  PLAYER_AlsaMixer() = default;
  ~PLAYER_AlsaMixer();
  PLAYER_AlsaMixer(const PLAYER_AlsaMixer&) = delete;
  PLAYER_AlsaMixer& operator=(const PLAYER_AlsaMixer&) = delete;

  // Opens the simple element named `control` (index 0) on the ALSA control device `device` ("hw:0",
  // "default", a name from the ALSA configuration). Answers true, or false with the reason in *error
  // (no such device, no such element, an element without a playback volume). Call once.
  bool Open(const std::string& device, const std::string& control, std::string* error);

  // The level, 0..100. False when the element cannot be read.
  bool GetVolume(int* percent);
  // Sets every playback channel to `percent` (0..100, clamped). False when the element refuses it.
  bool SetVolume(int percent);
  bool GetMute(bool* muted);
  bool SetMute(bool muted);

  // Whether the element has a decibel range (cubic mapping) and a playback switch (mute by switch).
  bool HasDecibels() const { return hasDecibels_; }
  bool HasSwitch() const { return hasSwitch_; }

 private:
  // Reads what changed on the device since the last call, without waiting.
  void TakeOutsideChanges();
  // Whether the element is muted now, from what the mixer has already taken in.
  bool ReadMute(bool* muted);
  // The raw value `percent` maps to.
  bool RawFor(int percent, long* raw);
  // The level the element holds: the one written for it while it holds that, else mapped back.
  bool PercentOfElement(int* percent);
  // Sets every channel to `percent` and remembers it.
  bool WriteLevel(int percent);
  // The raw volume of the element's first playback channel.
  bool ReadFirstChannel(long* raw);

  _snd_mixer* mixer_ = nullptr;
  _snd_mixer_elem* element_ = nullptr;
  long minRaw_ = 0;
  long maxRaw_ = 0;
  long minDb_ = 0;
  long maxDb_ = 0;
  bool hasDecibels_ = false;
  bool hasSwitch_ = false;

  // The level last written and the raw value written for it (-1: none yet).
  int writtenPercent_ = -1;
  long writtenRaw_ = 0;
  // Without a switch: muted by the minimum, and the level to restore.
  bool mutedByMinimum_ = false;
  int levelBeforeMute_ = 0;
};

#endif  // PLAYER_ALSA_MIXER_H_
