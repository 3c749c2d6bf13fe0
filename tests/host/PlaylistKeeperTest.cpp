// The playlist kept across restarts, through the daemon without its network: actions of control points
// through the router, the save on the main loop's timer, and the playlist put back at the next start.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <glib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "AtomicFile.h"
#include "PlaylistFile.h"
#include "PlaylistSnapshot.h"
#include "RendererFixture.h"
#include "TempDirectory.h"

namespace {

class PlaylistKeeperFixture : public RendererFixture {
 protected:
  // The renderer goes (and makes its last save) while the directory is still there.
  ~PlaylistKeeperFixture() override {
    renderer_.reset();
    RunPending();
  }

  // Starts the renderer keeping its playlist in the temporary directory; every write is counted.
  void StartKeeping() {
    renderer_->KeepPlaylist(path_, [this](const std::string& path, const std::string& text, std::string* error) {
      ++writes_;
      return HOST_ReplaceFile(path, text, error);
    });
    StartRenderer();
  }

  // Shuts the renderer down (a pending save is made) and starts a new one on the same file.
  void Restart() {
    HOST_StepFailure failure;
    ASSERT_TRUE(renderer_->Shutdown(&failure)) << failure.step;
    renderer_ = std::make_unique<HOST_Renderer>(&player_, &events_, context_);
    StartKeeping();
  }

  std::string Insert(const std::string& afterId, const std::string& uri, const std::string& metadata) {
    const HOST_ActionOutcome outcome = Perform(kPlaylistType, "Insert",
                                               {{"AfterId", afterId}, {"Uri", uri}, {"Metadata", metadata}});
    EXPECT_EQ(outcome.errorCode, 0) << outcome.errorDescription;
    return outcome.out.size() == 1 ? outcome.out[0].second : "";
  }

  // The playlist as a control point reads it through the router.
  HOST_SavedPlaylist Served() {
    HOST_SavedPlaylist served;
    HOST_ActionOutcome outcome = Perform(kPlaylistType, "IdArray", {});
    EXPECT_EQ(outcome.errorCode, 0);
    std::vector<uint32_t> ids;
    EXPECT_EQ(outcome.out.size(), 2u);
    if (outcome.out.size() != 2 || !HOST_DecodeIdArray(outcome.out[1].second, &ids)) {
      ADD_FAILURE() << "no IdArray";
      return served;
    }
    for (const uint32_t id : ids) {
      outcome = Perform(kPlaylistType, "ReadList", {{"IdList", std::to_string(id)}});
      HOST_SavedTrack track;
      EXPECT_EQ(outcome.out.size(), 1u);
      EXPECT_TRUE(outcome.out.size() == 1 && HOST_ReadSingleTrackList(outcome.out[0].second, id, &track));
      served.tracks.push_back(track);
    }
    outcome = Perform(kPlaylistType, "Repeat", {});
    served.repeat = outcome.out.size() == 1 && outcome.out[0].second == "true";
    outcome = Perform(kPlaylistType, "Shuffle", {});
    served.shuffle = outcome.out.size() == 1 && outcome.out[0].second == "true";
    return served;
  }

  // Runs the main context for `milliseconds`.
  void RunFor(int milliseconds) {
    const gint64 deadline = g_get_monotonic_time() + milliseconds * 1000;
    while (g_get_monotonic_time() < deadline)
      if (!g_main_context_iteration(context_, FALSE)) g_usleep(1000);
  }

  TempDirectory directory_;
  std::string path_ = directory_.Path("playlist.xml");
  int writes_ = 0;
};

}  // namespace

TEST_F(PlaylistKeeperFixture, PlaylistComesBackAfterRestartWithOrderMetadataAndModes) {
  StartKeeping();
  const std::string first = Insert("0", "http://192.168.1.2:9000/a.flac?x=1&y=2",
                                   "<DIDL-Lite><dc:title>Tom & \"Jerry\" 'live'</dc:title></DIDL-Lite>");
  const std::string third = Insert(first, "http://192.168.1.2:9000/c.flac", "Sigur R\xc3\xb3s \xe6\x97\xa5\xe6\x9c\xac");
  Insert(first, "http://192.168.1.2:9000/b.flac", "");
  ASSERT_EQ(Perform(kPlaylistType, "SetRepeat", {{"Value", "true"}}).errorCode, 0);
  ASSERT_EQ(Perform(kPlaylistType, "SetShuffle", {{"Value", "true"}}).errorCode, 0);
  const HOST_SavedPlaylist before = Served();
  ASSERT_EQ(before.tracks.size(), 3u);
  EXPECT_EQ(before.tracks[1].uri, "http://192.168.1.2:9000/b.flac");

  Restart();
  EXPECT_EQ(Served(), before);
}

