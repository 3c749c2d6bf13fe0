#include "sink_upnp/OpenHomeStateVariableManager.h"

#include <cstdlib>
#include <new>

#include "dmr_cmn/Memory.h"
#include "sink_upnp/StateVariableStore.h"

namespace {

using Store = SINK_UPNP_StateVariableStore<SINK_UPNP_OpenHomeStateVariableManager>;

// The OpenHome services' groups of variables, in the order SendEvent sends them.
struct ServiceGroup {
  int first;
  int last;
  DMR_CMN_UPnPEventingThread* SINK_UPNP_OpenHomeStateVariableManager::*thread;
};

}  // namespace

SINK_UPNP_OpenHomeStateVariableManager::SINK_UPNP_OpenHomeStateVariableManager() {
  productEventingThread = nullptr;
  playlistEventingThread = nullptr;
  infoEventingThread = nullptr;
  timeEventingThread = nullptr;
  senderEventingThread = nullptr;
  Store::Construct(*this);
  for (int32_t& flag : SINK_UPNP_changeStateVariableTablet) flag = 0;
}

SINK_UPNP_OpenHomeStateVariableManager::~SINK_UPNP_OpenHomeStateVariableManager() { Store::Destroy(*this); }

int32_t SINK_UPNP_OpenHomeStateVariableManager::SendEvent() {
  static const ServiceGroup kGroups[] = {
      {SINK_UPNP_PLAYLIST_TRANSPORT_STATE, SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED,
       &SINK_UPNP_OpenHomeStateVariableManager::playlistEventingThread},
      {SINK_UPNP_PRODUCT_MANUFACTURER_NAME, SINK_UPNP_PRODUCT_ATTRIBUTES,
       &SINK_UPNP_OpenHomeStateVariableManager::productEventingThread},
      {SINK_UPNP_TIME_TRACK_COUNT, SINK_UPNP_TIME_SECONDS,
       &SINK_UPNP_OpenHomeStateVariableManager::timeEventingThread},
      {SINK_UPNP_INFO_TRACK_COUNT, SINK_UPNP_INFO_METATEXT,
       &SINK_UPNP_OpenHomeStateVariableManager::infoEventingThread},
      {SINK_UPNP_SENDER_PRESENTATION_URL, SINK_UPNP_SENDER_ATTRIBUTES,
       &SINK_UPNP_OpenHomeStateVariableManager::senderEventingThread},
  };

  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;
  int32_t sent = SINK_UPNP_OK;
  for (const ServiceGroup& group : kGroups) {
    long count = 0;
    for (int index = group.first; index <= group.last; ++index) {
      if (SINK_UPNP_changeStateVariableTablet[index] != 1) continue;
      notifyArgumentName[count].SetCString(SINK_UPNP_stateVariableNameTableForOpenHome[index]);
      notifyArgumentValue[count].SetCString(values[index].GetCString());
      ++count;
      // Cleared also for a service without a thread: nobody has subscribed to its changes, and a flag
      // kept would send a stale value when a thread is registered later.
      SINK_UPNP_changeStateVariableTablet[index] = 0;
    }
    DMR_CMN_UPnPEventingThread* thread = this->*group.thread;
    if (count > 0 && thread != nullptr) {
      sent = thread->NotifyUpdateForOpenHome(notifyArgumentName, notifyArgumentValue, count);
    }
  }

  // The OpenHome services have no LastChange variable: the pending document exists for the
  // application's listener only. With none pending, the sends' results are not looked at.
  if (lastChange == nullptr) return Store::Release(*this, SINK_UPNP_OK);
  const char* xml = lastChange->GetXMLText();
  if (xml == nullptr) return Store::Release(*this, SINK_UPNP_ERR_GENERIC);
  Store::ReportToListener(*this, xml);
  CleanLastChange();
  if (sent == 0 || sent == DMR_CMN_ERR_NO_MEMORY) return Store::Release(*this, sent);
  return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::SendEventForOpenHome(DMR_CMN_String* batchNames,
                                                                     DMR_CMN_String* batchValues,
                                                                     long count) {
  if (batchNames == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  // The batch goes to the service of its first name, looked up from the Playlist variables upward: a
  // name several services share ("Metadata", "Uri", ...) selects the lowest: one fixed rule, so a batch
  // never depends on which service asked.
  const int32_t index = Store::FindName(SINK_UPNP_stateVariableNameTableForOpenHome,
                                        SINK_UPNP_PLAYLIST_TRANSPORT_STATE, batchNames[0].GetCString());
  if (index < 0) return SINK_UPNP_OK;
  DMR_CMN_UPnPEventingThread* thread = nullptr;
  if (index <= SINK_UPNP_PLAYLIST_ID_ARRAY_CHANGED) {
    thread = playlistEventingThread;
  } else if (index <= SINK_UPNP_PRODUCT_ATTRIBUTES) {
    thread = productEventingThread;
  } else if (index <= SINK_UPNP_TIME_SECONDS) {
    thread = timeEventingThread;
  } else if (index <= SINK_UPNP_INFO_METATEXT) {
    thread = infoEventingThread;
  } else {
    thread = senderEventingThread;
  }
  // Without the service's thread there is nowhere to send; answered rather than dereferenced.
  if (thread == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
  return thread->NotifyUpdateForOpenHome(batchNames, batchValues, count);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterProductServiceEventListener(marlo::EventHandler* h) {
  return Store::RegisterEventingThread(*this, productEventingThread, h);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterPlaylistServiceEventListener(marlo::EventHandler* h) {
  return Store::RegisterEventingThread(*this, playlistEventingThread, h);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterInfoServiceEventListener(marlo::EventHandler* h) {
  return Store::RegisterEventingThread(*this, infoEventingThread, h);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterTimeServiceEventListener(marlo::EventHandler* h) {
  return Store::RegisterEventingThread(*this, timeEventingThread, h);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterSenderServiceEventListener(marlo::EventHandler* h) {
  return Store::RegisterEventingThread(*this, senderEventingThread, h);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterProductServiceEventListener() {
  return Store::UnregisterEventingThread(*this, productEventingThread);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterPlaylistServiceEventListener() {
  return Store::UnregisterEventingThread(*this, playlistEventingThread);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterInfoServiceEventListener() {
  return Store::UnregisterEventingThread(*this, infoEventingThread);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterTimeServiceEventListener() {
  return Store::UnregisterEventingThread(*this, timeEventingThread);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterSenderServiceEventListener() {
  return Store::UnregisterEventingThread(*this, senderEventingThread);
}

// This store has no AVTransport thread; the pair exists for the service's table and refuses.
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterAVTransportServiceEventListener(
    marlo::EventHandler* handler) {
  if (handler == nullptr) return SINK_UPNP_ERR_NULL_ARGUMENT;
  return initialized == 1 ? SINK_UPNP_ERR_GENERIC : SINK_UPNP_ERR_NOT_INITIALIZED;
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterAVTransportServiceEventListener() {
  return initialized == 1 ? SINK_UPNP_ERR_GENERIC : SINK_UPNP_ERR_NOT_INITIALIZED;
}

// The shared operations, each the shared algorithm of sink_upnp/StateVariableStore.h for this store.

void* SINK_UPNP_OpenHomeStateVariableManager::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return DMR_CMN_Malloc(size);
}
void SINK_UPNP_OpenHomeStateVariableManager::operator delete(void* block) noexcept { std::free(block); }
void SINK_UPNP_OpenHomeStateVariableManager::operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::Initialize() { return Store::Initialize(*this); }
int32_t SINK_UPNP_OpenHomeStateVariableManager::Finalize() { return Store::Finalize(*this); }
int32_t SINK_UPNP_OpenHomeStateVariableManager::InitializeVariables(const DMR_CMN_String* protocolInfo) {
  return Store::InitializeVariables(*this, protocolInfo);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::GetStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                 DMR_CMN_String* out) {
  return Store::GetStateVariable(*this, index, out);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::ChangeStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                    const DMR_CMN_String* value) {
  return Store::ChangeStateVariable(*this, index, value);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::SetDocRoot(char* path) {
  return Store::SetDocRoot(*this, path);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                   const char* text) {
  return SINK_UPNP_CheckStateVariable(index, text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckTransportState(const char* text) {
  return SINK_UPNP_CheckTransportState(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckTransportStatus(const char* text) {
  return SINK_UPNP_CheckTransportStatus(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckPlaybackStorageMedium(const char* text) {
  return SINK_UPNP_CheckPlaybackStorageMedium(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckCurrentPlayMode(const char* text) {
  return SINK_UPNP_CheckCurrentPlayMode(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckTransportPlaySpeed(const char* text) {
  return SINK_UPNP_CheckTransportPlaySpeed(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckRecordMediumWriteStatus(const char* text) {
  return SINK_UPNP_CheckRecordMediumWriteStatus(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckCurrentRecordQualityMode(const char* text) {
  return SINK_UPNP_CheckCurrentRecordQualityMode(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckTypeInteger4Byte(const char* text) {
  return SINK_UPNP_CheckTypeInteger4Byte(text);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::CheckTypeUnsignedInteger4Byte(const char* text) {
  return SINK_UPNP_CheckTypeUnsignedInteger4Byte(text);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::PrepareLastChange() {
  return Store::PrepareLastChange(*this);
}
void SINK_UPNP_OpenHomeStateVariableManager::CleanLastChange() { Store::CleanLastChange(*this); }
int32_t SINK_UPNP_OpenHomeStateVariableManager::GetLastChange(DMR_CMN_String* out) {
  return Store::GetLastChange(*this, out);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::ConvConstNum(const char* name) {
  return Store::ConvConstNum(*this, name);
}
char* SINK_UPNP_OpenHomeStateVariableManager::ConvertControlCharacter(const char* text) {
  return Store::ConvertControlCharacter(*this, text);
}

int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterApplicationAVTEventListener(
    DMR_CMN_AVTEventListener* listener) {
  return Store::RegisterApplicationAVTEventListener(*this, listener);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterApplicationAVTEventListener() {
  return Store::UnregisterApplicationAVTEventListener(*this);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::RegisterApplicationCMSEventListener(
    DMR_CMN_CMSEventListener* listener) {
  return Store::RegisterApplicationCMSEventListener(*this, listener);
}
int32_t SINK_UPNP_OpenHomeStateVariableManager::UnregisterApplicationCMSEventListener() {
  return Store::UnregisterApplicationCMSEventListener(*this);
}
