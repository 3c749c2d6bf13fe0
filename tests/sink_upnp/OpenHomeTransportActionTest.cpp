// The OpenHome playback actions (Play, Pause, Stop, Next, Previous, SeekId, SeekIndex,
// SeekSecondAbsolute and the Product service's SourceIndex) and the transport operations they share, on a
// started service: which track each action chooses, what the application is told and in which order, the
// "Id" and "Seconds" variables, and how every answer of the application is turned into the reply and the
// result of PerformAction.
//
// The application is a StrictMock: any call a test does not expect fails it, so "the application is not
// called" holds in every test that sets no expectation for the call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "OpenHomeServiceFixture.h"
#include "ScopedFault.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "playlist/PlaylistData.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {
namespace {

using ::testing::InSequence;
using ::testing::Mock;
using ::testing::Return;
using FP = DMR_CMN_FaultPoint;
using Service = SINK_UPNP_OpenHomeUPnPService;
using Peer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;

// The transport states the application reports and the playback actions tell apart.
const std::vector<std::string> kKnownStates = {"STOPPED", "PLAYING", "TRANSITIONING", "PAUSED_PLAYBACK",
                                               "NO_MEDIA_PRESENT"};
// Transport states the store accepts but no playback action knows what to do with.
const std::vector<std::string> kUnknownStates = {"PAUSED_RECORDING", "RECORDING"};

bool StopsBeforeSeeking(const std::string& state) {
  return state == "PLAYING" || state == "TRANSITIONING" || state == "PAUSED_PLAYBACK";
}

// A number outside the UPnP error table, and the failures an application may answer instead of one.
constexpr int32_t kUnknownNumber = 501;

// The error numbers each transfer command may report, and the other answers it may give.
const std::vector<int32_t> kUriReported = {402, 705, 714, 715, 716, 718};
const std::vector<int32_t> kUriRefused = {701, 710, 711, 717, kUnknownNumber, -1, -989};
const std::vector<int32_t> kPlayReported = {402, 701, 714, 715, 716, 717, 718};
const std::vector<int32_t> kPlayRefused = {705, 710, 711, kUnknownNumber, -1, -989};
const std::vector<int32_t> kStopReported = {402, 701, 705, 718};
const std::vector<int32_t> kStopRefused = {710, 711, 714, 715, 716, 717, kUnknownNumber, -1, -989};
const std::vector<int32_t> kSeekReported = {402, 701, 705, 710, 711, 718};
const std::vector<int32_t> kSeekRefused = {714, 715, 716, 717, kUnknownNumber, -1, -989};
const std::vector<int32_t> kStepReported = {402, 701, 711, 718};
const std::vector<int32_t> kStepRefused = {705, 710, 714, 715, 716, 717, kUnknownNumber, -1, -989};
const std::vector<int32_t> kPauseReported = {402, 701, 718};
const std::vector<int32_t> kPauseRefused = {705, 710, 711, 714, 715, 716, 717, kUnknownNumber, -1, -989};

// What an action makes of one answer of the application.
struct Outcome {
  int32_t answer;   // the application's answer
  int32_t result;   // the result of PerformAction
  int32_t error;    // the UPnP error left in the reply, 0 for none
  unsigned writes;  // how many times that error was written
};

void ExpectOutcome(const marlo::ActionResponse& reply, const Outcome& outcome) {
  if (outcome.error == 0) {
    ExpectUntouched(reply);
  } else {
    ExpectError(reply, outcome.error, outcome.writes);
  }
}

std::string Answered(const std::string& what, int32_t answer) {
  return what + " answered " + std::to_string(answer);
}

struct Track {
  uint64_t id;
  std::string uri;
  std::string metadata;
};

class OpenHomeTransportAction : public OpenHomeServiceFixture {
 protected:
  // Appends `count` tracks; the first of them is current.
  void AddTracks(int count = 3) {
    for (int i = 1; i <= count; ++i) {
      const std::string n = std::to_string(tracks_.size() + 1);
      Track track;
      track.uri = "http://192.168.1.20:8080/music/track" + n + ".flac";
      track.metadata = "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"><item id=\"" + n +
                       "\"><dc:title>Track " + n + " &amp; friends</dc:title></item></DIDL-Lite>";
      track.id = AddTrack(track.uri, track.metadata);
      tracks_.push_back(track);
    }
  }

  void MakeCurrent(int32_t index) { ASSERT_NE(Playlist().SeekIndexTrackData(index), nullptr); }

  // The playlist is attached again right before every URI.
  void ExpectUri(const Track& track, int32_t answer) { ExpectSetUri(track.uri, track.metadata, answer); }

  std::string StoredId() { return Variable(SINK_UPNP_PLAYLIST_ID); }
  std::string Seconds() { return Variable(SINK_UPNP_TIME_SECONDS); }
  static std::string IdText(const Track& track) { return std::to_string(track.id); }

