#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>

#include "ScopedFault.h"
#include "corva/MediaMetaData.h"
#include "dmr_cmn/Result.h"

namespace {

std::string ReadSample(const char* name) {
  const std::string path = std::string(DMR_TEST_DATA_DIR) + "/didl/" + name;
  std::ifstream file(path, std::ios::binary);
  EXPECT_TRUE(file.good()) << path;
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

// Sets the sample `name` and expects it to be accepted.
void SetSample(corva::MediaMetaData* metadata, const char* name) {
  const std::string text = ReadSample(name);
  ASSERT_FALSE(text.empty()) << name;
  ASSERT_EQ(metadata->SetConformMetaData(text.c_str()), 0) << name;
}

void ExpectEveryFieldEmpty(const corva::MediaMetaData& metadata) {
  EXPECT_STREQ(metadata.GetTitle(), "");
  EXPECT_STREQ(metadata.GetCreator(), "");
  EXPECT_STREQ(metadata.GetArtist(), "");
  EXPECT_STREQ(metadata.GetAlbum(), "");
  EXPECT_STREQ(metadata.GetGenre(), "");
  EXPECT_STREQ(metadata.GetClass(), "");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "");
  EXPECT_EQ(metadata.GetResourceCount(), 0u);
  EXPECT_STREQ(metadata.GetURI(), "");
  EXPECT_STREQ(metadata.GetProtocolInfo(), "");
  EXPECT_STREQ(metadata.GetDuration(), "");
  EXPECT_STREQ(metadata.GetSize(), "");
  EXPECT_STREQ(metadata.GetBitrate(), "");
  EXPECT_STREQ(metadata.GetSampleFrequency(), "");
  EXPECT_STREQ(metadata.GetNrAudioChannels(), "");
}

constexpr const char kFlacProtocolInfo[] =
    "http-get:*:audio/flac:DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";
constexpr const char kMp3ProtocolInfo[] =
    "http-get:*:audio/mpeg:DLNA.ORG_PN=MP3;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000";

TEST(MediaMetaData, NewObjectHasEmptyFieldsAndText) {
  corva::MediaMetaData metadata;
  EXPECT_STREQ(metadata.GetMetaDataText(), "");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, MinimalItemGivesTitleClassAndItsResource) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "minimal_item.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Morning Walk");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.musicTrack");
  EXPECT_STREQ(metadata.GetCreator(), "");
  EXPECT_STREQ(metadata.GetArtist(), "");
  EXPECT_STREQ(metadata.GetAlbum(), "");
  EXPECT_STREQ(metadata.GetGenre(), "");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "");
  ASSERT_EQ(metadata.GetResourceCount(), 1u);
  EXPECT_STREQ(metadata.GetURI(), "http://192.168.1.20:8200/media/7.mp3");
  EXPECT_STREQ(metadata.GetProtocolInfo(), "http-get:*:audio/mpeg:*");
  EXPECT_STREQ(metadata.GetDuration(), "");
  EXPECT_STREQ(metadata.GetSize(), "");
}

TEST(MediaMetaData, MetaDataTextIsTheTextGiven) {
  const std::string text = ReadSample("minimal_item.xml");
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData(text.c_str()), 0);
  EXPECT_EQ(metadata.GetMetaDataText(), text);
}

TEST(MediaMetaData, MusicTrackGivesItsDescriptiveFields) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Harbour Lights");
  EXPECT_STREQ(metadata.GetCreator(), "The Quiet Tides");
  EXPECT_STREQ(metadata.GetAlbum(), "Coastal Recordings");
  EXPECT_STREQ(metadata.GetGenre(), "Ambient");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.musicTrack");
}

TEST(MediaMetaData, ArtistIsTheFirstOfSeveralWithRoles) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetArtist(), "The Quiet Tides");
}

TEST(MediaMetaData, AlbumArtIsTheFirstOfSeveralWhateverItsProfile) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "http://192.168.1.20:9000/art/42/cover.jpg");
}

