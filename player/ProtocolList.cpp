// PLAYER_SupportedProtocolInfo: the formats the installed GStreamer can decode, as sink protocol info.
#include <gst/gst.h>

#include <string>
#include <vector>

#include "player/Player.h"

namespace {

// True when some installed element of `type` (decoder, demuxer, parser) takes `caps`.
bool CanTake(GstElementFactoryListType type, const char* caps) {
  GstCaps* wanted = gst_caps_from_string(caps);
  if (wanted == nullptr) return false;
  GList* elements = gst_element_factory_list_get_elements(type, GST_RANK_MARGINAL);
  GList* takers = gst_element_factory_list_filter(elements, wanted, GST_PAD_SINK, FALSE);
  const bool found = takers != nullptr;
  gst_plugin_feature_list_free(takers);
  gst_plugin_feature_list_free(elements);
  gst_caps_unref(wanted);
  return found;
}

}  // namespace

std::vector<std::string> PLAYER_SupportedProtocolInfo() {
  if (!gst_is_initialized()) gst_init(nullptr, nullptr);
  constexpr GstElementFactoryListType kDecoder = GST_ELEMENT_FACTORY_TYPE_DECODER;
  constexpr GstElementFactoryListType kDemuxer = GST_ELEMENT_FACTORY_TYPE_DEMUXER;
  // One row a format: the MIME types control points and servers use for it, and what must be installed
  // for us to offer them: every (element type, caps) pair listed. Both spellings of FLAC and WAV are
  // listed, since servers use both.
  struct Need {
    GstElementFactoryListType type;
    const char* caps;
  };
  struct Row {
    std::vector<const char*> mimeTypes;
    std::vector<Need> needs;
  };
  static const Row kFormats[] = {
      {{"audio/flac", "audio/x-flac"}, {{kDecoder, "audio/x-flac"}}},
      {{"audio/mpeg"}, {{kDecoder, "audio/mpeg, mpegversion=(int)1, layer=(int)3"}}},
      {{"audio/ogg", "application/ogg"}, {{kDemuxer, "application/ogg"}, {kDecoder, "audio/x-vorbis"}}},
      {{"audio/wav", "audio/x-wav", "audio/wave"}, {{kDemuxer, "audio/x-wav"}}},
      {{"audio/mp4", "audio/x-m4a"},
       {{kDemuxer, "audio/x-m4a"}, {kDecoder, "audio/mpeg, mpegversion=(int)4, stream-format=(string)raw"}}},
      {{"audio/aac", "audio/aacp"},
       {{kDecoder, "audio/mpeg, mpegversion=(int)4, stream-format=(string)raw"}}},
      {{"audio/x-aiff", "audio/aiff"}, {{kDemuxer, "audio/x-aiff"}}},
      {{"audio/opus"}, {{kDemuxer, "application/ogg"}, {kDecoder, "audio/x-opus"}}},
  };
  std::vector<std::string> entries;
  for (const Row& row : kFormats) {
    bool installed = true;
    for (const Need& need : row.needs) installed = installed && CanTake(need.type, need.caps);
    if (!installed) continue;
    for (const char* mime : row.mimeTypes) entries.push_back(std::string("http-get:*:") + mime + ":*");
  }
  // Raw PCM over HTTP (big-endian, as audio/L16 is defined) needs only the raw audio parser.
  if (CanTake(GST_ELEMENT_FACTORY_TYPE_PARSER, "audio/x-unaligned-raw")) {
    for (const char* rate : {"44100", "48000"}) {
      for (const char* channels : {"2", "1"}) {
        entries.push_back(std::string("http-get:*:audio/L16;rate=") + rate + ";channels=" + channels + ":*");
      }
    }
  }
  return entries;
}
