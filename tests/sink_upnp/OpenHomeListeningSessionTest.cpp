// A whole listening session on the OpenHome service, driven through PerformAction as a control point
// drives it: five tracks are queued, played, skipped, shuffled, the current track is deleted while it
// plays, repeat is switched on and the queue is cleared. After every step the test checks exactly what a
// subscriber and the application can see: the playlist, the "Id" and "IdArray" variables, every batch each
// OpenHome eventing handler received (on its own eventing thread), and the commands the application got,
// in order. Between the steps the test plays the application's part and reports the transport state.
//
// The shuffle draws from a scripted source, so the session is the same in every run.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <deque>
#include <map>
#include <string>
#include <vector>

#include "MockTransferService.h"
#include "OpenHomeServiceFixture.h"
#include "RecordingEventHandler.h"
#include "dmr_cmn/String.h"
#include "playlist/PlaylistManager.h"
#include "playlist/ShuffleRandomSource.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {
namespace {

using ::testing::InSequence;
using ::testing::Mock;
using ::testing::Return;
using Ids = std::vector<uint64_t>;

constexpr long kRandomMax = 2147483647;

// The random() value that makes the shuffle's draw for place i pick place j (the middle of j's share).
long DrawFor(uint32_t j, uint32_t i) {
  const double width = static_cast<double>(kRandomMax) / (i + 1.0);
  return static_cast<long>(width * j + width / 2);
}

// The shuffle's randomness for the session: a fixed time, the seeds recorded, random() answering the
// scripted values in turn.
struct ScriptedShuffle {
  std::deque<long> values;
  std::vector<unsigned int> seeds;
  std::size_t drawn = 0;
};
ScriptedShuffle* gScript = nullptr;

std::time_t FixedTime(std::time_t* now) {
  const std::time_t fixed = 1700000000;
  if (now != nullptr) *now = fixed;
  return fixed;
}
void RecordSeed(unsigned int seed) { gScript->seeds.push_back(seed); }
long NextScriptedValue() {
  ++gScript->drawn;
  if (gScript->values.empty()) {
    ADD_FAILURE() << "the shuffle drew more values than the session scripted";
    return 0;
  }
  const long value = gScript->values.front();
  gScript->values.pop_front();
  return value;
}
const PLAYLIST_ShuffleRandomSource kScriptedSource = {&FixedTime, &RecordSeed, &NextScriptedValue};

// Puts the scripted source in place for its life and gives the system's source back afterwards.
class ScopedScriptedShuffle {
 public:
  ScopedScriptedShuffle() {
    gScript = &script_;
    PLAYLIST_SetShuffleRandomSource(&kScriptedSource);
  }
  ~ScopedScriptedShuffle() { Restore(); }
  ScopedScriptedShuffle(const ScopedScriptedShuffle&) = delete;
  ScopedScriptedShuffle& operator=(const ScopedScriptedShuffle&) = delete;

  void Restore() {
    PLAYLIST_SetShuffleRandomSource(nullptr);
    gScript = nullptr;
  }
  ScriptedShuffle& Script() { return script_; }

 private:
  ScriptedShuffle script_;
};

std::string TrackUri(int n) {
  return "http://192.168.1.20:8080/music/album/track" + std::to_string(n) + ".flac";
}
std::string TrackMeta(int n) {
  return "<DIDL-Lite><item><dc:title>Track " + std::to_string(n) +
         "</dc:title><upnp:class>"
         "object.item.audioItem.musicTrack</upnp:class></item></DIDL-Lite>";
}

class OpenHomeListeningSession : public OpenHomeServiceFixture {
 protected:
  // The playlist and the two variables that describe it.
  void ExpectPlaylist(const Ids& ids, uint64_t current, const std::string& id, const std::string& idArray) {
    EXPECT_EQ(TrackIds(), ids);
    EXPECT_EQ(CurrentId(), current);
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_ID), id);
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_ID_ARRAY), idArray);
  }

  ScopedScriptedShuffle shuffle_;
};

