"""UPnP errors as a raw HTTP client sees them: SOAP faults with the exact codes and texts, HTTP errors for
what is not an action, and malformed requests refused without being executed."""

import http.client
import os
import re
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

AVT = soap.AVTRANSPORT
LOG_LINE = re.compile(r"^(debug|info|warning|error): ")


class UPnPErrorsAsSoapFaults(RendererTestCase):
    serves_media = True

    def setUp(self):
        self.client = self.soap_client()
        self.avtransport = self.description.service(AVT).control_path
        self.connection_manager = self.description.service(soap.CONNECTION_MANAGER).control_path

    def assertFault(self, reply, code, description):
        self.assertEqual(reply.status, 500, reply)
        self.assertTrue(reply.soap, "not a SOAP envelope: %r" % reply.body[:300])
        self.assertEqual((reply.fault_code, reply.fault_description), (code, description), reply)

    def test_an_unknown_action_is_fault_401_invalid_action(self):
        reply = self.client.call(self.avtransport, AVT, "Fly", [("InstanceID", "0")])
        self.assertFault(reply, 401, "Invalid Action")

    def test_an_action_name_in_the_wrong_case_is_fault_401_invalid_action(self):
        reply = self.client.call(self.avtransport, AVT, "play", [("InstanceID", "0"), ("Speed", "1")])
        self.assertFault(reply, 401, "Invalid Action")

    def test_a_missing_argument_is_fault_402_invalid_args(self):
        reply = self.client.call(self.avtransport, AVT, "Play", [("InstanceID", "0")])
        self.assertFault(reply, 402, "Invalid Args")

    def test_instance_id_1_is_fault_718_invalid_instance_id(self):
        reply = self.client.call(self.avtransport, AVT, "Stop", [("InstanceID", "1")])
        self.assertFault(reply, 718, "Invalid InstanceID")

    def test_connection_id_7_is_fault_706_invalid_connection_reference(self):
        reply = self.client.call(self.connection_manager, soap.CONNECTION_MANAGER, "GetCurrentConnectionInfo",
                                 [("ConnectionID", "7")])
        self.assertFault(reply, 706, "Invalid connection reference")

    def test_an_unknown_control_path_is_an_http_error(self):
        # The document root is served at "/", so a POST elsewhere reaches the file server, which does not
        # take POST (501); a GET of the same path is 404. Either way: an HTTP error, at once.
        reply = self.client.call("/no/such/control", AVT, "GetTransportInfo", [("InstanceID", "0")])
        self.assertIn(reply.status, (404, 405, 501), reply)
        self.assertFalse(reply.soap, reply)

    def test_get_and_every_other_method_on_a_control_url_is_an_http_error_at_once(self):
        for method in ("GET", "HEAD", "PUT", "DELETE", "OPTIONS", "SUBSCRIBE"):
            with self.subTest(method=method):
                connection = http.client.HTTPConnection(self.client.host, self.client.port, timeout=5)
                try:
                    connection.request(method, self.avtransport)
                    response = connection.getresponse()
                    response.read()
                except (OSError, http.client.HTTPException) as error:
                    self.fail("%s %s: no HTTP answer within 5 s: %r" % (method, self.avtransport, error))
                finally:
                    connection.close()
                self.assertTrue(400 <= response.status < 600,
                                "%s answered HTTP %d" % (method, response.status))

    def current_uri(self):
        reply = self.client.call(self.avtransport, AVT, "GetMediaInfo", [("InstanceID", "0")])
        self.assertEqual(reply.status, 200, reply)
        return reply.outputs["CurrentURI"]

    def set_uri_then_send(self, body):
        """Sets a known URI, then sends `body` as a SetAVTransportURI request; answers the reply."""
        known = self.media.url("tone.wav")
        reply = self.client.call(self.avtransport, AVT, "SetAVTransportURI",
                                 [("InstanceID", "0"), ("CurrentURI", known), ("CurrentURIMetaData", "")])
        self.assertEqual(reply.status, 200, reply)
        self.assertEqual(self.current_uri(), known)
        return self.client.call(self.avtransport, AVT, "SetAVTransportURI", body=body)

    def assertRefusedWithoutEffect(self, reply):
        self.assertTrue(reply.soap and reply.is_fault,
                        "not a SOAP fault: HTTP %d %r" % (reply.status, reply.body[:300]))
        self.assertEqual(reply.status, 500, reply)
        self.assertGreaterEqual(reply.fault_code, 400, reply)
        self.assertEqual(self.current_uri(), self.media.url("tone.wav"), "the refused request was executed")

    def test_a_truncated_body_is_a_fault_and_is_not_executed(self):
        whole = soap.envelope(AVT, "SetAVTransportURI", [
            ("InstanceID", "0"), ("CurrentURI", self.media.url("tone.flac")), ("CurrentURIMetaData", "")])
        # Cut right after the new URI: a forgiving parser would still find the action with both arguments.
        truncated = whole[:whole.index(b"</CurrentURI>") + len(b"</CurrentURI>")]
        self.assertRefusedWithoutEffect(self.set_uri_then_send(truncated))

    def test_a_body_that_is_not_xml_is_refused_and_is_not_executed(self):
        # With no action element to be found, the UPnP stack refuses the request itself (HTTP 412) before
        # any action handler runs; what matters is that nothing is executed.
        body = b"InstanceID=0&CurrentURI=http://127.0.0.1:9/x.wav"
        reply = self.set_uri_then_send(body)
        if reply.soap:
            self.assertRefusedWithoutEffect(reply)
        else:
            self.assertGreaterEqual(reply.status, 400, reply)
            self.assertEqual(self.current_uri(), self.media.url("tone.wav"), "the refused request was executed")

    def test_malformed_bodies_are_logged_in_lines_that_begin_with_a_level(self):
        logged_before = len(self.daemon.log().splitlines())
        self.client.call(self.avtransport, AVT, "SetAVTransportURI", body=b"<s:Envelope><s:Body><u:SetAV")
        self.client.call(self.avtransport, AVT, "SetAVTransportURI", body=b"not XML at all")
        self.current_uri()  # one more action, so that whatever the malformed requests logged is written
        lines = self.daemon.log().splitlines()[logged_before:]
        unleveled = [line for line in lines if not LOG_LINE.match(line)]
        self.assertFalse(unleveled, "stderr lines without a level:\n" + "\n".join(unleveled))


if __name__ == "__main__":
    runner.main(4)
