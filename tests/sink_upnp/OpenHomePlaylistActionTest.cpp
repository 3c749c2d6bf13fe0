// The Playlist actions that edit the OpenHome playlist or report it (Insert, DeleteId, DeleteAll, Read,
// ReadList, IdArray, TracksMax, Id, TransportState, Repeat, Shuffle, SetRepeat, SetShuffle), served
// through PerformAction on a started service: the exact OUT arguments and errors of each reply, the
// playlist afterwards, the variables of the store, what the eventing handlers are sent, and the commands
// the application receives when the current track changes.
//
// The application is a StrictMock: a test that sets no expectation for a call proves that the call is not
// made. Events are checked exactly: after each action a marker batch is sent to every OpenHome eventing
// thread, and everything a handler received before its marker is what the action sent it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "OpenHomeServiceFixture.h"
#include "RecordingEventHandler.h"
#include "ScopedFault.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {
namespace {

using ::testing::InSequence;
using ::testing::Mock;
using ::testing::Return;
using FP = DMR_CMN_FaultPoint;

// The texts of the n-th track a test adds; the tracks of a fresh service get the ids 1, 2, 3, ...
std::string TrackUri(int n) { return "http://192.168.1.20:8080/music/track" + std::to_string(n) + ".flac"; }
std::string TrackMeta(int n) {
  return "<DIDL-Lite><item><dc:title>Track " + std::to_string(n) + "</dc:title></item></DIDL-Lite>";
}
// TrackMeta(n) as the TrackList document carries it, with its markup escaped.
std::string EscapedTrackMeta(int n) {
  return "&lt;DIDL-Lite&gt;&lt;item&gt;&lt;dc:title&gt;Track " + std::to_string(n) +
         "&lt;/dc:title&gt;&lt;/item&gt;&lt;/DIDL-Lite&gt;";
}
// One TrackList entry of the n-th track.
std::string Entry(int n) {
  return "<Entry><Id>" + std::to_string(n) + "</Id><Uri>" + TrackUri(n) + "</Uri><Metadata>" +
         EscapedTrackMeta(n) + "</Metadata></Entry>";
}

// The IdArray text of `ids`: each id's low 32 bits big-endian, Base64 with padding.
std::string IdArrayText(const std::vector<uint64_t>& ids) {
  static const char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::vector<unsigned char> bytes;
  for (uint64_t id : ids) {
    for (int shift = 24; shift >= 0; shift -= 8)
      bytes.push_back(static_cast<unsigned char>((id >> shift) & 0xFF));
  }
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    uint32_t group = uint32_t{bytes[i]} << 16;
    if (i + 1 < bytes.size()) group |= uint32_t{bytes[i + 1]} << 8;
    if (i + 2 < bytes.size()) group |= uint32_t{bytes[i + 2]};
    text += kAlphabet[(group >> 18) & 63];
    text += kAlphabet[(group >> 12) & 63];
    text += i + 1 < bytes.size() ? kAlphabet[(group >> 6) & 63] : '=';
    text += i + 2 < bytes.size() ? kAlphabet[group & 63] : '=';
  }
  return text;
}

std::vector<uint64_t> IdsFromOneTo(uint64_t last) {
  std::vector<uint64_t> ids;
  for (uint64_t id = 1; id <= last; ++id) ids.push_back(id);
  return ids;
}

class OpenHomePlaylistActionFixture : public OpenHomeServiceFixture {
 protected:
  // Appends the tracks 1..count, in order, straight into the playlist; the first becomes current.
  void AddTracks(int count) {
    for (int n = 1; n <= count; ++n) {
      ASSERT_EQ(AddTrack(TrackUri(n), TrackMeta(n)), static_cast<uint64_t>(n));
    }
  }
  // The same for long playlists, without reading the playlist back after each track.
  void FillPlaylist(int count) {
    uint64_t last = 0;
    for (int n = 1; n <= count; ++n) {
      uint64_t id = 0;
      ASSERT_EQ(Playlist().Insert(TrackUri(n).c_str(), TrackMeta(n).c_str(), last, &id), 0);
      last = id;
    }
  }

  std::string Id() { return Variable(SINK_UPNP_PLAYLIST_ID); }
  std::string IdArray() { return Variable(SINK_UPNP_PLAYLIST_ID_ARRAY); }
};

// The reply holds "Uri" and then UPnP error `code` with its description, written once.
void ExpectReadError(const marlo::ActionResponse& reply, const std::string& uri, int32_t code) {
  EXPECT_EQ(reply.GetErrorCode(), code);
  EXPECT_EQ(reply.GetErrorCodeWriteCount(), 1u);
  ASSERT_NE(reply.GetErrorDescription(), nullptr);
  EXPECT_EQ(std::string(reply.GetErrorDescription()), Description(code));
  EXPECT_EQ(OutArguments(reply), (Args{{"Uri", uri}}));
}

// ---- TracksMax, Id ----------------------------------------------------------------------------------

class OpenHomePlaylistActionQuery : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionQuery, TracksMaxAnswersTheStoredMaximumOfAThousand) {
  EXPECT_EQ(Perform("TracksMax"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "1000"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionQuery, TracksMaxReadsTheStoreNotThePlaylistLimit) {
  SetVariable(SINK_UPNP_PLAYLIST_TRACKS_MAX, "250");
  EXPECT_EQ(Perform("TracksMax"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "250"}}));
}

TEST_F(OpenHomePlaylistActionQuery, TracksMaxFailsWhenItsValueCannotBeWritten) {
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
  EXPECT_EQ(Perform("TracksMax"), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomePlaylistActionQuery, IdAnswersTheStoredIdWhichStartsAtZero) {
  EXPECT_EQ(Perform("Id"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "0"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionQuery, IdAnswersWhatTheStoreHoldsNotThePlaylistPosition) {
  AddTracks(3);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "2");
  EXPECT_EQ(Perform("Id"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "2"}}));
  EXPECT_EQ(CurrentId(), 1u);
}

