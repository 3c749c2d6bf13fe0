"""The comparison's tables in Markdown: values per target, ratios ours/theirs taken pair by pair (the
median over the rounds of ours/theirs measured in the same round), and the issue's targets checked."""

import math
import os
import platform
import statistics

PEERS = ("gmediarender", "rygel", "gupnp-floor", "tcp-floor")
COLUMNS = ("ours",) + PEERS


def _percentile(values, fraction):
    values = sorted(v for v in values if v is not None)
    if not values:
        return None
    return values[max(1, math.ceil(fraction * len(values))) - 1]


def _median(values):
    values = [v for v in values if v is not None]
    return statistics.median(values) if values else None


def _paired_ratio(ours, theirs):
    pairs = [a / b for a, b in zip(ours or [], theirs or []) if a is not None and b]
    return statistics.median(pairs) if pairs else None


def _number(value, decimals):
    if value is None:
        return "-"
    if isinstance(value, str):
        return value
    return "%.*f" % (decimals, value)


class Table:
    def __init__(self):
        self.lines = ["| figure | " + " | ".join(COLUMNS) + " | " +
                      " | ".join("ours/" + p for p in PEERS) + " |",
                      "| --- |" + " ---: |" * (len(COLUMNS) + len(PEERS))]
        self.ratios = {}

    def row(self, figure, values, ratios, decimals=1):
        """`values`: target → shown value; `ratios`: peer → ratio (None: not comparable)."""
        cells = [_number(values.get(name), decimals) for name in COLUMNS]
        cells += [_number(ratios.get(peer), 2) for peer in PEERS]
        self.lines.append("| %s | %s |" % (figure, " | ".join(cells)))
        self.ratios[figure] = ratios

    def text(self):
        return "\n".join(self.lines) + "\n"


def _server_instructions(measured):
    ours, floor = measured.get("ours", {}), measured.get("gupnp-floor", {})
    if not ours or not floor:
        return []
    out = ["", "## Server instructions per SOAP call (callgrind: GetTransportInfo, as many calls on new "
           "connections as on one keep-alive connection, every thread of the server)", ""]
    for name, data in (("ours", ours), ("gupnp-floor", floor)):
        if "error" in data:
            out.append("- %s: not measured (%s)" % (name, data["error"]))
    if "error" in ours or "error" in floor:
        return out
    out += ["| what | instructions per call |", "| --- | ---: |",
            "| ours, in all | %s |" % _number(ours["per_call"], 0),
            "| gupnp-floor, in all | %s |" % _number(floor["per_call"], 0),
            "| ours - floor | %s |" % _number(ours["per_call"] - floor["per_call"], 0),
            "| ours / floor | %s |" % _number(ours["per_call"] / floor["per_call"], 2),
            "| ours, with no call in as much time (timers), per call | %s |" % _number(ours["idle_per_call"], 0),
            "| gupnp-floor, with no call in as much time, per call | %s |" % _number(floor["idle_per_call"], 0),
            "| ours / floor, each without that | %s |" % _number(
                (ours["per_call"] - ours["idle_per_call"]) / (floor["per_call"] - floor["idle_per_call"]), 2)]
    for label, per_call in ours["parts"]:
        out.append("| ours: %s | %s |" % (label, _number(per_call, 0)))
    return out


def _soap_rows(table, action, data):
    targets = data["targets"]
    rounds = lambda name, mode: targets.get(name, {}).get(mode, [])
    for mode, label in (("new", "new connection each call"), ("keep", "one keep-alive connection")):
        for fraction, tag in ((0.5, "p50"), (0.99, "p99")):
            values, ratios = {}, {}
            per_round = {name: [_percentile(r, fraction) for r in rounds(name, mode)] for name in COLUMNS}
            for name in COLUMNS:
                values[name] = _percentile([v for r in rounds(name, mode) for v in r], fraction)
            for peer in PEERS:
                ratios[peer] = _paired_ratio(per_round["ours"], per_round[peer])
            table.row("%s, %s, %s (µs)" % (action, label, tag), values, ratios)
    values = {name: _median(targets.get(name, {}).get("throughput", [])) for name in COLUMNS}
    ratios = {peer: _paired_ratio(targets["ours"]["throughput"], targets.get(peer, {}).get("throughput"))
              for peer in PEERS}
    table.row("%s, throughput, %d keep-alive clients (calls/s)" % (action, data["clients"]), values, ratios, 0)
    calls = data["rounds"] * data["calls"]
    for mode in ("new", "keep"):
        values = {name: targets[name]["cpu_ns_%s" % mode] / 1e3 / calls for name in COLUMNS if name in targets}
        ratios = {peer: values["ours"] / values[peer] if values.get(peer) else None for peer in PEERS}
        table.row("%s, server CPU per call, %s (µs)" % (action, "new connection" if mode == "new" else "keep-alive"),
                  values, ratios)
    values = {name: targets[name]["keep_connections"] for name in COLUMNS if name in targets}
    table.row("%s, connections the keep-alive client had to open for %d calls" % (action, calls), values, {}, 0)
    values = {name: targets[name]["failures"] for name in COLUMNS if name in targets}
    table.row("%s, failed calls" % action, values, {}, 0)


