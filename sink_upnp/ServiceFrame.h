// The frame both service objects are built on: their lifecycle, the registrations they make the same way,
// the action dispatch and the last step of a state variable query. Written once here and used by
// SINK_UPNP_SinkCTSSUPnPService and SINK_UPNP_OpenHomeUPnPService, which have no common base class of their
// own (each derives from the host's class only); each service keeps in its own files only what differs.
//
// SINK_UPNP_ServiceFrame<Service> works on the service's fields by name: avtServiceEventHandler,
// cmsServiceEventHandler, stateVariableManager, transferService, initialized, started, protocolInfoList.
// Each service befriends its instantiation.
#ifndef SINK_UPNP_SERVICE_FRAME_H_
#define SINK_UPNP_SERVICE_FRAME_H_

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>
#include <type_traits>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/UPnPError.h"

class DMR_CMN_AVTEventListener;
class DMR_CMN_CMSEventListener;
namespace marlo {
class EventHandler;
class Properties;
class StateVariable;
}  // namespace marlo

// Writes a queried variable's value: -1999 when it has no text; SetValue's no memory → -1997, another
// failure → -1999; else 0.
int32_t SINK_UPNP_WriteStateVariable(marlo::StateVariable* out, const char* variableName,
                                     DMR_CMN_String* value);

template <typename Service>
struct SINK_UPNP_ServiceFrame {
  using Handler = int32_t (Service::*)(unsigned long, marlo::ActionRequest*, marlo::ActionResponse*);
  struct Action {
    const char* name;
    Handler handler;
  };