TEST_F(OpenHomePlaylistActionQuery, IdFailsWhenItsValueCannotBeWritten) {
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1);
  EXPECT_EQ(Perform("Id"), -1999);
  ExpectUntouched(Reply());
}

// ---- TransportState ---------------------------------------------------------------------------------

struct TransportStateRow {
  const char* stored;
  const char* reply;
};

class OpenHomePlaylistActionTransportState : public OpenHomePlaylistActionFixture,
                                             public ::testing::WithParamInterface<TransportStateRow> {};

TEST_P(OpenHomePlaylistActionTransportState, AnswersTheUpperCaseWordForTheStoredTransportState) {
  SetTransportState(GetParam().stored);
  EXPECT_EQ(Perform("TransportState"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", GetParam().reply}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionTransportState,
                         ::testing::Values(TransportStateRow{"STOPPED", "STOPPED"},
                                           TransportStateRow{"PLAYING", "PLAYING"},
                                           TransportStateRow{"TRANSITIONING", "BUFFERING"},
                                           TransportStateRow{"PAUSED_PLAYBACK", "PAUSED"},
                                           TransportStateRow{"NO_MEDIA_PRESENT", "STOPPED"}),
                         [](const ::testing::TestParamInfo<TransportStateRow>& row) {
                           return std::string(row.param.stored);
                         });

TEST_F(OpenHomePlaylistActionQuery, TransportStateReadsTheStandardStateNotThePlaylistOne) {
  SetTransportState("PLAYING");
  SetVariable(SINK_UPNP_PLAYLIST_TRANSPORT_STATE, "Paused");
  EXPECT_EQ(Perform("TransportState"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "PLAYING"}}));
}

TEST_F(OpenHomePlaylistActionQuery, TransportStateWhileRecordingGivesNoReplyAndFails) {
  for (const char* state : {"RECORDING", "PAUSED_RECORDING"}) {
    SCOPED_TRACE(state);
    SetTransportState(state);
    EXPECT_EQ(Perform("TransportState"), -1999);
    ExpectUntouched(Reply());
  }
}

TEST_F(OpenHomePlaylistActionQuery, TransportStateFailsWhenItsValueCannotBeWritten) {
  SetTransportState("PLAYING");
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
  EXPECT_EQ(Perform("TransportState"), -1999);
  ExpectUntouched(Reply());
}

// ---- Repeat, Shuffle, SetRepeat, SetShuffle ---------------------------------------------------------

struct Mode {
  const char* query;
  const char* set;
  const char* variable;
  SINK_UPNP_StateVariableName_t index;
  int (PLAYLIST_PlaylistManager::*get)();
  int32_t (PLAYLIST_PlaylistManager::*change)(int);
};

const Mode kRepeat{"Repeat",
                   "SetRepeat",
                   "Repeat",
                   SINK_UPNP_PLAYLIST_REPEAT,
                   &PLAYLIST_PlaylistManager::GetRepeat,
                   &PLAYLIST_PlaylistManager::SetRepeat};
const Mode kShuffle{"Shuffle",
                    "SetShuffle",
                    "Shuffle",
                    SINK_UPNP_PLAYLIST_SHUFFLE,
                    &PLAYLIST_PlaylistManager::GetShuffle,
                    &PLAYLIST_PlaylistManager::SetShuffle};

class OpenHomePlaylistActionMode : public OpenHomePlaylistActionFixture,
                                   public ::testing::WithParamInterface<Mode> {
 protected:
  int Flag() { return (Playlist().*GetParam().get)(); }
  void SetFlag(int on) { ASSERT_EQ((Playlist().*GetParam().change)(on), 0); }
  std::string Stored() { return Variable(GetParam().index); }
};

TEST_P(OpenHomePlaylistActionMode, QueryAnswersFalseWhileTheModeIsOff) {
  EXPECT_EQ(Perform(GetParam().query), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "false"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_P(OpenHomePlaylistActionMode, QueryAnswersTrueWhileThePlaylistHasTheModeOn) {
  SetFlag(1);
  EXPECT_EQ(Perform(GetParam().query), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "true"}}));
}

