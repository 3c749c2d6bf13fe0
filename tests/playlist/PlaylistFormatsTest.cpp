#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "EscapeXml.h"
#include "PlaylistTestPeer.h"
#include "PlaylistTestSupport.h"
#include "ScopedAllocationFailure.h"
#include "ScopedFault.h"
#include "playlist/PlaylistManager.h"
#include "playlist/TrackList.h"
#include "sink_upnp/ResultCode.h"

namespace {

using Peer = PLAYLIST_PlaylistManagerTestPeer;

std::string Encode(const std::vector<unsigned char>& bytes) {
  PLAYLIST_PlaylistManager playlist;
  std::string text = "former";
  EXPECT_EQ(playlist.encode_base64(bytes, text), 1);
  return text;
}

std::vector<unsigned char> Bytes(const std::string& text) { return {text.begin(), text.end()}; }

// The IdArray as a string, or "<failed>".
// The IdArray as the IdArray action asks for it: in a buffer of 9 bytes per track and one more.
std::string IdArray(PLAYLIST_PlaylistManager* playlist) {
  std::vector<char> storage(9 * playlist->GetTrackCount() + 1, 'X');
  char* buffer = storage.data();
  if (playlist->GetIdArray(&buffer) != SINK_UPNP_OK) return "<failed>";
  return std::string(buffer);
}

const char* EscapeNothing(void*, const char* text) { return text; }
const char* EscapeFails(void*, const char*) { return nullptr; }

// ---- encode_base64 -------------------------------------------------------------------------------

TEST(PlaylistBase64, EncodesTheRfc4648TestVectors) {
  EXPECT_EQ(Encode(Bytes("")), "");
  EXPECT_EQ(Encode(Bytes("f")), "Zg==");
  EXPECT_EQ(Encode(Bytes("fo")), "Zm8=");
  EXPECT_EQ(Encode(Bytes("foo")), "Zm9v");
  EXPECT_EQ(Encode(Bytes("foob")), "Zm9vYg==");
  EXPECT_EQ(Encode(Bytes("fooba")), "Zm9vYmE=");
  EXPECT_EQ(Encode(Bytes("foobar")), "Zm9vYmFy");
}

TEST(PlaylistBase64, OneByteFFGivesSlashWPadded) { EXPECT_EQ(Encode({0xFF}), "/w=="); }

TEST(PlaylistBase64, TwoBytesFFGiveSlashSlashEightPadded) { EXPECT_EQ(Encode({0xFF, 0xFF}), "//8="); }

TEST(PlaylistBase64, UsesPlusAndSlashForTheLastTwoValues) { EXPECT_EQ(Encode({0xFB, 0xFF, 0xBF}), "+/+/"); }

TEST(PlaylistBase64, IdsOneAndTwoGiveTheTextWithOnePaddingCharacter) {
  EXPECT_EQ(Encode({0, 0, 0, 1, 0, 0, 0, 2}), "AAAAAQAAAAI=");
}

TEST(PlaylistBase64, ReplacesTheFormerContentOfTheOutput) {
  PLAYLIST_PlaylistManager playlist;
  std::string text = "something long that was here before";
  EXPECT_EQ(playlist.encode_base64(Bytes("f"), text), 1);
  EXPECT_EQ(text, "Zg==");
}

TEST(PlaylistBase64, WithoutMemoryAnswersNoMemoryAndKeepsTheOutput) {
  PLAYLIST_PlaylistManager playlist;
  std::string text = "before";
  const std::vector<unsigned char> bytes(100, 0x41);
  int result = 0;
  {
    const ScopedAllocationFailure failure(1);
    result = playlist.encode_base64(bytes, text);
  }
  EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(text, "before");
}

// ---- GetIdArray ----------------------------------------------------------------------------------

TEST(PlaylistIdArray, EmptyPlaylistGivesTheEmptyTextInAOneByteBuffer) {
  PLAYLIST_PlaylistManager playlist;
  // One byte, allocated exactly: the sanitizer reports any write beyond it.
  std::unique_ptr<char[]> storage(new char[1]{'X'});
  char* buffer = storage.get();
  ASSERT_EQ(playlist.GetIdArray(&buffer), SINK_UPNP_OK);
  EXPECT_EQ(buffer, storage.get());
  EXPECT_STREQ(buffer, "");
}

TEST(PlaylistIdArray, NullBufferIsRefused) {
  PLAYLIST_PlaylistManager playlist;
  char* buffer = nullptr;
  EXPECT_EQ(playlist.GetIdArray(&buffer), SINK_UPNP_ERR_NULL_ARGUMENT);
}

TEST(PlaylistIdArray, IdsOneTwoThreeGiveTwelveBytesWithoutPadding) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  EXPECT_EQ(IdArray(&playlist), "AAAAAQAAAAIAAAAD");
}

