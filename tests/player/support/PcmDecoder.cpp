#include "PcmDecoder.h"

#include <gst/audio/audio.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <mutex>

#include "PipelineRun.h"

namespace {

const char* FormatName(PLAYER_PcmFormat format) {
  switch (format) {
    case PLAYER_PcmFormat::kS16LE:
      return "S16LE";
    case PLAYER_PcmFormat::kS24LE:
      return "S24LE";
    case PLAYER_PcmFormat::kS32LE:
      return "S32LE";
  }
  return "";
}

// What the sink's streaming thread hands over: the buffers are copied on that thread, and the test thread
// reads the copy once the pipeline has stopped.
struct Collector {
  PLAYER_Pcm pcm;
  std::string problem;
};

// Guards every Collector. GStreamer hands the collector to a streaming thread, often one kept in a pool
// from an earlier pipeline, through GLib's own locks, which ThreadSanitizer does not see (GMutex and GCond
// are futex-based). On purpose a lock in static storage, which no thread constructs, taken by the test
// thread after making the collector and by the streaming thread before touching it: the hand-over is then
// one that ThreadSanitizer sees too.
std::mutex gCollectorMutex;

void OnHandoff(GstElement*, GstBuffer* buffer, GstPad* pad, gpointer data) {
  auto* collector = static_cast<Collector*>(data);
  GstAudioInfo info;
  PLAYER_GstCapsPtr caps(gst_pad_get_current_caps(pad));
  const bool known = caps && gst_audio_info_from_caps(&info, caps.get());
  GstMapInfo map;
  if (!gst_buffer_map(buffer, &map, GST_MAP_READ)) return;
  std::lock_guard<std::mutex> guard(gCollectorMutex);
  PLAYER_Pcm& pcm = collector->pcm;
  if (!known) {
    collector->problem = "a buffer without audio caps";
  } else if (pcm.rate == 0) {
    pcm.rate = GST_AUDIO_INFO_RATE(&info);
    pcm.channels = GST_AUDIO_INFO_CHANNELS(&info);
    pcm.bits = GST_AUDIO_INFO_WIDTH(&info);
  } else if (pcm.rate != GST_AUDIO_INFO_RATE(&info) || pcm.channels != GST_AUDIO_INFO_CHANNELS(&info)) {
    collector->problem = "the format changes inside the stream";
  }
  pcm.data.insert(pcm.data.end(), map.data, map.data + map.size);
  gst_buffer_unmap(buffer, &map);
}

}  // namespace

std::optional<PLAYER_Pcm> PLAYER_DecodeToPcm(const std::string& pathOrUri, PLAYER_PcmFormat format,
                                             std::chrono::milliseconds timeout) {
  const bool isUri = pathOrUri.find("://") != std::string::npos;
  const std::string source = isUri ? "uridecodebin uri=" + PLAYER_QuoteForLaunch(pathOrUri)
                                   : "filesrc location=" + PLAYER_QuoteForLaunch(pathOrUri) + " ! decodebin";
  const std::string description = source +
                                  " ! audioconvert dithering=none noise-shaping=none"
                                  " ! audio/x-raw,layout=interleaved,format=" +
                                  FormatName(format) +
                                  " ! fakesink name=sink sync=false signal-handoffs=true";
  std::string error;
  PLAYER_GstElementPtr pipeline = PLAYER_LaunchPipeline(description, &error);
  if (!pipeline) {
    ADD_FAILURE() << "cannot decode " << pathOrUri << ": " << error;
    return std::nullopt;
  }
  Collector collector;
  { std::lock_guard<std::mutex> publish(gCollectorMutex); }
  PLAYER_GstElementPtr sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
  g_signal_connect(sink.get(), "handoff", G_CALLBACK(OnHandoff), &collector);
  // The pipeline is NULL when this returns, so no streaming thread touches the collector any more.
  const bool ended = PLAYER_RunToEndOfStream(pipeline.get(), timeout, &error);
  std::lock_guard<std::mutex> guard(gCollectorMutex);
  if (!ended || !collector.problem.empty()) {
    ADD_FAILURE() << "cannot decode " << pathOrUri << ": " << (ended ? collector.problem : error);
    return std::nullopt;
  }
  if (collector.pcm.rate == 0) {
    ADD_FAILURE() << "cannot decode " << pathOrUri << ": no samples";
    return std::nullopt;
  }
  return collector.pcm;
}
