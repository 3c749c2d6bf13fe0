#include "GetTransportInfoCall.h"

#include "SoapRequest.h"

std::string GetTransportInfoRequest(const HttpEndpoint& control, bool keepAlive) {
  return SoapActionRequest(control, "urn:schemas-upnp-org:service:AVTransport:1", "GetTransportInfo",
                           "<InstanceID>0</InstanceID>", keepAlive);
}

bool IsTransportInfoAnswer(const HttpResponse& response) {
  return response.status == 200 && response.body.find("GetTransportInfoResponse") != std::string::npos &&
         response.body.find("<CurrentTransportStatus>OK</CurrentTransportStatus>") != std::string::npos;
}