  std::vector<Track> tracks_;
};

// The transport operations, reached through the test peer.
class OpenHomeTransportActionOperation : public OpenHomeTransportAction {};

// The two actions that choose a neighbour of the current track.
struct Step {
  const char* action;
  int32_t from;   // the current index before the step, in a playlist of three
  int32_t loads;  // the index of the track the step loads
};
const Step kSteps[] = {{"Next", 0, 1}, {"Previous", 2, 1}};

// The two actions that jump to a chosen track, aimed at the second of three tracks.
struct Jump {
  const char* action;
  bool resetsSeconds;
};
const Jump kJumps[] = {{"SeekIndex", true}, {"SeekId", false}};

// --- The transport operations ---

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIAttachesThePlaylistRightBeforeHandingUriAndMetadata) {
  InSequence order;
  EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("http://host/a.flac"), StringIs("<DIDL-Lite/>")))
      .WillOnce(Return(0));
  marlo::ActionResponse reply;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "http://host/a.flac", "<DIDL-Lite/>", &reply), 0);
  ExpectUntouched(reply);
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIHandsANullUriOrMetadataOverAsEmptyText) {
  {
    InSequence order;
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(""), StringIs("<DIDL-Lite/>")))
        .WillOnce(Return(0));
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("http://host/a.flac"), StringIs("")))
        .WillOnce(Return(0));
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(""), StringIs(""))).WillOnce(Return(0));
  }
  marlo::ActionResponse first;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, nullptr, "<DIDL-Lite/>", &first), 0);
  marlo::ActionResponse second;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "http://host/a.flac", nullptr, &second), 0);
  marlo::ActionResponse third;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, nullptr, nullptr, &third), 0);
  ExpectUntouched(first);
  ExpectUntouched(second);
  ExpectUntouched(third);
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIDoesNotCareWhatTheApplicationAnswersToThePlaylist) {
  InSequence order;
  EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(-1));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("http://host/a.flac"), StringIs("m")))
      .WillOnce(Return(0));
  marlo::ActionResponse reply;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "http://host/a.flac", "m", &reply), 0);
  ExpectUntouched(reply);
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIAnswersZeroAfterWritingAnErrorItReports) {
  // The caller cannot tell these from success: it goes on as if the URI had been taken.
  for (int32_t code : kUriReported) {
    SCOPED_TRACE(Answered("SetAVTransportURI", code));
    InSequence order;
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("u"), StringIs("m"))).WillOnce(Return(code));
    marlo::ActionResponse reply;
    EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "u", "m", &reply), 0);
    ExpectError(reply, code);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIFailsWithoutWritingForAnyOtherAnswer) {
  for (int32_t code : kUriRefused) {
    SCOPED_TRACE(Answered("SetAVTransportURI", code));
    InSequence order;
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("u"), StringIs("m"))).WillOnce(Return(code));
    marlo::ActionResponse reply;
    EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "u", "m", &reply), -1);
    ExpectUntouched(reply);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIWithoutMemoryForACopyTellsTheApplicationNothing) {
  for (unsigned long copy : {1ul, 2ul}) {
    SCOPED_TRACE("copy " + std::to_string(copy));
    ScopedFault fault(FP::kStringAllocation, copy, -989);
    marlo::ActionResponse reply;
    EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "http://host/a.flac", "<DIDL-Lite/>", &reply), -989);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectUntouched(reply);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURIFailsGenericallyForAnyOtherCopyFailure) {
  for (unsigned long copy : {1ul, 2ul}) {
    for (int32_t code : {-1, -7}) {
      SCOPED_TRACE("copy " + std::to_string(copy) + " failing with " + std::to_string(code));
      ScopedFault fault(FP::kStringAllocation, copy, code);
      marlo::ActionResponse reply;
      EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "http://host/a.flac", "<DIDL-Lite/>", &reply), -1);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(reply);
      VerifyTransfer();
    }
  }
}

TEST_F(OpenHomeTransportActionOperation, SetAVTransportURICopiesNothingButUriAndMetadata) {
  // Two copies and no more: the failure tests above fail each of them.
  EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs("u"), StringIs("m"))).WillOnce(Return(0));
  DMR_CMN_FaultInjection::Reset();
  marlo::ActionResponse reply;
  EXPECT_EQ(Peer::SetAVTransportURI(service_, kHandle, "u", "m", &reply), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 2u);
}

// One command operation: what it sends, which numbers it reports and which it refuses.
struct Command {
  const char* name;
  std::vector<int32_t> reported;
  std::vector<int32_t> refused;
  std::function<void(MockTransferService&, int32_t)> expect;
  std::function<int32_t(Service&, marlo::ActionResponse*)> call;
};

std::vector<Command> Commands() {
  return {
      {"Play", kPlayReported, kPlayRefused,
       [](MockTransferService& transfer, int32_t answer) {
         EXPECT_CALL(transfer, Play(kHandle, 0, StringIs("1"))).WillOnce(Return(answer));
       },
       [](Service& service, marlo::ActionResponse* reply) { return Peer::Play(service, kHandle, reply); }},
      {"Stop", kStopReported, kStopRefused,
       [](MockTransferService& transfer, int32_t answer) {
         EXPECT_CALL(transfer, Stop(kHandle, 0)).WillOnce(Return(answer));
       },
       [](Service& service, marlo::ActionResponse* reply) { return Peer::Stop(service, kHandle, reply); }},
      {"Seek", kSeekReported, kSeekRefused,
       [](MockTransferService& transfer, int32_t answer) {
         EXPECT_CALL(transfer, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("0:01:30")))
             .WillOnce(Return(answer));
       },
       [](Service& service, marlo::ActionResponse* reply) {
         DMR_CMN_String unit;
         DMR_CMN_String target;
         EXPECT_EQ(unit.SetCString("REL_TIME"), 0);
         EXPECT_EQ(target.SetCString("0:01:30"), 0);
         return Peer::Seek(service, kHandle, &unit, &target, reply);
       }},
      {"Next", kStepReported, kStepRefused,
       [](MockTransferService& transfer, int32_t answer) {
         EXPECT_CALL(transfer, Next(kHandle, 0)).WillOnce(Return(answer));
       },
       [](Service& service, marlo::ActionResponse* reply) { return Peer::Next(service, kHandle, reply); }},
      {"Previous", kStepReported, kStepRefused,
       [](MockTransferService& transfer, int32_t answer) {
         EXPECT_CALL(transfer, Previous(kHandle, 0)).WillOnce(Return(answer));
       },
       [](Service& service, marlo::ActionResponse* reply) { return Peer::Previous(service, kHandle, reply); }},
  };
}

TEST_F(OpenHomeTransportActionOperation, CommandAnsweredZeroSucceedsWithNothingInTheReply) {
  for (const Command& command : Commands()) {
    SCOPED_TRACE(command.name);
    command.expect(transfer_, 0);
    marlo::ActionResponse reply;
    EXPECT_EQ(command.call(service_, &reply), 0);
    ExpectUntouched(reply);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportActionOperation, CommandWritesEachNumberItReportsAndAnswersThatNumber) {
  for (const Command& command : Commands()) {
    for (int32_t code : command.reported) {
      SCOPED_TRACE(Answered(command.name, code));
      command.expect(transfer_, code);
      marlo::ActionResponse reply;
      EXPECT_EQ(command.call(service_, &reply), code);
      ExpectError(reply, code);
      VerifyTransfer();
    }
  }
}

TEST_F(OpenHomeTransportActionOperation, CommandFailsGenericallyWithoutWritingForAnyOtherAnswer) {
  for (const Command& command : Commands()) {
    for (int32_t code : command.refused) {
      SCOPED_TRACE(Answered(command.name, code));
      command.expect(transfer_, code);
      marlo::ActionResponse reply;
      EXPECT_EQ(command.call(service_, &reply), -1);
      ExpectUntouched(reply);
      VerifyTransfer();
    }
  }
}

TEST_F(OpenHomeTransportActionOperation, NextAndPreviousOnlyPassTheCommandOnAndLeaveThePlaylistAlone) {
  AddTracks();
  MakeCurrent(1);
  {
    InSequence order;
    EXPECT_CALL(transfer_, Next(kHandle, 0)).WillOnce(Return(0));
    EXPECT_CALL(transfer_, Previous(kHandle, 0)).WillOnce(Return(0));
  }
  marlo::ActionResponse next;
  EXPECT_EQ(Peer::Next(service_, kHandle, &next), 0);
  marlo::ActionResponse previous;
  EXPECT_EQ(Peer::Previous(service_, kHandle, &previous), 0);
  EXPECT_EQ(CurrentId(), tracks_[1].id);
  EXPECT_EQ(StoredId(), "0");
}

// --- Every handler ---

TEST_F(OpenHomeTransportAction, HandlerWithoutRequestOrReplyFailsWithoutCallingTheApplication) {
  AddTracks();
  for (const char* action : {"Stop", "Play", "Pause", "SeekSecondAbsolute", "Next", "Previous", "SeekId",
                             "SeekIndex", "SourceIndex"}) {
    SCOPED_TRACE(action);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName(action), 0);
    ASSERT_EQ(request.AddArgument("Value", "1"), 0);
    marlo::ActionResponse reply;
    EXPECT_EQ(CallHandler(action, nullptr, &reply), -1);
    ExpectUntouched(reply);
    EXPECT_EQ(CallHandler(action, &request, nullptr), -1);
  }
  EXPECT_EQ(StoredId(), "0");
  EXPECT_EQ(Seconds(), "0");
  EXPECT_EQ(CurrentId(), tracks_[0].id);
}