TEST(MediaMetaData, ResourcesKeepDocumentOrder) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  ASSERT_EQ(metadata.GetResourceCount(), 2u);
  EXPECT_STREQ(metadata.GetResourceURI(0), "http://192.168.1.20:9000/music/42/3.flac");
  EXPECT_STREQ(metadata.GetResourceURI(1), "http://192.168.1.20:9000/music/42/3.mp3");
}

TEST(MediaMetaData, FirstResourceGivesEveryAttribute) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetResourceProtocolInfo(0), kFlacProtocolInfo);
  EXPECT_STREQ(metadata.GetResourceDuration(0), "0:04:31.000");
  EXPECT_STREQ(metadata.GetResourceSize(0), "31457280");
  EXPECT_STREQ(metadata.GetResourceBitrate(0), "116082");
  EXPECT_STREQ(metadata.GetResourceSampleFrequency(0), "44100");
  EXPECT_STREQ(metadata.GetResourceNrAudioChannels(0), "2");
  EXPECT_STREQ(metadata.GetResourceBitsPerSample(0), "16");
}

TEST(MediaMetaData, SecondResourceGivesItsOwnAttributesAndEmptyForAbsentOnes) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetResourceProtocolInfo(1), kMp3ProtocolInfo);
  EXPECT_STREQ(metadata.GetResourceDuration(1), "0:04:31.000");
  EXPECT_STREQ(metadata.GetResourceSize(1), "10842112");
  EXPECT_STREQ(metadata.GetResourceBitrate(1), "40000");
  EXPECT_STREQ(metadata.GetResourceSampleFrequency(1), "44100");
  EXPECT_STREQ(metadata.GetResourceNrAudioChannels(1), "2");
  EXPECT_STREQ(metadata.GetResourceBitsPerSample(1), "");
}

TEST(MediaMetaData, FirstResourceGettersAnswerResourceZero) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_STREQ(metadata.GetURI(), "http://192.168.1.20:9000/music/42/3.flac");
  EXPECT_STREQ(metadata.GetProtocolInfo(), kFlacProtocolInfo);
  EXPECT_STREQ(metadata.GetDuration(), "0:04:31.000");
  EXPECT_STREQ(metadata.GetSize(), "31457280");
  EXPECT_STREQ(metadata.GetBitrate(), "116082");
  EXPECT_STREQ(metadata.GetSampleFrequency(), "44100");
  EXPECT_STREQ(metadata.GetNrAudioChannels(), "2");
}

TEST(MediaMetaData, OutOfRangeResourceIndexAnswersEmptyText) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  ASSERT_NE(metadata.GetResourceURI(2), nullptr);
  EXPECT_STREQ(metadata.GetResourceURI(2), "");
  EXPECT_STREQ(metadata.GetResourceProtocolInfo(2), "");
  EXPECT_STREQ(metadata.GetResourceDuration(2), "");
  EXPECT_STREQ(metadata.GetResourceSize(2), "");
  EXPECT_STREQ(metadata.GetResourceBitrate(2), "");
  EXPECT_STREQ(metadata.GetResourceSampleFrequency(2), "");
  EXPECT_STREQ(metadata.GetResourceNrAudioChannels(2), "");
  EXPECT_STREQ(metadata.GetResourceBitsPerSample(static_cast<std::size_t>(-1)), "");
}

TEST(MediaMetaData, InternetRadioHasAResourceWithoutDuration) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "radio.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Harbour FM");
  EXPECT_STREQ(metadata.GetGenre(), "News");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.audioBroadcast");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "http://radio.example.net/logos/harbour.png");
  ASSERT_EQ(metadata.GetResourceCount(), 1u);
  EXPECT_STREQ(metadata.GetURI(), "http://stream.example.net/harbour.aac");
  EXPECT_STREQ(metadata.GetProtocolInfo(), "http-get:*:audio/aac:*");
  EXPECT_STREQ(metadata.GetBitrate(), "16000");
  EXPECT_STREQ(metadata.GetNrAudioChannels(), "2");
  EXPECT_STREQ(metadata.GetDuration(), "");
  EXPECT_STREQ(metadata.GetSize(), "");
}

