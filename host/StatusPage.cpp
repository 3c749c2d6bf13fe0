#include "StatusPage.h"

#include <libgupnp/gupnp.h>
#include <libsoup/soup.h>

#include <algorithm>
#include <cstring>
#include <utility>

#include "LogRing.h"
#include "Renderer.h"
#include "ServiceCatalogue.h"
#include "StatusJson.h"

namespace {

constexpr char kJsonPath[] = "/status.json";
constexpr char kFilesPath[] = "/status";

// The page's files: nothing else under /status is served, so no request can name another file.
struct PageFile {
  const char* name;
  const char* contentType;
};
constexpr PageFile kPageFiles[] = {
    {"index.html", "text/html; charset=utf-8"},
    {"status.js", "text/javascript; charset=utf-8"},
    {"status.css", "text/css; charset=utf-8"},
};

// The page runs the daemon's own script and style only; album art may come from wherever the metadata
// points (the control point's media server), the one thing fetched from elsewhere.
constexpr char kContentSecurityPolicy[] =
    "default-src 'none'; script-src 'self'; style-src 'self'; connect-src 'self'; img-src 'self' http: "
    "https:; "
    "base-uri 'none'; form-action 'none'; frame-ancestors 'none'";

int64_t MonotonicSeconds() { return g_get_monotonic_time() / G_USEC_PER_SEC; }

// Answers false, with 405, for a method other than GET and HEAD.
bool ReadOnly(SoupServerMessage* message) {
  const char* method = soup_server_message_get_method(message);
  if (g_strcmp0(method, "GET") == 0 || g_strcmp0(method, "HEAD") == 0) return true;
  soup_message_headers_replace(soup_server_message_get_response_headers(message), "Allow", "GET, HEAD");
  soup_server_message_set_status(message, SOUP_STATUS_METHOD_NOT_ALLOWED, nullptr);
  return false;
}

void Answer(SoupServerMessage* message, const char* contentType, const std::string& body,
            const char* caching) {
  SoupMessageHeaders* headers = soup_server_message_get_response_headers(message);
  soup_message_headers_replace(headers, "Cache-Control", caching);
  soup_message_headers_replace(headers, "X-Content-Type-Options", "nosniff");
  soup_message_headers_replace(headers, "Referrer-Policy", "no-referrer");
  soup_server_message_set_response(message, contentType, SOUP_MEMORY_COPY, body.data(), body.size());
  soup_server_message_set_status(message, SOUP_STATUS_OK, nullptr);
}

const char* ServiceNameOfEventPath(const char* path) {
  if (path == nullptr) return "?";
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue())
    if (HOST_EventUrl(service) == path) return service.name;
  return path;
}

std::string Header(SoupMessageHeaders* headers, const char* name) {
  const char* value = soup_message_headers_get_one(headers, name);
  return value != nullptr ? value : "";
}

}  // namespace

HOST_StatusPage::HOST_StatusPage(HOST_Renderer* renderer, HOST_StatusRows configuration,
                                 std::string documentRoot)
    : renderer_(renderer),
      configuration_(std::move(configuration)),
      documentRoot_(std::move(documentRoot)),
      reader_(renderer->StandardServices(), renderer->OpenHomeServices(), renderer->HostServices()) {}

HOST_StatusPage::~HOST_StatusPage() {
  for (GUPnPContext* context : contexts_) {
    g_object_weak_unref(G_OBJECT(context), OnContextGone, this);
    gupnp_context_remove_server_handler(context, kJsonPath);
    gupnp_context_remove_server_handler(context, kFilesPath);
    g_signal_handlers_disconnect_by_data(gupnp_context_get_server(context), this);
  }
}

void HOST_StatusPage::Attach(GUPnPContext* context) {
  if (std::find(contexts_.begin(), contexts_.end(), context) != contexts_.end()) return;
  // Through the context's access list, as every other document of the device.
  gupnp_context_add_server_handler(context, TRUE, kJsonPath, ServeJson, this, nullptr);
  gupnp_context_add_server_handler(context, TRUE, kFilesPath, ServeFile, this, nullptr);
  g_signal_connect(gupnp_context_get_server(context), "request-finished", G_CALLBACK(OnRequestFinished),
                   this);
  g_object_weak_ref(G_OBJECT(context), OnContextGone, this);
  contexts_.push_back(context);
}