// --- Stop ---

TEST_F(OpenHomeTransportAction, StopSendsStopAndLeavesThePlaylistAndTheIdAlone) {
  AddTracks();
  MakeCurrent(2);
  SetVariable(SINK_UPNP_PLAYLIST_ID, IdText(tracks_[2]).c_str());
  for (const std::string& state : kKnownStates) {
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    ExpectStop(0);
    EXPECT_EQ(Perform("Stop"), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
    EXPECT_EQ(CurrentId(), tracks_[2].id);
    EXPECT_EQ(StoredId(), IdText(tracks_[2]));
  }
}

TEST_F(OpenHomeTransportAction, StopReportsTheNumbersOfStopAndFailsOnAnyOtherAnswer) {
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kStopReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kStopRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(Answered("Stop", outcome.answer));
    ExpectStop(outcome.answer);
    EXPECT_EQ(Perform("Stop"), outcome.result);
    ExpectOutcome(Reply(), outcome);
    VerifyTransfer();
  }
}

// --- Pause ---

TEST_F(OpenHomeTransportAction, PauseIsSentWhateverTheTransportState) {
  AddTracks();
  std::vector<std::string> states = kKnownStates;
  states.insert(states.end(), kUnknownStates.begin(), kUnknownStates.end());
  for (const std::string& state : states) {
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    EXPECT_CALL(transfer_, Pause(kHandle, 0)).WillOnce(Return(0));
    EXPECT_EQ(Perform("Pause"), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
  EXPECT_EQ(StoredId(), "0");
  EXPECT_EQ(CurrentId(), tracks_[0].id);
}

TEST_F(OpenHomeTransportAction, PauseReportsItsNumbersAndFailsOnAnyOtherAnswerTransportLockedIncluded) {
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kPauseReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kPauseRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(Answered("Pause", outcome.answer));
    EXPECT_CALL(transfer_, Pause(kHandle, 0)).WillOnce(Return(outcome.answer));
    EXPECT_EQ(Perform("Pause"), outcome.result);
    ExpectOutcome(Reply(), outcome);
    VerifyTransfer();
  }
}

// --- Play ---

TEST_F(OpenHomeTransportAction, PlayOnAnEmptyPlaylistWhileStoppedFailsAndWritesNothing) {
  SetTransportState("STOPPED");
  EXPECT_EQ(Perform("Play"), -1999);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportAction, PlayOnAnEmptyPlaylistFailsInEveryStateThatWouldLoadATrack) {
  for (const std::string& state : kKnownStates) {
    if (state == "PAUSED_PLAYBACK") continue;
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    EXPECT_EQ(Perform("Play"), -1999);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, PlayOnAnEmptyPlaylistWhilePausedStillResumes) {
  SetTransportState("PAUSED_PLAYBACK");
  ExpectPlay(0);
  EXPECT_EQ(Perform("Play"), 0);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeTransportAction, PlayWhilePausedResumesWithPlayAloneWithoutSettingTheUriAgain) {
  AddTracks();
  MakeCurrent(1);
  SetTransportState("PAUSED_PLAYBACK");
  ExpectPlay(0);
  EXPECT_EQ(Perform("Play"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), "0");
  EXPECT_EQ(CurrentId(), tracks_[1].id);
}

TEST_F(OpenHomeTransportAction, PlayWhilePlayingSendsTheCurrentTracksUriAndPlayAgain) {
  AddTracks();
  MakeCurrent(1);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectUri(tracks_[1], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Play"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[1]));
  EXPECT_EQ(CurrentId(), tracks_[1].id);
}

TEST_F(OpenHomeTransportAction, PlayInEveryStateButPausedLoadsTheCurrentTrackStoresItsIdAndPlaysIt) {
  AddTracks();
  MakeCurrent(2);
  for (const std::string& state : kKnownStates) {
    if (state == "PAUSED_PLAYBACK") continue;
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
    {
      InSequence order;
      ExpectUri(tracks_[2], 0);
      ExpectPlay(0);
    }
    EXPECT_EQ(Perform("Play"), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
    EXPECT_EQ(StoredId(), IdText(tracks_[2]));
    EXPECT_EQ(CurrentId(), tracks_[2].id);
  }
}

TEST_F(OpenHomeTransportAction, PlayStoresTheTracksIdBeforeTheApplicationIsHandedItsUri) {
  AddTracks();
  MakeCurrent(1);
  std::string idSeenByTheApplication;
  {
    InSequence order;
    EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
    EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(tracks_[1].uri), StringIs(tracks_[1].metadata)))
        .WillOnce([this, &idSeenByTheApplication](unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) {
          idSeenByTheApplication = StoredId();
          return 0;
        });
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Play"), 0);
  EXPECT_EQ(idSeenByTheApplication, IdText(tracks_[1]));
}

TEST_F(OpenHomeTransportAction, PlayInATransportStateItDoesNotKnowFailsWithoutCallingTheApplication) {
  AddTracks();
  for (const std::string& state : kUnknownStates) {
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    EXPECT_EQ(Perform("Play"), -1999);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportAction, PlayWithAnUnreadableTransportStateFailsWithoutCallingTheApplication) {
  // A state that cannot be read matches none of the states Play knows, not even the paused one.
  AddTracks();
  for (const char* state : {"STOPPED", "PAUSED_PLAYBACK", "PLAYING"}) {
    SCOPED_TRACE(state);
    SetTransportState(state);
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(Perform("Play"), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportAction, PlayReportsWhatPlayReportsAndFailsOnAnyOtherAnswerWhenLoading) {
  AddTracks();
  SetTransportState("STOPPED");
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kPlayReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kPlayRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(Answered("Play", outcome.answer));
    SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
    {
      InSequence order;
      ExpectUri(tracks_[0], 0);
      ExpectPlay(outcome.answer);
    }
    EXPECT_EQ(Perform("Play"), outcome.result);
    ExpectOutcome(Reply(), outcome);
    VerifyTransfer();
    EXPECT_EQ(StoredId(), IdText(tracks_[0]));
  }
}

TEST_F(OpenHomeTransportAction, PlayReportsWhatPlayReportsAndFailsOnAnyOtherAnswerWhenResuming) {
  AddTracks();
  SetTransportState("PAUSED_PLAYBACK");
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kPlayReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kPlayRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(Answered("Play", outcome.answer));
    ExpectPlay(outcome.answer);
    EXPECT_EQ(Perform("Play"), outcome.result);
    ExpectOutcome(Reply(), outcome);
    VerifyTransfer();
  }
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportAction, PlayStillSendsPlayAfterTheUriWasAnsweredWithAnErrorItReports) {
  AddTracks();
  for (int32_t code : kUriReported) {
    SCOPED_TRACE(Answered("SetAVTransportURI", code));
    {
      InSequence order;
      ExpectUri(tracks_[0], code);
      ExpectPlay(0);
    }
    EXPECT_EQ(Perform("Play"), 0);
    ExpectError(Reply(), code);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, PlayFailsWithoutSendingPlayWhenTheUriIsRefused) {
  AddTracks();
  for (int32_t code : kUriRefused) {
    SCOPED_TRACE(Answered("SetAVTransportURI", code));
    SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
    ExpectUri(tracks_[0], code);
    EXPECT_EQ(Perform("Play"), -1999);
    ExpectUntouched(Reply());
    VerifyTransfer();
    // The id is stored before the URI is handed over.
    EXPECT_EQ(StoredId(), IdText(tracks_[0]));
  }
}

TEST_F(OpenHomeTransportAction, PlayErrorReplacesTheErrorTheUriLeftInTheReply) {
  AddTracks();
  {
    InSequence order;
    ExpectUri(tracks_[0], 715);
    ExpectPlay(716);
  }
  EXPECT_EQ(Perform("Play"), 0);
  ExpectError(Reply(), 716, 2);
}

TEST_F(OpenHomeTransportAction, PlayAnswered716RepliesResourceNotFoundAndSucceeds) {
  AddTracks();
  {
    InSequence order;
    ExpectUri(tracks_[0], 0);
    ExpectPlay(716);
  }
  EXPECT_EQ(Perform("Play"), 0);
  ExpectError(Reply(), 716);
  EXPECT_STREQ(Reply().GetErrorDescription(), "Resource not found");
}

// --- Next and Previous ---

TEST_F(OpenHomeTransportAction, NextWhileStoppedStillSendsStopFirst) {
  AddTracks();
  SetTransportState("STOPPED");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[1], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Next"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[1]));
  EXPECT_EQ(CurrentId(), tracks_[1].id);
}

TEST_F(OpenHomeTransportAction, NextAndPreviousStopThenLoadAndPlayTheNeighbourWhateverTheTransportState) {
  AddTracks();
  std::vector<std::string> states = kKnownStates;
  states.insert(states.end(), kUnknownStates.begin(), kUnknownStates.end());
  for (const Step& step : kSteps) {
    for (const std::string& state : states) {
      SCOPED_TRACE(std::string(step.action) + " in " + state);
      MakeCurrent(step.from);
      SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
      SetTransportState(state.c_str());
      {
        InSequence order;
        ExpectStop(0);
        ExpectUri(tracks_[step.loads], 0);
        ExpectPlay(0);
      }
      EXPECT_EQ(Perform(step.action), 0);
      ExpectUntouched(Reply());
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[step.loads]));
      EXPECT_EQ(CurrentId(), tracks_[step.loads].id);
    }
  }
}

TEST_F(OpenHomeTransportAction, NextOnTheLastTrackWithoutRepeatStopsAndSetsTheLastTracksUriWithoutPlaying) {
  AddTracks();
  MakeCurrent(2);
  ASSERT_EQ(Playlist().SetRepeat(0), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[2], 0);
  }
  EXPECT_EQ(Perform("Next"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[2]));
  EXPECT_EQ(CurrentId(), tracks_[2].id);
}

TEST_F(OpenHomeTransportAction, NextOnTheLastTrackWithRepeatLoadsAndPlaysTheFirstTrack) {
  AddTracks();
  MakeCurrent(2);
  ASSERT_EQ(Playlist().SetRepeat(1), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[0], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Next"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[0]));
  EXPECT_EQ(CurrentId(), tracks_[0].id);
}

TEST_F(OpenHomeTransportAction, PreviousOnTheFirstTrackWithoutRepeatStopsAndSetsTheFirstTracksUriAgainWithoutPlaying) {
  AddTracks();
  ASSERT_EQ(Playlist().SetRepeat(0), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[0], 0);
  }
  EXPECT_EQ(Perform("Previous"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[0]));
  EXPECT_EQ(CurrentId(), tracks_[0].id);
}

TEST_F(OpenHomeTransportAction, PreviousOnTheFirstTrackWithRepeatLoadsAndPlaysTheLastTrack) {
  AddTracks();
  ASSERT_EQ(Playlist().SetRepeat(1), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[2], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Previous"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[2]));
  EXPECT_EQ(CurrentId(), tracks_[2].id);
}

TEST_F(OpenHomeTransportAction, PreviousInShuffledOrderStepsForwardToTheNextShuffledTrack) {
  // Shuffling two tracks with the current one kept first leaves the other one second, whatever the draw:
  // in normal order Previous from the first track would only set its URI again.
  AddTracks(2);
  ASSERT_EQ(Playlist().SetShuffle(1), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[1], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("Previous"), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[1]));
}

TEST_F(OpenHomeTransportAction, NextAndPreviousOnAnEmptyPlaylistSendOnlyStopAndAnswerWithItsResult) {
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}, {705, -1999, 705, 1}};
  for (int32_t code : {402, 701, 718}) outcomes.push_back({code, 0, code, 2});
  for (int32_t code : kStopRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const char* action : {"Next", "Previous"}) {
    for (bool repeat : {false, true}) {
      ASSERT_EQ(Playlist().SetRepeat(repeat ? 1 : 0), 0);
      for (const Outcome& outcome : outcomes) {
        SCOPED_TRACE(std::string(action) + (repeat ? " with repeat, " : ", ") + Answered("Stop", outcome.answer));
        ExpectStop(outcome.answer);
        EXPECT_EQ(Perform(action), outcome.result);
        ExpectOutcome(Reply(), outcome);
        VerifyTransfer();
        EXPECT_EQ(StoredId(), "0");
      }
    }
  }
}

