// marlo::Device: class-level facts about the device the host serves.
#ifndef MARLO_DEVICE_H_
#define MARLO_DEVICE_H_

#include <cstdint>

namespace marlo {

class Device {
 public:
  // The address under which the host's HTTP server is reached, as "host" or "host:port" (for building
  // absolute URLs such as "http://" + address + "/icon.png"). "127.0.0.1" until the host sets it.
  // Needs no device object. The text stays valid until the next SetServerIPAddress.
  static const char* GetServerIPAddress();

  // The host's side: sets the address (at most 63 bytes). Call before any service starts. Returns 0;
  // kErrorInvalidArgument (-1998) for a null, empty or too long address.
  static int32_t SetServerIPAddress(const char* address);
};

}  // namespace marlo

#endif  // MARLO_DEVICE_H_
