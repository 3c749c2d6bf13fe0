// The two state variable stores as stores: their initial values, their lifecycle, every result code of
// their store operations (failures driven through the runtime's fault injection), and the route each of
// the 83 variables takes when it changes.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <new>
#include <ostream>
#include <string>
#include <type_traits>
#include <vector>

#include "FaultInjection.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "StateVariableStoreTestPeer.h"
#include "dmr_cmn/String.h"
#include "marlo/Device.h"
#include "marlo/LastChange.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using Standard = SINK_UPNP_SinkCTSSStateVariableManager;
using OpenHome = SINK_UPNP_OpenHomeStateVariableManager;
using FP = DMR_CMN_FaultPoint;

constexpr int kCount = 83;
const char kProtocolList[] = "http-get:*:audio/mpeg:*,http-get:*:audio/flac:*";
const char kSourceList[] =
    "<SourceList><Source><Name>Playlist</Name><Type>Playlist</Type><Visible>true</Visible></Source>"
    "</SourceList>";

// The folder of the sample device description.
std::string DescriptionFolder() { return std::string(DMR_TEST_DATA_DIR) + "/description"; }

SINK_UPNP_StateVariableName_t Var(int index) { return static_cast<SINK_UPNP_StateVariableName_t>(index); }

// ---- Small helpers shared by both stores ----

template <typename M>
ScopedStore<M> NewStore() {
  return ScopedStore<M>(new (std::nothrow) M);
}

template <typename M>
ScopedStore<M> NewInitializedStore() {
  ScopedStore<M> store = NewStore<M>();
  EXPECT_EQ(store->Initialize(), 0);
  return store;
}

template <typename M>
int32_t InitializeVariables(M& store, const char* protocolList = kProtocolList) {
  DMR_CMN_String list;
  EXPECT_EQ(list.SetCString(protocolList), 0);
  return store.InitializeVariables(&list);
}

template <typename M>
int32_t Change(M& store, int index, const char* text) {
  DMR_CMN_String value;
  EXPECT_EQ(value.SetCString(text), 0);
  return store.ChangeStateVariable(Var(index), &value);
}

// The stored text, or a description of the failure, so that a mismatch reads well.
template <typename M>
std::string Get(M& store, int index) {
  DMR_CMN_String out;
  const int32_t result = store.GetStateVariable(Var(index), &out);
  if (result != 0) return "<GetStateVariable answered " + std::to_string(result) + ">";
  return out.GetCString() != nullptr ? out.GetCString() : "<unset>";
}

// Registers each eventing thread the store has, all bound to `handler`.
int32_t RegisterEveryThread(Standard& store, marlo::EventHandler* handler) {
  return store.RegisterAVTransportServiceEventListener(handler);
}
int32_t RegisterEveryThread(OpenHome& store, marlo::EventHandler* handler) {
  for (int32_t (OpenHome::*registration)(marlo::EventHandler*) :
       {&OpenHome::RegisterProductServiceEventListener, &OpenHome::RegisterPlaylistServiceEventListener,
        &OpenHome::RegisterInfoServiceEventListener, &OpenHome::RegisterTimeServiceEventListener,
        &OpenHome::RegisterSenderServiceEventListener}) {
    const int32_t result = (store.*registration)(handler);
    if (result != 0) return result;
  }
  return 0;
}

template <typename M>
int32_t SetDocRoot(M& store, const std::string& path) {
  std::string copy = path;
  return store.SetDocRoot(copy.data());
}

// How many entries the stores have put into a LastChange document since the counts were last reset.
unsigned long RecordedEntries() { return DMR_CMN_FaultInjection::CallCount(FP::kLastChangeSetStateVariable); }

void ClearFlags() {
  for (int32_t& flag : SINK_UPNP_changeStateVariableTablet) flag = 0;
}

std::vector<int> SetFlags() {
  std::vector<int> set;
  for (int i = 0; i < kCount; ++i) {
    if (SINK_UPNP_changeStateVariableTablet[i] != 0) set.push_back(i);
  }
  return set;
}

// Sets the host's server address for one test and puts the default back.
class ScopedServerAddress {
 public:
  explicit ScopedServerAddress(const char* address) { EXPECT_EQ(marlo::Device::SetServerIPAddress(address), 0); }
  ~ScopedServerAddress() { marlo::Device::SetServerIPAddress("127.0.0.1"); }
  ScopedServerAddress(const ScopedServerAddress&) = delete;
  ScopedServerAddress& operator=(const ScopedServerAddress&) = delete;
};

// Markers in the tables of expected initial values for the entries that are not literals.
const char kFromProtocolList[] = "<protocol list>";
const char kFromDescription[] = "<description>";

// The initial values of both columns, written out here independently of the product's catalogue.
const char* const kStandardInitialValues[kCount] = {
    "NO_MEDIA_PRESENT", "OK", "NONE", "NOT_IMPLEMENTED", "NONE,NETWORK", "NOT_IMPLEMENTED", "NORMAL", "1",
    "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", "NOT_IMPLEMENTED", "0", "0", "00000:00:00", "00000:00:00",
    "NOT_IMPLEMENTED", "", "", "", "NOT_IMPLEMENTED", "NOT_IMPLEMENTED",               // 0-20
    "00000:00:00", "NOT_IMPLEMENTED", "2147483647", "2147483647", "",                  // 21-25
    "", kFromProtocolList, "0",                                                        // 26-28
    "Stopped", "false", "false", "0", "", "1000", kFromProtocolList, "", "", "", "", "", "", "", "",
    "",                                                                                // 29-44
    kFromDescription, kFromDescription, kFromDescription, kFromDescription, kFromDescription,
    kFromDescription, kFromDescription, kFromDescription, kFromDescription, kFromDescription,
    kFromDescription, kFromDescription, kFromDescription,                              // 45-57
    "false", "0", "1", kSourceList, "Info Time Volume",                                // 58-62
    "0", "0", "0",                                                                     // 63-65
    "", "0", "0", "", "", "", "0", "0", "0", "", "", "",                               // 66-77
    "", "", "false", "", "",                                                           // 78-82
};

const char* ExpectedInitialValue(bool openHome, int index) {
  if (openHome) {
    switch (index) {
      case 66: return "0";
      case 71: return "0";
      case 77: return "false";
      case 81: return "Disable";
      case 82: return "Info Time Volume";
      default: break;
    }
  }
  return kStandardInitialValues[index];
}

// The Product variables as the sample description file holds them; the three image URIs without the
// "http://" + server address that the stores put in front.
struct DescriptionValue {
  int index;
  const char* text;
  bool isUrl;
};
const DescriptionValue kSampleDescription[] = {
    {45, "Open Renderer Project", false},
    {46, "Free software for networked audio", false},
    {47, "https://open-renderer.example.org/", false},
    {48, "/images/manufacturer.png", true},
    {49, "Open Renderer", false},
    {50, "UPnP AV and OpenHome media renderer", false},
    {51, "https://open-renderer.example.org/renderer", false},
    {52, "/images/model.png", true},
    {53, "Living Room", false},
    {54, "Open Renderer", false},
    {55, "Plays music from your network & the internet", false},
    {56, "https://open-renderer.example.org/product", false},
    {57, "/images/product.png", true},
};

template <typename M>
constexpr bool IsOpenHome() {
  return std::is_same_v<M, OpenHome>;
}

// ---- Typed suites: every behaviour the two stores share runs against both ----

using BothStores = ::testing::Types<Standard, OpenHome>;

