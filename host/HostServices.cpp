#include "HostServices.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "EventModerator.h"
#include "HostServicesParts.h"
#include "Log.h"
#include "ServiceTypes.h"
#include "UPnPErrors.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/LastChange.h"
#include "sink_core/TransferService.h"

HOST_ActionOutcome HOST_Fault(int32_t code, const char* description) {
  HOST_ActionOutcome outcome;
  outcome.errorCode = code;
  outcome.errorDescription = description;
  return outcome;
}

bool HOST_ReadArgument(const marlo::ActionRequest& request, const char* name, std::string* value) {
  const char* text = request.GetArgumentValue(name);
  if (text == nullptr) return false;
  *value = text;
  return true;
}

bool HOST_ParseUnsigned(const std::string& text, unsigned maximum, unsigned* value) {
  if (text.empty() || text.size() > 9) return false;
  unsigned number = 0;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
    number = number * 10 + static_cast<unsigned>(c - '0');
  }
  if (number > maximum) return false;
  *value = number;
  return true;
}

bool HOST_ParseBoolean(const std::string& text, bool* value) {
  if (text == "1" || text == "true") {
    *value = true;
    return true;
  }
  if (text == "0" || text == "false") {
    *value = false;
    return true;
  }
  return false;
}

HOST_HostServices::HOST_HostServices(SINK_CORE_TransferService* player, HOST_EventSink* events,
                                     PLAYER_Clock* clock, const HOST_VolumeSettings& volume)
    : player_(player),
      events_(events),
      volumeSettings_(volume),
      moderator_(std::make_unique<PLAYER_EventModerator>(*clock, kModerationMilliseconds,
                                                         [this] { SendLastChange(); })) {}

HOST_HostServices::~HOST_HostServices() = default;

HOST_ActionOutcome HOST_HostServices::Perform(const char* serviceType, const marlo::ActionRequest& request,
                                              unsigned long handle) {
  const std::string action = request.GetActionName() != nullptr ? request.GetActionName() : "";
  if (std::strcmp(serviceType, HOST_kRenderingControlType) == 0) return PerformRenderingControl(action, request, handle);
  if (std::strcmp(serviceType, HOST_kVolumeType) == 0) return PerformVolume(action, request, handle);
  if (std::strcmp(serviceType, HOST_kAVTransportType) == 0 && action == "SetNextAVTransportURI")
    return PerformNextUri(request, handle);
  return HOST_Fault(HOST_kInvalidAction, HOST_kInvalidActionText);
}

bool HOST_HostServices::Query(const char* serviceType, const char* variableName, std::string* value) {
  // A host read outside any action: the handle only has to be nonzero.
  constexpr unsigned long kQueryHandle = ~0UL;
  if (!levelKnown_) Refresh(kQueryHandle);
  if (std::strcmp(serviceType, HOST_kRenderingControlType) == 0) {
    if (std::strcmp(variableName, "LastChange") != 0 || !levelKnown_) return false;
    *value = RenderingControlLastChange(true);
    return !value->empty();
  }
  if (std::strcmp(serviceType, HOST_kVolumeType) != 0) return false;
  for (const auto& [name, current] : VolumeState()) {
    if (name == variableName) {
      // Without the player's level, Volume and Mute have no value to give.
      if (!levelKnown_ && (name == "Volume" || name == "Mute")) return false;
      *value = current;
      return true;
    }
  }
  return false;
}

bool HOST_HostServices::ReadLevel(unsigned long handle, Level* level) {
  DMR_CMN_String volume;
  DMR_CMN_String mute;
  const int32_t volumeResult = player_->GetVolume(handle, 0, &volume);
  const int32_t muteResult = player_->GetMute(handle, 0, &mute);
  unsigned number = 0;
  bool muted = false;
  if (volumeResult != 0 || muteResult != 0 || volume.GetCString() == nullptr || mute.GetCString() == nullptr ||
      !HOST_ParseUnsigned(volume.GetCString(), HOST_VolumeCharacteristics::kVolumeMax, &number) ||
      !HOST_ParseBoolean(mute.GetCString(), &muted)) {
    HOST_Log(HOST_LogLevel::Warning, "the player gave no volume (%d) or mute (%d)", static_cast<int>(volumeResult),
             static_cast<int>(muteResult));
    return false;
  }
  level->volume = number;
  level->mute = muted;
  return true;
}

