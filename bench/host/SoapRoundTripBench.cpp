// host_soap_bench: the daemon's SOAP round trip and idle memory against our stack's floor, measured with one
// client for both, in rounds that alternate between them so that whatever else the machine does falls on
// both alike. bench/host/run.sh starts both processes and runs this; by hand:
//   host_soap_bench --ours PID URL --floor PID URL [--rounds 5] [--calls 200] [--clients 16]
//                   [--client-calls 200] [--warm-up 50] [--settle-ms 1000] [--results FILE]
// URL is each device's description URL (the "ready:" line of its log). Prints a table of the figures, ours,
// floor and ours/floor, and writes it to FILE too. Exit status 0, or 1 when any call failed, 2 for bad
// arguments.
#include <sys/utsname.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <fstream>
#include <functional>
#include <sstream>
#include <string>
#include <thread>

#include "ControlUrl.h"
#include "CountOption.h"
#include "GetTransportInfoCall.h"
#include "ProcessFigures.h"
#include "RoundTrips.h"

namespace {

struct Settings {
  int rounds = 5;
  int calls = 200;  // per target, mode and round
  int clients = 16;
  int clientCalls = 200;  // per client and round
  int warmUp = 50;
  int settleMs = 1000;
  std::string results;
};

struct Target {
  const char* name;
  pid_t pid = 0;
  std::string location;
  HttpEndpoint control;
  RoundTripCall call;
  ProcessMemory startUp, afterCalls;
  long descriptorsAtStartUp = -1, descriptorsAfterCalls = -1;
  CallTally fresh, keepAlive, concurrent;
  int64_t freshCpuNs = 0, keepAliveCpuNs = 0;
  double concurrentSeconds = 0;
  HttpConnection connection;  // the one keep-alive connection of every round
};

bool ParseArguments(int argc, char** argv, Settings* settings, Target* ours, Target* floor) {
  for (int at = 1; at < argc; ++at) {
    const std::string option = argv[at];
    Target* target = option == "--ours" ? ours : option == "--floor" ? floor : nullptr;
    if (target != nullptr) {
      if (at + 2 >= argc) return false;
      target->pid = static_cast<pid_t>(std::atoi(argv[at + 1]));
      target->location = argv[at + 2];
      at += 2;
      continue;
    }
    if (at + 1 >= argc) return false;
    const char* value = argv[++at];
    if (option == "--results") {
      settings->results = value;
      continue;
    }
    if (!ReadCountOption(option, value,
                         {{"--rounds", &settings->rounds},
                          {"--calls", &settings->calls},
                          {"--clients", &settings->clients},
                          {"--client-calls", &settings->clientCalls},
                          {"--warm-up", &settings->warmUp},
                          {"--settle-ms", &settings->settleMs}}))
      return false;
  }
  return ours->pid > 0 && floor->pid > 0 && settings->rounds > 0 && settings->calls > 0;
}

void RunRounds(const Settings& settings, Target* targets[2]) {
  for (Target* target : {targets[0], targets[1]}) {
    CallTally discarded;
    CallOnNewConnections(target->control, target->call, settings.warmUp, &discarded);
    CallOnKeepAlive(target->control, target->call, settings.warmUp, &target->connection, &discarded);
    if (discarded.failures == 0) continue;
    target->fresh.failures += discarded.failures;
    target->fresh.lastFailure = "warm-up: " + discarded.lastFailure;
  }
  for (int round = 0; round < settings.rounds; ++round) {
    // ABBA order: neither target always goes first.
    Target* first = targets[round % 2];
    Target* second = targets[1 - round % 2];
    for (Target* target : {first, second})
      AddProcessCpuDuring(target->pid, &target->freshCpuNs, [&] {
        CallOnNewConnections(target->control, target->call, settings.calls, &target->fresh);
      });
    for (Target* target : {first, second})
      AddProcessCpuDuring(target->pid, &target->keepAliveCpuNs, [&] {
        CallOnKeepAlive(target->control, target->call, settings.calls, &target->connection,
                        &target->keepAlive);
      });
    if (settings.clients > 0 && settings.clientCalls > 0) {
      for (Target* target : {first, second})
        target->concurrentSeconds += CallConcurrently(target->control, target->call, settings.clients,
                                                      settings.clientCalls, &target->concurrent);
    }
  }
  for (Target* target : {targets[0], targets[1]}) target->connection.Close();
}

std::string Number(double value, int decimals) {
  char text[64];
  std::snprintf(text, sizeof(text), "%.*f", decimals, value);
  return text;
}

std::string Ratio(double ours, double floor) { return floor > 0 ? Number(ours / floor, 2) : "-"; }

std::string Table(const Settings& settings, const Target& ours, const Target& floor) {
  std::ostringstream out;
  out << "| figure | ours | floor | ours/floor |\n| --- | ---: | ---: | ---: |\n";
  auto row = [&](const std::string& figure, double a, double b, int decimals) {
    out << "| " << figure << " | " << Number(a, decimals) << " | " << Number(b, decimals) << " | "
        << Ratio(a, b) << " |\n";
  };
  row("round trip, new connection each call, p50 (µs)", Percentile(ours.fresh.microseconds, 0.5),
      Percentile(floor.fresh.microseconds, 0.5), 1);
  row("round trip, new connection each call, p99 (µs)", Percentile(ours.fresh.microseconds, 0.99),
      Percentile(floor.fresh.microseconds, 0.99), 1);
  row("round trip, one keep-alive connection, p50 (µs)", Percentile(ours.keepAlive.microseconds, 0.5),
      Percentile(floor.keepAlive.microseconds, 0.5), 1);
  row("round trip, one keep-alive connection, p99 (µs)", Percentile(ours.keepAlive.microseconds, 0.99),
      Percentile(floor.keepAlive.microseconds, 0.99), 1);
  const double freshCalls = static_cast<double>(settings.rounds) * settings.calls;
  row("server CPU per call, new connection (µs)", ours.freshCpuNs / 1e3 / freshCalls,
      floor.freshCpuNs / 1e3 / freshCalls, 1);
  row("server CPU per call, keep-alive (µs)", ours.keepAliveCpuNs / 1e3 / freshCalls,
      floor.keepAliveCpuNs / 1e3 / freshCalls, 1);
  if (settings.clients > 0 && settings.clientCalls > 0) {
    const double concurrentCalls =
        static_cast<double>(settings.rounds) * settings.clients * settings.clientCalls;
    row("throughput, " + std::to_string(settings.clients) + " keep-alive clients (calls/s)",
        ours.concurrentSeconds > 0 ? concurrentCalls / ours.concurrentSeconds : 0,
        floor.concurrentSeconds > 0 ? concurrentCalls / floor.concurrentSeconds : 0, 0);
  }
  row("VmRSS after start-up (KiB)", ours.startUp.residentKb, floor.startUp.residentKb, 0);
  row("Pss after start-up (KiB)", ours.startUp.proportionalKb, floor.startUp.proportionalKb, 0);
  row("VmRSS after the calls (KiB)", ours.afterCalls.residentKb, floor.afterCalls.residentKb, 0);
  row("Pss after the calls (KiB)", ours.afterCalls.proportionalKb, floor.afterCalls.proportionalKb, 0);
  row("open file descriptors after start-up", ours.descriptorsAtStartUp, floor.descriptorsAtStartUp, 0);
  row("open file descriptors after the calls", ours.descriptorsAfterCalls, floor.descriptorsAfterCalls, 0);
  row("failed calls",
      static_cast<double>(ours.fresh.failures + ours.keepAlive.failures + ours.concurrent.failures),
      static_cast<double>(floor.fresh.failures + floor.keepAlive.failures + floor.concurrent.failures), 0);
  return out.str();
}

std::string Preface(const Settings& settings) {
  utsname system{};
  uname(&system);
  char date[32];
  const std::time_t now = std::time(nullptr);
  std::strftime(date, sizeof(date), "%Y-%m-%d %H:%M", std::localtime(&now));
  // Other work on the machine shows in the tails first; the load says how much there was.
  std::ifstream loadFile("/proc/loadavg");
  std::string load;
  loadFile >> load;
  std::ostringstream out;
  out << "Measured " << date << " on " << std::thread::hardware_concurrency() << " cores, Linux "
      << system.release << ", load average " << (load.empty() ? "?" : load)
      << " at the start. GetTransportInfo (InstanceID 0): " << settings.rounds * settings.calls
      << " calls per target and mode, in " << settings.rounds << " alternating rounds of " << settings.calls
      << " after " << settings.warmUp << " warm-up calls";
  if (settings.clients > 0 && settings.clientCalls > 0)
    out << "; throughput: " << settings.clients << " clients x " << settings.clientCalls << " calls x "
        << settings.rounds << " rounds";
  out << ".\n\n";
  return out.str();
}

bool ReportFailures(const Target& target) {
  bool any = false;
  for (const CallTally* tally : {&target.fresh, &target.keepAlive, &target.concurrent}) {
    if (tally->failures == 0) continue;
    std::fprintf(stderr, "%s: %ld failed calls, the last: %s\n", target.name, tally->failures,
                 tally->lastFailure.c_str());
    any = true;
  }
  return any;
}

}  // namespace

