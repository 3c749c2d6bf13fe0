// SINK_UPNP_StateVariableStore<Manager>: the algorithms both state variable stores share, written once.
//
// The two managers have no common base class and each keeps its own fields in its own order; this
// template works on those fields by name (it is a friend of both) and asks the manager only for what
// differs: its name table (Manager::NameTable()) and whether it is the OpenHome store (Manager::kOpenHome),
// which picks its column of the catalogue (initial values, change routes).
//
// Internal to the plug-in: included by the two managers' sources only.
#ifndef SINK_UPNP_STATE_VARIABLE_STORE_H_
#define SINK_UPNP_STATE_VARIABLE_STORE_H_

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>

#include "corva/MediaMetaData.h"
#include "dmr_cmn/AVTEventListener.h"
#include "dmr_cmn/CMSEventListener.h"
#include "dmr_cmn/Lock.h"
#include "dmr_cmn/String.h"
#include "dmr_cmn/UPnPEventingThread.h"
#include "marlo/Device.h"
#include "marlo/DeviceDescription.h"
#include "marlo/LastChange.h"
#include "marlo/Result.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/StateVariableCatalogue.h"
#include "sink_upnp/StateVariableChecks.h"
#include "sink_upnp/TransportState.h"

// The size of each of a store's two escaping buffers.
constexpr std::size_t SINK_UPNP_ESCAPE_BUFFER_SIZE = 204800;

// Escapes & < > " ' of `text` into `result` (of `size` bytes); the same text as replacing every "&" first
// and then each of the other four characters in turn, written in one pass. Null when the escaped text and
// its terminator would not fit (what was written into `result` so far is then to be ignored), or when
// `text` or `result` is null.
char* SINK_UPNP_EscapeXmlText(const char* text, char* result, std::size_t size);

// Calls the transport listener's operation for one AVTransport variable named in a LastChange document;
// `index` is the variable's index (0-20 and 25 have an operation; others are skipped). The three metadata
// operations receive the value parsed into a corva::MediaMetaData that lives for the call only.
void SINK_UPNP_NotifyAVTListener(DMR_CMN_AVTEventListener* listener, int32_t index, const char* value);

template <typename Manager>
class SINK_UPNP_StateVariableStore {
 public:
  static void Construct(Manager& m) {
    m.values = nullptr;
    m.lock = nullptr;
    m.lastChange = nullptr;
    m.initialized = 0;
    m.avtListener = nullptr;
    m.cmsListener = nullptr;
    // Zero-filled, so that no byte of a buffer handed out is ever indeterminate, also past the text.
    m.resultBuffer = new (std::nothrow) char[SINK_UPNP_ESCAPE_BUFFER_SIZE]();
    m.workBuffer = new (std::nothrow) char[SINK_UPNP_ESCAPE_BUFFER_SIZE]();
    m.docRoot = nullptr;
    m.docRootSet = 0;
  }

  // What the destructor releases, and all it releases: the buffers and the document root. The values, the
  // lock, the pending document and the eventing threads belong to Finalize and the unregistrations, whose
  // checks a destructor could not answer; a store deleted without them leaves those behind.
  static void Destroy(Manager& m) {
    delete[] m.workBuffer;
    delete[] m.resultBuffer;
    delete m.docRoot;
    m.workBuffer = nullptr;
    m.resultBuffer = nullptr;
    m.docRoot = nullptr;
  }

  static int32_t Initialize(Manager& m) {
    if (m.initialized == 1) return SINK_UPNP_ERR_GENERIC;
    // A failed earlier attempt may have left its array or lock behind; they are replaced, not leaked.
    delete[] m.values;
    m.values = new (std::nothrow) DMR_CMN_String[SINK_UPNP_STATE_VARIABLE_COUNT];
    if (m.values == nullptr) return DMR_CMN_ERR_NO_MEMORY;
    // Replaced rather than kept: each life starts with an empty document root, and the string of an
    // earlier one would otherwise be lost.
    delete m.docRoot;
    m.docRoot = new (std::nothrow) DMR_CMN_String;
    if (m.docRoot != nullptr) m.docRoot->SetCString("");

    for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
      const int32_t result = m.values[index].SetCString("");
      if (result == DMR_CMN_ERR_NO_MEMORY) {
        delete[] m.values;
        m.values = nullptr;
        return DMR_CMN_ERR_NO_MEMORY;
      }
      if (result != 0) return SINK_UPNP_ERR_GENERIC;
    }

