// The configuration file the package installs as /etc/open-renderer.conf: as shipped, every key commented
// out, it changes nothing; with every key taken in, each one is a key the daemon knows, and every key of
// the option table is there.
#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "Configuration.h"
#include "TempDirectory.h"

namespace {

// Loads the file `path` as "open-renderer --config <path>" would, in an environment of the test's own.
HOST_ConfigurationOutcome LoadFile(const std::string& path, const TempDirectory& temp,
                                   HOST_Configuration* configuration, std::string* error) {
  HOST_Environment environment;
  environment.hostName = "testhost";
  environment.dataDirectory = temp.Path("share");
  environment.home = temp.Path("home");
  const char* argv[] = {"open-renderer", "--config", path.c_str()};
  return configuration->Load(3, argv, environment, error);
}

// The shipped text with the '#' taken from every line that reads "#key = value".
std::string Uncommented(const std::string& text, std::set<std::string>* keys) {
  std::istringstream lines(text);
  std::string out;
  std::string line;
  while (std::getline(lines, line)) {
    const std::size_t equals = line.find(" = ");
    if (line.size() > 1 && line[0] == '#' && line[1] != ' ' && equals != std::string::npos) {
      line.erase(0, 1);
      keys->insert(line.substr(0, equals - 1));
    }
    out += line + "\n";
  }
  return out;
}

}  // namespace

TEST(ShippedConfiguration, AsShippedChangesNoSetting) {
  TempDirectory temp;
  HOST_Configuration shipped;
  std::string error;
  ASSERT_EQ(LoadFile(DMR_SHIPPED_CONFIGURATION, temp, &shipped, &error), HOST_ConfigurationOutcome::Run)
      << error;
  HOST_Configuration none;
  HOST_Environment environment;
  environment.hostName = "testhost";
  environment.dataDirectory = temp.Path("share");
  environment.home = temp.Path("home");
  const char* argv[] = {"open-renderer"};
  ASSERT_EQ(none.Load(1, argv, environment, &error), HOST_ConfigurationOutcome::Run) << error;

  const HOST_Settings& a = shipped.GetSettings();
  const HOST_Settings& b = none.GetSettings();
  EXPECT_EQ(a.friendlyName, b.friendlyName);
  EXPECT_EQ(a.interfaceName, b.interfaceName);
  EXPECT_EQ(a.port, b.port);
  EXPECT_EQ(a.audioOutput, b.audioOutput);
  EXPECT_EQ(a.audioDevice, b.audioDevice);
  EXPECT_EQ(a.mixerDevice, b.mixerDevice);
  EXPECT_EQ(a.mixerControl, b.mixerControl);
  EXPECT_EQ(a.docroot, b.docroot);
  EXPECT_EQ(a.protocolInfo, b.protocolInfo);
  EXPECT_TRUE(shipped.GetUnknownKeys().empty());
}

TEST(ShippedConfiguration, ListsEveryKeyOfTheOptionTableAndOnlyKnownKeys) {
  TempDirectory temp;
  std::set<std::string> keys;
  const std::string path =
      temp.WriteFile("all.conf", Uncommented(ReadWholeFile(DMR_SHIPPED_CONFIGURATION), &keys));
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    const char* key = HOST_kOptions[i].key;
    if (key != nullptr) {
      EXPECT_EQ(keys.count(key), 1u) << key;
    }
  }

  EXPECT_EQ(keys.count("sinkctss.protocolInfo_0"), 1u);

  HOST_Configuration configuration;
  std::string error;
  ASSERT_EQ(LoadFile(path, temp, &configuration, &error), HOST_ConfigurationOutcome::Run) << error;
  EXPECT_TRUE(configuration.GetUnknownKeys().empty());
  const HOST_Settings& settings = configuration.GetSettings();
  EXPECT_EQ(settings.friendlyName, "Living Room");
  EXPECT_EQ(settings.interfaceName, "eth0");
  EXPECT_EQ(settings.port, 49494);
  EXPECT_EQ(settings.audioOutput, HOST_AudioOutput::Alsa);
  EXPECT_EQ(settings.mixerControl, "PCM");
  EXPECT_EQ(settings.protocolInfo,
            (std::vector<std::string>{"http-get:*:audio/flac:*", "http-get:*:audio/mpeg:*",
                                      "http-get:*:audio/wav:*"}));
}