class StoreNames {
 public:
  template <typename T>
  static std::string GetName(int) {
    return IsOpenHome<T>() ? "OpenHome" : "SinkCTSS";
  }
};

template <typename M>
class StoreInitialValues : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};
TYPED_TEST_SUITE(StoreInitialValues, BothStores, StoreNames);

TYPED_TEST(StoreInitialValues, InitializeSetsEveryValueToTheEmptyText) {
  auto store = NewInitializedStore<TypeParam>();
  for (int i = 0; i < kCount; ++i) EXPECT_EQ(Get(*store, i), "") << "index " << i;
}

TYPED_TEST(StoreInitialValues, InitializeVariablesSetsEveryLiteralOfItsColumn) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  for (int i = 0; i < kCount; ++i) {
    const char* expected = ExpectedInitialValue(IsOpenHome<TypeParam>(), i);
    if (expected == kFromProtocolList || expected == kFromDescription) continue;
    EXPECT_EQ(Get(*store, i), expected) << "index " << i;
  }
}

TYPED_TEST(StoreInitialValues, ProtocolListGoesToBothProtocolInfoVariablesAndConnectionDefaultsAreSet) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store, "http-get:*:audio/x-test:*"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "http-get:*:audio/x-test:*");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "http-get:*:audio/x-test:*");
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_CURRENT_CONNECTION_IDS), "0");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRACKS_MAX), "1000");
}

TYPED_TEST(StoreInitialValues, EmptyProtocolListIsAcceptedAndStored) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store, ""), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_PROTOCOL_INFO), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
}

TYPED_TEST(StoreInitialValues, WithoutDocumentRootTheThirteenProductDescriptionVariablesAreEmpty) {
  ScopedServerAddress address("192.168.1.20:49152");
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  for (int i = SINK_UPNP_PRODUCT_MANUFACTURER_NAME; i <= SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI; ++i) {
    EXPECT_EQ(Get(*store, i), "") << "index " << i;
  }
}

TYPED_TEST(StoreInitialValues, WithDocumentRootProductVariablesHoldTheDescriptionFileValues) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  for (const DescriptionValue& row : kSampleDescription) {
    if (row.isUrl) continue;
    EXPECT_EQ(Get(*store, row.index), row.text) << "index " << row.index;
  }
}

TYPED_TEST(StoreInitialValues, WithDocumentRootImageUrisArePrefixedWithHttpAndTheServerAddress) {
  ScopedServerAddress address("192.168.1.20:49152");
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, 48), "http://192.168.1.20:49152/images/manufacturer.png");
  EXPECT_EQ(Get(*store, 52), "http://192.168.1.20:49152/images/model.png");
  EXPECT_EQ(Get(*store, 57), "http://192.168.1.20:49152/images/product.png");
}

TYPED_TEST(StoreInitialValues, WithDocumentRootTheOtherVariablesKeepTheirInitialValues) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_SOURCE_XML), kSourceList);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_ATTRIBUTES), "Info Time Volume");
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), kProtocolList);
}

TYPED_TEST(StoreInitialValues, DocumentRootPathGrowsOnEveryCallSoTheSecondCallFindsNoFile) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(Get(*store, 45), "Open Renderer Project");
  // The second call looks for ".../description/openhome.xml/openhome.xml".
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, 45), "");
  EXPECT_EQ(Get(*store, 55), "");
  EXPECT_EQ(Get(*store, 48), "http://127.0.0.1");
}

TYPED_TEST(StoreInitialValues, MissingDescriptionFileLeavesDescriptionValuesEmptyAndUrisHoldOnlyThePrefix) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder() + "/no-such-folder"), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, 45), "");
  EXPECT_EQ(Get(*store, 48), "http://127.0.0.1");
  EXPECT_EQ(Get(*store, 52), "http://127.0.0.1");
  EXPECT_EQ(Get(*store, 57), "http://127.0.0.1");
}

TYPED_TEST(StoreInitialValues, RepeatedInitializeVariablesReplacesChangedValues) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_PLAYLIST_REPEAT, "true"), 0);
  ASSERT_EQ(InitializeVariables(*store, "second"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_REPEAT), "false");
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "second");
}

TYPED_TEST(StoreInitialValues, InitialValuesAreNeverRecordedForEventing) {
  auto store = NewInitializedStore<TypeParam>();
  ClearFlags();
  DMR_CMN_FaultInjection::Reset();
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(RecordedEntries(), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 0u);
  EXPECT_EQ(SetFlags(), std::vector<int>{});
}

// ---- Behaviours of the store both managers share ----

template <typename M>
class StoreBehaviour : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};
TYPED_TEST_SUITE(StoreBehaviour, BothStores, StoreNames);

TYPED_TEST(StoreBehaviour, ChangeToTheStoredValueAnswersZeroAndRecordsNothing) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ClearFlags();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "OK"), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_PLAYLIST_ID, "0"), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "NO_MEDIA_PRESENT"), 0);
  EXPECT_EQ(RecordedEntries(), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 0u);
  EXPECT_EQ(SetFlags(), std::vector<int>{});
}

TYPED_TEST(StoreBehaviour, TransportStateRecordingAnswersZeroAndKeepsTheOpenHomeTransportState) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Playing");
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "RECORDING"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "RECORDING");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Playing");
}

TYPED_TEST(StoreBehaviour, TransportStateInLowerCaseIsRefusedAndTheStoreIsUnchanged) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ClearFlags();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "playing"), -961);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "NO_MEDIA_PRESENT");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Stopped");
  EXPECT_EQ(RecordedEntries(), 0u);
  EXPECT_EQ(SetFlags(), std::vector<int>{});
}

TYPED_TEST(StoreBehaviour, ChangeOfIndex83IsOutOfRange) {
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(Change(*store, 83, "x"), -962);
}

TYPED_TEST(StoreBehaviour, ChangeOfANegativeIndexIsOutOfRange) {
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(Change(*store, -1, "x"), -962);
}

TYPED_TEST(StoreBehaviour, GetOfIndex83OrANegativeIndexIsOutOfRange) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  EXPECT_EQ(store->GetStateVariable(Var(83), &out), -962);
  EXPECT_EQ(store->GetStateVariable(Var(-1), &out), -962);
  EXPECT_EQ(out.GetCString(), nullptr);
}

TYPED_TEST(StoreBehaviour, CurrentTransportActionsChangeIsRecordedForEventing) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, "Play,Stop"), 0);
  EXPECT_EQ(RecordedEntries(), 1u);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS), "Play,Stop");
}

TYPED_TEST(StoreBehaviour, RelativeTimePositionChangeIsOnlyStored) {
  auto store = NewInitializedStore<TypeParam>();
  ClearFlags();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_TIME_POSITION, "0:01:02"), 0);
  EXPECT_EQ(RecordedEntries(), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 0u);
  EXPECT_EQ(SetFlags(), std::vector<int>{});
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_RELATIVE_TIME_POSITION), "0:01:02");
}

TYPED_TEST(StoreBehaviour, SecondInitializeWithoutFinalizeAnswersMinusOne) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(Change(*store, SINK_UPNP_PLAYLIST_REPEAT, "true"), 0);
  EXPECT_EQ(store->Initialize(), -1);
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_REPEAT), "true");
}

