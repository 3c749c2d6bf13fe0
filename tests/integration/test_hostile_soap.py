"""Hostile SOAP against the running daemon: malformed, truncated and too deeply nested bodies, a document
type declaration, and SOAPACTION headers that are missing or name another action or service than the body.
Each gets a clear refusal, the playlist is unchanged by it, and the daemon goes on serving."""

import os
import sys

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402
from harness.hostile import NEVER_PLAYED, PlaylistChecks  # noqa: E402

PLAYLIST = soap.PLAYLIST
INSERT = soap.envelope(PLAYLIST, "Insert", [("AfterId", "0"), ("Uri", NEVER_PLAYED), ("Metadata", "")])
HEADERS = {"Content-Type": 'text/xml; charset="utf-8"'}


def nested(depth):
    """An Insert whose Metadata argument holds elements nested `depth` deep."""
    return INSERT.replace(b"<Metadata></Metadata>",
                          b"<Metadata>" + b"<a>" * depth + b"x" + b"</a>" * depth + b"</Metadata>")


class HostileSoapBodies(RendererTestCase, PlaylistChecks):
    def setUp(self):
        self.delete_all()
        self.insert()
        self.insert()
        self.before = self.id_array()
        self.client = self.soap_client()

    def post(self, body, soap_action='"%s#Insert"' % PLAYLIST):
        headers = dict(HEADERS)
        if soap_action is not None:
            headers["SOAPACTION"] = soap_action
        return self.client.request("POST", self.playlist_control(), body, headers)

    def assertFault(self, reply, code, description):
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, code, description), reply)

    def test_well_formed_insert_is_executed_as_the_control(self):
        # The request the others break: sent whole, it is executed, so their refusals are not an accident.
        reply = self.post(INSERT)
        self.assertEqual(reply.status, 200, reply)
        self.assertNotEqual(self.id_array(), self.before)

    def test_a_body_that_is_not_xml_is_refused_by_http_412(self):
        # No action element to be found: the UPnP stack answers itself, before any handler runs.
        reply = self.post(b"AfterId=0&Uri=" + NEVER_PLAYED.encode())
        self.assertEqual(reply.status, 412, reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_truncated_bodies_are_fault_402_invalid_args(self):
        cut_after_uri = INSERT[:INSERT.index(b"</Uri>") + len(b"</Uri>")]
        cut_in_a_tag = INSERT[:INSERT.index(b"<Metadata>") + 5]
        for body in (cut_after_uri, cut_in_a_tag):
            with self.subTest(body=body[-40:]):
                self.assertFault(self.post(body), 402, "Invalid Args")
                self.assertRejectedWithoutEffect(self.before)

    def test_an_empty_body_is_refused_by_http_400(self):
        self.assertEqual(self.post(b"").status, 400)
        self.assertRejectedWithoutEffect(self.before)

    def test_elements_in_an_argument_and_nesting_past_32_levels_are_fault_402(self):
        # The Metadata element is at depth 4: 28 more levels reach the bound (an argument holding elements is
        # refused all the same), 29 pass it.
        for depth in (28, 29, 1000):
            with self.subTest(depth=depth):
                self.assertFault(self.post(nested(depth)), 402, "Invalid Args")
                self.assertRejectedWithoutEffect(self.before)

    def test_nesting_a_hundred_thousand_deep_is_fault_402(self):
        self.assertFault(self.post(nested(100000)), 402, "Invalid Args")
        self.assertRejectedWithoutEffect(self.before)

    def test_a_document_type_declaration_with_entities_is_fault_402(self):
        bomb = (b'<?xml version="1.0"?><!DOCTYPE s:Envelope [<!ENTITY a "aaaaaaaaaa">'
                b'<!ENTITY b "&a;&a;&a;&a;&a;&a;&a;&a;&a;&a;"><!ENTITY c "&b;&b;&b;&b;&b;&b;&b;&b;&b;&b;">]>')
        body = bomb + INSERT[INSERT.index(b"<s:Envelope"):].replace(NEVER_PLAYED.encode(), b"&c;")
        self.assertFault(self.post(body), 402, "Invalid Args")
        self.assertRejectedWithoutEffect(self.before)

    def test_a_nul_byte_and_two_actions_in_one_body_are_fault_402(self):
        with_nul = INSERT.replace(b"never-played", b"never\x00played")
        two = INSERT.replace(b"</s:Body>", INSERT[INSERT.index(b"<u:Insert"):INSERT.index(b"</s:Body>")] +
                             b"</s:Body>")
        for body in (with_nul, two):
            with self.subTest(body=body[:60]):
                self.assertFault(self.post(body), 402, "Invalid Args")
                self.assertRejectedWithoutEffect(self.before)


class HostileSoapActionHeaders(RendererTestCase, PlaylistChecks):
    def setUp(self):
        self.delete_all()
        self.insert()
        self.before = self.id_array()
        self.client = self.soap_client()

    def post(self, body, soap_action):
        headers = dict(HEADERS)
        if soap_action is not None:
            headers["SOAPACTION"] = soap_action
        return self.client.request("POST", self.playlist_control(), body, headers)

    def test_no_soapaction_header_is_refused_by_http_412(self):
        reply = self.post(soap.envelope(PLAYLIST, "DeleteAll"), None)
        self.assertEqual(reply.status, 412, reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_soapaction_naming_another_action_than_the_body_is_refused(self):
        # The header says Insert, the body DeleteAll: the stack finds no Insert in the body; nothing runs.
        reply = self.post(soap.envelope(PLAYLIST, "DeleteAll"), '"%s#Insert"' % PLAYLIST)
        self.assertEqual(reply.status, 412, reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_soapaction_naming_another_service_is_fault_401_invalid_action(self):
        reply = self.post(soap.envelope(PLAYLIST, "DeleteAll"), '"%s#DeleteAll"' % soap.AVTRANSPORT)
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, 401, "Invalid Action"),
                         reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_a_body_of_another_service_is_fault_401_invalid_action(self):
        reply = self.post(soap.envelope(soap.AVTRANSPORT, "DeleteAll"), '"%s#DeleteAll"' % PLAYLIST)
        self.assertEqual((reply.status, reply.fault_code, reply.fault_description), (500, 401, "Invalid Action"),
                         reply)
        self.assertRejectedWithoutEffect(self.before)

    def test_malformed_soapaction_values_are_refused(self):
        # Without "#action" the stack refuses the request itself (412); with an action but no service or another
        # one, the daemon refuses it as an invalid action (401).
        for value, answer in (("", 412), ('""', 412), ("#", 412), ('"%s"' % PLAYLIST, 412),
                              ('"#DeleteAll"', 401), ("x" * 10000 + "#DeleteAll", 401),
                              ('"%s#DeleteAll"' % PLAYLIST.replace(":1", ":2"), 401)):
            with self.subTest(value=value[:40]):
                reply = self.post(soap.envelope(PLAYLIST, "DeleteAll"), value)
                self.assertEqual(reply.fault_code or reply.status, answer, reply)
                self.assertRejectedWithoutEffect(self.before)


if __name__ == "__main__":
    runner.main(24)
