#include "ModeratedEvents.h"

#include <algorithm>

#include "EventModerator.h"
#include "LastChangeMerge.h"

namespace {

// Each variable of `batch` into `pending`: in its place when it is there, with the later value; two
// LastChange documents become one holding the changes of both.
void Merge(const HOST_EventBatch& batch, HOST_EventBatch* pending) {
  for (const auto& [name, value] : batch) {
    auto found = std::find_if(pending->begin(), pending->end(), [&](const auto& entry) { return entry.first == name; });
    if (found == pending->end())
      pending->emplace_back(name, value);
    else if (name == "LastChange")
      found->second = HOST_MergeLastChange(found->second, value);
    else
      found->second = value;
  }
}

}  // namespace

HOST_ModeratedEvents::HOST_ModeratedEvents(HOST_EventSink* network, PLAYER_Clock* clock)
    : network_(network), clock_(clock) {}

HOST_ModeratedEvents::~HOST_ModeratedEvents() = default;

void HOST_ModeratedEvents::Notify(const std::string& serviceType, const HOST_EventBatch& batch) {
  auto [entry, added] = services_.try_emplace(serviceType);
  Service& service = entry->second;
  if (added)
    service.moderator = std::make_unique<PLAYER_EventModerator>(*clock_, kIntervalMilliseconds,
                                                                [this, serviceType] { Send(serviceType); });
  const bool immediate = TakeImmediateSend(&service, batch);
  Merge(batch, &service.pending);
  service.moderator->Changed();
  if (immediate) service.moderator->Flush();
}

bool HOST_ModeratedEvents::TakeImmediateSend(Service* service, const HOST_EventBatch& batch) {
  for (const auto& [name, value] : batch) {
    if (name != "LastChange") continue;
    const std::string state = HOST_LastChangeValue(value, "TransportState");
    if (state.empty()) return false;
    service->pendingTransportState = state;
    if (state == service->sentTransportState) return false;
    const int64_t now = clock_->NowMilliseconds();
    service->immediateSends = std::min<double>(
        kImmediateBurst, service->immediateSends + static_cast<double>(now - service->earnedAt) / kIntervalMilliseconds);
    service->earnedAt = now;
    if (service->immediateSends < 1) return false;
    service->immediateSends -= 1;
    return true;
  }
  return false;
}

void HOST_ModeratedEvents::Flush() {
  for (auto& [serviceType, service] : services_) service.moderator->Flush();
}

void HOST_ModeratedEvents::Send(const std::string& serviceType) {
  Service& service = services_[serviceType];
  if (service.pending.empty()) return;
  const HOST_EventBatch batch = std::move(service.pending);
  service.pending.clear();
  if (!service.pendingTransportState.empty()) service.sentTransportState = service.pendingTransportState;
  network_->Notify(serviceType, batch);
}
