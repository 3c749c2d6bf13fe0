// HOST_WriteScpd: the service description document (SCPD) of one service of the catalogue, as the daemon
// serves it at HOST_ScpdUrl and the build writes it into the document root.
#ifndef HOST_SCPD_WRITER_H_
#define HOST_SCPD_WRITER_H_

#include <string>

#include "host/ServiceCatalogue.h"

// A UPnP 1.0 SCPD: <scpd xmlns="urn:schemas-upnp-org:service-1-0"> with specVersion 1.0, the actionList
// (left out when the service has no action) with each action's arguments in the table's order, and the
// serviceStateTable with each variable's sendEvents, dataType, allowed values and range. The same service
// always gives the same bytes. "" when libxml2 had no memory.
std::string HOST_WriteScpd(const HOST_ServiceDescription& service);

#endif  // HOST_SCPD_WRITER_H_
