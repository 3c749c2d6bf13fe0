// What the drift tests of both plug-in service objects share: the SCPDs on disk of the services an object
// answers, the test's own statement of how to call each action validly, and the checks of an answer
// against the SCPD.
//
// The drift tests hold the SCPD files the build wrote (not the catalogue they were written from) against
// the service object that answers them, so that a control point that trusts the SCPD gets what it reads:
// an action or argument added, removed, renamed or reordered on one side only fails them.
#ifndef TESTS_HOST_SERVED_ACTIONS_H_
#define TESTS_HOST_SERVED_ACTIONS_H_

#include <cstdint>
#include <string>
#include <vector>

#include "ActionReplies.h"
#include "ScpdDocument.h"
#include "host/ServiceCatalogue.h"
#include "marlo/ActionResponse.h"

// A valid call of one action: its IN arguments in the order the handler reads them, each with a value the
// handler accepts. The test's own knowledge of each handler, kept apart from the SCPD on purpose.
struct ValidCall {
  const char* service;  // the catalogue's name: "AVTransport"
  const char* action;
  Args in;
  // Call it with an empty playlist (else with two tracks and the first one current).
  bool emptyPlaylist = false;
};

// An IN argument the handler does without: the answer when it is left out, and why.
struct OptionalArgument {
  const char* service;
  const char* action;
  const char* argument;
  int32_t result;  // PerformAction's result without it; never a 402 in the reply
  const char* why;
};

// One service an object answers, with its SCPD as the build wrote it.
struct ServedScpd {
  const HOST_ServiceDescription* service;
  ScpdDocument scpd;
};

// The services of the catalogue `responder` answers, in catalogue order, with their built SCPDs.
std::vector<ServedScpd> ScpdsAnsweredBy(HOST_Responder responder);

// True when the catalogue marks `action` of `service` as answered by the daemon instead of the plug-in.
bool HostAnswers(const HOST_ServiceDescription& service, const std::string& action);

// The call for `action` of `service` among `calls`; null when the test knows none.
const ValidCall* FindCall(const std::vector<ValidCall>& calls, const std::string& service,
                          const std::string& action);

// The optional argument entry for `argument`; null when the handler requires it.
const OptionalArgument* FindOptional(const std::vector<OptionalArgument>& optional,
                                     const std::string& service, const std::string& action,
                                     const std::string& argument);

// Every action of every SCPD has exactly one call, every call an action, and each call's IN arguments are
// the SCPD's, in the SCPD's order.
void ExpectCallsMatchScpds(const std::vector<ValidCall>& calls, const std::vector<ServedScpd>& scpds);

// Every name of the object's dispatch table is an action (not one the host answers) of exactly one SCPD,
// and every such action of the SCPDs is in the table.
void ExpectDispatchTableMatchesScpds(const std::vector<std::string>& dispatchTable,
                                     const std::vector<ServedScpd>& scpds);

// The IN arguments of `call` as the SCPD orders them, leaving out `omitted` (when not empty).
Args InArguments(const ScpdAction& action, const ValidCall& call, const std::string& omitted = "");

// The action was answered without a UPnP error (result 0) and wrote exactly the SCPD's OUT arguments, in
// the SCPD's order.
void ExpectAnsweredAsDescribed(int32_t result, const marlo::ActionResponse& response,
                               const ScpdAction& action);

// The action was answered 402 "Invalid Args" with result 0 and nothing else.
void ExpectInvalidArgs(int32_t result, const marlo::ActionResponse& response);

// The action was answered 401 "Invalid Action" with result 0: the object does not serve it.
void ExpectNotServed(int32_t result, const marlo::ActionResponse& response);

// An OUT argument whose value need not be of its variable's type, and why.
struct UntypedOut {
  const char* action;
  const char* argument;
  const char* why;
};

// True when `value` is a value of the UPnP data type `type` ("ui4", "boolean", "bin.base64", "string").
bool IsOfType(const std::string& value, const std::string& type);

// Each OUT value of `response` is of its related variable's type (except those of `untyped`) and, where
// the SCPD lists allowed values, one of them.
void ExpectValuesAsDescribed(const marlo::ActionResponse& response, const ScpdDocument& scpd,
                             const ScpdAction& action, const std::vector<UntypedOut>& untyped = {});

// The names of `arguments`, in order.
std::vector<std::string> NamesOf(const Args& arguments);

#endif  // TESTS_HOST_SERVED_ACTIONS_H_
