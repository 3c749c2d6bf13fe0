// SINK_UPNP_SinkCTSSUPnPService: the service object through which the host runs the standard renderer
// services "urn:schemas-upnp-org:service:AVTransport:1" and "urn:schemas-upnp-org:service:ConnectionManager:1".
//
// It keeps no transport state of its own: the state lives in its SINK_UPNP_SinkCTSSStateVariableManager,
// and every command is handed to the application's SINK_CORE_TransferService, which answers 0 or a UPnP
// error number.
//
// States: Created (not initialized), Initialized, Started. Initialize: Created → Initialized; Start:
// Initialized → Started; Stop: Started → Initialized; Finalize: Initialized → Created. The two event
// handlers and the transfer service are registered in Initialized; Start needs all three; Finalize needs
// both handlers unregistered. PerformAction, GetStateVariable and WarnTimeOut work in Started only.
// Service-level results: -1995 not initialized, -1996 no such thing, -1997 no memory, -1998 a null or zero
// argument or unknown service, -1999 wrong state or another failure below (sink_upnp/ResultCode.h).
//
// Thread safety: none of its own; the host delivers lifecycle calls and actions one at a time. The store
// protects itself against the application's threads.
#ifndef SINK_UPNP_SINK_CTSS_UPNP_SERVICE_H_
#define SINK_UPNP_SINK_CTSS_UPNP_SERVICE_H_

#include <cstdint>

#include "marlo/SinkContentTransferSubsystem.h"
#include "sink_upnp/Export.h"

class DMR_CMN_AVTEventListener;
class DMR_CMN_CMSEventListener;
class SINK_CORE_TransferService;
class SINK_UPNP_SinkCTSSStateVariableManager;
template <typename Service>
struct SINK_UPNP_ServiceFrame;
namespace marlo {
class ProtocolInfo;
}

class SINK_UPNP_EXPORT SINK_UPNP_SinkCTSSUPnPService : public marlo::SinkContentTransferSubsystem {
 public:
  SINK_UPNP_SinkCTSSUPnPService();
  // Does nothing beyond the base: the host must Stop, unregister the handlers and Finalize first. An object
  // destroyed while initialized leaks its store, with all that the store's Finalize would have released,
  // and its protocol list: the documented cost of skipping those calls.
  ~SINK_UPNP_SinkCTSSUPnPService() override;

  SINK_UPNP_SinkCTSSUPnPService(const SINK_UPNP_SinkCTSSUPnPService&) = delete;
  SINK_UPNP_SinkCTSSUPnPService& operator=(const SINK_UPNP_SinkCTSSUPnPService&) = delete;

  // Serves one action by name (the names of both services share one table); an unknown name is answered
  // 401 "Invalid Action" with result 0. -1998 for a null request or response or a zero handle; -1995;
  // -1999 when not started; then the handler's result: 0, -989 → -1997, other → -1999.
  int32_t PerformAction(marlo::ActionRequest* request, marlo::ActionResponse* response,
                        unsigned long actionHandle) override;
  // Forwards to the transfer service. -1998 for null `timeout` or `text`; -1995; -1999 when not started
  // or the transfer service fails.
  int32_t WarnTimeOut(unsigned long id, unsigned long* timeout, const char** text) override;
  // Reads the protocol-info configuration and creates the store. -1998; -1999 when initialized; -1996
  // without "sinkctss.protocolInfo_0"; -1997 for no memory; -1999 otherwise.
  int32_t Initialize(marlo::Properties* properties) override;
  // Deletes the store and the protocol list. -1995; -1999 when started, while an event handler is
  // registered, or when the store cannot be finalized.
  int32_t Finalize() override;
  // Resets every state variable, with the configured sink protocol list. -1995; -1999 when started or
  // without both event handlers and the transfer service; -1997; -1999.
  int32_t Start() override;
  // -1995; -1999 when not started. Tells nobody else.
  int32_t Stop() override;
  int32_t RegisterAVTransportServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterAVTransportServiceEventListener() override;
  // The ConnectionManager handler is only kept: that service sends no events.
  int32_t RegisterConnectionManagerServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterConnectionManagerServiceEventListener() override;
  // The OpenHome services are not served here: these do nothing and answer 0, in every state.
  int32_t RegisterPlaylistServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterPlaylistServiceEventListener() override;
  int32_t RegisterProductServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterProductServiceEventListener() override;
  int32_t RegisterTimeServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterTimeServiceEventListener() override;
  int32_t RegisterInfoServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterInfoServiceEventListener() override;
  int32_t RegisterSenderServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterSenderServiceEventListener() override;
  // No decoder is taken: both answer -1999, in every state.
  int32_t RegisterFormatDecoderSubsystem(marlo::FormatDecoderSubsystem* decoder) override;
  int32_t UnregisterFormatDecoderSubsystem() override;
  // "LastChange" of AVTransport (the full document) and the three ConnectionManager variables. -1998 for
  // a null argument or an unknown service; -1995; -1999 when not started; -1996 for another variable.
  int32_t GetStateVariable(const char* serviceName, const char* variableName,
                           marlo::StateVariable* out) override;

