#include "marlo/ActionRequest.h"

#include <cstring>
#include <new>

#include "marlo/Result.h"

namespace marlo {

namespace {

// Replaces *target with `text`, or leaves it as it was when there is no memory.
int32_t Assign(const char* text, std::string* target, bool* isSet) {
  if (text == nullptr) return kErrorInvalidArgument;
  try {
    std::string copy(text);
    target->swap(copy);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  *isSet = true;
  return kOk;
}

}  // namespace

ActionRequest::ActionRequest() : hasServiceType_(false), hasActionName_(false) {}

ActionRequest::~ActionRequest() = default;

int32_t ActionRequest::SetServiceType(const char* serviceType) {
  return Assign(serviceType, &serviceType_, &hasServiceType_);
}

int32_t ActionRequest::SetActionName(const char* actionName) {
  return Assign(actionName, &actionName_, &hasActionName_);
}

int32_t ActionRequest::AddArgument(const char* name, const char* value) {
  if (name == nullptr || value == nullptr) return kErrorInvalidArgument;
  try {
    arguments_.emplace_back(name, value);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  return kOk;
}

const char* ActionRequest::GetServiceType() const {
  return hasServiceType_ ? serviceType_.c_str() : nullptr;
}

const char* ActionRequest::GetActionName() const { return hasActionName_ ? actionName_.c_str() : nullptr; }

const char* ActionRequest::GetArgumentValue(const char* name) const {
  if (name == nullptr) return nullptr;
  // The first of a repeated name wins: the host appends in arrival order.
  for (const auto& argument : arguments_) {
    if (std::strcmp(argument.first.c_str(), name) == 0) return argument.second.c_str();
  }
  return nullptr;
}

std::size_t ActionRequest::GetArgumentCount() const { return arguments_.size(); }

const char* ActionRequest::GetArgumentName(std::size_t index) const {
  return index < arguments_.size() ? arguments_[index].first.c_str() : nullptr;
}

const char* ActionRequest::GetArgumentValueAt(std::size_t index) const {
  return index < arguments_.size() ? arguments_[index].second.c_str() : nullptr;
}

}  // namespace marlo
