#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

#include "PlaylistTestPeer.h"
#include "PlaylistTestSupport.h"
#include "ScopedAllocationFailure.h"
#include "ScopedFault.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/ResultCode.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;
using Ids = std::vector<uint64_t>;

// ---- Lifecycle -------------------------------------------------------------------------------------

TEST(PlaylistLifecycle, NewPlaylistIsEmptyAtPositionZeroInNormalOrderWithoutRepeat) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
  EXPECT_EQ(playlist.GetRepeat(), 0);
  EXPECT_EQ(playlist.GetShuffle(), 0);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetCurrentTrackData(), nullptr);
}

TEST(PlaylistLifecycle, InitializeAndFinalizeDoNothingAndAnswerZero) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  EXPECT_EQ(playlist.Initialize(), SINK_UPNP_OK);
  EXPECT_EQ(playlist.Finalize(), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2}));
}

TEST(PlaylistLifecycle, DestroyingAFilledPlaylistFreesEveryTrack) {
  auto* playlist = new PLAYLIST_PlaylistManager;
  const long empty = LiveGlobalAllocations();
  AddTracks(playlist, 5);
  // Each track holds a node in the track list and one in the order list.
  ASSERT_GE(LiveGlobalAllocations() - empty, 10);
  const long filled = LiveGlobalAllocations();
  delete playlist;
  // Every node of the five tracks goes, and the lists' own: LeakSanitizer checks the texts besides.
  EXPECT_LE(LiveGlobalAllocations(), filled - 10);
  EXPECT_LE(LiveGlobalAllocations(), empty);
}

// ---- Insert --------------------------------------------------------------------------------------

TEST(PlaylistInsert, FirstTrackGetsIdOneAndBecomesCurrent) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetCurrentIndex(&playlist, 3);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  EXPECT_EQ(id, 1u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 1u);
}

TEST(PlaylistInsert, IntoAnEmptyPlaylistGivesTheIdAfterTheLastOneGiven) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  EXPECT_EQ(id, 4u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistInsert, TrackKeepsCopiesOfUriAndMetadata) {
  PLAYLIST_PlaylistManager playlist;
  std::string uri = "http://host/a.flac";
  std::string metadata = "<DIDL-Lite/>";
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert(uri.c_str(), metadata.c_str(), 0, &id), SINK_UPNP_OK);
  uri[0] = 'X';
  metadata[0] = 'X';
  const PLAYLIST_PlaylistData* track = playlist.GetSpecificIdTrackData(1);
  ASSERT_NE(track, nullptr);
  EXPECT_STREQ(track->getUri(), "http://host/a.flac");
  EXPECT_STREQ(track->getMetaData(), "<DIDL-Lite/>");
}

TEST(PlaylistInsert, AfterIdZeroPutsTheTrackFirstAndThePositionDoesNotFollow) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(1), nullptr);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{4, 1, 2, 3}));
  // The position still reads 1, which is now the track before the one that was current.
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  EXPECT_EQ(CurrentId(&playlist), 1u);
}

TEST(PlaylistInsert, AfterTheLastIdAppends) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 3, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 3, 4}));
}

TEST(PlaylistInsert, AfterTheCurrentTrackGoesRightBehindIt) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(1), nullptr);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 2, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 4, 3}));
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistInsert, AfterAnotherTrackGoesRightBehindIt) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 2, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 4, 3}));
}

TEST(PlaylistInsert, AfterAnUnknownIdFailsLeavesTheListAndUsesUpTheId) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 42, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(id, 4u);  // the consumed id is reported even though the call failed
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 3}));
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_EQ(playlist.GetTrackCount(), 3u);
  EXPECT_EQ(playlist.Insert("u", "m", 3, &id), SINK_UPNP_OK);
  EXPECT_EQ(id, 5u);  // two higher than the last id placed
}

TEST(PlaylistInsert, NonZeroAfterIdIntoAnEmptyPlaylistFailsAndUsesUpTheId) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 1, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(id, 1u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
  EXPECT_EQ(Peer::LastId(playlist), 1u);
}

TEST(PlaylistInsert, FailedPlacementInAOneTrackPlaylistStillSetsPositionZero) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  Peer::SetCurrentIndex(&playlist, 5);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 42, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistInsert, AfterIdIsComparedWithAllSixtyFourBits) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetLastId(&playlist, 0x100000000ull);
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  ASSERT_EQ(id, 0x100000001ull);
  EXPECT_EQ(playlist.Insert("u", "m", 1, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(playlist.Insert("u", "m", 0x100000001ull, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{0x100000001ull, 0x100000003ull}));
}

TEST(PlaylistInsert, OrderEntryGoesAtTheEndWithTheFormerCountEvenForATrackPlacedFirst) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{4, 1, 2, 3}));
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{0, 1, 2, 3}));
}