// Deleting an initialized store frees its buffers and document root only: the host must unregister the
// threads and Finalize first, and a store deleted without that leaves behind what they would release.
TYPED_TEST(StoreBehaviour, DeletingAnInitializedStoreFinalizesNothingAndLeavesValuesLockDocumentAndThreads) {
  using Peer = SINK_UPNP_StateVariableStoreTestPeer;
  RecordingEventHandler handler;
  TypeParam* store = new (std::nothrow) TypeParam;
  ASSERT_NE(store, nullptr);
  ASSERT_EQ(store->Initialize(), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(RegisterEveryThread(*store, &handler), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "ERROR_OCCURRED"), 0);  // pending in the document
  Peer::Leftovers leftovers = Peer::Take(*store);
  ASSERT_NE(leftovers.lastChange, nullptr);
  const std::size_t threadCount = std::is_same_v<TypeParam, OpenHome> ? 5u : 1u;
  ASSERT_EQ(leftovers.threads.size(), threadCount);

  DMR_CMN_FaultInjection::Reset();
  delete store;
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLockFinalize), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadStop), 0u);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadFinalize), 0u);
  // All of it is still there and whole: the lock was never finalized, the values still read.
  EXPECT_EQ(leftovers.lock->Finalize(), 0);
  EXPECT_STREQ(leftovers.values[SINK_UPNP_AVT_TRANSPORT_STATUS].GetCString(), "ERROR_OCCURRED");
  for (DMR_CMN_UPnPEventingThread* thread : leftovers.threads) EXPECT_TRUE(thread->IsRunning());
  leftovers.Release();
}

TYPED_TEST(StoreBehaviour, FinalizeOfANeverInitializedStoreAnswersNotInitialized) {
  auto store = NewStore<TypeParam>();
  EXPECT_EQ(store->Finalize(), -1000);
}

TYPED_TEST(StoreBehaviour, InitializeVariablesBeforeInitializeAnswersNotInitializedButHasGrownTheDocumentRoot) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(store->Finalize(), 0);
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString(kProtocolList), 0);
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(store->InitializeVariables(&list), -1000);
  // The refused call's one string allocation is the append of "/openhome.xml" to the document root.
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 1u);
}

TYPED_TEST(StoreBehaviour, InitializeVariablesBeforeInitializeWithoutDocumentRootTouchesNoString) {
  auto store = NewStore<TypeParam>();
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString(kProtocolList), 0);
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(store->InitializeVariables(&list), -1000);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation), 0u);
}

TYPED_TEST(StoreBehaviour, RelativeCounterPositionTakesEmptyTextAndTheLowestSigned32) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, ""), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION), "");
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "-2147483648"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION), "-2147483648");
}

TYPED_TEST(StoreBehaviour, RelativeCounterPositionRefusesPlusSignAndTooLargeAndKeepsItsValue) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "+5"), -961);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "2147483648"), -961);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION), "2147483647");
}

TYPED_TEST(StoreBehaviour, NumberOfTracksTakesTheLargestUnsigned32) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS, "4294967295"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS), "4294967295");
}

TYPED_TEST(StoreBehaviour, NumberOfTracksRefusesTooLargeNegativeAndElevenDigitsAndKeepsItsValue) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS, "4294967296"), -961);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS, "-1"), -961);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS, "00000000001"), -961);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_NUMBER_OF_TRACKS), "0");
}

TYPED_TEST(StoreBehaviour, TransportPlaySpeedTakesOneOnly) {
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "1/2"), -961);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "2"), -961);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED), "");
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "1"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED), "1");
}

TYPED_TEST(StoreBehaviour, GetCopiesTheStoredTextIntoTheOutput) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(Change(*store, SINK_UPNP_PLAYLIST_ID_ARRAY, "AAAAAQAAAAI="), 0);
  DMR_CMN_String out;
  ASSERT_EQ(out.SetCString("old"), 0);
  EXPECT_EQ(store->GetStateVariable(SINK_UPNP_PLAYLIST_ID_ARRAY, &out), 0);
  EXPECT_STREQ(out.GetCString(), "AAAAAQAAAAI=");
}

TYPED_TEST(StoreBehaviour, FinalizedStoreRefusesEveryStoreOperation) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(store->Finalize(), 0);
  DMR_CMN_String out;
  EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1000);
  EXPECT_EQ(Change(*store, 0, "PLAYING"), -1000);
  EXPECT_EQ(InitializeVariables(*store), -1000);
  EXPECT_EQ(store->Finalize(), -1000);
}

TYPED_TEST(StoreBehaviour, FinalizedStoreCanBeInitializedAgainWithEveryValueEmpty) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(store->Finalize(), 0);
  ASSERT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRACKS_MAX), "");
}

TYPED_TEST(StoreBehaviour, FinalizeDropsThePendingDocument) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "ERROR_OCCURRED"), 0);
  ASSERT_EQ(store->Finalize(), 0);
  ASSERT_EQ(store->Initialize(), 0);
  DMR_CMN_FaultInjection::Reset();
  // A new document is made for the next change: the one of the earlier life is gone.
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "OK"), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 1u);
}

TYPED_TEST(StoreBehaviour, ChangesWhilePendingShareOneDocument) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_FaultInjection::Reset();
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "OK"), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_CURRENT_TRACK, "3"), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 1u);
  EXPECT_EQ(RecordedEntries(), 2u);
}

TYPED_TEST(StoreBehaviour, ReinitializeStartsWithAnEmptyDocumentRootThatStaysSet) {
  // The document root string of the earlier life is freed; the new one is "", and the root stays set, so
  // the next InitializeVariables looks for "/openhome.xml" and finds nothing there.
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(store->Finalize(), 0);
  ASSERT_EQ(store->Initialize(), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_NAME), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MODEL_IMAGE_URI), "http://127.0.0.1");
}

TYPED_TEST(StoreBehaviour, DocumentRootSetBeforeInitializeIsNotCopiedButCountsAsSet) {
  auto store = NewStore<TypeParam>();
  EXPECT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(store->Initialize(), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_NAME), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI), "http://127.0.0.1");
}

TYPED_TEST(StoreBehaviour, DocumentRootSetAgainReplacesTheGrownPath) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_PRODUCT_ROOM), "Living Room");
}

TYPED_TEST(StoreBehaviour, FinalizeWithPendingChangesReleasesThemAndTellsNobody) {
  auto store = NewInitializedStore<TypeParam>();
  RecordingAVTEventListener listener;
  ASSERT_EQ(store->RegisterApplicationAVTEventListener(&listener), 0);
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_TIME_SECONDS, "12"), 0);
  EXPECT_EQ(store->Finalize(), 0);
  store.reset();  // what Finalize left goes with the store; the sanitizer build's leak check sees the rest
  EXPECT_TRUE(listener.Calls().empty());
}

