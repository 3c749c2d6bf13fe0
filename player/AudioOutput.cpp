#include "AudioOutput.h"

#include "WavFileOutput.h"

namespace {

// playbin's flags: decode audio only, and apply the volume in the pipeline rather than in the device.
constexpr guint kPlayFlagAudio = 1u << 1;
constexpr guint kPlayFlagSoftVolume = 1u << 4;

GstElement* MakeElement(const char* factory, std::string* error) {
  GstElement* element = gst_element_factory_make(factory, nullptr);
  if (element == nullptr && error != nullptr) {
    *error = std::string("the GStreamer element \"") + factory + "\" is not installed";
  }
  return element;
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
  GstElement* sink = PLAYER_MakeAudioSink(options, error);
  if (sink == nullptr) return nullptr;
  GstElement* playbin = MakeElement("playbin", error);
  if (playbin == nullptr) {
    gst_object_unref(gst_object_ref_sink(sink));
    return nullptr;
  }
  g_object_set(playbin, "flags", kPlayFlagAudio | kPlayFlagSoftVolume, "audio-sink", sink, nullptr);
  return playbin;
}
