"""A raw SOAP client on Python's http.client, for what a control point library hides: exact HTTP status codes,
malformed bodies, other methods, one keep-alive connection. Also reads the device and service descriptions."""

import http.client
import urllib.parse
import xml.etree.ElementTree as ElementTree
from xml.sax.saxutils import escape

SOAP_NS = "http://schemas.xmlsoap.org/soap/envelope/"
CONTROL_NS = "urn:schemas-upnp-org:control-1-0"
DEVICE_NS = "urn:schemas-upnp-org:device-1-0"
SERVICE_NS = "urn:schemas-upnp-org:service-1-0"

AVTRANSPORT = "urn:schemas-upnp-org:service:AVTransport:1"
CONNECTION_MANAGER = "urn:schemas-upnp-org:service:ConnectionManager:1"
RENDERING_CONTROL = "urn:schemas-upnp-org:service:RenderingControl:1"
OPENHOME = "urn:av-openhome-org:service:%s:1"
PLAYLIST = OPENHOME % "Playlist"
MEDIA_RENDERER = "urn:schemas-upnp-org:device:MediaRenderer:1"

SERVICE_TYPES = [AVTRANSPORT, CONNECTION_MANAGER, RENDERING_CONTROL] + [
    OPENHOME % name for name in ("Product", "Playlist", "Time", "Info", "Volume", "Sender")]


def envelope(service_type, action, arguments=()):
    """The body of an action request; `arguments` is a sequence of (name, text) pairs, sent in that order."""
    body = "".join("<%s>%s</%s>" % (name, escape(str(value)), name) for name, value in arguments)
    return ('<?xml version="1.0" encoding="utf-8"?>'
            '<s:Envelope xmlns:s="%s" s:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">'
            '<s:Body><u:%s xmlns:u="%s">%s</u:%s></s:Body></s:Envelope>'
            % (SOAP_NS, action, service_type, body, action)).encode()


class Reply:
    """One HTTP answer to an action: status, headers, body, and what its SOAP envelope says."""

    def __init__(self, status, reason, headers, body, will_close):
        self.status = status
        self.reason = reason
        self.headers = headers
        self.body = body
        self.will_close = will_close
        self.outputs = {}
        self.fault_code = None
        self.fault_description = None
        self.soap = False
        try:
            root = ElementTree.fromstring(body)
        except ElementTree.ParseError:
            return
        soap_body = root.find("{%s}Body" % SOAP_NS)
        if root.tag != "{%s}Envelope" % SOAP_NS or soap_body is None:
            return
        self.soap = True
        error = soap_body.find("{%s}Fault/detail/{%s}UPnPError" % (SOAP_NS, CONTROL_NS))
        if error is None:  # some stacks leave the UPnPError element without its namespace
            error = soap_body.find("{%s}Fault/detail/UPnPError" % SOAP_NS)
        if error is not None:
            self.fault_code = int(_child_text(error, "errorCode"))
            self.fault_description = _child_text(error, "errorDescription")
            return
        for response in soap_body:
            for argument in response:
                self.outputs[argument.tag.split("}")[-1]] = argument.text or ""

    @property
    def is_fault(self):
        return self.fault_code is not None

    def __repr__(self):
        return "<Reply HTTP %d %s, fault %r %r, outputs %r>" % (self.status, self.reason, self.fault_code,
                                                                 self.fault_description, self.outputs)


def _child_text(element, name):
    for child in element:
        if child.tag.split("}")[-1] == name:
            return child.text or ""
    return None


