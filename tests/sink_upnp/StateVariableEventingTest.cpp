// Eventing of the two state variable stores: name look-up, the OpenHome batch routing, PrepareLastChange,
// SendEvent, GetLastChange, the registration of eventing threads and application listeners, and the XML
// escaping of ConvertControlCharacter.
//
// Eventing threads deliver on their own workers. Where a test needs to know that nothing (more) arrives,
// it unregisters the thread first: a stopping thread delivers everything queued before it ends, so the
// recording handler's batches are then final.
//
// The stores' lock checks errors: a second Lock on the thread that holds it fails at once instead of
// hanging. LockIsFree uses this to tell whether an operation returned with the lock still held.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "ScopedFault.h"
#include "StateVariableStoreTestPeer.h"
#include "dmr_cmn/String.h"
#include "marlo/LastChange.h"
#include "marlo/Result.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using Standard = SINK_UPNP_SinkCTSSStateVariableManager;
using OpenHome = SINK_UPNP_OpenHomeStateVariableManager;
using Batch = RecordingEventHandler::Batch;
using Pair = RecordingEventHandler::Pair;
using FP = DMR_CMN_FaultPoint;

// Some code none of the runtime's operations answers by itself, for "any other failure".
constexpr int32_t kOtherFailure = -5;

SINK_UPNP_StateVariableName_t Var(int index) { return static_cast<SINK_UPNP_StateVariableName_t>(index); }

template <typename M>
ScopedStore<M> NewStore() {
  return ScopedStore<M>(new (std::nothrow) M);
}

template <typename M>
int32_t Change(M& store, int index, const char* text) {
  DMR_CMN_String value;
  value.SetCString(text);
  return store.ChangeStateVariable(Var(index), &value);
}

// The stored value, or "<error N>" when it cannot be read.
template <typename M>
std::string Get(M& store, int index) {
  DMR_CMN_String out;
  const int32_t result = store.GetStateVariable(Var(index), &out);
  if (result != 0) return "<error " + std::to_string(result) + ">";
  return out.GetCString();
}

// True when the store's lock can be taken by this thread (it is not held).
template <typename M>
bool LockIsFree(M& store) {
  DMR_CMN_String out;
  return store.GetStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &out) == 0;
}

// Hands a ready batch to SendEventForOpenHome.
template <typename M>
int32_t SendBatch(M& store, const std::vector<Pair>& pairs) {
  DMR_CMN_String names[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];
  DMR_CMN_String values[SINK_UPNP_NOTIFY_ARGUMENT_COUNT];
  for (std::size_t i = 0; i < pairs.size(); ++i) {
    names[i].SetCString(pairs[i].first.c_str());
    values[i].SetCString(pairs[i].second.c_str());
  }
  return store.SendEventForOpenHome(names, values, static_cast<long>(pairs.size()));
}

// The AVTransport LastChange document holding `pairs` under instance 0, as the document class writes it.
std::string AvtEvent(const std::vector<Pair>& pairs) {
  std::string xml = "<Event xmlns=\"urn:schemas-upnp-org:metadata-1-0/AVT/\">";
  if (pairs.empty()) return xml.substr(0, xml.size() - 1) + "/>";
  xml += "<InstanceID val=\"0\">";
  for (const Pair& pair : pairs) xml += "<" + pair.first + " val=\"" + pair.second + "\"/>";
  return xml + "</InstanceID></Event>";
}

// The variables of instance 0 of a LastChange document, in document order.
std::vector<Pair> ReadEvent(const std::string& xml) {
  marlo::LastChange document;
  std::vector<Pair> pairs;
  if (document.SetXMLText(xml.c_str()) != 0) return {{"<unreadable>", xml}};
  const marlo::LastChange::VariableSet* set = document.GetVariableSet(0);
  for (int j = 0; set != nullptr && document.GetVariableName(set, j) != nullptr; ++j) {
    pairs.emplace_back(document.GetVariableName(set, j), document.GetVariableValue(set, j));
  }
  return pairs;
}

const char kDidlFirst[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
    " xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\"><item id=\"1\" parentID=\"0\" restricted=\"1\">"
    "<dc:title>First Light</dc:title><upnp:class>object.item.audioItem.musicTrack</upnp:class></item></DIDL-Lite>";
const char kDidlSecond[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
    " xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\"><item id=\"2\" parentID=\"0\" restricted=\"1\">"
    "<dc:title>Rock &amp; Roll</dc:title><upnp:class>object.item.audioItem.musicTrack</upnp:class></item></DIDL-Lite>";
const char kDidlThird[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" xmlns:dc=\"http://purl.org/dc/elements/1.1/\""
    " xmlns:upnp=\"urn:schemas-upnp-org:metadata-1-0/upnp/\"><item id=\"3\" parentID=\"0\" restricted=\"1\">"
    "<dc:title>Next Up</dc:title><upnp:class>object.item.audioItem.musicTrack</upnp:class></item></DIDL-Lite>";

// What each store differs in, for the tests that run on both.
template <typename M>
struct StoreTraits;

template <>
struct StoreTraits<Standard> {
  static const char* const* Names() { return SINK_UPNP_stateVariableNameTable; }
  // The standard store sends (and reports to its listener) only with its AVTransport thread.
  static int32_t RegisterThreads(Standard& store, marlo::EventHandler* handler) {
    return store.RegisterAVTransportServiceEventListener(handler);
  }
};

template <>
struct StoreTraits<OpenHome> {
  static const char* const* Names() { return SINK_UPNP_stateVariableNameTableForOpenHome; }
  static int32_t RegisterThreads(OpenHome& store, marlo::EventHandler* handler) {
    int32_t result = store.RegisterPlaylistServiceEventListener(handler);
    if (result == 0) result = store.RegisterProductServiceEventListener(handler);
    if (result == 0) result = store.RegisterTimeServiceEventListener(handler);
    if (result == 0) result = store.RegisterInfoServiceEventListener(handler);
    if (result == 0) result = store.RegisterSenderServiceEventListener(handler);
    return result;
  }
};

class StoreNames {
 public:
  template <typename T>
  static std::string GetName(int) {
    return std::is_same<T, Standard>::value ? "Standard" : "OpenHome";
  }
};

using StoreTypes = ::testing::Types<Standard, OpenHome>;

// ---------------------------------------------------------------------------------------------------
// Name look-up

TEST(ConvConstNum, TransportStateFindsTheAVTransportIndexNeverThePlaylistOne) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(0, standard->ConvConstNum("TransportState"));
  EXPECT_EQ(0, openHome->ConvConstNum("TransportState"));
}

TEST(ConvConstNum, MetadataFindsThePlaylistIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(42, standard->ConvConstNum("Metadata"));
  EXPECT_EQ(42, openHome->ConvConstNum("Metadata"));
}

TEST(ConvConstNum, UriFindsThePlaylistIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(41, standard->ConvConstNum("Uri"));
  EXPECT_EQ(41, openHome->ConvConstNum("Uri"));
}

TEST(ConvConstNum, DurationFindsTheTimeIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(64, standard->ConvConstNum("Duration"));
  EXPECT_EQ(64, openHome->ConvConstNum("Duration"));
}

TEST(ConvConstNum, TrackCountFindsTheTimeIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(63, standard->ConvConstNum("TrackCount"));
  EXPECT_EQ(63, openHome->ConvConstNum("TrackCount"));
}

TEST(ConvConstNum, AttributesFindsTheProductIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(62, standard->ConvConstNum("Attributes"));
  EXPECT_EQ(62, openHome->ConvConstNum("Attributes"));
}

TEST(ConvConstNum, StandardStoreDoesNotKnowCodecName) {
  auto standard = NewStore<Standard>();
  EXPECT_EQ(-1, standard->ConvConstNum("CodecName"));
  EXPECT_EQ(76, standard->ConvConstNum("CodeName"));
}

TEST(ConvConstNum, OpenHomeStoreDoesNotKnowCodeName) {
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(-1, openHome->ConvConstNum("CodeName"));
  EXPECT_EQ(76, openHome->ConvConstNum("CodecName"));
}

TEST(ConvConstNum, UnknownNameGivesMinusOne) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  EXPECT_EQ(-1, standard->ConvConstNum("Volume"));
  EXPECT_EQ(-1, openHome->ConvConstNum(""));
}

TEST(ConvConstNum, ComparisonIsCaseSensitive) {
  auto standard = NewStore<Standard>();
  EXPECT_EQ(-1, standard->ConvConstNum("transportstate"));
  EXPECT_EQ(-1, standard->ConvConstNum("TransportState "));
}

TEST(ConvConstNum, EveryNameFindsItsLowestIndex) {
  auto standard = NewStore<Standard>();
  auto openHome = NewStore<OpenHome>();
  for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
    int standardLowest = index;
    int openHomeLowest = index;
    for (int j = index - 1; j >= 0; --j) {
      if (std::strcmp(SINK_UPNP_stateVariableNameTable[j], SINK_UPNP_stateVariableNameTable[index]) == 0) {
        standardLowest = j;
      }
      if (std::strcmp(SINK_UPNP_stateVariableNameTableForOpenHome[j],
                      SINK_UPNP_stateVariableNameTableForOpenHome[index]) == 0) {
        openHomeLowest = j;
      }
    }
    EXPECT_EQ(standardLowest, standard->ConvConstNum(SINK_UPNP_stateVariableNameTable[index])) << index;
    EXPECT_EQ(openHomeLowest, openHome->ConvConstNum(SINK_UPNP_stateVariableNameTableForOpenHome[index]))
        << index;
  }
}

