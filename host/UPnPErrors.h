// The UPnP error codes and texts the daemon itself answers with (those the service objects answer come
// with their own texts).
#ifndef HOST_UPNP_ERRORS_H_
#define HOST_UPNP_ERRORS_H_

#include <cstdint>

constexpr int32_t HOST_kInvalidAction = 401;
constexpr char HOST_kInvalidActionText[] = "Invalid Action";
constexpr int32_t HOST_kInvalidArgs = 402;
constexpr char HOST_kInvalidArgsText[] = "Invalid Args";
constexpr int32_t HOST_kActionFailed = 501;
constexpr char HOST_kActionFailedText[] = "Action Failed";
// AVTransport:1.
constexpr int32_t HOST_kInvalidInstanceId = 718;
constexpr char HOST_kInvalidInstanceIdText[] = "Invalid InstanceID";
// RenderingControl:1 numbers these two of its own.
constexpr int32_t HOST_kInvalidPresetName = 701;
constexpr char HOST_kInvalidPresetNameText[] = "Invalid Name";
constexpr int32_t HOST_kRenderingControlInvalidInstanceId = 702;
constexpr char HOST_kRenderingControlInvalidInstanceIdText[] = "Invalid InstanceID";

#endif  // HOST_UPNP_ERRORS_H_
