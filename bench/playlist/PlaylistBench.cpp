// What a full playlist costs. Every playlist operation walks the list from the front (no index is kept),
// so these figures are the price of that choice at the largest playlist Insert accepts (1001 tracks).
#include <benchmark/benchmark.h>

#include <cstdint>
#include <cstdlib>
#include <string>
#include <vector>

// The test support's escaping, by path: header-only, so the benchmark links nothing of the tests.
#include "../../tests/support/EscapeXml.h"
#include "playlist/PlaylistManager.h"
#include "playlist/TrackList.h"

namespace {

constexpr int kFullPlaylist = 1001;

std::string TrackMetaData(int n) {
  return "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
         "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" "
         "xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">"
         "<item id=\"" +
         std::to_string(n) + "\" parentID=\"0\" restricted=\"1\"><dc:title>Track " + std::to_string(n) +
         " &amp; Title</dc:title><upnp:artist>Artist</upnp:artist><upnp:album>Album"
         "</upnp:album><upnp:class>object.item.audioItem.musicTrack</upnp:class><res protocolInfo=\""
         "http-get:*:audio/flac:*\" duration=\"0:04:31.000\">http://127.0.0.1:8200/music/" +
         std::to_string(n) + ".flac</res></item></DIDL-Lite>";
}

std::string TrackUri(int n) { return "http://127.0.0.1:8200/music/" + std::to_string(n) + ".flac"; }

// Fills `playlist` with `count` tracks appended in turn; answers the id of the last.
uint64_t Fill(PLAYLIST_PlaylistManager* playlist, int count) {
  uint64_t last = 0;
  for (int n = 1; n <= count; ++n) {
    uint64_t id = 0;
    if (playlist->Insert(TrackUri(n).c_str(), TrackMetaData(n).c_str(), last, &id) != 0) std::abort();
    last = id;
  }
  return last;
}

const char* EscapeNothing(void*, const char* text) { return text; }

// Insert of the 1001st track at the end (the last track's id as afterId); the track is taken out again
// outside the timing.
void BM_InsertAtTheEndOfAFullPlaylist(benchmark::State& state) {
  PLAYLIST_PlaylistManager playlist;
  const uint64_t last = Fill(&playlist, kFullPlaylist - 1);
  const std::string uri = TrackUri(kFullPlaylist);
  const std::string metadata = TrackMetaData(kFullPlaylist);
  for (auto _ : state) {
    uint64_t id = 0;
    benchmark::DoNotOptimize(playlist.Insert(uri.c_str(), metadata.c_str(), last, &id));
    state.PauseTiming();
    int wasCurrent = 0;
    if (playlist.DeleteId(static_cast<int32_t>(id), &wasCurrent) != 0) std::abort();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_InsertAtTheEndOfAFullPlaylist);

// DeleteId of the middle track of 1001; the track is put back in its place outside the timing.
void BM_DeleteIdOfTheMiddleTrack(benchmark::State& state) {
  PLAYLIST_PlaylistManager playlist;
  Fill(&playlist, kFullPlaylist);
  const PLAYLIST_PlaylistData* before = playlist.SeekIndexTrackData(kFullPlaylist / 2 - 1);
  const uint64_t beforeId = before->getId();
  uint64_t middleId = playlist.SeekIndexTrackData(kFullPlaylist / 2)->getId();
  playlist.SeekIndexTrackData(0);
  const std::string uri = TrackUri(0);
  const std::string metadata = TrackMetaData(0);
  for (auto _ : state) {
    int wasCurrent = 0;
    benchmark::DoNotOptimize(playlist.DeleteId(static_cast<int32_t>(middleId), &wasCurrent));
    state.PauseTiming();
    if (playlist.Insert(uri.c_str(), metadata.c_str(), beforeId, &middleId) != 0) std::abort();
    state.ResumeTiming();
  }
}
BENCHMARK(BM_DeleteIdOfTheMiddleTrack);

void BM_GetIdArrayOfAFullPlaylist(benchmark::State& state) {
  PLAYLIST_PlaylistManager playlist;
  Fill(&playlist, kFullPlaylist);
  std::vector<char> storage(9 * playlist.GetTrackCount() + 1);
  for (auto _ : state) {
    char* buffer = storage.data();
    benchmark::DoNotOptimize(playlist.GetIdArray(&buffer));
  }
}
BENCHMARK(BM_GetIdArrayOfAFullPlaylist);

void BM_PlaylistXmlOfAFullPlaylist(benchmark::State& state) {
  PLAYLIST_PlaylistManager playlist;
  Fill(&playlist, kFullPlaylist);
  std::string xml;
  for (auto _ : state) {
    xml.clear();
    benchmark::DoNotOptimize(playlist.PlaylistXml(&xml));
  }
  state.counters["bytes"] = static_cast<double>(xml.size());
}
BENCHMARK(BM_PlaylistXmlOfAFullPlaylist);

// The ReadList way: every id of a full playlist in one IdList, each looked up from the front.
void ReadListAllIds(benchmark::State& state, PLAYLIST_TrackListEscape escape) {
  PLAYLIST_PlaylistManager playlist;
  Fill(&playlist, kFullPlaylist);
  std::string idList;
  for (int id = 1; id <= kFullPlaylist; ++id) idList += (id > 1 ? " " : "") + std::to_string(id);
  std::string escapeBuffer;
  std::string xml;
  for (auto _ : state) {
    benchmark::DoNotOptimize(PLAYLIST_BuildTrackList(&playlist, idList.c_str(), escape, &escapeBuffer, &xml));
  }
  state.counters["bytes"] = static_cast<double>(xml.size());
}

void BM_ReadListAllIdsOfAFullPlaylist(benchmark::State& state) { ReadListAllIds(state, &EscapeNothing); }
BENCHMARK(BM_ReadListAllIdsOfAFullPlaylist);

void BM_ReadListAllIdsOfAFullPlaylistWithEscaping(benchmark::State& state) {
  ReadListAllIds(state, &EscapeXml);
}
BENCHMARK(BM_ReadListAllIdsOfAFullPlaylistWithEscaping);

// A new shuffled order for a full playlist (the places are found by walking from the front).
void BM_ShuffleAFullPlaylist(benchmark::State& state) {
  PLAYLIST_PlaylistManager playlist;
  Fill(&playlist, kFullPlaylist);
  playlist.SetShuffle(1);
  for (auto _ : state) benchmark::DoNotOptimize(playlist.ShufflePlaylist(0));
}
BENCHMARK(BM_ShuffleAFullPlaylist);

}  // namespace