// ---------------------------------------------------------------------------------------------------
// Fixtures

// An initialized standard store (all values "") with its AVTransport eventing thread registered.
class StandardEventing : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    store_ = NewStore<Standard>();
    ASSERT_NE(nullptr, store_);
    ASSERT_EQ(0, store_->Initialize());
    ASSERT_EQ(0, store_->RegisterAVTransportServiceEventListener(&avt_));
  }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }

  // Unregisters the eventing thread, which first delivers all it has queued: avt_'s batches are final.
  void StopEventing() { ASSERT_EQ(0, store_->UnregisterAVTransportServiceEventListener()); }

  RecordingEventHandler avt_;
  RecordingAVTEventListener listener_;
  RecordingCMSEventListener cmsListener_;
  ScopedStore<Standard> store_;  // last: deleted before the handler and listeners it uses
};

// An initialized OpenHome store (all values "") with all five eventing threads registered, each with its
// own recording handler.
class OpenHomeEventing : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    store_ = NewStore<OpenHome>();
    ASSERT_NE(nullptr, store_);
    ASSERT_EQ(0, store_->Initialize());
    ASSERT_EQ(0, store_->RegisterPlaylistServiceEventListener(&playlist_));
    ASSERT_EQ(0, store_->RegisterProductServiceEventListener(&product_));
    ASSERT_EQ(0, store_->RegisterTimeServiceEventListener(&time_));
    ASSERT_EQ(0, store_->RegisterInfoServiceEventListener(&info_));
    ASSERT_EQ(0, store_->RegisterSenderServiceEventListener(&sender_));
  }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }

  // Unregisters every eventing thread still registered: the handlers' batches are then final.
  void StopEventing() {
    for (int32_t result :
         {store_->UnregisterPlaylistServiceEventListener(), store_->UnregisterProductServiceEventListener(),
          store_->UnregisterTimeServiceEventListener(), store_->UnregisterInfoServiceEventListener(),
          store_->UnregisterSenderServiceEventListener()}) {
      ASSERT_TRUE(result == 0 || result == SINK_UPNP_ERR_NOT_REGISTERED) << result;
    }
  }

  std::size_t TotalBatches() const {
    return playlist_.BatchCount() + product_.BatchCount() + time_.BatchCount() + info_.BatchCount() +
           sender_.BatchCount();
  }

  static bool NoFlagSet() {
    for (int32_t flag : SINK_UPNP_changeStateVariableTablet) {
      if (flag != 0) return false;
    }
    return true;
  }

  RecordingEventHandler playlist_;
  RecordingEventHandler product_;
  RecordingEventHandler time_;
  RecordingEventHandler info_;
  RecordingEventHandler sender_;
  RecordingAVTEventListener listener_;
  ScopedStore<OpenHome> store_;
};

// ---------------------------------------------------------------------------------------------------
// SendEventForOpenHome: the OpenHome store routes a batch by its first name, looked up from 29 upward.

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsTransportStateGoesToThePlaylistThread) {
  EXPECT_EQ(0, SendBatch(*store_, {{"TransportState", "Playing"}, {"Repeat", "true"}}));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"TransportState", "Playing"}, {"Repeat", "true"}}}), playlist_.Batches());
  EXPECT_EQ(1u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsStatusGoesToTheSenderThread) {
  EXPECT_EQ(0, SendBatch(*store_, {{"Status", "Enabled"}}));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Status", "Enabled"}}}), sender_.Batches());
  EXPECT_EQ(1u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsMetadataGoesToThePlaylistThread) {
  // "Metadata" is also an Info and a Sender name; the lowest index from 29 on decides.
  EXPECT_EQ(0, SendBatch(*store_, {{"Metadata", "<DIDL-Lite/>"}, {"Uri", "http://h/1"}}));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Metadata", "<DIDL-Lite/>"}, {"Uri", "http://h/1"}}}), playlist_.Batches());
  EXPECT_EQ(1u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsUnknownAnswersZeroAndSendsNothing) {
  EXPECT_EQ(0, SendBatch(*store_, {{"Volume", "40"}, {"Id", "3"}}));
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsOnlyAnAVTransportNameSendsNothing) {
  // The look-up starts at 29: "TransportStatus" (index 1) is not found.
  EXPECT_EQ(0, SendBatch(*store_, {{"TransportStatus", "OK"}}));
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWhoseFirstNameIsCodeNameSendsNothing) {
  EXPECT_EQ(0, SendBatch(*store_, {{"CodeName", "FLAC"}}));
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, EachServiceReceivesTheBatchesOfItsFirstNames) {
  EXPECT_EQ(0, SendBatch(*store_, {{"ManufacturerName", "a"}}));
  EXPECT_EQ(0, SendBatch(*store_, {{"Attributes", "b"}}));     // 62 before 82
  EXPECT_EQ(0, SendBatch(*store_, {{"Seconds", "c"}}));
  EXPECT_EQ(0, SendBatch(*store_, {{"Duration", "d"}}));       // 64 before 71
  EXPECT_EQ(0, SendBatch(*store_, {{"TrackCount", "e"}}));     // 63 before 66
  EXPECT_EQ(0, SendBatch(*store_, {{"CodecName", "f"}}));
  EXPECT_EQ(0, SendBatch(*store_, {{"Metatext", "g"}}));
  EXPECT_EQ(0, SendBatch(*store_, {{"PresentationUrl", "h"}}));
  EXPECT_EQ(0, SendBatch(*store_, {{"IdArrayChanged", "i"}}));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"ManufacturerName", "a"}}, {{"Attributes", "b"}}}), product_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"Seconds", "c"}}, {{"Duration", "d"}}, {{"TrackCount", "e"}}}),
            time_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"CodecName", "f"}}, {{"Metatext", "g"}}}), info_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"PresentationUrl", "h"}}}), sender_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"IdArrayChanged", "i"}}}), playlist_.Batches());
}

TEST_F(OpenHomeEventing, BatchIsForwardedWithItsCount) {
  DMR_CMN_String names[3];
  DMR_CMN_String values[3];
  names[0].SetCString("Id");
  values[0].SetCString("4");
  names[1].SetCString("Shuffle");
  values[1].SetCString("true");
  names[2].SetCString("TracksMax");
  values[2].SetCString("1000");
  EXPECT_EQ(0, store_->SendEventForOpenHome(names, values, 2));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Id", "4"}, {"Shuffle", "true"}}}), playlist_.Batches());
}

TEST_F(OpenHomeEventing, BatchForAServiceWithoutThreadAnswersNotRegistered) {
  ASSERT_EQ(0, store_->UnregisterSenderServiceEventListener());
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, SendBatch(*store_, {{"Status", "Enabled"}}));
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchWithNullNamesAnswersNullArgument) {
  DMR_CMN_String values[1];
  values[0].SetCString("x");
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, store_->SendEventForOpenHome(nullptr, values, 1));
}

TEST_F(OpenHomeEventing, BatchThatTheThreadCannotQueueForLackOfMemoryAnswersNoMemory) {
  ScopedFault fault(FP::kEventingThreadNotify, 1, DMR_CMN_ERR_NO_MEMORY);
  EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, SendBatch(*store_, {{"Id", "1"}}));
  EXPECT_EQ(1u, fault.Fired());
}

TEST_F(OpenHomeEventing, BatchThatTheThreadRefusesAnswersTheThreadsResult) {
  ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
  EXPECT_EQ(kOtherFailure, SendBatch(*store_, {{"Id", "1"}}));
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, BatchTakesNoLockAndNeedsNoStoredValue) {
  ScopedFault fault(FP::kLockLock, 1, kOtherFailure, true);
  EXPECT_EQ(0, SendBatch(*store_, {{"Id", "1"}}));
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kLockLock));
}

