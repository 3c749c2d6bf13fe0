// The OpenHome service object as the host drives it: its lifecycle and the exact result of every call in
// each of its three states (Created, Initialized, Started), the seven event handler registrations, the
// transfer service and application listeners, the state variable query of the five OpenHome services,
// the frame of the action dispatch, the playlist it owns for its whole life, and its place in the host's
// interface tables. The actions' own behaviour is tested in the OpenHome*ActionTest.cpp files.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <ostream>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "OpenHomeServiceFixture.h"
#include "OpenHomeUPnPServiceTestPeer.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Device.h"
#include "marlo/FormatDecoderSubsystem.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "marlo/StateVariable.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"

#if !defined(__GXX_ABI_VERSION)
#error "the slot layout is checked for the Itanium C++ ABI only"
#endif

namespace open_home_test {
namespace {

using Service = SINK_UPNP_OpenHomeUPnPService;
using Peer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;
using Store = SINK_UPNP_OpenHomeStateVariableManager;
using FP = DMR_CMN_FaultPoint;
using ::testing::_;
using ::testing::InSequence;
using ::testing::Return;
using ::testing::StrictMock;

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManager[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kMpeg[] = "http-get:*:audio/mpeg:*";
constexpr char kFlac[] = "http-get:*:audio/flac:*";
constexpr char kJoined[] = "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*";

enum class State { kCreated, kInitialized, kStarted };

const char* StateName(State state) {
  switch (state) {
    case State::kCreated:
      return "Created";
    case State::kInitialized:
      return "Initialized";
    case State::kStarted:
      return "Started";
  }
  return "?";
}

const State kAllStates[] = {State::kCreated, State::kInitialized, State::kStarted};

std::string DescriptionFolder() { return std::string(DMR_TEST_DATA_DIR) + "/description"; }

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

// A variable's value as the store holds it.
std::string StoreValue(Store* store, SINK_UPNP_StateVariableName_t index) {
  DMR_CMN_String value;
  if (store == nullptr || store->GetStateVariable(index, &value) != 0 || value.GetCString() == nullptr) {
    return "<unreadable>";
  }
  return value.GetCString();
}

// The full LastChange document the store gives now.
std::string StoreLastChange(Store* store) {
  DMR_CMN_String value;
  if (store == nullptr || store->GetLastChange(&value) != 0 || value.GetCString() == nullptr) {
    return "<unreadable>";
  }
  return value.GetCString();
}

// Hands one name/value batch to the store, as the OpenHome actions do: it goes out through the eventing
// thread of the service that has `name`.
int32_t SendThroughStore(Store* store, const char* name, const char* value) {
  DMR_CMN_String names[1];
  DMR_CMN_String values[1];
  if (names[0].SetCString(name) != 0 || values[0].SetCString(value) != 0) return -12345;
  return store->SendEventForOpenHome(names, values, 1);
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

bool Untouched(const marlo::ActionResponse& response) {
  return response.GetErrorCode() == 0 && response.GetErrorCodeWriteCount() == 0 &&
         response.GetErrorDescription() == nullptr && response.GetArgumentCount() == 0;
}

void ExpectInvalidAction(const marlo::ActionResponse& response) {
  EXPECT_EQ(response.GetErrorCode(), 401);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 1u);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid Action");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

// ---- The five OpenHome event handler pairs, in the order of the host's table ----

// Plain functions rather than pointers to members: the table is then a constant table of addresses.
using RegisterHandler = int32_t (*)(Service&, marlo::EventHandler*);
using UnregisterHandler = int32_t (*)(Service&);
using HandlerField = marlo::EventHandler* (*)(const Service&);
using StoreRegister = int32_t (*)(Store&, marlo::EventHandler*);
using StoreUnregister = int32_t (*)(Store&);

struct OpenHomePair {
  const char* name;
  RegisterHandler registerHandler;
  UnregisterHandler unregisterHandler;
  HandlerField field;
  StoreRegister storeRegister;
  StoreUnregister storeUnregister;
  // A variable of the service: a batch with this first name goes out through the service's thread.
  const char* eventedName;
};

#define OPEN_HOME_PAIR(S, evented)                                                                  \
  {                                                                                                 \
    #S, [](Service& s, marlo::EventHandler* h) { return s.Register##S##ServiceEventListener(h); },  \
        [](Service& s) { return s.Unregister##S##ServiceEventListener(); }, &Peer::S##Handler,      \
        [](Store& m, marlo::EventHandler* h) { return m.Register##S##ServiceEventListener(h); },     \
        [](Store& m) { return m.Unregister##S##ServiceEventListener(); }, evented                   \
  }

const OpenHomePair kPairs[] = {
    OPEN_HOME_PAIR(Playlist, "Id"),         OPEN_HOME_PAIR(Product, "Standby"), OPEN_HOME_PAIR(Time, "Seconds"),
    OPEN_HOME_PAIR(Info, "DetailsCount"), OPEN_HOME_PAIR(Sender, "Status"),
};
#undef OPEN_HOME_PAIR
constexpr std::size_t kPairCount = sizeof(kPairs) / sizeof(kPairs[0]);
constexpr std::size_t kPlaylistPair = 0;

// ======================================== The lifecycle fixture ========================================

// A service object driven through its lifecycle by the tests themselves: two protocol-info entries and the
// test description folder as "device.docroot"; a strict application that accepts the store and the
// playlist whenever it is registered.
class OpenHomeFrame : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", kMpeg), 0);
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", kFlac), 0);
    ASSERT_EQ(properties_.SetProperty("device.docroot", DescriptionFolder().c_str()), 0);
    EXPECT_CALL(transfer_, AttachOpenHomeStateVariableManager(_)).WillRepeatedly(Return(0));
    EXPECT_CALL(transfer_, AttachPlaylistManager(_)).WillRepeatedly(Return(0));
  }

  void TearDown() override { BackToCreated(); }

  // Stops, unregisters and finalizes whatever the test left, then frees what a failed Initialize left.
  void BackToCreated() {
    DMR_CMN_FaultInjection::Reset();
    if (Peer::Started(service_) == 1) {
      EXPECT_EQ(service_.Stop(), 0);
    }
    if (Peer::Initialized(service_) == 1) {
      for (const OpenHomePair& pair : kPairs) {
        if (pair.field(service_) != nullptr) {
          EXPECT_EQ(pair.unregisterHandler(service_), 0) << pair.name;
        }
      }
      if (Peer::AvtHandler(service_) != nullptr) {
        EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
      }
      if (Peer::CmsHandler(service_) != nullptr) {
        EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
      }
      EXPECT_EQ(service_.Finalize(), 0);
    }
    Peer::ReleaseLeftovers(service_);
  }

  void InitializeOnly() { ASSERT_EQ(service_.Initialize(&properties_), 0); }

  void RegisterOpenHomeHandlers() {
    for (std::size_t i = 0; i < kPairCount; ++i) {
      ASSERT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0) << kPairs[i].name;
    }
  }

  // Everything the host registers before Start.
  void InitializeAndRegister() {
    ASSERT_NO_FATAL_FAILURE(InitializeOnly());
    ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
    ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  }

  void StartAll() {
    ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
    ASSERT_EQ(service_.Start(), 0);
  }

  // Initialized means initialized with nothing registered; Started has the five OpenHome handlers and the
  // transfer service registered.
  void Enter(State state) {
    switch (state) {
      case State::kCreated:
        return;
      case State::kInitialized:
        ASSERT_NO_FATAL_FAILURE(InitializeOnly());
        return;
      case State::kStarted:
        ASSERT_NO_FATAL_FAILURE(StartAll());
        return;
    }
  }

  Store* store() { return Peer::Store(service_); }
  PLAYLIST_PlaylistManager& playlist() { return Peer::Playlist(service_); }

  // Inserts a track at the front of the playlist; answers its id.
  uint64_t InsertTrack(const char* uri, const char* metadata, uint64_t afterId = 0) {
    uint64_t id = 0;
    EXPECT_EQ(playlist().Insert(uri, metadata, afterId, &id), 0);
    return id;
  }

  std::string Ask(const char* serviceName, const char* variableName) {
    return Query(service_, serviceName, variableName);
  }

  int32_t ChangeInStore(SINK_UPNP_StateVariableName_t index, const char* text) {
    DMR_CMN_String value;
    if (value.SetCString(text) != 0) return -12345;
    return store()->ChangeStateVariable(index, &value);
  }

  marlo::Properties properties_;
  RecordingEventHandler avtHandler_;
  RecordingEventHandler cmsHandler_;
  RecordingEventHandler handlers_[kPairCount];
  StrictMock<MockTransferService> transfer_;
  Service service_;
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

TEST_F(OpenHomeFrame, ConstructionLeavesEveryFieldZeroAndThePlaylistEmpty) {
  EXPECT_TRUE(Peer::AllFieldsZero(service_));
  EXPECT_EQ(playlist().GetTrackCount(), 0u);
  EXPECT_EQ(playlist().GetCurrentTrackData(), nullptr);
  EXPECT_EQ(playlist().GetRepeat(), 0);
  EXPECT_EQ(playlist().GetShuffle(), 0);
  // A fresh playlist: the first id it gives is 1.
  EXPECT_EQ(InsertTrack("http://host/first.flac", ""), 1u);
}

TEST_F(OpenHomeFrame, FieldsLieInDeclarationOrderWithThePlaylistLastInsideTheObject) {
  const std::vector<const void*> addresses = Peer::FieldAddresses(service_);
  ASSERT_EQ(addresses.size(), 13u);
  for (std::size_t i = 1; i < addresses.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_TRUE(std::less<const void*>()(addresses[i - 1], addresses[i]));
  }
  // The playlist is held by value, inside the object.
  const char* begin = reinterpret_cast<const char*>(&service_);
  const char* playlistAt = reinterpret_cast<const char*>(&playlist());
  EXPECT_FALSE(std::less<const char*>()(playlistAt, begin));
  EXPECT_TRUE(std::less<const char*>()(playlistAt + sizeof(PLAYLIST_PlaylistManager) - 1, begin + sizeof(Service)));
  EXPECT_EQ(addresses.back(), static_cast<const void*>(&playlist()));
}

TEST(OpenHomeFrameType, DerivesFromTheHostServiceBase) {
  EXPECT_TRUE((std::is_base_of_v<marlo::SinkContentTransferSubsystem, Service>));
  EXPECT_TRUE((std::is_base_of_v<marlo::StateVariableProvider, Service>));
  EXPECT_TRUE(std::has_virtual_destructor_v<Service>);
  EXPECT_FALSE(std::is_copy_constructible_v<Service>);
  EXPECT_FALSE(std::is_copy_assignable_v<Service>);
  EXPECT_TRUE(std::is_default_constructible_v<Service>);
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
  for (std::size_t i = 0; i < kPairCount; ++i) {
    ASSERT_EQ(kPairs[i].registerHandler(*service, &handlers_[i]), 0) << kPairs[i].name;
  }
  ASSERT_EQ(service->RegisterTransferService(&transfer_), 0);
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

  for (const OpenHomePair& pair : kPairs) ASSERT_EQ(pair.unregisterHandler(service_), 0) << pair.name;
  ASSERT_EQ(service_.Finalize(), 0);
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

// ============================================ Interface slots ============================================

struct MemberPointerWords {
  std::ptrdiff_t pointerOrOffset;
  std::ptrdiff_t thisAdjustment;
};

// On the Itanium C++ ABI a pointer to a virtual member function holds 1 + the byte offset of its table
// entry, then the adjustment of `this`. Slots count from 1, the two destructor entries being 1 and 2; 0
// means the function is not virtual.
template <typename Member>
long SlotOf(Member member) {
  static_assert(sizeof(Member) == sizeof(MemberPointerWords), "Itanium member function pointer");
  MemberPointerWords words;
  std::memcpy(&words, &member, sizeof(words));
  if ((words.pointerOrOffset & 1) == 0) return 0;
  return static_cast<long>((words.pointerOrOffset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) + 1;
}

template <typename Member>
std::ptrdiff_t ThisAdjustmentOf(Member member) {
  MemberPointerWords words;
  std::memcpy(&words, &member, sizeof(words));
  return words.thisAdjustment;
}

// One virtual operation more than the service: lands in the first slot after its last one.
struct ServiceProbe : Service {
  virtual void ProbeAfterLastSlot() {}
};

TEST(OpenHomeFrameSlots, DispatchTimerAndLifecycleFillSlotsThreeToEight) {
  EXPECT_EQ(SlotOf(&Service::PerformAction), 3);
  EXPECT_EQ(SlotOf(&Service::WarnTimeOut), 4);
  EXPECT_EQ(SlotOf(&Service::Initialize), 5);
  EXPECT_EQ(SlotOf(&Service::Finalize), 6);
  EXPECT_EQ(SlotOf(&Service::Start), 7);
  // Stop is overloaded by the private transport operation of the same name; the override is meant.
  EXPECT_EQ(SlotOf(static_cast<int32_t (Service::*)()>(&Service::Stop)), 8);
}

TEST(OpenHomeFrameSlots, EventListenerPairsFillSlotsNineToTwentyTwo) {
  EXPECT_EQ(SlotOf(&Service::RegisterAVTransportServiceEventListener), 9);
  EXPECT_EQ(SlotOf(&Service::UnregisterAVTransportServiceEventListener), 10);
  EXPECT_EQ(SlotOf(&Service::RegisterConnectionManagerServiceEventListener), 11);
  EXPECT_EQ(SlotOf(&Service::UnregisterConnectionManagerServiceEventListener), 12);
  EXPECT_EQ(SlotOf(&Service::RegisterPlaylistServiceEventListener), 13);
  EXPECT_EQ(SlotOf(&Service::UnregisterPlaylistServiceEventListener), 14);
  EXPECT_EQ(SlotOf(&Service::RegisterProductServiceEventListener), 15);
  EXPECT_EQ(SlotOf(&Service::UnregisterProductServiceEventListener), 16);
  EXPECT_EQ(SlotOf(&Service::RegisterTimeServiceEventListener), 17);
  EXPECT_EQ(SlotOf(&Service::UnregisterTimeServiceEventListener), 18);
  EXPECT_EQ(SlotOf(&Service::RegisterInfoServiceEventListener), 19);
  EXPECT_EQ(SlotOf(&Service::UnregisterInfoServiceEventListener), 20);
  EXPECT_EQ(SlotOf(&Service::RegisterSenderServiceEventListener), 21);
  EXPECT_EQ(SlotOf(&Service::UnregisterSenderServiceEventListener), 22);
}

TEST(OpenHomeFrameSlots, FormatDecoderPairAndStateVariableQueryCloseTheTable) {
  EXPECT_EQ(SlotOf(&Service::RegisterFormatDecoderSubsystem), 23);
  EXPECT_EQ(SlotOf(&Service::UnregisterFormatDecoderSubsystem), 24);
  EXPECT_EQ(SlotOf(&Service::GetStateVariable), 25);
  EXPECT_EQ(ThisAdjustmentOf(&Service::GetStateVariable), 0);
  // Nothing of the service's own comes after GetStateVariable.
  EXPECT_EQ(SlotOf(&ServiceProbe::ProbeAfterLastSlot), 26);
}

TEST(OpenHomeFrameSlots, PublicRegistrationsOfTheApplicationAreNotVirtual) {
  EXPECT_EQ(SlotOf(&Service::RegisterTransferService), 0);
  EXPECT_EQ(SlotOf(&Service::RegisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::UnregisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::RegisterApplicationCMSEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::UnregisterApplicationCMSEventListener), 0);
}

TEST(OpenHomeFrameSlots, SecondTableHoldsTheStateVariableQueryAfterTheDestructors) {
  EXPECT_EQ(SlotOf(&marlo::StateVariableProvider::GetStateVariable), 3);
}

TEST_F(OpenHomeFrameStarted, StateVariableQueryIsReachableThroughTheSecondTable) {
  marlo::StateVariableProvider* provider = &service_;
  ASSERT_NE(static_cast<void*>(provider), static_cast<void*>(&service_));  // really the second table
  marlo::StateVariable out;
  EXPECT_EQ(provider->GetStateVariable(kPlaylistService, "TracksMax", &out), 0);
  EXPECT_STREQ(out.GetName(), "TracksMax");
  EXPECT_STREQ(out.GetValue(), "1000");
  EXPECT_EQ(provider->GetStateVariable(kPlaylistService, "NoSuchVariable", &out), -1996);
  EXPECT_EQ(provider->GetStateVariable(kAVTransport, "LastChange", &out), -1998);
}

TEST_F(OpenHomeFrameStarted, StateVariableQueryIsReachableThroughThePrimaryTable) {
  marlo::SinkContentTransferSubsystem* base = &service_;
  marlo::StateVariable out;
  EXPECT_EQ(base->GetStateVariable(kProductService, "ManufacturerName", &out), 0);
  EXPECT_STREQ(out.GetValue(), "Open Renderer Project");
}

// The host's whole call order, through the base class only.
TEST_F(OpenHomeFrame, HostCallOrderThroughTheBaseClassRunsToTheEnd) {
  marlo::SinkContentTransferSubsystem* host = &service_;
  ASSERT_EQ(host->Initialize(&properties_), 0);
  ASSERT_EQ(host->RegisterPlaylistServiceEventListener(&handlers_[0]), 0);
  ASSERT_EQ(host->RegisterProductServiceEventListener(&handlers_[1]), 0);
  ASSERT_EQ(host->RegisterTimeServiceEventListener(&handlers_[2]), 0);
  ASSERT_EQ(host->RegisterInfoServiceEventListener(&handlers_[3]), 0);
  ASSERT_EQ(host->RegisterSenderServiceEventListener(&handlers_[4]), 0);
  ASSERT_EQ(host->RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(host->Start(), 0);
  EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(host->PerformAction(&request, &response, kHandle), 0);
  EXPECT_TRUE(Untouched(response));
  ASSERT_EQ(host->Stop(), 0);
  ASSERT_EQ(host->UnregisterPlaylistServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterProductServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterTimeServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterInfoServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterSenderServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterConnectionManagerServiceEventListener(), 0);
  ASSERT_EQ(host->Finalize(), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
}

// ============================================== Initialize ==============================================

TEST_F(OpenHomeFrame, InitializeRefusalsInEveryState) {
  struct Row {
    State state;
    bool nullProperties;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -1998},      {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kInitialized, false, -1999}, {State::kStarted, false, -1999},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullProperties ? "null properties" : "properties");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    Store* before = store();
    marlo::ProtocolInfo* chain = Peer::Chain(service_);
    EXPECT_EQ(service_.Initialize(row.nullProperties ? nullptr : &properties_), row.expected);
    EXPECT_EQ(store(), before);
    EXPECT_EQ(Peer::Chain(service_), chain);
    EXPECT_EQ(Peer::Initialized(service_), row.state == State::kCreated ? 0 : 1);
    EXPECT_EQ(Peer::Started(service_), row.state == State::kStarted ? 1 : 0);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, InitializeWhenInitializedIsRefusedBeforeTheConfigurationIsRead) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  marlo::Properties empty;
  EXPECT_EQ(service_.Initialize(&empty), -1999);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
}

TEST_F(OpenHomeFrame, InitializeCreatesTheStoreAndReadsTheProtocolList) {
  EXPECT_EQ(service_.Initialize(&properties_), 0);
  EXPECT_EQ(Peer::Initialized(service_), 1);
  EXPECT_EQ(Peer::Started(service_), 0);
  EXPECT_NE(store(), nullptr);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
  char* joined = nullptr;
  ASSERT_EQ(Peer::GetProtocolInfo(service_, &joined), 0);
  EXPECT_STREQ(joined, kJoined);
  std::free(joined);
  // Nothing is registered by Initialize itself.
  EXPECT_EQ(Peer::PlaylistHandler(service_), nullptr);
  EXPECT_EQ(Peer::Transfer(service_), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWithoutKeyZeroAnswersBadValueEvenWhenKeyOneExists) {
  marlo::Properties configuration;
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_1", kMpeg), 0);
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_2", kFlac), 0);
  ASSERT_EQ(configuration.SetProperty("device.docroot", DescriptionFolder().c_str()), 0);
  EXPECT_EQ(service_.Initialize(&configuration), -1996);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(service_.Finalize(), -1995);
}

TEST_F(OpenHomeFrame, InitializeWithMalformedEntryAnswersFailureAndKeepsNoChain) {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", "not a protocol info"), 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWithoutMemoryForAnEntryAnswersNoMemoryAndCleansTheChain) {
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kProtocolInfoCreation, nth, 0);
    EXPECT_EQ(service_.Initialize(&properties_), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(Peer::Initialized(service_), 0);
    EXPECT_EQ(Peer::Chain(service_), nullptr);
    EXPECT_EQ(store(), nullptr);
  }
}

TEST_F(OpenHomeFrame, InitializeWithoutMemoryToParseAnswersNoMemory) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1997);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWithEntryRefusedByTheParserAnswersFailure) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1998);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWithOtherParseFailureAnswersFailureAndKeepsEarlierEntries) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1999);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(Peer::ChainLength(service_), 1u);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreCannotBeCreatedAnswersNoMemoryAndCleansTheChain) {
  // The store is the first block Initialize takes from the runtime's allocator.
  ScopedFault fault(FP::kMemoryAllocation, 1, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreHasNoMemoryForItsValuesAnswersNoMemoryAndDeletesIt) {
  ScopedFault fault(FP::kMemoryAllocation, 2, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreHasNoMemoryForAValueAnswersNoMemoryAndDeletesIt) {
  // Every string copy fails: the store's first value cannot be set.
  ScopedFault fault(FP::kStringAllocation, 1, -989, true);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreHasNoLockAnswersNoMemoryAndDeletesIt) {
  ScopedFault fault(FP::kLockCreation, 1, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreFailsOtherwiseAnswersFailureAndLeavesTheStore) {
  // Every string copy fails: the store's first value cannot be set.
  ScopedFault fault(FP::kStringAllocation, 1, -1, true);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_NE(store(), nullptr);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
  EXPECT_EQ(service_.Finalize(), -1995);
}

TEST_F(OpenHomeFrame, InitializeWhenTheStoreLockFailsAnswersFailureAndLeavesTheStore) {
  ScopedFault fault(FP::kLockInitialize, 1, -1);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_NE(store(), nullptr);
  EXPECT_EQ(service_.Start(), -1995);
}

TEST_F(OpenHomeFrame, InitializeAfterAFailedStoreSucceedsWithOneFreshList) {
  {
    ScopedFault fault(FP::kStringAllocation, 1, -1, true);
    ASSERT_EQ(service_.Initialize(&properties_), -1999);
  }
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(Ask(kPlaylistService, "ProtocolInfo"), kJoined);
}

TEST_F(OpenHomeFrame, InitializeAgainAfterFinalizeWorks) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  BackToCreated();
  ASSERT_EQ(Peer::Initialized(service_), 0);
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Ask(kPlaylistService, "ProtocolInfo"), kJoined);
}

std::vector<std::string> Split(const std::string& joined) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type comma = joined.find(',', start);
    parts.push_back(joined.substr(start, comma - start));
    if (comma == std::string::npos) return parts;
    start = comma + 1;
  }
}

