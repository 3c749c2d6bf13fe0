// The OpenHome service object where it differs from the standard one: the playlist it owns for its whole
// life, its destructor, the document root, what Start requires and what does not hold up Finalize, the
// OpenHome handlers a started object refuses, the AVTransport handler its store refuses, the playlist it
// hands the application, the names its state variable query answers for the five OpenHome services, and
// its action dispatch table. The frame it shares with the standard object is tested over both in
// ServiceFrameTest.cpp; the actions' own behaviour in the OpenHome*ActionTest.cpp files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "OpenHomeServiceFixture.h"
#include "OpenHomeUPnPServiceTestPeer.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "ServiceFrameFixture.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Device.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/StateVariable.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {
namespace {

using Service = SINK_UPNP_OpenHomeUPnPService;
using Peer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;
using FP = DMR_CMN_FaultPoint;
using service_frame_test::kAllStates;
using service_frame_test::kAVTransport;
using service_frame_test::kConnectionManager;
using service_frame_test::kJoined;
using service_frame_test::kMpeg;
using service_frame_test::State;
using service_frame_test::StateName;
using ::testing::_;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::StrictMock;

// The three image URIs of the description are served with "http://" and the host's address in front.
std::string ServedImageUri(const char* path) {
  return std::string("http://") + marlo::Device::GetServerIPAddress() + path;
}

// The service's answer to a query, or "<failed N>".
std::string Query(Service& service, const char* serviceName, const char* variableName) {
  marlo::StateVariable out;
  const int32_t result = service.GetStateVariable(serviceName, variableName, &out);
  if (result != 0) return "<failed " + std::to_string(result) + ">";
  if (out.GetName() == nullptr || std::strcmp(out.GetName(), variableName) != 0) return "<wrong name>";
  return out.GetValue() != nullptr ? out.GetValue() : "<no value>";
}

// The destructor leaves the protocol list to Finalize; a test that destroys an initialized object frees
// the list itself, so that the leak check sees only what the destructor really leaves.
void ReleaseChain(marlo::ProtocolInfo* chain) {
  while (chain != nullptr) {
    marlo::ProtocolInfo* next = chain->next;
    delete chain;
    chain = next;
  }
}

// ======================================== The lifecycle fixture ========================================

// The OpenHome object driven through its lifecycle by the tests themselves (ServiceFrameFixture): two
// protocol-info entries, the test description folder as "device.docroot", the five OpenHome handlers in
// handlers_ (Playlist, Product, Time, Info, Sender).
class OpenHomeFrame : public service_frame_test::ServiceFrameFixture<Service> {
 protected:
  static constexpr std::size_t kPlaylistHandler = 0;

  PLAYLIST_PlaylistManager& playlist() { return Peer::Playlist(service_); }

  // Inserts a track after `afterId` (0: at the front) straight into the playlist; answers its id.
  uint64_t InsertTrack(const char* uri, const char* metadata, uint64_t afterId = 0) {
    uint64_t id = 0;
    EXPECT_EQ(playlist().Insert(uri, metadata, afterId, &id), 0);
    return id;
  }

  std::string Ask(const char* serviceName, const char* variableName) {
    return Query(service_, serviceName, variableName);
  }

  // Registers the five OpenHome handlers and the transfer service on a fresh object, as the host does.
  void RegisterOpenHomeHandlersAndTransfer(Service& service) {
    const std::vector<Evented> evented = ServiceTraits::EventedHandlers();
    for (std::size_t i = 0; i < evented.size(); ++i) {
      ASSERT_EQ((service.*evented[i].registerHandler)(&handlers_[i]), 0) << evented[i].name;
    }
    ASSERT_EQ(service.RegisterTransferService(&transfer_), 0);
  }
};

// A started object as the action tests see it (OpenHomeServiceFixture): five handlers, a strict
// application, one protocol-info entry, the test description folder as document root.
class OpenHomeFrameStarted : public OpenHomeServiceFixture {
 protected:
  std::string Ask(const char* serviceName, const char* variableName) {
    return Query(service_, serviceName, variableName);
  }
};

// ======================================== Construction and layout ========================================

TEST_F(OpenHomeFrame, ConstructionLeavesThePlaylistEmpty) {
  EXPECT_EQ(playlist().GetTrackCount(), 0u);
  EXPECT_EQ(playlist().GetCurrentTrackData(), nullptr);
  EXPECT_EQ(playlist().GetRepeat(), 0);
  EXPECT_EQ(playlist().GetShuffle(), 0);
  // A fresh playlist: the first id it gives is 1.
  EXPECT_EQ(InsertTrack("http://host/first.flac", ""), 1u);
}

TEST_F(OpenHomeFrame, PlaylistIsHeldByValueAsTheLastFieldInsideTheObject) {
  const std::vector<const void*> addresses = Peer::FieldAddresses(service_);
  ASSERT_EQ(addresses.size(), 13u);
  const char* begin = reinterpret_cast<const char*>(&service_);
  const char* playlistAt = reinterpret_cast<const char*>(&playlist());
  EXPECT_FALSE(std::less<const char*>()(playlistAt, begin));
  EXPECT_TRUE(std::less<const char*>()(playlistAt + sizeof(PLAYLIST_PlaylistManager) - 1, begin + sizeof(Service)));
  EXPECT_EQ(addresses.back(), static_cast<const void*>(&playlist()));
}

// ========================================= Destruction and the playlist =========================================

TEST_F(OpenHomeFrame, DestroyingAnInitializedObjectDeletesItsStoreUnfinalizedAndFreesItsPlaylist) {
  using StorePeer = SINK_UPNP_StateVariableStoreTestPeer;
  auto* service = new Service;
  ASSERT_EQ(service->Initialize(&properties_), 0);
  ASSERT_NE(Peer::Store(*service), nullptr);
  uint64_t first = 0;
  uint64_t second = 0;
  ASSERT_EQ(Peer::Playlist(*service).Insert("http://host/1.flac", "<item>1</item>", 0, &first), 0);
  ASSERT_EQ(Peer::Playlist(*service).Insert("http://host/2.flac", "<item>2</item>", first, &second), 0);
  marlo::ProtocolInfo* chain = Peer::Chain(*service);
  ASSERT_NE(chain, nullptr);
  StorePeer::Leftovers leftovers = StorePeer::Take(*Peer::Store(*service));
  // No Finalize: the store goes with the object without being finalized, and leaves behind what its
  // Finalize would have released (freed here, so that the leak check sees the store and the tracks).
  DMR_CMN_FaultInjection::Reset();
  delete service;
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLockFinalize), 0u);
  EXPECT_EQ(leftovers.lock->Finalize(), 0);
  leftovers.Release();
  ReleaseChain(chain);
}

