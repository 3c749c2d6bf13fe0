// The shape every action handler of the renderer services shares: reading and checking the IN arguments,
// copying the ones that are passed on into DMR_CMN_Strings, and writing the OUT arguments in order.
//
// The checks come in a fixed order, and the first that fails answers the action: a missing required IN
// argument is answered 402 "Invalid Args" before any argument's value is looked at, so that an action with
// a missing argument and a wrong "InstanceID" draws 402, not 718. A handler whose checks answered the
// action returns 0 (the reply carries the error).
//
// Thread safety: none needed; these functions keep no state.
#ifndef SINK_UPNP_ACTION_ARGUMENTS_H_
#define SINK_UPNP_ACTION_ARGUMENTS_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>

#include "sink_upnp/UPnPError.h"

class DMR_CMN_String;
namespace marlo {
class ActionRequest;
class ActionResponse;
}  // namespace marlo

// One required IN argument: its name, and where its value (owned by the request) is stored.
struct SINK_UPNP_InArgument {
  const char* name;
  const char** value;
};

// Reads the required IN arguments into their `value`s. Answers true when every one is present; false when
// one is missing, after replying 402 "Invalid Args". REQUIRES: request and response are not null.
bool SINK_UPNP_ReadArguments(const marlo::ActionRequest* request, marlo::ActionResponse* response,
                             std::initializer_list<SINK_UPNP_InArgument> arguments);

// True when `text` is exactly "0" (compared as text: "00" and " 0" are not); otherwise replies
// `upnpError` (718 for an instance, 706 for a connection) and answers false.
bool SINK_UPNP_RequireZero(marlo::ActionResponse* response, const char* text, int32_t upnpError);

// The beginning of every AVTransport handler: reads "InstanceID" and the action's other required IN
// arguments (402 "Invalid Args" when one is missing), then requires "InstanceID" to be exactly "0"
// (718 "Invalid InstanceID"). Answers true when the action may go on, false when it was answered.
// REQUIRES: request and response are not null.
bool SINK_UPNP_ReadInstanceArguments(const marlo::ActionRequest* request, marlo::ActionResponse* response,
                                     std::initializer_list<SINK_UPNP_InArgument> others = {});

// Copies an IN argument's `text` into `out` to hand it to the application. Answers 0; -989
// (DMR_CMN_ERR_NO_MEMORY) when the string has no memory for it; -1 for any other failure.
int32_t SINK_UPNP_CopyArgument(const char* text, DMR_CMN_String* out);

// Writes the OUT arguments `names[i]` = the text of `values[i]`, in order, with SetArgumentValue. Answers
// 0; -1 at the first write that fails, the arguments written before it staying in the reply. A value the
// application left unset has no text and counts as a failed write (nothing is written for it).
int32_t SINK_UPNP_WriteOutArguments(marlo::ActionResponse* response, const char* const* names,
                                    const DMR_CMN_String* values, std::size_t count);

// The same with the count taken from the arrays, so that names and values cannot disagree in number.
template <std::size_t N>
int32_t SINK_UPNP_WriteOutArguments(marlo::ActionResponse* response, const char* const (&names)[N],
                                    const DMR_CMN_String (&values)[N]) {
  return SINK_UPNP_WriteOutArguments(response, names, values, N);
}

// A query's answer to the application's `result`: 0 → its OUT arguments, written as above (0, or -1 at
// the first failed write); a number in `accepted` → that UPnP error in the reply and 0, nothing else
// written; any other number → -1, the reply untouched.
template <std::size_t N, std::size_t M>
int32_t SINK_UPNP_AnswerQuery(marlo::ActionResponse* response, int32_t result, const int32_t (&accepted)[M],
                              const char* const (&names)[N], const DMR_CMN_String (&values)[N]) {
  if (result != 0) return SINK_UPNP_AnswerTransferResult(response, result, accepted);
  return SINK_UPNP_WriteOutArguments(response, names, values);
}

#endif  // SINK_UPNP_ACTION_ARGUMENTS_H_