void HOST_StatusPage::OnContextGone(void* self, GObject* context) {
  auto& contexts = static_cast<HOST_StatusPage*>(self)->contexts_;
  contexts.erase(std::remove(contexts.begin(), contexts.end(), reinterpret_cast<GUPnPContext*>(context)),
                 contexts.end());
}

std::string HOST_StatusPage::Json() {
  HOST_StatusReport report;
  // Between the service objects' Stop and the end of the shutdown the main loop still runs (the last
  // events drain): the page then shows that the renderer is stopping and reads nothing from them.
  report.running = renderer_->Started();
  if (report.running) reader_.Read(&report);
  report.subscriptions = subscriptions_.Current(MonotonicSeconds());
  report.configuration = configuration_;
  for (GUPnPContext* context : contexts_) {
    const char* address = gssdp_client_get_host_ip(GSSDP_CLIENT(context));
    std::string host = address != nullptr ? address : "?";
    if (host.find(':') != std::string::npos) host = "[" + host + "]";
    report.configuration.emplace_back("address",
                                      host + ":" + std::to_string(gupnp_context_get_port(context)));
  }
  report.log = HOST_RecentLog().Lines();
  return HOST_WriteStatusJson(report);
}

void HOST_StatusPage::ServeJson(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                                void* self) {
  if (g_strcmp0(path, kJsonPath) != 0) {
    soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
    return;
  }
  if (!ReadOnly(message)) return;
  Answer(message, "application/json; charset=utf-8", static_cast<HOST_StatusPage*>(self)->Json(), "no-store");
}

void HOST_StatusPage::ServeFile(SoupServer*, SoupServerMessage* message, const char* path, GHashTable*,
                                void* self) {
  const auto* page = static_cast<HOST_StatusPage*>(self);
  if (!ReadOnly(message)) return;
  if (g_strcmp0(path, kFilesPath) == 0) {
    soup_server_message_set_redirect(message, SOUP_STATUS_MOVED_PERMANENTLY, HOST_kStatusPagePath);
    return;
  }
  const std::size_t prefix = std::strlen(HOST_kStatusPagePath);
  std::string name =
      path != nullptr && std::strncmp(path, HOST_kStatusPagePath, prefix) == 0 ? path + prefix : "";
  if (path != nullptr && g_strcmp0(path, HOST_kStatusPagePath) == 0) name = "index.html";
  for (const PageFile& file : kPageFiles) {
    if (name != file.name) continue;
    const std::string local = page->documentRoot_ + "/status/" + file.name;
    gchar* contents = nullptr;
    gsize length = 0;
    if (!g_file_get_contents(local.c_str(), &contents, &length, nullptr)) break;
    const std::string body(contents, length);
    g_free(contents);
    Answer(message, file.contentType, body, "no-cache");
    if (std::strcmp(file.name, "index.html") == 0)
      soup_message_headers_replace(soup_server_message_get_response_headers(message),
                                   "Content-Security-Policy", kContentSecurityPolicy);
    return;
  }
  soup_server_message_set_status(message, SOUP_STATUS_NOT_FOUND, nullptr);
}

void HOST_StatusPage::OnRequestFinished(SoupServer*, SoupServerMessage* message, void* self) {
  static_cast<HOST_StatusPage*>(self)->NoteSubscription(message);
}

void HOST_StatusPage::NoteSubscription(SoupServerMessage* message) {
  const char* method = soup_server_message_get_method(message);
  const bool subscribe = g_strcmp0(method, "SUBSCRIBE") == 0;
  if ((!subscribe && g_strcmp0(method, "UNSUBSCRIBE") != 0) ||
      soup_server_message_get_status(message) != SOUP_STATUS_OK)
    return;
  SoupMessageHeaders* request = soup_server_message_get_request_headers(message);
  SoupMessageHeaders* response = soup_server_message_get_response_headers(message);
  const std::string requestSid = Header(request, "SID");
  if (!subscribe) {
    subscriptions_.Unsubscribed(requestSid);
    return;
  }
  const int64_t now = MonotonicSeconds();
  if (!requestSid.empty()) {
    subscriptions_.Renewed(requestSid, Header(response, "TIMEOUT"), now);
    return;
  }
  const char* from = soup_server_message_get_remote_host(message);
  subscriptions_.Subscribed(
      Header(response, "SID"), ServiceNameOfEventPath(g_uri_get_path(soup_server_message_get_uri(message))),
      Header(request, "CALLBACK"), from != nullptr ? from : "?", Header(response, "TIMEOUT"), now);
}
