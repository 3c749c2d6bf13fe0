#include "PlaylistInvariants.h"

#include <algorithm>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "FuzzCheck.h"
#include "PlaylistTestPeer.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;

// RFC 4648 Base64 with padding, decoded strictly; false for any text that is not such an encoding.
bool DecodeBase64(const std::string& text, std::vector<unsigned char>* bytes) {
  static const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  bytes->clear();
  if (text.size() % 4 != 0) return false;
  for (std::size_t at = 0; at < text.size(); at += 4) {
    unsigned value = 0;
    int padding = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      const char c = text[at + i];
      unsigned digit = 0;
      if (c == '=') {
        if (at + 4 != text.size() || i < 2) return false;
        ++padding;
      } else {
        if (padding != 0) return false;
        const std::size_t found = kAlphabet.find(c);
        if (found == std::string::npos) return false;
        digit = static_cast<unsigned>(found);
      }
      value = (value << 6) | digit;
    }
    bytes->push_back(static_cast<unsigned char>(value >> 16));
    if (padding < 2) bytes->push_back(static_cast<unsigned char>(value >> 8));
    if (padding < 1) bytes->push_back(static_cast<unsigned char>(value));
  }
  return true;
}

void CheckIdArray(PLAYLIST_PlaylistManager& playlist, const std::vector<uint64_t>& ids) {
  const std::size_t size = 9 * ids.size() + 1;
  char* buffer = static_cast<char*>(std::calloc(size, 1));
  FUZZ_CHECK(buffer != nullptr);
  FUZZ_CHECK(playlist.GetIdArray(&buffer) == 0);
  FUZZ_CHECK(std::memchr(buffer, '\0', size) != nullptr);
  const std::string text(buffer);
  std::free(buffer);
  std::vector<unsigned char> bytes;
  FUZZ_CHECK(DecodeBase64(text, &bytes));
  FUZZ_CHECK(bytes.size() == 4 * ids.size());
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const uint32_t low = static_cast<uint32_t>(ids[i]);
    const uint32_t read = static_cast<uint32_t>(bytes[4 * i]) << 24 | static_cast<uint32_t>(bytes[4 * i + 1]) << 16 |
                          static_cast<uint32_t>(bytes[4 * i + 2]) << 8 | static_cast<uint32_t>(bytes[4 * i + 3]);
    FUZZ_CHECK(read == low);
  }
}

void CheckTrackList(PLAYLIST_PlaylistManager& playlist) {
  std::string expected = "<TrackList>";
  for (const PLAYLIST_PlaylistData* track : Peer::Records(playlist)) {
    FUZZ_CHECK(track->getUri() != nullptr && track->getMetaData() != nullptr);
    char id[24];
    std::snprintf(id, sizeof id, "%" PRIu64, track->getId());
    expected += std::string("<Entry><Id>") + id + "</Id><Uri>" + track->getUri() + "</Uri><Metadata>" +
                track->getMetaData() + "</Metadata></Entry>";
  }
  expected += "</TrackList>";
  std::string document;
  FUZZ_CHECK(playlist.PlaylistXml(&document) == 0);
  FUZZ_CHECK(document == expected);
}

}  // namespace

void CheckPlaylistInvariants(PLAYLIST_PlaylistManager& playlist, bool everything) {
  const std::vector<uint64_t> ids = Peer::Ids(playlist);
  const uint64_t lastId = Peer::LastId(playlist);
  for (const uint64_t id : ids) FUZZ_CHECK(id >= 1 && id <= lastId);
  std::vector<uint64_t> sorted = ids;
  std::sort(sorted.begin(), sorted.end());
  FUZZ_CHECK(std::adjacent_find(sorted.begin(), sorted.end()) == sorted.end());

  FUZZ_CHECK(Peer::Order(playlist).size() == ids.size());
  FUZZ_CHECK(playlist.GetTrackCount() == ids.size());
  FUZZ_CHECK(ids.empty() || Peer::CurrentIndex(playlist) < ids.size());

  if (!everything && ids.size() > kCheapCheckTracks) return;
  CheckIdArray(playlist, ids);
  CheckTrackList(playlist);
}
