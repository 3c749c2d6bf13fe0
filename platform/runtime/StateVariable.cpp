#include "marlo/StateVariable.h"

#include <new>

#include "FaultPoint.h"
#include "marlo/Result.h"

namespace marlo {

StateVariable::StateVariable() : isSet_(false) {}

StateVariable::~StateVariable() = default;

int32_t StateVariable::SetValue(const char* name, const char* value) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kStateVariableSetValue, &code)) return code;
  if (name == nullptr || value == nullptr) return kErrorInvalidArgument;
  try {
    // Both copies first, so that no memory leaves the old name and value as they were.
    std::string nameCopy(name);
    std::string valueCopy(value);
    name_.swap(nameCopy);
    value_.swap(valueCopy);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  isSet_ = true;
  return kOk;
}

const char* StateVariable::GetName() const { return isSet_ ? name_.c_str() : nullptr; }

const char* StateVariable::GetValue() const { return isSet_ ? value_.c_str() : nullptr; }

}  // namespace marlo
