"""The instructions a server executes per SOAP call, counted by callgrind: our daemon against our stack's
floor (the bare GUPnP device), each alone on the namespace's loopback under valgrind, both called the same
way by the same client. Unlike times, the counts do not depend on how busy the machine is, so they place
the daemon's extra cost per call exactly (system calls and the kernel's share are not counted: those are
the same for both, by strace)."""

import os
import re
import subprocess
import time
import urllib.request
import xml.etree.ElementTree as ElementTree

from lib import micro

DEVICE_NAMESPACE = "{urn:schemas-upnp-org:device-1-0}"
AVTRANSPORT = "urn:schemas-upnp-org:service:AVTransport:1"
# Our code on the request path, each with the function whose inclusive count is shown.
OUR_PARTS = (
    ("the action handler, in all", "AnswerAction"),
    ("reading the request body (its own parse)", "HOST_ReadSoapRequest"),
    ("the service object's dispatch and action", "SINK_UPNP_SinkCTSSUPnPService::PerformAction"),
    ("following connections (end of a request)", "HOST_ServerConnections::OnRequestEnded"),
    ("following connections (a closed connection's socket)", "HOST_ServerConnections::OnOrphanCheck"),
    ("HTTP guard: Host, length, subscription checks", "OnGotHeaders"),
)
PORTS = {"ours": 49320, "gupnp-floor": 49321}
READY = re.compile(r"ready: (http://127\.0\.0\.1:\d+/\S+\.xml)")


def _arguments(name, build, directory):
    port = str(PORTS[name])
    if name == "ours":
        return [os.path.join(build, "host", "open-renderer"), "--interface", "lo", "--port", port, "--output",
                "null", "--state-dir", directory, "--name", "Bench"]
    return [os.path.join(build, "bench", "host", "floor_device"), "--interface", "lo", "--port", port,
            "--docroot", os.path.join(build, "host", "docroot"), "--state-dir", directory]


def _control_url(location):
    with urllib.request.urlopen(location, timeout=30) as answer:
        root = ElementTree.fromstring(answer.read())
    for service in root.iter(DEVICE_NAMESPACE + "service"):
        if service.findtext(DEVICE_NAMESPACE + "serviceType") == AVTRANSPORT:
            return urllib.request.urljoin(location, service.findtext(DEVICE_NAMESPACE + "controlURL"))
    raise RuntimeError("no AVTransport in " + location)


def _totals(callgrind_file):
    with open(callgrind_file) as data:
        for line in data:
            if line.startswith("totals:") or line.startswith("summary:"):
                return int(line.split()[1])
    return None


def _dump(pid, path):
    subprocess.run(["callgrind_control", "-d", str(pid)], capture_output=True, timeout=60)
    deadline = time.monotonic() + 60
    while not os.path.exists(path) and time.monotonic() < deadline:
        time.sleep(0.2)
    time.sleep(1)  # written whole
    return path


def _client(build, name, pid, control, calls, warm_up):
    return subprocess.run([os.path.join(build, "bench", "compare", "compare_soap_bench"), "--target", name,
                           str(pid), control, AVTRANSPORT, "--action", "GetTransportInfo", "--rounds", "1",
                           "--calls", str(calls), "--clients", "0", "--warm-up", str(warm_up)],
                          capture_output=True, text=True, timeout=900)


def _measure(name, build, work, calls):
    directory = os.path.join(work, "instructions-" + name)
    os.makedirs(directory, exist_ok=True)
    output = os.path.join(directory, "callgrind.out")
    log_path = os.path.join(directory, "log")
    with open(log_path, "w") as log:
        process = subprocess.Popen(["valgrind", "--tool=callgrind", "--callgrind-out-file=" + output] +
                                   _arguments(name, build, directory), stdout=log, stderr=log,
                                   stdin=subprocess.DEVNULL)
    try:
        location = None
        deadline = time.monotonic() + 120
        while location is None and time.monotonic() < deadline and process.poll() is None:
            time.sleep(0.2)
            with open(log_path) as log:
                found = READY.search(log.read())
            location = found.group(1) if found else None
        if location is None:
            raise RuntimeError("%s did not get ready under valgrind" % name)
        time.sleep(2)  # the services' own descriptions read, the first announcements sent
        control = _control_url(location)
        _client(build, name, process.pid, control, 20, 20)
        subprocess.run(["callgrind_control", "-z", str(process.pid)], capture_output=True, timeout=60)
        started = time.monotonic()
        measured = _client(build, name, process.pid, control, calls, 0)
        took = time.monotonic() - started
        if measured.returncode != 0:
            raise RuntimeError("the client failed on %s: %s" % (name, measured.stderr[-300:]))
        dump = _dump(process.pid, output + ".1")
        # What the server does on its own (timers) in as much time, with no call: counted in the totals
        # above too, and shown apart.
        subprocess.run(["callgrind_control", "-z", str(process.pid)], capture_output=True, timeout=60)
        time.sleep(took)
        idle = _dump(process.pid, output + ".2")
    finally:
        process.terminate()
        process.wait(timeout=60)
    soap_calls = 2 * calls  # as many on new connections as on the one keep-alive connection
    result = {"per_call": _totals(dump) / soap_calls, "idle_per_call": _totals(idle) / soap_calls,
              "calls": soap_calls, "parts": []}
    if name == "ours":
        for label, function in OUR_PARTS:
            per_call, seen = micro.inclusive_per_call(dump, function)
            result["parts"].append((label, per_call * seen / soap_calls if per_call else None))
    return result


def measure(build, work, calls):
    """{"ours": ..., "gupnp-floor": ...}, each {"per_call", "idle_per_call", "calls", "parts": [(label, per
    SOAP call)]}; an entry holds "error" instead when its run failed."""
    results = {}
    for name in PORTS:
        try:
            results[name] = _measure(name, build, work, calls)
        except (RuntimeError, OSError, subprocess.SubprocessError, TypeError) as error:
            results[name] = {"error": str(error)}
    return results
