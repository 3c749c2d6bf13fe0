#include "SoapActionCall.h"

#include "SoapRequest.h"

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
  call->newConnectionRequest = SoapActionRequest(control, serviceType, action, arguments, false);
  call->keepAliveRequest = SoapActionRequest(control, serviceType, action, arguments, true);
  call->accepts = IsActionAnswer;
  return true;
}
