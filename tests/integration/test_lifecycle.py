"""The daemon's life: a restart on the same state directory keeps the device's UDN, and SIGTERM or SIGINT
says byebye on the network and ends the process with status 0 within 2 seconds."""

import os
import signal
import sys
import time

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import runner, soap, ssdp  # noqa: E402
from harness.restarts import RestartingDaemonCase  # noqa: E402

SHUTDOWN_LIMIT = 2.0


class RestartAndShutdown(RestartingDaemonCase):
    def start(self, label):
        return self.start_daemon(label)

    def test_a_restart_on_the_same_state_directory_keeps_the_udn(self):
        first = self.start("first-run")
        udn = soap.Description(first.location).udn
        status, _ = first.signal_and_wait(signal.SIGTERM, timeout=5)
        self.assertEqual(status, 0)

        second = self.start("second-run")
        self.assertEqual(soap.Description(second.location).udn, udn)
        found = [r for r in ssdp.msearch(soap.MEDIA_RENDERER) if r.get("USN", "").startswith(udn)]
        self.assertTrue(found, "no M-SEARCH response with the kept UDN %s after the restart" % udn)

    def check_shutdown(self, signal_number):
        listener = ssdp.MulticastListener()
        self.addCleanup(listener.close)
        daemon = self.start(signal.Signals(signal_number).name)
        udn = soap.Description(daemon.location).udn
        status, took = daemon.signal_and_wait(signal_number, timeout=SHUTDOWN_LIMIT)
        self.assertIsNotNone(status, "still running %.0f s after %s" % (SHUTDOWN_LIMIT, signal_number.name))
        self.assertEqual(status, 0, "exit status after %s" % signal_number.name)
        print("%s: exited with 0 after %.3f s" % (signal_number.name, took))
        time.sleep(0.2)  # the byebyes left before the exit; give the listener's thread time to read them
        kinds = {headers.get("NT") for _, headers in listener.byebyes(udn)}
        for kind in ("upnp:rootdevice", udn, soap.MEDIA_RENDERER):
            self.assertIn(kind, kinds, "no ssdp:byebye for %s; byebyes seen: %r" % (kind, sorted(kinds)))

    def test_sigterm_says_byebye_and_exits_0_within_2_seconds(self):
        self.check_shutdown(signal.SIGTERM)

    def test_sigint_says_byebye_and_exits_0_within_2_seconds(self):
        self.check_shutdown(signal.SIGINT)


if __name__ == "__main__":
    runner.main(7)
