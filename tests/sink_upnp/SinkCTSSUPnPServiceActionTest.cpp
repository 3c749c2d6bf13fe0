// The seventeen actions of the standard renderer service, served through PerformAction on a started
// service: the checks of the IN arguments, what the application is handed, how each of its answers is
// turned into the reply and the result, the OUT arguments and their order, and the failures of the
// library itself (no memory for an argument, a reply that takes no more arguments).
//
// The application is a StrictMock: any call a test does not expect fails it, so "the application is not
// called" holds in every test that sets no expectation for the call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ActionReplies.h"
#include "FaultInjection.h"
#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "ScopedFault.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "sink_upnp/SinkCTSSUPnPService.h"


namespace {

using ::testing::_;
using ::testing::InSequence;
using ::testing::IsNull;
using ::testing::Mock;
using ::testing::Return;
using ::testing::StrictMock;
using FP = DMR_CMN_FaultPoint;

// A handle that is neither 0 nor 1, so that a handler passing something else on is caught.
constexpr unsigned long kHandle = 0x5A17;

// The application's side of a query: every OUT string arrives empty and is filled with `out`'s values.
template <typename... Strings>
void Fill(const Args& out, Strings*... strings) {
  DMR_CMN_String* all[] = {strings...};
  ASSERT_EQ(sizeof...(strings), out.size());
  for (std::size_t i = 0; i < out.size(); ++i) {
    EXPECT_EQ(all[i]->GetCString(), nullptr) << "OUT string " << i << " was handed over filled";
    ASSERT_EQ(all[i]->SetCString(out[i].second.c_str()), 0);
  }
}

// The IN texts every row hands over, so that the expectations below can check them.
constexpr char kUri[] = "http://192.168.1.20:8080/music/track%201.mp3";
constexpr char kMetaData[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"><item id=\"1\"><dc:title>A &amp; B"
    "</dc:title></item></DIDL-Lite>";

using Expect = void (*)(MockTransferService* transfer, const Args& out, int32_t answer);

void ExpectSetAVTransportURI(MockTransferService* transfer, const Args&, int32_t answer) {
  InSequence order;
  EXPECT_CALL(*transfer, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(*transfer, SetAVTransportURI(kHandle, 0, StringIs(kUri), StringIs(kMetaData)))
      .WillOnce(Return(answer));
}
void ExpectGetMediaInfo(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetMediaInfo(kHandle, 0, _, _, _, _, _, _, _, _, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetTransportInfo(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetTransportInfo(kHandle, 0, _, _, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetPositionInfo(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetPositionInfo(kHandle, 0, _, _, _, _, _, _, _, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetDeviceCapabilities(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetDeviceCapabilities(kHandle, 0, _, _, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetTransportSettings(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetTransportSettings(kHandle, 0, _, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetCurrentTransportActions(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetCurrentTransportActions(kHandle, 0, _))
      .WillOnce([out, answer](unsigned long, unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectStop(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Stop(kHandle, 0)).WillOnce(Return(answer));
}
void ExpectPlay(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Play(kHandle, 0, StringIs("1"))).WillOnce(Return(answer));
}
void ExpectPause(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Pause(kHandle, 0)).WillOnce(Return(answer));
}
void ExpectSeek(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("0:01:30")))
      .WillOnce(Return(answer));
}
void ExpectNext(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Next(kHandle, 0)).WillOnce(Return(answer));
}
void ExpectPrevious(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, Previous(kHandle, 0)).WillOnce(Return(answer));
}
void ExpectGetProtocolInfo(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetProtocolInfo(kHandle, _, _))
      .WillOnce([out, answer](unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetCurrentConnectionIDs(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetCurrentConnectionIDs(kHandle, _))
      .WillOnce([out, answer](unsigned long, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectGetCurrentConnectionInfo(MockTransferService* transfer, const Args& out, int32_t answer) {
  EXPECT_CALL(*transfer, GetCurrentConnectionInfo(kHandle, StringIs("0"), _, _, _, _, _, _, _))
      .WillOnce([out, answer](unsigned long, DMR_CMN_String*, auto*... strings) -> int32_t {
        Fill(out, strings...);
        return answer;
      });
}
void ExpectSetPlayMode(MockTransferService* transfer, const Args&, int32_t answer) {
  EXPECT_CALL(*transfer, SetPlayMode(kHandle, 0, StringIs("SHUFFLE"))).WillOnce(Return(answer));
}

// One action as a control point invokes it and as the application sees it.
struct ActionCase {
  const char* action;
  Args in;                            // a complete, valid set of IN arguments
  std::vector<std::string> required;  // the IN arguments whose absence is answered 402
  bool instance;                      // addressed to AVTransport instance "InstanceID"
  unsigned long copies;               // IN texts copied for the application
  std::vector<int32_t> accepted;      // the application's numbers the action reports
  std::vector<int32_t> unaccepted;    // error numbers of the table the action does not report
  Args out;                           // OUT arguments in order, with the values the application gives
  Expect expect;                      // one call of the application, with the `in` texts
};

const std::vector<ActionCase>& Actions() {
  static const std::vector<ActionCase> kActions = {
      {"SetAVTransportURI",
       {{"InstanceID", "0"}, {"CurrentURI", kUri}, {"CurrentURIMetaData", kMetaData}},
       {"InstanceID"},
       true,
       2,
       {402, 705, 714, 715, 716, 718},
       {701, 717},
       {},
       ExpectSetAVTransportURI},
      {"GetMediaInfo",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"NrTracks", "1"},
        {"MediaDuration", "0:03:25"},
        {"CurrentURI", "http://host/track.mp3"},
        {"CurrentURIMetaData", "<DIDL-Lite>track</DIDL-Lite>"},
        {"NextURI", "http://host/next.mp3"},
        {"NextURIMetaData", "<DIDL-Lite>next</DIDL-Lite>"},
        {"PlayMedium", "NETWORK"},
        {"RecordMedium", "NOT_IMPLEMENTED"},
        {"WriteStatus", ""}},
       ExpectGetMediaInfo},
      {"GetTransportInfo",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"CurrentTransportState", "PLAYING"}, {"CurrentTransportStatus", "OK"}, {"CurrentSpeed", "1"}},
       ExpectGetTransportInfo},
      {"GetPositionInfo",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"Track", "3"},
        {"TrackDuration", "0:03:25"},
        {"TrackMetaData", "<DIDL-Lite>track</DIDL-Lite>"},
        {"TrackURI", "http://host/track.mp3"},
        {"RelTime", "0:01:02"},
        {"AbsTime", "NOT_IMPLEMENTED"},
        {"RelCount", "2147483647"},
        {"AbsCount", "2147483646"}},
       ExpectGetPositionInfo},
      {"GetDeviceCapabilities",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"PlayMedia", "NETWORK"}, {"RecMedia", "NONE"}, {"RecQualityModes", "NOT_IMPLEMENTED"}},
       ExpectGetDeviceCapabilities},
      {"GetTransportSettings",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"PlayMode", "NORMAL"}, {"RecQualityMode", "NOT_IMPLEMENTED"}},
       ExpectGetTransportSettings},
      {"GetCurrentTransportActions",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 718},
       {701, 705},
       {{"Actions", "Play,Stop,Pause,Seek,Next,Previous"}},
       ExpectGetCurrentTransportActions},
      {"Stop",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 701, 705, 718},
       {711, 714},
       {},
       ExpectStop},
      {"Play",
       {{"InstanceID", "0"}, {"Speed", "1"}},
       {"InstanceID", "Speed"},
       true,
       1,
       {402, 701, 714, 715, 716, 717, 718},
       {705, 710},
       {},
       ExpectPlay},
      {"Pause", {{"InstanceID", "0"}}, {"InstanceID"}, true, 0, {402, 701, 718}, {705, 711}, {}, ExpectPause},
      {"Seek",
       {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "0:01:30"}},
       {"InstanceID", "Unit", "Target"},
       true,
       2,
       {402, 701, 705, 710, 711, 718},
       {714, 717},
       {},
       ExpectSeek},
      {"Next",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 701, 711, 718},
       {705, 710},
       {},
       ExpectNext},
      {"Previous",
       {{"InstanceID", "0"}},
       {"InstanceID"},
       true,
       0,
       {402, 701, 711, 718},
       {705, 710},
       {},
       ExpectPrevious},
      {"GetProtocolInfo",
       {},
       {},
       false,
       0,
       {402},
       {706, 718},
       {{"Source", ""}, {"Sink", "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*"}},
       ExpectGetProtocolInfo},
      {"GetCurrentConnectionIDs",
       {},
       {},
       false,
       0,
       {402},
       {706, 718},
       {{"ConnectionIDs", "0"}},
       ExpectGetCurrentConnectionIDs},
      {"GetCurrentConnectionInfo",
       {{"ConnectionID", "0"}},
       {"ConnectionID"},
       false,
       1,
       {402},
       {706, 718},
       {{"RcsID", "-1"},
        {"AVTransportID", "0"},
        {"ProtocolInfo", "http-get:*:audio/mpeg:*"},
        {"PeerConnectionManager", "uuid:peer/urn:upnp-org:serviceId:ConnectionManager"},
        {"PeerConnectionID", "-2"},
        {"Direction", "Input"},
        {"Status", "OK"}},
       ExpectGetCurrentConnectionInfo},
      {"SetPlayMode",
       {{"InstanceID", "0"}, {"NewPlayMode", "SHUFFLE"}},
       {"InstanceID", "NewPlayMode"},
       true,
       1,
       {705, 712},
       {402, 701, 718},
       {},
       ExpectSetPlayMode},
  };
  return kActions;
}

