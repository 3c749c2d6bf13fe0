// The daemon without its network: both service objects taken through the host call order on a mock
// player, the router's answers as the SOAP layer will send them, and events handed to the main loop.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

#include "EventBridge.h"
#include "RendererFixture.h"
#include "dmr_cmn/String.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

using ::testing::_;
using ::testing::ElementsAre;
using ::testing::Pair;
using ::testing::Return;

namespace {

int32_t ChangeTransportState(SINK_UPNP_SinkCTSSStateVariableManager* store, const char* state) {
  DMR_CMN_String value;
  value.SetCString(state);
  return store->ChangeStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &value);
}

int32_t FillTransportInfo(unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                          DMR_CMN_String* speed) {
  state->SetCString("PLAYING");
  status->SetCString("OK");
  speed->SetCString("1");
  return 0;
}

}  // namespace

TEST_F(RendererFixture, ActionAnswersItsOutArgumentsInTheOrderTheServiceWroteThem) {
  StartRenderer();
  EXPECT_CALL(player_, GetTransportInfo(_, 0, _, _, _)).WillOnce(FillTransportInfo);
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "GetTransportInfo", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("CurrentTransportState", "PLAYING"),
                                       Pair("CurrentTransportStatus", "OK"), Pair("CurrentSpeed", "1")));
}

TEST_F(RendererFixture, EachActionGetsADistinctNonzeroHandle) {
  StartRenderer();
  std::vector<unsigned long> handles;
  EXPECT_CALL(player_, GetTransportInfo(_, 0, _, _, _))
      .Times(3)
      .WillRepeatedly([&handles](unsigned long handle, unsigned long instance, DMR_CMN_String* a, DMR_CMN_String* b,
                                 DMR_CMN_String* c) {
        handles.push_back(handle);
        return FillTransportInfo(handle, instance, a, b, c);
      });
  for (int i = 0; i < 3; ++i) Perform(kAVTransportType, "GetTransportInfo", {{"InstanceID", "0"}});
  EXPECT_THAT(handles, ElementsAre(1u, 2u, 3u));
}

TEST_F(RendererFixture, ErrorOfThePlayerBecomesTheFaultWithItsExactText) {
  StartRenderer();
  EXPECT_CALL(player_, Play(_, 0, _)).WillOnce(Return(715));
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Play", {{"InstanceID", "0"}, {"Speed", "1"}});
  EXPECT_EQ(outcome.errorCode, 715);
  EXPECT_EQ(outcome.errorDescription, "Content \u2018BUSY\u2019");
  EXPECT_TRUE(outcome.out.empty());
}

TEST_F(RendererFixture, UnknownActionIsAnsweredInvalidAction) {
  StartRenderer();
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Record", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 401);
  EXPECT_EQ(outcome.errorDescription, "Invalid Action");
}

TEST_F(RendererFixture, WronglyCasedActionIsAnsweredInvalidActionAndNothingPlays) {
  StartRenderer();
  EXPECT_CALL(player_, Play(_, _, _)).Times(0);
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "play", {{"InstanceID", "0"}, {"Speed", "1"}});
  EXPECT_EQ(outcome.errorCode, 401);
  EXPECT_EQ(outcome.errorDescription, "Invalid Action");
}

TEST_F(RendererFixture, MissingArgumentIsAnsweredInvalidArgs) {
  StartRenderer();
  EXPECT_CALL(player_, Play(_, _, _)).Times(0);
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Play", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 402);
  EXPECT_EQ(outcome.errorDescription, "Invalid Args");
}

TEST_F(RendererFixture, OtherInstanceIsAnsweredInvalidInstanceID) {
  StartRenderer();
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Stop", {{"InstanceID", "1"}});
  EXPECT_EQ(outcome.errorCode, 718);
  EXPECT_EQ(outcome.errorDescription, "Invalid InstanceID");
}

TEST_F(RendererFixture, TruncatedBodyIsRefusedAndNeverExecuted) {
  StartRenderer();
  EXPECT_CALL(player_, SetAVTransportURI(_, _, _, _)).Times(0);
  const std::string body = SoapBody(kAVTransportType, "SetAVTransportURI",
                                    {{"InstanceID", "0"}, {"CurrentURI", "http://127.0.0.1/a.flac"},
                                     {"CurrentURIMetaData", ""}});
  const std::string truncated = body.substr(0, body.size() - 30);
  const HOST_ActionOutcome outcome = renderer_->Router().Perform(kAVTransportType, truncated.data(), truncated.size());
  EXPECT_EQ(outcome.errorCode, 402);
  EXPECT_EQ(outcome.errorDescription, "Invalid Args");
}

TEST_F(RendererFixture, FailureOfTheServiceObjectIsAnsweredActionFailed) {
  StartRenderer();
  // 999 is no error Play may report: the handler fails the action and the service object answers -1999.
  EXPECT_CALL(player_, Play(_, 0, _)).WillOnce(Return(999));
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Play", {{"InstanceID", "0"}, {"Speed", "1"}});
  EXPECT_EQ(outcome.errorCode, 501);
  EXPECT_EQ(outcome.errorDescription, "Action Failed");
}

