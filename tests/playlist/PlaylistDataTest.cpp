#include <gtest/gtest.h>

#include <cstring>
#include <new>

#include "ScopedFault.h"
#include "playlist/PlaylistData.h"
#include "sink_upnp/ResultCode.h"

namespace {

TEST(PlaylistData, NewRecordHasEveryFieldZeroOrNull) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.getUri(), nullptr);
  EXPECT_EQ(record.getMetaData(), nullptr);
  EXPECT_EQ(record.getId(), 0u);
  EXPECT_EQ(record.getTrackNumber(), 0u);
  EXPECT_EQ(record.getShuffleTrackNumber(), 0u);
}

TEST(PlaylistData, SetUriKeepsAPrivateCopyOfTheText) {
  PLAYLIST_PlaylistData record;
  char text[] = "http://host/a.flac";
  ASSERT_EQ(record.setUri(text), SINK_UPNP_OK);
  text[0] = 'X';
  EXPECT_NE(record.getUri(), text);
  EXPECT_STREQ(record.getUri(), "http://host/a.flac");
}

TEST(PlaylistData, SetMetaDataKeepsAPrivateCopyOfTheText) {
  PLAYLIST_PlaylistData record;
  char text[] = "<DIDL-Lite/>";
  ASSERT_EQ(record.setMetaData(text), SINK_UPNP_OK);
  text[1] = 'X';
  EXPECT_STREQ(record.getMetaData(), "<DIDL-Lite/>");
}

TEST(PlaylistData, GettersReturnTheRecordsOwnBufferEveryTime) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setUri("u"), SINK_UPNP_OK);
  ASSERT_EQ(record.setMetaData("m"), SINK_UPNP_OK);
  EXPECT_EQ(record.getUri(), record.getUri());
  EXPECT_EQ(record.getMetaData(), record.getMetaData());
}

TEST(PlaylistData, EmptyUriIsAcceptedAsAOneByteBuffer) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.setUri(""), SINK_UPNP_OK);
  ASSERT_NE(record.getUri(), nullptr);
  EXPECT_EQ(record.getUri()[0], '\0');
}

TEST(PlaylistData, EmptyMetaDataIsAcceptedAsAOneByteBuffer) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.setMetaData(""), SINK_UPNP_OK);
  ASSERT_NE(record.getMetaData(), nullptr);
  EXPECT_EQ(record.getMetaData()[0], '\0');
}

TEST(PlaylistData, NullUriIsRefused) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.setUri(nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(record.getUri(), nullptr);
}

TEST(PlaylistData, NullMetaDataIsRefused) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.setMetaData(nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(record.getMetaData(), nullptr);
}

TEST(PlaylistData, SecondSetUriIsRefusedAndKeepsTheFirstUri) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setUri("first"), SINK_UPNP_OK);
  char* first = record.getUri();
  EXPECT_EQ(record.setUri("second"), SINK_UPNP_ERR_GENERIC);
  EXPECT_EQ(record.getUri(), first);
  EXPECT_STREQ(record.getUri(), "first");
}

TEST(PlaylistData, SecondSetMetaDataIsRefusedAndKeepsTheFirstText) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setMetaData("first"), SINK_UPNP_OK);
  EXPECT_EQ(record.setMetaData("second"), SINK_UPNP_ERR_GENERIC);
  EXPECT_STREQ(record.getMetaData(), "first");
}

TEST(PlaylistData, NullUriOnARecordWithAUriIsANullArgumentFirst) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setUri("first"), SINK_UPNP_OK);
  EXPECT_EQ(record.setUri(nullptr), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_STREQ(record.getUri(), "first");
}

TEST(PlaylistData, UriWithoutMemoryAnswersNoMemoryLeavesTheFieldNullAndMayBeRetried) {
  PLAYLIST_PlaylistData record;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
    EXPECT_EQ(record.setUri("u"), DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(record.getUri(), nullptr);
  EXPECT_EQ(record.setUri("u"), SINK_UPNP_OK);
  EXPECT_STREQ(record.getUri(), "u");
}

TEST(PlaylistData, MetaDataWithoutMemoryAnswersNoMemoryLeavesTheFieldNullAndMayBeRetried) {
  PLAYLIST_PlaylistData record;
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
    EXPECT_EQ(record.setMetaData("m"), DMR_CMN_ERR_NO_MEMORY);
  }
  EXPECT_EQ(record.getMetaData(), nullptr);
  EXPECT_EQ(record.setMetaData("m"), SINK_UPNP_OK);
  EXPECT_STREQ(record.getMetaData(), "m");
}