TEST_F(OpenHomeFrame, HundredKeysOutOfHundredAndFiftyGiveAHundredEntryProtocolList) {
  marlo::Properties configuration;
  for (int number = 0; number < 150; ++number) {
    const std::string key = "sinkctss.protocolInfo_" + std::to_string(number);
    const std::string entry = "http-get:*:audio/x-" + std::to_string(number) + ":*";
    ASSERT_EQ(configuration.SetProperty(key.c_str(), entry.c_str()), 0);
  }
  ASSERT_EQ(service_.Initialize(&configuration), 0);
  EXPECT_EQ(Peer::ChainLength(service_), 100u);
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(service_.Start(), 0);
  const std::vector<std::string> entries = Split(Ask(kPlaylistService, "ProtocolInfo"));
  ASSERT_EQ(entries.size(), 100u);
  for (int number = 0; number < 100; ++number) {
    EXPECT_EQ(entries[number], "http-get:*:audio/x-" + std::to_string(number) + ":*");
  }
}

// ---- The document root ----

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
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
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
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
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

// =============================================== Finalize ===============================================

TEST_F(OpenHomeFrame, FinalizeWhenCreatedAnswersNotInitialized) { EXPECT_EQ(service_.Finalize(), -1995); }

TEST_F(OpenHomeFrame, FinalizeWhenStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  Store* before = store();
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(Peer::Started(service_), 1);
  EXPECT_EQ(Peer::Initialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
}

TEST_F(OpenHomeFrame, FinalizeWhileConnectionManagerHandlerRegisteredAnswersFailureAndChangesNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  Store* before = store();
  marlo::ProtocolInfo* chain = Peer::Chain(service_);
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(Peer::Initialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(Peer::Chain(service_), chain);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
  EXPECT_EQ(Peer::CmsHandler(service_), &cmsHandler_);
  // Still whole: the handler can be taken back and the service finalized.
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(service_.Finalize(), 0);
}

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
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
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

TEST_F(OpenHomeFrame, FinalizeWhenTheStoreCannotFinalizeAnswersFailureAndStaysInitialized) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  Store* before = store();
  {
    ScopedFault fault(FP::kLockFinalize, 1, -1);
    EXPECT_EQ(service_.Finalize(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Peer::Initialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(Peer::ChainLength(service_), 2u);
  EXPECT_EQ(service_.Finalize(), 0);
}

TEST_F(OpenHomeFrame, FinalizeDeletesTheStoreAndTheListAndKeepsTheTransferService) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  EXPECT_EQ(service_.Finalize(), 0);
  EXPECT_EQ(Peer::Initialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::Chain(service_), nullptr);
  EXPECT_EQ(Peer::Transfer(service_), &transfer_);
  EXPECT_EQ(service_.Finalize(), -1995);
}

// ================================================= Start =================================================

TEST_F(OpenHomeFrame, StartWhenCreatedAnswersNotInitialized) {
  EXPECT_EQ(service_.Start(), -1995);
  EXPECT_EQ(Peer::Started(service_), 0);
}

TEST_F(OpenHomeFrame, StartWhenStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 1);
}

TEST_F(OpenHomeFrame, StartWithoutThePlaylistHandlerAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  // Every other handler and the transfer service are there.
  for (std::size_t i = 1; i < kPairCount; ++i) {
    ASSERT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0) << kPairs[i].name;
  }
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 0);
  // The store was not reset.
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_TRACKS_MAX), "");
}