// The checks, reached as members of each store.
TYPED_TEST(StoreBehaviour, MemberChecksAnswerLikeTheSharedChecks) {
  auto store = NewStore<TypeParam>();  // the checks need no Initialize
  EXPECT_EQ(store->CheckStateVariable(Var(0), "PLAYING"), 0);
  EXPECT_EQ(store->CheckStateVariable(Var(0), "playing"), -961);
  EXPECT_EQ(store->CheckStateVariable(Var(30), "anything"), 0);
  EXPECT_EQ(store->CheckStateVariable(Var(0), nullptr), -1);
  EXPECT_EQ(store->CheckStateVariable(Var(83), "PLAYING"), -962);
  EXPECT_EQ(store->CheckStateVariable(Var(-1), "PLAYING"), -962);
  EXPECT_EQ(store->CheckTransportState("TRANSITIONING"), 0);
  EXPECT_EQ(store->CheckTransportState("Stopped"), -961);
  EXPECT_EQ(store->CheckTransportState(nullptr), -1);
  EXPECT_EQ(store->CheckTransportStatus("ERROR_OCCURRED"), 0);
  EXPECT_EQ(store->CheckTransportStatus("ok"), -961);
  EXPECT_EQ(store->CheckTransportStatus(nullptr), -1);
  EXPECT_EQ(store->CheckPlaybackStorageMedium("NETWORK"), 0);
  EXPECT_EQ(store->CheckPlaybackStorageMedium("USB"), -961);
  EXPECT_EQ(store->CheckPlaybackStorageMedium(nullptr), -1);
  EXPECT_EQ(store->CheckCurrentPlayMode("SHUFFLE"), 0);
  EXPECT_EQ(store->CheckCurrentPlayMode("Shuffle"), -961);
  EXPECT_EQ(store->CheckCurrentPlayMode(nullptr), -1);
  EXPECT_EQ(store->CheckTransportPlaySpeed("1"), 0);
  EXPECT_EQ(store->CheckTransportPlaySpeed("1/2"), -961);
  EXPECT_EQ(store->CheckTransportPlaySpeed(nullptr), -1);
  EXPECT_EQ(store->CheckRecordMediumWriteStatus("WRITABLE"), 0);
  EXPECT_EQ(store->CheckRecordMediumWriteStatus("READ_ONLY"), -961);
  EXPECT_EQ(store->CheckRecordMediumWriteStatus(nullptr), -1);
  EXPECT_EQ(store->CheckCurrentRecordQualityMode("1:LP"), 0);
  EXPECT_EQ(store->CheckCurrentRecordQualityMode("1:lp"), -961);
  EXPECT_EQ(store->CheckCurrentRecordQualityMode(nullptr), -1);
  EXPECT_EQ(store->CheckTypeInteger4Byte("-2147483648"), 0);
  EXPECT_EQ(store->CheckTypeInteger4Byte("2147483648"), -961);
  EXPECT_EQ(store->CheckTypeInteger4Byte(nullptr), -1);
  EXPECT_EQ(store->CheckTypeUnsignedInteger4Byte("4294967295"), 0);
  EXPECT_EQ(store->CheckTypeUnsignedInteger4Byte("-1"), -961);
  EXPECT_EQ(store->CheckTypeUnsignedInteger4Byte(nullptr), -1);
}

TYPED_TEST(StoreBehaviour, SetDocRootAnswersZero) {
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(SetDocRoot(*store, "/nowhere"), 0);
}

// ---- Behaviours of one store only ----

// The AVTransport eventing thread of a standard store, bound to a recording handler.
class AVTransportThread {
 public:
  explicit AVTransportThread(Standard& store) : store_(store) {
    EXPECT_EQ(store_.RegisterAVTransportServiceEventListener(&handler_), 0);
  }
  // Stops and joins the thread, so that every queued batch has been delivered.
  std::vector<RecordingEventHandler::Batch> Drain() {
    EXPECT_EQ(store_.UnregisterAVTransportServiceEventListener(), 0);
    return handler_.Batches();
  }

 private:
  Standard& store_;
  RecordingEventHandler handler_;
};

TEST(SinkCTSSStore, ChangeToTheStoredValueSendsNothing) {
  auto store = NewInitializedStore<Standard>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  AVTransportThread thread(*store);
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "OK"), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_PLAYLIST_INDEX, ""), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_INFO_METATEXT, ""), 0);
  EXPECT_EQ(store->SendEvent(), -962);
  EXPECT_TRUE(thread.Drain().empty());
}

TEST(SinkCTSSStore, FinalizeWithTheAVTransportThreadRegisteredAnswersMinusOneAndChangesNothing) {
  auto store = NewInitializedStore<Standard>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  AVTransportThread thread(*store);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  EXPECT_EQ(store->Finalize(), -1);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
  EXPECT_EQ(store->SendEvent(), 0);  // the pending document survived
  ASSERT_EQ(thread.Drain().size(), 1u);
  EXPECT_EQ(store->Finalize(), 0);
}

TEST(SinkCTSSStore, CurrentTransportActionsChangeIsSentInTheNextLastChange) {
  auto store = NewInitializedStore<Standard>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  AVTransportThread thread(*store);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, "Play,Stop"), 0);
  ASSERT_EQ(store->SendEvent(), 0);
  const auto batches = thread.Drain();
  ASSERT_EQ(batches.size(), 1u);
  ASSERT_EQ(batches[0].size(), 1u);
  EXPECT_EQ(batches[0][0].first, "LastChange");
  EXPECT_NE(batches[0][0].second.find("<CurrentTransportActions val=\"Play,Stop\"/>"), std::string::npos)
      << batches[0][0].second;
}

TEST(SinkCTSSStore, RelativeTimePositionChangeSendsNothing) {
  auto store = NewInitializedStore<Standard>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  AVTransportThread thread(*store);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_RELATIVE_TIME_POSITION, "0:00:07"), 0);
  EXPECT_EQ(store->SendEvent(), -962);
  EXPECT_TRUE(thread.Drain().empty());
}

TEST(SinkCTSSStore, IndexAndMetatextChangesWithoutTheAVTransportThreadAreOnlyStored) {
  auto store = NewInitializedStore<Standard>();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(Change(*store, SINK_UPNP_PLAYLIST_INDEX, "4"), 0);
  EXPECT_EQ(Change(*store, SINK_UPNP_INFO_METATEXT, "Now playing"), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadNotify), 0u);
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_INDEX), "4");
  EXPECT_EQ(Get(*store, SINK_UPNP_INFO_METATEXT), "Now playing");
}

TEST(SinkCTSSStore, FinalizeKeepsTheApplicationListener) {
  auto store = NewInitializedStore<Standard>();
  RecordingAVTEventListener listener;
  ASSERT_EQ(store->RegisterApplicationAVTEventListener(&listener), 0);
  ASSERT_EQ(store->Finalize(), 0);
  ASSERT_EQ(store->Initialize(), 0);
  AVTransportThread thread(*store);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATUS, "OK"), 0);
  ASSERT_EQ(store->SendEvent(), 0);
  thread.Drain();
  EXPECT_EQ(listener.Calls(), (std::vector<ListenerCall>{{"NotifyTransportStatus", "OK", ""}}));
}

TEST(SinkCTSSStore, NoMemoryForTheStoreAnswersNull) {
  ScopedFault fault(FP::kMemoryAllocation, 1, 0);
  std::unique_ptr<Standard> store(new (std::nothrow) Standard);
  EXPECT_EQ(store, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
}

TEST(OpenHomeStore, TransportStateRecordingFlagsTheOpenHomeTransportStateAllTheSame) {
  auto store = NewInitializedStore<OpenHome>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ClearFlags();
  EXPECT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "RECORDING"), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Playing");
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_PLAYLIST_TRANSPORT_STATE});
}

TEST(OpenHomeStore, ConstructionClearsTheSharedChangeFlags) {
  for (int32_t& flag : SINK_UPNP_changeStateVariableTablet) flag = 1;
  auto store = NewStore<OpenHome>();
  EXPECT_EQ(SetFlags(), std::vector<int>{});
}

