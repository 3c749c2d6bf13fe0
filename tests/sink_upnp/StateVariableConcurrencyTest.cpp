// The state variable stores under concurrent use: application threads change variables and send events
// while other threads read values and the full LastChange document. This binary also runs under
// ThreadSanitizer, which reports any access the store's lock does not order.
//
// Why no change can be lost: each writer owns some variables that no other thread writes, and calls
// SendEvent right after its changes. When its SendEvent runs, its own latest value is either still pending
// (and this send delivers it) or was already delivered by another thread's send; the writer changes that
// variable again only after its SendEvent returned. So every value a writer gives its own variable is
// delivered exactly once, in the order written. Variables that all writers share can be overwritten before
// a send; for them the last value delivered must be the value finally stored.
#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "RecordingEventHandler.h"
#include "RecordingListeners.h"
#include "dmr_cmn/String.h"
#include "marlo/LastChange.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using Standard = SINK_UPNP_SinkCTSSStateVariableManager;
using OpenHome = SINK_UPNP_OpenHomeStateVariableManager;
using Batch = RecordingEventHandler::Batch;

constexpr int kWriters = 3;
constexpr int kReaders = 2;
constexpr int kIterations = 400;

// Each writer's own AVTransport variable (into the LastChange document) ...
const int kOwnDocumentVariable[kWriters] = {SINK_UPNP_AVT_CURRENT_TRACK_URI, SINK_UPNP_AVT_AV_TRANSPORT_URI,
                                            SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI};
const char* const kOwnDocumentOperation[kWriters] = {"NotifyCurrentTrackURI", "NotifyAVTransportURI",
                                                     "NotifyNextAVTransportURI"};
// ... and, in the OpenHome store, its own flagged variable, one in each of three services.
const int kOwnFlaggedVariable[kWriters] = {SINK_UPNP_PLAYLIST_ID, SINK_UPNP_TIME_SECONDS, SINK_UPNP_INFO_BIT_RATE};
const char* const kTransportStates[] = {"PLAYING", "PAUSED_PLAYBACK", "STOPPED"};

SINK_UPNP_StateVariableName_t Var(int index) { return static_cast<SINK_UPNP_StateVariableName_t>(index); }

std::string WriterValue(int writer, int iteration) {
  return "w" + std::to_string(writer) + "-" + std::to_string(iteration);
}

std::vector<std::string> AllWriterValues(int writer) {
  std::vector<std::string> values;
  for (int i = 0; i < kIterations; ++i) values.push_back(WriterValue(writer, i));
  return values;
}

template <typename M>
int32_t Change(M& store, int index, const std::string& text) {
  DMR_CMN_String value;
  value.SetCString(text.c_str());
  return store.ChangeStateVariable(Var(index), &value);
}

template <typename M>
std::string Get(M& store, int index) {
  DMR_CMN_String out;
  if (store.GetStateVariable(Var(index), &out) != 0) return "<error>";
  return out.GetCString();
}

// The iteration number of a value WriterValue(writer, i), or -1 for any other text ("" before the first).
int IterationOf(const std::string& value) {
  const std::size_t dash = value.find('-');
  if (value.empty() || value[0] != 'w' || dash == std::string::npos) return -1;
  return std::stoi(value.substr(dash + 1));
}

// Each thread's results that were not what the store may answer, as "thread: operation result".
struct Unexpected {
  std::vector<std::string> results;
  void Note(const std::string& what, int32_t result) { results.push_back(what + " " + std::to_string(result)); }
};

// Writer `w`: changes its own variables, the shared ones, and sends; every change answers 0 and every send
// 0 (or, in the standard store, -962 when another thread's send took what was pending).
template <typename M>
void Write(M& store, int w, bool ownFlagged, int32_t nothingPending, Unexpected* unexpected) {
  for (int i = 0; i < kIterations; ++i) {
    const std::string value = WriterValue(w, i);
    int32_t result = Change(store, kOwnDocumentVariable[w], value);
    if (result != 0) unexpected->Note("own document variable", result);
    if (ownFlagged) {
      result = Change(store, kOwnFlaggedVariable[w], value);
      if (result != 0) unexpected->Note("own flagged variable", result);
      result = Change(store, SINK_UPNP_TIME_DURATION, value);
      if (result != 0) unexpected->Note("shared Duration", result);
      result = Change(store, SINK_UPNP_INFO_METADATA, value);
      if (result != 0) unexpected->Note("shared Metadata", result);
    }
    result = Change(store, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS, value);
    if (result != 0) unexpected->Note("shared CurrentTransportActions", result);
    result = Change(store, SINK_UPNP_AVT_TRANSPORT_STATE, kTransportStates[(i + w) % 3]);
    if (result != 0) unexpected->Note("shared TransportState", result);
    result = store.SendEvent();
    if (result != 0 && result != nothingPending) unexpected->Note("SendEvent", result);
  }
}