TEST_F(OpenHomeFrame, StartWithoutTheTransferServiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 0);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_TRACKS_MAX), "");
}

TEST_F(OpenHomeFrame, StartWithNothingRegisteredAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  EXPECT_EQ(service_.Start(), -1999);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 0);
}

TEST_F(OpenHomeFrame, StartWithThePlaylistHandlerAndTheTransferServiceButNoAVTransportHandlerSucceeds) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistPair]), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  // Neither the AVTransport nor the ConnectionManager handler, nor the four other OpenHome ones.
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(Peer::Started(service_), 1);
  EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
  EXPECT_EQ(Peer::CmsHandler(service_), nullptr);
}

TEST_F(OpenHomeFrame, StartNeedsNoApplicationListener) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(Peer::Started(service_), 1);
}

TEST_F(OpenHomeFrame, StartResetsEveryVariableWithTheJoinedProtocolList) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  ASSERT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_PROTOCOL_INFO), kJoined);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_CMS_SINK_PROTOCOL_INFO), kJoined);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Stopped");
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_TRACKS_MAX), "1000");
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_SENDER_STATUS), "Disable");
}

// A failed Start leaves the service Initialized, and a later Start succeeds.
void ExpectStillStartable(Service& service) {
  EXPECT_EQ(Peer::Started(service), 0);
  EXPECT_EQ(service.Stop(), -1999);
  EXPECT_EQ(service.Start(), 0);
}