TEST_F(StandardEventing, BatchGoesWholeToTheAVTransportThread) {
  EXPECT_EQ(0, SendBatch(*store_, {{"Index", "3"}, {"Metatext", "x"}}));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Index", "3"}, {"Metatext", "x"}}}), avt_.Batches());
}

TEST_F(StandardEventing, BatchWithoutTheAVTransportThreadAnswersNotRegistered) {
  StopEventing();
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, SendBatch(*store_, {{"Index", "3"}}));
}

TEST_F(StandardEventing, BatchAnswersTheThreadsResult) {
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, SendBatch(*store_, {{"Index", "3"}}));
  }
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(kOtherFailure, SendBatch(*store_, {{"Index", "3"}}));
  }
  StopEventing();
  EXPECT_EQ(0u, avt_.BatchCount());
}

// ---------------------------------------------------------------------------------------------------
// SendEvent, standard store

TEST(StandardSendEvent, UninitializedStoreAnswersNotInitialized) {
  auto store = NewStore<Standard>();
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, store->SendEvent());
}

TEST_F(StandardEventing, SendEventWithoutTheThreadAnswersNotRegisteredAndKeepsThePendingDocument) {
  StopEventing();
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "2"));
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, store_->SendEvent());

  RecordingEventHandler later;
  ASSERT_EQ(0, store_->RegisterAVTransportServiceEventListener(&later));
  EXPECT_EQ(0, store_->SendEvent());
  ASSERT_EQ(0, store_->UnregisterAVTransportServiceEventListener());
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"CurrentTrack", "2"}})}}}), later.Batches());
}

TEST_F(StandardEventing, SendEventRightAfterInitializeVariablesHasNothingToSend) {
  DMR_CMN_String protocolInfo;
  protocolInfo.SetCString("http-get:*:audio/mpeg:*");
  ASSERT_EQ(0, store_->InitializeVariables(&protocolInfo));
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());
  EXPECT_TRUE(LockIsFree(*store_));
  StopEventing();
  EXPECT_EQ(0u, avt_.BatchCount());
}

TEST_F(StandardEventing, SendEventSendsThePendingDocumentAsOneLastChangeBatch) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_TRUE(LockIsFree(*store_));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"TransportState", "PLAYING"}, {"CurrentTrack", "3"}})}}}),
            avt_.Batches());
}

TEST_F(StandardEventing, SendEventConsumesThePendingDocument) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  ASSERT_EQ(0, store_->SendEvent());
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(1u, avt_.BatchCount());
}

TEST_F(StandardEventing, TwoChangesOfTransportStateBeforeOneSendProduceOneNotification) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "TRANSITIONING"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  // The document keeps one element for a variable set twice, with the last value.
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"TransportState", "PLAYING"}})}}}), avt_.Batches());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyTransportState", "PLAYING", ""}}), listener_.Calls());
}

TEST_F(StandardEventing, SendEventWhoseLockCannotBeTakenAnswersMinusOneAndKeepsThePendingDocument) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  {
    ScopedFault fault(FP::kLockLock, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"CurrentTrack", "3"}})}}}), avt_.Batches());
}

TEST_F(StandardEventing, SendEventWithNothingPendingWhoseReleaseFailsAnswersMinusOne) {
  ScopedFault fault(FP::kLockUnlock, 1, kOtherFailure);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*store_));
}

TEST_F(StandardEventing, SendEventWhoseDocumentHasNoTextAnswersMinusOneAndKeepsIt) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  {
    ScopedFault fault(FP::kLastChangeGetXMLText, 1, 0);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"CurrentTrack", "3"}})}}}), avt_.Batches());
}

TEST_F(StandardEventing, SendEventThatRunsOutOfMemoryAnswersNoMemoryAndStillConsumesTheDocument) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, avt_.BatchCount());
  // The listener hears of the change all the same.
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), listener_.Calls());
}

TEST_F(StandardEventing, SendEventThatTheThreadRefusesAnswersMinusOneWithTheLockHeld) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_FALSE(LockIsFree(*store_));
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), listener_.Calls());
}

TEST_F(StandardEventing, SendEventWhoseFinalReleaseFailsAnswersMinusOneAfterSending) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  {
    ScopedFault fault(FP::kLockUnlock, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_FALSE(LockIsFree(*store_));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"CurrentTrack", "3"}})}}}), avt_.Batches());
}

TEST_F(StandardEventing, SendEventWithoutListenerOnlySends) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, store_->UnregisterApplicationAVTEventListener());
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(1u, avt_.BatchCount());
  EXPECT_TRUE(listener_.Calls().empty());
}

TEST_F(StandardEventing, ListenerIsNotToldOfVariablesOutsideItsTable) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  // Product, Info and Sender variables enter the standard store's document but have no listener operation.
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PRODUCT_MANUFACTURER_NAME, "Maker"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_TRACK_COUNT, "4"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_URI, "http://h/x"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_SENDER_STATUS, "Enabled"));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"ManufacturerName", "Maker"},
                                                           {"TrackCount", "4"},
                                                           {"Uri", "http://h/x"},
                                                           {"Status", "Enabled"}})}}}),
            avt_.Batches());
  EXPECT_TRUE(listener_.Calls().empty());
}

TEST_F(StandardEventing, ListenerCallsFollowTheOrderOfTheDocument) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "5"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "STOPPED"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "6"));  // keeps its first place
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "6", ""}, {"NotifyTransportState", "STOPPED", ""}}),
            listener_.Calls());
}

TEST_F(StandardEventing, ConnectionListenerIsKeptButNeverCalled) {
  ASSERT_EQ(0, store_->RegisterApplicationCMSEventListener(&cmsListener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_CMS_SINK_PROTOCOL_INFO, "http-get:*:*:*"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_CMS_CURRENT_CONNECTION_IDS, "1"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_TRUE(cmsListener_.Calls().empty());
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({{"CurrentTrack", "3"}})}}}), avt_.Batches());
}

TEST_F(StandardEventing, IndexAndMetatextChangesAreSentAtOnceThroughTheAVTransportThread) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_INDEX, "4"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_METATEXT, "Now playing"));
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());  // nothing was pending
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Index", "4"}}, {{"Metatext", "Now playing"}}}), avt_.Batches());
}

TEST_F(StandardEventing, IndexChangeWhoseNotificationFailsIsStoredAndAnswersZero) {
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_INDEX, "4"));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_EQ("4", Get(*store_, SINK_UPNP_PLAYLIST_INDEX));
}

TEST_F(StandardEventing, IndexChangeWithoutTheAVTransportThreadIsOnlyStored) {
  StopEventing();
  EXPECT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_INDEX, "4"));
  EXPECT_EQ("4", Get(*store_, SINK_UPNP_PLAYLIST_INDEX));
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadNotify));
}

// ---------------------------------------------------------------------------------------------------
// SendEvent, OpenHome store

TEST(OpenHomeSendEvent, UninitializedStoreAnswersNotInitialized) {
  auto store = NewStore<OpenHome>();
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, store->SendEvent());
}