TEST_P(OpenHomePlaylistActionMode, QueryAnswersFromThePlaylistNotFromTheStore) {
  SetVariable(GetParam().index, "true");
  EXPECT_EQ(Perform(GetParam().query), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Value", "false"}}));
}

TEST_P(OpenHomePlaylistActionMode, QueryFailsWhenItsValueCannotBeWritten) {
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
  EXPECT_EQ(Perform(GetParam().query), -1999);
  ExpectUntouched(Reply());
}

TEST_P(OpenHomePlaylistActionMode, EachWordForOnSwitchesTheModeOnAndPublishesTrue) {
  for (const char* word : {"true", "1", "yes"}) {
    SCOPED_TRACE(word);
    SetFlag(0);
    SetVariable(GetParam().index, "false");
    EXPECT_EQ(Perform(GetParam().set, {{"Value", word}}), 0);
    ExpectUntouched(Reply());
    EXPECT_EQ(Flag(), 1);
    EXPECT_EQ(Stored(), "true");
    ExpectEvents({Event(GetParam().variable, "true")});
  }
}

TEST_P(OpenHomePlaylistActionMode, EachWordForOffSwitchesTheModeOffAndPublishesFalse) {
  for (const char* word : {"false", "0", "no"}) {
    SCOPED_TRACE(word);
    SetFlag(1);
    SetVariable(GetParam().index, "true");
    EXPECT_EQ(Perform(GetParam().set, {{"Value", word}}), 0);
    ExpectUntouched(Reply());
    EXPECT_EQ(Flag(), 0);
    EXPECT_EQ(Stored(), "false");
    ExpectEvents({Event(GetParam().variable, "false")});
  }
}

TEST_P(OpenHomePlaylistActionMode, SettingTheModeItAlreadyHasStillPublishes) {
  EXPECT_EQ(Perform(GetParam().set, {{"Value", "false"}}), 0);
  EXPECT_EQ(Flag(), 0);
  EXPECT_EQ(Stored(), "false");
  ExpectEvents({Event(GetParam().variable, "false")});
}

TEST_P(OpenHomePlaylistActionMode, CapitalisedTrueLeavesTheModeAndPublishesTheEmptyText) {
  SetFlag(1);
  SetVariable(GetParam().index, "true");
  EXPECT_EQ(Perform(GetParam().set, {{"Value", "TRUE"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(Flag(), 1);
  EXPECT_EQ(Stored(), "");
  ExpectEvents({Event(GetParam().variable, "")});
}

TEST_P(OpenHomePlaylistActionMode, AnyOtherWordLeavesTheModeAndPublishesTheEmptyTextWithoutAnError) {
  for (const char* word : {"on", "True", "2", "", " true"}) {
    SCOPED_TRACE(std::string("\"") + word + "\"");
    SetVariable(GetParam().index, "false");
    EXPECT_EQ(Perform(GetParam().set, {{"Value", word}}), 0);
    ExpectUntouched(Reply());
    EXPECT_EQ(Flag(), 0);
    EXPECT_EQ(Stored(), "");
    ExpectEvents({Event(GetParam().variable, "")});
  }
}

TEST_P(OpenHomePlaylistActionMode, MissingValueIsAnsweredInvalidArgsAndChangesNothing) {
  EXPECT_EQ(Perform(GetParam().set), 0);
  ExpectError(Reply(), 402);
  EXPECT_EQ(Flag(), 0);
  EXPECT_EQ(Stored(), "false");
  ExpectEvents({});
}

TEST_P(OpenHomePlaylistActionMode, FailedEventLeavesTheStoreAsItWasAndFailsTheAction) {
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, -1);
    EXPECT_EQ(Perform(GetParam().set, {{"Value", "true"}}), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectUntouched(Reply());
  // The playlist is switched before the event is tried.
  EXPECT_EQ(Flag(), 1);
  EXPECT_EQ(Stored(), "false");
  ExpectEvents({});
}

TEST_P(OpenHomePlaylistActionMode, EventWithoutMemoryIsReportedAsNoMemory) {
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, -989);
    EXPECT_EQ(Perform(GetParam().set, {{"Value", "yes"}}), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Flag(), 1);
  EXPECT_EQ(Stored(), "false");
  ExpectEvents({});
}

TEST_P(OpenHomePlaylistActionMode, NoMemoryForThePublishedTextsIsReportedAsNoMemory) {
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(Perform(GetParam().set, {{"Value", "yes"}}), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectUntouched(Reply());
  EXPECT_EQ(Flag(), 1);
  EXPECT_EQ(Stored(), "false");
  ExpectEvents({});
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionMode, ::testing::Values(kRepeat, kShuffle),
                         [](const ::testing::TestParamInfo<Mode>& row) {
                           return std::string(row.param.query);
                         });

TEST_F(OpenHomePlaylistActionQuery, SetShuffleYesSwitchesShuffleOnAndEventsTrue) {
  AddTracks(3);
  EXPECT_EQ(Perform("SetShuffle", {{"Value", "yes"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(Playlist().GetShuffle(), 1);
  EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "true");
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2, 3}));
  ExpectEvents({Event("Shuffle", "true")});
}

TEST_F(OpenHomePlaylistActionQuery, SetShuffleTrueInCapitalsEventsAndStoresTheEmptyTextAndKeepsTheMode) {
  EXPECT_EQ(Perform("SetShuffle", {{"Value", "TRUE"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(Playlist().GetShuffle(), 0);
  EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "");
  ExpectEvents({Event("Shuffle", "")});
}

TEST_F(OpenHomePlaylistActionQuery, SetRepeatDoesNotTouchShuffleNorTheOtherVariables) {
  EXPECT_EQ(Perform("SetRepeat", {{"Value", "true"}}), 0);
  EXPECT_EQ(Playlist().GetShuffle(), 0);
  EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "false");
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "");
}

// ---- IdArray ----------------------------------------------------------------------------------------

class OpenHomePlaylistActionIdArray : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionIdArray, EmptyPlaylistAnswersTokenOneAndAnEmptyArray) {
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", ""}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionIdArray, IdsOneAndTwoAnswerTokenOneAndTheirBase64Text) {
  AddTracks(2);
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", "AAAAAQAAAAI="}}));
}

TEST_F(OpenHomePlaylistActionIdArray, ThreeIdsNeedNoPadding) {
  AddTracks(3);
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", "AAAAAQAAAAIAAAAD"}}));
}

TEST_F(OpenHomePlaylistActionIdArray, ListsTheIdsInPlaylistOrderAndTheTokenNeverChanges) {
  AddTracks(3);
  uint64_t front = 0;
  ASSERT_EQ(Playlist().Insert("http://host/front.flac", "", 0, &front), 0);
  ASSERT_EQ(front, 4u);
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", "AAAABAAAAAEAAAACAAAAAw=="}}));
  int wasCurrent = 0;
  ASSERT_EQ(Playlist().DeleteId(2, &wasCurrent), 0);
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", IdArrayText({4, 1, 3})}}));
}

TEST_F(OpenHomePlaylistActionIdArray, ReadsThePlaylistNotTheStoredIdArray) {
  AddTracks(1);
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "stale");
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", "AAAAAQ=="}}));
}

TEST_F(OpenHomePlaylistActionIdArray, FullPlaylistListsEveryId) {
  FillPlaylist(1001);
  EXPECT_EQ(Perform("IdArray"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}, {"Array", IdArrayText(IdsFromOneTo(1001))}}));
}

TEST_F(OpenHomePlaylistActionIdArray, FailedTokenFailsTheActionBeforeTheArray) {
  AddTracks(2);
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
  EXPECT_EQ(Perform("IdArray"), -1999);
  ExpectUntouched(Reply());
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kActionResponseSetArgument), 1u);
}

