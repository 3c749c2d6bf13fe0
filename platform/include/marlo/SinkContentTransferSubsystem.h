// marlo::SinkContentTransferSubsystem: the base class of a service object that the host's UPnP device
// stack drives (one object may serve several UPnP services).
//
// The host calls, in this order: Initialize; the Register* operations; Start; then any number of
// PerformAction, GetStateVariable and WarnTimeOut; Stop; the Unregister* operations; Finalize; delete.
// Every operation answers a signed 32-bit result code and none throws.
//
// The class has two interface tables. The primary one holds, in this order: the destructor (complete and
// deleting), PerformAction, WarnTimeOut, Initialize, Finalize, Start, Stop, the Register/Unregister pairs
// of the AVTransport, ConnectionManager, Playlist, Product, Time, Info and Sender service event
// listeners, the FormatDecoderSubsystem pair, and GetStateVariable. The second one, through the base
// StateVariableProvider, holds the destructor and GetStateVariable, for the stack's state-variable query
// interface. The order is the host's ABI: new operations go after GetStateVariable, never between.
#ifndef MARLO_SINK_CONTENT_TRANSFER_SUBSYSTEM_H_
#define MARLO_SINK_CONTENT_TRANSFER_SUBSYSTEM_H_

#include <cstdint>

namespace marlo {

class ActionRequest;
class ActionResponse;
class EventHandler;
class FormatDecoderSubsystem;
class Properties;
class StateVariable;

// Any component the host loads; its interface table starts with the destructor.
class Subsystem {
 public:
  virtual ~Subsystem() = default;
};

// The stack's query for the current value of an evented state variable.
class StateVariableProvider {
 public:
  virtual ~StateVariableProvider() = default;

  // Writes the value of `variableName` of the service `serviceName` into `out` (StateVariable::SetValue).
  virtual int32_t GetStateVariable(const char* serviceName, const char* variableName,
                                   StateVariable* out) = 0;
};

class SinkContentTransferSubsystem : public Subsystem, public StateVariableProvider {
 public:
  ~SinkContentTransferSubsystem() override = default;

  // Serves one action; `actionHandle` (nonzero) identifies it to the application.
  virtual int32_t PerformAction(ActionRequest* request, ActionResponse* response,
                                unsigned long actionHandle) = 0;
  // Tells the service that the host's timer `id` ran out; the service may give a new `timeout` and a
  // `text` for the host's log.
  virtual int32_t WarnTimeOut(unsigned long id, unsigned long* timeout, const char** text) = 0;
  virtual int32_t Initialize(Properties* properties) = 0;
  virtual int32_t Finalize() = 0;
  virtual int32_t Start() = 0;
  virtual int32_t Stop() = 0;
  virtual int32_t RegisterAVTransportServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterAVTransportServiceEventListener() = 0;
  virtual int32_t RegisterConnectionManagerServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterConnectionManagerServiceEventListener() = 0;
  virtual int32_t RegisterPlaylistServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterPlaylistServiceEventListener() = 0;
  virtual int32_t RegisterProductServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterProductServiceEventListener() = 0;
  virtual int32_t RegisterTimeServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterTimeServiceEventListener() = 0;
  virtual int32_t RegisterInfoServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterInfoServiceEventListener() = 0;
  virtual int32_t RegisterSenderServiceEventListener(EventHandler* handler) = 0;
  virtual int32_t UnregisterSenderServiceEventListener() = 0;
  virtual int32_t RegisterFormatDecoderSubsystem(FormatDecoderSubsystem* decoder) = 0;
  virtual int32_t UnregisterFormatDecoderSubsystem() = 0;
  // Declared again here so that it also takes its place at the end of the primary table; one override
  // in a derived class serves both tables.
  int32_t GetStateVariable(const char* serviceName, const char* variableName,
                           StateVariable* out) override = 0;
};

}  // namespace marlo

#endif  // MARLO_SINK_CONTENT_TRANSFER_SUBSYSTEM_H_