TEST_F(OpenHomeEventing, SendEventSendsEachServicesFlaggedVariablesAsOneBatch) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"));  // flags 29
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_REPEAT, "true"));         // no flag
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_METADATA, "m7"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_URI, "http://h/7.flac"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "7"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_TIME_SECONDS, "12"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_TIME_TRACK_COUNT, "3"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_TIME_DURATION, "215"));
  const std::vector<std::pair<int, const char*>> info = {
      {SINK_UPNP_INFO_CODEC_NAME, "FLAC"}, {SINK_UPNP_INFO_TRACK_COUNT, "3"}, {SINK_UPNP_INFO_DETAILS_COUNT, "5"},
      {SINK_UPNP_INFO_METATEXT_COUNT, "2"}, {SINK_UPNP_INFO_URI, "http://h/i.flac"}, {SINK_UPNP_INFO_METADATA, "im"},
      {SINK_UPNP_INFO_DURATION, "216"}, {SINK_UPNP_INFO_BIT_RATE, "1411"}, {SINK_UPNP_INFO_BIT_DEPTH, "16"},
      {SINK_UPNP_INFO_SAMPLE_RATE, "44100"}, {SINK_UPNP_INFO_LOSSLESS, "true"}, {SINK_UPNP_INFO_METATEXT, "x"}};
  for (const auto& change : info) ASSERT_EQ(0, Change(*store_, change.first, change.second));
  // No change flags Product or Sender variables; a flag that stands is sent all the same.
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PRODUCT_STANDBY, "true"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PRODUCT_MANUFACTURER_NAME, "Maker"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_SENDER_STATUS, "Enabled"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_SENDER_PRESENTATION_URL, "http://h/s"));
  SINK_UPNP_changeStateVariableTablet[SINK_UPNP_PRODUCT_STANDBY] = 1;
  SINK_UPNP_changeStateVariableTablet[SINK_UPNP_PRODUCT_MANUFACTURER_NAME] = 1;
  SINK_UPNP_changeStateVariableTablet[SINK_UPNP_SENDER_STATUS] = 1;
  SINK_UPNP_changeStateVariableTablet[SINK_UPNP_SENDER_PRESENTATION_URL] = 1;

  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_TRUE(NoFlagSet());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"TransportState", "Playing"}, {"Id", "7"}, {"Uri", "http://h/7.flac"},
                                 {"Metadata", "m7"}}}),
            playlist_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"ManufacturerName", "Maker"}, {"Standby", "true"}}}), product_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"TrackCount", "3"}, {"Duration", "215"}, {"Seconds", "12"}}}), time_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"TrackCount", "3"}, {"DetailsCount", "5"}, {"Uri", "http://h/i.flac"},
                                 {"Metadata", "im"}, {"Duration", "216"}, {"BitRate", "1411"}, {"BitDepth", "16"},
                                 {"SampleRate", "44100"}, {"Lossless", "true"}, {"CodecName", "FLAC"}}}),
            info_.Batches());
  EXPECT_EQ((std::vector<Batch>{{{"PresentationUrl", "http://h/s"}, {"Status", "Enabled"}}}), sender_.Batches());
}

TEST_F(OpenHomeEventing, SendEventSendsTheServicesInPlaylistProductTimeInfoSenderOrder) {
  // The n-th notification is made to fail: the service that misses its batch was sent n-th.
  const RecordingEventHandler* const order[] = {&playlist_, &product_, &time_, &info_, &sender_};
  const int flagged[] = {SINK_UPNP_PLAYLIST_ID, SINK_UPNP_PRODUCT_STANDBY, SINK_UPNP_TIME_SECONDS,
                         SINK_UPNP_INFO_BIT_RATE, SINK_UPNP_SENDER_STATUS};
  for (unsigned long n = 1; n <= 5; ++n) {
    for (int index : flagged) SINK_UPNP_changeStateVariableTablet[index] = 1;
    std::size_t before[5];
    for (int s = 0; s < 5; ++s) before[s] = order[s]->BatchCount();
    {
      ScopedFault fault(FP::kEventingThreadNotify, n, kOtherFailure);
      EXPECT_EQ(0, store_->SendEvent());  // nothing pending: the failed send is not looked at
      EXPECT_EQ(1u, fault.Fired());
      EXPECT_EQ(5u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadNotify));
    }
    for (int s = 0; s < 5; ++s) {
      const std::size_t expected = before[s] + (s + 1 == static_cast<int>(n) ? 0 : 1);
      EXPECT_TRUE(order[s]->WaitForBatches(expected)) << "n " << n << " service " << s;
    }
  }
  StopEventing();
  for (const RecordingEventHandler* handler : order) EXPECT_EQ(4u, handler->BatchCount());
}

TEST_F(OpenHomeEventing, SendEventWithNothingFlaggedSendsNothing) {
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, ChangeOfRepeatSetsNoFlagAndSendEventSendsNothingForIt) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_REPEAT, "true"));
  EXPECT_EQ(0, SINK_UPNP_changeStateVariableTablet[SINK_UPNP_PLAYLIST_REPEAT]);
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, FlagOtherThanOneIsNeitherSentNorCleared) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_BIT_RATE, "320"));
  SINK_UPNP_changeStateVariableTablet[SINK_UPNP_INFO_BIT_RATE] = 2;
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_BIT_DEPTH, "24"));
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_EQ(2, SINK_UPNP_changeStateVariableTablet[SINK_UPNP_INFO_BIT_RATE]);
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"BitDepth", "24"}}}), info_.Batches());
}

TEST_F(OpenHomeEventing, ServiceWithoutThreadDropsItsChanges) {
  ASSERT_EQ(0, store_->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_TIME_SECONDS, "12"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_TRUE(NoFlagSet());

  RecordingEventHandler laterTime;
  ASSERT_EQ(0, store_->RegisterTimeServiceEventListener(&laterTime));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, laterTime.BatchCount());
  EXPECT_EQ(0u, time_.BatchCount());
  EXPECT_EQ((std::vector<Batch>{{{"Id", "2"}}}), playlist_.Batches());
}

TEST_F(OpenHomeEventing, SentFlagsAreNotSentAgain) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(1u, playlist_.BatchCount());
}

TEST_F(OpenHomeEventing, SendEventWhoseLockCannotBeTakenAnswersMinusOneAndKeepsTheFlags) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  {
    ScopedFault fault(FP::kLockLock, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(1, SINK_UPNP_changeStateVariableTablet[SINK_UPNP_PLAYLIST_ID]);
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Id", "2"}}}), playlist_.Batches());
}

TEST_F(OpenHomeEventing, FailedSendWithNothingPendingIsNotLookedAtAndClearsTheFlags) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(0, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_TRUE(NoFlagSet());
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
}

TEST_F(OpenHomeEventing, SendEventWithNothingPendingWhoseReleaseFailsAnswersMinusOne) {
  ScopedFault fault(FP::kLockUnlock, 1, kOtherFailure);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*store_));
}

TEST_F(OpenHomeEventing, PendingDocumentGoesOnlyToTheListener) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATUS, "ERROR_OCCURRED"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PRODUCT_STANDBY, "true"));  // in the document, no listener operation
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyTransportStatus", "ERROR_OCCURRED", ""}}), listener_.Calls());
}

TEST_F(OpenHomeEventing, TransportStateReachesTheListenerAndThePlaylistThread) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_TRANSPORT_STATE, "PAUSED_PLAYBACK"));
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"TransportState", "Paused"}}}), playlist_.Batches());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyTransportState", "PAUSED_PLAYBACK", ""}}), listener_.Calls());
}

TEST_F(OpenHomeEventing, PendingDocumentIsConsumedBySendEvent) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_EQ(0, store_->SendEvent());
  EXPECT_EQ(1u, listener_.Calls().size());
}

TEST_F(OpenHomeEventing, SendEventWhoseDocumentHasNoTextAnswersMinusOneAfterSendingTheBatches) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  {
    ScopedFault fault(FP::kLastChangeGetXMLText, 1, 0);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_TRUE(NoFlagSet());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Id", "2"}}}), playlist_.Batches());
}

TEST_F(OpenHomeEventing, SendEventThatRunsOutOfMemoryAnswersNoMemoryAndStillConsumesWhatWasPending) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_BIT_RATE, "320"));
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  EXPECT_TRUE(NoFlagSet());
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ(0u, TotalBatches());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), listener_.Calls());
}

TEST_F(OpenHomeEventing, SendEventThatTheThreadRefusesWithADocumentPendingAnswersMinusOneWithTheLockHeld) {
  ASSERT_EQ(0, store_->RegisterApplicationAVTEventListener(&listener_));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_INFO_BIT_RATE, "320"));
  {
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_FALSE(LockIsFree(*store_));
  EXPECT_TRUE(NoFlagSet());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), listener_.Calls());
}

TEST_F(OpenHomeEventing, ResultOfTheLastSendDecides) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));  // a document is pending
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_TIME_SECONDS, "9"));
  {
    // The Playlist send fails, the Time send after it succeeds.
    ScopedFault fault(FP::kEventingThreadNotify, 1, kOtherFailure);
    EXPECT_EQ(0, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  StopEventing();
  EXPECT_EQ(0u, playlist_.BatchCount());
  EXPECT_EQ((std::vector<Batch>{{{"Seconds", "9"}}}), time_.Batches());
}

TEST_F(OpenHomeEventing, SendEventWhoseFinalReleaseFailsAnswersMinusOne) {
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  ASSERT_EQ(0, Change(*store_, SINK_UPNP_PLAYLIST_ID, "2"));
  {
    ScopedFault fault(FP::kLockUnlock, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store_->SendEvent());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_FALSE(LockIsFree(*store_));
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"Id", "2"}}}), playlist_.Batches());
}

// ---------------------------------------------------------------------------------------------------
// Recording a change in the pending document (the document's own failures)

TEST_F(StandardEventing, PreparedEmptyDocumentIsSentAsAnEmptyEvent) {
  ASSERT_EQ(0, store_->PrepareLastChange());
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({})}}}), avt_.Batches());
}

