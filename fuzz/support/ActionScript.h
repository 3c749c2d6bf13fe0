// ActionScript: what the two service-object targets share: a request as the input chooses it, and the
// checks that every answer of PerformAction must pass.
#ifndef FUZZ_SUPPORT_ACTION_SCRIPT_H_
#define FUZZ_SUPPORT_ACTION_SCRIPT_H_

#include <cstddef>
#include <cstdint>

#include "FuzzScript.h"

namespace marlo {
class ActionRequest;
class ActionResponse;
}  // namespace marlo

// The words a service's requests are made of.
struct ActionWords {
  const char* const* serviceTypes;
  std::size_t serviceTypeCount;
  const char* const* actions;
  std::size_t actionCount;
  const char* const* arguments;
  std::size_t argumentCount;
};

// Fills a fresh `request` with a service type, an action name and up to eight arguments (a name and a
// value each; a name may come twice), every one of them a word or an arbitrary text; now and then one of
// the three is left out.
void FillRequest(FuzzScript& script, const ActionWords& words, marlo::ActionRequest* request);

// What PerformAction of a started service may answer while every host operation succeeds: 0, -1997 (no
// memory), -1998 (a null request or response, or a zero handle) or -1999 (the handler failed); an error
// in the reply is a UPnP number with its description.
void CheckServed(int32_t result, const marlo::ActionResponse& response);

#endif  // FUZZ_SUPPORT_ACTION_SCRIPT_H_