void HOST_HostServices::ApplyStartupVolume() {
  // A host call outside any action: the handle only has to be nonzero.
  constexpr unsigned long kStartHandle = ~0UL;
  const unsigned limit = volumeSettings_.limit;
  unsigned target = 0;
  if (volumeSettings_.startup.has_value()) {
    target = std::min(*volumeSettings_.startup, limit);
  } else {
    Refresh(kStartHandle);
    if (!levelKnown_ || level_.volume <= limit) return;
    target = limit;
  }
  const int32_t result = WriteVolume(kStartHandle, target);
  if (result != 0) {
    HOST_Log(HOST_LogLevel::Warning, "could not set the volume to %u at start: %d", target, static_cast<int>(result));
    return;
  }
  HOST_Log(HOST_LogLevel::Info, "volume %u at start (limit %u)", levelKnown_ ? level_.volume : target, limit);
}

int32_t HOST_HostServices::WriteVolume(unsigned long handle, unsigned volume) {
  volume = std::min(volume, volumeSettings_.limit);
  DMR_CMN_String text;
  if (text.SetCString(std::to_string(volume).c_str()) != 0) return HOST_kActionFailed;
  const int32_t result = player_->SetVolume(handle, 0, &text);
  if (result == 0) Refresh(handle);
  return result;
}

int32_t HOST_HostServices::WriteMute(unsigned long handle, bool mute) {
  DMR_CMN_String text;
  if (text.SetCString(mute ? "1" : "0") != 0) return HOST_kActionFailed;
  const int32_t result = player_->SetMute(handle, 0, &text);
  if (result == 0) Refresh(handle);
  return result;
}

void HOST_HostServices::Refresh(unsigned long handle) {
  Level now;
  if (!ReadLevel(handle, &now)) return;
  HOST_EventBatch changed;
  if (!levelKnown_ || now.volume != level_.volume) changed.emplace_back("Volume", std::to_string(now.volume));
  if (!levelKnown_ || now.mute != level_.mute) changed.emplace_back("Mute", now.mute ? "true" : "false");
  const bool first = !levelKnown_;
  level_ = now;
  levelKnown_ = true;
  // The first reading is what subscribers already got with their first event: nothing changed.
  if (first || changed.empty()) return;
  events_->Notify(HOST_kVolumeType, changed);
  moderator_->Changed();
}

std::string HOST_HostServices::RenderingControlLastChange(bool whole) const {
  std::unique_ptr<marlo::LastChange> document(new (std::nothrow) marlo::LastChange());
  if (document == nullptr || document->SetType(marlo::LastChange::kTypeRenderingControl) != 0) return "";
  const std::string volume = std::to_string(level_.volume);
  if (whole && document->SetStateVariable(0, "PresetNameList", "FactoryDefaults", nullptr) != 0) return "";
  if (document->SetStateVariable(0, "Volume", volume.c_str(), "Master") != 0 ||
      document->SetStateVariable(0, "Mute", level_.mute ? "1" : "0", "Master") != 0)
    return "";
  const char* text = document->GetXMLText();
  return text != nullptr ? text : "";
}

HOST_EventBatch HOST_HostServices::VolumeState() const {
  using C = HOST_VolumeCharacteristics;
  return {{"Volume", std::to_string(level_.volume)},
          {"Mute", level_.mute ? "true" : "false"},
          {"Balance", "0"},
          {"Fade", "0"},
          {"VolumeLimit", std::to_string(volumeSettings_.limit)},
          {"VolumeMax", std::to_string(C::kVolumeMax)},
          {"VolumeUnity", std::to_string(C::kVolumeUnity)},
          {"VolumeSteps", std::to_string(C::kVolumeSteps)},
          {"VolumeMilliDbPerStep", std::to_string(C::kVolumeMilliDbPerStep)},
          {"BalanceMax", std::to_string(C::kBalanceMax)},
          {"FadeMax", std::to_string(C::kFadeMax)}};
}

void HOST_HostServices::SendLastChange() {
  const std::string document = RenderingControlLastChange(false);
  if (document.empty()) {
    HOST_Log(HOST_LogLevel::Warning, "RenderingControl LastChange: no memory for the document");
    return;
  }
  events_->Notify(HOST_kRenderingControlType, {{"LastChange", document}});
}