// Reader `r`: reads values and the full document. A writer's own variable never goes back to an earlier
// value.
template <typename M>
void Read(M& store, int r, Unexpected* unexpected) {
  int lastSeen[kWriters] = {-1, -1, -1};
  for (int i = 0; i < kIterations; ++i) {
    DMR_CMN_String out;
    int32_t result = store.GetStateVariable(Var((i * 7 + r) % SINK_UPNP_STATE_VARIABLE_COUNT), &out);
    if (result != 0) unexpected->Note("GetStateVariable", result);
    for (int w = 0; w < kWriters; ++w) {
      const std::string value = Get(store, kOwnDocumentVariable[w]);
      if (value == "<error>") unexpected->Note("GetStateVariable of an own variable", -1);
      const int iteration = IterationOf(value);
      if (iteration < lastSeen[w]) unexpected->Note("own variable went back to " + value, 0);
      lastSeen[w] = iteration;
    }
    if (i % 3 == 0) {
      DMR_CMN_String document;
      result = store.GetLastChange(&document);
      if (result != 0) unexpected->Note("GetLastChange", result);
    }
  }
}

// Runs the writers and readers on threads of their own and answers everything unexpected they met.
template <typename M>
std::vector<std::string> RunWritersAndReaders(M& store, bool ownFlagged, int32_t nothingPending) {
  std::vector<Unexpected> unexpected(kWriters + kReaders);
  std::vector<std::thread> threads;
  for (int w = 0; w < kWriters; ++w) {
    threads.emplace_back(Write<M>, std::ref(store), w, ownFlagged, nothingPending, &unexpected[w]);
  }
  for (int r = 0; r < kReaders; ++r) {
    threads.emplace_back(Read<M>, std::ref(store), r, &unexpected[kWriters + r]);
  }
  for (std::thread& thread : threads) thread.join();
  std::vector<std::string> all;
  for (const Unexpected& each : unexpected) all.insert(all.end(), each.results.begin(), each.results.end());
  return all;
}

// The values named `name` in the delivered batches, in delivery order. LastChange batches are read as
// documents; OpenHome batches are name/value lists.
std::vector<std::string> DeliveredValues(const std::vector<Batch>& batches, const std::string& name) {
  std::vector<std::string> values;
  for (const Batch& batch : batches) {
    for (const auto& pair : batch) {
      if (pair.first == "LastChange") {
        marlo::LastChange document;
        if (document.SetXMLText(pair.second.c_str()) != 0) {
          values.push_back("<unreadable>");
          continue;
        }
        const marlo::LastChange::VariableSet* set = document.GetVariableSet(0);
        for (int j = 0; document.GetVariableName(set, j) != nullptr; ++j) {
          if (name == document.GetVariableName(set, j)) values.push_back(document.GetVariableValue(set, j));
        }
      } else if (pair.first == name) {
        values.push_back(pair.second);
      }
    }
  }
  return values;
}

std::vector<std::string> ListenerValues(const RecordingAVTEventListener& listener, const std::string& operation) {
  std::vector<std::string> values;
  for (const ListenerCall& call : listener.Calls()) {
    if (call.operation == operation) values.push_back(call.value);
  }
  return values;
}

const char* FollowingPlaylistState(const std::string& transportState) {
  if (transportState == "PLAYING") return "Playing";
  if (transportState == "PAUSED_PLAYBACK") return "Paused";
  return "Stopped";
}

TEST(StandardStoreConcurrency, ConcurrentChangesSendsAndReadsLoseNoChange) {
  DMR_CMN_FaultInjection::Reset();
  RecordingEventHandler avt;
  RecordingAVTEventListener listener;
  std::unique_ptr<Standard> store(new (std::nothrow) Standard);
  ASSERT_NE(nullptr, store);
  ASSERT_EQ(0, store->Initialize());
  ASSERT_EQ(0, store->RegisterAVTransportServiceEventListener(&avt));
  ASSERT_EQ(0, store->RegisterApplicationAVTEventListener(&listener));
  DMR_CMN_String protocolInfo;
  protocolInfo.SetCString("http-get:*:audio/mpeg:*");
  ASSERT_EQ(0, store->InitializeVariables(&protocolInfo));

  EXPECT_EQ(std::vector<std::string>{}, RunWritersAndReaders(*store, false, SINK_UPNP_ERR_OUT_OF_RANGE));

  // Whatever a last change left pending goes out now; the thread's end delivers everything queued.
  const int32_t flushed = store->SendEvent();
  EXPECT_TRUE(flushed == 0 || flushed == SINK_UPNP_ERR_OUT_OF_RANGE) << flushed;
  ASSERT_EQ(0, store->UnregisterAVTransportServiceEventListener());
  const std::vector<Batch> batches = avt.Batches();

  for (int w = 0; w < kWriters; ++w) {
    const char* name = SINK_UPNP_stateVariableNameTable[kOwnDocumentVariable[w]];
    EXPECT_EQ(WriterValue(w, kIterations - 1), Get(*store, kOwnDocumentVariable[w])) << name;
    EXPECT_EQ(AllWriterValues(w), DeliveredValues(batches, name)) << name;
    EXPECT_EQ(AllWriterValues(w), ListenerValues(listener, kOwnDocumentOperation[w])) << name;
  }
  for (const char* name : {"CurrentTransportActions", "TransportState"}) {
    const std::vector<std::string> delivered = DeliveredValues(batches, name);
    ASSERT_FALSE(delivered.empty()) << name;
    EXPECT_EQ(delivered.back(), Get(*store, store->ConvConstNum(name))) << name;
  }
  EXPECT_EQ(FollowingPlaylistState(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE)),
            Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE));
  EXPECT_EQ(0, store->Finalize());
}

