// SoapRequest: the whole HTTP request of one SOAP action, written the way control points send it, for every
// bench client.
#ifndef BENCH_HOST_SOAP_REQUEST_H_
#define BENCH_HOST_SOAP_REQUEST_H_

#include <string>

#include "HttpConnection.h"

// POST to `control` of `action` of `serviceType` with `arguments` (the argument elements, already escaped).
// keepAlive false asks the server to close after answering. The request carries a User-Agent, as every
// control point's does: a GUPnP server that gets none looks the client's up by its hardware address, a
// netlink query on every request that no real client causes.
std::string SoapActionRequest(const HttpEndpoint& control, const std::string& serviceType,
                              const std::string& action, const std::string& arguments, bool keepAlive);

#endif  // BENCH_HOST_SOAP_REQUEST_H_