TEST(MediaMetaData, ContainerWithoutItemGivesTheContainersFields) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "container.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Coastal Recordings");
  EXPECT_STREQ(metadata.GetCreator(), "The Quiet Tides");
  EXPECT_STREQ(metadata.GetGenre(), "Ambient");
  EXPECT_STREQ(metadata.GetClass(), "object.container.album.musicAlbum");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "http://192.168.1.20:9000/art/42/cover.jpg");
  EXPECT_EQ(metadata.GetResourceCount(), 0u);
}

TEST(MediaMetaData, ArtistFallsBackToTheCreator) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "container.xml");
  EXPECT_STREQ(metadata.GetArtist(), "The Quiet Tides");
}

TEST(MediaMetaData, EmptyArtistFallsBackToTheCreator) {
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData("<item><dc:creator>Ilse Marten</dc:creator>"
                                        "<upnp:artist>  </upnp:artist></item>"),
            0);
  EXPECT_STREQ(metadata.GetArtist(), "Ilse Marten");
}

TEST(MediaMetaData, ItemWinsOverAContainerBeforeIt) {
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData("<DIDL-Lite><container><dc:title>Album</dc:title></container>"
                                        "<item><dc:title>Track</dc:title></item></DIDL-Lite>"),
            0);
  EXPECT_STREQ(metadata.GetTitle(), "Track");
}

TEST(MediaMetaData, OnlyTheFirstChildOfEachNameCounts) {
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData("<item><dc:title>First</dc:title><dc:title>Second</dc:title>"
                                        "<upnp:album>One</upnp:album><upnp:album>Two</upnp:album></item>"),
            0);
  EXPECT_STREQ(metadata.GetTitle(), "First");
  EXPECT_STREQ(metadata.GetAlbum(), "One");
}

TEST(MediaMetaData, ItemWithoutDidlLiteWrapperIsRead) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "bare_item.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Paper Boats");
  EXPECT_STREQ(metadata.GetArtist(), "Ilse Marten");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.musicTrack");
  EXPECT_STREQ(metadata.GetURI(), "http://10.0.0.5/tracks/t1.ogg");
  EXPECT_STREQ(metadata.GetDuration(), "0:02:58.400");
}

TEST(MediaMetaData, UndeclaredNamespacePrefixesAreTolerated) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "undeclared_prefixes.xml");
  EXPECT_STREQ(metadata.GetTitle(), "North Wind");
  EXPECT_STREQ(metadata.GetCreator(), "Ilse Marten");
  EXPECT_STREQ(metadata.GetArtist(), "Ilse Marten");
  EXPECT_STREQ(metadata.GetAlbum(), "Seasons");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.musicTrack");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "http://10.0.0.5/art/5.png");
  EXPECT_STREQ(metadata.GetURI(), "http://10.0.0.5/tracks/5.wav");
  EXPECT_STREQ(metadata.GetSize(), "52428800");
}

TEST(MediaMetaData, EntitiesAndCharacterReferencesAreDecoded) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "entities.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Salt & Pepper Caf\xC3\xA9 <live>");
  EXPECT_STREQ(metadata.GetURI(), "http://10.0.0.5/tracks/9.mp3?a=1&b=2");
}

TEST(MediaMetaData, Utf8TextAndHexCharacterReferencesGiveUtf8) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "entities.xml");
  EXPECT_STREQ(metadata.GetArtist(), "Zo\xC3\xAB \xC3\x85ngstr\xC3\xB6m \xE2\x98\xBA");
  EXPECT_STREQ(metadata.GetAlbum(),
               "\xD0\xA1\xD0\xBC\xD0\xBE\xD0\xBB\xD0\xB0 \xE2\x80\x94 \xE6\x9D\xB1\xE4\xBA\xAC");
}

TEST(MediaMetaData, UnescapedAmpersandsInResourceUrlAreKept) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "bare_ampersand.xml");
  EXPECT_STREQ(metadata.GetURI(), "http://stream.example.net/play?station=7&format=mp3&lang=en");
}

TEST(MediaMetaData, UnescapedAmpersandInTitleIsKept) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "bare_ampersand.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Rock & Roll Hour");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.audioBroadcast");
}

