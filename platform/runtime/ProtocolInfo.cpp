#include "marlo/ProtocolInfo.h"

#include <cstdlib>
#include <cstring>

#include "FaultPoint.h"
#include "marlo/Result.h"

namespace marlo {

namespace {

constexpr int kFieldCount = 4;

// Blanks that may surround the whole text (a value read from a configuration line may carry its line end).
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\v' || c == '\f'; }

bool IsControl(char c) {
  const unsigned char u = static_cast<unsigned char>(c);
  return u < 0x20 || u == 0x7f;
}

}  // namespace

ProtocolInfo::ProtocolInfo() noexcept
    : next(nullptr), fields_(nullptr), network_(nullptr), contentFormat_(nullptr), additionalInfo_(nullptr) {}

ProtocolInfo::~ProtocolInfo() { Release(); }

void* ProtocolInfo::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kProtocolInfoCreation, nullptr)) return nullptr;
  return std::malloc(size);
}

void ProtocolInfo::operator delete(void* block) noexcept { std::free(block); }

void ProtocolInfo::operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }

void ProtocolInfo::Release() {
  delete[] fields_;
  fields_ = nullptr;
  network_ = nullptr;
  contentFormat_ = nullptr;
  additionalInfo_ = nullptr;
}

int32_t ProtocolInfo::Set(const char* text) {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kProtocolInfoSet, &code)) return code;
  if (text == nullptr) return kErrorInvalidArgument;

  const char* begin = text;
  const char* end = text + std::strlen(text);
  while (begin < end && IsBlank(*begin)) ++begin;
  while (end > begin && IsBlank(end[-1])) --end;

  // Offsets of the fields in the trimmed text; the fourth field runs to the end and may hold ':'.
  std::size_t start[kFieldCount] = {0, 0, 0, 0};
  int field = 0;
  const std::size_t length = static_cast<std::size_t>(end - begin);
  for (std::size_t i = 0; i < length; ++i) {
    const char c = begin[i];
    if (c == ',' || IsControl(c)) return kErrorInvalidArgument;
    if (c == ':' && field < kFieldCount - 1) {
      if (i == start[field]) return kErrorInvalidArgument;  // an empty field
      start[++field] = i + 1;
    }
  }
  if (field != kFieldCount - 1 || start[kFieldCount - 1] == length) return kErrorInvalidArgument;

  // The separators become the fields' terminators, so the buffer is exactly the trimmed text plus one.
  char* fields = new (std::nothrow) char[length + 1];
  if (fields == nullptr) return kErrorNoMemory;
  std::memcpy(fields, begin, length);
  fields[length] = '\0';
  for (int i = 1; i < kFieldCount; ++i) fields[start[i] - 1] = '\0';

  Release();
  fields_ = fields;
  network_ = fields + start[1];
  contentFormat_ = fields + start[2];
  additionalInfo_ = fields + start[3];
  return kOk;
}

int32_t ProtocolInfo::Get(char** out) const {
  int32_t code = kErrorFailure;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kProtocolInfoGet, &code)) return code;
  if (out == nullptr) return kErrorInvalidArgument;
  if (fields_ == nullptr) return kErrorFailure;

  const char* parts[kFieldCount] = {fields_, network_, contentFormat_, additionalInfo_};
  std::size_t lengths[kFieldCount];
  std::size_t total = kFieldCount - 1;  // the separators
  for (int i = 0; i < kFieldCount; ++i) {
    lengths[i] = std::strlen(parts[i]);
    total += lengths[i];
  }
  char* text = new (std::nothrow) char[total + 1];
  if (text == nullptr) return kErrorNoMemory;
  char* cursor = text;
  for (int i = 0; i < kFieldCount; ++i) {
    if (i > 0) *cursor++ = ':';
    std::memcpy(cursor, parts[i], lengths[i]);
    cursor += lengths[i];
  }
  *cursor = '\0';
  *out = text;
  return kOk;
}

const char* ProtocolInfo::GetProtocol() const { return fields_; }
const char* ProtocolInfo::GetNetwork() const { return network_; }
const char* ProtocolInfo::GetContentFormat() const { return contentFormat_; }
const char* ProtocolInfo::GetAdditionalInfo() const { return additionalInfo_; }

}  // namespace marlo
