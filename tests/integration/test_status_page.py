"""The status page in a real browser (headless Chromium): the device description's presentationURL leads to it,
it shows the track a control point started (title, artist, album, album art, transport state), the OpenHome
playlist with its current track, volume, the subscribed control point, the configuration and the log, and it
follows a change of track without reloading. A screenshot of it is kept among the artifacts."""

import json
import os
import struct
import sys
import urllib.parse
import xml.etree.ElementTree as ElementTree
import zlib
from xml.sax.saxutils import escape

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import artifacts, browser, events, media, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

# Titles with what must reach the page as text: markup characters and letters beyond ASCII.
FIRST = ("First light <&> “dawn”", "Ærøskøbing Ensemble", "Harbour Songs")
PLAYLIST = (("wave.flac", "Second wave", "The Tide"), ("bell.flac", "Third bell", "Clocktower"),
            ("tone.flac", "Tone <b>not bold</b>", "Oscillator"))
# Long enough that no track ends (and the playlist moves on) while the test looks at it.
LONG_TRACKS = ("light.flac", "wave.flac", "bell.flac")
LONG_SECONDS = 90
POLL_TIMEOUT = 8.0


def png(width, height):
    """A small gradient PNG, made with the standard library: the album art the media server serves."""
    rows = b"".join(b"\0" + bytes(channel for x in range(width)
                                  for channel in (40 + x * 150 // width, 90 + y * 120 // height, 170))
                    for y in range(height))

    def chunk(kind, data):
        return struct.pack(">I", len(data)) + kind + data + struct.pack(">I", zlib.crc32(kind + data))

    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(rows)) + chunk(b"IEND", b""))


def didl(title, artist, album, url, art=None):
    return ('<DIDL-Lite xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/" '
            'xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/">'
            '<item id="1" parentID="0" restricted="1"><dc:title>%s</dc:title><upnp:artist>%s</upnp:artist>'
            '<upnp:album>%s</upnp:album>%s<upnp:class>object.item.audioItem.musicTrack</upnp:class>'
            '<res protocolInfo="http-get:*:audio/flac:*">%s</res></item></DIDL-Lite>'
            % (escape(title), escape(artist), escape(album),
               "<upnp:albumArtURI>%s</upnp:albumArtURI>" % escape(art) if art else "", escape(url)))


def text_of(element_id):
    return "document.getElementById(%s).textContent" % json.dumps(element_id)


