// The standard renderer service object as the host drives it: its lifecycle and the exact result of every
// call in each of its three states (Created, Initialized, Started), the registrations, the state variable
// query, the frame of the action dispatch, and its place in the host's interface tables. The actions'
// own behaviour is tested in SinkCTSSUPnPServiceActionTest.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/FormatDecoderSubsystem.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "SinkCTSSUPnPServiceTestPeer.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

#if !defined(__GXX_ABI_VERSION)
#error "the slot layout is checked for the Itanium C++ ABI only"
#endif


namespace {

using Peer = SINK_UPNP_SinkCTSSUPnPServiceTestPeer;
using Service = SINK_UPNP_SinkCTSSUPnPService;
using Store = SINK_UPNP_SinkCTSSStateVariableManager;
using FP = DMR_CMN_FaultPoint;
using ::testing::_;
using ::testing::Return;
using ::testing::StrictMock;

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManager[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kMpeg[] = "http-get:*:audio/mpeg:*";
constexpr char kFlac[] = "http-get:*:audio/flac:*";
constexpr char kJoined[] = "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*";
constexpr unsigned long kHandle = 42;

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

std::string Key(int number) { return "sinkctss.protocolInfo_" + std::to_string(number); }
std::string EntryText(int number) { return "http-get:*:audio/x-" + std::to_string(number) + ":*"; }

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

bool Untouched(const marlo::ActionResponse& response) {
  return response.GetErrorCode() == 0 && response.GetErrorCodeWriteCount() == 0 &&
         response.GetErrorDescription() == nullptr && response.GetArgumentCount() == 0;
}

class Frame : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", kMpeg), 0);
    ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", kFlac), 0);
    EXPECT_CALL(transfer_, AttachStateVariableManager(_)).WillRepeatedly(Return(0));
  }

  void TearDown() override { BackToCreated(); }

  // Stops, unregisters and finalizes whatever the test left, then frees what a failed Initialize left.
  void BackToCreated() {
    DMR_CMN_FaultInjection::Reset();
    if (Peer::FrameStarted(service_) == 1) {
      EXPECT_EQ(service_.Stop(), 0);
    }
    if (Peer::FrameAvtHandler(service_) != nullptr) {
      EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
    }
    if (Peer::FrameCmsHandler(service_) != nullptr) {
      EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
    }
    if (Peer::FrameInitialized(service_) == 1) {
      EXPECT_EQ(service_.Finalize(), 0);
    }
    Peer::FrameReleaseLeftovers(service_);
  }

  void InitializeOnly() { ASSERT_EQ(service_.Initialize(&properties_), 0); }

  void RegisterAll() {
    ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
    ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
    ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  }

  void InitializeAndRegister() {
    ASSERT_NO_FATAL_FAILURE(InitializeOnly());
    ASSERT_NO_FATAL_FAILURE(RegisterAll());
  }

  void StartAll() {
    ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
    ASSERT_EQ(service_.Start(), 0);
  }

  // Initialized means initialized with nothing registered; Started has everything registered.
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

  Store* store() { return Peer::FrameStore(service_); }

  // A variable's value as the store holds it.
  std::string StoreValue(SINK_UPNP_StateVariableName_t index) {
    DMR_CMN_String value;
    if (store() == nullptr || store()->GetStateVariable(index, &value) != 0 || value.GetCString() == nullptr) {
      return "<unreadable>";
    }
    return value.GetCString();
  }

  int32_t ChangeInStore(SINK_UPNP_StateVariableName_t index, const char* text) {
    DMR_CMN_String value;
    if (value.SetCString(text) != 0) return -12345;
    return store()->ChangeStateVariable(index, &value);
  }

  // The full LastChange document the store gives now.
  std::string StoreLastChange() {
    DMR_CMN_String value;
    if (store()->GetLastChange(&value) != 0 || value.GetCString() == nullptr) return "<unreadable>";
    return value.GetCString();
  }

  // The service's answer to a query, or "<failed N>".
  std::string Query(const char* serviceName, const char* variableName) {
    marlo::StateVariable out;
    const int32_t result = service_.GetStateVariable(serviceName, variableName, &out);
    if (result != 0) return "<failed " + std::to_string(result) + ">";
    if (out.GetName() == nullptr || std::strcmp(out.GetName(), variableName) != 0) return "<wrong name>";
    return out.GetValue();
  }

  marlo::Properties properties_;
  RecordingEventHandler avtHandler_;
  RecordingEventHandler cmsHandler_;
  StrictMock<MockTransferService> transfer_;
  Service service_;
};

// ======================================== Construction and layout ========================================

TEST_F(Frame, ConstructionLeavesEveryFieldZero) { EXPECT_TRUE(Peer::FrameAllFieldsZero(service_)); }

TEST_F(Frame, FieldsLieInDeclarationOrder) {
  const std::vector<const void*> addresses = Peer::FrameFieldAddresses(service_);
  for (std::size_t i = 1; i < addresses.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_TRUE(std::less<const void*>()(addresses[i - 1], addresses[i]));
  }
}