TEST_F(RendererFixture, OpenHomeActionReachesTheOpenHomeServiceObject) {
  StartRenderer();
  const HOST_ActionOutcome outcome = Perform(kPlaylistType, "TracksMax", {});
  EXPECT_EQ(outcome.errorCode, 0);
  ASSERT_EQ(outcome.out.size(), 1u);
  EXPECT_EQ(outcome.out[0].first, "Value");
}

TEST_F(RendererFixture, ServiceOfTheHostIsAnsweredByTheDaemonOnThePlayer) {
  StartRenderer();
  EXPECT_CALL(player_, GetVolume(_, 0, _)).WillRepeatedly([](unsigned long, unsigned long, DMR_CMN_String* value) {
    return value->SetCString("40");
  });
  EXPECT_CALL(player_, GetMute(_, 0, _)).WillRepeatedly([](unsigned long, unsigned long, DMR_CMN_String* value) {
    return value->SetCString("0");
  });
  const HOST_ActionOutcome outcome =
      Perform(kRenderingControlType, "GetVolume", {{"InstanceID", "0"}, {"Channel", "Master"}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_THAT(outcome.out, ElementsAre(Pair("CurrentVolume", "40")));
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kRenderingControlType, "LastChange", &value));
  EXPECT_NE(value.find("<Volume channel=\"Master\" val=\"40\"/>"), std::string::npos) << value;
}

TEST_F(RendererFixture, ActionTheDaemonAnswersItselfIsNotLeftToTheServiceObject) {
  StartRenderer();
  EXPECT_CALL(player_, SetNextAVTransportURI(_, 0, _, _)).WillOnce(Return(0));
  const HOST_ActionOutcome outcome = Perform(
      kAVTransportType, "SetNextAVTransportURI", {{"InstanceID", "0"}, {"NextURI", "http://127.0.0.1/b.flac"}, {"NextURIMetaData", ""}});
  EXPECT_EQ(outcome.errorCode, 0);
  EXPECT_TRUE(outcome.out.empty());
}

TEST_F(RendererFixture, ActionBeforeStartIsAnsweredActionFailed) {
  HOST_StepFailure failure;
  ASSERT_TRUE(renderer_->Prepare(&properties_, &failure));
  const HOST_ActionOutcome outcome = Perform(kAVTransportType, "Stop", {{"InstanceID", "0"}});
  EXPECT_EQ(outcome.errorCode, 501);
}

TEST_F(RendererFixture, QueryOfLastChangeIsTheWholeDocument) {
  StartRenderer();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kAVTransportType, "LastChange", &value));
  EXPECT_NE(value.find("<Event"), std::string::npos);
  EXPECT_NE(value.find("<TransportState val="), std::string::npos);
  EXPECT_NE(value.find("<CurrentPlayMode val=\"NORMAL\"/>"), std::string::npos) << value;
  EXPECT_NE(value.find("<NumberOfTracks val=\"0\"/>"), std::string::npos) << value;
}

TEST_F(RendererFixture, QueryOfLastChangeCarriesAVTransportsOwnTransportState) {
  ON_CALL(player_, GetTransportInfo(_, 0, _, _, _))
      .WillByDefault([](unsigned long, unsigned long, DMR_CMN_String* state, DMR_CMN_String* status,
                        DMR_CMN_String* speed) {
        return state->SetCString("PAUSED_PLAYBACK") | status->SetCString("OK") | speed->SetCString("1");
      });
  StartRenderer();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kAVTransportType, "LastChange", &value));
  EXPECT_NE(value.find("<TransportState val=\"PAUSED_PLAYBACK\"/>"), std::string::npos) << value;
  EXPECT_EQ(value.find("TransportState val=\"Stopped\""), std::string::npos) << value;
  EXPECT_EQ(value.find("<TransportState"), value.rfind("<TransportState")) << "entered once: " << value;
  EXPECT_NE(value.find("<NumberOfTracks val=\"0\"/>"), std::string::npos) << value;
}

TEST_F(RendererFixture, QueryOfLastChangeKeepsTheDocumentWhenThePlayerCannotSayItsState) {
  ON_CALL(player_, GetTransportInfo(_, _, _, _, _)).WillByDefault(::testing::Return(-1));
  StartRenderer();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kAVTransportType, "LastChange", &value));
  EXPECT_NE(value.find("<TransportState val="), std::string::npos) << value;
}

TEST_F(RendererFixture, QueryOfSinkProtocolInfoIsTheConfiguredList) {
  StartRenderer();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kConnectionManagerType, "SinkProtocolInfo", &value));
  EXPECT_EQ(value, "http-get:*:audio/flac:*,http-get:*:audio/wav:*");
}

TEST_F(RendererFixture, QueryOfOpenHomeVariableReadsItsService) {
  StartRenderer();
  std::string value;
  ASSERT_TRUE(renderer_->Router().Query(kTimeType, "Seconds", &value));
  EXPECT_EQ(value, "0");
}

