// What the plug-in library shows to its users. It is built with hidden visibility: only the classes marked
// SINK_UPNP_EXPORT (the two service objects, the two state variable stores and the playlist the
// application is handed) are part of its interface; everything else stays inside the library, and so do the
// private member functions of those classes (DMR_CMN_HIDDEN at their declaration).
#ifndef SINK_UPNP_EXPORT_H_
#define SINK_UPNP_EXPORT_H_

#include "dmr_cmn/Visibility.h"

#define SINK_UPNP_EXPORT __attribute__((visibility("default")))

#endif  // SINK_UPNP_EXPORT_H_
