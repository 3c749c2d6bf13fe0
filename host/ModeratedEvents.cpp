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
  Merge(batch, &service.pending);
  service.moderator->Changed();
}

void HOST_ModeratedEvents::Flush() {
  for (auto& [serviceType, service] : services_) service.moderator->Flush();
}

void HOST_ModeratedEvents::Send(const std::string& serviceType) {
  Service& service = services_[serviceType];
  if (service.pending.empty()) return;
  const HOST_EventBatch batch = std::move(service.pending);
  service.pending.clear();
  network_->Notify(serviceType, batch);
}
