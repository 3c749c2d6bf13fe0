// The frame both service objects are built on, tested once over both: the lifecycle and the exact result
// of every call in each of the three states (Created, Initialized, Started), the protocol-info
// configuration read at Initialize, the registrations that follow the same rules, the application
// listeners, WarnTimeOut, the store-backed state variable queries, the frame of the action dispatch, and
// the place of both objects in the host's interface tables.
//
// What the two objects differ in (which handlers Start needs, which names they answer, their dispatch
// tables, the OpenHome playlist and document root) is tested in SinkCTSSUPnPServiceTest.cpp and
// OpenHomeUPnPServiceTest.cpp; FrameTraits (ServiceFrameFixture.h) says what each test needs of each
// object.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "ActionReplies.h"
#include "FaultInjection.h"
#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "ServiceFrameFixture.h"
#include "StateVariableStoreTestPeer.h"
#include "SlotOf.h"
#include "Split.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/FormatDecoderSubsystem.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace service_frame_test {
namespace {

using FP = DMR_CMN_FaultPoint;
using ::testing::Return;
using ::testing::StrictMock;

std::string Key(int number) { return "sinkctss.protocolInfo_" + std::to_string(number); }
std::string EntryText(int number) { return "http-get:*:audio/x-" + std::to_string(number) + ":*"; }

// Frees a protocol list the service no longer points to (the destructors leave it to the host).
void ReleaseChain(marlo::ProtocolInfo* chain) {
  while (chain != nullptr) {
    marlo::ProtocolInfo* next = chain->next;
    delete chain;
    chain = next;
  }
}

// The state variable queries a service answers from its store: the LastChange document and the values.
template <typename Traits>
std::vector<Query> ServedQueries() {
  std::vector<Query> queries = {Traits::LastChange()};
  for (const Query& query : Traits::StoreQueries()) queries.push_back(query);
  return queries;
}

// One subject per suite; every suite runs over both services.
template <typename S>
class ServiceFrameObject : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameInitialize : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameDestruction : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameFinalize : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameStart : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameStop : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameEventedHandlers : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameAVTransportHandler : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameConnectionManagerHandler : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameFormatDecoder : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameTransferService : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameApplicationListeners : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameWarnTimeOut : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameStateVariableQuery : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFramePerformAction : public ServiceFrameFixture<S> {};
template <typename S>
class ServiceFrameSlots : public ::testing::Test {};

TYPED_TEST_SUITE(ServiceFrameObject, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameInitialize, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameDestruction, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameFinalize, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameStart, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameStop, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameEventedHandlers, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameAVTransportHandler, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameConnectionManagerHandler, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameFormatDecoder, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameTransferService, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameApplicationListeners, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameWarnTimeOut, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameStateVariableQuery, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFramePerformAction, ServiceTypes, ServiceNames);
TYPED_TEST_SUITE(ServiceFrameSlots, ServiceTypes, ServiceNames);

// ======================================== Construction and layout ========================================

TYPED_TEST(ServiceFrameObject, ConstructionLeavesEveryFieldZero) {
  EXPECT_TRUE(FrameTraits<TypeParam>::AllFieldsZero(this->service_));
}

TYPED_TEST(ServiceFrameObject, FieldsLieInDeclarationOrder) {
  const std::vector<const void*> addresses = FrameTraits<TypeParam>::FieldAddresses(this->service_);
  ASSERT_GE(addresses.size(), 7u);
  for (std::size_t i = 1; i < addresses.size(); ++i) {
    SCOPED_TRACE(i);
    EXPECT_TRUE(std::less<const void*>()(addresses[i - 1], addresses[i]));
  }
}

TYPED_TEST(ServiceFrameObject, DerivesFromTheHostServiceBase) {
  EXPECT_TRUE((std::is_base_of_v<marlo::SinkContentTransferSubsystem, TypeParam>));
  EXPECT_TRUE((std::is_base_of_v<marlo::StateVariableProvider, TypeParam>));
  EXPECT_TRUE(std::has_virtual_destructor_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_constructible_v<TypeParam>);
  EXPECT_FALSE(std::is_copy_assignable_v<TypeParam>);
  EXPECT_TRUE(std::is_default_constructible_v<TypeParam>);
}

// The host's whole call order, through the base class only.
TYPED_TEST(ServiceFrameObject, HostCallOrderThroughTheBaseClassRunsToTheEnd) {
  using Traits = FrameTraits<TypeParam>;
  marlo::SinkContentTransferSubsystem* host = &this->service_;
  const auto evented = Traits::EventedHandlers();
  ASSERT_EQ(host->Initialize(&this->properties_), 0);
  for (std::size_t i = 0; i < evented.size(); ++i) {
    ASSERT_EQ((host->*evented[i].registerHandler)(&this->handlers_[i]), 0) << evented[i].name;
  }
  ASSERT_EQ(host->RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  ASSERT_EQ(this->service_.RegisterTransferService(&this->transfer_), 0);
  ASSERT_EQ(host->Start(), 0);
  EXPECT_CALL(this->transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(TestFixture::Fill(Traits::StopAction(), &request));
  marlo::ActionResponse response;
  EXPECT_EQ(host->PerformAction(&request, &response, kHandle), 0);
  ExpectUntouched(response);
  ASSERT_EQ(host->Stop(), 0);
  for (const auto& one : evented) ASSERT_EQ((host->*one.unregisterHandler)(), 0) << one.name;
  ASSERT_EQ(host->UnregisterConnectionManagerServiceEventListener(), 0);
  ASSERT_EQ(host->Finalize(), 0);
  EXPECT_EQ(this->store(), nullptr);
  EXPECT_EQ(Traits::Chain(this->service_), nullptr);
}

// ============================================ Interface slots ============================================

// One virtual operation more than the service: lands in the first slot after its last one.
template <typename Service>
struct ServiceProbe : Service {
  virtual void ProbeAfterLastSlot() {}
};

TYPED_TEST(ServiceFrameSlots, DispatchTimerAndLifecycleFillSlotsThreeToEight) {
  EXPECT_EQ(SlotOf(&TypeParam::PerformAction), 3);
  EXPECT_EQ(SlotOf(&TypeParam::WarnTimeOut), 4);
  EXPECT_EQ(SlotOf(&TypeParam::Initialize), 5);
  EXPECT_EQ(SlotOf(&TypeParam::Finalize), 6);
  EXPECT_EQ(SlotOf(&TypeParam::Start), 7);
  // The OpenHome object overloads Stop with a private transport operation; the override is meant.
  EXPECT_EQ(SlotOf(static_cast<int32_t (TypeParam::*)()>(&TypeParam::Stop)), 8);
}

TYPED_TEST(ServiceFrameSlots, EventListenerPairsFillSlotsNineToTwentyTwo) {
  EXPECT_EQ(SlotOf(&TypeParam::RegisterAVTransportServiceEventListener), 9);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterAVTransportServiceEventListener), 10);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterConnectionManagerServiceEventListener), 11);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterConnectionManagerServiceEventListener), 12);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterPlaylistServiceEventListener), 13);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterPlaylistServiceEventListener), 14);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterProductServiceEventListener), 15);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterProductServiceEventListener), 16);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterTimeServiceEventListener), 17);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterTimeServiceEventListener), 18);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterInfoServiceEventListener), 19);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterInfoServiceEventListener), 20);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterSenderServiceEventListener), 21);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterSenderServiceEventListener), 22);
}