TEST_F(OpenHomeFrame, DestroyingAStartedObjectWithItsHandlersRegisteredFreesTheStoreAndTellsNobody) {
  // The strict application fails the test if the destructor calls it.
  auto* service = new Service;
  ASSERT_EQ(service->Initialize(&properties_), 0);
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlersAndTransfer(*service));
  ASSERT_EQ(service->Start(), 0);
  uint64_t id = 0;
  ASSERT_EQ(Peer::Playlist(*service).Insert("http://host/1.flac", "<item>1</item>", 0, &id), 0);
  RecordingAVTEventListener listener;
  ASSERT_EQ(service->RegisterApplicationAVTEventListener(&listener), 0);
  marlo::ProtocolInfo* chain = Peer::Chain(*service);
  // What Stop, the unregistrations and Finalize would have released stays behind; freed after.
  auto leftovers = SINK_UPNP_StateVariableStoreTestPeer::Take(*Peer::Store(*service));
  delete service;
  leftovers.Release();
  ReleaseChain(chain);
  EXPECT_TRUE(listener.Calls().empty());
}

TEST_F(OpenHomeFrame, DestroyingAnObjectThatWasNeverInitializedFreesItsPlaylist) {
  auto* service = new Service;
  uint64_t id = 0;
  ASSERT_EQ(Peer::Playlist(*service).Insert("http://host/1.flac", "<item>1</item>", 0, &id), 0);
  delete service;
}

TEST_F(OpenHomeFrame, PlaylistSurvivesStopFinalizeAndANewInitializeAndStart) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  PLAYLIST_PlaylistManager* const before = &playlist();
  const uint64_t first = InsertTrack("http://host/1.flac", "<item>1</item>");
  const uint64_t second = InsertTrack("http://host/2.flac", "<item>2</item>", first);
  ASSERT_EQ(first, 1u);
  ASSERT_EQ(second, 2u);
  ASSERT_EQ(playlist().SetRepeat(1), 0);

  ASSERT_EQ(service_.Stop(), 0);
  EXPECT_EQ(playlist().GetTrackCount(), 2u);

  BackToCreated();
  ASSERT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(playlist().GetTrackCount(), 2u);
  EXPECT_EQ(playlist().GetRepeat(), 1);

  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(&playlist(), before);
  EXPECT_EQ(playlist().GetTrackCount(), 2u);
  const PLAYLIST_PlaylistData* track = playlist().GetSpecificIdTrackData(static_cast<int32_t>(second));
  ASSERT_NE(track, nullptr);
  EXPECT_STREQ(track->getUri(), "http://host/2.flac");
  EXPECT_STREQ(track->getMetaData(), "<item>2</item>");
  const PLAYLIST_PlaylistData* current = playlist().GetCurrentTrackData();
  ASSERT_NE(current, nullptr);
  EXPECT_EQ(current->getId(), first);
  // The same playlist, not a new one: the ids go on where they were.
  EXPECT_EQ(InsertTrack("http://host/3.flac", "", second), 3u);
}

// ============================================ The document root ============================================

TEST_F(OpenHomeFrame, DocumentRootGivesTheProductVariablesTheDescriptionValues) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "Open Renderer Project");
  EXPECT_EQ(Ask(kProductService, "ManufacturerInfo"), "Free software for networked audio");
  EXPECT_EQ(Ask(kProductService, "ModelName"), "Open Renderer");
  EXPECT_EQ(Ask(kProductService, "ProductRoom"), "Living Room");
  EXPECT_EQ(Ask(kProductService, "ProductInfo"), "Plays music from your network & the internet");
  EXPECT_EQ(Ask(kProductService, "ManufacturerImageUri"), ServedImageUri("/images/manufacturer.png"));
  EXPECT_EQ(Ask(kProductService, "ProductImageUri"), ServedImageUri("/images/product.png"));
}

TEST_F(OpenHomeFrame, WithoutDocumentRootPropertyTheStoreFindsNoDescription) {
  marlo::Properties configuration;
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_0", kMpeg), 0);
  ASSERT_EQ(service_.Initialize(&configuration), 0);
  ASSERT_NO_FATAL_FAILURE(RegisterEverything());
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "");
  EXPECT_EQ(Ask(kProductService, "ModelName"), "");
  EXPECT_EQ(Ask(kProductService, "ProductInfo"), "");
  // The missing root is handed over all the same: the store then looks for "/openhome.xml", finds
  // nothing there, and the image URIs hold only the served prefix.
  EXPECT_EQ(Ask(kProductService, "ManufacturerImageUri"), ServedImageUri(""));
  // The other variables have their usual initial values.
  EXPECT_EQ(Ask(kPlaylistService, "ProtocolInfo"), kMpeg);
  EXPECT_EQ(Ask(kPlaylistService, "TracksMax"), "1000");
}

