// The text of --help and --version, built from the option table so that it names every option.
#include <cstring>
#include <string>

#include "CommandLine.h"
#include "Configuration.h"
#include "ReadListBound.h"
#include "RequestGuard.h"

namespace {

constexpr const char* kIntroduction =
    "Usage: open-renderer [OPTION]...\n"
    "A UPnP AV and OpenHome media renderer: control points on the local network find it,\n"
    "send it music to play, edit its playlist and follow what it plays.\n"
    "\n"
    "Settings come from built-in defaults, then the configuration file (--config), then\n"
    "the command line; a later source wins. In the file each setting is one line\n"
    "\"key = value\" under the key shown in [brackets] below; blank lines and lines that\n"
    "start with '#' are skipped. Options without a key exist on the command line only.\n"
    "\n"
    "Options:\n";

constexpr const char* kExample =
    "\n"
    "Example configuration file (open-renderer --config /etc/open-renderer.conf):\n"
    "  # The name shown in control points.\n"
    "  device.friendlyName = Living Room\n"
    "  # Serve on the wired network only, on a fixed port (for a firewall rule).\n"
    "  network.interface = eth0\n"
    "  network.port = 49494\n"
    "  # Play on the first sound card; its PCM control is the volume.\n"
    "  audio.output = alsa\n"
    "  audio.device = hw:0\n"
    "  audio.mixerDevice = hw:0\n"
    "  audio.mixerControl = PCM\n"
    "  # Start at 30 % and never go louder than 80 %.\n"
    "  audio.startupVolume = 30\n"
    "  audio.volumeLimit = 80\n"
    "  # The room OpenHome control points list the renderer under.\n"
    "  product.room = Living Room\n"
    "  # Offer FLAC and MP3 only.\n"
    "  sinkctss.protocolInfo_0 = http-get:*:audio/flac:*\n"
    "  sinkctss.protocolInfo_1 = http-get:*:audio/mpeg:*\n"
    "  # Description documents somewhere else than the default.\n"
    "  device.docroot = /srv/open-renderer/docroot\n"
    "\n";

constexpr const char* kExitStatus =
    "Exit status: 0 after a clean stop, 2 for a bad option, value or configuration file,\n"
    "1 for any other failure.\n";

// What the renderer accepts from the network, with the numbers it enforces.
std::string LimitsText() {
  const auto mib = [](std::size_t bytes) { return std::to_string(bytes / (1024 * 1024)) + " MiB"; };
  return "Limits on what the network may ask (fixed):\n"
         "  request bodies    up to " + mib(HOST_kMaxRequestBodyBytes) + "; a longer one is answered 413 from its\n"
         "                    Content-Length, unread, and a chunked one once it grows past that\n"
         "  Host header       must name the address the request came to (421 otherwise)\n"
         "  event callbacks   must be http URLs on the network of that address (412 otherwise)\n"
         "  subscriptions     up to " + std::to_string(HOST_kMaxSubscriptionsPerService) +
         " per service and interface (503 for one more)\n"
         "  ReadList answers  up to " + mib(HOST_kMaxReadListReplyBytes) + " of TrackList (501 Action Failed otherwise)\n"
         "\n";
}

// Appends each line of `text` indented by ten blanks, past the option names.
void AppendIndented(const char* text, std::string* out) {
  while (*text != '\0') {
    const char* end = std::strchr(text, '\n');
    const std::size_t length = end == nullptr ? std::strlen(text) : static_cast<std::size_t>(end - text);
    out->append("          ").append(text, length).append("\n");
    text += length + (end == nullptr ? 0 : 1);
  }
}

// The default of `option` as it is in this environment, for the defaults that depend on it.
std::string DefaultHere(const HOST_Option& option, const HOST_Environment& environment) {
  if (std::strcmp(option.longName, "name") == 0) return "\"" + HOST_DefaultFriendlyName(environment) + "\"";
  if (std::strcmp(option.longName, "docroot") == 0) return HOST_DefaultDocroot(environment);
  if (std::strcmp(option.longName, "state-dir") == 0) {
    const std::string directory = HOST_DefaultStateDirectory(environment);
    return directory.empty() ? "none known, give --state-dir" : directory;
  }
  return std::string();
}

}  // namespace

std::string HOST_Configuration::HelpText(const HOST_Environment& environment) {
  std::string text = kIntroduction;
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    const HOST_Option& option = HOST_kOptions[i];
    text += "  ";
    text += option.shortName != 0 ? std::string("-") + option.shortName + ", " : std::string("    ");
    text += std::string("--") + option.longName;
    if (option.valueName != nullptr) text += std::string(" ") + option.valueName;
    if (option.key != nullptr) text += std::string("  [") + option.key + "]";
    text += "\n";
    AppendIndented(option.description, &text);
    const std::string here = DefaultHere(option, environment);
    if (!here.empty()) text += "          here: " + here + "\n";
  }
  return text + kExample + LimitsText() + kExitStatus;
}

std::string HOST_Configuration::VersionText() { return std::string("open-renderer ") + HOST_VERSION + "\n"; }
