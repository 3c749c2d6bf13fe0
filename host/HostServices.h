// HOST_HostServices: the answers the daemon gives itself rather than leaving them to a service object:
// AVTransport's SetNextAVTransportURI, RenderingControl:1 and OpenHome Volume:1, all on the player's one
// volume and mute, so that a change through either service is seen, and evented, by both.
//
// Subjects, one file each: HostServices.cpp (dispatch, the shared volume state and its events),
// HostServices_NextUri.cpp, HostServices_RenderingControl.cpp, HostServices_Volume.cpp.
//
// Events: after every successful change the player is read back (it is the truth: a hardware mixer may
// round), and when volume or mute moved, OpenHome Volume gets a batch of the changed variables at once
// and RenderingControl a "LastChange" document with channel="Master", at most one every 200 ms (the
// first at once, later ones coalesced into one at the end of the interval). A query (a new
// subscriber's first event) is answered with the whole state.
//
// Main loop only. The clock runs the moderation timer: the daemon's is a GLib clock on the main context,
// tests give a manual one.
#ifndef HOST_HOST_SERVICES_H_
#define HOST_HOST_SERVICES_H_

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "ActionRouter.h"
#include "EventSink.h"

namespace marlo {
class ActionRequest;
}
class SINK_CORE_TransferService;
class HOST_EventSink;
class PLAYER_Clock;
class PLAYER_EventModerator;

// The fixed characteristics of the OpenHome volume, reported by Characteristics and evented: the
// player's scale is 0..100 percent on a cubic curve, so one step is one percent; unity and the
// milli-dB per step are nominal values for control points that show them, not a measured gain.
struct HOST_VolumeCharacteristics {
  static constexpr unsigned kVolumeMax = 100;
  static constexpr unsigned kVolumeUnity = 80;
  static constexpr unsigned kVolumeSteps = 100;
  static constexpr unsigned kVolumeMilliDbPerStep = 1024;
  static constexpr unsigned kBalanceMax = 0;
  static constexpr unsigned kFadeMax = 0;
};

// What the person running the renderer chose about its volume.
struct HOST_VolumeSettings {
  // No control point can set more: a request for more sets the limit (VolumeLimit reports it).
  unsigned limit = HOST_VolumeCharacteristics::kVolumeMax;
  // Set by ApplyStartupVolume (never above the limit); none: the volume stays as the output has it.
  std::optional<unsigned> startup;
};

class HOST_HostServices {
 public:
  // Interval of RenderingControl's LastChange events.
  static constexpr int64_t kModerationMilliseconds = 200;

  // `player`, `events` and `clock` must outlive the object.
  HOST_HostServices(SINK_CORE_TransferService* player, HOST_EventSink* events, PLAYER_Clock* clock,
                    const HOST_VolumeSettings& volume = HOST_VolumeSettings());
  ~HOST_HostServices();
  HOST_HostServices(const HOST_HostServices&) = delete;
  HOST_HostServices& operator=(const HOST_HostServices&) = delete;

  // Answers `request`, sent to the service of type `serviceType`; `handle` is the router's action handle.
  HOST_ActionOutcome Perform(const char* serviceType, const marlo::ActionRequest& request, unsigned long handle);
  // Once, when the renderer starts and before it is announced: sets the startup volume, or lowers a volume
  // found above the limit to the limit, so that the first events already hold the volume in force. Logs
  // what it did; a player that cannot say or set its volume is logged and left alone.
  void ApplyStartupVolume();
  // The value of an evented variable of RenderingControl or Volume for a new subscriber.
  bool Query(const char* serviceType, const char* variableName, std::string* value);

 private:
  struct Level {
    unsigned volume = 0;
    bool mute = false;
  };

  HOST_ActionOutcome PerformNextUri(const marlo::ActionRequest& request, unsigned long handle);
  HOST_ActionOutcome PerformRenderingControl(const std::string& action, const marlo::ActionRequest& request,
                                             unsigned long handle);
  HOST_ActionOutcome PerformVolume(const std::string& action, const marlo::ActionRequest& request,
                                   unsigned long handle);

  // Reads volume and mute from the player into *level; false when the player could not say.
  bool ReadLevel(unsigned long handle, Level* level);
  // Sets the volume (0..100, lowered to the limit) or the mute in the player and events what changed: 0 or the player's result.
  int32_t WriteVolume(unsigned long handle, unsigned volume);
  int32_t WriteMute(unsigned long handle, bool mute);
  // Reads the player back and events a change of volume or mute against what was evented last.
  void Refresh(unsigned long handle);

  std::string RenderingControlLastChange(bool whole) const;
  HOST_EventBatch VolumeState() const;
  void SendLastChange();

  SINK_CORE_TransferService* player_;
  HOST_EventSink* events_;
  HOST_VolumeSettings volumeSettings_;
  std::unique_ptr<PLAYER_EventModerator> moderator_;
  Level level_;
  bool levelKnown_ = false;
};

#endif  // HOST_HOST_SERVICES_H_