TEST_F(RendererFixture, QueryOfVariableTheServiceDoesNotServeHasNoValue) {
  StartRenderer();
  std::string value = "untouched";
  EXPECT_FALSE(renderer_->Router().Query(kAVTransportType, "TransportState", &value));
  EXPECT_FALSE(renderer_->Router().Query(kRenderingControlType, "Volume", &value));
  EXPECT_EQ(value, "untouched");
}

TEST_F(RendererFixture, PrepareReportsTheFailingStepWithItsResult) {
  marlo::Properties empty;
  HOST_StepFailure failure;
  EXPECT_FALSE(renderer_->Prepare(&empty, &failure));
  EXPECT_EQ(failure.step, "AVTransport Initialize");
  EXPECT_EQ(failure.result, -1996);
}

TEST_F(RendererFixture, PrepareReportsARefusedTransferService) {
  EXPECT_CALL(player_, AttachStateVariableManager(_)).WillOnce(Return(-5));
  HOST_StepFailure failure;
  EXPECT_FALSE(renderer_->Prepare(&properties_, &failure));
  EXPECT_EQ(failure.step, "AVTransport RegisterTransferService");
  EXPECT_EQ(failure.result, -1);
}

TEST_F(RendererFixture, ShutdownFinalizesThePlayerBeforeTheServiceObjects) {
  StartRenderer();
  EXPECT_CALL(player_, Finalize()).WillOnce([this] {
    // The stores are still there while the player lets go of them.
    DMR_CMN_String value;
    EXPECT_EQ(transportStore_->GetStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, &value), 0);
    return 0;
  });
  HOST_StepFailure failure;
  EXPECT_TRUE(renderer_->Shutdown(&failure)) << failure.step;
  EXPECT_FALSE(renderer_->Started());
}

TEST_F(RendererFixture, EventOfThePlayerReachesTheSinkOnlyFromTheMainLoop) {
  StartRenderer();
  RunPending();
  events_.batches.clear();
  // The player changes the store and asks for the event, as it does from its own thread.
  std::thread player([this] {
    ASSERT_EQ(ChangeTransportState(transportStore_, "PLAYING"), 0);
    ASSERT_EQ(transportStore_->SendEvent(), 0);
  });
  player.join();
  // Give the eventing thread time to hand the batch on; nothing is delivered until the loop runs.
  for (int i = 0; i < 200 && g_main_context_pending(context_) == FALSE; ++i) g_usleep(1000);
  EXPECT_TRUE(events_.batches.empty());
  RunPending();
  ASSERT_EQ(events_.batches.size(), 1u);
  EXPECT_EQ(events_.batches[0].first, kAVTransportType);
  ASSERT_EQ(events_.batches[0].second.size(), 1u);
  EXPECT_EQ(events_.batches[0].second[0].first, "LastChange");
  EXPECT_NE(events_.batches[0].second[0].second.find("PLAYING"), std::string::npos);
}

TEST_F(RendererFixture, BatchHandedOnBeforeShutdownIsStillDelivered) {
  StartRenderer();
  RunPending();
  events_.batches.clear();
  ASSERT_EQ(ChangeTransportState(transportStore_, "STOPPED"), 0);
  ASSERT_EQ(transportStore_->SendEvent(), 0);
  HOST_StepFailure failure;
  ASSERT_TRUE(renderer_->Shutdown(&failure)) << failure.step;
  ASSERT_FALSE(events_.batches.empty());
  EXPECT_EQ(events_.batches.back().first, kAVTransportType);
}

TEST(EventBridge, CopiesTheBatchBeforeTheEventingThreadReusesIt) {
  GMainContext* context = g_main_context_new();
  RecordingEventSink sink;
  HOST_EventBridge bridge(kPlaylistType, &sink, context);
  char name[] = "Id";
  char value[] = "7";
  const char* names[] = {name};
  const char* values[] = {value};
  bridge.HandleEvent(names, values, 1);
  name[0] = 'X';
  value[0] = '9';
  while (g_main_context_iteration(context, FALSE)) {
  }
  ASSERT_EQ(sink.batches.size(), 1u);
  EXPECT_THAT(sink.batches[0].second, ElementsAre(Pair("Id", "7")));
  g_main_context_unref(context);
}

TEST_F(RendererFixture, PlayerAskingForTimeOutWarningsIsAskedAgainAfterItsDelay) {
  int asked = 0;
  EXPECT_CALL(player_, WarnTimeOut(0, _, _))
      .WillRepeatedly([&asked](unsigned long, unsigned long* timeout, const char** text) {
        ++asked;
        *timeout = asked == 1 ? 5 : 0;
        *text = asked == 1 ? "still buffering" : nullptr;
        return 0;
      });
  StartRenderer();
  const gint64 deadline = g_get_monotonic_time() + 200 * 1000;
  while (g_get_monotonic_time() < deadline) {
    if (!g_main_context_iteration(context_, FALSE)) g_usleep(1000);
  }
  // Once for each service object after start, and once more for the one that asked again after 5 ms.
  EXPECT_EQ(asked, 3);
}