const ActionCase& Action(const std::string& name) {
  for (const ActionCase& action : Actions()) {
    if (name == action.action) return action;
  }
  ADD_FAILURE() << "no row for " << name;
  return Actions().front();
}

Args Without(Args arguments, const std::string& name) {
  Args kept;
  for (auto& argument : arguments) {
    if (argument.first != name) kept.push_back(std::move(argument));
  }
  return kept;
}

Args With(Args arguments, const std::string& name, const std::string& value) {
  for (auto& argument : arguments) {
    if (argument.first == name) argument.second = value;
  }
  return arguments;
}

// A service as the host runs it: initialized, both event handlers and the application registered,
// started.
class SinkCTSSActions : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*"), 0);
    ASSERT_EQ(service_.Initialize(&properties_), 0);
    ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
    ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
    EXPECT_CALL(transfer_, AttachStateVariableManager(_)).WillOnce(Return(0));
    ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
    ASSERT_EQ(service_.Start(), 0);
    Mock::VerifyAndClearExpectations(&transfer_);
  }

  void TearDown() override {
    DMR_CMN_FaultInjection::Reset();
    EXPECT_EQ(service_.Stop(), 0);
    EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
    EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
    EXPECT_EQ(service_.Finalize(), 0);
  }

  // Invokes `action` with the IN arguments `in`, as the host does.
  int32_t Perform(const std::string& action, const Args& in, marlo::ActionResponse* response) {
    marlo::ActionRequest request;
    EXPECT_EQ(request.SetActionName(action.c_str()), 0);
    for (const auto& argument : in) {
      EXPECT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
    }
    return service_.PerformAction(&request, response, kHandle);
  }

  // Checks the calls expected so far, so that a failure is reported under the trace that caused it.
  void Verify() { EXPECT_TRUE(Mock::VerifyAndClearExpectations(&transfer_)); }

  marlo::Properties properties_;
  RecordingEventHandler avtHandler_;
  RecordingEventHandler cmsHandler_;
  StrictMock<MockTransferService> transfer_;
  SINK_UPNP_SinkCTSSUPnPService service_;
};

