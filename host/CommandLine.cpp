#include "CommandLine.h"

#include <cstring>

// clang-format off
const HOST_Option HOST_kOptions[] = {
  {"config", 'c', "FILE", nullptr,
   "read settings from FILE (key = value lines, see below)\n"
   "default: none, only built-in defaults and the command line"},
  {"name", 'n', "NAME", "device.friendlyName",
   "the name control points show; any UTF-8 text, kept as given\n"
   "default: \"Open Renderer on <host name>\""},
  {"interface", 'i', "IFACE", "network.interface",
   "the network interface to serve on, such as eth0, wlan0 or lo\n"
   "default: empty, every usable interface except loopback"},
  {"port", 'p', "PORT", "network.port",
   "the TCP port of the description, control and eventing server, 0 to 65535\n"
   "default: 0, any free port"},
  {"output", 'o', "KIND", "audio.output",
   "where the sound goes: auto (the system's audio device, or null when the\n"
   "machine has none), alsa, pulse, wav (a WAV file, written in real time)\n"
   "or null (nothing, in real time)\n"
   "default: auto"},
  {"device", 'd', "NAME", "audio.device",
   "the output's device: for alsa an ALSA device such as hw:0 or default,\n"
   "for pulse a sink name, for wav the file to write (required there);\n"
   "not used by auto and null\n"
   "default: empty, the output's own default"},
  {"mixer-device", 0, "NAME", "audio.mixerDevice",
   "the ALSA mixer device that the volume controls, such as hw:0\n"
   "default: empty, volume is applied in software"},
  {"mixer-control", 0, "NAME", "audio.mixerControl",
   "the control of that mixer, such as Master, PCM or Digital\n"
   "default: Master"},
  {"startup-volume", 0, "PERCENT", "audio.startupVolume",
   "the volume set when the renderer starts, 0 to 100 (at most the limit)\n"
   "default: empty, the volume is left as the output or its mixer has it"},
  {"volume-limit", 0, "PERCENT", "audio.volumeLimit",
   "the highest volume a control point can set, 0 to 100; a request for\n"
   "more sets the limit, so a slider pushed to the end is still obeyed\n"
   "default: 100"},
  {"room", 0, "ROOM", "product.room",
   "the room OpenHome control points (such as Kazoo) list the renderer\n"
   "under; any UTF-8 text\n"
   "default: the friendly name (--name)"},
  {"product-name", 0, "NAME", "product.name",
   "the renderer's name within its room in OpenHome control points\n"
   "default: the ProductName of openhome.xml in the document root"},
  {"services", 0, "WHICH", "device.services",
   "the services control points see: both; av (AVTransport,\n"
   "ConnectionManager and RenderingControl only) for AV control points\n"
   "that OpenHome services confuse; openhome (Product, Playlist, Time,\n"
   "Info, Volume and Sender only) for OpenHome control points that AV\n"
   "services beside them confuse\n"
   "default: both"},
  {"docroot", 'r', "DIR", "device.docroot",
   "the directory of the device and service description documents\n"
   "default: <directory of the executable>/docroot when it exists,\n"
   "else <datadir>/open-renderer/docroot"},
  {"protocol-info", 0, "LIST", nullptr,
   "the formats offered to control points: comma-separated protocol-info\n"
   "entries such as http-get:*:audio/flac:*,http-get:*:audio/mpeg:*,\n"
   "at most 100; in the file, one key per entry: sinkctss.protocolInfo_0,\n"
   "sinkctss.protocolInfo_1, ... numbered from 0 without gaps\n"
   "default: every format the installed decoders can play"},
  {"state-dir", 's', "DIR", nullptr,
   "where the device's identity is kept, so that a restart is the same\n"
   "device (created with mode 0700 when missing)\n"
   "default: $STATE_DIRECTORY, else $XDG_STATE_HOME/open-renderer,\n"
   "else ~/.local/state/open-renderer"},
  {"verbose", 'v', nullptr, nullptr, "log every action and event"},
  {"quiet", 'q', nullptr, nullptr, "log warnings and errors only (the later of -v and -q wins)"},
  {"help", 'h', nullptr, nullptr, "show this help and exit"},
  {"version", 0, nullptr, nullptr, "show the version and exit"},
};
// clang-format on

const std::size_t HOST_kOptionCount = sizeof(HOST_kOptions) / sizeof(HOST_kOptions[0]);

namespace {

const HOST_Option* FindLong(const std::string& name) {
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    if (name == HOST_kOptions[i].longName) return &HOST_kOptions[i];
  }
  return nullptr;
}

const HOST_Option* FindShort(char name) {
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    if (name != 0 && name == HOST_kOptions[i].shortName) return &HOST_kOptions[i];
  }
  return nullptr;
}

// Reads the long option argv[*index] ("--name" or "--name=value"), taking its value from the next argument
// when needed.
bool ReadLong(int argc, const char* const* argv, int* index, std::vector<HOST_OptionUse>* uses,
              std::string* error) {
  const std::string argument = argv[*index];
  const std::size_t equals = argument.find('=');
  const std::string name = argument.substr(2, equals == std::string::npos ? std::string::npos : equals - 2);
  const HOST_Option* option = FindLong(name);
  if (option == nullptr) {
    *error = "unknown option '--" + name + "'";
    return false;
  }
  if (option->valueName == nullptr) {
    if (equals != std::string::npos) {
      *error = "option '--" + name + "' takes no value";
      return false;
    }
    uses->push_back({option, std::string()});
    return true;
  }
  if (equals != std::string::npos) {
    uses->push_back({option, argument.substr(equals + 1)});
    return true;
  }
  if (*index + 1 >= argc) {
    *error = "option '--" + name + "' needs a value (" + option->valueName + ")";
    return false;
  }
  uses->push_back({option, argv[++*index]});
  return true;
}

// Reads the short options of argv[*index] ("-v", "-vq", "-n NAME", "-nNAME").
bool ReadShort(int argc, const char* const* argv, int* index, std::vector<HOST_OptionUse>* uses,
               std::string* error) {
  const char* argument = argv[*index];
  for (std::size_t at = 1; argument[at] != '\0'; ++at) {
    const HOST_Option* option = FindShort(argument[at]);
    if (option == nullptr) {
      *error = std::string("unknown option '-") + argument[at] + "'";
      return false;
    }
    if (option->valueName == nullptr) {
      uses->push_back({option, std::string()});
      continue;
    }
    if (argument[at + 1] != '\0') {
      uses->push_back({option, std::string(argument + at + 1)});
      return true;
    }
    if (*index + 1 >= argc) {
      *error = std::string("option '-") + argument[at] + "' needs a value (" + option->valueName + ")";
      return false;
    }
    uses->push_back({option, argv[++*index]});
    return true;
  }
  return true;
}

}  // namespace

bool HOST_ReadCommandLine(int argc, const char* const* argv, std::vector<HOST_OptionUse>* uses,
                          std::string* error) {
  for (int index = 1; index < argc; ++index) {
    const char* argument = argv[index];
    if (std::strcmp(argument, "--") == 0) {
      if (index + 1 < argc) {
        *error = std::string("unexpected argument '") + argv[index + 1] + "'";
        return false;
      }
      return true;
    }
    const bool isLong = std::strncmp(argument, "--", 2) == 0;
    const bool isShort = !isLong && argument[0] == '-' && argument[1] != '\0';
    if (!isLong && !isShort) {
      *error = std::string("unexpected argument '") + argument + "'";
      return false;
    }
    if (!(isLong ? ReadLong : ReadShort)(argc, argv, &index, uses, error)) return false;
  }
  return true;
}
