// The shuffled order. Every test replaces the random source (ScopedShuffleSource), so no result depends on
// the second in which it runs.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "PlaylistTestPeer.h"
#include "PlaylistTestSupport.h"
#include "playlist/PlaylistManager.h"
#include "playlist/ShuffleRandomSource.h"
#include "sink_upnp/ResultCode.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;
using Order = std::vector<uint32_t>;

constexpr long kRandomMax = 2147483647;

// A random() value that makes the draw for place i pick place j (the middle of j's interval).
long DrawFor(uint32_t j, uint32_t i) {
  const double width = static_cast<double>(kRandomMax) / (i + 1.0);
  return static_cast<long>(width * j + width / 2);
}

// A playlist of `count` tracks switched to shuffled order by a draw that swaps nothing, so the order
// stays 0, 1, 2, ... and the position is 0.
void FillShuffledIdentity(PLAYLIST_PlaylistManager* playlist, ScopedShuffleSource* source, int count) {
  AddTracks(playlist, count);
  source->Script(std::vector<long>(count, kRandomMax));
  ASSERT_EQ(playlist->SetShuffle(1), SINK_UPNP_OK);
  ASSERT_EQ(Peer::Order(*playlist), [count] {
    Order identity;
    for (int k = 0; k < count; ++k) identity.push_back(static_cast<uint32_t>(k));
    return identity;
  }());
}

// ---- ShufflePlaylist -----------------------------------------------------------------------------

TEST(PlaylistShuffle, InNormalOrderResetsTheOrderToIdentityWithoutDrawing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetOrder(&playlist, {2, 0, 1});
  EXPECT_EQ(playlist.ShufflePlaylist(1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{0, 1, 2}));
  EXPECT_TRUE(source.Seeds().empty());
  EXPECT_TRUE(source.Drawn().empty());
}

TEST(PlaylistShuffle, DrawsFisherYatesFromTheTopDown) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 4);
  source.Script({DrawFor(1, 3), DrawFor(2, 2), DrawFor(0, 1)});
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  // i=3 swaps with 1: 0 3 2 1; i=2 stays; i=1 swaps with 0: 3 0 2 1.
  EXPECT_EQ(Peer::Order(playlist), (Order{3, 0, 2, 1}));
  EXPECT_EQ(source.Remaining(), 0u);
  EXPECT_EQ(source.Drawn().size(), 3u + 3u);  // the switch's three draws and these three
}

TEST(PlaylistShuffle, LargestRandomValueTakesThePlaceItselfInsteadOfOneBeyond) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  source.Script({kRandomMax, kRandomMax});
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{0, 1, 2}));
}

TEST(PlaylistShuffle, ZeroDrawsSwapEveryPlaceWithTheFirst) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  source.Script({0, 0});
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{1, 2, 0}));
}

TEST(PlaylistShuffle, KeepFirstGivesThatTrackPositionZeroAndItsDrawnPositionToTheOneThatHadZero) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 4);
  source.Script({DrawFor(1, 3), DrawFor(2, 2), DrawFor(0, 1)});
  EXPECT_EQ(playlist.ShufflePlaylist(2), SINK_UPNP_OK);
  // Drawn 3 0 2 1; place 2 drew 2, place 1 drew 0.
  EXPECT_EQ(Peer::Order(playlist), (Order{3, 2, 0, 1}));
}

TEST(PlaylistShuffle, KeepFirstBeyondTheListFixesNothing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 4);
  source.Script({DrawFor(1, 3), DrawFor(2, 2), DrawFor(0, 1)});
  EXPECT_EQ(playlist.ShufflePlaylist(4), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{3, 0, 2, 1}));
}

TEST(PlaylistShuffle, KeepFirstWhenNoEntryHoldsZeroOnlySetsThatEntry) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 4);
  Peer::SetOrder(&playlist, {5, 1, 2, 4});
  source.Script({kRandomMax, kRandomMax, kRandomMax});
  EXPECT_EQ(playlist.ShufflePlaylist(1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{5, 0, 2, 4}));
}

TEST(PlaylistShuffle, CarriesLeftOverValuesAlongWithoutRenumbering) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  Peer::SetOrder(&playlist, {7, 7, 9});
  source.Script({0, 0});
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{7, 9, 7}));
}

TEST(PlaylistShuffle, SeedsWithTheTimeInWholeSecondsOnEveryCall) {
  ScopedShuffleSource source(1234);
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 2);
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  source.SetTime(1235);
  EXPECT_EQ(playlist.ShufflePlaylist(-1), SINK_UPNP_OK);
  EXPECT_EQ(source.Seeds(), (std::vector<unsigned int>{1234, 1234, 1235}));
}

TEST(PlaylistShuffle, EmptyPlaylistSeedsAndDrawsNothing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.ShufflePlaylist(0), SINK_UPNP_OK);
  EXPECT_TRUE(source.Drawn().empty());
  EXPECT_TRUE(Peer::Order(playlist).empty());
}

