// floor_device: our UPnP stack's floor. GUPnP 1.6 with one bare root device and the one service of
// FloorService, on the network the daemon would use for the same options: a context manager limited to one
// interface (one context per address family), one fixed port, the listen backlog raised as the daemon raises
// it. Run by bench/host/run.sh next to the daemon:
//   floor_device --interface lo --port 49801 --docroot build/host/docroot --state-dir /tmp/floor
// The description is written into the state directory; the document root must hold scpd/AVTransport.xml
// (the daemon's generated document root does). Logs "ready: <description URL>" per context, as the daemon
// does, and stops on SIGINT or SIGTERM.
#include <glib-unix.h>
#include <libgupnp/gupnp.h>
#include <libsoup/soup.h>
#include <sys/socket.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <string>
#include <vector>

#include "FloorDescription.h"
#include "FloorService.h"

namespace {

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";

// The daemon's backlog: GUPnP listens with 10, too few for many clients connecting at once, and the
// floor must not refuse connections the daemon accepts.
constexpr int kListenBacklog = 128;

struct Floor {
  std::string descriptionPath;
  std::string documentRoot;
  GUPnPResourceFactory* factory = nullptr;
  std::vector<GUPnPRootDevice*> roots;
  std::vector<GUPnPServiceInfo*> services;
};

void RaiseListenBacklog(GUPnPContext* context) {
  GSList* listeners = soup_server_get_listeners(gupnp_context_get_server(context));
  for (GSList* item = listeners; item != nullptr; item = item->next) {
    if (listen(g_socket_get_fd(G_SOCKET(item->data)), kListenBacklog) != 0)
      std::fprintf(stderr, "warning: could not raise the listen backlog: %s\n", g_strerror(errno));
  }
  g_slist_free(listeners);
}

void OnContextAvailable(GUPnPContextManager*, GUPnPContext* context, gpointer data) {
  auto* floor = static_cast<Floor*>(data);
  RaiseListenBacklog(context);
  GError* error = nullptr;
  GUPnPRootDevice* root = gupnp_root_device_new_full(context, floor->factory, nullptr,
                                                     floor->descriptionPath.c_str(),
                                                     floor->documentRoot.c_str(), &error);
  if (root == nullptr) {
    std::fprintf(stderr, "error: could not publish the device: %s\n", error != nullptr ? error->message : "?");
    g_clear_error(&error);
    return;
  }
  floor->roots.push_back(root);
  // GUPnP makes a service, and so serves its control URL, only when someone asks for it, and lets it go
  // with the last reference: the floor keeps one, as the daemon's registry does.
  GUPnPServiceInfo* service = gupnp_device_info_get_service(GUPNP_DEVICE_INFO(root), kAVTransport);
  if (service == nullptr) {
    std::fprintf(stderr, "error: the description lacks %s\n", kAVTransport);
    return;
  }
  floor->services.push_back(service);
  gupnp_root_device_set_available(root, TRUE);
  std::fprintf(stderr, "info: ready: %s\n", gupnp_device_info_get_location(GUPNP_DEVICE_INFO(root)));
}

gboolean Quit(gpointer loop) {
  g_main_loop_quit(static_cast<GMainLoop*>(loop));
  return G_SOURCE_REMOVE;
}

bool WriteDescription(const std::string& stateDirectory, std::string* path) {
  if (g_mkdir_with_parents(stateDirectory.c_str(), 0700) != 0) {
    std::fprintf(stderr, "error: cannot make %s: %s\n", stateDirectory.c_str(), g_strerror(errno));
    return false;
  }
  gchar* uuid = g_uuid_string_random();
  const std::string document = FloorDescription(std::string("uuid:") + uuid);
  g_free(uuid);
  *path = stateDirectory + "/floor-description.xml";
  GError* error = nullptr;
  if (!g_file_set_contents(path->c_str(), document.c_str(), static_cast<gssize>(document.size()), &error)) {
    std::fprintf(stderr, "error: %s\n", error->message);
    g_clear_error(&error);
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  gchar* interfaceName = nullptr;
  gint port = 0;
  gchar* documentRoot = nullptr;
  gchar* stateDirectory = nullptr;
  const GOptionEntry entries[] = {
      {"interface", 'i', 0, G_OPTION_ARG_STRING, &interfaceName, "the one interface to serve on", "IFACE"},
      {"port", 'p', 0, G_OPTION_ARG_INT, &port, "the TCP port (0: any free port)", "PORT"},
      {"docroot", 'r', 0, G_OPTION_ARG_FILENAME, &documentRoot, "the document root, with scpd/AVTransport.xml",
       "DIR"},
      {"state-dir", 's', 0, G_OPTION_ARG_FILENAME, &stateDirectory, "where the description is written", "DIR"},
      {nullptr, 0, 0, G_OPTION_ARG_NONE, nullptr, nullptr, nullptr}};
  GOptionContext* options = g_option_context_new("- a bare GUPnP MediaRenderer answering GetTransportInfo");
  g_option_context_add_main_entries(options, entries, nullptr);
  GError* error = nullptr;
  const bool parsed = g_option_context_parse(options, &argc, &argv, &error);
  g_option_context_free(options);
  if (!parsed || interfaceName == nullptr || documentRoot == nullptr || stateDirectory == nullptr || port < 0 ||
      port > 65535) {
    std::fprintf(stderr, "usage: floor_device --interface IFACE --port PORT --docroot DIR --state-dir DIR%s%s\n",
                 error != nullptr ? ": " : "", error != nullptr ? error->message : "");
    g_clear_error(&error);
    return 2;
  }

  Floor floor;
  gchar* absoluteRoot = g_canonicalize_filename(documentRoot, nullptr);
  floor.documentRoot = absoluteRoot;
  g_free(absoluteRoot);
  gchar* absoluteState = g_canonicalize_filename(stateDirectory, nullptr);
  const bool written = WriteDescription(absoluteState, &floor.descriptionPath);
  g_free(absoluteState);
  if (!written) return 1;

  floor.factory = gupnp_resource_factory_new();
  gupnp_resource_factory_register_resource_type(floor.factory, kAVTransport, FloorServiceGetType());
  GUPnPContextManager* manager =
      gupnp_context_manager_create_full(GSSDP_UDA_VERSION_1_0, G_SOCKET_FAMILY_INVALID, static_cast<guint>(port));
  GUPnPContextFilter* filter = gupnp_context_manager_get_context_filter(manager);
  gupnp_context_filter_add_entry(filter, interfaceName);
  gupnp_context_filter_set_enabled(filter, TRUE);
  g_signal_connect(manager, "context-available", G_CALLBACK(OnContextAvailable), &floor);

  GMainLoop* loop = g_main_loop_new(nullptr, FALSE);
  g_unix_signal_add(SIGINT, Quit, loop);
  g_unix_signal_add(SIGTERM, Quit, loop);
  g_main_loop_run(loop);

  g_signal_handlers_disconnect_by_data(manager, &floor);
  for (GUPnPServiceInfo* service : floor.services) g_object_unref(service);
  for (GUPnPRootDevice* root : floor.roots) g_object_unref(root);
  g_object_unref(manager);
  g_object_unref(floor.factory);
  g_main_loop_unref(loop);
  g_free(interfaceName);
  g_free(documentRoot);
  g_free(stateDirectory);
  return 0;
}