TEST(MediaMetaData, AmpersandsInCdataSectionsStayAsWritten) {
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData("<item><dc:title><![CDATA[Fish &amp; Chips & Peas]]></dc:title>"
                                        "</item>"),
            0);
  EXPECT_STREQ(metadata.GetTitle(), "Fish &amp; Chips & Peas");
}

TEST(MediaMetaData, PrettyPrintedCrlfTextIsTrimmed) {
  const std::string text = ReadSample("pretty_crlf.xml");
  ASSERT_NE(text.find("\r\n"), std::string::npos) << "the sample lost its CRLF line ends";
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData(text.c_str()), 0);
  EXPECT_STREQ(metadata.GetTitle(), "Slow Tide");
  EXPECT_STREQ(metadata.GetCreator(), "The Quiet Tides");
  EXPECT_STREQ(metadata.GetArtist(), "The Quiet Tides");
  EXPECT_STREQ(metadata.GetAlbum(), "Coastal Recordings");
  EXPECT_STREQ(metadata.GetClass(), "object.item.audioItem.musicTrack");
  ASSERT_EQ(metadata.GetResourceCount(), 1u);
  EXPECT_STREQ(metadata.GetURI(), "http://192.168.1.20:9000/music/42/11.flac");
  EXPECT_STREQ(metadata.GetDuration(), "0:06:02.500");
}

TEST(MediaMetaData, DeclaredLatin1EncodingIsConvertedToUtf8) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "latin1_declaration.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Caf\xC3\xA9 du Port");
  EXPECT_STREQ(metadata.GetCreator(), "Ren\xC3\xA9" "e Dubois");
  EXPECT_STREQ(metadata.GetURI(), "http://10.0.0.5/tracks/4.mp3");
}

TEST(MediaMetaData, LargeDocumentGivesOnlyTheFirstItem) {
  std::string text =
      "<?xml version=\"1.0\"?><DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
      "xmlns:dc=\"http://purl.org/dc/elements/1.1/\" xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\">";
  for (int i = 0; i < 400; ++i) {
    const std::string n = std::to_string(i);
    text += "<item id=\"" + n + "\" parentID=\"0\" restricted=\"1\"><dc:title>Track " + n +
            "</dc:title><dc:creator>Creator " + n + "</dc:creator><upnp:album>Album " + n +
            "</upnp:album><upnp:class>object.item.audioItem.musicTrack</upnp:class>"
            "<res protocolInfo=\"http-get:*:audio/flac:*\" duration=\"0:03:00.000\">http://10.0.0.5/t/" + n +
            ".flac</res><res protocolInfo=\"http-get:*:audio/mpeg:*\">http://10.0.0.5/t/" + n +
            ".mp3</res></item>\n";
  }
  text += "</DIDL-Lite>";
  ASSERT_GT(text.size(), 100u * 1000u);
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData(text.c_str()), 0);
  EXPECT_STREQ(metadata.GetTitle(), "Track 0");
  EXPECT_STREQ(metadata.GetCreator(), "Creator 0");
  EXPECT_STREQ(metadata.GetAlbum(), "Album 0");
  ASSERT_EQ(metadata.GetResourceCount(), 2u);
  EXPECT_STREQ(metadata.GetResourceURI(0), "http://10.0.0.5/t/0.flac");
  EXPECT_STREQ(metadata.GetResourceURI(1), "http://10.0.0.5/t/0.mp3");
}

TEST(MediaMetaData, EmptyTextIsAcceptedAndEmptiesEveryField) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData(""), 0);
  EXPECT_STREQ(metadata.GetMetaDataText(), "");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, BlankTextIsAcceptedAndEmptiesEveryField) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData(" \r\n\t "), 0);
  EXPECT_STREQ(metadata.GetMetaDataText(), " \r\n\t ");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, NullTextAnswersMinusOneAndEmptiesEverything) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData(nullptr), -1);
  EXPECT_STREQ(metadata.GetMetaDataText(), "");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, NotImplementedAnswersMinusOneEmptiesFieldsAndKeepsText) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData("NOT_IMPLEMENTED"), -1);
  EXPECT_STREQ(metadata.GetMetaDataText(), "NOT_IMPLEMENTED");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, GarbageAnswersMinusOneAndEmptiesEveryField) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData("<<<&&& >< \x01\xff garbage"), -1);
  EXPECT_STREQ(metadata.GetMetaDataText(), "<<<&&& >< \x01\xff garbage");
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, UnrelatedXmlDocumentAnswersMinusOneAndEmptiesEveryField) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  EXPECT_EQ(metadata.SetConformMetaData("<?xml version=\"1.0\"?><Event><InstanceID val=\"0\">"
                                        "<TransportState val=\"PLAYING\"/></InstanceID></Event>"),
            -1);
  ExpectEveryFieldEmpty(metadata);
}