class StatusPageInChromium(RendererTestCase):
    serves_media = True

    @classmethod
    def setUpClass(cls):
        super().setUpClass()
        with open(os.path.join(cls.media.directory, "cover.png"), "wb") as cover:
            cover.write(png(120, 120))
        for name in LONG_TRACKS:
            media.make_flac(os.path.join(cls.media.directory, name), LONG_SECONDS)

    def setUp(self):
        self.client = self.soap_client()
        self.browser = browser.Browser(os.path.join(artifacts.directory(), "chromium.log"))
        os.makedirs(artifacts.directory(), exist_ok=True)
        self.browser.start()
        self.addCleanup(self.browser.close)

    def act(self, service_type, action, *arguments):
        reply = self.client.call(self.description.service(service_type).control_path, service_type, action,
                                 arguments)
        self.assertEqual(reply.status, 200, "%s answered %r" % (action, reply))
        return reply.outputs

    def page_url(self):
        root = ElementTree.fromstring(self.description.xml)
        presentation = root.findtext("{%s}device/{%s}presentationURL" % (soap.DEVICE_NS, soap.DEVICE_NS))
        self.assertEqual(presentation, "/status/", "the description's presentationURL")
        return urllib.parse.urljoin(self.location, presentation)

    def wait_for_text(self, element_id, wanted, timeout=POLL_TIMEOUT):
        value, reached = self.browser.wait_for(text_of(element_id), lambda value: value == wanted, timeout)
        self.assertTrue(reached, "#%s shows %r, not %r, after %.0f s" % (element_id, value, wanted, timeout))

    def test_the_page_shows_the_track_and_follows_a_change_without_reloading(self):
        watcher = events.NotifyServer().start()
        self.addCleanup(watcher.stop)
        status, sid, _ = events.subscribe(self.description.service(soap.AVTRANSPORT).event_url,
                                          watcher.callback_url)
        self.assertEqual(status, 200)
        self.addCleanup(self.client.request, "UNSUBSCRIBE",
                        urllib.parse.urlsplit(self.description.service(soap.AVTRANSPORT).event_url).path,
                        headers={"SID": sid})

        title, artist, album = FIRST
        url, art = self.media.url("light.flac"), self.media.url("cover.png")
        self.act(soap.AVTRANSPORT, "SetAVTransportURI", ("InstanceID", "0"), ("CurrentURI", url),
                 ("CurrentURIMetaData", didl(title, artist, album, url, art)))
        self.act(soap.AVTRANSPORT, "Play", ("InstanceID", "0"), ("Speed", "1"))
        self.act(soap.OPENHOME % "Volume", "SetVolume", ("Value", "42"))

        self.browser.navigate(self.page_url())
        self.wait_for_text("track-title", title)
        self.browser.evaluate("window.loadedOnce = 'still the first load'")
        self.wait_for_text("transport-state", "PLAYING")
        self.assertEqual(self.browser.evaluate(text_of("track-artist")), artist)
        self.assertEqual(self.browser.evaluate(text_of("track-album")), album)
        self.assertEqual(self.browser.evaluate(text_of("volume-value")), "42")
        self.assertEqual(self.browser.evaluate(text_of("device-name")), self.description.friendly_name)
        # The album art is the control point's URL, fetched by the browser itself.
        loaded, ok = self.browser.wait_for(
            "[document.getElementById('art').src, document.getElementById('art').naturalWidth]",
            lambda value: value[1] == 120, POLL_TIMEOUT)
        self.assertTrue(ok, "the album art did not load: %r" % loaded)
        self.assertEqual(loaded[0], art)
        # Text arrives as text: no element was made from a title.
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('#now-playing b').length"), 0)
        subscriptions, ok = self.browser.wait_for(
            "Array.from(document.querySelectorAll('#subscriptions tr'), r => r.textContent)",
            lambda rows: any(watcher.callback_url in row for row in rows), POLL_TIMEOUT)
        self.assertTrue(ok, "the subscribed control point is not listed: %r" % subscriptions)
        self.assertIn("AVTransport", " ".join(subscriptions))
        configuration = self.browser.evaluate(text_of("configuration"))
        for setting in ("friendly name", "interface", "or0", "audio output", "state directory", "protocol list"):
            self.assertIn(setting, configuration)
        log, ok = self.browser.wait_for(text_of("log"), lambda value: "transport: PLAYING" in value, POLL_TIMEOUT)
        self.assertTrue(ok, "the log does not show the transport: %r" % log[-500:])

        # The playlist fills in and the track changes to one of it, on the same page.
        ids, after = [], "0"
        for name, playlist_title, playlist_artist in PLAYLIST:
            track_url = self.media.url(name)
            outputs = self.act(soap.PLAYLIST, "Insert", ("AfterId", after), ("Uri", track_url),
                               ("Metadata", didl(playlist_title, playlist_artist, "Playlist", track_url, art)))
            after = outputs["NewId"]
            ids.append(after)
        titles, ok = self.browser.wait_for(
            "Array.from(document.querySelectorAll('#playlist li .title'), e => e.textContent)",
            lambda value: value == [t for _, t, _ in PLAYLIST], POLL_TIMEOUT)
        self.assertTrue(ok, "the playlist shows %r" % titles)

        self.act(soap.PLAYLIST, "SeekId", ("Value", ids[1]))
        self.wait_for_text("track-title", PLAYLIST[1][1])
        self.wait_for_text("transport-state", "PLAYING")
        self.assertEqual(self.browser.evaluate(text_of("track-artist")), PLAYLIST[1][2])
        current, ok = self.browser.wait_for(
            "Array.from(document.querySelectorAll('#playlist li.current .title'), e => e.textContent)",
            lambda value: value == [PLAYLIST[1][1]], POLL_TIMEOUT)
        self.assertTrue(ok, "the current track is not marked: %r" % current)
        self.assertEqual(self.browser.evaluate("document.querySelectorAll('#playlist b').length"), 0)
        art_width, ok = self.browser.wait_for("document.getElementById('art').naturalWidth",
                                              lambda value: value == 120, POLL_TIMEOUT)
        self.assertTrue(ok, "the album art of the playlist track did not load: %r" % art_width)
        # No reload: what the first load left in the page is still there, and the frame loaded once.
        self.assertEqual(self.browser.evaluate("window.loadedOnce"), "still the first load")
        self.assertEqual(self.browser.navigations(), 1)

        position, ok = self.browser.wait_for("document.getElementById('track-progress').value",
                                             lambda value: value >= 1, POLL_TIMEOUT)
        self.assertTrue(ok, "the position does not advance: %r" % position)
        screenshot = os.path.join(os.path.dirname(artifacts.directory()), "status_page.png")
        self.browser.screenshot(screenshot)
        print("screenshot: %s" % screenshot, flush=True)
        self.assertGreater(os.path.getsize(screenshot), 10000)

    def test_the_json_is_valid_and_bounded_and_the_page_files_are_served_with_their_types(self):
        reply = self.client.request("GET", "/status.json")
        self.assertEqual(reply.status, 200)
        self.assertEqual(reply.headers.get("Content-Type"), "application/json; charset=utf-8")
        self.assertEqual(reply.headers.get("Cache-Control"), "no-store")
        status = json.loads(reply.body)
        self.assertTrue(status["running"])
        self.assertLessEqual(len(status["log"]), 50)
        self.assertLess(len(reply.body), 256 * 1024)
        for path, content_type in (("/status/", "text/html; charset=utf-8"),
                                   ("/status/status.js", "text/javascript; charset=utf-8"),
                                   ("/status/status.css", "text/css; charset=utf-8")):
            reply = self.client.request("GET", path)
            self.assertEqual((reply.status, reply.headers.get("Content-Type")), (200, content_type), path)
            self.assertEqual(reply.headers.get("X-Content-Type-Options"), "nosniff", path)
        self.assertIn("script-src 'self'", self.client.request("GET", "/status/").headers["Content-Security-Policy"])
        redirect = self.client.request("GET", "/status")
        self.assertEqual(redirect.status, 301)
        self.assertTrue(redirect.headers.get("Location", "").endswith("/status/"))
        for path in ("/status/secret.txt", "/status/index.html/x", "/status/STATUS.JS", "/status.json/x"):
            self.assertEqual(self.client.request("GET", path).status, 404, path)
        self.assertEqual(self.client.request("POST", "/status.json", body=b"{}").status, 405)


if __name__ == "__main__":
    runner.main(11)
