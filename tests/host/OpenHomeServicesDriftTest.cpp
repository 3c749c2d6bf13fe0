// The drift test of the OpenHome service object: the Playlist, Product, Time, Info and Sender SCPDs the
// build wrote, held against SINK_UPNP_OpenHomeUPnPService as it answers. See ServedActions.h.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "OpenHomeServiceFixture.h"
#include "ServedActions.h"

namespace {

using ::testing::_;
using ::testing::AnyNumber;
using ::testing::Return;

// Stands for the id of the playlist's first track.
constexpr char kFirstId[] = "{first}";

// How each action is called validly: IN arguments in the order its handler reads them, with values it
// accepts. Every call but Read runs on a playlist of two tracks, the first one current.
const std::vector<ValidCall> kCalls = {
    {"Product", "Standby", {}},
    {"Product", "SetStandby", {{"Value", "false"}}},
    {"Product", "SourceXml", {}},
    {"Product", "SetSourceIndex", {{"Value", "0"}}},
    {"Product", "Manufacturer", {}},
    {"Product", "Model", {}},
    {"Product", "Product", {}},
    {"Product", "SourceIndex", {}},
    {"Playlist", "Insert",
     {{"AfterId", "0"}, {"Uri", "http://media.example.org/new.flac"}, {"Metadata", "<DIDL-Lite/>"}}},
    {"Playlist", "DeleteId", {{"Value", kFirstId}}},
    {"Playlist", "DeleteAll", {}},
    {"Playlist", "Stop", {}},
    {"Playlist", "Play", {}},
    {"Playlist", "Pause", {}},
    {"Playlist", "SeekSecondAbsolute", {{"Value", "5"}}},
    {"Playlist", "Next", {}},
    {"Playlist", "Previous", {}},
    {"Playlist", "SeekId", {{"Value", kFirstId}}},
    {"Playlist", "SeekIndex", {{"Value", "0"}}},
    {"Playlist", "Repeat", {}},
    {"Playlist", "SetRepeat", {{"Value", "true"}}},
    {"Playlist", "Shuffle", {}},
    {"Playlist", "SetShuffle", {{"Value", "false"}}},
    {"Playlist", "Id", {}},
    {"Playlist", "TransportState", {}},
    // With a current track Read answers its description and then fails the action (its contract): only
    // on an empty playlist does it answer without a failure.
    {"Playlist", "Read", {{"Id", "1"}}, true},
    {"Playlist", "ReadList", {{"IdList", kFirstId}}},
    {"Playlist", "IdArray", {}},
    {"Playlist", "TracksMax", {}},
    {"Time", "Time", {}},
    {"Info", "Track", {}},
    {"Info", "Details", {}},
    {"Info", "Metatext", {}},
};

// The IN arguments the handlers do without; every other one draws 402 "Invalid Args" when left out.
const std::vector<OptionalArgument> kOptional = {
    {"Product", "SetStandby", "Value", 0, "standby cannot be entered: the value is not read"},
    {"Product", "SetSourceIndex", "Value", 0, "there is one source: the action answers the current index"},
    {"Playlist", "Insert", "Metadata", 0, "missing metadata is inserted as the empty text"},
    {"Playlist", "DeleteId", "Value", -1999, "a missing id reads as 0, which names no track: the action fails"},
    {"Playlist", "Read", "Id", 0, "Read answers the current track whatever the id"},
    {"Playlist", "ReadList", "IdList", 0, "a missing list lists nothing"},
};

// Names this object must answer 401 "Invalid Action" besides those of the host's services: the OpenHome
// actions it does not serve, and standard ones.
const char* const kNotServed[] = {"ProtocolInfo", "IdArrayChanged", "SeekSecondRelative", "Counters",
                                  "SourceCount",  "Attributes",     "Source",             "GetMediaInfo",
                                  "SetNextAVTransportURI", "play"};

class OpenHomeServicesDrift : public open_home_test::OpenHomeServiceFixture {
 protected:
  void SetUp() override {
    OpenHomeServiceFixture::SetUp();
    if (HasFatalFailure()) return;
    // The application answers 0 to every command.
    EXPECT_CALL(transfer_, Stop(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, Play(_, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, Pause(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, Seek(_, _, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(_, _, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, AttachPlaylistManager(_)).Times(AnyNumber()).WillRepeatedly(Return(0));
  }

  // Brings the playlist to the state `call` is made in and answers `in` with the first track's id put in.
  Args Prepare(const ValidCall& call, Args in) {
    EXPECT_EQ(Playlist().DeleteAll(), 0);
    SetTransportState("STOPPED");
    std::string first = "1";
    if (!call.emptyPlaylist) {
      first = std::to_string(AddTrack("http://media.example.org/1.flac", "<DIDL-Lite/>"));
      AddTrack("http://media.example.org/2.flac", "<DIDL-Lite/>");
    }
    for (auto& argument : in) {
      if (argument.second == kFirstId) argument.second = first;
    }
    return in;
  }
};

TEST_F(OpenHomeServicesDrift, TheTestKnowsAValidCallOfEveryDescribedActionWithItsInArgumentsInOrder) {
  const std::vector<ServedScpd> scpds = ScpdsAnsweredBy(HOST_Responder::OpenHomeServices);
  ASSERT_EQ(scpds.size(), 5u);
  ExpectCallsMatchScpds(kCalls, scpds);
}

TEST_F(OpenHomeServicesDrift, EveryDescribedActionAnswersExactlyItsOutArgumentsInOrder) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::OpenHomeServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      SCOPED_TRACE(std::string(served.service->name) + "." + action.name);
      const ValidCall* call = FindCall(kCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr);
      const int32_t result = Perform(action.name.c_str(), Prepare(*call, InArguments(action, *call)));
      ExpectAnsweredAsDescribed(result, Reply(), action);
    }
  }
}

TEST_F(OpenHomeServicesDrift, LeavingOutAnyRequiredInArgumentIsAnsweredInvalidArgs) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::OpenHomeServices)) {
    for (const ScpdAction& action : served.scpd.actions) {
      const ValidCall* call = FindCall(kCalls, served.service->name, action.name);
      ASSERT_NE(call, nullptr) << action.name;
      for (const std::string& omitted : action.InNames()) {
        SCOPED_TRACE(std::string(served.service->name) + "." + action.name + " without " + omitted);
        const int32_t result = Perform(action.name.c_str(), Prepare(*call, InArguments(action, *call, omitted)));
        const OptionalArgument* optional = FindOptional(kOptional, served.service->name, action.name, omitted);
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
