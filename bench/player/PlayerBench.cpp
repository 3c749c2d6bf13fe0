// The player's figures, measured on the real pipeline with real media served from 127.0.0.1 and the
// real-time null output (run by hand; playback takes real time):
//   build/bench/player/player_bench
// - action latency: SetAVTransportURI, then Play answered (Play answers once the stream plays: its first
//   buffer has reached the output);
// - Play to the first buffer at the output (a probe on the output's pad);
// - CPU time while playing a FLAC file (44.1 kHz, 16 bit, stereo), as a share of one core.
#include <gst/gst.h>
#include <sys/resource.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <string>
#include <vector>

#include "GStreamerPlayer.h"
#include "MainLoopRunner.h"
#include "TestHttpServer.h"
#include "TestMedia.h"
#include "WavReader.h"
#include "dmr_cmn/String.h"

namespace {

using Clock = std::chrono::steady_clock;

double Milliseconds(Clock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return usage.ru_utime.tv_sec + usage.ru_stime.tv_sec +
         (usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
}

struct Text {
  explicit Text(const char* value) { string.SetCString(value); }
  DMR_CMN_String string;
};

std::string Serve(PLAYER_TestMedia& media, PLAYER_TestHttpServer& server, PLAYER_MediaFormat format,
                  int milliseconds, const std::string& path) {
  PLAYER_TrackParameters spec;
  spec.format = format;
  spec.durationMilliseconds = milliseconds;
  const auto file = media.Make(spec);
  if (!file) return "";
  auto bytes = PLAYER_ReadFileBytes(file->path);
  if (!bytes) return "";
  server.AddFile(path, std::move(*bytes), file->mimeType);
  return server.Url(path);
}

// A probe on the null output's sink pad that notes when a buffer arrives.
std::atomic<int64_t> gFirstBuffer{0};
GstPadProbeReturn OnBuffer(GstPad*, GstPadProbeInfo*, gpointer) {
  int64_t expected = 0;
  gFirstBuffer.compare_exchange_strong(expected, Clock::now().time_since_epoch().count());
  return GST_PAD_PROBE_OK;
}

void Median(const char* what, std::vector<double> values) {
  std::sort(values.begin(), values.end());
  std::printf("%-48s median %7.2f ms  min %7.2f ms  max %7.2f ms  (%zu runs)\n", what,
              values[values.size() / 2], values.front(), values.back(), values.size());
}

}  // namespace

int main() {
  gst_init(nullptr, nullptr);
  PLAYER_MainLoopRunner loop;
  PLAYER_TestMedia media;
  PLAYER_TestHttpServer server;
  const std::string wav = Serve(media, server, PLAYER_MediaFormat::kWav, 3000, "/tone.wav");
  const std::string flac = Serve(media, server, PLAYER_MediaFormat::kFlac, 12000, "/tone.flac");
  if (wav.empty() || flac.empty()) return 1;

  PLAYER_Options options;
  options.output = PLAYER_Output::Null;
  options.context = loop.Context();
  std::string error;
  PLAYER_GStreamerPlayer player(options, nullptr, &error);
  if (!player.Ready()) {
    std::fprintf(stderr, "no player: %s\n", error.c_str());
    return 1;
  }

  std::vector<double> answered;
  std::vector<double> firstBuffer;
  for (int run = 0; run < 15; ++run) {
    Text uri(wav.c_str());
    Text metadata("");
    Text speed("1");
    const Clock::time_point start = Clock::now();
    player.SetAVTransportURI(1, 0, &uri.string, &metadata.string);
    if (player.Play(1, 0, &speed.string) != 0) std::fprintf(stderr, "Play failed\n");
    answered.push_back(Milliseconds(Clock::now() - start));
    loop.RunFor(300);
    player.Stop(1, 0);
    loop.RunFor(50);
  }
  Median("SetAVTransportURI + Play answered", answered);

  // Play to the first buffer at the output: a probe on the output element playbin holds.
  GstElement* output = nullptr;
  g_object_get(player.Pipeline(), "audio-sink", &output, nullptr);
  GstPad* pad = gst_element_get_static_pad(output, "sink");
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, &OnBuffer, nullptr, nullptr);
  gst_object_unref(pad);
  gst_object_unref(output);
  for (int run = 0; run < 15; ++run) {
    Text uri(wav.c_str());
    Text metadata("");
    Text speed("1");
    player.SetAVTransportURI(1, 0, &uri.string, &metadata.string);
    gFirstBuffer = 0;
    const Clock::time_point start = Clock::now();
    player.Play(1, 0, &speed.string);
    loop.RunUntil([] { return gFirstBuffer.load() != 0; }, 2000);
    if (gFirstBuffer.load() != 0) {
      firstBuffer.push_back(Milliseconds(Clock::duration(gFirstBuffer.load()) - start.time_since_epoch()));
    }
    player.Stop(1, 0);
    loop.RunFor(50);
  }
  if (!firstBuffer.empty()) Median("Play to the first buffer at the output", firstBuffer);

  Text uri(flac.c_str());
  Text metadata("");
  Text speed("1");
  player.SetAVTransportURI(1, 0, &uri.string, &metadata.string);
  player.Play(1, 0, &speed.string);
  loop.RunFor(1000);
  const double cpuStart = CpuSeconds();
  const Clock::time_point wallStart = Clock::now();
  loop.RunFor(10000);
  const double cpu = CpuSeconds() - cpuStart;
  const double wall = std::chrono::duration<double>(Clock::now() - wallStart).count();
  std::printf("%-48s %.2f %% of one core (%.3f s CPU in %.1f s)\n", "CPU while playing FLAC 44.1 kHz/16",
              100.0 * cpu / wall, cpu, wall);
  player.Stop(1, 0);
  return 0;
}