TEST_F(OpenHomeFrame, DocumentRootIsNotValidatedByInitialize) {
  ASSERT_EQ(properties_.SetProperty("device.docroot", "/no/such/folder"), 0);
  EXPECT_EQ(service_.Initialize(&properties_), 0);
  ASSERT_NO_FATAL_FAILURE(RegisterEverything());
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "");
  EXPECT_EQ(Ask(kProductService, "ModelImageUri"), ServedImageUri(""));
}

TEST_F(OpenHomeFrame, DocumentRootIsHandedToEachNewStore) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(Ask(kProductService, "ManufacturerName"), "Open Renderer Project");
  BackToCreated();
  // A new store after Finalize gets the root again from Initialize.
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "Open Renderer Project");
  EXPECT_EQ(Ask(kProductService, "ModelInfo"), "UPnP AV and OpenHome media renderer");
}

TEST_F(OpenHomeFrame, StartThatFailedBeforeReachingTheStoreLeavesTheDescriptionToTheNextStart) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    // The service's copy of the protocol list cannot be made.
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    ASSERT_EQ(service_.Start(), -1997);
  }
  ASSERT_EQ(service_.Start(), 0);
  // The store was never reached, so the description is still found at the first real Start.
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "Open Renderer Project");
}

// ======================================== Finalize, Start and Stop ========================================

TEST_F(OpenHomeFrame, FinalizeWithTheProductHandlerStillRegisteredSucceeds) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterProductServiceEventListener(&handlers_[1]), 0);
  // The store goes without its thread being unregistered: the thread is left behind, freed here.
  const auto threads = SINK_UPNP_StateVariableStoreTestPeer::Take(*store()).threads;
  EXPECT_EQ(service_.Finalize(), 0);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(threads.size(), 1u);
  for (DMR_CMN_UPnPEventingThread* thread : threads) delete thread;
}

TEST_F(OpenHomeFrame, FinalizeWithEveryOpenHomeHandlerStillRegisteredSucceedsAndKeepsThePlaylist) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlersAndTransfer(service_));
  const uint64_t id = InsertTrack("http://host/1.flac", "<item>1</item>");
  // The store goes without its threads being unregistered: they are left behind, freed here.
  const auto threads = SINK_UPNP_StateVariableStoreTestPeer::Take(*store()).threads;
  EXPECT_EQ(service_.Finalize(), 0);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(playlist().GetTrackCount(), 1u);
  ASSERT_NE(playlist().GetCurrentTrackData(), nullptr);
  EXPECT_EQ(playlist().GetCurrentTrackData()->getId(), id);
  EXPECT_EQ(threads.size(), 5u);
  for (DMR_CMN_UPnPEventingThread* thread : threads) delete thread;
}

TEST_F(OpenHomeFrame, StartWithoutThePlaylistHandlerAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  // Every other handler and the transfer service are there.
  const std::vector<Evented> evented = ServiceTraits::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    if (i == kPlaylistHandler) continue;
    ASSERT_EQ((service_.*evented[i].registerHandler)(&handlers_[i]), 0) << evented[i].name;
  }
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 0);
  // The store was not reset.
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_TRACKS_MAX), "");
}

TEST_F(OpenHomeFrame, StartWithThePlaylistHandlerAndTheTransferServiceButNoAVTransportHandlerSucceeds) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistHandler]), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  // Neither the AVTransport nor the ConnectionManager handler, nor the four other OpenHome ones.
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(Peer::Started(service_), 1);
  EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
  EXPECT_EQ(Peer::CmsHandler(service_), nullptr);
}

TEST_F(OpenHomeFrame, StartResetsTheOpenHomeVariablesWithTheJoinedProtocolList) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  ASSERT_EQ(StoreValue(SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_PROTOCOL_INFO), kJoined);
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Stopped");
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_TRACKS_MAX), "1000");
  EXPECT_EQ(StoreValue(SINK_UPNP_SENDER_STATUS), "Disable");
}

TEST_F(OpenHomeFrame, StopKeepsThePlaylistAndTheOpenHomeVariables) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const uint64_t id = InsertTrack("http://host/1.flac", "<item>1</item>");
  ASSERT_EQ(ChangeInStore(SINK_UPNP_PLAYLIST_ID, "1"), 0);
  // The strict transfer service fails the test on any call.
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_ID), "1");
  EXPECT_EQ(playlist().GetTrackCount(), 1u);
  ASSERT_NE(playlist().GetCurrentTrackData(), nullptr);
  EXPECT_EQ(playlist().GetCurrentTrackData()->getId(), id);
  // Started again, the store is reset and the playlist is still there.
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_PLAYLIST_ID), "0");
  EXPECT_EQ(playlist().GetTrackCount(), 1u);
}

// ================================== The AVTransport handler: refused here ==================================

TEST_F(OpenHomeFrame, RegisterAVTransportHandlerWhenInitializedIsRefusedByTheStoreAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  RecordingEventHandler avtHandler;
  DMR_CMN_FaultInjection::Reset();  // counts from here
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler), -1999);
  EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
  // The OpenHome store has no AVTransport thread: none was made.
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation), 0u);
  // Nothing is held against Finalize.
  EXPECT_EQ(service_.Finalize(), 0);
}