TEST_F(OpenHomeTransportAction, NextAndPreviousLoadTheNeighbourWhateverStopAnswered) {
  AddTracks();
  std::vector<int32_t> answers = kStopReported;
  answers.insert(answers.end(), kStopRefused.begin(), kStopRefused.end());
  for (const Step& step : kSteps) {
    for (int32_t code : answers) {
      SCOPED_TRACE(std::string(step.action) + ", " + Answered("Stop", code));
      MakeCurrent(step.from);
      SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
      {
        InSequence order;
        ExpectStop(code);
        ExpectUri(tracks_[step.loads], 0);
        ExpectPlay(0);
      }
      EXPECT_EQ(Perform(step.action), 0);
      // Stop's own error, when it has one, stays in the reply; its result is not looked at.
      const bool reported = std::find(kStopReported.begin(), kStopReported.end(), code) != kStopReported.end();
      ExpectOutcome(Reply(), {code, 0, reported ? code : 0, 1});
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[step.loads]));
    }
  }
}

TEST_F(OpenHomeTransportAction, NextAndPreviousMapWhatPlayAnswers) {
  AddTracks();
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : {402, 701, 718}) outcomes.push_back({code, 0, code, 2});
  for (int32_t code : {714, 715, 716, 717}) outcomes.push_back({code, -1999, code, 1});
  for (int32_t code : kPlayRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Step& step : kSteps) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(step.action) + ", " + Answered("Play", outcome.answer));
      MakeCurrent(step.from);
      {
        InSequence order;
        ExpectStop(0);
        ExpectUri(tracks_[step.loads], 0);
        ExpectPlay(outcome.answer);
      }
      EXPECT_EQ(Perform(step.action), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
    }
  }
}

