#include "Pcm.h"

#include <algorithm>
#include <string>

std::uint64_t PLAYER_Pcm::Frames() const {
  const std::size_t frameBytes = BytesPerFrame();
  return frameBytes == 0 ? 0 : data.size() / frameBytes;
}

PLAYER_Pcm PLAYER_ConcatenatePcm(const std::vector<PLAYER_Pcm>& parts) {
  PLAYER_Pcm joined;
  if (parts.empty()) return joined;
  joined.rate = parts.front().rate;
  joined.channels = parts.front().channels;
  joined.bits = parts.front().bits;
  for (const PLAYER_Pcm& part : parts) {
    if (part.rate != joined.rate || part.channels != joined.channels || part.bits != joined.bits) {
      ADD_FAILURE() << "PLAYER_ConcatenatePcm: parts of different formats";
    }
    joined.data.insert(joined.data.end(), part.data.begin(), part.data.end());
  }
  return joined;
}

namespace {

std::string Format(const PLAYER_Pcm& pcm) {
  return std::to_string(pcm.rate) + " Hz, " + std::to_string(pcm.channels) + " channel(s), " +
         std::to_string(pcm.bits) + " bit";
}

}  // namespace

testing::AssertionResult PLAYER_SamePcm(const PLAYER_Pcm& actual, const PLAYER_Pcm& expected) {
  if (actual.rate != expected.rate || actual.channels != expected.channels || actual.bits != expected.bits) {
    return testing::AssertionFailure() << "format " << Format(actual) << ", expected " << Format(expected);
  }
  const std::size_t common = std::min(actual.data.size(), expected.data.size());
  const auto mismatch =
      std::mismatch(actual.data.begin(), actual.data.begin() + common, expected.data.begin());
  const std::size_t frameBytes = std::max<std::size_t>(1, actual.BytesPerFrame());
  if (mismatch.first != actual.data.begin() + common) {
    const std::size_t offset = static_cast<std::size_t>(mismatch.first - actual.data.begin());
    return testing::AssertionFailure()
           << "frame " << offset / frameBytes << " differs (byte " << offset << "); " << actual.Frames()
           << " frames, expected " << expected.Frames();
  }
  if (actual.data.size() != expected.data.size()) {
    return testing::AssertionFailure()
           << actual.Frames() << " frames (" << actual.data.size() << " bytes), expected "
           << expected.Frames() << " (" << expected.data.size() << " bytes); the common "
           << common / frameBytes << " frames are equal";
  }
  return testing::AssertionSuccess() << actual.Frames() << " equal frames";
}