TEST_F(OpenHomePlaylistActionIdArray, FailedArrayFailsTheActionAfterTheToken) {
  AddTracks(2);
  ScopedFault fault(FP::kActionResponseSetArgument, 2, -1997);
  EXPECT_EQ(Perform("IdArray"), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Token", "1"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
}

// ---- Read -------------------------------------------------------------------------------------------

class OpenHomePlaylistActionRead : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionRead, EmptyPlaylistAnswersEmptyUriAndMeta) {
  EXPECT_EQ(Perform("Read", {{"Id", "1"}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Uri", ""}, {"Meta", ""}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionRead, CurrentTrackIsAnsweredInFullYetTheActionFails) {
  AddTracks(3);
  EXPECT_EQ(Perform("Read", {{"Id", "1"}}), -1999);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Uri", TrackUri(1)}, {"Meta", TrackMeta(1)}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionRead, AnyIdAnswersTheCurrentTrackNotTheOneNamed) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(1), nullptr);
  for (const char* id : {"3", "1", "99", "x"}) {
    SCOPED_TRACE(id);
    EXPECT_EQ(Perform("Read", {{"Id", id}}), -1999);
    EXPECT_EQ(OutArguments(Reply()), (Args{{"Uri", TrackUri(2)}, {"Meta", TrackMeta(2)}}));
  }
  EXPECT_EQ(CurrentId(), 2u);
}

TEST_F(OpenHomePlaylistActionRead, MissingIdIsNotLookedAt) {
  AddTracks(1);
  EXPECT_EQ(Perform("Read"), -1999);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"Uri", TrackUri(1)}, {"Meta", TrackMeta(1)}}));
}

TEST_F(OpenHomePlaylistActionRead, MetaAnsweringATableNumberIsRepliedWithThatErrorAndCompletes) {
  AddTracks(2);
  for (int32_t code : {402, 701, 714, 715, 716, 717, 718}) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kActionResponseSetArgument, 2, code);
    EXPECT_EQ(Perform("Read", {{"Id", "2"}}), 0);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectReadError(Reply(), TrackUri(1), code);
  }
}

TEST_F(OpenHomePlaylistActionRead, MetaAnsweringANumberOutsideTheTableFailsWithoutAnError) {
  AddTracks(2);
  for (int32_t code : {-1, -1997, 705, 711}) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kActionResponseSetArgument, 2, code);
    EXPECT_EQ(Perform("Read", {{"Id", "1"}}), -1999);
    EXPECT_EQ(OutArguments(Reply()), (Args{{"Uri", TrackUri(1)}}));
    EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  }
}

// ---- ReadList ---------------------------------------------------------------------------------------

class OpenHomePlaylistActionReadList : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionReadList, EmptyIdListAnswersTheOpeningDirectlyFollowedByTheClosing) {
  AddTracks(2);
  EXPECT_EQ(Perform("ReadList", {{"IdList", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"TrackList", "<TrackList></TrackList>"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionReadList, MissingIdListAnswersAnEmptyTrackList) {
  AddTracks(2);
  EXPECT_EQ(Perform("ReadList"), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"TrackList", "<TrackList></TrackList>"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
}

TEST_F(OpenHomePlaylistActionReadList, OneIdAnswersItsEntryWithTheMetadataEscaped) {
  AddTracks(3);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "2"}}), 0);
  EXPECT_EQ(
      OutArguments(Reply()),
      (Args{{"TrackList",
             "<TrackList><Entry><Id>2</Id><Uri>http://192.168.1.20:8080/music/track2.flac</Uri><Metadata>"
             "&lt;DIDL-Lite&gt;&lt;item&gt;&lt;dc:title&gt;Track 2&lt;/dc:title&gt;&lt;/item&gt;"
             "&lt;/DIDL-Lite&gt;</Metadata></Entry></TrackList>"}}));
}

TEST_F(OpenHomePlaylistActionReadList, IdNamedTwiceIsListedTwiceAndAnUnknownIdAddsNothing) {
  AddTracks(5);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "5 99 5"}}), 0);
  EXPECT_EQ(OutArguments(Reply()),
            (Args{{"TrackList", "<TrackList>" + Entry(5) + Entry(5) + "</TrackList>"}}));
}

TEST_F(OpenHomePlaylistActionReadList, EntriesFollowTheIdListNotThePlaylist) {
  AddTracks(3);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "3 1 2"}}), 0);
  EXPECT_EQ(OutArguments(Reply()),
            (Args{{"TrackList", "<TrackList>" + Entry(3) + Entry(1) + Entry(2) + "</TrackList>"}}));
}

TEST_F(OpenHomePlaylistActionReadList, PiecesAreReadAsLeadingDecimalNumbersBetweenSingleBlanks) {
  AddTracks(3);
  // Two blanks leave an empty piece (no track); "x" reads as 0 (no track); "2abc" reads as 2; "010" is
  // decimal ten (no track), not octal eight.
  EXPECT_EQ(Perform("ReadList", {{"IdList", "1  x 2abc 010 3"}}), 0);
  EXPECT_EQ(OutArguments(Reply()),
            (Args{{"TrackList", "<TrackList>" + Entry(1) + Entry(2) + Entry(3) + "</TrackList>"}}));
}

TEST_F(OpenHomePlaylistActionReadList, UriIsWrittenAsStoredAndEveryMarkupCharacterOfTheMetadataIsEscaped) {
  uint64_t id = 0;
  ASSERT_EQ(Playlist().Insert("http://host/a.flac?x=1&y=<2>", "<t a=\"1\">Rock & 'Roll' &amp;</t>", 0, &id),
            0);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "1"}}), 0);
  EXPECT_EQ(OutArguments(Reply()),
            (Args{{"TrackList",
                   "<TrackList><Entry><Id>1</Id><Uri>http://host/a.flac?x=1&y=<2></Uri><Metadata>"
                   "&lt;t a=&quot;1&quot;&gt;Rock &amp; &apos;Roll&apos; &amp;amp;&lt;/t&gt;"
                   "</Metadata></Entry></TrackList>"}}));
}

TEST_F(OpenHomePlaylistActionReadList, DoesNotMoveTheCurrentTrack) {
  AddTracks(3);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "3"}}), 0);
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "0");
}