// --- Every action, one row each ---

TEST_F(SinkCTSSActions, MissingRequiredArgumentIsAnsweredInvalidArgsWithoutCallingTheApplication) {
  for (const ActionCase& row : Actions()) {
    for (const std::string& missing : row.required) {
      SCOPED_TRACE(std::string(row.action) + " without " + missing);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, Without(row.in, missing), &response), 0);
      ExpectError(response, 402);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, NoArgumentsAtAllAreAnsweredInvalidArgsOnce) {
  for (const ActionCase& row : Actions()) {
    if (row.required.empty()) continue;
    SCOPED_TRACE(row.action);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(row.action, {}, &response), 0);
    ExpectError(response, 402);
    Verify();
  }
}

TEST_F(SinkCTSSActions,
       InstanceIdOtherThanExactlyZeroIsAnsweredInvalidInstanceIdWithoutCallingTheApplication) {
  for (const ActionCase& row : Actions()) {
    if (!row.instance) continue;
    for (const char* instance : {"00", " 0", "0 ", "1", "", "-0"}) {
      SCOPED_TRACE(std::string(row.action) + " with InstanceID \"" + instance + "\"");
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, With(row.in, "InstanceID", instance), &response), 0);
      ExpectError(response, 718);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, MissingArgumentIsAnsweredBeforeAWrongInstanceId) {
  for (const ActionCase& row : Actions()) {
    if (!row.instance) continue;
    for (const std::string& missing : row.required) {
      if (missing == "InstanceID") continue;
      SCOPED_TRACE(std::string(row.action) + " without " + missing);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, With(Without(row.in, missing), "InstanceID", "1"), &response), 0);
      ExpectError(response, 402);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, ApplicationAnsweringZeroCompletesTheActionWithItsOutArgumentsOnly) {
  for (const ActionCase& row : Actions()) {
    SCOPED_TRACE(row.action);
    row.expect(&transfer_, row.out, 0);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(row.action, row.in, &response), 0);
    EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
    EXPECT_EQ(response.GetErrorDescription(), nullptr);
    EXPECT_EQ(OutArguments(response), row.out);
    Verify();
  }
}