TEST(OpenHomeStore, FinalizeIgnoresRegisteredEventingThreads) {
  auto store = NewInitializedStore<OpenHome>();
  RecordingEventHandler handler;
  ASSERT_EQ(store->RegisterPlaylistServiceEventListener(&handler), 0);
  EXPECT_EQ(store->Finalize(), 0);
  // Still registered: the unregistration, not Finalize, is what stops it.
  EXPECT_EQ(SINK_UPNP_StateVariableStoreTestPeer::Take(*store).threads.size(), 1u);
}

TEST(OpenHomeStore, NoMemoryForTheStoreAnswersNull) {
  ScopedFault fault(FP::kMemoryAllocation, 1, 0);
  std::unique_ptr<OpenHome> store(new (std::nothrow) OpenHome);
  EXPECT_EQ(store, nullptr);
  EXPECT_EQ(fault.Fired(), 1u);
}

// ---- Every failure path of the store operations, driven through fault injection ----

template <typename M>
class StoreFaults : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};
TYPED_TEST_SUITE(StoreFaults, BothStores, StoreNames);

// How many string allocations a successful Initialize makes (the document root's "" and the 83 values).
template <typename M>
unsigned long StringAllocationsOfInitialize() {
  auto probe = NewStore<M>();
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(probe->Initialize(), 0);
  const unsigned long count = DMR_CMN_FaultInjection::CallCount(FP::kStringAllocation);
  DMR_CMN_FaultInjection::Reset();
  return count;
}

// A store whose lock is held by this thread after a failure path that keeps it: the next call that takes
// the lock fails at once (the lock checks errors rather than hanging).
template <typename M>
void ExpectLockHeld(M& store) {
  DMR_CMN_String out;
  EXPECT_EQ(store.GetStateVariable(Var(0), &out), -1);
}

// Initialize

TYPED_TEST(StoreFaults, InitializeWithNoMemoryForTheFirstValueAnswersNoMemory) {
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989, /*persistent=*/true);
    EXPECT_EQ(store->Initialize(), -989);
  }
  DMR_CMN_String out;
  EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1000);
  EXPECT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, InitializeWithNoMemoryForTheValueArrayAnswersNoMemory) {
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kMemoryAllocation, 1, 0);
    EXPECT_EQ(store->Initialize(), -989);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(store->Finalize(), -1000);
  EXPECT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, InitializeVariablesWithNoMemoryForTheNewArrayAnswersNoMemoryAndKeepsTheValues) {
  auto store = NewStore<TypeParam>();
  ASSERT_EQ(store->Initialize(), 0);
  DMR_CMN_String protocolInfo;
  ASSERT_EQ(protocolInfo.SetCString("http-get:*:audio/mpeg:*"), 0);
  {
    ScopedFault fault(FP::kMemoryAllocation, 1, 0);
    EXPECT_EQ(store->InitializeVariables(&protocolInfo), -989);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Get(*store, 0), "");
  EXPECT_EQ(store->InitializeVariables(&protocolInfo), 0);
  EXPECT_EQ(Get(*store, 0), "NO_MEDIA_PRESENT");
  EXPECT_EQ(store->Finalize(), 0);
}

TYPED_TEST(StoreFaults, InitializeWithNoMemoryForTheLastValueAnswersNoMemory) {
  const unsigned long last = StringAllocationsOfInitialize<TypeParam>();
  ASSERT_GE(last, 83u);
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kStringAllocation, last, -989);
    EXPECT_EQ(store->Initialize(), -989);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(store->Finalize(), -1000);
  EXPECT_EQ(store->Initialize(), 0);
}

TYPED_TEST(StoreFaults, InitializeWithAnotherFailureSettingAValueAnswersMinusOneAndCanBeRetried) {
  const unsigned long last = StringAllocationsOfInitialize<TypeParam>();
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kStringAllocation, last, -5);
    EXPECT_EQ(store->Initialize(), -1);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(store->Finalize(), -1000);
  // The array the failed attempt kept is replaced, not leaked.
  EXPECT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, 82), "");
}

TYPED_TEST(StoreFaults, InitializeWithoutALockAnswersNoMemoryAndCanBeRetried) {
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kLockCreation, 1, 0);
    EXPECT_EQ(store->Initialize(), -989);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(store->Finalize(), -1000);
  EXPECT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, InitializeWhoseLockWillNotInitializeAnswersMinusOneAndCanBeRetried) {
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kLockInitialize, 1, -1);
    EXPECT_EQ(store->Initialize(), -1);
  }
  EXPECT_EQ(store->Finalize(), -1000);
  // The lock and values the failed attempt kept are replaced, not leaked.
  EXPECT_EQ(store->Initialize(), 0);
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, InitializeWhoseLockAnswersAnotherCodeAnswersMinusOne) {
  auto store = NewStore<TypeParam>();
  {
    ScopedFault fault(FP::kLockInitialize, 1, -989);
    EXPECT_EQ(store->Initialize(), -1);
  }
  EXPECT_EQ(store->Initialize(), 0);
}

// Finalize

TYPED_TEST(StoreFaults, FinalizeWhoseLockWillNotFinalizeAnswersMinusOneAndKeepsTheStore) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(Change(*store, SINK_UPNP_PLAYLIST_SHUFFLE, "true"), 0);
  {
    ScopedFault fault(FP::kLockFinalize, 1, -1);
    EXPECT_EQ(store->Finalize(), -1);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_SHUFFLE), "true");
  EXPECT_EQ(store->Initialize(), -1);  // still initialized
  EXPECT_EQ(store->Finalize(), 0);
}

// InitializeVariables

TYPED_TEST(StoreFaults, InitializeVariablesWithNullProtocolListAnswersNullArgument) {
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(store->InitializeVariables(nullptr), -999);
}

TYPED_TEST(StoreFaults, InitializeVariablesWithUnsetProtocolListAnswersNullArgument) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String unset;
  EXPECT_EQ(store->InitializeVariables(&unset), -999);
}

TYPED_TEST(StoreFaults, InitializeVariablesTestsItsArgumentBeforeTheState) {
  auto store = NewStore<TypeParam>();
  DMR_CMN_String unset;
  EXPECT_EQ(store->InitializeVariables(nullptr), -999);
  EXPECT_EQ(store->InitializeVariables(&unset), -999);
}

TYPED_TEST(StoreFaults, InitializeVariablesWhoseProtocolListGivesNoTextAnswersNullArgument) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString(kProtocolList), 0);
  ScopedFault fault(FP::kStringGetCString, 1, 0);
  EXPECT_EQ(store->InitializeVariables(&list), -999);
  EXPECT_EQ(fault.Fired(), 1u);
}

// Fails the n-th string allocation of InitializeVariables with `code`, for n = 1, 2, ... until a run
// completes without the fault firing; each failed run must answer `expected` and leave the old values.
template <typename M>
void ExpectEveryValueFailureKeepsTheOldValues(int32_t code, int32_t expected, bool withDocumentRoot) {
  auto store = NewInitializedStore<M>();
  ASSERT_EQ(InitializeVariables(*store, "old list"), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString("new list"), 0);
  for (unsigned long n = 1;; ++n) {
    SCOPED_TRACE("allocation " + std::to_string(n));
    if (withDocumentRoot) {
      ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
    }
    // With a document root, the first allocation is the append to it, whose failure is ignored.
    const unsigned long nth = withDocumentRoot ? n + 1 : n;
    int32_t result = 0;
    unsigned long fired = 0;
    {
      ScopedFault fault(FP::kStringAllocation, nth, code);
      result = store->InitializeVariables(&list);
      fired = fault.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "new list");
      EXPECT_GT(n, 83u);
      return;
    }
    EXPECT_EQ(result, expected);
    EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "old list");
    EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), "PLAYING");
    EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_NAME), "");
    if (n > 200) {
      FAIL() << "InitializeVariables never completed";
    }
  }
}

