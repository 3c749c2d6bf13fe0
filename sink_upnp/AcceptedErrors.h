// SINK_UPNP_AcceptedErrors: which UPnP error numbers of the application's transfer service each command
// may report to a control point. A number in the command's set is written into the reply with its fixed
// description; any other number fails the action. Both service objects drive the same transfer service
// commands and read their answers through these one set per command.
//
// The sets differ on purpose and are part of each action's contract with control points: SetAVTransportURI
// takes no 701, Play no 705, Pause neither 705 nor 711, Next and Previous report 711, SetPlayMode only 705
// and 712. Keep them as they stand.
#ifndef SINK_UPNP_ACCEPTED_ERRORS_H_
#define SINK_UPNP_ACCEPTED_ERRORS_H_

#include <cstdint>

struct SINK_UPNP_AcceptedErrors {
  static constexpr int32_t kSetAVTransportURI[] = {402, 705, 714, 715, 716, 718};
  static constexpr int32_t kPlay[] = {402, 701, 714, 715, 716, 717, 718};
  static constexpr int32_t kStop[] = {402, 701, 705, 718};
  static constexpr int32_t kPause[] = {402, 701, 718};
  static constexpr int32_t kSeek[] = {402, 701, 705, 710, 711, 718};
  static constexpr int32_t kNext[] = {402, 701, 711, 718};
  static constexpr int32_t kPrevious[] = {402, 701, 711, 718};
  static constexpr int32_t kSetPlayMode[] = {705, 712};
  // Every AVTransport query (GetMediaInfo, GetTransportInfo, GetPositionInfo, GetDeviceCapabilities,
  // GetTransportSettings, GetCurrentTransportActions).
  static constexpr int32_t kAVTransportQuery[] = {402, 718};
  // Every ConnectionManager query: they carry no "InstanceID", so 718 is not theirs to report.
  static constexpr int32_t kConnectionManagerQuery[] = {402};
};

#endif  // SINK_UPNP_ACCEPTED_ERRORS_H_
