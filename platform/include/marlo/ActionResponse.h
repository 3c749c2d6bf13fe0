// marlo::ActionResponse: the reply to one action, filled by the service object, sent by the host.
//
// A reply either carries OUT arguments (in the order they were set) or a UPnP error (code and
// description). The host turns an error into a SOAP fault and OUT arguments into the response body.
#ifndef MARLO_ACTION_RESPONSE_H_
#define MARLO_ACTION_RESPONSE_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace marlo {

class ActionResponse {
 public:
  ActionResponse();
  ~ActionResponse();

  ActionResponse(const ActionResponse&) = delete;
  ActionResponse& operator=(const ActionResponse&) = delete;

  // Sets the UPnP error number of the reply (a later call replaces it). Returns 0.
  int32_t SetErrorCode(int32_t code);
  // Sets the error's description. Returns 0; kErrorInvalidArgument (-1998) for null; kErrorNoMemory.
  int32_t SetErrorDescription(const char* description);
  // Appends the OUT argument (name, value). Returns 0; kErrorInvalidArgument (-1998) for a null
  // argument; kErrorNoMemory (-1997).
  int32_t SetArgumentValue(const char* name, const char* value);

  // The host's side.
  // The error number, 0 when none was set.
  int32_t GetErrorCode() const;
  // The error description, null when none was set.
  const char* GetErrorDescription() const;
  // How many times SetErrorCode was called (an error may be written twice with the same code).
  unsigned GetErrorCodeWriteCount() const;
  std::size_t GetArgumentCount() const;
  // Name and value of the OUT argument at `index` in the order set; null past the end.
  const char* GetArgumentName(std::size_t index) const;
  const char* GetArgumentValueAt(std::size_t index) const;
  // The value of the first OUT argument called `name`, or null.
  const char* FindArgumentValue(const char* name) const;

 private:
  int32_t errorCode_;
  unsigned errorCodeWrites_;
  bool hasErrorDescription_;
  std::string errorDescription_;
  std::vector<std::pair<std::string, std::string>> arguments_;
};

}  // namespace marlo

#endif  // MARLO_ACTION_RESPONSE_H_