TYPED_TEST(ServiceFrameSlots, FormatDecoderPairAndStateVariableQueryCloseTheTable) {
  EXPECT_EQ(SlotOf(&TypeParam::RegisterFormatDecoderSubsystem), 23);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterFormatDecoderSubsystem), 24);
  EXPECT_EQ(SlotOf(&TypeParam::GetStateVariable), 25);
  EXPECT_EQ(ThisAdjustmentOf(&TypeParam::GetStateVariable), 0);
  // Nothing of the service's own comes after GetStateVariable.
  EXPECT_EQ(SlotOf(&ServiceProbe<TypeParam>::ProbeAfterLastSlot), 26);
}

TYPED_TEST(ServiceFrameSlots, PublicRegistrationsOfTheApplicationAreNotVirtual) {
  EXPECT_EQ(SlotOf(&TypeParam::RegisterTransferService), 0);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterApplicationAVTEventListener), 0);
  EXPECT_EQ(SlotOf(&TypeParam::RegisterApplicationCMSEventListener), 0);
  EXPECT_EQ(SlotOf(&TypeParam::UnregisterApplicationCMSEventListener), 0);
}

TYPED_TEST(ServiceFrameSlots, SecondTableHoldsTheStateVariableQueryAfterTheDestructors) {
  EXPECT_EQ(SlotOf(&marlo::StateVariableProvider::GetStateVariable), 3);
}

TYPED_TEST(ServiceFrameObject, StateVariableQueryIsReachableThroughTheSecondTable) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  marlo::StateVariableProvider* provider = &this->service_;
  ASSERT_NE(static_cast<void*>(provider), static_cast<void*>(&this->service_));  // really the second table
  const Query list = Traits::ProtocolList();
  marlo::StateVariable out;
  EXPECT_EQ(provider->GetStateVariable(list.serviceName, list.variableName, &out), 0);
  EXPECT_STREQ(out.GetName(), list.variableName);
  EXPECT_STREQ(out.GetValue(), kJoined);
  for (const Query& unknown : Traits::UnknownVariables()) {
    EXPECT_EQ(provider->GetStateVariable(unknown.serviceName, unknown.variableName, &out), -1996);
  }
  const Query foreign = Traits::ForeignService();
  EXPECT_EQ(provider->GetStateVariable(foreign.serviceName, foreign.variableName, &out), -1998);
  EXPECT_EQ(provider->GetStateVariable(nullptr, "LastChange", &out), -1998);
}

TYPED_TEST(ServiceFrameObject, StateVariableQueryIsReachableThroughThePrimaryTable) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  marlo::SinkContentTransferSubsystem* base = &this->service_;
  const Query lastChange = FrameTraits<TypeParam>::LastChange();
  marlo::StateVariable out;
  EXPECT_EQ(base->GetStateVariable(lastChange.serviceName, lastChange.variableName, &out), 0);
  EXPECT_EQ(std::string(out.GetValue()), this->StoreLastChange());
}

// ============================================== Initialize ==============================================

TYPED_TEST(ServiceFrameInitialize, RefusalsInEveryState) {
  using Traits = FrameTraits<TypeParam>;
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
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.state));
    auto* before = this->store();
    marlo::ProtocolInfo* chain = Traits::Chain(this->service_);
    EXPECT_EQ(this->service_.Initialize(row.nullProperties ? nullptr : &this->properties_), row.expected);
    EXPECT_EQ(this->store(), before);
    EXPECT_EQ(Traits::Chain(this->service_), chain);
    EXPECT_EQ(Traits::Initialized(this->service_), row.state == State::kCreated ? 0 : 1);
    EXPECT_EQ(Traits::Started(this->service_), row.state == State::kStarted ? 1 : 0);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameInitialize, WhenInitializedIsRefusedBeforeTheConfigurationIsRead) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  marlo::Properties empty;
  EXPECT_EQ(this->service_.Initialize(&empty), -1999);
  EXPECT_EQ(FrameTraits<TypeParam>::ChainLength(this->service_), 2u);
}

TYPED_TEST(ServiceFrameInitialize, CreatesTheStoreAndReadsTheProtocolListAndRegistersNothing) {
  using Traits = FrameTraits<TypeParam>;
  EXPECT_EQ(this->service_.Initialize(&this->properties_), 0);
  EXPECT_EQ(Traits::Initialized(this->service_), 1);
  EXPECT_EQ(Traits::Started(this->service_), 0);
  EXPECT_NE(this->store(), nullptr);
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  char* joined = nullptr;
  ASSERT_EQ(Traits::GetProtocolInfo(this->service_, &joined), 0);
  EXPECT_STREQ(joined, kJoined);
  std::free(joined);
  for (const auto& evented : Traits::EventedHandlers()) {
    EXPECT_EQ(evented.field(this->service_), nullptr) << evented.name;
  }
  EXPECT_EQ(Traits::CmsHandler(this->service_), nullptr);
  EXPECT_EQ(Traits::Transfer(this->service_), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, WithoutKeyZeroAnswersBadValueEvenWhenKeyOneExists) {
  using Traits = FrameTraits<TypeParam>;
  marlo::Properties configuration;
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_1", kMpeg), 0);
  ASSERT_EQ(configuration.SetProperty("sinkctss.protocolInfo_2", kFlac), 0);
  ASSERT_NO_FATAL_FAILURE(Traits::Configure(&configuration));
  EXPECT_EQ(this->service_.Initialize(&configuration), -1996);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_EQ(this->store(), nullptr);
  EXPECT_EQ(Traits::Chain(this->service_), nullptr);
  EXPECT_EQ(this->service_.Finalize(), -1995);
}

TYPED_TEST(ServiceFrameInitialize, WithoutAnyProtocolKeyAnswersBadValue) {
  marlo::Properties empty;
  EXPECT_EQ(this->service_.Initialize(&empty), -1996);
  EXPECT_EQ(FrameTraits<TypeParam>::Initialized(this->service_), 0);
  EXPECT_EQ(this->store(), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, WithMalformedEntryAnswersFailureAndKeepsNoChain) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_EQ(this->properties_.SetProperty("sinkctss.protocolInfo_1", "not a protocol info"), 0);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1999);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_EQ(Traits::Chain(this->service_), nullptr);
  EXPECT_EQ(this->store(), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, WithoutMemoryForAnEntryAnswersNoMemoryAndCleansTheChain) {
  using Traits = FrameTraits<TypeParam>;
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    ScopedFault fault(FP::kProtocolInfoCreation, nth, 0);
    EXPECT_EQ(this->service_.Initialize(&this->properties_), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(Traits::Initialized(this->service_), 0);
    EXPECT_EQ(Traits::Chain(this->service_), nullptr);
    EXPECT_EQ(this->store(), nullptr);
  }
}

TYPED_TEST(ServiceFrameInitialize, WithoutMemoryToParseAnswersNoMemory) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1997);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(FrameTraits<TypeParam>::Chain(this->service_), nullptr);
  EXPECT_EQ(this->store(), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, WithEntryRefusedByTheParserAnswersFailure) {
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1998);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(FrameTraits<TypeParam>::Chain(this->service_), nullptr);
  EXPECT_EQ(this->store(), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, WithOtherParseFailureAnswersFailureAndKeepsEarlierEntries) {
  using Traits = FrameTraits<TypeParam>;
  ScopedFault fault(FP::kProtocolInfoSet, 2, -1999);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1999);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_EQ(Traits::ChainLength(this->service_), 1u);
  EXPECT_EQ(this->store(), nullptr);
}

TYPED_TEST(ServiceFrameInitialize, AfterPartialChainStartsFromAnEmptyChain) {
  using Traits = FrameTraits<TypeParam>;
  {
    ScopedFault fault(FP::kProtocolInfoSet, 2, -1999);
    ASSERT_EQ(this->service_.Initialize(&this->properties_), -1999);
  }
  ASSERT_EQ(Traits::ChainLength(this->service_), 1u);
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  ASSERT_EQ(this->service_.Start(), 0);
  EXPECT_EQ(this->Ask(Traits::ProtocolList()), kJoined);
}