TYPED_TEST(StoreFaults, InitializeVariablesWithNoMemoryForAnyValueAnswersNoMemoryAndKeepsTheOldValues) {
  ExpectEveryValueFailureKeepsTheOldValues<TypeParam>(-989, -989, false);
}

TYPED_TEST(StoreFaults, InitializeVariablesWithAnotherFailureForAnyValueAnswersMinusOneAndKeepsTheOldValues) {
  ExpectEveryValueFailureKeepsTheOldValues<TypeParam>(-5, -1, false);
}

TYPED_TEST(StoreFaults, InitializeVariablesWithNoMemoryForAnyDescriptionValueAnswersNoMemory) {
  ExpectEveryValueFailureKeepsTheOldValues<TypeParam>(-989, -989, true);
}

TYPED_TEST(StoreFaults, InitializeVariablesWithAnotherFailureForAnyDescriptionValueAnswersMinusOne) {
  ExpectEveryValueFailureKeepsTheOldValues<TypeParam>(-5, -1, true);
}

TYPED_TEST(StoreFaults, InitializeVariablesWhoseProtocolListVanishesMidwayAnswersMinusOne) {
  // After the first look at the argument, every further text fetch is one the values are built from.
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store, "old list"), 0);
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString("new list"), 0);
  for (unsigned long n = 2;; ++n) {
    SCOPED_TRACE("text fetch " + std::to_string(n));
    int32_t result = 0;
    unsigned long fired = 0;
    {
      ScopedFault fault(FP::kStringGetCString, n, 0);
      result = store->InitializeVariables(&list);
      fired = fault.Fired();
    }
    if (fired == 0) {
      EXPECT_EQ(result, 0);
      EXPECT_GT(n, 2u);
      return;
    }
    EXPECT_EQ(result, -1);
    EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "old list");
    if (n > 20) {
      FAIL() << "InitializeVariables never completed";
    }
  }
}

TYPED_TEST(StoreFaults, InitializeVariablesWhoseDocumentRootAppendFailsStillAnswersZero) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString(kProtocolList), 0);
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(store->InitializeVariables(&list), 0);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  // The folder itself is no description file: the description values stay empty.
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_NAME), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI), "http://127.0.0.1");
}

TYPED_TEST(StoreFaults, InitializeVariablesThatCannotTakeTheLockAnswersMinusOneAndKeepsTheOldValues) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store, "old list"), 0);
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString("new list"), 0);
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(store->InitializeVariables(&list), -1);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_CMS_SINK_PROTOCOL_INFO), "old list");
}

TYPED_TEST(StoreFaults, InitializeVariablesThatCannotReleaseTheLockAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String list;
  ASSERT_EQ(list.SetCString(kProtocolList), 0);
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->InitializeVariables(&list), -1);
  }
  ExpectLockHeld(*store);
}

// GetStateVariable

TYPED_TEST(StoreFaults, GetWithNullOutputAnswersNullArgumentBeforeTheState) {
  auto fresh = NewStore<TypeParam>();
  EXPECT_EQ(fresh->GetStateVariable(Var(0), nullptr), -999);
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(store->GetStateVariable(Var(0), nullptr), -999);
}

TYPED_TEST(StoreFaults, GetBeforeInitializeAnswersNotInitializedBeforeTheRange) {
  auto store = NewStore<TypeParam>();
  DMR_CMN_String out;
  EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1000);
  EXPECT_EQ(store->GetStateVariable(Var(83), &out), -1000);
}

TYPED_TEST(StoreFaults, GetThatCannotTakeTheLockAnswersMinusOneAndLeavesItFree) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1);
  }
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, GetOfAValueWithoutTextAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kStringGetCString, 1, 0);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, GetWithNoMemoryForTheCopyAnswersNoMemoryAndReleasesTheLock) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -989);
  }
  EXPECT_EQ(out.GetCString(), nullptr);
  EXPECT_EQ(Get(*store, 0), "");
}

TYPED_TEST(StoreFaults, GetWithAnotherCopyFailureAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kStringAllocation, 1, -5);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, GetThatCannotReleaseTheLockAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, GetWithNoMemoryThatCannotReleaseTheLockAnswersMinusOne) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String out;
  {
    ScopedFault unlock(FP::kLockUnlock, 1, -1);
    DMR_CMN_FaultInjection::Arm(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(store->GetStateVariable(Var(0), &out), -1);
  }
  ExpectLockHeld(*store);
}

// ChangeStateVariable

TYPED_TEST(StoreFaults, ChangeWithNullValueAnswersNullArgumentBeforeTheState) {
  auto fresh = NewStore<TypeParam>();
  EXPECT_EQ(fresh->ChangeStateVariable(Var(0), nullptr), -999);
  auto store = NewInitializedStore<TypeParam>();
  EXPECT_EQ(store->ChangeStateVariable(Var(0), nullptr), -999);
}

TYPED_TEST(StoreFaults, ChangeWithUnsetValueAnswersNullArgument) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String unset;
  EXPECT_EQ(store->ChangeStateVariable(Var(30), &unset), -999);
  EXPECT_EQ(store->ChangeStateVariable(Var(83), &unset), -999);
}

TYPED_TEST(StoreFaults, ChangeWhoseValueGivesNoTextAnswersNullArgument) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kStringGetCString, 1, 0);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -999);
  }
  EXPECT_EQ(Get(*store, 30), "");
}

TYPED_TEST(StoreFaults, ChangeBeforeInitializeAnswersNotInitializedBeforeTheChecks) {
  auto store = NewStore<TypeParam>();
  EXPECT_EQ(Change(*store, 0, "PLAYING"), -1000);
  EXPECT_EQ(Change(*store, 0, "playing"), -1000);
  EXPECT_EQ(Change(*store, 83, "x"), -1000);
}

TYPED_TEST(StoreFaults, ChangeThatCannotTakeTheLockAnswersMinusOneAndChangesNothing) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
  }
  EXPECT_EQ(Get(*store, 30), "");
}

TYPED_TEST(StoreFaults, ChangeWhoseComparisonFailsAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kStringEquals, 1, -7);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, ChangeWhoseComparisonAnswersDifferentStoresAndRecordsTheSameValueAgain) {
  auto store = NewInitializedStore<TypeParam>();
  ASSERT_EQ(InitializeVariables(*store), 0);
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("OK"), 0);
  DMR_CMN_FaultInjection::Reset();
  {
    ScopedFault fault(FP::kStringEquals, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
    EXPECT_EQ(RecordedEntries(), 1u);
  }
}

TYPED_TEST(StoreFaults, ChangeWithNoMemoryToStoreAnswersNoMemoryReleasesTheLockAndKeepsTheOldValue) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -989);
  }
  EXPECT_EQ(Get(*store, 30), "");
}