TEST_F(OpenHomeFrame, StartWhenAnEntryHasNoMemoryToPrintAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    ScopedFault fault(FP::kProtocolInfoGet, 2, -1997);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectStillStartable(service_);
}

TEST_F(OpenHomeFrame, StartWhenAnEntryFailsToPrintAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  const int32_t codes[] = {-1999, -1998, -1};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kProtocolInfoGet, 1, code);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(Peer::Started(service_), 0);
  }
  ExpectStillStartable(service_);
}

TEST_F(OpenHomeFrame, StartWithoutMemoryToJoinTheListAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kMemoryAllocation, nth, 0);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    // The store was not reached.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 0u);
  }
  ExpectStillStartable(service_);
}

TEST_F(OpenHomeFrame, StartWithoutMemoryToCopyTheListAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    // The copy is the only string made: the store was not reached.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  ExpectStillStartable(service_);
  // The store was never reached, so the description is still found at the first real Start.
  EXPECT_EQ(Ask(kProductService, "ManufacturerName"), "Open Renderer Project");
}

TEST_F(OpenHomeFrame, StartWhenTheListCannotBeCopiedOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -1);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  ExpectStillStartable(service_);
}

TEST_F(OpenHomeFrame, StartWhenTheStoreHasNoMemoryForInitialValuesAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    // The first string is the service's copy of the list; every one after it fails.
    ScopedFault fault(FP::kStringAllocation, 2, -989, true);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_GE(fault.Fired(), 1u);
  }
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  ExpectStillStartable(service_);
}