TEST(SinkCTSSServiceType, DerivesFromTheHostServiceBase) {
  EXPECT_TRUE((std::is_base_of_v<marlo::SinkContentTransferSubsystem, Service>));
  EXPECT_TRUE((std::is_base_of_v<marlo::StateVariableProvider, Service>));
  EXPECT_TRUE(std::has_virtual_destructor_v<Service>);
  EXPECT_FALSE(std::is_copy_constructible_v<Service>);
  EXPECT_FALSE(std::is_copy_assignable_v<Service>);
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

TEST(SinkCTSSServiceSlots, DispatchTimerAndLifecycleFillSlotsThreeToEight) {
  EXPECT_EQ(SlotOf(&Service::PerformAction), 3);
  EXPECT_EQ(SlotOf(&Service::WarnTimeOut), 4);
  EXPECT_EQ(SlotOf(&Service::Initialize), 5);
  EXPECT_EQ(SlotOf(&Service::Finalize), 6);
  EXPECT_EQ(SlotOf(&Service::Start), 7);
  EXPECT_EQ(SlotOf(&Service::Stop), 8);
}

TEST(SinkCTSSServiceSlots, EventListenerPairsFillSlotsNineToTwentyTwo) {
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

TEST(SinkCTSSServiceSlots, FormatDecoderPairAndStateVariableQueryCloseTheTable) {
  EXPECT_EQ(SlotOf(&Service::RegisterFormatDecoderSubsystem), 23);
  EXPECT_EQ(SlotOf(&Service::UnregisterFormatDecoderSubsystem), 24);
  EXPECT_EQ(SlotOf(&Service::GetStateVariable), 25);
  EXPECT_EQ(ThisAdjustmentOf(&Service::GetStateVariable), 0);
  // Nothing of the service's own comes after GetStateVariable.
  EXPECT_EQ(SlotOf(&ServiceProbe::ProbeAfterLastSlot), 26);
}

TEST(SinkCTSSServiceSlots, PublicRegistrationsOfTheApplicationAreNotVirtual) {
  EXPECT_EQ(SlotOf(&Service::RegisterTransferService), 0);
  EXPECT_EQ(SlotOf(&Service::RegisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::UnregisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::RegisterApplicationCMSEventListener), 0);
  EXPECT_EQ(SlotOf(&Service::UnregisterApplicationCMSEventListener), 0);
}

TEST(SinkCTSSServiceSlots, SecondTableHoldsTheStateVariableQueryAfterTheDestructors) {
  EXPECT_EQ(SlotOf(&marlo::StateVariableProvider::GetStateVariable), 3);
}

TEST_F(Frame, StateVariableQueryIsReachableThroughTheSecondTable) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::StateVariableProvider* provider = &service_;
  ASSERT_NE(static_cast<void*>(provider), static_cast<void*>(&service_));  // really the second table
  marlo::StateVariable out;
  EXPECT_EQ(provider->GetStateVariable(kConnectionManager, "SinkProtocolInfo", &out), 0);
  EXPECT_STREQ(out.GetName(), "SinkProtocolInfo");
  EXPECT_STREQ(out.GetValue(), kJoined);
  EXPECT_EQ(provider->GetStateVariable(kAVTransport, "TransportState", &out), -1996);
  EXPECT_EQ(provider->GetStateVariable(nullptr, "LastChange", &out), -1998);
}

TEST_F(Frame, StateVariableQueryIsReachableThroughThePrimaryTable) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::SinkContentTransferSubsystem* base = &service_;
  marlo::StateVariable out;
  EXPECT_EQ(base->GetStateVariable(kAVTransport, "LastChange", &out), 0);
  EXPECT_EQ(std::string(out.GetValue()), StoreLastChange());
}

// The host's whole call order, through the base class only.
TEST_F(Frame, HostCallOrderThroughTheBaseClassRunsToTheEnd) {
  marlo::SinkContentTransferSubsystem* host = &service_;
  ASSERT_EQ(host->Initialize(&properties_), 0);
  ASSERT_EQ(host->RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  ASSERT_EQ(host->RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(host->Start(), 0);
  EXPECT_CALL(transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(host->PerformAction(&request, &response, kHandle), 0);
  EXPECT_TRUE(Untouched(response));
  ASSERT_EQ(host->Stop(), 0);
  ASSERT_EQ(host->UnregisterAVTransportServiceEventListener(), 0);
  ASSERT_EQ(host->UnregisterConnectionManagerServiceEventListener(), 0);
  ASSERT_EQ(host->Finalize(), 0);
  EXPECT_EQ(Peer::FrameStore(service_), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
}

// ============================================== Initialize ==============================================

TEST_F(Frame, InitializeRefusalsInEveryState) {
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
    EXPECT_EQ(service_.Initialize(row.nullProperties ? nullptr : &properties_), row.expected);
    EXPECT_EQ(store(), before);
    EXPECT_EQ(Peer::FrameInitialized(service_), row.state == State::kCreated ? 0 : 1);
    EXPECT_EQ(Peer::FrameStarted(service_), row.state == State::kStarted ? 1 : 0);
    BackToCreated();
  }
}

TEST_F(Frame, InitializeWhenInitializedIsRefusedBeforeTheConfigurationIsRead) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  marlo::Properties empty;
  EXPECT_EQ(service_.Initialize(&empty), -1999);
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
}

TEST_F(Frame, InitializeCreatesTheStoreAndReadsTheProtocolList) {
  EXPECT_EQ(service_.Initialize(&properties_), 0);
  EXPECT_EQ(Peer::FrameInitialized(service_), 1);
  EXPECT_EQ(Peer::FrameStarted(service_), 0);
  EXPECT_NE(store(), nullptr);
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  char* joined = nullptr;
  ASSERT_EQ(Peer::FrameGetProtocolInfo(service_, &joined), 0);
  EXPECT_STREQ(joined, kJoined);
  std::free(joined);
}

TEST_F(Frame, InitializeWithoutKeyZeroAnswersBadValueEvenWhenKeyOneExists) {
  marlo::Properties configuration;
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_1", kMpeg), 0);
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_2", kFlac), 0);
  EXPECT_EQ(service_.Initialize(&configuration), -1996);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(service_.Finalize(), -1995);
}

TEST_F(Frame, InitializeWithoutAnyProtocolKeyAnswersBadValue) {
  marlo::Properties empty;
  EXPECT_EQ(service_.Initialize(&empty), -1996);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
}

TEST_F(Frame, InitializeWithMalformedEntryAnswersFailureAndKeepsNoChain) {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_1", "not a protocol info"), 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(Frame, InitializeWithoutMemoryForAnEntryAnswersNoMemory) {
  ScopedFault fault(FP::kProtocolInfoCreation, 2, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(Frame, InitializeWithoutMemoryToParseAnswersNoMemory) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1997);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(Frame, InitializeWithEntryRefusedByTheParserAnswersFailure) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1998);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(Frame, InitializeWithOtherParseFailureAnswersFailureAndKeepsEarlierEntries) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1999);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(Peer::FrameChainLength(service_), 1u);
  EXPECT_EQ(store(), nullptr);
}

TEST_F(Frame, InitializeAfterPartialChainStartsFromAnEmptyChain) {
  {
    ScopedFault fault(FP::kProtocolInfoSet, 2, -1999);
    ASSERT_EQ(service_.Initialize(&properties_), -1999);
  }
  ASSERT_EQ(Peer::FrameChainLength(service_), 1u);
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
}