TYPED_TEST(ServiceFrameInitialize, WhenTheStoreCannotBeCreatedAnswersNoMemoryAndCleansTheChain) {
  using Traits = FrameTraits<TypeParam>;
  // The store is the first block Initialize takes from the runtime's allocator.
  ScopedFault fault(FP::kMemoryAllocation, 1, 0);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1997);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_EQ(this->store(), nullptr);
  EXPECT_EQ(Traits::Chain(this->service_), nullptr);
}

// The store's Initialize answers no memory: for its values array, for one of its values, for its lock.
TYPED_TEST(ServiceFrameInitialize, WhenTheStoreHasNoMemoryAnswersNoMemoryAndDeletesIt) {
  using Traits = FrameTraits<TypeParam>;
  struct Row {
    const char* what;
    FP point;
    unsigned long nth;
    int32_t code;
    bool persistent;
  };
  const Row rows[] = {
      {"values array", FP::kMemoryAllocation, 2, 0, false},
      // Every string copy fails: the store's first value cannot be set.
      {"a value", FP::kStringAllocation, 1, -989, true},
      {"lock", FP::kLockCreation, 1, 0, false},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    ScopedFault fault(row.point, row.nth, row.code, row.persistent);
    EXPECT_EQ(this->service_.Initialize(&this->properties_), -1997);
    EXPECT_GE(fault.Fired(), 1u);
    EXPECT_EQ(Traits::Initialized(this->service_), 0);
    EXPECT_EQ(this->store(), nullptr);
    EXPECT_EQ(Traits::Chain(this->service_), nullptr);
  }
}

TYPED_TEST(ServiceFrameInitialize, WhenTheStoreFailsOtherwiseAnswersFailureAndLeavesTheStore) {
  using Traits = FrameTraits<TypeParam>;
  // Every string copy fails: the store's first value cannot be set.
  ScopedFault fault(FP::kStringAllocation, 1, -1, true);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1999);
  EXPECT_GE(fault.Fired(), 1u);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_NE(this->store(), nullptr);
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  EXPECT_EQ(this->service_.Finalize(), -1995);
}

TYPED_TEST(ServiceFrameInitialize, WhenTheStoreLockFailsAnswersFailureAndLeavesTheStore) {
  ScopedFault fault(FP::kLockInitialize, 1, -1);
  EXPECT_EQ(this->service_.Initialize(&this->properties_), -1999);
  EXPECT_EQ(fault.Fired(), 1u);
  EXPECT_EQ(FrameTraits<TypeParam>::Initialized(this->service_), 0);
  EXPECT_NE(this->store(), nullptr);
  EXPECT_EQ(this->service_.Start(), -1995);
}

TYPED_TEST(ServiceFrameInitialize, AfterAFailedStoreSucceedsWithOneFreshList) {
  using Traits = FrameTraits<TypeParam>;
  {
    ScopedFault fault(FP::kStringAllocation, 1, -1, true);
    ASSERT_EQ(this->service_.Initialize(&this->properties_), -1999);
  }
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  ASSERT_EQ(this->service_.Start(), 0);
  EXPECT_EQ(this->Ask(Traits::ProtocolList()), kJoined);
}

TYPED_TEST(ServiceFrameInitialize, AgainAfterFinalizeWorks) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  this->BackToCreated();
  ASSERT_EQ(FrameTraits<TypeParam>::Initialized(this->service_), 0);
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_EQ(this->Ask(FrameTraits<TypeParam>::ProtocolList()), kJoined);
}

TYPED_TEST(ServiceFrameInitialize, HundredKeysOutOfHundredAndFiftyGiveAHundredEntryProtocolList) {
  using Traits = FrameTraits<TypeParam>;
  marlo::Properties configuration;
  for (int number = 0; number < 150; ++number) {
    ASSERT_EQ(configuration.SetProperty(Key(number).c_str(), EntryText(number).c_str()), 0);
  }
  ASSERT_NO_FATAL_FAILURE(Traits::Configure(&configuration));
  ASSERT_EQ(this->service_.Initialize(&configuration), 0);
  EXPECT_EQ(Traits::ChainLength(this->service_), 100u);
  ASSERT_NO_FATAL_FAILURE(this->RegisterEverything());
  ASSERT_EQ(this->service_.Start(), 0);
  const std::vector<std::string> entries = Split(this->Ask(Traits::ProtocolList()));
  ASSERT_EQ(entries.size(), 100u);
  for (int number = 0; number < 100; ++number) EXPECT_EQ(entries[number], EntryText(number));
}

TYPED_TEST(ServiceFrameInitialize, KeyTenIsReadWholeIntoTheProtocolList) {
  using Traits = FrameTraits<TypeParam>;
  marlo::Properties configuration;
  for (int number = 0; number <= 10; ++number) {
    ASSERT_EQ(configuration.SetProperty(Key(number).c_str(), EntryText(number).c_str()), 0);
  }
  ASSERT_NO_FATAL_FAILURE(Traits::Configure(&configuration));
  ASSERT_EQ(this->service_.Initialize(&configuration), 0);
  ASSERT_NO_FATAL_FAILURE(this->RegisterEverything());
  ASSERT_EQ(this->service_.Start(), 0);
  const std::vector<std::string> entries = Split(this->Ask(Traits::ProtocolList()));
  ASSERT_EQ(entries.size(), 11u);
  EXPECT_EQ(entries[10], "http-get:*:audio/x-10:*");
}

// ============================================== Destruction ==============================================

// Initialize fails after the store was created and its own Initialize failed otherwise than for memory:
// the store stays in the object, not initialized. Deleting the object then must neither crash nor leak
// (the sanitizer build's leak check sees the rest). The protocol list is the host's to settle in both
// objects; the standard object's destructor frees nothing at all (the host finalizes first, and after a
// failed Initialize only a new Initialize replaces the store), so there the test deletes the store
// itself: what is checked then is that a store whose Initialize failed is freed whole by its destructor.
// A failed Initialize leaves the store in the field, holding the values (and, when the lock would not
// initialize, the lock) that its attempt made. A store's destructor frees only its buffers and document
// root, so deleting the object leaves those two behind, and nothing else: the test takes them before the
// delete and frees them after it, so that the leak check sees anything more.
TYPED_TEST(ServiceFrameDestruction, ObjectDeletedAfterAFailedInitializeLeavesOnlyTheAttemptsValuesAndLock) {
  using Traits = FrameTraits<TypeParam>;
  struct Row {
    const char* what;
    FP point;
    int32_t code;
    bool persistent;
    bool lockLeft;
  };
  const Row rows[] = {
      {"a value cannot be set", FP::kStringAllocation, -1, true, false},
      {"the lock cannot be initialized", FP::kLockInitialize, -1, false, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    auto* service = new TypeParam;
    {
      ScopedFault fault(row.point, 1, row.code, row.persistent);
      ASSERT_EQ(service->Initialize(&this->properties_), -1999);
      EXPECT_GE(fault.Fired(), 1u);
    }
    ASSERT_NE(Traits::StoreOf(*service), nullptr);
    EXPECT_EQ(Traits::Initialized(*service), 0);
    SINK_UPNP_StateVariableStoreTestPeer::Leftovers left = SINK_UPNP_StateVariableStoreTestPeer::Take(*Traits::StoreOf(*service));
    EXPECT_NE(left.values, nullptr);
    EXPECT_EQ(left.lock != nullptr, row.lockLeft);
    EXPECT_EQ(left.lastChange, nullptr);
    EXPECT_TRUE(left.threads.empty());
    marlo::ProtocolInfo* chain = Traits::Chain(*service);
    typename Traits::Store* store = Traits::kDestructorDeletesTheStore ? nullptr : Traits::StoreOf(*service);
    delete service;
    ReleaseChain(chain);
    delete store;
    left.Release();
  }
}

// =============================================== Finalize ===============================================

TYPED_TEST(ServiceFrameFinalize, WhenCreatedAnswersNotInitialized) { EXPECT_EQ(this->service_.Finalize(), -1995); }

TYPED_TEST(ServiceFrameFinalize, WhenStartedAnswersFailureAndChangesNothing) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  auto* before = this->store();
  EXPECT_EQ(this->service_.Finalize(), -1999);
  EXPECT_EQ(Traits::Started(this->service_), 1);
  EXPECT_EQ(Traits::Initialized(this->service_), 1);
  EXPECT_EQ(this->store(), before);
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
}