TEST_F(SinkCTSSActions, EachAcceptedNumberIsRepliedWithItsCodeAndDescription) {
  for (const ActionCase& row : Actions()) {
    for (int32_t code : row.accepted) {
      SCOPED_TRACE(std::string(row.action) + " answered " + std::to_string(code));
      row.expect(&transfer_, row.out, code);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, row.in, &response), 0);
      // A query answered with an error writes none of the values the application may have filled in.
      ExpectError(response, code);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, UnacceptedNumberFailsTheActionAndLeavesTheReplyUntouched) {
  for (const ActionCase& row : Actions()) {
    for (int32_t code : row.unaccepted) {
      SCOPED_TRACE(std::string(row.action) + " answered " + std::to_string(code));
      row.expect(&transfer_, row.out, code);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
      ExpectUntouched(response);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, ApplicationFailingWithMinusOneFailsTheActionAndLeavesTheReplyUntouched) {
  for (const ActionCase& row : Actions()) {
    SCOPED_TRACE(row.action);
    row.expect(&transfer_, row.out, -1);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
    ExpectUntouched(response);
    Verify();
  }
}

TEST_F(SinkCTSSActions, NumberOutsideTheErrorTableFailsTheAction) {
  for (const ActionCase& row : Actions()) {
    SCOPED_TRACE(row.action);
    row.expect(&transfer_, row.out, 501);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
    ExpectUntouched(response);
    Verify();
  }
}

TEST_F(SinkCTSSActions, NoMemoryForAnArgumentAnswersNoMemoryWithoutCallingTheApplication) {
  for (const ActionCase& row : Actions()) {
    for (unsigned long nth = 1; nth <= row.copies; ++nth) {
      SCOPED_TRACE(std::string(row.action) + ", copy " + std::to_string(nth));
      ScopedFault fault(FP::kStringAllocation, nth, -989);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, row.in, &response), -1997);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(response);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, OtherFailureCopyingAnArgumentFailsTheActionWithoutCallingTheApplication) {
  for (const ActionCase& row : Actions()) {
    for (unsigned long nth = 1; nth <= row.copies; ++nth) {
      SCOPED_TRACE(std::string(row.action) + ", copy " + std::to_string(nth));
      ScopedFault fault(FP::kStringAllocation, nth, -1);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(response);
      Verify();
    }
  }
}

TEST_F(SinkCTSSActions, EveryArgumentCopyIsCountedSoThatEachCanFail) {
  // The two tests above fail the 1st to the n-th copy; this makes sure there is no (n+1)-th one they miss.
  for (const ActionCase& row : Actions()) {
    SCOPED_TRACE(row.action);
    DMR_CMN_FaultInjection::Reset();
    row.expect(&transfer_, row.out, 501);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
    // The application's own filling of the OUT values is counted too, one each.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), row.copies + row.out.size());
    Verify();
  }
}

TEST_F(SinkCTSSActions, FailingOutArgumentWriteFailsTheActionKeepingTheArgumentsWrittenBeforeIt) {
  for (const ActionCase& row : Actions()) {
    for (std::size_t failing = 0; failing < row.out.size(); ++failing) {
      SCOPED_TRACE(std::string(row.action) + ", writing " + row.out[failing].first);
      row.expect(&transfer_, row.out, 0);
      ScopedFault fault(FP::kActionResponseSetArgument, failing + 1, -1997);
      marlo::ActionResponse response;
      EXPECT_EQ(Perform(row.action, row.in, &response), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
      EXPECT_EQ(OutArguments(response), Args(row.out.begin(), row.out.begin() + failing));
      EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
      // The first failure stops the writing: no later argument is tried.
      EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kActionResponseSetArgument), failing + 1);
      Verify();
    }
  }
}

// --- The handlers' own checks ---

TEST_F(SinkCTSSActions, HandlerGivenNullRequestOrResponseAnswersGenericFailure) {
  for (const auto& named : SINK_UPNP_SinkCTSSUPnPServiceTestPeer::ActionHandlers()) {
    SCOPED_TRACE(named.action);
    const ActionCase& row = Action(named.action);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName(named.action), 0);
    for (const auto& argument : row.in) {
      ASSERT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
    }
    marlo::ActionResponse response;
    EXPECT_EQ((service_.*named.handler)(kHandle, nullptr, &response), -1);
    ExpectUntouched(response);
    EXPECT_EQ((service_.*named.handler)(kHandle, &request, nullptr), -1);
    Verify();
  }
}

