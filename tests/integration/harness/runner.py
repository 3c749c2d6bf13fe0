"""The entry point of every integration test file.

Run by CTest as `python3 test_x.py`, a file first makes its private network namespace (netns.py), then runs
itself again inside it with `ip netns exec`, where its unittest cases start the daemon and the control points.
The outer process owns the namespace: it deletes it when the inner run ends, fails or overruns its time.

Exit status: 0 passed, 1 failed, 77 skipped (CTest's SKIP_RETURN_CODE): no namespaces can be made here (not
root), or the daemon is not part of this build.

Environment (set by tests/integration/CMakeLists.txt):
  OPEN_RENDERER_DAEMON           the daemon's executable
  OPEN_RENDERER_DAEMON_REQUIRED  "1" when the build has the daemon, so that a missing file fails, not skips
  OPEN_RENDERER_ARTIFACTS        where each test file keeps the daemon's stderr when it fails
  OPEN_RENDERER_TEST_TIMEOUT     seconds the inner run may take (below CTest's own timeout)
"""

import os
import shutil
import signal
import subprocess
import sys
import time
import unittest

from . import artifacts, netns

SKIP_RETURN_CODE = 77
INSIDE_VARIABLE = "OPEN_RENDERER_INSIDE_NAMESPACE"


def daemon_path():
    return os.environ.get("OPEN_RENDERER_DAEMON", "")


def main(number):
    """Runs the calling test file; `number` tells its namespace from the other test files' ones."""
    if os.environ.get(INSIDE_VARIABLE):
        sys.exit(_run_tests())
    sys.exit(_run_in_namespace(number))


def _skip(reason):
    print("SKIP: " + reason, flush=True)
    return SKIP_RETURN_CODE


def _run_in_namespace(number):
    daemon = daemon_path()
    if not (daemon and os.access(daemon, os.X_OK)):
        if os.environ.get("OPEN_RENDERER_DAEMON_REQUIRED") == "1":
            print("FAIL: the daemon %r is part of this build but not built" % daemon, flush=True)
            return 1
        return _skip("the renderer daemon is not part of this build (%r)" % daemon)
    if os.geteuid() != 0:
        return _skip("these tests make a private network namespace, which needs root")

    test_directory = artifacts.directory()
    shutil.rmtree(test_directory, ignore_errors=True)
    os.makedirs(test_directory, exist_ok=True)

    netns.reap_stale_namespaces()
    namespace = netns.Namespace(number)
    # A SIGTERM or SIGINT (a test runner giving up) still deletes the namespace and what runs in it.
    for signal_number in (signal.SIGTERM, signal.SIGINT):
        signal.signal(signal_number, _raise_interrupt)
    try:
        namespace.create()
    except netns.NamespaceUnavailable as error:
        return _skip(str(error))

    status = 1
    started = time.monotonic()
    try:
        environment = dict(os.environ, **{INSIDE_VARIABLE: namespace.name})
        inner = subprocess.Popen(namespace.command([sys.executable, *sys.argv]), env=environment,
                                 start_new_session=True)
        budget = float(os.environ.get("OPEN_RENDERER_TEST_TIMEOUT", "110"))
        try:
            status = inner.wait(timeout=budget)
        except subprocess.TimeoutExpired:
            print("FAIL: the tests did not finish within %.0f s" % budget, flush=True)
            os.killpg(inner.pid, signal.SIGKILL)
            inner.wait()
            status = 1
        except KeyboardInterrupt:
            os.killpg(inner.pid, signal.SIGKILL)
            inner.wait()
            raise
    finally:
        namespace.delete()
        print("%s: %.1f s in namespace %s" % (os.path.basename(sys.argv[0]), time.monotonic() - started,
                                              namespace.name), flush=True)
    if status == 0:
        shutil.rmtree(test_directory, ignore_errors=True)
    else:
        print("the daemon's stderr is kept in %s" % test_directory, flush=True)
    return status


def _raise_interrupt(signal_number, frame):
    raise KeyboardInterrupt("signal %d" % signal_number)


class _TimedResult(unittest.TextTestResult):
    """Prints how long each test took, so that the suite's time can be read from CTest's log."""

    def startTest(self, test):
        self._started = time.monotonic()
        super().startTest(test)

    def stopTest(self, test):
        super().stopTest(test)
        self.stream.writeln("    (%.2f s) %s" % (time.monotonic() - self._started, test.id()))
        self.stream.flush()


def _run_tests():
    runner = unittest.TextTestRunner(verbosity=2, resultclass=_TimedResult, stream=sys.stdout)
    program = unittest.main(module="__main__", argv=sys.argv, exit=False, testRunner=runner)
    result = program.result
    if not result.wasSuccessful():
        artifacts.print_daemon_logs()
        return 1
    return 0
