// The saved playlist's file: what is written reads back the same, and what is not exactly such a file is
// refused with its reason; the OpenHome answers the snapshot is made of, read strictly.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "PlaylistFile.h"
#include "PlaylistSnapshot.h"
#include "TempDirectory.h"

namespace {

HOST_SavedPlaylist ThreeTracks() {
  HOST_SavedPlaylist playlist;
  playlist.tracks = {{"http://192.168.1.2:9000/a.flac?x=1&y=2", "<DIDL-Lite><dc:title>Tom & \"Jerry\" 'live'</dc:title></DIDL-Lite>"},
                     {"http://192.168.1.2:9000/b.flac", ""},
                     {"http://192.168.1.2:9000/c%20d.flac", "Sigur R\xc3\xb3s \xe2\x80\x94 \xe6\x97\xa5\xe6\x9c\xac\nline two\ttab"}};
  playlist.repeat = true;
  playlist.shuffle = false;
  return playlist;
}

std::string Refusal(const std::string& text) {
  HOST_SavedPlaylist playlist;
  std::string error;
  EXPECT_FALSE(HOST_ReadPlaylistText(text, &playlist, &error)) << text;
  EXPECT_TRUE(playlist.tracks.empty());
  return error;
}

}  // namespace

TEST(PlaylistFile, WrittenPlaylistReadsBackTheSame) {
  const HOST_SavedPlaylist written = ThreeTracks();
  HOST_SavedPlaylist read;
  std::string error;
  ASSERT_TRUE(HOST_ReadPlaylistText(HOST_WritePlaylistText(written), &read, &error)) << error;
  EXPECT_EQ(read, written);
}

TEST(PlaylistFile, EmptyPlaylistReadsBackEmptyWithItsModes) {
  HOST_SavedPlaylist written;
  written.shuffle = true;
  HOST_SavedPlaylist read;
  read.tracks.push_back({"x", "y"});
  std::string error;
  ASSERT_TRUE(HOST_ReadPlaylistText(HOST_WritePlaylistText(written), &read, &error)) << error;
  EXPECT_EQ(read, written);
}

TEST(PlaylistFile, EmptyTextIsRefused) { EXPECT_EQ(Refusal(""), "the file is empty"); }

TEST(PlaylistFile, TruncatedFileIsRefused) {
  const std::string text = HOST_WritePlaylistText(ThreeTracks());
  for (const std::size_t length : {text.size() / 3, text.size() / 2, text.size() - 3})
    EXPECT_EQ(Refusal(text.substr(0, length)).rfind("not well-formed XML", 0), 0u) << length;
}

TEST(PlaylistFile, OversizedTextIsRefusedBeforeParsing) {
  EXPECT_EQ(Refusal(std::string(kMaxPlaylistFileBytes + 1, ' ')),
            "the file is larger than " + std::to_string(kMaxPlaylistFileBytes) + " bytes");
}

TEST(PlaylistFile, DocumentTypeDeclarationIsRefused) {
  EXPECT_EQ(Refusal("<?xml version=\"1.0\"?><!DOCTYPE Playlist [<!ENTITY e \"x\">]>"
                    "<Playlist version=\"1\" repeat=\"false\" shuffle=\"false\"/>"),
            "the file has a document type declaration");
}

TEST(PlaylistFile, OtherVersionIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"2\" repeat=\"false\" shuffle=\"false\"/>"),
            "the Playlist attribute version is unknown or not valid");
}

TEST(PlaylistFile, ModeOtherThanTrueOrFalseIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"1\" repeat=\"yes\" shuffle=\"false\"/>"),
            "the Playlist attribute repeat is unknown or not valid");
}

TEST(PlaylistFile, MissingModeIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"1\" repeat=\"false\"/>"),
            "the Playlist element lacks version=\"1\", repeat or shuffle");
}

TEST(PlaylistFile, OtherRootIsRefused) {
  EXPECT_EQ(Refusal("<List version=\"1\" repeat=\"false\" shuffle=\"false\"/>"), "the root element is not Playlist");
}

TEST(PlaylistFile, TrackWithoutUriIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"1\" repeat=\"false\" shuffle=\"false\">"
                    "<Track><Uri></Uri><Metadata/></Track></Playlist>"),
            "track 1 is not a Track of a Uri and a Metadata");
}

TEST(PlaylistFile, TrackWithAnotherElementIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"1\" repeat=\"false\" shuffle=\"false\">"
                    "<Track><Uri>a</Uri><Metadata/></Track>"
                    "<Track><Uri>b</Uri><Metadata/><Extra/></Track></Playlist>"),
            "track 2 is not a Track of a Uri and a Metadata");
}

