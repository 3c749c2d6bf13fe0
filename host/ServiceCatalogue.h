// The one description of the nine services the renderer's root device offers: their types and ids, who
// answers their actions, every action with its arguments in order, and every state variable with its type,
// allowed values and whether it is evented.
//
// Everything a control point reads about a service (the SCPD documents, the device description's service
// list) is written from this table, and the daemon binds each service to the object named as its
// responder. Keeping it in one place is what lets a test hold the description against the service objects
// that really answer: an action or argument added, removed, renamed or reordered here without the same
// change in the plug-in fails that test.
//
// The table is built on the first call of HOST_ServiceCatalogue() (thread-safe) and lives until the process
// ends; every pointer in it points at a string literal.
#ifndef HOST_SERVICE_CATALOGUE_H_
#define HOST_SERVICE_CATALOGUE_H_

#include <string>
#include <vector>

// Who answers a service's actions and state variable queries.
enum class HOST_Responder {
  StandardServices,  // the plug-in's AVTransport/ConnectionManager service object
  OpenHomeServices,  // the plug-in's OpenHome service object
  Host,              // the daemon itself
};

struct HOST_Argument {
  const char* name;
  bool out;                          // false: IN, true: OUT
  const char* relatedStateVariable;  // a variable of the same service
};

struct HOST_Action {
  const char* name;
  // IN arguments in the order the handler reads them, then OUT arguments in the order it writes them.
  std::vector<HOST_Argument> arguments;
  // True for an action of a plug-in service that the daemon answers itself (the service object answers it
  // 401 "Invalid Action"). Always false in a service whose responder is the host.
  bool hostAnswers = false;
};

struct HOST_StateVariable {
  const char* name;
  const char* dataType;  // a UPnP data type: "string", "ui4", "i4", "ui2", "i2", "boolean", "bin.base64"
  bool sendEvents;
  std::vector<const char*> allowedValues;  // empty: any value of the type
  // An allowed range, all three null when there is none.
  const char* minimum = nullptr;
  const char* maximum = nullptr;
  const char* step = nullptr;
};

struct HOST_ServiceDescription {
  const char* name;         // "AVTransport": file and URL names
  const char* serviceType;  // "urn:schemas-upnp-org:service:AVTransport:1"
  const char* serviceId;    // "urn:upnp-org:serviceId:AVTransport"
  HOST_Responder responder;
  std::vector<HOST_Action> actions;
  std::vector<HOST_StateVariable> variables;
};

// The nine services in the order the device description lists them.
const std::vector<HOST_ServiceDescription>& HOST_ServiceCatalogue();

// The service whose type is exactly `serviceType`; null when there is none or `serviceType` is null.
const HOST_ServiceDescription* HOST_FindService(const char* serviceType);

// The service's URLs on the daemon's HTTP server, absolute paths: "/scpd/AVTransport.xml",
// "/control/AVTransport", "/event/AVTransport".
std::string HOST_ScpdUrl(const HOST_ServiceDescription& service);
std::string HOST_ControlUrl(const HOST_ServiceDescription& service);
std::string HOST_EventUrl(const HOST_ServiceDescription& service);

// The SCPD's path below the document root: "scpd/AVTransport.xml".
std::string HOST_ScpdFileName(const HOST_ServiceDescription& service);

#endif  // HOST_SERVICE_CATALOGUE_H_
