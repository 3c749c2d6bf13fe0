// The shape of the OpenHome queries that report state variables as they are stored: each OUT argument is
// one variable of the OpenHome store, read and written in order.
#ifndef SINK_UPNP_ANSWER_FROM_STORE_H_
#define SINK_UPNP_ANSWER_FROM_STORE_H_

#include <cstdint>
#include <initializer_list>

#include "sink_upnp/StateVariableCatalogue.h"

class SINK_UPNP_OpenHomeStateVariableManager;
namespace marlo {
class ActionResponse;
}

// One OUT argument and the variable it reports.
struct SINK_UPNP_OutVariable {
  const char* name;
  SINK_UPNP_StateVariableName_t index;
};

// Writes each argument with the value of its variable, in order, through one string kept for the whole
// reply. A read that fails is not looked at: the string then still holds the previous argument's value
// (the empty text for the first), and that is what the argument reports. Answers 0; -1 at the first write
// that fails, the arguments before it staying in the reply.
int32_t SINK_UPNP_AnswerFromStore(SINK_UPNP_OpenHomeStateVariableManager* store, marlo::ActionResponse* response,
                                  std::initializer_list<SINK_UPNP_OutVariable> arguments);

#endif  // SINK_UPNP_ANSWER_FROM_STORE_H_