TYPED_TEST(StoreFaults, ChangeWithAnotherFailureToStoreAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kStringAllocation, 1, -5);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, ChangeWithNoMemoryThatCannotReleaseTheLockAnswersMinusOne) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault unlock(FP::kLockUnlock, 1, -1);
    DMR_CMN_FaultInjection::Arm(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, ChangeToTheStoredValueThatCannotReleaseTheLockAnswersMinusOne) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString(""), 0);
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, OnlyStoredChangeThatCannotReleaseTheLockAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("true"), 0);
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(Var(30), &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, RecordedChangeThatCannotReleaseTheLockAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("OK"), 0);
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, ChangeWithoutMemoryForThePendingDocumentIsStoredButNotRecorded) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeCreation, 1, 0);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
    EXPECT_EQ(fault.Fired(), 1u);
    EXPECT_EQ(RecordedEntries(), 0u);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
}

TYPED_TEST(StoreFaults, ChangeWhosePendingDocumentRefusesItsTypeIsStoredNotRecordedAndTheDocumentDropped) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, -1999);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
    EXPECT_EQ(RecordedEntries(), 0u);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
  // The next change makes a fresh document and is recorded in it.
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_CURRENT_TRACK, "2"), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 1u);
  EXPECT_EQ(RecordedEntries(), 1u);
}

TYPED_TEST(StoreFaults, ChangeWhosePendingDocumentTypeFailsOtherwiseIsStoredAndTheUntypedDocumentKept) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, -1998);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
    EXPECT_EQ(RecordedEntries(), 0u);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
  // The kept document has no type: no second one is made, and it refuses the entry with -1999, which
  // counts as recorded.
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_CURRENT_TRACK, "2"), 0);
  EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation), 0u);
  EXPECT_EQ(RecordedEntries(), 1u);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_CURRENT_TRACK), "2");
}

TYPED_TEST(StoreFaults, ChangeWhoseEntryIsRefusedWithMinus1999AnswersZeroAndReleasesTheLock) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeSetStateVariable, 1, -1999);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
}

TYPED_TEST(StoreFaults, ChangeWhoseEntryFailsOtherwiseAnswersMinusOneWithTheLockHeld) {
  auto store = NewInitializedStore<TypeParam>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeSetStateVariable, 1, -1998);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), -1);
  }
  ExpectLockHeld(*store);
}

TYPED_TEST(StoreFaults, SetDocRootAnswersZeroWhenTheCopyFails) {
  auto store = NewInitializedStore<TypeParam>();
  {
    ScopedFault fault(FP::kStringAllocation, 1, -989);
    EXPECT_EQ(SetDocRoot(*store, DescriptionFolder()), 0);
    EXPECT_EQ(fault.Fired(), 1u);
  }
  // The root is set but still "": the file looked for is "/openhome.xml".
  ASSERT_EQ(InitializeVariables(*store), 0);
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_NAME), "");
  EXPECT_EQ(Get(*store, SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI), "http://127.0.0.1");
}

TEST(SinkCTSSStoreFaults, ChangeWithoutMemoryForThePendingDocumentSendsNothing) {
  auto store = NewInitializedStore<Standard>();
  AVTransportThread thread(*store);
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeCreation, 1, 0);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
  }
  EXPECT_EQ(store->SendEvent(), -962);
  EXPECT_TRUE(thread.Drain().empty());
}

TEST(SinkCTSSStoreFaults, UntypedPendingDocumentMakesSendEventAnswerMinusOneWithTheLockReleased) {
  auto store = NewInitializedStore<Standard>();
  AVTransportThread thread(*store);
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("ERROR_OCCURRED"), 0);
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, -1998);
    ASSERT_EQ(store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATUS, &value), 0);
  }
  EXPECT_EQ(store->SendEvent(), -1);
  EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATUS), "ERROR_OCCURRED");
  EXPECT_TRUE(thread.Drain().empty());
}

TEST(OpenHomeStoreFaults, FlaggedChangeThatCannotReleaseTheLockSetsTheFlagAndKeepsTheLock) {
  auto store = NewInitializedStore<OpenHome>();
  DMR_CMN_String value;
  ASSERT_EQ(value.SetCString("7"), 0);
  {
    ScopedFault fault(FP::kLockUnlock, 1, -1);
    EXPECT_EQ(store->ChangeStateVariable(SINK_UPNP_PLAYLIST_ID, &value), -1);
  }
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_PLAYLIST_ID});
  ExpectLockHeld(*store);
}

// ---- The route of every variable, end to end ----

enum class Route { kNone, kLastChange, kFlag, kNotify };

// Each store's column of change routes, written out here independently of the product's catalogue.
Route StandardRoute(int index) {
  if (index <= 20 || index == 25) return Route::kLastChange;
  if (index >= 45 && index <= 62) return Route::kLastChange;
  switch (index) {
    case 66: case 69: case 70: case 71: case 78: case 79: case 81: case 82: return Route::kLastChange;
    case 36: case 77: return Route::kNotify;
    default: return Route::kNone;
  }
}

Route OpenHomeRoute(int index) {
  if (index <= 20 || index == 25) return Route::kLastChange;
  if (index >= 45 && index <= 62) return Route::kLastChange;
  if (index >= 63 && index <= 67) return Route::kFlag;
  if (index >= 69 && index <= 76) return Route::kFlag;
  switch (index) {
    case 32: case 41: case 42: return Route::kFlag;
    default: return Route::kNone;
  }
}

std::string Didl(const std::string& title) {
  return "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
         "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item id=\"1\" parentID=\"0\" restricted=\"1\">"
         "<dc:title>" + title + "</dc:title></item></DIDL-Lite>";
}

// A valid new value for each variable. The route tests start from Initialize alone, where every value
// is "", so each of these is a change (TransportPlaySpeed has only one valid text, its initial one).
std::string NewValue(int index) {
  switch (index) {
    case 0: return "PLAYING";
    case 1: return "ERROR_OCCURRED";
    case 2: return "NETWORK";
    case 3: return "HDD";
    case 6: return "SHUFFLE";
    case 7: return "1";
    case 8: return "WRITABLE";
    case 9: return "1:LP";
    case 11: return "42";
    case 12: return "7";
    case 23: return "-15";
    case 24: return "15";
    case 15: case 18: case 20: return Didl("Song " + std::to_string(index));
    default: return "value " + std::to_string(index) + " & more";
  }
}

// The transport listener's operation for the variables that have one, else null.
const char* ListenerOperation(int index) {
  static const char* const kOperations[] = {
      "NotifyTransportState", "NotifyTransportStatus", "NotifyPlaybackStorageMedium",
      "NotifyRecordStorageMedium", "NotifyPossiblePlaybackStorageMedia", "NotifyPossibleRecordStorageMedia",
      "NotifyCurrentPlayMode", "NotifyTransportPlaySpeed", "NotifyRecordMediumWriteStatus",
      "NotifyCurrentRecordQualityMode", "NotifyPossibleRecordQualityModes", "NotifyNumberOfTracks",
      "NotifyCurrentTrack", "NotifyCurrentTrackDuration", "NotifyCurrentMediaDuration",
      "NotifyCurrentTrackMetaData", "NotifyCurrentTrackURI", "NotifyAVTransportURI",
      "NotifyAVTransportURIMetaData", "NotifyNextAVTransportURI", "NotifyNextAVTransportURIMetaData",
  };
  if (index >= 0 && index <= 20) return kOperations[index];
  if (index == 25) return "NotifyCurrentTransportActions";
  return nullptr;
}

// The (name, value) pairs of a LastChange document, instance by instance.
struct DecodedEntry {
  unsigned long instance;
  std::string name;
  std::string value;
  bool operator==(const DecodedEntry& other) const {
    return instance == other.instance && name == other.name && value == other.value;
  }
};
std::ostream& operator<<(std::ostream& out, const DecodedEntry& entry) {
  return out << "{" << entry.instance << ", " << entry.name << ", " << entry.value << "}";
}

