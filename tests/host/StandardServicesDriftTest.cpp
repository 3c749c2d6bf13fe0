// The drift test of the standard service object: the AVTransport and ConnectionManager SCPDs the build
// wrote, held against SINK_UPNP_SinkCTSSUPnPService as it answers. See ServedActions.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "ServedActions.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

namespace {

using ::testing::_;

constexpr unsigned long kHandle = 0x5EED;

// How each action is called validly: IN arguments in the order its handler reads them ("InstanceID"
// first), with values the handler and the application accept.
const std::vector<ValidCall> kCalls = {
    {"AVTransport", "SetAVTransportURI",
     {{"InstanceID", "0"}, {"CurrentURI", "http://media.example.org/a.flac"}, {"CurrentURIMetaData", "<DIDL-Lite/>"}}},
    // Answered by the daemon; the service object does not know it.
    {"AVTransport", "SetNextAVTransportURI",
     {{"InstanceID", "0"}, {"NextURI", "http://media.example.org/b.flac"}, {"NextURIMetaData", "<DIDL-Lite/>"}}},
    {"AVTransport", "GetMediaInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetTransportInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetPositionInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetDeviceCapabilities", {{"InstanceID", "0"}}},
    {"AVTransport", "GetTransportSettings", {{"InstanceID", "0"}}},
    {"AVTransport", "GetCurrentTransportActions", {{"InstanceID", "0"}}},
    {"AVTransport", "Stop", {{"InstanceID", "0"}}},
    {"AVTransport", "Play", {{"InstanceID", "0"}, {"Speed", "1"}}},
    {"AVTransport", "Pause", {{"InstanceID", "0"}}},
    {"AVTransport", "Seek", {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "0:00:05"}}},
    {"AVTransport", "Next", {{"InstanceID", "0"}}},
    {"AVTransport", "Previous", {{"InstanceID", "0"}}},
    {"AVTransport", "SetPlayMode", {{"InstanceID", "0"}, {"NewPlayMode", "REPEAT_ALL"}}},
    {"ConnectionManager", "GetProtocolInfo", {}},
    {"ConnectionManager", "GetCurrentConnectionIDs", {}},
    {"ConnectionManager", "GetCurrentConnectionInfo", {{"ConnectionID", "0"}}},
};

// The IN arguments the handlers do without; every other one draws 402 "Invalid Args" when left out.
const std::vector<OptionalArgument> kOptional = {
    {"AVTransport", "SetAVTransportURI", "CurrentURI", 0, "a missing URI is handed over as the empty text"},
    {"AVTransport", "SetAVTransportURI", "CurrentURIMetaData", 0,
     "missing metadata is handed over as the empty text"},
};

// Names this object must answer 401 "Invalid Action" besides those of the host's services.
const char* const kNotServed[] = {"Insert", "ProtocolInfo", "Counters", "SeekId", "GetVolume", "getmediainfo"};

// Fills every OUT string the application is handed and answers 0.
struct AnswerWithValues {
  template <typename... Parameters>
  int32_t operator()(unsigned long, Parameters... parameters) const {
    (Fill(parameters), ...);
    return 0;
  }
  static void Fill(unsigned long) {}
  static void Fill(DMR_CMN_String* out) { out->SetCString("value"); }
};