TYPED_TEST(ServiceFrameFinalize, WhileConnectionManagerHandlerRegisteredAnswersFailureAndChangesNothing) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  auto* before = this->store();
  marlo::ProtocolInfo* chain = Traits::Chain(this->service_);
  EXPECT_EQ(this->service_.Finalize(), -1999);
  EXPECT_EQ(Traits::Initialized(this->service_), 1);
  EXPECT_EQ(this->store(), before);
  EXPECT_EQ(Traits::Chain(this->service_), chain);
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  EXPECT_EQ(Traits::CmsHandler(this->service_), &this->cmsHandler_);
  // Still whole: the handler can be taken back and the service finalized.
  EXPECT_EQ(this->service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(this->service_.Finalize(), 0);
}

TYPED_TEST(ServiceFrameFinalize, WhenTheStoreCannotFinalizeAnswersFailureAndStaysInitialized) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  auto* before = this->store();
  {
    ScopedFault fault(FP::kLockFinalize, 1, -1);
    EXPECT_EQ(this->service_.Finalize(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Traits::Initialized(this->service_), 1);
  EXPECT_EQ(this->store(), before);
  EXPECT_EQ(Traits::ChainLength(this->service_), 2u);
  EXPECT_EQ(this->service_.Finalize(), 0);
}

TYPED_TEST(ServiceFrameFinalize, DeletesTheStoreAndTheListAndKeepsTheTransferService) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_EQ(this->service_.RegisterTransferService(&this->transfer_), 0);
  EXPECT_EQ(this->service_.Finalize(), 0);
  EXPECT_EQ(Traits::Initialized(this->service_), 0);
  EXPECT_EQ(this->store(), nullptr);
  EXPECT_EQ(Traits::Chain(this->service_), nullptr);
  EXPECT_EQ(Traits::Transfer(this->service_), &this->transfer_);
  EXPECT_EQ(this->service_.Finalize(), -1995);
}

// ================================================= Start =================================================

TYPED_TEST(ServiceFrameStart, WhenCreatedAnswersNotInitialized) {
  EXPECT_EQ(this->service_.Start(), -1995);
  EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 0);
}

TYPED_TEST(ServiceFrameStart, WhenStartedAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_EQ(this->service_.Start(), -1999);
  EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 1);
}

TYPED_TEST(ServiceFrameStart, WithoutTheTransferServiceAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  ASSERT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  EXPECT_EQ(this->service_.Start(), -1999);
  EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 0);
  // The store was not reset.
  EXPECT_EQ(this->StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "");
}

TYPED_TEST(ServiceFrameStart, WithNothingOrOnlyTheTransferServiceRegisteredAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  EXPECT_EQ(this->service_.Start(), -1999);
  ASSERT_EQ(this->service_.RegisterTransferService(&this->transfer_), 0);
  EXPECT_EQ(this->service_.Start(), -1999);
  EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 0);
}

TYPED_TEST(ServiceFrameStart, NeedsNoApplicationListener) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  EXPECT_EQ(this->service_.Start(), 0);
  EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 1);
}

TYPED_TEST(ServiceFrameStart, ResetsEveryVariableWithTheJoinedProtocolList) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  ASSERT_EQ(this->StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "");
  ASSERT_EQ(this->StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  ASSERT_EQ(this->service_.Start(), 0);
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), kJoined);
  EXPECT_EQ(this->StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_CURRENT_CONNECTION_IDS), "0");
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO), "");
}

TYPED_TEST(ServiceFrameStart, WhenAnEntryHasNoMemoryToPrintAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  {
    ScopedFault fault(FP::kProtocolInfoGet, 2, -1997);
    EXPECT_EQ(this->service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WhenAnEntryFailsToPrintAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  const int32_t codes[] = {-1999, -1998, -1};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(FP::kProtocolInfoGet, 1, code);
    EXPECT_EQ(this->service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), 0);
  }
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WithoutMemoryToJoinTheListAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  for (unsigned long nth = 1; nth <= 2; ++nth) {
    SCOPED_TRACE(nth);
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kMemoryAllocation, nth, 0);
    EXPECT_EQ(this->service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    // The store was not reached.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 0u);
  }
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WithoutMemoryToCopyTheListAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(this->service_.Start(), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    // The copy is the only string made: the store was not reached.
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WhenTheListCannotBeCopiedOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  {
    DMR_CMN_FaultInjection::Reset();  // counts from here
    ScopedFault fault(FP::kStringAllocation, 1, -1);
    EXPECT_EQ(this->service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
  }
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WhenTheStoreHasNoMemoryForInitialValuesAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  {
    // The first string is the service's copy of the list; every one after it fails.
    ScopedFault fault(FP::kStringAllocation, 2, -989, true);
    EXPECT_EQ(this->service_.Start(), -1997);
    EXPECT_GE(fault.Fired(), 1u);
  }
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  this->ExpectStillStartable();
}

TYPED_TEST(ServiceFrameStart, WhenTheStoreFailsOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  {
    ScopedFault fault(FP::kStringAllocation, 2, -1, true);
    EXPECT_EQ(this->service_.Start(), -1999);
    EXPECT_GE(fault.Fired(), 1u);
  }
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(this->service_.Start(), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(this->StoreValue(SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  this->ExpectStillStartable();
}

// ================================================= Stop =================================================

TYPED_TEST(ServiceFrameStop, InEveryState) {
  using Traits = FrameTraits<TypeParam>;
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, 0}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.first));
    EXPECT_EQ(this->service_.Stop(), row.second);
    EXPECT_EQ(Traits::Started(this->service_), 0);
    EXPECT_EQ(Traits::Initialized(this->service_), row.first == State::kCreated ? 0 : 1);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameStop, TwiceAnswersFailureTheSecondTime) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_EQ(this->service_.Stop(), 0);
  EXPECT_EQ(this->service_.Stop(), -1999);
}

TYPED_TEST(ServiceFrameStop, TellsNobodyAndKeepsTheStoreAndTheRegistrations) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  ASSERT_EQ(this->ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  // The strict transfer service fails the test on any call.
  EXPECT_EQ(this->service_.Stop(), 0);
  EXPECT_EQ(this->StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  const auto evented = Traits::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    EXPECT_EQ(evented[i].field(this->service_), &this->handlers_[i]) << evented[i].name;
  }
  EXPECT_EQ(Traits::CmsHandler(this->service_), &this->cmsHandler_);
  EXPECT_EQ(Traits::Transfer(this->service_), &this->transfer_);
  // Started again, the store is reset.
  EXPECT_EQ(this->service_.Start(), 0);
  EXPECT_EQ(this->StoreValue(SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
}

// ===================================== The evented handlers' registration =====================================
// AVTransport for the standard object, the five OpenHome services for the OpenHome one: each handler is
// given to the store, which binds an eventing thread of the service to it.

TYPED_TEST(ServiceFrameEventedHandlers, RegisterRefusalsInEveryStateComeInOrder) {
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
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (const Row& row : rows) {
    SCOPED_TRACE(StateName(row.state));
    SCOPED_TRACE(row.nullHandler ? "null handler" : "handler");
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.state));
    for (const auto& one : evented) {
      SCOPED_TRACE(one.name);
      marlo::EventHandler* before = one.field(this->service_);
      EXPECT_EQ((this->service_.*one.registerHandler)(row.nullHandler ? nullptr : &other), row.expected);
      EXPECT_EQ(one.field(this->service_), before);
    }
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, RegisterWhenInitializedStoresItAndGivesItToTheStore) {
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    SCOPED_TRACE(evented[i].name);
    ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
    EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), 0);
    EXPECT_EQ(evented[i].field(this->service_), &this->handlers_[i]);
    // The others stay empty.
    for (std::size_t j = 0; j < evented.size(); ++j) {
      if (j != i) {
        EXPECT_EQ(evented[j].field(this->service_), nullptr) << evented[j].name;
      }
    }
    // The store's thread for this service is bound to the handler: a batch of the service reaches it.
    ASSERT_NO_FATAL_FAILURE(this->DeliverMarkers());
    EXPECT_EQ(this->handlers_[i].BatchCount(), 1u);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, RegisterTwiceAnswersFailureAndKeepsTheFirst) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  RecordingEventHandler other;
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    SCOPED_TRACE(evented[i].name);
    EXPECT_EQ((this->service_.*evented[i].registerHandler)(&other), -1999);
    EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), -1999);
    EXPECT_EQ(evented[i].field(this->service_), &this->handlers_[i]);
  }
}

