#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "CommandLine.h"
#include "Configuration.h"
#include "TempDirectory.h"
#include "marlo/Properties.h"
#include "marlo/Result.h"

namespace {

// Loads configurations in an environment of the test's own: host "testhost", everything under a temporary
// directory.
class Configuration : public ::testing::Test {
 protected:
  Configuration() {
    environment_.hostName = "testhost";
    environment_.executableDirectory = temp_.Path("bin");
    environment_.dataDirectory = temp_.Path("share");
    environment_.home = temp_.Path("home");
  }

  HOST_ConfigurationOutcome Load(const std::vector<std::string>& arguments) {
    std::vector<const char*> argv{"open-renderer"};
    for (const std::string& argument : arguments) argv.push_back(argument.c_str());
    error_.clear();
    return configuration_.Load(static_cast<int>(argv.size()), argv.data(), environment_, &error_);
  }

  // Expects `arguments` to be refused with an error that holds `errorPart`.
  void ExpectUsageError(const std::vector<std::string>& arguments, const std::string& errorPart) {
    EXPECT_EQ(Load(arguments), HOST_ConfigurationOutcome::UsageError);
    EXPECT_NE(error_.find(errorPart), std::string::npos) << "error: " << error_;
    EXPECT_EQ(error_.find('\n'), std::string::npos) << "error: " << error_;
  }

  const HOST_Settings& settings() const { return configuration_.GetSettings(); }

  TempDirectory temp_;
  HOST_Environment environment_;
  HOST_Configuration configuration_;
  std::string error_;
};

std::string ValueOf(const marlo::Properties& properties, const char* key) {
  const char* value = properties.GetProperty(key);
  return value == nullptr ? "<unset>" : value;
}

}  // namespace

// Defaults ------------------------------------------------------------------------------------------------

TEST_F(Configuration, NothingGivenGivesTheBuiltInDefaults) {
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().configFile, "");
  EXPECT_EQ(settings().friendlyName, "Open Renderer on testhost");
  EXPECT_EQ(settings().interfaceName, "");
  EXPECT_EQ(settings().port, 0);
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::Automatic);
  EXPECT_EQ(settings().audioDevice, "");
  EXPECT_EQ(settings().mixerDevice, "");
  EXPECT_EQ(settings().mixerControl, "Master");
  EXPECT_EQ(settings().docroot, temp_.Path("share") + "/open-renderer/docroot");
  EXPECT_EQ(settings().stateDirectory, temp_.Path("home") + "/.local/state/open-renderer");
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Info);
  EXPECT_TRUE(settings().protocolInfo.empty());
  EXPECT_EQ(settings().productRoom, "Open Renderer on testhost");
  EXPECT_EQ(settings().productName, "");
  EXPECT_EQ(settings().publishedServices, HOST_PublishedServices::Both);
  EXPECT_FALSE(settings().startupVolume.has_value());
  EXPECT_EQ(settings().volumeLimit, 100u);
  EXPECT_TRUE(configuration_.GetUnknownKeys().empty());
}

TEST_F(Configuration, DocrootBesideTheExecutableIsTheDefaultWhenItExists) {
  temp_.WriteFile("bin/docroot/openhome.xml", "<root/>");
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().docroot, temp_.Path("bin") + "/docroot");
}

TEST_F(Configuration, StateDirectoryComesFromStateDirectoryVariableFirst) {
  environment_.stateDirectoryVariable = temp_.Path("systemd");
  environment_.xdgStateHome = temp_.Path("xdg");
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().stateDirectory, temp_.Path("systemd"));
}

TEST_F(Configuration, StateDirectoryComesFromXdgStateHomeBeforeHome) {
  environment_.xdgStateHome = temp_.Path("xdg");
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().stateDirectory, temp_.Path("xdg") + "/open-renderer");
}

