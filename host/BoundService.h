// The GUPnP service class of every service the daemon offers. GUPnP creates one per service of each
// network context through its resource factory; each hands every action and every variable query of its
// service to the daemon's HOST_ActionRouter, whatever the action's name.
//
// Why a class rather than "action-invoked" handlers: GUPnP looks for a connected handler with the
// action's name as detail and answers 401 itself when there is none, so a handler could only catch the
// names it was connected for. The class handler sees every action, including the unknown and the wrongly
// cased ones, which the service objects answer themselves.
#ifndef HOST_BOUND_SERVICE_H_
#define HOST_BOUND_SERVICE_H_

#include <libgupnp/gupnp.h>

class HOST_ActionRouter;

// The GType; register it with the resource factory for every service type.
GType HOST_BoundServiceGetType();

// Ties a service GUPnP made to the router that answers it. Until this is called the service answers 501.
void HOST_BindService(GUPnPService* service, HOST_ActionRouter* router);

#endif  // HOST_BOUND_SERVICE_H_
