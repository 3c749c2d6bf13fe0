// GetNextTrackData: the track Next would step to, read without moving anything, so that a player can
// prepare the next track of the playlist while the current one is still playing.
#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "PlaylistTestPeer.h"
#include "PlaylistTestSupport.h"
#include "playlist/PlaylistManager.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;

uint64_t IdOf(const PLAYLIST_PlaylistData* track) { return track == nullptr ? 0 : track->getId(); }

TEST(PlaylistNextTrack, EmptyPlaylistHasNoNextTrack) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.GetNextTrackData(), nullptr);
  playlist.SetRepeat(1);
  EXPECT_EQ(playlist.GetNextTrackData(), nullptr);
}

TEST(PlaylistNextTrack, InNormalOrderIsTheFollowingTrackAndNothingMoves) {
  PLAYLIST_PlaylistManager playlist;
  const std::vector<uint64_t> ids = AddTracks(&playlist, 3);
  EXPECT_EQ(IdOf(playlist.GetNextTrackData()), ids[1]);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(IdOf(playlist.GetNextTrackData()), ids[1]);
}

TEST(PlaylistNextTrack, AgreesWithNextAtEveryStep) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 4);
  for (int step = 0; step < 3; ++step) {
    const uint64_t peeked = IdOf(playlist.GetNextTrackData());
    EXPECT_EQ(IdOf(playlist.Next()), peeked) << "step " << step;
  }
}

TEST(PlaylistNextTrack, AtTheEndWithRepeatOffIsNullAndLeavesTheOrderAlone) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  Peer::SetCurrentIndex(&playlist, 2);
  Peer::SetOrder(&playlist, {2, 0, 1});
  EXPECT_EQ(playlist.GetNextTrackData(), nullptr);
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{2, 0, 1}));
  EXPECT_EQ(Peer::CurrentIndex(playlist), 2u);
}

TEST(PlaylistNextTrack, AtTheEndWithRepeatOnInNormalOrderIsTheFirstTrack) {
  PLAYLIST_PlaylistManager playlist;
  const std::vector<uint64_t> ids = AddTracks(&playlist, 3);
  playlist.SetRepeat(1);
  Peer::SetCurrentIndex(&playlist, 2);
  EXPECT_EQ(IdOf(playlist.GetNextTrackData()), ids[0]);
  EXPECT_EQ(IdOf(playlist.Next()), ids[0]);
}

TEST(PlaylistNextTrack, InShuffledOrderIsTheTrackAtTheNextShuffledPosition) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  const std::vector<uint64_t> ids = AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.SetShuffle(1), 0);
  Peer::SetOrder(&playlist, {0, 2, 1});
  Peer::SetCurrentIndex(&playlist, 0);
  EXPECT_EQ(IdOf(playlist.GetNextTrackData()), ids[2]);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
  EXPECT_EQ(IdOf(playlist.Next()), ids[2]);
}

TEST(PlaylistNextTrack, AtTheEndOfAShuffledOrderWithRepeatOnIsUnknownAndNull) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  ASSERT_EQ(playlist.SetShuffle(1), 0);
  playlist.SetRepeat(1);
  Peer::SetOrder(&playlist, {0, 1, 2});
  Peer::SetCurrentIndex(&playlist, 2);
  EXPECT_EQ(playlist.GetNextTrackData(), nullptr);
  EXPECT_EQ(Peer::Order(playlist), (std::vector<uint32_t>{0, 1, 2}));
}

}  // namespace
