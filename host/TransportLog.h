// HOST_TransportLog: the application's transport listener of the daemon. It turns what a person running
// the renderer wants to know (the transport state, the track, a stream that failed) into log lines.
// Called from SendEvent with the store's lock held: it only writes a line, never calls back.
#ifndef HOST_TRANSPORT_LOG_H_
#define HOST_TRANSPORT_LOG_H_

#include "dmr_cmn/AVTEventListener.h"

class HOST_TransportLog : public DMR_CMN_AVTEventListener {
 public:
  void NotifyTransportState(const char* value) override;
  void NotifyTransportStatus(const char* value) override;
  void NotifyCurrentTrackURI(const char* value) override;
};

#endif  // HOST_TRANSPORT_LOG_H_
