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

// The three actions the benchmarks call, each answered with constants: what GUPnP costs for the action's
// shape (its outputs), and nothing else.
void AnswerAction(GUPnPService*, GUPnPServiceAction* action) {
  const char* name = gupnp_service_action_get_name(action);
  if (std::strcmp(name, "GetTransportInfo") == 0) {
    SetOut(action, "CurrentTransportState", "STOPPED");
    SetOut(action, "CurrentTransportStatus", "OK");
    SetOut(action, "CurrentSpeed", "1");
  } else if (std::strcmp(name, "GetPositionInfo") == 0) {
    SetOut(action, "Track", "0");
    SetOut(action, "TrackDuration", "0:00:00");
    SetOut(action, "TrackMetaData", "");
    SetOut(action, "TrackURI", "");
    SetOut(action, "RelTime", "0:00:00");
    SetOut(action, "AbsTime", "0:00:00");
    SetOut(action, "RelCount", "2147483647");
    SetOut(action, "AbsCount", "2147483647");
  } else if (std::strcmp(name, "SetAVTransportURI") != 0) {
    gupnp_service_action_return_error(action, kInvalidAction, "Invalid Action");
    return;
  }
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
