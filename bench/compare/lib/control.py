"""What the comparison does to a renderer as a control point: its AVTransport (version 1 or 2) found in
its description, actions on one keep-alive connection, subscriptions with a subscriber that keeps its
connections alive or one that closes them."""

import http.client
import http.server
import threading
import time
import urllib.parse

from harness import events, netns, soap


def call_again_on_a_closed_connection(client, service, action, arguments=()):
    """An action on the client's keep-alive connection. libupnp closes a connection after every answer
    without saying so in the answer; the next request then finds the connection closed and goes out again
    on a new one."""
    try:
        return client.call(service.control_path, service.service_type, action, arguments)
    except (BrokenPipeError, ConnectionResetError, http.client.RemoteDisconnected):
        client.close()
        return client.call(service.control_path, service.service_type, action, arguments)


def service_of(description, kind):
    """The service whose type is urn:...:service:KIND:N, whatever N."""
    for service_type, service in description.services.items():
        if service_type.rsplit(":", 2)[-2] == kind:
            return service
    return None


class Transport:
    def __init__(self, location):
        self.description = soap.Description(location)
        self.service = service_of(self.description, "AVTransport")
        self.client = soap.SoapClient(self.service.control_url)

    def call(self, action, arguments=()):
        return call_again_on_a_closed_connection(self.client, self.service, action, [("InstanceID", "0"), *arguments])

    def set_uri(self, uri, next_uri=False):
        name = "SetNextAVTransportURI" if next_uri else "SetAVTransportURI"
        prefix = "Next" if next_uri else "Current"
        return self.call(name, [(prefix + "URI", uri), (prefix + "URIMetaData", "")])

    def state(self):
        return self.call("GetTransportInfo").outputs.get("CurrentTransportState")

    def wait_for_state(self, wanted, timeout):
        deadline = time.monotonic() + timeout
        while time.monotonic() < deadline:
            if self.state() in wanted:
                return True
            time.sleep(0.05)
        return False

    def close(self):
        self.client.close()


class _ClosingNotifyHandler(events._NotifyHandler):
    """Answers every NOTIFY with "Connection: close" and closes, as a subscriber that opens a connection per
    event would."""

    def end_headers(self):
        self.send_header("Connection", "close")
        self.close_connection = True
        super().end_headers()


class Subscriber(events.NotifyServer):
    def __init__(self, keeps_alive):
        if keeps_alive:
            super().__init__(netns.CONTROL_ADDRESS)
        else:
            http.server.ThreadingHTTPServer.__init__(self, (netns.CONTROL_ADDRESS, 0), _ClosingNotifyHandler)
            self.notifications = []
            self._condition = threading.Condition()
            self._thread = threading.Thread(target=self.serve_forever, name="notify-server", daemon=True)


def transport_state_of(notification):
    text = notification.properties.get("LastChange")
    if not text:
        return None
    try:
        return events.parse_last_change(text).get("TransportState")
    except Exception:  # noqa: BLE001 - a document we cannot read holds no state
        return None


def unsubscribe(event_url, sid):
    parts = urllib.parse.urlsplit(event_url)
    connection = http.client.HTTPConnection(parts.hostname, parts.port or 80, timeout=5)
    try:
        connection.request("UNSUBSCRIBE", parts.path, headers={"SID": sid})
        connection.getresponse().read()
    except OSError:
        pass
    finally:
        connection.close()
