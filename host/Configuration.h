// The daemon's settings: built-in defaults, then a configuration file of "key = value" lines
// (marlo::Properties), then the command line; a later source wins. `open-renderer --help` (HelpText) lists
// every option with its key and default.
//
// Keys of the file: device.friendlyName, network.interface, network.port, audio.output, audio.device,
// audio.mixerDevice, audio.mixerControl, audio.startupVolume, audio.volumeLimit, product.room,
// product.name, device.services, device.docroot, and sinkctss.protocolInfo_0, _1, ... (numbered from 0
// without gaps, at most 100). Other keys are kept and handed on to the service objects, and listed by
// GetUnknownKeys so that the daemon can warn about a misspelt one.
//
// Usage in main:
//   HOST_Configuration configuration;
//   std::string error;
//   switch (configuration.Load(argc, argv, HOST_ProcessEnvironment(), &error)) {
//     case HOST_ConfigurationOutcome::ShowHelp:    print HelpText(...) to stdout; return 0;
//     case HOST_ConfigurationOutcome::ShowVersion: print VersionText() to stdout; return 0;
//     case HOST_ConfigurationOutcome::UsageError:  print "open-renderer: " + error to stderr;
//                                                  return HOST_kUsageErrorExitCode;
//     case HOST_ConfigurationOutcome::Run:         break;
//   }
//
// Thread-safety: none; loaded once on the main thread, read-only afterwards.
#ifndef HOST_CONFIGURATION_H_
#define HOST_CONFIGURATION_H_

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "Environment.h"
#include "Log.h"
#include "PublishedServices.h"

namespace marlo {
class Properties;
}  // namespace marlo

// Where the sound goes (audio.output: auto, alsa, pulse, wav, null).
enum class HOST_AudioOutput { Automatic, Alsa, PulseAudio, WavFile, Null };

// What main does after Load.
enum class HOST_ConfigurationOutcome {
  Run,          // the settings are ready: start the daemon
  ShowHelp,     // print HOST_Configuration::HelpText to standard output and exit 0
  ShowVersion,  // print HOST_Configuration::VersionText to standard output and exit 0
  UsageError,   // print the one-line error to standard error and exit HOST_kUsageErrorExitCode
};

// The exit status for a bad option, a bad value or an unusable configuration file.
constexpr int HOST_kUsageErrorExitCode = 2;

// The settings in effect, every default applied.
struct HOST_Settings {
  std::string configFile;     // the absolute path of the file read; empty when none was given
  std::string friendlyName;   // device.friendlyName: valid UTF-8, not empty
  std::string interfaceName;  // network.interface; empty: every usable interface except loopback
  uint16_t port = 0;          // network.port; 0: any free port
  HOST_AudioOutput audioOutput = HOST_AudioOutput::Automatic;  // audio.output
  std::string audioDevice;     // audio.device; empty: the output's own default (never empty for WavFile)
  std::string mixerDevice;     // audio.mixerDevice; empty: volume in software
  std::string mixerControl;    // audio.mixerControl; "Master" unless configured
  std::string docroot;         // device.docroot
  std::optional<unsigned> startupVolume;  // audio.startupVolume, 0..100; none: leave the volume as it is
  unsigned volumeLimit = 100;             // audio.volumeLimit, 0..100
  std::string productRoom;  // product.room: valid UTF-8, not empty; the friendly name unless configured
  std::string productName;  // product.name: valid UTF-8; empty: the product sheet's own
  HOST_PublishedServices publishedServices = HOST_PublishedServices::Both;  // device.services
  std::string stateDirectory;  // --state-dir, else the environment's default (never empty after Run)
  HOST_LogLevel logLevel = HOST_LogLevel::Info;  // Warning with --quiet, Debug with --verbose
  // The configured protocol-info entries (--protocol-info, or the file's sinkctss.protocolInfo_N), each one
  // accepted by marlo::ProtocolInfo; empty when none were configured.
  std::vector<std::string> protocolInfo;
};

class HOST_Configuration {
 public:
  HOST_Configuration();
  ~HOST_Configuration();

  HOST_Configuration(const HOST_Configuration&) = delete;
  HOST_Configuration& operator=(const HOST_Configuration&) = delete;

  // Reads the command line argv[1..argc-1] and the file it names, with defaults from `environment`.
  // Run: GetSettings holds the settings. ShowHelp / ShowVersion: -h/--help or --version came first (before
  // any error). UsageError: *error holds one line naming the option or key and the value at fault (an
  // unknown option, a missing value, a port outside 0..65535, an unknown output, a file that cannot be read
  // or holds a line that is not key = value, ...); the settings are then unspecified.
  HOST_ConfigurationOutcome Load(int argc, const char* const* argv, const HOST_Environment& environment,
                                 std::string* error);

  const HOST_Settings& GetSettings() const;

  // Keys of the file that the daemon does not know (a misspelling, most likely), in key order.
  const std::vector<std::string>& GetUnknownKeys() const;

  // Fills the properties handed to both service objects' Initialize: every key of the file and of the
  // command line, "device.docroot" (the setting in effect), and "sinkctss.protocolInfo_0".."_N": the
  // configured entries when there are any, else the first 100 of `supportedProtocols` (the player's list of
  // what it can really play), for the service objects read no more.
  // Returns 0; kErrorFailure (-1999) when there is no protocol-info entry at all (the service objects would
  // refuse to start), the rest being filled; kErrorInvalidArgument (-1998) for a null `out` or an empty
  // entry in `supportedProtocols`; kErrorNoMemory (-1997).
  int32_t ServiceProperties(const std::vector<std::string>& supportedProtocols, marlo::Properties* out) const;

  // The text of --help: every option with its key in the file and its default (the ones that depend on
  // the environment also as they are here), and an example file.
  static std::string HelpText(const HOST_Environment& environment);

  // The text of --version: "open-renderer <version>" and a line end.
  static std::string VersionText();

 private:
  // One value and where it came from ("--port", or "<file>: network.port"), for error messages.
  struct Value {
    std::string text;
    std::string origin;
  };

  bool ReadFile(const std::string& path, std::string* error);
  bool ApplySettings(const HOST_Environment& environment, std::string* error);

  HOST_Settings settings_;
  // Every key of the file and the command line except the protocol-info entries.
  std::map<std::string, Value> keys_;
  // The protocol-info entries by number, from the file or the command line.
  std::map<int, Value> protocolEntries_;
  std::vector<std::string> unknownKeys_;
};

#endif  // HOST_CONFIGURATION_H_