TEST_F(OpenHomeFrame, StartWhenTheStoreFailsOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    ScopedFault fault(FP::kStringAllocation, 2, -1, true);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_GE(fault.Fired(), 1u);
  }
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  ExpectStillStartable(service_);
}

// ================================================= Stop =================================================

TEST_F(OpenHomeFrame, StopInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    EXPECT_EQ(service_.Stop(), row.second);
    EXPECT_EQ(Peer::Started(service_), 0);
    EXPECT_EQ(Peer::Initialized(service_), row.first == State::kCreated ? 0 : 1);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, StopTwiceAnswersFailureTheSecondTime) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(service_.Stop(), -1999);
}

TEST_F(OpenHomeFrame, StopTellsNobodyAndKeepsTheStoreThePlaylistAndTheRegistrations) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const uint64_t id = InsertTrack("http://host/1.flac", "<item>1</item>");
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(ChangeInStore(SINK_UPNP_PLAYLIST_ID, "1"), 0);
  // The strict transfer service fails the test on any call.
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_ID), "1");
  EXPECT_EQ(playlist().GetTrackCount(), 1u);
  ASSERT_NE(playlist().GetCurrentTrackData(), nullptr);
  EXPECT_EQ(playlist().GetCurrentTrackData()->getId(), id);
  for (std::size_t i = 0; i < kPairCount; ++i) {
    EXPECT_EQ(kPairs[i].field(service_), &handlers_[i]) << kPairs[i].name;
  }
  EXPECT_EQ(Peer::Transfer(service_), &transfer_);
  // Started again, the store is reset and the playlist is still there.
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(StoreValue(store(), SINK_UPNP_PLAYLIST_ID), "0");
  EXPECT_EQ(playlist().GetTrackCount(), 1u);
}

// ================================== AVTransport event handler registration ==================================

TEST_F(OpenHomeFrame, RegisterAVTransportHandlerRefusalsInEveryState) {
  struct Row {
    State state;
    bool nullHandler;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -1998},  {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kCreated, false, -1995}, {State::kStarted, false, -1999},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(row.nullHandler ? nullptr : &avtHandler_),
              row.expected);
    EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, RegisterAVTransportHandlerWhenInitializedIsRefusedByTheStoreAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  DMR_CMN_FaultInjection::Reset();  // counts from here
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), -1999);
  EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
  // The OpenHome store has no AVTransport thread: none was made.
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation), 0u);
  // Nothing is held against Finalize.
  EXPECT_EQ(service_.Finalize(), 0);
}

TEST_F(OpenHomeFrame, UnregisterAVTransportHandlerRefusalsInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), row.second);
    EXPECT_EQ(Peer::AvtHandler(service_), nullptr);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, UnregisterAVTransportHandlerAfterARefusedRegistrationAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), -1999);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), -1999);
}

// =============================== ConnectionManager event handler registration ===============================

TEST_F(OpenHomeFrame, RegisterConnectionManagerHandlerRefusalsInEveryState) {
  struct Row {
    State state;
    bool nullHandler;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -1998},  {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kCreated, false, -1995}, {State::kStarted, false, -1999},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(row.nullHandler ? nullptr : &cmsHandler_),
              row.expected);
    EXPECT_EQ(Peer::CmsHandler(service_), nullptr);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, ConnectionManagerHandlerIsKeptButNotGivenToTheStore) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  DMR_CMN_FaultInjection::Reset();  // counts from here
  EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(Peer::CmsHandler(service_), &cmsHandler_);
  // No eventing thread was made for it.
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation), 0u);
  for (const OpenHomePair& pair : kPairs) {
    EXPECT_EQ(pair.storeUnregister(*store()), SINK_UPNP_ERR_NOT_REGISTERED) << pair.name;
  }
  EXPECT_EQ(cmsHandler_.BatchCount(), 0u);
}

TEST_F(OpenHomeFrame, RegisterConnectionManagerHandlerTwiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  RecordingEventHandler other;
  EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(&other), -1999);
  EXPECT_EQ(Peer::CmsHandler(service_), &cmsHandler_);
}

TEST_F(OpenHomeFrame, UnregisterConnectionManagerHandlerRefusalsInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), row.second);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, UnregisterConnectionManagerHandlerWhenStartedAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), -1999);
  EXPECT_EQ(Peer::CmsHandler(service_), &cmsHandler_);
}

TEST_F(OpenHomeFrame, UnregisterConnectionManagerHandlerWhenInitializedClearsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(Peer::CmsHandler(service_), nullptr);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), -1999);
}