// The store's eventing thread cannot be created, cannot be initialized for want of memory, or will not
// start: nothing is kept, and a later registration succeeds.
TYPED_TEST(ServiceFrameEventedHandlers, RegisterWhoseThreadFailsAnswersTheTranslatedResultAndKeepsNothing) {
  struct Row {
    const char* what;
    FP point;
    int32_t code;
    int32_t expected;
  };
  const Row rows[] = {
      {"no memory for the thread", FP::kEventingThreadCreation, 0, -1997},
      {"no memory to initialize it", FP::kEventingThreadInitialize, -989, -1997},
      {"it will not start", FP::kThreadStart, SINK_UPNP_ERR_THREAD_START, -1999},
  };
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (const Row& row : rows) {
    SCOPED_TRACE(row.what);
    ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
    for (std::size_t i = 0; i < evented.size(); ++i) {
      SCOPED_TRACE(evented[i].name);
      {
        ScopedFault fault(row.point, 1, row.code);
        EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), row.expected);
        EXPECT_EQ(fault.Fired(), 1u);
      }
      EXPECT_EQ(evented[i].field(this->service_), nullptr);
      EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), 0);
    }
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, RegisterRefusedByTheStoreAnswersFailureAndKeepsNothing) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  RecordingEventHandler direct;
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    SCOPED_TRACE(evented[i].name);
    // The application registered a thread for the service in the store behind the service's back.
    ASSERT_EQ(evented[i].storeRegister(*this->store(), &direct), 0);
    EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), -1999);
    EXPECT_EQ(evented[i].field(this->service_), nullptr);
    ASSERT_EQ(evented[i].storeUnregister(*this->store()), 0);
    EXPECT_EQ((this->service_.*evented[i].registerHandler)(&this->handlers_[i]), 0);
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, UnregisterRefusalsInEveryState) {
  // Created: not initialized; Initialized: none registered; Started: started (all registered).
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.first));
    for (const auto& one : evented) {
      SCOPED_TRACE(one.name);
      marlo::EventHandler* before = one.field(this->service_);
      EXPECT_EQ((this->service_.*one.unregisterHandler)(), row.second);
      EXPECT_EQ(one.field(this->service_), before);
    }
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, UnregisterWhenInitializedClearsItAndEndsTheStoreThread) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (const auto& one : evented) {
    SCOPED_TRACE(one.name);
    EXPECT_EQ((this->service_.*one.unregisterHandler)(), 0);
    EXPECT_EQ(one.field(this->service_), nullptr);
    EXPECT_EQ((this->service_.*one.unregisterHandler)(), -1999);
    // The store's thread went too.
    EXPECT_EQ(one.storeUnregister(*this->store()), SINK_UPNP_ERR_NOT_REGISTERED);
  }
  // A new handler can be registered for every service.
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
}

TYPED_TEST(ServiceFrameEventedHandlers, UnregisterWhenTheStoreFailsAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    SCOPED_TRACE(evented[i].name);
    {
      ScopedFault fault(FP::kEventingThreadStop, 1, -1);
      EXPECT_EQ((this->service_.*evented[i].unregisterHandler)(), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
    }
    EXPECT_EQ(evented[i].field(this->service_), &this->handlers_[i]);
    EXPECT_EQ((this->service_.*evented[i].unregisterHandler)(), 0);
    EXPECT_EQ(evented[i].field(this->service_), nullptr);
  }
}

TYPED_TEST(ServiceFrameEventedHandlers, UnregisterWhoseStoreThreadIsGoneAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  const auto evented = FrameTraits<TypeParam>::EventedHandlers();
  for (std::size_t i = 0; i < evented.size(); ++i) {
    SCOPED_TRACE(evented[i].name);
    // The application took the thread away behind the service's back: the store answers -963.
    ASSERT_EQ(evented[i].storeUnregister(*this->store()), 0);
    EXPECT_EQ((this->service_.*evented[i].unregisterHandler)(), -1999);
    EXPECT_EQ(evented[i].field(this->service_), &this->handlers_[i]);
    // Given a thread again, the store lets the service take its handler back.
    ASSERT_EQ(evented[i].storeRegister(*this->store(), &this->handlers_[i]), 0);
    EXPECT_EQ((this->service_.*evented[i].unregisterHandler)(), 0);
  }
}

// ================================== The AVTransport handler's refusals ==================================
// The same in both objects; what an accepted registration does differs (the OpenHome store has no
// AVTransport thread).

TYPED_TEST(ServiceFrameAVTransportHandler, RegisterRefusalsInEveryState) {
  using Traits = FrameTraits<TypeParam>;
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
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.state));
    marlo::EventHandler* before = Traits::AvtHandler(this->service_);
    EXPECT_EQ(this->service_.RegisterAVTransportServiceEventListener(row.nullHandler ? nullptr : &other),
              row.expected);
    EXPECT_EQ(Traits::AvtHandler(this->service_), before);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameAVTransportHandler, UnregisterRefusalsInEveryState) {
  using Traits = FrameTraits<TypeParam>;
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.first));
    marlo::EventHandler* before = Traits::AvtHandler(this->service_);
    EXPECT_EQ(this->service_.UnregisterAVTransportServiceEventListener(), row.second);
    EXPECT_EQ(Traits::AvtHandler(this->service_), before);
    this->BackToCreated();
  }
}

// =============================== The ConnectionManager handler: kept only ===============================

TYPED_TEST(ServiceFrameConnectionManagerHandler, RegisterRefusalsInEveryState) {
  using Traits = FrameTraits<TypeParam>;
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
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.state));
    marlo::EventHandler* before = Traits::CmsHandler(this->service_);
    EXPECT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(row.nullHandler ? nullptr : &other),
              row.expected);
    EXPECT_EQ(Traits::CmsHandler(this->service_), before);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameConnectionManagerHandler, RegisterTwiceAnswersFailure) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  EXPECT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  EXPECT_EQ(Traits::CmsHandler(this->service_), &this->cmsHandler_);
  RecordingEventHandler other;
  EXPECT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&other), -1999);
  EXPECT_EQ(Traits::CmsHandler(this->service_), &this->cmsHandler_);
}