def _series_row(table, figure, results, key, scale=1.0, decimals=1, names=COLUMNS):
    values, ratios = {}, {}
    for name in names:
        series = [v * scale if v is not None else None for v in results.get(name, {}).get(key, [])]
        values[name] = _median(series)
        if name != "ours":
            ours = [v * scale if v is not None else None for v in results["ours"].get(key, [])]
            ratios[name] = _paired_ratio(ours, series)
    table.row(figure, values, ratios, decimals)


def _gapless_text(outcomes):
    parts = []
    for outcome in outcomes or []:
        if isinstance(outcome, str):
            parts.append(outcome)
        else:
            lost, starts, silence = outcome
            parts.append("%d frames %s%s" % (abs(lost), "lost" if lost >= 0 else "added",
                                             ", %d pipeline starts, %.0f ms silence" % (starts, silence * 1e3)
                                             if starts > 1 else ""))
    return "; ".join(parts) or "-"


def _targets(results, table):
    soap = results["soap"].get("GetTransportInfo")
    checks = []
    if soap:
        t = soap["targets"]
        p50 = lambda name, mode: _percentile([v for r in t[name][mode] for v in r], 0.5)
        p99 = lambda name, mode: _percentile([v for r in t[name][mode] for v in r], 0.99)
        ratio = table.ratios["GetTransportInfo, new connection each call, p50 (µs)"]
        checks.append(("new-connection p50 within 5%% of our floor (ours/floor %.2f)" % ratio["gupnp-floor"],
                       ratio["gupnp-floor"] <= 1.05))
        checks.append(("new-connection p50 at or below gmediarender's (ours/gmediarender %.2f)" % ratio["gmediarender"],
                       ratio["gmediarender"] <= 1.0))
        r99 = p99("ours", "new") / p99("gupnp-floor", "new")
        checks.append(("new-connection p99 within 10%% of our floor (%.2f)" % r99, r99 <= 1.10))
        k = p50("ours", "keep") / p50("gmediarender", "new")
        checks.append(("keep-alive p50 at most 0.6 x gmediarender's new-connection p50 (%.2f)" % k, k <= 0.6))
    ours = results["ours"]
    events = [v for v in ours.get("event_close", []) + ours.get("event_keep", [])]
    worst = max([v for v in events if v is not None], default=None)
    checks.append(("event latency under 50 ms for either subscriber (worst %s ms)" %
                   (_number(worst * 1e3 if worst is not None else None, 1)),
                   worst is not None and None not in events and worst < 0.05))
    rss = _median(ours.get("idle_rss", []))
    rygel = _median(results["rygel"].get("idle_rss", []))
    gmr = _median(results["gmediarender"].get("idle_rss", []))
    if rss and rygel and gmr:
        checks.append(("idle VmRSS at most half of Rygel's (%.2f)" % (rss / rygel), rss / rygel <= 0.5))
        checks.append(("idle VmRSS within 1.5 x gmediarender's (%.2f)" % (rss / gmr), rss / gmr <= 1.5))
    queue = _median(ours.get("queue_insert", []))
    if queue is not None:
        checks.append(("1000-track queue pushed in under 1 s (%.2f s)" % queue, queue < 1.0))
    return "\n".join("- [%s] %s" % ("x" if met else " ", text) for text, met in checks) + "\n"


