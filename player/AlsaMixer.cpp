#include "AlsaMixer.h"

#include <alsa/asoundlib.h>

#include "VolumeCurve.h"

namespace {

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

}  // namespace

PLAYER_AlsaMixer::~PLAYER_AlsaMixer() {
  // Closing the mixer detaches the device and frees its elements.
  if (mixer_ != nullptr) snd_mixer_close(mixer_);
}

bool PLAYER_AlsaMixer::Open(const std::string& device, const std::string& control, std::string* error) {
  auto fail = [&](const std::string& reason, int code) {
    if (error != nullptr) *error = code < 0 ? reason + ": " + snd_strerror(code) : reason;
    if (mixer_ != nullptr) snd_mixer_close(mixer_);
    mixer_ = nullptr;
    element_ = nullptr;
    return false;
  };
  int result = snd_mixer_open(&mixer_, 0);
  if (result < 0) {
    mixer_ = nullptr;
    return fail("cannot open an ALSA mixer", result);
  }
  result = snd_mixer_attach(mixer_, device.c_str());
  if (result < 0) return fail("cannot open the ALSA control device " + Quoted(device), result);
  result = snd_mixer_selem_register(mixer_, nullptr, nullptr);
  if (result < 0) return fail("cannot read the simple controls of " + Quoted(device), result);
  result = snd_mixer_load(mixer_);
  if (result < 0) return fail("cannot load the controls of " + Quoted(device), result);

  snd_mixer_selem_id_t* id = nullptr;
  result = snd_mixer_selem_id_malloc(&id);
  if (result < 0) return fail("cannot look up " + Quoted(control), result);
  snd_mixer_selem_id_set_index(id, 0);
  snd_mixer_selem_id_set_name(id, control.c_str());
  element_ = snd_mixer_find_selem(mixer_, id);
  snd_mixer_selem_id_free(id);
  if (element_ == nullptr) return fail("no mixer control " + Quoted(control) + " on " + Quoted(device), 0);
  if (!snd_mixer_selem_has_playback_volume(element_)) {
    return fail("the mixer control " + Quoted(control) + " on " + Quoted(device) + " has no playback volume",
                0);
  }
  result = snd_mixer_selem_get_playback_volume_range(element_, &minRaw_, &maxRaw_);
  if (result < 0) return fail("cannot read the range of " + Quoted(control), result);
  // An element whose decibels do not rise with its range is taken as one without decibels.
  hasDecibels_ = snd_mixer_selem_get_playback_dB_range(element_, &minDb_, &maxDb_) == 0 && minDb_ < maxDb_;
  hasSwitch_ = snd_mixer_selem_has_playback_switch(element_) != 0;
  return true;
}

void PLAYER_AlsaMixer::TakeOutsideChanges() {
  // The mixer's device is non-blocking (snd_mixer_attach makes it so): this reads what is queued and
  // returns. A device that reports no changes answers an error, which leaves the cached values as they are.
  snd_mixer_handle_events(mixer_);
}

bool PLAYER_AlsaMixer::ReadFirstChannel(long* raw) {
  for (int channel = 0; channel <= SND_MIXER_SCHN_LAST; ++channel) {
    const auto id = static_cast<snd_mixer_selem_channel_id_t>(channel);
    if (snd_mixer_selem_has_playback_channel(element_, id)) {
      return snd_mixer_selem_get_playback_volume(element_, id, raw) == 0;
    }
  }
  return false;
}

bool PLAYER_AlsaMixer::RawFor(int percent, long* raw) {
  const double fraction = percent / 100.0;
  if (!hasDecibels_ || percent == 0) {
    // Volume 0 is the element's minimum also where that is not the lowest gain its decibels name.
    *raw = PLAYER_LinearVolumeToRaw(fraction, minRaw_, maxRaw_);
    return true;
  }
  // The raw value nearest the gain, for any kind of decibel table the element has.
  const long db = PLAYER_CubicVolumeToDb(fraction, minDb_, maxDb_);
  return snd_mixer_selem_ask_playback_dB_vol(element_, db, 0, raw) == 0;
}

bool PLAYER_AlsaMixer::PercentOfElement(int* percent) {
  long raw = 0;
  if (!ReadFirstChannel(&raw)) return false;
  if (writtenPercent_ >= 0 && raw == writtenRaw_) {
    *percent = writtenPercent_;
    return true;
  }
  if (!hasDecibels_) {
    *percent = PLAYER_VolumePercent(PLAYER_LinearRawToVolume(raw, minRaw_, maxRaw_));
    return true;
  }
  long db = 0;
  if (snd_mixer_selem_ask_playback_vol_dB(element_, raw, &db) != 0) return false;
  *percent = PLAYER_VolumePercent(PLAYER_CubicDbToVolume(db, minDb_, maxDb_));
  return true;
}

bool PLAYER_AlsaMixer::WriteLevel(int percent) {
  long raw = 0;
  if (!RawFor(percent, &raw)) return false;
  if (snd_mixer_selem_set_playback_volume_all(element_, raw) != 0) return false;
  writtenPercent_ = percent;
  writtenRaw_ = raw;
  return true;
}

bool PLAYER_AlsaMixer::GetVolume(int* percent) {
  if (element_ == nullptr) return false;
  TakeOutsideChanges();
  bool muted = false;
  if (!ReadMute(&muted)) return false;
  if (muted && !hasSwitch_) {
    *percent = levelBeforeMute_;
    return true;
  }
  return PercentOfElement(percent);
}

bool PLAYER_AlsaMixer::SetVolume(int percent) {
  if (element_ == nullptr) return false;
  if (percent < 0) percent = 0;
  if (percent > 100) percent = 100;
  TakeOutsideChanges();
  bool muted = false;
  if (!ReadMute(&muted)) return false;
  if (muted && !hasSwitch_) {
    // Muted by the minimum: the level waits for SetMute(false).
    levelBeforeMute_ = percent;
    return true;
  }
  return WriteLevel(percent);
}

bool PLAYER_AlsaMixer::GetMute(bool* muted) {
  if (element_ == nullptr) return false;
  TakeOutsideChanges();
  return ReadMute(muted);
}

bool PLAYER_AlsaMixer::ReadMute(bool* muted) {
  if (hasSwitch_) {
    // The switch is on while the sound plays; every channel of it is set together, so one tells.
    int on = 1;
    if (snd_mixer_selem_get_playback_switch(element_, SND_MIXER_SCHN_FRONT_LEFT, &on) != 0) return false;
    *muted = on == 0;
    return true;
  }
  if (mutedByMinimum_) {
    // Another program raising the level has unmuted it.
    long raw = 0;
    if (!ReadFirstChannel(&raw)) return false;
    if (raw != minRaw_) mutedByMinimum_ = false;
  }
  *muted = mutedByMinimum_;
  return true;
}

bool PLAYER_AlsaMixer::SetMute(bool muted) {
  if (element_ == nullptr) return false;
  if (hasSwitch_) return snd_mixer_selem_set_playback_switch_all(element_, muted ? 0 : 1) == 0;
  TakeOutsideChanges();
  bool mutedNow = false;
  if (!ReadMute(&mutedNow)) return false;
  if (muted == mutedNow) return true;
  if (!muted) {
    mutedByMinimum_ = false;
    return WriteLevel(levelBeforeMute_);
  }
  int level = 0;
  if (!PercentOfElement(&level)) return false;
  if (snd_mixer_selem_set_playback_volume_all(element_, minRaw_) != 0) return false;
  levelBeforeMute_ = level;
  mutedByMinimum_ = true;
  return true;
}
