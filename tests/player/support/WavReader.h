// Reading the samples of a WAV file: the format from its "fmt " chunk and the bytes of its "data" chunk,
// found by walking the RIFF chunks (a writer may put other chunks, such as LIST, before or after them).
#ifndef TESTS_PLAYER_SUPPORT_WAV_READER_H_
#define TESTS_PLAYER_SUPPORT_WAV_READER_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "Pcm.h"

// Parses the bytes of a RIFF/WAVE file holding integer PCM (format tag 1, or WAVE_FORMAT_EXTENSIBLE with
// the PCM sub-format). A "data" chunk whose declared size runs past the end of the file yields the bytes
// that are there: a writer stopped before it could write the final size leaves such a file, and its
// samples are still worth comparing. On failure returns nothing and, when `error` is given, says why.
std::optional<PLAYER_Pcm> PLAYER_ParseWavPcm(const std::vector<std::uint8_t>& bytes, std::string* error);

// Reads and parses the file at `path`; on failure records a test failure naming the file and the reason,
// and returns nothing.
std::optional<PLAYER_Pcm> PLAYER_ReadWavPcm(const std::string& path);

// The whole content of the file at `path`; on failure records a test failure and returns nothing.
std::optional<std::vector<std::uint8_t>> PLAYER_ReadFileBytes(const std::string& path);

#endif  // TESTS_PLAYER_SUPPORT_WAV_READER_H_