TEST_F(Frame, InitializeWhenTheStoreCannotBeCreatedAnswersNoMemoryAndCleansTheChain) {
  // The store is the first block Initialize takes from the runtime's allocator.
  ScopedFault fault(FP::kMemoryAllocation, 1, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
}

TEST_F(Frame, InitializeWhenTheStoreHasNoMemoryForItsValuesAnswersNoMemoryAndDeletesIt) {
  ScopedFault fault(FP::kMemoryAllocation, 2, 0);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
}

TEST_F(Frame, InitializeWhenTheStoreHasNoMemoryForAValueAnswersNoMemoryAndDeletesIt) {
  // Every string copy fails: the store's first value cannot be set.
  ScopedFault fault(FP::kStringAllocation, 1, -989, true);
  EXPECT_EQ(service_.Initialize(&properties_), -1997);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
}

TEST_F(Frame, InitializeWhenTheStoreFailsOtherwiseAnswersFailureAndLeavesTheStore) {
  // Every string copy fails: the store's first value cannot be set.
  ScopedFault fault(FP::kStringAllocation, 1, -1, true);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_NE(store(), nullptr);
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  EXPECT_EQ(service_.Finalize(), -1995);
}

TEST_F(Frame, InitializeWhenTheStoreLockFailsAnswersFailureAndLeavesTheStore) {
  ScopedFault fault(FP::kLockInitialize, 1, -1);
  EXPECT_EQ(service_.Initialize(&properties_), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_NE(store(), nullptr);
}

TEST_F(Frame, InitializeAfterAFailedStoreSucceedsWithOneFreshList) {
  {
    ScopedFault fault(FP::kStringAllocation, 1, -1, true);
    ASSERT_EQ(service_.Initialize(&properties_), -1999);
  }
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
}

TEST_F(Frame, InitializeAgainAfterFinalizeWorks) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  BackToCreated();
  ASSERT_EQ(Peer::FrameInitialized(service_), 0);
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
}

// =============================================== Finalize ===============================================

TEST_F(Frame, FinalizeWhenCreatedAnswersNotInitialized) { EXPECT_EQ(service_.Finalize(), -1995); }

TEST_F(Frame, FinalizeWhenStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(Peer::FrameStarted(service_), 1);
  EXPECT_NE(store(), nullptr);
}

TEST_F(Frame, FinalizeWhileAVTransportHandlerRegisteredAnswersFailureAndChangesNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  Store* before = store();
  marlo::ProtocolInfo* chain = Peer::FrameChain(service_);
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(Peer::FrameInitialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(Peer::FrameChain(service_), chain);
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  EXPECT_EQ(Peer::FrameAvtHandler(service_), &avtHandler_);
  // Still whole: the handler can be taken back and the service finalized.
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
  EXPECT_EQ(service_.Finalize(), 0);
}

TEST_F(Frame, FinalizeWhileConnectionManagerHandlerRegisteredAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(Peer::FrameInitialized(service_), 1);
  EXPECT_EQ(Peer::FrameCmsHandler(service_), &cmsHandler_);
  EXPECT_NE(store(), nullptr);
}

TEST_F(Frame, FinalizeWhenTheStoreCannotFinalizeAnswersFailureAndStaysInitialized) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  Store* before = store();
  {
    ScopedFault fault(FP::kLockFinalize, 1, -1);
    EXPECT_EQ(service_.Finalize(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Peer::FrameInitialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(Peer::FrameChainLength(service_), 2u);
  EXPECT_EQ(service_.Finalize(), 0);
}

TEST_F(Frame, FinalizeDeletesTheStoreAndTheListAndKeepsTheTransferService) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  EXPECT_EQ(service_.Finalize(), 0);
  EXPECT_EQ(Peer::FrameInitialized(service_), 0);
  EXPECT_EQ(store(), nullptr);
  EXPECT_EQ(Peer::FrameChain(service_), nullptr);
  EXPECT_EQ(Peer::FrameTransfer(service_), &transfer_);
  EXPECT_EQ(service_.Finalize(), -1995);
}

// ================================================= Start =================================================

TEST_F(Frame, StartWhenCreatedAnswersNotInitialized) { EXPECT_EQ(service_.Start(), -1995); }

TEST_F(Frame, StartWhenStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::FrameStarted(service_), 1);
}

TEST_F(Frame, StartWithoutAnyOfItsThreeRegistrationsAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  struct Row {
    bool avt;
    bool cms;
    bool transfer;
  };
  // The transfer service cannot be taken back, so the rows with it come last.
  const Row rows[] = {
      {false, false, false}, {true, false, false}, {false, true, false}, {true, true, false},
      {false, false, true},  {true, false, true},  {false, true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string("avt ") + (row.avt ? "yes" : "no") + ", cms " + (row.cms ? "yes" : "no") +
                 ", transfer " + (row.transfer ? "yes" : "no"));
    if (row.avt) {
      ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
    }
    if (row.cms) {
      ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
    }
    if (row.transfer && Peer::FrameTransfer(service_) == nullptr) {
      ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
    }
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(Peer::FrameStarted(service_), 0);
    if (row.avt) {
      ASSERT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
    }
    if (row.cms) {
      ASSERT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
    }
  }
}

TEST_F(Frame, StartBeforeRegisterTransferServiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(service_.Start(), -1999);
  EXPECT_EQ(Peer::FrameStarted(service_), 0);
}

TEST_F(Frame, StartNeedsNoApplicationListener) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(Peer::FrameStarted(service_), 1);
}

TEST_F(Frame, StartResetsEveryVariableWithTheJoinedProtocolList) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  ASSERT_EQ(StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "");
  ASSERT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), kJoined);
  EXPECT_EQ(StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(StoreValue(SINK_UPNP_CMS_CURRENT_CONNECTION_IDS), "0");
  EXPECT_EQ(StoreValue(SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO), "");
}

// A failed Start leaves the service Initialized, and a later Start succeeds.
void ExpectStillStartable(Service& service) {
  EXPECT_EQ(Peer::FrameStarted(service), 0);
  EXPECT_EQ(service.Stop(), -1999);
  EXPECT_EQ(service.Start(), 0);
}

TEST_F(Frame, StartWhenAnEntryHasNoMemoryToPrintAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    ScopedFault fault(FP::kProtocolInfoGet, 2, -1997);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectStillStartable(service_);
}

