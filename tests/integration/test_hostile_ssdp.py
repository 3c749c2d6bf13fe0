"""Hostile SSDP against the running daemon: M-SEARCH datagrams with oversized and malformed headers, sent to
the SSDP group and straight to the daemon's SSDP port. None brings the daemon down, and it still answers a
valid M-SEARCH and a control request afterwards."""

import os
import socket
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import netns, runner, soap, ssdp  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402
from harness.hostile import PlaylistChecks  # noqa: E402

GROUP = "%s:%d" % (netns.SSDP_GROUP, netns.SSDP_PORT)


def search(*lines):
    return ("\r\n".join(lines) + "\r\n\r\n").encode(errors="surrogateescape")


HOSTILE = {
    "oversized ST": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: 1",
                           "ST: urn:" + "x" * 60000),
    "oversized header count": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: 1",
                                     "ST: ssdp:all", *("X-H%d: v" % n for n in range(6000))),
    "one long line": b"M-SEARCH * HTTP/1.1\r\n" + b"A" * 65000,
    "no headers": b"M-SEARCH * HTTP/1.1\r\n\r\n",
    "no line ends": b"M-SEARCH * HTTP/1.1 HOST: x MAN: y ST: ssdp:all",
    "garbage": bytes(range(256)) * 100,
    "nul bytes": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: 1",
                        "ST: ssdp:all\x00\x00\x00"),
    "missing MAN": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, "MX: 1", "ST: ssdp:all"),
    "MX negative": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: -5",
                          "ST: ssdp:all"),
    "MX huge": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"',
                      "MX: 99999999999999999999999", "ST: ssdp:all"),
    "MX not a number": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: soon",
                              "ST: ssdp:all"),
    "empty ST": search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: 1", "ST:"),
    "line without colon": search("M-SEARCH * HTTP/1.1", "HOST " + GROUP, "MAN", "MX", "ST"),
    "colons only": search("M-SEARCH * HTTP/1.1", ":", "::", ":::", ": ssdp:all"),
    "repeated headers": search("M-SEARCH * HTTP/1.1", *(["ST: ssdp:all", "MX: 1"] * 500)),
    "bad start line": search("M-SEARCH", "HOST: " + GROUP, "ST: ssdp:all"),
    "other method": search("GET / HTTP/1.1", "HOST: " + GROUP, "ST: ssdp:all"),
    "notify byebye flood": search("NOTIFY * HTTP/1.1", "HOST: " + GROUP, "NT: upnp:rootdevice",
                                  "NTS: ssdp:byebye", "USN: uuid:" + "z" * 30000),
    "invalid utf-8": b"M-SEARCH * HTTP/1.1\r\nHOST: \xff\xfe\r\nST: \xc3\x28\r\nMX: 1\r\n\r\n",
    "empty datagram": b"",
}


class HostileSearches(RendererTestCase, PlaylistChecks):
    def send_each(self, destination):
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_UDP) as sock:
            sock.bind((netns.CONTROL_ADDRESS, 0))
            sock.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(netns.CONTROL_ADDRESS))
            sock.setsockopt(socket.SOL_SOCKET, socket.SO_SNDBUF, 1 << 20)
            for name, datagram in HOSTILE.items():
                with self.subTest(datagram=name):
                    sock.sendto(datagram[:65507], destination)
                    time.sleep(0.01)
                    self.assertIsNone(self.daemon.process.poll(), "the daemon exited after %r" % name)

    def assertStillDiscoverable(self):
        responses = ssdp.msearch(soap.MEDIA_RENDERER)
        usns = {headers.get("USN", "") for headers in responses}
        self.assertTrue(any(usn.startswith(self.description.udn) for usn in usns),
                        "no answer to a valid M-SEARCH after the hostile ones: %r" % usns)
        self.assertStillServing()

    def test_hostile_searches_to_the_group_leave_the_daemon_answering(self):
        self.send_each((netns.SSDP_GROUP, netns.SSDP_PORT))
        self.assertStillDiscoverable()

    def test_hostile_searches_to_the_daemons_own_address_leave_it_answering(self):
        self.send_each((netns.DAEMON_ADDRESS, netns.SSDP_PORT))
        self.assertStillDiscoverable()

    def test_a_thousand_searches_with_the_longest_wait_leave_it_answering(self):
        datagram = search("M-SEARCH * HTTP/1.1", "HOST: " + GROUP, 'MAN: "ssdp:discover"', "MX: 120",
                          "ST: ssdp:all")
        with socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_UDP) as sock:
            sock.bind((netns.CONTROL_ADDRESS, 0))
            sock.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(netns.CONTROL_ADDRESS))
            for _ in range(1000):
                sock.sendto(datagram, (netns.SSDP_GROUP, netns.SSDP_PORT))
        self.assertStillDiscoverable()


if __name__ == "__main__":
    runner.main(28)
