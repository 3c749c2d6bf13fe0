// HOST_ActionRouter: the one place where a control request meets the service objects (or the daemon's
// own answers, HOST_HostServices). It reads the SOAP
// body into a marlo::ActionRequest, picks the service object that answers the service the request was sent
// to, runs PerformAction with a fresh nonzero handle, and turns what came back into an outcome the UPnP
// stack can send: the OUT arguments in the order they were written, or a UPnP error with its exact text.
//
// It knows nothing of the network stack, so every rule of the binding is tested without a socket.
// Called on the main loop only, one request at a time (the service objects require it).
#ifndef HOST_ACTION_ROUTER_H_
#define HOST_ACTION_ROUTER_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ActionObserver.h"

namespace marlo {
class SinkContentTransferSubsystem;
}
class HOST_HostServices;

struct HOST_ActionOutcome {
  // 0 when the action succeeded; else the UPnP error code of the SOAP fault.
  int32_t errorCode = 0;
  // The fault's errorDescription; never empty when errorCode is set.
  std::string errorDescription;
  // The OUT arguments, in the order the service object wrote them.
  std::vector<std::pair<std::string, std::string>> out;
};

class HOST_ActionRouter {
 public:
  // `hostServices` answers the services and actions the catalogue gives to the daemon.
  HOST_ActionRouter(marlo::SinkContentTransferSubsystem* standardServices,
                    marlo::SinkContentTransferSubsystem* openHomeServices, HOST_HostServices* hostServices);

  // Answers the action whose SOAP body is `body`, sent to the service of type `serviceType`.
  HOST_ActionOutcome Perform(const char* serviceType, const char* body, std::size_t length);

  // The value of an evented variable for a new subscriber's first event. False when the service does not
  // serve the variable (the subscriber then gets the batch without it).
  bool Query(const char* serviceType, const char* variableName, std::string* value);

  // `observer` (or null for none) is told of each action a service object answered without an error.
  void SetObserver(HOST_ActionObserver* observer) { observer_ = observer; }

  // How many actions have been performed: the next action handle is one more.
  unsigned long ActionsPerformed() const { return lastHandle_; }

 private:
  marlo::SinkContentTransferSubsystem* ServiceObjectFor(const char* serviceType) const;
  // AVTransport's own transport state ("STOPPED", "PLAYING", ...), as GetTransportInfo answers it.
  bool CurrentTransportState(std::string* state);

  marlo::SinkContentTransferSubsystem* standardServices_;
  marlo::SinkContentTransferSubsystem* openHomeServices_;
  HOST_HostServices* hostServices_;
  unsigned long lastHandle_ = 0;
  HOST_ActionObserver* observer_ = nullptr;
};

#endif  // HOST_ACTION_ROUTER_H_