TEST_F(OpenHomeFrame, UnregisterAVTransportHandlerAfterARefusedRegistrationAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  RecordingEventHandler avtHandler;
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler), -1999);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), -1999);
}

// ============================ The OpenHome handlers Start does not need ============================
// Start needs only the Playlist handler; a Product, Time, Info or Sender handler the host did not
// register before Start is refused once started, and the store gets no thread for it.

class OpenHomeFrameAfterStart : public OpenHomeFrame, public ::testing::WithParamInterface<std::size_t> {};

TEST_P(OpenHomeFrameAfterStart, HandlerNotRegisteredBeforeStartIsRefusedAndMakesNoThread) {
  const Evented evented = ServiceTraits::EventedHandlers()[GetParam()];
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistHandler]), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(service_.Start(), 0);
  DMR_CMN_FaultInjection::Reset();  // counts from here
  EXPECT_EQ((service_.*evented.registerHandler)(&handlers_[GetParam()]), -1999);
  EXPECT_EQ(evented.field(service_), nullptr);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation), 0u);
  EXPECT_EQ(evented.storeUnregister(*store()), SINK_UPNP_ERR_NOT_REGISTERED);
  // Stopped, the service takes it.
  ASSERT_EQ(service_.Stop(), 0);
  EXPECT_EQ((service_.*evented.registerHandler)(&handlers_[GetParam()]), 0);
}

INSTANTIATE_TEST_SUITE_P(ProductTimeInfoSender, OpenHomeFrameAfterStart, ::testing::Values(1, 2, 3, 4),
                         [](const ::testing::TestParamInfo<std::size_t>& paramInfo) {
                           return std::string(
                               service_frame_test::FrameTraits<Service>::EventedHandlers()[paramInfo.param].name);
                         });

// ======================================= Transfer service registration =======================================

TEST_F(OpenHomeFrame, RegisterTransferServiceHandsTheStoreAndThenThePlaylistToTheApplication) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  StrictMock<MockTransferService> application;
  {
    InSequence order;
    EXPECT_CALL(application, AttachOpenHomeStateVariableManager(store()))
        .WillOnce([this](SINK_UPNP_OpenHomeStateVariableManager*) {
          // Asked before the service keeps it.
          EXPECT_EQ(Peer::Transfer(service_), nullptr);
          return 0;
        });
    EXPECT_CALL(application, AttachPlaylistManager(&Peer::Playlist(service_))).WillOnce(Return(0));
  }
  EXPECT_EQ(service_.RegisterTransferService(&application), 0);
  EXPECT_EQ(Peer::Transfer(service_), &application);
  ::testing::Mock::VerifyAndClearExpectations(&application);
  // Taken back before `application` goes.
  EXPECT_EQ(service_.RegisterTransferService(&transfer_), 0);
}

TEST_F(OpenHomeFrame, RegisterTransferServiceIgnoresTheAnswerToThePlaylistAttach) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  const int32_t answers[] = {-1, 1, 402, -989};
  StrictMock<MockTransferService> application;
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    InSequence order;
    EXPECT_CALL(application, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(0));
    EXPECT_CALL(application, AttachPlaylistManager(&Peer::Playlist(service_))).WillOnce(Return(answer));
    EXPECT_EQ(service_.RegisterTransferService(&application), 0);
    EXPECT_EQ(Peer::Transfer(service_), &application);
    ::testing::Mock::VerifyAndClearExpectations(&application);
  }
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistHandler]), 0);
  EXPECT_EQ(service_.Start(), 0);
  BackToCreated();
}

// ============================================== WarnTimeOut ==============================================

// A started object has a transfer service in every case (Start requires one and nothing takes it away); the
// nearest the host can come is an application whose registration was refused.
TEST_F(OpenHomeFrame, WarnTimeOutWithoutATransferServiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistHandler]), 0);
  StrictMock<MockTransferService> refused;
  EXPECT_CALL(refused, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(-1));
  ASSERT_EQ(service_.RegisterTransferService(&refused), -1);
  ASSERT_EQ(service_.Start(), -1999);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
}

// =========================================== GetStateVariable ===========================================

TEST_F(OpenHomeFrame, GetStateVariableArgumentRefusalsInEveryState) {
  struct Row {
    const char* serviceName;
    const char* variableName;
    bool nullOut;
  };
  // Every one is -1998, whatever the state.
  const Row rows[] = {
      {nullptr, "Id", false},
      {nullptr, nullptr, true},
      {kAVTransport, "LastChange", false},
      {kConnectionManager, "SinkProtocolInfo", false},
      {"urn:av-openhome-org:service:Volume:1", "Volume", false},
      {"urn:av-openhome-org:service:playlist:1", "Id", false},
      {"urn:av-openhome-org:service:Playlist:2", "Id", false},
      {"urn:av-openhome-org:service:Playlist", "Id", false},
      {"urn:av-openhome-org:service:Info:", "TrackCount", false},
      {"", "Id", false},
      {"urn:av-openhome-org:service:Volume:1", nullptr, true},
      {kPlaylistService, nullptr, false},
      {kPlaylistService, "Id", true},
      {kProductService, nullptr, false},
      {kTimeService, "Seconds", true},
      {kInfoService, nullptr, true},
      {kSenderService, "Status", true},
      // A name that passes only as a prefix still has its arguments checked first.
      {"urn:av-openhome-org:service:Playlist:10", nullptr, false},
      {"urn:av-openhome-org:service:Playlist:10", "Id", true},
  };
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    for (const Row& row : rows) {
      SCOPED_TRACE(row.serviceName == nullptr ? "(null service)" : row.serviceName);
      SCOPED_TRACE(row.variableName == nullptr ? "(null variable)" : row.variableName);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(row.serviceName, row.variableName, row.nullOut ? nullptr : &out), -1998);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    BackToCreated();
  }
}


