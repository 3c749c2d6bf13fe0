"""A private network namespace per test run: the daemon and every control point live in it, nothing leaves it.

Layout inside the namespace "or<N>-<pid>":
  lo                       up, so that the daemon may also be reached on 127.0.0.1
  or0  10.203.0.1/24       the daemon's side; the SSDP multicast group is routed through it
  or1  10.203.0.2/24       the control points' side; the media server listens here
Both ends of the veth pair are inside the namespace, so multicast sent on one end arrives on the other and
unicast between the two addresses stays local. IPv6 is off so that no address is tentative and no second
family of SSDP traffic appears.
"""

import os
import re
import signal
import subprocess
import time

DAEMON_INTERFACE = "or0"
DAEMON_ADDRESS = "10.203.0.1"
CONTROL_INTERFACE = "or1"
CONTROL_ADDRESS = "10.203.0.2"
SSDP_GROUP = "239.255.255.250"
SSDP_PORT = 1900

NAME_PATTERN = re.compile(r"^or(\d+)-(\d+)$")


class NamespaceUnavailable(Exception):
    """Namespaces cannot be made here (not root, or no permission in this container)."""


def _ip(*arguments, check=True):
    return subprocess.run(["ip", *arguments], check=check, capture_output=True, text=True, timeout=20)


def _process_alive(pid):
    try:
        os.kill(pid, 0)
    except ProcessLookupError:
        return False
    except PermissionError:
        return True
    return True


def _kill_processes_in(name):
    result = _ip("netns", "pids", name, check=False)
    for line in result.stdout.split():
        try:
            os.kill(int(line), signal.SIGKILL)
        except (ValueError, ProcessLookupError):
            pass


def reap_stale_namespaces():
    """Deletes the namespaces of earlier runs whose test process is gone (a run killed by a timeout cannot
    clean up after itself); the processes left inside them were started by those runs."""
    result = _ip("netns", "list", check=False)
    for line in result.stdout.splitlines():
        name = line.split(" ")[0]
        match = NAME_PATTERN.match(name)
        if match and not _process_alive(int(match.group(2))):
            _kill_processes_in(name)
            _ip("netns", "delete", name, check=False)


class Namespace:
    def __init__(self, number):
        self.name = "or%d-%d" % (number, os.getpid())

    def create(self):
        if os.geteuid() != 0:
            raise NamespaceUnavailable("network namespaces need root (uid %d)" % os.geteuid())
        try:
            _ip("netns", "add", self.name)
        except FileNotFoundError as error:
            raise NamespaceUnavailable("the ip command (iproute2) is missing") from error
        except subprocess.CalledProcessError as error:
            raise NamespaceUnavailable("ip netns add failed: %s" % error.stderr.strip()) from error
        try:
            self._configure()
        except BaseException:
            self.delete()
            raise

    def _configure(self):
        n = self.name
        _ip("-n", n, "link", "set", "lo", "up")
        _ip("-n", n, "link", "add", DAEMON_INTERFACE, "type", "veth", "peer", "name", CONTROL_INTERFACE)
        self.sysctl("net.ipv6.conf.all.disable_ipv6=1", "net.ipv6.conf.default.disable_ipv6=1")
        for interface, address in ((DAEMON_INTERFACE, DAEMON_ADDRESS), (CONTROL_INTERFACE, CONTROL_ADDRESS)):
            _ip("-n", n, "addr", "add", address + "/24", "dev", interface)
            _ip("-n", n, "link", "set", interface, "up", "multicast", "on")
        _ip("-n", n, "route", "add", SSDP_GROUP + "/32", "dev", DAEMON_INTERFACE)
        # Packets between the two ends carry a source address that is local to the namespace: accept them.
        settings = ["net.ipv4.conf.all.rp_filter=0", "net.ipv4.conf.all.accept_local=1"]
        for interface in (DAEMON_INTERFACE, CONTROL_INTERFACE):
            settings += ["net.ipv4.conf.%s.rp_filter=0" % interface,
                         "net.ipv4.conf.%s.accept_local=1" % interface]
        self.sysctl(*settings)
        self._wait_until_up()

    def sysctl(self, *settings):
        """Sets kernel parameters ("net.ipv4.conf.all.rp_filter=0") as seen inside the namespace: a process
        in it sees the namespace's own /proc/sys/net."""
        script = "".join("echo %s > /proc/sys/%s\n" % (value, name.replace(".", "/"))
                         for name, value in (setting.split("=") for setting in settings))
        subprocess.run(["ip", "netns", "exec", self.name, "sh", "-e", "-c", script], check=True,
                       capture_output=True, timeout=20)

    def _wait_until_up(self):
        deadline = time.monotonic() + 5
        while time.monotonic() < deadline:
            links = _ip("-n", self.name, "-o", "link", "show").stdout
            if all(re.search(r"\d+: %s@\S+: <[^>]*LOWER_UP" % i, links)
                   for i in (DAEMON_INTERFACE, CONTROL_INTERFACE)):
                return
            time.sleep(0.05)
        raise RuntimeError("the veth pair of %s did not come up" % self.name)

    def command(self, arguments):
        return ["ip", "netns", "exec", self.name, *arguments]

    def delete(self):
        _kill_processes_in(self.name)
        _ip("netns", "delete", self.name, check=False)
