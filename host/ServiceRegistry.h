// HOST_ServiceRegistry: the GUPnP services that are on the network now, by service type. There is one
// root device per network context (interface and address family), and so one service of each type per
// context; an event goes to all of them, since a control point may have subscribed through any.
// Main loop only.
#ifndef HOST_SERVICE_REGISTRY_H_
#define HOST_SERVICE_REGISTRY_H_

#include <string>
#include <vector>

#include "EventSink.h"

typedef struct _GUPnPService GUPnPService;
typedef struct _GUPnPContext GUPnPContext;

class HOST_ServiceRegistry : public HOST_EventSink {
 public:
  HOST_ServiceRegistry() = default;
  ~HOST_ServiceRegistry() override;
  HOST_ServiceRegistry(const HOST_ServiceRegistry&) = delete;
  HOST_ServiceRegistry& operator=(const HOST_ServiceRegistry&) = delete;

  // Keeps a reference to `service` until the context goes away.
  void Add(GUPnPContext* context, const std::string& serviceType, GUPnPService* service);
  void RemoveContext(GUPnPContext* context);
  void Clear();

  // Sends one property set with every name and value to each subscriber of every service of the type.
  void Notify(const std::string& serviceType, const HOST_EventBatch& batch) override;

 private:
  struct Entry {
    GUPnPContext* context;
    std::string serviceType;
    GUPnPService* service;
  };
  std::vector<Entry> entries_;
};

#endif  // HOST_SERVICE_REGISTRY_H_