TEST_F(Frame, StartWhenAnEntryFailsToPrintAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  const int32_t codes[] = {-1999, -1998};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kProtocolInfoGet, 1, code);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(Peer::FrameStarted(service_), 0);
  }
  ExpectStillStartable(service_);
}

TEST_F(Frame, StartWithoutMemoryToJoinTheListAnswersNoMemory) {
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

TEST_F(Frame, StartWithoutMemoryToCopyTheListAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    // The copy is the only string made: the store was not reached.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  EXPECT_EQ(StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  ExpectStillStartable(service_);
}

TEST_F(Frame, StartWhenTheListCannotBeCopiedOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -1);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  ExpectStillStartable(service_);
}

TEST_F(Frame, StartWhenTheStoreHasNoMemoryForInitialValuesAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    ScopedFault fault(FP::kStringAllocation, 2, -989);
    EXPECT_EQ(service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  ExpectStillStartable(service_);
}

TEST_F(Frame, StartWhenTheStoreFailsOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  {
    ScopedFault fault(FP::kStringAllocation, 2, -1);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectStillStartable(service_);
}

// ================================================= Stop =================================================

TEST_F(Frame, StopInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    EXPECT_EQ(service_.Stop(), row.second);
    EXPECT_EQ(Peer::FrameStarted(service_), 0);
    BackToCreated();
  }
}

TEST_F(Frame, StopTwiceAnswersFailureTheSecondTime) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(service_.Stop(), -1999);
}

TEST_F(Frame, StopTellsNobodyAndKeepsTheStore) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  // The strict transfer service fails the test on any call.
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  EXPECT_EQ(Peer::FrameAvtHandler(service_), &avtHandler_);
  EXPECT_EQ(Peer::FrameCmsHandler(service_), &cmsHandler_);
  EXPECT_EQ(Peer::FrameTransfer(service_), &transfer_);
  // Started again, the store is reset.
  EXPECT_EQ(service_.Start(), 0);
  EXPECT_EQ(StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
}

// ================================== AVTransport event handler registration ==================================

TEST_F(Frame, RegisterAVTransportHandlerRefusalsInEveryState) {
  struct Row {
    State state;
    bool nullHandler;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -1998},  {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kCreated, false, -1995}, {State::kStarted, false, -1999},
  };
  RecordingEventHandler other;
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    marlo::EventHandler* before = Peer::FrameAvtHandler(service_);
    EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(row.nullHandler ? nullptr : &other), row.expected);
    EXPECT_EQ(Peer::FrameAvtHandler(service_), before);
    BackToCreated();
  }
}

TEST_F(Frame, RegisterAVTransportHandlerWhenInitializedStoresIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  EXPECT_EQ(Peer::FrameAvtHandler(service_), &avtHandler_);
}

TEST_F(Frame, RegisterAVTransportHandlerTwiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  RecordingEventHandler other;
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&other), -1999);
  EXPECT_EQ(Peer::FrameAvtHandler(service_), &avtHandler_);
}

TEST_F(Frame, RegisteredAVTransportHandlerReceivesTheStoreEvents) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(store()->SendEvent(), 0);
  ASSERT_TRUE(avtHandler_.WaitForBatches(1));
  const std::vector<RecordingEventHandler::Batch> batches = avtHandler_.Batches();
  ASSERT_EQ(batches[0].size(), 1u);
  EXPECT_EQ(batches[0][0].first, "LastChange");
  EXPECT_NE(batches[0][0].second.find("PLAYING"), std::string::npos);
}

TEST_F(Frame, RegisterAVTransportHandlerWithoutMemoryAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  {
    ScopedFault fault(FP::kEventingThreadCreation, 1, 0);
    EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Peer::FrameAvtHandler(service_), nullptr);
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
}

TEST_F(Frame, RegisterAVTransportHandlerWhoseThreadWillNotStartAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  {
    ScopedFault fault(FP::kThreadStart, 1, SINK_UPNP_ERR_THREAD_START);
    EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Peer::FrameAvtHandler(service_), nullptr);
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
}

TEST_F(Frame, UnregisterAVTransportHandlerRefusalsInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    marlo::EventHandler* before = Peer::FrameAvtHandler(service_);
    EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), row.second);
    EXPECT_EQ(Peer::FrameAvtHandler(service_), before);
    BackToCreated();
  }
}

TEST_F(Frame, UnregisterAVTransportHandlerWhenInitializedClearsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
  EXPECT_EQ(Peer::FrameAvtHandler(service_), nullptr);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), -1999);
  // The store's thread went too: a new handler can be registered.
  EXPECT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
}

TEST_F(Frame, UnregisterAVTransportHandlerWhenTheStoreFailsAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  {
    ScopedFault fault(FP::kEventingThreadStop, 1, -1);
    EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Peer::FrameAvtHandler(service_), &avtHandler_);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
}

// =============================== ConnectionManager event handler registration ===============================

TEST_F(Frame, RegisterConnectionManagerHandlerRefusalsInEveryState) {
  struct Row {
    State state;
    bool nullHandler;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -1998},  {State::kInitialized, true, -1998}, {State::kStarted, true, -1998},
      {State::kCreated, false, -1995}, {State::kStarted, false, -1999},
  };
  RecordingEventHandler other;
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    marlo::EventHandler* before = Peer::FrameCmsHandler(service_);
    EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(row.nullHandler ? nullptr : &other),
              row.expected);
    EXPECT_EQ(Peer::FrameCmsHandler(service_), before);
    BackToCreated();
  }
}

TEST_F(Frame, RegisterConnectionManagerHandlerTwiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(Peer::FrameCmsHandler(service_), &cmsHandler_);
  RecordingEventHandler other;
  EXPECT_EQ(service_.RegisterConnectionManagerServiceEventListener(&other), -1999);
  EXPECT_EQ(Peer::FrameCmsHandler(service_), &cmsHandler_);
}

TEST_F(Frame, ConnectionManagerHandlerIsKeptButNotGivenToTheStore) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  // The store has no eventing thread: only the AVTransport handler would have made one.
  EXPECT_EQ(store()->SendEvent(), SINK_UPNP_ERR_NOT_REGISTERED);
  EXPECT_EQ(store()->UnregisterAVTransportServiceEventListener(), SINK_UPNP_ERR_NOT_REGISTERED);
  EXPECT_EQ(cmsHandler_.BatchCount(), 0u);
}

