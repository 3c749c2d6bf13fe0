#include "ActionRouter.h"

#include <cstring>

#include "HostServices.h"
#include "InitialLastChange.h"
#include "Log.h"
#include "ReadListBound.h"
#include "ServiceCatalogue.h"
#include "ServiceTypes.h"
#include "SoapRequestReader.h"
#include "UPnPErrors.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/SinkContentTransferSubsystem.h"
#include "marlo/StateVariable.h"

namespace {

HOST_ActionOutcome Fault(int32_t code, const char* description) {
  HOST_ActionOutcome outcome;
  outcome.errorCode = code;
  outcome.errorDescription = description;
  return outcome;
}

// Whether the catalogue gives `action` of the service to the daemon rather than to a service object.
bool HostAnswers(const HOST_ServiceDescription& service, const char* action) {
  for (const HOST_Action& described : service.actions)
    if (std::strcmp(described.name, action) == 0) return described.hostAnswers;
  return false;
}

const char* ShortName(const char* serviceType) {
  const HOST_ServiceDescription* service = HOST_FindService(serviceType);
  return service != nullptr ? service->name : serviceType;
}

}  // namespace

HOST_ActionRouter::HOST_ActionRouter(marlo::SinkContentTransferSubsystem* standardServices,
                                     marlo::SinkContentTransferSubsystem* openHomeServices,
                                     HOST_HostServices* hostServices)
    : standardServices_(standardServices), openHomeServices_(openHomeServices), hostServices_(hostServices) {}

marlo::SinkContentTransferSubsystem* HOST_ActionRouter::ServiceObjectFor(const char* serviceType) const {
  const HOST_ServiceDescription* service = HOST_FindService(serviceType);
  if (service == nullptr) return nullptr;
  switch (service->responder) {
    case HOST_Responder::StandardServices:
      return standardServices_;
    case HOST_Responder::OpenHomeServices:
      return openHomeServices_;
    case HOST_Responder::Host:
      return nullptr;
  }
  return nullptr;
}

HOST_ActionOutcome HOST_ActionRouter::Perform(const char* serviceType, const char* body, std::size_t length) {
  marlo::ActionRequest request;
  std::string reason;
  // A body that is not a well-formed SOAP request is refused before anything runs: executing what a
  // lenient parser made of a truncated request could start the wrong track or delete the wrong one.
  if (HOST_ReadSoapRequest(body, length, &request, &reason) != 0) {
    HOST_Log(HOST_LogLevel::Warning, "refused a %s request that is not well-formed SOAP: %s",
             ShortName(serviceType), reason.c_str());
    return Fault(HOST_kInvalidArgs, HOST_kInvalidArgsText);
  }
  const char* action = request.GetActionName() != nullptr ? request.GetActionName() : "";
  // The action element's namespace must be the service the request was sent to: an action of another
  // service is not run under this one's name.
  const char* bodyType = request.GetServiceType() != nullptr ? request.GetServiceType() : "";
  if (std::strcmp(bodyType, serviceType) != 0) {
    HOST_Log(HOST_LogLevel::Warning, "refused %s %s: the action belongs to %s", ShortName(serviceType), action,
             bodyType);
    return Fault(HOST_kInvalidAction, HOST_kInvalidActionText);
  }

  marlo::SinkContentTransferSubsystem* serviceObject = ServiceObjectFor(serviceType);
  const HOST_ServiceDescription* service = HOST_FindService(serviceType);
  // The handle only has to be nonzero and distinct per action; a counter that skips 0 when it wraps.
  const auto nextHandle = [this] {
    if (++lastHandle_ == 0) ++lastHandle_;
    return lastHandle_;
  };
  if (service != nullptr && (service->responder == HOST_Responder::Host || HostAnswers(*service, action))) {
    // RenderingControl, Volume and the daemon's own AVTransport action: never left to a service object,
    // which would answer 401 for an action the device lists.
    if (hostServices_ == nullptr) return Fault(HOST_kActionFailed, HOST_kActionFailedText);
    HOST_ActionOutcome outcome = hostServices_->Perform(serviceType, request, nextHandle());
    HOST_Log(HOST_LogLevel::Debug, "%s %s: answered by the daemon (%d)", ShortName(serviceType), action,
             static_cast<int>(outcome.errorCode));
    return outcome;
  }
  if (serviceObject == nullptr) {
    HOST_Log(HOST_LogLevel::Info, "%s %s: not served", ShortName(serviceType), action);
    return Fault(HOST_kActionFailed, HOST_kActionFailedText);
  }

  // On purpose: a ReadList whose answer would be larger than the bound is refused before the service object
  // builds it, so that a short request cannot make the daemon build and send gigabytes (ReadListBound.h).
  if (serviceObject == openHomeServices_ && std::strcmp(serviceType, HOST_kPlaylistType) == 0 &&
      std::strcmp(action, "ReadList") == 0) {
    std::size_t size = 0;
    const char* idList = request.GetArgumentValue("IdList");
    if (!HOST_ReadListWithinBound(serviceObject, idList != nullptr ? idList : "", HOST_kMaxReadListReplyBytes, &size)) {
      HOST_Log(HOST_LogLevel::Warning, "Playlist ReadList refused: its answer would exceed %zu bytes (%zu reached)",
               HOST_kMaxReadListReplyBytes, size);
      return Fault(HOST_kActionFailed, HOST_kActionFailedText);
    }
  }

  marlo::ActionResponse response;
  const int32_t result = serviceObject->PerformAction(&request, &response, nextHandle());
  if (result != 0) {
    HOST_Log(HOST_LogLevel::Warning, "%s %s failed in the service object (%d): answered %d %s",
             ShortName(serviceType), action, static_cast<int>(result), HOST_kActionFailed, HOST_kActionFailedText);
    return Fault(HOST_kActionFailed, HOST_kActionFailedText);
  }
  if (response.GetErrorCode() != 0) {
    const char* description = response.GetErrorDescription();
    // A fault without a text would leave the stack unable to answer at all; say what we know instead.
    if (description == nullptr || description[0] == '\0') description = HOST_kActionFailedText;
    HOST_Log(HOST_LogLevel::Debug, "%s %s: %d %s", ShortName(serviceType), action,
             static_cast<int>(response.GetErrorCode()), description);
    return Fault(response.GetErrorCode(), description);
  }

  HOST_ActionOutcome outcome;
  outcome.out.reserve(response.GetArgumentCount());
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    const char* value = response.GetArgumentValueAt(i);
    outcome.out.emplace_back(response.GetArgumentName(i), value != nullptr ? value : "");
  }
  HOST_Log(HOST_LogLevel::Debug, "%s %s: answered with %zu values", ShortName(serviceType), action,
           outcome.out.size());
  if (observer_ != nullptr) observer_->ActionSucceeded(serviceType, action);
  return outcome;
}

