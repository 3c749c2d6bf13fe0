"""Gapless from a control point's point of view: two WAV tracks queued with SetAVTransportURI and
SetNextAVTransportURI through GUPnP, played by the daemon into a WAV file in real time. The file must hold
exactly the frames of both tracks, sample for sample: not one lost or added at the join. The events move
to the second track."""

import os
import sys
import tempfile
import wave

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, gupnp_cp, media, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

OUTPUT = os.path.join(tempfile.gettempdir(), "open-renderer-gapless-%d.wav" % os.getpid())


def frames_of(path):
    with wave.open(path, "rb") as track:
        return track.getnchannels(), track.getsampwidth(), track.getframerate(), track.readframes(track.getnframes())


class GaplessThroughTheDaemon(RendererTestCase):
    serves_media = True

    @classmethod
    def daemon_arguments(cls):
        return ("--output", "wav", "--device", OUTPUT)

    @classmethod
    def tearDownClass(cls):
        super().tearDownClass()
        if os.path.exists(OUTPUT):
            os.remove(OUTPUT)

    def track(self, name):
        return os.path.join(self.scratch, "media", name)

    def test_two_wav_tracks_join_without_losing_a_sample_and_the_events_follow(self):
        control_point = gupnp_cp.ControlPoint(soap.AVTRANSPORT)
        self.addCleanup(control_point.close)
        transport = control_point.wait_for_service(self.description.udn)
        subscription = gupnp_cp.Subscription(transport, ["LastChange"])
        self.addCleanup(subscription.close)
        self.assertTrue(gupnp_cp.pump_until(lambda: subscription.received, 5), "no initial event")

        first, second = self.media.url("first.wav"), self.media.url("third.wav")
        gupnp_cp.call(transport, "SetAVTransportURI",
                      [("InstanceID", "0"), ("CurrentURI", first), ("CurrentURIMetaData", "")])
        gupnp_cp.call(transport, "SetNextAVTransportURI",
                      [("InstanceID", "0"), ("NextURI", second), ("NextURIMetaData", "")])
        gupnp_cp.call(transport, "Play", [("InstanceID", "0"), ("Speed", "1")])

        moved = subscription.wait_for(
            lambda name, value: events.parse_last_change(value).get("CurrentTrackURI") == second, 8)
        self.assertIsNotNone(moved, "no LastChange moved CurrentTrackURI to the second track")
        stopped = subscription.wait_for(
            lambda name, value: events.parse_last_change(value).get("TransportState") == "STOPPED", 10)
        self.assertIsNotNone(stopped, "the transport never stopped after the second track")
        gupnp_cp.pump(0.5)  # the output's last buffers and its header

        played = frames_of(OUTPUT)
        one, two = frames_of(self.track("first.wav")), frames_of(self.track("third.wav"))
        self.assertEqual(played[:3], one[:3], "the output's format differs from the tracks'")
        frame_bytes = one[0] * one[1]
        lost = (len(one[3]) + len(two[3]) - len(played[3])) // frame_bytes
        print("samples lost at the join: %d (of %d frames played)" % (lost, len(played[3]) // frame_bytes))
        self.assertEqual(len(played[3]), len(one[3]) + len(two[3]), "frames lost or added")
        self.assertTrue(played[3] == one[3] + two[3], "the samples differ from the two tracks'")


if __name__ == "__main__":
    runner.main(9)
