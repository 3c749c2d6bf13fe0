#include "SettingValues.h"

#include <glib.h>

#include "Configuration.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kProtocolKeyPrefix = "sinkctss.protocolInfo_";

bool AllDigits(const std::string& text) {
  if (text.empty()) return false;
  for (const char c : text) {
    if (c < '0' || c > '9') return false;
  }
  return true;
}

std::string Trim(const std::string& text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

}  // namespace

bool HOST_ParsePort(const std::string& text, uint16_t* port, std::string* problem) {
  // Five digits at most before converting, so that no number can overflow.
  if (!AllDigits(text) || text.size() > 5 || std::stoul(text) > 65535) {
    *problem = "is not a port number (0 to 65535)";
    return false;
  }
  *port = static_cast<uint16_t>(std::stoul(text));
  return true;
}

bool HOST_ParseAudioOutput(const std::string& text, HOST_AudioOutput* output, std::string* problem) {
  static const struct {
    const char* name;
    HOST_AudioOutput output;
  } kOutputs[] = {
      {"auto", HOST_AudioOutput::Automatic},   {"alsa", HOST_AudioOutput::Alsa},
      {"pulse", HOST_AudioOutput::PulseAudio}, {"wav", HOST_AudioOutput::WavFile},
      {"null", HOST_AudioOutput::Null},
  };
  for (const auto& known : kOutputs) {
    if (text == known.name) {
      *output = known.output;
      return true;
    }
  }
  *problem = "is not an output (auto, alsa, pulse, wav or null)";
  return false;
}

bool HOST_CheckName(const std::string& text, std::string* problem) {
  if (text.empty()) {
    *problem = "is empty; a name is needed";
    return false;
  }
  if (!g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr)) {
    *problem = "is not UTF-8 text";
    return false;
  }
  return true;
}

bool HOST_ParsePublishedServices(const std::string& text, HOST_PublishedServices* published,
                                 std::string* problem) {
  if (text == "both") {
    *published = HOST_PublishedServices::Both;
  } else if (text == "av") {
    *published = HOST_PublishedServices::AudioVideo;
  } else if (text == "openhome") {
    *published = HOST_PublishedServices::OpenHome;
  } else {
    *problem = "is not one of both, av, openhome";
    return false;
  }
  return true;
}

bool HOST_ParseVolume(const std::string& text, unsigned* volume, std::string* problem) {
  // Three digits at most before converting, as for the port.
  if (!AllDigits(text) || text.size() > 3 || std::stoul(text) > 100) {
    *problem = "is not a volume (0 to 100)";
    return false;
  }
  *volume = static_cast<unsigned>(std::stoul(text));
  return true;
}

bool HOST_CheckInterfaceName(const std::string& text, std::string* problem) {
  if (text.size() > 15 || text.find_first_of("/ \t\n") != std::string::npos) {
    *problem = "is not a network interface name";
    return false;
  }
  return true;
}

bool HOST_CheckProtocolEntry(const std::string& text, std::string* problem) {
  marlo::ProtocolInfo entry;
  const int32_t result = entry.Set(text.c_str());
  if (result == marlo::kOk) return true;
  *problem = result == marlo::kErrorNoMemory
                 ? "cannot be checked: no memory"
                 : "is not a protocol-info entry (protocol:network:contentFormat:additionalInfo)";
  return false;
}

bool HOST_SplitProtocolList(const std::string& list, std::vector<std::string>* entries,
                            std::string* problem) {
  std::vector<std::string> split;
  std::size_t start = 0;
  for (;;) {
    const std::size_t comma = list.find(',', start);
    const std::string entry = Trim(list.substr(start, comma == std::string::npos ? comma : comma - start));
    std::string entryProblem;
    if (!HOST_CheckProtocolEntry(entry, &entryProblem)) {
      *problem = "holds '" + entry + "', which " + entryProblem;
      return false;
    }
    split.push_back(entry);
    if (comma == std::string::npos) break;
    start = comma + 1;
  }
  if (split.size() > static_cast<std::size_t>(HOST_kMaxProtocolEntries)) {
    *problem = "has " + std::to_string(split.size()) + " entries; at most " +
               std::to_string(HOST_kMaxProtocolEntries) + " are read";
    return false;
  }
  entries->swap(split);
  return true;
}

HOST_ProtocolKey HOST_ClassifyProtocolKey(const std::string& key, int* number) {
  const std::string prefix = kProtocolKeyPrefix;
  if (key.compare(0, prefix.size(), prefix) != 0) return HOST_ProtocolKey::None;
  const std::string digits = key.substr(prefix.size());
  // The service objects format the key with %d: "_01" or "_100" would never be read.
  if (!AllDigits(digits) || digits.size() > 2 || (digits.size() == 2 && digits[0] == '0')) {
    return HOST_ProtocolKey::Malformed;
  }
  *number = std::stoi(digits);
  return HOST_ProtocolKey::Entry;
}

std::string HOST_ProtocolKeyName(int number) { return kProtocolKeyPrefix + std::to_string(number); }
