// SINK_UPNP_OpenHomeUPnPServiceTestPeer: the one friend through which tests read the OpenHome service's
// private fields and reach its private operations (the handlers' own checks, which PerformAction never
// lets a call get to; the internal transport operations; the playlist it owns).
#ifndef TESTS_SINK_UPNP_OPEN_HOME_UPNP_SERVICE_TEST_PEER_H_
#define TESTS_SINK_UPNP_OPEN_HOME_UPNP_SERVICE_TEST_PEER_H_

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <vector>

#include "StateVariableStoreTestPeer.h"
#include "marlo/ProtocolInfo.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"

class SINK_UPNP_OpenHomeUPnPServiceTestPeer {
 public:
  using Service = SINK_UPNP_OpenHomeUPnPService;

  static SINK_UPNP_OpenHomeStateVariableManager* Store(const Service& s) { return s.stateVariableManager; }
  static marlo::ProtocolInfo* Chain(const Service& s) { return s.protocolInfoList; }
  static marlo::EventHandler* AvtHandler(const Service& s) { return s.avtServiceEventHandler; }
  static marlo::EventHandler* CmsHandler(const Service& s) { return s.cmsServiceEventHandler; }
  static marlo::EventHandler* ProductHandler(const Service& s) { return s.productServiceEventHandler; }
  static marlo::EventHandler* PlaylistHandler(const Service& s) { return s.playlistServiceEventHandler; }
  static marlo::EventHandler* InfoHandler(const Service& s) { return s.infoServiceEventHandler; }
  static marlo::EventHandler* TimeHandler(const Service& s) { return s.timeServiceEventHandler; }
  static marlo::EventHandler* SenderHandler(const Service& s) { return s.senderServiceEventHandler; }
  static SINK_CORE_TransferService* Transfer(const Service& s) { return s.transferService; }
  static int32_t Initialized(const Service& s) { return s.initialized; }
  static int32_t Started(const Service& s) { return s.started; }
  static PLAYLIST_PlaylistManager& Playlist(Service& s) { return s.playlistManager; }

  static std::size_t ChainLength(const Service& s) {
    std::size_t length = 0;
    for (const marlo::ProtocolInfo* entry = s.protocolInfoList; entry != nullptr; entry = entry->next) ++length;
    return length;
  }

  // True when every field but the playlist is null or zero, as construction leaves them.
  static bool AllFieldsZero(const Service& s) {
    return s.avtServiceEventHandler == nullptr && s.cmsServiceEventHandler == nullptr &&
           s.productServiceEventHandler == nullptr && s.playlistServiceEventHandler == nullptr &&
           s.infoServiceEventHandler == nullptr && s.timeServiceEventHandler == nullptr &&
           s.senderServiceEventHandler == nullptr && s.stateVariableManager == nullptr &&
           s.transferService == nullptr && s.initialized == 0 && s.started == 0 && s.protocolInfoList == nullptr;
  }

  // The fields lie in the object in the order of their declaration.
  static std::vector<const void*> FieldAddresses(const Service& s) {
    return {&s.avtServiceEventHandler,     &s.cmsServiceEventHandler,  &s.productServiceEventHandler,
            &s.playlistServiceEventHandler, &s.infoServiceEventHandler, &s.timeServiceEventHandler,
            &s.senderServiceEventHandler,   &s.stateVariableManager,    &s.transferService,
            &s.initialized,                 &s.started,                 &s.protocolInfoList,
            &s.playlistManager};
  }

  static int32_t GetProtocolInfo(Service& s, char** out) { return s.GetProtocolInfo(out); }

  // Forgets the five OpenHome event handlers, as if their unregistrations had succeeded; answers how many
  // were kept.
  static int ForgetOpenHomeHandlers(Service& s) {
    int kept = 0;
    for (marlo::EventHandler** field : {&s.productServiceEventHandler, &s.playlistServiceEventHandler,
                                        &s.infoServiceEventHandler, &s.timeServiceEventHandler,
                                        &s.senderServiceEventHandler}) {
      if (*field != nullptr) ++kept;
      *field = nullptr;
    }
    return kept;
  }

