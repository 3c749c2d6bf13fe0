"""Many control points at once: 200 clients connect in the same instant, each with one action on a new
connection; none is reset and every one is answered."""

import http.client
import os
import sys
import threading

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))

from harness import runner, soap  # noqa: E402
from harness.case import RendererTestCase  # noqa: E402

CLIENTS = 200


class ManyClientsAtOnce(RendererTestCase):
    def test_200_clients_connecting_at_once_are_all_answered_and_none_is_reset(self):
        service = self.description.service(soap.AVTRANSPORT)
        client = soap.SoapClient(self.location)
        body = soap.envelope(soap.AVTRANSPORT, "GetTransportInfo", [("InstanceID", "0")])
        headers = {"Content-Type": 'text/xml; charset="utf-8"',
                   "SOAPACTION": '"%s#GetTransportInfo"' % soap.AVTRANSPORT}
        start = threading.Barrier(CLIENTS)
        outcomes = [None] * CLIENTS

        def one_client(index):
            connection = http.client.HTTPConnection(client.host, client.port, timeout=30)
            try:
                start.wait(timeout=30)
                connection.request("POST", service.control_path, body=body, headers=headers)
                response = connection.getresponse()
                reply = soap.Reply(response.status, response.reason, {}, response.read(), True)
                answered = reply.status == 200 and "CurrentTransportState" in reply.outputs
                outcomes[index] = "answered" if answered else "wrong answer %r" % reply
            except ConnectionResetError as error:  # http.client.RemoteDisconnected is one as well
                outcomes[index] = "reset: %r" % error
            except (OSError, http.client.HTTPException, threading.BrokenBarrierError) as error:
                outcomes[index] = "failed: %r" % error
            finally:
                connection.close()

        threads = [threading.Thread(target=one_client, args=(i,)) for i in range(CLIENTS)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join(60)
        resets = [o for o in outcomes if o and o.startswith("reset")]
        others = [o for o in outcomes if o != "answered" and not (o and o.startswith("reset"))]
        self.assertEqual(resets, [], "%d of %d connections were reset" % (len(resets), CLIENTS))
        self.assertEqual(others, [], "%d of %d clients were not answered" % (len(others), CLIENTS))


if __name__ == "__main__":
    runner.main(6)
