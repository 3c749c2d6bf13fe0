// marlo::ActionRequest: one action invoked by a control point, as the host received it.
//
// The host fills it from the SOAP request (service type, action name, IN arguments in the order they came)
// and hands it to a service object's PerformAction.
#ifndef MARLO_ACTION_REQUEST_H_
#define MARLO_ACTION_REQUEST_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace marlo {

class ActionRequest {
 public:
  ActionRequest();
  ~ActionRequest();

  ActionRequest(const ActionRequest&) = delete;
  ActionRequest& operator=(const ActionRequest&) = delete;

  // The host's side. Each returns 0; kErrorInvalidArgument (-1998) for a null argument;
  // kErrorNoMemory (-1997).
  int32_t SetServiceType(const char* serviceType);
  int32_t SetActionName(const char* actionName);
  // Appends an IN argument. A name given twice keeps its first value for GetArgumentValue.
  int32_t AddArgument(const char* name, const char* value);

  // The service type the action was addressed to; null when unset.
  const char* GetServiceType() const;
  // The action's name; null when the request carries none.
  const char* GetActionName() const;
  // The value of the IN argument `name` (exact, case-sensitive), or null when the request has no such
  // argument (or `name` is null).
  const char* GetArgumentValue(const char* name) const;

  std::size_t GetArgumentCount() const;
  // Name and value of the argument at `index` in arrival order; null past the end.
  const char* GetArgumentName(std::size_t index) const;
  const char* GetArgumentValueAt(std::size_t index) const;

 private:
  bool hasServiceType_;
  bool hasActionName_;
  std::string serviceType_;
  std::string actionName_;
  std::vector<std::pair<std::string, std::string>> arguments_;
};

}  // namespace marlo

#endif  // MARLO_ACTION_REQUEST_H_
