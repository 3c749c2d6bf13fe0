#include "TestMedia.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <locale>
#include <sstream>
#include <vector>

#include "TemporaryDirectory.h"

#include "PipelineRun.h"

namespace {

// audiotestsrc makes whole buffers only, so the frame count is a product: the largest buffer size up to
// this that divides it.
constexpr std::uint64_t kMaxSamplesPerBuffer = 4096;

std::uint64_t SamplesPerBuffer(std::uint64_t frames) {
  for (std::uint64_t size = kMaxSamplesPerBuffer; size > 1; --size) {
    if (frames % size == 0) return size;
  }
  return 1;
}

const char* Extension(PLAYER_MediaFormat format) {
  switch (format) {
    case PLAYER_MediaFormat::kWav:
      return ".wav";
    case PLAYER_MediaFormat::kFlac:
      return ".flac";
    case PLAYER_MediaFormat::kOggVorbis:
      return ".ogg";
    case PLAYER_MediaFormat::kMp3:
      return ".mp3";
  }
  return "";
}

const char* MimeType(PLAYER_MediaFormat format) {
  switch (format) {
    case PLAYER_MediaFormat::kWav:
      return "audio/wav";
    case PLAYER_MediaFormat::kFlac:
      return "audio/flac";
    case PLAYER_MediaFormat::kOggVorbis:
      return "audio/ogg";
    case PLAYER_MediaFormat::kMp3:
      return "audio/mpeg";
  }
  return "";
}

bool Lossless(PLAYER_MediaFormat format) {
  return format == PLAYER_MediaFormat::kWav || format == PLAYER_MediaFormat::kFlac;
}

// The raw samples and the encoder that follows them. 24-bit samples are made as S32LE and reduced
// without dither, so that they are a function of the parameters alone (dither is random).
std::string EncodingChain(const PLAYER_TrackParameters& track) {
  std::ostringstream chain;
  const std::string shape =
      ",rate=" + std::to_string(track.rate) + ",channels=" + std::to_string(track.channels) + " ! ";
  switch (track.format) {
    case PLAYER_MediaFormat::kWav:
    case PLAYER_MediaFormat::kFlac:
      if (track.bits == 24) {
        chain << "audio/x-raw,format=S32LE" << shape
              << "audioconvert dithering=none noise-shaping=none ! audio/x-raw,format=S24LE ! ";
      } else {
        chain << "audio/x-raw,format=S16LE" << shape;
      }
      chain << (track.format == PLAYER_MediaFormat::kWav ? "wavenc" : "flacenc");
      break;
    case PLAYER_MediaFormat::kOggVorbis:
      chain << "audio/x-raw,format=F32LE" << shape << "vorbisenc ! oggmux";
      break;
    case PLAYER_MediaFormat::kMp3:
      chain << "audio/x-raw,format=S16LE" << shape << "lamemp3enc target=bitrate cbr=true bitrate=128";
      break;
  }
  return chain.str();
}

std::string CheckParameters(const PLAYER_TrackParameters& track, std::uint64_t frames) {
  if (track.rate <= 0) return "rate must be positive";
  if (track.channels <= 0 || track.channels > 8) return "channels must be 1 to 8";
  if (frames == 0) return "no frames: give a positive duration or frame count";
  if (Lossless(track.format) && track.bits != 16 && track.bits != 24) return "bits must be 16 or 24";
  return "";
}

}  // namespace

PLAYER_TestMedia::PLAYER_TestMedia() {
  PLAYER_EnsureGstreamer();
  directory_ = PLAYER_MakeTemporaryDirectory("player-media-");
  if (directory_.empty()) return;
}

PLAYER_TestMedia::~PLAYER_TestMedia() {
  if (directory_.empty()) return;
  std::error_code ignored;
  std::filesystem::remove_all(directory_, ignored);
}

std::string PLAYER_TestMedia::PathFor(const std::string& fileName) const {
  return directory_ + "/" + fileName;
}

std::optional<PLAYER_MediaFile> PLAYER_TestMedia::Make(const PLAYER_TrackParameters& track,
                                                       std::chrono::milliseconds timeout) {
  const std::uint64_t frames = track.frames != 0
                                   ? track.frames
                                   : static_cast<std::uint64_t>(track.rate) *
                                         static_cast<std::uint64_t>(track.durationMilliseconds) / 1000;
  const std::string problem = CheckParameters(track, frames);
  if (!problem.empty() || directory_.empty()) {
    ADD_FAILURE() << "PLAYER_TestMedia::Make: " << (problem.empty() ? "no directory" : problem);
    return std::nullopt;
  }
  ++made_;
  PLAYER_MediaFile file;
  file.path =
      PathFor((track.name.empty() ? "track-" + std::to_string(made_) : track.name) + Extension(track.format));
  file.mimeType = MimeType(track.format);
  file.frames = frames;
  file.rate = track.rate;
  file.channels = track.channels;
  file.bits = Lossless(track.format) ? track.bits : 16;

  const std::uint64_t samplesPerBuffer = SamplesPerBuffer(frames);
  std::ostringstream description;
  // The C locale writes the frequency with a dot, as the parser reads it.
  description.imbue(std::locale::classic());
  description << "audiotestsrc wave=sine freq=" << track.frequency << " volume=" << track.volume
              << " samplesperbuffer=" << samplesPerBuffer << " num-buffers=" << frames / samplesPerBuffer
              << " ! " << EncodingChain(track) << " ! filesink location=" << PLAYER_QuoteForLaunch(file.path);
  std::string error;
  PLAYER_GstElementPtr pipeline = PLAYER_LaunchPipeline(description.str(), &error);
  if (!pipeline || !PLAYER_RunToEndOfStream(pipeline.get(), timeout, &error)) {
    ADD_FAILURE() << "cannot make " << file.path << ": " << error;
    return std::nullopt;
  }
  return file;
}
