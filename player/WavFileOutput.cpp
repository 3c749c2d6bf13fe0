#include "WavFileOutput.h"

#include <fcntl.h>
#include <gst/app/gstappsink.h>
#include <gst/audio/audio.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>

namespace {

// One file, written by the appsink's streaming thread only (its callbacks never run at once).
struct WavFile {
  int fd = -1;
  bool headerWritten = false;
  uint64_t dataBytes = 0;
};

void PutLittleEndian(uint8_t* out, uint32_t value, int bytes) {
  for (int i = 0; i < bytes; ++i) out[i] = static_cast<uint8_t>(value >> (8 * i));
}

// The 44-byte header of a PCM WAV file holding `dataBytes` of samples.
void MakeHeader(uint8_t* header, const GstAudioInfo& info, uint64_t dataBytes) {
  const uint32_t data = dataBytes > 0xFFFFFFDBull ? 0xFFFFFFDBu : static_cast<uint32_t>(dataBytes);
  const uint32_t blockAlign = static_cast<uint32_t>(GST_AUDIO_INFO_BPF(&info));
  std::memcpy(header, "RIFF", 4);
  PutLittleEndian(header + 4, 36 + data, 4);
  std::memcpy(header + 8, "WAVEfmt ", 8);
  PutLittleEndian(header + 16, 16, 4);
  PutLittleEndian(header + 20, 1, 2);  // integer PCM
  PutLittleEndian(header + 22, static_cast<uint32_t>(GST_AUDIO_INFO_CHANNELS(&info)), 2);
  PutLittleEndian(header + 24, static_cast<uint32_t>(GST_AUDIO_INFO_RATE(&info)), 4);
  PutLittleEndian(header + 28, static_cast<uint32_t>(GST_AUDIO_INFO_RATE(&info)) * blockAlign, 4);
  PutLittleEndian(header + 32, blockAlign, 2);
  PutLittleEndian(header + 34, static_cast<uint32_t>(GST_AUDIO_INFO_WIDTH(&info)), 2);
  std::memcpy(header + 36, "data", 4);
  PutLittleEndian(header + 40, data, 4);
}

bool WriteAll(int fd, const uint8_t* data, size_t size, off_t offset) {
  while (size > 0) {
    const ssize_t written = pwrite(fd, data, size, offset);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    data += written;
    size -= static_cast<size_t>(written);
    offset += written;
  }
  return true;
}

GstFlowReturn OnSample(GstAppSink* sink, gpointer data) {
  auto* file = static_cast<WavFile*>(data);
  GstSample* sample = gst_app_sink_pull_sample(sink);
  if (sample == nullptr) return GST_FLOW_EOS;
  GstAudioInfo info;
  GstBuffer* buffer = gst_sample_get_buffer(sample);
  GstMapInfo map;
  GstFlowReturn result = GST_FLOW_OK;
  if (gst_audio_info_from_caps(&info, gst_sample_get_caps(sample)) && buffer != nullptr &&
      gst_buffer_map(buffer, &map, GST_MAP_READ)) {
    uint8_t header[44];
    if (!WriteAll(file->fd, map.data, map.size, static_cast<off_t>(44 + file->dataBytes))) {
      result = GST_FLOW_ERROR;
    } else {
      file->dataBytes += map.size;
      // The first format stays in the header; the sizes follow every buffer.
      if (!file->headerWritten) {
        MakeHeader(header, info, file->dataBytes);
        file->headerWritten = WriteAll(file->fd, header, sizeof header, 0);
      } else {
        uint8_t sizes[4];
        const uint32_t data32 =
            file->dataBytes > 0xFFFFFFDBull ? 0xFFFFFFDBu : static_cast<uint32_t>(file->dataBytes);
        PutLittleEndian(sizes, 36 + data32, 4);
        WriteAll(file->fd, sizes, 4, 4);
        PutLittleEndian(sizes, data32, 4);
        WriteAll(file->fd, sizes, 4, 40);
      }
    }
    gst_buffer_unmap(buffer, &map);
  }
  gst_sample_unref(sample);
  if (result != GST_FLOW_OK) {
    GST_ELEMENT_ERROR(sink, RESOURCE, WRITE, ("cannot write the WAV file"), ("%s", std::strerror(errno)));
  }
  return result;
}

void CloseFile(gpointer data) {
  auto* file = static_cast<WavFile*>(data);
  if (file->fd >= 0) close(file->fd);
  delete file;
}

}  // namespace

GstElement* PLAYER_MakeWavFileOutput(const std::string& path, std::string* error) {
  if (path.empty()) {
    *error = "the WAV output needs a file path";
    return nullptr;
  }
  GstElement* convert = gst_element_factory_make("audioconvert", nullptr);
  GstElement* sink = gst_element_factory_make("appsink", nullptr);
  if (convert == nullptr || sink == nullptr) {
    *error = "the GStreamer elements audioconvert and appsink are needed for the WAV output";
    if (convert != nullptr) gst_object_unref(gst_object_ref_sink(convert));
    if (sink != nullptr) gst_object_unref(gst_object_ref_sink(sink));
    return nullptr;
  }
  auto* file = new WavFile;
  file->fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  if (file->fd < 0) {
    *error = "cannot create " + path + ": " + std::strerror(errno);
    delete file;
    gst_object_unref(gst_object_ref_sink(convert));
    gst_object_unref(gst_object_ref_sink(sink));
    return nullptr;
  }
  // Integer samples as a WAV file holds them; audioconvert passes them through untouched when the decoder
  // gives one of these already, so lossless sources are written bit for bit.
  GstCaps* caps =
      gst_caps_from_string("audio/x-raw, format=(string){ S16LE, S24LE, S32LE }, layout=(string)interleaved");
  g_object_set(sink, "caps", caps, "sync", TRUE, "emit-signals", FALSE, nullptr);
  gst_caps_unref(caps);
  GstAppSinkCallbacks callbacks{};
  callbacks.new_sample = &OnSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink), &callbacks, file, &CloseFile);

  GstElement* bin = gst_bin_new("wav-output");
  gst_bin_add_many(GST_BIN(bin), convert, sink, nullptr);
  gst_element_link(convert, sink);
  GstPad* pad = gst_element_get_static_pad(convert, "sink");
  gst_element_add_pad(bin, gst_ghost_pad_new("sink", pad));
  gst_object_unref(pad);
  return bin;
}
