#include "OpenHomeServiceFixture.h"

#include <chrono>

#include "FaultInjection.h"
#include "dmr_cmn/String.h"
#include "playlist/PlaylistData.h"

namespace open_home_test {

using ::testing::_;
using ::testing::Return;

namespace {

constexpr char kMarkerValue[] = "end of step";

}  // namespace

Batch Event(const char* name, const std::string& value) { return Batch{RecordingEventHandler::Pair(name, value)}; }

void OpenHomeServiceFixture::SetUp() {
  DMR_CMN_FaultInjection::Reset();
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
  const std::string docRoot = std::string(DMR_TEST_DATA_DIR) + "/description";
  ASSERT_EQ(properties_.SetProperty("device.docroot", docRoot.c_str()), 0);
  ASSERT_EQ(service_.Initialize(&properties_), 0);
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&playlistHandler_), 0);
  ASSERT_EQ(service_.RegisterProductServiceEventListener(&productHandler_), 0);
  ASSERT_EQ(service_.RegisterTimeServiceEventListener(&timeHandler_), 0);
  ASSERT_EQ(service_.RegisterInfoServiceEventListener(&infoHandler_), 0);
  ASSERT_EQ(service_.RegisterSenderServiceEventListener(&senderHandler_), 0);
  EXPECT_CALL(transfer_, AttachOpenHomeStateVariableManager(Peer::Store(service_))).WillOnce(Return(0));
  EXPECT_CALL(transfer_, AttachPlaylistManager(&Peer::Playlist(service_))).WillOnce(Return(0));
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ::testing::Mock::VerifyAndClearExpectations(&transfer_);
  ASSERT_EQ(service_.Start(), 0);
  ASSERT_NO_FATAL_FAILURE(SetTransportState("STOPPED"));
}

void OpenHomeServiceFixture::TearDown() {
  DMR_CMN_FaultInjection::Reset();
  if (Peer::Started(service_) == 1) {
    EXPECT_EQ(service_.Stop(), 0);
  }
  if (Peer::Initialized(service_) != 1) return;
  if (Peer::PlaylistHandler(service_) != nullptr) {
    EXPECT_EQ(service_.UnregisterPlaylistServiceEventListener(), 0);
  }
  if (Peer::ProductHandler(service_) != nullptr) {
    EXPECT_EQ(service_.UnregisterProductServiceEventListener(), 0);
  }
  if (Peer::TimeHandler(service_) != nullptr) {
    EXPECT_EQ(service_.UnregisterTimeServiceEventListener(), 0);
  }
  if (Peer::InfoHandler(service_) != nullptr) {
    EXPECT_EQ(service_.UnregisterInfoServiceEventListener(), 0);
  }
  if (Peer::SenderHandler(service_) != nullptr) {
    EXPECT_EQ(service_.UnregisterSenderServiceEventListener(), 0);
  }
  EXPECT_EQ(service_.Finalize(), 0);
}