TEST_F(OpenHomeFrame, ServiceTypeThatIsOnlyAPrefixMatchIsRefusedForTheStateFirst) {
  const std::pair<State, int32_t> states[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& state : states) {
    SCOPED_TRACE(StateName(state.first));
    ASSERT_NO_FATAL_FAILURE(Enter(state.first));
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable("urn:av-openhome-org:service:Playlist:10", "Id", &out), state.second);
    EXPECT_EQ(out.GetValue(), nullptr);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrameStarted, PlaylistTypeWithOneMoreDigitPassesThePrefixButMatchesNoService) {
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable("urn:av-openhome-org:service:Playlist:10", "Id", &out), -1999);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TEST_F(OpenHomeFrameStarted, AVTransportServiceNameIsAnInvalidArgument) {
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kAVTransport, "Id", &out), -1998);
  EXPECT_EQ(service_.GetStateVariable(kAVTransport, "LastChange", &out), -1998);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TEST_F(OpenHomeFrameStarted, EveryServiceTypeWithTextAppendedMatchesNoService) {
  const std::pair<const char*, const char*> queries[] = {
      {kPlaylistService, "Id"},
      {kProductService, "ManufacturerName"},
      {kTimeService, "Seconds"},
      {kInfoService, "TrackCount"},
      {kSenderService, "Status"},
  };
  const char* suffixes[] = {"0", " ", "/extra", ":1"};
  for (const auto& query : queries) {
    for (const char* suffix : suffixes) {
      const std::string name = std::string(query.first) + suffix;
      SCOPED_TRACE(name);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(name.c_str(), query.second, &out), -1999);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
  }
}

struct VariableRow {
  const char* serviceName;
  const char* variableName;
  int index;
};

// The names each service answers, and the store index each one reads.
const VariableRow kVariables[] = {
    {kPlaylistService, "TransportState", 29},
    {kPlaylistService, "Repeat", 30},
    {kPlaylistService, "Shuffle", 31},
    {kPlaylistService, "Id", 32},
    {kPlaylistService, "IdArray", 33},
    {kPlaylistService, "TracksMax", 34},
    {kPlaylistService, "ProtocolInfo", 35},
    {kPlaylistService, "Index", 36},
    {kPlaylistService, "Relative", 37},
    {kPlaylistService, "Absolute", 38},
    {kPlaylistService, "IdList", 39},
    {kPlaylistService, "TrackList", 40},
    {kPlaylistService, "Uri", 41},
    {kPlaylistService, "Metadata", 42},
    {kPlaylistService, "IdArrayToken", 43},
    {kPlaylistService, "IdArrayChanged", 44},
    {kProductService, "ManufacturerName", 45},
    {kProductService, "ManufacturerInfo", 46},
    {kProductService, "ManufacturerUrl", 47},
    {kProductService, "ManufacturerImageUri", 48},
    {kProductService, "ModelName", 49},
    {kProductService, "ModelInfo", 50},
    {kProductService, "ModelUrl", 51},
    {kProductService, "ModelImageUri", 52},
    {kProductService, "ProductRoom", 53},
    {kProductService, "ProductName", 54},
    {kProductService, "ProductInfo", 55},
    {kProductService, "ProductUrl", 56},
    {kProductService, "ProductImageUri", 57},
    {kProductService, "Standby", 58},
    {kProductService, "SourceIndex", 59},
    {kProductService, "SourceCount", 60},
    {kProductService, "SourceXml", 61},
    {kProductService, "Attributes", 62},
    {kTimeService, "TrackCount", 63},
    {kTimeService, "Duration", 64},
    {kTimeService, "Seconds", 65},
    {kInfoService, "TrackCount", 66},
    {kInfoService, "DetailsCount", 67},
    {kInfoService, "MetatextCount", 68},
    {kInfoService, "Uri", 69},
    {kInfoService, "Metadata", 70},
    {kInfoService, "Duration", 71},
    {kInfoService, "BitRate", 72},
    {kInfoService, "BitDepth", 73},
    {kInfoService, "SampleRate", 74},
    {kInfoService, "Lossless", 75},
    {kInfoService, "CodecName", 76},
    {kInfoService, "Metatext", 77},
    {kSenderService, "PresentationUrl", 78},
    {kSenderService, "Metadata", 79},
    {kSenderService, "Audio", 80},
    {kSenderService, "Status", 81},
    {kSenderService, "Attributes", 82},
};

std::string DistinctValue(int index) { return "value of variable " + std::to_string(index); }

TEST_F(OpenHomeFrameStarted, EveryVariableOfTheFiveServicesReadsItsOwnStoreIndex) {
  // Every OpenHome variable takes any text: give each a value no other has.
  for (int index = SINK_UPNP_PLAYLIST_TRANSPORT_STATE; index <= SINK_UPNP_SENDER_ATTRIBUTES; ++index) {
    ASSERT_NO_FATAL_FAILURE(
        SetVariable(static_cast<SINK_UPNP_StateVariableName_t>(index), DistinctValue(index).c_str()));
  }
  for (const VariableRow& row : kVariables) {
    SCOPED_TRACE(row.serviceName);
    SCOPED_TRACE(row.variableName);
    EXPECT_EQ(Ask(row.serviceName, row.variableName), DistinctValue(row.index));
  }
}