TEST(SinkCTSSActionHandlers, HandlerWithoutATransferServiceAnswersGenericFailure) {
  // Unreachable through PerformAction (Start needs the transfer service); the handlers still do not
  // dereference a missing one.
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*"), 0);
  SINK_UPNP_SinkCTSSUPnPService service;
  ASSERT_EQ(service.Initialize(&properties), 0);
  for (const auto& named : SINK_UPNP_SinkCTSSUPnPServiceTestPeer::ActionHandlers()) {
    SCOPED_TRACE(named.action);
    const ActionCase& row = Action(named.action);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName(named.action), 0);
    for (const auto& argument : row.in) {
      ASSERT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
    }
    marlo::ActionResponse response;
    EXPECT_EQ((service.*named.handler)(kHandle, &request, &response), -1);
    ExpectUntouched(response);
  }
  EXPECT_EQ(service.Finalize(), 0);
}

TEST_F(SinkCTSSActions, HandlerAnswersNoMemoryForAnArgumentAsSuchAndAnyOtherCopyFailureAsGeneric) {
  for (const auto& named : SINK_UPNP_SinkCTSSUPnPServiceTestPeer::ActionHandlers()) {
    const ActionCase& row = Action(named.action);
    if (row.copies == 0) continue;
    for (int32_t code : {-989, -5}) {
      SCOPED_TRACE(std::string(named.action) + " copying with " + std::to_string(code));
      marlo::ActionRequest request;
      ASSERT_EQ(request.SetActionName(named.action), 0);
      for (const auto& argument : row.in) {
        ASSERT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
      }
      ScopedFault fault(FP::kStringAllocation, 1, code);
      marlo::ActionResponse response;
      EXPECT_EQ((service_.*named.handler)(kHandle, &request, &response), code == -989 ? -989 : -1);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(response);
      Verify();
    }
  }
}