TEST(PlaylistShuffle, TwoShufflesInTheSameSecondDrawTheSameSequence) {
  ScopedShuffleSource source(1700000000, /*realGenerator=*/true);
  PLAYLIST_PlaylistManager first;
  PLAYLIST_PlaylistManager second;
  AddTracks(&first, 20);
  AddTracks(&second, 20);
  ASSERT_EQ(first.SetShuffle(1), SINK_UPNP_OK);
  ASSERT_EQ(second.SetShuffle(1), SINK_UPNP_OK);
  const std::vector<long> drawn = source.Drawn();
  ASSERT_EQ(drawn.size(), 38u);
  EXPECT_EQ(std::vector<long>(drawn.begin(), drawn.begin() + 19),
            std::vector<long>(drawn.begin() + 19, drawn.end()));
  EXPECT_EQ(Peer::Order(first), Peer::Order(second));
}

TEST(PlaylistShuffle, ShufflesInDifferentSecondsDrawDifferentSequences) {
  ScopedShuffleSource source(1700000000, /*realGenerator=*/true);
  PLAYLIST_PlaylistManager first;
  PLAYLIST_PlaylistManager second;
  AddTracks(&first, 20);
  AddTracks(&second, 20);
  ASSERT_EQ(first.SetShuffle(1), SINK_UPNP_OK);
  source.SetTime(1700000001);
  ASSERT_EQ(second.SetShuffle(1), SINK_UPNP_OK);
  const std::vector<long> drawn = source.Drawn();
  EXPECT_NE(std::vector<long>(drawn.begin(), drawn.begin() + 19),
            std::vector<long>(drawn.begin() + 19, drawn.end()));
}

TEST(PlaylistShuffle, DefaultSourceIsTheSystemsAndNullRestoresIt) {
  const PLAYLIST_ShuffleRandomSource* system = PLAYLIST_SystemShuffleRandomSource();
  EXPECT_EQ(PLAYLIST_GetShuffleRandomSource(), system);
  {
    ScopedShuffleSource source;
    EXPECT_NE(PLAYLIST_GetShuffleRandomSource(), system);
  }
  EXPECT_EQ(PLAYLIST_GetShuffleRandomSource(), system);
}

// ---- SetShuffle and GetShuffle -------------------------------------------------------------------

TEST(PlaylistSetShuffle, OnPutsTheCurrentTrackFirstAndGoesToPositionZero) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  source.Script({DrawFor(1, 3), DrawFor(2, 2), DrawFor(0, 1)});
  EXPECT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetShuffle(), 1);
  EXPECT_EQ(Peer::Order(playlist), (Order{3, 2, 0, 1}));
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistSetShuffle, OnTwiceDrawsOnlyOnce) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  source.Script({0, 0, 0, 0, 0, 0});
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  const Order drawn = Peer::Order(playlist);
  EXPECT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(source.Seeds().size(), 1u);
  EXPECT_EQ(source.Drawn().size(), 3u);
  EXPECT_EQ(Peer::Order(playlist), drawn);
}

TEST(PlaylistSetShuffle, OnWithOneTrackLeavesItsEntryAtZeroAndPositionZero) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  EXPECT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{0}));
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(CurrentId(&playlist), 1u);
}

TEST(PlaylistSetShuffle, OffGoesToTheListIndexOfTheTrackAtTheCurrentPositionAndKeepsTheOrder) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  source.Script({DrawFor(1, 3), DrawFor(2, 2), DrawFor(0, 1)});
  ASSERT_NE(playlist.SeekIndexTrackData(2), nullptr);
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);  // 3 2 0 1
  ASSERT_NE(playlist.Next(), nullptr);              // position 1: list index 3
  EXPECT_EQ(playlist.SetShuffle(0), SINK_UPNP_OK);
  EXPECT_EQ(playlist.GetShuffle(), 0);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 3u);
  EXPECT_EQ(Peer::Order(playlist), (Order{3, 2, 0, 1}));
  EXPECT_EQ(CurrentId(&playlist), 4u);
}

TEST(PlaylistSetShuffle, OffWithAPositionNoEntryHoldsKeepsThePosition) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  Peer::SetOrder(&playlist, {0, 2, 4});
  Peer::SetCurrentIndex(&playlist, 1);
  EXPECT_EQ(playlist.SetShuffle(0), SINK_UPNP_OK);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
}

TEST(PlaylistSetShuffle, OffAgainDoesNothing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetOrder(&playlist, {2, 0, 1});
  ASSERT_NE(playlist.SeekIndexTrackData(1), nullptr);
  EXPECT_EQ(playlist.SetShuffle(0), SINK_UPNP_OK);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  EXPECT_EQ(Peer::Order(playlist), (Order{2, 0, 1}));
  EXPECT_TRUE(source.Seeds().empty());
}