TEST_F(StandardEventing, ChangeWhoseDocumentCannotBeCreatedIsStoredButNotRecorded) {
  {
    ScopedFault fault(FP::kLastChangeCreation, 1, 0);
    EXPECT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ("3", Get(*store_, SINK_UPNP_AVT_CURRENT_TRACK));
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());
}

TEST_F(StandardEventing, ChangeWhoseDocumentTypeIsRefusedIsStoredButNotRecorded) {
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, marlo::kErrorFailure);
    EXPECT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ("3", Get(*store_, SINK_UPNP_AVT_CURRENT_TRACK));
  EXPECT_EQ(SINK_UPNP_ERR_OUT_OF_RANGE, store_->SendEvent());
}

TEST_F(StandardEventing, ChangeWhoseEntryIsRefusedWithMinus1999CountsAsRecorded) {
  {
    ScopedFault fault(FP::kLastChangeSetStateVariable, 1, marlo::kErrorFailure);
    EXPECT_EQ(0, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*store_));
  // The document was created but holds nothing.
  EXPECT_EQ(0, store_->SendEvent());
  StopEventing();
  EXPECT_EQ((std::vector<Batch>{{{"LastChange", AvtEvent({})}}}), avt_.Batches());
}

TEST_F(StandardEventing, ChangeWhoseEntryFailsOtherwiseAnswersMinusOneWithTheLockHeld) {
  ScopedFault fault(FP::kLastChangeSetStateVariable, 1, marlo::kErrorInvalidArgument);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Change(*store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_FALSE(LockIsFree(*store_));
}

// ---------------------------------------------------------------------------------------------------
// Both stores: an initialized store (all values "") whose eventing threads all deliver to events_.

template <typename M>
class BothStores : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    store_ = NewStore<M>();
    ASSERT_NE(nullptr, store_);
    ASSERT_EQ(0, store_->Initialize());
    ASSERT_EQ(0, StoreTraits<M>::RegisterThreads(*store_, &events_));
  }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }

  RecordingEventHandler events_;
  RecordingAVTEventListener listener_;
  ScopedStore<M> store_;
};

template <typename M>
class PrepareLastChange : public BothStores<M> {};
template <typename M>
class TransportListener : public BothStores<M> {};
template <typename M>
class GetLastChange : public BothStores<M> {};
template <typename M>
class ConvertControlCharacter : public BothStores<M> {};
template <typename M>
class ApplicationListeners : public BothStores<M> {};
TYPED_TEST_SUITE(PrepareLastChange, StoreTypes, StoreNames);
TYPED_TEST_SUITE(TransportListener, StoreTypes, StoreNames);
TYPED_TEST_SUITE(GetLastChange, StoreTypes, StoreNames);
TYPED_TEST_SUITE(ConvertControlCharacter, StoreTypes, StoreNames);
TYPED_TEST_SUITE(ApplicationListeners, StoreTypes, StoreNames);

// --- PrepareLastChange

TYPED_TEST(PrepareLastChange, CreatesTheDocumentOnlyWhenNoneIsPending) {
  EXPECT_EQ(0, this->store_->PrepareLastChange());
  EXPECT_EQ(0, this->store_->PrepareLastChange());
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation));
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeSetType));
}

TYPED_TEST(PrepareLastChange, DocumentThatCannotBeCreatedAnswersNoMemory) {
  {
    ScopedFault fault(FP::kLastChangeCreation, 1, 0);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, this->store_->PrepareLastChange());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(0, this->store_->PrepareLastChange());
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation));
}

TYPED_TEST(PrepareLastChange, TypeRefusedWithMinus1999AnswersMinusOneAndDeletesTheDocument) {
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, marlo::kErrorFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->PrepareLastChange());
    EXPECT_EQ(1u, fault.Fired());
  }
  // None is pending any more: the next call creates one.
  EXPECT_EQ(0, this->store_->PrepareLastChange());
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation));
}

TYPED_TEST(PrepareLastChange, TypeRefusedOtherwiseAnswersMinusOneAndKeepsTheDocument) {
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, marlo::kErrorInvalidArgument);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->PrepareLastChange());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(0, this->store_->PrepareLastChange());
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeCreation));
}

TYPED_TEST(PrepareLastChange, CleanLastChangeDeletesThePendingDocument) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  this->store_->CleanLastChange();
  this->store_->CleanLastChange();  // none pending: nothing to do
  this->store_->SendEvent();
  EXPECT_TRUE(this->listener_.Calls().empty());
}

// --- The transport listener

TYPED_TEST(TransportListener, HearsEachOfItsTwentyTwoVariablesInDocumentOrder) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  struct Row {
    int index;
    const char* value;
    const char* operation;  // null: the variable has no listener operation
    const char* title;
  };
  const Row rows[] = {
      {SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING", "NotifyTransportState", ""},
      {SINK_UPNP_AVT_TRANSPORT_STATUS, "ERROR_OCCURRED", "NotifyTransportStatus", ""},
      {SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM, "NETWORK", "NotifyPlaybackStorageMedium", ""},
      {SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM, "HDD", "NotifyRecordStorageMedium", ""},
      {SINK_UPNP_AVT_POSSIBLE_PLAYBACK_STORAGE_MEDIA, "NETWORK,HDD", "NotifyPossiblePlaybackStorageMedia", ""},
      {SINK_UPNP_AVT_POSSIBLE_RECORD_STORAGE_MEDIA, "NONE", "NotifyPossibleRecordStorageMedia", ""},
      {SINK_UPNP_PRODUCT_MANUFACTURER_NAME, "Maker", nullptr, nullptr},
      {SINK_UPNP_AVT_CURRENT_PLAY_MODE, "REPEAT_ALL", "NotifyCurrentPlayMode", ""},
      {SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED, "1", "NotifyTransportPlaySpeed", ""},
      {SINK_UPNP_AVT_RECORD_MEDIUM_WRITE_STATUS, "WRITABLE", "NotifyRecordMediumWriteStatus", ""},
      {SINK_UPNP_AVT_CURRENT_RECORD_QUALITY_MODE, "2:HIGH", "NotifyCurrentRecordQualityMode", ""},
      {SINK_UPNP_AVT_POSSIBLE_RECORD_QUALITY_MODES, "0:EP,1:LP", "NotifyPossibleRecordQualityModes", ""},
      {SINK_UPNP_AVT_NUMBER_OF_TRACKS, "12", "NotifyNumberOfTracks", ""},
      {SINK_UPNP_AVT_CURRENT_TRACK, "3", "NotifyCurrentTrack", ""},
      {SINK_UPNP_AVT_CURRENT_TRACK_DURATION, "0:03:25", "NotifyCurrentTrackDuration", ""},
      {SINK_UPNP_AVT_CURRENT_MEDIA_DURATION, "1:02:03", "NotifyCurrentMediaDuration", ""},
      {SINK_UPNP_AVT_CURRENT_TRACK_METADATA, kDidlFirst, "NotifyCurrentTrackMetaData", "First Light"},
      {SINK_UPNP_AVT_CURRENT_TRACK_URI, "http://h/3.mp3", "NotifyCurrentTrackURI", ""},
      {SINK_UPNP_AVT_AV_TRANSPORT_URI, "http://h/a.mp3", "NotifyAVTransportURI", ""},
      {SINK_UPNP_AVT_AV_TRANSPORT_URI_METADATA, kDidlSecond, "NotifyAVTransportURIMetaData", "Rock & Roll"},
      {SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI, "http://h/b.mp3", "NotifyNextAVTransportURI", ""},
      {SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI_METADATA, kDidlThird, "NotifyNextAVTransportURIMetaData", "Next Up"},
      {SINK_UPNP_PRODUCT_ATTRIBUTES, "Info Time", nullptr, nullptr},
      {SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, "Play,Stop,Seek", "NotifyCurrentTransportActions", ""},
  };
  std::vector<ListenerCall> expected;
  for (const Row& row : rows) {
    ASSERT_EQ(0, Change(*this->store_, row.index, row.value)) << row.index;
    if (row.operation != nullptr) expected.push_back({row.operation, row.value, row.title});
  }
  ASSERT_EQ(22u, expected.size());
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_EQ(expected, this->listener_.Calls());
}

TYPED_TEST(TransportListener, VariablesThatNeverEnterTheDocumentAreNeverHeard) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_RELATIVE_TIME_POSITION, "0:00:10"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_ABSOLUTE_TIME_POSITION, "0:00:10"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, "10"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION, "10"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO, "x"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "1"));
  this->store_->SendEvent();
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "1", ""}}), this->listener_.Calls());
}

// --- Application listener registration (no state is checked)

