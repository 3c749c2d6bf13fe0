#include "ServiceRegistry.h"

#include <libgupnp/gupnp.h>

#include <algorithm>

HOST_ServiceRegistry::~HOST_ServiceRegistry() { Clear(); }

void HOST_ServiceRegistry::Add(GUPnPContext* context, const std::string& serviceType, GUPnPService* service) {
  entries_.push_back({context, serviceType, GUPNP_SERVICE(g_object_ref(service))});
}

void HOST_ServiceRegistry::RemoveContext(GUPnPContext* context) {
  auto gone = std::stable_partition(entries_.begin(), entries_.end(),
                                    [context](const Entry& entry) { return entry.context != context; });
  for (auto entry = gone; entry != entries_.end(); ++entry) g_object_unref(entry->service);
  entries_.erase(gone, entries_.end());
}

void HOST_ServiceRegistry::Clear() {
  for (Entry& entry : entries_) g_object_unref(entry.service);
  entries_.clear();
}

void HOST_ServiceRegistry::Notify(const std::string& serviceType, const HOST_EventBatch& batch) {
  for (const Entry& entry : entries_) {
    if (entry.serviceType != serviceType) continue;
    // One property set per batch: a control point sees the changes of one moment together.
    gupnp_service_freeze_notify(entry.service);
    for (const auto& [name, text] : batch) {
      GValue value = G_VALUE_INIT;
      g_value_init(&value, G_TYPE_STRING);
      g_value_set_string(&value, text.c_str());
      gupnp_service_notify_value(entry.service, name.c_str(), &value);
      g_value_unset(&value);
    }
    gupnp_service_thaw_notify(entry.service);
  }
}
