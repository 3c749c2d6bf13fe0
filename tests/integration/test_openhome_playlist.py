"""The OpenHome Playlist service end to end through GUPnP: a playlist of three served tracks is built, read
back in both of its wire formats, played from the second track, skipped, edited, and every step is evented
("Id", "IdArray", "TransportState")."""

import base64
import os
import struct
import sys
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import gupnp_cp, runner, soap, transport  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

TRACKS = (("first.wav", "audio/wav", "First tone"), ("second.flac", "audio/flac", "Second tone"),
          ("third.wav", "audio/wav", "Third tone & more"))
DIDL_TITLE = "{urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/}item/{http://purl.org/dc/elements/1.1/}title"


def decode_id_array(text):
    """The track ids of an IdArray: Base64 of 32-bit big-endian ids."""
    data = base64.b64decode(text)
    return list(struct.unpack(">%dI" % (len(data) // 4), data))


class OpenHomePlaylistThroughGUPnP(RendererTestCase):
    serves_media = True

    def setUp(self):
        control_point = gupnp_cp.ControlPoint(soap.PLAYLIST)
        self.addCleanup(control_point.close)
        self.proxy = control_point.wait_for_service(self.description.udn)

    def call(self, action, *arguments, outputs=()):
        return gupnp_cp.call(self.proxy, action, list(arguments), outputs)

    def wait_for_event(self, subscription, variable, wanted, description, timeout=4.0):
        value = subscription.wait_for(lambda name, value: name == variable and wanted(value), timeout)
        self.assertIsNotNone(value, "no %s event %s within %.0f s; %s events so far: %r" % (
            variable, description, timeout, variable, subscription.values(variable)))
        return value

    def test_insert_read_seek_next_delete_are_answered_and_evented(self):
        subscription = gupnp_cp.Subscription(self.proxy, ["Id", "IdArray", "TransportState"])
        self.addCleanup(subscription.close)
        initial = gupnp_cp.pump_until(lambda: len({v for _, v, _ in subscription.received}) == 3, 5)
        self.assertTrue(initial, "no initial event with Id, IdArray and TransportState: %r" %
                        subscription.received)
        self.assertEqual(decode_id_array(subscription.values("IdArray")[-1]), [], "the playlist is not empty")

        ids, after = [], "0"
        for name, content_type, title in TRACKS:
            url = self.media.url(name)
            metadata = transport.didl_lite(title, url, content_type)
            answer = self.call("Insert", ("AfterId", after), ("Uri", url), ("Metadata", metadata),
                               outputs=("NewId",))
            ids.append(int(answer["NewId"]))
            after = answer["NewId"]
        self.assertEqual(len(set(ids)), 3, "Insert answered the ids %r" % ids)

        array = self.call("IdArray", outputs=("Token", "Array"))
        self.assertEqual(decode_id_array(array["Array"]), ids)
        self.wait_for_event(subscription, "IdArray", lambda v: decode_id_array(v) == ids,
                            "with all three ids")

        track_list = self.call("ReadList", ("IdList", " ".join(map(str, ids))), outputs=("TrackList",))
        root = ElementTree.fromstring(track_list["TrackList"])
        self.assertEqual(root.tag, "TrackList")
        entries = root.findall("Entry")
        self.assertEqual([int(e.findtext("Id")) for e in entries], ids)
        self.assertEqual([e.findtext("Uri") for e in entries],
                         [self.media.url(name) for name, _, _ in TRACKS])
        titles = [ElementTree.fromstring(e.findtext("Metadata")).findtext(DIDL_TITLE) for e in entries]
        self.assertEqual(titles, [title for _, _, title in TRACKS])

        self.call("SeekId", ("Value", ids[1]))
        self.wait_for_event(subscription, "Id", lambda v: v == str(ids[1]), "naming the second track")
        self.wait_for_event(subscription, "TransportState", lambda v: v == "Playing", "Playing after SeekId")
        self.assertEqual(self.call("Id", outputs=("Value",))["Value"], str(ids[1]))

        self.call("Next")
        self.wait_for_event(subscription, "Id", lambda v: v == str(ids[2]),
                            "naming the third track after Next")
        self.assertEqual(self.call("Id", outputs=("Value",))["Value"], str(ids[2]))

        self.call("DeleteId", ("Value", ids[0]))
        self.wait_for_event(subscription, "IdArray", lambda v: decode_id_array(v) == ids[1:],
                            "without the deleted first track")
        self.assertEqual(decode_id_array(self.call("IdArray", outputs=("Array",))["Array"]), ids[1:])

        self.call("Stop")
        self.wait_for_event(subscription, "TransportState", lambda v: v == "Stopped", "Stopped after Stop")


if __name__ == "__main__":
    runner.main(3)
