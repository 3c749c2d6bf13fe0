// MockTransferService: a GoogleMock SINK_CORE_TransferService, for tests of the service objects.
#ifndef TESTS_SUPPORT_MOCK_TRANSFER_SERVICE_H_
#define TESTS_SUPPORT_MOCK_TRANSFER_SERVICE_H_

#include <gmock/gmock.h>

#include <string>

#include "dmr_cmn/String.h"
#include "sink_core/TransferService.h"

class MockTransferService : public SINK_CORE_TransferService {
 public:
  MOCK_METHOD(int32_t, Initialize, (marlo::Properties*), (override));
  MOCK_METHOD(int32_t, Finalize, (), (override));
  MOCK_METHOD(int32_t, StartEngine, (), (override));
  MOCK_METHOD(int32_t, StopEngine, (), (override));
  MOCK_METHOD(int32_t, GetVolume, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, SetVolume, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, SetNextAVTransportURI,
              (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, AttachOpenHomeStateVariableManager, (SINK_UPNP_OpenHomeStateVariableManager*),
              (override));
  MOCK_METHOD(int32_t, AttachStateVariableManager, (SINK_UPNP_SinkCTSSStateVariableManager*), (override));
  MOCK_METHOD(int32_t, WarnTimeOut, (unsigned long, unsigned long*, const char**), (override));
  MOCK_METHOD(int32_t, SetAVTransportURI, (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, Play, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, Stop, (unsigned long, unsigned long), (override));
  MOCK_METHOD(int32_t, Pause, (unsigned long, unsigned long), (override));
  MOCK_METHOD(int32_t, Seek, (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, Next, (unsigned long, unsigned long), (override));
  MOCK_METHOD(int32_t, Previous, (unsigned long, unsigned long), (override));
  MOCK_METHOD(int32_t, GetDeviceCapabilities,
              (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, GetMediaInfo,
              (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
               DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, GetPositionInfo,
              (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
               DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, GetTransportInfo,
              (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, GetTransportSettings, (unsigned long, unsigned long, DMR_CMN_String*, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, GetCurrentTransportActions, (unsigned long, unsigned long, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, GetCurrentConnectionIDs, (unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, GetCurrentConnectionInfo,
              (unsigned long, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*,
               DMR_CMN_String*, DMR_CMN_String*, DMR_CMN_String*),
              (override));
  MOCK_METHOD(int32_t, GetProtocolInfo, (unsigned long, DMR_CMN_String*, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, SetPlayMode, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, GetMute, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, SetMute, (unsigned long, unsigned long, DMR_CMN_String*), (override));
  MOCK_METHOD(int32_t, AttachPlaylistManager, (PLAYLIST_PlaylistManager*), (override));
};

// Matches a DMR_CMN_String* whose text equals `text`.
MATCHER_P(StringIs, text, std::string("a string holding \"") + text + "\"") {
  return arg != nullptr && arg->GetCString() != nullptr && std::string(arg->GetCString()) == text;
}

#endif  // TESTS_SUPPORT_MOCK_TRANSFER_SERVICE_H_