TYPED_TEST(ServiceFrameConnectionManagerHandler, IsKeptButGivenToNoEventingThread) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  DMR_CMN_FaultInjection::Reset();  // counts from here
  EXPECT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  EXPECT_EQ(Traits::CmsHandler(this->service_), &this->cmsHandler_);
  // No eventing thread was made for it, and the store has none.
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation), 0u);
  for (const auto& evented : Traits::EventedHandlers()) {
    EXPECT_EQ(evented.storeUnregister(*this->store()), SINK_UPNP_ERR_NOT_REGISTERED) << evented.name;
  }
  // Once the store has its threads, what it sends reaches their handlers, and never this one.
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  ASSERT_NO_FATAL_FAILURE(this->DeliverMarkers());
  EXPECT_EQ(this->cmsHandler_.BatchCount(), 0u);
}

TYPED_TEST(ServiceFrameConnectionManagerHandler, UnregisterRefusalsInEveryState) {
  using Traits = FrameTraits<TypeParam>;
  const std::pair<State, int32_t> rows[] = {
      {State::kCreated, -1995}, {State::kInitialized, -1999}, {State::kStarted, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.first));
    marlo::EventHandler* before = Traits::CmsHandler(this->service_);
    EXPECT_EQ(this->service_.UnregisterConnectionManagerServiceEventListener(), row.second);
    EXPECT_EQ(Traits::CmsHandler(this->service_), before);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameConnectionManagerHandler, UnregisterWhenStartedAnswersFailureAndKeepsIt) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_EQ(this->service_.UnregisterConnectionManagerServiceEventListener(), -1999);
  EXPECT_EQ(FrameTraits<TypeParam>::CmsHandler(this->service_), &this->cmsHandler_);
}

TYPED_TEST(ServiceFrameConnectionManagerHandler, UnregisterWhenInitializedClearsIt) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  EXPECT_EQ(this->service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(Traits::CmsHandler(this->service_), nullptr);
  EXPECT_EQ(this->service_.UnregisterConnectionManagerServiceEventListener(), -1999);
}

// ========================================== The format decoder ==========================================

TYPED_TEST(ServiceFrameFormatDecoder, PairAlwaysAnswersFailure) {
  marlo::FormatDecoderSubsystem decoder;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(this->Enter(state));
    EXPECT_EQ(this->service_.RegisterFormatDecoderSubsystem(&decoder), -1999);
    EXPECT_EQ(this->service_.RegisterFormatDecoderSubsystem(nullptr), -1999);
    EXPECT_EQ(this->service_.UnregisterFormatDecoderSubsystem(), -1999);
    EXPECT_EQ(this->service_.UnregisterFormatDecoderSubsystem(), -1999);
    EXPECT_EQ(FrameTraits<TypeParam>::Started(this->service_), state == State::kStarted ? 1 : 0);
    this->BackToCreated();
  }
}

// ======================================= Transfer service registration =======================================

TYPED_TEST(ServiceFrameTransferService, RefusalsInEveryStateUseTheStoreCodes) {
  using Traits = FrameTraits<TypeParam>;
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
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.state));
    StrictMock<MockTransferService> other;  // told nothing
    SINK_CORE_TransferService* before = Traits::Transfer(this->service_);
    EXPECT_EQ(this->service_.RegisterTransferService(row.nullService ? nullptr : &other), row.expected);
    EXPECT_EQ(Traits::Transfer(this->service_), before);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameTransferService, AfterStartAnswersGenericAndKeepsTheFirst) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  StrictMock<MockTransferService> other;
  EXPECT_EQ(this->service_.RegisterTransferService(&other), -1);
  EXPECT_EQ(FrameTraits<TypeParam>::Transfer(this->service_), &this->transfer_);
}

TYPED_TEST(ServiceFrameTransferService, BeforeInitializeOrAfterFinalizeAnswersNotInitialized) {
  StrictMock<MockTransferService> other;
  EXPECT_EQ(this->service_.RegisterTransferService(&other), -1000);
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_EQ(this->service_.Finalize(), 0);
  EXPECT_EQ(this->service_.RegisterTransferService(&other), -1000);
  EXPECT_EQ(FrameTraits<TypeParam>::Transfer(this->service_), nullptr);
}

TYPED_TEST(ServiceFrameTransferService, HandsTheStoreToTheApplication) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  StrictMock<MockTransferService> application;
  Traits::ExpectAttach(application, this->service_, 0);
  EXPECT_EQ(this->service_.RegisterTransferService(&application), 0);
  EXPECT_EQ(Traits::Transfer(this->service_), &application);
  // Taken back before `application` goes.
  EXPECT_EQ(this->service_.RegisterTransferService(&this->transfer_), 0);
}

TYPED_TEST(ServiceFrameTransferService, WhoseAttachFailsAnswersGenericAndKeepsNothing) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  const int32_t answers[] = {-1, 1, 402, -989};
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    // Strict: nothing more may follow the refused attach.
    StrictMock<MockTransferService> application;
    Traits::ExpectAttach(application, this->service_, answer);
    EXPECT_EQ(this->service_.RegisterTransferService(&application), -1);
    EXPECT_EQ(Traits::Transfer(this->service_), nullptr);
  }
  // With every handler there, Start still refuses for want of a transfer service.
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  ASSERT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  EXPECT_EQ(this->service_.Start(), -1999);
  EXPECT_EQ(Traits::Started(this->service_), 0);
}

TYPED_TEST(ServiceFrameTransferService, SecondReplacesTheFirstWithoutTellingIt) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  StrictMock<MockTransferService> first;
  StrictMock<MockTransferService> second;
  Traits::ExpectAttach(first, this->service_, 0);
  Traits::ExpectAttach(second, this->service_, 0);
  ASSERT_EQ(this->service_.RegisterTransferService(&first), 0);
  ASSERT_EQ(this->service_.RegisterTransferService(&second), 0);
  EXPECT_EQ(Traits::Transfer(this->service_), &second);
  ASSERT_NO_FATAL_FAILURE(this->RegisterEventedHandlers());
  ASSERT_EQ(this->service_.RegisterConnectionManagerServiceEventListener(&this->cmsHandler_), 0);
  ASSERT_EQ(this->service_.Start(), 0);
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_CALL(second, WarnTimeOut(3ul, &timeout, &text)).WillOnce(Return(0));
  EXPECT_EQ(this->service_.WarnTimeOut(3, &timeout, &text), 0);
  this->BackToCreated();
}

// ========================================= Application listeners =========================================

