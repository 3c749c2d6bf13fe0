// RoundTrips: the three ways the client calls one action on one target, each timed on the client's steady
// clock from before the first byte leaves (or the connection is opened) until the last byte of the answer is
// in.
#ifndef BENCH_HOST_ROUND_TRIPS_H_
#define BENCH_HOST_ROUND_TRIPS_H_

#include <functional>
#include <string>
#include <vector>

#include "HttpConnection.h"

// One action as the client sends it: the whole request in both forms and the check of its answer.
struct RoundTripCall {
  std::string newConnectionRequest;  // with "Connection: close"
  std::string keepAliveRequest;
  std::function<bool(const HttpResponse&)> accepts;
};

struct CallTally {
  std::vector<double> microseconds;  // one per answered call
  long failures = 0;
  std::string lastFailure;
  long connectionsOpened = 0;  // by the keep-alive modes: 1 when the server kept its connection alive
};

// `calls` calls, each on a connection of its own: connect, request (with "Connection: close"), answer.
// The close after the answer is not timed.
void CallOnNewConnections(const HttpEndpoint& control, const RoundTripCall& call, int calls,
                          CallTally* tally);

// `calls` calls one after another on *connection, opened first when it is not open. A connection the server
// closes (saying so, or silently: then the request goes out again on a new connection) is opened again inside
// the call's time: a server that will not keep connections alive pays for its connections here too.
void CallOnKeepAlive(const HttpEndpoint& control, const RoundTripCall& call, int calls,
                     HttpConnection* connection, CallTally* tally);

// `clients` threads, each with a keep-alive connection of its own opened before the clock starts, make
// `callsEach` calls as fast as they are answered. Returns the wall-clock seconds from the start to the last
// answer; failures go to *tally, latencies do not.
double CallConcurrently(const HttpEndpoint& control, const RoundTripCall& call, int clients, int callsEach,
                        CallTally* tally);

// The nearest-rank percentile (0 < fraction <= 1) of `values`; 0 for none.
double Percentile(std::vector<double> values, double fraction);

#endif  // BENCH_HOST_ROUND_TRIPS_H_
