// What the daemon's defaults depend on outside its configuration: the host's name, where the executable
// lies, where it was installed, and the variables that place its state. Gathered once at start, so that
// the configuration can be tested with an environment of the test's own (never the real home directory).
#ifndef HOST_ENVIRONMENT_H_
#define HOST_ENVIRONMENT_H_

#include <string>

struct HOST_Environment {
  std::string hostName;                // gethostname(); "localhost" when it has none
  std::string executableDirectory;     // the directory of the running executable; empty when unknown
  std::string dataDirectory;           // the install datadir, such as "/usr/share" (fixed when built)
  std::string stateDirectoryVariable;  // $STATE_DIRECTORY (systemd's StateDirectory=), its first entry
  std::string xdgStateHome;            // $XDG_STATE_HOME
  std::string home;                    // $HOME, else the home of the user in the password database
};

// The running process's environment.
HOST_Environment HOST_ProcessEnvironment();

// The device's name when none is configured: "Open Renderer on <host name>".
std::string HOST_DefaultFriendlyName(const HOST_Environment& environment);

// The document root when none is configured: "<executable directory>/docroot" when that is a directory
// (a build tree, or an unpacked archive), else "<datadir>/open-renderer/docroot" (an installed daemon).
std::string HOST_DefaultDocroot(const HOST_Environment& environment);

// Where the device's identity is kept when no directory is configured: $STATE_DIRECTORY, else
// $XDG_STATE_HOME/open-renderer (an absolute $XDG_STATE_HOME only, as the XDG rules say), else
// ~/.local/state/open-renderer. Empty when none of these is known (no home directory).
std::string HOST_DefaultStateDirectory(const HOST_Environment& environment);

#endif  // HOST_ENVIRONMENT_H_
