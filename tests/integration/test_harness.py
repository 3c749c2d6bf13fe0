"""The integration harness checked on its own, without the daemon or a namespace: the media server's answers
(GET, HEAD, ranges), and the parsers and rules the daemon's tests judge by."""

import http.client
import os
import shutil
import sys
import tempfile
import unittest
import wave

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import events, media, soap, transport  # noqa: E402


class MediaServerAnswers(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.directory = tempfile.mkdtemp(prefix="open-renderer-harness-")
        cls.addClassCleanup(shutil.rmtree, cls.directory, True)
        cls.path = media.make_wav(os.path.join(cls.directory, "tone.wav"), 0.5)
        with open(cls.path, "rb") as track:
            cls.data = track.read()
        cls.server = media.MediaServer(cls.directory, address="127.0.0.1").start()
        cls.addClassCleanup(cls.server.stop)

    def fetch(self, method, name, byte_range=None):
        connection = http.client.HTTPConnection(*self.server.server_address, timeout=5)
        try:
            connection.request(method, "/" + name, headers={"Range": byte_range} if byte_range else {})
            response = connection.getresponse()
            return response.status, dict(response.getheaders()), response.read()
        finally:
            connection.close()

    def test_the_made_wav_is_half_a_second_of_stereo_16_bit_at_44100(self):
        with wave.open(self.path) as track:
            self.assertEqual((track.getnchannels(), track.getsampwidth(), track.getframerate()),
                             (2, 2, 44100))
            self.assertEqual(track.getnframes(), 22050)

    def test_get_answers_the_whole_file_with_its_type(self):
        status, headers, body = self.fetch("GET", "tone.wav")
        self.assertEqual((status, headers["Content-Type"], headers["Accept-Ranges"]),
                         (200, "audio/wav", "bytes"))
        self.assertEqual(body, self.data)

    def test_head_answers_the_length_without_a_body(self):
        status, headers, body = self.fetch("HEAD", "tone.wav")
        self.assertEqual((status, int(headers["Content-Length"]), body), (200, len(self.data), b""))

    def test_a_range_answers_206_with_exactly_those_bytes(self):
        status, headers, body = self.fetch("GET", "tone.wav", "bytes=10-19")
        self.assertEqual((status, headers["Content-Range"]), (206, "bytes 10-19/%d" % len(self.data)))
        self.assertEqual(body, self.data[10:20])

    def test_an_open_and_a_suffix_range_answer_the_end_of_the_file(self):
        self.assertEqual(self.fetch("GET", "tone.wav", "bytes=100-")[2], self.data[100:])
        self.assertEqual(self.fetch("GET", "tone.wav", "bytes=-16")[2], self.data[-16:])

    def test_a_range_past_the_end_is_416_and_a_missing_file_404(self):
        self.assertEqual(self.fetch("GET", "tone.wav", "bytes=%d-" % len(self.data))[0], 416)
        self.assertEqual(self.fetch("GET", "nothing.wav")[0], 404)

    def test_every_request_is_recorded(self):
        self.fetch("HEAD", "tone.wav")
        self.assertIn(("HEAD", "/tone.wav", None), self.server.requests)


class JudgingRules(unittest.TestCase):
    def test_time_texts_parse_to_seconds_and_anything_else_to_none(self):
        self.assertEqual(transport.parse_time("1:02:03"), 3723)
        self.assertEqual(transport.parse_time("00:00:03.500"), 3.5)
        self.assertIsNone(transport.parse_time("NOT_IMPLEMENTED"))

    def test_a_session_may_event_transitions_but_not_skip_or_reorder_states(self):
        transport.check_session_states(self, ["TRANSITIONING", "PLAYING", "PAUSED_PLAYBACK", "TRANSITIONING",
                                              "PAUSED_PLAYBACK", "STOPPED"])
        for wrong in (["PLAYING", "STOPPED"], ["PAUSED_PLAYBACK", "PLAYING", "STOPPED"],
                      ["STOPPED", "PLAYING", "PAUSED_PLAYBACK", "STOPPED"], []):
            with self.subTest(states=wrong), self.assertRaises(AssertionError):
                transport.check_session_states(self, wrong)

    def test_last_change_gives_the_values_of_instance_0(self):
        text = ('<Event xmlns="urn:schemas-upnp-org:metadata-1-0/AVT/"><InstanceID val="0">'
                '<TransportState val="PLAYING"/><AVTransportURI val="http://a/b?c=1&amp;d=2"/>'
                '</InstanceID></Event>')
        self.assertEqual(events.parse_last_change(text),
                         {"TransportState": "PLAYING", "AVTransportURI": "http://a/b?c=1&d=2"})

    def test_a_soap_fault_gives_its_upnp_code_and_text(self):
        body = ('<?xml version="1.0"?>'
                '<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/"><s:Body><s:Fault>'
                '<faultcode>s:Client</faultcode><faultstring>UPnPError</faultstring><detail>'
                '<UPnPError xmlns="urn:schemas-upnp-org:control-1-0"><errorCode>718</errorCode>'
                '<errorDescription>Invalid InstanceID</errorDescription></UPnPError></detail></s:Fault>'
                '</s:Body></s:Envelope>').encode()
        reply = soap.Reply(500, "Internal Server Error", {}, body, False)
        self.assertTrue(reply.soap)
        self.assertEqual((reply.fault_code, reply.fault_description), (718, "Invalid InstanceID"))

    def test_a_body_that_is_no_envelope_is_not_soap(self):
        self.assertFalse(soap.Reply(412, "Precondition Failed", {}, b"", False).soap)
        self.assertFalse(soap.Reply(500, "Internal Server Error", {}, b"<html/>", False).soap)


if __name__ == "__main__":
    unittest.main(verbosity=2)