TEST_F(PlaylistKeeperFixture, DeletionsAreKeptToo) {
  StartKeeping();
  const std::string first = Insert("0", "http://h/1.flac", "");
  const std::string second = Insert(first, "http://h/2.flac", "");
  Insert(second, "http://h/3.flac", "");
  ASSERT_EQ(Perform(kPlaylistType, "DeleteId", {{"Value", second}}).errorCode, 0);
  Restart();
  const HOST_SavedPlaylist after = Served();
  ASSERT_EQ(after.tracks.size(), 2u);
  EXPECT_EQ(after.tracks[0].uri, "http://h/1.flac");
  EXPECT_EQ(after.tracks[1].uri, "http://h/3.flac");
  ASSERT_EQ(Perform(kPlaylistType, "DeleteAll", {}).errorCode, 0);
  Restart();
  EXPECT_TRUE(Served().tracks.empty());
}

TEST_F(PlaylistKeeperFixture, RestoredPlaylistIsInTheFirstIdArrayEvent) {
  StartKeeping();
  Insert("0", "http://h/1.flac", "");
  Restart();
  RunPending();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kPlaylistType, "IdArray", &value));
  EXPECT_EQ(value, "AAAAAQ==");
}

TEST_F(PlaylistKeeperFixture, NothingIsWrittenUntilTheSaveDelayHasPassed) {
  StartKeeping();
  Insert("0", "http://h/1.flac", "");
  RunPending();
  EXPECT_TRUE(renderer_->Keeper()->SavePending());
  EXPECT_EQ(writes_, 0);
  EXPECT_FALSE(std::filesystem::exists(path_));
  RunFor(HOST_PlaylistKeeper::kSaveDelayMilliseconds + 200);
  EXPECT_FALSE(renderer_->Keeper()->SavePending());
  EXPECT_EQ(writes_, 1);
  HOST_SavedPlaylist saved;
  std::string error;
  ASSERT_EQ(HOST_ReadPlaylistFile(path_, &saved, &error), HOST_PlaylistFileStatus::Read) << error;
  ASSERT_EQ(saved.tracks.size(), 1u);
}

TEST_F(PlaylistKeeperFixture, BurstOfInsertsIsWrittenAFewTimesNotOnceEach) {
  StartKeeping();
  std::string after = "0";
  const gint64 start = g_get_monotonic_time();
  for (int i = 0; i < 200; ++i) {
    after = Insert(after, "http://h/" + std::to_string(i) + ".flac", "");
    RunFor(5);
  }
  const gint64 elapsedMs = (g_get_monotonic_time() - start) / 1000;
  RunFor(HOST_PlaylistKeeper::kSaveDelayMilliseconds + 200);
  // At most one write a save delay while the burst lasted, and one after it.
  EXPECT_GE(writes_, 1);
  EXPECT_LE(writes_, 2 + elapsedMs / static_cast<gint64>(HOST_PlaylistKeeper::kSaveDelayMilliseconds));
  HOST_SavedPlaylist saved;
  std::string error;
  ASSERT_EQ(HOST_ReadPlaylistFile(path_, &saved, &error), HOST_PlaylistFileStatus::Read) << error;
  EXPECT_EQ(saved.tracks.size(), 200u);
}

TEST_F(PlaylistKeeperFixture, ActionsThatChangeNothingScheduleNoSave) {
  StartKeeping();
  EXPECT_EQ(Perform(kPlaylistType, "IdArray", {}).errorCode, 0);
  EXPECT_EQ(Perform(kPlaylistType, "Repeat", {}).errorCode, 0);
  EXPECT_EQ(Perform(kTimeType, "Time", {}).errorCode, 0);
  // An Insert after an id that names no track fails: nothing changed.
  EXPECT_NE(Perform(kPlaylistType, "Insert", {{"AfterId", "99"}, {"Uri", "http://h/a.flac"}, {"Metadata", ""}}).errorCode,
            0);
  EXPECT_FALSE(renderer_->Keeper()->SavePending());
}

