// benchsink: the audio sink every renderer plays into during the comparison, so that all are measured at
// the same point. A GStreamer plug-in (loaded through GST_PLUGIN_PATH) with the klass "Sink/Audio" and a
// rank above every real audio sink, so that autoaudiosink, which each renderer uses or can be told to use,
// picks it. It renders in real time (synchronised to the clock, as a sound card would be) and appends to
// the file named by BENCHSINK_LOG one line per fact, with the CLOCK_MONOTONIC time in nanoseconds:
//   start NS               the sink was started (a new pipeline or a pipeline restarted)
//   first NS               the first audio buffer after a start arrived
//   stream NS FRAMES       a new stream began (a gapless switch); FRAMES rendered since the start
//   end NS FRAMES          end of stream or stop: FRAMES rendered since the start, NS the last buffer's time
#define PACKAGE "open-renderer-bench"

#include <fcntl.h>
#include <gst/base/gstbasesink.h>
#include <gst/gst.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <ctime>

namespace {

struct MeasuringSink {
  GstBaseSink parent;
  guint64 frames;
  gint64 lastNs;
  gboolean seenFirst;
  gboolean ended;
  gint bytesPerFrame;
};

struct MeasuringSinkClass {
  GstBaseSinkClass parentClass;
};

G_DEFINE_TYPE(MeasuringSink, measuring_sink, GST_TYPE_BASE_SINK)

gint64 MonotonicNs() {
  timespec now{};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return static_cast<gint64>(now.tv_sec) * 1000000000 + now.tv_nsec;
}

void Note(const char* format, gint64 ns, guint64 frames) {
  const char* path = std::getenv("BENCHSINK_LOG");
  if (path == nullptr) return;
  char line[128];
  const int length = std::snprintf(line, sizeof(line), format, static_cast<long long>(ns),
                                   static_cast<unsigned long long>(frames));
  const int fd = open(path, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
  if (fd < 0) return;
  // One write of one short line to an O_APPEND file: lines from several processes never interleave.
  const ssize_t written = write(fd, line, static_cast<size_t>(length));
  static_cast<void>(written);  // a line lost is a figure missing in the table, which says so
  close(fd);
}

gboolean Start(GstBaseSink* base) {
  auto* sink = reinterpret_cast<MeasuringSink*>(base);
  sink->frames = 0;
  sink->seenFirst = FALSE;
  sink->ended = FALSE;
  Note("start %lld %llu\n", MonotonicNs(), 0);
  return TRUE;
}

void NoteEnd(MeasuringSink* sink) {
  if (sink->ended || !sink->seenFirst) return;
  sink->ended = TRUE;
  Note("end %lld %llu\n", sink->lastNs, sink->frames);
}

gboolean Stop(GstBaseSink* base) {
  NoteEnd(reinterpret_cast<MeasuringSink*>(base));
  return TRUE;
}

gboolean SetCaps(GstBaseSink* base, GstCaps* caps) {
  auto* sink = reinterpret_cast<MeasuringSink*>(base);
  const GstStructure* structure = gst_caps_get_structure(caps, 0);
  gint channels = 0;
  gst_structure_get_int(structure, "channels", &channels);
  sink->bytesPerFrame = 2 * (channels > 0 ? channels : 2);
  return TRUE;
}

gboolean Event(GstBaseSink* base, GstEvent* event) {
  auto* sink = reinterpret_cast<MeasuringSink*>(base);
  if (GST_EVENT_TYPE(event) == GST_EVENT_STREAM_START && sink->seenFirst)
    Note("stream %lld %llu\n", MonotonicNs(), sink->frames);
  if (GST_EVENT_TYPE(event) == GST_EVENT_EOS) NoteEnd(sink);
  return GST_BASE_SINK_CLASS(measuring_sink_parent_class)->event(base, event);
}

GstFlowReturn Render(GstBaseSink* base, GstBuffer* buffer) {
  auto* sink = reinterpret_cast<MeasuringSink*>(base);
  const gint64 now = MonotonicNs();
  if (!sink->seenFirst) {
    sink->seenFirst = TRUE;
    Note("first %lld %llu\n", now, 0);
  }
  sink->frames +=
      gst_buffer_get_size(buffer) / static_cast<gsize>(sink->bytesPerFrame > 0 ? sink->bytesPerFrame : 4);
  sink->lastNs = now;
  sink->ended = FALSE;
  return GST_FLOW_OK;
}

void measuring_sink_init(MeasuringSink* sink) {
  sink->bytesPerFrame = 4;
  gst_base_sink_set_sync(GST_BASE_SINK(sink), TRUE);
}

void measuring_sink_class_init(MeasuringSinkClass* klass) {
  auto* element = GST_ELEMENT_CLASS(klass);
  auto* base = GST_BASE_SINK_CLASS(klass);
  // 16-bit stereo at 44.1 kHz, the format of the comparison's tracks: every renderer converts to the same.
  static GstStaticPadTemplate pad = GST_STATIC_PAD_TEMPLATE(
      "sink", GST_PAD_SINK, GST_PAD_ALWAYS,
      GST_STATIC_CAPS("audio/x-raw, format=(string)S16LE, layout=(string)interleaved, rate=(int)44100, "
                      "channels=(int)2"));
  gst_element_class_add_static_pad_template(element, &pad);
  gst_element_class_set_static_metadata(element, "Measuring audio sink", "Sink/Audio",
                                        "Renders in real time and notes when audio arrives and how much",
                                        "open renderer benchmarks");
  base->start = Start;
  base->stop = Stop;
  base->set_caps = SetCaps;
  base->event = Event;
  base->render = Render;
}

gboolean PluginInit(GstPlugin* plugin) {
  return gst_element_register(plugin, "benchsink", GST_RANK_PRIMARY + 100, measuring_sink_get_type());
}

}  // namespace

GST_PLUGIN_DEFINE(GST_VERSION_MAJOR, GST_VERSION_MINOR, benchsink, "The comparison's measuring audio sink",
                  PluginInit, "1.0", "LGPL", "open-renderer-bench", "https://localhost/")
