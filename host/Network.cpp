#include "Network.h"

#include <libgupnp/gupnp.h>
#include <libsoup/soup.h>

#include <sys/socket.h>

#include <algorithm>
#include <cerrno>
#include <utility>

#include "BoundService.h"
#include "EventDelivery.h"
#include "HttpGuard.h"
#include "Log.h"
#include "ServiceCatalogue.h"
#include "ServiceRegistry.h"

namespace {

// GUPnP's server listens with a backlog of 10: a few dozen control points connecting at once would find
// connections reset. Raising it on the listening sockets GUPnP made is enough: listen() again only
// changes the backlog of a socket that already listens.
constexpr int kListenBacklog = 128;

// The pace of SSDP messages, and how long the byebyes of a stopping daemon may take at that pace.
constexpr guint kMessageDelayMilliseconds = 10;
constexpr gint64 kByebyeMilliseconds = 700;

void RaiseListenBacklog(GUPnPContext* context) {
  SoupServer* server = gupnp_context_get_server(context);
  GSList* listeners = soup_server_get_listeners(server);
  for (GSList* item = listeners; item != nullptr; item = item->next) {
    // GIO refuses to change the backlog of a socket that listens already; the system call does not.
    const int descriptor = g_socket_get_fd(G_SOCKET(item->data));
    if (listen(descriptor, kListenBacklog) != 0)
      HOST_Log(HOST_LogLevel::Warning, "could not raise the listen backlog: %s", g_strerror(errno));
  }
  g_slist_free(listeners);
}

// A client that sends "Connection: close" gets its connection closed after the reply, and is told so:
// without the header in the reply, an HTTP agent that pools connections (Node's) sends its next request
// on the closed socket.
void EchoConnectionClose(SoupServerMessage* message) {
  SoupMessageHeaders* request = soup_server_message_get_request_headers(message);
  if (soup_message_headers_header_contains(request, "Connection", "close"))
    soup_message_headers_replace(soup_server_message_get_response_headers(message), "Connection", "close");
}

// One line per subscription, as a person running the renderer wants to see who listens.
void LogSubscriptions(SoupServerMessage* message) {
  const char* method = soup_server_message_get_method(message);
  const bool subscribe = g_strcmp0(method, "SUBSCRIBE") == 0;
  if (!subscribe && g_strcmp0(method, "UNSUBSCRIBE") != 0) return;
  const char* path = g_uri_get_path(soup_server_message_get_uri(message));
  const char* host = soup_server_message_get_remote_host(message);
  SoupMessageHeaders* headers = soup_server_message_get_request_headers(message);
  const bool renewal = subscribe && soup_message_headers_get_one(headers, "SID") != nullptr;
  HOST_Log(renewal ? HOST_LogLevel::Debug : HOST_LogLevel::Info, "control point %s %s %s",
           host != nullptr ? host : "?", renewal ? "renews its subscription to" : (subscribe ? "subscribes to" : "unsubscribes from"),
           path != nullptr ? path : "?");
}

void OnRequestRead(SoupServer*, SoupServerMessage* message, gpointer) {
  EchoConnectionClose(message);
  LogSubscriptions(message);
}

}  // namespace

HOST_Network::HOST_Network(HOST_NetworkOptions options, HOST_ActionRouter* router, HOST_ServiceRegistry* registry,
                           FirstContext firstContext)
    : options_(std::move(options)), router_(router), registry_(registry), firstContext_(std::move(firstContext)) {}

HOST_Network::~HOST_Network() { Stop(); }

void HOST_Network::Start() {
  // Before any event is sent: a subscriber that never answers holds up only its own events (EventDelivery.h).
  HOST_BoundEventDelivery();
  factory_ = gupnp_resource_factory_new();
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue())
    gupnp_resource_factory_register_resource_type(factory_, service.serviceType, HOST_BoundServiceGetType());

  manager_ = gupnp_context_manager_create_full(GSSDP_UDA_VERSION_1_0, G_SOCKET_FAMILY_INVALID,
                                               options_.port);
  if (!options_.interfaceName.empty()) {
    GUPnPContextFilter* filter = gupnp_context_manager_get_context_filter(manager_);
    gupnp_context_filter_add_entry(filter, options_.interfaceName.c_str());
    gupnp_context_filter_set_enabled(filter, TRUE);
    HOST_Log(HOST_LogLevel::Info, "waiting for interface %s", options_.interfaceName.c_str());
  } else {
    HOST_Log(HOST_LogLevel::Info, "waiting for usable network interfaces");
  }
  g_signal_connect(manager_, "context-available", G_CALLBACK(OnContextAvailable), this);
  g_signal_connect(manager_, "context-unavailable", G_CALLBACK(OnContextUnavailable), this);
}

void HOST_Network::OnContextAvailable(GUPnPContextManager*, GUPnPContext* context, void* self) {
  static_cast<HOST_Network*>(self)->Announce(context);
}

void HOST_Network::OnContextUnavailable(GUPnPContextManager*, GUPnPContext* context, void* self) {
  static_cast<HOST_Network*>(self)->Withdraw(context);
}

