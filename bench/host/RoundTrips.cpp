#include "RoundTrips.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <thread>

namespace {

using Clock = std::chrono::steady_clock;

double MicrosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void Failed(CallTally* tally, const std::string& why) {
  ++tally->failures;
  tally->lastFailure = why;
}

// A server that closes a kept-alive connection without saying so in its last answer (libupnp does) leaves
// the next request to fail on it when the close had not arrived yet at the check before sending. Any HTTP
// client then sends the request again on a new connection; so does this one, inside the same call's time,
// so that the call costs what it costs a real control point.
bool ExchangeAgain(const HttpEndpoint& control, const std::string& request, HttpConnection* connection,
                   HttpResponse* response, CallTally* tally) {
  connection->Close();
  ++tally->connectionsOpened;
  return connection->Open(control) && connection->Exchange(request, response);
}

}  // namespace

void CallOnNewConnections(const HttpEndpoint& control, const RoundTripCall& call, int calls,
                          CallTally* tally) {
  const std::string& request = call.newConnectionRequest;
  HttpResponse response;
  for (int made = 0; made < calls; ++made) {
    HttpConnection connection;
    const Clock::time_point start = Clock::now();
    if (!connection.Open(control) || !connection.Exchange(request, &response)) {
      Failed(tally, connection.error());
      continue;
    }
    const double elapsed = MicrosecondsSince(start);
    if (!call.accepts(response)) {
      Failed(tally, "status " + std::to_string(response.status) + ": " + response.body);
      continue;
    }
    tally->microseconds.push_back(elapsed);
  }
}

void CallOnKeepAlive(const HttpEndpoint& control, const RoundTripCall& call, int calls,
                     HttpConnection* connection, CallTally* tally) {
  const std::string& request = call.keepAliveRequest;
  HttpResponse response;
  for (int made = 0; made < calls; ++made) {
    const Clock::time_point start = Clock::now();
    if (connection->IsOpen() && connection->PeerHasClosed()) connection->Close();
    if (!connection->IsOpen()) {
      ++tally->connectionsOpened;
      if (!connection->Open(control)) {
        Failed(tally, connection->error());
        continue;
      }
    }
    if (!connection->Exchange(request, &response) &&
        !ExchangeAgain(control, request, connection, &response, tally)) {
      Failed(tally, "keep-alive: " + connection->error());
      continue;
    }
    const double elapsed = MicrosecondsSince(start);
    if (response.closes) connection->Close();
    if (!call.accepts(response)) {
      Failed(tally, "status " + std::to_string(response.status) + ": " + response.body);
      continue;
    }
    tally->microseconds.push_back(elapsed);
  }
}

double CallConcurrently(const HttpEndpoint& control, const RoundTripCall& call, int clients, int callsEach,
                        CallTally* tally) {
  const std::string& request = call.keepAliveRequest;
  std::atomic<int> connected{0};
  std::atomic<bool> go{false};
  std::mutex tallyLock;
  std::vector<std::thread> threads;
  for (int client = 0; client < clients; ++client) {
    threads.emplace_back([&] {
      HttpConnection connection;
      const bool open = connection.Open(control);
      ++connected;
      while (!go.load()) std::this_thread::yield();
      long failures = 0;
      std::string why = open ? "" : connection.error();
      HttpResponse response;
      long opened = open ? 1 : 0;
      CallTally retried;
      for (int made = 0; made < callsEach; ++made) {
        if (connection.IsOpen() && connection.PeerHasClosed()) connection.Close();
        if (!connection.IsOpen()) {
          ++opened;
          if (!connection.Open(control)) {
            ++failures;
            why = connection.error();
            continue;
          }
        }
        if (!connection.Exchange(request, &response) &&
            !ExchangeAgain(control, request, &connection, &response, &retried)) {
          ++failures;
          why = "keep-alive: " + connection.error();
          continue;
        }
        if (response.closes) connection.Close();
        if (!call.accepts(response)) {
          ++failures;
          why = "status " + std::to_string(response.status);
        }
      }
      std::lock_guard<std::mutex> guard(tallyLock);
      tally->connectionsOpened += opened + retried.connectionsOpened;
      if (failures == 0) return;
      tally->failures += failures;
      tally->lastFailure = why;
    });
  }
  while (connected.load() < clients) std::this_thread::yield();
  const Clock::time_point start = Clock::now();
  go = true;
  for (std::thread& thread : threads) thread.join();
  return MicrosecondsSince(start) / 1e6;
}

double Percentile(std::vector<double> values, double fraction) {
  if (values.empty()) return 0;
  std::sort(values.begin(), values.end());
  const auto rank = static_cast<std::size_t>(std::ceil(fraction * static_cast<double>(values.size())));
  return values[std::min(values.size(), std::max<std::size_t>(rank, 1)) - 1];
}
