// The standard renderer service object where it differs from the OpenHome one: what Start requires, what
// holds up Finalize, the AVTransport handler's LastChange events, the OpenHome listener pairs that do
// nothing here, the names its state variable query answers, and its action dispatch table. The frame it
// shares with the OpenHome object is tested over both in ServiceFrameTest.cpp; the actions' own behaviour
// in SinkCTSSUPnPServiceActionTest.cpp.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "ActionReplies.h"
#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "ServiceFrameFixture.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/SinkCTSSUPnPService.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using service_frame_test::kAllStates;
using service_frame_test::kAVTransport;
using service_frame_test::kConnectionManager;
using service_frame_test::kHandle;
using service_frame_test::kJoined;
using service_frame_test::kPlaylistService;
using service_frame_test::kRenderingControl;
using service_frame_test::ServiceFrameFixture;
using service_frame_test::State;
using service_frame_test::StateName;
using ::testing::_;
using ::testing::Return;

class SinkCTSSFrame : public ServiceFrameFixture<SINK_UPNP_SinkCTSSUPnPService> {
 protected:
  RecordingEventHandler& avtHandler() { return handlers_[0]; }
};

// ============================================ Start and Finalize ============================================

TEST_F(SinkCTSSFrame, StartWithoutAnyOfItsThreeRegistrationsAnswersFailure) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  struct Row {
    bool avt;
    bool cms;
    bool transfer;
  };
  // The transfer service cannot be taken back, so the rows with it come last.
  const Row rows[] = {
      {false, false, false}, {true, false, false}, {false, true, false}, {true, true, false},
      {false, false, true},  {true, false, true},  {false, true, true},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string("avt ") + (row.avt ? "yes" : "no") + ", cms " + (row.cms ? "yes" : "no") +
                 ", transfer " + (row.transfer ? "yes" : "no"));
    if (row.avt) {
      ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler()), 0);
    }
    if (row.cms) {
      ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&cmsHandler_), 0);
    }
    if (row.transfer && ServiceTraits::Transfer(service_) == nullptr) {
      ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
    }
    EXPECT_EQ(service_.Start(), -1999);
    EXPECT_EQ(ServiceTraits::Started(service_), 0);
    if (row.avt) {
      ASSERT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
    }
    if (row.cms) {
      ASSERT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
    }
  }
}

TEST_F(SinkCTSSFrame, FinalizeWhileAVTransportHandlerRegisteredAnswersFailureAndChangesNothing) {
  ASSERT_NO_FATAL_FAILURE(InitializeOnly());
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&avtHandler()), 0);
  auto* before = store();
  marlo::ProtocolInfo* chain = ServiceTraits::Chain(service_);
  EXPECT_EQ(service_.Finalize(), -1999);
  EXPECT_EQ(ServiceTraits::Initialized(service_), 1);
  EXPECT_EQ(store(), before);
  EXPECT_EQ(ServiceTraits::Chain(service_), chain);
  EXPECT_EQ(ServiceTraits::ChainLength(service_), 2u);
  EXPECT_EQ(ServiceTraits::AvtHandler(service_), &avtHandler());
  // Still whole: the handler can be taken back and the service finalized.
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
  EXPECT_EQ(service_.Finalize(), 0);
}

// ========================================== The AVTransport handler ==========================================

