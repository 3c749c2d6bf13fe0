#include "Configuration.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <new>
#include <system_error>
#include <utility>

#include "CommandLine.h"
#include "SettingValues.h"
#include "marlo/Properties.h"
#include "marlo/Result.h"

namespace {

constexpr const char* kDefaultMixerControl = "Master";

bool IsKnownKey(const std::string& key) {
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    if (HOST_kOptions[i].key != nullptr && key == HOST_kOptions[i].key) return true;
  }
  return false;
}

bool IsOption(const HOST_OptionUse& use, const char* longName) {
  return std::strcmp(use.option->longName, longName) == 0;
}

// Help or version when one of them was asked for before anything else went wrong.
bool FindShowRequest(const std::vector<HOST_OptionUse>& uses, HOST_ConfigurationOutcome* outcome) {
  for (const HOST_OptionUse& use : uses) {
    if (IsOption(use, "help") || IsOption(use, "version")) {
      *outcome = IsOption(use, "help") ? HOST_ConfigurationOutcome::ShowHelp
                                       : HOST_ConfigurationOutcome::ShowVersion;
      return true;
    }
  }
  return false;
}

std::string Quoted(const std::string& origin, const std::string& value, const std::string& problem) {
  return origin + ": '" + value + "' " + problem;
}

}  // namespace

HOST_Configuration::HOST_Configuration() = default;

HOST_Configuration::~HOST_Configuration() = default;

const HOST_Settings& HOST_Configuration::GetSettings() const { return settings_; }

const std::vector<std::string>& HOST_Configuration::GetUnknownKeys() const { return unknownKeys_; }

HOST_ConfigurationOutcome HOST_Configuration::Load(int argc, const char* const* argv,
                                                   const HOST_Environment& environment, std::string* error) {
  settings_ = HOST_Settings();
  keys_.clear();
  protocolEntries_.clear();
  unknownKeys_.clear();
  try {
    std::vector<HOST_OptionUse> uses;
    const bool readWhole = HOST_ReadCommandLine(argc, argv, &uses, error);
    HOST_ConfigurationOutcome shown;
    if (FindShowRequest(uses, &shown)) return shown;
    if (!readWhole) return HOST_ConfigurationOutcome::UsageError;

    // The file first, whatever the place of -c: the command line overrides it.
    std::string configFile;
    for (const HOST_OptionUse& use : uses) {
      if (IsOption(use, "config")) configFile = use.value;
    }
    if (!configFile.empty() && !ReadFile(configFile, error)) return HOST_ConfigurationOutcome::UsageError;

    std::string stateDirectory = HOST_DefaultStateDirectory(environment);
    for (const HOST_OptionUse& use : uses) {
      const std::string origin = std::string("--") + use.option->longName;
      if (IsOption(use, "config")) {
        continue;
      } else if (IsOption(use, "verbose")) {
        settings_.logLevel = HOST_LogLevel::Debug;
      } else if (IsOption(use, "quiet")) {
        settings_.logLevel = HOST_LogLevel::Warning;
      } else if (IsOption(use, "state-dir")) {
        if (use.value.empty()) {
          *error = origin + ": empty directory name";
          return HOST_ConfigurationOutcome::UsageError;
        }
        stateDirectory = use.value;
      } else if (IsOption(use, "protocol-info")) {
        std::vector<std::string> entries;
        std::string problem;
        if (!HOST_SplitProtocolList(use.value, &entries, &problem)) {
          *error = Quoted(origin, use.value, problem);
          return HOST_ConfigurationOutcome::UsageError;
        }
        // The list replaces the file's entries whole: entries of the file past its end would otherwise
        // be read after it.
        protocolEntries_.clear();
        for (std::size_t i = 0; i < entries.size(); ++i) {
          protocolEntries_[static_cast<int>(i)] = Value{entries[i], origin};
        }
      } else if (use.option->key != nullptr) {
        keys_[use.option->key] = Value{use.value, origin};
      }
    }
    if (stateDirectory.empty()) {
      *error =
          "no directory for the device's state: $STATE_DIRECTORY, $XDG_STATE_HOME and $HOME are unset; "
          "give --state-dir";
      return HOST_ConfigurationOutcome::UsageError;
    }
    settings_.stateDirectory = stateDirectory;
    if (!ApplySettings(environment, error)) return HOST_ConfigurationOutcome::UsageError;
  } catch (const std::bad_alloc&) {
    *error = "no memory to read the configuration";
    return HOST_ConfigurationOutcome::UsageError;
  }
  return HOST_ConfigurationOutcome::Run;
}

bool HOST_Configuration::ReadFile(const std::string& path, std::string* error) {
  marlo::Properties file;
  errno = 0;
  const int32_t result = file.LoadFile(path.c_str());
  if (result == marlo::kErrorNoMemory) throw std::bad_alloc();
  if (result == marlo::kErrorFailure) {
    const int reason = errno;
    *error = "cannot read the configuration file '" + path + "'" +
             (reason != 0 ? std::string(": ") + std::strerror(reason) : std::string());
    return false;
  }
  if (result != marlo::kOk) {
    *error = "configuration file '" + path + "': a line is neither blank, a comment (#) nor key = value";
    return false;
  }
  std::error_code ignored;
  const std::filesystem::path absolute = std::filesystem::absolute(path, ignored);
  settings_.configFile = absolute.empty() ? path : absolute.lexically_normal().string();

  std::string malformedKey;
  file.ForEach([&](const char* key, const char* value) {
    const std::string origin = path + ": " + key;
    int number = 0;
    switch (HOST_ClassifyProtocolKey(key, &number)) {
      case HOST_ProtocolKey::Entry:
        protocolEntries_[number] = Value{value, origin};
        break;
      case HOST_ProtocolKey::Malformed:
        if (malformedKey.empty()) malformedKey = key;
        break;
      case HOST_ProtocolKey::None:
        keys_[key] = Value{value, origin};
        if (!IsKnownKey(key)) unknownKeys_.push_back(key);
        break;
    }
  });
  if (!malformedKey.empty()) {
    *error = path + ": " + malformedKey + ": only the keys " + HOST_ProtocolKeyName(0) + " to _" +
             std::to_string(HOST_kMaxProtocolEntries - 1) + " (no leading zeros) are read";
    return false;
  }
  return true;
}