class StandardServicesDrift : public ::testing::Test {
 protected:
  void SetUp() override {
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
    ASSERT_EQ(service_.Initialize(&properties_), 0);
    ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&transportHandler_), 0);
    ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&connectionHandler_), 0);
    AnswerEverything();
    ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
    ASSERT_EQ(service_.Start(), 0);
  }

  void TearDown() override {
    EXPECT_EQ(service_.Stop(), 0);
    EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
    EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
    EXPECT_EQ(service_.Finalize(), 0);
  }

  // The application answers 0 to everything, fills every OUT string, and records the texts of the IN
  // arguments it is handed, in the order of its parameters.
  void AnswerEverything() {
    const AnswerWithValues answer;
    ON_CALL(transfer_, GetMediaInfo).WillByDefault(answer);
    ON_CALL(transfer_, GetTransportInfo).WillByDefault(answer);
    ON_CALL(transfer_, GetPositionInfo).WillByDefault(answer);
    ON_CALL(transfer_, GetDeviceCapabilities).WillByDefault(answer);
    ON_CALL(transfer_, GetTransportSettings).WillByDefault(answer);
    ON_CALL(transfer_, GetCurrentTransportActions).WillByDefault(answer);
    ON_CALL(transfer_, GetProtocolInfo).WillByDefault(answer);
    ON_CALL(transfer_, GetCurrentConnectionIDs).WillByDefault(answer);
    ON_CALL(transfer_, GetCurrentConnectionInfo)
        .WillByDefault([this, answer](unsigned long handle, DMR_CMN_String* connectionId, DMR_CMN_String* a,
                                      DMR_CMN_String* b, DMR_CMN_String* c, DMR_CMN_String* d, DMR_CMN_String* e,
                                      DMR_CMN_String* f, DMR_CMN_String* g) {
          Receive({connectionId});
          return answer(handle, a, b, c, d, e, f, g);
        });
    ON_CALL(transfer_, SetAVTransportURI)
        .WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* uri, DMR_CMN_String* metadata) {
          return Receive({uri, metadata});
        });
    ON_CALL(transfer_, Play).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* speed) {
      return Receive({speed});
    });
    ON_CALL(transfer_, Seek)
        .WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* unit, DMR_CMN_String* target) {
          return Receive({unit, target});
        });
    ON_CALL(transfer_, SetPlayMode).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* mode) {
      return Receive({mode});
    });
  }

  int32_t Receive(std::initializer_list<const DMR_CMN_String*> texts) {
    for (const DMR_CMN_String* text : texts) {
      received_.emplace_back(text != nullptr && text->GetCString() != nullptr ? text->GetCString() : "<null>");
    }
    return 0;
  }

  int32_t Perform(const ServedScpd& served, const std::string& action, const Args& in) {
    request_ = std::make_unique<marlo::ActionRequest>();
    response_ = std::make_unique<marlo::ActionResponse>();
    received_.clear();
    EXPECT_EQ(request_->SetServiceType(served.service->serviceType), 0);
    EXPECT_EQ(request_->SetActionName(action.c_str()), 0);
    for (const auto& argument : in) {
      EXPECT_EQ(request_->AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
    }
    return service_.PerformAction(request_.get(), response_.get(), kHandle);
  }

  marlo::Properties properties_;
  RecordingEventHandler transportHandler_;
  RecordingEventHandler connectionHandler_;
  ::testing::NiceMock<MockTransferService> transfer_;
  SINK_UPNP_SinkCTSSUPnPService service_;
  std::unique_ptr<marlo::ActionRequest> request_;
  std::unique_ptr<marlo::ActionResponse> response_;
  std::vector<std::string> received_;
};

TEST_F(StandardServicesDrift, TheTestKnowsAValidCallOfEveryDescribedActionWithItsInArgumentsInOrder) {
  const std::vector<ServedScpd> scpds = ScpdsAnsweredBy(HOST_Responder::StandardServices);
  ASSERT_EQ(scpds.size(), 2u);
  ExpectCallsMatchScpds(kCalls, scpds);
}

TEST_F(StandardServicesDrift, EveryDescribedActionAnswersExactlyItsOutArgumentsInOrder) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::StandardServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      SCOPED_TRACE(std::string(served.service->name) + "." + action.name);
      const ValidCall* call = FindCall(kCalls, served.service->name, action.name);
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
      const ValidCall* call = FindCall(kCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr) << action.name;
      for (const std::string& omitted : action.InNames()) {
        SCOPED_TRACE(std::string(served.service->name) + "." + action.name + " without " + omitted);
        const int32_t result = Perform(served, action.name, InArguments(action, *call, omitted));
        const OptionalArgument* optional = FindOptional(kOptional, served.service->name, action.name, omitted);
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
