"""The plug-in's microbenchmarks (Google Benchmark) and instruction counts of its hot paths under
callgrind, which do not depend on how busy the machine is."""

import json
import os
import re
import subprocess
import tempfile

# player_bench is a real-time harness of its own, not Google Benchmark: it is run by hand.
BINARIES = ("bench/runtime_bench", "bench/sink_upnp/state_variable_bench", "bench/sink_upnp/service_bench",
            "bench/playlist/playlist_bench")

# Hot path → (benchmark binary, benchmark filter, function whose calls are counted).
HOT_PATHS = (
    ("ChangeStateVariable (a new value)", "bench/sink_upnp/state_variable_bench", "BM_ChangeStateVariableNewValue$",
     "ChangeStateVariable"),
    ("SendEvent (five changes pending)", "bench/sink_upnp/state_variable_bench", "BM_SendEventFivePendingChanges$",
     "SendEvent"),
    ("dispatch (PerformAction, GetTransportInfo)", "bench/sink_upnp/service_bench",
     "BM_PerformActionGetTransportInfo$", "PerformAction"),
    ("GetLastChange (the full document)", "bench/sink_upnp/state_variable_bench", "BM_GetLastChange$",
     "GetLastChange"),
    ("ReadList (all ids of a full playlist)", "bench/playlist/playlist_bench", "BM_ReadListAllIdsOfAFullPlaylist$",
     "PLAYLIST_BuildTrackList"),
)


def existing(build):
    return [os.path.join(build, b) for b in BINARIES if os.access(os.path.join(build, b), os.X_OK)]


def run_benchmarks(build, min_time):
    """Every benchmark of every binary: [(binary, name, ns per iteration)]."""
    rows = []
    for binary in existing(build):
        with tempfile.TemporaryDirectory() as scratch:
            output = os.path.join(scratch, "out.json")
            result = subprocess.run([binary, "--benchmark_out=" + output, "--benchmark_out_format=json",
                                     "--benchmark_min_time=%g" % min_time], capture_output=True, text=True,
                                    timeout=900)
            if result.returncode != 0 or not os.path.exists(output):
                rows.append((os.path.basename(binary), "(failed: %s)" % result.stderr.strip()[-200:], None))
                continue
            with open(output) as data:
                found = json.load(data)["benchmarks"]
        for benchmark in found:
            scale = {"ns": 1, "us": 1e3, "ms": 1e6, "s": 1e9}[benchmark.get("time_unit", "ns")]
            rows.append((os.path.basename(binary), benchmark["name"], benchmark["cpu_time"] * scale))
    return rows


def inclusive_per_call(callgrind_file, function):
    """Sum of the inclusive Ir of every call to a function whose name contains `::FUNCTION(` (or is
    FUNCTION), over the calls' count: instructions per call."""
    names = {}
    calls = cost = 0
    pending = None
    matcher = re.compile(r"(^|::)%s(\(|$)" % re.escape(function))
    with open(callgrind_file) as data:
        for line in data:
            if line.startswith("cfn="):
                match = re.match(r"cfn=\((\d+)\)(?: (.*))?", line.strip())
                if match:
                    if match.group(2):
                        names[match.group(1)] = match.group(2)
                    name = names.get(match.group(1), "")
                else:
                    name = line[4:].strip()
                pending = name if matcher.search(name) else None
            elif line.startswith("fn=") or line.startswith("cfi=") or line.startswith("cob="):
                match = re.match(r"fn=\((\d+)\) (.*)", line.strip())
                if match:
                    names[match.group(1)] = match.group(2)
            elif line.startswith("calls=") and pending is not None:
                calls += int(line.split("=")[1].split()[0])
                cost_line = next(data).split()
                cost += int(cost_line[1]) if len(cost_line) > 1 else 0
                pending = None
    return (cost / calls, calls) if calls else (None, 0)


def callgrind_counts(build):
    """[(hot path, instructions per call, calls seen)] from callgrind runs of the benchmarks."""
    rows = []
    for label, binary, selection, function in HOT_PATHS:
        path = os.path.join(build, binary)
        if not os.access(path, os.X_OK):
            rows.append((label, None, 0))
            continue
        with tempfile.TemporaryDirectory() as scratch:
            output = os.path.join(scratch, "callgrind.out")
            subprocess.run(["valgrind", "--tool=callgrind", "--callgrind-out-file=" + output, path,
                            "--benchmark_filter=" + selection, "--benchmark_min_time=0.01"],
                           capture_output=True, timeout=900)
            per_call, calls = inclusive_per_call(output, function) if os.path.exists(output) else (None, 0)
        rows.append((label, per_call, calls))
    return rows
