// FloorService: the least a GUPnP service can do to answer AVTransport's GetTransportInfo. It is bound the
// way the daemon binds its services (a GUPnPService subclass whose "action-invoked" class handler is
// overridden, so that it sees every action), and answers constants: no router, no service object, no
// player behind it. What the daemon costs above this service is the cost of everything it adds to the
// stack.
#ifndef BENCH_HOST_FLOOR_SERVICE_H_
#define BENCH_HOST_FLOOR_SERVICE_H_

#include <libgupnp/gupnp.h>

// The GType; register it with the resource factory for AVTransport:1.
GType FloorServiceGetType();

#endif  // BENCH_HOST_FLOOR_SERVICE_H_