// --- AVTransport ---

TEST_F(SinkCTSSActions, PlayWithoutSpeedIsAnsweredInvalidArgsWithoutCallingTheApplication) {
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("Play", {{"InstanceID", "0"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 402);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid Args");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_F(SinkCTSSActions, StopWithInstanceIdOneIsAnsweredInvalidInstanceIdWithoutCallingTheApplication) {
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("Stop", {{"InstanceID", "1"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 718);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid InstanceID");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_F(SinkCTSSActions, SetAVTransportURIWithOnlyInstanceIdHandsTheApplicationTwoEmptyStrings) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(""), StringIs(""))).WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", {{"InstanceID", "0"}}, &response), 0);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, SetAVTransportURIWithoutMetaDataHandsTheURIAndAnEmptyMetaData) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(kUri), StringIs(""))).WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", {{"InstanceID", "0"}, {"CurrentURI", kUri}}, &response), 0);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, SetAVTransportURIWithoutURIHandsAnEmptyURIAndTheMetaData) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(""), StringIs(kMetaData)))
      .WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", {{"InstanceID", "0"}, {"CurrentURIMetaData", kMetaData}}, &response),
            0);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, SetAVTransportURITellsTheApplicationItHasNoPlaylistJustBeforeTheURI) {
  InSequence order;
  // What the application answers to the playlist does not change the action's outcome.
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(-1));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(kUri), StringIs(kMetaData)))
      .WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", Action("SetAVTransportURI").in, &response), 0);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, SetAVTransportURIHandsURIAndMetaDataOverUnchecked) {
  // Neither scheme, nor length, nor XML is looked at: the application judges what it can play.
  const std::string uri = "not a uri at all \x01 " + std::string(4096, 'u');
  const char* metaData = "<unclosed & not XML";
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(uri), StringIs(metaData)))
      .WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI",
                    {{"InstanceID", "0"}, {"CurrentURI", uri}, {"CurrentURIMetaData", metaData}}, &response),
            0);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, NoMemoryForTheURIDoesNotTellTheApplicationAboutThePlaylist) {
  ScopedFault fault(FP::kStringAllocation, 1, -989);
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", {{"InstanceID", "0"}}, &response), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, PlayAnswered705FailsWithNothingInTheReply) {
  EXPECT_CALL(transfer_, Play(kHandle, 0, StringIs("1"))).WillOnce(Return(705));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("Play", {{"InstanceID", "0"}, {"Speed", "1"}}, &response), -1999);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, PlayHandsAnySpeedTextToTheApplicationUnparsed) {
  EXPECT_CALL(transfer_, Play(kHandle, 0, StringIs(" -1/2x "))).WillOnce(Return(717));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("Play", {{"InstanceID", "0"}, {"Speed", " -1/2x "}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 717);
  EXPECT_STREQ(response.GetErrorDescription(), "Play speed not supported");
}

TEST_F(SinkCTSSActions, SeekHandsUnitAndTargetToTheApplicationUnparsed) {
  EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("NO_SUCH_MODE"), StringIs("99:99:99")))
      .WillOnce(Return(710));
  marlo::ActionResponse response;
  EXPECT_EQ(
      Perform("Seek", {{"InstanceID", "0"}, {"Unit", "NO_SUCH_MODE"}, {"Target", "99:99:99"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 710);
  EXPECT_STREQ(response.GetErrorDescription(), "Seek mode not supported");
}

TEST_F(SinkCTSSActions, SetAVTransportURIAnswered715RepliesContentBusyWithCurlyQuotes) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, _, _)).WillOnce(Return(715));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", Action("SetAVTransportURI").in, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 715);
  ASSERT_NE(response.GetErrorDescription(), nullptr);
  // U+2018 and U+2019 in UTF-8, never straight apostrophes.
  EXPECT_EQ(std::string(response.GetErrorDescription()),
            "Content \xE2\x80\x98"
            "BUSY\xE2\x80\x99");
}

