#include "ServedActions.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstring>
#include <set>

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

const OptionalArgument* FindOptional(const std::vector<OptionalArgument>& optional,
                                     const std::string& service, const std::string& action,
                                     const std::string& argument) {
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
    EXPECT_EQ(describedIn.size(), 1u)
        << name << " is described by " << describedIn.size() << " of the object's SCPDs";
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

void ExpectAnsweredAsDescribed(int32_t result, const marlo::ActionResponse& response,
                               const ScpdAction& action) {
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

bool IsOfType(const std::string& value, const std::string& type) {
  const auto allDigits = [&value]() {
    for (const char c : value) {
      if (std::isdigit(static_cast<unsigned char>(c)) == 0) return false;
    }
    return true;
  };
  if (type == "ui4") return !value.empty() && value.size() <= 10 && allDigits();
  if (type == "boolean")
    return std::set<std::string>{"0", "1", "true", "false", "yes", "no"}.count(value) == 1;
  if (type == "bin.base64") {
    return value.find_first_not_of("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/=") ==
           std::string::npos;
  }
  return type == "string";
}

namespace {

const UntypedOut* FindUntyped(const std::vector<UntypedOut>& untyped, const std::string& action,
                              const std::string& argument) {
  for (const UntypedOut& entry : untyped) {
    if (action == entry.action && argument == entry.argument) return &entry;
  }
  return nullptr;
}

const ScpdArgument* FindOut(const ScpdAction& action, const std::string& name) {
  for (const ScpdArgument& argument : action.arguments) {
    if (argument.direction == "out" && argument.name == name) return &argument;
  }
  return nullptr;
}

}  // namespace

void ExpectValuesAsDescribed(const marlo::ActionResponse& response, const ScpdDocument& scpd,
                             const ScpdAction& action, const std::vector<UntypedOut>& untyped) {
  for (const auto& out : OutArguments(response)) {
    const ScpdArgument* argument = FindOut(action, out.first);
    const ScpdVariable* variable =
        argument != nullptr ? scpd.FindVariable(argument->relatedStateVariable) : nullptr;
    if (variable == nullptr) continue;  // ExpectAnsweredAsDescribed reports an argument the SCPD lacks
    const std::string& value = out.second;
    if (FindUntyped(untyped, action.name, out.first) == nullptr) {
      EXPECT_TRUE(IsOfType(value, variable->dataType))
          << out.first << " = \"" << value << "\" is no " << variable->dataType;
    }
    if (!variable->allowedValues.empty()) {
      const std::set<std::string> allowed(variable->allowedValues.begin(), variable->allowedValues.end());
      EXPECT_EQ(allowed.count(value), 1u)
          << out.first << " = \"" << value << "\" is no allowed value of " << variable->name;
    }
  }
}