def render(results, config, quick, load_before, load_after, seconds):
    table = Table()
    for action, data in results["soap"].items():
        _soap_rows(table, action, data)
    renderers = ("ours", "gmediarender", "rygel")
    _series_row(table, "event latency, closing subscriber: Play answered → LastChange PLAYING held (ms)", results,
                "event_close", 1e3, 1, renderers)
    _series_row(table, "event latency, keep-alive subscriber (ms)", results, "event_keep", 1e3, 1, renderers)
    _series_row(table, "Play sent → first audio buffer at the sink (ms)", results, "first_audio", 1e3, 1, renderers)
    _series_row(table, "start-up: launch → first ssdp:alive seen (ms)", results, "startup", 1e3, 0,
                COLUMNS[:-1])
    _series_row(table, "VmRSS idle, alone (KiB)", results, "idle_rss", 1, 0)
    _series_row(table, "Pss idle, alone (KiB)", results, "idle_pss", 1, 0)
    _series_row(table, "VmRSS playing FLAC, alone (KiB)", results, "play_rss", 1, 0, renderers)
    _series_row(table, "Pss playing FLAC, alone (KiB)", results, "play_pss", 1, 0, renderers)
    if not quick:
        _series_row(table, "CPU playing FLAC, utime+stime over %d s (%% of one core)" % config["play_seconds"],
                    results, "cpu", 100, 2, renderers)
    for key, label in (("size_own", "stripped program + libraries the others do not share with ours (KiB)"),
                       ("size_all", "stripped program + every library it maps (KiB)")):
        values = {name: results[name].get(key) for name in renderers}
        table.row(label, values, {p: values["ours"] / values[p] if values.get(p) else None
                                  for p in ("gmediarender", "rygel")}, 0)
    out = ["# Side by side: our daemon, gmediarender, Rygel and the floors", "",
           "%s mode, %s, %d cores, load average %s before and %s after, %.0f s in all. Values: medians over the "
           "rounds (SOAP percentiles over all calls); ratios: the median over the rounds of ours/theirs "
           "measured in the same round (server CPU and sizes: ratios of the totals)." % (
               "Quick" if quick else "Full", platform.platform(), os.cpu_count(), " ".join(load_before),
               " ".join(load_after), seconds), "",
           table.text(), "## Gapless: samples lost between two WAV tracks (2.5 s each)", "",
           "| renderer, path | result |", "| --- | --- |",
           "| ours, SetNextAVTransportURI | %s |" % _gapless_text(results["ours"].get("gapless_next")),
           "| ours, OpenHome playlist | %s |" % _gapless_text(results["ours"].get("gapless_openhome")),
           "| gmediarender, SetNextAVTransportURI | %s |" % _gapless_text(results["gmediarender"].get("gapless_next")),
           "| rygel, SetNextAVTransportURI | %s |" % _gapless_text(results["rygel"].get("gapless_next")), "",
           "## Ours alone: the OpenHome queue (one keep-alive connection)", "", "| figure | median (ms) |",
           "| --- | ---: |"]
    for key, label in (("queue_insert", "Insert of 1000 tracks one by one, total"), ("queue_idarray", "IdArray"),
                       ("queue_readlist", "ReadList of 1000 ids"), ("queue_seekid", "SeekId")):
        median = _median(results["ours"].get(key, []))
        out.append("| %s | %s |" % (label, _number(median * 1e3 if median is not None else None, 1)))
    out += ["", "## Idle VmRSS by part, alone (KiB; every library counted whole)", "",
            "| part | ours | gmediarender | rygel |", "| --- | ---: | ---: | ---: |"]
    parts = sorted({p for name in renderers for p in results[name].get("breakdown_idle", {})})
    for part in parts:
        out.append("| %s | %s |" % (part, " | ".join(str(results[name].get("breakdown_idle", {}).get(part, 0))
                                                    for name in renderers)))
    out += ["", "## The issue's targets", "", _targets(results, table),
            "## Microbenchmarks (CPU time per iteration)", "", "| binary | benchmark | ns |", "| --- | --- | ---: |"]
    for binary, name, ns in results["micro"]:
        out.append("| %s | %s | %s |" % (binary, name, _number(ns, 1)))
    out += ["", "## Instructions per call (callgrind, inclusive)", "", "| hot path | instructions | calls seen |",
            "| --- | ---: | ---: |"]
    for label, per_call, calls in results["callgrind"]:
        out.append("| %s | %s | %d |" % (label, _number(per_call, 0), calls))
    out += _server_instructions(results.get("server_instructions", {}))
    return "\n".join(out) + "\n"
