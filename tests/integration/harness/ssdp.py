"""SSDP seen on the wire: a raw M-SEARCH and a raw listener on the multicast group, on the control points'
interface. GSSDP and GUPnP are the real control points; these show the exact messages."""

import socket
import struct
import threading
import time

from . import netns

MULTICAST = (netns.SSDP_GROUP, netns.SSDP_PORT)


def parse_message(data):
    """(start line, headers with upper-case names) of an SSDP datagram."""
    lines = data.decode(errors="replace").split("\r\n")
    headers = {}
    for line in lines[1:]:
        if ":" in line:
            name, value = line.split(":", 1)
            headers[name.strip().upper()] = value.strip()
    return lines[0], headers


def msearch(target, wait=2.5, mx=1):
    """Sends an M-SEARCH for `target` from the control points' address and answers the headers of every
    response that arrived within `wait` seconds."""
    request = ("M-SEARCH * HTTP/1.1\r\nHOST: %s:%d\r\nMAN: \"ssdp:discover\"\r\nMX: %d\r\nST: %s\r\n"
               "USER-AGENT: Linux/1 UPnP/1.0 IntegrationTest/1\r\n\r\n" % (*MULTICAST, mx, target)).encode()
    with socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_UDP) as sock:
        sock.bind((netns.CONTROL_ADDRESS, 0))
        sock.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, socket.inet_aton(netns.CONTROL_ADDRESS))
        sock.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_TTL, 2)
        # UDP may lose a datagram; a control point sends its search more than once.
        sock.sendto(request, MULTICAST)
        time.sleep(0.1)
        sock.sendto(request, MULTICAST)
        responses = []
        deadline = time.monotonic() + wait
        while True:
            remaining = deadline - time.monotonic()
            if remaining <= 0:
                return responses
            sock.settimeout(remaining)
            try:
                data, _ = sock.recvfrom(65536)
            except socket.timeout:
                return responses
            start, headers = parse_message(data)
            if start.startswith("HTTP/1.1 200"):
                responses.append(headers)


class MulticastListener:
    """Every NOTIFY sent to the SSDP group as seen on the control points' interface, with its arrival."""

    def __init__(self):
        self.notifications = []
        self._lock = threading.Lock()
        self._sock = socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_UDP)
        self._sock.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self._sock.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEPORT, 1)
        self._sock.bind(MULTICAST)
        membership = struct.pack("4s4s", socket.inet_aton(netns.SSDP_GROUP),
                                 socket.inet_aton(netns.CONTROL_ADDRESS))
        self._sock.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, membership)
        self._sock.settimeout(0.1)
        self._running = True
        self._thread = threading.Thread(target=self._receive, name="ssdp-listener", daemon=True)
        self._thread.start()

    def _receive(self):
        while self._running:
            try:
                data, _ = self._sock.recvfrom(65536)
            except socket.timeout:
                continue
            except OSError:
                return
            start, headers = parse_message(data)
            if start.startswith("NOTIFY"):
                with self._lock:
                    self.notifications.append((time.monotonic(), headers))

    def byebyes(self, usn_prefix):
        with self._lock:
            return [(arrived, headers) for arrived, headers in self.notifications
                    if headers.get("NTS") == "ssdp:byebye" and headers.get("USN", "").startswith(usn_prefix)]

    def close(self):
        self._running = False
        self._thread.join()
        self._sock.close()
