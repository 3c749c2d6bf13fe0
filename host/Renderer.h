// HOST_Renderer: the two service objects and the player, taken through their host call order.
//
//   Prepare:  construct; Initialize(properties); register every service's event handler and the
//             application's listeners; RegisterTransferService with the player.
//   Start:    marlo::Device::SetServerIPAddress, then Start of both objects; the startup volume; the
//             saved playlist put back (when KeepPlaylist was called); WarnTimeOut when the player asks
//             for it.
//   Shutdown: a pending save of the playlist made; Stop; unregister everything (which joins the eventing threads); drain the main context so
//             that every batch already handed on is sent; Finalize of the player (it lets go of the
//             stores); Finalize of both objects.
//
// Each step that fails is reported with its name and result code, and the step stops there. Everything
// runs on the main loop.
//
// The objects run once, for the life of the daemon. Were one ever restarted (say for a new
// configuration), the OpenHome object would go through Finalize and Initialize, never Stop and Start:
// each Start appends "/openhome.xml" to the document root it was given once, so a second Start would
// look for the product sheet in the wrong place.
#ifndef HOST_RENDERER_H_
#define HOST_RENDERER_H_

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "ActionRouter.h"
#include "EventBridge.h"
#include "HostServices.h"
#include "PlaylistKeeper.h"
#include "marlo/Properties.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

class SINK_CORE_TransferService;
class HOST_EventSink;
class PLAYER_GLibClock;
typedef struct _GMainContext GMainContext;

struct HOST_StepFailure {
  std::string step;  // e.g. "OpenHome RegisterTransferService"
  int32_t result;
};

class HOST_Renderer {
 public:
  // `player` and `events` must outlive the renderer.
  HOST_Renderer(SINK_CORE_TransferService* player, HOST_EventSink* events, GMainContext* context,
                const HOST_VolumeSettings& volume = HOST_VolumeSettings());
  ~HOST_Renderer();
  HOST_Renderer(const HOST_Renderer&) = delete;
  HOST_Renderer& operator=(const HOST_Renderer&) = delete;

  // `properties` must outlive the renderer (the service objects keep reading it).
  bool Prepare(marlo::Properties* properties, HOST_StepFailure* failure);
  bool Start(const std::string& serverAddress, HOST_StepFailure* failure);
  // Keeps the OpenHome playlist in the file `path` across restarts (HOST_PlaylistKeeper); call before
  // Start. `writer` replaces the file writer for tests.
  void KeepPlaylist(const std::string& path, HOST_PlaylistKeeper::Writer writer = {});
  // Runs whatever part of the shutdown the state calls for; reports the first failure, carries on.
  bool Shutdown(HOST_StepFailure* failure);

  bool Started() const { return openHomeStarted_; }
  HOST_ActionRouter& Router() { return router_; }
  // Null unless KeepPlaylist was called.
  HOST_PlaylistKeeper* Keeper() { return keeper_.get(); }
  // What the status page reads, through the same actions a control point would use.
  marlo::SinkContentTransferSubsystem* StandardServices() { return &standard_; }
  marlo::SinkContentTransferSubsystem* OpenHomeServices() { return &openHome_; }
  HOST_HostServices* HostServices() { return &hostServices_; }

 private:
  void ScheduleTimeOutWarning(marlo::SinkContentTransferSubsystem* service, unsigned long milliseconds);

  SINK_CORE_TransferService* player_;
  GMainContext* context_;
  SINK_UPNP_SinkCTSSUPnPService standard_;
  SINK_UPNP_OpenHomeUPnPService openHome_;
  // Runs the moderation of the daemon's own events on the main context.
  std::unique_ptr<PLAYER_GLibClock> clock_;
  HOST_HostServices hostServices_;
  HOST_ActionRouter router_;
  std::unique_ptr<HOST_PlaylistKeeper> keeper_;
  std::vector<std::unique_ptr<HOST_EventBridge>> bridges_;
  bool prepared_ = false;
  bool completelyPrepared_ = false;
  bool standardStarted_ = false;
  bool openHomeStarted_ = false;
  std::vector<unsigned> timers_;
};

#endif  // HOST_RENDERER_H_
