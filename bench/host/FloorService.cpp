#include "FloorService.h"

#include <cstring>

namespace {

struct FloorService {
  GUPnPService parent;
};

struct FloorServiceClass {
  GUPnPServiceClass parentClass;
};

GType floorServiceType = 0;

// What a UPnP service answers for an action it does not offer.
constexpr guint kInvalidAction = 401;

void SetOut(GUPnPServiceAction* action, const char* name, const char* text) {
  GValue value = G_VALUE_INIT;
  g_value_init(&value, G_TYPE_STRING);
  g_value_set_string(&value, text);
  gupnp_service_action_set_value(action, name, &value);
  g_value_unset(&value);
}

void AnswerAction(GUPnPService*, GUPnPServiceAction* action) {
  if (std::strcmp(gupnp_service_action_get_name(action), "GetTransportInfo") != 0) {
    gupnp_service_action_return_error(action, kInvalidAction, "Invalid Action");
    return;
  }
  SetOut(action, "CurrentTransportState", "STOPPED");
  SetOut(action, "CurrentTransportStatus", "OK");
  SetOut(action, "CurrentSpeed", "1");
  gupnp_service_action_return_success(action);
}

void ClassInit(gpointer, gpointer) {
  // As in the daemon: a class handler overridden for this type counts for every action name.
  g_signal_override_class_handler("action-invoked", floorServiceType, G_CALLBACK(AnswerAction));
}

}  // namespace

GType FloorServiceGetType() {
  static gsize registered = 0;
  if (g_once_init_enter(&registered)) {
    GTypeInfo info = {};
    info.class_size = sizeof(FloorServiceClass);
    info.class_init = ClassInit;
    info.instance_size = sizeof(FloorService);
    floorServiceType =
        g_type_register_static(GUPNP_TYPE_SERVICE, "BenchFloorService", &info, static_cast<GTypeFlags>(0));
    g_once_init_leave(&registered, 1);
  }
  return floorServiceType;
}
