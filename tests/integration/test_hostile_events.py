"""Hostile eventing against the running daemon: SUBSCRIBE callbacks off the renderer's network (UPnP's answer
to callbacks that turn a device against third hosts), bad TIMEOUT headers, a thousand subscriptions to one
service (100 are kept), and subscribers whose callback accepts the connection and never answers: events
to the other subscribers stay on time."""

import http.client
import os
import socket
import subprocess
import sys
import threading
import time
import urllib.parse

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, netns, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402
from harness.hostile import PlaylistChecks  # noqa: E402

SUBSCRIPTION_CAP = 100
# Stuck subscribers, each on a port of its own: four times the connections an HTTP client session keeps by
# default (10), all of which they would hold.
STUCK = 40
# A second network on the control points' side, off the renderer's 10.203.0.0/24.
OFF_NETWORK_ADDRESS = "10.204.0.2"


def raw_subscribe(event_url, headers, source=None, timeout=5.0):
    """A SUBSCRIBE with exactly `headers`; answers (status, response headers)."""
    parts = urllib.parse.urlsplit(event_url)
    connection = http.client.HTTPConnection(parts.hostname, parts.port, timeout=timeout,
                                            source_address=(source, 0) if source else None)
    try:
        connection.putrequest("SUBSCRIBE", parts.path, skip_accept_encoding=True)
        for name, value in headers:
            connection.putheader(name, value)
        connection.endheaders()
        response = connection.getresponse()
        response.read()
        return response.status, {k.upper(): v for k, v in response.getheaders()}
    finally:
        connection.close()


def unsubscribe(event_url, sid):
    parts = urllib.parse.urlsplit(event_url)
    connection = http.client.HTTPConnection(parts.hostname, parts.port, timeout=5)
    try:
        connection.request("UNSUBSCRIBE", parts.path, headers={"SID": sid})
        response = connection.getresponse()
        response.read()
        return response.status
    finally:
        connection.close()


class SilentListener:
    """Accepts connections and never reads or answers: a subscriber that hangs every NOTIFY."""

    def __init__(self, address=netns.CONTROL_ADDRESS):
        self.sock = socket.socket()
        self.sock.bind((address, 0))
        self.sock.listen(64)
        self.accepted = []
        self._running = True
        self._thread = threading.Thread(target=self._accept, daemon=True)
        self._thread.start()

    @property
    def callback_url(self):
        return "http://%s:%d/events" % self.sock.getsockname()

    def _accept(self):
        self.sock.settimeout(0.2)
        while self._running:
            try:
                connection, _ = self.sock.accept()
            except socket.timeout:
                continue
            except OSError:
                return
            self.accepted.append(connection)

    def close(self):
        self._running = False
        self._thread.join()
        for connection in self.accepted:
            connection.close()
        self.sock.close()


class SubscriptionCallbacks(RendererTestCase, PlaylistChecks):
    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        subprocess.run(["ip", "addr", "add", OFF_NETWORK_ADDRESS + "/24", "dev", netns.CONTROL_INTERFACE],
                       check=True, capture_output=True)
        cls.addClassCleanup(subprocess.run, ["ip", "addr", "del", OFF_NETWORK_ADDRESS + "/24", "dev",
                                             netns.CONTROL_INTERFACE], capture_output=True)

    def setUp(self):
        self.event_url = self.description.service(soap.PLAYLIST).event_url

    def subscribe_with(self, callback, source=None, timeout_header="Second-300"):
        headers = [("HOST", "%s:%d" % (netns.DAEMON_ADDRESS, self.daemon.port)), ("CALLBACK", callback),
                   ("NT", "upnp:event")]
        if timeout_header is not None:
            headers.append(("TIMEOUT", timeout_header))
        return raw_subscribe(self.event_url, headers, source)

    def test_a_callback_off_the_network_is_412_and_gets_no_event(self):
        off = events.NotifyServer(OFF_NETWORK_ADDRESS).start()
        self.addCleanup(off.stop)
        # From the renderer's network and from the off-network address itself: refused either way.
        for source in (netns.CONTROL_ADDRESS, OFF_NETWORK_ADDRESS):
            with self.subTest(source=source):
                status, headers = self.subscribe_with("<%s>" % off.callback_url, source)
                self.assertEqual(status, 412, headers)
                self.assertNotIn("SID", headers)
        self.insert()  # an IdArray event to every subscriber
        time.sleep(1.5)
        self.assertEqual(off.snapshot(), [], "an event went to a callback off the network")
        self.assertStillServing()

    def test_callbacks_that_are_names_loopback_other_schemes_or_malformed_are_412(self):
        good = "<http://%s:9/events>" % netns.CONTROL_ADDRESS
        for callback in ("<http://attacker.example/events>", "<http://127.0.0.1:%d/>" % self.daemon.port,
                         "<http://192.0.2.1/>", "<https://%s:9/>" % netns.CONTROL_ADDRESS,
                         good + "<http://192.0.2.1/>", "http://%s:9/events" % netns.CONTROL_ADDRESS, "<>", "",
                         "<" * 5000, "<http://%s:9/%s>" % (netns.CONTROL_ADDRESS, "a" * 60000)):
            with self.subTest(callback=callback[:60]):
                status, headers = self.subscribe_with(callback)
                self.assertEqual(status, 412, headers)
        self.assertStillServing()

    def test_bad_timeout_headers_get_the_services_own_bounded_timeout(self):
        server = events.NotifyServer().start()
        self.addCleanup(server.stop)
        for timeout in ("Second-abc", "Second--5", "Second-0", "Second-99999999999999999999", "infinite",
                        "Second-infinite", "", "x" * 4000, None):
            with self.subTest(timeout=timeout and timeout[:30]):
                status, headers = self.subscribe_with("<%s>" % server.callback_url, timeout_header=timeout)
                self.assertEqual(status, 200, headers)
                self.assertEqual(headers.get("TIMEOUT"), "Second-300")
                self.assertEqual(unsubscribe(self.event_url, headers["SID"]), 200)
        self.assertStillServing()

    def test_subscribe_without_callback_or_nt_is_412(self):
        for headers in ([("NT", "upnp:event")], [("CALLBACK", "<http://%s:9/>" % netns.CONTROL_ADDRESS)],
                        [("CALLBACK", "<http://%s:9/>" % netns.CONTROL_ADDRESS), ("NT", "upnp:other")]):
            with self.subTest(headers=headers):
                status, _ = raw_subscribe(self.event_url, headers)
                self.assertEqual(status, 412)
        self.assertStillServing()


