#include "ServedActions.h"

#include <gtest/gtest.h>

#include <cstring>

std::vector<ServedScpd> ScpdsAnsweredBy(HOST_Responder responder) {
  std::vector<ServedScpd> scpds;
  for (const HOST_ServiceDescription& service : HOST_ServiceCatalogue()) {
    if (service.responder == responder) scpds.push_back({&service, LoadBuiltScpd(service.name)});
  }
  return scpds;
}

bool HostAnswers(const HOST_ServiceDescription& service, const std::string& action) {
  for (const HOST_Action& entry : service.actions) {
    if (action == entry.name) return entry.hostAnswers;
  }
  return false;
}

const ValidCall* FindCall(const std::vector<ValidCall>& calls, const std::string& service,
                          const std::string& action) {
  for (const ValidCall& call : calls) {
    if (service == call.service && action == call.action) return &call;
  }
  return nullptr;
}

const OptionalArgument* FindOptional(const std::vector<OptionalArgument>& optional, const std::string& service,
                                     const std::string& action, const std::string& argument) {
  for (const OptionalArgument& entry : optional) {
    if (service == entry.service && action == entry.action && argument == entry.argument) return &entry;
  }
  return nullptr;
}

std::vector<std::string> NamesOf(const Args& arguments) {
  std::vector<std::string> names;
  for (const auto& argument : arguments) names.push_back(argument.first);
  return names;
}

void ExpectCallsMatchScpds(const std::vector<ValidCall>& calls, const std::vector<ServedScpd>& scpds) {
  std::size_t actions = 0;
  for (const ServedScpd& served : scpds) {
    for (const ScpdAction& action : served.scpd.actions) {
      ++actions;
      const ValidCall* call = FindCall(calls, served.service->name, action.name);
      if (call == nullptr) {
        ADD_FAILURE() << served.service->name << "." << action.name << " is described, but the test knows no "
                      << "valid call of it: is it new in the SCPD?";
        continue;
      }
      EXPECT_EQ(action.InNames(), NamesOf(call->in))
          << served.service->name << "." << action.name << ": the SCPD's IN arguments are not the ones the "
          << "handler reads, in the order it reads them";
    }
  }
  EXPECT_EQ(calls.size(), actions) << "the test knows calls of actions no SCPD describes";
}

void ExpectDispatchTableMatchesScpds(const std::vector<std::string>& dispatchTable,
                                     const std::vector<ServedScpd>& scpds) {
  std::size_t served = 0;
  for (const ServedScpd& entry : scpds) {
    for (const ScpdAction& action : entry.scpd.actions) {
      if (!HostAnswers(*entry.service, action.name)) ++served;
    }
  }
  EXPECT_EQ(dispatchTable.size(), served) << "the dispatch table and the SCPDs differ in number";
  for (const std::string& name : dispatchTable) {
    std::vector<std::string> describedIn;
    for (const ServedScpd& entry : scpds) {
      if (entry.scpd.FindAction(name) != nullptr && !HostAnswers(*entry.service, name)) {
        describedIn.push_back(entry.service->name);
      }
    }
    EXPECT_EQ(describedIn.size(), 1u) << name << " is described by " << describedIn.size()
                                      << " of the object's SCPDs";
  }
}

Args InArguments(const ScpdAction& action, const ValidCall& call, const std::string& omitted) {
  Args arguments;
  for (const std::string& name : action.InNames()) {
    if (name == omitted) continue;
    bool known = false;
    for (const auto& argument : call.in) {
      if (argument.first == name) {
        arguments.push_back(argument);
        known = true;
      }
    }
    EXPECT_TRUE(known) << "no value for " << action.name << "." << name;
  }
  return arguments;
}

void ExpectAnsweredAsDescribed(int32_t result, const marlo::ActionResponse& response, const ScpdAction& action) {
  EXPECT_EQ(result, 0);
  EXPECT_EQ(response.GetErrorCodeWriteCount(), 0u) << "error " << response.GetErrorCode();
  EXPECT_EQ(NamesOf(OutArguments(response)), action.OutNames()) << "the OUT arguments written, in order";
}

void ExpectInvalidArgs(int32_t result, const marlo::ActionResponse& response) {
  EXPECT_EQ(result, 0);
  ExpectError(response, 402);
}

void ExpectNotServed(int32_t result, const marlo::ActionResponse& response) {
  EXPECT_EQ(result, 0);
  ExpectError(response, 401);
}
