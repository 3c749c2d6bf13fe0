// RenderingControl:1 on the player's volume and mute: one instance ("0") and one channel ("Master").
//
// Choices:
//  - The one preset, "FactoryDefaults", holds no setting of its own: the renderer has no tone, loudness
//    or balance controls, and putting the volume back to a default on a control point's request could be
//    loud. Selecting it succeeds and changes nothing.
//  - The player's volume is a percentage on a cubic curve, with no gain in dB behind it; GetVolumeDB,
//    SetVolumeDB and GetVolumeDBRange check their arguments and then answer 501 "Action Failed", the
//    answer RenderingControl:1 leaves for an action the device cannot carry out.
//  - SetVolume takes 0..100 (the SCPD's range; more is 402) and sets at most the configured limit, as
//    OpenHome Volume does: the one volume has one limit.
#include "HostServices.h"
#include "HostServicesParts.h"
#include "UPnPErrors.h"

namespace {

constexpr char kPreset[] = "FactoryDefaults";

// The actions, and whether each names a channel besides the instance.
struct Addressing {
  const char* action;
  bool channel;
};
const Addressing kActions[] = {
    {"ListPresets", false}, {"SelectPreset", false},    {"GetVolume", true},
    {"SetVolume", true},    {"GetMute", true},          {"SetMute", true},
    {"GetVolumeDB", true},  {"SetVolumeDB", true},      {"GetVolumeDBRange", true},
};

const Addressing* Find(const std::string& action) {
  for (const Addressing& row : kActions)
    if (action == row.action) return &row;
  return nullptr;
}

// 0 when InstanceID is "0" and, for `withChannel`, Channel is "Master"; else the fault to answer.
int32_t CheckAddress(const marlo::ActionRequest& request, bool withChannel, HOST_ActionOutcome* fault) {
  std::string instance;
  std::string channel;
  if (!HOST_ReadArgument(request, "InstanceID", &instance) ||
      (withChannel && !HOST_ReadArgument(request, "Channel", &channel))) {
    *fault = HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return fault->errorCode;
  }
  if (instance != "0") {
    *fault = HOST_Fault(HOST_kRenderingControlInvalidInstanceId, HOST_kRenderingControlInvalidInstanceIdText);
    return fault->errorCode;
  }
  if (withChannel && channel != "Master") {
    *fault = HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return fault->errorCode;
  }
  return 0;
}

HOST_ActionOutcome Answer(const char* name, std::string value) {
  HOST_ActionOutcome outcome;
  outcome.out.emplace_back(name, std::move(value));
  return outcome;
}

HOST_ActionOutcome ActionFailed() { return HOST_Fault(HOST_kActionFailed, HOST_kActionFailedText); }

}  // namespace

HOST_ActionOutcome HOST_HostServices::PerformRenderingControl(const std::string& action,
                                                             const marlo::ActionRequest& request,
                                                             unsigned long handle) {
  const Addressing* addressing = Find(action);
  if (addressing == nullptr) return HOST_Fault(HOST_kInvalidAction, HOST_kInvalidActionText);
  HOST_ActionOutcome fault;
  if (CheckAddress(request, addressing->channel, &fault) != 0) return fault;

  if (action == "ListPresets") return Answer("CurrentPresetNameList", kPreset);
  if (action == "SelectPreset") {
    std::string name;
    if (!HOST_ReadArgument(request, "PresetName", &name)) return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    if (name != kPreset) return HOST_Fault(HOST_kInvalidPresetName, HOST_kInvalidPresetNameText);
    return HOST_ActionOutcome();
  }
  if (action == "GetVolume" || action == "GetMute") {
    Refresh(handle);
    if (!levelKnown_) return ActionFailed();
    if (action == "GetVolume") return Answer("CurrentVolume", std::to_string(level_.volume));
    return Answer("CurrentMute", level_.mute ? "1" : "0");
  }
  if (action == "SetVolume") {
    std::string text;
    unsigned volume = 0;
    if (!HOST_ReadArgument(request, "DesiredVolume", &text) ||
        !HOST_ParseUnsigned(text, HOST_VolumeCharacteristics::kVolumeMax, &volume))
      return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return WriteVolume(handle, volume) == 0 ? HOST_ActionOutcome() : ActionFailed();
  }
  if (action == "SetMute") {
    std::string text;
    bool mute = false;
    if (!HOST_ReadArgument(request, "DesiredMute", &text) || !HOST_ParseBoolean(text, &mute))
      return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
    return WriteMute(handle, mute) == 0 ? HOST_ActionOutcome() : ActionFailed();
  }
  // The dB actions: no gain in dB to report or set.
  if (action == "SetVolumeDB") {
    std::string text;
    if (!HOST_ReadArgument(request, "DesiredVolume", &text)) return HOST_Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
  }
  return ActionFailed();
}