TYPED_TEST(ServiceFrameApplicationListeners, ForwardersAnswerGenericWithoutAStore) {
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(this->service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(this->service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(this->service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(this->service_.UnregisterApplicationCMSEventListener(), -1);
}

TYPED_TEST(ServiceFrameApplicationListeners, ForwardersAnswerGenericAfterFinalize) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  ASSERT_EQ(this->service_.Finalize(), 0);
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  EXPECT_EQ(this->service_.RegisterApplicationAVTEventListener(&avt), -1);
  EXPECT_EQ(this->service_.UnregisterApplicationAVTEventListener(), -1);
  EXPECT_EQ(this->service_.RegisterApplicationCMSEventListener(&cms), -1);
  EXPECT_EQ(this->service_.UnregisterApplicationCMSEventListener(), -1);
}

TYPED_TEST(ServiceFrameApplicationListeners, ForwardersAnswerTheStoreResultWhenInitializedOrStarted) {
  RecordingAVTEventListener avt;
  RecordingCMSEventListener cms;
  for (State state : {State::kInitialized, State::kStarted}) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(this->Enter(state));
    EXPECT_EQ(this->service_.RegisterApplicationAVTEventListener(&avt), 0);
    EXPECT_EQ(this->service_.RegisterApplicationAVTEventListener(nullptr), -1);
    EXPECT_EQ(this->service_.UnregisterApplicationAVTEventListener(), 0);
    EXPECT_EQ(this->service_.UnregisterApplicationAVTEventListener(), 0);
    EXPECT_EQ(this->service_.RegisterApplicationCMSEventListener(&cms), 0);
    EXPECT_EQ(this->service_.RegisterApplicationCMSEventListener(nullptr), -1);
    EXPECT_EQ(this->service_.UnregisterApplicationCMSEventListener(), 0);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameApplicationListeners, TransportListenerReachesTheStore) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  RecordingAVTEventListener listener;
  ASSERT_EQ(this->service_.RegisterApplicationAVTEventListener(&listener), 0);
  ASSERT_EQ(this->ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(this->store()->SendEvent(), 0);
  const std::vector<ListenerCall> calls = listener.Calls();
  ASSERT_FALSE(calls.empty());
  EXPECT_EQ(calls[0], (ListenerCall{"NotifyTransportState", "PLAYING", ""}));

  ASSERT_EQ(this->service_.UnregisterApplicationAVTEventListener(), 0);
  ASSERT_EQ(this->ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "STOPPED"), 0);
  ASSERT_EQ(this->store()->SendEvent(), 0);
  EXPECT_EQ(listener.Calls().size(), calls.size());
}

// ============================================== WarnTimeOut ==============================================

TYPED_TEST(ServiceFrameWarnTimeOut, RefusalsInEveryState) {
  unsigned long timeout = 0;
  const char* text = nullptr;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(this->Enter(state));
    // The strict application fails the test if any of these reaches it.
    EXPECT_EQ(this->service_.WarnTimeOut(1, nullptr, &text), -1998);
    EXPECT_EQ(this->service_.WarnTimeOut(1, &timeout, nullptr), -1998);
    EXPECT_EQ(this->service_.WarnTimeOut(1, nullptr, nullptr), -1998);
    if (state == State::kCreated) {
      EXPECT_EQ(this->service_.WarnTimeOut(1, &timeout, &text), -1995);
    }
    if (state == State::kInitialized) {
      EXPECT_EQ(this->service_.WarnTimeOut(1, &timeout, &text), -1999);
    }
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameWarnTimeOut, WhenRegisteredButNotStartedOrAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  unsigned long timeout = 0;
  const char* text = nullptr;
  EXPECT_EQ(this->service_.WarnTimeOut(1, &timeout, &text), -1999);
  ASSERT_EQ(this->service_.Start(), 0);
  ASSERT_EQ(this->service_.Stop(), 0);
  EXPECT_EQ(this->service_.WarnTimeOut(1, &timeout, &text), -1999);
}

TYPED_TEST(ServiceFrameWarnTimeOut, ForwardsItsArgumentsUnchanged) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  unsigned long timeout = 5;
  const char* text = "before";
  EXPECT_CALL(this->transfer_, WarnTimeOut(77ul, &timeout, &text))
      .WillOnce([](unsigned long, unsigned long* newTimeout, const char** newText) {
        *newTimeout = 30;
        *newText = "renewed";
        return 0;
      });
  EXPECT_EQ(this->service_.WarnTimeOut(77, &timeout, &text), 0);
  EXPECT_EQ(timeout, 30ul);
  EXPECT_STREQ(text, "renewed");
}

TYPED_TEST(ServiceFrameWarnTimeOut, RefusedByTheApplicationAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  unsigned long timeout = 0;
  const char* text = nullptr;
  const int32_t answers[] = {1, -1, 402, -989};
  for (int32_t answer : answers) {
    SCOPED_TRACE(answer);
    EXPECT_CALL(this->transfer_, WarnTimeOut(2ul, &timeout, &text)).WillOnce(Return(answer));
    EXPECT_EQ(this->service_.WarnTimeOut(2, &timeout, &text), -1999);
  }
}

// =========================================== GetStateVariable ===========================================
// The queries each service answers from its store; which names it answers is tested with each service.

TYPED_TEST(ServiceFrameStateVariableQuery, StateRefusalsComeBeforeTheNames) {
  using Traits = FrameTraits<TypeParam>;
  std::vector<Query> queries = ServedQueries<Traits>();
  for (const Query& unknown : Traits::UnknownVariables()) queries.push_back(unknown);
  const std::pair<State, int32_t> states[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& state : states) {
    SCOPED_TRACE(StateName(state.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(state.first));
    for (const Query& query : queries) {
      SCOPED_TRACE(query.serviceName);
      SCOPED_TRACE(query.variableName);
      marlo::StateVariable out;
      EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), state.second);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFrameStateVariableQuery, WhenRegisteredButNotStartedOrAfterStopAnswersFailure) {
  using Traits = FrameTraits<TypeParam>;
  std::vector<Query> queries = ServedQueries<Traits>();
  for (const Query& unknown : Traits::UnknownVariables()) queries.push_back(unknown);
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  for (const char* when : {"before Start", "after Stop"}) {
    SCOPED_TRACE(when);
    for (const Query& query : queries) {
      SCOPED_TRACE(query.variableName);
      marlo::StateVariable out;
      EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1999);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    ASSERT_EQ(this->service_.Start(), 0);
    ASSERT_EQ(this->service_.Stop(), 0);
  }
}

TYPED_TEST(ServiceFrameStateVariableQuery, LastChangeIsTheStoresFullDocument) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  ASSERT_EQ(this->ChangeInStore(SINK_UPNP_AVT_AV_TRANSPORT_URI, "http://host/track.mp3"), 0);
  ASSERT_EQ(this->ChangeInStore(SINK_UPNP_PRODUCT_PRODUCT_ROOM, "Kitchen"), 0);
  const std::string document = this->Ask(FrameTraits<TypeParam>::LastChange());
  EXPECT_EQ(document, this->StoreLastChange());
  EXPECT_NE(document.find("http://host/track.mp3"), std::string::npos);
  EXPECT_NE(document.find("Kitchen"), std::string::npos);
  EXPECT_NE(document.find("<Event"), std::string::npos);
}

TYPED_TEST(ServiceFrameStateVariableQuery, UnknownNameOfAServedServiceAnswersBadValue) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  for (const Query& query : FrameTraits<TypeParam>::UnknownVariables()) {
    SCOPED_TRACE(query.variableName);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TYPED_TEST(ServiceFrameStateVariableQuery, ServiceTypeNotServedAnswersInvalidArgument) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const Query query = FrameTraits<TypeParam>::ForeignService();
  marlo::StateVariable out;
  EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1998);
  EXPECT_EQ(out.GetValue(), nullptr);
}