TEST(PlaylistInsert, OrderEntryValueIsTheNumberOfEntriesBeforeIt) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  Peer::SetOrder(&playlist, {1, 0});
  AddTrack(&playlist);
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{1, 0, 2}));
}

TEST(PlaylistInsert, ThousandAndFirstTrackIsAcceptedAndTheNextRefused) {
  PLAYLIST_PlaylistManager playlist;
  const Ids ids = AddTracks(&playlist, 1000);
  ASSERT_EQ(ids.back(), 1000u);
  uint64_t id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 1000, &id), SINK_UPNP_OK);
  EXPECT_EQ(id, 1001u);
  EXPECT_EQ(playlist.GetTrackCount(), 1001u);
  id = 0;
  EXPECT_EQ(playlist.Insert("u", "m", 1001, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(id, 0u);                         // refused before an id is taken
  EXPECT_EQ(Peer::LastId(playlist), 1001u);  // and no id is used up
  EXPECT_EQ(playlist.GetTrackCount(), 1001u);
}

TEST(PlaylistInsert, NullUriIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 77;
  EXPECT_EQ(playlist.Insert(nullptr, "m", 0, &id), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

TEST(PlaylistInsert, NullMetadataIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 77;
  EXPECT_EQ(playlist.Insert("u", nullptr, 0, &id), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
}

TEST(PlaylistInsert, NullNewIdIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.Insert("u", "m", 0, nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

TEST(PlaylistInsert, NullArgumentIsCheckedBeforeTheTrackLimit) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1001);
  EXPECT_EQ(playlist.Insert(nullptr, "m", 0, nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
}

TEST(PlaylistInsert, RecordWithoutMemoryAnswersNoMemoryAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  uint64_t id = 77;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
    EXPECT_EQ(playlist.Insert("u", "m", 0, &id), DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(Peer::LastId(playlist), 2u);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2}));
}

TEST(PlaylistInsert, UriWithoutMemoryAnswersGenericFailureAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 77;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 2, 0);
    EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_ERR_GENERIC);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

TEST(PlaylistInsert, MetadataWithoutMemoryAnswersGenericFailureAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 77;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 3, 0);
    EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_ERR_GENERIC);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(id, 77u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

TEST(PlaylistInsert, EveryAllocationFailureLeavesAUsablePlaylistWithoutLeaks) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  for (unsigned long nth = 1;; ++nth) {
    uint64_t id = 0;
    int32_t result = 0;
    unsigned long fired = 0;
    {
      ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, nth, 0);
      result = playlist.Insert("u", "m", 2, &id);
      fired = fault.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, SINK_UPNP_OK);
      break;
    }
    EXPECT_TRUE(result == DMR_CMN_ERR_NO_MEMORY || result == SINK_UPNP_ERR_GENERIC) << nth;
    EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2}));
  }
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 3}));
}

TEST(PlaylistInsert, ListNodeWithoutMemoryAnswersNoMemoryUsesUpTheIdAndPlacesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    uint64_t id = 0;
    int32_t result = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = playlist.Insert("u", "m", 2, &id);
      ASSERT_EQ(failure.Fired(), 1u);
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(id, 2u + nth);
    EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2}));
    EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{0, 1}));
  }
  EXPECT_EQ(AddTrack(&playlist), 5u);
}

TEST(PlaylistInsert, IdThatWrapsToZeroFailsAndIsReported) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetLastId(&playlist, UINT64_MAX);
  uint64_t id = 77;
  EXPECT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(id, 0u);
  EXPECT_EQ(Peer::LastId(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

// ---- DeleteId ------------------------------------------------------------------------------------

TEST(PlaylistDeleteId, DeletingTheCurrentTrackWhenItIsTheLastOfThreeGoesToPositionZero) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  int wasCurrent = 0;
  EXPECT_EQ(playlist.DeleteId(3, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 1);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(playlist.GetTrackCount(), 2u);
}

TEST(PlaylistDeleteId, DeletingATrackBeforeTheCurrentOneMovesThePositionBack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(1, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 0);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  EXPECT_EQ(CurrentId(&playlist), 3u);
}

TEST(PlaylistDeleteId, DeletingATrackBehindTheCurrentOneKeepsThePosition) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(0), nullptr);
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(3, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 0);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistDeleteId, DeletingTheCurrentTrackElsewhereKeepsThePositionOnTheTrackThatMovedUp) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(1), nullptr);
  int wasCurrent = 0;
  EXPECT_EQ(playlist.DeleteId(2, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 1);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  EXPECT_EQ(CurrentId(&playlist), 3u);
}