bool HOST_Configuration::ApplySettings(const HOST_Environment& environment, std::string* error) {
  std::string problem;
  const auto keyed = [this](const char* key) -> const Value* {
    const auto found = keys_.find(key);
    return found == keys_.end() ? nullptr : &found->second;
  };

  int expected = 0;
  for (const auto& [number, entry] : protocolEntries_) {
    if (number != expected) {
      *error = entry.origin + ": follows a gap, " + HOST_ProtocolKeyName(expected) + " is missing";
      return false;
    }
    if (!HOST_CheckProtocolEntry(entry.text, &problem)) {
      *error = Quoted(entry.origin, entry.text, problem);
      return false;
    }
    settings_.protocolInfo.push_back(entry.text);
    ++expected;
  }

  const Value* name = keyed("device.friendlyName");
  settings_.friendlyName = name != nullptr ? name->text : HOST_DefaultFriendlyName(environment);
  if (!HOST_CheckName(settings_.friendlyName, &problem)) {
    *error = Quoted(name != nullptr ? name->origin : "host name", settings_.friendlyName, problem);
    return false;
  }

  if (const Value* value = keyed("network.interface")) {
    if (!HOST_CheckInterfaceName(value->text, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
    settings_.interfaceName = value->text;
  }
  if (const Value* value = keyed("network.port")) {
    if (!HOST_ParsePort(value->text, &settings_.port, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
  }
  if (const Value* value = keyed("audio.output")) {
    if (!HOST_ParseAudioOutput(value->text, &settings_.audioOutput, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
  }
  if (const Value* value = keyed("audio.device")) settings_.audioDevice = value->text;
  if (settings_.audioOutput == HOST_AudioOutput::WavFile && settings_.audioDevice.empty()) {
    *error = "the output 'wav' needs the file to write: give audio.device (--device)";
    return false;
  }
  if (const Value* value = keyed("audio.mixerDevice")) settings_.mixerDevice = value->text;
  const Value* control = keyed("audio.mixerControl");
  settings_.mixerControl =
      control != nullptr && !control->text.empty() ? control->text : kDefaultMixerControl;

  if (const Value* value = keyed("audio.volumeLimit")) {
    if (!HOST_ParseVolume(value->text, &settings_.volumeLimit, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
  }
  // Empty is the default spelt out: leave the volume alone.
  if (const Value* value = keyed("audio.startupVolume"); value != nullptr && !value->text.empty()) {
    unsigned volume = 0;
    if (!HOST_ParseVolume(value->text, &volume, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
    settings_.startupVolume = volume;
  }
  const Value* room = keyed("product.room");
  settings_.productRoom = room != nullptr ? room->text : settings_.friendlyName;
  if (!HOST_CheckName(settings_.productRoom, &problem)) {
    *error = Quoted(room != nullptr ? room->origin : "host name", settings_.productRoom, problem);
    return false;
  }
  if (const Value* value = keyed("product.name"); value != nullptr && !value->text.empty()) {
    if (!HOST_CheckName(value->text, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
    settings_.productName = value->text;
  }
  if (const Value* value = keyed("device.services")) {
    if (!HOST_ParsePublishedServices(value->text, &settings_.publishedServices, &problem)) {
      *error = Quoted(value->origin, value->text, problem);
      return false;
    }
  }

  const Value* docroot = keyed("device.docroot");
  if (docroot != nullptr && docroot->text.empty()) {
    *error = docroot->origin + ": empty directory name";
    return false;
  }
  settings_.docroot = docroot != nullptr ? docroot->text : HOST_DefaultDocroot(environment);
  return true;
}

int32_t HOST_Configuration::ServiceProperties(const std::vector<std::string>& supportedProtocols,
                                              marlo::Properties* out) const {
  if (out == nullptr) return marlo::kErrorInvalidArgument;
  try {
    for (const auto& [key, value] : keys_) {
      const int32_t result = out->SetProperty(key.c_str(), value.text.c_str());
      if (result != marlo::kOk) return result;
    }
    int32_t result = out->SetProperty("device.docroot", settings_.docroot.c_str());
    if (result != marlo::kOk) return result;

    const std::vector<std::string>& entries =
        settings_.protocolInfo.empty() ? supportedProtocols : settings_.protocolInfo;
    for (std::size_t i = 0; i < entries.size() && i < static_cast<std::size_t>(HOST_kMaxProtocolEntries);
         ++i) {
      if (entries[i].empty()) return marlo::kErrorInvalidArgument;
      result = out->SetProperty(HOST_ProtocolKeyName(static_cast<int>(i)).c_str(), entries[i].c_str());
      if (result != marlo::kOk) return result;
    }
    return entries.empty() ? marlo::kErrorFailure : marlo::kOk;
  } catch (const std::bad_alloc&) {
    return marlo::kErrorNoMemory;
  }
}