TEST_F(OpenHomePlaylistActionReadList, TrackListAnsweringATableNumberIsRepliedWithThatError) {
  AddTracks(1);
  for (int32_t code : {402, 701, 714, 715, 716, 717, 718}) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kActionResponseSetArgument, 1, code);
    EXPECT_EQ(Perform("ReadList", {{"IdList", "1"}}), 0);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectError(Reply(), code);
  }
}

TEST_F(OpenHomePlaylistActionReadList, TrackListAnsweringMinusOneStillCompletesTheAction) {
  AddTracks(1);
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1);
  EXPECT_EQ(Perform("ReadList", {{"IdList", "1"}}), 0);
  EXPECT_EQ(fault.Fired(), 1u);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomePlaylistActionReadList, TrackListAnsweringAnotherNumberFailsTheAction) {
  AddTracks(1);
  for (int32_t code : {-1997, -1998, 705, 1}) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kActionResponseSetArgument, 1, code);
    EXPECT_EQ(Perform("ReadList", {{"IdList", "1"}}), -1999);
    ExpectUntouched(Reply());
  }
}

// ---- Insert -----------------------------------------------------------------------------------------

class OpenHomePlaylistActionInsert : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionInsert,
       IntoAnEmptyPlaylistAnswersNewIdOneStoresItAndHandsTheTrackOverWithoutPlaying) {
  {
    InSequence order;
    ExpectSetUri(TrackUri(1), TrackMeta(1));
  }
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), 0);
  VerifyTransfer();
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "1");
  EXPECT_EQ(IdArray(), "AAAAAQ==");
  // The new Id is stored but not evented here; only the IdArray is.
  ExpectEvents({Event("IdArray", "AAAAAQ==")});
}

TEST_F(OpenHomePlaylistActionInsert, BehindTheLastTrackAppendsAndLeavesTheCurrentTrackAlone) {
  AddTracks(2);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "2"}, {"Uri", TrackUri(3)}, {"Metadata", TrackMeta(3)}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "3"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2, 3}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "AAAAAQAAAAIAAAAD");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAIAAAAD")});
}

TEST_F(OpenHomePlaylistActionInsert, BehindATrackInTheMiddlePlacesItThere) {
  AddTracks(3);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "1"}, {"Uri", "http://host/new.flac"}, {"Metadata", "new"}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "4"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 4, 2, 3}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(IdArray(), "AAAAAQAAAAQAAAACAAAAAw==");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAQAAAACAAAAAw==")});
}

TEST_F(OpenHomePlaylistActionInsert, AtTheFrontWhileTheFirstTrackIsCurrentMakesTheNewTrackCurrent) {
  AddTracks(3);
  {
    InSequence order;
    ExpectSetUri("http://host/front.flac", "front");
  }
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", "http://host/front.flac"}, {"Metadata", "front"}}),
            0);
  VerifyTransfer();
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "4"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{4, 1, 2, 3}));
  EXPECT_EQ(CurrentId(), 4u);
  EXPECT_EQ(Id(), "4");
  EXPECT_EQ(IdArray(), "AAAABAAAAAEAAAACAAAAAw==");
  ExpectEvents({Event("IdArray", "AAAABAAAAAEAAAACAAAAAw==")});
}

TEST_F(OpenHomePlaylistActionInsert, AtTheFrontWhileALaterTrackIsCurrentLeavesTheTransportAlone) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(2), nullptr);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", "http://host/front.flac"}, {"Metadata", "front"}}),
            0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "4"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{4, 1, 2, 3}));
  // The position does not follow the shift: it now names the track that moved into it.
  EXPECT_EQ(CurrentId(), 2u);
  EXPECT_EQ(Id(), "0");
  ExpectEvents({Event("IdArray", "AAAABAAAAAEAAAACAAAAAw==")});
}

TEST_F(OpenHomePlaylistActionInsert, HexadecimalAfterIdInsertsBehindTheTrackWithThatId) {
  AddTracks(17);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0x10"}, {"Uri", "http://host/hex.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "18"}}));
  const std::vector<uint64_t> expected{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 18, 17};
  EXPECT_EQ(TrackIds(), expected);
  EXPECT_EQ(IdArray(), IdArrayText(expected));
  ExpectEvents({Event("IdArray", IdArrayText(expected))});
}

TEST_F(OpenHomePlaylistActionInsert, AfterIdWithALeadingZeroIsOctal) {
  AddTracks(9);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "010"}, {"Uri", "http://host/octal.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "10"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2, 3, 4, 5, 6, 7, 8, 10, 9}));
}

TEST_F(OpenHomePlaylistActionInsert, AfterIdThatIsNoNumberInsertsAtTheFront) {
  AddTracks(2);
  ASSERT_NE(Playlist().SeekIndexTrackData(1), nullptr);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "last"}, {"Uri", "http://host/word.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "3"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{3, 1, 2}));
}

TEST_F(OpenHomePlaylistActionInsert, UnknownAfterIdGetsNoNewIdFailsAndUsesAnIdUp) {
  AddTracks(2);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "99"}, {"Uri", "http://host/lost.flac"}, {"Metadata", ""}}),
            -1999);
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2}));
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({});

  EXPECT_EQ(Perform("Insert", {{"AfterId", "2"}, {"Uri", "http://host/next.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "4"}}));
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2, 4}));
  ExpectEvents({Event("IdArray", "AAAAAQAAAAIAAAAE")});
}

