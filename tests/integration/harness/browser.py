"""A headless Chromium driven through the DevTools protocol over a pipe (--remote-debugging-pipe): the browser
reads commands on its descriptor 3 and writes answers and events on its descriptor 4, each message JSON
ended by a NUL byte. Standard library only; no websocket, no port.

It runs inside the test's namespace like everything else, so whatever it might try to fetch on its own
finds no route out; the switches below also turn off its background traffic.
"""

import base64
import fcntl
import json
import os
import shutil
import subprocess
import tempfile
import threading
import time

SWITCHES = [
    "--headless=new", "--no-sandbox", "--remote-debugging-pipe", "--disable-gpu", "--no-first-run",
    "--no-default-browser-check", "--disable-extensions", "--disable-background-networking", "--disable-sync",
    "--disable-component-update", "--disable-default-apps", "--disable-breakpad", "--disable-domain-reliability",
    "--metrics-recording-only", "--mute-audio", "--hide-scrollbars", "--password-store=basic",
    "--use-mock-keychain", "--lang=en-US",
]


def _above_four(descriptor):
    moved = fcntl.fcntl(descriptor, fcntl.F_DUPFD_CLOEXEC, 10)
    os.close(descriptor)
    return moved


class BrowserError(AssertionError):
    """The browser is missing, died, or answered a command with an error."""


def executable():
    """Debian's Chromium, or None."""
    return shutil.which("chromium") or shutil.which("chromium-browser")


