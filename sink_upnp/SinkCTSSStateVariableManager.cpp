#include "sink_upnp/SinkCTSSStateVariableManager.h"

#include "sink_upnp/StateVariableStore.h"

SINK_UPNP_DEFINE_SHARED_STORE_OPERATIONS(SINK_UPNP_SinkCTSSStateVariableManager)

SINK_UPNP_SinkCTSSStateVariableManager::SINK_UPNP_SinkCTSSStateVariableManager() {
  avtEventingThread = nullptr;
  SINK_UPNP_SinkCTSSStateVariableManagerStore::Construct(*this);
}

SINK_UPNP_SinkCTSSStateVariableManager::~SINK_UPNP_SinkCTSSStateVariableManager() {
  SINK_UPNP_SinkCTSSStateVariableManagerStore::Destroy(*this);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::SendEvent() {
  using Store = SINK_UPNP_SinkCTSSStateVariableManagerStore;
  if (initialized != 1) return SINK_UPNP_ERR_NOT_INITIALIZED;
  if (avtEventingThread == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
  if (lock->Lock() != 0) return SINK_UPNP_ERR_GENERIC;
  if (lastChange == nullptr) return Store::Release(*this, SINK_UPNP_ERR_OUT_OF_RANGE);  // nothing pending

  const char* xml = lastChange->GetXMLText();
  if (xml == nullptr) return Store::Release(*this, SINK_UPNP_ERR_GENERIC);
  const int32_t sent = avtEventingThread->NotifyUpdate("LastChange", xml);
  Store::ReportToListener(*this, xml);
  // A failed send consumes what was pending all the same.
  CleanLastChange();
  if (sent == 0 || sent == DMR_CMN_ERR_NO_MEMORY) return Store::Release(*this, sent);
  return SINK_UPNP_ERR_GENERIC;  // lock held, on purpose
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::SendEventForOpenHome(DMR_CMN_String* batchNames,
                                                                     DMR_CMN_String* batchValues, long count) {
  // Without a thread there is nowhere to send; answered rather than dereferenced.
  if (avtEventingThread == nullptr) return SINK_UPNP_ERR_NOT_REGISTERED;
  return avtEventingThread->NotifyUpdateForOpenHome(batchNames, batchValues, count);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::RegisterAVTransportServiceEventListener(
    marlo::EventHandler* handler) {
  return SINK_UPNP_SinkCTSSStateVariableManagerStore::RegisterEventingThread(*this, avtEventingThread, handler);
}

int32_t SINK_UPNP_SinkCTSSStateVariableManager::UnregisterAVTransportServiceEventListener() {
  return SINK_UPNP_SinkCTSSStateVariableManagerStore::UnregisterEventingThread(*this, avtEventingThread);
}
