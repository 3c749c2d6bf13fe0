#include "StoreWriter.h"

#include "dmr_cmn/String.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

namespace {

// Writes `value` unless the store holds it already; true when the store changed.
template <typename Store>
bool WriteIfDifferent(Store* store, SINK_UPNP_StateVariableName_t index, const std::string& value) {
  if (store == nullptr) return false;
  DMR_CMN_String current;
  if (store->GetStateVariable(index, &current) == 0 && current.GetCString() != nullptr &&
      value == current.GetCString()) {
    return false;
  }
  DMR_CMN_String text;
  if (text.SetCString(value.c_str()) != 0) return false;
  return store->ChangeStateVariable(index, &text) == 0;
}

}  // namespace

void PLAYER_StoreWriter::SetTransport(SINK_UPNP_StateVariableName_t index, const std::string& value) {
  // The positions and counters are kept without an event: writing them is no change to send.
  const bool evented =
      index < SINK_UPNP_AVT_RELATIVE_TIME_POSITION || index > SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION;
  if (WriteIfDifferent(transportStore_, index, value) && evented) transportChanged_ = true;
  if (WriteIfDifferent(openHomeStore_, index, value) && evented) openHomeChanged_ = true;
}

void PLAYER_StoreWriter::SetOpenHome(SINK_UPNP_StateVariableName_t index, const std::string& value) {
  if (WriteIfDifferent(openHomeStore_, index, value)) openHomeChanged_ = true;
}

void PLAYER_StoreWriter::PublishMetatext(const std::string& count, const std::string& metatext) {
  if (openHomeStore_ == nullptr) return;
  WriteIfDifferent(openHomeStore_, SINK_UPNP_INFO_METATEXT_COUNT, count);
  WriteIfDifferent(openHomeStore_, SINK_UPNP_INFO_METATEXT, metatext);
  DMR_CMN_String names[2];
  DMR_CMN_String values[2];
  if (names[0].SetCString("MetatextCount") != 0 || names[1].SetCString("Metatext") != 0 ||
      values[0].SetCString(count.c_str()) != 0 || values[1].SetCString(metatext.c_str()) != 0) {
    return;
  }
  openHomeStore_->SendEventForOpenHome(names, values, 2);
}

std::string PLAYER_StoreWriter::Read(SINK_UPNP_StateVariableName_t index) const {
  DMR_CMN_String value;
  if (transportStore_ != nullptr && transportStore_->GetStateVariable(index, &value) == 0 &&
      value.GetCString() != nullptr) {
    return value.GetCString();
  }
  if (openHomeStore_ != nullptr && openHomeStore_->GetStateVariable(index, &value) == 0 &&
      value.GetCString() != nullptr) {
    return value.GetCString();
  }
  return "";
}

bool PLAYER_StoreWriter::TakeTransportChanged() {
  const bool changed = transportChanged_;
  transportChanged_ = false;
  return changed;
}

bool PLAYER_StoreWriter::TakeOpenHomeChanged() {
  const bool changed = openHomeChanged_;
  openHomeChanged_ = false;
  return changed;
}
