#include "StreamDetails.h"

#include <gst/audio/audio.h>

#include <algorithm>
#include <cctype>

namespace {

bool Contains(const std::string& text, const char* word) {
  std::string lower = text;
  std::string wanted = word;
  std::transform(lower.begin(), lower.end(), lower.begin(), [](unsigned char c) { return std::tolower(c); });
  std::transform(wanted.begin(), wanted.end(), wanted.begin(),
                 [](unsigned char c) { return std::tolower(c); });
  return lower.find(wanted) != std::string::npos;
}

std::string TagText(const GstTagList* tags, const char* tag) {
  gchar* value = nullptr;
  if (tags == nullptr || !gst_tag_list_get_string(tags, tag, &value) || value == nullptr) return "";
  std::string text = value;
  g_free(value);
  return text;
}

}  // namespace

std::string PLAYER_ShortCodecName(const std::string& description, bool* lossless) {
  // One row a codec: a word of the description, the name Info gives, whether it is lossless.
  struct Row {
    const char* word;
    const char* name;
    bool lossless;
  };
  static const Row kCodecs[] = {
      {"FLAC", "FLAC", true},       {"ALAC", "ALAC", true},    {"Apple Lossless", "ALAC", true},
      {"WavPack", "WavPack", true}, {"PCM", "PCM", true},      {"WAV", "WAV", true},
      {"AIFF", "AIFF", true},       {"Layer 3", "MP3", false}, {"MP3", "MP3", false},
      {"Vorbis", "Vorbis", false},  {"Opus", "Opus", false},   {"AAC", "AAC", false},
      {"Layer 2", "MP2", false},
  };
  for (const Row& row : kCodecs) {
    if (Contains(description, row.word)) {
      if (lossless != nullptr) *lossless = row.lossless;
      return row.name;
    }
  }
  if (lossless != nullptr) *lossless = false;
  return description;
}

PLAYER_StreamDetails PLAYER_ReadStreamDetails(const GstCaps* decodedCaps, const GstTagList* tags) {
  PLAYER_StreamDetails details;
  if (decodedCaps != nullptr && gst_caps_is_fixed(decodedCaps)) {
    GstAudioInfo info;
    if (gst_audio_info_from_caps(&info, decodedCaps)) {
      details.sampleRate = static_cast<unsigned>(GST_AUDIO_INFO_RATE(&info));
      details.channels = static_cast<unsigned>(GST_AUDIO_INFO_CHANNELS(&info));
      // A float format says nothing of the source's resolution.
      if (GST_AUDIO_INFO_IS_INTEGER(&info))
        details.bitDepth = static_cast<unsigned>(GST_AUDIO_INFO_DEPTH(&info));
    }
  }

  // The codec tag names the codec; a WAV file's tag only says "PCM", its container says "WAV".
  const std::string codec = TagText(tags, GST_TAG_AUDIO_CODEC);
  const std::string container = TagText(tags, GST_TAG_CONTAINER_FORMAT);
  if (Contains(container, "WAV") && (codec.empty() || Contains(codec, "PCM"))) {
    details.codecName = "WAV";
    details.lossless = true;
  } else if (!codec.empty()) {
    details.codecName = PLAYER_ShortCodecName(codec, &details.lossless);
  } else if (!container.empty()) {
    details.codecName = PLAYER_ShortCodecName(container, &details.lossless);
  }

  guint bitrate = 0;
  if (tags != nullptr && (gst_tag_list_get_uint(tags, GST_TAG_BITRATE, &bitrate) ||
                          gst_tag_list_get_uint(tags, GST_TAG_NOMINAL_BITRATE, &bitrate))) {
    details.bitRate = bitrate;
  }
  if (details.bitRate == 0 && details.lossless && details.codecName != "FLAC") {
    details.bitRate = details.sampleRate * details.channels * details.bitDepth;
  }
  return details;
}
