// The pieces the service catalogue is written with: one builder per service, each in the file of its
// family (ServiceCatalogue_Standard.cpp, ServiceCatalogue_OpenHome.cpp), and the short row helpers they
// share so that each argument and variable stays one line of its table. Internal to the catalogue.
#ifndef HOST_SERVICE_CATALOGUE_ROWS_H_
#define HOST_SERVICE_CATALOGUE_ROWS_H_

#include <utility>
#include <vector>

#include "host/ServiceCatalogue.h"

// The UPnP forum's services.
HOST_ServiceDescription HOST_DescribeAVTransport();
HOST_ServiceDescription HOST_DescribeConnectionManager();
HOST_ServiceDescription HOST_DescribeRenderingControl();

// The OpenHome services.
HOST_ServiceDescription HOST_DescribePlaylist();
HOST_ServiceDescription HOST_DescribeProduct();
HOST_ServiceDescription HOST_DescribeTime();
HOST_ServiceDescription HOST_DescribeInfo();
HOST_ServiceDescription HOST_DescribeVolume();
HOST_ServiceDescription HOST_DescribeSender();

inline HOST_Argument HOST_In(const char* name, const char* related) { return {name, false, related}; }
inline HOST_Argument HOST_Out(const char* name, const char* related) { return {name, true, related}; }

// HOST_StateVariable::sendEvents.
constexpr bool HOST_EVENTED = true;
constexpr bool HOST_NOT_EVENTED = false;
// HOST_Action::hostAnswers of an action of a plug-in service that the daemon answers itself.
constexpr bool HOST_ANSWERED_BY_DAEMON = true;

inline HOST_StateVariable HOST_Variable(const char* name, const char* dataType, bool sendEvents,
                                        std::vector<const char*> allowedValues = {}) {
  return {name, dataType, sendEvents, std::move(allowedValues)};
}

inline HOST_StateVariable HOST_RangedVariable(const char* name, const char* dataType, bool sendEvents,
                                              const char* minimum, const char* maximum, const char* step) {
  return {name, dataType, sendEvents, {}, minimum, maximum, step};
}

#endif  // HOST_SERVICE_CATALOGUE_ROWS_H_
