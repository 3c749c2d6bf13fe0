#include "EventDelivery.h"

#include <libsoup/soup.h>

#include <cstring>
#include <vector>

namespace {

GObject* (*originalConstructor)(GType, guint, GObjectConstructParam*) = nullptr;

// Raises "max-conns" among the construct properties (it can be set at construction only); every other
// property goes on as given.
GObject* ConstructWithRoom(GType type, guint count, GObjectConstructParam* parameters) {
  std::vector<GObjectConstructParam> adjusted(parameters, parameters + count);
  GValue room = G_VALUE_INIT;
  for (GObjectConstructParam& parameter : adjusted) {
    if (std::strcmp(g_param_spec_get_name(parameter.pspec), "max-conns") != 0) continue;
    if (G_VALUE_HOLDS_INT(parameter.value) && g_value_get_int(parameter.value) < static_cast<int>(HOST_kEventConnections)) {
      g_value_init(&room, G_TYPE_INT);
      g_value_set_int(&room, static_cast<int>(HOST_kEventConnections));
      parameter.value = &room;
    } else if (G_VALUE_HOLDS_UINT(parameter.value) && g_value_get_uint(parameter.value) < HOST_kEventConnections) {
      g_value_init(&room, G_TYPE_UINT);
      g_value_set_uint(&room, HOST_kEventConnections);
      parameter.value = &room;
    }
  }
  GObject* object = originalConstructor(type, count, adjusted.data());
  if (G_IS_VALUE(&room)) g_value_unset(&room);
  return object;
}

}  // namespace

void HOST_BoundEventDelivery() {
  if (originalConstructor != nullptr) return;
  // The class is kept for the life of the process: its constructor is replaced for good.
  auto* sessionClass = static_cast<GObjectClass*>(g_type_class_ref(SOUP_TYPE_SESSION));
  originalConstructor = sessionClass->constructor;
  sessionClass->constructor = ConstructWithRoom;
}
