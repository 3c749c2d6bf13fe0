// The floor device's description: a bare MediaRenderer:1 root device with AVTransport:1 alone, its SCPD and
// control URLs laid out as the daemon lays out its own, so that a client finds both the same way.
#ifndef BENCH_HOST_FLOOR_DESCRIPTION_H_
#define BENCH_HOST_FLOOR_DESCRIPTION_H_

#include <string>

// The description document of a device with this UDN ("uuid:...").
std::string FloorDescription(const std::string& udn);

#endif  // BENCH_HOST_FLOOR_DESCRIPTION_H_
