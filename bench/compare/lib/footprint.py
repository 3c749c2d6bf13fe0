"""Size on disk and memory by library of a running renderer, read from the files it maps."""

import os
import subprocess
import tempfile

from . import process

CATEGORIES = (
    ("GLib", ("libglib-", "libgobject-", "libgio-", "libgmodule-", "libgthread-")),
    ("libsoup", ("libsoup-",)),
    ("GUPnP/GSSDP", ("libgupnp-", "libgssdp-")),
    ("GStreamer", ("libgst", "/gstreamer-1.0/", "liborc-")),
    ("libupnp/ixml", ("libupnp", "libixml")),
    ("Rygel", ("librygel", "rygel-2.8", "libgee-", "libgupnp-av", "libgupnp-dlna", "libmediaart")),
    ("libxml2", ("libxml2",)),
    ("C/C++ runtime", ("libc.so", "libstdc++", "libm.so", "libgcc_s", "ld-linux")),
)


def mapped_files(pid):
    files = set()
    with open("/proc/%d/maps" % pid) as maps:
        for line in maps:
            fields = line.split()
            if len(fields) >= 6 and fields[5].startswith("/") and (".so" in fields[5] or os.access(fields[5], os.X_OK)):
                files.add(fields[5])
    return files


def stripped_size(path):
    with tempfile.NamedTemporaryFile() as copy:
        result = subprocess.run(["strip", "-o", copy.name, path], capture_output=True)
        return os.path.getsize(copy.name) if result.returncode == 0 else os.path.getsize(path)


def sizes(files, shared):
    """(KiB of `files` not in `shared`, KiB of all `files`), each file stripped."""
    own = total = 0
    for path in files:
        size = stripped_size(path)
        total += size
        if path not in shared:
            own += size
    return own // 1024, total // 1024


def category(path, build):
    if path.startswith(build):
        return "ours (daemon, plug-in, runtime)"
    if path.startswith("["):
        return "heap, stacks, anonymous"
    for name, patterns in CATEGORIES:
        if any(pattern in path for pattern in patterns):
            return name
    if "/bin/" in path:
        return "the program"
    return "other libraries"


def breakdown(pid, build):
    """VmRSS in KiB by category (GLib, libsoup, GStreamer, ours, heap...): resident pages counted whole,
    as VmRSS counts them, so that it does not depend on what else runs on the machine."""
    groups = {}
    for path, kb in process.smaps_by_library(pid).items():
        key = category(path, build)
        groups[key] = groups.get(key, 0) + kb
    return groups
