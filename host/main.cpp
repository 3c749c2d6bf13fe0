// open-renderer: the UPnP AV / OpenHome media renderer. Reads its settings, takes its identity from the
// state directory, and runs the daemon (Daemon.h) until SIGINT or SIGTERM.
#include <cstdio>
#include <string>

#include "Configuration.h"
#include "Daemon.h"
#include "Environment.h"
#include "Log.h"
#include "PersistentUdn.h"
#include "marlo/Properties.h"
#include "player/Player.h"

int main(int argc, char** argv) {
  const HOST_Environment environment = HOST_ProcessEnvironment();
  HOST_Configuration configuration;
  std::string error;
  switch (configuration.Load(argc, argv, environment, &error)) {
    case HOST_ConfigurationOutcome::ShowHelp:
      std::fputs(HOST_Configuration::HelpText(environment).c_str(), stdout);
      return 0;
    case HOST_ConfigurationOutcome::ShowVersion:
      std::fputs(HOST_Configuration::VersionText().c_str(), stdout);
      return 0;
    case HOST_ConfigurationOutcome::UsageError:
      std::fprintf(stderr, "open-renderer: %s (see --help)\n", error.c_str());
      return HOST_kUsageErrorExitCode;
    case HOST_ConfigurationOutcome::Run:
      break;
  }
  const HOST_Settings& settings = configuration.GetSettings();
  HOST_SetLogLevel(settings.logLevel);
  for (const std::string& key : configuration.GetUnknownKeys())
    HOST_Log(HOST_LogLevel::Warning, "unknown key %s in the configuration: handed on, not used by the daemon",
             key.c_str());

  // The same device after a restart: the UDN is kept in the state directory, one per configuration.
  HOST_PersistentUdn identity;
  std::string udn;
  if (identity.Acquire(settings.stateDirectory, settings.configFile, settings.interfaceName, settings.port,
                       &error) == 0) {
    udn = identity.GetUdn();
  } else if (HOST_NewRandomUdn(&udn)) {
    HOST_Log(HOST_LogLevel::Warning, "%s: this run has a new identity, control points will see a new device",
             error.c_str());
  } else {
    HOST_Log(HOST_LogLevel::Error, "no identity for the device: %s", error.c_str());
    return 1;
  }

  marlo::Properties serviceProperties;
  if (configuration.ServiceProperties(PLAYER_SupportedProtocolInfo(), &serviceProperties) != 0) {
    HOST_Log(HOST_LogLevel::Error, "could not build the service objects' configuration");
    return 1;
  }
  return HOST_RunDaemon(settings, udn, &serviceProperties);
}
