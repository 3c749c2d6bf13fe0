// minimal_host: the smallest host of the renderer plug-in. It runs the AVTransport/ConnectionManager
// service object through the host call order, hands it two actions as a UPnP stack would after parsing
// SOAP requests, and prints the replies and the event the application's state change sends. No network:
// a real host puts a UPnP stack where this one calls PerformAction and prints the events.
//
// The call order (the daemon's host/Renderer.h follows the same):
//   Prepare:  construct; Initialize(properties); register each service's event handler;
//             RegisterTransferService(application), which attaches the store to the application.
//   Start:    marlo::Device::SetServerIPAddress; Start.
//   Serve:    PerformAction, one call at a time, from one thread.
//   Shutdown: Stop; unregister the event handlers (joins the eventing threads); the application lets go
//             of the store; Finalize; destroy.
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "ConsoleApplication.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Device.h"
#include "marlo/EventHandler.h"
#include "marlo/Properties.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

namespace {

// Receives a service's events on that service's eventing thread. Threading rule: it must not call back
// into the service object or its store (the store's lock is held); it copies the batch and hands it on,
// here to the main thread through a condition variable, in the daemon to the GLib main loop.
class PrintingEventHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const* names, const char* const* values, long count) override {
    std::lock_guard<std::mutex> lock(mutex_);
    for (long i = 0; i < count; ++i) batches_ += std::string(names[i]) + " = " + values[i] + "\n";
    changed_.notify_all();
  }

  // Waits up to two seconds for a batch that contains `text`; answers everything received so far.
  std::string WaitFor(const std::string& text) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait_for(lock, std::chrono::seconds(2),
                      [&] { return batches_.find(text) != std::string::npos; });
    return batches_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  std::string batches_;
};

using Arguments = std::vector<std::pair<const char*, const char*>>;

// Runs one action with its IN arguments as the UPnP stack would hand it over; prints the result code and
// the reply, and answers the OUT argument `wantedArgument` (when not null) in *value.
bool Perform(SINK_UPNP_SinkCTSSUPnPService* service, const char* action, const Arguments& arguments,
             const char* wantedArgument = nullptr, std::string* value = nullptr) {
  marlo::ActionRequest request;
  if (request.SetActionName(action) != 0) return false;
  for (const auto& [name, text] : arguments) {
    if (request.AddArgument(name, text) != 0) return false;
  }
  marlo::ActionResponse response;
  const int32_t result = service->PerformAction(&request, &response, /*actionHandle=*/1);
  // A nonzero result is the host's failure (the daemon answers 501); a UPnP error goes into the reply.
  std::printf("%s: result %d, UPnP error %d\n", action, static_cast<int>(result),
              static_cast<int>(response.GetErrorCode()));
  if (result != 0 || response.GetErrorCode() != 0) return false;
  if (wantedArgument != nullptr) {
    const char* found = response.FindArgumentValue(wantedArgument);
    if (found == nullptr) return false;
    *value = found;
    std::printf("  %s = %s\n", wantedArgument, found);
  }
  return true;
}

}  // namespace

int main() {
  marlo::Properties properties;
  // The formats the renderer offers (ConnectionManager's Sink protocol info); at least one is required.
  if (properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*") != 0) return 1;

  PrintingEventHandler avTransportEvents;
  PrintingEventHandler connectionManagerEvents;
  ConsoleApplication application;
  SINK_UPNP_SinkCTSSUPnPService service;

  // Prepare.
  if (service.Initialize(&properties) != 0 ||
      service.RegisterAVTransportServiceEventListener(&avTransportEvents) != 0 ||
      service.RegisterConnectionManagerServiceEventListener(&connectionManagerEvents) != 0 ||
      service.RegisterTransferService(&application) != 0) {
    std::fprintf(stderr, "minimal_host: the service object could not be prepared\n");
    return 1;
  }
  // Start.
  if (marlo::Device::SetServerIPAddress("127.0.0.1") != 0 || service.Start() != 0) {
    std::fprintf(stderr, "minimal_host: the service object could not be started\n");
    return 1;
  }

  // Serve: a control point sets a URI and plays it; the application reports PLAYING through the store,
  // which events it as AVTransport's LastChange.
  std::string state;
  const bool served =
      Perform(&service, "SetAVTransportURI",
              {{"InstanceID", "0"},
               {"CurrentURI", "http://127.0.0.1:9/never-played.flac"},
               {"CurrentURIMetaData", ""}}) &&
      Perform(&service, "Play", {{"InstanceID", "0"}, {"Speed", "1"}}) &&
      Perform(&service, "GetTransportInfo", {{"InstanceID", "0"}}, "CurrentTransportState", &state);
  const std::string events = avTransportEvents.WaitFor("PLAYING");
  std::printf("AVTransport events:\n%s", events.c_str());

  // Shutdown.
  int failures = 0;
  failures += service.Stop() != 0;
  failures += service.UnregisterAVTransportServiceEventListener() != 0;
  failures += service.UnregisterConnectionManagerServiceEventListener() != 0;
  application.DetachStore();
  failures += service.Finalize() != 0;

  const bool playing = state == "PLAYING" && events.find("PLAYING") != std::string::npos;
  std::printf("%s\n", served && playing && failures == 0 ? "minimal_host: ok" : "minimal_host: FAILED");
  return served && playing && failures == 0 ? 0 : 1;
}
