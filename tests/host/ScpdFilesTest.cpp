// The SCPD files of the document root the build makes, read back as a control point reads them.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <string>
#include <vector>

#include "ScpdDocument.h"
#include "host/ScpdWriter.h"
#include "host/ServiceCatalogue.h"

namespace {

const std::string kScpdFolder = std::string(HOST_BUILD_DOCROOT) + "/scpd";

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

TEST(HostScpdFiles, TheFolderHoldsOneFilePerServiceAndNothingElse) {
  std::set<std::string> expected;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    expected.insert(std::string(service.name) + ".xml");
  }
  std::set<std::string> found;
  for (const auto& entry : std::filesystem::directory_iterator(kScpdFolder)) {
    found.insert(entry.path().filename().string());
  }
  EXPECT_EQ(found, expected);
}

TEST(HostScpdFiles, EachFileIsWhatTheCatalogueWritesNow) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    const std::string written = HOST_WriteScpd(service);
    ASSERT_FALSE(written.empty()) << service.name;
    EXPECT_EQ(ReadFile(std::string(HOST_BUILD_DOCROOT) + "/" + HOST_ScpdFileName(service)), written)
        << service.name;
  }
}

TEST(HostScpdFiles, EachParsesStrictlyAsAUpnp10ServiceDescription) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    SCOPED_TRACE(service.name);
    const ScpdDocument scpd = LoadBuiltScpd(service.name);
    EXPECT_EQ(scpd.rootName, "scpd");
    EXPECT_EQ(scpd.rootNamespace, "urn:schemas-upnp-org:service-1-0");
    EXPECT_EQ(scpd.specMajor, "1");
    EXPECT_EQ(scpd.specMinor, "0");
    EXPECT_EQ(scpd.hasActionList, !scpd.actions.empty());
    EXPECT_FALSE(scpd.variables.empty());
  }
}

TEST(HostScpdFiles, NamesAreUniqueAndEveryArgumentRelatesToAVariableOfItsOwnTable) {
  const std::set<std::string> dataTypes = {"string", "boolean", "ui2", "ui4", "i2", "i4", "bin.base64"};
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    const ScpdDocument scpd = LoadBuiltScpd(service.name);
    std::set<std::string> variables;
    for (const ScpdVariable& variable : scpd.variables) {
      SCOPED_TRACE(std::string(service.name) + " variable " + variable.name);
      EXPECT_FALSE(variable.name.empty());
      EXPECT_TRUE(variables.insert(variable.name).second) << "listed twice";
      EXPECT_TRUE(variable.sendEvents == "yes" || variable.sendEvents == "no") << variable.sendEvents;
      EXPECT_EQ(dataTypes.count(variable.dataType), 1u) << variable.dataType;
    }
    std::set<std::string> actions;
    for (const ScpdAction& action : scpd.actions) {
      SCOPED_TRACE(std::string(service.name) + "." + action.name);
      EXPECT_FALSE(action.name.empty());
      EXPECT_TRUE(actions.insert(action.name).second) << "listed twice";
      std::set<std::string> arguments;
      for (const ScpdArgument& argument : action.arguments) {
        EXPECT_TRUE(argument.direction == "in" || argument.direction == "out") << argument.direction;
        EXPECT_TRUE(arguments.insert(argument.direction + " " + argument.name).second) << argument.name;
        EXPECT_EQ(variables.count(argument.relatedStateVariable), 1u)
            << argument.name << " relates to " << argument.relatedStateVariable;
      }
    }
  }
}

// Read back by an independent parser, each file holds the table's entries and nothing else.
TEST(HostScpdFiles, EachFileDescribesItsServiceEntryForEntry) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    const ScpdDocument scpd = LoadBuiltScpd(service.name);
    ASSERT_EQ(scpd.actions.size(), service.actions.size()) << service.name;
    for (std::size_t i = 0; i < service.actions.size(); ++i) {
      const HOST_Action& action = service.actions[i];
      SCOPED_TRACE(std::string(service.name) + "." + action.name);
      EXPECT_EQ(scpd.actions[i].name, action.name);
      ASSERT_EQ(scpd.actions[i].arguments.size(), action.arguments.size());
      for (std::size_t j = 0; j < action.arguments.size(); ++j) {
        EXPECT_EQ(scpd.actions[i].arguments[j].name, action.arguments[j].name);
        EXPECT_EQ(scpd.actions[i].arguments[j].direction, action.arguments[j].out ? "out" : "in");
        EXPECT_EQ(scpd.actions[i].arguments[j].relatedStateVariable,
                  action.arguments[j].relatedStateVariable);
      }
    }
    ASSERT_EQ(scpd.variables.size(), service.variables.size()) << service.name;
    for (std::size_t i = 0; i < service.variables.size(); ++i) {
      const HOST_StateVariable& variable = service.variables[i];
      SCOPED_TRACE(std::string(service.name) + " variable " + variable.name);
      EXPECT_EQ(scpd.variables[i].name, variable.name);
      EXPECT_EQ(scpd.variables[i].dataType, variable.dataType);
      EXPECT_EQ(scpd.variables[i].sendEvents, variable.sendEvents ? "yes" : "no");
      EXPECT_EQ(scpd.variables[i].allowedValues,
                std::vector<std::string>(variable.allowedValues.begin(), variable.allowedValues.end()));
      EXPECT_EQ(scpd.variables[i].minimum, variable.minimum != nullptr ? variable.minimum : "");
      EXPECT_EQ(scpd.variables[i].maximum, variable.maximum != nullptr ? variable.maximum : "");
      EXPECT_EQ(scpd.variables[i].step, variable.step != nullptr ? variable.step : "");
    }
  }
}

}  // namespace
