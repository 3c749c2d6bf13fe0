#include "BoundService.h"

#include <libsoup/soup.h>

#include "ActionRouter.h"
#include "Log.h"
#include "RequestGuard.h"
#include "UPnPErrors.h"

namespace {

struct BoundService {
  GUPnPService parent;
};

struct BoundServiceClass {
  GUPnPServiceClass parentClass;
};

constexpr char kRouterKey[] = "open-renderer-router";

GType boundServiceType = 0;

HOST_ActionRouter* RouterOf(GUPnPService* service) {
  return static_cast<HOST_ActionRouter*>(g_object_get_data(G_OBJECT(service), kRouterKey));
}

void SetString(GValue* value, const std::string& text) {
  g_value_init(value, G_TYPE_STRING);
  g_value_set_string(value, text.c_str());
}

void AnswerAction(GUPnPService* service, GUPnPServiceAction* action) {
  HOST_ActionRouter* router = RouterOf(service);
  if (router == nullptr) {
    gupnp_service_action_return_error(action, HOST_kActionFailed, HOST_kActionFailedText);
    return;
  }
  const char* serviceType = gupnp_service_info_get_service_type(GUPNP_SERVICE_INFO(service));
  SoupServerMessage* message = gupnp_service_action_get_message(action);
  // GUPnP takes only the action name from SOAPACTION (and cuts the header at its '#'): a header naming
  // another service would otherwise run the action of the service the request was sent to. Refused
  // unexecuted instead.
  const char* soapAction =
      soup_message_headers_get_one(soup_server_message_get_request_headers(message), "SOAPACTION");
  if (!HOST_SoapActionNamesService(soapAction, serviceType)) {
    HOST_Log(HOST_LogLevel::Warning, "refused an action whose SOAPACTION names another service: %s",
             soapAction != nullptr ? soapAction : "(none)");
    g_object_unref(message);
    gupnp_service_action_return_error(action, HOST_kInvalidAction, HOST_kInvalidActionText);
    return;
  }
  SoupMessageBody* body = soup_server_message_get_request_body(message);
  GBytes* bytes = soup_message_body_flatten(body);
  gsize length = 0;
  const char* data = static_cast<const char*>(g_bytes_get_data(bytes, &length));
  const HOST_ActionOutcome outcome = router->Perform(serviceType, data != nullptr ? data : "", length);
  g_bytes_unref(bytes);
  g_object_unref(message);

  if (outcome.errorCode != 0) {
    gupnp_service_action_return_error(action, static_cast<guint>(outcome.errorCode),
                                      outcome.errorDescription.c_str());
    return;
  }
  for (const auto& argument : outcome.out) {
    GValue value = G_VALUE_INIT;
    SetString(&value, argument.second);
    gupnp_service_action_set_value(action, argument.first.c_str(), &value);
    g_value_unset(&value);
  }
  gupnp_service_action_return_success(action);
}

void AnswerQuery(GUPnPService* service, const char* variable, GValue* value) {
  HOST_ActionRouter* router = RouterOf(service);
  if (router == nullptr) return;
  const char* serviceType = gupnp_service_info_get_service_type(GUPNP_SERVICE_INFO(service));
  std::string text;
  // Left unset, the variable is simply not part of the subscriber's first event.
  if (router->Query(serviceType, variable, &text)) SetString(value, text);
}

void ClassInit(gpointer classPointer, gpointer) {
  auto* serviceClass = static_cast<GUPnPServiceClass*>(classPointer);
  serviceClass->query_variable = AnswerQuery;
  // GUPnP answers 401 itself unless it sees a handler pending for the action's name. A class handler
  // overridden for this type counts for every name, so every action reaches AnswerAction; setting the
  // class's action_invoked alone would not count.
  g_signal_override_class_handler("action-invoked", boundServiceType, G_CALLBACK(AnswerAction));
}

}  // namespace

GType HOST_BoundServiceGetType() {
  static gsize registered = 0;
  if (g_once_init_enter(&registered)) {
    GTypeInfo info = {};
    info.class_size = sizeof(BoundServiceClass);
    info.class_init = ClassInit;
    info.instance_size = sizeof(BoundService);
    boundServiceType = g_type_register_static(GUPNP_TYPE_SERVICE, "OpenRendererBoundService", &info,
                                              static_cast<GTypeFlags>(0));
    g_once_init_leave(&registered, 1);
  }
  return boundServiceType;
}

void HOST_BindService(GUPnPService* service, HOST_ActionRouter* router) {
  g_object_set_data(G_OBJECT(service), kRouterKey, router);
}
