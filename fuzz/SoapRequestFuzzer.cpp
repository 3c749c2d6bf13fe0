// Checks the daemon's SOAP body reader (HOST_ReadSoapRequest) with arbitrary bodies: it answers 0 or -1998
// with a reason; a refused body leaves the request untouched; an accepted one gives a request with a
// non-empty service type and action name whose arguments all have names and values.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzCheck.h"
#include "SoapRequestReader.h"
#include "marlo/ActionRequest.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, std::size_t size) {
  marlo::ActionRequest request;
  std::string reason;
  const int32_t result = HOST_ReadSoapRequest(reinterpret_cast<const char*>(data), size, &request, &reason);
  FUZZ_CHECK(result == 0 || result == -1998);
  if (result != 0) {
    FUZZ_CHECK(!reason.empty());
    FUZZ_CHECK(request.GetServiceType() == nullptr && request.GetActionName() == nullptr);
    FUZZ_CHECK(request.GetArgumentCount() == 0);
    return 0;
  }
  FUZZ_CHECK(request.GetServiceType() != nullptr && request.GetServiceType()[0] != '\0');
  FUZZ_CHECK(request.GetActionName() != nullptr && request.GetActionName()[0] != '\0');
  for (std::size_t i = 0; i < request.GetArgumentCount(); ++i) {
    FUZZ_CHECK(request.GetArgumentName(i) != nullptr && request.GetArgumentName(i)[0] != '\0');
    FUZZ_CHECK(request.GetArgumentValueAt(i) != nullptr);
  }
  FUZZ_CHECK(request.GetArgumentName(request.GetArgumentCount()) == nullptr);
  return 0;
}
