"""Media the tests make and serve: WAV and FLAC tones a few seconds long, and a small HTTP server for them
(GET, HEAD and single byte ranges) on the control points' address inside the namespace."""

import http.server
import math
import os
import re
import struct
import subprocess
import threading
import urllib.parse
import wave

from . import netns

RATE = 44100
CHANNELS = 2

CONTENT_TYPES = {".wav": "audio/wav", ".flac": "audio/flac"}


def make_wav(path, seconds, frequency=440.0):
    """A stereo 16-bit sine tone, written with Python's own wave module."""
    frames = int(RATE * seconds)
    with wave.open(path, "wb") as out:
        out.setnchannels(CHANNELS)
        out.setsampwidth(2)
        out.setframerate(RATE)
        chunk = bytearray()
        for i in range(frames):
            sample = int(12000 * math.sin(2 * math.pi * frequency * i / RATE))
            chunk += struct.pack("<hh", sample, sample)
            if len(chunk) >= 1 << 16:
                out.writeframes(bytes(chunk))
                chunk.clear()
        out.writeframes(bytes(chunk))
    return path


def make_flac(path, seconds, frequency=660.0):
    """A stereo FLAC tone made by GStreamer's audiotestsrc and flacenc."""
    samples_per_buffer = RATE // 10
    pipeline = ["gst-launch-1.0", "-q", "audiotestsrc", "num-buffers=%d" % int(seconds * 10),
                "samplesperbuffer=%d" % samples_per_buffer, "freq=%g" % frequency, "!",
                "audio/x-raw,rate=%d,channels=%d" % (RATE, CHANNELS), "!", "audioconvert", "!",
                "flacenc", "!", "filesink", "location=" + path]
    subprocess.run(pipeline, check=True, capture_output=True, timeout=60)
    if os.path.getsize(path) == 0:
        raise RuntimeError("gst-launch-1.0 wrote an empty FLAC file")
    return path


class _MediaHandler(http.server.BaseHTTPRequestHandler):
    protocol_version = "HTTP/1.1"
    RANGE = re.compile(r"^bytes=(\d*)-(\d*)$")

    def log_message(self, format, *args):
        pass

    def do_HEAD(self):
        self._serve(send_body=False)

    def do_GET(self):
        self._serve(send_body=True)

    def _serve(self, send_body):
        self.server.record(self.command, self.path, self.headers.get("Range"))
        name = urllib.parse.unquote(urllib.parse.urlsplit(self.path).path).lstrip("/")
        path = os.path.join(self.server.directory, name)
        if "/" in name or not os.path.isfile(path):
            self._send_empty(404)
            return
        size = os.path.getsize(path)
        first, last = 0, size - 1
        status = 200
        requested = self.headers.get("Range")
        if requested:
            match = self.RANGE.match(requested.strip())
            if not match or (match.group(1) == "" and match.group(2) == ""):
                self._send_empty(416, {"Content-Range": "bytes */%d" % size})
                return
            if match.group(1) == "":
                first = max(0, size - int(match.group(2)))
            else:
                first = int(match.group(1))
                if match.group(2) != "":
                    last = min(last, int(match.group(2)))
            if first >= size or first > last:
                self._send_empty(416, {"Content-Range": "bytes */%d" % size})
                return
            status = 206
        self.send_response(status)
        content_type = CONTENT_TYPES.get(os.path.splitext(name)[1], "application/octet-stream")
        self.send_header("Content-Type", content_type)
        self.send_header("Accept-Ranges", "bytes")
        self.send_header("Content-Length", str(last - first + 1))
        if status == 206:
            self.send_header("Content-Range", "bytes %d-%d/%d" % (first, last, size))
        self.end_headers()
        if not send_body:
            return
        try:
            with open(path, "rb") as media:
                media.seek(first)
                remaining = last - first + 1
                while remaining > 0:
                    block = media.read(min(remaining, 1 << 16))
                    if not block:
                        break
                    self.wfile.write(block)
                    remaining -= len(block)
        except (BrokenPipeError, ConnectionResetError):
            # A player that has what it needs (or seeks) drops the connection: not an error of ours.
            self.close_connection = True

    def _send_empty(self, status, headers=None):
        self.send_response(status)
        for key, value in (headers or {}).items():
            self.send_header(key, value)
        self.send_header("Content-Length", "0")
        self.end_headers()


class MediaServer(http.server.ThreadingHTTPServer):
    daemon_threads = True

    def __init__(self, directory, address=netns.CONTROL_ADDRESS):
        super().__init__((address, 0), _MediaHandler)
        self.directory = directory
        self.requests = []
        self._lock = threading.Lock()
        self._thread = threading.Thread(target=self.serve_forever, name="media-server", daemon=True)

    def start(self):
        self._thread.start()
        return self

    def record(self, method, path, byte_range):
        with self._lock:
            self.requests.append((method, path, byte_range))

    def url(self, name):
        return "http://%s:%d/%s" % (self.server_address[0], self.server_address[1], urllib.parse.quote(name))

    def stop(self):
        self.shutdown()
        self.server_close()

