// What the tests of both service objects check in an action's reply: the OUT arguments in order, the UPnP
// error with its exact description (as a control point reads it), or a reply left untouched.
#ifndef TESTS_SINK_UPNP_ACTION_REPLIES_H_
#define TESTS_SINK_UPNP_ACTION_REPLIES_H_

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "marlo/ActionResponse.h"

// Names and values, in order: the IN arguments of a request or the OUT arguments of a reply.
using Args = std::vector<std::pair<std::string, std::string>>;

// One UPnP error as a control point reads it.
struct UPnPErrorText {
  int32_t code;
  const char* description;
};

// Every UPnP error the renderer answers with, written out byte for byte, independently of the plug-in's
// own table.
extern const UPnPErrorText kUPnPErrorTexts[13];

// The exact description of UPnP error `code` (715 with its curly quotes); a test failure for a number the
// renderer never answers with.
std::string Description(int32_t code);

// The OUT arguments of a reply, in the order they were written.
Args OutArguments(const marlo::ActionResponse& response);

// Nothing at all was written into the reply: the host answers the control point itself.
void ExpectUntouched(const marlo::ActionResponse& response);

// The reply carries UPnP error `code` with its exact description, its code written `writes` times (some
// actions write the same error twice), and no OUT argument.
void ExpectError(const marlo::ActionResponse& response, int32_t code, unsigned writes = 1);

#endif  // TESTS_SINK_UPNP_ACTION_REPLIES_H_