TEST_F(SinkCTSSFrame, RegisteredAVTransportHandlerReceivesTheStoreLastChangeEvents) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  ASSERT_EQ(ChangeInStore(SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"), 0);
  ASSERT_EQ(store()->SendEvent(), 0);
  ASSERT_TRUE(avtHandler().WaitForBatches(1));
  const std::vector<RecordingEventHandler::Batch> batches = avtHandler().Batches();
  ASSERT_EQ(batches[0].size(), 1u);
  EXPECT_EQ(batches[0][0].first, "LastChange");
  EXPECT_NE(batches[0][0].second.find("PLAYING"), std::string::npos);
}

// ================================= The OpenHome listeners do nothing here =================================

using RegisterHandler = int32_t (SINK_UPNP_SinkCTSSUPnPService::*)(marlo::EventHandler*);
using UnregisterHandler = int32_t (SINK_UPNP_SinkCTSSUPnPService::*)();

struct DoNothingPair {
  const char* name;
  RegisterHandler registerHandler;
  UnregisterHandler unregisterHandler;
};

using Standard = SINK_UPNP_SinkCTSSUPnPService;
const DoNothingPair kDoNothingPairs[] = {
    {"Playlist", &Standard::RegisterPlaylistServiceEventListener, &Standard::UnregisterPlaylistServiceEventListener},
    {"Product", &Standard::RegisterProductServiceEventListener, &Standard::UnregisterProductServiceEventListener},
    {"Time", &Standard::RegisterTimeServiceEventListener, &Standard::UnregisterTimeServiceEventListener},
    {"Info", &Standard::RegisterInfoServiceEventListener, &Standard::UnregisterInfoServiceEventListener},
    {"Sender", &Standard::RegisterSenderServiceEventListener, &Standard::UnregisterSenderServiceEventListener},
};

TEST_F(SinkCTSSFrame, OpenHomeListenerPairsDoNothingAndAnswerZeroInEveryState) {
  RecordingEventHandler handler;
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    for (const DoNothingPair& pair : kDoNothingPairs) {
      SCOPED_TRACE(pair.name);
      EXPECT_EQ((service_.*pair.registerHandler)(&handler), 0);
      EXPECT_EQ((service_.*pair.registerHandler)(&handler), 0);
      EXPECT_EQ((service_.*pair.registerHandler)(nullptr), 0);
      EXPECT_EQ((service_.*pair.unregisterHandler)(), 0);
      EXPECT_EQ((service_.*pair.unregisterHandler)(), 0);
    }
    // Nothing was kept: the standard handlers are untouched and Finalize is not held up.
    EXPECT_EQ(ServiceTraits::AvtHandler(service_), state == State::kStarted ? &avtHandler() : nullptr);
    EXPECT_EQ(ServiceTraits::CmsHandler(service_), state == State::kStarted ? &cmsHandler_ : nullptr);
    EXPECT_EQ(ServiceTraits::Started(service_), state == State::kStarted ? 1 : 0);
    if (state == State::kInitialized) {
      // Nothing was given to the store either: it has no eventing thread.
      EXPECT_EQ(store()->UnregisterAVTransportServiceEventListener(), SINK_UPNP_ERR_NOT_REGISTERED);
    }
    if (state == State::kStarted) {
      // The store's one thread still delivers to the AVTransport handler, and to nobody else.
      ASSERT_NO_FATAL_FAILURE(DeliverMarkers());
      EXPECT_EQ(handler.BatchCount(), 0u);
    }
    BackToCreated();
  }
}

TEST_F(SinkCTSSFrame, SenderListenerPairAnswersZeroBeforeInitialize) {
  RecordingEventHandler handler;
  EXPECT_EQ(service_.RegisterSenderServiceEventListener(&handler), 0);
  EXPECT_EQ(service_.UnregisterSenderServiceEventListener(), 0);
  EXPECT_TRUE(ServiceTraits::AllFieldsZero(service_));
}

// =========================================== GetStateVariable ===========================================

TEST_F(SinkCTSSFrame, GetStateVariableArgumentRefusalsInEveryState) {
  struct Row {
    const char* serviceName;
    const char* variableName;
    bool nullOut;
  };
  // Every one is -1998, whatever the state.
  const Row rows[] = {
      {nullptr, "LastChange", false},
      {nullptr, nullptr, true},
      {kRenderingControl, "LastChange", false},
      {"urn:schemas-upnp-org:service:avtransport:1", "LastChange", false},
      {"urn:schemas-upnp-org:service:AVTransport:2", "LastChange", false},
      {"", "LastChange", false},
      {kPlaylistService, "TransportState", false},
      {kRenderingControl, nullptr, true},
      {kAVTransport, nullptr, false},
      {kAVTransport, "LastChange", true},
      {kConnectionManager, nullptr, false},
      {kConnectionManager, "SinkProtocolInfo", true},
  };
  for (State state : kAllStates) {
    SCOPED_TRACE(StateName(state));
    ASSERT_NO_FATAL_FAILURE(Enter(state));
    for (const Row& row : rows) {
      SCOPED_TRACE(row.serviceName == nullptr ? "(null service)" : row.serviceName);
      SCOPED_TRACE(row.variableName == nullptr ? "(null variable)" : row.variableName);
      marlo::StateVariable out;
      EXPECT_EQ(service_.GetStateVariable(row.serviceName, row.variableName, row.nullOut ? nullptr : &out), -1998);
      EXPECT_EQ(out.GetValue(), nullptr);
    }
    BackToCreated();
  }
}

