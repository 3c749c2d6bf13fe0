// GetTransportInfoCall: the one SOAP request both targets are measured with, AVTransport's
// GetTransportInfo for InstanceID 0, and the check of its answer.
#ifndef BENCH_HOST_GET_TRANSPORT_INFO_CALL_H_
#define BENCH_HOST_GET_TRANSPORT_INFO_CALL_H_

#include <string>

#include "HttpConnection.h"

// The whole request to `control`; keepAlive false asks the server to close after answering.
std::string GetTransportInfoRequest(const HttpEndpoint& control, bool keepAlive);

// True when the response is a successful GetTransportInfo answer with status OK.
bool IsTransportInfoAnswer(const HttpResponse& response);

#endif  // BENCH_HOST_GET_TRANSPORT_INFO_CALL_H_
