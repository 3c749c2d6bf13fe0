"""Every SSDP NOTIFY seen on the control points' side of the namespace, with the time it arrived, so that
start-up is timed from a renderer's launch to its first "ssdp:alive" as any control point would see it."""

import socket
import struct
import threading
import time

from harness import netns


class SsdpWatch:
    def __init__(self):
        self._socket = socket.socket(socket.AF_INET, socket.SOCK_DGRAM, socket.IPPROTO_UDP)
        self._socket.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        self._socket.bind(("", netns.SSDP_PORT))
        membership = struct.pack("4s4s", socket.inet_aton(netns.SSDP_GROUP), socket.inet_aton(netns.CONTROL_ADDRESS))
        self._socket.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, membership)
        self._socket.settimeout(0.2)
        self._alive = []  # (monotonic time, LOCATION)
        self._condition = threading.Condition()
        self._running = True
        self._thread = threading.Thread(target=self._receive, name="ssdp-watch", daemon=True)
        self._thread.start()

    def _receive(self):
        while self._running:
            try:
                data, _ = self._socket.recvfrom(4096)
            except socket.timeout:
                continue
            except OSError:
                return
            arrived = time.monotonic()
            lines = data.decode(errors="replace").split("\r\n")
            if not lines[0].startswith("NOTIFY"):
                continue
            headers = {}
            for line in lines[1:]:
                name, _, value = line.partition(":")
                headers[name.strip().upper()] = value.strip()
            if headers.get("NTS") == "ssdp:alive":
                with self._condition:
                    self._alive.append((arrived, headers.get("LOCATION", "")))
                    self._condition.notify_all()

    def first_alive(self, since, port, timeout):
        """The first alive at or after `since` whose LOCATION names `port`: (time, LOCATION), or None."""
        marker = ":%d/" % port
        deadline = time.monotonic() + timeout
        with self._condition:
            while True:
                for arrived, location in self._alive:
                    if arrived >= since and marker in location:
                        return arrived, location
                remaining = deadline - time.monotonic()
                if remaining <= 0:
                    return None
                self._condition.wait(remaining)

    def close(self):
        self._running = False
        self._socket.close()