TEST(PlaylistData, SetIdStoresANonZeroId) {
  PLAYLIST_PlaylistData record;
  EXPECT_EQ(record.setId(0x100000001ull), SINK_UPNP_OK);
  EXPECT_EQ(record.getId(), 0x100000001ull);
}

TEST(PlaylistData, ZeroIdIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setId(7), SINK_UPNP_OK);
  EXPECT_EQ(record.setId(0), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(record.getId(), 7u);
}

TEST(PlaylistData, ZeroTrackNumberIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setTrackNumber(3), SINK_UPNP_OK);
  EXPECT_EQ(record.setTrackNumber(0), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(record.getTrackNumber(), 3u);
}

TEST(PlaylistData, ZeroShuffleTrackNumberIsRefusedAndChangesNothing) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setShuffleTrackNumber(4), SINK_UPNP_OK);
  EXPECT_EQ(record.setShuffleTrackNumber(0), SINK_UPNP_ERR_NULL_ARGUMENT);
  EXPECT_EQ(record.getShuffleTrackNumber(), 4u);
}

TEST(PlaylistData, NumbersCanBeSetAgain) {
  PLAYLIST_PlaylistData record;
  ASSERT_EQ(record.setTrackNumber(3), SINK_UPNP_OK);
  EXPECT_EQ(record.setTrackNumber(5), SINK_UPNP_OK);
  EXPECT_EQ(record.getTrackNumber(), 5u);
  EXPECT_EQ(record.setId(9), SINK_UPNP_OK);
  EXPECT_EQ(record.setId(10), SINK_UPNP_OK);
  EXPECT_EQ(record.getId(), 10u);
}

TEST(PlaylistData, DestroyingARecordWhoseStringsWereNeverSetIsHarmless) {
  PLAYLIST_PlaylistData* record = new (std::nothrow) PLAYLIST_PlaylistData;
  ASSERT_NE(record, nullptr);
  ASSERT_EQ(record->getUri(), nullptr);
  ASSERT_EQ(record->getMetaData(), nullptr);
  delete record;  // frees two null pointers; the sanitizers would report anything else
}

TEST(PlaylistData, DestroyingARecordFreesBothStrings) {
  PLAYLIST_PlaylistData* record = new (std::nothrow) PLAYLIST_PlaylistData;
  ASSERT_NE(record, nullptr);
  ASSERT_EQ(record->setUri("u"), SINK_UPNP_OK);
  ASSERT_EQ(record->setMetaData("m"), SINK_UPNP_OK);
  delete record;  // LeakSanitizer reports the strings if they are not freed
}

TEST(PlaylistData, CreationWithoutMemoryGivesNull) {
  ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
  PLAYLIST_PlaylistData* record = new (std::nothrow) PLAYLIST_PlaylistData;
  EXPECT_EQ(record, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
  delete record;
}

TEST(PlaylistData, CopySharesTheStringBuffersOfItsSource) {
  PLAYLIST_PlaylistData source;
  ASSERT_EQ(source.setUri("u"), SINK_UPNP_OK);
  ASSERT_EQ(source.setMetaData("m"), SINK_UPNP_OK);
  ASSERT_EQ(source.setId(12), SINK_UPNP_OK);
  ASSERT_EQ(source.setTrackNumber(2), SINK_UPNP_OK);
  ASSERT_EQ(source.setShuffleTrackNumber(3), SINK_UPNP_OK);
  // The copy is abandoned without its destructor, as the playlist's staging record is: each buffer is
  // then freed once, by `source`.
  alignas(PLAYLIST_PlaylistData) unsigned char storage[sizeof(PLAYLIST_PlaylistData)];
  const PLAYLIST_PlaylistData* copy = ::new (storage) PLAYLIST_PlaylistData(source);
  EXPECT_EQ(copy->getUri(), source.getUri());
  EXPECT_EQ(copy->getMetaData(), source.getMetaData());
  EXPECT_EQ(copy->getId(), 12u);
  EXPECT_EQ(copy->getTrackNumber(), 2u);
  EXPECT_EQ(copy->getShuffleTrackNumber(), 3u);
}

TEST(PlaylistData, AssignmentSharesTheStringBuffersOfItsSource) {
  PLAYLIST_PlaylistData source;
  ASSERT_EQ(source.setUri("u"), SINK_UPNP_OK);
  alignas(PLAYLIST_PlaylistData) unsigned char storage[sizeof(PLAYLIST_PlaylistData)];
  PLAYLIST_PlaylistData* target = ::new (storage) PLAYLIST_PlaylistData;
  *target = source;
  EXPECT_EQ(target->getUri(), source.getUri());
  EXPECT_EQ(target->getMetaData(), nullptr);
}

}  // namespace
