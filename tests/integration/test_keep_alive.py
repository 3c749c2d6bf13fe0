"""HTTP/1.1 keep-alive in both directions: many actions on one connection, and a subscriber whose event
server keeps connections open gets every event at once."""

import http.client
import os
import statistics
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

AVT = soap.AVTRANSPORT
CALLS = 1000
EVENT_DELAY_LIMIT = 1.0


def transport_state(notification):
    last_change = notification.properties.get("LastChange", "<Event/>")
    return events.parse_last_change(last_change).get("TransportState")


class KeepAlive(RendererTestCase):
    serves_media = True

    def test_1000_back_to_back_actions_on_one_connection_all_succeed(self):
        client = self.soap_client()
        path = self.description.service(AVT).control_path
        failures, round_trips = [], []
        for index in range(CALLS):
            started = time.monotonic()
            try:
                reply = client.call(path, AVT, "GetTransportInfo", [("InstanceID", "0")])
            except (OSError, http.client.HTTPException) as error:
                failures.append("call %d: %r" % (index, error))
                client.close()
                continue
            round_trips.append(time.monotonic() - started)
            if reply.status != 200 or "CurrentTransportState" not in reply.outputs:
                failures.append("call %d: %r" % (index, reply))
            if reply.will_close:
                failures.append("call %d: the daemon closed the connection (%r)" % (index, reply.headers))
        print("%d calls, median round trip %.0f µs, slowest %.1f ms" % (
            CALLS, statistics.median(round_trips) * 1e6, max(round_trips) * 1e3))
        self.assertEqual(failures[:10], [], "%d of %d calls failed" % (len(failures), CALLS))
        self.assertEqual(client.connections, 1, "calls needed %d connections" % client.connections)

    def test_a_keep_alive_subscriber_gets_every_event_within_a_second_of_the_change(self):
        server = events.NotifyServer().start()
        self.addCleanup(server.stop)
        service = self.description.service(AVT)
        status, sid, _ = events.subscribe(service.event_url, server.callback_url)
        self.assertEqual(status, 200)
        self.assertTrue(sid, "SUBSCRIBE answered no SID")
        initial = server.wait_for(lambda n: n.sid == sid, 3)
        self.assertIsNotNone(initial, "no initial event within 3 s")
        self.assertIn("LastChange", initial.properties)

        client = self.soap_client()
        path = service.control_path
        url = self.media.url("tone.wav")
        steps = [("SetAVTransportURI", [("CurrentURI", url), ("CurrentURIMetaData", "")], "STOPPED")]
        for _ in range(3):
            steps += [("Play", [("Speed", "1")], "PLAYING"), ("Pause", [], "PAUSED_PLAYBACK")]
        steps += [("Stop", [], "STOPPED")]

        delays = []
        for action, arguments, state in steps:
            sent = time.monotonic()
            reply = client.call(path, AVT, action, [("InstanceID", "0"), *arguments])
            self.assertEqual(reply.status, 200, "%s: %r" % (action, reply))
            changed = self.first_report_of(client, path, state, timeout=5)
            notification = server.wait_for(
                lambda n: n.sid == sid and n.arrived >= sent and transport_state(n) == state,
                changed - time.monotonic() + EVENT_DELAY_LIMIT + 2)
            self.assertIsNotNone(notification, "no event with TransportState %s after %s" % (state, action))
            delays.append((action, state, notification.arrived - changed))
        print("event delays after the change: " + ", ".join("%s %s %+.3f s" % d for d in delays))
        late = [d for d in delays if d[2] > EVENT_DELAY_LIMIT]
        self.assertEqual(late, [], "events later than %.1f s after the change" % EVENT_DELAY_LIMIT)

        sequence = [int(n.seq) for n in server.snapshot() if n.sid == sid]
        self.assertEqual(sequence, list(range(len(sequence))), "SEQ of the events received: gaps or disorder")

    def first_report_of(self, client, path, state, timeout):
        """When GetTransportInfo, asked every 20 ms, first answers `state`: the moment of the change as the
        daemon itself reports it."""
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            reply = client.call(path, AVT, "GetTransportInfo", [("InstanceID", "0")])
            if reply.outputs.get("CurrentTransportState") == state:
                return time.monotonic()
            time.sleep(0.02)
        self.fail("GetTransportInfo did not answer %s within %.0f s" % (state, timeout))


if __name__ == "__main__":
    runner.main(5)
