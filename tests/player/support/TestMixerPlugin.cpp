// A sound card's mixer for tests on machines without one: an ALSA external control plug-in
// (libasound_module_ctl_testmixer.so) that alsa-lib loads for a control device of type "testmixer".
//
// It has one simple element, "Master": a stereo "Master Playback Volume" (raw 0..255, and, unless the
// configuration says `decibels false`, a decibel scale from -51.00 dB at 0 to 0.00 dB at 255 in steps of
// 0.20 dB) and a stereo "Master Playback Switch" (unless `switch false`). `maximum <n>` makes the raw range
// 0..n instead (the decibel scale keeps its minimum and step); `refuse true` makes every write fail with
// EIO, as a device that went away does. Its values live in memory and,
// when the configuration names a `file`, are read from that file when the device opens and written to it
// after every change, so that a test can read them without ALSA and set the state a device opens with.
// The file holds two lines: "volume <left> <right>" and "switch <left> <right>".
//
// Configuration (see PLAYER_TestMixer, which writes it):
//   ctl_type.testmixer { lib "<path of this library>" }
//   ctl.NAME { type testmixer [file "<path>"] [decibels <bool>] [switch <bool>] [maximum <n>]
//                                  [refuse <bool>] }
//
// This file is the one place of the tests that includes ALSA's headers: it is the device, not a user of it.
#include <alsa/asoundlib.h>
#include <alsa/control_external.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

constexpr snd_ctl_ext_key_t kVolumeKey = 0;
constexpr snd_ctl_ext_key_t kSwitchKey = 1;
constexpr char kVolumeName[] = "Master Playback Volume";
constexpr char kSwitchName[] = "Master Playback Switch";
constexpr unsigned kChannels = 2;
constexpr long kDefaultMaxRaw = 255;

// TLV: a decibel scale of -51.00 dB at the minimum and 0.20 dB per step (hundredths of a dB), no mute.
const unsigned int kDecibelScale[] = {SND_CTL_TLVT_DB_SCALE, 2 * sizeof(unsigned int),
                                      static_cast<unsigned int>(-5100), 20};

struct TestMixer {
  snd_ctl_ext_t ext{};  // alsa-lib hands this back to each callback; private_data leads to the rest
  std::string file;
  bool decibels = true;
  bool hasSwitch = true;
  long maxRaw = kDefaultMaxRaw;
  bool refuse = false;
  long volume[kChannels] = {kDefaultMaxRaw, kDefaultMaxRaw};
  long on[kChannels] = {1, 1};
};

TestMixer* Of(snd_ctl_ext_t* ext) { return static_cast<TestMixer*>(ext->private_data); }

void Load(TestMixer* mixer) {
  if (mixer->file.empty()) return;
  FILE* stream = std::fopen(mixer->file.c_str(), "r");
  if (stream == nullptr) return;  // no file yet: the defaults (full volume, switched on)
  long volume[kChannels] = {0, 0};
  long on[kChannels] = {0, 0};
  if (std::fscanf(stream, "volume %ld %ld switch %ld %ld", &volume[0], &volume[1], &on[0], &on[1]) == 4) {
    for (unsigned channel = 0; channel < kChannels; ++channel) {
      mixer->volume[channel] = volume[channel];
      mixer->on[channel] = on[channel];
    }
  }
  std::fclose(stream);
}

int Save(const TestMixer* mixer) {
  if (mixer->file.empty()) return 0;
  FILE* stream = std::fopen(mixer->file.c_str(), "w");
  if (stream == nullptr) return -errno;
  std::fprintf(stream, "volume %ld %ld\nswitch %ld %ld\n", mixer->volume[0], mixer->volume[1], mixer->on[0],
               mixer->on[1]);
  return std::fclose(stream) == 0 ? 0 : -EIO;
}

void Close(snd_ctl_ext_t* ext) { delete Of(ext); }

int ElementCount(snd_ctl_ext_t* ext) { return Of(ext)->hasSwitch ? 2 : 1; }

int ElementList(snd_ctl_ext_t*, unsigned int offset, snd_ctl_elem_id_t* id) {
  snd_ctl_elem_id_set_interface(id, SND_CTL_ELEM_IFACE_MIXER);
  snd_ctl_elem_id_set_name(id, offset == 0 ? kVolumeName : kSwitchName);
  return 0;
}

snd_ctl_ext_key_t FindElement(snd_ctl_ext_t* ext, const snd_ctl_elem_id_t* id) {
  const char* name = snd_ctl_elem_id_get_name(id);
  if (std::strcmp(name, kVolumeName) == 0) return kVolumeKey;
  if (std::strcmp(name, kSwitchName) == 0 && Of(ext)->hasSwitch) return kSwitchKey;
  return SND_CTL_EXT_KEY_NOT_FOUND;
}

int GetAttribute(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, int* type, unsigned int* access,
                 unsigned int* count) {
  *count = kChannels;
  if (key == kVolumeKey) {
    *type = SND_CTL_ELEM_TYPE_INTEGER;
    *access = SND_CTL_EXT_ACCESS_READWRITE | (Of(ext)->decibels ? SND_CTL_EXT_ACCESS_TLV_READ : 0);
  } else {
    *type = SND_CTL_ELEM_TYPE_BOOLEAN;
    *access = SND_CTL_EXT_ACCESS_READWRITE;
  }
  return 0;
}

