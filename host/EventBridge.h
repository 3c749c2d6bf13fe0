// HOST_EventBridge: the marlo::EventHandler of one service. The plug-in's eventing threads call it with a
// batch of names and values; it copies the batch into its queue and makes sure the main loop will empty
// the queue, in order, into the event sink (the registry, which sends each batch to that service's
// subscribers). GUPnP objects are touched only on the main loop.
//
// The main loop is woken by an idle source attached to the main context, never g_main_context_invoke:
// that runs the callback at once on the calling thread whenever the loop is not running (start-up,
// shutdown), which would touch GUPnP from an eventing thread. The queue has a lock of its own, so that
// the hand-over does not depend on GLib's internal locking being visible to the thread checkers.
#ifndef HOST_EVENT_BRIDGE_H_
#define HOST_EVENT_BRIDGE_H_

#include <deque>
#include <mutex>
#include <string>

#include "EventSink.h"
#include "marlo/EventHandler.h"

typedef struct _GMainContext GMainContext;
typedef struct _GSource GSource;

class HOST_EventBridge : public marlo::EventHandler {
 public:
  HOST_EventBridge(std::string serviceType, HOST_EventSink* sink, GMainContext* context);
  // Batches not yet delivered are dropped: the daemon drains the main context before it gets here.
  ~HOST_EventBridge() override;
  HOST_EventBridge(const HOST_EventBridge&) = delete;
  HOST_EventBridge& operator=(const HOST_EventBridge&) = delete;

  void HandleEvent(const char* const* names, const char* const* values, long count) override;

 private:
  static int Deliver(void* self);

  const std::string serviceType_;
  HOST_EventSink* const sink_;
  GMainContext* const context_;
  std::mutex mutex_;
  std::deque<HOST_EventBatch> pending_;  // guarded by mutex_
  GSource* wakeUp_ = nullptr;            // guarded by mutex_: the source that will empty the queue
};

#endif  // HOST_EVENT_BRIDGE_H_
