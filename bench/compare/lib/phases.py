"""The measurements, each a function of the running targets that answers plain numbers; compare.py runs
them in rounds that rotate the targets' order."""

import json
import subprocess
import time
import wave

from harness import events, soap

from . import control, process, sinklog


def rotated(items, round_number):
    shift = round_number % len(items)
    return items[shift:] + items[:shift]


def frames_of(path):
    with wave.open(path, "rb") as track:
        return track.getnframes()


def start_alone(target, ssdp, settle):
    """Starts the target with nothing else running and answers (start-up seconds, VmRSS, Pss) after
    `settle` seconds of idling."""
    target.start()
    startup = target.wait_until_up(ssdp)
    time.sleep(settle)
    rss, pss = process.memory_kb(target.pid)
    return startup, rss, pss


def play_alone(target, uri, warm, seconds):
    """Plays `uri` on the target and answers (CPU seconds over `seconds` of playing, VmRSS, Pss while playing,
    Play-to-first-audio seconds)."""
    transport = control.Transport(target.location)
    try:
        reply = transport.set_uri(uri)
        if reply.status != 200 or reply.is_fault:
            raise RuntimeError("%s: SetAVTransportURI answered %r" % (target.name, reply))
        sent = time.monotonic()
        transport.call("Play", [("Speed", "1")])
        first = _wait_for_first_audio(target.sink_log, sent, 10)
        time.sleep(warm)
        before = process.cpu_seconds(target.pid)
        time.sleep(seconds)
        cpu = process.cpu_seconds(target.pid) - before
        rss, pss = process.memory_kb(target.pid)
        transport.call("Stop")
        return cpu, rss, pss, (first - sent) if first else None
    finally:
        transport.close()


def _wait_for_first_audio(sink_log, since, timeout):
    deadline = time.monotonic() + timeout
    while time.monotonic() < deadline:
        first = sinklog.first_audio_after(sink_log, since)
        if first is not None:
            return first
        time.sleep(0.005)
    return None


def soap_round_trips(client, targets, action, uri, rounds, calls, clients, client_calls):
    """Runs compare_soap_bench on every target for `action`; answers its JSON."""
    arguments = [client, "--action", action, "--rounds", str(rounds), "--calls", str(calls),
                 "--clients", str(clients), "--client-calls", str(client_calls)]
    if uri:
        arguments += ["--uri", uri]
    for target in targets:
        if target.name == "tcp-floor":
            arguments += ["--target", target.name, str(target.pid), target.location,
                          "urn:schemas-upnp-org:service:AVTransport:1"]
            continue
        service = control.service_of(soap.Description(target.location), "AVTransport")
        arguments += ["--target", target.name, str(target.pid), service.control_url, service.service_type]
    result = subprocess.run(arguments, capture_output=True, text=True, timeout=1800)
    if result.returncode != 0:
        raise RuntimeError("compare_soap_bench failed: %s" % result.stderr)
    return json.loads(result.stdout)


def event_latency(target, uri, keeps_alive, timeout):
    """One Play from STOPPED: answers (seconds from Play answered to the subscriber holding a LastChange with
    PLAYING, or None at the timeout; seconds from Play sent to the first audio at the sink; the transport
    states the subscriber was sent, each with its ms after the answer)."""
    transport = control.Transport(target.location)
    subscriber = control.Subscriber(keeps_alive).start()
    sid = None
    try:
        transport.call("Stop")
        transport.wait_for_state({"STOPPED", "NO_MEDIA_PRESENT"}, 5)
        transport.set_uri(uri)
        status, sid, _ = events.subscribe(transport.service.event_url, subscriber.callback_url)
        if status != 200:
            raise RuntimeError("%s: SUBSCRIBE answered %d" % (target.name, status))
        subscriber.wait_for(lambda n: "LastChange" in n.properties, 5)
        initial = len(subscriber.snapshot())
        sent = time.monotonic()
        reply = transport.call("Play", [("Speed", "1")])
        answered = time.monotonic()
        if reply.status != 200 or reply.is_fault:
            raise RuntimeError("%s: Play answered %r" % (target.name, reply))
        seen = subscriber.wait_for(
            lambda n: n in subscriber.notifications[initial:] and control.transport_state_of(n) == "PLAYING",
            timeout)
        first = _wait_for_first_audio(target.sink_log, sent, 10)
        sequence = [(control.transport_state_of(n), round((n.arrived - answered) * 1e3, 1))
                    for n in subscriber.snapshot()[initial:]]
        transport.call("Stop")
        transport.wait_for_state({"STOPPED"}, 5)
        # A NOTIFY that arrives before the answer to Play has waited for nothing: 0.
        latency = max(0.0, seen.arrived - answered) if seen else None
        return latency, (first - sent) if first else None, sequence
    finally:
        if sid:
            control.unsubscribe(transport.service.event_url, sid)
        subscriber.stop()
        transport.close()


