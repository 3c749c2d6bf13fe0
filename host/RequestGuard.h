// The decisions the daemon takes on an HTTP request before the UPnP stack sees it, as plain functions of
// text, so that each rule is tested without a socket (HOST_GuardRequests applies them on the network).
//
// A renderer answers whatever reaches its port, so the door is kept narrow on purpose:
//   - a body longer than HOST_kMaxRequestBodyBytes is refused (413) from its Content-Length, before a byte of
//     it is kept, and a chunked body is refused as soon as it grows past the limit;
//   - a Host header must name the address the request arrived on (a literal IP, with no port or with the
//     server's port): a name in it means a page in a browser reached us through DNS rebinding (421);
//   - every event callback of a SUBSCRIBE must be an http URL whose host is a literal IP on the network of the
//     address the request arrived on: events are never aimed at a host outside that network, whoever asks
//     (UPnP's answer to callbacks that turn a renderer against third hosts), 412 otherwise;
//   - each event URL keeps at most HOST_kMaxSubscriptionsPerService subscriptions (503 for one more).
//
// Thread-safety: the functions keep no state; HOST_SubscriptionLedger is main-loop only.
#ifndef HOST_REQUEST_GUARD_H_
#define HOST_REQUEST_GUARD_H_

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>

#include "SoapRequestReader.h"

// The largest request body the daemon accepts: the same 2 MiB as the SOAP reader's, so that a body the
// reader would refuse is refused before it is read into memory.
constexpr std::uint64_t HOST_kMaxRequestBodyBytes = HOST_kMaxSoapRequestBytes;

// Subscriptions per event URL (one service on one interface). A home network has a handful of control points,
// each subscribing once per service; the cap bounds what a hostile one can make the daemon keep and notify.
constexpr std::size_t HOST_kMaxSubscriptionsPerService = 100;

// The HTTP statuses of the refusals.
constexpr unsigned HOST_kStatusBodyTooLarge = 413;        // Payload Too Large
constexpr unsigned HOST_kStatusForeignHost = 421;         // Misdirected Request
constexpr unsigned HOST_kStatusCallbackRefused = 412;     // Precondition Failed, as UPnP eventing answers
constexpr unsigned HOST_kStatusTooManySubscriptions = 503;  // Service Unavailable

// True when a body of `length` bytes may be read.
bool HOST_BodyLengthAllowed(std::uint64_t length);

// True when `hostHeader` names the server at `serverAddress` (a literal IPv4 or IPv6 address, as the
// connection's local address reads) and `serverPort`: the same address (IPv6 in brackets, compared as
// addresses, not as text), with no port or that port. A null header is accepted: HTTP/1.0 has none, and
// the HTTP server itself refuses an HTTP/1.1 request without one.
bool HOST_HostHeaderNamesServer(const char* hostHeader, const std::string& serverAddress, unsigned serverPort);

// True when `a` and `b` are literal addresses of one family whose first `prefixLength` bits agree.
bool HOST_SameSubnet(const std::string& a, const std::string& b, unsigned prefixLength);

// True when every URL of the CALLBACK header ("<http://10.0.0.5:4000/ev><http://...>") may receive events
// from the server at `serverAddress`/`prefixLength`; false, with *reason (when not null), for a header
// with no URL, a URL that is not http, whose host is not a literal address, or whose address is off the
// server's network. One URL refused refuses the whole header.
bool HOST_CallbackAllowed(const char* callbackHeader, const std::string& serverAddress, unsigned prefixLength,
                          std::string* reason);

// True when the service part of a control request's SOAPACTION header ("\"urn:...:Playlist:1#Insert\"",
// the quotes optional) is exactly `serviceType`: a request whose header names another service than the one
// it was sent to is not executed. Only the part before '#' is compared, so that the header may be given
// whole or as the UPnP stack leaves it once it has taken the action name out (cut at the '#').
bool HOST_SoapActionNamesService(const char* soapActionHeader, const char* serviceType);

// The seconds of a TIMEOUT header answered by the UPnP stack ("Second-300"); `fallback` for anything else
// ("infinite" included), so that a subscription the ledger keeps always ends.
unsigned HOST_TimeoutSeconds(const char* timeoutHeader, unsigned fallback);

// The subscriptions the daemon has accepted, per event URL, with when each ends; for the cap. Counts only
// what the UPnP stack answered 200 to. A subscription the stack drops on its own (a callback that fails) is
// still counted until its timeout: the ledger errs on the side of refusing.
class HOST_SubscriptionLedger {
 public:
  // Whether one more subscription to `path` is allowed at `now` (seconds, any monotonic clock).
  bool MayAdd(const std::string& path, std::uint64_t now);
  void Added(const std::string& path, const std::string& sid, std::uint64_t expiresAt);
  void Renewed(const std::string& sid, std::uint64_t expiresAt);
  void Removed(const std::string& sid);
  std::size_t Count(const std::string& path, std::uint64_t now);

 private:
  struct Entry {
    std::string path;
    std::uint64_t expiresAt;
  };
  void Prune(std::uint64_t now);
  std::map<std::string, Entry> bySid_;
};

#endif  // HOST_REQUEST_GUARD_H_
