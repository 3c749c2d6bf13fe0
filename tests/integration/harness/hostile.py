"""What the hostile-input tests share: raw requests on a fresh socket (http.client would fix what these
tests break on purpose), the Playlist's IdArray before and after each rejected request, and the check that
the daemon still serves."""

import socket
import time

from . import soap

# A URI that is never played: a closed port on loopback.
NEVER_PLAYED = "http://127.0.0.1:9/never-played.wav"


class RawReply:
    """The status line and headers of one HTTP answer read off a raw socket, or how the connection ended."""

    def __init__(self, status, headers, body, closed):
        self.status = status      # None when no status line came
        self.headers = headers    # upper-case name -> value
        self.body = body
        self.closed = closed      # the server closed the connection after (or instead of) answering

    def __repr__(self):
        return "<RawReply %r closed=%r body %r>" % (self.status, self.closed, self.body[:200])


def raw_request(host, port, data, timeout=10.0, read_limit=1 << 20, until_closed=False):
    """Sends `data` (bytes, or an iterable of byte chunks sent in turn) on a new connection and reads the
    answer until it is complete (or, with `until_closed`, until the server closes) or `timeout` passes without
    a byte; answers a RawReply. A server that closes while the request is still being sent counts as closed."""
    chunks = [data] if isinstance(data, bytes) else data
    received = b""
    closed = False
    with socket.create_connection((host, port), timeout=timeout) as sock:
        try:
            for chunk in chunks:
                sock.sendall(chunk)
        except (BrokenPipeError, ConnectionResetError):
            closed = True
        sock.settimeout(timeout)
        deadline = time.monotonic() + timeout
        while len(received) < read_limit and time.monotonic() < deadline:
            try:
                part = sock.recv(65536)
            except socket.timeout:
                break
            except ConnectionResetError:
                closed = True
                break
            if not part:
                closed = True
                break
            received += part
            if _complete(received) and not until_closed:
                break
    return _parse(received, closed)


def _complete(data):
    head, separator, body = data.partition(b"\r\n\r\n")
    if not separator:
        return False
    for line in head.split(b"\r\n")[1:]:
        name, _, value = line.partition(b":")
        if name.strip().lower() == b"content-length":
            return len(body) >= int(value.strip() or b"0")
    return False


def _parse(data, closed):
    head, _, body = data.partition(b"\r\n\r\n")
    lines = head.decode(errors="replace").split("\r\n")
    status = None
    if lines and lines[0].startswith("HTTP/1."):
        parts = lines[0].split(" ", 2)
        status = int(parts[1]) if len(parts) > 1 and parts[1].isdigit() else None
    headers = {}
    for line in lines[1:]:
        name, _, value = line.partition(":")
        headers[name.strip().upper()] = value.strip()
    return RawReply(status, headers, body, closed)


def request_head(method, path, host_header, headers=(), body_length=None):
    """The head of a request, as bytes; `headers` a sequence of (name, value), sent in order."""
    lines = ["%s %s HTTP/1.1" % (method, path)]
    if host_header is not None:
        lines.append("Host: %s" % host_header)
    lines += ["%s: %s" % (name, value) for name, value in headers]
    if body_length is not None:
        lines.append("Content-Length: %d" % body_length)
    return ("\r\n".join(lines) + "\r\n\r\n").encode()


class PlaylistChecks:
    """Mixed into a RendererTestCase: the Playlist's state and the daemon's liveness."""

    def playlist_control(self):
        return self.description.service(soap.PLAYLIST).control_path

    def playlist_call(self, action, arguments=(), client=None):
        return (client or self.soap_client(timeout=30)).call(self.playlist_control(), soap.PLAYLIST, action,
                                                               arguments)

    def id_array(self):
        reply = self.playlist_call("IdArray")
        self.assertEqual(reply.status, 200, reply)
        return reply.outputs["Array"]

    def insert(self, uri=NEVER_PLAYED, metadata="", after="0", client=None):
        reply = self.playlist_call("Insert", [("AfterId", after), ("Uri", uri), ("Metadata", metadata)], client)
        self.assertEqual(reply.status, 200, reply)
        return reply.outputs["NewId"]

    def delete_all(self):
        self.assertEqual(self.playlist_call("DeleteAll").status, 200)

    def assertStillServing(self):
        """A GetTransportInfo on a fresh connection answers, and the daemon still runs."""
        client = soap.SoapClient(self.location, timeout=10)
        try:
            avt = self.description.service(soap.AVTRANSPORT).control_path
            reply = client.call(avt, soap.AVTRANSPORT, "GetTransportInfo", [("InstanceID", "0")])
        finally:
            client.close()
        self.assertEqual(reply.status, 200, reply)
        self.assertIn(reply.outputs.get("CurrentTransportState"), ("STOPPED", "NO_MEDIA_PRESENT", "PLAYING",
                                                                    "TRANSITIONING", "PAUSED_PLAYBACK"))
        self.assertIsNone(self.daemon.process.poll(), "the daemon exited")

    def assertRejectedWithoutEffect(self, before):
        self.assertStillServing()
        self.assertEqual(self.id_array(), before, "a rejected request changed the playlist")
