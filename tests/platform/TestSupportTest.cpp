// The test doubles that later tests rely on must themselves record exactly what reaches them through the
// platform's interface tables.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "corva/MediaMetaData.h"
#include "dmr_cmn/String.h"

namespace {

using ::testing::InSequence;
using ::testing::Return;

TEST(RecordingEventHandler, KeepsEachBatchInArrivalOrder) {
  RecordingEventHandler handler;
  marlo::EventHandler* base = &handler;
  const char* names1[] = {"LastChange"};
  const char* values1[] = {"<Event/>"};
  const char* names2[] = {"Id", "IdArray"};
  const char* values2[] = {"3", "AAAAAw=="};
  base->HandleEvent(names1, values1, 1);
  base->HandleEvent(names2, values2, 2);
  ASSERT_TRUE(handler.WaitForBatches(2));
  const auto batches = handler.Batches();
  ASSERT_EQ(batches.size(), 2u);
  EXPECT_EQ(batches[0], (RecordingEventHandler::Batch{{"LastChange", "<Event/>"}}));
  EXPECT_EQ(batches[1], (RecordingEventHandler::Batch{{"Id", "3"}, {"IdArray", "AAAAAw=="}}));
}

TEST(RecordingEventHandler, WaitForBatchesTimesOutWhenTooFewArrive) {
  RecordingEventHandler handler;
  EXPECT_FALSE(handler.WaitForBatches(1, std::chrono::milliseconds(10)));
}

TEST(RecordingAVTEventListener, RecordsCallsThroughTheListenerTable) {
  RecordingAVTEventListener listener;
  DMR_CMN_AVTEventListener* base = &listener;
  base->NotifyTransportState("PLAYING");
  corva::MediaMetaData metaData;
  ASSERT_EQ(metaData.SetConformMetaData(
                "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
                "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item id=\"1\" parentID=\"0\" restricted=\"1\">"
                "<dc:title>Song</dc:title></item></DIDL-Lite>"),
            0);
  base->NotifyCurrentTrackMetaData(&metaData);
  base->NotifyCurrentTransportActions("Play,Stop");
  const auto calls = listener.Calls();
  ASSERT_EQ(calls.size(), 3u);
  EXPECT_EQ(calls[0], (ListenerCall{"NotifyTransportState", "PLAYING", ""}));
  EXPECT_EQ(calls[1].operation, "NotifyCurrentTrackMetaData");
  EXPECT_EQ(calls[1].title, "Song");
  EXPECT_EQ(calls[2], (ListenerCall{"NotifyCurrentTransportActions", "Play,Stop", ""}));
}

TEST(RecordingCMSEventListener, RecordsCallsThroughTheListenerTable) {
  RecordingCMSEventListener listener;
  DMR_CMN_CMSEventListener* base = &listener;
  base->NotifySinkProtocolInfo("http-get:*:audio/mpeg:*");
  const auto calls = listener.Calls();
  ASSERT_EQ(calls.size(), 1u);
  EXPECT_EQ(calls[0], (ListenerCall{"NotifySinkProtocolInfo", "http-get:*:audio/mpeg:*", ""}));
}

TEST(MockTransferService, ReceivesCallsMadeThroughTheInterfaceInOrder) {
  MockTransferService mock;
  SINK_CORE_TransferService* service = &mock;
  DMR_CMN_String uri;
  DMR_CMN_String metaData;
  DMR_CMN_String speed;
  ASSERT_EQ(uri.SetCString("http://127.0.0.1/a.mp3"), 0);
  ASSERT_EQ(metaData.SetCString(""), 0);
  ASSERT_EQ(speed.SetCString("1"), 0);
  {
    InSequence order;
    EXPECT_CALL(mock, AttachPlaylistManager(nullptr)).WillOnce(Return(0));
    EXPECT_CALL(mock, SetAVTransportURI(9ul, 0ul, StringIs("http://127.0.0.1/a.mp3"), StringIs("")))
        .WillOnce(Return(0));
    EXPECT_CALL(mock, Play(9ul, 0ul, StringIs("1"))).WillOnce(Return(716));
  }
  EXPECT_EQ(service->AttachPlaylistManager(nullptr), 0);
  EXPECT_EQ(service->SetAVTransportURI(9, 0, &uri, &metaData), 0);
  EXPECT_EQ(service->Play(9, 0, &speed), 716);
}

}  // namespace