TEST_F(OpenHomePlaylistActionInsert, MissingAfterIdOrUriIsAnsweredInvalidArgsAndChangesNothing) {
  AddTracks(1);
  for (const Args& in : {Args{{"Uri", "http://host/a.flac"}, {"Metadata", "m"}},
                         Args{{"AfterId", "1"}, {"Metadata", "m"}}, Args{}}) {
    SCOPED_TRACE(in.size());
    EXPECT_EQ(Perform("Insert", in), 0);
    ExpectError(Reply(), 402);
  }
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1}));
  ExpectEvents({});
  // No id was used up either.
  EXPECT_EQ(Perform("Insert", {{"AfterId", "1"}, {"Uri", "http://host/b.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "2"}}));
}

TEST_F(OpenHomePlaylistActionInsert, MissingMetadataIsTakenAsTheEmptyText) {
  {
    InSequence order;
    ExpectSetUri("http://host/bare.flac", "");
  }
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", "http://host/bare.flac"}}), 0);
  VerifyTransfer();
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
  const PLAYLIST_PlaylistData* track = Playlist().GetCurrentTrackData();
  ASSERT_NE(track, nullptr);
  ASSERT_NE(track->getMetaData(), nullptr);
  EXPECT_EQ(std::string(track->getMetaData()), "");
  ExpectEvents({Event("IdArray", "AAAAAQ==")});
}

TEST_F(OpenHomePlaylistActionInsert, WithAThousandTracksSucceedsOnceMore) {
  FillPlaylist(1000);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "1000"}, {"Uri", "http://host/last.flac"}, {"Metadata", ""}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1001"}}));
  EXPECT_EQ(TrackIds().size(), 1001u);
  EXPECT_EQ(IdArray(), IdArrayText(IdsFromOneTo(1001)));
  ExpectEvents({Event("IdArray", IdArrayText(IdsFromOneTo(1001)))});
}

TEST_F(OpenHomePlaylistActionInsert, WithThousandAndOneTracksFails) {
  FillPlaylist(1001);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "1001"}, {"Uri", "http://host/over.flac"}, {"Metadata", ""}}),
            -1999);
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds().size(), 1001u);
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionInsert, NoMemoryForTheTrackFailsTheActionAndUsesNoId) {
  {
    ScopedFault fault(FP::kMemoryAllocation, 1, 0);
    EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  EXPECT_EQ(Id(), "0");
  ExpectEvents({});
  {
    InSequence order;
    ExpectSetUri(TrackUri(1), TrackMeta(1));
  }
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), 0);
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
}

TEST_F(OpenHomePlaylistActionInsert, FailedNewIdFailsTheActionAfterTheTrackIsPlacedAndPublishesNothing) {
  {
    ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997);
    EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1}));
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionInsert, FailedIdArrayEventStillStoresTheIdArrayAndCompletes) {
  AddTracks(1);
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, -1);
    EXPECT_EQ(Perform("Insert", {{"AfterId", "1"}, {"Uri", TrackUri(2)}, {"Metadata", TrackMeta(2)}}), 0);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "2"}}));
  EXPECT_EQ(IdArray(), "AAAAAQAAAAI=");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionInsert, TransportRefusingTheNewCurrentTrackIsRepliedButTheInsertCompletes) {
  {
    InSequence order;
    ExpectSetUri(TrackUri(1), TrackMeta(1), 714);
  }
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), 0);
  VerifyTransfer();
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
  EXPECT_EQ(Reply().GetErrorCode(), 714);
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 1u);
  ASSERT_NE(Reply().GetErrorDescription(), nullptr);
  EXPECT_EQ(std::string(Reply().GetErrorDescription()), Description(714));
  EXPECT_EQ(Id(), "1");
  EXPECT_EQ(IdArray(), "AAAAAQ==");
  ExpectEvents({Event("IdArray", "AAAAAQ==")});
}

TEST_F(OpenHomePlaylistActionInsert, NoMemoryForAnyTextAfterThePlacementStillCompletesWithTheNewId) {
  {
    // Neither the Id, nor the hand-over to the application, nor the IdArray can be copied.
    ScopedFault fault(FP::kStringAllocation, 1, -989, /*persistent=*/true);
    EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), 0);
    EXPECT_GE(fault.Fired(), 1u);
  }
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
  EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({});
}

// ---- DeleteId ---------------------------------------------------------------------------------------

class OpenHomePlaylistActionDeleteId : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionDeleteId, TrackOtherThanTheCurrentOneIsRemovedWithoutTouchingTheTransport) {
  AddTracks(3);
  SetTransportState("PLAYING");
  EXPECT_EQ(Perform("DeleteId", {{"Value", "3"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "AAAAAQAAAAI=");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAI=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, TrackBeforeTheCurrentOneKeepsTheCurrentTrack) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(2), nullptr);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "3");
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2, 3}));
  EXPECT_EQ(CurrentId(), 3u);
  EXPECT_EQ(Id(), "3");
  ExpectEvents({Event("IdArray", "AAAAAgAAAAM=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, ValueIsReadAsItsLeadingDecimalNumber) {
  AddTracks(3);
  EXPECT_EQ(Perform("DeleteId", {{"Value", " 2abc"}}), 0);
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 3}));
  ExpectEvents({Event("IdArray", "AAAAAQAAAAM=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, UnknownNegativeOrMissingIdFailsAndChangesNothing) {
  AddTracks(2);
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQAAAAI=");
  for (const Args& in :
       {Args{{"Value", "7"}}, Args{{"Value", "-1"}}, Args{{"Value", "x"}}, Args{{"Value", ""}}, Args{}}) {
    SCOPED_TRACE(in.empty() ? std::string("no Value") : "Value \"" + in.front().second + "\"");
    EXPECT_EQ(Perform("DeleteId", in), -1999);
    ExpectUntouched(Reply());
  }
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2}));
  EXPECT_EQ(IdArray(), "AAAAAQAAAAI=");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionDeleteId, PlayingCurrentTrackWithATrackAfterItStopsHandsTheNextOverAndPlaysIt) {
  AddTracks(3);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "1");
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(2), TrackMeta(2));
    ExpectPlay();
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2, 3}));
  EXPECT_EQ(CurrentId(), 2u);
  EXPECT_EQ(Id(), "2");
  EXPECT_EQ(IdArray(), "AAAAAgAAAAM=");
  ExpectEvents({Event("IdArray", "AAAAAgAAAAM=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, StoppedCurrentTrackOnlyHandsTheNextTrackOver) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(1), nullptr);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "2");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(3), TrackMeta(3));
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "2"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 3}));
  EXPECT_EQ(CurrentId(), 3u);
  EXPECT_EQ(Id(), "3");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAM=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, CurrentTrackInAnyStateButPlayingIsHandedOverWithoutPlay) {
  for (const char* state : {"TRANSITIONING", "PAUSED_PLAYBACK", "NO_MEDIA_PRESENT"}) {
    SCOPED_TRACE(state);
    ASSERT_EQ(Playlist().DeleteAll(), 0);
    const uint64_t first = AddTrack("http://host/first.flac", "first");
    const uint64_t second = AddTrack("http://host/second.flac", "second");
    SetTransportState(state);
    {
      InSequence order;
      ExpectStop();
      ExpectSetUri("http://host/second.flac", "second");
    }
    EXPECT_EQ(Perform("DeleteId", {{"Value", std::to_string(first)}}), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    EXPECT_EQ(Id(), std::to_string(second));
    ExpectEvents({Event("IdArray", IdArrayText({second}))});
  }
}

TEST_F(OpenHomePlaylistActionDeleteId, PlayingLastTrackWithRepeatOffHandsTheFirstTrackOverWithoutPlay) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(2), nullptr);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(1), TrackMeta(1));
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "3"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "1");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAI=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, PlayingLastTrackWithRepeatOnPlaysTheFirstTrack) {
  AddTracks(3);
  ASSERT_NE(Playlist().SeekIndexTrackData(2), nullptr);
  ASSERT_EQ(Playlist().SetRepeat(1), 0);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(1), TrackMeta(1));
    ExpectPlay();
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "3"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Id(), "1");
  ExpectEvents({Event("IdArray", "AAAAAQAAAAI=")});
}

