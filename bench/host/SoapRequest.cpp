#include "SoapRequest.h"

std::string SoapActionRequest(const HttpEndpoint& control, const std::string& serviceType,
                              const std::string& action, const std::string& arguments, bool keepAlive) {
  const bool v6 = control.address.find(':') != std::string::npos;
  const std::string host =
      (v6 ? "[" + control.address + "]" : control.address) + ":" + std::to_string(control.port);
  const std::string body = std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>") +
                           "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
                           "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>" +
                           "<u:" + action + " xmlns:u=\"" + serviceType + "\">" + arguments +
                           "</u:" + action + "></s:Body></s:Envelope>";
  return "POST " + control.path + " HTTP/1.1\r\nHost: " + host + "\r\n" +
         "User-Agent: Linux/6 UPnP/1.0 bench-client/1.0\r\n" +
         "Content-Type: text/xml; charset=\"utf-8\"\r\n" + "SOAPACTION: \"" + serviceType + "#" + action +
         "\"\r\n" + (keepAlive ? "" : "Connection: close\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
