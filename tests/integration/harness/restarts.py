"""The base of the test classes that start the daemon more than once on one state directory (restarts):
each test gets a scratch directory of its own, removed afterwards, and every daemon it starts is killed at
the end if it still runs."""

import os
import shutil
import tempfile
import unittest

from .daemon import RendererDaemon


class RestartingDaemonCase(unittest.TestCase):
    def setUp(self):
        self.scratch = tempfile.mkdtemp(prefix="open-renderer-it-")
        self.addCleanup(shutil.rmtree, self.scratch, True)
        self.state_dir = os.path.join(self.scratch, "state")

    def start_daemon(self, label):
        daemon = RendererDaemon(self.state_dir, label=label)
        self.addCleanup(daemon.kill)
        daemon.start()
        return daemon