TEST_F(OpenHomeFrameStarted, VariablesAreReadAtQueryTimeAfterTheStartValues) {
  EXPECT_EQ(Ask(kPlaylistService, "TracksMax"), "1000");
  EXPECT_EQ(Ask(kPlaylistService, "ProtocolInfo"), "http-get:*:audio/flac:*");
  EXPECT_EQ(Ask(kProductService, "SourceXml"), SINK_UPNP_SOURCE_LIST_XML);
  EXPECT_EQ(Ask(kSenderService, "Status"), "Disable");
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_PLAYLIST_TRACKS_MAX, "250"));
  EXPECT_EQ(Ask(kPlaylistService, "TracksMax"), "250");
}

TEST_F(OpenHomeFrameStarted, TimeTrackCountAndInfoTrackCountAreDifferentVariables) {
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_TIME_TRACK_COUNT, "7"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_INFO_TRACK_COUNT, "9"));
  EXPECT_EQ(Ask(kTimeService, "TrackCount"), "7");
  EXPECT_EQ(Ask(kInfoService, "TrackCount"), "9");
}

TEST_F(OpenHomeFrameStarted, SharedNamesReadTheVariableOfTheServiceAsked) {
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_PLAYLIST_METADATA, "playlist metadata"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_INFO_METADATA, "info metadata"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_SENDER_METADATA, "sender metadata"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_TIME_DURATION, "120"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_INFO_DURATION, "240"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_PLAYLIST_URI, "http://host/playlist.flac"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_INFO_URI, "http://host/info.flac"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_PRODUCT_ATTRIBUTES, "Info Time"));
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_SENDER_ATTRIBUTES, "Sender"));
  EXPECT_EQ(Ask(kPlaylistService, "Metadata"), "playlist metadata");
  EXPECT_EQ(Ask(kInfoService, "Metadata"), "info metadata");
  EXPECT_EQ(Ask(kSenderService, "Metadata"), "sender metadata");
  EXPECT_EQ(Ask(kTimeService, "Duration"), "120");
  EXPECT_EQ(Ask(kInfoService, "Duration"), "240");
  EXPECT_EQ(Ask(kPlaylistService, "Uri"), "http://host/playlist.flac");
  EXPECT_EQ(Ask(kInfoService, "Uri"), "http://host/info.flac");
  EXPECT_EQ(Ask(kProductService, "Attributes"), "Info Time");
  EXPECT_EQ(Ask(kSenderService, "Attributes"), "Sender");
}

TEST_F(OpenHomeFrameStarted, PlaylistTransportStateIsTheOpenHomeVariableNotTheStandardOne) {
  ASSERT_NO_FATAL_FAILURE(SetTransportState("PAUSED_PLAYBACK"));
  EXPECT_EQ(Variable(SINK_UPNP_AVT_TRANSPORT_STATE), "PAUSED_PLAYBACK");
  EXPECT_EQ(Ask(kPlaylistService, "TransportState"), "Paused");
}

TEST_F(OpenHomeFrameStarted, NameNotInTheServicesListAnswersBadValue) {
  const std::pair<const char*, const char*> queries[] = {
      {kPlaylistService, "Volume"},
      {kPlaylistService, "id"},
      {kPlaylistService, "Id "},
      {kPlaylistService, ""},
      {kPlaylistService, "SinkProtocolInfo"},
      {kPlaylistService, "CodecName"},
      {kPlaylistService, "ManufacturerName"},
      {kProductService, "LastChange"},
      {kProductService, "TrackCount"},
      {kProductService, "Id"},
      {kTimeService, "Uri"},
      {kTimeService, "TransportState"},
      {kInfoService, "Seconds"},
      {kInfoService, "PresentationUrl"},
      {kSenderService, "Metatext"},
      {kSenderService, "TransportState"},
      {kSenderService, "LastChange"},
  };
  for (const auto& query : queries) {
    SCOPED_TRACE(query.first);
    SCOPED_TRACE(query.second);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(OpenHomeFrameStarted, StandardVariablesCannotBeQueriedThroughTheOpenHomeServices) {
  const char* standardNames[] = {"SinkProtocolInfo", "SourceProtocolInfo", "CurrentConnectionIDs",
                                 "AVTransportURI", "CurrentTransportActions", "NumberOfTracks"};
  for (const char* serviceName : {kPlaylistService, kProductService, kTimeService, kInfoService, kSenderService}) {
    for (const char* name : standardNames) {
      SCOPED_TRACE(serviceName);
      SCOPED_TRACE(name);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(serviceName, name, &out), -1996);
    }
  }
}


// ============================================= PerformAction =============================================

TEST_F(OpenHomeFrameStarted, ProtocolInfoActionIsAnsweredInvalidAction) {
  EXPECT_EQ(Perform("ProtocolInfo"), 0);
  ExpectError(Reply(), 401);
}

TEST_F(OpenHomeFrameStarted, EverySenderActionIsAnsweredInvalidAction) {
  for (const char* name : {"PresentationUrl", "Metadata", "Audio", "Status", "Attributes"}) {
    SCOPED_TRACE(name);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetServiceType(kSenderService), 0);
    ASSERT_EQ(request.SetActionName(name), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
    ExpectError(response, 401);
  }
}

TEST_F(OpenHomeFrameStarted, NamesOutsideTheTableAreAnsweredInvalidAction) {
  const char* names[] = {
      // Playlist actions this object does not serve.
      "ProtocolInfo", "IdArrayChanged",
      // Product and Info actions of variables only reachable as state variables.
      "SourceCount", "Source", "SetSourceIndexByName", "SourceXmlChangeCount", "Attributes", "Counters",
      "DetailsCount", "MetatextCount",
      // The standard services' actions are not shared with this object.
      "SetAVTransportURI", "GetTransportInfo", "GetProtocolInfo", "Seek", "SetPlayMode",
      // Letter case, blanks and near misses.
      "play", "PLAY", "stop", "Play ", " Stop", "", "SetVolume", "Inserts", "Ids"};
  for (const char* name : names) {
    SCOPED_TRACE(name);
    EXPECT_EQ(Perform(name), 0);
    ExpectError(Reply(), 401);
  }
}

TEST_F(OpenHomeFrameStarted, StopAddressedToTheInfoServiceRunsThePlaylistStop) {
  EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kInfoService), 0);
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  ExpectUntouched(response);
}