int GetIntegerInfo(snd_ctl_ext_t* ext, snd_ctl_ext_key_t, long* minimum, long* maximum, long* step) {
  *minimum = 0;
  *maximum = Of(ext)->maxRaw;
  *step = 0;
  return 0;
}

int ReadInteger(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, long* value) {
  const long* values = key == kVolumeKey ? Of(ext)->volume : Of(ext)->on;
  for (unsigned channel = 0; channel < kChannels; ++channel) value[channel] = values[channel];
  return 0;
}

int WriteInteger(snd_ctl_ext_t* ext, snd_ctl_ext_key_t key, long* value) {
  if (Of(ext)->refuse) return -EIO;
  const long maximum = key == kVolumeKey ? Of(ext)->maxRaw : 1;
  for (unsigned channel = 0; channel < kChannels; ++channel) {
    if (value[channel] < 0 || value[channel] > maximum) return -EINVAL;
  }
  long* values = key == kVolumeKey ? Of(ext)->volume : Of(ext)->on;
  for (unsigned channel = 0; channel < kChannels; ++channel) values[channel] = value[channel];
  return Save(Of(ext));
}

snd_ctl_ext_callback_t MakeCallbacks() {
  snd_ctl_ext_callback_t callbacks{};
  callbacks.close = Close;
  callbacks.elem_count = ElementCount;
  callbacks.elem_list = ElementList;
  callbacks.find_elem = FindElement;
  callbacks.get_attribute = GetAttribute;
  callbacks.get_integer_info = GetIntegerInfo;
  callbacks.read_integer = ReadInteger;
  callbacks.write_integer = WriteInteger;
  return callbacks;
}

const snd_ctl_ext_callback_t kCallbacks = MakeCallbacks();

void CopyName(char* target, std::size_t size, const char* text) {
  std::strncpy(target, text, size - 1);
  target[size - 1] = '\0';
}

// Reads the plug-in's own fields of `conf` into `mixer`; a negative error for a field it does not know.
int Configure(snd_config_t* conf, TestMixer* mixer) {
  snd_config_iterator_t position;
  snd_config_iterator_t next;
  snd_config_for_each(position, next, conf) {
    snd_config_t* entry = snd_config_iterator_entry(position);
    const char* id = nullptr;
    if (snd_config_get_id(entry, &id) < 0) continue;
    if (std::strcmp(id, "comment") == 0 || std::strcmp(id, "type") == 0) continue;
    if (std::strcmp(id, "file") == 0) {
      const char* path = nullptr;
      if (snd_config_get_string(entry, &path) < 0) return -EINVAL;
      mixer->file = path;
    } else if (std::strcmp(id, "decibels") == 0 || std::strcmp(id, "switch") == 0 ||
               std::strcmp(id, "refuse") == 0) {
      const int value = snd_config_get_bool(entry);
      if (value < 0) return value;
      bool& flag = id[0] == 'd' ? mixer->decibels : id[0] == 's' ? mixer->hasSwitch : mixer->refuse;
      flag = value != 0;
    } else if (std::strcmp(id, "maximum") == 0) {
      long maximum = 0;
      if (snd_config_get_integer(entry, &maximum) < 0 || maximum < 1) return -EINVAL;
      mixer->maxRaw = maximum;
      mixer->volume[0] = mixer->volume[1] = maximum;
    } else {
      return -EINVAL;
    }
  }
  return 0;
}

}  // namespace

extern "C" {

SND_CTL_PLUGIN_DEFINE_FUNC(testmixer) {
  (void)root;  // the whole configuration: this plug-in needs only its own node
  TestMixer* mixer = new (std::nothrow) TestMixer();
  if (mixer == nullptr) return -ENOMEM;
  int result = Configure(conf, mixer);
  if (result < 0) {
    delete mixer;
    return result;
  }
  Load(mixer);
  mixer->ext.version = SND_CTL_EXT_VERSION;
  mixer->ext.card_idx = 0;
  CopyName(mixer->ext.id, sizeof(mixer->ext.id), "TestMixer");
  CopyName(mixer->ext.driver, sizeof(mixer->ext.driver), "testmixer");
  CopyName(mixer->ext.name, sizeof(mixer->ext.name), "Test Mixer");
  CopyName(mixer->ext.longname, sizeof(mixer->ext.longname), "Test mixer of the player's tests");
  CopyName(mixer->ext.mixername, sizeof(mixer->ext.mixername), "Test Mixer");
  mixer->ext.poll_fd = -1;  // no change notifications
  mixer->ext.callback = &kCallbacks;
  mixer->ext.private_data = mixer;
  mixer->ext.tlv.p = kDecibelScale;  // read only for the elements that announce a TLV (the volume)
  result = snd_ctl_ext_create(&mixer->ext, name, mode);
  if (result < 0) {
    delete mixer;
    return result;
  }
  *handlep = mixer->ext.handle;
  return 0;
}

SND_CTL_PLUGIN_SYMBOL(testmixer)

}  // extern "C"
