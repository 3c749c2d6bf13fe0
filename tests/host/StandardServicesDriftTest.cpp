// The drift test of the standard service object: the AVTransport and ConnectionManager SCPDs the build
// wrote, held against SINK_UPNP_SinkCTSSUPnPService as it answers. See ServedActions.h.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "ServedActions.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "StandardDriftFixture.h"

namespace {

// The IN arguments the handlers do without; every other one draws 402 "Invalid Args" when left out.
const std::vector<OptionalArgument> kOptional = {
    {"AVTransport", "SetAVTransportURI", "CurrentURI", 0, "a missing URI is handed over as the empty text"},
    {"AVTransport", "SetAVTransportURI", "CurrentURIMetaData", 0,
     "missing metadata is handed over as the empty text"},
};

// Names this object must answer 401 "Invalid Action" besides those of the host's services.
const char* const kNotServed[] = {"Insert", "ProtocolInfo", "Counters",
                                  "SeekId", "GetVolume",    "getmediainfo"};

using StandardServicesDrift = StandardDriftFixture;

TEST_F(StandardServicesDrift, TheTestKnowsAValidCallOfEveryDescribedActionWithItsInArgumentsInOrder) {
  const std::vector<ServedScpd> scpds = ScpdsAnsweredBy(HOST_Responder::StandardServices);
  ASSERT_EQ(scpds.size(), 2u);
  ExpectCallsMatchScpds(kStandardCalls, scpds);
}

TEST_F(StandardServicesDrift, EveryDescribedActionAnswersExactlyItsOutArgumentsInOrder) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::StandardServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      SCOPED_TRACE(std::string(served.service->name) + "." + action.name);
      const ValidCall* call = FindCall(kStandardCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr);
      const Args in = InArguments(action, *call);
      const int32_t result = Perform(served, action.name, in);
      if (HostAnswers(*served.service, action.name)) {
        ExpectNotServed(result, *response_);
        continue;
      }
      ExpectAnsweredAsDescribed(result, *response_, action);
      // What the handler passes on reaches the application in the SCPD's order of the IN arguments.
      std::vector<std::string> passedOn;
      for (const auto& argument : in) {
        if (argument.first != "InstanceID") passedOn.push_back(argument.second);
      }
      EXPECT_EQ(received_, passedOn) << "IN values the application received, in order";
    }
  }
}

TEST_F(StandardServicesDrift, LeavingOutAnyRequiredInArgumentIsAnsweredInvalidArgs) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::StandardServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      if (HostAnswers(*served.service, action.name)) continue;
      const ValidCall* call = FindCall(kStandardCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr) << action.name;
      for (const std::string& omitted : action.InNames()) {
        SCOPED_TRACE(std::string(served.service->name) + "." + action.name + " without " + omitted);
        const int32_t result = Perform(served, action.name, InArguments(action, *call, omitted));
        const OptionalArgument* optional =
            FindOptional(kOptional, served.service->name, action.name, omitted);
        if (optional == nullptr) {
          ExpectInvalidArgs(result, *response_);
          EXPECT_TRUE(received_.empty()) << "the application was called";
        } else {
          SCOPED_TRACE(optional->why);
          EXPECT_EQ(result, optional->result);
          EXPECT_NE(response_->GetErrorCode(), 402);
        }
      }
    }
  }
}

TEST_F(StandardServicesDrift, EveryNameOfTheDispatchTableIsDescribedByExactlyOneScpd) {
  std::vector<std::string> dispatchTable;
  for (const auto& entry : SINK_UPNP_SinkCTSSUPnPServiceTestPeer::ActionHandlers()) {
    dispatchTable.emplace_back(entry.action);
  }
  ASSERT_EQ(dispatchTable.size(), 17u);
  ExpectDispatchTableMatchesScpds(dispatchTable, ScpdsAnsweredBy(HOST_Responder::StandardServices));
}

TEST_F(StandardServicesDrift, ActionsItDoesNotServeAreAnsweredInvalidAction) {
  const std::vector<ServedScpd> scpds = ScpdsAnsweredBy(HOST_Responder::StandardServices);
  ASSERT_FALSE(scpds.empty());
  std::vector<std::string> names(std::begin(kNotServed), std::end(kNotServed));
  for (const ServedScpd& served : scpds) {
    for (const ScpdAction& action : served.scpd.actions) {
      if (HostAnswers(*served.service, action.name)) names.push_back(action.name);
    }
  }
  for (const ServedScpd& hosted : ScpdsAnsweredBy(HOST_Responder::Host)) {
    for (const ScpdAction& action : hosted.scpd.actions) names.push_back(action.name);
  }
  for (const std::string& name : names) {
    SCOPED_TRACE(name);
    const int32_t result = Perform(scpds.front(), name, {{"InstanceID", "0"}});
    ExpectNotServed(result, *response_);
  }
}

}  // namespace
