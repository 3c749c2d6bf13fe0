#include "GetTransportInfoCall.h"

namespace {

constexpr char kBody[] =
    "<?xml version=\"1.0\" encoding=\"utf-8\"?>"
    "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
    "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>"
    "<u:GetTransportInfo xmlns:u=\"urn:schemas-upnp-org:service:AVTransport:1\">"
    "<InstanceID>0</InstanceID></u:GetTransportInfo></s:Body></s:Envelope>";

}  // namespace

std::string GetTransportInfoRequest(const HttpEndpoint& control, bool keepAlive) {
  const bool v6 = control.address.find(':') != std::string::npos;
  const std::string host = (v6 ? "[" + control.address + "]" : control.address) + ":" + std::to_string(control.port);
  const std::string body = kBody;
  return "POST " + control.path + " HTTP/1.1\r\n" + "Host: " + host + "\r\n" +
         "Content-Type: text/xml; charset=\"utf-8\"\r\n" +
         "SOAPACTION: \"urn:schemas-upnp-org:service:AVTransport:1#GetTransportInfo\"\r\n" +
         (keepAlive ? "" : "Connection: close\r\n") + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" +
         body;
}

bool IsTransportInfoAnswer(const HttpResponse& response) {
  return response.status == 200 && response.body.find("GetTransportInfoResponse") != std::string::npos &&
         response.body.find("<CurrentTransportStatus>OK</CurrentTransportStatus>") != std::string::npos;
}