void HOST_Network::Announce(GUPnPContext* context) {
  GSSDPClient* client = GSSDP_CLIENT(context);
  const char* address = gssdp_client_get_host_ip(client);
  const char* interfaceName = gssdp_client_get_interface(client);
  HOST_Log(HOST_LogLevel::Info, "found interface %s (%s), port %u", interfaceName != nullptr ? interfaceName : "?",
           address != nullptr ? address : "?", gupnp_context_get_port(context));
  if (rendererFailed_) return;
  if (!rendererStarted_) {
    if (!firstContext_(address != nullptr ? address : "")) {
      rendererFailed_ = true;
      return;
    }
    rendererStarted_ = true;
  }
  RaiseListenBacklog(context);
  connections_.Follow(gupnp_context_get_server(context));
  // Host, body size and SUBSCRIBE callbacks are checked before GUPnP sees a request (HttpGuard.h).
  HOST_GuardRequests(context);
  g_signal_connect(gupnp_context_get_server(context), "request-read", G_CALLBACK(OnRequestRead), nullptr);

  // GUPnP reads each service's description from this very server through the context's client session.
  // Talking to ourselves needs no proxy, and asking for one would load GIO's proxy modules (the system
  // settings backend with them, about 1 MB resident) before anything plays.
  soup_session_set_proxy_resolver(gupnp_context_get_session(context), nullptr);

  GError* error = nullptr;
  GUPnPRootDevice* root = gupnp_root_device_new_full(context, factory_, nullptr, options_.descriptionPath.c_str(),
                                                     options_.documentRoot.c_str(), &error);
  if (root == nullptr) {
    HOST_Log(HOST_LogLevel::Error, "could not publish the device on %s: %s", address != nullptr ? address : "?",
             error != nullptr ? error->message : "unknown error");
    g_clear_error(&error);
    return;
  }
  for (const HOST_ServiceDescription& description : HOST_ServiceCatalogue()) {
    if (!HOST_IsPublished(options_.published, description.serviceType)) continue;
    GUPnPServiceInfo* info = gupnp_device_info_get_service(GUPNP_DEVICE_INFO(root), description.serviceType);
    if (info == nullptr) {
      HOST_Log(HOST_LogLevel::Error, "the device description lacks %s", description.serviceType);
      continue;
    }
    HOST_BindService(GUPNP_SERVICE(info), router_);
    registry_->Add(context, description.serviceType, GUPNP_SERVICE(info));
    g_object_unref(info);
  }
  // GSSDP spaces its messages 120 ms apart by default: the three byebyes of each of a dozen resources
  // would keep a stopping daemon waiting four seconds.
  gssdp_resource_group_set_message_delay(gupnp_root_device_get_ssdp_resource_group(root),
                                         kMessageDelayMilliseconds);
  gupnp_root_device_set_available(root, TRUE);
  devices_.push_back({GUPNP_CONTEXT(g_object_ref(context)), root});
  if (contextHook_) contextHook_(context);
  HOST_Log(HOST_LogLevel::Info, "ready: %s", gupnp_device_info_get_location(GUPNP_DEVICE_INFO(root)));
}

void HOST_Network::Withdraw(GUPnPContext* context) {
  GSSDPClient* client = GSSDP_CLIENT(context);
  const char* address = gssdp_client_get_host_ip(client);
  HOST_Log(HOST_LogLevel::Info, "lost interface %s (%s)", gssdp_client_get_interface(client),
           address != nullptr ? address : "?");
  registry_->RemoveContext(context);
  auto gone = std::stable_partition(devices_.begin(), devices_.end(),
                                    [context](const Device& device) { return device.context != context; });
  for (auto device = gone; device != devices_.end(); ++device) {
    connections_.Forget(gupnp_context_get_server(device->context));
    g_object_unref(device->root);
    g_object_unref(device->context);
  }
  devices_.erase(gone, devices_.end());
}

void HOST_Network::GoOffline() {
  if (devices_.empty()) return;
  for (const Device& device : devices_) gupnp_root_device_set_available(device.root, FALSE);
  // The byebye messages leave from the main loop, one every kMessageDelayMilliseconds: run it until they
  // have, each of the device's dozen resources announced three times.
  const gint64 deadline = g_get_monotonic_time() + kByebyeMilliseconds * 1000;
  while (g_get_monotonic_time() < deadline) {
    if (!g_main_context_iteration(nullptr, FALSE)) g_usleep(2000);
  }
  HOST_Log(HOST_LogLevel::Info, "said goodbye on the network");
}

void HOST_Network::Stop() {
  registry_->Clear();
  for (const Device& device : devices_) {
    connections_.Forget(gupnp_context_get_server(device.context));
    g_object_unref(device.root);
    g_object_unref(device.context);
  }
  devices_.clear();
  if (manager_ != nullptr) {
    g_signal_handlers_disconnect_by_data(manager_, this);
    g_clear_object(&manager_);
  }
  g_clear_object(&factory_);
}

std::vector<std::string> HOST_Network::Locations() const {
  std::vector<std::string> locations;
  for (const Device& device : devices_)
    locations.emplace_back(gupnp_device_info_get_location(GUPNP_DEVICE_INFO(device.root)));
  return locations;
}