TEST_F(SinkCTSSActions, SetAVTransportURIAnswered701FailsBecauseItDoesNotReportTransitions) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(IsNull())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, _, _)).WillOnce(Return(701));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetAVTransportURI", Action("SetAVTransportURI").in, &response), -1999);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, PauseAnswered705Or711Fails) {
  for (int32_t code : {705, 711}) {
    SCOPED_TRACE(code);
    EXPECT_CALL(transfer_, Pause(kHandle, 0)).WillOnce(Return(code));
    marlo::ActionResponse response;
    EXPECT_EQ(Perform("Pause", {{"InstanceID", "0"}}, &response), -1999);
    ExpectUntouched(response);
    Verify();
  }
}

TEST_F(SinkCTSSActions, NextAndPreviousReportIllegalSeekTarget) {
  EXPECT_CALL(transfer_, Next(kHandle, 0)).WillOnce(Return(711));
  EXPECT_CALL(transfer_, Previous(kHandle, 0)).WillOnce(Return(711));
  for (const char* action : {"Next", "Previous"}) {
    SCOPED_TRACE(action);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform(action, {{"InstanceID", "0"}}, &response), 0);
    EXPECT_EQ(response.GetErrorCode(), 711);
    EXPECT_STREQ(response.GetErrorDescription(), "Illegal seek target");
  }
}

