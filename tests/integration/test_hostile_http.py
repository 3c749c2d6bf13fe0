"""Hostile HTTP against the running daemon: bodies past the 2 MiB request limit (by Content-Length, chunked,
with "Expect: 100-continue"), a 1 MB argument within it, and Host headers that name another host (DNS
rebinding). Each gets a clear answer, the playlist is unchanged by every refusal, and the daemon serves on."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import netns, runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402
from harness.hostile import NEVER_PLAYED, PlaylistChecks, raw_request, request_head  # noqa: E402

LIMIT = 2 * 1024 * 1024
PLAYLIST = soap.PLAYLIST


def resident_peak_kib(pid):
    """The process's peak resident memory (VmHWM), in KiB."""
    with open("/proc/%d/status" % pid) as status:
        for line in status:
            if line.startswith("VmHWM:"):
                return int(line.split()[1])
    raise AssertionError("no VmHWM for %d" % pid)


class RequestSizeLimit(RendererTestCase, PlaylistChecks):
    def setUp(self):
        self.delete_all()
        self.insert()
        self.before = self.id_array()
        self.host = "%s:%d" % (self.description_host(), self.daemon.port)

    def description_host(self):
        return netns.DAEMON_ADDRESS

    def insert_head(self, length, extra=()):
        return request_head("POST", self.playlist_control(), self.host,
                            [("Content-Type", 'text/xml; charset="utf-8"'),
                             ("SOAPACTION", '"%s#Insert"' % PLAYLIST), *extra], length)

    def insert_body(self, metadata_bytes):
        return soap.envelope(PLAYLIST, "Insert", [("AfterId", "0"), ("Uri", NEVER_PLAYED),
                                                  ("Metadata", "m" * metadata_bytes)])

    def test_a_1_mb_argument_within_the_limit_is_answered_by_the_playlist(self):
        body = self.insert_body(1024 * 1024)
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port, self.insert_head(len(body)) + body)
        self.assertEqual(reply.status, 200, reply)
        self.assertNotEqual(self.id_array(), self.before)
        # Its metadata does not fit the 200 KiB escaping buffer of a ReadList entry: the playlist's own answer.
        new_id = reply.body.decode().split("<NewId>")[1].split("</NewId>")[0]
        read = self.playlist_call("ReadList", [("IdList", new_id)])
        self.assertEqual((read.status, read.fault_code, read.fault_description), (500, 501, "Action Failed"), read)
        self.assertStillServing()

    def test_a_body_one_byte_over_the_limit_is_http_413_before_it_is_read(self):
        body = self.insert_body(LIMIT)
        self.assertGreater(len(body), LIMIT)
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port, self.insert_head(len(body)) + body)
        self.assertEqual(reply.status, 413, reply)
        self.assertEqual(reply.headers.get("CONNECTION", "").lower(), "close")
        self.assertRejectedWithoutEffect(self.before)

    def test_a_10_mb_body_is_http_413_and_the_daemon_does_not_keep_it(self):
        peak_before = resident_peak_kib(self.daemon.process.pid)
        body = self.insert_body(10 * 1024 * 1024)
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port, [self.insert_head(len(body)), body],
                            until_closed=True)
        self.assertEqual(reply.status, 413, reply)
        self.assertTrue(reply.closed, "the connection stayed open after the 413")
        growth = resident_peak_kib(self.daemon.process.pid) - peak_before
        self.assertLess(growth, 4 * 1024, "the daemon's peak memory grew by %d KiB for a refused body" % growth)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_10_mb_content_length_with_expect_continue_is_http_413_without_the_body(self):
        head = self.insert_head(10 * 1024 * 1024, [("Expect", "100-continue")])
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port, head, timeout=5)
        self.assertEqual(reply.status, 413, reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_chunked_body_that_grows_past_the_limit_is_http_413(self):
        head = request_head("POST", self.playlist_control(), self.host,
                            [("Content-Type", 'text/xml; charset="utf-8"'),
                             ("SOAPACTION", '"%s#Insert"' % PLAYLIST), ("Transfer-Encoding", "chunked")])
        body = self.insert_body(3 * 1024 * 1024)
        chunks = [head]
        for start in range(0, len(body), 65536):
            piece = body[start:start + 65536]
            chunks.append(b"%x\r\n%s\r\n" % (len(piece), piece))
        chunks.append(b"0\r\n\r\n")
        peak_before = resident_peak_kib(self.daemon.process.pid)
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port, chunks)
        self.assertEqual(reply.status, 413, reply)
        growth = resident_peak_kib(self.daemon.process.pid) - peak_before
        self.assertLess(growth, 6 * 1024, "the daemon's peak memory grew by %d KiB" % growth)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_chunked_body_within_the_limit_is_executed(self):
        head = request_head("POST", self.playlist_control(), self.host,
                            [("Content-Type", 'text/xml; charset="utf-8"'),
                             ("SOAPACTION", '"%s#Insert"' % PLAYLIST), ("Transfer-Encoding", "chunked")])
        body = self.insert_body(1000)
        reply = raw_request(netns.DAEMON_ADDRESS, self.daemon.port,
                            [head, b"%x\r\n%s\r\n0\r\n\r\n" % (len(body), body)])
        self.assertEqual(reply.status, 200, reply)
        self.assertNotEqual(self.id_array(), self.before)