TEST_F(OpenHomeTransportAction, NextAndPreviousMapWhatTheUriAnswers) {
  AddTracks();
  std::vector<Outcome> outcomes;
  for (int32_t code : kUriReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kUriRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Step& step : kSteps) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(step.action) + ", " + Answered("SetAVTransportURI", outcome.answer));
      MakeCurrent(step.from);
      {
        InSequence order;
        ExpectStop(0);
        ExpectUri(tracks_[step.loads], outcome.answer);
        // A URI answered with an error the operation reports still counts as taken: Play follows.
        if (outcome.result == 0) ExpectPlay(0);
      }
      EXPECT_EQ(Perform(step.action), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
    }
  }
}

TEST_F(OpenHomeTransportAction, NextAndPreviousAtTheEndAnswerWithWhatTheUriAnswers) {
  AddTracks();
  ASSERT_EQ(Playlist().SetRepeat(0), 0);
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kUriReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kUriRefused) outcomes.push_back({code, -1999, 0, 0});
  const Step ends[] = {{"Next", 2, 2}, {"Previous", 0, 0}};
  for (const Step& step : ends) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(step.action) + " at the end, " + Answered("SetAVTransportURI", outcome.answer));
      MakeCurrent(step.from);
      {
        InSequence order;
        ExpectStop(0);
        ExpectUri(tracks_[step.loads], outcome.answer);
      }
      EXPECT_EQ(Perform(step.action), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[step.loads]));
    }
  }
}

TEST_F(OpenHomeTransportAction, NextAtTheEndSetsTheUriEvenWhenStopFailed) {
  AddTracks();
  MakeCurrent(2);
  {
    InSequence order;
    ExpectStop(701);
    ExpectUri(tracks_[2], 0);
  }
  EXPECT_EQ(Perform("Next"), 0);
  ExpectError(Reply(), 701);
}

// --- SeekIndex and SeekId ---

class OpenHomeTransportActionJump : public OpenHomeTransportAction {
 protected:
  // The IN arguments that aim `jump` at the track at `index`.
  Args AimedAt(const Jump& jump, int32_t index) {
    const std::string value =
        std::string(jump.action) == "SeekIndex" ? std::to_string(index) : IdText(tracks_[index]);
    return {{"Value", value}};
  }
  // Puts the first track back as the current one and marks Id and Seconds, so that a change shows.
  void Rewind() {
    MakeCurrent(0);
    SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
    SetVariable(SINK_UPNP_TIME_SECONDS, "37");
  }
  void ExpectSeconds(const Jump& jump) { EXPECT_EQ(Seconds(), jump.resetsSeconds ? "0" : "37"); }
};

TEST_F(OpenHomeTransportActionJump, SeekIndexTwoWhilePausedStopsLoadsAndPlaysTheThirdTrackAndResetsSeconds) {
  AddTracks();
  SetTransportState("PAUSED_PLAYBACK");
  SetVariable(SINK_UPNP_TIME_SECONDS, "37");
  {
    InSequence order;
    ExpectStop(0);
    ExpectUri(tracks_[2], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "2"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(StoredId(), IdText(tracks_[2]));
  EXPECT_EQ(CurrentId(), tracks_[2].id);
  EXPECT_EQ(Seconds(), "0");
}

TEST_F(OpenHomeTransportActionJump, LoadedTracksIdAndTheResetSecondsReachSubscribersAtTheNextSendEvent) {
  AddTracks();
  SetVariable(SINK_UPNP_TIME_SECONDS, "37");
  // Send what is already pending (the transport state and the seconds set above) out of the way.
  ASSERT_EQ(Store()->SendEvent(), 0);
  const std::size_t playlistBefore = Events(playlistHandler_, 1).size();
  const std::size_t timeBefore = Events(timeHandler_, 1).size();
  {
    InSequence order;
    ExpectUri(tracks_[2], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "2"}}), 0);
  ASSERT_EQ(Store()->SendEvent(), 0);
  const auto playlist = Events(playlistHandler_, playlistBefore + 1);
  ASSERT_EQ(playlist.size(), playlistBefore + 1);
  EXPECT_EQ(playlist.back(), (RecordingEventHandler::Batch{{"Id", IdText(tracks_[2])}}));
  const auto time = Events(timeHandler_, timeBefore + 1);
  ASSERT_EQ(time.size(), timeBefore + 1);
  EXPECT_EQ(time.back(), (RecordingEventHandler::Batch{{"Seconds", "0"}}));
}

