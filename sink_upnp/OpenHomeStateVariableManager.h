// SINK_UPNP_OpenHomeStateVariableManager: the state variable store of the OpenHome service object.
//
// The same store as SINK_UPNP_SinkCTSSStateVariableManager, with these differences: names come from the
// OpenHome name table (index 76 "CodecName"); a change of an OpenHome variable sets its change flag (or is
// only stored, where the OpenHome service sends the event itself); SendEvent sends each OpenHome service's
// flagged variables as one batch through that service's eventing thread, and the pending LastChange
// document only to the application's transport listener; there are five eventing threads (Product,
// Playlist, Info, Time, Sender) and no AVTransport one.
//
// Lifecycle: construct; Initialize; SetDocRoot; the eventing-thread and listener registrations;
// InitializeVariables when the service starts; any number of GetStateVariable, ChangeStateVariable,
// SendEvent, SendEventForOpenHome and GetLastChange; the unregistrations; Finalize; delete. Every
// operation answers a result code of sink_upnp/ResultCode.h.
//
// Thread safety: one lock guards the values and the pending document. GetStateVariable,
// ChangeStateVariable, the swap in InitializeVariables, SendEvent and GetLastChange take it; the
// eventing thread and the listener are called with it held, so neither may call back into this store.
// Some failure paths return with the lock still held, on purpose: a store whose host operations fail is
// left blocked rather than half-changed. ConvertControlCharacter uses this store's buffers and must not
// run on two threads at once. Lifecycle calls and registrations are not thread-safe.
#ifndef SINK_UPNP_OPEN_HOME_STATE_VARIABLE_MANAGER_H_
#define SINK_UPNP_OPEN_HOME_STATE_VARIABLE_MANAGER_H_

#include <cstddef>
#include <cstdint>
#include <new>

#include "sink_upnp/Export.h"
#include "sink_upnp/StateVariableCatalogue.h"

class DMR_CMN_AVTEventListener;
class DMR_CMN_CMSEventListener;
class DMR_CMN_Lock;
class DMR_CMN_String;
class DMR_CMN_UPnPEventingThread;
namespace marlo {
class EventHandler;
class LastChange;
}  // namespace marlo
template <typename Manager>
class SINK_UPNP_StateVariableStore;
class SINK_UPNP_StateVariableStoreTestPeer;

class SINK_UPNP_EXPORT SINK_UPNP_OpenHomeStateVariableManager {
 public:
  // Allocates the two escaping buffers (zero-filled); everything else starts empty. Clears the change-flag
  // table, which all OpenHome stores share.
  SINK_UPNP_OpenHomeStateVariableManager();
  // Frees the two escaping buffers and the document root, and nothing else: the host must unregister
  // the eventing threads and Finalize first. Deleting a store that is still initialized leaves its values,
  // its lock, its pending document and its eventing threads behind: a leak, the documented cost of skipping
  // those calls. A destructor cannot answer the refusals they may give, so it does not run them.
  virtual ~SINK_UPNP_OpenHomeStateVariableManager();

  SINK_UPNP_OpenHomeStateVariableManager(const SINK_UPNP_OpenHomeStateVariableManager&) = delete;
  SINK_UPNP_OpenHomeStateVariableManager& operator=(const SINK_UPNP_OpenHomeStateVariableManager&) = delete;

  // Null when there is no memory (DMR_CMN_Malloc, which fault injection can fail).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // --- The store ---

  // Creates the 83 values (all "") and the lock. -1 when already initialized; -989 for no memory; -1 when
  // a value or the lock cannot be set up otherwise.
  int32_t Initialize();
  // Releases the values, the lock and the pending document. -1000 when not initialized; -1 when the lock
  // cannot be finalized. The eventing threads are not looked at: they stay until unregistered.
  int32_t Finalize();
  // Replaces all 83 values by their initial values; `protocolInfo` becomes the sink protocol list. With a
  // document root set, first appends "/openhome.xml" to it (on every call, so the path grows: on purpose,
  // hosts set the document root once per start) and reads the Product description values from that
  // file. -999 for a null or unset protocol list; -1000 when not initialized (the document root has grown
  // all the same); -989 for no memory; -1 for any other failure (the old values stay).
  int32_t InitializeVariables(const DMR_CMN_String* protocolInfo);
  // Copies the value of variable `index` into `out`. -999 for null `out`; -1000; -962 for an index
  // outside 0..82; -989 for no memory; -1 when the value has no text (the lock stays held).
  int32_t GetStateVariable(SINK_UPNP_StateVariableName_t index, DMR_CMN_String* out);
  // Validates and stores a new value and records the change for eventing. An unchanged value records
  // nothing. -999 for a null or unset value; -1000; -962 for an index outside 0..82; -961 for a value the
  // variable does not take; -989 for no memory; -1 otherwise. A change whose recording fails for lack of
  // memory for the pending document stays stored and answers 0.
  int32_t ChangeStateVariable(SINK_UPNP_StateVariableName_t index, const DMR_CMN_String* value);
  // Sets the directory of the device description; answers 0.
  int32_t SetDocRoot(char* path);

