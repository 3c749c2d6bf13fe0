"""The OpenHome playlist kept across restarts: tracks inserted through GUPnP, with repeat and shuffle, are
there again after SIGTERM and a new start on the same state directory; a damaged saved file is reported,
set aside, and the daemon starts with an empty playlist; and a daemon killed with SIGKILL in the middle of a
burst of Inserts comes back with a playlist that existed (the inserted tracks up to some point), never with
a torn file."""

import base64
import glob
import os
import signal
import struct
import sys
import time
import xml.etree.ElementTree as ElementTree

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import gupnp_cp, runner, soap  # noqa: E402
from harness.restarts import RestartingDaemonCase  # noqa: E402


def decode_id_array(text):
    """The track ids of an IdArray: Base64 of 32-bit big-endian ids."""
    data = base64.b64decode(text)
    return list(struct.unpack(">%dI" % (len(data) // 4), data))


def track_uri(number):
    return "http://127.0.0.1:9/music/track-%03d.flac?session=1&n=%d" % (number, number)


def track_metadata(number):
    return ("<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
            "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item id=\"%d\" parentID=\"0\" restricted=\"1\">"
            "<dc:title>Track %d &amp; caf\u00e9</dc:title></item></DIDL-Lite>" % (number, number))


class PlaylistAcrossRestarts(RestartingDaemonCase):
    def start(self, label):
        daemon = self.start_daemon(label)
        # A control point of each run, gone with its daemon: the next run's must not share anything with it.
        self.control_point = gupnp_cp.ControlPoint(soap.PLAYLIST)
        self.addCleanup(self.control_point.close)
        proxy = self.control_point.wait_for_service(soap.Description(daemon.location).udn)
        return daemon, proxy

    def stop(self, daemon):
        self.control_point.close()
        status, _ = daemon.signal_and_wait(signal.SIGTERM, timeout=5)
        self.assertEqual(status, 0, "exit status after SIGTERM:\n%s" % daemon.log())

    def playlist_files(self):
        return sorted(glob.glob(os.path.join(self.state_dir, "playlist-*.xml")))

    @staticmethod
    def insert(proxy, after, number):
        answer = gupnp_cp.call(proxy, "Insert", [("AfterId", after), ("Uri", track_uri(number)),
                                                 ("Metadata", track_metadata(number))], ("NewId",))
        return answer["NewId"]

    @staticmethod
    def served(proxy):
        """(URIs in order, metadata in order) as a control point reads them."""
        ids = decode_id_array(gupnp_cp.call(proxy, "IdArray", [], ("Token", "Array"))["Array"])
        uris, metadata = [], []
        for track_id in ids:
            text = gupnp_cp.call(proxy, "ReadList", [("IdList", str(track_id))], ("TrackList",))["TrackList"]
            # The URI is sent as it stands (our URIs hold "&"): escape it before parsing the list.
            start, end = text.index("<Uri>") + 5, text.index("</Uri>")
            text = text[:start] + text[start:end].replace("&", "&amp;") + text[end:]
            entry = ElementTree.fromstring(text).find("Entry")
            uris.append(entry.findtext("Uri"))
            metadata.append(entry.findtext("Metadata"))
        return uris, metadata

    def mode(self, proxy, action):
        return gupnp_cp.call(proxy, action, [], ("Value",))["Value"]

    def test_five_tracks_with_repeat_and_shuffle_are_there_after_sigterm_and_a_new_start(self):
        daemon, proxy = self.start("first-run")
        after = "0"
        for number in range(5):
            after = self.insert(proxy, after, number)
        gupnp_cp.call(proxy, "SetRepeat", [("Value", "true")])
        gupnp_cp.call(proxy, "SetShuffle", [("Value", "true")])
        self.stop(daemon)

        daemon, proxy = self.start("second-run")
        subscription = gupnp_cp.Subscription(proxy, ["IdArray"])
        self.addCleanup(subscription.close)
        first = subscription.wait_for(lambda name, value: name == "IdArray", 8)
        self.assertIsNotNone(first, "no initial IdArray event (subscription lost: %r)" % subscription.lost)
        self.assertEqual(len(decode_id_array(first)), 5,
                         "the first IdArray event of a new subscriber does not show the five tracks")
        uris, metadata = self.served(proxy)
        self.assertEqual(uris, [track_uri(n) for n in range(5)])
        self.assertEqual(metadata, [track_metadata(n) for n in range(5)])
        self.assertEqual(self.mode(proxy, "Repeat"), "true")
        self.assertEqual(self.mode(proxy, "Shuffle"), "true")

    def test_a_damaged_saved_playlist_is_logged_kept_aside_and_the_daemon_starts_empty(self):
        daemon, proxy = self.start("first-run")
        self.insert(proxy, "0", 1)
        self.stop(daemon)
        files = self.playlist_files()
        self.assertEqual(len(files), 1, "saved playlist files: %r" % files)
        with open(files[0], "rb") as saved:
            damaged = saved.read()[:-40] + b"\x00garbage"
        with open(files[0], "wb") as saved:
            saved.write(damaged)

        daemon, proxy = self.start("second-run")
        self.assertEqual(self.served(proxy), ([], []))
        self.assertIn("is refused", daemon.log())
        self.assertFalse(os.path.exists(files[0]))
        with open(files[0] + ".bad", "rb") as aside:
            self.assertEqual(aside.read(), damaged)

    def test_sigkill_in_a_burst_of_inserts_leaves_a_playlist_that_existed(self):
        daemon, proxy = self.start("first-run")
        after, inserted = "0", 0
        started = time.monotonic()
        # Long enough for saves to happen during the burst, at a moment that is no save's end in particular;
        # below the 1001 tracks the playlist holds.
        while time.monotonic() - started < 1.7 and inserted < 900:
            after = self.insert(proxy, after, inserted)
            inserted += 1
        self.control_point.close()
        daemon.process.send_signal(signal.SIGKILL)
        daemon.process.wait()
        self.assertGreater(inserted, 5)

        daemon, proxy = self.start("second-run")
        self.assertNotIn("is refused", daemon.log())
        leftovers = glob.glob(os.path.join(self.state_dir, "playlist-*.xml.??????"))
        self.assertEqual(leftovers, [], "unfinished copies of a save are still there after the start")
        uris, metadata = self.served(proxy)
        self.assertGreater(len(uris), 0, "no save during a burst of %.1f s" % (time.monotonic() - started))
        self.assertLessEqual(len(uris), inserted)
        self.assertEqual(uris, [track_uri(n) for n in range(len(uris))])
        self.assertEqual(metadata, [track_metadata(n) for n in range(len(uris))])
        print("SIGKILL after %d inserts: %d came back" % (inserted, len(uris)))


if __name__ == "__main__":
    runner.main(10)