    if (m.lock != nullptr) {
      m.lock->Finalize();
      delete m.lock;
    }
    m.lock = new (std::nothrow) DMR_CMN_Lock;
    if (m.lock == nullptr) {
      delete[] m.values;
      m.values = nullptr;
      return DMR_CMN_ERR_NO_MEMORY;
    }
    if (m.lock->Initialize() != 0) return SINK_UPNP_ERR_GENERIC;

    m.initialized = 1;
    return SINK_UPNP_OK;
  }

  static int32_t Finalize(Manager& m) {
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
    if constexpr (!Manager::kOpenHome) {
      // Refused while the AVTransport thread is registered: the thread is the store's, and a store
      // finalized around it would leave nobody to stop it. The host unregisters it first.
      if (m.avtEventingThread != nullptr) return SINK_UPNP_ERR_GENERIC;
    }
    if (m.lock->Finalize() != 0) return SINK_UPNP_ERR_GENERIC;
    delete m.lock;
    m.lock = nullptr;
    delete[] m.values;
    m.values = nullptr;
    CleanLastChange(m);
    m.initialized = 0;
    return SINK_UPNP_OK;
  }

  static int32_t InitializeVariables(Manager& m, const DMR_CMN_String* protocolInfo) {
    if (protocolInfo == nullptr || protocolInfo->GetCString() == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;

    // The description is read before the state is checked, and the path grows by "/openhome.xml" on
    // every call: both on purpose, since hosts set the document root once per start.
    const char* serverAddress = nullptr;
    marlo::DeviceDescription description;
    const marlo::DeviceDescription::Node* rootDevice = nullptr;
    if (m.docRootSet == 1) {
      serverAddress = marlo::Device::GetServerIPAddress();
      if (m.docRoot != nullptr) {
        m.docRoot->AppendCString("/openhome.xml");
        description.LoadDescription(m.docRoot->GetCString());
      }
      rootDevice = description.GetRootDevice();
    }

    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;

    DMR_CMN_String* fresh = new (std::nothrow) DMR_CMN_String[SINK_UPNP_STATE_VARIABLE_COUNT];
    if (fresh == nullptr) return DMR_CMN_ERR_NO_MEMORY;
    for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
      const int32_t result =
          SetInitialValue(m, index, &fresh[index], protocolInfo, serverAddress, description, rootDevice);
      if (result != 0) {
        delete[] fresh;
        return result == DMR_CMN_ERR_NO_MEMORY ? DMR_CMN_ERR_NO_MEMORY : SINK_UPNP_ERR_GENERIC;
      }
    }

    if (m.lock->Lock() != 0) {
      delete[] fresh;
      return SINK_UPNP_ERR_GENERIC;
    }
    delete[] m.values;
    m.values = fresh;
    return m.lock->Unlock() == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
  }

  static int32_t GetStateVariable(Manager& m, SINK_UPNP_StateVariableName_t index, DMR_CMN_String* out) {
    if (out == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
    if (static_cast<unsigned>(index) >= static_cast<unsigned>(SINK_UPNP_STATE_VARIABLE_COUNT)) {
      return SINK_UPNP_ERR_OUT_OF_RANGE;
    }
    if (m.lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;
    const char* text = m.values[index].GetCString();
    // On purpose, the failures other than no memory leave the lock held: a store whose runtime fails
    // stays blocked rather than half-changed.
    if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
    const int32_t result = out->SetCString(text);
    if (result == DMR_CMN_ERR_NO_MEMORY) return Release(m, DMR_CMN_ERR_NO_MEMORY);
    if (result != 0) return SINK_UPNP_ERR_GENERIC;
    return Release(m, SINK_UPNP_OK);
  }

  static int32_t ChangeStateVariable(Manager& m, SINK_UPNP_StateVariableName_t index,
                                     const DMR_CMN_String* value) {
    if (value == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
    const char* text = value->GetCString();
    if (text == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;

    const int32_t check = SINK_UPNP_CheckStateVariable(index, text);
    if (check == SINK_UPNP_ERR_OUT_OF_RANGE || check == SINK_UPNP_ERR_INVALID_VALUE) return check;
    if (check != 0) return SINK_UPNP_ERR_GENERIC;

    if (m.lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;
    // From here on, the failures other than no memory leave the lock held, on purpose (as above).
    const int32_t equal = m.values[index].Equals(text);
    if (equal == 0) return Release(m, SINK_UPNP_OK);  // the same value is no change: nothing to event
    if (equal != -1) return SINK_UPNP_ERR_GENERIC;

    const int32_t stored = m.values[index].SetCString(text);
    if (stored == DMR_CMN_ERR_NO_MEMORY) return Release(m, DMR_CMN_ERR_NO_MEMORY);
    if (stored != 0) return SINK_UPNP_ERR_GENERIC;

    SINK_UPNP_ChangeRoute route = Route(index);
    if (index == SINK_UPNP_AVT_TRANSPORT_STATE) {
      FollowTransportState(m, text);
      // The OpenHome transport state's event is due even when the new state left it as it was.
      if (route == SINK_UPNP_ChangeRoute::kLastChangeAndTransportState) {
        SINK_UPNP_changeStateVariableTablet[SINK_UPNP_PLAYLIST_TRANSPORT_STATE] = 1;
      }
      route = SINK_UPNP_ChangeRoute::kLastChange;
    }

    switch (route) {
      case SINK_UPNP_ChangeRoute::kLastChange:
      case SINK_UPNP_ChangeRoute::kLastChangeAndTransportState:
        return RecordInLastChange(m, index, text);
      case SINK_UPNP_ChangeRoute::kFlag:
        SINK_UPNP_changeStateVariableTablet[index] = 1;
        return Release(m, SINK_UPNP_OK);
      case SINK_UPNP_ChangeRoute::kNotify:
        if constexpr (!Manager::kOpenHome) {
          // The host registers the thread before the application changes these; without one the change is
          // only stored.
          if (m.avtEventingThread != nullptr) {
            m.avtEventingThread->NotifyUpdate(
                index == SINK_UPNP_PLAYLIST_INDEX ? "Index" : "Metatext", m.values[index].GetCString());
          }
        }
        return Release(m, SINK_UPNP_OK);
      case SINK_UPNP_ChangeRoute::kNone:
        break;
    }
    return Release(m, SINK_UPNP_OK);
  }

  static int32_t SetDocRoot(Manager& m, char* path) {
    m.docRootSet = 1;
    // The string exists from Initialize on; its copy's result is not the caller's concern.
    if (m.docRoot != nullptr) m.docRoot->SetCString(path);
    return SINK_UPNP_OK;
  }

  static int32_t PrepareLastChange(Manager& m) {
    if (m.lastChange != nullptr) return SINK_UPNP_OK;
    m.lastChange = new (std::nothrow) marlo::LastChange;
    if (m.lastChange == nullptr) return DMR_CMN_ERR_NO_MEMORY;
    const int32_t result = m.lastChange->SetType(marlo::LastChange::kTypeAVTransport);
    if (result == 0) return SINK_UPNP_OK;
    if (result == marlo::kErrorFailure) CleanLastChange(m);
    return SINK_UPNP_ERR_GENERIC;
  }

  static void CleanLastChange(Manager& m) {
    delete m.lastChange;
    m.lastChange = nullptr;
  }

  // Decodes `xml` and reports each AVTransport variable in it to the transport listener, if one is
  // registered. Called with the lock held.
  static void ReportToListener(Manager& m, const char* xml) {
    if (m.avtListener == nullptr) return;
    marlo::LastChange* decoded = new (std::nothrow) marlo::LastChange;
    if (decoded == nullptr) return;
    decoded->SetXMLText(xml);
    for (int i = 0; const marlo::LastChange::VariableSet* set = decoded->GetVariableSet(i); ++i) {
      for (int j = 0; const char* name = decoded->GetVariableName(set, j); ++j) {
        SINK_UPNP_NotifyAVTListener(m.avtListener, ConvConstNum(m, name), decoded->GetVariableValue(set, j));
      }
    }
    delete decoded;
  }

  static int32_t GetLastChange(Manager& m, DMR_CMN_String* out) {
    if (out == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
    marlo::LastChange document;
    if (document.SetType(marlo::LastChange::kTypeAVTransport) != 0) return SINK_UPNP_ERR_GENERIC;
    if (m.lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;

    // The positions change by the second and are polled, and the ConnectionManager variables are no
    // transport state: neither belongs in the document. Names that occur twice (TransportState at 0 and
    // 29, ...) follow the document's rule for a variable set twice.
    for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
      if (index < 32 && (SINK_UPNP_NOT_IN_LAST_CHANGE_MASK & (1u << index)) != 0) continue;
      const char* text = m.values[index].GetCString();
      if (text == nullptr) return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
      const int32_t result = document.SetStateVariable(0, Manager::NameTable()[index], text, nullptr);
      if (result == marlo::kErrorFailure) return Release(m, SINK_UPNP_ERR_GENERIC);
      if (result != 0) return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
    }
    const char* xml = document.GetXMLText();
    if (xml == nullptr) return Release(m, SINK_UPNP_ERR_GENERIC);
    const int32_t copied = out->SetCString(xml);
    if (copied == DMR_CMN_ERR_NO_MEMORY) return Release(m, DMR_CMN_ERR_NO_MEMORY);
    if (copied != 0) return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
    return Release(m, SINK_UPNP_OK);
  }

  static int32_t ConvConstNum(Manager&, const char* name) { return FindName(Manager::NameTable(), 0, name); }

  static char* ConvertControlCharacter(Manager& m, const char* text) {
    if (m.resultBuffer == nullptr) return nullptr;
    return SINK_UPNP_EscapeXmlText(text, m.resultBuffer, SINK_UPNP_ESCAPE_BUFFER_SIZE);
  }

  // The application's listeners are kept, not owned; none of the four takes the lock or looks at
  // `initialized`, so a listener may be registered before Initialize and survives Finalize.
  static int32_t RegisterApplicationAVTEventListener(Manager& m, DMR_CMN_AVTEventListener* listener) {
    if (listener == nullptr) return SINK_UPNP_ERR_GENERIC;
    m.avtListener = listener;
    return SINK_UPNP_OK;
  }
  static int32_t UnregisterApplicationAVTEventListener(Manager& m) {
    m.avtListener = nullptr;
    return SINK_UPNP_OK;
  }
  static int32_t RegisterApplicationCMSEventListener(Manager& m, DMR_CMN_CMSEventListener* listener) {
    if (listener == nullptr) return SINK_UPNP_ERR_GENERIC;
    m.cmsListener = listener;
    return SINK_UPNP_OK;
  }
  static int32_t UnregisterApplicationCMSEventListener(Manager& m) {
    m.cmsListener = nullptr;
    return SINK_UPNP_OK;
  }

  // Creates, initializes and starts an eventing thread in `field`.
  static int32_t RegisterEventingThread(Manager& m, DMR_CMN_UPnPEventingThread*& field,
                                        marlo::EventHandler* handler) {
    if (handler == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
    if (field != nullptr) return SINK_UPNP_ERR_GENERIC;
    field = new (std::nothrow) DMR_CMN_UPnPEventingThread;
    if (field == nullptr) return DMR_CMN_ERR_NO_MEMORY;
    const int32_t initialized = field->Initialize(handler);
    if (initialized == DMR_CMN_ERR_NO_MEMORY) {
      delete field;
      field = nullptr;
      return DMR_CMN_ERR_NO_MEMORY;
    }
    // Left in the field: a later registration is refused until the host unregisters it, rather than a
    // second thread started beside one whose state is unknown.
    if (initialized != 0) return SINK_UPNP_ERR_GENERIC;
    const int32_t started = field->Start();
    if (started == SINK_UPNP_ERR_THREAD_START) {
      field->Finalize();
      delete field;
      field = nullptr;
      return SINK_UPNP_ERR_THREAD_START;
    }
    return started == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
  }

  // Stops, joins, finalizes and deletes the eventing thread in `field`.
  static int32_t UnregisterEventingThread(Manager& m, DMR_CMN_UPnPEventingThread*& field) {
    if (m.initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
    if (field == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
    if (field->Stop() != 0 || field->Join() != 0 || field->Finalize() != 0) return SINK_UPNP_ERR_GENERIC;
    delete field;
    field = nullptr;
    return SINK_UPNP_OK;
  }

  // Releases the lock and answers `result`, or -1 when the lock cannot be released.
  static int32_t Release(Manager& m, int32_t result) {
    return m.lock->Unlock() == 0 ? result : SINK_UPNP_ERR_GENERIC;
  }

  // The lowest index from `first` on whose name in `table` is `name`, or -1.
  static int32_t FindName(const char* const* table, int first, const char* name) {
    if (name == nullptr) return -1;
    for (int index = first; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
      if (std::strcmp(table[index], name) == 0) return index;
    }
    return -1;
  }

 private:
  static SINK_UPNP_ChangeRoute Route(int index) {
    const SINK_UPNP_StateVariableEntry& entry = SINK_UPNP_stateVariableCatalogue[index];
    return Manager::kOpenHome ? entry.openHomeRoute : entry.standardRoute;
  }

  // The OpenHome transport state (29) follows the AVTransport one, unchecked and unevented here. The two
  // recording states have no OpenHome counterpart and leave it as it was.
  static void FollowTransportState(Manager& m, const char* state) {
    const char* follower = SINK_UPNP_OpenHomeTransportState(state);
    if (follower != nullptr) m.values[SINK_UPNP_PLAYLIST_TRANSPORT_STATE].SetCString(follower);
  }

  // Enters the change into the pending document; called with the lock held.
  static int32_t RecordInLastChange(Manager& m, int index, const char* text) {
    if (m.lastChange == nullptr) {
      const int32_t prepared = PrepareLastChange(m);
      // No document could be had: the value is what the application asked for and stays stored; only
      // its event is lost.
      if (prepared == SINK_UPNP_ERR_GENERIC || prepared == DMR_CMN_ERR_NO_MEMORY) {
        return Release(m, SINK_UPNP_OK);
      }
      if (prepared != 0) return SINK_UPNP_ERR_GENERIC;
    }
    const int32_t result = m.lastChange->SetStateVariable(0, Manager::NameTable()[index], text, nullptr);
    // The document refusing the entry (-1999) counts as recorded, on purpose: the value is stored, and a
    // refused entry is the document's business, not the application's.
    if (result == 0 || result == marlo::kErrorFailure) return Release(m, SINK_UPNP_OK);
    return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
  }

  static int32_t SetInitialValue(Manager& m, int index, DMR_CMN_String* value,
                                 const DMR_CMN_String* protocolInfo, const char* serverAddress,
                                 const marlo::DeviceDescription& description,
                                 const marlo::DeviceDescription::Node* rootDevice) {
    const SINK_UPNP_StateVariableEntry& entry = SINK_UPNP_stateVariableCatalogue[index];
    switch (entry.initialValue) {
      case SINK_UPNP_InitialValue::kLiteral:
        return value->SetCString(Manager::kOpenHome ? entry.openHomeInitialValue : entry.standardInitialValue);
      case SINK_UPNP_InitialValue::kProtocolInfo:
        return value->SetCString(protocolInfo->GetCString());
      case SINK_UPNP_InitialValue::kSourceList:
        return value->SetCString(SINK_UPNP_SOURCE_LIST_XML);
      case SINK_UPNP_InitialValue::kDescription:
      case SINK_UPNP_InitialValue::kDescriptionUrl:
        break;
    }
    if (m.docRootSet != 1) return value->SetCString("");
    const char* element =
        description.GetElementValue(description.GetNode(rootDevice, Manager::NameTable()[index], 0));
    if (entry.initialValue == SINK_UPNP_InitialValue::kDescription) return value->SetCString(element);
    DMR_CMN_String url;
    int32_t result = url.SetCString("http://");
    if (result == 0) result = url.AppendCString(serverAddress);
    if (result == 0) result = url.AppendCString(element);
    if (result == 0) result = value->SetCString(url.GetCString());
    return result;
  }
};

#endif  // SINK_UPNP_STATE_VARIABLE_STORE_H_
