// HOST_EventSink: where the main loop sends a batch of evented values of one service. The service
// registry is the daemon's sink; tests record.
#ifndef HOST_EVENT_SINK_H_
#define HOST_EVENT_SINK_H_

#include <string>
#include <utility>
#include <vector>

using HOST_EventBatch = std::vector<std::pair<std::string, std::string>>;

class HOST_EventSink {
 public:
  virtual ~HOST_EventSink() = default;
  // Main loop only.
  virtual void Notify(const std::string& serviceType, const HOST_EventBatch& batch) = 0;
};

#endif  // HOST_EVENT_SINK_H_
