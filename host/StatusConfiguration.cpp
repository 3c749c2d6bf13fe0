#include "StatusConfiguration.h"

#include <cstring>

#include "AudioOutputChoice.h"
#include "Configuration.h"
#include "marlo/Properties.h"

namespace {

constexpr char kProtocolKeyPrefix[] = "sinkctss.protocolInfo_";

std::string LevelName(HOST_LogLevel level) {
  switch (level) {
    case HOST_LogLevel::Error:
      return "error";
    case HOST_LogLevel::Warning:
      return "warning (--quiet)";
    case HOST_LogLevel::Info:
      return "info";
    case HOST_LogLevel::Debug:
      return "debug (--verbose)";
  }
  return "";
}

std::string PublishedName(HOST_PublishedServices published) {
  switch (published) {
    case HOST_PublishedServices::Both:
      return "AV and OpenHome";
    case HOST_PublishedServices::AudioVideo:
      return "AV only";
    case HOST_PublishedServices::OpenHome:
      return "OpenHome only";
  }
  return "";
}

}  // namespace

HOST_StatusRows HOST_StatusConfiguration(const HOST_Settings& settings, const HOST_AudioOutputChoice& audio,
                                         const marlo::Properties& serviceProperties) {
  std::size_t protocols = 0;
  serviceProperties.ForEach([&](const char* key, const char*) {
    if (std::strncmp(key, kProtocolKeyPrefix, sizeof(kProtocolKeyPrefix) - 1) == 0) ++protocols;
  });
  // The chosen output's log line without its lead-in, which the row's name already says.
  std::string output = audio.why;
  constexpr char kLeadIn[] = "audio output: ";
  if (output.rfind(kLeadIn, 0) == 0) output.erase(0, sizeof(kLeadIn) - 1);

  return {
      {"friendly name", settings.friendlyName},
      {"version", HOST_Configuration::VersionText()},
      {"configuration file", settings.configFile.empty() ? "none" : settings.configFile},
      {"interface",
       settings.interfaceName.empty() ? "every usable interface but loopback" : settings.interfaceName},
      {"port", settings.port == 0 ? "any free port" : std::to_string(settings.port)},
      {"audio output", output},
      {"published services", PublishedName(settings.publishedServices)},
      {"product room", settings.productRoom},
      {"mixer", settings.mixerDevice.empty()
                    ? "software volume"
                    : "control " + settings.mixerControl + " on " + settings.mixerDevice},
      {"volume limit", std::to_string(settings.volumeLimit)},
      {"startup volume", settings.startupVolume ? std::to_string(*settings.startupVolume) : "as it was"},
      {"document root", settings.docroot},
      {"state directory", settings.stateDirectory},
      {"protocol list", std::to_string(protocols) + (protocols == 1 ? " entry" : " entries") +
                            (settings.protocolInfo.empty() ? " (the player's own list)" : " (configured)")},
      {"log level", LevelName(settings.logLevel)},
  };
}
