// SINK_UPNP_OpenHomeUPnPService: the service object through which the host runs the OpenHome services
// "urn:av-openhome-org:service:Playlist:1", "Product:1", "Time:1", "Info:1" and "Sender:1".
//
// It is built on the frame of the standard renderer service (sink_upnp/ServiceFrame.h: the same states,
// results, protocol-info configuration and dispatch) and differs from it where OpenHome needs it:
// - it owns the OpenHome playlist (PLAYLIST_PlaylistManager, held by value). The playlist lives exactly as
//   long as this object: it survives Stop, Finalize and a new Initialize, and is lost only with the object;
// - it keeps one eventing handler per OpenHome service, each passed to the store, and answers the state
//   variable queries of the five services;
// - Start needs the Playlist handler and the transfer service (not the AVTransport one); Finalize needs
//   the AVTransport and ConnectionManager handlers unregistered and does not look at the five others;
// - Initialize hands the property "device.docroot" to the store, which reads "/openhome.xml" below it;
// - its 33 actions work on the playlist and drive the application's transfer service with the commands
//   a standard control point would give (set the URI, play, stop, seek).
//
// States: Created (not initialized), Initialized, Started, moved by Initialize, Start, Stop and Finalize
// as in the standard service. Service-level results: -1995 not initialized, -1996 no such thing, -1997 no
// memory, -1998 a null or zero argument or an unknown service, -1999 wrong state or another failure below
// (sink_upnp/ResultCode.h).
//
// Thread safety: none of its own. The host delivers lifecycle calls and actions one at a time; the
// playlist is not locked, so the application must not touch it while an action runs. The store protects
// itself against the application's threads.
#ifndef SINK_UPNP_OPEN_HOME_UPNP_SERVICE_H_
#define SINK_UPNP_OPEN_HOME_UPNP_SERVICE_H_

#include <cstdint>

#include "marlo/SinkContentTransferSubsystem.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/Export.h"
#include "sink_upnp/StateVariableCatalogue.h"

class DMR_CMN_AVTEventListener;
class DMR_CMN_CMSEventListener;
class DMR_CMN_String;
class SINK_CORE_TransferService;
class SINK_UPNP_OpenHomeStateVariableManager;
template <typename Service>
struct SINK_UPNP_ServiceFrame;
namespace marlo {
class ProtocolInfo;
}

class SINK_UPNP_EXPORT SINK_UPNP_OpenHomeUPnPService : public marlo::SinkContentTransferSubsystem {
 public:
  // The playlist starts empty; every other field is zero.
  SINK_UPNP_OpenHomeUPnPService();
  // Deletes a store that is still there, without finalizing it, then the playlist with every track. The
  // protocol list and the transfer service are not touched. The host must Stop, unregister every handler
  // and Finalize first: an object destroyed while initialized leaks what the store's Finalize would have
  // released (its values, lock and pending document, and its eventing threads) and the protocol list,
  // the documented cost of skipping those calls.
  ~SINK_UPNP_OpenHomeUPnPService() override;

  SINK_UPNP_OpenHomeUPnPService(const SINK_UPNP_OpenHomeUPnPService&) = delete;
  SINK_UPNP_OpenHomeUPnPService& operator=(const SINK_UPNP_OpenHomeUPnPService&) = delete;

  // Serves one action by name; all five services share one table of 33 actions, and the service an action
  // was addressed to is not looked at. An unknown name (every Sender action among them) is answered 401
  // "Invalid Action" with result 0. -1998 for a null request or response or a zero handle; -1995; -1999
  // when not started; then the handler's result: 0, -989 → -1997, other → -1999.
  int32_t PerformAction(marlo::ActionRequest* request, marlo::ActionResponse* response,
                        unsigned long actionHandle) override;
  // Forwards to the transfer service. -1998 for null `timeout` or `text`; -1995; -1999 when not started,
  // without a transfer service or when it fails.
  int32_t WarnTimeOut(unsigned long id, unsigned long* timeout, const char** text) override;
  // Reads the protocol-info configuration, creates the store and hands it "device.docroot" (null
  // included). -1998; -1999 when initialized; -1996 without "sinkctss.protocolInfo_0"; -1997; -1999.
  int32_t Initialize(marlo::Properties* properties) override;
  // Deletes the store and the protocol list; the playlist stays. -1995; -1999 when started, while the
  // AVTransport or ConnectionManager handler is registered, or when the store cannot be finalized. An
  // OpenHome handler still registered does not stop it, but leaves its eventing thread behind when the
  // store goes: the host unregisters them first.
  int32_t Finalize() override;
  // Resets every state variable, with the configured sink protocol list. -1995; -1999 when started or
  // without the Playlist handler or the transfer service; -1997; -1999.
  int32_t Start() override;
  // -1995; -1999 when not started. The transfer service is not told and the playlist is kept.
  int32_t Stop() override;
  // The store of this object refuses an AVTransport handler once initialized, so registering one answers
  // -1999 and stores nothing.
  int32_t RegisterAVTransportServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterAVTransportServiceEventListener() override;
  // Only kept: no events go through it.
  int32_t RegisterConnectionManagerServiceEventListener(marlo::EventHandler* handler) override;
  int32_t UnregisterConnectionManagerServiceEventListener() override;
  // Each passes the handler to the store, which starts the service's eventing thread. Register: -1998 for
  // null; -1995; -1999 when started or one is registered; the store's -989 → -1997, other → -1999.
  // Unregister: -1995; -1999 when started, none is registered or the store fails.
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
  // The variables of the five OpenHome services by name. -1998 for a null argument or a service name that
  // does not begin with an OpenHome service type; -1995; -1999 when not started or for a name that only
  // begins with one; -1996 for a variable the service does not have.
  int32_t GetStateVariable(const char* serviceName, const char* variableName,
                           marlo::StateVariable* out) override;