class Browser:
    def __init__(self, log_path, width=1200, height=900):
        self.log_path = log_path
        self.width, self.height = width, height
        self.process = None
        self.session = None
        self.events = []
        self._next_id = 0
        self._answers = {}
        self._condition = threading.Condition()
        self._profile = None

    def start(self):
        path = executable()
        if path is None:
            raise BrowserError("Chromium is not installed (Debian package chromium; scripts/install-deps.sh)")
        self._profile = tempfile.mkdtemp(prefix="open-renderer-chromium-")
        commands_read, self._commands = os.pipe()
        self._answers_pipe, answers_write = os.pipe()
        # The child's ends above 4, so that placing one on 3 or 4 can never overwrite the other.
        commands_read, answers_write = _above_four(commands_read), _above_four(answers_write)

        def descriptors_3_and_4():
            os.dup2(commands_read, 3)
            os.dup2(answers_write, 4)

        with open(self.log_path, "wb") as log:
            self.process = subprocess.Popen(
                [path, *SWITCHES, "--user-data-dir=" + self._profile,
                 "--window-size=%d,%d" % (self.width, self.height), "about:blank"],
                stdin=subprocess.DEVNULL, stdout=log, stderr=log, preexec_fn=descriptors_3_and_4,
                # Python opens every descriptor not inheritable: only 0 to 4 reach the browser.
                close_fds=False, start_new_session=True)
        os.close(commands_read)
        os.close(answers_write)
        self._reader = threading.Thread(target=self._read, name="devtools-reader", daemon=True)
        self._reader.start()
        target = self.command("Target.createTarget", {"url": "about:blank"}, session=False)["targetId"]
        self.session = self.command("Target.attachToTarget", {"targetId": target, "flatten": True},
                                    session=False)["sessionId"]
        self.command("Page.enable")
        self.command("Runtime.enable")
        self.set_viewport(self.width, self.height)
        return self

    def _read(self):
        buffer = b""
        while True:
            try:
                chunk = os.read(self._answers_pipe, 1 << 16)
            except OSError:
                chunk = b""
            if not chunk:
                with self._condition:
                    self._answers[None] = "closed"
                    self._condition.notify_all()
                return
            buffer += chunk
            while b"\0" in buffer:
                message, buffer = buffer.split(b"\0", 1)
                decoded = json.loads(message)
                with self._condition:
                    if "id" in decoded:
                        self._answers[decoded["id"]] = decoded
                    else:
                        self.events.append(decoded)
                    self._condition.notify_all()

    def command(self, method, params=None, session=True, timeout=15.0):
        """Sends one command and answers its result; raises BrowserError for an error answer."""
        with self._condition:
            self._next_id += 1
            number = self._next_id
        message = {"id": number, "method": method, "params": params or {}}
        if session:
            message["sessionId"] = self.session
        try:
            os.write(self._commands, json.dumps(message).encode() + b"\0")
        except OSError as error:
            raise BrowserError("the browser no longer reads commands: %s" % error) from error
        deadline = time.monotonic() + timeout
        with self._condition:
            while number not in self._answers:
                remaining = deadline - time.monotonic()
                if None in self._answers or remaining <= 0:
                    raise BrowserError("no answer to %s (%s)" % (
                        method, "the browser exited" if None in self._answers else "timeout"))
                self._condition.wait(remaining)
            answer = self._answers.pop(number)
        if "error" in answer:
            raise BrowserError("%s answered %r" % (method, answer["error"]))
        return answer.get("result", {})

    def set_viewport(self, width, height):
        self.command("Emulation.setDeviceMetricsOverride",
                     {"width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def navigate(self, url, timeout=15.0):
        """Loads `url` and waits for its load event."""
        with self._condition:
            seen = len(self.events)
        answer = self.command("Page.navigate", {"url": url})
        if answer.get("errorText"):
            raise BrowserError("loading %s failed: %s" % (url, answer["errorText"]))
        deadline = time.monotonic() + timeout
        with self._condition:
            while not any(event.get("method") == "Page.loadEventFired" for event in self.events[seen:]):
                remaining = deadline - time.monotonic()
                if remaining <= 0:
                    raise BrowserError("%s did not finish loading within %.0f s" % (url, timeout))
                self._condition.wait(remaining)

    def evaluate(self, expression):
        """The value of a JavaScript expression in the page (JSON-serialisable values only)."""
        answer = self.command("Runtime.evaluate", {"expression": expression, "returnByValue": True})
        if "exceptionDetails" in answer:
            raise BrowserError("%s threw %r" % (expression, answer["exceptionDetails"].get("text")))
        return answer["result"].get("value")

    def wait_for(self, expression, predicate, timeout):
        """Evaluates `expression` every 100 ms until predicate(value) holds; answers the last value and
        whether it held."""
        deadline = time.monotonic() + timeout
        while True:
            value = self.evaluate(expression)
            if predicate(value):
                return value, True
            if time.monotonic() > deadline:
                return value, False
            time.sleep(0.1)

    def navigations(self):
        """How many times the main frame was loaded since Page.enable."""
        with self._condition:
            return sum(1 for event in self.events
                       if event.get("method") == "Page.frameNavigated"
                       and not event["params"]["frame"].get("parentId"))

    def screenshot(self, path):
        """A PNG of the whole page (the viewport grown to the page's height)."""
        height = self.evaluate("Math.ceil(document.documentElement.scrollHeight)")
        self.set_viewport(self.width, max(int(height or self.height), 100))
        data = self.command("Page.captureScreenshot", {"format": "png"})["data"]
        with open(path, "wb") as image:
            image.write(base64.b64decode(data))
        self.set_viewport(self.width, self.height)

    def close(self):
        if self.process is not None and self.process.poll() is None:
            try:
                self.command("Browser.close", session=False, timeout=3.0)
            except BrowserError:
                pass
            try:
                self.process.wait(timeout=5)
            except subprocess.TimeoutExpired:
                os.killpg(self.process.pid, 9)
                self.process.wait()
        if getattr(self, "_reader", None) is not None:
            self._reader.join(timeout=5)  # the browser's end closed: the reader sees the end
        for descriptor in ("_commands", "_answers_pipe"):
            if hasattr(self, descriptor):
                try:
                    os.close(getattr(self, descriptor))
                except OSError:
                    pass
                delattr(self, descriptor)
        if self._profile:
            shutil.rmtree(self._profile, ignore_errors=True)
            self._profile = None