TEST_F(Frame, UnregisterConnectionManagerHandlerRefusalsInEveryState) {
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    marlo::EventHandler* before = Peer::FrameCmsHandler(service_);
    EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), row.second);
    EXPECT_EQ(Peer::FrameCmsHandler(service_), before);
    BackToCreated();
  }
}

TEST_F(Frame, UnregisterConnectionManagerHandlerWhenInitializedClearsIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(Peer::FrameCmsHandler(service_), nullptr);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), -1999);
}

// ================================= The OpenHome listeners and the decoder =================================

using RegisterHandler = int32_t (Service::*)(marlo::EventHandler*);
using Unregister = int32_t (Service::*)();

struct DoNothingPair {
  const char* name;
  RegisterHandler registerHandler;
  Unregister unregisterHandler;
};

const DoNothingPair kDoNothingPairs[] = {
    {"Playlist", &Service::RegisterPlaylistServiceEventListener, &Service::UnregisterPlaylistServiceEventListener},
    {"Product", &Service::RegisterProductServiceEventListener, &Service::UnregisterProductServiceEventListener},
    {"Time", &Service::RegisterTimeServiceEventListener, &Service::UnregisterTimeServiceEventListener},
    {"Info", &Service::RegisterInfoServiceEventListener, &Service::UnregisterInfoServiceEventListener},
    {"Sender", &Service::RegisterSenderServiceEventListener, &Service::UnregisterSenderServiceEventListener},
};

TEST_F(Frame, OpenHomeListenerPairsDoNothingAndAnswerZeroInEveryState) {
  RecordingEventHandler handler;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    for (const DoNothingPair& pair : kDoNothingPairs) {
      SCOPED_TRACE(pair.name);
      EXPECT_EQ((service_.*pair.registerHandler)(&handler), 0);
      EXPECT_EQ((service_.*pair.registerHandler)(&handler), 0);
      EXPECT_EQ((service_.*pair.registerHandler)(nullptr), 0);
      EXPECT_EQ((service_.*pair.unregisterHandler)(), 0);
      EXPECT_EQ((service_.*pair.unregisterHandler)(), 0);
    }
    // Nothing was kept: the standard handlers are untouched and Finalize is not held up.
    EXPECT_EQ(Peer::FrameAvtHandler(service_), state == State::kStarted ? &avtHandler_ : nullptr);
    EXPECT_EQ(Peer::FrameCmsHandler(service_), state == State::kStarted ? &cmsHandler_ : nullptr);
    EXPECT_EQ(Peer::FrameStarted(service_), state == State::kStarted ? 1 : 0);
    BackToCreated();
  }
  EXPECT_EQ(handler.BatchCount(), 0u);
}

TEST_F(Frame, SenderListenerPairAnswersZeroBeforeInitialize) {
  RecordingEventHandler handler;
  EXPECT_EQ(service_.RegisterSenderServiceEventListener(&handler), 0);
  EXPECT_EQ(service_.UnregisterSenderServiceEventListener(), 0);
  EXPECT_TRUE(Peer::FrameAllFieldsZero(service_));
}

TEST_F(Frame, RegisterFormatDecoderSubsystemAlwaysAnswersFailure) {
  marlo::FormatDecoderSubsystem decoder;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    EXPECT_EQ(service_.RegisterFormatDecoderSubsystem(&decoder), -1999);
    EXPECT_EQ(service_.RegisterFormatDecoderSubsystem(nullptr), -1999);
    BackToCreated();
  }
}

TEST_F(Frame, UnregisterFormatDecoderSubsystemAlwaysAnswersFailure) {
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    EXPECT_EQ(service_.UnregisterFormatDecoderSubsystem(), -1999);
    BackToCreated();
  }
}

// ======================================= Transfer service registration =======================================

TEST_F(Frame, RegisterTransferServiceRefusalsInEveryStateUseTheStoreCodes) {
  struct Row {
    State state;
    bool nullService;
    int32_t expected;
  };
  const Row rows[] = {
      {State::kCreated, true, -999},    {State::kInitialized, true, -999}, {State::kStarted, true, -999},
      {State::kCreated, false, -1000},  {State::kStarted, false, -1},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullService ? "null service" : "service");
    ASSERT_NO_FATAL_FAILURE(Enter(row.state));
    StrictMock<MockTransferService> other;  // told nothing
    SINK_CORE_TransferService* before = Peer::FrameTransfer(service_);
    EXPECT_EQ(service_.RegisterTransferService(row.nullService ? nullptr : &other), row.expected);
    EXPECT_EQ(Peer::FrameTransfer(service_), before);
    BackToCreated();
  }
}

TEST_F(Frame, RegisterTransferServiceAfterStartAnswersGeneric) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  StrictMock<MockTransferService> other;
  EXPECT_EQ(service_.RegisterTransferService(&other), -1);
  EXPECT_EQ(Peer::FrameTransfer(service_), &transfer_);
}

TEST_F(Frame, RegisterTransferServiceBeforeInitializeAnswersNotInitialized) {
  StrictMock<MockTransferService> other;
  EXPECT_EQ(service_.RegisterTransferService(&other), -1000);
  EXPECT_EQ(Peer::FrameTransfer(service_), nullptr);
}

TEST_F(Frame, RegisterTransferServiceHandsTheStoreToTheApplication) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  StrictMock<MockTransferService> application;
  EXPECT_CALL(application, AttachStateVariableManager(store())).WillOnce(Return(0));
  EXPECT_EQ(service_.RegisterTransferService(&application), 0);
  EXPECT_EQ(Peer::FrameTransfer(service_), &application);
  // Taken back before `application` goes.
  EXPECT_EQ(service_.RegisterTransferService(&transfer_), 0);
}

TEST_F(Frame, RegisterTransferServiceWhoseAttachFailsAnswersGenericAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  const int32_t answers[] = {-1, 1, 402, -989};
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    StrictMock<MockTransferService> application;
    EXPECT_CALL(application, AttachStateVariableManager(store())).WillOnce(Return(answer));
    EXPECT_EQ(service_.RegisterTransferService(&application), -1);
    EXPECT_EQ(Peer::FrameTransfer(service_), nullptr);
  }
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  EXPECT_EQ(service_.Start(), -1999);
}

