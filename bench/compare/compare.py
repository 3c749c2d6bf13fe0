#!/usr/bin/env python3
"""The side-by-side comparison: our daemon, gmediarender, Rygel's playbin renderer, our stack's floor and
the network's floor, measured the same way in one private network namespace. run.sh installs the peers
and builds; this runs the measurements and writes the table:
  compare.py --build BUILD_DIR [--quick] [--results FILE]
As root (the namespace). Nothing is sent anywhere but inside the namespace."""

import argparse
import json
import os
import shutil
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
CHECKOUT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(CHECKOUT, "tests", "integration"))
sys.path.insert(0, HERE)

from harness import media, netns  # noqa: E402
from lib import footprint, micro, phases, process, report, server_instructions, ssdp_watch, targets  # noqa: E402

INSIDE = "DMR_COMPARE_INSIDE_NAMESPACE"
NAMESPACE_NUMBER = 95


def settings(quick):
    if quick:
        return dict(alone_rounds=1, settle=2, play_seconds=0, soap_rounds=2, calls=100, clients=16, client_calls=25,
                    event_rounds=1, event_timeout=35, gapless_rounds=1, queue_rounds=1, micro_time=0.02,
                    instruction_calls=100)
    return dict(alone_rounds=2, settle=3, play_seconds=30, soap_rounds=10, calls=200, clients=16, client_calls=100,
                event_rounds=3, event_timeout=35, gapless_rounds=2, queue_rounds=3, micro_time=0.2,
                instruction_calls=300)


def log(text):
    print("[%s] %s" % (time.strftime("%H:%M:%S"), text), flush=True)


def make_media(directory, quick):
    os.makedirs(directory, exist_ok=True)
    media.make_wav(os.path.join(directory, "first.wav"), 2.5, 440)
    media.make_wav(os.path.join(directory, "second.wav"), 2.5, 550)
    media.make_wav(os.path.join(directory, "long.wav"), 20, 330)
    media.make_flac(os.path.join(directory, "tone.flac"), 8 if quick else 40)
    server = media.MediaServer(directory)
    # Players drop media connections when they have what they need: not worth a traceback each.
    server.handle_error = lambda request, address: None
    return server.start()


def alone(config, build, work, gst, ssdp, server, results):
    """Start-up, idle memory, playing memory and CPU: every target alone in the namespace."""
    names = list(targets.RENDERERS + targets.FLOORS)
    shared = None
    for round_number in range(config["alone_rounds"]):
        for name in phases.rotated(names, round_number):
            target = targets.Target(name, build, work, gst, names.index(name))
            try:
                startup, rss, pss = phases.start_alone(target, ssdp, config["settle"])
                row = results.setdefault(name, {})
                row.setdefault("startup", []).append(startup)
                row.setdefault("idle_rss", []).append(rss)
                row.setdefault("idle_pss", []).append(pss)
                if round_number == 0:
                    row["files"] = footprint.mapped_files(target.pid)
                    row["breakdown_idle"] = footprint.breakdown(target.pid, build)
                    row["libraries_idle"] = process.smaps_by_library(target.pid)
                    if name == "ours":
                        shared = row["files"]
                if target.is_renderer:
                    seconds = config["play_seconds"] or 3
                    cpu, rss, pss, first = phases.play_alone(target, server.url("tone.flac"), 2, seconds)
                    if config["play_seconds"]:
                        row.setdefault("cpu", []).append(cpu / seconds)
                    row.setdefault("play_rss", []).append(rss)
                    row.setdefault("play_pss", []).append(pss)
                    if round_number == 0:
                        row["breakdown_play"] = footprint.breakdown(target.pid, build)
                log("%s alone: start-up %.3f s, idle VmRSS %s KiB" % (name, startup, results[name]["idle_rss"][-1]))
            finally:
                target.stop()
    for name in targets.RENDERERS:
        row = results[name]
        program = [path for path in row["files"] if "/bin/" in path or path.endswith("open-renderer")]
        row["size_own"], row["size_all"] = footprint.sizes(row["files"], shared if name != "ours" else set())
        if name == "ours":
            row["size_own"] = footprint.sizes([p for p in row["files"] if p.startswith(build)], set())[0]
        row["program"] = program


