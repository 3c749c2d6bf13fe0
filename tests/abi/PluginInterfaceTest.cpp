// The plug-in as a host and an application use it: this binary links libsink_upnp.so alone (not the
// plug-in's objects), so every operation used here must be part of what the library exports. A service
// object is driven through a whole short session, and the application works on the store and the playlist
// it was handed.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/SinkCTSSUPnPService.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using ::testing::_;
using ::testing::DoAll;
using ::testing::Return;
using ::testing::SaveArg;
using ::testing::StrictMock;

constexpr unsigned long kHandle = 7;
constexpr char kUri[] = "http://10.0.0.2/a.flac";

std::string Text(const char* text) { return text != nullptr ? text : "(null)"; }

TEST(PluginInterface, AnOpenHomeSessionNeedsNothingButTheExportedClasses) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
  RecordingEventHandler playlistEvents;
  StrictMock<MockTransferService> application;
  SINK_UPNP_OpenHomeStateVariableManager* store = nullptr;
  PLAYLIST_PlaylistManager* playlist = nullptr;

  auto* service = new SINK_UPNP_OpenHomeUPnPService;
  ASSERT_EQ(service->Initialize(&properties), 0);
  ASSERT_EQ(service->RegisterPlaylistServiceEventListener(&playlistEvents), 0);
  EXPECT_CALL(application, AttachOpenHomeStateVariableManager(_)).WillOnce(DoAll(SaveArg<0>(&store), Return(0)));
  EXPECT_CALL(application, AttachPlaylistManager(_)).WillOnce(DoAll(SaveArg<0>(&playlist), Return(0)));
  ASSERT_EQ(service->RegisterTransferService(&application), 0);
  ASSERT_NE(store, nullptr);
  ASSERT_NE(playlist, nullptr);
  ASSERT_EQ(service->Start(), 0);

  // A control point adds a track: it becomes current and is handed to the application unplayed.
  EXPECT_CALL(application, AttachPlaylistManager(playlist)).WillOnce(Return(0));
  EXPECT_CALL(application, SetAVTransportURI(kHandle, 0, StringIs(kUri), StringIs(""))).WillOnce(Return(0));
  marlo::ActionRequest insert;
  ASSERT_EQ(insert.SetActionName("Insert"), 0);
  ASSERT_EQ(insert.AddArgument("AfterId", "0"), 0);
  ASSERT_EQ(insert.AddArgument("Uri", kUri), 0);
  marlo::ActionResponse inserted;
  ASSERT_EQ(service->PerformAction(&insert, &inserted, kHandle), 0);
  EXPECT_EQ(Text(inserted.FindArgumentValue("NewId")), "1");

  // The application reads the playlist and reports its state through the store.
  const PLAYLIST_PlaylistData* current = playlist->GetCurrentTrackData();
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(Text(current->getUri()), kUri);
  DMR_CMN_String playing;
  ASSERT_EQ(playing.SetCString("PLAYING"), 0);
  ASSERT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &playing), 0);

  marlo::ActionRequest query;
  ASSERT_EQ(query.SetActionName("TransportState"), 0);
  marlo::ActionResponse state;
  ASSERT_EQ(service->PerformAction(&query, &state, kHandle), 0);
  EXPECT_EQ(Text(state.FindArgumentValue("Value")), "PLAYING");

  ASSERT_EQ(service->Stop(), 0);
  ASSERT_EQ(service->UnregisterPlaylistServiceEventListener(), 0);
  ASSERT_EQ(service->Finalize(), 0);
  delete service;
}

TEST(PluginInterface, AStandardSessionNeedsNothingButTheExportedClasses) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*"), 0);
  RecordingEventHandler avtEvents;
  RecordingEventHandler cmsEvents;
  StrictMock<MockTransferService> application;
  SINK_UPNP_SinkCTSSStateVariableManager* store = nullptr;

  SINK_UPNP_SinkCTSSUPnPService service;
  ASSERT_EQ(service.Initialize(&properties), 0);
  ASSERT_EQ(service.RegisterAVTransportServiceEventListener(&avtEvents), 0);
  ASSERT_EQ(service.RegisterConnectionManagerServiceEventListener(&cmsEvents), 0);
  EXPECT_CALL(application, AttachStateVariableManager(_)).WillOnce(DoAll(SaveArg<0>(&store), Return(0)));
  ASSERT_EQ(service.RegisterTransferService(&application), 0);
  ASSERT_EQ(service.Start(), 0);

  // The application's state change reaches the AVTransport subscribers as a LastChange event.
  DMR_CMN_String playing;
  ASSERT_EQ(playing.SetCString("PLAYING"), 0);
  ASSERT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &playing), 0);
  ASSERT_EQ(store->SendEvent(), 0);
  ASSERT_TRUE(avtEvents.WaitForBatches(1));
  ASSERT_EQ(avtEvents.Batches()[0].size(), 1u);
  EXPECT_EQ(avtEvents.Batches()[0][0].first, "LastChange");
  EXPECT_NE(avtEvents.Batches()[0][0].second.find("<TransportState val=\"PLAYING\"/>"), std::string::npos);

  EXPECT_CALL(application, Stop(kHandle, 0)).WillOnce(Return(0));
  marlo::ActionRequest stop;
  ASSERT_EQ(stop.SetActionName("Stop"), 0);
  ASSERT_EQ(stop.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse stopped;
  EXPECT_EQ(service.PerformAction(&stop, &stopped, kHandle), 0);

  ASSERT_EQ(service.Stop(), 0);
  ASSERT_EQ(service.UnregisterAVTransportServiceEventListener(), 0);
  ASSERT_EQ(service.UnregisterConnectionManagerServiceEventListener(), 0);
  ASSERT_EQ(service.Finalize(), 0);
}

}  // namespace
