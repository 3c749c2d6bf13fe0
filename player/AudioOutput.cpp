#include "AudioOutput.h"

#include "WavFileOutput.h"

namespace {

// playbin's flags: decode audio only. The volume is applied in the pipeline rather than in the device, by a
// "volume" element of our own in front of the output, which playbin finds by its property and drives. On
// purpose not playbin's soft-volume flag: with it, the playsink of GStreamer 1.22 makes a new volume element
// every time it builds its audio chain (every stream started) and never frees the one before, so a renderer
// that starts streams all day grows without bound.
constexpr guint kPlayFlagAudio = 1u << 1;

GstElement* MakeElement(const char* factory, std::string* error) {
  GstElement* element = gst_element_factory_make(factory, nullptr);
  if (element == nullptr && error != nullptr) {
    *error = std::string("the GStreamer element \"") + factory + "\" is not installed";
  }
  return element;
}

// `sink` behind a volume element, in one bin; takes `sink` (floating or not) in every case.
GstElement* WithVolumeInFront(GstElement* sink, std::string* error) {
  GstElement* volume = MakeElement("volume", error);
  if (volume == nullptr) {
    gst_object_unref(gst_object_ref_sink(sink));
    return nullptr;
  }
  GstElement* bin = gst_bin_new("output");
  // The volume goes in last: a bin lists its newest child first, and playbin drives the first element with
  // a "volume" property it finds (an output with a volume of its own, such as PulseAudio's, stays at full).
  gst_bin_add_many(GST_BIN(bin), sink, volume, nullptr);
  GstPad* input = gst_element_get_static_pad(volume, "sink");
  if (!gst_element_link(volume, sink) || !gst_element_add_pad(bin, gst_ghost_pad_new("sink", input))) {
    gst_object_unref(input);
    gst_object_unref(gst_object_ref_sink(bin));
    if (error != nullptr) *error = "the volume cannot be put in front of the output";
    return nullptr;
  }
  gst_object_unref(input);
  return bin;
}

}  // namespace

GstElement* PLAYER_MakeAudioSink(const PLAYER_Options& options, std::string* error) {
  GstElement* sink = nullptr;
  switch (options.output) {
    case PLAYER_Output::Automatic:
      return MakeElement("autoaudiosink", error);
    case PLAYER_Output::Alsa:
      sink = MakeElement("alsasink", error);
      if (sink != nullptr && !options.device.empty())
        g_object_set(sink, "device", options.device.c_str(), nullptr);
      return sink;
    case PLAYER_Output::PulseAudio:
      sink = MakeElement("pulsesink", error);
      if (sink != nullptr && !options.device.empty())
        g_object_set(sink, "device", options.device.c_str(), nullptr);
      return sink;
    case PLAYER_Output::WavFile:
      return PLAYER_MakeWavFileOutput(options.device, error);
    case PLAYER_Output::Null:
      sink = MakeElement("fakesink", error);
      if (sink != nullptr) g_object_set(sink, "sync", TRUE, nullptr);
      return sink;
  }
  *error = "unknown output";
  return nullptr;
}

GstElement* PLAYER_MakePlaybin(const PLAYER_Options& options, std::string* error) {
  GstElement* output = PLAYER_MakeAudioSink(options, error);
  if (output == nullptr) return nullptr;
  GstElement* sink = WithVolumeInFront(output, error);
  if (sink == nullptr) return nullptr;
  GstElement* playbin = MakeElement("playbin", error);
  if (playbin == nullptr) {
    gst_object_unref(gst_object_ref_sink(sink));
    return nullptr;
  }
  g_object_set(playbin, "flags", kPlayFlagAudio, "audio-sink", sink, nullptr);
  return playbin;
}