TEST(MediaMetaData, SecondSetReplacesEveryField) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "music_track.xml");
  SetSample(&metadata, "minimal_item.xml");
  EXPECT_STREQ(metadata.GetTitle(), "Morning Walk");
  EXPECT_STREQ(metadata.GetCreator(), "");
  EXPECT_STREQ(metadata.GetArtist(), "");
  EXPECT_STREQ(metadata.GetAlbum(), "");
  EXPECT_STREQ(metadata.GetGenre(), "");
  EXPECT_STREQ(metadata.GetAlbumArtURI(), "");
  ASSERT_EQ(metadata.GetResourceCount(), 1u);
  EXPECT_STREQ(metadata.GetURI(), "http://192.168.1.20:8200/media/7.mp3");
  EXPECT_STREQ(metadata.GetDuration(), "");
  EXPECT_STREQ(metadata.GetSize(), "");
  EXPECT_STREQ(metadata.GetBitrate(), "");
  EXPECT_STREQ(metadata.GetSampleFrequency(), "");
  EXPECT_STREQ(metadata.GetNrAudioChannels(), "");
  EXPECT_STREQ(metadata.GetResourceBitsPerSample(0), "");
  EXPECT_STREQ(metadata.GetResourceURI(1), "");
  EXPECT_EQ(metadata.GetMetaDataText(), ReadSample("minimal_item.xml"));
}

TEST(MediaMetaData, InjectedFaultAnswersTheCodeAndChangesNothing) {
  const std::string text = ReadSample("music_track.xml");
  corva::MediaMetaData metadata;
  ASSERT_EQ(metadata.SetConformMetaData(text.c_str()), 0);
  ScopedFault fault(DMR_CMN_FaultPoint::kMetaDataSet, 1, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(metadata.SetConformMetaData(ReadSample("minimal_item.xml").c_str()), DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(metadata.GetMetaDataText(), text);
  EXPECT_STREQ(metadata.GetTitle(), "Harbour Lights");
  EXPECT_STREQ(metadata.GetArtist(), "The Quiet Tides");
  EXPECT_EQ(metadata.GetResourceCount(), 2u);
}

TEST(MediaMetaData, InjectedFaultOnNullTextChangesNothing) {
  corva::MediaMetaData metadata;
  SetSample(&metadata, "minimal_item.xml");
  ScopedFault fault(DMR_CMN_FaultPoint::kMetaDataSet, 1, -1999);
  EXPECT_EQ(metadata.SetConformMetaData(nullptr), -1999);
  EXPECT_STREQ(metadata.GetTitle(), "Morning Walk");
  EXPECT_EQ(metadata.GetResourceCount(), 1u);
}

TEST(MediaMetaData, SetWorksAgainAfterAnInjectedFault) {
  corva::MediaMetaData metadata;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMetaDataSet, 1, DMR_CMN_ERR_NO_MEMORY);
    ASSERT_EQ(metadata.SetConformMetaData("<item><dc:title>A</dc:title></item>"), DMR_CMN_ERR_NO_MEMORY);
  }
  EXPECT_STREQ(metadata.GetTitle(), "");
  EXPECT_STREQ(metadata.GetMetaDataText(), "");
  ASSERT_EQ(metadata.SetConformMetaData("<item><dc:title>A</dc:title></item>"), 0);
  EXPECT_STREQ(metadata.GetTitle(), "A");
}

}  // namespace