class ForeignHostHeader(RendererTestCase, PlaylistChecks):
    """A Host header naming a host that is not the daemon's address: a page in a browser whose name was made to
    resolve to the renderer (DNS rebinding). Refused with 421 Misdirected Request on every path."""

    def setUp(self):
        self.delete_all()
        self.insert()
        self.before = self.id_array()
        self.paths = {
            "description": ("GET", self.daemon.location.split(str(self.daemon.port), 1)[1], []),
            "control": ("POST", self.playlist_control(), [("Content-Type", 'text/xml; charset="utf-8"'),
                                                          ("SOAPACTION", '"%s#DeleteAll"' % PLAYLIST)]),
            "event": ("SUBSCRIBE", soap.urllib.parse.urlsplit(
                self.description.service(PLAYLIST).event_url).path,
                [("CALLBACK", "<http://%s:9/events>" % netns.CONTROL_ADDRESS), ("NT", "upnp:event"),
                 ("TIMEOUT", "Second-300")]),
        }

    def send(self, what, host_header, version="HTTP/1.1"):
        method, path, headers = self.paths[what]
        body = soap.envelope(PLAYLIST, "DeleteAll") if method == "POST" else b""
        head = request_head(method, path, host_header, headers, len(body) if body else None)
        if version != "HTTP/1.1":
            head = head.replace(b"HTTP/1.1\r\n", version.encode() + b"\r\n", 1)
        return raw_request(netns.DAEMON_ADDRESS, self.daemon.port, head + body)

    def test_a_name_in_the_host_header_is_http_421_on_every_path(self):
        for host in ("attacker.example", "attacker.example:%d" % self.daemon.port, "localhost:%d" % self.daemon.port,
                     "renderer.local"):
            for what in self.paths:
                with self.subTest(host=host, path=what):
                    reply = self.send(what, host)
                    self.assertEqual(reply.status, 421, reply)
                    self.assertRejectedWithoutEffect(self.before)

    def test_another_address_or_port_is_http_421(self):
        for host in ("%s:%d" % (netns.CONTROL_ADDRESS, self.daemon.port), "127.0.0.1:%d" % self.daemon.port,
                     "%s:80" % netns.DAEMON_ADDRESS, "[::1]:%d" % self.daemon.port,
                     "[::ffff:%s]:%d" % (netns.DAEMON_ADDRESS, self.daemon.port)):
            with self.subTest(host=host):
                self.assertEqual(self.send("control", host).status, 421)
                self.assertRejectedWithoutEffect(self.before)

    def test_a_host_header_that_is_no_host_is_http_400_from_the_http_server(self):
        for host in ("[%s]" % netns.DAEMON_ADDRESS, "%s:%d:1" % (netns.DAEMON_ADDRESS, self.daemon.port)):
            with self.subTest(host=host):
                self.assertEqual(self.send("control", host).status, 400)
                self.assertRejectedWithoutEffect(self.before)

    def test_the_servers_address_with_its_port_is_served(self):
        reply = self.send("description", "%s:%d" % (netns.DAEMON_ADDRESS, self.daemon.port))
        self.assertEqual(reply.status, 200, reply)
        reply = self.send("control", "%s:%d" % (netns.DAEMON_ADDRESS, self.daemon.port))
        self.assertEqual(reply.status, 200, reply)
        self.assertEqual(self.id_array(), "", "the DeleteAll with the right Host was not executed")

    def test_the_servers_address_without_port_passes_the_guard(self):
        # Our guard lets it through; what GUPnP then answers is its own (it wants the port as well).
        reply = self.send("description", netns.DAEMON_ADDRESS)
        self.assertNotEqual(reply.status, 421, reply)
        self.assertIsNotNone(reply.status, reply)

    def test_http_1_0_without_host_is_served_and_http_1_1_without_host_is_http_400(self):
        self.assertEqual(self.send("description", None, "HTTP/1.0").status, 200)
        self.assertEqual(self.send("description", None).status, 400)
        self.assertStillServing()


if __name__ == "__main__":
    runner.main(25)