  // What a failed Initialize may leave behind (a store whose Initialize failed, a partial chain), freed so
  // that the leak check of the sanitizer build sees only real leaks.
  static void ReleaseLeftovers(Service& s) {
    SINK_UPNP_StateVariableStoreTestPeer::Retire(s.stateVariableManager);
    s.stateVariableManager = nullptr;
    s.CleanProtocolInfo();
  }

  // The internal transport operations.
  static int32_t SetAVTransportURI(Service& s, unsigned long handle, const char* uri, const char* metadata,
                                   marlo::ActionResponse* response) {
    return s.SetAVTransportURI(handle, uri, metadata, response);
  }
  static int32_t Play(Service& s, unsigned long handle, marlo::ActionResponse* response) {
    return s.Play(handle, response);
  }
  static int32_t Stop(Service& s, unsigned long handle, marlo::ActionResponse* response) {
    return s.Stop(handle, response);
  }
  static int32_t Seek(Service& s, unsigned long handle, DMR_CMN_String* unit, DMR_CMN_String* target,
                      marlo::ActionResponse* response) {
    return s.Seek(handle, unit, target, response);
  }
  static int32_t Next(Service& s, unsigned long handle, marlo::ActionResponse* response) {
    return s.Next(handle, response);
  }
  static int32_t Previous(Service& s, unsigned long handle, marlo::ActionResponse* response) {
    return s.Previous(handle, response);
  }

  using ActionHandler = int32_t (SINK_UPNP_OpenHomeUPnPService::*)(unsigned long, marlo::ActionRequest*,
                                                                   marlo::ActionResponse*);
  struct ActionHandlerEntry {
    const char* action;
    ActionHandler handler;
  };

  // Every handler, in the order of the dispatch table.
  static std::vector<ActionHandlerEntry> ActionHandlers() {
    using S = SINK_UPNP_OpenHomeUPnPService;
    return {
        {"Insert", &S::ExecuteInsert},
        {"DeleteId", &S::ExecuteDeleteId},
        {"DeleteAll", &S::ExecuteDeleteAll},
        {"Stop", &S::ExecuteStop},
        {"Play", &S::ExecutePlay},
        {"Pause", &S::ExecutePause},
        {"SeekSecondAbsolute", &S::ExecuteSeekSecondAbsolute},
        {"Next", &S::ExecuteNext},
        {"Previous", &S::ExecutePrevious},
        {"SeekId", &S::ExecuteSeekId},
        {"SeekIndex", &S::ExecuteSeekIndex},
        {"Repeat", &S::ExecuteRepeat},
        {"SetRepeat", &S::ExecuteSetRepeat},
        {"Shuffle", &S::ExecuteShuffle},
        {"SetShuffle", &S::ExecuteSetShuffle},
        {"Id", &S::ExecuteId},
        {"TransportState", &S::ExecuteTransportState},
        {"Read", &S::ExecuteRead},
        {"ReadList", &S::ExecuteReadList},
        {"Standby", &S::ExecuteStandby},
        {"SetStandby", &S::ExecuteSetStandby},
        {"SourceXml", &S::ExecuteSourceXml},
        {"SetSourceIndex", &S::ExecuteSetSourceIndex},
        {"IdArray", &S::ExecuteIdArray},
        {"TracksMax", &S::ExecuteTracksMax},
        {"Manufacturer", &S::ExecuteManufacturer},
        {"Model", &S::ExecuteModel},
        {"Product", &S::ExecuteProduct},
        {"SourceIndex", &S::ExecuteSourceIndex},
        {"Track", &S::ExecuteTrack},
        {"Details", &S::ExecuteDetails},
        {"Metatext", &S::ExecuteMetatext},
        {"Time", &S::ExecuteTime},
    };
  }
};

#endif  // TESTS_SINK_UPNP_OPEN_HOME_UPNP_SERVICE_TEST_PEER_H_
