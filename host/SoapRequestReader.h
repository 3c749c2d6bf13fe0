// Reading the SOAP body of a UPnP control request into a marlo::ActionRequest.
//
// The body comes from any host on the network, so the reader is strict on purpose: a request it cannot read
// exactly is refused whole, never executed in part. libxml2 reads it without network access, without loading
// or substituting entities and without recovery; a document type declaration is refused outright (its
// internal subset is where entity-expansion attacks live), and so are bodies over HOST_kMaxSoapRequestBytes
// and elements nested deeper than HOST_kMaxSoapRequestDepth.
//
// Accepted shape:
//   <s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/">
//     <s:Header>...</s:Header>                      optional, ignored
//     <s:Body>
//       <u:Play xmlns:u="urn:schemas-upnp-org:service:AVTransport:1">    the action element, exactly one
//         <InstanceID>0</InstanceID><Speed>1</Speed>                      its arguments, any number
//       </u:Play>
//     </s:Body>
//   </s:Envelope>
// Whitespace-only text between elements, comments and processing instructions are ignored; any other text
// between elements, and any element other than these, is refused.
//
// Thread-safety: may be called from several threads at once.
#ifndef HOST_SOAP_REQUEST_READER_H_
#define HOST_SOAP_REQUEST_READER_H_

#include <cstddef>
#include <cstdint>
#include <string>

namespace marlo {
class ActionRequest;
}  // namespace marlo

// The largest body read: 2 MiB. A real request is a few kilobytes; the largest ones carry a track's
// DIDL-Lite metadata (SetAVTransportURI, OpenHome Insert), which the service objects keep in buffers of
// 200 KiB, so ten times that leaves room for any honest request and bounds what a hostile one costs.
constexpr std::size_t HOST_kMaxSoapRequestBytes = 2 * 1024 * 1024;

// The deepest element nesting accepted, Envelope counting as 1 (an argument is at depth 4). Leaves room for
// Header content; libxml2's own limit (256) would let a hostile body cost far more.
constexpr int HOST_kMaxSoapRequestDepth = 32;

// Reads the SOAP body of a control request into `request`: service type = the action element's namespace,
// action name = its local name, then every argument element in document order (a repeated one repeated),
// named by its local name, valued by its text (text and CDATA children concatenated, entities decoded; an
// empty element gives "").
//
// Returns 0 on success. Otherwise `request` is untouched and *reason (when `reason` is not null) holds a
// short English reason for a log line:
//   kErrorInvalidArgument (-1998): null `body` or `request`, or a body refused as above;
//   kErrorNoMemory (-1997): no memory while reading. Should memory run out while the request itself is being
//   filled (after the body was read whole), the request may hold part of it and must be discarded.
// REQUIRES: `request` is freshly constructed (the reader sets its service type and name and appends).
int32_t HOST_ReadSoapRequest(const char* body, std::size_t length, marlo::ActionRequest* request,
                             std::string* reason);

#endif  // HOST_SOAP_REQUEST_READER_H_
