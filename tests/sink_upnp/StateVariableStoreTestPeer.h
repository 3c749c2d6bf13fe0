// SINK_UPNP_StateVariableStoreTestPeer: the one friend through which tests reach the private fields of the
// two state variable stores: to see what deleting a store leaves behind, and to tear a store down the way
// a host must before deleting it.
//
// A store's destructor frees only its escaping buffers and its document root; the values, the lock, the
// pending document and the eventing threads are released by the unregistrations and Finalize. Tests hold
// their stores as ScopedStore, whose deleter runs that teardown first, so that the leak check of the
// sanitizer build sees what Finalize and the unregistrations fail to release, and nothing else.
#ifndef TESTS_SINK_UPNP_STATE_VARIABLE_STORE_TEST_PEER_H_
#define TESTS_SINK_UPNP_STATE_VARIABLE_STORE_TEST_PEER_H_

#include <initializer_list>
#include <memory>
#include <vector>

#include "FaultInjection.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/String.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/LastChange.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

class SINK_UPNP_StateVariableStoreTestPeer {
 public:
  // What Finalize and the unregistrations release, as one store holds it at one moment.
  struct Leftovers {
    DMR_CMN_String* values = nullptr;
    DMR_CMN_Lock* lock = nullptr;
    marlo::LastChange* lastChange = nullptr;
    std::vector<DMR_CMN_UPnPEventingThread*> threads;  // the registered ones only

    // Frees all of it: the threads first (each one's destructor stops and joins it, delivering what it
    // has queued), then the lock, the values and the document.
    void Release() {
      for (DMR_CMN_UPnPEventingThread* thread : threads) delete thread;
      threads.clear();
      delete lock;
      lock = nullptr;
      delete[] values;
      values = nullptr;
      delete lastChange;
      lastChange = nullptr;
    }
  };

  template <typename M>
  static Leftovers Take(const M& store) {
    Leftovers leftovers;
    leftovers.values = store.values;
    leftovers.lock = store.lock;
    leftovers.lastChange = store.lastChange;
    for (DMR_CMN_UPnPEventingThread* thread : Threads(store)) {
      if (thread != nullptr) leftovers.threads.push_back(thread);
    }
    return leftovers;
  }

  template <typename M>
  static bool IsInitialized(const M& store) {
    return store.initialized == 1;
  }

  // The store's lock, or null before Initialize and after Finalize.
  template <typename M>
  static DMR_CMN_Lock* Lock(const M& store) {
    return store.lock;
  }

  // The pending LastChange document, or null when nothing is pending.
  template <typename M>
  static marlo::LastChange* PendingDocument(const M& store) {
    return store.lastChange;
  }

  // The eventing threads still in `store`'s fields, registered or kept by a failed registration.
  template <typename M>
  static std::vector<DMR_CMN_UPnPEventingThread*> RegisteredThreads(const M& store) {
    return Take(store).threads;
  }

  // Deletes every eventing thread in `store` (its destructor stops and joins it) and empties its field.
  // Answers how many there were.
  static int DropThreads(SINK_UPNP_SinkCTSSStateVariableManager& store) {
    return DropThreads({&store.avtEventingThread});
  }
  static int DropThreads(SINK_UPNP_OpenHomeStateVariableManager& store) {
    return DropThreads({&store.productEventingThread, &store.playlistEventingThread, &store.infoEventingThread,
                        &store.timeEventingThread, &store.senderEventingThread});
  }

  // Unregisters every eventing thread, finalizes, and deletes `store`, as a host does, with no fault armed.
  // Results are not looked at: what remains (a store whose failure path kept its lock, on purpose; a
  // thread a failed unregistration left in place, which makes the standard store's Finalize refuse; the
  // leftovers of a failed Initialize) is freed here, after the delete.
  template <typename M>
  static void Retire(M* store) {
    if (store == nullptr) return;
    for (int point = 0; point < static_cast<int>(DMR_CMN_FaultPoint::kCount); ++point) {
      DMR_CMN_FaultInjection::Disarm(static_cast<DMR_CMN_FaultPoint>(point));
    }
    if (store->initialized == 1) {
      UnregisterThreads(*store);
      store->lock->Unlock();  // answers -1 when the lock is not held, the usual case
      store->Finalize();
    }
    Leftovers rest = Take(*store);
    delete store;
    rest.Release();
  }

 private:
  static int DropThreads(std::initializer_list<DMR_CMN_UPnPEventingThread**> fields) {
    int dropped = 0;
    for (DMR_CMN_UPnPEventingThread** field : fields) {
      if (*field == nullptr) continue;
      delete *field;
      *field = nullptr;
      ++dropped;
    }
    return dropped;
  }

  static std::vector<DMR_CMN_UPnPEventingThread*> Threads(
      const SINK_UPNP_SinkCTSSStateVariableManager& store) {
    return {store.avtEventingThread};
  }
  static std::vector<DMR_CMN_UPnPEventingThread*> Threads(
      const SINK_UPNP_OpenHomeStateVariableManager& store) {
    return {store.productEventingThread, store.playlistEventingThread, store.infoEventingThread,
            store.timeEventingThread, store.senderEventingThread};
  }

  static void UnregisterThreads(SINK_UPNP_SinkCTSSStateVariableManager& store) {
    if (store.avtEventingThread != nullptr) store.UnregisterAVTransportServiceEventListener();
  }
  static void UnregisterThreads(SINK_UPNP_OpenHomeStateVariableManager& store) {
    if (store.productEventingThread != nullptr) store.UnregisterProductServiceEventListener();
    if (store.playlistEventingThread != nullptr) store.UnregisterPlaylistServiceEventListener();
    if (store.infoEventingThread != nullptr) store.UnregisterInfoServiceEventListener();
    if (store.timeEventingThread != nullptr) store.UnregisterTimeServiceEventListener();
    if (store.senderEventingThread != nullptr) store.UnregisterSenderServiceEventListener();
  }
};

// The deleter of ScopedStore.
struct RetireStore {
  template <typename M>
  void operator()(M* store) const {
    SINK_UPNP_StateVariableStoreTestPeer::Retire(store);
  }
};

// A store that is unregistered, finalized and deleted when it goes out of scope.
template <typename M>
using ScopedStore = std::unique_ptr<M, RetireStore>;

#endif  // TESTS_SINK_UPNP_STATE_VARIABLE_STORE_TEST_PEER_H_