TEST(PlaylistDeleteId, DeletingTheOnlyTrackEmptiesThePlaylist) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  int wasCurrent = 0;
  EXPECT_EQ(playlist.DeleteId(1, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 1);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_TRUE(Peer::Order(playlist).empty());
}

TEST(PlaylistDeleteId, UnknownIdFailsAndReportsNotCurrent) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(9, &wasCurrent), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(wasCurrent, 0);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 3}));
}

TEST(PlaylistDeleteId, NegativeIdIsRefusedAndReportsNotCurrent) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(-1, &wasCurrent), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(wasCurrent, 0);
  EXPECT_EQ(playlist.GetTrackCount(), 3u);
}

TEST(PlaylistDeleteId, NullWasCurrentIsRefusedAndDeletesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.DeleteId(2, nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 2, 3}));
}

TEST(PlaylistDeleteId, RemovesTheOrderEntryAtTheSamePlace) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  Peer::SetOrder(&playlist, {3, 1, 0, 2});
  int wasCurrent = 0;
  EXPECT_EQ(playlist.DeleteId(2, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Ids(playlist), (Ids{1, 3, 4}));
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{3, 0, 2}));  // values are not renumbered
}

TEST(PlaylistDeleteId, DeletedIdsAreNeverGivenAgain) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  int wasCurrent = 0;
  ASSERT_EQ(playlist.DeleteId(3, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(AddTrack(&playlist), 4u);
}

// ---- DeleteAll -----------------------------------------------------------------------------------

TEST(PlaylistDeleteAll, EmptiesThePlaylistAndGoesToPositionZero) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  EXPECT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_TRUE(Peer::Ids(playlist).empty());
  EXPECT_TRUE(Peer::Order(playlist).empty());
}

TEST(PlaylistDeleteAll, OnAnEmptyPlaylistAnswersZeroAndKeepsThePosition) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetCurrentIndex(&playlist, 4);
  EXPECT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 4u);
}

TEST(PlaylistDeleteAll, IdsContinueFromTheLastOneGiven) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  EXPECT_EQ(AddTrack(&playlist), 4u);
}

TEST(PlaylistDeleteAll, KeepsRepeatAndShuffle) {
  PLAYLIST_PlaylistManager playlist;
  ScopedShuffleSource source;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetRepeat(), 1);
  EXPECT_EQ(playlist.GetShuffle(), 1);
}

// ---- Queries and seeks ---------------------------------------------------------------------------

TEST(PlaylistCurrentTrack, EmptyPlaylistHasNoCurrentTrack) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.GetCurrentTrackData(), nullptr);
}

TEST(PlaylistCurrentTrack, IsTheTrackAtThePositionTakenAsAListIndex) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 2);
  ASSERT_NE(playlist.GetCurrentTrackData(), nullptr);
  EXPECT_EQ(CurrentId(&playlist), 3u);
  EXPECT_EQ(playlist.GetCurrentTrackData(), Peer::Records(playlist)[2]);
}

TEST(PlaylistCurrentTrack, PositionBeyondTheListGivesNoTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 3);
  EXPECT_EQ(playlist.GetCurrentTrackData(), nullptr);
}

TEST(PlaylistSeekIndex, MovesToTheTrackAtTheIndex) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  const PLAYLIST_PlaylistData* track = playlist.SeekIndexTrackData(2);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
}

TEST(PlaylistSeekIndex, NegativeIndexGivesNoTrackAndMovesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 1);
  EXPECT_EQ(playlist.SeekIndexTrackData(-1), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistSeekIndex, IndexBeyondTheLastGivesNoTrackAndMovesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 1);
  EXPECT_EQ(playlist.SeekIndexTrackData(3), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistSeekIndex, EmptyPlaylistGivesNoTrackAndKeepsThePosition) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.SeekIndexTrackData(0), nullptr);
  EXPECT_EQ(playlist.SeekIndexTrackData(5), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistSeekId, MovesToTheTrackWithTheId) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  const PLAYLIST_PlaylistData* track = playlist.SeekIdTrackData(2);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 2u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistSeekId, UnknownIdGivesNoTrackAndMovesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 2);
  EXPECT_EQ(playlist.SeekIdTrackData(9), nullptr);
  EXPECT_EQ(playlist.SeekIdTrackData(0), nullptr);
  EXPECT_EQ(playlist.SeekIdTrackData(-1), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
}

