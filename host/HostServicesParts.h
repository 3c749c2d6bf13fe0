// The small pieces the daemon's own answers share (HostServices*.cpp): faults, arguments, numbers.
// Internal to HOST_HostServices.
#ifndef HOST_HOST_SERVICES_PARTS_H_
#define HOST_HOST_SERVICES_PARTS_H_

#include <cstdint>
#include <string>

#include "ActionRouter.h"

namespace marlo {
class ActionRequest;
}

HOST_ActionOutcome HOST_Fault(int32_t code, const char* description);

// The IN argument `name`, or false when the request does not carry it.
bool HOST_ReadArgument(const marlo::ActionRequest& request, const char* name, std::string* value);

// `text` as a decimal number without sign, blanks or leading '+', at most `maximum`.
bool HOST_ParseUnsigned(const std::string& text, unsigned maximum, unsigned* value);

// "1"/"0" as UPnP writes booleans, and "true"/"false" as some control points send them.
bool HOST_ParseBoolean(const std::string& text, bool* value);

#endif  // HOST_HOST_SERVICES_PARTS_H_