TEST(PlaylistIdArray, IdsOneAndTwoGiveOnePaddingCharacter) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  EXPECT_EQ(IdArray(&playlist), "AAAAAQAAAAI=");
}

TEST(PlaylistIdArray, OneTrackGivesEightCharacters) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  EXPECT_EQ(IdArray(&playlist), "AAAAAQ==");
}

TEST(PlaylistIdArray, IdAboveThirtyTwoBitsIsReportedByItsLowBits) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetLastId(&playlist, 0x100000000ull);
  ASSERT_EQ(AddTrack(&playlist), 0x100000001ull);
  EXPECT_EQ(IdArray(&playlist), "AAAAAQ==");
}

TEST(PlaylistIdArray, FollowsThePlaylistOrderNotTheShuffledOrder) {
  ScopedShuffleSource source;
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("u", "m", 0, &id), SINK_UPNP_OK);  // 4 1 2 3
  source.Script({0, 0, 0});
  ASSERT_EQ(playlist.SetShuffle(1), SINK_UPNP_OK);
  EXPECT_EQ(DecodeIdArray(IdArray(&playlist)), (std::vector<uint32_t>{4, 1, 2, 3}));
}

TEST(PlaylistIdArray, WritesTheTextAndItsTerminatorAndNothingBeyond) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  char storage[10];
  std::memset(storage, 'X', sizeof storage);
  char* buffer = storage;
  ASSERT_EQ(playlist.GetIdArray(&buffer), SINK_UPNP_OK);
  EXPECT_EQ(std::memcmp(storage, "AAAAAQ==\0X", 10), 0);
}

TEST(PlaylistIdArray, NullOutIsRefused) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  EXPECT_EQ(playlist.GetIdArray(nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
}

TEST(PlaylistIdArray, WorkingMemoryFailureAnswersNoMemoryAndLeavesOut) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 5);  // 20 bytes, 28 characters: both the bytes and the text need the heap
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    char storage[46] = "untouched";
    char* buffer = storage;
    int32_t result = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = playlist.GetIdArray(&buffer);
      ASSERT_EQ(failure.Fired(), 1u) << nth;
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY) << nth;
    EXPECT_EQ(buffer, storage);
    EXPECT_STREQ(storage, "untouched");
  }
  EXPECT_EQ(DecodeIdArray(IdArray(&playlist)), (std::vector<uint32_t>{1, 2, 3, 4, 5}));
}

// ---- PlaylistXml ---------------------------------------------------------------------------------

TEST(PlaylistXmlDocument, EmptyPlaylistGivesOpeningAndClosingOnly) {
  PLAYLIST_PlaylistManager playlist;
  std::string xml;
  EXPECT_EQ(playlist.PlaylistXml(&xml), SINK_UPNP_OK);
  EXPECT_EQ(xml, "<TrackList></TrackList>");
}

TEST(PlaylistXmlDocument, ListsEveryTrackInPlaylistOrder) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 2);
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("first", "m0", 0, &id), SINK_UPNP_OK);
  std::string xml;
  EXPECT_EQ(playlist.PlaylistXml(&xml), SINK_UPNP_OK);
  EXPECT_EQ(xml,
            "<TrackList>"
            "<Entry><Id>3</Id><Uri>first</Uri><Metadata>m0</Metadata></Entry>"
            "<Entry><Id>1</Id><Uri>uri1</Uri><Metadata>meta1</Metadata></Entry>"
            "<Entry><Id>2</Id><Uri>uri2</Uri><Metadata>meta2</Metadata></Entry>"
            "</TrackList>");
}

