// marlo::EventHandler: the host's receiver for the evented state of one UPnP service.
//
// A DMR_CMN_UPnPEventingThread calls HandleEvent on its own worker thread, once per batch, in the order
// the batches were queued. The host implements it by passing the values on to every subscriber of the
// service (GENA NOTIFY).
#ifndef MARLO_EVENT_HANDLER_H_
#define MARLO_EVENT_HANDLER_H_

namespace marlo {

class EventHandler {
 public:
  virtual ~EventHandler() = default;

  // One batch of `count` (>= 1) changed variables: names[i] has the new value values[i]. The arrays and
  // texts are valid only during the call.
  virtual void HandleEvent(const char* const* names, const char* const* values, long count) = 0;
};

}  // namespace marlo

#endif  // MARLO_EVENT_HANDLER_H_
