#include "Renderer.h"

#include <glib.h>

#include <utility>

#include "EventSink.h"
#include "GLibClock.h"
#include "Log.h"
#include "ServiceTypes.h"
#include "TransportLog.h"
#include "marlo/Device.h"
#include "sink_core/TransferService.h"

namespace {


// The bridges, in the order of `bridges_`.
enum Bridge { kAVTransportBridge, kConnectionManagerBridge, kPlaylistBridge, kProductBridge, kTimeBridge,
              kInfoBridge, kSenderBridge };

// Drains what the main context has ready, within a bound: a source that re-arms at once must not keep
// the shutdown waiting.
void Drain(GMainContext* context) {
  const gint64 deadline = g_get_monotonic_time() + 500 * 1000;
  for (int i = 0; i < 10000 && g_get_monotonic_time() < deadline; ++i)
    if (!g_main_context_iteration(context, FALSE)) break;
}

// Records a failed step, names it in the log, and answers whether the step succeeded.
bool Step(const char* step, int32_t result, HOST_StepFailure* failure) {
  if (result == 0) {
    HOST_Log(HOST_LogLevel::Debug, "%s: 0", step);
    return true;
  }
  HOST_Log(HOST_LogLevel::Error, "%s failed: %d", step, static_cast<int>(result));
  if (failure != nullptr && failure->step.empty()) *failure = {step, result};
  return false;
}

HOST_TransportLog transportLog;

}  // namespace

HOST_Renderer::HOST_Renderer(SINK_CORE_TransferService* player, HOST_EventSink* events,
                             GMainContext* context, const HOST_VolumeSettings& volume)
    : player_(player),
      context_(context),
      clock_(std::make_unique<PLAYER_GLibClock>(context)),
      hostServices_(player, events, clock_.get(), volume),
      router_(&standard_, &openHome_, &hostServices_) {
  for (const char* type : {HOST_kAVTransportType, HOST_kConnectionManagerType, HOST_kPlaylistType, HOST_kProductType,
                           HOST_kTimeType, HOST_kInfoType, HOST_kSenderType})
    bridges_.push_back(std::make_unique<HOST_EventBridge>(type, events, context));
}

HOST_Renderer::~HOST_Renderer() {
  Shutdown(nullptr);
  router_.SetObserver(nullptr);
}

void HOST_Renderer::KeepPlaylist(const std::string& path, HOST_PlaylistKeeper::Writer writer) {
  router_.SetObserver(nullptr);
  keeper_ = std::make_unique<HOST_PlaylistKeeper>(&openHome_, context_, path, std::move(writer));
  router_.SetObserver(keeper_.get());
}

bool HOST_Renderer::Prepare(marlo::Properties* properties, HOST_StepFailure* failure) {
  prepared_ = true;
  completelyPrepared_ = Step("AVTransport Initialize", standard_.Initialize(properties), failure) &&
         Step("AVTransport RegisterAVTransportServiceEventListener",
              standard_.RegisterAVTransportServiceEventListener(bridges_[kAVTransportBridge].get()), failure) &&
         Step("ConnectionManager RegisterConnectionManagerServiceEventListener",
              standard_.RegisterConnectionManagerServiceEventListener(bridges_[kConnectionManagerBridge].get()),
              failure) &&
         Step("AVTransport RegisterApplicationAVTEventListener",
              standard_.RegisterApplicationAVTEventListener(&transportLog), failure) &&
         Step("AVTransport RegisterTransferService", standard_.RegisterTransferService(player_), failure) &&
         Step("OpenHome Initialize", openHome_.Initialize(properties), failure) &&
         Step("OpenHome RegisterPlaylistServiceEventListener",
              openHome_.RegisterPlaylistServiceEventListener(bridges_[kPlaylistBridge].get()), failure) &&
         Step("OpenHome RegisterProductServiceEventListener",
              openHome_.RegisterProductServiceEventListener(bridges_[kProductBridge].get()), failure) &&
         Step("OpenHome RegisterTimeServiceEventListener",
              openHome_.RegisterTimeServiceEventListener(bridges_[kTimeBridge].get()), failure) &&
         Step("OpenHome RegisterInfoServiceEventListener",
              openHome_.RegisterInfoServiceEventListener(bridges_[kInfoBridge].get()), failure) &&
         Step("OpenHome RegisterSenderServiceEventListener",
              openHome_.RegisterSenderServiceEventListener(bridges_[kSenderBridge].get()), failure) &&
         Step("OpenHome RegisterTransferService", openHome_.RegisterTransferService(player_), failure);
  return completelyPrepared_;
}