TEST_F(SinkCTSSFrame, OnlyLastChangeIsServedForAVTransport) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* others[] = {"TransportState", "lastchange", "LastChange ", "", "SinkProtocolInfo", "A_ARG_TYPE_InstanceID"};
  for (const char* name : others) {
    SCOPED_TRACE(name);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kAVTransport, name, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

TEST_F(SinkCTSSFrame, ConnectionManagerVariablesAreReadFromTheStore) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  EXPECT_EQ(Ask({kConnectionManager, "SinkProtocolInfo"}), kJoined);
  EXPECT_EQ(Ask({kConnectionManager, "SourceProtocolInfo"}), "");
  EXPECT_EQ(Ask({kConnectionManager, "CurrentConnectionIDs"}), "0");
  // Read at query time, not remembered.
  ASSERT_EQ(ChangeInStore(SINK_UPNP_CMS_SOURCE_PROTOCOL_INFO, "http-get:*:video/mp4:*"), 0);
  ASSERT_EQ(ChangeInStore(SINK_UPNP_CMS_CURRENT_CONNECTION_IDS, "0,1"), 0);
  EXPECT_EQ(Ask({kConnectionManager, "SourceProtocolInfo"}), "http-get:*:video/mp4:*");
  EXPECT_EQ(Ask({kConnectionManager, "CurrentConnectionIDs"}), "0,1");
}

TEST_F(SinkCTSSFrame, OtherConnectionManagerVariablesAnswerBadValue) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* others[] = {"LastChange", "sinkProtocolInfo", "TransportState", "A_ARG_TYPE_ConnectionStatus", ""};
  for (const char* name : others) {
    SCOPED_TRACE(name);
    marlo::StateVariable out;
    EXPECT_EQ(service_.GetStateVariable(kConnectionManager, name, &out), -1996);
    EXPECT_EQ(out.GetValue(), nullptr);
  }
}

// ============================================= The dispatch table =============================================

TEST_F(SinkCTSSFrame, UnknownActionNamesAreAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  const char* names[] = {"PLAY", "getTransportInfo", "Play ", " Play", "", "SetNextAVTransportURI",
                         "GetVolume", "X_DLNA_GetBytePositionInfo", "SetPlayModeX", "Get"};
  for (const char* name : names) {
    SCOPED_TRACE(name);
    marlo::ActionResponse response;
    EXPECT_EQ(Perform({kAVTransport, name, {{"InstanceID", "0"}}}, &response), 0);
    ExpectError(response, 401);
  }
}

TEST_F(SinkCTSSFrame, KnownNameWithMissingArgumentsIsNotAnsweredInvalidAction) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  marlo::ActionResponse response;
  EXPECT_EQ(Perform({kAVTransport, "Seek", {}}, &response), 0);
  ExpectError(response, 402);
}

// ---- Dispatch: each name reaches its own handler, whatever service it was addressed to ----

struct DispatchCase {
  const char* action;
  std::vector<std::pair<const char*, const char*>> arguments;
  // Sets up the one transfer-service call the action's handler makes, answering `answer`.
  void (*expect)(MockTransferService& application, int32_t answer);
  // A number the action accepts from the application, and its description.
  int32_t acceptedAnswer;
  const char* description;
};

const std::vector<std::pair<const char*, const char*>> kInstanceOnly = {{"InstanceID", "0"}};

