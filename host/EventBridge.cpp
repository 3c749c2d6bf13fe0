#include "EventBridge.h"

#include <glib.h>

#include <utility>

#include "Log.h"
#include "ServiceCatalogue.h"

HOST_EventBridge::HOST_EventBridge(std::string serviceType, HOST_EventSink* sink, GMainContext* context)
    : serviceType_(std::move(serviceType)), sink_(sink), context_(context) {}

HOST_EventBridge::~HOST_EventBridge() {
  std::lock_guard<std::mutex> guard(mutex_);
  if (wakeUp_ != nullptr) {
    g_source_destroy(wakeUp_);
    g_source_unref(wakeUp_);
    wakeUp_ = nullptr;
  }
}

void HOST_EventBridge::HandleEvent(const char* const* names, const char* const* values, long count) {
  // The arrays belong to the eventing thread and are reused for its next batch: copy them now.
  HOST_EventBatch batch;
  batch.reserve(count > 0 ? static_cast<std::size_t>(count) : 0);
  for (long i = 0; i < count; ++i)
    batch.emplace_back(names[i] != nullptr ? names[i] : "", values[i] != nullptr ? values[i] : "");

  std::lock_guard<std::mutex> guard(mutex_);
  pending_.push_back(std::move(batch));
  if (wakeUp_ != nullptr) return;
  wakeUp_ = g_idle_source_new();
  // At the priority of the loop's sockets and timers, not an idle one: on a busy loop an idle priority
  // would hold events back behind every request.
  g_source_set_priority(wakeUp_, G_PRIORITY_DEFAULT);
  g_source_set_callback(wakeUp_, Deliver, this, nullptr);
  g_source_attach(wakeUp_, context_);
}

int HOST_EventBridge::Deliver(void* self) {
  auto* bridge = static_cast<HOST_EventBridge*>(self);
  for (;;) {
    HOST_EventBatch batch;
    {
      std::lock_guard<std::mutex> guard(bridge->mutex_);
      if (bridge->pending_.empty()) {
        g_source_unref(bridge->wakeUp_);
        bridge->wakeUp_ = nullptr;
        return G_SOURCE_REMOVE;
      }
      batch = std::move(bridge->pending_.front());
      bridge->pending_.pop_front();
    }
    if (HOST_LogEnabled(HOST_LogLevel::Debug)) {
      const HOST_ServiceDescription* service = HOST_FindService(bridge->serviceType_.c_str());
      const char* serviceName = service != nullptr ? service->name : bridge->serviceType_.c_str();
      for (const auto& [name, value] : batch)
        HOST_Log(HOST_LogLevel::Debug, "event %s %s = %.200s", serviceName, name.c_str(), value.c_str());
    }
    bridge->sink_->Notify(bridge->serviceType_, batch);
  }
}