TEST_F(Frame, SecondTransferServiceReplacesTheFirstWithoutTellingIt) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  StrictMock<MockTransferService> second;
  EXPECT_CALL(transfer_, AttachStateVariableManager(store())).WillOnce(Return(0));
  EXPECT_CALL(second, AttachStateVariableManager(store())).WillOnce(Return(0));
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(service_.RegisterTransferService(&second), 0);
  EXPECT_EQ(Peer::FrameTransfer(service_), &second);
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler_), 0);
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
  ASSERT_EQ(service_.Start(), 0);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_CALL(second, WarnTimeOut(3ul, &timeout, &text)).WillOnce(Return(0));
  EXPECT_EQ(service_.WarnTimeOut(3, &timeout, &text), 0);
  BackToCreated();
}

TEST_F(Frame, RegisterTransferServiceAfterFinalizeAnswersNotInitialized) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.Finalize(), 0);
  StrictMock<MockTransferService> other;
  EXPECT_EQ(service_.RegisterTransferService(&other), -1000);
}

// ========================================= Application listeners =========================================

TEST_F(Frame, ApplicationListenerForwardersAnswerGenericWithoutAStore) {
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(service_.UnregisterApplicationCMSEventListener(), -1);
}

TEST_F(Frame, ApplicationListenerForwardersAnswerGenericAfterFinalize) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.Finalize(), 0);
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(service_.UnregisterApplicationCMSEventListener(), -1);
}

TEST_F(Frame, ApplicationListenerForwardersAnswerTheStoreResultWhenInitializedOrStarted) {
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

TEST_F(Frame, ApplicationTransportListenerReachesTheStore) {
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

TEST_F(Frame, WarnTimeOutRefusalsInEveryState) {
  unsigned long timeout = 0;
  const char* text = nullptr;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
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

TEST_F(Frame, WarnTimeOutWhenInitializedAndRegisteredButNotStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(service_.WarnTimeOut(1, &timeout, &text), -1999);
}

TEST_F(Frame, WarnTimeOutForwardsItsArgumentsUnchanged) {
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

TEST_F(Frame, WarnTimeOutRefusedByTheApplicationAnswersFailure) {
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

TEST_F(Frame, GetStateVariableArgumentRefusalsInEveryState) {
  struct Row {
    const char* serviceName;
    const char* variableName;
    bool nullOut;
  };
  // Every one is -1998, whatever the state.
  const Row rows[] = {
      {nullptr, "LastChange", false},
      {nullptr, nullptr, true},
      {"urn:schemas-upnp-org:service:RenderingControl:1", "LastChange", false},
      {"urn:schemas-upnp-org:service:avtransport:1", "LastChange", false},
      {"urn:schemas-upnp-org:service:AVTransport:2", "LastChange", false},
      {"", "LastChange", false},
      {"urn:av-openhome-org:service:Playlist:1", "TransportState", false},
      {"urn:schemas-upnp-org:service:RenderingControl:1", nullptr, true},
      {kAVTransport, nullptr, false},
      {kAVTransport, "LastChange", true},
      {kConnectionManager, nullptr, false},
      {kConnectionManager, "SinkProtocolInfo", true},
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

TEST_F(Frame, GetStateVariableStateRefusals) {
  const std::pair<const char*, const char*> queries[] = {
      {kAVTransport, "LastChange"},
      {kAVTransport, "TransportState"},  // the state is looked at before the name
      {kConnectionManager, "SinkProtocolInfo"},
      {kConnectionManager, "Unknown"},
  };
  const std::pair<State, int32_t> states[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& state : states) {
    SCOPED_TRACE(StateName(state.first));
    ASSERT_NO_FATAL_FAILURE(Enter(state.first));
    for (const auto& query : queries) {
      SCOPED_TRACE(query.second);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), state.second);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    BackToCreated();
  }
}

TEST_F(Frame, GetStateVariableWhenRegisteredButNotStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kConnectionManager, "SinkProtocolInfo", &out), -1999);
}

TEST_F(Frame, GetStateVariableAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(service_.Stop(), 0);
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kAVTransport, "LastChange", &out), -1999);
}

TEST_F(Frame, LastChangeOfAVTransportIsTheStoresFullDocument) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_AV_TRANSPORT_URI, "http://host/track.mp3"), 0);
  const std::string document = Query(kAVTransport, "LastChange");
  EXPECT_EQ(document, StoreLastChange());
  EXPECT_NE(document.find("http://host/track.mp3"), std::string::npos);
  EXPECT_NE(document.find("<Event"), std::string::npos);
}

TEST_F(Frame, TransportStateOfAVTransportAnswersBadValue) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable(kAVTransport, "TransportState", &out), -1996);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TEST_F(Frame, UnknownServiceNameAnswersInvalidArgument) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::StateVariable out;
  EXPECT_EQ(service_.GetStateVariable("urn:schemas-upnp-org:service:RenderingControl:1", "LastChange", &out),
            -1998);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TEST_F(Frame, OnlyLastChangeIsServedForAVTransport) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* others[] = {"TransportState", "lastchange", "LastChange ", "", "SinkProtocolInfo", "A_ARG_TYPE_InstanceID"};
  for (const char* name : others) {
    SCOPED_TRACE(name);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kAVTransport, name, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(Frame, ConnectionManagerVariablesAreReadFromTheStore) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
  EXPECT_EQ(Query(kConnectionManager, "SourceProtocolInfo"), "");
  EXPECT_EQ(Query(kConnectionManager, "CurrentConnectionIDs"), "0");
  // Read at query time, not remembered.
  ASSERT_EQ(ChangeInStore(SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO, "http-get:*:video/mp4:*"), 0);
  ASSERT_EQ(ChangeInStore(SINK_UPNP_CMS_CURRENT_CONNECTION_IDS, "0,1"), 0);
  EXPECT_EQ(Query(kConnectionManager, "SourceProtocolInfo"), "http-get:*:video/mp4:*");
  EXPECT_EQ(Query(kConnectionManager, "CurrentConnectionIDs"), "0,1");
}

