#include "StandardDriftFixture.h"

namespace {

constexpr unsigned long kHandle = 0x5EED;

// Fills every OUT string the application is handed and answers 0.
struct AnswerWithValues {
  template <typename... Parameters>
  int32_t operator()(unsigned long, Parameters... parameters) const {
    (Fill(parameters), ...);
    return 0;
  }
  static void Fill(unsigned long) {}
  static void Fill(DMR_CMN_String* out) { out->SetCString("value"); }
};

}  // namespace

const std::vector<ValidCall> kStandardCalls = {
    {"AVTransport",
     "SetAVTransportURI",
     {{"InstanceID", "0"},
      {"CurrentURI", "http://media.example.org/a.flac"},
      {"CurrentURIMetaData", "<DIDL-Lite/>"}}},
    // Answered by the daemon; the service object does not know it.
    {"AVTransport",
     "SetNextAVTransportURI",
     {{"InstanceID", "0"},
      {"NextURI", "http://media.example.org/b.flac"},
      {"NextURIMetaData", "<DIDL-Lite/>"}}},
    {"AVTransport", "GetMediaInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetTransportInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetPositionInfo", {{"InstanceID", "0"}}},
    {"AVTransport", "GetDeviceCapabilities", {{"InstanceID", "0"}}},
    {"AVTransport", "GetTransportSettings", {{"InstanceID", "0"}}},
    {"AVTransport", "GetCurrentTransportActions", {{"InstanceID", "0"}}},
    {"AVTransport", "Stop", {{"InstanceID", "0"}}},
    {"AVTransport", "Play", {{"InstanceID", "0"}, {"Speed", "1"}}},
    {"AVTransport", "Pause", {{"InstanceID", "0"}}},
    {"AVTransport", "Seek", {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "0:00:05"}}},
    {"AVTransport", "Next", {{"InstanceID", "0"}}},
    {"AVTransport", "Previous", {{"InstanceID", "0"}}},
    {"AVTransport", "SetPlayMode", {{"InstanceID", "0"}, {"NewPlayMode", "REPEAT_ALL"}}},
    {"ConnectionManager", "GetProtocolInfo", {}},
    {"ConnectionManager", "GetCurrentConnectionIDs", {}},
    {"ConnectionManager", "GetCurrentConnectionInfo", {{"ConnectionID", "0"}}},
};

void StandardDriftFixture::SetUp() {
  ASSERT_EQ(properties_.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/flac:*"), 0);
  ASSERT_EQ(service_.Initialize(&properties_), 0);
  ASSERT_EQ(service_.RegisterAVTransportServiceEventListener(&transportHandler_), 0);
  ASSERT_EQ(service_.RegisterConnectionManagerServiceEventListener(&connectionHandler_), 0);
  AnswerEverything();
  ASSERT_EQ(service_.RegisterTransferService(&transfer_), 0);
  ASSERT_EQ(service_.Start(), 0);
}

void StandardDriftFixture::TearDown() {
  EXPECT_EQ(service_.Stop(), 0);
  EXPECT_EQ(service_.UnregisterAVTransportServiceEventListener(), 0);
  EXPECT_EQ(service_.UnregisterConnectionManagerServiceEventListener(), 0);
  EXPECT_EQ(service_.Finalize(), 0);
}

void StandardDriftFixture::AnswerEverything() {
  const AnswerWithValues answer;
  ON_CALL(transfer_, GetMediaInfo).WillByDefault(answer);
  ON_CALL(transfer_, GetTransportInfo).WillByDefault(answer);
  ON_CALL(transfer_, GetPositionInfo).WillByDefault(answer);
  ON_CALL(transfer_, GetDeviceCapabilities).WillByDefault(answer);
  ON_CALL(transfer_, GetTransportSettings).WillByDefault(answer);
  ON_CALL(transfer_, GetCurrentTransportActions).WillByDefault(answer);
  ON_CALL(transfer_, GetProtocolInfo).WillByDefault(answer);
  ON_CALL(transfer_, GetCurrentConnectionIDs).WillByDefault(answer);
  ON_CALL(transfer_, GetCurrentConnectionInfo)
      .WillByDefault([this, answer](unsigned long handle, DMR_CMN_String* connectionId, DMR_CMN_String* a,
                                    DMR_CMN_String* b, DMR_CMN_String* c, DMR_CMN_String* d,
                                    DMR_CMN_String* e, DMR_CMN_String* f, DMR_CMN_String* g) {
        Receive({connectionId});
        return answer(handle, a, b, c, d, e, f, g);
      });
  ON_CALL(transfer_, SetAVTransportURI)
      .WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* uri, DMR_CMN_String* metadata) {
        return Receive({uri, metadata});
      });
  ON_CALL(transfer_, Play).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* speed) {
    return Receive({speed});
  });
  ON_CALL(transfer_, Seek)
      .WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* unit, DMR_CMN_String* target) {
        return Receive({unit, target});
      });
  ON_CALL(transfer_, SetPlayMode).WillByDefault([this](unsigned long, unsigned long, DMR_CMN_String* mode) {
    return Receive({mode});
  });
}

int32_t StandardDriftFixture::Receive(std::initializer_list<const DMR_CMN_String*> texts) {
  for (const DMR_CMN_String* text : texts) {
    received_.emplace_back(text != nullptr && text->GetCString() != nullptr ? text->GetCString() : "<null>");
  }
  return 0;
}

int32_t StandardDriftFixture::Perform(const ServedScpd& served, const std::string& action, const Args& in) {
  request_ = std::make_unique<marlo::ActionRequest>();
  response_ = std::make_unique<marlo::ActionResponse>();
  received_.clear();
  EXPECT_EQ(request_->SetServiceType(served.service->serviceType), 0);
  EXPECT_EQ(request_->SetActionName(action.c_str()), 0);
  for (const auto& argument : in) {
    EXPECT_EQ(request_->AddArgument(argument.first.c_str(), argument.second.c_str()), 0);
  }
  return service_.PerformAction(request_.get(), response_.get(), kHandle);
}
