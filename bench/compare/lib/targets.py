"""The processes the comparison measures, each started the same way inside the namespace: our daemon,
gmediarender (Debian's, on libupnp), Rygel with only its playbin renderer, our stack's floor (a bare GUPnP
device) and the network's floor (a fixed HTTP answer). Every renderer plays into the measuring sink
(autoaudiosink picks it), each with a sink log of its own."""

import os
import re
import signal
import socket
import subprocess
import time
import uuid

from harness import netns

RENDERERS = ("ours", "gmediarender", "rygel")
FLOORS = ("gupnp-floor", "tcp-floor")
# Above the ephemeral ports, which the comparison moves to 20000-48999 inside its namespace: libupnp
# accepts only ports from 49152 up.
BASE_PORT = 49300
RYGEL_CONFIG = """[general]
ipv6=false
enable-transcoding=false
interface={interface}
port={port}
log-level=*:2
allow-upload=false
allow-deletion=false
acl-fallback-policy=true
[Playbin]
enabled=true
title=Bench Rygel
[MediaExport]
enabled=false
[Tracker]
enabled=false
[Tracker3]
enabled=false
[LMS]
enabled=false
[GstLaunch]
enabled=false
[MPRIS]
enabled=false
[External]
enabled=false
[Ruih]
enabled=false
"""


class Target:
    def __init__(self, name, build, work, gst_environment, index):
        self.name = name
        self.build = build
        self.directory = os.path.join(work, name)
        os.makedirs(self.directory, exist_ok=True)
        self.port = BASE_PORT + index
        self.sink_log = os.path.join(self.directory, "sink.log")
        # A plug-in registry of its own, built before the first start with this very environment: GStreamer
        # rescans every plug-in when the registry was built with other search paths (HOME and the XDG
        # directories name some), and a start-up would pay for that scan.
        self.environment = dict(os.environ, **gst_environment, BENCHSINK_LOG=self.sink_log,
                                GST_REGISTRY=os.path.join(self.directory, "registry.bin"),
                                HOME=self.directory, XDG_CONFIG_HOME=self.directory,
                                XDG_CACHE_HOME=os.path.join(self.directory, "cache"),
                                XDG_DATA_HOME=os.path.join(self.directory, "data"))
        for variable in ("GUPNP_DEBUG", "G_MESSAGES_DEBUG", "GST_DEBUG", "DBUS_SESSION_BUS_ADDRESS"):
            self.environment.pop(variable, None)
        if name == "ours":
            # The daemon's automatic output takes autoaudiosink only where it finds an audio device, and
            # otherwise its own null output; a PulseAudio server named (that autoaudiosink never reaches,
            # since the measuring sink ranks first) counts as one.
            self.environment["PULSE_SERVER"] = "unix:" + os.path.join(self.directory, "no-pulse-server")
        self.process = None
        self.started = None
        self.location = None

    @property
    def is_renderer(self):
        return self.name in RENDERERS

    @property
    def announces(self):
        return self.name != "tcp-floor"

    def arguments(self):
        if self.name == "ours":
            return [os.path.join(self.build, "host", "open-renderer"), "--interface", netns.DAEMON_INTERFACE,
                    "--port", str(self.port), "--output", "auto", "--state-dir", self.directory,
                    "--name", "Bench ours", "--quiet"]
        if self.name == "gmediarender":
            return ["gmediarender", "-I", netns.DAEMON_INTERFACE, "-p", str(self.port), "-f", "Bench gmediarender",
                    "-u", str(uuid.uuid5(uuid.NAMESPACE_URL, "bench-gmediarender")),
                    "--gstout-audiosink", "autoaudiosink", "--logfile", os.path.join(self.directory, "own.log")]
        if self.name == "rygel":
            config = os.path.join(self.directory, "rygel.conf")
            with open(config, "w") as out:
                out.write(RYGEL_CONFIG.format(interface=netns.DAEMON_INTERFACE, port=self.port))
            return ["rygel", "--config", config]
        if self.name == "gupnp-floor":
            return [os.path.join(self.build, "bench", "host", "floor_device"), "--interface", netns.DAEMON_INTERFACE,
                    "--port", str(self.port), "--docroot", os.path.join(self.build, "host", "docroot"),
                    "--state-dir", self.directory]
        return [os.path.join(self.build, "bench", "compare", "tcp_floor"), "--address", netns.DAEMON_ADDRESS,
                "--port", str(self.port)]

    def build_plugin_registry(self):
        subprocess.run(["gst-inspect-1.0", "benchsink"], env=self.environment, cwd=self.directory,
                       capture_output=True, check=True, timeout=120)

    def start(self):
        log = open(os.path.join(self.directory, "stderr.log"), "ab")
        self.started = time.monotonic()
        self.process = subprocess.Popen(self.arguments(), stdout=log, stderr=log, stdin=subprocess.DEVNULL,
                                        env=self.environment, cwd=self.directory)
        log.close()
        return self.started

    @property
    def pid(self):
        return self.process.pid

    def wait_until_up(self, ssdp, timeout=30):
        """Waits for the first alive (or, for the TCP floor, a connection accepted). Answers the start-up
        time in seconds; sets self.location to the announced description URL."""
        if not self.announces:
            deadline = time.monotonic() + timeout
            while time.monotonic() < deadline:
                try:
                    socket.create_connection((netns.DAEMON_ADDRESS, self.port), timeout=1).close()
                    self.location = "http://%s:%d/control" % (netns.DAEMON_ADDRESS, self.port)
                    return time.monotonic() - self.started
                except OSError:
                    time.sleep(0.005)
            raise RuntimeError("tcp_floor never listened")
        seen = ssdp.first_alive(self.started, self.port, timeout)
        if seen is None:
            raise RuntimeError("%s sent no ssdp:alive within %d s; its log:\n%s" % (self.name, timeout, self.log()))
        self.location = re.sub(r"//[^/:]+:", "//%s:" % netns.DAEMON_ADDRESS, seen[1]) if "127.0.0.1" in seen[1] \
            else seen[1]
        return seen[0] - self.started

    def check_alive(self, after):
        """Raises, with the exit status (a negative one names the signal) and the log's end, when the
        process has ended."""
        status = self.process.poll() if self.process is not None else None
        if status is not None:
            raise RuntimeError("%s ended (status %d) during %s; its log ends:\n%s" % (self.name, status, after,
                                                                                     self.log()))

    def log(self):
        try:
            with open(os.path.join(self.directory, "stderr.log"), "rb") as log:
                return log.read().decode(errors="replace")[-3000:]
        except OSError:
            return ""

    def stop(self):
        if self.process is None:
            return
        if self.process.poll() is None:
            self.process.send_signal(signal.SIGTERM)
            try:
                self.process.wait(10)
            except subprocess.TimeoutExpired:
                self.process.kill()
                self.process.wait()
        self.process = None