  // Initialize up to a working store: -1998 for null properties; -1999 when initialized; the protocol
  // list (-962 → -1996, other → service result); the store created (none → chain cleaned, -1997) and
  // initialized (-989 → chain cleaned, store deleted, -1997; another failure → -1999 with the store left
  // in the field). The caller sets `initialized` after its own steps.
  static int32_t CreateStore(Service& service, marlo::Properties* properties) {
    using Manager = std::remove_pointer_t<decltype(service.stateVariableManager)>;
    if (properties == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
    if (service.initialized == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    const int32_t prepared = service.PrepareProtocolInfo(properties);
    if (prepared == SINK_UPNP_ERR_OUT_OF_RANGE) return SINK_UPNP_ERR_SERVICE_BAD_VALUE;  // -962: no entry
    if (prepared != 0) return SINK_UPNP_ToServiceResult(prepared);

    // A store an earlier failed attempt left in the field is initialized again rather than replaced: its
    // own Initialize frees the values and lock that attempt left, which deleting it would not.
    if (service.stateVariableManager == nullptr) {
      service.stateVariableManager = new (std::nothrow) Manager;
      if (service.stateVariableManager == nullptr) {
        service.CleanProtocolInfo();
        return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
      }
    }
    const int32_t result = service.stateVariableManager->Initialize();
    if (result == DMR_CMN_ERR_NO_MEMORY) {
      service.CleanProtocolInfo();
      delete service.stateVariableManager;
      service.stateVariableManager = nullptr;
      return SINK_UPNP_ERR_SERVICE_NO_MEMORY;
    }
    // Another failure leaves the store in place: the next Initialize initializes it again (above).
    if (result != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
    return SINK_UPNP_OK;
  }

  // Deletes the store and the protocol list. Only the AVTransport and ConnectionManager handlers have to
  // be unregistered first; the transfer service is kept.
  static int32_t Finalize(Service& service) {
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.avtServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.cmsServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.stateVariableManager->Finalize() != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
    delete service.stateVariableManager;
    service.stateVariableManager = nullptr;
    service.CleanProtocolInfo();
    service.initialized = 0;
    return SINK_UPNP_OK;
  }

  // Start after the service's own checks: every state variable is reset, with the joined protocol list as
  // the sink protocol list, and the service is started.
  static int32_t ResetStoreAndStart(Service& service) {
    char* joined = nullptr;
    const int32_t built = service.GetProtocolInfo(&joined);
    if (built != 0) return SINK_UPNP_ToServiceResult(built);
    DMR_CMN_String protocolInfo;
    const int32_t copied = protocolInfo.SetCString(joined);
    std::free(joined);
    if (copied != 0) return SINK_UPNP_ToServiceResult(copied);
    const int32_t reset = service.stateVariableManager->InitializeVariables(&protocolInfo);
    if (reset != 0) return SINK_UPNP_ToServiceResult(reset);
    service.started = 1;
    return SINK_UPNP_OK;
  }

  static int32_t Stop(Service& service) {
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    // Nothing else is told: the transfer service plays on, the store keeps its values.
    service.started = 0;
    return SINK_UPNP_OK;
  }

  // Registration of a service's eventing handler, passed to the store's `registerInStore`, kept in
  // `field`: -1998 for null; -1995; -1999 when started or one is kept; the store's -989 → -1997, another
  // failure → -1999 (nothing kept).
  template <typename Manager>
  static int32_t RegisterEventHandler(Service& service, marlo::EventHandler* Service::*field,
                                      int32_t (Manager::*registerInStore)(marlo::EventHandler*),
                                      marlo::EventHandler* handler) {
    if (handler == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started == 1 || service.*field != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    const int32_t result = (service.stateVariableManager->*registerInStore)(handler);
    if (result != 0) return SINK_UPNP_ToServiceResult(result);
    service.*field = handler;
    return SINK_UPNP_OK;
  }

  // -1995; -1999 when started, none is kept or the store's `unregisterInStore` fails; then forgotten.
  template <typename Manager>
  static int32_t UnregisterEventHandler(Service& service, marlo::EventHandler* Service::*field,
                                        int32_t (Manager::*unregisterInStore)()) {
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started == 1 || service.*field == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if ((service.stateVariableManager->*unregisterInStore)() != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
    service.*field = nullptr;
    return SINK_UPNP_OK;
  }

  // The ConnectionManager handler is only kept: that service sends no events.
  static int32_t RegisterConnectionManagerHandler(Service& service, marlo::EventHandler* handler) {
    if (handler == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.cmsServiceEventHandler != nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    service.cmsServiceEventHandler = handler;
    return SINK_UPNP_OK;
  }

  static int32_t UnregisterConnectionManagerHandler(Service& service) {
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started == 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.cmsServiceEventHandler == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    service.cmsServiceEventHandler = nullptr;
    return SINK_UPNP_OK;
  }

  // The application's listeners go to the store; -1 while there is none.
  static int32_t RegisterApplicationAVTEventListener(Service& service, DMR_CMN_AVTEventListener* listener) {
    if (service.stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
    return service.stateVariableManager->RegisterApplicationAVTEventListener(listener);
  }
  static int32_t UnregisterApplicationAVTEventListener(Service& service) {
    if (service.stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
    return service.stateVariableManager->UnregisterApplicationAVTEventListener();
  }
  static int32_t RegisterApplicationCMSEventListener(Service& service, DMR_CMN_CMSEventListener* listener) {
    if (service.stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
    return service.stateVariableManager->RegisterApplicationCMSEventListener(listener);
  }
  static int32_t UnregisterApplicationCMSEventListener(Service& service) {
    if (service.stateVariableManager == nullptr) return SINK_UPNP_ERR_GENERIC;
    return service.stateVariableManager->UnregisterApplicationCMSEventListener();
  }

  // The host's timer ran out: forwarded unchanged. -1998 for null `timeout` or `text`; -1995; -1999 when
  // not started, without a transfer service or when it fails.
  static int32_t WarnTimeOut(Service& service, unsigned long id, unsigned long* timeout, const char** text) {
    if (timeout == nullptr || text == nullptr) return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.transferService == nullptr) return SINK_UPNP_ERR_SERVICE_FAILURE;
    if (service.transferService->WarnTimeOut(id, timeout, text) != 0) return SINK_UPNP_ERR_SERVICE_FAILURE;
    return SINK_UPNP_OK;
  }

  // Serves an action through the first entry of `actions` with its name (exact, case-sensitive); no name
  // or an unknown one is answered 401 "Invalid Action" with result 0. -1998 for a null request or
  // response or a zero handle (before the state is looked at); -1995; -1999 when not started; then the
  // handler's result as a service result.
  template <std::size_t N>
  static int32_t PerformAction(Service& service, const Action (&actions)[N], marlo::ActionRequest* request,
                               marlo::ActionResponse* response, unsigned long actionHandle) {
    if (request == nullptr || response == nullptr || actionHandle == 0) {
      return SINK_UPNP_ERR_SERVICE_INVALID_ARGUMENT;
    }
    if (service.initialized != 1) return SINK_UPNP_ERR_SERVICE_NOT_INITIALIZED;
    if (service.started != 1) return SINK_UPNP_ERR_SERVICE_FAILURE;

    const char* name = request->GetActionName();
    if (name != nullptr) {
      for (const Action& action : actions) {
        if (std::strcmp(action.name, name) == 0) {
          return SINK_UPNP_ToServiceResult((service.*action.handler)(actionHandle, request, response));
        }
      }
    }
    SINK_UPNP_WriteUPnPError(response, 401);
    return SINK_UPNP_OK;
  }
};

#endif  // SINK_UPNP_SERVICE_FRAME_H_