TYPED_TEST(ApplicationListeners, NullTransportListenerAnswersMinusOneAndKeepsTheRegisteredOne) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->RegisterApplicationAVTEventListener(nullptr));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), this->listener_.Calls());
}

TYPED_TEST(ApplicationListeners, UnregisteredTransportListenerHearsNothingMore) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  EXPECT_EQ(0, this->store_->UnregisterApplicationAVTEventListener());
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_TRUE(this->listener_.Calls().empty());
}

TYPED_TEST(ApplicationListeners, SecondTransportListenerReplacesTheFirst) {
  RecordingAVTEventListener second;
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&second));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_TRUE(this->listener_.Calls().empty());
  EXPECT_EQ(1u, second.Calls().size());
  ASSERT_EQ(0, this->store_->UnregisterApplicationAVTEventListener());
}

TYPED_TEST(ApplicationListeners, RegistrationsNeedNoInitialize) {
  auto store = NewStore<TypeParam>();
  RecordingCMSEventListener cms;
  EXPECT_EQ(0, store->RegisterApplicationAVTEventListener(&this->listener_));
  EXPECT_EQ(0, store->UnregisterApplicationAVTEventListener());
  EXPECT_EQ(0, store->RegisterApplicationCMSEventListener(&cms));
  EXPECT_EQ(0, store->UnregisterApplicationCMSEventListener());
}

TYPED_TEST(ApplicationListeners, NullConnectionListenerAnswersMinusOne) {
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->RegisterApplicationCMSEventListener(nullptr));
  EXPECT_EQ(0, this->store_->UnregisterApplicationCMSEventListener());
}

TYPED_TEST(ApplicationListeners, ConnectionListenerIsNeverCalled) {
  RecordingCMSEventListener cms;
  ASSERT_EQ(0, this->store_->RegisterApplicationCMSEventListener(&cms));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_CMS_SINK_PROTOCOL_INFO, "http-get:*:*:*"));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_TRUE(cms.Calls().empty());
}

// --- GetLastChange

// A distinct valid value for each variable.
std::string DistinctValue(int index) {
  switch (index) {
    case SINK_UPNP_AVT_TRANSPORT_STATE: return "PLAYING";
    case SINK_UPNP_AVT_TRANSPORT_STATUS: return "ERROR_OCCURRED";
    case SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM: return "NETWORK";
    case SINK_UPNP_AVT_RECORD_STORAGE_MEDIUM: return "HDD";
    case SINK_UPNP_AVT_CURRENT_PLAY_MODE: return "REPEAT_ALL";
    case SINK_UPNP_AVT_TRANSPORT_PLAY_SPEED: return "1";
    case SINK_UPNP_AVT_RECORD_MEDIUM_WRITE_STATUS: return "WRITABLE";
    case SINK_UPNP_AVT_CURRENT_RECORD_QUALITY_MODE: return "2:HIGH";
    case SINK_UPNP_AVT_NUMBER_OF_TRACKS: return "11";
    case SINK_UPNP_AVT_CURRENT_TRACK: return "12";
    case SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION: return "-23";
    case SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION: return "24";
    default: return "v" + std::to_string(index);
  }
}

// The document's variables when every variable holds DistinctValue: every index but 21-24 and 26-28 in
// ascending order, a name met again keeping its first place and taking the later value.
std::vector<Pair> ExpectedFullDocument(const char* const* names) {
  std::vector<Pair> pairs;
  for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
    if ((index >= 21 && index <= 24) || (index >= 26 && index <= 28)) continue;
    bool seen = false;
    for (Pair& pair : pairs) {
      if (pair.first == names[index]) {
        pair.second = DistinctValue(index);
        seen = true;
      }
    }
    if (!seen) pairs.emplace_back(names[index], DistinctValue(index));
  }
  return pairs;
}

TYPED_TEST(GetLastChange, NullOutputAnswersNullArgumentBeforeAnythingElse) {
  auto uninitialized = NewStore<TypeParam>();
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, uninitialized->GetLastChange(nullptr));

  ScopedFault fault(FP::kLockLock, 1, kOtherFailure, true);
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, this->store_->GetLastChange(nullptr));
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kLockLock));
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeSetType));
}

TYPED_TEST(GetLastChange, UninitializedStoreAnswersNotInitialized) {
  auto store = NewStore<TypeParam>();
  DMR_CMN_String out;
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, store->GetLastChange(&out));
}

TYPED_TEST(GetLastChange, HoldsEveryVariableButThePositionsAndTheConnectionManagerOnes) {
  // Index 0 first (it rewrites 29), then 29 and the rest.
  for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
    ASSERT_EQ(0, Change(*this->store_, index, DistinctValue(index).c_str())) << index;
  }
  DMR_CMN_String out;
  ASSERT_EQ(0, this->store_->GetLastChange(&out));
  EXPECT_TRUE(LockIsFree(*this->store_));
  const std::vector<Pair> expected = ExpectedFullDocument(StoreTraits<TypeParam>::Names());
  ASSERT_EQ(69u, expected.size());  // 76 variables, 7 of them under a name met before
  EXPECT_EQ(expected, ReadEvent(out.GetCString()));
  EXPECT_EQ(AvtEvent({{"TransportState", "v29"}, {"TransportStatus", "ERROR_OCCURRED"}}).substr(0, 120),
            std::string(out.GetCString()).substr(0, 120));
}

TYPED_TEST(GetLastChange, TransportStateAppearsOnceWithThePlaylistValue) {
  DMR_CMN_String protocolInfo;
  protocolInfo.SetCString("http-get:*:audio/flac:*");
  ASSERT_EQ(0, this->store_->InitializeVariables(&protocolInfo));
  DMR_CMN_String out;
  ASSERT_EQ(0, this->store_->GetLastChange(&out));
  const std::vector<Pair> pairs = ReadEvent(out.GetCString());
  ASSERT_FALSE(pairs.empty());
  EXPECT_EQ(Pair("TransportState", "Stopped"), pairs[0]);
  int transportStates = 0;
  for (const Pair& pair : pairs) transportStates += pair.first == "TransportState" ? 1 : 0;
  EXPECT_EQ(1, transportStates);
}

TYPED_TEST(GetLastChange, UsesTheStoresOwnNameOfTheCodec) {
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_INFO_CODEC_NAME, "FLAC"));
  DMR_CMN_String out;
  ASSERT_EQ(0, this->store_->GetLastChange(&out));
  const char* name = StoreTraits<TypeParam>::Names()[SINK_UPNP_INFO_CODEC_NAME];
  const char* other = std::strcmp(name, "CodeName") == 0 ? "CodecName" : "CodeName";
  EXPECT_NE(std::string::npos, std::string(out.GetCString()).find("<" + std::string(name) + " val=\"FLAC\"/>"));
  EXPECT_EQ(std::string::npos, std::string(out.GetCString()).find(other));
}

TYPED_TEST(GetLastChange, LeavesThePendingDocumentAlone) {
  ASSERT_EQ(0, this->store_->RegisterApplicationAVTEventListener(&this->listener_));
  ASSERT_EQ(0, Change(*this->store_, SINK_UPNP_AVT_CURRENT_TRACK, "3"));
  DMR_CMN_String out;
  ASSERT_EQ(0, this->store_->GetLastChange(&out));
  EXPECT_EQ(0, this->store_->SendEvent());
  EXPECT_EQ((std::vector<ListenerCall>{{"NotifyCurrentTrack", "3", ""}}), this->listener_.Calls());
}

TYPED_TEST(GetLastChange, DocumentTypeRefusedAnswersMinusOneWithoutTakingTheLock) {
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLastChangeSetType, 1, marlo::kErrorInvalidArgument);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kLockLock));
  }
  EXPECT_TRUE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, LockThatCannotBeTakenAnswersMinusOne) {
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLockLock, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(nullptr, out.GetCString());
  EXPECT_TRUE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, ValueWithoutTextAnswersMinusOneWithTheLockHeld) {
  DMR_CMN_String out;
  ScopedFault fault(FP::kStringGetCString, 1, 0);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, EntryRefusedWithMinus1999AnswersMinusOneAndReleasesTheLock) {
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLastChangeSetStateVariable, 5, marlo::kErrorFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(5u, DMR_CMN_FaultInjection::CallCount(FP::kLastChangeSetStateVariable));
  }
  EXPECT_TRUE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, EntryFailingOtherwiseAnswersMinusOneWithTheLockHeld) {
  DMR_CMN_String out;
  ScopedFault fault(FP::kLastChangeSetStateVariable, 1, marlo::kErrorNoMemory);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, DocumentWithoutTextAnswersMinusOneAndReleasesTheLock) {
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kLastChangeGetXMLText, 1, 0);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, CopyWithoutMemoryAnswersNoMemoryAndReleasesTheLock) {
  DMR_CMN_String out;
  {
    ScopedFault fault(FP::kStringAllocation, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, this->store_->GetLastChange(&out));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_TRUE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, CopyFailingOtherwiseAnswersMinusOneWithTheLockHeld) {
  DMR_CMN_String out;
  ScopedFault fault(FP::kStringAllocation, 1, kOtherFailure);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*this->store_));
}

