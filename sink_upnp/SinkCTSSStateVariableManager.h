// SINK_UPNP_SinkCTSSStateVariableManager: the state variable store of the AVTransport/ConnectionManager
// service object.
//
// Keeps the current value of all 83 state variables as strings, validates and applies the application's
// changes, gathers AVTransport changes in a pending LastChange document and sends it, on SendEvent,
// through the AVTransport eventing thread (and decoded, to the application's transport listener).
//
// Lifecycle: construct; Initialize; RegisterAVTransportServiceEventListener and the listener
// registrations; InitializeVariables when the service starts; any number of GetStateVariable,
// ChangeStateVariable, SendEvent and GetLastChange; UnregisterAVTransportServiceEventListener; Finalize;
// delete. Every operation answers a result code of sink_upnp/ResultCode.h.
//
// Thread safety: one lock guards the values and the pending document. GetStateVariable,
// ChangeStateVariable, the swap in InitializeVariables, SendEvent and GetLastChange take it; the
// eventing thread and the listener are called with it held, so neither may call back into this store.
// Some failure paths return with the lock still held, on purpose: a store whose host operations fail is
// left blocked rather than half-changed. ConvertControlCharacter uses this store's buffers and must not
// run on two threads at once. Lifecycle calls and registrations are not thread-safe.
#ifndef SINK_UPNP_SINK_CTSS_STATE_VARIABLE_MANAGER_H_
#define SINK_UPNP_SINK_CTSS_STATE_VARIABLE_MANAGER_H_

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

class SINK_UPNP_EXPORT SINK_UPNP_SinkCTSSStateVariableManager {
 public:
  // Allocates the two escaping buffers (zero-filled); everything else starts empty.
  SINK_UPNP_SinkCTSSStateVariableManager();
  // Frees the two escaping buffers and the document root, and nothing else: the host must unregister
  // the eventing thread and Finalize first. Deleting a store that is still initialized leaves its values,
  // its lock, its pending document and its eventing thread behind: a leak, the documented cost of skipping
  // those calls. A destructor cannot answer the refusals they may give, so it does not run them.
  virtual ~SINK_UPNP_SinkCTSSStateVariableManager();

  SINK_UPNP_SinkCTSSStateVariableManager(const SINK_UPNP_SinkCTSSStateVariableManager&) = delete;
  SINK_UPNP_SinkCTSSStateVariableManager& operator=(const SINK_UPNP_SinkCTSSStateVariableManager&) = delete;

  // Null when there is no memory (DMR_CMN_Malloc, which fault injection can fail).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // --- The store ---

  // Creates the 83 values (all "") and the lock. -1 when already initialized; -989 for no memory; -1 when
  // a value or the lock cannot be set up otherwise.
  int32_t Initialize();
  // Releases the values, the lock and the pending document. -1000 when not initialized; -1 while the
  // AVTransport eventing thread is registered or the lock cannot be finalized.
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
  // Sends the pending document as "LastChange" through the AVTransport eventing thread, reports each of
  // its variables to the transport listener, and deletes it (also when the send fails). -1000; -963
  // without the thread; -962 when nothing is pending; the thread's -989; -1 otherwise (lock held).
  int32_t SendEvent();
  // Hands a ready batch to the AVTransport eventing thread and answers its result; -963 without one.
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
  // Creates, initializes and starts the AVTransport eventing thread bound to `handler`. -999; -1000; -1
  // when one is registered; -989; -966 when it will not start; -1.
  int32_t RegisterAVTransportServiceEventListener(marlo::EventHandler* handler);
  // Stops, joins, finalizes and deletes it. -1000; -963 without one; -1 when a step fails.
  int32_t UnregisterAVTransportServiceEventListener();

 private:
  friend class SINK_UPNP_StateVariableStore<SINK_UPNP_SinkCTSSStateVariableManager>;
  friend class SINK_UPNP_StateVariableStoreTestPeer;
  static constexpr bool kOpenHome = false;
  static const char* const* NameTable() { return SINK_UPNP_stateVariableNameTable; }

  DMR_CMN_String* values;
  DMR_CMN_Lock* lock;
  marlo::LastChange* lastChange;
  DMR_CMN_UPnPEventingThread* avtEventingThread;
  int32_t initialized;
  DMR_CMN_AVTEventListener* avtListener;
  DMR_CMN_CMSEventListener* cmsListener;
  char* workBuffer;
  char* resultBuffer;
  DMR_CMN_String* docRoot;
  int32_t docRootSet;
};

#endif  // SINK_UPNP_SINK_CTSS_STATE_VARIABLE_MANAGER_H_