TEST_F(Configuration, RelativeXdgStateHomeIsIgnored) {
  environment_.xdgStateHome = "relative/state";
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().stateDirectory, temp_.Path("home") + "/.local/state/open-renderer");
}

TEST_F(Configuration, StateDirOptionWinsOverTheEnvironment) {
  environment_.stateDirectoryVariable = temp_.Path("systemd");
  ASSERT_EQ(Load({"-s", temp_.Path("mine")}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().stateDirectory, temp_.Path("mine"));
}

TEST_F(Configuration, NoStateDirectoryAtAllIsAUsageError) {
  environment_.home.clear();
  ExpectUsageError({}, "give --state-dir");
  environment_.home = temp_.Path("home");
  ExpectUsageError({"--state-dir="}, "--state-dir: empty directory name");
}

// Options ---------------------------------------------------------------------------------------------------

TEST_F(Configuration, EveryLongOptionSetsItsSetting) {
  ASSERT_EQ(Load({"--name",          "Kitchen",
                  "--interface",     "eth1",
                  "--port",          "49494",
                  "--output",        "alsa",
                  "--device",        "hw:1",
                  "--mixer-device",  "hw:1",
                  "--mixer-control", "PCM",
                  "--docroot",       temp_.Path("doc"),
                  "--state-dir",     temp_.Path("state"),
                  "--protocol-info", "http-get:*:audio/flac:*",
                  "--startup-volume", "20",
                  "--volume-limit",  "75",
                  "--room",          "Kitchen & Dining",
                  "--product-name",  "Shelf",
                  "--services",      "openhome"}),
            HOST_ConfigurationOutcome::Run)
      << error_;
  EXPECT_EQ(settings().startupVolume, 20u);
  EXPECT_EQ(settings().volumeLimit, 75u);
  EXPECT_EQ(settings().productRoom, "Kitchen & Dining");
  EXPECT_EQ(settings().productName, "Shelf");
  EXPECT_EQ(settings().publishedServices, HOST_PublishedServices::OpenHome);
  EXPECT_EQ(settings().friendlyName, "Kitchen");
  EXPECT_EQ(settings().interfaceName, "eth1");
  EXPECT_EQ(settings().port, 49494);
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::Alsa);
  EXPECT_EQ(settings().audioDevice, "hw:1");
  EXPECT_EQ(settings().mixerDevice, "hw:1");
  EXPECT_EQ(settings().mixerControl, "PCM");
  EXPECT_EQ(settings().docroot, temp_.Path("doc"));
  EXPECT_EQ(settings().stateDirectory, temp_.Path("state"));
  EXPECT_EQ(settings().protocolInfo, std::vector<std::string>{"http-get:*:audio/flac:*"});
}

TEST_F(Configuration, ShortOptionsAndAttachedValuesAreRead) {
  ASSERT_EQ(Load({"-nKitchen", "-i", "lo", "-p8080", "-o", "null", "-d", "x", "-r", temp_.Path("doc")}),
            HOST_ConfigurationOutcome::Run)
      << error_;
  EXPECT_EQ(settings().friendlyName, "Kitchen");
  EXPECT_EQ(settings().interfaceName, "lo");
  EXPECT_EQ(settings().port, 8080);
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::Null);
  EXPECT_EQ(settings().audioDevice, "x");
  EXPECT_EQ(settings().docroot, temp_.Path("doc"));
}

