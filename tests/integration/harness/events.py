"""Eventing seen from a subscriber of our own: a keep-alive HTTP/1.1 server that takes NOTIFY requests and
notes when each arrived, raw SUBSCRIBE requests, and the LastChange document's parser."""

import http.client
import http.server
import threading
import time
import urllib.parse
import xml.etree.ElementTree as ElementTree

from . import netns

EVENT_NS = "urn:schemas-upnp-org:event-1-0"


class Notification:
    def __init__(self, arrived, sid, seq, properties, peer):
        self.arrived = arrived      # time.monotonic() when the request's body was read
        self.sid = sid
        self.seq = seq
        self.properties = properties  # variable name → text, in the order of the property set
        self.peer = peer            # (address, port) of the daemon's side of the connection

    def __repr__(self):
        return "<NOTIFY SEQ %s %r>" % (self.seq, self.properties)


def parse_property_set(body):
    root = ElementTree.fromstring(body)
    properties = {}
    for prop in root.findall("{%s}property" % EVENT_NS):
        for variable in prop:
            properties[variable.tag.split("}")[-1]] = variable.text or ""
    return properties


def parse_last_change(text):
    """The variables of instance 0 in a LastChange document, name → value of its "val" attribute."""
    root = ElementTree.fromstring(text)
    values = {}
    for instance in root:
        if instance.tag.split("}")[-1] == "InstanceID" and instance.get("val") == "0":
            for variable in instance:
                values[variable.tag.split("}")[-1]] = variable.get("val")
    return values


class _NotifyHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"

    def log_message(self, format, *args):
        pass

    def do_NOTIFY(self):
        body = self.rfile.read(int(self.headers.get("Content-Length", "0")))
        arrived = time.monotonic()
        try:
            properties = parse_property_set(body)
        except ElementTree.ParseError:
            properties = {"<unparsable>": body.decode(errors="replace")}
        self.send_response(200)
        self.send_header("Content-Length", "0")
        self.end_headers()
        self.server.add(Notification(arrived, self.headers.get("SID"), self.headers.get("SEQ"), properties,
                                     self.client_address))


class NotifyServer(http.server.ThreadingHTTPServer):
    """Answers every NOTIFY at once with 200 and keeps the connection open unless the sender closes it."""

    daemon_threads = True

    def __init__(self, address=netns.CONTROL_ADDRESS):
        super().__init__((address, 0), _NotifyHandler)
        self.notifications = []
        self._condition = threading.Condition()
        self._thread = threading.Thread(target=self.serve_forever, name="notify-server", daemon=True)

    def start(self):
        self._thread.start()
        return self

    @property
    def callback_url(self):
        return "http://%s:%d/events" % self.server_address

    def add(self, notification):
        with self._condition:
            self.notifications.append(notification)
            self._condition.notify_all()

    def wait_for(self, predicate, timeout):
        """Waits until predicate(notification) holds for a notification; answers it (None at the timeout)."""
        deadline = time.monotonic() + timeout
        with self._condition:
            checked = 0
            while True:
                for notification in self.notifications[checked:]:
                    if predicate(notification):
                        return notification
                checked = len(self.notifications)
                remaining = deadline - time.monotonic()
                if remaining <= 0:
                    return None
                self._condition.wait(remaining)

    def snapshot(self):
        with self._condition:
            return list(self.notifications)

    def stop(self):
        self.shutdown()
        self.server_close()


def subscribe(event_url, callback_url, seconds=300, timeout=5.0):
    """A raw SUBSCRIBE; answers (HTTP status, SID header, TIMEOUT header)."""
    parts = urllib.parse.urlsplit(event_url)
    connection = http.client.HTTPConnection(parts.hostname, parts.port or 80, timeout=timeout)
    try:
        connection.request("SUBSCRIBE", parts.path, headers={
            "CALLBACK": "<%s>" % callback_url, "NT": "upnp:event", "TIMEOUT": "Second-%d" % seconds})
        response = connection.getresponse()
        response.read()
        return response.status, response.getheader("SID"), response.getheader("TIMEOUT")
    finally:
        connection.close()