// ================================== The five OpenHome event handlers ==================================

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerRefusalsInEveryStateComeInOrder) {
  struct Row {
    State state;
    bool nullHandler;
    int32_t expected;
  };
  // A null handler is refused before the state is looked at.
  const Row rows[] = {
      {State::kCreated, true, -1998},  {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kCreated, false, -1995}, {State::kStarted, false, -1999},
  };
  RecordingEventHandler other;
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    for (std::size_t i = 0; i < kPairCount; ++i) {
      SCOPED_TRACE(kPairs[i].name);
      marlo::EventHandler* before = kPairs[i].field(service_);
      EXPECT_EQ(kPairs[i].registerHandler(service_, row.nullHandler ? nullptr : &other), row.expected);
      EXPECT_EQ(kPairs[i].field(service_), before);
    }
    BackToCreated();
  }
  EXPECT_EQ(other.BatchCount(), 0u);
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerWhenInitializedStoresItAndGivesItToTheStore) {
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    ASSERT_NO_FATAL_FAILURE(InitializeOnly());
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0);
    EXPECT_EQ(kPairs[i].field(service_), &handlers_[i]);
    // The others stay empty.
    for (std::size_t j = 0; j < kPairCount; ++j) {
      if (j != i) {
        EXPECT_EQ(kPairs[j].field(service_), nullptr) << kPairs[j].name;
      }
    }
    // The store's thread for this service is bound to the handler: a batch of the service reaches it.
    ASSERT_EQ(SendThroughStore(store(), kPairs[i].eventedName, "frame-test"), 0);
    ASSERT_TRUE(handlers_[i].WaitForBatches(1));
    const std::vector<RecordingEventHandler::Batch> batches = handlers_[i].Batches();
    ASSERT_EQ(batches.size(), 1u);
    EXPECT_EQ(batches[0], (RecordingEventHandler::Batch{{kPairs[i].eventedName, "frame-test"}}));
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerTwiceAnswersFailureAndKeepsTheFirst) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  RecordingEventHandler other;
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &other), -1999);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), -1999);
    EXPECT_EQ(kPairs[i].field(service_), &handlers_[i]);
  }
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerWithoutMemoryForTheThreadAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    {
      ScopedFault fault(FP::kEventingThreadCreation, 1, 0);
      EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), -1997);
      EXPECT_EQ(fault.Fired(), 1u);
    }
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0);
  }
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerWhoseThreadHasNoMemoryToInitializeAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    {
      ScopedFault fault(FP::kEventingThreadInitialize, 1, -989);
      EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), -1997);
      EXPECT_EQ(fault.Fired(), 1u);
    }
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0);
  }
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerWhoseThreadWillNotStartAnswersFailureAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    {
      ScopedFault fault(FP::kThreadStart, 1, SINK_UPNP_ERR_THREAD_START);
      EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
    }
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0);
  }
}

TEST_F(OpenHomeFrame, RegisterOpenHomeHandlerRefusedByTheStoreAnswersFailureAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  RecordingEventHandler direct;
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    // The application registered a thread for the service in the store behind the service's back.
    ASSERT_EQ(kPairs[i].storeRegister(*store(), &direct), 0);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), -1999);
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
    ASSERT_EQ(kPairs[i].storeUnregister(*store()), 0);
    EXPECT_EQ(kPairs[i].registerHandler(service_, &handlers_[i]), 0);
  }
}

TEST_F(OpenHomeFrame, UnregisterOpenHomeHandlerRefusalsInEveryState) {
  // Created: not initialized; Initialized: none registered; Started: started (all five registered).
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    for (std::size_t i = 0; i < kPairCount; ++i) {
      SCOPED_TRACE(kPairs[i].name);
      marlo::EventHandler* before = kPairs[i].field(service_);
      EXPECT_EQ(kPairs[i].unregisterHandler(service_), row.second);
      EXPECT_EQ(kPairs[i].field(service_), before);
    }
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, UnregisterOpenHomeHandlerWhenInitializedClearsItAndEndsTheStoreThread) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    EXPECT_EQ(kPairs[i].unregisterHandler(service_), 0);
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
    EXPECT_EQ(kPairs[i].unregisterHandler(service_), -1999);
    // The store's thread went too.
    EXPECT_EQ(kPairs[i].storeUnregister(*store()), SINK_UPNP_ERR_NOT_REGISTERED);
  }
  // A new handler can be registered for every service.
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
}

TEST_F(OpenHomeFrame, UnregisterOpenHomeHandlerWhenTheStoreFailsAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    {
      ScopedFault fault(FP::kEventingThreadStop, 1, -1);
      EXPECT_EQ(kPairs[i].unregisterHandler(service_), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
    }
    EXPECT_EQ(kPairs[i].field(service_), &handlers_[i]);
    EXPECT_EQ(kPairs[i].unregisterHandler(service_), 0);
    EXPECT_EQ(kPairs[i].field(service_), nullptr);
  }
}

TEST_F(OpenHomeFrame, UnregisterOpenHomeHandlerWhoseStoreThreadIsGoneAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(RegisterOpenHomeHandlers());
  for (std::size_t i = 0; i < kPairCount; ++i) {
    SCOPED_TRACE(kPairs[i].name);
    // The application took the thread away behind the service's back: the store answers -963.
    ASSERT_EQ(kPairs[i].storeUnregister(*store()), 0);
    EXPECT_EQ(kPairs[i].unregisterHandler(service_), -1999);
    EXPECT_EQ(kPairs[i].field(service_), &handlers_[i]);
    // Given a thread again, the store lets the service take its handler back.
    ASSERT_EQ(kPairs[i].storeRegister(*store(), &handlers_[i]), 0);
    EXPECT_EQ(kPairs[i].unregisterHandler(service_), 0);
  }
}

// ========================================== The format decoder ==========================================

TEST_F(OpenHomeFrame, FormatDecoderSubsystemPairAlwaysAnswersFailure) {
  marlo::FormatDecoderSubsystem decoder;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    EXPECT_EQ(service_.RegisterFormatDecoderSubsystem(&decoder), -1999);
    EXPECT_EQ(service_.RegisterFormatDecoderSubsystem(nullptr), -1999);
    EXPECT_EQ(service_.UnregisterFormatDecoderSubsystem(), -1999);
    EXPECT_EQ(service_.UnregisterFormatDecoderSubsystem(), -1999);
    EXPECT_EQ(Peer::Started(service_), state == State::kStarted ? 1 : 0);
    BackToCreated();
  }
}

// ======================================= Transfer service registration =======================================

TEST_F(OpenHomeFrame, RegisterTransferServiceRefusalsInEveryStateUseTheStoreCodes) {
  struct Row {
    State state;
    bool nullService;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -999},   {State::kInitialized, true, -999}, {State::kStarted, true, -999},
      {State::kCreated, false, -1000}, {State::kStarted, false, -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullService ? "null service" : "service");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    StrictMock<MockTransferService> other;  // told nothing
    SINK_CORE_TransferService* before = Peer::Transfer(service_);
    EXPECT_EQ(service_.RegisterTransferService(row.nullService ? nullptr : &other), row.expected);
    EXPECT_EQ(Peer::Transfer(service_), before);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, RegisterTransferServiceAfterFinalizeAnswersNotInitialized) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.Finalize(), 0);
  StrictMock<MockTransferService> other;
  EXPECT_EQ(service_.RegisterTransferService(&other), -1000);
  EXPECT_EQ(Peer::Transfer(service_), nullptr);
}

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

TEST_F(OpenHomeFrame, RegisterTransferServiceWhoseStoreAttachFailsAnswersGenericAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  const int32_t answers[] = {-1, 1, 402, -989};
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    // Strict: AttachPlaylistManager must not follow.
    StrictMock<MockTransferService> application;
    EXPECT_CALL(application, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(answer));
    EXPECT_EQ(service_.RegisterTransferService(&application), -1);
    EXPECT_EQ(Peer::Transfer(service_), nullptr);
  }
  // With the Playlist handler there, Start still refuses for want of a transfer service.
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistPair]), 0);
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::Started(service_), 0);
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
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistPair]), 0);
  EXPECT_EQ(service_.Start(), 0);
  BackToCreated();
}