TEST_F(PlaylistKeeperFixture, ShutdownWritesAPendingChangeAtOnce) {
  StartKeeping();
  Insert("0", "http://h/1.flac", "");
  HOST_StepFailure failure;
  ASSERT_TRUE(renderer_->Shutdown(&failure)) << failure.step;
  EXPECT_EQ(writes_, 1);
  HOST_SavedPlaylist saved;
  std::string error;
  ASSERT_EQ(HOST_ReadPlaylistFile(path_, &saved, &error), HOST_PlaylistFileStatus::Read) << error;
  ASSERT_EQ(saved.tracks.size(), 1u);
  EXPECT_EQ(saved.tracks[0].uri, "http://h/1.flac");
}

TEST_F(PlaylistKeeperFixture, SaveOfAThousandTracksIsQuick) {
  StartKeeping();
  const std::string metadata =
      "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\"><item id=\"1\" parentID=\"0\" "
      "restricted=\"1\"><dc:title>A title of some length &amp; more</dc:title><upnp:artist>An Artist</upnp:artist>"
      "<upnp:album>An Album</upnp:album><res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:04:12.000\">"
      "http://192.168.1.2:9000/music/track.flac</res></item></DIDL-Lite>";
  std::string after = "0";
  for (int i = 0; i < 1000; ++i) after = Insert(after, "http://192.168.1.2:9000/music/" + std::to_string(i) + ".flac", metadata);
  const gint64 start = g_get_monotonic_time();
  ASSERT_TRUE(renderer_->Keeper()->Save());
  const gint64 elapsedUs = g_get_monotonic_time() - start;
  RecordProperty("save_1000_tracks_us", static_cast<int>(elapsedUs));
  std::printf("saving 1000 tracks (snapshot and write): %.1f ms, %zu bytes\n", elapsedUs / 1000.0,
              ReadWholeFile(path_).size());
  // A save runs on the main loop between two actions; it must stay well below a control point's patience.
  EXPECT_LT(elapsedUs, 1000 * 1000);
}

TEST_F(PlaylistKeeperFixture, UnfinishedCopyOfACutShortSaveIsRemovedAtStart) {
  directory_.WriteFile("playlist.xml.Ab12Cd", "<Playlist version=\"1\" rep");
  StartKeeping();
  EXPECT_FALSE(std::filesystem::exists(directory_.Path("playlist.xml.Ab12Cd")));
  EXPECT_TRUE(Served().tracks.empty());
}

// What is not a saved playlist: empty, truncated, garbage, too large, with a DTD.
class RefusedPlaylistFile : public PlaylistKeeperFixture, public ::testing::WithParamInterface<std::string> {};

TEST_P(RefusedPlaylistFile, IsSetAsideAndThePlaylistStartsEmpty) {
  std::string content = GetParam();
  if (content == "oversized") content = std::string(kMaxPlaylistFileBytes + 1, ' ');
  directory_.WriteFile("playlist.xml", content);
  StartKeeping();
  EXPECT_TRUE(Served().tracks.empty());
  EXPECT_FALSE(std::filesystem::exists(path_));
  EXPECT_EQ(ReadWholeFile(path_ + ".bad"), content);
  // The next change is saved anew.
  Insert("0", "http://h/1.flac", "");
  ASSERT_TRUE(renderer_->Keeper()->Save());
  EXPECT_FALSE(renderer_->Keeper()->SavePending());
  HOST_SavedPlaylist saved;
  std::string error;
  EXPECT_EQ(HOST_ReadPlaylistFile(path_, &saved, &error), HOST_PlaylistFileStatus::Read) << error;
}

INSTANTIATE_TEST_SUITE_P(
    PlaylistKeeper, RefusedPlaylistFile,
    ::testing::Values("", "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<Playlist version=\"1\" repeat=\"false\" sh",
                      "\x00\x01garbage\xff", "oversized",
                      "<!DOCTYPE Playlist [<!ENTITY e \"x\">]><Playlist version=\"1\" repeat=\"false\" "
                      "shuffle=\"false\"><Track><Uri>&e;</Uri><Metadata/></Track></Playlist>"));
