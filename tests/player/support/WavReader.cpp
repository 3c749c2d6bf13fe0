#include "WavReader.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstring>
#include <fstream>
#include <iterator>

namespace {

constexpr std::uint16_t kFormatPcm = 1;
constexpr std::uint16_t kFormatExtensible = 0xFFFE;
constexpr std::size_t kChunkHeaderBytes = 8;
constexpr std::size_t kPcmFormatBytes = 16;
// An extensible format chunk: the 16 bytes of the plain one, cbSize, valid bits, channel mask, then the
// sub-format GUID whose first two bytes are the format tag.
constexpr std::size_t kExtensibleSubFormatOffset = 24;

std::uint16_t Le16(const std::uint8_t* p) { return static_cast<std::uint16_t>(p[0] | (p[1] << 8)); }

std::uint32_t Le32(const std::uint8_t* p) {
  return static_cast<std::uint32_t>(p[0]) | (static_cast<std::uint32_t>(p[1]) << 8) |
         (static_cast<std::uint32_t>(p[2]) << 16) | (static_cast<std::uint32_t>(p[3]) << 24);
}

bool Fail(std::string* error, const std::string& why) {
  if (error != nullptr) *error = why;
  return false;
}

// Reads a "fmt " chunk body into `pcm`.
bool ParseFormat(const std::uint8_t* body, std::size_t size, PLAYER_Pcm* pcm, std::string* error) {
  if (size < kPcmFormatBytes) return Fail(error, "fmt chunk too short");
  std::uint16_t tag = Le16(body);
  if (tag == kFormatExtensible) {
    if (size < kExtensibleSubFormatOffset + 2) return Fail(error, "extensible fmt chunk too short");
    tag = Le16(body + kExtensibleSubFormatOffset);
  }
  if (tag != kFormatPcm) return Fail(error, "not integer PCM (format tag " + std::to_string(tag) + ")");
  pcm->channels = Le16(body + 2);
  pcm->rate = static_cast<int>(Le32(body + 4));
  pcm->bits = Le16(body + 14);
  if (pcm->channels == 0 || pcm->bits == 0 || pcm->bits % 8 != 0) {
    return Fail(error, "unusable format: " + std::to_string(pcm->channels) + " channel(s), " +
                           std::to_string(pcm->bits) + " bit");
  }
  return true;
}

}  // namespace

std::optional<PLAYER_Pcm> PLAYER_ParseWavPcm(const std::vector<std::uint8_t>& bytes, std::string* error) {
  if (bytes.size() < 12 || std::memcmp(bytes.data(), "RIFF", 4) != 0 ||
      std::memcmp(bytes.data() + 8, "WAVE", 4) != 0) {
    Fail(error, "not a RIFF/WAVE file");
    return std::nullopt;
  }
  PLAYER_Pcm pcm;
  bool haveFormat = false;
  std::size_t offset = 12;
  while (offset + kChunkHeaderBytes <= bytes.size()) {
    const std::uint8_t* header = bytes.data() + offset;
    const std::size_t declared = Le32(header + 4);
    const std::size_t bodyOffset = offset + kChunkHeaderBytes;
    const std::size_t available = bytes.size() - bodyOffset;
    if (std::memcmp(header, "fmt ", 4) == 0) {
      if (declared > available) {
        Fail(error, "fmt chunk runs past the end of the file");
        return std::nullopt;
      }
      if (!ParseFormat(bytes.data() + bodyOffset, declared, &pcm, error)) return std::nullopt;
      haveFormat = true;
    } else if (std::memcmp(header, "data", 4) == 0) {
      if (!haveFormat) {
        Fail(error, "data chunk before the fmt chunk");
        return std::nullopt;
      }
      const std::size_t size = declared < available ? declared : available;
      pcm.data.assign(bytes.begin() + static_cast<std::ptrdiff_t>(bodyOffset),
                      bytes.begin() + static_cast<std::ptrdiff_t>(bodyOffset + size));
      return pcm;
    }
    // Chunks are padded to an even size.
    offset = bodyOffset + declared + (declared & 1);
  }
  Fail(error, haveFormat ? "no data chunk" : "no fmt chunk");
  return std::nullopt;
}

std::optional<std::vector<std::uint8_t>> PLAYER_ReadFileBytes(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file) {
    ADD_FAILURE() << "cannot open " << path;
    return std::nullopt;
  }
  std::vector<std::uint8_t> bytes((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
  if (file.bad()) {
    ADD_FAILURE() << "cannot read " << path;
    return std::nullopt;
  }
  return bytes;
}

std::optional<PLAYER_Pcm> PLAYER_ReadWavPcm(const std::string& path) {
  std::optional<std::vector<std::uint8_t>> bytes = PLAYER_ReadFileBytes(path);
  if (!bytes) return std::nullopt;
  std::string error;
  std::optional<PLAYER_Pcm> pcm = PLAYER_ParseWavPcm(*bytes, &error);
  if (!pcm) ADD_FAILURE() << path << ": " << error;
  return pcm;
}