TEST_F(OpenHomePlaylistActionDeleteId, OnlyTrackStopsAndClearsTheTransportAndKeepsTheStoredId) {
  AddTracks(1);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "1");
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQ==");
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri("", "");
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  EXPECT_EQ(CurrentId(), 0u);
  EXPECT_EQ(Id(), "1");
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({Event("IdArray", "")});
}

TEST_F(OpenHomePlaylistActionDeleteId, FailedIdArrayEventStillStoresTheIdArrayAndCompletes) {
  AddTracks(2);
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, -1);
    EXPECT_EQ(Perform("DeleteId", {{"Value", "2"}}), 0);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(IdArray(), "AAAAAQ==");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionDeleteId, StopWithAnUnknownNumberIsIgnoredAndThePlaybackStillMovesOn) {
  AddTracks(2);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(999);
    ExpectSetUri(TrackUri(2), TrackMeta(2));
    ExpectPlay();
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(Id(), "2");
  ExpectEvents({Event("IdArray", "AAAAAg==")});
}

TEST_F(OpenHomePlaylistActionDeleteId, StopWithAnUnknownNumberOnTheOnlyTrackStillCompletes) {
  AddTracks(1);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop(-5);
    ExpectSetUri("", "");
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  ExpectEvents({Event("IdArray", "")});
}

TEST_F(OpenHomePlaylistActionDeleteId, UnknownNumberFromTheLastCommandFailsTheActionAndPublishesNothing) {
  AddTracks(2);
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQAAAAI=");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(2), TrackMeta(2), 999);
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), -1999);
  VerifyTransfer();
  ExpectUntouched(Reply());
  // The track is gone and its successor recorded all the same.
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2}));
  EXPECT_EQ(Id(), "2");
  EXPECT_EQ(IdArray(), "AAAAAQAAAAI=");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionDeleteId, PlayAnsweringANumberItDoesNotReportFailsTheActionAndPublishesNothing) {
  AddTracks(2);
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(2), TrackMeta(2));
    ExpectPlay(705);
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), -1999);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2}));
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({});
}

TEST_F(OpenHomePlaylistActionDeleteId, NoMemoryForTheHandOverIsNotAFailureOfTheAction) {
  AddTracks(2);
  {
    InSequence order;
    ExpectStop();
  }
  {
    // The copies of the next track's texts fail, so the application only hears the Stop; only an
    // unknown answer of the application fails the action.
    ScopedFault fault(FP::kStringAllocation, 1, -989, /*persistent=*/true);
    EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
    EXPECT_GE(fault.Fired(), 1u);
  }
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2}));
  EXPECT_EQ(CurrentId(), 2u);
  ExpectEvents({});
}

// One answer of the application while the playing current track is deleted and the next one loaded.
class OpenHomePlaylistActionDeleteIdAnswer : public OpenHomePlaylistActionFixture,
                                             public ::testing::WithParamInterface<int32_t> {
 protected:
  void SetUp() override {
    OpenHomePlaylistActionFixture::SetUp();
    if (HasFatalFailure()) return;
    AddTracks(2);
    SetTransportState("PLAYING");
  }
  // The action completes with the error in the reply, the next track loaded and the IdArray published.
  void ExpectCompletedWithError() {
    ExpectError(Reply(), GetParam());
    EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{2}));
    EXPECT_EQ(Id(), "2");
    EXPECT_EQ(IdArray(), "AAAAAg==");
    ExpectEvents({Event("IdArray", "AAAAAg==")});
  }
};

class OpenHomePlaylistActionDeleteIdStop : public OpenHomePlaylistActionDeleteIdAnswer {};

TEST_P(OpenHomePlaylistActionDeleteIdStop, StopErrorIsRepliedAndTheNextTrackStillPlays) {
  {
    InSequence order;
    ExpectStop(GetParam());
    ExpectSetUri(TrackUri(2), TrackMeta(2));
    ExpectPlay();
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectCompletedWithError();
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionDeleteIdStop, ::testing::Values(402, 701, 705, 718));

class OpenHomePlaylistActionDeleteIdSetUri : public OpenHomePlaylistActionDeleteIdAnswer {};

TEST_P(OpenHomePlaylistActionDeleteIdSetUri, UriErrorIsRepliedAndPlayIsStillSent) {
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(2), TrackMeta(2), GetParam());
    ExpectPlay();
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectCompletedWithError();
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionDeleteIdSetUri,
                         ::testing::Values(402, 705, 714, 715, 716, 718));

class OpenHomePlaylistActionDeleteIdPlay : public OpenHomePlaylistActionDeleteIdAnswer {};