TEST_F(OpenHomeFrameStarted, ServiceTheActionWasAddressedToIsNotLookedAt) {
  const char* serviceTypes[] = {kPlaylistService, kProductService, kTimeService, kInfoService,
                                kSenderService,   kAVTransport,    ""};
  for (const char* serviceType : serviceTypes) {
    SCOPED_TRACE(serviceType);
    EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(705));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetServiceType(serviceType), 0);
    ASSERT_EQ(request.SetActionName("Stop"), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
    ExpectError(response, 705);
    ::testing::Mock::VerifyAndClearExpectations(&transfer_);
  }
  // Without a service type at all.
  EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  ExpectUntouched(response);
}


// ---- The dispatch table ----

const char* const kActionTable[] = {
    "Insert",    "DeleteId",       "DeleteAll",    "Stop",      "Play",      "Pause",   "SeekSecondAbsolute",
    "Next",      "Previous",       "SeekId",       "SeekIndex", "Repeat",    "SetRepeat", "Shuffle",
    "SetShuffle", "Id",            "TransportState", "Read",    "ReadList",  "Standby", "SetStandby",
    "SourceXml", "SetSourceIndex", "IdArray",      "TracksMax", "Manufacturer", "Model", "Product",
    "SourceIndex", "Track",        "Details",      "Metatext",  "Time",
};

TEST(OpenHomeFrameDispatchTable, HoldsTheThirtyThreeActionsInOrderEachWithItsOwnHandler) {
  const std::vector<Peer::ActionHandlerEntry> handlers = Peer::ActionHandlers();
  ASSERT_EQ(sizeof(kActionTable) / sizeof(kActionTable[0]), 33u);
  ASSERT_EQ(handlers.size(), 33u);
  for (std::size_t i = 0; i < handlers.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_STREQ(handlers[i].action, kActionTable[i]);
    for (std::size_t j = i + 1; j < handlers.size(); ++j) {
      EXPECT_FALSE(handlers[i].handler == handlers[j].handler) << handlers[i].action << " / " << handlers[j].action;
    }
  }
}

const char* TextOf(const DMR_CMN_String* text) {
  return text != nullptr && text->GetCString() != nullptr ? text->GetCString() : "<null>";
}

// What one action did: its frame result, its reply and the commands the application got.
struct Outcome {
  int32_t result;
  int32_t errorCode;
  unsigned errorWrites;
  std::string description;
  Args arguments;
  std::vector<std::string> commands;

  bool operator==(const Outcome& other) const {
    return result == other.result && errorCode == other.errorCode && errorWrites == other.errorWrites &&
           description == other.description && arguments == other.arguments && commands == other.commands;
  }
};

void PrintTo(const Outcome& outcome, std::ostream* os) {
  *os << "result " << outcome.result << ", error " << outcome.errorCode << " x" << outcome.errorWrites << " \""
      << outcome.description << "\", " << outcome.arguments.size() << " arguments (";
  for (const auto& argument : outcome.arguments) *os << argument.first << "=" << argument.second << " ";
  *os << "), commands (";
  for (const std::string& command : outcome.commands) *os << command << "; ";
  *os << ")";
}

class OpenHomeFrameDispatch : public OpenHomeServiceFixture {
 protected:
  // Records every command the actions may give, in order, and answers 0.
  void RecordCommands() {
    EXPECT_CALL(transfer_, Stop(_, _)).WillRepeatedly([this](unsigned long handle, unsigned long instance) {
      commands_.push_back("Stop " + std::to_string(handle) + " " + std::to_string(instance));
      return 0;
    });
    EXPECT_CALL(transfer_, Pause(_, _)).WillRepeatedly([this](unsigned long handle, unsigned long instance) {
      commands_.push_back("Pause " + std::to_string(handle) + " " + std::to_string(instance));
      return 0;
    });
    EXPECT_CALL(transfer_, Next(_, _)).WillRepeatedly([this](unsigned long handle, unsigned long instance) {
      commands_.push_back("Next " + std::to_string(handle) + " " + std::to_string(instance));
      return 0;
    });
    EXPECT_CALL(transfer_, Previous(_, _)).WillRepeatedly([this](unsigned long handle, unsigned long instance) {
      commands_.push_back("Previous " + std::to_string(handle) + " " + std::to_string(instance));
      return 0;
    });
    EXPECT_CALL(transfer_, Play(_, _, _))
        .WillRepeatedly([this](unsigned long handle, unsigned long instance, DMR_CMN_String* speed) {
          commands_.push_back("Play " + std::to_string(handle) + " " + std::to_string(instance) + " " +
                              TextOf(speed));
          return 0;
        });
    EXPECT_CALL(transfer_, Seek(_, _, _, _))
        .WillRepeatedly(
            [this](unsigned long handle, unsigned long instance, DMR_CMN_String* unit, DMR_CMN_String* target) {
              commands_.push_back("Seek " + std::to_string(handle) + " " + std::to_string(instance) + " " +
                                  TextOf(unit) + " " + TextOf(target));
              return 0;
            });
    EXPECT_CALL(transfer_, SetAVTransportURI(_, _, _, _))
        .WillRepeatedly(
            [this](unsigned long handle, unsigned long instance, DMR_CMN_String* uri, DMR_CMN_String* metadata) {
              commands_.push_back("SetAVTransportURI " + std::to_string(handle) + " " + std::to_string(instance) +
                                  " " + TextOf(uri) + " " + TextOf(metadata));
              return 0;
            });
    EXPECT_CALL(transfer_, AttachPlaylistManager(_)).WillRepeatedly([this](PLAYLIST_PlaylistManager* manager) {
      commands_.push_back(manager == &Playlist() ? "AttachPlaylistManager playlist" : "AttachPlaylistManager other");
      return 0;
    });
  }