class AThousandSubscriptions(RendererTestCase, PlaylistChecks):
    def test_a_service_keeps_100_subscriptions_refuses_the_rest_with_503_and_events_all_it_keeps(self):
        event_url = self.description.service(soap.PLAYLIST).event_url
        server = events.NotifyServer().start()
        self.addCleanup(server.stop)
        answers = {}
        sids = []
        for n in range(1000):
            status, sid, _ = events.subscribe(event_url, server.callback_url + "/%d" % n)
            answers[status] = answers.get(status, 0) + 1
            if status == 200:
                sids.append(sid)
        self.assertEqual(answers, {200: SUBSCRIPTION_CAP, 503: 1000 - SUBSCRIPTION_CAP})
        # Another service keeps its own count.
        status, other, _ = events.subscribe(self.description.service(soap.AVTRANSPORT).event_url,
                                            server.callback_url)
        self.assertEqual(status, 200)
        # Every subscription kept gets the next event.
        started = time.monotonic()
        self.insert()
        deadline = started + 5
        while time.monotonic() < deadline:
            got = {n.sid for n in server.snapshot() if n.arrived >= started and "IdArray" in n.properties}
            if got >= set(sids):
                break
            time.sleep(0.05)
        self.assertEqual(got & set(sids), set(sids), "%d of %d subscribers got the event" % (len(got), len(sids)))
        # A cancelled subscription makes room for one more.
        self.assertEqual(unsubscribe(event_url, sids[0]), 200)
        self.assertEqual(events.subscribe(event_url, server.callback_url)[0], 200)
        self.assertEqual(events.subscribe(event_url, server.callback_url)[0], 503)
        self.assertStillServing()


class StuckSubscribers(RendererTestCase, PlaylistChecks):
    def test_subscribers_that_never_answer_do_not_delay_the_others(self):
        event_url = self.description.service(soap.PLAYLIST).event_url
        # Each on a port of its own, so that the daemon opens a connection to each.
        stuck = [SilentListener() for _ in range(STUCK)]
        for listener in stuck:
            self.addCleanup(listener.close)
            self.assertEqual(events.subscribe(event_url, listener.callback_url)[0], 200)
        good = events.NotifyServer().start()
        self.addCleanup(good.stop)
        status, sid, _ = events.subscribe(event_url, good.callback_url)
        self.assertEqual(status, 200)
        self.assertIsNotNone(good.wait_for(lambda n: n.sid == sid, 5.0), "no initial event")
        delays = []
        for _ in range(5):
            started = time.monotonic()
            self.insert()
            arrived = good.wait_for(lambda n: n.arrived >= started and "IdArray" in n.properties, 5.0)
            self.assertIsNotNone(arrived, "no event within 5 s")
            delays.append(arrived.arrived - started)
            time.sleep(0.3)
        print("event delays with %d stuck subscribers (%d connections accepted, never answered): %s" % (
            STUCK, sum(len(listener.accepted) for listener in stuck), ", ".join("%.3f s" % d for d in delays)))
        self.assertTrue(all(listener.accepted for listener in stuck), "a stuck subscriber was never connected to")
        self.assertLess(max(delays), 1.0, delays)
        self.assertStillServing()


if __name__ == "__main__":
    runner.main(27)