TEST_F(OpenHomeListeningSession, QueuePlaySkipShuffleDeleteWhilePlayingRepeatAndClear) {
  // Switching shuffle on with five tracks draws four places (4, 3, 2, 1 pick 0, 3, 0, 1); deleting a
  // track in shuffled order draws the remaining four tracks afresh (3, 2, 1 pick 0, 2, 0).
  shuffle_.Script().values = {DrawFor(0, 4), DrawFor(3, 3), DrawFor(0, 2), DrawFor(1, 1),
                              DrawFor(0, 3), DrawFor(2, 2), DrawFor(0, 1)};

  ExpectPlaylist({}, 0, "0", "");

  // 1. Queue five tracks, each behind the one before. The first one, inserted into the empty playlist,
  //    becomes the current track and is handed to the application without being played.
  {
    SCOPED_TRACE("insert track 1");
    {
      InSequence order;
      ExpectSetUri(TrackUri(1), TrackMeta(1));
    }
    EXPECT_EQ(Perform("Insert", {{"AfterId", "0"}, {"Uri", TrackUri(1)}, {"Metadata", TrackMeta(1)}}), 0);
    VerifyTransfer();
    EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", "1"}}));
    EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
    ExpectPlaylist({1}, 1, "1", "AAAAAQ==");
    ExpectEvents({Event("IdArray", "AAAAAQ==")});
  }
  const std::vector<std::string> idArrays = {"AAAAAQ==", "AAAAAQAAAAI=", "AAAAAQAAAAIAAAAD",
                                             "AAAAAQAAAAIAAAADAAAABA==", "AAAAAQAAAAIAAAADAAAABAAAAAU="};
  for (int n = 2; n <= 5; ++n) {
    SCOPED_TRACE("insert track " + std::to_string(n));
    EXPECT_EQ(Perform("Insert",
                      {{"AfterId", std::to_string(n - 1)}, {"Uri", TrackUri(n)}, {"Metadata", TrackMeta(n)}}),
              0);
    VerifyTransfer();
    EXPECT_EQ(OutArguments(Reply()), (Args{{"NewId", std::to_string(n)}}));
    EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
    Ids ids;
    for (int k = 1; k <= n; ++k) ids.push_back(static_cast<uint64_t>(k));
    ExpectPlaylist(ids, 1, "1", idArrays[static_cast<std::size_t>(n - 1)]);
    ExpectEvents({Event("IdArray", idArrays[static_cast<std::size_t>(n - 1)])});
  }
  const Ids all{1, 2, 3, 4, 5};

  // 2. Play: from STOPPED the current track is loaded again and played.
  {
    SCOPED_TRACE("play");
    {
      InSequence order;
      ExpectSetUri(TrackUri(1), TrackMeta(1));
      ExpectPlay();
    }
    EXPECT_EQ(Perform("Play"), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    ExpectPlaylist(all, 1, "1", "AAAAAQAAAAIAAAADAAAABAAAAAU=");
    ExpectEvents({});
  }
  SetTransportState("TRANSITIONING");
  SetTransportState("PLAYING");

  // 3. Next: always stops first, then loads and plays the second track.
  {
    SCOPED_TRACE("next");
    {
      InSequence order;
      ExpectStop();
      ExpectSetUri(TrackUri(2), TrackMeta(2));
      ExpectPlay();
    }
    EXPECT_EQ(Perform("Next"), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    ExpectPlaylist(all, 2, "2", "AAAAAQAAAAIAAAADAAAABAAAAAU=");
    ExpectEvents({});
  }
  SetTransportState("TRANSITIONING");
  SetTransportState("PLAYING");

  // 4. Shuffle on: the playing track takes the first place of the shuffled order and the position
  //    restarts there; the playlist reads that position as a list index, so its current track is now the
  //    first of the list while "Id" still names the track that plays. Nothing is sent to the application.
  {
    SCOPED_TRACE("shuffle on");
    EXPECT_EQ(Perform("SetShuffle", {{"Value", "true"}}), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    EXPECT_EQ(Playlist().GetShuffle(), 1);
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "true");
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_REPEAT), "false");
    ExpectPlaylist(all, 1, "2", "AAAAAQAAAAIAAAADAAAABAAAAAU=");
    ExpectEvents({Event("Shuffle", "true")});
    EXPECT_EQ(shuffle_.Script().seeds, (std::vector<unsigned int>{1700000000u}));
    EXPECT_EQ(shuffle_.Script().drawn, 4u);
  }

  // 5. Delete the current track while playing: there is a track after it, so playback stops, the track
  //    that moved into its place is handed over and played, and the new IdArray is evented.
  {
    SCOPED_TRACE("delete the current track while playing");
    ASSERT_EQ(CurrentId(), 1u);
    {
      InSequence order;
      ExpectStop();
      ExpectSetUri(TrackUri(2), TrackMeta(2));
      ExpectPlay();
    }
    EXPECT_EQ(Perform("DeleteId", {{"Value", "1"}}), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    ExpectPlaylist({2, 3, 4, 5}, 2, "2", "AAAAAgAAAAMAAAAEAAAABQ==");
    ExpectEvents({Event("IdArray", "AAAAAgAAAAMAAAAEAAAABQ==")});
    // The shuffled order was drawn afresh for the four tracks left.
    EXPECT_EQ(shuffle_.Script().seeds, (std::vector<unsigned int>{1700000000u, 1700000000u}));
    EXPECT_EQ(shuffle_.Script().drawn, 7u);
    EXPECT_TRUE(shuffle_.Script().values.empty());
  }
  SetTransportState("TRANSITIONING");
  SetTransportState("PLAYING");

  // 6. Repeat on: only the mode and its variable change.
  {
    SCOPED_TRACE("repeat on");
    EXPECT_EQ(Perform("SetRepeat", {{"Value", "true"}}), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    EXPECT_EQ(Playlist().GetRepeat(), 1);
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_REPEAT), "true");
    ExpectPlaylist({2, 3, 4, 5}, 2, "2", "AAAAAgAAAAMAAAAEAAAABQ==");
    ExpectEvents({Event("Repeat", "true")});
  }

  // 7. Delete all: playback stops, the application is cleared, an empty IdArray is evented. "Id" keeps
  //    the last track loaded; the modes stay.
  {
    SCOPED_TRACE("delete all");
    {
      InSequence order;
      ExpectStop();
      ExpectSetUri("", "");
    }
    EXPECT_EQ(Perform("DeleteAll"), 0);
    VerifyTransfer();
    ExpectUntouched(Reply());
    ExpectPlaylist({}, 0, "2", "");
    ExpectEvents({Event("IdArray", "")});
    EXPECT_EQ(Playlist().GetRepeat(), 1);
    EXPECT_EQ(Playlist().GetShuffle(), 1);
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_REPEAT), "true");
    EXPECT_EQ(Variable(SINK_UPNP_PLAYLIST_SHUFFLE), "true");
  }
  SetTransportState("STOPPED");
  EXPECT_EQ(shuffle_.Script().drawn, 7u);

  shuffle_.Restore();
  EXPECT_EQ(PLAYLIST_GetShuffleRandomSource(), PLAYLIST_SystemShuffleRandomSource());
}

}  // namespace
}  // namespace open_home_test
