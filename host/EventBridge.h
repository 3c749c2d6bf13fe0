// HOST_EventBridge: the marlo::EventHandler of one service. The plug-in's eventing threads call it with a
// batch of names and values; it copies the batch and hands it to the main loop, where the registry sends
// it to that service's subscribers. GUPnP objects are touched only on the main loop.
//
// The batch goes through an idle source attached to the main context, never g_main_context_invoke: that
// runs the callback at once on the calling thread whenever the loop is not running (start-up, shutdown),
// which would touch GUPnP from an eventing thread.
#ifndef HOST_EVENT_BRIDGE_H_
#define HOST_EVENT_BRIDGE_H_

#include <memory>
#include <string>

#include "marlo/EventHandler.h"

typedef struct _GMainContext GMainContext;
class HOST_EventSink;

class HOST_EventBridge : public marlo::EventHandler {
 public:
  // `sink` must outlive every batch handed on: the daemon drains the main context before it goes.
  HOST_EventBridge(std::string serviceType, HOST_EventSink* sink, GMainContext* context);

  void HandleEvent(const char* const* names, const char* const* values, long count) override;

 private:
  std::string serviceType_;
  HOST_EventSink* sink_;
  GMainContext* context_;
};

#endif  // HOST_EVENT_BRIDGE_H_
