// The UPnP errors the renderer services answer actions with, shared by both service objects.
#ifndef SINK_UPNP_UPNP_ERROR_H_
#define SINK_UPNP_UPNP_ERROR_H_

#include <cstddef>
#include <cstdint>

namespace marlo {
class ActionResponse;
}

// The fixed description of UPnP error `code`, or null for a number the renderer never answers with.
const char* SINK_UPNP_UPnPErrorDescription(int32_t code);

// Writes UPnP error `code` with its description into `response` (SetErrorCode, then
// SetErrorDescription). Answers 0; -1 for a code without description or a null response.
int32_t SINK_UPNP_WriteUPnPError(marlo::ActionResponse* response, int32_t code);

// The answer of an action handler to the transfer service's `result`: 0 when it succeeded; when it is
// one of the `acceptedCount` numbers in `accepted`, that error is written into the reply and the answer
// is 0 as well; any other number leaves the reply untouched and answers -1.
int32_t SINK_UPNP_AnswerTransferResult(marlo::ActionResponse* response, int32_t result,
                                       const int32_t* accepted, std::size_t acceptedCount);

template <std::size_t N>
int32_t SINK_UPNP_AnswerTransferResult(marlo::ActionResponse* response, int32_t result,
                                       const int32_t (&accepted)[N]) {
  return SINK_UPNP_AnswerTransferResult(response, result, accepted, N);
}

// The answer of a transport operation that an action builds on: like SINK_UPNP_AnswerTransferResult,
// but an accepted number is answered as itself after it is written, so that the action still knows which
// error the reply carries; 0 for 0; -1 for any other number (the reply untouched).
int32_t SINK_UPNP_ForwardTransferResult(marlo::ActionResponse* response, int32_t result,
                                        const int32_t* accepted, std::size_t acceptedCount);

template <std::size_t N>
int32_t SINK_UPNP_ForwardTransferResult(marlo::ActionResponse* response, int32_t result,
                                        const int32_t (&accepted)[N]) {
  return SINK_UPNP_ForwardTransferResult(response, result, accepted, N);
}

// An action's last word on the result of its steps: 0 stays 0; a UPnP number in `known` (already in the
// reply) answers 0, after writing it once more when `writeAgain`; anything else answers -1.
int32_t SINK_UPNP_SettleActionResult(marlo::ActionResponse* response, int32_t result, const int32_t* known,
                                     std::size_t knownCount, bool writeAgain);

template <std::size_t N>
int32_t SINK_UPNP_SettleActionResult(marlo::ActionResponse* response, int32_t result,
                                     const int32_t (&known)[N], bool writeAgain) {
  return SINK_UPNP_SettleActionResult(response, result, known, N, writeAgain);
}

#endif  // SINK_UPNP_UPNP_ERROR_H_
