"""The daemon's own answers through GUPnP: RenderingControl's volume and mute with its LastChange events
(channel "Master"), OpenHome Volume on the same volume (a change through one service is evented by the
other), and SetNextAVTransportURI into the player's next-track slot."""

import os
import sys
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import gupnp_cp, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

VOLUME = soap.OPENHOME % "Volume"


def master_level(document):
    """Volume and Mute of channel "Master" in instance 0 of a RenderingControl LastChange document."""
    level = {}
    for instance in ElementTree.fromstring(document):
        if instance.tag.split("}")[-1] == "InstanceID" and instance.get("val") == "0":
            for variable in instance:
                if variable.get("channel") == "Master":
                    level[variable.tag.split("}")[-1]] = variable.get("val")
    return level


class VolumeThroughGUPnP(RendererTestCase):
    serves_media = True

    def proxy(self, service_type):
        control_point = gupnp_cp.ControlPoint(service_type)
        self.addCleanup(control_point.close)
        return control_point.wait_for_service(self.description.udn)

    def subscribe(self, proxy, variables):
        subscription = gupnp_cp.Subscription(proxy, variables)
        self.addCleanup(subscription.close)
        self.assertTrue(gupnp_cp.pump_until(lambda: subscription.received, 5), "no initial event")
        return subscription

    def master(self, proxy, action, *arguments, outputs=()):
        return gupnp_cp.call(proxy, action, [("InstanceID", "0"), ("Channel", "Master"), *arguments], outputs)

    def test_rendering_control_sets_and_reads_volume_and_mute_and_events_them(self):
        control = self.proxy(soap.RENDERING_CONTROL)
        subscription = self.subscribe(control, ["LastChange"])
        initial = master_level(subscription.values("LastChange")[0])
        self.assertIn("Volume", initial)
        self.assertIn(initial.get("Mute"), ("0", "1"))

        self.master(control, "SetVolume", ("DesiredVolume", "37"))
        self.assertEqual(self.master(control, "GetVolume", outputs=("CurrentVolume",)), {"CurrentVolume": "37"})
        self.master(control, "SetMute", ("DesiredMute", "1"))
        self.assertEqual(self.master(control, "GetMute", outputs=("CurrentMute",)), {"CurrentMute": "1"})
        event = subscription.wait_for(
            lambda name, value: master_level(value) == {"Volume": "37", "Mute": "1"}, 3)
        self.assertIsNotNone(event, "no LastChange with Volume 37 and Mute 1: %r" % subscription.values("LastChange"))
        self.master(control, "SetMute", ("DesiredMute", "0"))

        with self.assertRaises(gupnp_cp.Fault) as raised:
            gupnp_cp.call(control, "GetVolume", [("InstanceID", "3"), ("Channel", "Master")], ("CurrentVolume",))
        self.assertEqual(raised.exception.code, 702)
        with self.assertRaises(gupnp_cp.Fault) as raised:
            self.master(control, "SetVolume", ("DesiredVolume", "101"))
        self.assertEqual(raised.exception.code, 402)

    def test_one_volume_is_seen_and_evented_by_both_services(self):
        control = self.proxy(soap.RENDERING_CONTROL)
        volume = self.proxy(VOLUME)
        last_changes = self.subscribe(control, ["LastChange"])
        volumes = self.subscribe(volume, ["Volume", "Mute", "VolumeMax"])
        self.assertIn("100", volumes.values("VolumeMax"))

        gupnp_cp.call(volume, "SetVolume", [("Value", "21")])
        self.assertIsNotNone(
            last_changes.wait_for(lambda name, value: master_level(value).get("Volume") == "21", 3),
            "RenderingControl did not event the OpenHome change: %r" % last_changes.values("LastChange"))
        self.assertEqual(self.master(control, "GetVolume", outputs=("CurrentVolume",)), {"CurrentVolume": "21"})

        self.master(control, "SetVolume", ("DesiredVolume", "64"))
        self.assertIsNotNone(volumes.wait_for(lambda name, value: name == "Volume" and value == "64", 3),
                             "Volume did not event the RenderingControl change: %r" % volumes.received)
        self.assertEqual(gupnp_cp.call(volume, "Volume", [], ("Value",)), {"Value": "64"})
        gupnp_cp.call(volume, "VolumeInc")
        self.assertEqual(gupnp_cp.call(volume, "Volume", [], ("Value",)), {"Value": "65"})

    def test_next_uri_reaches_the_players_next_slot(self):
        transport = self.proxy(soap.AVTRANSPORT)
        first, second = self.media.url("tone.wav"), self.media.url("tone.flac")
        gupnp_cp.call(transport, "SetAVTransportURI",
                      [("InstanceID", "0"), ("CurrentURI", first), ("CurrentURIMetaData", "")])
        gupnp_cp.call(transport, "SetNextAVTransportURI",
                      [("InstanceID", "0"), ("NextURI", second), ("NextURIMetaData", "")])
        info = gupnp_cp.call(transport, "GetMediaInfo", [("InstanceID", "0")], ("CurrentURI", "NextURI"))
        self.assertEqual(info, {"CurrentURI": first, "NextURI": second})
        with self.assertRaises(gupnp_cp.Fault) as raised:
            gupnp_cp.call(transport, "SetNextAVTransportURI",
                          [("InstanceID", "1"), ("NextURI", second), ("NextURIMetaData", "")])
        self.assertEqual(raised.exception.code, 718)


if __name__ == "__main__":
    runner.main(1)
