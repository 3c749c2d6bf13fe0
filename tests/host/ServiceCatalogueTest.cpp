// The service catalogue as a table: which services, their names, types, ids, URLs and responders, and the
// rules every SCPD written from it must keep.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "host/ServiceCatalogue.h"

namespace {

struct ExpectedService {
  const char* name;
  const char* serviceType;
  const char* serviceId;
  HOST_Responder responder;
};

const ExpectedService kExpected[] = {
    {"AVTransport", "urn:schemas-upnp-org:service:AVTransport:1", "urn:upnp-org:serviceId:AVTransport",
     HOST_Responder::StandardServices},
    {"ConnectionManager", "urn:schemas-upnp-org:service:ConnectionManager:1",
     "urn:upnp-org:serviceId:ConnectionManager", HOST_Responder::StandardServices},
    {"RenderingControl", "urn:schemas-upnp-org:service:RenderingControl:1",
     "urn:upnp-org:serviceId:RenderingControl", HOST_Responder::Host},
    {"Product", "urn:av-openhome-org:service:Product:1", "urn:av-openhome-org:serviceId:Product",
     HOST_Responder::OpenHomeServices},
    {"Playlist", "urn:av-openhome-org:service:Playlist:1", "urn:av-openhome-org:serviceId:Playlist",
     HOST_Responder::OpenHomeServices},
    {"Time", "urn:av-openhome-org:service:Time:1", "urn:av-openhome-org:serviceId:Time",
     HOST_Responder::OpenHomeServices},
    {"Info", "urn:av-openhome-org:service:Info:1", "urn:av-openhome-org:serviceId:Info",
     HOST_Responder::OpenHomeServices},
    {"Volume", "urn:av-openhome-org:service:Volume:1", "urn:av-openhome-org:serviceId:Volume",
     HOST_Responder::Host},
    {"Sender", "urn:av-openhome-org:service:Sender:1", "urn:av-openhome-org:serviceId:Sender",
     HOST_Responder::OpenHomeServices},
};

std::vector<std::string> EventedNames(const HOST_ServiceDescription& service) {
  std::vector<std::string> names;
  for (const HOST_StateVariable& variable : service.variables) {
    if (variable.sendEvents) names.push_back(variable.name);
  }
  return names;
}

TEST(HostServiceCatalogue, ListsTheNineServicesWithTheirTypesIdsAndResponders) {
  const std::vector<HOST_ServiceDescription>& services = HOST_ServiceCatalogue();
  ASSERT_EQ(services.size(), sizeof(kExpected) / sizeof(kExpected[0]));
  for (std::size_t i = 0; i < services.size(); ++i) {
    SCOPED_TRACE(kExpected[i].name);
    EXPECT_STREQ(services[i].name, kExpected[i].name);
    EXPECT_STREQ(services[i].serviceType, kExpected[i].serviceType);
    EXPECT_STREQ(services[i].serviceId, kExpected[i].serviceId);
    EXPECT_EQ(services[i].responder, kExpected[i].responder);
  }
}

TEST(HostServiceCatalogue, FindServiceMatchesTheWholeTypeExactly) {
  for (const ExpectedService& expected : kExpected) {
    const HOST_ServiceDescription* found = HOST_FindService(expected.serviceType);
    ASSERT_NE(found, nullptr) << expected.serviceType;
    EXPECT_STREQ(found->name, expected.name);
  }
  EXPECT_EQ(HOST_FindService(nullptr), nullptr);
  EXPECT_EQ(HOST_FindService(""), nullptr);
  EXPECT_EQ(HOST_FindService("urn:schemas-upnp-org:service:AVTransport:2"), nullptr);
  EXPECT_EQ(HOST_FindService("urn:schemas-upnp-org:service:AVTransport"), nullptr);
  EXPECT_EQ(HOST_FindService("urn:av-openhome-org:service:Playlist:10"), nullptr);
  EXPECT_EQ(HOST_FindService("urn:av-openhome-org:service:playlist:1"), nullptr);
  EXPECT_EQ(HOST_FindService("AVTransport"), nullptr);
}

TEST(HostServiceCatalogue, UrlsAreTheServiceNameBelowScpdControlAndEvent) {
  const HOST_ServiceDescription* transport = HOST_FindService("urn:schemas-upnp-org:service:AVTransport:1");
  ASSERT_NE(transport, nullptr);
  EXPECT_EQ(HOST_ScpdUrl(*transport), "/scpd/AVTransport.xml");
  EXPECT_EQ(HOST_ControlUrl(*transport), "/control/AVTransport");
  EXPECT_EQ(HOST_EventUrl(*transport), "/event/AVTransport");
  EXPECT_EQ(HOST_ScpdFileName(*transport), "scpd/AVTransport.xml");
  const HOST_ServiceDescription* volume = HOST_FindService("urn:av-openhome-org:service:Volume:1");
  ASSERT_NE(volume, nullptr);
  EXPECT_EQ(HOST_ScpdUrl(*volume), "/scpd/Volume.xml");
  EXPECT_EQ(HOST_ControlUrl(*volume), "/control/Volume");
  EXPECT_EQ(HOST_EventUrl(*volume), "/event/Volume");
}

TEST(HostServiceCatalogue, NamesTypesIdsAndUrlsAreEachUsedOnce) {
  std::set<std::string> seen;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    for (const std::string& text :
         {std::string(service.name), std::string(service.serviceType), std::string(service.serviceId),
          HOST_ScpdUrl(service), HOST_ControlUrl(service), HOST_EventUrl(service)}) {
      EXPECT_TRUE(seen.insert(text).second) << text;
    }
  }
}

