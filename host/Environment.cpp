#include "Environment.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

namespace {

std::string Variable(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::string() : std::string(value);
}

std::string HostName() {
  char name[256] = {};
  if (::gethostname(name, sizeof(name) - 1) != 0 || name[0] == '\0') return "localhost";
  return name;
}

std::string ExecutableDirectory() {
  std::error_code error;
  const std::filesystem::path executable = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::string() : executable.parent_path().string();
}

std::string HomeDirectory() {
  std::string home = Variable("HOME");
  if (!home.empty()) return home;
  std::vector<char> buffer(16384);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) == 0 && found != nullptr &&
      found->pw_dir != nullptr) {
    home = found->pw_dir;
  }
  return home;
}

}  // namespace

HOST_Environment HOST_ProcessEnvironment() {
  HOST_Environment environment;
  environment.hostName = HostName();
  environment.executableDirectory = ExecutableDirectory();
  environment.dataDirectory = HOST_INSTALL_DATADIR;
  // systemd sets STATE_DIRECTORY to a colon-separated list when a unit names several; the first is ours.
  const std::string state = Variable("STATE_DIRECTORY");
  environment.stateDirectoryVariable = state.substr(0, state.find(':'));
  environment.xdgStateHome = Variable("XDG_STATE_HOME");
  environment.home = HomeDirectory();
  return environment;
}

std::string HOST_DefaultFriendlyName(const HOST_Environment& environment) {
  return "Open Renderer on " + environment.hostName;
}

std::string HOST_DefaultDocroot(const HOST_Environment& environment) {
  if (!environment.executableDirectory.empty()) {
    const std::string beside = environment.executableDirectory + "/docroot";
    std::error_code error;
    if (std::filesystem::is_directory(beside, error)) return beside;
  }
  return environment.dataDirectory + "/open-renderer/docroot";
}

std::string HOST_DefaultStateDirectory(const HOST_Environment& environment) {
  if (!environment.stateDirectoryVariable.empty()) return environment.stateDirectoryVariable;
  if (!environment.xdgStateHome.empty() && environment.xdgStateHome.front() == '/') {
    return environment.xdgStateHome + "/open-renderer";
  }
  if (!environment.home.empty()) return environment.home + "/.local/state/open-renderer";
  return std::string();
}
