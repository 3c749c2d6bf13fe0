#include "marlo/Device.h"

#include <cstring>

#include "marlo/Result.h"

namespace marlo {

namespace {

constexpr std::size_t kAddressCapacity = 64;  // 63 bytes and the terminator

// A fixed buffer, so that the getter needs neither an object nor an allocation. The host sets it before
// any service starts, so it needs no lock.
char gServerAddress[kAddressCapacity] = "127.0.0.1";

}  // namespace

const char* Device::GetServerIPAddress() { return gServerAddress; }

int32_t Device::SetServerIPAddress(const char* address) {
  if (address == nullptr) return kErrorInvalidArgument;
  const std::size_t length = strnlen(address, kAddressCapacity);
  if (length == 0 || length == kAddressCapacity) return kErrorInvalidArgument;
  std::memcpy(gServerAddress, address, length + 1);
  return kOk;
}

}  // namespace marlo
