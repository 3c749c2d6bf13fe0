"""The base of the integration test classes: one daemon per class, with its scratch directory and, when the
class asks for it, the media server with the tracks the tests play."""

import os
import shutil
import tempfile
import unittest

from . import media, soap
from .daemon import RendererDaemon

# The tracks every media-serving class gets: (file name, seconds).
TRACKS = (("tone.wav", 6), ("tone.flac", 6), ("first.wav", 4), ("second.flac", 4), ("third.wav", 4))


class RendererTestCase(unittest.TestCase):
    serves_media = False

    @classmethod
    def daemon_arguments(cls):
        """Options added after the daemon's usual ones (a later option wins)."""
        return ()

    @classmethod
    def setUpClass(cls):
        cls.scratch = tempfile.mkdtemp(prefix="open-renderer-it-")
        cls.addClassCleanup(shutil.rmtree, cls.scratch, True)
        if cls.serves_media:
            directory = os.path.join(cls.scratch, "media")
            os.makedirs(directory)
            for name, seconds in TRACKS:
                make = media.make_flac if name.endswith(".flac") else media.make_wav
                make(os.path.join(directory, name), seconds)
            cls.media = media.MediaServer(directory).start()
            cls.addClassCleanup(cls.media.stop)
        cls.daemon = RendererDaemon(os.path.join(cls.scratch, "state"), label=cls.__name__,
                                    extra_arguments=cls.daemon_arguments())
        cls.addClassCleanup(cls.daemon.stop)
        cls.location = cls.daemon.start()
        cls.description = soap.Description(cls.location)

    def tearDown(self):
        # A daemon that died during a test fails that test, whatever the test itself checked.
        status = self.daemon.process.poll()
        if status is not None:
            self.fail("the daemon exited with status %d during the test" % status)

    def soap_client(self, timeout=5.0):
        client = soap.SoapClient(self.location, timeout=timeout)
        self.addCleanup(client.close)
        return client
