#include "dmr_cmn/String.h"

#include <cstdlib>
#include <cstring>

#include "FaultPoint.h"
#include "dmr_cmn/Memory.h"
#include "dmr_cmn/Result.h"

namespace {

// Allocates a buffer of `size` bytes for a string's text; null for no memory, or the injected code.
char* AllocateText(std::size_t size, int32_t* failure) {
  int32_t code = DMR_CMN_ERR_NO_MEMORY;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kStringAllocation, &code)) {
    *failure = code;
    return nullptr;
  }
  char* text = static_cast<char*>(std::malloc(size));
  if (text == nullptr) *failure = DMR_CMN_ERR_NO_MEMORY;
  return text;
}

}  // namespace

DMR_CMN_String::DMR_CMN_String() noexcept : text_(nullptr), length_(0) {}

DMR_CMN_String::~DMR_CMN_String() { std::free(text_); }

void* DMR_CMN_String::operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return DMR_CMN_Malloc(size);
}

void DMR_CMN_String::operator delete[](void* block) noexcept { std::free(block); }

void DMR_CMN_String::operator delete[](void* block, const std::nothrow_t&) noexcept { std::free(block); }

int32_t DMR_CMN_String::SetCString(const char* text) {
  if (text == nullptr) return DMR_CMN_ERR_GENERIC;
  const std::size_t length = std::strlen(text);
  int32_t failure = DMR_CMN_OK;
  char* copy = AllocateText(length + 1, &failure);
  if (copy == nullptr) return failure;
  std::memcpy(copy, text, length + 1);
  std::free(text_);
  text_ = copy;
  length_ = length;
  return DMR_CMN_OK;
}

int32_t DMR_CMN_String::AppendCString(const char* text) {
  if (text == nullptr) return DMR_CMN_ERR_GENERIC;
  const std::size_t added = std::strlen(text);
  int32_t failure = DMR_CMN_OK;
  char* joined = AllocateText(length_ + added + 1, &failure);
  if (joined == nullptr) return failure;
  if (length_ > 0) std::memcpy(joined, text_, length_);
  std::memcpy(joined + length_, text, added + 1);
  std::free(text_);
  text_ = joined;
  length_ += added;
  return DMR_CMN_OK;
}

const char* DMR_CMN_String::GetCString() const {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kStringGetCString, nullptr)) return nullptr;
  return text_;
}

int32_t DMR_CMN_String::Equals(const char* text) const {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kStringEquals, &code)) return code;
  if (text_ == nullptr || text == nullptr) return -1;
  return std::strcmp(text_, text) == 0 ? 0 : -1;
}

std::size_t DMR_CMN_String::GetLength() const { return length_; }

void DMR_CMN_String::Clear() {
  std::free(text_);
  text_ = nullptr;
  length_ = 0;
}
