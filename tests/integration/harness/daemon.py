"""Starting and stopping the renderer daemon inside the test's namespace, its stderr kept as an artifact.

The daemon's command line is its contract:
  open-renderer --interface IFACE --port PORT --output null --state-dir DIR --name NAME
                [--config FILE] [--verbose]
It logs one line per event to stderr and, once announced, a line with "ready" and its description URL.
"""

import re
import signal
import subprocess
import time

from . import artifacts, netns, runner

PORT = 49152
READY_LINE = re.compile(r"ready.*?(http://[^\s\"'<>]+\.xml)")


class DaemonFailed(AssertionError):
    """The daemon exited or never said it was ready; the message carries its stderr."""


class RendererDaemon:
    def __init__(self, state_dir, name="Integration Renderer", port=PORT, label="daemon", extra_arguments=()):
        self.state_dir = state_dir
        self.name = name
        self.port = port
        self.label = label
        self.extra_arguments = list(extra_arguments)
        self.process = None
        self.location = None
        self.log_path = None

    @property
    def arguments(self):
        return [runner.daemon_path(), "--interface", netns.DAEMON_INTERFACE, "--port", str(self.port),
                "--output", "null", "--state-dir", self.state_dir, "--name", self.name, "--verbose",
                *self.extra_arguments]

    def start(self, ready_timeout=15.0):
        """Starts the daemon and waits for its "ready" line; answers the description URL it announced."""
        self.log_path = artifacts.new_daemon_log(self.label)
        with open(self.log_path, "wb") as log:
            log.write(("# %s\n" % " ".join(self.arguments)).encode())
            log.flush()
            self.process = subprocess.Popen(self.arguments, stdout=log, stderr=log, stdin=subprocess.DEVNULL)
        self.location = self._wait_for_ready(ready_timeout)
        return self.location

    def _wait_for_ready(self, timeout):
        deadline = time.monotonic() + timeout
        while True:
            for line in self.log().splitlines():
                match = READY_LINE.search(line)
                if match:
                    return match.group(1)
            status = self.process.poll()
            if status is not None:
                raise DaemonFailed("the daemon exited with status %d before it was ready:\n%s" %
                                   (status, self.log()))
            if time.monotonic() > deadline:
                self.kill()
                raise DaemonFailed("no \"ready\" line with a description URL within %.0f s:\n%s" %
                                   (timeout, self.log()))
            time.sleep(0.02)

    def log(self):
        try:
            with open(self.log_path, "rb") as log:
                return log.read().decode(errors="replace")
        except (OSError, TypeError):
            return ""

    def running(self):
        return self.process is not None and self.process.poll() is None

    def signal_and_wait(self, signal_number=signal.SIGTERM, timeout=2.0):
        """Sends the signal and waits for the exit with waitpid. Answers (exit status, seconds it took);
        the status is None when the daemon was still running at the timeout (it is then killed)."""
        started = time.monotonic()
        self.process.send_signal(signal_number)
        try:
            status = self.process.wait(timeout=timeout)
        except subprocess.TimeoutExpired:
            status = None
            self.kill()
        return status, time.monotonic() - started

    def stop(self):
        """Ends the daemon as an operator would (SIGTERM), killing it if it does not end in 5 s."""
        if self.running():
            self.signal_and_wait(signal.SIGTERM, timeout=5.0)

    def kill(self):
        if self.running():
            self.process.kill()
            self.process.wait()