TEST_F(OpenHomeTransportActionJump, SeekStopsFirstOnlyWhenPlayingTransitioningOrPaused) {
  AddTracks();
  for (const Jump& jump : kJumps) {
    for (const std::string& state : kKnownStates) {
      SCOPED_TRACE(std::string(jump.action) + " in " + state);
      Rewind();
      SetTransportState(state.c_str());
      {
        InSequence order;
        if (StopsBeforeSeeking(state)) ExpectStop(0);
        ExpectUri(tracks_[1], 0);
        ExpectPlay(0);
      }
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 1)), 0);
      ExpectUntouched(Reply());
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[1]));
      EXPECT_EQ(CurrentId(), tracks_[1].id);
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, SeekInATransportStateItDoesNotKnowMovesToTheTrackButLoadsNothing) {
  AddTracks();
  for (const Jump& jump : kJumps) {
    for (const std::string& state : kUnknownStates) {
      SCOPED_TRACE(std::string(jump.action) + " in " + state);
      Rewind();
      SetTransportState(state.c_str());
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 2)), -1999);
      ExpectUntouched(Reply());
      VerifyTransfer();
      EXPECT_EQ(StoredId(), "0");
      EXPECT_EQ(CurrentId(), tracks_[2].id);
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, SeekWithAnUnreadableTransportStateMovesToTheTrackButLoadsNothing) {
  AddTracks();
  for (const Jump& jump : kJumps) {
    for (const char* state : {"STOPPED", "PLAYING"}) {
      SCOPED_TRACE(std::string(jump.action) + " with " + state + " unreadable");
      Rewind();
      SetTransportState(state);
      ScopedFault fault(FP::kLockLock, 1, -1);
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 2)), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(Reply());
      VerifyTransfer();
      EXPECT_EQ(StoredId(), "0");
      EXPECT_EQ(CurrentId(), tracks_[2].id);
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, SeekWithoutValueIsAnsweredInvalidArgsAndChangesNothing) {
  AddTracks();
  SetTransportState("PLAYING");
  for (const Jump& jump : kJumps) {
    SCOPED_TRACE(jump.action);
    Rewind();
    EXPECT_EQ(Perform(jump.action, {{"value", "1"}}), 0);
    ExpectError(Reply(), 402);
    VerifyTransfer();
    EXPECT_EQ(StoredId(), "0");
    EXPECT_EQ(CurrentId(), tracks_[0].id);
    EXPECT_EQ(Seconds(), "37");
  }
}

TEST_F(OpenHomeTransportActionJump, SeekIndexNamingNoTrackIsAnsweredInvalidArgsAndChangesNothing) {
  AddTracks();
  SetTransportState("PLAYING");
  for (const char* value : {"-1", "3", "99", "-2147483648", "2147483647"}) {
    SCOPED_TRACE(std::string("SeekIndex ") + value);
    Rewind();
    EXPECT_EQ(Perform("SeekIndex", {{"Value", value}}), 0);
    ExpectError(Reply(), 402);
    VerifyTransfer();
    EXPECT_EQ(StoredId(), "0");
    EXPECT_EQ(CurrentId(), tracks_[0].id);
    EXPECT_EQ(Seconds(), "37");
  }
}

TEST_F(OpenHomeTransportActionJump, SeekIndexOnAnEmptyPlaylistIsAnsweredInvalidArgsAndChangesNothing) {
  SetTransportState("PLAYING");
  SetVariable(SINK_UPNP_TIME_SECONDS, "37");
  for (const char* value : {"0", "1", "-1"}) {
    SCOPED_TRACE(std::string("SeekIndex ") + value);
    EXPECT_EQ(Perform("SeekIndex", {{"Value", value}}), 0);
    ExpectError(Reply(), 402);
    VerifyTransfer();
    EXPECT_EQ(StoredId(), "0");
    EXPECT_EQ(Seconds(), "37");
  }
}

TEST_F(OpenHomeTransportActionJump, SeekIdNamingNoTrackIsAnsweredInvalidArgsAndChangesNothing) {
  AddTracks();
  int wasCurrent = 0;
  const uint64_t deleted = AddTrack("http://host/deleted.flac", "deleted");
  ASSERT_EQ(Playlist().DeleteId(static_cast<int32_t>(deleted), &wasCurrent), 0);
  SetTransportState("PLAYING");
  for (const std::string& value :
       {std::string("0"), std::to_string(deleted), std::string("99"), std::string("-1"), std::string("none")}) {
    SCOPED_TRACE("SeekId " + value);
    Rewind();
    EXPECT_EQ(Perform("SeekId", {{"Value", value}}), 0);
    ExpectError(Reply(), 402);
    VerifyTransfer();
    EXPECT_EQ(StoredId(), "0");
    EXPECT_EQ(CurrentId(), tracks_[0].id);
    EXPECT_EQ(Seconds(), "37");
  }
}

TEST_F(OpenHomeTransportActionJump, SeekIdOnAnEmptyPlaylistIsAnsweredInvalidArgs) {
  SetTransportState("STOPPED");
  EXPECT_EQ(Perform("SeekId", {{"Value", "1"}}), 0);
  ExpectError(Reply(), 402);
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportActionJump, SeekIndexReadsItsValueTheWayAtoiDoes) {
  AddTracks();
  SetTransportState("STOPPED");
  const std::vector<std::pair<std::string, int>> values = {
      {"  1", 1}, {"1 and more", 1}, {"+2", 2}, {"no digits", 0}, {"", 0}, {"02", 2}};
  for (const auto& value : values) {
    SCOPED_TRACE("SeekIndex \"" + value.first + "\"");
    Rewind();
    {
      InSequence order;
      ExpectUri(tracks_[value.second], 0);
      ExpectPlay(0);
    }
    EXPECT_EQ(Perform("SeekIndex", {{"Value", value.first}}), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
    EXPECT_EQ(StoredId(), IdText(tracks_[value.second]));
    EXPECT_EQ(Seconds(), "0");
  }
}

TEST_F(OpenHomeTransportActionJump, SeekIndexBeyondIntMaxTakesTheAtoiResult) {
  AddTracks();
  SetTransportState("STOPPED");
  // 2^32 + 1 wraps to 1: the second track.
  {
    InSequence order;
    ExpectUri(tracks_[1], 0);
    ExpectPlay(0);
  }
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "4294967297"}}), 0);
  ExpectUntouched(Reply());
  VerifyTransfer();
  EXPECT_EQ(StoredId(), IdText(tracks_[1]));
  // 2^31 wraps to INT_MIN, which names no track.
  Rewind();
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "2147483648"}}), 0);
  ExpectError(Reply(), 402);
  VerifyTransfer();
  EXPECT_EQ(StoredId(), "0");
}

