#include "sink_upnp/SinkCTSSStateVariableManager.h"

#include <cstdlib>
#include <new>

#include "dmr_cmn/Memory.h"
#include "sink_upnp/StateVariableStore.h"

namespace {
using Store = SINK_UPNP_StateVariableStore<SINK_UPNP_SinkCTSSStateVariableManager>;
}  // namespace

SINK_UPNP_SinkCTSSStateVariableManager::SINK_UPNP_SinkCTSSStateVariableManager() {
  avtEventingThread = nullptr;
  Store::Construct(*this);
}

SINK_UPNP_SinkCTSSStateVariableManager::~SINK_UPNP_SinkCTSSStateVariableManager() { Store::Destroy(*this); }

int32_t SINK_UPNP_SinkCTSSStateVariableManager::SendEvent() {
  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (avtEventingThread == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
  if (lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;
  if (lastChange == nullptr) return Store::Release(*this, SINK_UPNP_ERR_OUT_OF_RANGE);  // nothing pending

  const char* xml = lastChange->GetXMLText();
  if (xml == nullptr) return Store::Release(*this, SINK_UPNP_ERR_GENERIC);
  const int32_t sent = avtEventingThread->NotifyUpdate("LastChange", xml);
  Store::ReportToListener(*this, xml);
  // Consumed even when the send failed, so that one broken delivery can neither hold back nor repeat the
  // changes that follow.
  CleanLastChange();
  if (sent == 0 || sent == DMR_CMN_ERR_NO_MEMORY) return Store::Release(*this, sent);
  return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::SendEventForOpenHome(DMR_CMN_String* batchNames,
                                                                     DMR_CMN_String* batchValues,
                                                                     long count) {
  // Without a thread there is nowhere to send; answered rather than dereferenced.
  if (avtEventingThread == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
  return avtEventingThread->NotifyUpdateForOpenHome(batchNames, batchValues, count);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::RegisterAVTransportServiceEventListener(
    marlo::EventHandler* handler) {
  return Store::RegisterEventingThread(*this, avtEventingThread, handler);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::UnregisterAVTransportServiceEventListener() {
  return Store::UnregisterEventingThread(*this, avtEventingThread);
}

// The shared operations, each the shared algorithm of sink_upnp/StateVariableStore.h for this store.

void* SINK_UPNP_SinkCTSSStateVariableManager::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  return DMR_CMN_Malloc(size);
}
void SINK_UPNP_SinkCTSSStateVariableManager::operator delete(void* block) noexcept { std::free(block); }
void SINK_UPNP_SinkCTSSStateVariableManager::operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::Initialize() { return Store::Initialize(*this); }
int32_t SINK_UPNP_SinkCTSSStateVariableManager::Finalize() { return Store::Finalize(*this); }
int32_t SINK_UPNP_SinkCTSSStateVariableManager::InitializeVariables(const DMR_CMN_String* protocolInfo) {
  return Store::InitializeVariables(*this, protocolInfo);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::GetStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                 DMR_CMN_String* out) {
  return Store::GetStateVariable(*this, index, out);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::ChangeStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                    const DMR_CMN_String* value) {
  return Store::ChangeStateVariable(*this, index, value);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::SetDocRoot(char* path) {
  return Store::SetDocRoot(*this, path);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckStateVariable(SINK_UPNP_StateVariableName_t index,
                                                                   const char* text) {
  return SINK_UPNP_CheckStateVariable(index, text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckTransportState(const char* text) {
  return SINK_UPNP_CheckTransportState(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckTransportStatus(const char* text) {
  return SINK_UPNP_CheckTransportStatus(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckPlaybackStorageMedium(const char* text) {
  return SINK_UPNP_CheckPlaybackStorageMedium(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckCurrentPlayMode(const char* text) {
  return SINK_UPNP_CheckCurrentPlayMode(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckTransportPlaySpeed(const char* text) {
  return SINK_UPNP_CheckTransportPlaySpeed(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckRecordMediumWriteStatus(const char* text) {
  return SINK_UPNP_CheckRecordMediumWriteStatus(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckCurrentRecordQualityMode(const char* text) {
  return SINK_UPNP_CheckCurrentRecordQualityMode(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckTypeInteger4Byte(const char* text) {
  return SINK_UPNP_CheckTypeInteger4Byte(text);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::CheckTypeUnsignedInteger4Byte(const char* text) {
  return SINK_UPNP_CheckTypeUnsignedInteger4Byte(text);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::PrepareLastChange() {
  return Store::PrepareLastChange(*this);
}
void SINK_UPNP_SinkCTSSStateVariableManager::CleanLastChange() { Store::CleanLastChange(*this); }
int32_t SINK_UPNP_SinkCTSSStateVariableManager::GetLastChange(DMR_CMN_String* out) {
  return Store::GetLastChange(*this, out);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::ConvConstNum(const char* name) {
  return Store::ConvConstNum(*this, name);
}
char* SINK_UPNP_SinkCTSSStateVariableManager::ConvertControlCharacter(const char* text) {
  return Store::ConvertControlCharacter(*this, text);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::RegisterApplicationAVTEventListener(
    DMR_CMN_AVTEventListener* listener) {
  return Store::RegisterApplicationAVTEventListener(*this, listener);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::UnregisterApplicationAVTEventListener() {
  return Store::UnregisterApplicationAVTEventListener(*this);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::RegisterApplicationCMSEventListener(
    DMR_CMN_CMSEventListener* listener) {
  return Store::RegisterApplicationCMSEventListener(*this, listener);
}
int32_t SINK_UPNP_SinkCTSSStateVariableManager::UnregisterApplicationCMSEventListener() {
  return Store::UnregisterApplicationCMSEventListener(*this);
}
