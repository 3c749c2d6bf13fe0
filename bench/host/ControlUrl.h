// ControlUrl: where a device's AVTransport:1 takes its SOAP requests, read from the device's description
// (fetched over HTTP, read with libxml2), so that the client follows the device rather than a fixed path.
#ifndef BENCH_HOST_CONTROL_URL_H_
#define BENCH_HOST_CONTROL_URL_H_

#include <string>

#include "HttpConnection.h"

// Fetches the description at `location` and stores AVTransport's control endpoint in *control. Returns
// false with *error set when the description cannot be fetched or read, or has no such service.
bool FindAVTransportControl(const std::string& location, HttpEndpoint* control, std::string* error);

#endif  // BENCH_HOST_CONTROL_URL_H_
