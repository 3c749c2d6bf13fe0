#include "EventBridge.h"

#include <glib.h>


#include "Log.h"
#include "ServiceCatalogue.h"
#include "EventSink.h"

namespace {

struct Batch {
  std::string serviceType;
  HOST_EventSink* sink;
  HOST_EventBatch values;
};

gboolean Deliver(gpointer data) {
  const auto* batch = static_cast<const Batch*>(data);
  if (HOST_LogEnabled(HOST_LogLevel::Debug)) {
    const HOST_ServiceDescription* service = HOST_FindService(batch->serviceType.c_str());
    const char* serviceName = service != nullptr ? service->name : batch->serviceType.c_str();
    for (const auto& [name, value] : batch->values)
      HOST_Log(HOST_LogLevel::Debug, "event %s %s = %.200s", serviceName, name.c_str(), value.c_str());
  }
  batch->sink->Notify(batch->serviceType, batch->values);
  return G_SOURCE_REMOVE;
}

void Free(gpointer data) { delete static_cast<Batch*>(data); }

}  // namespace

HOST_EventBridge::HOST_EventBridge(std::string serviceType, HOST_EventSink* sink, GMainContext* context)
    : serviceType_(std::move(serviceType)), sink_(sink), context_(context) {}

void HOST_EventBridge::HandleEvent(const char* const* names, const char* const* values, long count) {
  // The arrays belong to the eventing thread and are reused for its next batch: copy them now.
  auto* batch = new Batch{serviceType_, sink_, {}};
  batch->values.reserve(count > 0 ? static_cast<std::size_t>(count) : 0);
  for (long i = 0; i < count; ++i)
    batch->values.emplace_back(names[i] != nullptr ? names[i] : "", values[i] != nullptr ? values[i] : "");
  GSource* source = g_idle_source_new();
  // At the priority of the loop's sockets and timers, not an idle one: on a busy loop an idle priority
  // would hold events back behind every request.
  g_source_set_priority(source, G_PRIORITY_DEFAULT);
  g_source_set_callback(source, Deliver, batch, Free);
  g_source_attach(source, context_);
  g_source_unref(source);
}
