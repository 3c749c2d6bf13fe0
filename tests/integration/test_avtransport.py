"""AVTransport end to end through two control points written by others: GUPnP (from Python) and the Node
control point. Each plays a track served from the namespace: set the URI, play, see the position advance,
pause, seek, stop, and sees the transport states evented in that order."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, gupnp_cp, node, runner, soap, transport  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402


class AVTransportThroughGUPnP(RendererTestCase):
    serves_media = True

    def setUp(self):
        control_point = gupnp_cp.ControlPoint(soap.AVTRANSPORT)
        self.addCleanup(control_point.close)
        self.proxy = control_point.wait_for_service(self.description.udn)

    def call(self, action, *arguments, outputs=()):
        return gupnp_cp.call(self.proxy, action, [("InstanceID", "0"), *arguments], outputs)

    def state(self):
        return self.call("GetTransportInfo", outputs=("CurrentTransportState",))["CurrentTransportState"]

    def position(self):
        return self.call("GetPositionInfo", outputs=("RelTime", "TrackURI"))

    def wait_for_state(self, wanted, timeout):
        seen = []
        reached = gupnp_cp.pump_until(lambda: seen.append(self.state()) or seen[-1] == wanted, timeout)
        self.assertTrue(reached, "GetTransportInfo never answered %s within %.0f s (last %r)" % (
            wanted, timeout, seen[-1:]))

    def test_the_initial_event_is_the_whole_last_change_document(self):
        # A new subscriber gets the whole current document: every AVTransport variable and, after them,
        # the OpenHome ones. OpenHome's transport state shares the name TransportState; the daemon puts
        # AVTransport's own state in that place, so that an AV control point reads one of its words.
        subscription = gupnp_cp.Subscription(self.proxy, ["LastChange"])
        self.addCleanup(subscription.close)
        initial = subscription.wait_for(lambda variable, value: True, 5)
        self.assertIsNotNone(initial, "no initial LastChange event after subscribing")
        values = events.parse_last_change(initial)
        for name in ("TransportStatus", "CurrentPlayMode", "NumberOfTracks", "AVTransportURI", "IdArray"):
            self.assertIn(name, values)
        self.assertEqual(values.get("TransportState"), self.state())

    def test_play_pause_seek_stop_advances_the_position_and_events_each_state_in_order(self):
        subscription = gupnp_cp.Subscription(self.proxy, ["LastChange"])
        self.addCleanup(subscription.close)
        self.assertTrue(gupnp_cp.pump_until(lambda: subscription.received, 5),
                        "no initial LastChange event after subscribing")

        url = self.media.url("tone.flac")
        self.call("SetAVTransportURI", ("CurrentURI", url),
                  ("CurrentURIMetaData", transport.didl_lite("Integration tone", url, "audio/flac")))
        gupnp_cp.pump(0.8)  # the load's own events (moderated for at most 200 ms) come before the mark
        mark = len(subscription.received)
        self.call("Play", ("Speed", "1"))
        self.wait_for_state("PLAYING", 6)

        positions = []
        advanced = gupnp_cp.pump_until(
            lambda: positions.append(transport.parse_time(self.position()["RelTime"])) or positions[-1] >= 1,
            6)
        self.assertTrue(advanced, "RelTime did not reach 0:00:01 while playing: %r" % positions)
        self.assertEqual(self.position()["TrackURI"], url)

        self.call("Pause")
        self.wait_for_state("PAUSED_PLAYBACK", 4)
        paused_at = self.position()["RelTime"]
        gupnp_cp.pump(0.7)
        self.assertEqual(self.position()["RelTime"], paused_at, "the position moved while paused")

        self.call("Seek", ("Unit", "REL_TIME"), ("Target", "0:00:03"))
        sought = []
        self.assertTrue(gupnp_cp.pump_until(
            lambda: sought.append(transport.parse_time(self.position()["RelTime"])) or sought[-1] == 3, 4),
            "RelTime after Seek REL_TIME 0:00:03 while paused: %r" % sought)

        self.call("Stop")
        self.wait_for_state("STOPPED", 4)
        gupnp_cp.pump(1.0)

        states = [events.parse_last_change(text).get("TransportState")
                  for text in subscription.values("LastChange")[mark:]]
        transport.check_session_states(self, [state for state in states if state])


class AVTransportThroughNode(RendererTestCase):
    serves_media = True

    def test_play_pause_seek_stop_succeed_and_events_arrive_in_order(self):
        records = node.run_script(self, "avtransport_session.js",
                                  [self.location, self.media.url("tone.wav"), "audio/wav"])
        failed = [r for r in records if r["kind"] == "step" and not r["ok"]]
        self.assertEqual(failed, [], "steps of the Node control point that failed")
        aborted = [r for r in records if r["kind"] == "aborted"]
        self.assertEqual(aborted, [])
        self.assertTrue(any(r["kind"] == "done" for r in records), "the session did not finish")

        paused = next(r for r in records if r["kind"] == "paused")
        self.assertEqual(paused["first"], paused["second"], "the position moved while paused")
        sought = next(r for r in records if r["kind"] == "sought")
        self.assertEqual(transport.parse_time(sought["position"]), 3)

        play = next(i for i, r in enumerate(records) if r["kind"] == "mark" and r["mark"] == "play")
        states = [r["event"]["TransportState"] for r in records[play:]
                  if r["kind"] == "event" and "TransportState" in r["event"]]
        transport.check_session_states(self, states)


if __name__ == "__main__":
    runner.main(2)