TEST_F(Frame, OtherConnectionManagerVariablesAnswerBadValue) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* others[] = {"LastChange", "sinkProtocolInfo", "TransportState", "A_ARG_TYPE_ConnectionStatus", ""};
  for (const char* name : others) {
    SCOPED_TRACE(name);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kConnectionManager, name, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(Frame, GetStateVariableWithoutMemoryToWriteTheValueAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const std::pair<const char*, const char*> queries[] = {{kAVTransport, "LastChange"},
                                                         {kConnectionManager, "SinkProtocolInfo"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    ScopedFault fault(FP::kStateVariableSetValue, 1, -1997);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(Frame, GetStateVariableWhenTheValueCannotBeWrittenOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const int32_t codes[] = {-1998, -1999, -1, -989};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kStateVariableSetValue, 1, code);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kConnectionManager, "CurrentConnectionIDs", &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
}

TEST_F(Frame, GetStateVariableWhenTheStoreHasNoMemoryAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const std::pair<const char*, const char*> queries[] = {{kAVTransport, "LastChange"},
                                                         {kConnectionManager, "SinkProtocolInfo"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  // The store is still usable.
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
}

TEST_F(Frame, GetStateVariableWhenTheStoreFailsOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, -1999);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kAVTransport, "LastChange", &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kConnectionManager, "SinkProtocolInfo", &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Query(kConnectionManager, "SinkProtocolInfo"), kJoined);
}

TEST_F(Frame, GetStateVariableWhenTheValueHasNoTextAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const std::pair<const char*, const char*> queries[] = {{kAVTransport, "LastChange"},
                                                         {kConnectionManager, "CurrentConnectionIDs"}};
  for (const auto& query : queries) {
    SCOPED_TRACE(query.second);
    // Count the texts read in a good query; the service's own read of the answer is the last of them.
    DMR_CMN_FaultInjection::Reset();
    ASSERT_NE(Query(query.first, query.second).rfind("<failed", 0), 0u);
    const unsigned long reads = DMR_CMN_FaultInjection::CallCount(FP::kStringGetCString);
    ASSERT_GE(reads, 1u);
    ScopedFault fault(FP::kStringGetCString, reads, 0);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(query.first, query.second, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(Frame, HundredKeysGiveAHundredEntrySinkProtocolList) {
  marlo::Properties configuration;
  for (int number = 0; number < 150; ++number) {
    ASSERT_EQ(configuration.SetProperty(Key(number).c_str(), EntryText(number).c_str()), 0);
  }
  ASSERT_EQ(service_.Initialize(&configuration), 0);
  ASSERT_NO_FATAL_FAILURE(RegisterAll());
  ASSERT_EQ(service_.Start(), 0);
  const std::vector<std::string> entries = Split(Query(kConnectionManager, "SinkProtocolInfo"));
  ASSERT_EQ(entries.size(), 100u);
  for (int number = 0; number < 100; ++number) EXPECT_EQ(entries[number], EntryText(number));
}

TEST_F(Frame, KeyTenIsReadWholeIntoTheSinkProtocolList) {
  marlo::Properties configuration;
  for (int number = 0; number <= 10; ++number) {
    ASSERT_EQ(configuration.SetProperty(Key(number).c_str(), EntryText(number).c_str()), 0);
  }
  ASSERT_EQ(service_.Initialize(&configuration), 0);
  ASSERT_NO_FATAL_FAILURE(RegisterAll());
  ASSERT_EQ(service_.Start(), 0);
  const std::vector<std::string> entries = Split(Query(kConnectionManager, "SinkProtocolInfo"));
  ASSERT_EQ(entries.size(), 11u);
  EXPECT_EQ(entries[10], "http-get:*:audio/x-10:*");
}

// ============================================= PerformAction =============================================

TEST_F(Frame, PerformActionArgumentRefusalsComeBeforeTheState) {
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName("Stop"), 0);
    ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(nullptr, &response, kHandle), -1998);
    EXPECT_EQ(service_.PerformAction(&request, nullptr, kHandle), -1998);
    EXPECT_EQ(service_.PerformAction(&request, &response, 0), -1998);
    EXPECT_EQ(service_.PerformAction(nullptr, nullptr, 0), -1998);
    EXPECT_TRUE(Untouched(response));
    BackToCreated();
  }
}

TEST_F(Frame, PerformActionWithHandleZeroAnswersInvalidArgumentBeforeTheStateIsLookedAt) {
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

TEST_F(Frame, PerformActionStateRefusals) {
  const std::pair<State, int32_t> rows[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(Enter(row.first));
    for (const char* name : {"Stop", "play", "NoSuchAction"}) {
      SCOPED_TRACE(name);
      marlo::ActionRequest request;
      ASSERT_EQ(request.SetActionName(name), 0);
      ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
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

TEST_F(Frame, PerformActionWhenRegisteredButNotStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeAndRegister());
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Stop"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  EXPECT_TRUE(Untouched(response));
}

void ExpectInvalidAction(const marlo::ActionResponse& response) {
  EXPECT_EQ(response.GetErrorCode(), 401);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 1u);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid Action");
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_F(Frame, ActionWithoutNameIsAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::ActionRequest request;
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  ExpectInvalidAction(response);
}

TEST_F(Frame, LowerCasePlayIsAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("play"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  ASSERT_EQ(request.AddArgument("Speed", "1"), 0);
  marlo::ActionResponse response;
  // The strict transfer service fails the test if Play reaches it.
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  ExpectInvalidAction(response);
}

TEST_F(Frame, UnknownActionNamesAreAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* names[] = {"PLAY", "getTransportInfo", "Play ", " Play", "", "SetNextAVTransportURI",
                         "GetVolume", "X_DLNA_GetBytePositionInfo", "SetPlayModeX", "Get"};
  for (const char* name : names) {
    SCOPED_TRACE(name);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName(name), 0);
    ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
    ExpectInvalidAction(response);
  }
}

// ---- Dispatch: each name reaches its own handler, whatever service it was addressed to ----

struct DispatchCase {
  const char* action;
  std::vector<std::pair<const char*, const char*>> arguments;
  // Sets up the one transfer-service call the action's handler makes, answering `answer`.
  void (*expect)(MockTransferService& application, int32_t answer);
  // A number the action accepts from the application, and its description.
  int32_t acceptedAnswer;
  const char* description;
};

const std::vector<std::pair<const char*, const char*>> kInstanceOnly = {{"InstanceID", "0"}};

const DispatchCase kDispatchCases[] = {
    {"SetAVTransportURI",
     {{"InstanceID", "0"}, {"CurrentURI", "http://host/a.mp3"}, {"CurrentURIMetaData", ""}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, AttachPlaylistManager(nullptr)).WillOnce(Return(0));
       EXPECT_CALL(a, SetAVTransportURI(kHandle, 0ul, StringIs("http://host/a.mp3"), StringIs("")))
           .WillOnce(Return(answer));
     },
     716, "Resource not found"},
    {"GetMediaInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetMediaInfo(kHandle, 0ul, _, _, _, _, _, _, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetTransportInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetTransportInfo(kHandle, 0ul, _, _, _)).WillOnce(Return(answer));
     },
     718, "Invalid InstanceID"},
    {"GetPositionInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetPositionInfo(kHandle, 0ul, _, _, _, _, _, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetDeviceCapabilities", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetDeviceCapabilities(kHandle, 0ul, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetTransportSettings", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetTransportSettings(kHandle, 0ul, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentTransportActions", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentTransportActions(kHandle, 0ul, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"Stop", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Stop(kHandle, 0ul)).WillOnce(Return(answer)); },
     705, "Transport is locked"},
    {"Play",
     {{"InstanceID", "0"}, {"Speed", "1"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Play(kHandle, 0ul, StringIs("1"))).WillOnce(Return(answer));
     },
     717, "Play speed not supported"},
    {"Pause", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Pause(kHandle, 0ul)).WillOnce(Return(answer)); },
     701, "Transition not available"},
    {"Seek",
     {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "00:01:00"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Seek(kHandle, 0ul, StringIs("REL_TIME"), StringIs("00:01:00"))).WillOnce(Return(answer));
     },
     710, "Seek mode not supported"},
    {"Next", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Next(kHandle, 0ul)).WillOnce(Return(answer)); },
     711, "Illegal seek target"},
    {"Previous", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Previous(kHandle, 0ul)).WillOnce(Return(answer));
     },
     711, "Illegal seek target"},
    {"GetProtocolInfo",
     {},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetProtocolInfo(kHandle, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentConnectionIDs",
     {},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentConnectionIDs(kHandle, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentConnectionInfo",
     {{"ConnectionID", "0"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentConnectionInfo(kHandle, StringIs("0"), _, _, _, _, _, _, _))
           .WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"SetPlayMode",
     {{"InstanceID", "0"}, {"NewPlayMode", "SHUFFLE"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, SetPlayMode(kHandle, 0ul, StringIs("SHUFFLE"))).WillOnce(Return(answer));
     },
     712, "Play mode not supported"},
};

class Dispatch : public Frame, public ::testing::WithParamInterface<DispatchCase> {
 protected:
  void Fill(marlo::ActionRequest* request, const char* serviceType) {
    ASSERT_EQ(request->SetServiceType(serviceType), 0);
    ASSERT_EQ(request->SetActionName(GetParam().action), 0);
    for (const auto& argument : GetParam().arguments) {
      ASSERT_EQ(request->AddArgument(argument.first, argument.second), 0);
    }
  }
};

TEST_P(Dispatch, NameReachesItsHandlerAndTheApplicationsAnswer) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, GetParam().acceptedAnswer);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, kAVTransport));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), GetParam().acceptedAnswer);
  EXPECT_STREQ(response.GetErrorDescription(), GetParam().description);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_P(Dispatch, ServiceTheActionWasAddressedToIsNotLookedAt) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, GetParam().acceptedAnswer);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, "urn:schemas-upnp-org:service:RenderingControl:1"));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), GetParam().acceptedAnswer);
}

