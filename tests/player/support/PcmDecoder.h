// Decoding any file GStreamer can play (WAV, FLAC, Ogg Vorbis, MP3, ...) to raw samples, so that a test
// compares what a player wrote with the samples of its sources.
#ifndef TESTS_PLAYER_SUPPORT_PCM_DECODER_H_
#define TESTS_PLAYER_SUPPORT_PCM_DECODER_H_

#include <chrono>
#include <optional>
#include <string>

#include "Pcm.h"

enum class PLAYER_PcmFormat { kS16LE, kS24LE, kS32LE };

// Decodes the file at `pathOrUri` (a local path, or a URI such as http://127.0.0.1:port/x.flac) at its own
// rate and channel count, converted to `format` without dither (so that a 16-bit source decodes to its
// exact samples). Waits at most `timeout`. On failure (no decoder, a format that changes inside the file,
// the timeout) records a test failure naming the reason and returns nothing.
std::optional<PLAYER_Pcm> PLAYER_DecodeToPcm(const std::string& pathOrUri,
                                             PLAYER_PcmFormat format = PLAYER_PcmFormat::kS16LE,
                                             std::chrono::milliseconds timeout = std::chrono::seconds(20));

#endif  // TESTS_PLAYER_SUPPORT_PCM_DECODER_H_
