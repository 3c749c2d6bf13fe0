// RoundTrips: the three ways the client calls GetTransportInfo on one target, each timed on the client's
// steady clock from before the first byte leaves until the last byte of the answer is in.
#ifndef BENCH_HOST_ROUND_TRIPS_H_
#define BENCH_HOST_ROUND_TRIPS_H_

#include <string>
#include <vector>

#include "HttpConnection.h"

struct CallTally {
  std::vector<double> microseconds;  // one per answered call
  long failures = 0;
  std::string lastFailure;
};

// `calls` calls, each on a connection of its own: connect, request (with "Connection: close"), answer.
// The close after the answer is not timed.
void CallOnNewConnections(const HttpEndpoint& control, int calls, CallTally* tally);

// `calls` calls one after another on *connection, opened first when it is not open. A connection the server
// closes is opened again for the next call (and the call it failed counts as a failure).
void CallOnKeepAlive(const HttpEndpoint& control, int calls, HttpConnection* connection, CallTally* tally);

// `clients` threads, each with a keep-alive connection of its own opened before the clock starts, make
// `callsEach` calls as fast as they are answered. Returns the wall-clock seconds from the start to the last
// answer; failures go to *tally, latencies do not.
double CallConcurrently(const HttpEndpoint& control, int clients, int callsEach, CallTally* tally);

// The nearest-rank percentile (0 < fraction <= 1) of `values`; 0 for none.
double Percentile(std::vector<double> values, double fraction);

#endif  // BENCH_HOST_ROUND_TRIPS_H_