bool HOST_ActionRouter::Query(const char* serviceType, const char* variableName, std::string* value) {
  const HOST_ServiceDescription* service = HOST_FindService(serviceType);
  if (service != nullptr && service->responder == HOST_Responder::Host)
    return hostServices_ != nullptr && hostServices_->Query(serviceType, variableName, value);
  marlo::SinkContentTransferSubsystem* serviceObject = ServiceObjectFor(serviceType);
  if (serviceObject == nullptr) return false;
  marlo::StateVariable variable;
  const int32_t result = serviceObject->GetStateVariable(serviceType, variableName, &variable);
  if (result != 0 || variable.GetValue() == nullptr) {
    HOST_Log(HOST_LogLevel::Debug, "%s %s: no value for a new subscriber (%d)", ShortName(serviceType),
             variableName, static_cast<int>(result));
    return false;
  }
  *value = variable.GetValue();
  std::string state;
  if (std::strcmp(serviceType, HOST_kAVTransportType) == 0 && std::strcmp(variableName, "LastChange") == 0 &&
      CurrentTransportState(&state))
    *value = HOST_WithTransportState(*value, state);
  return true;
}

bool HOST_ActionRouter::CurrentTransportState(std::string* state) {
  // A read outside any action of a control point: the handle only has to be nonzero.
  constexpr unsigned long kQueryHandle = ~0UL;
  marlo::ActionRequest request;
  marlo::ActionResponse response;
  if (standardServices_ == nullptr || request.SetServiceType(HOST_kAVTransportType) != 0 ||
      request.SetActionName("GetTransportInfo") != 0 || request.AddArgument("InstanceID", "0") != 0 ||
      standardServices_->PerformAction(&request, &response, kQueryHandle) != 0 || response.GetErrorCode() != 0)
    return false;
  for (std::size_t i = 0; i < response.GetArgumentCount(); ++i) {
    const char* value = response.GetArgumentValueAt(i);
    if (std::strcmp(response.GetArgumentName(i), "CurrentTransportState") == 0 && value != nullptr &&
        value[0] != '\0') {
      *state = value;
      return true;
    }
  }
  return false;
}