TEST(PlaylistSetShuffle, TwoIsRefusedAndLeavesTheMode) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.SetShuffle(2), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(playlist.GetShuffle(), 0);
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(playlist.SetShuffle(2), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(playlist.GetShuffle(), 1);
  EXPECT_EQ(source.Seeds().size(), 1u);
}

TEST(PlaylistSetShuffle, MinusOneIsRefusedAndLeavesTheMode) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(playlist.SetShuffle(-1), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(playlist.GetShuffle(), 0);
  EXPECT_TRUE(source.Seeds().empty());
}

// ---- Walking the shuffled order ------------------------------------------------------------------

// Three tracks shuffled from position 0 with two zero draws: 1 2 0, with list index 0 kept first: 0 2 1.
void FillThreeShuffled(PLAYLIST_PlaylistManager* playlist, ScopedShuffleSource* source) {
  AddTracks(playlist, 3);
  source->Script({0, 0});
  ASSERT_EQ(playlist->SetShuffle(1), SINK_UPNP_OK);
  ASSERT_EQ(Peer::Order(*playlist), (Order{0, 2, 1}));
}

TEST(PlaylistShuffledNext, ThreeStepsWithoutRepeatGivePositionsOneAndTwoThenNoTrackAndANewOrder) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillThreeShuffled(&playlist, &source);
  const PLAYLIST_PlaylistData* track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 2u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
  // The end: a new draw (2 1 0 before the fix) with list index 0 first.
  source.Script({0, 0});
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
  EXPECT_EQ(source.Seeds().size(), 2u);
  EXPECT_EQ(Peer::Order(playlist), (Order{0, 1, 2}));
}

TEST(PlaylistShuffledNext, AtTheEndWithRepeatDrawsANewOrderFixingNothingAndGivesPositionZero) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillThreeShuffled(&playlist, &source);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  Peer::SetCurrentIndex(&playlist, 2);
  source.Script({0, 0});  // 0 2 1 becomes 2 1 0, with nothing fixed
  const PLAYLIST_PlaylistData* track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(Peer::Order(playlist), (Order{2, 1, 0}));
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistShuffledNext, WhenTwoEntriesHoldThePositionTheLastOneWins) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  Peer::SetOrder(&playlist, {0, 1, 1});
  const PLAYLIST_PlaylistData* track = playlist.Next();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
}

TEST(PlaylistShuffledNext, WhenNoEntryHoldsThePositionGivesNoTrackAndMovesNothing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  Peer::SetOrder(&playlist, {0, 2, 3});
  EXPECT_EQ(playlist.Next(), nullptr);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistShuffledPrev, StepsForwardExactlyAsNextDoes) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillThreeShuffled(&playlist, &source);
  const PLAYLIST_PlaylistData* track = playlist.Prev();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  track = playlist.Prev();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(track->getId(), 2u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
  source.Script({0, 0});
  EXPECT_EQ(playlist.Prev(), nullptr);
  EXPECT_EQ(Peer::Order(playlist), (Order{0, 1, 2}));
}

TEST(PlaylistShuffledPrev, WrapsAroundWithRepeatAsNextDoes) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillThreeShuffled(&playlist, &source);
  ASSERT_EQ(playlist.SetRepeat(1), SINK_UPNP_OK);
  Peer::SetCurrentIndex(&playlist, 2);
  source.Script({0, 0});
  const PLAYLIST_PlaylistData* track = playlist.Prev();
  ASSERT_NE(track, nullptr);
  EXPECT_EQ(Peer::Order(playlist), (Order{2, 1, 0}));
  EXPECT_EQ(track->getId(), 3u);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistShuffledDeleteId, DrawsANewOrderWithTheCurrentListIndexFirstThenAdjustsThePosition) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 4);
  ASSERT_NE(playlist.Next(), nullptr);
  ASSERT_NE(playlist.Next(), nullptr);
  ASSERT_EQ(Peer::CurrentIndex(playlist), 2u);
  source.Script({0, 0});
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(1, &wasCurrent), SINK_UPNP_OK);
  EXPECT_EQ(wasCurrent, 0);
  // Left 1 2 3; drawn 2 3 1; no entry holds 0 any more, so only place 2 is set to 0.
  EXPECT_EQ(Peer::Order(playlist), (Order{2, 3, 0}));
  EXPECT_EQ(Peer::CurrentIndex(playlist), 1u);
  EXPECT_EQ(source.Seeds().size(), 2u);
}

TEST(PlaylistShuffledDeleteId, UnknownIdDrawsNothing) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  int wasCurrent = 7;
  EXPECT_EQ(playlist.DeleteId(9, &wasCurrent), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(source.Seeds().size(), 1u);
}

TEST(PlaylistShuffledInsert, AppendsTheEntryWithTheFormerCount) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  FillShuffledIdentity(&playlist, &source, 3);
  Peer::SetOrder(&playlist, {2, 0, 1});
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);
  EXPECT_EQ(Peer::Order(playlist), (Order{2, 0, 1, 3}));
  EXPECT_EQ(source.Seeds().size(), 1u);
}

}  // namespace