  static int32_t AsServiceResult(int32_t handlerResult) {
    if (handlerResult == 0) return 0;
    return handlerResult == -989 ? -1997 : -1999;
  }

  static Outcome Read(int32_t result, const marlo::ActionResponse& response, std::vector<std::string> commands) {
    Outcome outcome{result,
                    response.GetErrorCode(),
                    response.GetErrorCodeWriteCount(),
                    response.GetErrorDescription() != nullptr ? response.GetErrorDescription() : "<none>",
                    OutArguments(response),
                    std::move(commands)};
    return outcome;
  }

  // The action served by name through PerformAction.
  Outcome Dispatched(const char* action, const Args& in) {
    commands_.clear();
    const int32_t result = Perform(action, in);
    return Read(result, Reply(), commands_);
  }

  // The action's handler called directly, its result turned into the service's.
  Outcome Direct(const char* action, const Args& in) {
    commands_.clear();
    marlo::ActionRequest request;
    EXPECT_EQ(request.SetServiceType(kPlaylistService), 0);
    EXPECT_EQ(request.SetActionName(action), 0);
    for (const auto& argument : in) {
      EXPECT_EQ(request.AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
    }
    marlo::ActionResponse response;
    const int32_t result = AsServiceResult(CallHandler(action, &request, &response));
    return Read(result, response, commands_);
  }

  std::vector<std::string> commands_;
};

TEST_F(OpenHomeFrameDispatch, EachNameOfTheTableReachesItsOwnHandler) {
  ASSERT_NO_FATAL_FAILURE(RecordCommands());
  // Distinct values everywhere, so that handlers that read different variables answer differently.
  for (int index = SINK_UPNP_PLAYLIST_TRANSPORT_STATE; index <= SINK_UPNP_SENDER_ATTRIBUTES; ++index) {
    ASSERT_NO_FATAL_FAILURE(
        SetVariable(static_cast<SINK_UPNP_StateVariableName_t>(index), DistinctValue(index).c_str()));
  }
  ASSERT_EQ(Playlist().SetRepeat(1), 0);  // "Repeat" and "Shuffle" then answer differently
  for (const char* action : kActionTable) {
    SCOPED_TRACE(action);
    // No arguments, except where a missing one would be read as a text: an id that names no track and
    // an empty id list change nothing.
    Args in;
    if (std::strcmp(action, "DeleteId") == 0) in = {{"Value", "0"}};
    if (std::strcmp(action, "ReadList") == 0) in = {{"IdList", ""}};
    const Outcome dispatched = Dispatched(action, in);
    EXPECT_FALSE(dispatched.errorCode == 401) << "not served";
    const Outcome direct = Direct(action, in);
    EXPECT_EQ(dispatched, direct);
  }
}

// The four actions that answer alike on an empty playlist, told apart on a playlist of three tracks.
TEST_F(OpenHomeFrameDispatch, SeekAndStepActionsReachTheirOwnHandlers) {
  ASSERT_NO_FATAL_FAILURE(RecordCommands());
  const uint64_t first = AddTrack("http://host/1.flac", "<item>1</item>");
  const uint64_t second = AddTrack("http://host/2.flac", "<item>2</item>");
  AddTrack("http://host/3.flac", "<item>3</item>");
  const std::string handle = std::to_string(kHandle);
  const auto load = [&handle](const std::string& n) {
    return std::vector<std::string>{
        "AttachPlaylistManager playlist",
        "SetAVTransportURI " + handle + " 0 http://host/" + n + ".flac <item>" + n + "</item>",
        "Play " + handle + " 0 1"};
  };
  std::vector<std::string> stopThenLoad;

  // Index 1 is the second track; id 1 is the first.
  commands_.clear();
  EXPECT_EQ(Perform("SeekIndex", {{"Value", "1"}}), 0);
  EXPECT_EQ(commands_, load("2"));
  EXPECT_EQ(CurrentId(), second);
  commands_.clear();
  EXPECT_EQ(Perform("SeekId", {{"Value", std::to_string(first)}}), 0);
  EXPECT_EQ(commands_, load("1"));
  EXPECT_EQ(CurrentId(), first);

  // From the first track Next goes on to the second, and Previous back to the first; both stop first.
  commands_.clear();
  EXPECT_EQ(Perform("Next"), 0);
  stopThenLoad = {"Stop " + handle + " 0"};
  for (const std::string& command : load("2")) stopThenLoad.push_back(command);
  EXPECT_EQ(commands_, stopThenLoad);
  EXPECT_EQ(CurrentId(), second);
  commands_.clear();
  EXPECT_EQ(Perform("Previous"), 0);
  stopThenLoad = {"Stop " + handle + " 0"};
  for (const std::string& command : load("1")) stopThenLoad.push_back(command);
  EXPECT_EQ(commands_, stopThenLoad);
  EXPECT_EQ(CurrentId(), first);
}

}  // namespace
}  // namespace open_home_test