TEST_P(Dispatch, UnknownAnswerOfTheApplicationBecomesServiceFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, 999);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, kAVTransport));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  EXPECT_TRUE(Untouched(response));
}

INSTANTIATE_TEST_SUITE_P(EveryAction, Dispatch, ::testing::ValuesIn(kDispatchCases),
                         [](const ::testing::TestParamInfo<DispatchCase>& paramInfo) {
                           return std::string(paramInfo.param.action);
                         });

TEST_F(Frame, ActionAnsweredWithSuccessLeavesTheReplyUntouched) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_CALL(transfer_, Pause(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Pause"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_TRUE(Untouched(response));
}

TEST_F(Frame, HandlerWithoutMemoryBecomesServiceNoMemory) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  // The strict transfer service fails the test if Play reaches it.
  ScopedFault fault(FP::kStringAllocation, 1, -989, true);
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Play"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  ASSERT_EQ(request.AddArgument("Speed", "1"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1997);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_TRUE(Untouched(response));
}

TEST_F(Frame, HandlerFailingOtherwiseBecomesServiceFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_CALL(transfer_, Play(kHandle, 0ul, StringIs("1"))).WillOnce(Return(705));
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Play"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
  ASSERT_EQ(request.AddArgument("Speed", "1"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  EXPECT_TRUE(Untouched(response));
}

TEST_F(Frame, HandlerAnsweringWithAUPnPErrorGivesResultZero) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Play"), 0);
  ASSERT_EQ(request.AddArgument("InstanceID", "1"), 0);
  ASSERT_EQ(request.AddArgument("Speed", "1"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), 718);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid InstanceID");
}

TEST_F(Frame, KnownNameWithMissingArgumentsIsNotAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::ActionRequest request;
  ASSERT_EQ(request.SetActionName("Seek"), 0);
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), 402);
  EXPECT_STREQ(response.GetErrorDescription(), "Invalid Args");
}

TEST_F(Frame, ActionHandleIsPassedThroughUnchanged) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const unsigned long handles[] = {1ul, 0xFFFFFFFFul, ~0ul};
  for (unsigned long handle : handles) {
    SCOPED_TRACE(handle);
    EXPECT_CALL(transfer_, Next(handle, 0ul)).WillOnce(Return(0));
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName("Next"), 0);
    ASSERT_EQ(request.AddArgument("InstanceID", "0"), 0);
    marlo::ActionResponse response;
    EXPECT_EQ(service_.PerformAction(&request, &response, handle), 0);
  }
}

}  // namespace