class SoapClient:
    """Actions on one HTTP/1.1 connection kept alive between requests (http.client reopens it silently
    when the server closes it; `connections` counts how often a connection was opened)."""

    def __init__(self, base_url, timeout=5.0):
        parts = urllib.parse.urlsplit(base_url)
        self.host, self.port = parts.hostname, parts.port or 80
        self.timeout = timeout
        self.connection = None
        self.connections = 0

    def _connection(self):
        if self.connection is None or self.connection.sock is None:
            if self.connection is not None:
                self.connection.close()
            self.connection = http.client.HTTPConnection(self.host, self.port, timeout=self.timeout)
            self.connection.connect()
            self.connections += 1
        return self.connection

    def request(self, method, path, body=None, headers=None):
        connection = self._connection()
        connection.request(method, path, body=body, headers=headers or {})
        response = connection.getresponse()
        data = response.read()
        reply = Reply(response.status, response.reason, dict(response.getheaders()), data,
                      response.will_close)
        if response.will_close:
            connection.close()
        return reply

    def call(self, control_path, service_type, action, arguments=(), soap_action=None, body=None):
        """Invokes `action`; `soap_action` and `body` replace the SOAPACTION header and the envelope."""
        headers = {"Content-Type": 'text/xml; charset="utf-8"',
                   "SOAPACTION": soap_action or '"%s#%s"' % (service_type, action)}
        return self.request("POST", control_path, envelope(service_type, action, arguments) if body is None
                            else body, headers)

    def close(self):
        if self.connection is not None:
            self.connection.close()
            self.connection = None


def fetch(url, timeout=5.0):
    parts = urllib.parse.urlsplit(url)
    connection = http.client.HTTPConnection(parts.hostname, parts.port or 80, timeout=timeout)
    try:
        connection.request("GET", parts.path or "/")
        response = connection.getresponse()
        body = response.read()
        if response.status != 200:
            raise AssertionError("GET %s answered HTTP %d" % (url, response.status))
        return body
    finally:
        connection.close()


class Argument:
    def __init__(self, name, direction, variable):
        self.name, self.direction, self.variable = name, direction, variable


class StateVariable:
    def __init__(self, name, data_type, evented, allowed, minimum, maximum):
        self.name, self.data_type, self.evented = name, data_type, evented
        self.allowed, self.minimum, self.maximum = allowed, minimum, maximum


class Service:
    """One service of the description; after read_scpd its actions (name → arguments in order) and
    variables (name → StateVariable)."""

    def __init__(self, service_type, service_id, scpd_url, control_url, event_url):
        self.service_type, self.service_id = service_type, service_id
        self.scpd_url, self.control_url, self.event_url = scpd_url, control_url, event_url
        self.actions = {}
        self.variables = {}

    @property
    def control_path(self):
        return urllib.parse.urlsplit(self.control_url).path

    def read_scpd(self):
        root = ElementTree.fromstring(fetch(self.scpd_url))
        ns = {"s": SERVICE_NS}
        for action in root.findall("s:actionList/s:action", ns):
            self.actions[action.findtext("s:name", "", ns)] = [
                Argument(a.findtext("s:name", "", ns), a.findtext("s:direction", "", ns),
                         a.findtext("s:relatedStateVariable", "", ns))
                for a in action.findall("s:argumentList/s:argument", ns)]
        for variable in root.findall("s:serviceStateTable/s:stateVariable", ns):
            self.variables[variable.findtext("s:name", "", ns)] = StateVariable(
                variable.findtext("s:name", "", ns), variable.findtext("s:dataType", "", ns),
                variable.get("sendEvents", "no") == "yes",
                [v.text or "" for v in variable.findall("s:allowedValueList/s:allowedValue", ns)],
                variable.findtext("s:allowedValueRange/s:minimum", None, ns),
                variable.findtext("s:allowedValueRange/s:maximum", None, ns))
        return self


class Description:
    """The root device's description: its type, UDN and services, with absolute URLs."""

    def __init__(self, location):
        self.location = location
        self.xml = fetch(location)
        root = ElementTree.fromstring(self.xml)
        ns = {"d": DEVICE_NS}
        base = root.findtext("d:URLBase", "", ns) or location
        device = root.find("d:device", ns)
        self.device_type = device.findtext("d:deviceType", "", ns)
        self.udn = device.findtext("d:UDN", "", ns)
        self.friendly_name = device.findtext("d:friendlyName", "", ns)
        self.services = {}
        for service in device.findall("d:serviceList/d:service", ns):
            service_type = service.findtext("d:serviceType", "", ns)
            self.services[service_type] = Service(
                service_type, service.findtext("d:serviceId", "", ns),
                urllib.parse.urljoin(base, service.findtext("d:SCPDURL", "", ns)),
                urllib.parse.urljoin(base, service.findtext("d:controlURL", "", ns)),
                urllib.parse.urljoin(base, service.findtext("d:eventSubURL", "", ns)))

    def service(self, service_type):
        return self.services[service_type]