const DispatchCase kDispatchCases[] = {
    {"SetAVTransportURI",
     {{"InstanceID", "0"}, {"CurrentURI", "http://host/a.mp3"}, {"CurrentURIMetaData", ""}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, AttachPlaylistManager(nullptr)).WillOnce(Return(0));
       EXPECT_CALL(a, SetAVTransportURI(kHandle, 0ul, StringIs("http://host/a.mp3"), StringIs("")))
           .WillOnce(Return(answer));
     },
     716, "Resource not found"},
    {"GetMediaInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetMediaInfo(kHandle, 0ul, _, _, _, _, _, _, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetTransportInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetTransportInfo(kHandle, 0ul, _, _, _)).WillOnce(Return(answer));
     },
     718, "Invalid InstanceID"},
    {"GetPositionInfo", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetPositionInfo(kHandle, 0ul, _, _, _, _, _, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetDeviceCapabilities", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetDeviceCapabilities(kHandle, 0ul, _, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetTransportSettings", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetTransportSettings(kHandle, 0ul, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentTransportActions", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentTransportActions(kHandle, 0ul, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"Stop", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Stop(kHandle, 0ul)).WillOnce(Return(answer)); },
     705, "Transport is locked"},
    {"Play",
     {{"InstanceID", "0"}, {"Speed", "1"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Play(kHandle, 0ul, StringIs("1"))).WillOnce(Return(answer));
     },
     717, "Play speed not supported"},
    {"Pause", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Pause(kHandle, 0ul)).WillOnce(Return(answer)); },
     701, "Transition not available"},
    {"Seek",
     {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "00:01:00"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Seek(kHandle, 0ul, StringIs("REL_TIME"), StringIs("00:01:00"))).WillOnce(Return(answer));
     },
     710, "Seek mode not supported"},
    {"Next", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) { EXPECT_CALL(a, Next(kHandle, 0ul)).WillOnce(Return(answer)); },
     711, "Illegal seek target"},
    {"Previous", kInstanceOnly,
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, Previous(kHandle, 0ul)).WillOnce(Return(answer));
     },
     711, "Illegal seek target"},
    {"GetProtocolInfo",
     {},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetProtocolInfo(kHandle, _, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentConnectionIDs",
     {},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentConnectionIDs(kHandle, _)).WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"GetCurrentConnectionInfo",
     {{"ConnectionID", "0"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, GetCurrentConnectionInfo(kHandle, StringIs("0"), _, _, _, _, _, _, _))
           .WillOnce(Return(answer));
     },
     402, "Invalid Args"},
    {"SetPlayMode",
     {{"InstanceID", "0"}, {"NewPlayMode", "SHUFFLE"}},
     [](MockTransferService& a, int32_t answer) {
       EXPECT_CALL(a, SetPlayMode(kHandle, 0ul, StringIs("SHUFFLE"))).WillOnce(Return(answer));
     },
     712, "Play mode not supported"},
};

class SinkCTSSDispatch : public SinkCTSSFrame, public ::testing::WithParamInterface<DispatchCase> {
 protected:
  void Fill(marlo::ActionRequest* request, const char* serviceType) {
    ASSERT_EQ(request->SetServiceType(serviceType), 0);
    ASSERT_EQ(request->SetActionName(GetParam().action), 0);
    for (const auto& argument : GetParam().arguments) {
      ASSERT_EQ(request->AddArgument(argument.first, argument.second), 0);
    }
  }
};

TEST_P(SinkCTSSDispatch, NameReachesItsHandlerAndTheApplicationsAnswer) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, GetParam().acceptedAnswer);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, kAVTransport));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), GetParam().acceptedAnswer);
  EXPECT_STREQ(response.GetErrorDescription(), GetParam().description);
  EXPECT_EQ(response.GetArgumentCount(), 0u);
}

TEST_P(SinkCTSSDispatch, ServiceTheActionWasAddressedToIsNotLookedAt) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, GetParam().acceptedAnswer);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, kRenderingControl));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), 0);
  EXPECT_EQ(response.GetErrorCode(), GetParam().acceptedAnswer);
}

TEST_P(SinkCTSSDispatch, UnknownAnswerOfTheApplicationBecomesServiceFailure) {
  ASSERT_NO_FATAL_FAILURE(StartAll());
  GetParam().expect(transfer_, 999);
  marlo::ActionRequest request;
  ASSERT_NO_FATAL_FAILURE(Fill(&request, kAVTransport));
  marlo::ActionResponse response;
  EXPECT_EQ(service_.PerformAction(&request, &response, kHandle), -1999);
  ExpectUntouched(response);
}

INSTANTIATE_TEST_SUITE_P(EveryAction, SinkCTSSDispatch, ::testing::ValuesIn(kDispatchCases),
                         [](const ::testing::TestParamInfo<DispatchCase>& paramInfo) {
                           return std::string(paramInfo.param.action);
                         });


}  // namespace