TEST_F(OpenHomeFrame, SecondTransferServiceReplacesTheFirstWithoutTellingIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  StrictMock<MockTransferService> first;
  StrictMock<MockTransferService> second;
  {
    InSequence order;
    EXPECT_CALL(first, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(0));
    EXPECT_CALL(first, AttachPlaylistManager(&Peer::Playlist(service_))).WillOnce(Return(0));
    EXPECT_CALL(second, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(0));
    EXPECT_CALL(second, AttachPlaylistManager(&Peer::Playlist(service_))).WillOnce(Return(0));
  }
  ASSERT_EQ(service_.RegisterTransferService(&first), 0);
  ASSERT_EQ(service_.RegisterTransferService(&second), 0);
  EXPECT_EQ(Peer::Transfer(service_), &second);
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistPair]), 0);
  ASSERT_EQ(service_.Start(), 0);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_CALL(second, WarnTimeOut(3ul, &timeout, &text)).WillOnce(Return(0));
  EXPECT_EQ(service_.WarnTimeOut(3, &timeout, &text), 0);
  BackToCreated();
}

// ========================================= Application listeners =========================================

TEST_F(OpenHomeFrame, ApplicationListenerForwardersAnswerGenericWithoutAStore) {
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(service_.UnregisterApplicationCMSEventListener(), -1);
}

TEST_F(OpenHomeFrame, ApplicationListenerForwardersAnswerGenericAfterFinalize) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.Finalize(), 0);
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(service_.UnregisterApplicationCMSEventListener(), -1);
}

TEST_F(OpenHomeFrame, ApplicationListenerForwardersAnswerTheStoreResultWhenInitializedOrStarted) {
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  for (State state : {State::kInitialized, State::kStarted}) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    EXPECT_EQ(service_.RegisterApplicationAVTEventListener(&avt), 0);
    EXPECT_EQ(service_.RegisterApplicationAVTEventListener(nullptr), -1);
    EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), 0);
    EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), 0);
    EXPECT_EQ(service_.RegisterApplicationCMSEventListener(&cms), 0);
    EXPECT_EQ(service_.RegisterApplicationCMSEventListener(nullptr), -1);
    EXPECT_EQ(service_.UnregisterApplicationCMSEventListener(), 0);
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, ApplicationTransportListenerReachesTheStore) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  RecordingAVTEventListener listener;
  ASSERT_EQ(service_.RegisterApplicationAVTEventListener(&listener), 0);
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(store()->SendEvent(), 0);
  const std::vector<ListenerCall> calls = listener.Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls[0], (ListenerCall{"NotifyTransportState", "PLAYING", ""}));

  ASSERT_EQ(service_.UnregisterApplicationAVTEventListener(), 0);
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "STOPPED"), 0);
  ASSERT_EQ(store()->SendEvent(), 0);
  EXPECT_EQ(listener.Calls().size(), calls.size());
}

// ============================================== WarnTimeOut ==============================================

TEST_F(OpenHomeFrame, WarnTimeOutRefusalsInEveryState) {
  unsigned long timeout = 0;
  const char* text = nullptr;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    // The strict application fails the test if any of these reaches it.
    EXPECT_EQ(service_.WarnTimeOut(1, nullptr, &text), -1998);
    EXPECT_EQ(service_.WarnTimeOut(1, &timeout, nullptr), -1998);
    EXPECT_EQ(service_.WarnTimeOut(1, nullptr, nullptr), -1998);
    if (state == State::kCreated) {
      EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1995);
    }
    if (state == State::kInitialized) {
      EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
    }
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, WarnTimeOutWhenRegisteredButNotStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
}

TEST_F(OpenHomeFrame, WarnTimeOutAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(service_.Stop(), 0);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
}

// A started object has a transfer service in every case (Start requires one and nothing takes it away); the
// nearest the host can come is an application whose registration was refused.
TEST_F(OpenHomeFrame, WarnTimeOutWithoutATransferServiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterPlaylistServiceEventListener(&handlers_[kPlaylistPair]), 0);
  StrictMock<MockTransferService> refused;
  EXPECT_CALL(refused, AttachOpenHomeStateVariableManager(store())).WillOnce(Return(-1));
  ASSERT_EQ(service_.RegisterTransferService(&refused), -1);
  ASSERT_EQ(service_.Start(), -1999);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
}

TEST_F(OpenHomeFrame, WarnTimeOutForwardsItsArgumentsUnchanged) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  unsigned long timeout = 5;
  const char* text = "before";
  EXPECT_CALL(transfer_, WarnTimeOut(77ul, &timeout, &text))
      .WillOnce([](unsigned long, unsigned long* newTimeout, const char** newText) {
        *newTimeout = 30;
        *newText = "renewed";
        return 0;
      });
  EXPECT_EQ(service_.WarnTimeOut(77, &timeout, &text), 0);
  EXPECT_EQ(timeout, 30ul);
  EXPECT_STREQ(text, "renewed");
}

TEST_F(OpenHomeFrame, WarnTimeOutRefusedByTheApplicationAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  unsigned long timeout = 0;
  const char* text = nullptr;
  const int32_t answers[] = {1, -1, 402, -989};
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    EXPECT_CALL(transfer_, WarnTimeOut(2ul, &timeout, &text)).WillOnce(Return(answer));
    EXPECT_EQ(service_.WarnTimeOut(2, &timeout, &text), -1999);
  }
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

TEST_F(OpenHomeFrame, GetStateVariableStateRefusalsComeBeforeTheNames) {
  const std::pair<const char*, const char*> queries[] = {
      {kPlaylistService, "Id"},
      {kPlaylistService, "LastChange"},
      {kPlaylistService, "NoSuchVariable"},
      {kProductService, "ManufacturerName"},
      {kTimeService, "TrackCount"},
      {kInfoService, "TrackCount"},
      {kSenderService, "Status"},
      {"urn:av-openhome-org:service:Playlist:10", "Id"},
  };
  const std::pair<State, int32_t> states[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& state : states) {
    SCOPED_TRACE(StateName(state.first));
    ASSERT_NO_FATAL_FAILURE(Enter(state.first));
    for (const auto& query : queries) {
      SCOPED_TRACE(query.first);
      SCOPED_TRACE(query.second);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), state.second);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, GetStateVariableWhenRegisteredButNotStartedAnswersFailureForAnyName) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kPlaylistService, "TracksMax", &out), -1999);
  EXPECT_EQ(service_.GetStateVariable(kPlaylistService, "NoSuchVariable", &out), -1999);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TEST_F(OpenHomeFrame, GetStateVariableAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(service_.Stop(), 0);
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kPlaylistService, "TracksMax", &out), -1999);
  EXPECT_EQ(service_.GetStateVariable(kPlaylistService, "LastChange", &out), -1999);
  EXPECT_EQ(out.GetValue(), nullptr);
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

TEST_F(OpenHomeFrameStarted, LastChangeOfThePlaylistServiceIsTheStoresFullDocument) {
  ASSERT_NO_FATAL_FAILURE(SetVariable(SINK_UPNP_PRODUCT_PRODUCT_ROOM, "Kitchen"));
  const std::string document = Ask(kPlaylistService, "LastChange");
  EXPECT_EQ(document, StoreLastChange(Store()));
  EXPECT_NE(document.find("Kitchen"), std::string::npos);
  EXPECT_NE(document.find("<Event"), std::string::npos);
}

