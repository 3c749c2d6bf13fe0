// The drift test of the OpenHome service object: the Playlist, Product, Time, Info and Sender SCPDs the
// build wrote, held against SINK_UPNP_OpenHomeUPnPService as it answers. See ServedActions.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OpenHomeDriftFixture.h"
#include "ServedActions.h"

namespace {

// The IN arguments the handlers do without; every other one draws 402 "Invalid Args" when left out.
const std::vector<OptionalArgument> kOptional = {
    {"Product", "SetStandby", "Value", 0, "standby cannot be entered: the value is not read"},
    {"Product", "SetSourceIndex", "Value", 0, "there is one source: the action answers the current index"},
    {"Playlist", "Insert", "Metadata", 0, "missing metadata is inserted as the empty text"},
    {"Playlist", "DeleteId", "Value", -1999,
     "a missing id reads as 0, which names no track: the action fails"},
    {"Playlist", "Read", "Id", 0, "Read answers the current track whatever the id"},
    {"Playlist", "ReadList", "IdList", 0, "a missing list lists nothing"},
};

// Names this object must answer 401 "Invalid Action" besides those of the host's services: the OpenHome
// actions it does not serve, and standard ones.
const char* const kNotServed[] = {
    "ProtocolInfo", "IdArrayChanged", "SeekSecondRelative",    "Counters", "SourceCount", "Attributes",
    "Source",       "GetMediaInfo",   "SetNextAVTransportURI", "play"};

using OpenHomeServicesDrift = OpenHomeDriftFixture;

TEST_F(OpenHomeServicesDrift, TheTestKnowsAValidCallOfEveryDescribedActionWithItsInArgumentsInOrder) {
  const std::vector<ServedScpd> scpds = ScpdsAnsweredBy(HOST_Responder::OpenHomeServices);
  ASSERT_EQ(scpds.size(), 5u);
  ExpectCallsMatchScpds(kOpenHomeCalls, scpds);
}

TEST_F(OpenHomeServicesDrift, EveryDescribedActionAnswersExactlyItsOutArgumentsInOrder) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::OpenHomeServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      SCOPED_TRACE(std::string(served.service->name) + "." + action.name);
      const ValidCall* call = FindCall(kOpenHomeCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr);
      const int32_t result = Perform(action.name.c_str(), Prepare(*call, InArguments(action, *call)));
      ExpectAnsweredAsDescribed(result, Reply(), action);
      ExpectValuesAsDescribed(Reply(), served.scpd, action, kOpenHomeUntypedOut);
    }
  }
}

TEST_F(OpenHomeServicesDrift, LeavingOutAnyRequiredInArgumentIsAnsweredInvalidArgs) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::OpenHomeServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      const ValidCall* call = FindCall(kOpenHomeCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr) << action.name;
      for (const std::string& omitted : action.InNames()) {
        SCOPED_TRACE(std::string(served.service->name) + "." + action.name + " without " + omitted);
        const int32_t result =
            Perform(action.name.c_str(), Prepare(*call, InArguments(action, *call, omitted)));
        const OptionalArgument* optional =
            FindOptional(kOptional, served.service->name, action.name, omitted);
        if (optional == nullptr) {
          ExpectInvalidArgs(result, Reply());
        } else {
          SCOPED_TRACE(optional->why);
          EXPECT_EQ(result, optional->result);
          EXPECT_NE(Reply().GetErrorCode(), 402);
        }
      }
    }
  }
}

TEST_F(OpenHomeServicesDrift, EveryNameOfTheDispatchTableIsDescribedByExactlyOneScpd) {
  std::vector<std::string> dispatchTable;
  for (const auto& entry : Peer::ActionHandlers()) dispatchTable.emplace_back(entry.action);
  ASSERT_EQ(dispatchTable.size(), 33u);
  ExpectDispatchTableMatchesScpds(dispatchTable, ScpdsAnsweredBy(HOST_Responder::OpenHomeServices));
}

TEST_F(OpenHomeServicesDrift, ActionsItDoesNotServeAreAnsweredInvalidAction) {
  std::vector<std::string> names(std::begin(kNotServed), std::end(kNotServed));
  for (const ServedScpd& hosted : ScpdsAnsweredBy(HOST_Responder::Host)) {
    for (const ScpdAction& action : hosted.scpd.actions) names.push_back(action.name);
  }
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const int32_t result = Perform(name.c_str(), {{"Value", "1"}});
    ExpectNotServed(result, Reply());
  }
}

}  // namespace