bool HOST_Renderer::Start(const std::string& serverAddress, HOST_StepFailure* failure) {
  if (!Step("Device SetServerIPAddress", marlo::Device::SetServerIPAddress(serverAddress.c_str()), failure) ||
      !Step("AVTransport Start", standard_.Start(), failure))
    return false;
  standardStarted_ = true;
  if (!Step("OpenHome Start", openHome_.Start(), failure)) return false;
  openHomeStarted_ = true;
  hostServices_.ApplyStartupVolume();
  // Before the device is announced, so that the first IdArray and the first Playlist event of any
  // subscriber already show the playlist.
  if (keeper_ != nullptr) keeper_->Restore();
  for (marlo::SinkContentTransferSubsystem* service :
       {static_cast<marlo::SinkContentTransferSubsystem*>(&standard_),
        static_cast<marlo::SinkContentTransferSubsystem*>(&openHome_)})
    ScheduleTimeOutWarning(service, 0);
  return true;
}

// The player may ask, through WarnTimeOut's answer, to be asked again after a while (a slow operation it
// wants reported). The daemon asks once after start and then whenever the player set a delay; the text
// it gives, if any, is logged.
void HOST_Renderer::ScheduleTimeOutWarning(marlo::SinkContentTransferSubsystem* service,
                                           unsigned long milliseconds) {
  struct Ask {
    HOST_Renderer* renderer;
    marlo::SinkContentTransferSubsystem* service;
  };
  auto ask = [](gpointer data) -> gboolean {
    const auto* request = static_cast<const Ask*>(data);
    unsigned long timeout = 0;
    const char* text = nullptr;
    const int32_t result = request->service->WarnTimeOut(0, &timeout, &text);
    if (result != 0) HOST_Log(HOST_LogLevel::Warning, "WarnTimeOut failed: %d", static_cast<int>(result));
    if (text != nullptr && text[0] != '\0') HOST_Log(HOST_LogLevel::Warning, "player: %s", text);
    if (result == 0 && timeout > 0) request->renderer->ScheduleTimeOutWarning(request->service, timeout);
    return G_SOURCE_REMOVE;
  };
  GSource* source = milliseconds == 0 ? g_idle_source_new() : g_timeout_source_new(static_cast<guint>(milliseconds));
  g_source_set_callback(source, ask, new Ask{this, service}, [](gpointer data) { delete static_cast<Ask*>(data); });
  timers_.push_back(g_source_attach(source, context_));
  g_source_unref(source);
}

bool HOST_Renderer::Shutdown(HOST_StepFailure* failure) {
  for (unsigned id : timers_) {
    GSource* source = g_main_context_find_source_by_id(context_, id);
    if (source != nullptr) g_source_destroy(source);
  }
  timers_.clear();
  if (!prepared_) return true;
  // After a failed Prepare only part of this was registered: undo it all, but report nothing, since the
  // failure that matters was reported already.
  HOST_StepFailure* report = completelyPrepared_ ? failure : nullptr;
  bool clean = true;
  auto undo = [&](const char* step, int32_t result) {
    if (report != nullptr || result == 0) {
      clean &= Step(step, result, report);
    }
  };
  // The last changes reach the file while the service object can still answer the snapshot.
  if (keeper_ != nullptr && openHomeStarted_) keeper_->Flush();
  if (standardStarted_) undo("AVTransport Stop", standard_.Stop());
  if (openHomeStarted_) undo("OpenHome Stop", openHome_.Stop());
  standardStarted_ = openHomeStarted_ = false;
  // Unregistering joins each eventing thread, after which no new batch can be handed on.
  undo("AVTransport UnregisterAVTransportServiceEventListener", standard_.UnregisterAVTransportServiceEventListener());
  undo("ConnectionManager UnregisterConnectionManagerServiceEventListener",
       standard_.UnregisterConnectionManagerServiceEventListener());
  standard_.UnregisterApplicationAVTEventListener();
  undo("OpenHome UnregisterPlaylistServiceEventListener", openHome_.UnregisterPlaylistServiceEventListener());
  undo("OpenHome UnregisterProductServiceEventListener", openHome_.UnregisterProductServiceEventListener());
  undo("OpenHome UnregisterTimeServiceEventListener", openHome_.UnregisterTimeServiceEventListener());
  undo("OpenHome UnregisterInfoServiceEventListener", openHome_.UnregisterInfoServiceEventListener());
  undo("OpenHome UnregisterSenderServiceEventListener", openHome_.UnregisterSenderServiceEventListener());
  // What the threads handed on before they stopped still reaches the subscribers.
  Drain(context_);
  undo("player Finalize", player_->Finalize());
  undo("AVTransport Finalize", standard_.Finalize());
  undo("OpenHome Finalize", openHome_.Finalize());
  prepared_ = completelyPrepared_ = false;
  return clean;
}
