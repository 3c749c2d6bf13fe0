"""The GUPnP control point, driven from Python (python3-gi, GUPnP 1.6, GSSDP 1.6).

GUPnP does its network work on GLib's default main context; this module iterates that context whenever a
test waits (pump, pump_until), so that discovery, introspection and event callbacks run. Actions are called
synchronously with a cancellable on a timer, so that an action that is never answered fails the test
instead of hanging it.
"""

import threading
import time

import gi

gi.require_version("GLib", "2.0")
gi.require_version("GSSDP", "1.6")
gi.require_version("GUPnP", "1.6")
from gi.repository import Gio, GLib, GObject, GSSDP, GUPnP  # noqa: E402

from . import netns  # noqa: E402

CONTROL_ERROR_DOMAIN = "gupnp-control-error"


class Fault(Exception):
    """A SOAP fault: `code` is the UPnP error code, `description` its text."""

    def __init__(self, code, description):
        super().__init__("UPnP error %d %r" % (code, description))
        self.code = code
        self.description = description


class NotAnswered(Exception):
    """No SOAP answer: a timeout, a refused connection, or an HTTP error without a SOAP fault."""


def pump(seconds=0.0):
    """Runs GLib's default main context for `seconds` (at least once), as a main loop would: it sleeps in
    the context and wakes for each source that becomes ready. On purpose not a poll with sleeps: GUPnP's
    control point drops a NOTIFY that it reads before the answer to its SUBSCRIBE (it has no SID yet), and a
    poll that finds both waiting may dispatch them in that order although the answer arrived first."""
    context = GLib.MainContext.default()
    deadline = time.monotonic() + seconds
    while True:
        while context.pending():
            context.iteration(False)
        remaining = deadline - time.monotonic()
        if remaining <= 0:
            return
        wake = GLib.timeout_source_new(max(1, int(min(remaining, 0.05) * 1000)))
        wake.set_callback(lambda *_: False)
        wake.attach(context)
        context.iteration(True)
        wake.destroy()


def pump_until(predicate, timeout):
    """Runs the main context until predicate() holds; answers whether it did within `timeout` seconds."""
    deadline = time.monotonic() + timeout
    while not predicate():
        if time.monotonic() >= deadline:
            return False
        pump(0.01)
    return True


def new_context(interface=netns.CONTROL_INTERFACE):
    return GUPnP.Context.new_full(interface, None, 0, GSSDP.UDAVersion.VERSION_1_0)


class ControlPoint:
    """A GUPnP control point searching for one device or service type on the control points' interface."""

    def __init__(self, target, context=None):
        self.context = context or new_context()
        self.target = target
        self.control_point = GUPnP.ControlPoint.new(self.context, target)
        self.devices = []
        self.services = []
        self.control_point.connect("device-proxy-available", lambda _cp, proxy: self.devices.append(proxy))
        self.control_point.connect("service-proxy-available", lambda _cp, proxy: self.services.append(proxy))
        self.control_point.set_active(True)

    def wait_for_device(self, udn, timeout=10.0):
        found = pump_until(lambda: any(d.get_udn() == udn for d in self.devices), timeout)
        if not found:
            raise AssertionError("no device %s of type %s discovered within %.0f s (seen: %r)" % (
                udn, self.target, timeout, [d.get_udn() for d in self.devices]))
        return next(d for d in self.devices if d.get_udn() == udn)

    def wait_for_service(self, udn, timeout=10.0):
        found = pump_until(lambda: any(s.get_udn() == udn for s in self.services), timeout)
        if not found:
            raise AssertionError("no service %s on %s discovered within %.0f s (seen: %r)" % (
                self.target, udn, timeout, [s.get_udn() for s in self.services]))
        return next(s for s in self.services if s.get_udn() == udn)

    def close(self):
        self.control_point.set_active(False)
        pump(0.05)


def call(proxy, action, arguments=(), outputs=(), timeout=5.0):
    """Invokes `action` with the (name, text) pairs of `arguments` and answers the named string outputs as a
    dict. Raises Fault for a SOAP fault and NotAnswered for anything else."""
    names = [name for name, _ in arguments]
    values = [str(value) for _, value in arguments]
    request = GUPnP.ServiceProxyAction.new_from_list(action, names, values)
    cancellable = Gio.Cancellable()
    timer = threading.Timer(timeout, cancellable.cancel)
    timer.start()
    try:
        reply = proxy.call_action(request, cancellable)
    except GLib.Error as error:
        if cancellable.is_cancelled():
            raise NotAnswered("%s: no answer within %.1f s" % (action, timeout)) from None
        if error.domain == CONTROL_ERROR_DOMAIN:
            raise Fault(error.code, error.message) from None
        raise NotAnswered("%s: %s (%s %d)" % (action, error.message, error.domain, error.code)) from None
    finally:
        timer.cancel()
    if not outputs:
        return {}
    ok, result = reply.get_result_list(list(outputs), [GObject.TYPE_STRING] * len(outputs))
    if not ok:
        raise AssertionError("%s: the reply lacks some of %r" % (action, list(outputs)))
    return dict(zip(outputs, result))


class Subscription:
    """Every notification of the named variables of one service proxy, in arrival order, as
    (time.monotonic() when the main context delivered it, variable, value)."""

    def __init__(self, proxy, variables):
        self.proxy = proxy
        self.received = []
        self.lost = []
        for variable in variables:
            proxy.add_notify(variable, GObject.TYPE_STRING, self._notified, None)
        proxy.connect("subscription-lost", lambda _proxy, error: self.lost.append(error))
        proxy.set_subscribed(True)

    def _notified(self, _proxy, variable, value, *_user_data):
        self.received.append((time.monotonic(), variable, value))

    def values(self, variable):
        return [value for _, name, value in self.received if name == variable]

    def wait_for(self, predicate, timeout):
        """Pumps until predicate(variable, value) holds for a notification not yet seen by an earlier wait
        that matched; answers the value or None."""
        start = getattr(self, "_checked", 0)
        match = []

        def found():
            for index in range(start, len(self.received)):
                _, variable, value = self.received[index]
                if predicate(variable, value):
                    match.append((index, value))
                    return True
            return False

        if pump_until(found, timeout):
            self._checked = match[0][0] + 1
            return match[0][1]
        return None

    def close(self):
        self.proxy.set_subscribed(False)
        pump(0.05)


def introspect(proxy, timeout=10.0):
    """Reads the service's SCPD through GUPnP; answers the GUPnP.ServiceIntrospection."""
    outcome = []

    def done(source, result, _user_data):
        try:
            outcome.append(source.introspect_finish(result))
        except GLib.Error as error:
            outcome.append(error)

    proxy.introspect_async(None, done, None)
    service_type = proxy.get_service_type()
    if not pump_until(lambda: outcome, timeout):
        raise AssertionError("the SCPD of %s was not read within %.0f s" % (service_type, timeout))
    if isinstance(outcome[0], GLib.Error):
        raise AssertionError("the SCPD of %s cannot be read: %s" % (service_type, outcome[0].message))
    return outcome[0]
