// SINK_UPNP_SinkCTSSUPnPServiceTestPeer: the one friend through which tests read the standard service's
// private fields and reach its private operations (the handlers' own checks, which PerformAction never
// lets a call get to; the protocol-list operations).
#ifndef TESTS_SINK_UPNP_SINK_CTSS_UPNP_SERVICE_TEST_PEER_H_
#define TESTS_SINK_UPNP_SINK_CTSS_UPNP_SERVICE_TEST_PEER_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "StateVariableStoreTestPeer.h"
#include "marlo/ProtocolInfo.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

class SINK_UPNP_SinkCTSSUPnPServiceTestPeer {
 public:
  using Service = SINK_UPNP_SinkCTSSUPnPService;

  static SINK_UPNP_SinkCTSSStateVariableManager* FrameStore(const Service& s) { return s.stateVariableManager; }
  static marlo::ProtocolInfo* FrameChain(const Service& s) { return s.protocolInfoList; }
  static marlo::EventHandler* FrameAvtHandler(const Service& s) { return s.avtServiceEventHandler; }
  static marlo::EventHandler* FrameCmsHandler(const Service& s) { return s.cmsServiceEventHandler; }
  static SINK_CORE_TransferService* FrameTransfer(const Service& s) { return s.transferService; }
  static int32_t FrameInitialized(const Service& s) { return s.initialized; }
  static int32_t FrameStarted(const Service& s) { return s.started; }

  static std::size_t FrameChainLength(const Service& s) {
    std::size_t length = 0;
    for (const marlo::ProtocolInfo* entry = s.protocolInfoList; entry != nullptr; entry = entry->next) ++length;
    return length;
  }

  // True when every field is null or zero, as construction leaves them.
  static bool FrameAllFieldsZero(const Service& s) {
    return s.avtServiceEventHandler == nullptr && s.cmsServiceEventHandler == nullptr &&
           s.stateVariableManager == nullptr && s.transferService == nullptr && s.initialized == 0 &&
           s.started == 0 && s.protocolInfoList == nullptr;
  }

  // The fields lie in the object in the order of their declaration.
  static std::vector<const void*> FrameFieldAddresses(const Service& s) {
    return {&s.avtServiceEventHandler, &s.cmsServiceEventHandler, &s.stateVariableManager, &s.transferService,
            &s.initialized,            &s.started,                &s.protocolInfoList};
  }

  static int32_t FrameGetProtocolInfo(Service& s, char** out) { return s.GetProtocolInfo(out); }

  // Forgets the AVTransport event handler, as if its unregistration had succeeded; answers whether one
  // was kept.
  static bool FrameForgetAvtHandler(Service& s) {
    const bool kept = s.avtServiceEventHandler != nullptr;
    s.avtServiceEventHandler = nullptr;
    return kept;
  }

  // What a failed Initialize may leave behind (a store whose Initialize failed, a partial chain), freed so
  // that the leak check of the sanitizer build sees only real leaks.
  static void FrameReleaseLeftovers(Service& s) {
    SINK_UPNP_StateVariableStoreTestPeer::Retire(s.stateVariableManager);
    s.stateVariableManager = nullptr;
    s.CleanProtocolInfo();
  }

  using ActionHandler = int32_t (SINK_UPNP_SinkCTSSUPnPService::*)(unsigned long, marlo::ActionRequest*,
                                                                   marlo::ActionResponse*);
  struct ActionHandlerEntry {
    const char* action;
    ActionHandler handler;
  };

  static std::vector<ActionHandlerEntry> ActionHandlers() {
    using S = SINK_UPNP_SinkCTSSUPnPService;
    return {
        {"SetAVTransportURI", &S::ExecuteSetAVTransportURI},
        {"GetMediaInfo", &S::ExecuteGetMediaInfo},
        {"GetTransportInfo", &S::ExecuteGetTransportInfo},
        {"GetPositionInfo", &S::ExecuteGetPositionInfo},
        {"GetDeviceCapabilities", &S::ExecuteGetDeviceCapabilities},
        {"GetTransportSettings", &S::ExecuteGetTransportSettings},
        {"GetCurrentTransportActions", &S::ExecuteGetCurrentTransportActions},
        {"Stop", &S::ExecuteStop},
        {"Play", &S::ExecutePlay},
        {"Pause", &S::ExecutePause},
        {"Seek", &S::ExecuteSeek},
        {"Next", &S::ExecuteNext},
        {"Previous", &S::ExecutePrevious},
        {"GetProtocolInfo", &S::ExecuteGetProtocolInfo},
        {"GetCurrentConnectionIDs", &S::ExecuteGetCurrentConnectionIDs},
        {"GetCurrentConnectionInfo", &S::ExecuteGetCurrentConnectionInfo},
        {"SetPlayMode", &S::ExecuteSetPlayMode},
    };
  }
};

#endif  // TESTS_SINK_UPNP_SINK_CTSS_UPNP_SERVICE_TEST_PEER_H_
