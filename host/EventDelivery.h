// HOST_BoundEventDelivery: keeps subscribers that accept a connection and never answer from holding up the
// events of every other subscriber.
//
// GUPnP sends each service's events through an HTTP client session of its own, made on the first event, with
// one connection per subscriber callback (host and port) and at most 10 connections in all (libsoup's
// default). Ten subscribers whose callbacks accept the connection and never answer would hold all ten until
// libsoup's I/O timeout (60 s) lets them go, and would take them again with the next event: no other
// subscriber of that service would get an event on time. GUPnP gives no access to that session, so the
// daemon raises the connection limit of every HTTP client session made in the process from then on to
// HOST_kEventConnections, more than a service keeps subscriptions (HOST_kMaxSubscriptionsPerService): a
// stuck subscriber then only ever holds up its own events. A session that asks for more keeps its number.
//
// Main thread, once, before the network starts.
#ifndef HOST_EVENT_DELIVERY_H_
#define HOST_EVENT_DELIVERY_H_

#include "RequestGuard.h"

constexpr unsigned HOST_kEventConnections = 2 * HOST_kMaxSubscriptionsPerService;

void HOST_BoundEventDelivery();

#endif  // HOST_EVENT_DELIVERY_H_
