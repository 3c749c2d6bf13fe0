"""Discovery and description: SSDP searches find the renderer, its description and every SCPD can be read,
and every action that an SCPD lists is answered when a control point invokes it."""

import glob
import os
import sys
import unittest

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import gupnp_cp, runner, soap, ssdp  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402


class SsdpDiscovery(RendererTestCase):
    def check_search(self, target):
        responses = [r for r in ssdp.msearch(target) if r.get("USN", "").startswith(self.description.udn)]
        self.assertTrue(responses, "no response to an M-SEARCH for %s from %s" % (target,
                                                                                   self.description.udn))
        for response in responses:
            self.assertEqual(response.get("ST"), target)
            self.assertEqual(response.get("USN"), "%s::%s" % (self.description.udn, target))
            self.assertEqual(response.get("LOCATION"), self.location)

    @unittest.skipUnless(glob.glob("/usr/lib/*/gio/modules/*proxy*.so"), "no GIO proxy module installed")
    def test_announcing_loads_no_gio_proxy_module(self):
        # Announcing makes the daemon read its own service descriptions over HTTP. That needs no proxy, and
        # GIO's proxy modules (with the settings backend they pull in) would hold about 1 MB at rest.
        with open("/proc/%d/maps" % self.daemon.process.pid) as maps:
            modules = sorted({line.split()[-1] for line in maps if "/gio/modules/" in line})
        self.assertEqual(modules, [])

    def test_msearch_for_the_media_renderer_device_finds_the_daemon(self):
        self.check_search(soap.MEDIA_RENDERER)

    def test_msearch_for_the_openhome_playlist_service_finds_the_daemon(self):
        self.check_search(soap.PLAYLIST)

    def test_gupnp_control_point_discovers_the_renderer_and_its_playlist_service(self):
        renderer = gupnp_cp.ControlPoint(soap.MEDIA_RENDERER)
        self.addCleanup(renderer.close)
        device = renderer.wait_for_device(self.description.udn)
        self.assertEqual(device.get_device_type(), soap.MEDIA_RENDERER)
        self.assertEqual(device.get_location(), self.location)

        playlist = gupnp_cp.ControlPoint(soap.PLAYLIST)
        self.addCleanup(playlist.close)
        service = playlist.wait_for_service(self.description.udn)
        self.assertEqual(service.get_service_type(), soap.PLAYLIST)


# Arguments a control point would plausibly send, by argument name; None means "the URL of a track".
PLAUSIBLE_BY_NAME = {
    "InstanceID": "0", "ConnectionID": "0", "Speed": "1", "Unit": "REL_TIME", "Target": "0:00:01",
    "CurrentURI": None, "CurrentURIMetaData": "", "NextURI": None, "NextURIMetaData": "",
    "NewPlayMode": "NORMAL", "Channel": "Master", "DesiredVolume": "20", "DesiredMute": "0",
    "PresetName": "FactoryDefaults", "AfterId": "0", "Uri": None, "Metadata": "", "IdList": "",
}
# Actions whose effect the others need (a URI, a track) run first; those that take it away run last.
FIRST = ("SetAVTransportURI", "Insert")
LAST = ("DeleteId", "DeleteAll", "Stop")
# "Answered" means a SOAP response or any fault but 401: some actions fail on purpose with these arguments
# (RenderingControl's dB actions and Volume's balance and fade answer 501, the device has no such control).
SERVICES = soap.SERVICE_TYPES


class DescriptionAndEveryAction(RendererTestCase):
    serves_media = True

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        for service in cls.description.services.values():
            service.read_scpd()

    def test_description_is_a_media_renderer_with_every_service(self):
        self.assertEqual(self.description.device_type, soap.MEDIA_RENDERER)
        self.assertTrue(self.description.udn.startswith("uuid:"), self.description.udn)
        self.assertEqual(self.description.friendly_name, self.daemon.name)
        missing = [service for service in SERVICES if service not in self.description.services]
        self.assertEqual(missing, [], "services missing from the description")

    def test_every_scpd_is_read_by_gupnp_and_names_only_declared_variables(self):
        renderer = gupnp_cp.ControlPoint(soap.MEDIA_RENDERER)
        self.addCleanup(renderer.close)
        device = renderer.wait_for_device(self.description.udn)
        for proxy in device.list_services():
            with self.subTest(service=proxy.get_service_type()):
                introspection = gupnp_cp.introspect(proxy)
                service = self.description.service(proxy.get_service_type())
                self.assertEqual(sorted(introspection.list_action_names()), sorted(service.actions))
                for name, arguments in service.actions.items():
                    for argument in arguments:
                        self.assertIn(argument.variable, service.variables,
                                      "%s.%s names the undeclared variable %s" % (name, argument.name,
                                                                                 argument.variable))
                        self.assertIn(argument.direction, ("in", "out"))

    def plausible(self, service, action, argument, inserted_ids):
        if argument.name in PLAUSIBLE_BY_NAME:
            value = PLAUSIBLE_BY_NAME[argument.name]
            return self.media.url("tone.wav") if value is None else value
        if action in ("SeekId", "DeleteId", "Read") and inserted_ids:
            return inserted_ids[-1]
        variable = service.variables.get(argument.variable)
        if variable is None:
            return ""
        if variable.allowed:
            return variable.allowed[0]
        if variable.data_type == "boolean":
            return "false"
        if variable.data_type in ("ui1", "ui2", "ui4", "i1", "i2", "i4", "int", "number"):
            return variable.minimum or "0"
        return ""

    def test_every_listed_action_is_answered(self):
        renderer = gupnp_cp.ControlPoint(soap.MEDIA_RENDERER)
        self.addCleanup(renderer.close)
        device = renderer.wait_for_device(self.description.udn)
        proxies = {proxy.get_service_type(): proxy for proxy in device.list_services()}
        problems, outcomes, inserted_ids = [], [], []
        for service_type in SERVICES:
            service = self.description.service(service_type)
            names = sorted(service.actions, key=lambda n: (0 if n in FIRST else 2 if n in LAST else 1))
            for name in names:
                arguments = service.actions[name]
                inputs = [(a.name, self.plausible(service, name, a, inserted_ids))
                          for a in arguments if a.direction == "in"]
                outputs = [a.name for a in arguments if a.direction == "out"]
                label = "%s %s%r" % (service_type.split(":")[-2], name, inputs)
                try:
                    answer = gupnp_cp.call(proxies[service_type], name, inputs, outputs)
                    outcomes.append("%s -> %r" % (label, answer))
                    if name == "Insert":
                        inserted_ids.append(answer["NewId"])
                except gupnp_cp.Fault as fault:
                    outcomes.append("%s -> fault %d %r" % (label, fault.code, fault.description))
                    if fault.code == 401:
                        problems.append("%s: 401 %r for an action its SCPD lists" % (label,
                                                                                     fault.description))
                except gupnp_cp.NotAnswered as error:
                    problems.append("%s: not answered: %s" % (label, error))
        print("\n".join(outcomes))
        self.assertEqual(problems, [], "\n".join(problems))


if __name__ == "__main__":
    runner.main(1)
