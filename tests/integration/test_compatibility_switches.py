"""The switches control points need, through the daemon: the Product room and name OpenHome control points
list it by, which services it publishes (AV, OpenHome or both), and the startup volume and volume limit."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import gupnp_cp, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

PRODUCT = soap.OPENHOME % "Product"
VOLUME = soap.OPENHOME % "Volume"
OPENHOME_TYPES = [soap.OPENHOME % name for name in ("Product", "Playlist", "Time", "Info", "Volume", "Sender")]
AV_TYPES = [soap.AVTRANSPORT, soap.CONNECTION_MANAGER, soap.RENDERING_CONTROL]


class OpenHomeOnlyWithRoomNameAndVolumeLimits(RendererTestCase):
    ROOM = "Kitchen & Dining <east>"

    @classmethod
    def daemon_arguments(cls):
        return ("--services", "openhome", "--room", cls.ROOM, "--product-name", "Shelf",
                "--startup-volume", "30", "--volume-limit", "60")

    def proxy(self, service_type):
        control_point = gupnp_cp.ControlPoint(service_type)
        self.addCleanup(control_point.close)
        return control_point.wait_for_service(self.description.udn)

    def test_description_lists_only_the_openhome_services(self):
        self.assertEqual(list(self.description.services), OPENHOME_TYPES)
        self.assertNotIn(b"X_DLNADOC", self.description.xml)

    def test_unpublished_av_services_are_not_served(self):
        client = self.soap_client()
        reply = client.call("/control/AVTransport", soap.AVTRANSPORT, "GetTransportInfo", [("InstanceID", "0")])
        self.assertGreaterEqual(reply.status, 400, reply)
        self.assertFalse(reply.soap, reply)
        reply = client.request("SUBSCRIBE", "/event/RenderingControl",
                               headers={"CALLBACK": "<http://10.203.0.2:9/>", "NT": "upnp:event"})
        self.assertGreaterEqual(reply.status, 400, reply)

    def test_product_answers_the_configured_room_and_name(self):
        product = self.proxy(PRODUCT)
        answer = gupnp_cp.call(product, "Product", outputs=("Room", "Name"))
        self.assertEqual(answer, {"Room": self.ROOM, "Name": "Shelf"})

    def test_volume_starts_at_the_startup_volume_and_stops_at_the_limit(self):
        client = self.soap_client()
        control = self.description.service(VOLUME).control_path
        self.assertEqual(client.call(control, VOLUME, "VolumeLimit").outputs, {"Value": "60"})
        # Before any other test moved it: the classes' tests share one daemon.
        self.assertEqual(client.call(control, VOLUME, "Volume").outputs, {"Value": "30"})
        self.assertEqual(client.call(control, VOLUME, "SetVolume", [("Value", "95")]).status, 200)
        self.assertEqual(client.call(control, VOLUME, "Volume").outputs, {"Value": "60"})
        self.assertEqual(client.call(control, VOLUME, "VolumeInc").status, 200)
        self.assertEqual(client.call(control, VOLUME, "Volume").outputs, {"Value": "60"})
        self.assertEqual(client.call(control, VOLUME, "SetVolume", [("Value", "101")]).fault_code, 402)


class AvOnly(RendererTestCase):
    @classmethod
    def daemon_arguments(cls):
        return ("--services", "av", "--volume-limit", "50")

    def test_description_lists_only_the_av_services_with_the_renderer_markers(self):
        self.assertEqual(list(self.description.services), AV_TYPES)
        self.assertIn(b"X_DLNADOC", self.description.xml)

    def test_unpublished_openhome_services_are_not_served(self):
        reply = self.soap_client().call("/control/Playlist", soap.PLAYLIST, "IdArray")
        self.assertGreaterEqual(reply.status, 400, reply)
        self.assertFalse(reply.soap, reply)

    def test_rendering_control_stops_at_the_limit(self):
        control = self.proxy_rendering_control()
        arguments = [("InstanceID", "0"), ("Channel", "Master")]
        gupnp_cp.call(control, "SetVolume", arguments + [("DesiredVolume", "100")])
        self.assertEqual(gupnp_cp.call(control, "GetVolume", arguments, ("CurrentVolume",)), {"CurrentVolume": "50"})

    def proxy_rendering_control(self):
        control_point = gupnp_cp.ControlPoint(soap.RENDERING_CONTROL)
        self.addCleanup(control_point.close)
        return control_point.wait_for_service(self.description.udn)


if __name__ == "__main__":
    runner.main(11)