TEST_F(SinkCTSSActions, SetPlayModeAnswered701Fails) {
  EXPECT_CALL(transfer_, SetPlayMode(kHandle, 0, StringIs("SHUFFLE"))).WillOnce(Return(701));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetPlayMode", {{"InstanceID", "0"}, {"NewPlayMode", "SHUFFLE"}}, &response), -1999);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, SetPlayModeAnswered712RepliesPlayModeNotSupported) {
  EXPECT_CALL(transfer_, SetPlayMode(kHandle, 0, StringIs("NO_SUCH_MODE"))).WillOnce(Return(712));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("SetPlayMode", {{"InstanceID", "0"}, {"NewPlayMode", "NO_SUCH_MODE"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 712);
  EXPECT_STREQ(response.GetErrorDescription(), "Play mode not supported");
}

TEST_F(SinkCTSSActions, GetTransportInfoAnsweredZeroWritesThreeOutArgumentsInOrder) {
  EXPECT_CALL(transfer_, GetTransportInfo(kHandle, 0, _, _, _))
      .WillOnce([](unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                   DMR_CMN_String* speed) {
        state->SetCString("STOPPED");
        status->SetCString("ERROR_OCCURRED");
        speed->SetCString("1");
        return 0;
      });
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetTransportInfo", {{"InstanceID", "0"}}, &response), 0);
  EXPECT_EQ(OutArguments(response), (Args{{"CurrentTransportState", "STOPPED"},
                                          {"CurrentTransportStatus", "ERROR_OCCURRED"},
                                          {"CurrentSpeed", "1"}}));
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
}

TEST_F(SinkCTSSActions, OutValueTheApplicationLeftUnsetFailsTheQueryKeepingTheValuesBeforeIt) {
  EXPECT_CALL(transfer_, GetTransportInfo(kHandle, 0, _, _, _))
      .WillOnce(
          [](unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String*, DMR_CMN_String* speed) {
            state->SetCString("PLAYING");
            speed->SetCString("1");
            return 0;
          });
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetTransportInfo", {{"InstanceID", "0"}}, &response), -1999);
  EXPECT_EQ(OutArguments(response), (Args{{"CurrentTransportState", "PLAYING"}}));
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u);
}

TEST_F(SinkCTSSActions, QueryAnsweredWithAnErrorWritesNoneOfTheValuesTheApplicationFilledIn) {
  Action("GetPositionInfo").expect(&transfer_, Action("GetPositionInfo").out, 718);
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetPositionInfo", {{"InstanceID", "0"}}, &response), 0);
  ExpectError(response, 718);
}

TEST_F(SinkCTSSActions, ActionsCarryTheHandleOfTheActionBeingServed) {
  EXPECT_CALL(transfer_, Stop(7ul, 0)).WillOnce(Return(0));
  EXPECT_CALL(transfer_, GetCurrentConnectionIDs(8ul, _)).WillOnce([](unsigned long, DMR_CMN_String* out) {
    out->SetCString("0");
    return 0;
  });
  marlo::ActionRequest stop;
  ASSERT_EQ(stop.SetActionName("Stop"), 0);
  ASSERT_EQ(stop.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse stopped;
  EXPECT_EQ(service_.PerformAction(&stop, &stopped, 7), 0);
  marlo::ActionRequest ids;
  ASSERT_EQ(ids.SetActionName("GetCurrentConnectionIDs"), 0);
  marlo::ActionResponse answered;
  EXPECT_EQ(service_.PerformAction(&ids, &answered, 8), 0);
  EXPECT_EQ(OutArguments(answered), (Args{{"ConnectionIDs", "0"}}));
}

// --- ConnectionManager ---

TEST_F(SinkCTSSActions, GetCurrentConnectionInfoWithConnectionIdOneIsAnsweredInvalidConnectionReference) {
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetCurrentConnectionInfo", {{"ConnectionID", "1"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 706);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid connection reference");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_F(SinkCTSSActions, ConnectionIdOtherThanExactlyZeroIsAnsweredInvalidConnectionReference) {
  for (const char* connection : {"00", " 0", "0 ", "", "-1"}) {
    SCOPED_TRACE(std::string("ConnectionID \"") + connection + "\"");
    marlo::ActionResponse response;
    EXPECT_EQ(Perform("GetCurrentConnectionInfo", {{"ConnectionID", connection}}, &response), 0);
    ExpectError(response, 706);
  }
}

TEST_F(SinkCTSSActions, GetCurrentConnectionInfoWithoutConnectionIdIsAnsweredInvalidArgs) {
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetCurrentConnectionInfo", {{"InstanceID", "0"}}, &response), 0);
  EXPECT_EQ(response.GetErrorCode(), 402);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid Args");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_F(SinkCTSSActions, GetProtocolInfoAnsweredZeroWritesSourceBeforeSink) {
  EXPECT_CALL(transfer_, GetProtocolInfo(kHandle, _, _))
      .WillOnce([](unsigned long, DMR_CMN_String* source, DMR_CMN_String* sink) {
        sink->SetCString("http-get:*:audio/mpeg:*");
        source->SetCString("");
        return 0;
      });
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetProtocolInfo", {}, &response), 0);
  ASSERT_EQ(response.GetArgumentCount(), 2u);
  EXPECT_STREQ(response.GetArgumentName(0), "Source");
  EXPECT_STREQ(response.GetArgumentValueAt(0), "");
  EXPECT_STREQ(response.GetArgumentName(1), "Sink");
  EXPECT_STREQ(response.GetArgumentValueAt(1), "http-get:*:audio/mpeg:*");
}

TEST_F(SinkCTSSActions, GetCurrentConnectionIDsAnswered706FailsWithNothingInTheReply) {
  EXPECT_CALL(transfer_, GetCurrentConnectionIDs(kHandle, _)).WillOnce(Return(706));
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetCurrentConnectionIDs", {}, &response), -1999);
  ExpectUntouched(response);
}

TEST_F(SinkCTSSActions, ConnectionManagerActionsIgnoreAnInstanceId) {
  // They carry no instance: an "InstanceID" that AVTransport would refuse is not looked at.
  Action("GetCurrentConnectionIDs").expect(&transfer_, Action("GetCurrentConnectionIDs").out, 0);
  marlo::ActionResponse response;
  EXPECT_EQ(Perform("GetCurrentConnectionIDs", {{"InstanceID", "1"}}, &response), 0);
  EXPECT_EQ(OutArguments(response), Action("GetCurrentConnectionIDs").out);
}

}  // namespace