TEST(PlaylistFile, TextBesideTheTracksIsRefused) {
  EXPECT_EQ(Refusal("<Playlist version=\"1\" repeat=\"false\" shuffle=\"false\">stray</Playlist>"),
            "the Playlist element holds text or other nodes beside its tracks");
}

TEST(PlaylistFile, MoreTracksThanThePlaylistHoldsAreRefused) {
  HOST_SavedPlaylist playlist;
  playlist.tracks.assign(kMaxSavedTracks + 1, {"http://h/a.flac", ""});
  EXPECT_EQ(Refusal(HOST_WritePlaylistText(playlist)), "more than " + std::to_string(kMaxSavedTracks) + " tracks");
  playlist.tracks.pop_back();
  HOST_SavedPlaylist read;
  std::string error;
  EXPECT_TRUE(HOST_ReadPlaylistText(HOST_WritePlaylistText(playlist), &read, &error)) << error;
}

TEST(PlaylistFile, MissingFileIsToldApartFromARefusedOne) {
  TempDirectory directory;
  HOST_SavedPlaylist playlist;
  std::string error;
  EXPECT_EQ(HOST_ReadPlaylistFile(directory.Path("playlist.xml"), &playlist, &error), HOST_PlaylistFileStatus::Missing);
  directory.WriteFile("playlist.xml", "<Playlist");
  EXPECT_EQ(HOST_ReadPlaylistFile(directory.Path("playlist.xml"), &playlist, &error), HOST_PlaylistFileStatus::Refused);
  EXPECT_EQ(error.rfind("not well-formed XML", 0), 0u) << error;
}

TEST(PlaylistIdArray, DecodesBigEndianIdsInOrder) {
  std::vector<uint32_t> ids;
  ASSERT_TRUE(HOST_DecodeIdArray("AAAAAQAAAAIAAAAD", &ids));
  EXPECT_EQ(ids, (std::vector<uint32_t>{1, 2, 3}));
  ASSERT_TRUE(HOST_DecodeIdArray("AAAAAQAAAAI=", &ids));
  EXPECT_EQ(ids, (std::vector<uint32_t>{1, 2}));
  ASSERT_TRUE(HOST_DecodeIdArray("", &ids));
  EXPECT_TRUE(ids.empty());
}

TEST(PlaylistIdArray, TextThatIsNotExactlyBase64OfWholeIdsIsRefused) {
  std::vector<uint32_t> ids;
  EXPECT_FALSE(HOST_DecodeIdArray("AAAAAQAAAAI", &ids));    // padding missing
  EXPECT_FALSE(HOST_DecodeIdArray("AAAA AQ==", &ids));      // a blank inside
  EXPECT_FALSE(HOST_DecodeIdArray("AAAAAQA=", &ids));       // five bytes
  EXPECT_FALSE(HOST_DecodeIdArray("AAAAAQ==\n", &ids));     // a line break
}

TEST(PlaylistTrackList, UriIsTakenAsItStandsAndMetadataUnescaped) {
  HOST_SavedTrack track;
  ASSERT_TRUE(HOST_ReadSingleTrackList("<TrackList><Entry><Id>7</Id><Uri>http://h/a?x=1&y=</Uri><Metadata>2"
                                       "</Uri><Metadata>&lt;t&gt;Tom &amp; &quot;J&quot;&lt;/t&gt;</Metadata>"
                                       "</Entry></TrackList>",
                                       7, &track));
  EXPECT_EQ(track.uri, "http://h/a?x=1&y=</Uri><Metadata>2");
  EXPECT_EQ(track.metadata, "<t>Tom & \"J\"</t>");
}

TEST(PlaylistTrackList, ListOfAnotherTrackOrOfNoneIsRefused) {
  HOST_SavedTrack track;
  EXPECT_FALSE(HOST_ReadSingleTrackList("<TrackList></TrackList>", 7, &track));
  EXPECT_FALSE(HOST_ReadSingleTrackList(
      "<TrackList><Entry><Id>8</Id><Uri>u</Uri><Metadata></Metadata></Entry></TrackList>", 7, &track));
  EXPECT_FALSE(HOST_ReadSingleTrackList(
      "<TrackList><Entry><Id>7</Id><Uri>u</Uri><Metadata><b/></Metadata></Entry></TrackList>", 7, &track));
  EXPECT_TRUE(HOST_ReadSingleTrackList(
      "<TrackList><Entry><Id>7</Id><Uri>u</Uri><Metadata></Metadata></Entry></TrackList>", 7, &track));
  EXPECT_EQ(track.uri, "u");
  EXPECT_EQ(track.metadata, "");
}
