// HOST_Network: the renderer on the network. A GUPnP context manager gives one context per usable
// interface and address family (IPv4 and IPv6), also for interfaces that come up after the daemon
// started; each context gets its own root device from the same description, with every service bound to
// the router and entered in the registry for events. The first context starts the renderer.
// Main loop only.
#ifndef HOST_NETWORK_H_
#define HOST_NETWORK_H_

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "PublishedServices.h"
#include "ServerConnections.h"

typedef struct _GUPnPContextManager GUPnPContextManager;
typedef struct _GUPnPContext GUPnPContext;
typedef struct _GUPnPRootDevice GUPnPRootDevice;
typedef struct _GUPnPResourceFactory GUPnPResourceFactory;
class HOST_ActionRouter;
class HOST_ServiceRegistry;

struct HOST_NetworkOptions {
  std::string interfaceName;    // empty: every usable interface but loopback
  unsigned port = 0;            // 0: any free port
  std::string descriptionPath;  // the device description, an absolute path
  std::string documentRoot;     // served at "/": SCPDs, icons, openhome.xml
  HOST_PublishedServices published = HOST_PublishedServices::Both;  // the services the description lists
};

class HOST_Network {
 public:
  // Called once, with the address of the first usable context, before its device is announced;
  // answers false when the renderer could not start (the network then announces nothing).
  using FirstContext = std::function<bool(const std::string& address)>;

  HOST_Network(HOST_NetworkOptions options, HOST_ActionRouter* router, HOST_ServiceRegistry* registry,
               FirstContext firstContext);
  ~HOST_Network();
  HOST_Network(const HOST_Network&) = delete;
  HOST_Network& operator=(const HOST_Network&) = delete;

  void Start();
  // Says byebye on every context and waits, within a bound, for the messages to leave.
  void GoOffline();
  // Lets go of every device and context.
  void Stop();

  // The description URLs of the devices on the network now.
  std::vector<std::string> Locations() const;

  // `hook` is called with each context the device is published on, right after (the status page).
  void OnEachContext(std::function<void(GUPnPContext*)> hook) { contextHook_ = std::move(hook); }

 private:
  struct Device {
    GUPnPContext* context;
    GUPnPRootDevice* root;
  };
  static void OnContextAvailable(GUPnPContextManager*, GUPnPContext* context, void* self);
  static void OnContextUnavailable(GUPnPContextManager*, GUPnPContext* context, void* self);
  void Announce(GUPnPContext* context);
  void Withdraw(GUPnPContext* context);

  HOST_NetworkOptions options_;
  HOST_ActionRouter* router_;
  HOST_ServiceRegistry* registry_;
  FirstContext firstContext_;
  bool rendererStarted_ = false;
  bool rendererFailed_ = false;
  GUPnPContextManager* manager_ = nullptr;
  GUPnPResourceFactory* factory_ = nullptr;
  std::vector<Device> devices_;
  // Closes the connections clients left and frees their sockets (see ServerConnections.h).
  HOST_ServerConnections connections_;
  std::function<void(GUPnPContext*)> contextHook_;
};

#endif  // HOST_NETWORK_H_
