#include "OpenHomeDriftFixture.h"

#include <gmock/gmock.h>

#include <string>

namespace {

using ::testing::_;
using ::testing::AnyNumber;
using ::testing::Return;

constexpr char kFirstId[] = "{first}";

}  // namespace

// Every call but Read runs on a playlist of two tracks.
const std::vector<ValidCall> kOpenHomeCalls = {
    {"Product", "Standby", {}},
    {"Product", "SetStandby", {{"Value", "false"}}},
    {"Product", "SourceXml", {}},
    {"Product", "SetSourceIndex", {{"Value", "0"}}},
    {"Product", "Manufacturer", {}},
    {"Product", "Model", {}},
    {"Product", "Product", {}},
    {"Product", "SourceIndex", {}},
    {"Playlist",
     "Insert",
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

const std::vector<UntypedOut> kOpenHomeUntypedOut = {
    {"Details", "Lossless",
     "the store starts it empty; the application writes true or false with each track"},
};

void OpenHomeDriftFixture::SetUp() {
  OpenHomeServiceFixture::SetUp();
  if (HasFatalFailure()) return;
  EXPECT_CALL(transfer_, Stop(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
  EXPECT_CALL(transfer_, Play(_, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
  EXPECT_CALL(transfer_, Pause(_, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
  EXPECT_CALL(transfer_, Seek(_, _, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(_, _, _, _)).Times(AnyNumber()).WillRepeatedly(Return(0));
  EXPECT_CALL(transfer_, AttachPlaylistManager(_)).Times(AnyNumber()).WillRepeatedly(Return(0));
}

Args OpenHomeDriftFixture::Prepare(const ValidCall& call, Args in) {
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