def gapless_avtransport(target, first_uri, second_uri, expected_frames, seconds):
    """SetAVTransportURI + SetNextAVTransportURI + Play. Answers (frames lost (negative: added), pipeline
    starts, silence seconds) or a string saying why it cannot be measured."""
    transport = control.Transport(target.location)
    try:
        transport.call("Stop")
        transport.wait_for_state({"STOPPED", "NO_MEDIA_PRESENT"}, 5)
        transport.set_uri(first_uri)
        reply = transport.set_uri(second_uri, next_uri=True)
        if reply.status != 200 or reply.is_fault:
            return "SetNextAVTransportURI answered %s" % (
                "UPnP error %s" % reply.fault_code if reply.is_fault else "HTTP %d" % reply.status)
        since = time.monotonic()
        transport.call("Play", [("Speed", "1")])
        return _frames_when_done(target, since, expected_frames, seconds)
    finally:
        transport.close()


def gapless_openhome(target, first_uri, second_uri, expected_frames, seconds):
    """Our OpenHome Playlist: DeleteAll, two Inserts, Play."""
    description = soap.Description(target.location)
    playlist = control.service_of(description, "Playlist")
    client = soap.SoapClient(playlist.control_url)
    try:
        call = lambda action, arguments=(): client.call(playlist.control_path, playlist.service_type, action,
                                                        arguments)
        call("Stop")
        call("DeleteAll")
        first = call("Insert", [("AfterId", "0"), ("Uri", first_uri), ("Metadata", "")]).outputs["NewId"]
        call("Insert", [("AfterId", first), ("Uri", second_uri), ("Metadata", "")])
        since = time.monotonic()
        call("SeekId", [("Value", first)])  # starts playing from that track
        result = _frames_when_done(target, since, expected_frames, seconds)
        call("Stop")
        call("DeleteAll")
        return result
    finally:
        client.close()


def _frames_when_done(target, since, expected_frames, seconds):
    deadline = time.monotonic() + seconds + 8
    frames, starts, silence = 0, 0, 0.0
    while time.monotonic() < deadline:
        time.sleep(0.25)
        frames, starts, silence = sinklog.frames_after(target.sink_log, since)
        if frames >= expected_frames:
            break
    time.sleep(0.5)
    frames, starts, silence = sinklog.frames_after(target.sink_log, since)
    return expected_frames - frames, starts, silence


def openhome_queue(target, uri, tracks):
    """Our OpenHome path end to end on one keep-alive connection, as a control point pushing a queue:
    answers seconds for {Insert of `tracks` one by one, IdArray, ReadList of all ids, SeekId}."""
    description = soap.Description(target.location)
    playlist = control.service_of(description, "Playlist")
    client = soap.SoapClient(playlist.control_url)
    try:
        def call(action, arguments=()):
            reply = client.call(playlist.control_path, playlist.service_type, action, arguments)
            if reply.status != 200 or reply.is_fault:
                raise RuntimeError("%s answered %r" % (action, reply))
            return reply
        call("DeleteAll")
        figures = {}
        after = "0"
        ids = []
        start = time.monotonic()
        for number in range(tracks):
            after = call("Insert", [("AfterId", after), ("Uri", "%s?%d" % (uri, number)),
                                    ("Metadata", "")]).outputs["NewId"]
            ids.append(after)
        figures["insert"] = time.monotonic() - start
        start = time.monotonic()
        call("IdArray")
        figures["idarray"] = time.monotonic() - start
        start = time.monotonic()
        call("ReadList", [("IdList", " ".join(ids))])
        figures["readlist"] = time.monotonic() - start
        start = time.monotonic()
        call("SeekId", [("Value", ids[len(ids) // 2])])
        figures["seekid"] = time.monotonic() - start
        call("Stop")
        call("DeleteAll")
        return figures
    finally:
        client.close()