TYPED_TEST(GetLastChange, FailedReleaseAnswersMinusOne) {
  DMR_CMN_String out;
  ScopedFault fault(FP::kLockUnlock, 1, kOtherFailure);
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, this->store_->GetLastChange(&out));
  EXPECT_EQ(1u, fault.Fired());
  EXPECT_FALSE(LockIsFree(*this->store_));
}

// --- ConvertControlCharacter

// The escaping as a sequence of whole-text replacements: every "&" first (never matching an inserted
// entity again), then "<", ">", the double and the single quote.
std::string ReplaceInTurn(std::string text) {
  const std::pair<char, const char*> steps[] = {
      {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}};
  for (const auto& step : steps) {
    for (std::size_t at = text.find(step.first); at != std::string::npos;
         at = text.find(step.first, at + std::strlen(step.second))) {
      text.replace(at, 1, step.second);
    }
  }
  return text;
}

constexpr std::size_t kEscapeBufferSize = 204800;

TYPED_TEST(ConvertControlCharacter, EscapesAmpersandAndAngleBrackets) {
  EXPECT_STREQ("a&amp;b&lt;x&gt;", this->store_->ConvertControlCharacter("a&b<x>"));
}

TYPED_TEST(ConvertControlCharacter, EscapesDoubleAndSingleQuotes) {
  EXPECT_STREQ("say &quot;hi&quot; it&apos;s &apos;ok&apos;",
               this->store_->ConvertControlCharacter("say \"hi\" it's 'ok'"));
}

TYPED_TEST(ConvertControlCharacter, EscapesAnEntityAlreadyInTheText) {
  EXPECT_STREQ("&amp;amp;", this->store_->ConvertControlCharacter("&amp;"));
}

TYPED_TEST(ConvertControlCharacter, LeavesControlCharactersAsTheyAre) {
  EXPECT_STREQ("\x01\t\n\r\x1f x", this->store_->ConvertControlCharacter("\x01\t\n\r\x1f x"));
}

TYPED_TEST(ConvertControlCharacter, LeavesPlainAndEmptyTextsAsTheyAre) {
  EXPECT_STREQ("", this->store_->ConvertControlCharacter(""));
  EXPECT_STREQ("Morning Walk", this->store_->ConvertControlCharacter("Morning Walk"));
}

TYPED_TEST(ConvertControlCharacter, GivesTheTextOfReplacingEachCharacterInTurn) {
  const char* texts[] = {"<a href=\"x?y=1&z='2'\">&lt;&#38;</a>", "&&<<>>\"\"''", "\"'&'\"", "x>y&amp;<z"};
  for (const char* text : texts) {
    EXPECT_EQ(ReplaceInTurn(text), this->store_->ConvertControlCharacter(text)) << text;
  }
}

TYPED_TEST(ConvertControlCharacter, ReusesItsOneResultBuffer) {
  char* first = this->store_->ConvertControlCharacter("a<b");
  ASSERT_NE(nullptr, first);
  char* second = this->store_->ConvertControlCharacter("c>d");
  EXPECT_EQ(first, second);
  EXPECT_STREQ("c&gt;d", first);
}

TYPED_TEST(ConvertControlCharacter, EscapedTextThatExactlyFillsTheBufferIsEscaped) {
  const std::string plain(kEscapeBufferSize - 1, 'a');
  const char* result = this->store_->ConvertControlCharacter(plain.c_str());
  ASSERT_NE(nullptr, result);
  EXPECT_TRUE(plain == result);

  // 40959 ampersands grow to 204795 bytes; four more characters make 204799, the terminator the 204800th.
  const std::string ampersands = std::string(40959, '&') + "abcd";
  result = this->store_->ConvertControlCharacter(ampersands.c_str());
  ASSERT_NE(nullptr, result);
  EXPECT_EQ(kEscapeBufferSize - 1, std::strlen(result));
  EXPECT_TRUE(ReplaceInTurn(ampersands) == result);
}

// Each character with its entity, for the texts whose escaped form ends with that entity.
const std::pair<char, std::string> kEntities[] = {
    {'&', "&amp;"}, {'<', "&lt;"}, {'>', "&gt;"}, {'"', "&quot;"}, {'\'', "&apos;"}};

TYPED_TEST(ConvertControlCharacter, EscapedTextThatExactlyFillsTheBufferEndingWithAnEntityIsEscaped) {
  // 204794 letters and "&" escape to 204799 bytes: with the terminator, exactly the buffer.
  for (const auto& [character, entity] : kEntities) {
    const std::string plain = std::string(kEscapeBufferSize - 1 - entity.size(), 'a') + character;
    const char* result = this->store_->ConvertControlCharacter(plain.c_str());
    ASSERT_NE(nullptr, result) << entity;
    EXPECT_EQ(kEscapeBufferSize - 1, std::strlen(result)) << entity;
    EXPECT_TRUE(std::string(kEscapeBufferSize - 1 - entity.size(), 'a') + entity == result) << entity;
  }
}

TYPED_TEST(ConvertControlCharacter, EntityThatWouldEndOneBytePastTheBufferGivesNull) {
  for (const auto& [character, entity] : kEntities) {
    const std::string plain = std::string(kEscapeBufferSize - entity.size(), 'a') + character;
    EXPECT_EQ(nullptr, this->store_->ConvertControlCharacter(plain.c_str())) << entity;
  }
  EXPECT_STREQ("a&amp;", this->store_->ConvertControlCharacter("a&"));
}

TYPED_TEST(ConvertControlCharacter, EscapedTextOneByteLongerGivesNull) {
  EXPECT_EQ(nullptr, this->store_->ConvertControlCharacter(std::string(kEscapeBufferSize, 'a').c_str()));
  EXPECT_EQ(nullptr, this->store_->ConvertControlCharacter(std::string(40960, '&').c_str()));
  EXPECT_EQ(nullptr, this->store_->ConvertControlCharacter((std::string(40959, '&') + "abcde").c_str()));
}

TYPED_TEST(ConvertControlCharacter, RefusedTextLeavesTheBufferUsableForTheNextText) {
  ASSERT_EQ(nullptr, this->store_->ConvertControlCharacter(std::string(kEscapeBufferSize, '<').c_str()));
  EXPECT_STREQ("a&lt;b", this->store_->ConvertControlCharacter("a<b"));
}

TYPED_TEST(ConvertControlCharacter, NullTextGivesNull) {
  EXPECT_EQ(nullptr, this->store_->ConvertControlCharacter(nullptr));
}

TYPED_TEST(ConvertControlCharacter, NeedsNoInitialize) {
  auto store = NewStore<TypeParam>();
  EXPECT_STREQ("&lt;", store->ConvertControlCharacter("<"));
}

// ---------------------------------------------------------------------------------------------------
// Registration of the eventing threads: the standard store's AVTransport thread and the OpenHome store's
// five, each through the same steps.

struct ThreadCase {
  const char* name;
  bool openHome;
  int32_t (OpenHome::*registerThread)(marlo::EventHandler*);
  int32_t (OpenHome::*unregisterThread)();
  const char* firstName;  // a name that SendEventForOpenHome routes to this thread
};

const ThreadCase kThreadCases[] = {
    {"StandardAVTransport", false, nullptr, nullptr, "Probe"},
    {"OpenHomeProduct", true, &OpenHome::RegisterProductServiceEventListener,
     &OpenHome::UnregisterProductServiceEventListener, "ProductName"},
    {"OpenHomePlaylist", true, &OpenHome::RegisterPlaylistServiceEventListener,
     &OpenHome::UnregisterPlaylistServiceEventListener, "Id"},
    {"OpenHomeInfo", true, &OpenHome::RegisterInfoServiceEventListener,
     &OpenHome::UnregisterInfoServiceEventListener, "BitRate"},
    {"OpenHomeTime", true, &OpenHome::RegisterTimeServiceEventListener,
     &OpenHome::UnregisterTimeServiceEventListener, "Seconds"},
    {"OpenHomeSender", true, &OpenHome::RegisterSenderServiceEventListener,
     &OpenHome::UnregisterSenderServiceEventListener, "Status"},
};

