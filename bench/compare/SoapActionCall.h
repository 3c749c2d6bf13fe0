// SoapActionCall: the AVTransport actions the comparison calls on every target, as whole HTTP requests,
// and the one check of an answer that every target (the network floor's constant included) must pass.
#ifndef BENCH_COMPARE_SOAP_ACTION_CALL_H_
#define BENCH_COMPARE_SOAP_ACTION_CALL_H_

#include <string>

#include "RoundTrips.h"

// `serviceType` is the target's AVTransport (version 1 or 2). `action` is GetTransportInfo, GetPositionInfo
// or SetAVTransportURI (with `uri` as CurrentURI and no metadata); false for any other name.
bool MakeSoapActionCall(const HttpEndpoint& control, const std::string& serviceType,
                        const std::string& action, const std::string& uri, RoundTripCall* call);

#endif  // BENCH_COMPARE_SOAP_ACTION_CALL_H_
