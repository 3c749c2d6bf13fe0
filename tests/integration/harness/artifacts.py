"""Where a test file keeps what it leaves behind: the daemon's stderr of every daemon it started."""

import os
import sys
import tempfile

_daemon_logs = []


def directory():
    root = os.environ.get("OPEN_RENDERER_ARTIFACTS") or os.path.join(tempfile.gettempdir(),
                                                                      "open-renderer-integration")
    return os.path.join(root, os.path.splitext(os.path.basename(sys.argv[0]))[0])


def new_daemon_log(label):
    """A fresh file for one daemon's stderr, remembered so that a failed run can show it."""
    os.makedirs(directory(), exist_ok=True)
    path = os.path.join(directory(), "%02d-%s.stderr" % (len(_daemon_logs) + 1, label))
    _daemon_logs.append(path)
    return path


def print_daemon_logs():
    for path in _daemon_logs:
        print("----- %s -----" % path)
        try:
            with open(path, errors="replace") as log:
                sys.stdout.write(log.read())
        except OSError as error:
            print("(cannot read: %s)" % error)
        print("----- end of %s -----" % os.path.basename(path), flush=True)