TYPED_TEST(ServiceFrameStateVariableQuery, WithoutMemoryToWriteTheValueAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  for (const Query& query : ServedQueries<FrameTraits<TypeParam>>()) {
    SCOPED_TRACE(query.variableName);
    ScopedFault fault(FP::kStateVariableSetValue, 1, -1997);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TYPED_TEST(ServiceFrameStateVariableQuery, WhenTheValueCannotBeWrittenOtherwiseAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const int32_t codes[] = {-1998, -1999, -1, -989};
  for (const Query& query : ServedQueries<FrameTraits<TypeParam>>()) {
    for (int32_t code : codes) {
      SCOPED_TRACE(query.variableName);
      SCOPED_TRACE(code);
      ScopedFault fault(FP::kStateVariableSetValue, 1, code);
      marlo::StateVariable out;
      EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
    }
  }
}

TYPED_TEST(ServiceFrameStateVariableQuery, WhenTheStoreHasNoMemoryAnswersNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  for (const Query& query : ServedQueries<FrameTraits<TypeParam>>()) {
    SCOPED_TRACE(query.variableName);
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1997);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  // The store is still usable.
  EXPECT_EQ(this->Ask(FrameTraits<TypeParam>::ProtocolList()), kJoined);
}

TYPED_TEST(ServiceFrameStateVariableQuery, WhenTheStoreFailsOtherwiseAnswersFailure) {
  using Traits = FrameTraits<TypeParam>;
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  {
    const Query lastChange = Traits::LastChange();
    ScopedFault fault(FP::kLastChangeSetType, 1, -1999);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(lastChange.serviceName, lastChange.variableName, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  for (const Query& query : ServedQueries<Traits>()) {
    SCOPED_TRACE(query.variableName);
    ScopedFault fault(FP::kLockLock, 1, -1);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
  EXPECT_EQ(this->Ask(Traits::ProtocolList()), kJoined);
}

TYPED_TEST(ServiceFrameStateVariableQuery, WhenTheValueHasNoTextAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  for (const Query& query : ServedQueries<FrameTraits<TypeParam>>()) {
    SCOPED_TRACE(query.variableName);
    // Count the texts read in a good query; the service's own read of the answer is the last of them.
    DMR_CMN_FaultInjection::Reset();
    ASSERT_NE(this->Ask(query).rfind("<failed", 0), 0u);
    const unsigned long reads = DMR_CMN_FaultInjection::CallCount(FP::kStringGetCString);
    ASSERT_GE(reads, 1u);
    ScopedFault fault(FP::kStringGetCString, reads, 0);
    marlo::StateVariable out;
    EXPECT_EQ(this->service_.GetStateVariable(query.serviceName, query.variableName, &out), -1999);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

// ============================================= PerformAction =============================================

TYPED_TEST(ServiceFramePerformAction, ArgumentRefusalsComeBeforeTheState) {
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(this->Enter(state));
    marlo::ActionRequest request;
    ASSERT_NO_FATAL_FAILURE(TestFixture::Fill(FrameTraits<TypeParam>::StopAction(), &request));
    marlo::ActionResponse response;
    // The strict application fails the test if Stop reaches it.
    EXPECT_EQ(this->service_.PerformAction(nullptr, &response, kHandle), -1998);
    EXPECT_EQ(this->service_.PerformAction(&request, nullptr, kHandle), -1998);
    EXPECT_EQ(this->service_.PerformAction(&request, &response, 0), -1998);
    EXPECT_EQ(this->service_.PerformAction(nullptr, nullptr, 0), -1998);
    ExpectUntouched(response);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFramePerformAction, WithHandleZeroAnswersInvalidArgumentBeforeTheStateIsLookedAt) {
  ActionCase play = FrameTraits<TypeParam>::StopAction();
  play.name = "Play";
  marlo::ActionResponse response;
  // Created: the state alone would answer -1995.
  EXPECT_EQ(this->Perform(play, &response, 0), -1998);
  ASSERT_NO_FATAL_FAILURE(this->InitializeOnly());
  // Initialized: the state alone would answer -1999.
  EXPECT_EQ(this->Perform(play, &response, 0), -1998);
  ExpectUntouched(response);
}

TYPED_TEST(ServiceFramePerformAction, StateRefusals) {
  const std::pair<State, int32_t> rows[] = {{State::kCreated, -1995}, {State::kInitialized, -1999}};
  for (const auto& row : rows) {
    SCOPED_TRACE(StateName(row.first));
    ASSERT_NO_FATAL_FAILURE(this->Enter(row.first));
    for (const char* name : {"Stop", "play", "ProtocolInfo", "NoSuchAction"}) {
      SCOPED_TRACE(name);
      ActionCase action = FrameTraits<TypeParam>::StopAction();
      action.name = name;
      marlo::ActionResponse response;
      EXPECT_EQ(this->Perform(action, &response), row.second);
      ExpectUntouched(response);
    }
    marlo::ActionRequest nameless;
    marlo::ActionResponse response;
    EXPECT_EQ(this->service_.PerformAction(&nameless, &response, kHandle), row.second);
    ExpectUntouched(response);
    this->BackToCreated();
  }
}

TYPED_TEST(ServiceFramePerformAction, WhenRegisteredButNotStartedOrAfterStopAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(this->InitializeAndRegister());
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(FrameTraits<TypeParam>::StopAction(), &response), -1999);
  ASSERT_EQ(this->service_.Start(), 0);
  ASSERT_EQ(this->service_.Stop(), 0);
  EXPECT_EQ(this->Perform(FrameTraits<TypeParam>::StopAction(), &response), -1999);
  ExpectUntouched(response);
}

TYPED_TEST(ServiceFramePerformAction, ActionWithoutNameIsAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  ActionCase nameless = FrameTraits<TypeParam>::StopAction();
  nameless.name = nullptr;
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(nameless, &response), 0);
  ExpectError(response, 401);
}

TYPED_TEST(ServiceFramePerformAction, LowerCasePlayIsAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  ActionCase play = FrameTraits<TypeParam>::StopAction();
  play.name = "play";
  play.arguments.emplace_back("Speed", "1");
  marlo::ActionResponse response;
  // The strict application fails the test if anything reaches it.
  EXPECT_EQ(this->Perform(play, &response), 0);
  ExpectError(response, 401);
}

TYPED_TEST(ServiceFramePerformAction, ActionAnsweredWithSuccessLeavesTheReplyUntouched) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_CALL(this->transfer_, Stop(kHandle, 0ul)).WillOnce(Return(0));
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(FrameTraits<TypeParam>::StopAction(), &response), 0);
  ExpectUntouched(response);
}

TYPED_TEST(ServiceFramePerformAction, UnknownAnswerOfTheApplicationBecomesServiceFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  EXPECT_CALL(this->transfer_, Stop(kHandle, 0ul)).WillOnce(Return(999));
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(FrameTraits<TypeParam>::StopAction(), &response), -1999);
  ExpectUntouched(response);
}

TYPED_TEST(ServiceFramePerformAction, HandlerWithoutMemoryBecomesServiceNoMemory) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const FaultingAction failing = FrameTraits<TypeParam>::FailingHandler();
  // The strict application fails the test if the action reaches it.
  ScopedFault fault(failing.point, 1, -989, failing.persistent);
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(failing.action, &response), -1997);
  EXPECT_GE(fault.Fired(), 1u);
  ExpectUntouched(response);
}

TYPED_TEST(ServiceFramePerformAction, HandlerFailingOtherwiseBecomesServiceFailure) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const FaultingAction failing = FrameTraits<TypeParam>::FailingHandler();
  const int32_t codes[] = {-1, -1999, SINK_UPNP_ERR_THREAD_START};
  for (int32_t code : codes) {
    SCOPED_TRACE(code);
    ScopedFault fault(failing.point, 1, code, failing.persistent);
    marlo::ActionResponse response;
    EXPECT_EQ(this->Perform(failing.action, &response), -1999);
    EXPECT_GE(fault.Fired(), 1u);
    ExpectUntouched(response);
  }
}

TYPED_TEST(ServiceFramePerformAction, HandlerAnsweringWithAUPnPErrorGivesResultZero) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const RefusedAction refused = FrameTraits<TypeParam>::RefusedByItsHandler();
  marlo::ActionResponse response;
  EXPECT_EQ(this->Perform(refused.action, &response), 0);
  ExpectError(response, refused.upnpError);
}

TYPED_TEST(ServiceFramePerformAction, ActionHandleIsPassedThroughUnchanged) {
  ASSERT_NO_FATAL_FAILURE(this->StartAll());
  const unsigned long handles[] = {1ul, 0xFFFFFFFFul, ~0ul};
  for (unsigned long handle : handles) {
    SCOPED_TRACE(handle);
    EXPECT_CALL(this->transfer_, Stop(handle, 0ul)).WillOnce(Return(0));
    marlo::ActionResponse response;
    EXPECT_EQ(this->Perform(FrameTraits<TypeParam>::StopAction(), &response, handle), 0);
  }
}

}  // namespace
}  // namespace service_frame_test
