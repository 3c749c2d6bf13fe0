#include "ConsoleApplication.h"

#include "dmr_cmn/String.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

int32_t ConsoleApplication::SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri,
                                              DMR_CMN_String*) {
  uri_ = uri->GetCString() != nullptr ? uri->GetCString() : "";
  return Report("STOPPED");
}

int32_t ConsoleApplication::Play(unsigned long, unsigned long, DMR_CMN_String*) {
  if (uri_.empty()) return 701;  // nothing to play
  return Report("PLAYING");
}

int32_t ConsoleApplication::Stop(unsigned long, unsigned long) { return Report("STOPPED"); }

int32_t ConsoleApplication::GetTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state,
                                             DMR_CMN_String* status, DMR_CMN_String* speed) {
  if (store_ == nullptr || store_->GetStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, state) != 0) return 501;
  if (status->SetCString("OK") != 0 || speed->SetCString("1") != 0) return 501;
  return 0;
}

int32_t ConsoleApplication::Report(const char* transportState) {
  DMR_CMN_String value;
  if (store_ == nullptr || value.SetCString(transportState) != 0) return 501;
  if (store_->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &value) != 0) return 501;
  // SendEvent hands the batch to the service's eventing thread and returns; subscribers get it from there.
  return store_->SendEvent() == 0 ? 0 : 501;
}