std::vector<DecodedEntry> Decode(const std::string& xml) {
  marlo::LastChange document;
  EXPECT_EQ(document.SetXMLText(xml.c_str()), 0) << xml;
  std::vector<DecodedEntry> entries;
  for (int i = 0; const marlo::LastChange::VariableSet* set = document.GetVariableSet(i); ++i) {
    for (int j = 0; const char* name = document.GetVariableName(set, j); ++j) {
      entries.push_back({document.GetInstanceId(set), name, document.GetVariableValue(set, j)});
    }
  }
  return entries;
}

TEST(SinkCTSSStoreRoutes, EveryVariableChangeTakesItsRoute) {
  for (int index = 0; index < kCount; ++index) {
    const std::string value = NewValue(index);
    SCOPED_TRACE("index " + std::to_string(index) + " \"" + value + "\"");
    auto store = NewInitializedStore<Standard>();
    AVTransportThread thread(*store);
    ASSERT_EQ(Change(*store, index, value.c_str()), 0);
    EXPECT_EQ(Get(*store, index), value);
    const int32_t sent = store->SendEvent();
    const auto batches = thread.Drain();
    switch (StandardRoute(index)) {
      case Route::kLastChange: {
        EXPECT_EQ(sent, 0);
        ASSERT_EQ(batches.size(), 1u);
        ASSERT_EQ(batches[0].size(), 1u);
        EXPECT_EQ(batches[0][0].first, "LastChange");
        EXPECT_EQ(Decode(batches[0][0].second),
                  (std::vector<DecodedEntry>{{0, SINK_UPNP_stateVariableNameTable[index], value}}));
        break;
      }
      case Route::kNotify:
        EXPECT_EQ(sent, -962);
        EXPECT_EQ(batches, (std::vector<RecordingEventHandler::Batch>{
                               {{index == SINK_UPNP_PLAYLIST_INDEX ? "Index" : "Metatext", value}}}));
        break;
      case Route::kNone:
      case Route::kFlag:
        EXPECT_EQ(sent, -962);
        EXPECT_TRUE(batches.empty());
        break;
    }
    EXPECT_EQ(store->Finalize(), 0);
  }
}

TEST(OpenHomeStoreRoutes, EveryVariableChangeTakesItsRoute) {
  for (int index = 0; index < kCount; ++index) {
    const std::string value = NewValue(index);
    SCOPED_TRACE("index " + std::to_string(index) + " \"" + value + "\"");
    auto store = NewInitializedStore<OpenHome>();  // clears the change flags
    RecordingAVTEventListener listener;
    ASSERT_EQ(store->RegisterApplicationAVTEventListener(&listener), 0);
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(Change(*store, index, value.c_str()), 0);
    EXPECT_EQ(Get(*store, index), value);
    const Route route = OpenHomeRoute(index);

    std::vector<int> expectedFlags;
    if (route == Route::kFlag) expectedFlags.push_back(index);
    if (index == SINK_UPNP_AVT_TRANSPORT_STATE) expectedFlags.push_back(SINK_UPNP_PLAYLIST_TRANSPORT_STATE);
    EXPECT_EQ(SetFlags(), expectedFlags);
    EXPECT_EQ(RecordedEntries(), route == Route::kLastChange ? 1u : 0u);

    // SendEvent (no eventing thread registered) clears the flags and hands the pending document to the
    // listener only.
    EXPECT_EQ(store->SendEvent(), 0);
    EXPECT_EQ(SetFlags(), std::vector<int>{});
    EXPECT_EQ(DMR_CMN_FaultInjection::CallCount(FP::kLastChangeSetXMLText), route == Route::kLastChange ? 1u : 0u);
    const std::vector<ListenerCall> calls = listener.Calls();
    const char* operation = ListenerOperation(index);
    if (route == Route::kLastChange && operation != nullptr) {
      ASSERT_EQ(calls.size(), 1u);
      EXPECT_EQ(calls[0].operation, operation);
      EXPECT_EQ(calls[0].value, value);
    } else {
      EXPECT_TRUE(calls.empty());
    }
    EXPECT_EQ(store->Finalize(), 0);
  }
}

TEST(OpenHomeStoreRoutes, MetadataChangesReachTheListenerParsed) {
  auto store = NewInitializedStore<OpenHome>();
  RecordingAVTEventListener listener;
  ASSERT_EQ(store->RegisterApplicationAVTEventListener(&listener), 0);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_AV_TRANSPORT_URI_METADATA, Didl("Blue").c_str()), 0);
  ASSERT_EQ(store->SendEvent(), 0);
  EXPECT_EQ(listener.Calls(),
            (std::vector<ListenerCall>{{"NotifyAVTransportURIMetaData", Didl("Blue"), "Blue"}}));
}

// The OpenHome transport state (29) follows the AVTransport one in both stores.
struct FollowerCase {
  const char* state;
  const char* follower;  // null: 29 keeps what it held
};
const FollowerCase kFollowerCases[] = {
    {"STOPPED", "Stopped"},         {"NO_MEDIA_PRESENT", "Stopped"}, {"PLAYING", "Playing"},
    {"TRANSITIONING", "Buffering"}, {"PAUSED_PLAYBACK", "Paused"},   {"PAUSED_RECORDING", nullptr},
    {"RECORDING", nullptr},
};

template <typename M>
class StoreTransportStateRoute : public ::testing::Test {
 protected:
  void SetUp() override { DMR_CMN_FaultInjection::Reset(); }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }
};
TYPED_TEST_SUITE(StoreTransportStateRoute, BothStores, StoreNames);

TYPED_TEST(StoreTransportStateRoute, OpenHomeTransportStateFollowsEveryTransportState) {
  for (const FollowerCase& c : kFollowerCases) {
    SCOPED_TRACE(c.state);
    auto store = NewInitializedStore<TypeParam>();
    ASSERT_EQ(Change(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE, "Marker"), 0);
    DMR_CMN_FaultInjection::Reset();
    ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, c.state), 0);
    EXPECT_EQ(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE), c.state);
    EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), c.follower != nullptr ? c.follower : "Marker");
    // Only the AVTransport variable enters the pending document.
    EXPECT_EQ(RecordedEntries(), 1u);
  }
}

TEST(OpenHomeStoreRoutes, TransportStateChangeFlagsTheOpenHomeTransportStateInEveryCase) {
  for (const FollowerCase& c : kFollowerCases) {
    SCOPED_TRACE(c.state);
    auto store = NewInitializedStore<OpenHome>();
    ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, c.state), 0);
    EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_PLAYLIST_TRANSPORT_STATE});
  }
}

TEST(SinkCTSSStoreRoutes, TransportStateChangeSendsOnlyTheAVTransportVariable) {
  auto store = NewInitializedStore<Standard>();
  AVTransportThread thread(*store);
  ASSERT_EQ(Change(*store, SINK_UPNP_AVT_TRANSPORT_STATE, "PAUSED_PLAYBACK"), 0);
  ASSERT_EQ(store->SendEvent(), 0);
  const auto batches = thread.Drain();
  ASSERT_EQ(batches.size(), 1u);
  EXPECT_EQ(Decode(batches[0][0].second), (std::vector<DecodedEntry>{{0, "TransportState", "PAUSED_PLAYBACK"}}));
  EXPECT_EQ(Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE), "Paused");
}

}  // namespace