TEST_F(OpenHomeFrameStarted, GetStateVariableWithoutMemoryToWriteTheValueAnswersNoMemory) {
  const std::pair<const char*, const char*> queries[] = {{kPlaylistService, "LastChange"},
                                                         {kPlaylistService, "TracksMax"},
                                                         {kProductService, "ManufacturerName"},
                                                         {kSenderService, "Status"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    ScopedFault fault(FP::kStateVariableSetValue, 1, -1997);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(OpenHomeFrameStarted, GetStateVariableWhenTheValueCannotBeWrittenOtherwiseAnswersFailure) {
  const int32_t codes[] = {-1998, -1999, -1, -989};
  const std::pair<const char*, const char*> queries[] = {{kPlaylistService, "LastChange"},
                                                         {kTimeService, "Seconds"}};
  for (const auto& query : queries) {
    for (int32_t code : codes) {
      SCOPED_TRACE(query.second);
      SCOPED_TRACE(code);
      ScopedFault fault(FP::kStateVariableSetValue, 1, code);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
    }
  }
}

TEST_F(OpenHomeFrameStarted, GetStateVariableWhenTheStoreHasNoMemoryAnswersNoMemory) {
  const std::pair<const char*, const char*> queries[] = {{kPlaylistService, "LastChange"},
                                                         {kPlaylistService, "TracksMax"},
                                                         {kInfoService, "TrackCount"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  // The store is still usable.
  EXPECT_EQ(Ask(kPlaylistService, "TracksMax"), "1000");
}

TEST_F(OpenHomeFrameStarted, GetStateVariableWhenTheStoreFailsOtherwiseAnswersFailure) {
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, -1999);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kPlaylistService, "LastChange", &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  const std::pair<const char*, const char*> queries[] = {{kPlaylistService, "LastChange"},
                                                         {kProductService, "ModelName"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    ScopedFault fault(FP::kLockLock, 1, -1);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  EXPECT_EQ(Ask(kPlaylistService, "TracksMax"), "1000");
}

TEST_F(OpenHomeFrameStarted, GetStateVariableWhenTheValueHasNoTextAnswersFailure) {
  const std::pair<const char*, const char*> queries[] = {{kPlaylistService, "LastChange"},
                                                         {kPlaylistService, "Id"},
                                                         {kSenderService, "Attributes"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    // Count the texts read in a good query; the service's own read of the answer is the last of them.
    DMR_CMN_FaultInjection::Reset();
    ASSERT_NE(Ask(query.first, query.second).rfind("<failed", 0), 0u);
    const unsigned long reads = DMR_CMN_FaultInjection::CallCount(FP::kStringGetCString);
    ASSERT_GE(reads, 1u);
    ScopedFault fault(FP::kStringGetCString, reads, 0);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

// ============================================= PerformAction =============================================

TEST_F(OpenHomeFrame, PerformActionArgumentRefusalsComeBeforeTheState) {
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
    ASSERT_EQ(request.SetActionName("Stop"), 0);
    marlo::ActionResponse response;
    // The strict application fails the test if Stop reaches it.
    EXPECT_EQ(service_.PerformAction(nullptr, &response, kHandle), -1998);
    EXPECT_EQ(service_.PerformAction(&request, nullptr, kHandle), -1998);
    EXPECT_EQ(service_.PerformAction(&request, &response, 0), -1998);
    EXPECT_EQ(service_.PerformAction(nullptr, nullptr, 0), -1998);
    EXPECT_TRUE(Untouched(response));
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, PerformActionWithHandleZeroAnswersInvalidArgumentBeforeTheStateIsLookedAt) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Play"), 0);
  marlo::ActionResponse response;
  // Created: the state alone would answer -1995.
  EXPECT_EQ(service_.PerformAction(&request, &response, 0), -1998);
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  // Initialized: the state alone would answer -1999.
  EXPECT_EQ(service_.PerformAction(&request, &response, 0), -1998);
  EXPECT_TRUE(Untouched(response));
}

TEST_F(OpenHomeFrame, PerformActionStateRefusals) {
  const std::pair<State, int32_t> rows[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    for (const char* name : {"Stop", "play", "ProtocolInfo", "NoSuchAction"}) {
      SCOPED_TRACE(name);
      marlo::ActionRequest request;
      ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
      ASSERT_EQ(request.SetActionName(name), 0);
      marlo::ActionResponse response;
      EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), row.second);
      EXPECT_TRUE(Untouched(response));
    }
    marlo::ActionRequest nameless;
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&nameless, &response, kHandle), row.second);
    EXPECT_TRUE(Untouched(response));
    BackToCreated();
  }
}

TEST_F(OpenHomeFrame, PerformActionWhenRegisteredButNotStartedOrAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  ASSERT_EQ(service_.Start(), 0);
  ASSERT_EQ(service_.Stop(), 0);
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  EXPECT_TRUE(Untouched(response));
}

TEST_F(OpenHomeFrameStarted, ActionWithoutNameIsAnsweredInvalidAction) {
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  ExpectError(response, 401);
}

TEST_F(OpenHomeFrameStarted, ProtocolInfoActionIsAnsweredInvalidAction) {
  EXPECT_EQ(Perform("ProtocolInfo"), 0);
  ExpectError(Reply(), 401);
}

TEST_F(OpenHomeFrameStarted, LowerCasePlayIsAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(AddTrack("http://host/1.flac", "<item>1</item>"));
  // The strict transfer service fails the test if anything reaches it.
  EXPECT_EQ(Perform("play"), 0);
  ExpectInvalidAction(Reply());
  EXPECT_EQ(Reply().GetErrorDescription(), Description(401));
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

TEST_F(OpenHomeFrameStarted, HandlerFailingOtherwiseBecomesServiceFailure) {
  EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(999));
  EXPECT_EQ(Perform("Stop"), -1999);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeFrameStarted, HandlerWithoutMemoryBecomesServiceNoMemory) {
  // SetRepeat answers what its event call answered.
  ScopedFault fault(FP::kEventingThreadNotify, 1, -989);
  EXPECT_EQ(Perform("SetRepeat", {{"Value", "true"}}), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeFrameStarted, HandlerAnsweringAnotherCodeBecomesServiceFailure) {
  const int32_t codes[] = {-1, -1999, SINK_UPNP_ERR_THREAD_START};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kEventingThreadNotify, 1, code);
    EXPECT_EQ(Perform("SetRepeat", {{"Value", "true"}}), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectUntouched(Reply());
  }
}

TEST_F(OpenHomeFrameStarted, HandlerAnsweringWithAUPnPErrorGivesResultZero) {
  EXPECT_EQ(Perform("SetRepeat"), 0);
  ExpectError(Reply(), 402);
}

TEST_F(OpenHomeFrameStarted, ActionHandleIsPassedThroughUnchanged) {
  const unsigned long handles[] = {1ul, 0xFFFFFFFFul, ~0ul};
  for (unsigned long handle : handles) {
    SCOPED_TRACE(handle);
    EXPECT_CALL(transfer_, Stop(handle, 0ul)).WillOnce(Return(0));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetServiceType(kPlaylistService), 0);
    ASSERT_EQ(request.SetActionName("Stop"), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&request, &response, handle), 0);
  }
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
