// Checks the ReadList IdList reading (PLAYLIST_BuildTrackList, with the OpenHome store's escaping as the
// action uses it): for a playlist the input fills (ids near 2^31 and 2^32 included) and an arbitrary
// IdList, the document is exactly the one read here on our own terms (split at each blank, strtol base 10,
// the low 32 bits as a signed id, an unknown id skipped, a repeated one repeated, metadata escaped).
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cinttypes>
#include <cstdio>
#include <string>

#include "EscapeXml.h"
#include "FuzzCheck.h"
#include "FuzzScript.h"
#include "PlaylistTestPeer.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "playlist/TrackList.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"

namespace {

constexpr const char* kMetadata[] = {"", "<DIDL-Lite><item><dc:title>A &amp; B</dc:title></item></DIDL-Lite>",
                                     "&<>\"'", "plain"};

const char* EscapeWithStore(void* store, const char* text) {
  return static_cast<SINK_UPNP_OpenHomeStateVariableManager*>(store)->ConvertControlCharacter(text);
}

// The document as the IdList asks for it, read independently of the code under test.
std::string Expected(PLAYLIST_PlaylistManager& playlist, const std::string& idList) {
  std::string document = "<TrackList>";
  std::string escaped;
  std::size_t start = 0;
  for (;;) {
    const std::size_t blank = idList.find(' ', start);
    const std::string piece = idList.substr(start, blank == std::string::npos ? std::string::npos : blank - start);
    const int32_t id = static_cast<int32_t>(std::strtol(piece.c_str(), nullptr, 10));
    for (const PLAYLIST_PlaylistData* track : PLAYLIST_PlaylistManagerTestPeer::Records(playlist)) {
      if (track->getId() != static_cast<uint64_t>(static_cast<int64_t>(id))) continue;
      char text[24];
      std::snprintf(text, sizeof text, "%" PRIu64, track->getId());
      document += std::string("<Entry><Id>") + text + "</Id><Uri>" + track->getUri() + "</Uri><Metadata>" +
                  EscapeXml(&escaped, track->getMetaData()) + "</Metadata></Entry>";
      break;
    }
    if (blank == std::string::npos) break;
    start = blank + 1;
  }
  return document + "</TrackList>";
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  static SINK_UPNP_OpenHomeStateVariableManager store;
  FuzzScript script(data, size);
  PLAYLIST_PlaylistManager playlist;
  // Ids from where the input says: 1, just below 2^31 or 2^32, or anywhere.
  constexpr uint64_t kStarts[] = {0, 0x7FFFFFFDu, 0xFFFFFFFDu, 0x17FFFFFFDu};
  const uint8_t start = script.Byte();
  PLAYLIST_PlaylistManagerTestPeer::SetLastId(&playlist, start < 252 ? kStarts[start % 4] : script.Number<uint32_t>());
  const int count = script.Between(0, 8);
  for (int i = 0; i < count; ++i) {
    uint64_t newId = 0;
    const std::string uri = "http://127.0.0.1:9/" + std::to_string(i);
    FUZZ_CHECK(playlist.Insert(uri.c_str(), script.Pick(kMetadata, 64).c_str(), 0, &newId) == 0);
  }
  std::string idList = script.Text(size);
  std::string document = "untouched";
  const int32_t result = PLAYLIST_BuildTrackList(&playlist, idList.c_str(), &EscapeWithStore, &store, &document);
  FUZZ_CHECK(result == 0);
  FUZZ_CHECK(document == Expected(playlist, idList));
  return 0;
}