TEST(PlaylistXmlDocument, WritesUriAndMetadataUnescaped) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("http://h/a?x=1&y=2", "<DIDL-Lite>&</DIDL-Lite>", 0, &id), SINK_UPNP_OK);
  std::string xml;
  EXPECT_EQ(playlist.PlaylistXml(&xml), SINK_UPNP_OK);
  EXPECT_EQ(xml,
            "<TrackList><Entry><Id>1</Id><Uri>http://h/a?x=1&y=2</Uri>"
            "<Metadata><DIDL-Lite>&</DIDL-Lite></Metadata></Entry></TrackList>");
}

TEST(PlaylistXmlDocument, WritesTheFullSixtyFourBitIdInDecimal) {
  PLAYLIST_PlaylistManager playlist;
  Peer::SetLastId(&playlist, 0x100000000ull);
  AddTrack(&playlist);
  std::string xml;
  EXPECT_EQ(playlist.PlaylistXml(&xml), SINK_UPNP_OK);
  EXPECT_NE(xml.find("<Id>4294967297</Id>"), std::string::npos) << xml;
}

TEST(PlaylistXmlDocument, KeepsTheFormerContentInFront) {
  PLAYLIST_PlaylistManager playlist;
  std::string xml = "prefix:";
  EXPECT_EQ(playlist.PlaylistXml(&xml), SINK_UPNP_OK);
  EXPECT_EQ(xml, "prefix:<TrackList></TrackList>");
}

TEST(PlaylistXmlDocument, NullOutAnswersGenericFailure) {
  PLAYLIST_PlaylistManager playlist;
  EXPECT_EQ(playlist.PlaylistXml(nullptr), SINK_UPNP_ERR_GENERIC);
}

TEST(PlaylistXmlDocument, WithoutMemoryAnswersNoMemoryAndLeavesOut) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  for (unsigned long nth = 1;; ++nth) {
    std::string xml = "prefix:";
    int32_t result = 0;
    unsigned long fired = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = playlist.PlaylistXml(&xml);
      fired = failure.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, SINK_UPNP_OK);
      break;
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY) << nth;
    EXPECT_EQ(xml, "prefix:") << nth;
  }
}

// ---- TrackList pieces and the ReadList document --------------------------------------------------

TEST(PlaylistTrackList, PiecesAreTheFixedTexts) {
  EXPECT_STREQ(PLAYLIST_trackListOpening, "<TrackList>");
  EXPECT_STREQ(PLAYLIST_trackListEntryOpening, "<Entry><Id>");
  EXPECT_STREQ(PLAYLIST_trackListIdToUri, "</Id><Uri>");
  EXPECT_STREQ(PLAYLIST_trackListUriToMetadata, "</Uri><Metadata>");
  EXPECT_STREQ(PLAYLIST_trackListEntryClosing, "</Metadata></Entry>");
  EXPECT_STREQ(PLAYLIST_trackListClosing, "</TrackList>");
}

TEST(PlaylistTrackList, AppendEntryWritesOneEntryAsGiven) {
  std::string xml = "x";
  EXPECT_EQ(PLAYLIST_AppendTrackListEntry(&xml, 12, "u&", "m<"), SINK_UPNP_OK);
  EXPECT_EQ(xml, "x<Entry><Id>12</Id><Uri>u&</Uri><Metadata>m<</Metadata></Entry>");
}

TEST(PlaylistTrackList, AppendEntryRefusesNullArguments) {
  std::string xml;
  EXPECT_EQ(PLAYLIST_AppendTrackListEntry(nullptr, 1, "u", "m"), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(PLAYLIST_AppendTrackListEntry(&xml, 1, nullptr, "m"), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(PLAYLIST_AppendTrackListEntry(&xml, 1, "u", nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(xml, "");
}

TEST(PlaylistReadList, EmptyIdListGivesOpeningDirectlyFollowedByClosing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  std::string xml = "former";
  std::string escapeBuffer;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "", &EscapeXml, &escapeBuffer, &xml), SINK_UPNP_OK);
  EXPECT_EQ(xml, "<TrackList></TrackList>");
}

TEST(PlaylistReadList, IdAskedForTwiceIsListedTwiceAndAnUnknownIdAddsNothing) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 6);
  std::string xml;
  std::string escapeBuffer;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "5 99 5", &EscapeXml, &escapeBuffer, &xml), SINK_UPNP_OK);
  const std::string entry = "<Entry><Id>5</Id><Uri>uri5</Uri><Metadata>meta5</Metadata></Entry>";
  EXPECT_EQ(xml, "<TrackList>" + entry + entry + "</TrackList>");
}

