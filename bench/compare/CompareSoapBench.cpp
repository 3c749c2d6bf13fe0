// compare_soap_bench: one action's SOAP round trip on every target with one client, in rounds that rotate
// the targets' order so that whatever else the machine does falls on all alike. bench/compare/compare.py
// runs it; by hand:
//   compare_soap_bench --target NAME PID CONTROL_URL SERVICE_TYPE [--target ...] --action ACTION [--uri URI]
//                      [--rounds 10] [--calls 200] [--clients 16] [--client-calls 100] [--warm-up 50]
// Writes one JSON object to stdout: per target, the latencies of every round (µs) on new connections and
// on one keep-alive connection, the throughput of every round, the connections the keep-alive modes had to
// open, the server's CPU time, and the failures. Exit status 0, or 2 for bad arguments.
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "CountOption.h"
#include "ProcessFigures.h"
#include "RoundTrips.h"
#include "SoapActionCall.h"

namespace {

struct Settings {
  std::string action = "GetTransportInfo";
  std::string uri;
  int rounds = 10;
  int calls = 200;
  int clients = 16;
  int clientCalls = 100;
  int warmUp = 50;
};

struct Target {
  std::string name;
  pid_t pid = 0;
  HttpEndpoint control;
  std::string serviceType;  // AVTransport:1 or :2, as the target's description says
  RoundTripCall call;
  std::vector<CallTally> fresh, keepAlive;  // one per round
  std::vector<double> throughput;           // calls/s, one per round
  CallTally concurrent;
  long keepAliveOpened = 0;
  int64_t freshCpuNs = 0, keepAliveCpuNs = 0;
  HttpConnection connection;
};

bool ParseArguments(int argc, char** argv, Settings* settings,
                    std::vector<std::unique_ptr<Target>>* targets) {
  for (int at = 1; at < argc; ++at) {
    const std::string option = argv[at];
    if (option == "--target") {
      if (at + 4 >= argc) return false;
      auto target = std::make_unique<Target>();
      target->name = argv[at + 1];
      target->pid = static_cast<pid_t>(std::atoi(argv[at + 2]));
      if (!ParseHttpUrl(argv[at + 3], &target->control)) return false;
      target->serviceType = argv[at + 4];
      targets->push_back(std::move(target));
      at += 4;
      continue;
    }
    if (at + 1 >= argc) return false;
    const char* value = argv[++at];
    if (option == "--action") {
      settings->action = value;
      continue;
    }
    if (option == "--uri") {
      settings->uri = value;
      continue;
    }
    if (!ReadCountOption(option, value,
                         {{"--rounds", &settings->rounds},
                          {"--calls", &settings->calls},
                          {"--clients", &settings->clients},
                          {"--client-calls", &settings->clientCalls},
                          {"--warm-up", &settings->warmUp}}))
      return false;
  }
  return !targets->empty() && settings->rounds > 0 && settings->calls > 0;
}

void RunRounds(const Settings& settings, const std::vector<std::unique_ptr<Target>>& targets) {
  for (const auto& target : targets) {
    CallTally discarded;
    CallOnNewConnections(target->control, target->call, settings.warmUp, &discarded);
    CallOnKeepAlive(target->control, target->call, settings.warmUp, &target->connection, &discarded);
    target->concurrent.failures += discarded.failures;
    if (discarded.failures > 0) target->concurrent.lastFailure = "warm-up: " + discarded.lastFailure;
  }
  const std::size_t count = targets.size();
  for (int round = 0; round < settings.rounds; ++round) {
    std::vector<Target*> order;
    for (std::size_t i = 0; i < count; ++i) order.push_back(targets[(i + round) % count].get());
    for (Target* target : order) {
      target->fresh.emplace_back();
      AddProcessCpuDuring(target->pid, &target->freshCpuNs, [&] {
        CallOnNewConnections(target->control, target->call, settings.calls, &target->fresh.back());
      });
    }
    for (Target* target : order) {
      target->keepAlive.emplace_back();
      AddProcessCpuDuring(target->pid, &target->keepAliveCpuNs, [&] {
        CallOnKeepAlive(target->control, target->call, settings.calls, &target->connection,
                        &target->keepAlive.back());
      });
      target->keepAliveOpened += target->keepAlive.back().connectionsOpened;
    }
    if (settings.clients <= 0 || settings.clientCalls <= 0) continue;
    for (Target* target : order) {
      const double seconds = CallConcurrently(target->control, target->call, settings.clients,
                                              settings.clientCalls, &target->concurrent);
      target->throughput.push_back(seconds > 0 ? settings.clients * settings.clientCalls / seconds : 0);
    }
  }
  for (const auto& target : targets) target->connection.Close();
}

std::string Quoted(const std::string& text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    if (static_cast<unsigned char>(c) < 0x20) {
      out += ' ';
      continue;
    }
    out += c;
  }
  return out + "\"";
}

