#include "sink_upnp/TransportState.h"

#include <cstring>

const SINK_UPNP_TransportStateWords* SINK_UPNP_FindTransportState(const char* text) {
  if (text == nullptr) return nullptr;
  for (const SINK_UPNP_TransportStateWords& row : SINK_UPNP_transportStateTable) {
    if (std::strcmp(row.avTransport, text) == 0) return &row;
  }
  return nullptr;
}

const char* SINK_UPNP_OpenHomeTransportState(const char* text) {
  const SINK_UPNP_TransportStateWords* row = SINK_UPNP_FindTransportState(text);
  return row != nullptr ? row->openHome : nullptr;
}