int32_t OpenHomeServiceFixture::Perform(const char* action, const Args& in) {
  request_ = std::make_unique<marlo::ActionRequest>();
  response_ = std::make_unique<marlo::ActionResponse>();
  EXPECT_EQ(request_->SetServiceType(kPlaylistService), 0);
  EXPECT_EQ(request_->SetActionName(action), 0);
  for (const auto& argument : in) {
    EXPECT_EQ(request_->AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
  }
  return service_.PerformAction(request_.get(), response_.get(), kHandle);
}

int32_t OpenHomeServiceFixture::CallHandler(const char* action, marlo::ActionRequest* request,
                                            marlo::ActionResponse* response) {
  for (const auto& entry : Peer::ActionHandlers()) {
    if (std::string(entry.action) == action) return (service_.*entry.handler)(kHandle, request, response);
  }
  ADD_FAILURE() << "no handler for " << action;
  return 0;
}

std::string OpenHomeServiceFixture::Variable(SINK_UPNP_StateVariableName_t index) {
  DMR_CMN_String value;
  EXPECT_EQ(Store()->GetStateVariable(index, &value), 0);
  return value.GetCString() != nullptr ? value.GetCString() : "";
}

void OpenHomeServiceFixture::SetVariable(SINK_UPNP_StateVariableName_t index, const char* value) {
  DMR_CMN_String text;
  ASSERT_EQ(text.SetCString(value), 0);
  ASSERT_EQ(Store()->ChangeStateVariable(index, &text), 0);
}

uint64_t OpenHomeServiceFixture::AddTrack(const std::string& uri, const std::string& metadata) {
  const std::vector<uint64_t> ids = TrackIds();
  uint64_t newId = 0;
  EXPECT_EQ(Playlist().Insert(uri.c_str(), metadata.c_str(), ids.empty() ? 0 : ids.back(), &newId), 0);
  return newId;
}

std::vector<uint64_t> OpenHomeServiceFixture::TrackIds() {
  // Read through the playlist's own TrackList document, which lists every track in playlist order.
  std::vector<uint64_t> ids;
  std::string document;
  EXPECT_EQ(Playlist().PlaylistXml(&document), 0);
  const std::string opening = "<Entry><Id>";
  for (std::string::size_type at = document.find(opening); at != std::string::npos;
       at = document.find(opening, at + 1)) {
    ids.push_back(std::stoull(document.substr(at + opening.size())));
  }
  return ids;
}

uint64_t OpenHomeServiceFixture::CurrentId() {
  const PLAYLIST_PlaylistData* current = Playlist().GetCurrentTrackData();
  return current != nullptr ? current->getId() : 0;
}

std::vector<RecordingEventHandler::Batch> OpenHomeServiceFixture::Events(RecordingEventHandler& handler,
                                                                          std::size_t count) {
  EXPECT_TRUE(handler.WaitForBatches(count)) << "expected " << count << " batches, got "
                                             << handler.BatchCount();
  return handler.Batches();
}

Batches OpenHomeServiceFixture::NewEvents(RecordingEventHandler& handler, const char* markerName) {
  DMR_CMN_String name;
  DMR_CMN_String value;
  EXPECT_EQ(name.SetCString(markerName), 0);
  EXPECT_EQ(value.SetCString(kMarkerValue), 0);
  EXPECT_EQ(Store()->SendEventForOpenHome(&name, &value, 1), 0);
  const Batch marker = Event(markerName, kMarkerValue);
  std::size_t& seen = seen_[&handler];
  for (;;) {
    const Batches all = handler.Batches();
    for (std::size_t i = seen; i < all.size(); ++i) {
      if (all[i] == marker) {
        Batches fresh(all.begin() + static_cast<std::ptrdiff_t>(seen), all.begin() + static_cast<std::ptrdiff_t>(i));
        seen = i + 1;
        return fresh;
      }
    }
    if (!handler.WaitForBatches(all.size() + 1)) {
      ADD_FAILURE() << "the marker " << markerName << " never arrived";
      Batches fresh(all.begin() + static_cast<std::ptrdiff_t>(seen), all.end());
      seen = all.size();
      return fresh;
    }
  }
}

void OpenHomeServiceFixture::ExpectNoOtherServiceEvents() {
  EXPECT_EQ(NewEvents(productHandler_, "Standby"), Batches{}) << "Product";
  EXPECT_EQ(NewEvents(timeHandler_, "Seconds"), Batches{}) << "Time";
  EXPECT_EQ(NewEvents(infoHandler_, "DetailsCount"), Batches{}) << "Info";
  EXPECT_EQ(NewEvents(senderHandler_, "Status"), Batches{}) << "Sender";
}

void OpenHomeServiceFixture::ExpectEvents(const Batches& playlist) {
  EXPECT_EQ(PlaylistEvents(), playlist) << "Playlist";
  ExpectNoOtherServiceEvents();
}

void OpenHomeServiceFixture::ExpectSetUri(const std::string& uri, const std::string& meta, int32_t answer) {
  EXPECT_CALL(transfer_, AttachPlaylistManager(&Playlist())).WillOnce(Return(0));
  EXPECT_CALL(transfer_, SetAVTransportURI(kHandle, 0, StringIs(uri), StringIs(meta))).WillOnce(Return(answer));
}

void OpenHomeServiceFixture::ExpectStop(int32_t answer) {
  EXPECT_CALL(transfer_, Stop(kHandle, 0)).WillOnce(Return(answer));
}

void OpenHomeServiceFixture::ExpectPlay(int32_t answer) {
  EXPECT_CALL(transfer_, Play(kHandle, 0, StringIs("1"))).WillOnce(Return(answer));
}

}  // namespace open_home_test