TEST_F(OpenHomeTransportActionJump, SeekIdReadsItsValueTheWayAtoiDoes) {
  AddTracks();
  SetTransportState("STOPPED");
  const std::vector<std::pair<std::string, int>> values = {{" " + IdText(tracks_[1]), 1},
                                                           {IdText(tracks_[2]) + "th", 2},
                                                           {"+" + IdText(tracks_[0]), 0}};
  for (const auto& value : values) {
    SCOPED_TRACE("SeekId \"" + value.first + "\"");
    Rewind();
    {
      InSequence order;
      ExpectUri(tracks_[value.second], 0);
      ExpectPlay(0);
    }
    EXPECT_EQ(Perform("SeekId", {{"Value", value.first}}), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
    EXPECT_EQ(StoredId(), IdText(tracks_[value.second]));
    EXPECT_EQ(CurrentId(), tracks_[value.second].id);
  }
}

TEST_F(OpenHomeTransportActionJump, SeekSkipsTheLoadWhenStopAnswersAnythingButZero) {
  AddTracks();
  SetTransportState("PLAYING");
  std::vector<Outcome> outcomes;
  for (int32_t code : kStopReported) outcomes.push_back({code, 0, code, 2});
  for (int32_t code : kStopRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Jump& jump : kJumps) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(jump.action) + ", " + Answered("Stop", outcome.answer));
      Rewind();
      ExpectStop(outcome.answer);
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 1)), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
      EXPECT_EQ(StoredId(), "0");
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, SeekMapsWhatPlayAnswers) {
  AddTracks();
  SetTransportState("STOPPED");
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : {402, 701, 718}) outcomes.push_back({code, 0, code, 2});
  for (int32_t code : {714, 715, 716, 717}) outcomes.push_back({code, -1999, code, 1});
  for (int32_t code : kPlayRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Jump& jump : kJumps) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(jump.action) + ", " + Answered("Play", outcome.answer));
      Rewind();
      {
        InSequence order;
        ExpectUri(tracks_[1], 0);
        ExpectPlay(outcome.answer);
      }
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 1)), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[1]));
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, SeekMapsWhatTheUriAnswers) {
  AddTracks();
  SetTransportState("STOPPED");
  std::vector<Outcome> outcomes;
  for (int32_t code : kUriReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kUriRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Jump& jump : kJumps) {
    for (const Outcome& outcome : outcomes) {
      SCOPED_TRACE(std::string(jump.action) + ", " + Answered("SetAVTransportURI", outcome.answer));
      Rewind();
      {
        InSequence order;
        ExpectUri(tracks_[1], outcome.answer);
        if (outcome.result == 0) ExpectPlay(0);
      }
      EXPECT_EQ(Perform(jump.action, AimedAt(jump, 1)), outcome.result);
      ExpectOutcome(Reply(), outcome);
      VerifyTransfer();
      EXPECT_EQ(StoredId(), IdText(tracks_[1]));
      ExpectSeconds(jump);
    }
  }
}

TEST_F(OpenHomeTransportActionJump, PlayAnswered716SucceedsForPlayButFailsSeekIndexWithTheSameTextInTheReply) {
  AddTracks();
  SetTransportState("STOPPED");
  {
    InSequence order;
    ExpectUri(tracks_[0], 0);
    ExpectPlay(716);
    ExpectUri(tracks_[1], 0);
    ExpectPlay(716);
  }
  EXPECT_EQ(Perform("Play"), 0);
  ExpectError(Reply(), 716);
  EXPECT_STREQ(Reply().GetErrorDescription(), "Resource not found");
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "1"}}), -1999);
  ExpectError(Reply(), 716);
  EXPECT_STREQ(Reply().GetErrorDescription(), "Resource not found");
}

// --- A string copy failing on the way to the application ---

// An action that loads a track in "STOPPED", with what it sends around the URI.
struct Loading {
  const char* action;
  Args in;
  int32_t from;   // the current index before
  int32_t loads;  // the index of the track whose URI it sets
  bool stops;     // Stop goes first
  bool plays;     // Play follows the URI
};

TEST_F(OpenHomeTransportAction, CopyFailingOnTheWayToTheApplicationFailsTheActionAfterTheIdWasStored) {
  AddTracks();
  SetTransportState("STOPPED");
  ASSERT_EQ(Playlist().SetRepeat(0), 0);
  const std::vector<Loading> loadings = {
      {"Play", {}, 1, 1, false, true},
      {"Next", {}, 0, 1, true, true},
      {"Next", {}, 2, 2, true, false},
      {"Previous", {}, 2, 1, true, true},
      {"Previous", {}, 0, 0, true, false},
      {"SeekIndex", {{"Value", "1"}}, 0, 1, false, true},
      {"SeekId", {{"Value", IdText(tracks_[2])}}, 0, 2, false, true},
  };
  for (const Loading& loading : loadings) {
    SCOPED_TRACE(std::string(loading.action) + " from index " + std::to_string(loading.from));
    // A first run counts the copies made until the application is handed the URI: the last two are the
    // URI's and the metadata's.
    unsigned long copies = 0;
    MakeCurrent(loading.from);
    SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
    {
      InSequence order;
      if (loading.stops) ExpectStop(0);
      EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
      EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(tracks_[loading.loads].uri),
                                               StringIs(tracks_[loading.loads].metadata)))
          .WillOnce([&copies](unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*) {
            copies = DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation);
            return 0;
          });
      if (loading.plays) ExpectPlay(0);
    }
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(Perform(loading.action, loading.in), 0);
    VerifyTransfer();
    ASSERT_GE(copies, 2u);
    for (unsigned long nth : {copies - 1, copies}) {
      for (int32_t code : {-989, -1}) {
        SCOPED_TRACE("copy " + std::to_string(nth) + " failing with " + std::to_string(code));
        MakeCurrent(loading.from);
        SetVariable(SINK_UPNP_PLAYLIST_ID, "0");
        SetVariable(SINK_UPNP_TIME_SECONDS, "37");
        if (loading.stops) ExpectStop(0);
        DMR_CMN_FaultInjection::Reset();
        ScopedFault fault(FP::kStringAllocation, nth, code);
        // No memory is not passed on: the action's own mapping makes a failure of it.
        EXPECT_EQ(Perform(loading.action, loading.in), -1999);
        EXPECT_EQ(fault.Fired(), 1u);
        ExpectUntouched(Reply());
        VerifyTransfer();
        EXPECT_EQ(StoredId(), IdText(tracks_[loading.loads]));
        if (std::string(loading.action) == "SeekIndex") {
          EXPECT_EQ(Seconds(), "0");
        }
      }
    }
  }
}

// --- SeekSecondAbsolute ---

TEST_F(OpenHomeTransportAction, SeekSecondAbsolute3725SeeksToRelativeTime1h02m05s) {
  EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("1:02:05"))).WillOnce(Return(0));
  EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "3725"}}), 0);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteWithMinusFiveFailsAndSendsNothing) {
  EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "-5"}}), -1999);
  ExpectUntouched(Reply());
}

