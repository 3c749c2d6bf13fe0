#include "IcyMetadata.h"

namespace {

constexpr std::size_t kBlockUnit = 16;
constexpr std::size_t kMaxUnits = 255;

}  // namespace

std::string PLAYER_IcyMetadataBlock(const std::string& title) {
  const std::string prefix = "StreamTitle='";
  const std::string suffix = "';";
  const std::size_t room = kMaxUnits * kBlockUnit - prefix.size() - suffix.size();
  const std::string text = prefix + title.substr(0, room) + suffix;
  const std::size_t units = (text.size() + kBlockUnit - 1) / kBlockUnit;
  std::string block(1, static_cast<char>(units));
  block += text;
  block.resize(1 + units * kBlockUnit, '\0');
  return block;
}