  // Hands the store (AttachOpenHomeStateVariableManager) and then the playlist (AttachPlaylistManager) to
  // the application and keeps the service. Answers with the store's codes: -999 for null, -1000 when not
  // initialized, -1 when started or the store's attach fails (nothing is kept then).
  int32_t RegisterTransferService(SINK_CORE_TransferService* service);
  // Forwarded to the store; -1 while there is none.
  int32_t RegisterApplicationAVTEventListener(DMR_CMN_AVTEventListener* listener);
  int32_t UnregisterApplicationAVTEventListener();
  int32_t RegisterApplicationCMSEventListener(DMR_CMN_CMSEventListener* listener);
  int32_t UnregisterApplicationCMSEventListener();

 private:
  friend class SINK_UPNP_OpenHomeUPnPServiceTestPeer;
  friend struct SINK_UPNP_OpenHomeUPnPServiceDispatch;
  friend struct SINK_UPNP_ServiceFrame<SINK_UPNP_OpenHomeUPnPService>;

  DMR_CMN_HIDDEN int32_t PrepareProtocolInfo(marlo::Properties* properties);
  DMR_CMN_HIDDEN int32_t GetProtocolInfo(char** out);
  DMR_CMN_HIDDEN void CleanProtocolInfo();

  // The transport operations the actions share (OpenHomeUPnPService_Transport.cpp). None checks its
  // arguments or the state; the callers do.
  //
  // Copies uri and metadata (null becomes ""), attaches the playlist again and hands both to the
  // application. 0 on success and also after writing one of its UPnP errors into the reply (the caller
  // cannot tell); -989 when a copy has no memory; -1 otherwise.
  DMR_CMN_HIDDEN int32_t SetAVTransportURI(unsigned long actionHandle, const char* uri, const char* metadata,
                                           marlo::ActionResponse* response);
  // Each sends its command; an error number the command may report is written into the reply and
  // returned; 0; -1 for any other number.
  DMR_CMN_HIDDEN int32_t Play(unsigned long actionHandle, marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t Stop(unsigned long actionHandle, marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t Seek(unsigned long actionHandle, DMR_CMN_String* unit, DMR_CMN_String* target,
                              marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t Next(unsigned long actionHandle, marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t Previous(unsigned long actionHandle, marlo::ActionResponse* response);

  // The action handlers. Each answers 0 when the action was answered (also with a UPnP error in the
  // reply), -989 for no memory, -1 (or another nonzero number) otherwise; -1 at once for a null request
  // or response.
  // Playlist editing and queries (OpenHomeUPnPService_Playlist.cpp).
  DMR_CMN_HIDDEN int32_t ExecuteInsert(unsigned long actionHandle, marlo::ActionRequest* request,
                                       marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteDeleteId(unsigned long actionHandle, marlo::ActionRequest* request,
                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteDeleteAll(unsigned long actionHandle, marlo::ActionRequest* request,
                                          marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteRepeat(unsigned long actionHandle, marlo::ActionRequest* request,
                                       marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSetRepeat(unsigned long actionHandle, marlo::ActionRequest* request,
                                          marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteShuffle(unsigned long actionHandle, marlo::ActionRequest* request,
                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSetShuffle(unsigned long actionHandle, marlo::ActionRequest* request,
                                           marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteId(unsigned long actionHandle, marlo::ActionRequest* request,
                                   marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteTransportState(unsigned long actionHandle, marlo::ActionRequest* request,
                                               marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteRead(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteReadList(unsigned long actionHandle, marlo::ActionRequest* request,
                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteIdArray(unsigned long actionHandle, marlo::ActionRequest* request,
                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteTracksMax(unsigned long actionHandle, marlo::ActionRequest* request,
                                          marlo::ActionResponse* response);
  // Playback (OpenHomeUPnPService_Transport.cpp).
  DMR_CMN_HIDDEN int32_t ExecuteStop(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePlay(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePause(unsigned long actionHandle, marlo::ActionRequest* request,
                                      marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSeekSecondAbsolute(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteNext(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecutePrevious(unsigned long actionHandle, marlo::ActionRequest* request,
                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSeekId(unsigned long actionHandle, marlo::ActionRequest* request,
                                       marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSeekIndex(unsigned long actionHandle, marlo::ActionRequest* request,
                                          marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSourceIndex(unsigned long actionHandle, marlo::ActionRequest* request,
                                            marlo::ActionResponse* response);
  // Product, Info and Time (OpenHomeUPnPService_Product.cpp).
  DMR_CMN_HIDDEN int32_t ExecuteStandby(unsigned long actionHandle, marlo::ActionRequest* request,
                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSetStandby(unsigned long actionHandle, marlo::ActionRequest* request,
                                           marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSourceXml(unsigned long actionHandle, marlo::ActionRequest* request,
                                          marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteSetSourceIndex(unsigned long actionHandle, marlo::ActionRequest* request,
                                               marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteManufacturer(unsigned long actionHandle, marlo::ActionRequest* request,
                                             marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteModel(unsigned long actionHandle, marlo::ActionRequest* request,
                                      marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteProduct(unsigned long actionHandle, marlo::ActionRequest* request,
                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteTrack(unsigned long actionHandle, marlo::ActionRequest* request,
                                      marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteDetails(unsigned long actionHandle, marlo::ActionRequest* request,
                                        marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteMetatext(unsigned long actionHandle, marlo::ActionRequest* request,
                                         marlo::ActionResponse* response);
  DMR_CMN_HIDDEN int32_t ExecuteTime(unsigned long actionHandle, marlo::ActionRequest* request,
                                     marlo::ActionResponse* response);

  // Playlist helpers (OpenHomeUPnPService_Playlist.cpp).
  //
  // Events `name` = `value` through the store and then stores it in `index` ("publishing"); the store is
  // changed only when the event went out if `onlyAfterEvent`. Answers the event's result.
  DMR_CMN_HIDDEN int32_t Publish(const char* name, SINK_UPNP_StateVariableName_t index, const char* value,
                                 bool onlyAfterEvent);
  // Publishes "IdArray" with the playlist's current IdArray text.
  DMR_CMN_HIDDEN void PublishIdArray();
  // Stores the decimal text of `id` in the "Id" variable (no event); the store's answer is not looked at.
  DMR_CMN_HIDDEN void StoreCurrentId(uint64_t id);
  // Loads a track for playing: stores its id, sets its URI and, when that answers 0, plays.
  DMR_CMN_HIDDEN int32_t LoadTrack(unsigned long actionHandle, const PLAYLIST_PlaylistData* track,
                                   marlo::ActionResponse* response);
  // Next and Previous after the playlist's step gave `track` (null: no track to step to).
  DMR_CMN_HIDDEN int32_t StepTo(unsigned long actionHandle, const PLAYLIST_PlaylistData* track,
                                marlo::ActionResponse* response);
  // SeekIndex and SeekId: the track "Value" names by the playlist's `seek`; "Seconds" reset when asked.
  DMR_CMN_HIDDEN int32_t SeekTrack(unsigned long actionHandle, marlo::ActionRequest* request,
                                   marlo::ActionResponse* response,
                                   PLAYLIST_PlaylistData* (PLAYLIST_PlaylistManager::*seek)(int32_t),
                                   bool resetSeconds);
  // Repeat and Shuffle: "Value" is "true" when the playlist's `get` answers 1.
  DMR_CMN_HIDDEN int32_t AnswerPlaylistMode(marlo::ActionRequest* request, marlo::ActionResponse* response,
                                            int (PLAYLIST_PlaylistManager::*get)());
  // SetRepeat and SetShuffle: the playlist's `set`, then `name` published (stored only after its event).
  DMR_CMN_HIDDEN int32_t SetPlaylistMode(marlo::ActionRequest* request, marlo::ActionResponse* response,
                                         const char* name, SINK_UPNP_StateVariableName_t index,
                                         int32_t (PLAYLIST_PlaylistManager::*set)(int));
  // The standard transport state (variable 0); "" when it cannot be read.
  DMR_CMN_HIDDEN void ReadTransportState(DMR_CMN_String* state);

  marlo::EventHandler* avtServiceEventHandler;
  marlo::EventHandler* cmsServiceEventHandler;
  marlo::EventHandler* productServiceEventHandler;
  marlo::EventHandler* playlistServiceEventHandler;
  marlo::EventHandler* infoServiceEventHandler;
  marlo::EventHandler* timeServiceEventHandler;
  marlo::EventHandler* senderServiceEventHandler;
  SINK_UPNP_OpenHomeStateVariableManager* stateVariableManager;
  SINK_CORE_TransferService* transferService;
  int32_t initialized;
  int32_t started;
  marlo::ProtocolInfo* protocolInfoList;
  PLAYLIST_PlaylistManager playlistManager;
};

#endif  // SINK_UPNP_OPEN_HOME_UPNP_SERVICE_H_
