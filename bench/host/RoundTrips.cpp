#include "RoundTrips.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <mutex>
#include <thread>

#include "GetTransportInfoCall.h"

namespace {

using Clock = std::chrono::steady_clock;

double MicrosecondsSince(Clock::time_point start) {
  return std::chrono::duration<double, std::micro>(Clock::now() - start).count();
}

void Failed(CallTally* tally, const std::string& why) {
  ++tally->failures;
  tally->lastFailure = why;
}

}  // namespace

void CallOnNewConnections(const HttpEndpoint& control, int calls, CallTally* tally) {
  const std::string request = GetTransportInfoRequest(control, false);
  HttpResponse response;
  for (int call = 0; call < calls; ++call) {
    HttpConnection connection;
    const Clock::time_point start = Clock::now();
    if (!connection.Open(control) || !connection.Exchange(request, &response)) {
      Failed(tally, connection.error());
      continue;
    }
    const double elapsed = MicrosecondsSince(start);
    if (!IsTransportInfoAnswer(response)) {
      Failed(tally, "status " + std::to_string(response.status) + ": " + response.body);
      continue;
    }
    tally->microseconds.push_back(elapsed);
  }
}

void CallOnKeepAlive(const HttpEndpoint& control, int calls, HttpConnection* connection, CallTally* tally) {
  const std::string request = GetTransportInfoRequest(control, true);
  HttpResponse response;
  for (int call = 0; call < calls; ++call) {
    if (!connection->IsOpen() && !connection->Open(control)) {
      Failed(tally, connection->error());
      continue;
    }
    const Clock::time_point start = Clock::now();
    if (!connection->Exchange(request, &response)) {
      Failed(tally, "keep-alive: " + connection->error());
      continue;
    }
    const double elapsed = MicrosecondsSince(start);
    if (response.closes) connection->Close();
    if (!IsTransportInfoAnswer(response)) {
      Failed(tally, "status " + std::to_string(response.status) + ": " + response.body);
      continue;
    }
    tally->microseconds.push_back(elapsed);
  }
}

double CallConcurrently(const HttpEndpoint& control, int clients, int callsEach, CallTally* tally) {
  const std::string request = GetTransportInfoRequest(control, true);
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
      for (int call = 0; call < callsEach; ++call) {
        if (!connection.IsOpen() && !connection.Open(control)) {
          ++failures;
          why = connection.error();
          continue;
        }
        if (!connection.Exchange(request, &response)) {
          ++failures;
          why = "keep-alive: " + connection.error();
          continue;
        }
        if (response.closes) connection.Close();
        if (!IsTransportInfoAnswer(response)) {
          ++failures;
          why = "status " + std::to_string(response.status);
        }
      }
      if (failures == 0) return;
      std::lock_guard<std::mutex> guard(tallyLock);
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
