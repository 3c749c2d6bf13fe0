// Two OpenHome stores in one process. The change-flag table is one global table that every OpenHome store
// uses, by design: constructing a store clears all 83 flags, a change in either store sets the flag, and
// the SendEvent of whichever store runs first consumes it, sending that store's own value through that
// store's own thread. SendEventForOpenHome and deleting a store leave the flags alone.
//
// Batches arrive on the eventing threads' workers; each test unregisters the threads before it reads what
// arrived (a stopping thread first delivers everything queued), so that an empty list means nothing was
// sent.
#include <gtest/gtest.h>

#include <cstdint>
#include <new>
#include <vector>

#include "FaultInjection.h"
#include "RecordingEventHandler.h"
#include "StateVariableStoreTestPeer.h"
#include "dmr_cmn/String.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using OpenHome = SINK_UPNP_OpenHomeStateVariableManager;
using Batch = RecordingEventHandler::Batch;

// The indices whose flag is set, in index order.
std::vector<int> SetFlags() {
  std::vector<int> set;
  for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
    if (SINK_UPNP_changeStateVariableTablet[index] != 0) set.push_back(index);
  }
  return set;
}

int32_t Change(OpenHome& store, SINK_UPNP_StateVariableName_t index, const char* text) {
  DMR_CMN_String value;
  value.SetCString(text);
  return store.ChangeStateVariable(index, &value);
}

// Two initialized stores with their initial values, each with its own Time and Playlist threads (the
// services whose variables a change flags), constructed first and second.
class TwoOpenHomeStores : public ::testing::Test {
 protected:
  void SetUp() override {
    DMR_CMN_FaultInjection::Reset();
    first_ = NewStore(&firstTime_, &firstPlaylist_);
    second_ = NewStore(&secondTime_, &secondPlaylist_);
    ASSERT_NE(nullptr, first_);
    ASSERT_NE(nullptr, second_);
    ASSERT_EQ(SetFlags(), std::vector<int>{});
  }

  static ScopedStore<OpenHome> NewStore(RecordingEventHandler* time, RecordingEventHandler* playlist) {
    ScopedStore<OpenHome> store(new (std::nothrow) OpenHome);
    DMR_CMN_String protocolInfo;
    protocolInfo.SetCString("http-get:*:audio/flac:*");
    if (store == nullptr || store->Initialize() != 0 || store->InitializeVariables(&protocolInfo) != 0 ||
        store->RegisterTimeServiceEventListener(time) != 0 ||
        store->RegisterPlaylistServiceEventListener(playlist) != 0) {
      return nullptr;
    }
    return store;
  }

  // Unregisters every thread of both stores: the handlers' batches are then final.
  void StopEventing() {
    for (OpenHome* store : {first_.get(), second_.get()}) {
      ASSERT_EQ(0, store->UnregisterTimeServiceEventListener());
      ASSERT_EQ(0, store->UnregisterPlaylistServiceEventListener());
    }
  }

  RecordingEventHandler firstTime_;
  RecordingEventHandler firstPlaylist_;
  RecordingEventHandler secondTime_;
  RecordingEventHandler secondPlaylist_;
  ScopedStore<OpenHome> first_;  // after the handlers: retired before them
  ScopedStore<OpenHome> second_;
};

TEST_F(TwoOpenHomeStores, ConstructingAnotherStoreDropsTheChangesBothStoresHaveNotSent) {
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  ASSERT_EQ(0, Change(*second_, SINK_UPNP_TIME_DURATION, "300"));
  ASSERT_EQ(SetFlags(), (std::vector<int>{SINK_UPNP_TIME_DURATION, SINK_UPNP_TIME_SECONDS}));

  ScopedStore<OpenHome> third(new (std::nothrow) OpenHome);
  ASSERT_NE(nullptr, third);
  EXPECT_EQ(SetFlags(), std::vector<int>{});
  EXPECT_EQ(0, first_->SendEvent());
  EXPECT_EQ(0, second_->SendEvent());
  ASSERT_NO_FATAL_FAILURE(StopEventing());
  EXPECT_EQ(firstTime_.Batches(), std::vector<Batch>{});
  EXPECT_EQ(secondTime_.Batches(), std::vector<Batch>{});
}

TEST_F(TwoOpenHomeStores, ChangeInOneStoreIsSentByTheOtherStoresSendEventWithThatStoresOwnValue) {
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_TIME_SECONDS});

  // The second store's Seconds is still its initial "0": that is what its subscribers are sent.
  EXPECT_EQ(0, second_->SendEvent());
  EXPECT_EQ(SetFlags(), std::vector<int>{});
  // The flag is consumed: the store that changed has nothing left to send.
  EXPECT_EQ(0, first_->SendEvent());
  ASSERT_NO_FATAL_FAILURE(StopEventing());
  EXPECT_EQ(secondTime_.Batches(), (std::vector<Batch>{{{"Seconds", "0"}}}));
  EXPECT_EQ(firstTime_.Batches(), std::vector<Batch>{});
}