TEST(PlaylistReadList, EntriesFollowTheIdListNotThePlaylist) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  std::string xml;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "3 1", &EscapeNothing, nullptr, &xml), SINK_UPNP_OK);
  EXPECT_EQ(xml,
            "<TrackList><Entry><Id>3</Id><Uri>uri3</Uri><Metadata>meta3</Metadata></Entry>"
            "<Entry><Id>1</Id><Uri>uri1</Uri><Metadata>meta1</Metadata></Entry></TrackList>");
}

TEST(PlaylistReadList, MetadataIsEscapedAndTheUriIsNot) {
  PLAYLIST_PlaylistManager playlist;
  uint64_t id = 0;
  ASSERT_EQ(playlist.Insert("http://h/a?x=1&y=2", "a&b<x>", 0, &id), SINK_UPNP_OK);
  std::string xml;
  std::string escapeBuffer;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "1", &EscapeXml, &escapeBuffer, &xml), SINK_UPNP_OK);
  EXPECT_EQ(xml,
            "<TrackList><Entry><Id>1</Id><Uri>http://h/a?x=1&y=2</Uri>"
            "<Metadata>a&amp;b&lt;x&gt;</Metadata></Entry></TrackList>");
}

TEST(PlaylistReadList, ConsecutiveBlanksGiveEmptyPiecesThatNameNoTrack) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  std::string xml;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "1  2 ", &EscapeNothing, nullptr, &xml), SINK_UPNP_OK);
  // An empty piece reads 0, never the number after the next blank.
  EXPECT_EQ(xml,
            "<TrackList><Entry><Id>1</Id><Uri>uri1</Uri><Metadata>meta1</Metadata></Entry>"
            "<Entry><Id>2</Id><Uri>uri2</Uri><Metadata>meta2</Metadata></Entry></TrackList>");
}

TEST(PlaylistReadList, PieceIsReadAsItsLeadingDecimalNumber) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  std::string xml;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "2abc x -1 +3", &EscapeNothing, nullptr, &xml), SINK_UPNP_OK);
  EXPECT_EQ(xml,
            "<TrackList><Entry><Id>2</Id><Uri>uri2</Uri><Metadata>meta2</Metadata></Entry>"
            "<Entry><Id>3</Id><Uri>uri3</Uri><Metadata>meta3</Metadata></Entry></TrackList>");
}

TEST(PlaylistReadList, DoesNotMoveTheCurrentPosition) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  std::string xml;
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "3", &EscapeNothing, nullptr, &xml), SINK_UPNP_OK);
  EXPECT_EQ(Peer::CurrentIndex(playlist), 0u);
}

TEST(PlaylistReadList, RefusesNullArguments) {
  PLAYLIST_PlaylistManager playlist;
  std::string xml = "former";
  EXPECT_EQ(PLAYLIST_BuildTrackList(nullptr, "", &EscapeNothing, nullptr, &xml), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, nullptr, &EscapeNothing, nullptr, &xml),
            SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "", nullptr, nullptr, &xml), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "", &EscapeNothing, nullptr, nullptr),
            SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(xml, "former");
}

TEST(PlaylistReadList, EscapingThatFailsAnswersGenericFailureAndLeavesOut) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 1);
  std::string xml = "former";
  EXPECT_EQ(PLAYLIST_BuildTrackList(&playlist, "1", &EscapeFails, nullptr, &xml), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(xml, "former");
}

TEST(PlaylistReadList, WithoutMemoryAnswersNoMemoryAndLeavesOut) {
  PLAYLIST_PlaylistManager playlist;
  AddTracks(&playlist, 3);
  for (unsigned long nth = 1;; ++nth) {
    std::string xml = "former";
    int32_t result = 0;
    unsigned long fired = 0;
    {
      const ScopedAllocationFailure failure(nth);
      result = PLAYLIST_BuildTrackList(&playlist, "1 2 3 1", &EscapeNothing, nullptr, &xml);
      fired = failure.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, SINK_UPNP_OK);
      break;
    }
    EXPECT_EQ(result, DMR_CMN_ERR_NO_MEMORY) << nth;
    EXPECT_EQ(xml, "former") << nth;
  }
}

}  // namespace