TEST_F(Configuration, LongOptionTakesItsValueAfterAnEqualsSign) {
  ASSERT_EQ(Load({"--name=Living Room = Best", "--port=0"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().friendlyName, "Living Room = Best");
}

TEST_F(Configuration, ClusteredFlagsAreRead) {
  ASSERT_EQ(Load({"-qv"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Debug);
  ASSERT_EQ(Load({"-vqn", "Den"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Warning);
  EXPECT_EQ(settings().friendlyName, "Den");
}

TEST_F(Configuration, VerboseAndQuietSetTheLogLevelTheLaterWinning) {
  ASSERT_EQ(Load({"--verbose"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Debug);
  ASSERT_EQ(Load({"--quiet"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Warning);
  ASSERT_EQ(Load({"-q", "-v"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().logLevel, HOST_LogLevel::Debug);
}

TEST_F(Configuration, DoubleDashEndsTheOptions) {
  ASSERT_EQ(Load({"-v", "--"}), HOST_ConfigurationOutcome::Run) << error_;
  ExpectUsageError({"--", "-v"}, "unexpected argument '-v'");
}

TEST_F(Configuration, EveryOutputWordIsRead) {
  const struct {
    const char* word;
    HOST_AudioOutput output;
  } kOutputs[] = {{"auto", HOST_AudioOutput::Automatic},
                  {"alsa", HOST_AudioOutput::Alsa},
                  {"pulse", HOST_AudioOutput::PulseAudio},
                  {"null", HOST_AudioOutput::Null}};
  for (const auto& known : kOutputs) {
    ASSERT_EQ(Load({"-o", known.word}), HOST_ConfigurationOutcome::Run) << error_;
    EXPECT_EQ(settings().audioOutput, known.output) << known.word;
  }
  ASSERT_EQ(Load({"-o", "wav", "-d", temp_.Path("out.wav")}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::WavFile);
}

// Help and version ------------------------------------------------------------------------------------------

TEST_F(Configuration, HelpAndVersionAreAskedForByTheirOptions) {
  EXPECT_EQ(Load({"--help"}), HOST_ConfigurationOutcome::ShowHelp);
  EXPECT_EQ(Load({"-h"}), HOST_ConfigurationOutcome::ShowHelp);
  EXPECT_EQ(Load({"--version"}), HOST_ConfigurationOutcome::ShowVersion);
  EXPECT_EQ(Load({"-p", "99999", "--version", "--help"}), HOST_ConfigurationOutcome::ShowVersion);
}

TEST_F(Configuration, HelpAfterAnUnknownOptionIsAUsageError) {
  EXPECT_EQ(Load({"--help", "--bogus"}), HOST_ConfigurationOutcome::ShowHelp);
  ExpectUsageError({"--bogus", "--help"}, "unknown option '--bogus'");
}

TEST(ConfigurationHelp, NamesEveryOptionWithItsKey) {
  HOST_Environment environment;
  environment.hostName = "box";
  environment.dataDirectory = "/opt/share";
  environment.home = "/nonexistent/home";
  const std::string help = HOST_Configuration::HelpText(environment);
  for (std::size_t i = 0; i < HOST_kOptionCount; ++i) {
    const HOST_Option& option = HOST_kOptions[i];
    std::string usage = std::string("--") + option.longName;
    if (option.valueName != nullptr) usage += std::string(" ") + option.valueName;
    EXPECT_NE(help.find(usage), std::string::npos) << usage;
    if (option.shortName != 0) {
      EXPECT_NE(help.find(std::string("-") + option.shortName + ", " + usage), std::string::npos) << usage;
    }
    if (option.key != nullptr) {
      EXPECT_NE(help.find(std::string("[") + option.key + "]"), std::string::npos) << option.key;
    }
  }
  EXPECT_NE(help.find("sinkctss.protocolInfo_0"), std::string::npos);
}

TEST(ConfigurationHelp, ShowsTheDefaultsAsTheyAreHere) {
  HOST_Environment environment;
  environment.hostName = "box";
  environment.dataDirectory = "/opt/share";
  environment.home = "/nonexistent/home";
  const std::string help = HOST_Configuration::HelpText(environment);
  EXPECT_NE(help.find("here: \"Open Renderer on box\""), std::string::npos);
  EXPECT_NE(help.find("here: /opt/share/open-renderer/docroot"), std::string::npos);
  EXPECT_NE(help.find("here: /nonexistent/home/.local/state/open-renderer"), std::string::npos);
  EXPECT_NE(help.find("default: auto"), std::string::npos);
  EXPECT_NE(help.find("default: 0, any free port"), std::string::npos);
}

TEST_F(Configuration, HelpExampleFileIsAValidConfiguration) {
  const std::string help = HOST_Configuration::HelpText(environment_);
  const std::size_t start = help.find("Example configuration file");
  ASSERT_NE(start, std::string::npos);
  // The example's lines are the indented ones up to the next blank line.
  std::string example;
  for (std::size_t at = help.find('\n', start) + 1; at < help.size() && help[at] != '\n';) {
    const std::size_t end = help.find('\n', at);
    example += help.substr(at + 2, end - at - 2) + "\n";
    at = end + 1;
  }
  const std::string file = temp_.WriteFile("example.conf", example);
  ASSERT_EQ(Load({"-c", file}), HOST_ConfigurationOutcome::Run) << error_ << "\n" << example;
  EXPECT_TRUE(configuration_.GetUnknownKeys().empty());
  EXPECT_EQ(settings().friendlyName, "Living Room");
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::Alsa);
  EXPECT_EQ(settings().mixerControl, "PCM");
  EXPECT_EQ(settings().protocolInfo.size(), 2u);
}

TEST(ConfigurationVersion, NamesTheProgram) {
  EXPECT_EQ(HOST_Configuration::VersionText().rfind("open-renderer ", 0), 0u);
  EXPECT_GT(HOST_Configuration::VersionText().size(), std::string("open-renderer ").size());
  EXPECT_EQ(HOST_Configuration::VersionText().back(), '\n');
}

// Usage errors ----------------------------------------------------------------------------------------------

TEST_F(Configuration, UnknownOptionIsAUsageErrorNamingIt) {
  ExpectUsageError({"--bogus"}, "unknown option '--bogus'");
  ExpectUsageError({"-x"}, "unknown option '-x'");
  ExpectUsageError({"--nam", "Kitchen"}, "unknown option '--nam'");
}

TEST_F(Configuration, OptionWithoutItsValueIsAUsageError) {
  ExpectUsageError({"--port"}, "option '--port' needs a value (PORT)");
  ExpectUsageError({"-n"}, "option '-n' needs a value (NAME)");
}

TEST_F(Configuration, FlagGivenAValueIsAUsageError) {
  ExpectUsageError({"--verbose=yes"}, "option '--verbose' takes no value");
}

TEST_F(Configuration, ArgumentThatIsNoOptionIsAUsageError) {
  ExpectUsageError({"Kitchen"}, "unexpected argument 'Kitchen'");
  ExpectUsageError({"-"}, "unexpected argument '-'");
}

TEST_F(Configuration, PortOutsideTheRangeIsAUsageErrorNamingIt) {
  ExpectUsageError({"--port", "65536"}, "--port: '65536' is not a port number (0 to 65535)");
  ExpectUsageError({"-p", "-1"}, "--port: '-1' is not a port number");
  ExpectUsageError({"-p", "80x"}, "--port: '80x' is not a port number");
  ExpectUsageError({"-p", ""}, "--port: '' is not a port number");
  ExpectUsageError({"-p", "99999999999999999999"}, "is not a port number");
  ASSERT_EQ(Load({"-p", "65535"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().port, 65535);
}

TEST_F(Configuration, UnknownOutputIsAUsageErrorNamingIt) {
  ExpectUsageError({"--output", "oss"}, "--output: 'oss' is not an output (auto, alsa, pulse, wav or null)");
  ExpectUsageError({"-o", "ALSA"}, "'ALSA' is not an output");
}

TEST_F(Configuration, WavOutputWithoutAFileIsAUsageError) {
  ExpectUsageError({"-o", "wav"}, "needs the file to write");
}

TEST_F(Configuration, InterfaceNameLongerThanLinuxAllowsIsAUsageError) {
  ExpectUsageError({"-i", "a-very-long-interface-name"}, "is not a network interface name");
  ExpectUsageError({"-i", "eth0/1"}, "is not a network interface name");
}

TEST_F(Configuration, FriendlyNameIsKeptExactlyAsGiven) {
  const std::string name = "  Küche – Anna’s “Radio” 🎵 ";
  ASSERT_EQ(Load({"--name", name}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().friendlyName, name);
}

TEST_F(Configuration, FriendlyNameThatIsNotUtf8OrEmptyIsAUsageError) {
  ExpectUsageError({"--name",
                    "K\xfc"
                    "che"},
                   "is not UTF-8 text");
  ExpectUsageError({"--name="}, "--name: '' is empty");
}

TEST_F(Configuration, ProtocolInfoListIsSplitAtCommas) {
  ASSERT_EQ(Load({"--protocol-info",
                  "http-get:*:audio/flac:*, http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01"}),
            HOST_ConfigurationOutcome::Run)
      << error_;
  EXPECT_EQ(settings().protocolInfo,
            (std::vector<std::string>{"http-get:*:audio/flac:*",
                                      "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01"}));
}

TEST_F(Configuration, ProtocolInfoListWithABadEntryIsAUsageError) {
  ExpectUsageError({"--protocol-info", "http-get:*:audio/flac:*,audio/mpeg"},
                   "holds 'audio/mpeg', which is not a protocol-info entry");
  ExpectUsageError({"--protocol-info", "http-get:*:audio/flac:*,,http-get:*:audio/mpeg:*"}, "holds ''");
  ExpectUsageError({"--protocol-info", ""}, "--protocol-info: '' holds ''");
}

TEST_F(Configuration, ProtocolInfoListOfMoreThanOneHundredIsAUsageError) {
  std::string list = "http-get:*:audio/x-0:*";
  for (int i = 1; i < 100; ++i) list += ",http-get:*:audio/x-" + std::to_string(i) + ":*";
  ASSERT_EQ(Load({"--protocol-info", list}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().protocolInfo.size(), 100u);
  ExpectUsageError({"--protocol-info", list + ",http-get:*:audio/x-100:*"}, "has 101 entries; at most 100");
}

// The file -------------------------------------------------------------------------------------------------

TEST_F(Configuration, FileSetsEveryKey) {
  const std::string file = temp_.WriteFile("renderer.conf",
                                           "# the living room\n"
                                           "device.friendlyName = Living Room\n"
                                           "network.interface = eth0\n"
                                           "network.port = 49494\n"
                                           "audio.output = pulse\n"
                                           "audio.device = alsa_output.usb\n"
                                           "audio.mixerDevice = hw:2\n"
                                           "audio.mixerControl = Digital\n"
                                           "device.docroot = /srv/docroot\n"
                                           "audio.startupVolume = 0\n"
                                           "audio.volumeLimit = 100\n"
                                           "product.room = Den\n"
                                           "product.name = Amplifier\n"
                                           "device.services = av\n"
                                           "sinkctss.protocolInfo_0 = http-get:*:audio/flac:*\n"
                                           "sinkctss.protocolInfo_1 = http-get:*:audio/wav:*\n");
  ASSERT_EQ(Load({"--config", file}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().configFile, file);
  EXPECT_EQ(settings().friendlyName, "Living Room");
  EXPECT_EQ(settings().interfaceName, "eth0");
  EXPECT_EQ(settings().port, 49494);
  EXPECT_EQ(settings().audioOutput, HOST_AudioOutput::PulseAudio);
  EXPECT_EQ(settings().audioDevice, "alsa_output.usb");
  EXPECT_EQ(settings().mixerDevice, "hw:2");
  EXPECT_EQ(settings().mixerControl, "Digital");
  EXPECT_EQ(settings().docroot, "/srv/docroot");
  EXPECT_EQ(settings().startupVolume, 0u);
  EXPECT_EQ(settings().volumeLimit, 100u);
  EXPECT_EQ(settings().productRoom, "Den");
  EXPECT_EQ(settings().productName, "Amplifier");
  EXPECT_EQ(settings().publishedServices, HOST_PublishedServices::AudioVideo);
  EXPECT_EQ(settings().protocolInfo,
            (std::vector<std::string>{"http-get:*:audio/flac:*", "http-get:*:audio/wav:*"}));
  EXPECT_TRUE(configuration_.GetUnknownKeys().empty());
}

TEST_F(Configuration, CommandLineWinsOverTheFileWhereverTheFileIsNamed) {
  const std::string file =
      temp_.WriteFile("renderer.conf", "network.port = 1000\ndevice.friendlyName = File\n");
  ASSERT_EQ(Load({"-p", "2000", "-c", file}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().port, 2000);
  EXPECT_EQ(settings().friendlyName, "File");
}

TEST_F(Configuration, ConfigFilePathIsMadeAbsoluteAndNormal) {
  temp_.WriteFile("conf/renderer.conf", "network.port = 1\n");
  ASSERT_EQ(Load({"-c", temp_.path() + "/conf/./../conf/renderer.conf"}), HOST_ConfigurationOutcome::Run)
      << error_;
  EXPECT_EQ(settings().configFile, temp_.Path("conf/renderer.conf"));
}

TEST_F(Configuration, BadValueInTheFileIsAUsageErrorNamingFileAndKey) {
  const std::string file = temp_.WriteFile("renderer.conf", "network.port = 70000\n");
  ExpectUsageError({"-c", file}, file + ": network.port: '70000' is not a port number");
  const std::string output = temp_.WriteFile("output.conf", "audio.output = speakers\n");
  ExpectUsageError({"-c", output}, output + ": audio.output: 'speakers' is not an output");
}

TEST_F(Configuration, BadValueInTheFileIsForgivenWhenTheCommandLineReplacesIt) {
  const std::string file = temp_.WriteFile("renderer.conf", "network.port = 70000\n");
  ASSERT_EQ(Load({"-c", file, "-p", "7000"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().port, 7000);
}

TEST_F(Configuration, MissingFileIsAUsageErrorWithTheSystemsReason) {
  ExpectUsageError(
      {"-c", temp_.Path("absent.conf")},
      "cannot read the configuration file '" + temp_.Path("absent.conf") + "': No such file or directory");
}

TEST_F(Configuration, FileWithALineThatIsNotKeyEqualsValueIsAUsageError) {
  const std::string file = temp_.WriteFile("renderer.conf", "device.friendlyName = A\njust words\n");
  ExpectUsageError({"-c", file}, "'" + file + "': a line is neither blank, a comment (#) nor key = value");
}

TEST_F(Configuration, UnknownKeysOfTheFileAreListedAndKept) {
  const std::string file = temp_.WriteFile("renderer.conf", "device.frendlyName = Typo\nzz.extra = 1\n");
  ASSERT_EQ(Load({"-c", file}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(configuration_.GetUnknownKeys(), (std::vector<std::string>{"device.frendlyName", "zz.extra"}));
  marlo::Properties properties;
  EXPECT_EQ(configuration_.ServiceProperties({"http-get:*:audio/flac:*"}, &properties), 0);
  EXPECT_EQ(ValueOf(properties, "device.frendlyName"), "Typo");
  EXPECT_EQ(ValueOf(properties, "zz.extra"), "1");
}

TEST_F(Configuration, ProtocolEntriesOfTheFileWithAGapAreAUsageError) {
  const std::string file = temp_.WriteFile("renderer.conf",
                                           "sinkctss.protocolInfo_0 = http-get:*:audio/flac:*\n"
                                           "sinkctss.protocolInfo_2 = http-get:*:audio/wav:*\n");
  ExpectUsageError({"-c", file},
                   "sinkctss.protocolInfo_2: follows a gap, sinkctss.protocolInfo_1 is missing");
  const std::string noZero =
      temp_.WriteFile("nozero.conf", "sinkctss.protocolInfo_1 = http-get:*:audio/wav:*\n");
  ExpectUsageError({"-c", noZero}, "sinkctss.protocolInfo_0 is missing");
}

TEST_F(Configuration, ProtocolKeyPastNinetyNineOrWithALeadingZeroIsAUsageError) {
  const std::string past =
      temp_.WriteFile("past.conf", "sinkctss.protocolInfo_100 = http-get:*:audio/wav:*\n");
  ExpectUsageError({"-c", past}, "sinkctss.protocolInfo_100: only the keys sinkctss.protocolInfo_0 to _99");
  const std::string zero =
      temp_.WriteFile("zero.conf", "sinkctss.protocolInfo_01 = http-get:*:audio/wav:*\n");
  ExpectUsageError({"-c", zero}, "sinkctss.protocolInfo_01: only the keys");
}

TEST_F(Configuration, MalformedProtocolEntryOfTheFileIsAUsageError) {
  const std::string file = temp_.WriteFile("renderer.conf", "sinkctss.protocolInfo_0 = audio/flac\n");
  ExpectUsageError({"-c", file}, "sinkctss.protocolInfo_0: 'audio/flac' is not a protocol-info entry");
}

// Properties for the service objects -----------------------------------------------------------------------

TEST_F(Configuration, ServicePropertiesHoldEveryKeyOfFileAndCommandLineAndTheDocroot) {
  const std::string file =
      temp_.WriteFile("renderer.conf", "device.friendlyName = File\naudio.device = hw:0\n");
  ASSERT_EQ(Load({"-c", file, "-n", "Command", "-p", "4000", "-v"}), HOST_ConfigurationOutcome::Run)
      << error_;
  marlo::Properties properties;
  EXPECT_EQ(configuration_.ServiceProperties({"http-get:*:audio/flac:*"}, &properties), 0);
  EXPECT_EQ(ValueOf(properties, "device.friendlyName"), "Command");
  EXPECT_EQ(ValueOf(properties, "audio.device"), "hw:0");
  EXPECT_EQ(ValueOf(properties, "network.port"), "4000");
  EXPECT_EQ(ValueOf(properties, "device.docroot"), temp_.Path("share") + "/open-renderer/docroot");
  EXPECT_EQ(ValueOf(properties, "audio.output"), "<unset>");
}

TEST_F(Configuration, ServicePropertiesTakeThePlayersListWhenNoneIsConfigured) {
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  marlo::Properties properties;
  EXPECT_EQ(
      configuration_.ServiceProperties({"http-get:*:audio/flac:*", "http-get:*:audio/ogg:*"}, &properties),
      0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/flac:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"), "http-get:*:audio/ogg:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_2"), "<unset>");
}

TEST_F(Configuration, ServicePropertiesTakeAtMostOneHundredOfThePlayersEntries) {
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  std::vector<std::string> supported;
  for (int i = 0; i < 150; ++i) supported.push_back("http-get:*:audio/x-" + std::to_string(i) + ":*");
  marlo::Properties properties;
  EXPECT_EQ(configuration_.ServiceProperties(supported, &properties), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_99"), "http-get:*:audio/x-99:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_100"), "<unset>");
}

TEST_F(Configuration, ServicePropertiesPreferTheConfiguredList) {
  ASSERT_EQ(Load({"--protocol-info", "http-get:*:audio/wav:*"}), HOST_ConfigurationOutcome::Run) << error_;
  marlo::Properties properties;
  EXPECT_EQ(
      configuration_.ServiceProperties({"http-get:*:audio/flac:*", "http-get:*:audio/ogg:*"}, &properties),
      0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/wav:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"), "<unset>");
}

TEST_F(Configuration, CommandLineProtocolListReplacesTheFilesWhole) {
  const std::string file = temp_.WriteFile("renderer.conf",
                                           "sinkctss.protocolInfo_0 = http-get:*:audio/flac:*\n"
                                           "sinkctss.protocolInfo_1 = http-get:*:audio/ogg:*\n"
                                           "sinkctss.protocolInfo_2 = http-get:*:audio/mp4:*\n");
  ASSERT_EQ(Load({"-c", file, "--protocol-info", "http-get:*:audio/wav:*"}), HOST_ConfigurationOutcome::Run)
      << error_;
  marlo::Properties properties;
  EXPECT_EQ(configuration_.ServiceProperties({}, &properties), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/wav:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"), "<unset>");
}

TEST_F(Configuration, ServicePropertiesWithoutAnyProtocolEntryFail) {
  ASSERT_EQ(Load({}), HOST_ConfigurationOutcome::Run) << error_;
  marlo::Properties properties;
  EXPECT_EQ(configuration_.ServiceProperties({}, &properties), marlo::kErrorFailure);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), temp_.Path("share") + "/open-renderer/docroot");
  EXPECT_EQ(configuration_.ServiceProperties({"http-get:*:audio/flac:*", ""}, &properties),
            marlo::kErrorInvalidArgument);
  EXPECT_EQ(configuration_.ServiceProperties({"http-get:*:audio/flac:*"}, nullptr),
            marlo::kErrorInvalidArgument);
}

// Compatibility switches ----------------------------------------------------------------------------------

TEST_F(Configuration, RoomFollowsTheFriendlyNameUnlessConfigured) {
  ASSERT_EQ(Load({"--name", "Study"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().productRoom, "Study");
  ASSERT_EQ(Load({"--name", "Study", "--room", "Attic"}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().productRoom, "Attic");
}

TEST_F(Configuration, EveryServicesWordIsRead) {
  const std::vector<std::pair<std::string, HOST_PublishedServices>> words = {
      {"both", HOST_PublishedServices::Both},
      {"av", HOST_PublishedServices::AudioVideo},
      {"openhome", HOST_PublishedServices::OpenHome}};
  for (const auto& [word, published] : words) {
    ASSERT_EQ(Load({"--services", word}), HOST_ConfigurationOutcome::Run) << word << ": " << error_;
    EXPECT_EQ(settings().publishedServices, published) << word;
  }
}

TEST_F(Configuration, UnknownServicesWordIsAUsageErrorNamingIt) {
  ExpectUsageError({"--services", "AV"}, "--services: 'AV' is not one of both, av, openhome");
  ExpectUsageError({"--services", ""}, "--services: '' is not one of both, av, openhome");
}

TEST_F(Configuration, VolumeOutsideZeroToOneHundredIsAUsageErrorNamingIt) {
  for (const char* bad : {"101", "-1", "50%", "1000", " 5", "x"}) {
    ExpectUsageError({"--volume-limit", bad}, std::string("--volume-limit: '") + bad + "' is not a volume (0 to 100)");
    ExpectUsageError({"--startup-volume", bad},
                     std::string("--startup-volume: '") + bad + "' is not a volume (0 to 100)");
  }
}

TEST_F(Configuration, EmptyStartupVolumeLeavesTheVolumeAlone) {
  ASSERT_EQ(Load({"--startup-volume", ""}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_FALSE(settings().startupVolume.has_value());
}

TEST_F(Configuration, EmptyRoomIsAUsageErrorAndEmptyProductNameKeepsTheSheets) {
  ExpectUsageError({"--room", ""}, "--room: '' is empty; a name is needed");
  ASSERT_EQ(Load({"--product-name", ""}), HOST_ConfigurationOutcome::Run) << error_;
  EXPECT_EQ(settings().productName, "");
}

TEST_F(Configuration, RoomOrProductNameThatIsNotUtf8IsAUsageError) {
  ExpectUsageError({"--room", "caf\xe9"}, "is not UTF-8 text");
  ExpectUsageError({"--product-name", "caf\xe9"}, "is not UTF-8 text");
}