TEST(HostServiceCatalogue, OnlyTheNextUriIsAnsweredByTheHostInsteadOfThePlugIn) {
  std::vector<std::string> hostAnswered;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    for (const HOST_Action& action : service.actions) {
      if (!action.hostAnswers) continue;
      hostAnswered.push_back(std::string(service.name) + "." + action.name);
      EXPECT_NE(service.responder, HOST_Responder::Host) << "the host answers all of " << service.name;
    }
  }
  EXPECT_EQ(hostAnswered, std::vector<std::string>{"AVTransport.SetNextAVTransportURI"});
}

// UPnP requires every IN argument before the first OUT argument, names unique, and every related variable
// in the service's own table.
TEST(HostServiceCatalogue, EveryActionListsItsInsFirstAndRelatesOnlyToItsOwnVariables) {
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    std::set<std::string> variables;
    for (const HOST_StateVariable& variable : service.variables) {
      EXPECT_TRUE(variables.insert(variable.name).second) << service.name << " variable " << variable.name;
    }
    std::set<std::string> actions;
    for (const HOST_Action& action : service.actions) {
      SCOPED_TRACE(std::string(service.name) + "." + action.name);
      EXPECT_TRUE(actions.insert(action.name).second) << "listed twice";
      bool seenOut = false;
      std::set<std::string> ins;
      std::set<std::string> outs;
      for (const HOST_Argument& argument : action.arguments) {
        EXPECT_FALSE(seenOut && !argument.out) << argument.name << " comes in after an OUT argument";
        seenOut = seenOut || argument.out;
        EXPECT_TRUE((argument.out ? outs : ins).insert(argument.name).second) << argument.name << " twice";
        EXPECT_EQ(variables.count(argument.relatedStateVariable), 1u) << argument.relatedStateVariable;
      }
    }
  }
}

TEST(HostServiceCatalogue, TheStandardAndHostServicesEventWhatTheirObjectsSend) {
  const auto evented = [](const char* type) { return EventedNames(*HOST_FindService(type)); };
  EXPECT_EQ(evented("urn:schemas-upnp-org:service:AVTransport:1"), std::vector<std::string>{"LastChange"});
  EXPECT_EQ(evented("urn:schemas-upnp-org:service:ConnectionManager:1"),
            (std::vector<std::string>{"SourceProtocolInfo", "SinkProtocolInfo", "CurrentConnectionIDs"}));
  EXPECT_EQ(evented("urn:schemas-upnp-org:service:RenderingControl:1"),
            std::vector<std::string>{"LastChange"});
  EXPECT_EQ(evented("urn:av-openhome-org:service:Volume:1"),
            (std::vector<std::string>{"Volume", "Mute", "Balance", "Fade", "VolumeLimit", "VolumeMax",
                                      "VolumeUnity", "VolumeSteps", "VolumeMilliDbPerStep", "BalanceMax",
                                      "FadeMax"}));
}

TEST(HostServiceCatalogue, TheHostServicesHaveTheirStandardActions) {
  const auto names = [](const char* type) {
    std::vector<std::string> actions;
    for (const HOST_Action& action : HOST_FindService(type)->actions) actions.push_back(action.name);
    return actions;
  };
  EXPECT_EQ(names("urn:schemas-upnp-org:service:RenderingControl:1"),
            (std::vector<std::string>{"ListPresets", "SelectPreset", "GetVolume", "SetVolume", "GetMute",
                                      "SetMute", "GetVolumeDB", "SetVolumeDB", "GetVolumeDBRange"}));
  EXPECT_EQ(names("urn:av-openhome-org:service:Volume:1"),
            (std::vector<std::string>{"Characteristics", "SetVolume", "VolumeInc", "VolumeDec", "Volume",
                                      "SetBalance", "BalanceInc", "BalanceDec", "Balance", "SetFade",
                                      "FadeInc", "FadeDec", "Fade", "SetMute", "Mute", "VolumeLimit"}));
}

}  // namespace
