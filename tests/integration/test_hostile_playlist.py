"""Hostile Playlist requests against the running daemon: an IdList of 100 000 ids, ReadList of one id a
thousand times with large metadata (the daemon's 8 MiB bound on a ReadList answer), an Insert past the
playlist's 1001 tracks, and metadata full of XML's special characters at the 204800-byte escaping limit."""

import base64
import os
import struct
import sys
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402
from harness.hostile import NEVER_PLAYED, PlaylistChecks  # noqa: E402

READ_LIST_BOUND = 8 * 1024 * 1024
ESCAPE_BUFFER = 204800
SPECIALS = "&<>\"'"  # escaped to 5 + 4 + 4 + 6 + 6 = 25 characters


def ids_of(array):
    data = base64.b64decode(array)
    return list(struct.unpack(">%dI" % (len(data) // 4), data))


def track_list_entries(text):
    """(id, uri, metadata) of each entry of a TrackList whose URIs hold no XML specials."""
    root = ElementTree.fromstring(text)
    return [(int(entry.findtext("Id")), entry.findtext("Uri"), entry.findtext("Metadata") or "")
            for entry in root.findall("Entry")]


def escaped_length(text):
    return sum({"&": 5, "<": 4, ">": 4, '"': 6, "'": 6}.get(c, 1) for c in text)


def resident_peak_kib(pid):
    with open("/proc/%d/status" % pid) as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1])
    raise AssertionError("no VmHWM")


class HostileReadList(RendererTestCase, PlaylistChecks):
    def setUp(self):
        self.delete_all()
        self.client = self.soap_client(timeout=60)

    def read_list(self, id_list):
        return self.playlist_call("ReadList", [("IdList", id_list)], self.client)

    def test_an_id_list_of_100000_ids_answers_the_tracks_it_names(self):
        ids = [int(self.insert(metadata="track %d" % n)) for n in range(3)]
        named = list(range(1, 100001))
        self.assertTrue(all(i in named for i in ids), ids)
        reply = self.read_list(" ".join(map(str, named)))
        self.assertEqual(reply.status, 200, reply)
        entries = track_list_entries(reply.outputs["TrackList"])
        self.assertEqual([e[0] for e in entries], sorted(ids))
        self.assertStillServing()

    def test_a_thousand_copies_of_a_small_track_are_answered_whole(self):
        track = self.insert(metadata="m" * 1000)
        reply = self.read_list(" ".join([track] * 1000))
        self.assertEqual(reply.status, 200, reply)
        entries = track_list_entries(reply.outputs["TrackList"])
        self.assertEqual(len(entries), 1000)
        self.assertEqual(set(entries), {(int(track), NEVER_PLAYED, "m" * 1000)})

    def test_a_thousand_copies_of_a_track_with_large_metadata_are_refused_by_the_bound(self):
        # 1000 entries of 100 000 bytes would be a 100 MB answer: past the 8 MiB bound, refused before it is built.
        track = self.insert(metadata="m" * 100000)
        before = self.id_array()
        peak_before = resident_peak_kib(self.daemon.process.pid)
        reply = self.read_list(" ".join([track] * 1000))
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, 501, "Action Failed"),
                         reply)
        growth = resident_peak_kib(self.daemon.process.pid) - peak_before
        self.assertLess(growth, 16 * 1024, "peak memory grew by %d KiB for a refused ReadList" % growth)
        self.assertRejectedWithoutEffect(before)
        # Just under the bound, the same track is answered.
        count = READ_LIST_BOUND // (100000 + 200) - 1
        reply = self.read_list(" ".join([track] * count))
        self.assertEqual(reply.status, 200, reply)
        self.assertEqual(len(track_list_entries(reply.outputs["TrackList"])), count)

    def test_a_two_megabyte_id_list_of_one_id_is_refused_by_the_bound(self):
        # "1 1 1 ...": the most entries a request within the 2 MiB limit can ask for.
        track = self.insert(metadata="m" * 2000)
        before = self.id_array()
        reply = self.read_list(" ".join([track] * ((2 * 1024 * 1024 - 4096) // (len(track) + 1))))
        self.assertEqual((reply.status, reply.fault_code), (500, 501), reply)
        self.assertRejectedWithoutEffect(before)


class InsertPastTheMaximum(RendererTestCase, PlaylistChecks):
    def test_the_playlist_takes_1001_tracks_and_refuses_the_next_with_501(self):
        self.delete_all()
        client = self.soap_client(timeout=30)
        reply = self.playlist_call("TracksMax", (), client)
        self.assertEqual(reply.outputs.get("Value"), "1000", reply)
        last = "0"
        for n in range(1001):
            last = self.insert(uri="http://127.0.0.1:9/%d.wav" % n, after=last, client=client)
        before = self.id_array()
        self.assertEqual(len(ids_of(before)), 1001)
        reply = self.playlist_call("Insert", [("AfterId", last), ("Uri", NEVER_PLAYED), ("Metadata", "")], client)
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, 501, "Action Failed"),
                         reply)
        self.assertRejectedWithoutEffect(before)
        # The refusal used up no id, and a deletion makes room for one more track.
        self.assertEqual(self.playlist_call("DeleteId", [("Value", last)], client).status, 200)
        self.assertEqual(int(self.insert(after="0", client=client)), int(last) + 1)
        self.assertEqual(len(ids_of(self.id_array())), 1001)


class SpecialCharactersAtTheEscapingLimit(RendererTestCase, PlaylistChecks):
    def setUp(self):
        self.delete_all()
        # 8191 groups of the five specials escape to 204775 characters; "&<>'abcde" adds 24: with its
        # terminator, the escaped text fills the 204800-byte buffer exactly.
        self.fitting = SPECIALS * 8191 + "&<>'abcde"
        self.assertEqual(escaped_length(self.fitting) + 1, ESCAPE_BUFFER)

    def subscribe_to_avtransport(self):
        server = events.NotifyServer().start()
        self.addCleanup(server.stop)
        status, sid, _ = events.subscribe(self.description.service(soap.AVTRANSPORT).event_url, server.callback_url)
        self.assertEqual(status, 200)
        return server

    def uri_metadata_events(self, server, wanted):
        def carries(notification):
            text = notification.properties.get("LastChange")
            return text is not None and events.parse_last_change(text).get("AVTransportURIMetaData") == wanted
        return server.wait_for(carries, 5.0)

    def transport_metadata(self):
        """The metadata the first track of the playlist handed to the transport."""
        reply = self.soap_client().call(self.description.service(soap.AVTRANSPORT).control_path, soap.AVTRANSPORT,
                                        "GetMediaInfo", [("InstanceID", "0")])
        self.assertEqual(reply.status, 200, reply)
        return reply.outputs["CurrentURIMetaData"]

    def test_metadata_that_fills_the_buffer_is_kept_read_and_evented_exactly(self):
        server = self.subscribe_to_avtransport()
        track = self.insert(metadata=self.fitting)
        self.assertEqual(self.transport_metadata(), self.fitting)
        reply = self.playlist_call("ReadList", [("IdList", track)])
        self.assertEqual(reply.status, 200, reply)
        self.assertEqual(track_list_entries(reply.outputs["TrackList"]), [(int(track), NEVER_PLAYED, self.fitting)])
        self.assertIsNotNone(self.uri_metadata_events(server, self.fitting),
                             "no LastChange event with the exact metadata")

    def test_one_character_more_is_kept_exactly_and_refused_by_read_list_with_501(self):
        longer = self.fitting + "x"
        track = self.insert(metadata=longer)
        before = self.id_array()
        self.assertEqual(self.transport_metadata(), longer)
        reply = self.playlist_call("ReadList", [("IdList", track)])
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, 501, "Action Failed"),
                         reply)
        self.assertRejectedWithoutEffect(before)


if __name__ == "__main__":
    runner.main(26)