TEST(OpenHomeStoreConcurrency, ConcurrentChangesSendsAndReadsLoseNoChange) {
  DMR_CMN_FaultInjection::Reset();
  RecordingEventHandler playlist;
  RecordingEventHandler product;
  RecordingEventHandler time;
  RecordingEventHandler info;
  RecordingEventHandler sender;
  RecordingAVTEventListener listener;
  std::unique_ptr<OpenHome> store(new (std::nothrow) OpenHome);
  ASSERT_NE(nullptr, store);
  ASSERT_EQ(0, store->Initialize());
  ASSERT_EQ(0, store->RegisterPlaylistServiceEventListener(&playlist));
  ASSERT_EQ(0, store->RegisterProductServiceEventListener(&product));
  ASSERT_EQ(0, store->RegisterTimeServiceEventListener(&time));
  ASSERT_EQ(0, store->RegisterInfoServiceEventListener(&info));
  ASSERT_EQ(0, store->RegisterSenderServiceEventListener(&sender));
  ASSERT_EQ(0, store->RegisterApplicationAVTEventListener(&listener));
  DMR_CMN_String protocolInfo;
  protocolInfo.SetCString("http-get:*:audio/flac:*");
  ASSERT_EQ(0, store->InitializeVariables(&protocolInfo));

  // The OpenHome SendEvent answers 0 also with nothing to send.
  EXPECT_EQ(std::vector<std::string>{}, RunWritersAndReaders(*store, true, 0));

  EXPECT_EQ(0, store->SendEvent());
  ASSERT_EQ(0, store->UnregisterPlaylistServiceEventListener());
  ASSERT_EQ(0, store->UnregisterProductServiceEventListener());
  ASSERT_EQ(0, store->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, store->UnregisterInfoServiceEventListener());
  ASSERT_EQ(0, store->UnregisterSenderServiceEventListener());

  const RecordingEventHandler* const ownHandler[kWriters] = {&playlist, &time, &info};
  for (int w = 0; w < kWriters; ++w) {
    const char* flaggedName = SINK_UPNP_stateVariableNameTableForOpenHome[kOwnFlaggedVariable[w]];
    EXPECT_EQ(WriterValue(w, kIterations - 1), Get(*store, kOwnFlaggedVariable[w])) << flaggedName;
    EXPECT_EQ(AllWriterValues(w), DeliveredValues(ownHandler[w]->Batches(), flaggedName)) << flaggedName;
    EXPECT_EQ(WriterValue(w, kIterations - 1), Get(*store, kOwnDocumentVariable[w])) << kOwnDocumentOperation[w];
    EXPECT_EQ(AllWriterValues(w), ListenerValues(listener, kOwnDocumentOperation[w])) << kOwnDocumentOperation[w];
  }
  const std::vector<std::string> durations = DeliveredValues(time.Batches(), "Duration");
  ASSERT_FALSE(durations.empty());
  EXPECT_EQ(durations.back(), Get(*store, SINK_UPNP_TIME_DURATION));
  const std::vector<std::string> metadata = DeliveredValues(info.Batches(), "Metadata");
  ASSERT_FALSE(metadata.empty());
  EXPECT_EQ(metadata.back(), Get(*store, SINK_UPNP_INFO_METADATA));
  const std::vector<std::string> playlistStates = DeliveredValues(playlist.Batches(), "TransportState");
  ASSERT_FALSE(playlistStates.empty());
  EXPECT_EQ(playlistStates.back(), Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE));
  EXPECT_EQ(FollowingPlaylistState(Get(*store, SINK_UPNP_AVT_TRANSPORT_STATE)),
            Get(*store, SINK_UPNP_PLAYLIST_TRANSPORT_STATE));
  const std::vector<std::string> actions = ListenerValues(listener, "NotifyCurrentTransportActions");
  ASSERT_FALSE(actions.empty());
  EXPECT_EQ(actions.back(), Get(*store, SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS));
  EXPECT_EQ(0u, product.BatchCount());
  EXPECT_EQ(0u, sender.BatchCount());
  EXPECT_EQ(0, store->Finalize());
}

}  // namespace