// Beyond INT_MAX the value is what atoi makes of it: the long the text reads as, taken as a 32-bit int.
TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteBeyondIntMaxTakesTheAtoiResult) {
  // 2^32 + 3600 wraps to 3600.
  EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("1:00:00"))).WillOnce(Return(0));
  EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "4294970896"}}), 0);
  ExpectUntouched(Reply());
  VerifyTransfer();
  // 2^31 wraps to INT_MIN, and a run of digits past LONG_MAX saturates to -1: negative, so refused.
  for (const char* value : {"2147483648", "99999999999999999999"}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", value}}), -1999);
    ExpectUntouched(Reply());
  }
  // INT_MAX itself is 596523 hours, more than the five hour digits allow.
  EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "2147483647"}}), -1999);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteWithoutDigitsSeeksToTheStartOfTheTrack) {
  EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("0:00:00"))).WillOnce(Return(0));
  EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "no digits"}}), 0);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteFormatsHoursUnpaddedAndMinutesAndSecondsInTwoDigits) {
  const std::vector<std::pair<std::string, std::string>> targets = {
      {"0", "0:00:00"},           {"59", "0:00:59"},          {"60", "0:01:00"},
      {"3599", "0:59:59"},        {"3600", "1:00:00"},        {"36000", "10:00:00"},
      {" 90", "0:01:30"},         {"90 seconds", "0:01:30"},  {"+61", "0:01:01"},
      {"359999999", "99999:59:59"}, {"", "0:00:00"}};
  for (const auto& target : targets) {
    SCOPED_TRACE("Value \"" + target.first + "\"");
    EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs(target.second))).WillOnce(Return(0));
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", target.first}}), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteBeyond99999HoursOrNegativeFailsAndSendsNothing) {
  for (const char* value : {"360000000", "2147483647", "-1", "-3600", "-2147483648"}) {
    SCOPED_TRACE(value);
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", value}}), -1999);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteWithoutValueIsAnsweredInvalidArgs) {
  EXPECT_EQ(Perform("SeekSecondAbsolute"), 0);
  ExpectError(Reply(), 402);
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteReportsTheNumbersOfSeekAndFailsOnAnyOtherAnswer) {
  std::vector<Outcome> outcomes = {{0, 0, 0, 0}};
  for (int32_t code : kSeekReported) outcomes.push_back({code, 0, code, 1});
  for (int32_t code : kSeekRefused) outcomes.push_back({code, -1999, 0, 0});
  for (const Outcome& outcome : outcomes) {
    SCOPED_TRACE(Answered("Seek", outcome.answer));
    EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("0:01:30")))
        .WillOnce(Return(outcome.answer));
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "90"}}), outcome.result);
    ExpectOutcome(Reply(), outcome);
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteWithoutMemoryForItsTextsSendsNothing) {
  // Unit and target go to the application as strings of their own; without them nothing is sent.
  const std::vector<std::pair<int32_t, int32_t>> failures = {{-989, -1997}, {-1, -1999}};
  for (const auto& failure : failures) {
    SCOPED_TRACE("copies failing with " + std::to_string(failure.first));
    ScopedFault fault(FP::kStringAllocation, 1, failure.first, true);
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "90"}}), failure.second);
    EXPECT_GE(fault.Fired(), 1u);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
}

TEST_F(OpenHomeTransportAction, SeekSecondAbsoluteIgnoresTheTransportStateAndChangesNoVariable) {
  AddTracks();
  MakeCurrent(1);
  SetVariable(SINK_UPNP_TIME_SECONDS, "37");
  for (const std::string& state : kKnownStates) {
    SCOPED_TRACE(state);
    SetTransportState(state.c_str());
    EXPECT_CALL(transfer_, Seek(kHandle, 0, StringIs("REL_TIME"), StringIs("0:00:10"))).WillOnce(Return(0));
    EXPECT_EQ(Perform("SeekSecondAbsolute", {{"Value", "10"}}), 0);
    ExpectUntouched(Reply());
    VerifyTransfer();
  }
  EXPECT_EQ(Seconds(), "37");
  EXPECT_EQ(StoredId(), "0");
  EXPECT_EQ(CurrentId(), tracks_[1].id);
}

// --- SourceIndex ---

TEST_F(OpenHomeTransportAction, SourceIndexOnAnEmptyPlaylistAnswersValueZero) {
  EXPECT_EQ(Perform("SourceIndex"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "0"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
}

TEST_F(OpenHomeTransportAction, SourceIndexAnswersTheIdOfThePlaylistsCurrentTrack) {
  AddTracks();
  // Neither the "Id" variable nor the Product service's own source index is consulted.
  SetVariable(SINK_UPNP_PLAYLIST_ID, "77");
  SetVariable(SINK_UPNP_PRODUCT_SOURCE_INDEX, "5");
  for (int32_t index : {0, 2, 1}) {
    SCOPED_TRACE(index);
    MakeCurrent(index);
    EXPECT_EQ(Perform("SourceIndex", {{"Value", "9"}}), 0);
    EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", IdText(tracks_[index])}}));
    EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  }
  EXPECT_EQ(StoredId(), "77");
  EXPECT_EQ(CurrentId(), tracks_[1].id);
}

TEST_F(OpenHomeTransportAction, SourceIndexAnswersWithWhatWritingTheValueAnswered) {
  AddTracks();
  const std::vector<std::pair<int32_t, int32_t>> failures = {{-989, -1997}, {-1997, -1999}, {-1, -1999}};
  for (const auto& failure : failures) {
    SCOPED_TRACE("writing fails with " + std::to_string(failure.first));
    ScopedFault fault(FP::kActionResponseSetArgument, 1, failure.first);
    EXPECT_EQ(Perform("SourceIndex"), failure.second);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectUntouched(Reply());
  }
  for (int32_t code : {-989, -1997}) {
    SCOPED_TRACE("the handler, writing fails with " + std::to_string(code));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName("SourceIndex"), 0);
    marlo::ActionResponse reply;
    ScopedFault fault(FP::kActionResponseSetArgument, 1, code);
    EXPECT_EQ(CallHandler("SourceIndex", &request, &reply), code);
    ExpectUntouched(reply);
  }
}

TEST_F(OpenHomeTransportAction, SourceIndexOnAnEmptyPlaylistSucceedsEvenWhenTheValueCannotBeWritten) {
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
  EXPECT_EQ(Perform("SourceIndex"), 0);
  EXPECT_EQ(fault.Fired(), 1u);
  ExpectUntouched(Reply());
}

}  // namespace
}  // namespace open_home_test
