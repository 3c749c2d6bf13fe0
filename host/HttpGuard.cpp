#include "HttpGuard.h"

#include <libgupnp/gupnp.h>
#include <libsoup/soup.h>

#include <string>

#include "Log.h"
#include "RequestGuard.h"

namespace {

constexpr char kGuardKey[] = "open-renderer-http-guard";

// The subscription time the UPnP stack grants when its answer gives none we can read.
constexpr unsigned kDefaultSubscriptionSeconds = 300;

struct Guard {
  unsigned prefixLength = 0;  // of the context's network
  HOST_SubscriptionLedger ledger;
};

std::uint64_t NowSeconds() { return static_cast<std::uint64_t>(g_get_monotonic_time() / G_USEC_PER_SEC); }

// The address text and port of a socket address; false when it is not an internet one.
bool AddressOf(GSocketAddress* address, std::string* text, unsigned* port) {
  if (address == nullptr || !G_IS_INET_SOCKET_ADDRESS(address)) return false;
  GInetSocketAddress* inet = G_INET_SOCKET_ADDRESS(address);
  gchar* string = g_inet_address_to_string(g_inet_socket_address_get_address(inet));
  text->assign(string);
  g_free(string);
  *port = g_inet_socket_address_get_port(inet);
  return true;
}

const char* PathOf(SoupServerMessage* message) {
  const char* path = g_uri_get_path(soup_server_message_get_uri(message));
  return path != nullptr ? path : "";
}

// Answers `status` without a handler: the stack skips every handler of a message that has a status. The
// body still arrives, but is no longer kept, and the connection closes after the answer, so that what the
// client sends next is not read as a new request.
void Refuse(SoupServerMessage* message, unsigned status, const std::string& reason) {
  HOST_Log(HOST_LogLevel::Warning, "refused %s %s from %s with HTTP %u: %s",
           soup_server_message_get_method(message), PathOf(message),
           soup_server_message_get_remote_host(message), status, reason.c_str());
  SoupMessageBody* body = soup_server_message_get_request_body(message);
  soup_message_body_set_accumulate(body, FALSE);
  soup_message_body_truncate(body);
  soup_server_message_set_status(message, status, nullptr);
  soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
}

bool IsNewSubscription(SoupServerMessage* message) {
  SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
  return g_strcmp0(soup_server_message_get_method(message), "SUBSCRIBE") == 0 &&
         soup_message_headers_get_one(headers, "SID") == nullptr;
}

// A chunked body (no Content-Length) is refused as soon as it grows past the limit; what was kept of it is
// let go at once.
void OnGotChunk(SoupServerMessage* message, GBytes*, gpointer) {
  if (soup_server_message_get_status(message) != 0) return;
  SoupMessageBody* body = soup_server_message_get_request_body(message);
  if (!HOST_BodyLengthAllowed(static_cast<std::uint64_t>(body->length)))
    Refuse(message, HOST_kStatusBodyTooLarge,
           "a chunked body past " + std::to_string(HOST_kMaxRequestBodyBytes) + " bytes");
}

void OnGotHeaders(SoupServerMessage* message, gpointer data) {
  auto* guard = static_cast<Guard*>(data);
  if (soup_server_message_get_status(message) != 0) return;  // the server has answered already
  SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);

  std::string local;
  unsigned localPort = 0;
  const char* host = soup_message_headers_get_one(headers, "Host");
  if (AddressOf(soup_server_message_get_local_address(message), &local, &localPort) &&
      !HOST_HostHeaderNamesServer(host, local, localPort)) {
    Refuse(message, HOST_kStatusForeignHost, std::string("Host header names another host: ") + host);
    return;
  }

  const SoupEncoding encoding = soup_message_headers_get_encoding(headers);
  if (encoding == SOUP_ENCODING_CONTENT_LENGTH) {
    const goffset length = soup_message_headers_get_content_length(headers);
    if (!HOST_BodyLengthAllowed(static_cast<std::uint64_t>(length))) {
      Refuse(message, HOST_kStatusBodyTooLarge, "a body of " + std::to_string(length) + " bytes");
      return;
    }
  } else if (encoding == SOUP_ENCODING_CHUNKED) {
    // Only a chunked body has no length to check up front: it is followed as it arrives.
    g_signal_connect(message, "got-chunk", G_CALLBACK(OnGotChunk), data);
  }

  if (IsNewSubscription(message)) {
    const char* callback = soup_message_headers_get_one(headers, "CALLBACK");
    std::string reason;
    // No CALLBACK at all is left to the stack, which answers it as a renewal without SID.
    if (callback != nullptr && !HOST_CallbackAllowed(callback, local, guard->prefixLength, &reason)) {
      Refuse(message, HOST_kStatusCallbackRefused, reason);
      return;
    }
    if (callback != nullptr && !guard->ledger.MayAdd(PathOf(message), NowSeconds())) {
      Refuse(message, HOST_kStatusTooManySubscriptions,
             "already " + std::to_string(HOST_kMaxSubscriptionsPerService) + " subscriptions");
      return;
    }
  }
}

void OnRequestStarted(SoupServer*, SoupServerMessage* message, gpointer data) {
  g_signal_connect(message, "got-headers", G_CALLBACK(OnGotHeaders), data);
}

// Keeps the ledger in step with what the stack answered 200 to.
void OnRequestFinished(SoupServer*, SoupServerMessage* message, gpointer data) {
  auto* guard = static_cast<Guard*>(data);
  if (soup_server_message_get_status(message) != SOUP_STATUS_OK) return;
  const char* method = soup_server_message_get_method(message);
  SoupMessageHeaders* request = soup_server_message_get_request_headers(message);
  SoupMessageHeaders* response = soup_server_message_get_response_headers(message);
  const std::uint64_t expiresAt =
      NowSeconds() +
      HOST_TimeoutSeconds(soup_message_headers_get_one(response, "Timeout"), kDefaultSubscriptionSeconds);
  if (g_strcmp0(method, "SUBSCRIBE") == 0) {
    const char* renewed = soup_message_headers_get_one(request, "SID");
    const char* granted = soup_message_headers_get_one(response, "SID");
    if (renewed != nullptr)
      guard->ledger.Renewed(renewed, expiresAt);
    else if (granted != nullptr)
      guard->ledger.Added(PathOf(message), granted, expiresAt);
  } else if (g_strcmp0(method, "UNSUBSCRIBE") == 0) {
    const char* sid = soup_message_headers_get_one(request, "SID");
    if (sid != nullptr) guard->ledger.Removed(sid);
  }
}

void FreeGuard(gpointer data) { delete static_cast<Guard*>(data); }

}  // namespace

void HOST_GuardRequests(GUPnPContext* context) {
  SoupServer* server = gupnp_context_get_server(context);
  if (g_object_get_data(G_OBJECT(server), kGuardKey) != nullptr) return;
  auto* guard = new Guard;
  GInetAddressMask* mask = gssdp_client_get_address_mask(GSSDP_CLIENT(context));
  // Without a known network no callback is on it: every subscription is refused rather than risk one.
  guard->prefixLength = mask != nullptr ? g_inet_address_mask_get_length(mask) : 128;
  if (mask != nullptr) g_object_unref(mask);
  g_object_set_data_full(G_OBJECT(server), kGuardKey, guard, FreeGuard);
  g_signal_connect(server, "request-started", G_CALLBACK(OnRequestStarted), guard);
  g_signal_connect(server, "request-finished", G_CALLBACK(OnRequestFinished), guard);
}