def together(config, build, work, gst, ssdp, server, results):
    """Everything measured with all five targets running: SOAP, events, first audio, gapless, the queue."""
    names = list(targets.RENDERERS + targets.FLOORS)
    running = [targets.Target(name, build, work, gst, index) for index, name in enumerate(names)]
    try:
        for target in running:
            target.start()
            target.wait_until_up(ssdp)
        time.sleep(config["settle"])
        client = os.path.join(build, "bench", "compare", "compare_soap_bench")
        for action, uri in (("GetTransportInfo", None), ("GetPositionInfo", None),
                            ("SetAVTransportURI", server.url("first.wav"))):
            log("SOAP round trips: %s" % action)
            results["soap"][action] = phases.soap_round_trips(
                client, running, action, uri, config["soap_rounds"], config["calls"], config["clients"],
                config["client_calls"])
            for target in running:
                target.check_alive("the %s round trips" % action)
        renderers = [t for t in running if t.is_renderer]
        for round_number in range(config["event_rounds"]):
            for target in phases.rotated(renderers, round_number):
                for keeps_alive in (False, True):
                    latency, first, sequence = phases.event_latency(target, server.url("long.wav"), keeps_alive,
                                                                    config["event_timeout"])
                    key = "event_keep" if keeps_alive else "event_close"
                    results[target.name].setdefault(key, []).append(latency)
                    results[target.name].setdefault(key + "_states", []).append(sequence)
                    results[target.name].setdefault("first_audio", []).append(first)
                    log("%s event (%s subscriber): %s s, first audio %s s, states (ms) %s" % (
                        target.name, "keep-alive" if keeps_alive else "closing", latency, first, sequence))
        expected = phases.frames_of(os.path.join(server.directory, "first.wav")) + \
            phases.frames_of(os.path.join(server.directory, "second.wav"))
        for round_number in range(config["gapless_rounds"]):
            for target in phases.rotated(renderers, round_number):
                outcome = phases.gapless_avtransport(target, server.url("first.wav"), server.url("second.wav"),
                                                     expected, 5)
                results[target.name].setdefault("gapless_next", []).append(outcome)
                log("%s gapless (SetNextAVTransportURI): %s" % (target.name, outcome))
            ours = running[0]
            outcome = phases.gapless_openhome(ours, server.url("first.wav"), server.url("second.wav"), expected, 5)
            results["ours"].setdefault("gapless_openhome", []).append(outcome)
            log("ours gapless (OpenHome playlist): %s" % (outcome,))
        for _ in range(config["queue_rounds"]):
            figures = phases.openhome_queue(running[0], server.url("long.wav"), 1000)
            for key, value in figures.items():
                results["ours"].setdefault("queue_" + key, []).append(value)
            log("ours OpenHome queue: %s" % figures)
    finally:
        for target in running:
            target.stop()


def inside(arguments):
    config = settings(arguments.quick)
    build = os.path.abspath(arguments.build)
    # Client connections take their ports below the renderers' (libupnp accepts only 49152 and up).
    with open("/proc/sys/net/ipv4/ip_local_port_range", "w") as ports:
        ports.write("20000 48999")
    work = tempfile.mkdtemp(prefix="dmr-compare-")
    load_before = open("/proc/loadavg").read().split()[:3]
    started = time.monotonic()
    try:
        gst = {"GST_PLUGIN_PATH": os.path.join(build, "bench", "compare", "gst-plugins")}
        # Every target's plug-in registry is built here, so that no start-up pays for the scan.
        for index, name in enumerate(targets.RENDERERS):
            targets.Target(name, build, work, gst, index).build_plugin_registry()
        server = make_media(os.path.join(work, "media"), arguments.quick)
        ssdp = ssdp_watch.SsdpWatch()
        results = {name: {} for name in targets.RENDERERS + targets.FLOORS}
        results["soap"] = {}
        log("every target alone: start-up, memory, CPU while playing")
        alone(config, build, work, gst, ssdp, server, results)
        log("all targets together: SOAP, events, gapless, the OpenHome queue")
        together(config, build, work, gst, ssdp, server, results)
        log("microbenchmarks and callgrind")
        results["micro"] = micro.run_benchmarks(build, config["micro_time"])
        results["callgrind"] = micro.callgrind_counts(build)
        log("instructions per SOAP call under callgrind: ours and our stack's floor")
        results["server_instructions"] = server_instructions.measure(build, work, config["instruction_calls"])
        load_after = open("/proc/loadavg").read().split()[:3]
        text = report.render(results, config, arguments.quick, load_before, load_after, time.monotonic() - started)
        with open(arguments.results, "w") as out:
            out.write(text)
        for name in targets.RENDERERS + targets.FLOORS:
            results[name]["files"] = sorted(results[name].get("files", []))
        with open(os.path.splitext(arguments.results)[0] + ".json", "w") as out:
            json.dump(results, out, indent=1, default=str)
        print(text)
        log("written to %s" % arguments.results)
        ssdp.close()
        server.stop()
        return 0
    finally:
        if not arguments.keep:
            shutil.rmtree(work, ignore_errors=True)
        else:
            log("kept %s" % work)


def outside(arguments):
    if os.geteuid() != 0:
        print("compare.py: making a network namespace needs root", file=sys.stderr)
        return 77
    netns.reap_stale_namespaces()
    namespace = netns.Namespace(NAMESPACE_NUMBER)
    namespace.create()
    try:
        command = namespace.command([sys.executable, os.path.abspath(__file__), *sys.argv[1:]])
        return subprocess.run(command, env=dict(os.environ, **{INSIDE: "1"})).returncode
    finally:
        namespace.delete()


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--build", required=True)
    parser.add_argument("--quick", action="store_true")
    parser.add_argument("--keep", action="store_true", help="keep the scratch directory (logs of every target)")
    parser.add_argument("--results", default=os.path.join(HERE, "results.md"))
    arguments = parser.parse_args()
    arguments.results = os.path.abspath(arguments.results)
    return inside(arguments) if os.environ.get(INSIDE) else outside(arguments)


if __name__ == "__main__":
    sys.exit(main())
