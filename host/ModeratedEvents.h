// HOST_ModeratedEvents: between the services and the network, at most one property set of a service every
// 200 ms. The first change of a quiet service goes out at once; the changes that follow within the
// interval are merged, each variable keeping its place and taking its latest value (two LastChange
// documents become one with the changes of both, as AVTransport's moderation asks), and go out as one
// property set at the interval's end.
//
// Why: GUPnP queues every property set for every subscriber and sends them to each one in turn, the next
// only when the last was answered, and keeps sending what it queued after the subscriber has gone.
// Twenty control points driving the transport make forty AVTransport changes a second (the player
// moderates its own, but every action of a control point changes the store too); a subscriber that takes
// 30 ms to answer falls behind, and the queues grew without bound (160 MB in a minute under the soak
// test). A subscriber needs the latest state, not every step to it, and UPnP asks the same of moderated
// variables: no more than one event per 200 ms.
//
// Main loop only, on a PLAYER_Clock (the daemon's runs on the main context; tests give a manual one).
#ifndef HOST_MODERATED_EVENTS_H_
#define HOST_MODERATED_EVENTS_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "EventSink.h"

class PLAYER_Clock;
class PLAYER_EventModerator;

class HOST_ModeratedEvents : public HOST_EventSink {
 public:
  static constexpr int64_t kIntervalMilliseconds = 200;

  // `network` and `clock` must outlive the object.
  HOST_ModeratedEvents(HOST_EventSink* network, PLAYER_Clock* clock);
  ~HOST_ModeratedEvents() override;
  HOST_ModeratedEvents(const HOST_ModeratedEvents&) = delete;
  HOST_ModeratedEvents& operator=(const HOST_ModeratedEvents&) = delete;

  void Notify(const std::string& serviceType, const HOST_EventBatch& batch) override;
  // Sends every merged property set still waiting for its interval's end, now (at shutdown, so that the
  // last changes still reach the subscribers).
  void Flush();

 private:
  struct Service {
    std::unique_ptr<PLAYER_EventModerator> moderator;
    HOST_EventBatch pending;
  };

  void Send(const std::string& serviceType);

  HOST_EventSink* network_;
  PLAYER_Clock* clock_;
  std::map<std::string, Service> services_;
};

#endif  // HOST_MODERATED_EVENTS_H_
