#include <gtest/gtest.h>

#include "TransportState.h"

namespace {

using State = PLAYER_TransportState;

TEST(PlayerTransportState, WordsAreAVTransports) {
  EXPECT_STREQ(PLAYER_TransportStateText(State::NoMediaPresent), "NO_MEDIA_PRESENT");
  EXPECT_STREQ(PLAYER_TransportStateText(State::Stopped), "STOPPED");
  EXPECT_STREQ(PLAYER_TransportStateText(State::Transitioning), "TRANSITIONING");
  EXPECT_STREQ(PLAYER_TransportStateText(State::Playing), "PLAYING");
  EXPECT_STREQ(PLAYER_TransportStateText(State::PausedPlayback), "PAUSED_PLAYBACK");
}

TEST(PlayerTransportState, EachStateAllowsItsActions) {
  EXPECT_EQ(PLAYER_TransportActions(State::NoMediaPresent, true, true), "");
  EXPECT_EQ(PLAYER_TransportActions(State::Stopped, false, false), "Play,Seek");
  EXPECT_EQ(PLAYER_TransportActions(State::Transitioning, false, false), "Stop");
  EXPECT_EQ(PLAYER_TransportActions(State::Playing, false, false), "Pause,Stop,Seek");
  EXPECT_EQ(PLAYER_TransportActions(State::PausedPlayback, false, false), "Play,Stop,Seek");
}

TEST(PlayerTransportState, NextAndPreviousOnlyWhereThereIsATrack) {
  EXPECT_EQ(PLAYER_TransportActions(State::Playing, true, false), "Pause,Stop,Seek,Next");
  EXPECT_EQ(PLAYER_TransportActions(State::Playing, true, true), "Pause,Stop,Seek,Next,Previous");
}

}  // namespace
