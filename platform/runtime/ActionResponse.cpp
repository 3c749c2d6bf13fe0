#include "marlo/ActionResponse.h"

#include <cstring>
#include <new>

#include "FaultPoint.h"
#include "marlo/Result.h"

namespace marlo {

ActionResponse::ActionResponse() : errorCode_(0), errorCodeWrites_(0), hasErrorDescription_(false) {}

ActionResponse::~ActionResponse() = default;

int32_t ActionResponse::SetErrorCode(int32_t code) {
  errorCode_ = code;
  ++errorCodeWrites_;
  return kOk;
}

int32_t ActionResponse::SetErrorDescription(const char* description) {
  if (description == nullptr) return kErrorInvalidArgument;
  try {
    std::string copy(description);
    errorDescription_.swap(copy);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  hasErrorDescription_ = true;
  return kOk;
}

int32_t ActionResponse::SetArgumentValue(const char* name, const char* value) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kActionResponseSetArgument, &code)) return code;
  if (name == nullptr || value == nullptr) return kErrorInvalidArgument;
  try {
    arguments_.emplace_back(name, value);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  return kOk;
}

int32_t ActionResponse::GetErrorCode() const { return errorCode_; }

const char* ActionResponse::GetErrorDescription() const {
  return hasErrorDescription_ ? errorDescription_.c_str() : nullptr;
}

unsigned ActionResponse::GetErrorCodeWriteCount() const { return errorCodeWrites_; }

std::size_t ActionResponse::GetArgumentCount() const { return arguments_.size(); }

const char* ActionResponse::GetArgumentName(std::size_t index) const {
  return index < arguments_.size() ? arguments_[index].first.c_str() : nullptr;
}

const char* ActionResponse::GetArgumentValueAt(std::size_t index) const {
  return index < arguments_.size() ? arguments_[index].second.c_str() : nullptr;
}

const char* ActionResponse::FindArgumentValue(const char* name) const {
  if (name == nullptr) return nullptr;
  for (const auto& argument : arguments_) {
    if (std::strcmp(argument.first.c_str(), name) == 0) return argument.second.c_str();
  }
  return nullptr;
}

}  // namespace marlo