TEST(PlaylistSeekId, IdsFromTwoToTheThirtyFirstOnCannotBeFound) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetLastId(&playlist, 0x7FFFFFFEull);
  const Ids ids = AddTracks(&playlist, 2);
  ASSERT_EQ(ids, (Ids{0x7FFFFFFFull, 0x80000000ull}));
  EXPECT_NE(playlist.SeekIdTrackData(INT32_MAX), nullptr);
  // INT32_MIN extends to 0xFFFFFFFF80000000, which is not 0x80000000.
  EXPECT_EQ(playlist.SeekIdTrackData(INT32_MIN), nullptr);
  EXPECT_EQ(playlist.GetSpecificIdTrackData(INT32_MIN), nullptr);
}

TEST(PlaylistSpecificId, FindsTheTrackWithoutMovingThePosition) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  const PLAYLIST_PlaylistData* track = playlist.GetSpecificIdTrackData(3);
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_STREQ(track->getUri(), "uri3");
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistSpecificId, UnknownIdGivesNoTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.GetSpecificIdTrackData(4), nullptr);
  EXPECT_EQ(playlist.GetSpecificIdTrackData(-3), nullptr);
}

// ---- Next and Prev in normal order ---------------------------------------------------------------

TEST(PlaylistNext, StepsToTheFollowingTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  const PLAYLIST_PlaylistData* track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 2u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistNext, OnTheLastTrackWithoutRepeatGivesNoTrackAndStaysOnTheLast) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
}

TEST(PlaylistNext, OnTheLastTrackWithRepeatGivesTheFirstTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  const PLAYLIST_PlaylistData* track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 1u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistNext, AtTheEndInNormalOrderResetsTheOrderToIdentity) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetOrder(&playlist, {2, 0, 1});
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{0, 1, 2}));
}

TEST(PlaylistNext, EmptyPlaylistGivesNoTrackAndKeepsThePosition) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistNext, PositionBeyondTheEndGivesNoTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 5);
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 5u);
}

TEST(PlaylistPrev, StepsToThePrecedingTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  const PLAYLIST_PlaylistData* track = playlist.Prev();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 2u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistPrev, OnTheFirstTrackWithoutRepeatGivesNoTrackAndMovesNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.Prev(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistPrev, OnTheFirstTrackWithRepeatGivesTheLastTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  const PLAYLIST_PlaylistData* track = playlist.Prev();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
}

TEST(PlaylistPrev, EmptyPlaylistWithRepeatGivesNoTrackAndKeepsThePosition) {
  PLAYLIST_PlaylistManager playlist;
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.Prev(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

// ---- CheckNext -----------------------------------------------------------------------------------

TEST(PlaylistCheckNext, BeforeTheLastTrackThereIsANext) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.CheckNext(), 1);
}

TEST(PlaylistCheckNext, OnTheLastTrackAnswersTheRepeatFlag) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  EXPECT_EQ(playlist.CheckNext(), 0);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.CheckNext(), 1);
}

TEST(PlaylistCheckNext, EmptyPlaylistAnswersOneSinceTheLastIndexIsTheLargestValue) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.CheckNext(), 1);
}

TEST(PlaylistCheckNext, PositionBeyondTheEndPrintsItsOneLineAndAnswersZero) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 3);
  testing::internal::CaptureStdout();
  const int result = playlist.CheckNext();
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(result, 0);
  EXPECT_EQ(printed, "CheckNext Invalid Value \n");
}

TEST(PlaylistCheckNext, PrintsNothingInRange) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  testing::internal::CaptureStdout();
  playlist.CheckNext();
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  playlist.CheckNext();
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
}

// ---- Repeat and count ----------------------------------------------------------------------------

TEST(PlaylistRepeat, ZeroAndOneAreStored) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetRepeat(), 1);
  EXPECT_EQ(playlist.SetRepeat(0), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetRepeat(), 0);
}

TEST(PlaylistRepeat, TwoIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.SetRepeat(2), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(playlist.GetRepeat(), 1);
}

TEST(PlaylistRepeat, MinusOneIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.SetRepeat(-1), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(playlist.GetRepeat(), 0);
}

TEST(PlaylistTrackCount, FollowsInsertDeleteIdAndDeleteAll) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  EXPECT_EQ(playlist.GetTrackCount(), 4u);
  int wasCurrent = 0;
  ASSERT_EQ(playlist.DeleteId(2, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetTrackCount(), 3u);
  ASSERT_EQ(playlist.DeleteAll(), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetTrackCount(), 0u);
}

}  // namespace