TEST_F(TwoOpenHomeStores, StoreThatSendsFirstConsumesTheOtherStoresChangeEvenWhenItsOwnValueIsTheSame) {
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  ASSERT_EQ(0, Change(*second_, SINK_UPNP_TIME_SECONDS, "42"));
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_TIME_SECONDS});  // one flag for both changes

  EXPECT_EQ(0, first_->SendEvent());
  EXPECT_EQ(0, second_->SendEvent());
  ASSERT_NO_FATAL_FAILURE(StopEventing());
  EXPECT_EQ(firstTime_.Batches(), (std::vector<Batch>{{{"Seconds", "42"}}}));
  EXPECT_EQ(secondTime_.Batches(), std::vector<Batch>{});
}

TEST_F(TwoOpenHomeStores, TransportStateChangeInOneStoreSendsTheOtherStoresPlaylistTransportState) {
  // Index 0 flags the OpenHome transport state (29), which the changing store sets to "Playing"; the other
  // store's stays "Stopped", and the flag makes its SendEvent send that.
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"));
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_PLAYLIST_TRANSPORT_STATE});

  EXPECT_EQ(0, second_->SendEvent());
  EXPECT_EQ(0, first_->SendEvent());
  ASSERT_NO_FATAL_FAILURE(StopEventing());
  EXPECT_EQ(secondPlaylist_.Batches(), (std::vector<Batch>{{{"TransportState", "Stopped"}}}));
  EXPECT_EQ(firstPlaylist_.Batches(), std::vector<Batch>{});
}

TEST_F(TwoOpenHomeStores, StoreWithoutTheServicesThreadDropsTheOtherStoresChange) {
  ASSERT_EQ(0, second_->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));

  EXPECT_EQ(0, second_->SendEvent());
  EXPECT_EQ(SetFlags(), std::vector<int>{});
  EXPECT_EQ(0, first_->SendEvent());
  ASSERT_EQ(0, first_->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, first_->UnregisterPlaylistServiceEventListener());
  ASSERT_EQ(0, second_->UnregisterPlaylistServiceEventListener());
  EXPECT_EQ(firstTime_.Batches(), std::vector<Batch>{});
  EXPECT_EQ(secondTime_.Batches(), std::vector<Batch>{});
}

TEST_F(TwoOpenHomeStores, SendEventForOpenHomeOfTheOtherStoreLeavesTheFlagForTheNextSendEvent) {
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  DMR_CMN_String names[1];
  DMR_CMN_String values[1];
  names[0].SetCString("Seconds");
  values[0].SetCString("7");

  EXPECT_EQ(0, second_->SendEventForOpenHome(names, values, 1));
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_TIME_SECONDS});
  EXPECT_EQ(0, first_->SendEvent());
  ASSERT_NO_FATAL_FAILURE(StopEventing());
  EXPECT_EQ(secondTime_.Batches(), (std::vector<Batch>{{{"Seconds", "7"}}}));
  EXPECT_EQ(firstTime_.Batches(), (std::vector<Batch>{{{"Seconds", "42"}}}));
}

TEST_F(TwoOpenHomeStores, FinalizingAndDeletingOneStoreLeavesItsFlagsForTheOther) {
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  ASSERT_EQ(0, first_->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, first_->UnregisterPlaylistServiceEventListener());
  ASSERT_EQ(0, first_->Finalize());
  first_.reset();
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_TIME_SECONDS});

  EXPECT_EQ(0, second_->SendEvent());
  ASSERT_EQ(0, second_->UnregisterTimeServiceEventListener());
  ASSERT_EQ(0, second_->UnregisterPlaylistServiceEventListener());
  EXPECT_EQ(secondTime_.Batches(), (std::vector<Batch>{{{"Seconds", "0"}}}));
}

TEST_F(TwoOpenHomeStores, SendEventOfAnUninitializedStoreLeavesTheFlags) {
  ScopedStore<OpenHome> third(new (std::nothrow) OpenHome);
  ASSERT_NE(nullptr, third);
  ASSERT_EQ(0, Change(*first_, SINK_UPNP_TIME_SECONDS, "42"));
  EXPECT_EQ(SINK_UPNP_ERR_NOT_INITIALIZED, third->SendEvent());
  EXPECT_EQ(SetFlags(), std::vector<int>{SINK_UPNP_TIME_SECONDS});
}

}  // namespace