TEST_P(OpenHomePlaylistActionDeleteIdPlay, PlayErrorIsRepliedAndTheActionCompletes) {
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri(TrackUri(2), TrackMeta(2));
    ExpectPlay(GetParam());
  }
  EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
  VerifyTransfer();
  ExpectCompletedWithError();
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionDeleteIdPlay,
                         ::testing::Values(402, 701, 714, 715, 716, 717, 718));

// ---- DeleteAll --------------------------------------------------------------------------------------

class OpenHomePlaylistActionDeleteAll : public OpenHomePlaylistActionFixture {};

TEST_F(OpenHomePlaylistActionDeleteAll,
       EmptiesThePlaylistStopsAndClearsTheTransportAndPublishesAnEmptyIdArray) {
  AddTracks(3);
  SetVariable(SINK_UPNP_PLAYLIST_ID, "1");
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQAAAAIAAAAD");
  SetTransportState("PLAYING");
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri("", "");
  }
  EXPECT_EQ(Perform("DeleteAll"), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  EXPECT_EQ(CurrentId(), 0u);
  EXPECT_EQ(Id(), "1");
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({Event("IdArray", "")});
}

TEST_F(OpenHomePlaylistActionDeleteAll,
       OnAnEmptyPlaylistStillStopsAndClearsTheTransportAndEventsAnEmptyIdArray) {
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri("", "");
  }
  EXPECT_EQ(Perform("DeleteAll"), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({Event("IdArray", "")});
}

TEST_F(OpenHomePlaylistActionDeleteAll, IdsGoOnFromTheLastOneGivenAndTheModesStay) {
  AddTracks(2);
  ASSERT_EQ(Playlist().SetRepeat(1), 0);
  {
    InSequence order;
    ExpectStop();
    ExpectSetUri("", "");
    ExpectSetUri(TrackUri(3), TrackMeta(3));
  }
  EXPECT_EQ(Perform("DeleteAll"), 0);
  EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(3)}, {"Metadata", TrackMeta(3)}}), 0);
  VerifyTransfer();
  EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "3"}}));
  EXPECT_EQ(Playlist().GetRepeat(), 1);
  EXPECT_EQ(Id(), "3");
  ExpectEvents({Event("IdArray", ""), Event("IdArray", "AAAAAw==")});
}

TEST_F(OpenHomePlaylistActionDeleteAll, StopErrorIsRepliedAndTheTransportIsStillCleared) {
  for (int32_t code : {402, 701, 705, 718}) {
    SCOPED_TRACE(code);
    {
      InSequence order;
      ExpectStop(code);
      ExpectSetUri("", "");
    }
    EXPECT_EQ(Perform("DeleteAll"), 0);
    VerifyTransfer();
    ExpectError(Reply(), code);
    ExpectEvents({Event("IdArray", "")});
  }
}

TEST_F(OpenHomePlaylistActionDeleteAll, StopWithAnUnknownNumberIsIgnored) {
  AddTracks(1);
  {
    InSequence order;
    ExpectStop(999);
    ExpectSetUri("", "");
  }
  EXPECT_EQ(Perform("DeleteAll"), 0);
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  ExpectEvents({Event("IdArray", "")});
}

TEST_F(OpenHomePlaylistActionDeleteAll, UriErrorIsRepliedAndTheActionCompletes) {
  for (int32_t code : {402, 705, 714, 715, 716, 718}) {
    SCOPED_TRACE(code);
    {
      InSequence order;
      ExpectStop();
      ExpectSetUri("", "", code);
    }
    EXPECT_EQ(Perform("DeleteAll"), 0);
    VerifyTransfer();
    ExpectError(Reply(), code);
    ExpectEvents({Event("IdArray", "")});
  }
}

TEST_F(OpenHomePlaylistActionDeleteAll, NoMemoryForTheTextsStillStopsAndCompletes) {
  AddTracks(2);
  SetVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQAAAAI=");
  {
    InSequence order;
    ExpectStop();
  }
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989, /*persistent=*/true);
    EXPECT_EQ(Perform("DeleteAll"), 0);
    EXPECT_GE(fault.Fired(), 1u);
  }
  VerifyTransfer();
  ExpectUntouched(Reply());
  EXPECT_TRUE(TrackIds().empty());
  EXPECT_EQ(IdArray(), "AAAAAQAAAAI=");
  ExpectEvents({});
}

// ---- Every handler ----------------------------------------------------------------------------------

class OpenHomePlaylistActionHandler : public OpenHomePlaylistActionFixture,
                                      public ::testing::WithParamInterface<const char*> {};

TEST_P(OpenHomePlaylistActionHandler, NullRequestOrResponseFailsAtOnceAndTouchesNothing) {
  AddTracks(2);
  SetTransportState("PLAYING");
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("Value", "1"), 0);
  ASSERT_EQ(request.AddArgument("AfterId", "0"), 0);
  ASSERT_EQ(request.AddArgument("Uri", "http://host/x.flac"), 0);
  ASSERT_EQ(request.AddArgument("IdList", "1"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(CallHandler(GetParam(), nullptr, &response), -1);
  EXPECT_EQ(CallHandler(GetParam(), &request, nullptr), -1);
  ExpectUntouched(response);
  EXPECT_EQ(TrackIds(), (std::vector<uint64_t>{1, 2}));
  EXPECT_EQ(CurrentId(), 1u);
  EXPECT_EQ(Playlist().GetRepeat(), 0);
  EXPECT_EQ(Playlist().GetShuffle(), 0);
  EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_REPEAT), "false");
  EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "false");
  EXPECT_EQ(Id(), "0");
  EXPECT_EQ(IdArray(), "");
  ExpectEvents({});
}

INSTANTIATE_TEST_SUITE_P(, OpenHomePlaylistActionHandler,
                         ::testing::Values("Insert", "DeleteId", "DeleteAll", "Read", "ReadList", "IdArray",
                                           "TracksMax", "Id", "TransportState", "Repeat", "Shuffle",
                                           "SetRepeat", "SetShuffle"),
                         [](const ::testing::TestParamInfo<const char*>& row) {
                           return std::string(row.param);
                         });

}  // namespace
}  // namespace open_home_test