class EventingThreadRegistration : public ::testing::TestWithParam<ThreadCase> {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    if (GetParam().openHome) {
      openHome_ = NewStore<OpenHome>();
      ASSERT_NE(nullptr, openHome_);
    } else {
      standard_ = NewStore<Standard>();
      ASSERT_NE(nullptr, standard_);
    }
  }
  void TearDown() override { DMR_CMN_FaultInjection::Reset(); }

  int32_t Initialize() { return openHome_ ? openHome_->Initialize() : standard_->Initialize(); }
  int32_t Register(marlo::EventHandler* handler) {
    return openHome_ ? (openHome_.get()->*GetParam().registerThread)(handler)
                     : standard_->RegisterAVTransportServiceEventListener(handler);
  }
  int32_t Unregister() {
    return openHome_ ? (openHome_.get()->*GetParam().unregisterThread)()
                     : standard_->UnregisterAVTransportServiceEventListener();
  }
  // Sends one batch through the thread under test: -963 when the store has none.
  int32_t Probe() {
    const std::vector<Pair> batch = {{GetParam().firstName, "1"}};
    return openHome_ ? SendBatch(*openHome_, batch) : SendBatch(*standard_, batch);
  }

  RecordingEventHandler handler_;
  RecordingEventHandler other_;
  ScopedStore<Standard> standard_;
  ScopedStore<OpenHome> openHome_;
};

std::string ThreadCaseName(const ::testing::TestParamInfo<ThreadCase>& threadCase) {
  return threadCase.param.name;
}

INSTANTIATE_TEST_SUITE_P(EachThread, EventingThreadRegistration, ::testing::ValuesIn(kThreadCases), ThreadCaseName);

TEST_P(EventingThreadRegistration, NullHandlerAnswersNullArgumentBeforeTheStateIsChecked) {
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, Register(nullptr));
  ASSERT_EQ(0, Initialize());
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, Register(nullptr));
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Probe());
}

TEST_P(EventingThreadRegistration, UninitializedStoreAnswersNotInitialized) {
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, Register(&handler_));
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation));
}

TEST_P(EventingThreadRegistration, RegisteredThreadDeliversToItsHandler) {
  ASSERT_EQ(0, Initialize());
  EXPECT_EQ(0, Register(&handler_));
  EXPECT_EQ(0, Probe());
  ASSERT_EQ(0, Unregister());
  EXPECT_EQ((std::vector<Batch>{{{GetParam().firstName, "1"}}}), handler_.Batches());
}

TEST_P(EventingThreadRegistration, SecondRegistrationAnswersMinusOneAndKeepsTheFirstThread) {
  ASSERT_EQ(0, Initialize());
  ASSERT_EQ(0, Register(&handler_));
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&other_));
  EXPECT_EQ(0, Probe());
  ASSERT_EQ(0, Unregister());
  EXPECT_EQ(1u, handler_.BatchCount());
  EXPECT_EQ(0u, other_.BatchCount());
}

TEST_P(EventingThreadRegistration, ThreadThatCannotBeCreatedAnswersNoMemory) {
  ASSERT_EQ(0, Initialize());
  {
    ScopedFault fault(FP::kEventingThreadCreation, 1, 0);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, Register(&handler_));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Probe());
  EXPECT_EQ(0, Register(&handler_));
}

TEST_P(EventingThreadRegistration, InitializeWithoutMemoryDeletesTheThreadAndAnswersNoMemory) {
  ASSERT_EQ(0, Initialize());
  {
    ScopedFault fault(FP::kEventingThreadInitialize, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, Register(&handler_));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Probe());
  EXPECT_EQ(0, Register(&handler_));
}

TEST_P(EventingThreadRegistration, InitializeFailingOtherwiseAnswersMinusOneAndKeepsTheThread) {
  ASSERT_EQ(0, Initialize());
  {
    ScopedFault fault(FP::kEventingThreadInitialize, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&handler_));
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kThreadStart));
  }
  // The unbound thread stays in its place: it refuses batches, and a new registration finds it.
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Probe());
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&other_));
}

TEST_P(EventingThreadRegistration, ThreadThatWillNotStartIsTornDownAndAnswersThreadStart) {
  ASSERT_EQ(0, Initialize());
  {
    ScopedFault fault(FP::kThreadStart, 1, SINK_UPNP_ERR_THREAD_START);
    EXPECT_EQ(SINK_UPNP_ERR_THREAD_START, Register(&handler_));
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadFinalize));
  }
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Probe());
  EXPECT_EQ(0, Register(&handler_));
}

TEST_P(EventingThreadRegistration, StartFailingOtherwiseAnswersMinusOneAndKeepsTheThread) {
  ASSERT_EQ(0, Initialize());
  {
    ScopedFault fault(FP::kThreadStart, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&handler_));
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadFinalize));
  }
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&other_));
  // The thread was never started: it cannot be joined, so unregistering fails and it stays.
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Unregister());
}

TEST_P(EventingThreadRegistration, UnregisterOfAnUninitializedStoreAnswersNotInitialized) {
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, Unregister());
}

TEST_P(EventingThreadRegistration, UnregisterWithoutThreadAnswersNotRegistered) {
  ASSERT_EQ(0, Initialize());
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Unregister());
}

TEST_P(EventingThreadRegistration, UnregisterStopsJoinsFinalizesAndRemovesTheThread) {
  ASSERT_EQ(0, Initialize());
  ASSERT_EQ(0, Register(&handler_));
  DMR_CMN_FaultInjection::Reset();
  EXPECT_EQ(0, Unregister());
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadStop));
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kThreadJoin));
  EXPECT_EQ(1u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadFinalize));
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Probe());
  EXPECT_EQ(SINK_UPNP_ERR_NOT_REGISTERED, Unregister());
  EXPECT_EQ(0, Register(&other_));
}

TEST_P(EventingThreadRegistration, UnregisterWhoseStopFailsAnswersMinusOneAndKeepsTheThreadRunning) {
  ASSERT_EQ(0, Initialize());
  ASSERT_EQ(0, Register(&handler_));
  {
    ScopedFault fault(FP::kEventingThreadStop, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Unregister());
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kThreadJoin));
  }
  EXPECT_EQ(0, Probe());
  EXPECT_EQ(0, Unregister());
  EXPECT_EQ(1u, handler_.BatchCount());
}

TEST_P(EventingThreadRegistration, UnregisterWhoseJoinFailsAnswersMinusOneAndKeepsTheThread) {
  ASSERT_EQ(0, Initialize());
  ASSERT_EQ(0, Register(&handler_));
  {
    ScopedFault fault(FP::kThreadJoin, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Unregister());
    EXPECT_EQ(1u, fault.Fired());
    EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadFinalize));
  }
  // Stopped but still in its place: it refuses batches and blocks a new registration.
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Probe());
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&other_));
}

TEST_P(EventingThreadRegistration, UnregisterWhoseFinalizeFailsAnswersMinusOneAndKeepsTheThread) {
  ASSERT_EQ(0, Initialize());
  ASSERT_EQ(0, Register(&handler_));
  {
    ScopedFault fault(FP::kEventingThreadFinalize, 1, kOtherFailure);
    EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Unregister());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Register(&other_));
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, Probe());
}

// The OpenHome store's AVTransport pair refuses.

TEST(OpenHomeAVTransportRegistration, NullHandlerAnswersNullArgument) {
  RecordingEventHandler handler;
  auto store = NewStore<OpenHome>();
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, store->RegisterAVTransportServiceEventListener(nullptr));
  ASSERT_EQ(0, store->Initialize());
  EXPECT_EQ(SINK_UPNP_ERR_NULL_ARGUMENT, store->RegisterAVTransportServiceEventListener(nullptr));
}

TEST(OpenHomeAVTransportRegistration, InitializedStoreRefusesWithMinusOne) {
  DMR_CMN_FaultInjection::Reset();
  RecordingEventHandler handler;
  auto store = NewStore<OpenHome>();
  ASSERT_EQ(0, store->Initialize());
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store->RegisterAVTransportServiceEventListener(&handler));
  EXPECT_EQ(SINK_UPNP_ERR_GENERIC, store->UnregisterAVTransportServiceEventListener());
  EXPECT_EQ(0u, DMR_CMN_FaultInjection::CallCount(FP::kEventingThreadCreation));
}

TEST(OpenHomeAVTransportRegistration, UninitializedStoreAnswersNotInitialized) {
  RecordingEventHandler handler;
  auto store = NewStore<OpenHome>();
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, store->RegisterAVTransportServiceEventListener(&handler));
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, store->UnregisterAVTransportServiceEventListener());
}

}  // namespace
