// OpenHome Volume:1 on the player's volume and mute.
//
// Choices:
//  - The characteristics are fixed at start-up (HOST_VolumeCharacteristics); the volume limit is
//    configured (HOST_VolumeSettings, at most the maximum). A SetVolume above the maximum is refused 402
//    "Invalid Args", so that a control point learns that its value is not a volume; one above the limit
//    sets the limit, so that a slider pushed to its end still turns the volume up as far as allowed.
//  - VolumeInc and VolumeDec move one step and stop at the limit and at 0 without an error: a held
//    button must not fill the control point with faults.
//  - BalanceMax and FadeMax are 0: the renderer has neither. Balance and Fade answer their one value,
//    0; the actions that would change them answer 501 "Action Failed", which tells a control point that
//    the action cannot be carried out on this device.
//  - Mute is written "true"/"false", as the other OpenHome services write their booleans; SetMute also
//    takes "1"/"0".
#include "HostServices.h"
#include "HostServicesParts.h"
#include "UPnPErrors.h"

namespace {

HOST_ActionOutcome Answer(const char* name, std::string value) {
  HOST_ActionOutcome outcome;
  outcome.out.emplace_back(name, std::move(value));
  return outcome;
}

HOST_ActionOutcome ActionFailed() { return HOST_Fault(HOST_kActionFailed, HOST_kActionFailedText); }

bool ChangesBalanceOrFade(const std::string& action) {
  for (const char* name : {"SetBalance", "BalanceInc", "BalanceDec", "SetFade", "FadeInc", "FadeDec"})
    if (action == name) return true;
  return false;
}

}  // namespace

HOST_ActionOutcome HOST_HostServices::PerformVolume(const std::string& action, const marlo::ActionRequest& request,
                                                   unsigned long handle) {
  using C = HOST_VolumeCharacteristics;
  if (action == "Characteristics") {
    HOST_ActionOutcome outcome;
    outcome.out = {{"VolumeMax", std::to_string(C::kVolumeMax)},
                   {"VolumeUnity", std::to_string(C::kVolumeUnity)},
                   {"VolumeSteps", std::to_string(C::kVolumeSteps)},
                   {"VolumeMilliDbPerStep", std::to_string(C::kVolumeMilliDbPerStep)},
                   {"BalanceMax", std::to_string(C::kBalanceMax)},
                   {"FadeMax", std::to_string(C::kFadeMax)}};
    return outcome;
  }
  if (action == "VolumeLimit") return Answer("Value", std::to_string(volumeSettings_.limit));
  if (action == "Balance" || action == "Fade") return Answer("Value", "0");
  if (ChangesBalanceOrFade(action)) return ActionFailed();
  if (action == "SetVolume") {
    std::string text;
    unsigned volume = 0;
    if (!HOST_ReadArgument(request, "Value", &text) || !HOST_ParseUnsigned(text, C::kVolumeMax, &volume))
      return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return WriteVolume(handle, volume) == 0 ? HOST_ActionOutcome() : ActionFailed();
  }
  if (action == "SetMute") {
    std::string text;
    bool mute = false;
    if (!HOST_ReadArgument(request, "Value", &text) || !HOST_ParseBoolean(text, &mute))
      return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return WriteMute(handle, mute) == 0 ? HOST_ActionOutcome() : ActionFailed();
  }
  if (action != "Volume" && action != "Mute" && action != "VolumeInc" && action != "VolumeDec")
    return HOST_Fault(HOST_kInvalidAction, HOST_kInvalidActionText);
  Refresh(handle);
  if (!levelKnown_) return ActionFailed();
  if (action == "Volume") return Answer("Value", std::to_string(level_.volume));
  if (action == "Mute") return Answer("Value", level_.mute ? "true" : "false");
  const unsigned now = level_.volume;
  const unsigned next = action == "VolumeInc" ? (now < volumeSettings_.limit ? now + 1 : now) : (now > 0 ? now - 1 : now);
  if (next == now) return HOST_ActionOutcome();
  return WriteVolume(handle, next) == 0 ? HOST_ActionOutcome() : ActionFailed();
}