int main(int argc, char** argv) {
  Settings settings;
  Target ours, floor;
  ours.name = "ours";
  floor.name = "floor";
  if (!ParseArguments(argc, argv, &settings, &ours, &floor)) {
    std::fprintf(
        stderr,
        "usage: host_soap_bench --ours PID URL --floor PID URL [--rounds N] [--calls N] [--clients N]\n"
        "                       [--client-calls N] [--warm-up N] [--settle-ms N] [--results FILE]\n");
    return 2;
  }
  Target* targets[2] = {&ours, &floor};
  for (Target* target : targets) {
    std::string error;
    if (!FindAVTransportControl(target->location, &target->control, &error)) {
      std::fprintf(stderr, "%s: %s\n", target->name, error.c_str());
      return 1;
    }
    target->call = {GetTransportInfoRequest(target->control, false),
                    GetTransportInfoRequest(target->control, true), IsTransportInfoAnswer};
    if (!ReadProcessMemory(target->pid, &target->startUp)) {
      std::fprintf(stderr, "%s: no process %d\n", target->name, static_cast<int>(target->pid));
      return 1;
    }
    target->descriptorsAtStartUp = OpenDescriptors(target->pid);
  }
  RunRounds(settings, targets);
  std::this_thread::sleep_for(std::chrono::milliseconds(settings.settleMs));
  for (Target* target : targets) {
    ReadProcessMemory(target->pid, &target->afterCalls);
    target->descriptorsAfterCalls = OpenDescriptors(target->pid);
  }

  const std::string report = Preface(settings) + Table(settings, ours, floor);
  std::fputs(report.c_str(), stdout);
  if (!settings.results.empty()) {
    std::ofstream file(settings.results);
    file << report;
    if (!file) std::fprintf(stderr, "could not write %s\n", settings.results.c_str());
  }
  const bool failedOurs = ReportFailures(ours);
  const bool failedFloor = ReportFailures(floor);
  return failedOurs || failedFloor ? 1 : 0;
}
