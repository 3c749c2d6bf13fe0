#include "SoapActionCall.h"

namespace {

std::string Escaped(const std::string& text) {
  std::string out;
  for (const char c : text) {
    if (c == '&')
      out += "&amp;";
    else if (c == '<')
      out += "&lt;";
    else if (c == '>')
      out += "&gt;";
    else
      out += c;
  }
  return out;
}

std::string Request(const HttpEndpoint& control, const std::string& serviceType, const std::string& action,
                    const std::string& arguments, bool keepAlive) {
  const bool v6 = control.address.find(':') != std::string::npos;
  const std::string host =
      (v6 ? "[" + control.address + "]" : control.address) + ":" + std::to_string(control.port);
  const std::string body = std::string("<?xml version=\"1.0\" encoding=\"utf-8\"?>") +
                           "<s:Envelope xmlns:s=\"http://schemas.xmlsoap.org/soap/envelope/\" "
                           "s:encodingStyle=\"http://schemas.xmlsoap.org/soap/encoding/\"><s:Body>" +
                           "<u:" + action + " xmlns:u=\"" + serviceType + "\">" + arguments +
                           "</u:" + action + "></s:Body></s:Envelope>";
  return "POST " + control.path + " HTTP/1.1\r\nHost: " + host + "\r\n" +
         "Content-Type: text/xml; charset=\"utf-8\"\r\n" + "SOAPACTION: \"" + serviceType + "#" + action +
         "\"\r\n" + (keepAlive ? "" : "Connection: close\r\n") +
         "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}

// A successful answer of any action: HTTP 200 with a response element and no fault. The network floor
// answers every action with the same constant, so the action's own name is not asked for.
bool IsActionAnswer(const HttpResponse& response) {
  return response.status == 200 && response.body.find("Response") != std::string::npos &&
         response.body.find("Fault>") == std::string::npos;
}

}  // namespace

bool MakeSoapActionCall(const HttpEndpoint& control, const std::string& serviceType,
                        const std::string& action, const std::string& uri, RoundTripCall* call) {
  std::string arguments = "<InstanceID>0</InstanceID>";
  if (action == "SetAVTransportURI")
    arguments += "<CurrentURI>" + Escaped(uri) + "</CurrentURI><CurrentURIMetaData></CurrentURIMetaData>";
  else if (action != "GetTransportInfo" && action != "GetPositionInfo")
    return false;
  call->newConnectionRequest = Request(control, serviceType, action, arguments, false);
  call->keepAliveRequest = Request(control, serviceType, action, arguments, true);
  call->accepts = IsActionAnswer;
  return true;
}