std::string Rounds(const std::vector<CallTally>& rounds) {
  std::ostringstream out;
  out << "[";
  for (std::size_t r = 0; r < rounds.size(); ++r) {
    out << (r ? "," : "") << "[";
    for (std::size_t i = 0; i < rounds[r].microseconds.size(); ++i)
      out << (i ? "," : "") << static_cast<long>(rounds[r].microseconds[i] * 10) / 10.0;
    out << "]";
  }
  return out.str() + "]";
}

std::string Json(const Settings& settings, const std::vector<std::unique_ptr<Target>>& targets) {
  std::ostringstream out;
  out << "{\"action\":" << Quoted(settings.action) << ",\"rounds\":" << settings.rounds
      << ",\"calls\":" << settings.calls << ",\"clients\":" << settings.clients
      << ",\"client_calls\":" << settings.clientCalls << ",\"targets\":{";
  for (std::size_t t = 0; t < targets.size(); ++t) {
    const Target& target = *targets[t];
    long failures = target.concurrent.failures;
    std::string last = target.concurrent.lastFailure;
    for (const auto* modes : {&target.fresh, &target.keepAlive})
      for (const CallTally& tally : *modes) {
        failures += tally.failures;
        if (tally.failures > 0) last = tally.lastFailure;
      }
    out << (t ? "," : "") << Quoted(target.name) << ":{\"new\":" << Rounds(target.fresh)
        << ",\"keep\":" << Rounds(target.keepAlive) << ",\"throughput\":[";
    for (std::size_t r = 0; r < target.throughput.size(); ++r) out << (r ? "," : "") << target.throughput[r];
    out << "],\"keep_connections\":" << target.keepAliveOpened
        << ",\"concurrent_connections\":" << target.concurrent.connectionsOpened
        << ",\"cpu_ns_new\":" << target.freshCpuNs << ",\"cpu_ns_keep\":" << target.keepAliveCpuNs
        << ",\"failures\":" << failures << ",\"last_failure\":" << Quoted(last.substr(0, 300)) << "}";
  }
  return out.str() + "}}\n";
}

}  // namespace

int main(int argc, char** argv) {
  Settings settings;
  std::vector<std::unique_ptr<Target>> targets;
  if (!ParseArguments(argc, argv, &settings, &targets)) {
    std::fprintf(
        stderr,
        "usage: compare_soap_bench --target NAME PID CONTROL_URL SERVICE_TYPE [--target ...] --action "
        "ACTION\n"
        "       [--uri URI] [--rounds N] [--calls N] [--clients N] [--client-calls N] [--warm-up N]\n");
    return 2;
  }
  for (const auto& target : targets) {
    if (!MakeSoapActionCall(target->control, target->serviceType, settings.action, settings.uri,
                            &target->call)) {
      std::fprintf(stderr, "compare_soap_bench: unknown action %s\n", settings.action.c_str());
      return 2;
    }
  }
  RunRounds(settings, targets);
  std::fputs(Json(settings, targets).c_str(), stdout);
  return 0;
}