  // Hands the store to the application (AttachStateVariableManager) and keeps the service. Answers with
  // the store's codes: -999 for null, -1000 when not initialized, -1 when started or the attach fails.
  int32_t RegisterTransferService(SINK_CORE_TransferService* service);
  // Forwarded to the store; -1 while there is none.
  int32_t RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener);
  int32_t UnregisterApplicationAVTEventListener();
  int32_t RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener);
  int32_t UnregisterApplicationCMSEventListener();

 private:
  // Tests reach the private handlers through it (a handler's own checks cannot be reached through
  // PerformAction, which checks first).
  friend class SINK_UPNP_SinkCTSSUPnPServiceTestPeer;
  // The table of action names and handlers (SinkCTSSUPnPService.cpp).
  friend struct SINK_UPNP_SinkCTSSUPnPServiceDispatch;
  // The lifecycle, registrations and dispatch it shares with the OpenHome service (ServiceFrame.h).
  friend struct SINK_UPNP_ServiceFrame<SINK_UPNP_SinkCTSSUPnPService>;

  DMR_CMN_HIDDEN int32_t PrepareProtocolInfo(marlo::Properties* properties);
  DMR_CMN_HIDDEN int32_t GetProtocolInfo(char** out);
  DMR_CMN_HIDDEN void CleanProtocolInfo();

  // The action handlers (SinkCTSSUPnPService_AVTransport.cpp, _ConnectionManager.cpp). Each answers 0
  // when the action was answered (also with a UPnP error in the reply), -989 for no memory, -1 otherwise.
  DMR_CMN_HIDDEN int32_t ExecuteSetAVTransportURI(unsigned long actionHandle, marlo::ActionRequest* request,
                                                  marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetMediaInfo(unsigned long actionHandle, marlo::ActionRequest* request,
                                             marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetTransportInfo(unsigned long actionHandle, marlo::ActionRequest* request,
                                                 marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetPositionInfo(unsigned long actionHandle, marlo::ActionRequest* request,
                                                marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetDeviceCapabilities(unsigned long actionHandle,
                                                      marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetTransportSettings(unsigned long actionHandle,
                                                     marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetCurrentTransportActions(unsigned long actionHandle,
                                                           marlo::ActionRequest* request,
                                                           marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteStop(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePlay(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePause(unsigned long actionHandle, marlo::ActionRequest* request,
                                      marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSeek(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteNext(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePrevious(unsigned long actionHandle, marlo::ActionRequest* request,
                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetProtocolInfo(unsigned long actionHandle, marlo::ActionRequest* request,
                                                marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetCurrentConnectionIDs(unsigned long actionHandle,
                                                        marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteGetCurrentConnectionInfo(unsigned long actionHandle,
                                                         marlo::ActionRequest* request,
                                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSetPlayMode(unsigned long actionHandle, marlo::ActionRequest* request,
                                            marlo::ActionResponse* response);

  marlo::EventHandler* avtServiceEventHandler;
  marlo::EventHandler* cmsServiceEventHandler;
  SINK_UPNP_SinkCTSSStateVariableManager* stateVariableManager;
  SINK_CORE_TransferService* transferService;
  int32_t initialized;
  int32_t started;
  marlo::ProtocolInfo* protocolInfoList;
};

#endif  // SINK_UPNP_SINK_CTSS_UPNP_SERVICE_H_
