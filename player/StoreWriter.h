// PLAYER_StoreWriter: writes what the player knows into the state variable stores it was attached to, and
// says which stores now hold changes that are due to be evented.
//
// The AVTransport variables (0 to 25) go to both stores: the standard store events them in its LastChange
// document, the OpenHome store derives its Playlist transport state from index 0. The OpenHome variables
// (Time, Info, Playlist "Id") go to the OpenHome store only, since the standard store would put some of
// them (Info "Uri", "Metadata", ...) into AVTransport's LastChange under names AVTransport does not have.
//
// A value equal to the stored one is not written, so nothing is evented while nothing changes.
// Runs on the player's thread only.
#ifndef PLAYER_STORE_WRITER_H_
#define PLAYER_STORE_WRITER_H_

#include <string>

#include "sink_upnp/StateVariableCatalogue.h"

class SINK_UPNP_OpenHomeStateVariableManager;
class SINK_UPNP_SinkCTSSStateVariableManager;

class PLAYER_StoreWriter {
 public:
  void AttachTransportStore(SINK_UPNP_SinkCTSSStateVariableManager* store) { transportStore_ = store; }
  void AttachOpenHomeStore(SINK_UPNP_OpenHomeStateVariableManager* store) { openHomeStore_ = store; }
  SINK_UPNP_SinkCTSSStateVariableManager* TransportStore() const { return transportStore_; }
  SINK_UPNP_OpenHomeStateVariableManager* OpenHomeStore() const { return openHomeStore_; }

  // An AVTransport variable, in every attached store.
  void SetTransport(SINK_UPNP_StateVariableName_t index, const std::string& value);
  // A Time, Info or Playlist variable, in the OpenHome store.
  void SetOpenHome(SINK_UPNP_StateVariableName_t index, const std::string& value);
  // Info's "Metatext" and "MetatextCount": the store keeps them without flagging them, so they are sent
  // here at once as one Info batch.
  void PublishMetatext(const std::string& count, const std::string& metatext);

  // The value in the standard store, else in the OpenHome store; "" when neither has it.
  std::string Read(SINK_UPNP_StateVariableName_t index) const;

  // True once since a write changed the standard store (its LastChange is due).
  bool TakeTransportChanged();
  // True once since a write changed the OpenHome store (its flagged variables are due).
  bool TakeOpenHomeChanged();

 private:
  SINK_UPNP_SinkCTSSStateVariableManager* transportStore_ = nullptr;
  SINK_UPNP_OpenHomeStateVariableManager* openHomeStore_ = nullptr;
  bool transportChanged_ = false;
  bool openHomeChanged_ = false;
};

#endif  // PLAYER_STORE_WRITER_H_