  // The checks of sink_upnp/StateVariableChecks.h.
  int32_t CheckStateVariable(SINK_UPNP_StateVariableName_t index, const char* text);
  int32_t CheckTransportState(const char* text);
  int32_t CheckTransportStatus(const char* text);
  int32_t CheckPlaybackStorageMedium(const char* text);
  int32_t CheckCurrentPlayMode(const char* text);
  int32_t CheckTransportPlaySpeed(const char* text);
  int32_t CheckRecordMediumWriteStatus(const char* text);
  int32_t CheckCurrentRecordQualityMode(const char* text);
  int32_t CheckTypeInteger4Byte(const char* text);
  int32_t CheckTypeUnsignedInteger4Byte(const char* text);

  // --- Eventing ---

  // Creates the pending LastChange document if there is none. -989 when it cannot be created; -1 when
  // its type cannot be set.
  int32_t PrepareLastChange();
  // Deletes the pending document, if any.
  void CleanLastChange();
  // Sends, service by service (Playlist, Product, Time, Info, Sender), the flagged variables as one batch
  // through the service's eventing thread, clearing their flags (also without a thread: the changes are
  // then dropped); then reports the pending document to the transport listener and deletes it. -1000;
  // the last send's -989; -1 otherwise (lock held).
  int32_t SendEvent();
  // Hands a ready batch to the eventing thread of the service of its first name (the lowest OpenHome
  // index with that name: "Metadata" goes to Playlist) and answers its result. 0 and nothing sent for an
  // unknown first name; -963 when that service has no thread; -999 for null names.
  int32_t SendEventForOpenHome(DMR_CMN_String* batchNames, DMR_CMN_String* batchValues, long count);
  // Writes the full current LastChange document (every variable but 21-24 and 26-28) into `out`. -999;
  // -1000; -989; -1.
  int32_t GetLastChange(DMR_CMN_String* out);
  // The lowest index whose name is `name`, or -1.
  int32_t ConvConstNum(const char* name);
  // `text` with & < > " ' escaped as XML entities, in this store's result buffer (valid until the next
  // call). Null when the escaped text and its terminator would not fit the 204800-byte buffer, or for a
  // null text.
  char* ConvertControlCharacter(const char* text);

  // --- Registration (no lock is taken) ---

  int32_t RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener);  // null → -1
  int32_t UnregisterApplicationAVTEventListener();
  int32_t RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener);  // null → -1
  int32_t UnregisterApplicationCMSEventListener();
  // Each creates, initializes and starts the service's eventing thread bound to `handler`. -999; -1000;
  // -1 when one is registered; -989; -966 when it will not start; -1.
  int32_t RegisterProductServiceEventListener(marlo::EventHandler* handler);
  int32_t RegisterPlaylistServiceEventListener(marlo::EventHandler* handler);
  int32_t RegisterInfoServiceEventListener(marlo::EventHandler* handler);
  int32_t RegisterTimeServiceEventListener(marlo::EventHandler* handler);
  int32_t RegisterSenderServiceEventListener(marlo::EventHandler* handler);
  // Each stops, joins, finalizes and deletes the service's thread. -1000; -963 without one; -1 when a
  // step fails.
  int32_t UnregisterProductServiceEventListener();
  int32_t UnregisterPlaylistServiceEventListener();
  int32_t UnregisterInfoServiceEventListener();
  int32_t UnregisterTimeServiceEventListener();
  int32_t UnregisterSenderServiceEventListener();
  // This store has no AVTransport thread: both refuse. -999 for a null handler; -1 once initialized;
  // -1000 before.
  int32_t RegisterAVTransportServiceEventListener(marlo::EventHandler* handler);
  int32_t UnregisterAVTransportServiceEventListener();

 private:
  friend class SINK_UPNP_StateVariableStore<SINK_UPNP_OpenHomeStateVariableManager>;
  friend class SINK_UPNP_StateVariableStoreTestPeer;
  static constexpr bool kOpenHome = true;
  static const char* const* NameTable() { return SINK_UPNP_stateVariableNameTableForOpenHome; }

  DMR_CMN_String* values;
  DMR_CMN_Lock* lock;
  marlo::LastChange* lastChange;
  DMR_CMN_UPnPEventingThread* productEventingThread;
  DMR_CMN_UPnPEventingThread* playlistEventingThread;
  DMR_CMN_UPnPEventingThread* infoEventingThread;
  DMR_CMN_UPnPEventingThread* timeEventingThread;
  DMR_CMN_UPnPEventingThread* senderEventingThread;
  int32_t initialized;
  DMR_CMN_AVTEventListener* avtListener;
  DMR_CMN_CMSEventListener* cmsListener;
  char* workBuffer;
  char* resultBuffer;
  DMR_CMN_String* docRoot;
  int32_t docRootSet;
};

#endif  // SINK_UPNP_OPEN_HOME_STATE_VARIABLE_MANAGER_H_
