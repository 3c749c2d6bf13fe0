// PLAYER_Pcm: interleaved little-endian PCM samples with their format, as read from a WAV file or decoded
// from any other file, so that tests compare what was played with what was served, sample for sample.
#ifndef TESTS_PLAYER_SUPPORT_PCM_H_
#define TESTS_PLAYER_SUPPORT_PCM_H_

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <vector>

struct PLAYER_Pcm {
  int rate = 0;
  int channels = 0;
  int bits = 0;  // bits per sample as stored: 16, 24 (packed, three bytes) or 32
  std::vector<std::uint8_t> data;

  std::size_t BytesPerFrame() const { return static_cast<std::size_t>(channels) * (bits / 8); }
  // Whole frames in `data`; 0 for a format without channels or bits.
  std::uint64_t Frames() const;
};

// The samples of `parts` one after the other; every part must have the format of the first (a test
// failure otherwise).
PLAYER_Pcm PLAYER_ConcatenatePcm(const std::vector<PLAYER_Pcm>& parts);

// Success when both have the same format and the same bytes. On failure the message names what differs:
// the format, the frame counts, and the first frame that differs, never the megabytes of samples that a
// plain EXPECT_EQ on the data would print.
testing::AssertionResult PLAYER_SamePcm(const PLAYER_Pcm& actual, const PLAYER_Pcm& expected);

#endif  // TESTS_PLAYER_SUPPORT_PCM_H_
