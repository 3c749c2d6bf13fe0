// The query actions of the OpenHome Product, Info and Time services (Manufacturer, Model, Product,
// Standby, SetStandby, SourceXml, SetSourceIndex, Track, Details, Metatext, Time), on a started service:
// the OUT arguments each writes, in order, from which state variable, and what a failing write or read
// makes of the reply and the result.
//
// The Product variables come from the device description of the test data folder, which the fixture
// configures as the document root. The application is a StrictMock: none of these actions may call it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "FaultInjection.h"
#include "OpenHomeServiceFixture.h"
#include "ScopedFault.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Device.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {
namespace {

using FP = DMR_CMN_FaultPoint;

// The one source the renderer has, as "SourceXml" reports it.
constexpr char kSourceList[] =
    "<SourceList><Source><Name>Playlist</Name><Type>Playlist</Type><Visible>true</Visible></Source>"
    "</SourceList>";

// An image path of the device description as a control point can fetch it.
std::string ImageUrl(const std::string& path) {
  return "http://" + std::string(marlo::Device::GetServerIPAddress()) + path;
}

// A query action: its OUT arguments in order, each with the state variable it reports.
struct Query {
  const char* action;
  std::vector<std::pair<std::string, SINK_UPNP_StateVariableName_t>> out;
};

const std::vector<Query>& Queries() {
  static const std::vector<Query> kQueries = {
      {"Manufacturer",
       {{"Name", SINK_UPNP_PRODUCT_MANUFACTURER_NAME},
        {"Info", SINK_UPNP_PRODUCT_MANUFACTURER_INFO},
        {"Url", SINK_UPNP_PRODUCT_MANUFACTURER_URL},
        {"ImageUri", SINK_UPNP_PRODUCT_MANUFACTURER_IMAGE_URI}}},
      {"Model",
       {{"Name", SINK_UPNP_PRODUCT_MODEL_NAME},
        {"Info", SINK_UPNP_PRODUCT_MODEL_INFO},
        {"Url", SINK_UPNP_PRODUCT_MODEL_URL},
        {"ImageUri", SINK_UPNP_PRODUCT_MODEL_IMAGE_URI}}},
      {"Product",
       {{"Room", SINK_UPNP_PRODUCT_PRODUCT_ROOM},
        {"Name", SINK_UPNP_PRODUCT_PRODUCT_NAME},
        {"Info", SINK_UPNP_PRODUCT_PRODUCT_INFO},
        {"Url", SINK_UPNP_PRODUCT_PRODUCT_URL},
        {"ImageUri", SINK_UPNP_PRODUCT_PRODUCT_IMAGE_URI}}},
      {"SetSourceIndex", {{"Value", SINK_UPNP_PRODUCT_SOURCE_INDEX}}},
      {"Track", {{"Uri", SINK_UPNP_INFO_URI}, {"Meta", SINK_UPNP_INFO_METADATA}}},
      {"Details",
       {{"Duration", SINK_UPNP_INFO_DURATION},
        {"BitRate", SINK_UPNP_INFO_BIT_RATE},
        {"BitDepth", SINK_UPNP_INFO_BIT_DEPTH},
        {"SampleRate", SINK_UPNP_INFO_SAMPLE_RATE},
        {"Lossless", SINK_UPNP_INFO_LOSSLESS},
        {"CodecName", SINK_UPNP_INFO_CODEC_NAME}}},
      {"Metatext", {{"Value", SINK_UPNP_INFO_METATEXT}}},
      {"Time",
       {{"TrackCount", SINK_UPNP_TIME_TRACK_COUNT},
        {"Duration", SINK_UPNP_TIME_DURATION},
        {"Seconds", SINK_UPNP_TIME_SECONDS}}},
  };
  return kQueries;
}

// Every handler of these three services.
const char* const kActions[] = {"Manufacturer", "Model",   "Product", "Standby",  "SetStandby", "SourceXml",
                                "SetSourceIndex", "Track", "Details", "Metatext", "Time"};

// A text for variable `index` that no other variable holds.
std::string Distinct(SINK_UPNP_StateVariableName_t index) {
  return "value of variable " + std::to_string(static_cast<int>(index));
}

class OpenHomeProductAction : public OpenHomeServiceFixture {
 protected:
  // Stores a distinct text in every variable that `query` reports, and answers the OUT arguments it must
  // then write.
  Args StoreDistinctValues(const Query& query) {
    Args expected;
    for (const auto& argument : query.out) {
      SetVariable(argument.second, Distinct(argument.second).c_str());
      expected.emplace_back(argument.first, Distinct(argument.second));
    }
    return expected;
  }

  // Calls the handler of `action` directly with a request of that name.
  int32_t CallDirectly(const char* action, marlo::ActionResponse* reply) {
    marlo::ActionRequest request;
    EXPECT_EQ(request.SetActionName(action), 0);
    return CallHandler(action, &request, reply);
  }
};

// What every query must leave in the reply when it succeeds: its OUT arguments and nothing else.
void ExpectAnswered(const marlo::ActionResponse& reply, const Args& out) {
  EXPECT_EQ(OutArguments(reply), out);
  EXPECT_EQ(reply.GetErrorCodeWriteCount(), 0u);
  EXPECT_EQ(reply.GetErrorDescription(), nullptr);
}

// --- The description of the product ---

TEST_F(OpenHomeProductAction, ManufacturerReportsTheManufacturerOfTheDeviceDescriptionInOrder) {
  EXPECT_EQ(Perform("Manufacturer"), 0);
  ExpectAnswered(Reply(), {{"Name", "Open Renderer Project"},
                           {"Info", "Free software for networked audio"},
                           {"Url", "https://open-renderer.example.org/"},
                           {"ImageUri", ImageUrl("/images/manufacturer.png")}});
}

TEST_F(OpenHomeProductAction, ModelReportsTheModelOfTheDeviceDescriptionInOrder) {
  EXPECT_EQ(Perform("Model"), 0);
  ExpectAnswered(Reply(), {{"Name", "Open Renderer"},
                           {"Info", "UPnP AV and OpenHome media renderer"},
                           {"Url", "https://open-renderer.example.org/renderer"},
                           {"ImageUri", ImageUrl("/images/model.png")}});
}

TEST_F(OpenHomeProductAction, ProductReportsTheProductOfTheDeviceDescriptionInOrder) {
  EXPECT_EQ(Perform("Product"), 0);
  ExpectAnswered(Reply(), {{"Room", "Living Room"},
                           {"Name", "Open Renderer"},
                           {"Info", "Plays music from your network & the internet"},
                           {"Url", "https://open-renderer.example.org/product"},
                           {"ImageUri", ImageUrl("/images/product.png")}});
}

// --- Every query ---

TEST_F(OpenHomeProductAction, QueriesOfTheCurrentTrackAndTimeReportTheInitialValuesAfterStart) {
  const std::vector<std::pair<const char*, Args>> initial = {
      {"SetSourceIndex", {{"Value", "0"}}},
      {"Track", {{"Uri", ""}, {"Meta", ""}}},
      {"Details",
       {{"Duration", "0"},
        {"BitRate", "0"},
        {"BitDepth", "0"},
        {"SampleRate", "0"},
        {"Lossless", ""},
        {"CodecName", ""}}},
      {"Metatext", {{"Value", "false"}}},
      {"Time", {{"TrackCount", "0"}, {"Duration", "0"}, {"Seconds", "0"}}},
  };
  for (const auto& query : initial) {
    SCOPED_TRACE(query.first);
    EXPECT_EQ(Perform(query.first), 0);
    ExpectAnswered(Reply(), query.second);
  }
}

TEST_F(OpenHomeProductAction, EveryQueryReportsWhatTheApplicationStoredInItsVariablesInOrder) {
  for (const Query& query : Queries()) {
    SCOPED_TRACE(query.action);
    const Args expected = StoreDistinctValues(query);
    EXPECT_EQ(Perform(query.action), 0);
    ExpectAnswered(Reply(), expected);
  }
}

TEST_F(OpenHomeProductAction, QueriesChangeNoVariable) {
  for (const Query& query : Queries()) {
    SCOPED_TRACE(query.action);
    StoreDistinctValues(query);
    EXPECT_EQ(Perform(query.action, {{"Value", "3"}}), 0);
    for (const auto& argument : query.out) {
      EXPECT_EQ(Variable(argument.second), Distinct(argument.second));
    }
  }
}

TEST_F(OpenHomeProductAction, HandlerWithoutRequestOrReplyFails) {
  for (const char* action : kActions) {
    SCOPED_TRACE(action);
    marlo::ActionRequest request;
    ASSERT_EQ(request.SetActionName(action), 0);
    marlo::ActionResponse reply;
    EXPECT_EQ(CallHandler(action, nullptr, &reply), -1);
    ExpectUntouched(reply);
    EXPECT_EQ(CallHandler(action, &request, nullptr), -1);
  }
}

// --- Standby and the source list ---

TEST_F(OpenHomeProductAction, StandbyAlwaysReportsZero) {
  EXPECT_EQ(Perform("Standby"), 0);
  ExpectAnswered(Reply(), {{"Value", "0"}});
  // The renderer is never in standby, whatever the application keeps in the Product variable.
  SetVariable(SINK_UPNP_PRODUCT_STANDBY, "true");
  EXPECT_EQ(Perform("Standby"), 0);
  ExpectAnswered(Reply(), {{"Value", "0"}});
}

TEST_F(OpenHomeProductAction, SetStandbyWithAnyValueOrNoneSucceedsWritingNothingAndStandbyStillReportsZero) {
  const std::vector<Args> requests = {{{"Value", "1"}}, {{"Value", "true"}}, {{"Value", "0"}}, {}};
  for (const Args& in : requests) {
    SCOPED_TRACE(in.empty() ? std::string("no Value") : "Value " + in.front().second);
    EXPECT_EQ(Perform("SetStandby", in), 0);
    ExpectUntouched(Reply());
    EXPECT_EQ(Perform("Standby"), 0);
    ExpectAnswered(Reply(), {{"Value", "0"}});
    EXPECT_EQ(Variable(SINK_UPNP_PRODUCT_STANDBY), "false");
  }
}

TEST_F(OpenHomeProductAction, SourceXmlReportsTheFixedListOfTheOnePlaylistSource) {
  EXPECT_EQ(Perform("SourceXml"), 0);
  ExpectAnswered(Reply(), {{"Value", kSourceList}});
  // The list is fixed: what the application keeps in the Product variable is not reported.
  SetVariable(SINK_UPNP_PRODUCT_SOURCE_XML, "<SourceList></SourceList>");
  EXPECT_EQ(Perform("SourceXml"), 0);
  ExpectAnswered(Reply(), {{"Value", kSourceList}});
}

TEST_F(OpenHomeProductAction, SetSourceIndexWithThreeReportsTheCurrentSourceIndexAndChangesNothing) {
  EXPECT_EQ(Perform("SetSourceIndex", {{"Value", "3"}}), 0);
  ExpectAnswered(Reply(), {{"Value", "0"}});
  EXPECT_EQ(Variable(SINK_UPNP_PRODUCT_SOURCE_INDEX), "0");

  SetVariable(SINK_UPNP_PRODUCT_SOURCE_INDEX, "2");
  EXPECT_EQ(Perform("SetSourceIndex", {{"Value", "3"}}), 0);
  ExpectAnswered(Reply(), {{"Value", "2"}});
  EXPECT_EQ(Variable(SINK_UPNP_PRODUCT_SOURCE_INDEX), "2");
}

TEST_F(OpenHomeProductAction, SetSourceIndexWithoutValueStillReportsTheCurrentSourceIndex) {
  EXPECT_EQ(Perform("SetSourceIndex"), 0);
  ExpectAnswered(Reply(), {{"Value", "0"}});
}

// --- Info and Time ---

TEST_F(OpenHomeProductAction, TrackWritesTheArgumentMetaFromTheInfoServicesVariables) {
  SetVariable(SINK_UPNP_PLAYLIST_URI, "http://host/playlist.flac");
  SetVariable(SINK_UPNP_PLAYLIST_METADATA, "<DIDL-Lite>playlist</DIDL-Lite>");
  SetVariable(SINK_UPNP_INFO_URI, "http://host/info.flac");
  SetVariable(SINK_UPNP_INFO_METADATA, "<DIDL-Lite>info</DIDL-Lite>");
  EXPECT_EQ(Perform("Track"), 0);
  ExpectAnswered(Reply(), {{"Uri", "http://host/info.flac"}, {"Meta", "<DIDL-Lite>info</DIDL-Lite>"}});
  EXPECT_EQ(Reply().FindArgumentValue("Metadata"), nullptr);
}

TEST_F(OpenHomeProductAction, DetailsReportsTheCodecUnderTheNameCodecName) {
  SetVariable(SINK_UPNP_INFO_CODEC_NAME, "FLAC");
  EXPECT_EQ(Perform("Details"), 0);
  ASSERT_EQ(Reply().GetArgumentCount(), 6u);
  EXPECT_STREQ(Reply().GetArgumentName(5), "CodecName");
  EXPECT_STREQ(Reply().GetArgumentValueAt(5), "FLAC");
  EXPECT_EQ(Reply().FindArgumentValue("CodeName"), nullptr);
}

TEST_F(OpenHomeProductAction, TimeReportsTheTimeServicesDurationWhileDetailsKeepsTheInfoServicesOne) {
  SetVariable(SINK_UPNP_TIME_DURATION, "245");
  EXPECT_EQ(Perform("Time"), 0);
  ExpectAnswered(Reply(), {{"TrackCount", "0"}, {"Duration", "245"}, {"Seconds", "0"}});
  EXPECT_EQ(Perform("Details"), 0);
  ASSERT_GE(Reply().GetArgumentCount(), 1u);
  EXPECT_STREQ(Reply().GetArgumentName(0), "Duration");
  EXPECT_STREQ(Reply().GetArgumentValueAt(0), "0");
}

TEST_F(OpenHomeProductAction, MetatextReportsTheInfoServicesMetatext) {
  SetVariable(SINK_UPNP_INFO_METATEXT, "Now playing: Track 1");
  EXPECT_EQ(Perform("Metatext"), 0);
  ExpectAnswered(Reply(), {{"Value", "Now playing: Track 1"}});
}

// --- Failures ---

TEST_F(OpenHomeProductAction, FailingWriteStopsTheQueryThereKeepingTheArgumentsWrittenBeforeIt) {
  for (const Query& query : Queries()) {
    const Args expected = StoreDistinctValues(query);
    for (std::size_t failing = 0; failing < query.out.size(); ++failing) {
      for (int32_t code : {-1997, -989, -1998}) {
        SCOPED_TRACE(std::string(query.action) + ", writing " + query.out[failing].first + " fails with " +
                     std::to_string(code));
        ScopedFault fault(FP::kActionResponseSetArgument, failing + 1, code);
        // Whatever the write answered, the handler fails with its generic code.
        EXPECT_EQ(Perform(query.action), -1999);
        EXPECT_EQ(fault.Fired(), 1u);
        EXPECT_EQ(OutArguments(Reply()), Args(expected.begin(), expected.begin() + failing));
        EXPECT_EQ(Reply().GetErrorCodeWriteCount(), 0u);
      }
    }
  }
}

TEST_F(OpenHomeProductAction, HandlerAnswersMinusOneForAFailingWriteWhateverTheWriteAnswered) {
  for (const Query& query : Queries()) {
    for (int32_t code : {-989, -1997}) {
      SCOPED_TRACE(std::string(query.action) + " writing with " + std::to_string(code));
      ScopedFault fault(FP::kActionResponseSetArgument, 1, code);
      marlo::ActionResponse reply;
      EXPECT_EQ(CallDirectly(query.action, &reply), -1);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(reply);
    }
  }
}

TEST_F(OpenHomeProductAction, FixedAnswerThatCannotBeWrittenFailsTheAction) {
  for (const char* action : {"Standby", "SourceXml"}) {
    for (int32_t code : {-1997, -989}) {
      SCOPED_TRACE(std::string(action) + " writing with " + std::to_string(code));
      ScopedFault fault(FP::kActionResponseSetArgument, 1, code);
      EXPECT_EQ(Perform(action), -1999);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectUntouched(Reply());
    }
  }
}

TEST_F(OpenHomeProductAction, SetStandbyWritesNothingThatCouldFail) {
  ScopedFault fault(FP::kActionResponseSetArgument, 1, -1997, true);
  EXPECT_EQ(Perform("SetStandby", {{"Value", "1"}}), 0);
  EXPECT_EQ(fault.Fired(), 0u);
  ExpectUntouched(Reply());
}

TEST_F(OpenHomeProductAction, FailedReadReportsThePreviousArgumentsValueAgain) {
  // The handler reuses one string for all its arguments and does not look at the read's result.
  for (const Query& query : Queries()) {
    if (query.out.size() < 2) continue;
    const Args stored = StoreDistinctValues(query);
    for (std::size_t failing = 1; failing < query.out.size(); ++failing) {
      SCOPED_TRACE(std::string(query.action) + ", reading " + query.out[failing].first + " fails");
      Args expected = stored;
      expected[failing].second = stored[failing - 1].second;
      ScopedFault fault(FP::kLockLock, failing + 1, -1);
      EXPECT_EQ(Perform(query.action), 0);
      EXPECT_EQ(fault.Fired(), 1u);
      ExpectAnswered(Reply(), expected);
    }
  }
}

TEST_F(OpenHomeProductAction, FailedReadOfTheFirstArgumentReportsItEmpty) {
  for (const Query& query : Queries()) {
    SCOPED_TRACE(query.action);
    Args expected = StoreDistinctValues(query);
    expected.front().second = "";
    ScopedFault fault(FP::kLockLock, 1, -1);
    EXPECT_EQ(Perform(query.action), 0);
    EXPECT_EQ(fault.Fired(), 1u);
    ExpectAnswered(Reply(), expected);
  }
}

TEST_F(OpenHomeProductAction, TextThatCannotBeTakenFromTheStringFailsTheQueryAtThatArgument) {
  for (const Query& query : Queries()) {
    SCOPED_TRACE(query.action);
    const Args stored = StoreDistinctValues(query);
    // A first run counts the texts taken per argument: the handler takes each argument's text last, after
    // the store has copied the value.
    DMR_CMN_FaultInjection::Reset();
    marlo::ActionResponse counted;
    ASSERT_EQ(CallDirectly(query.action, &counted), 0);
    const unsigned long taken = DMR_CMN_FaultInjection::CallCount(FP::kStringGetCString);
    ASSERT_EQ(taken % query.out.size(), 0u);
    const unsigned long perArgument = taken / query.out.size();
    ASSERT_GE(perArgument, 1u);
    for (std::size_t failing = 0; failing < query.out.size(); ++failing) {
      SCOPED_TRACE("taking the text of " + query.out[failing].first + " fails");
      DMR_CMN_FaultInjection::Reset();
      ScopedFault fault(FP::kStringGetCString, (failing + 1) * perArgument, 0);
      marlo::ActionResponse reply;
      EXPECT_EQ(CallDirectly(query.action, &reply), -1);
      EXPECT_EQ(fault.Fired(), 1u);
      EXPECT_EQ(OutArguments(reply), Args(stored.begin(), stored.begin() + failing));
      EXPECT_EQ(reply.GetErrorCodeWriteCount(), 0u);
    }
    // The store was left usable.
    EXPECT_EQ(Variable(query.out.front().second), stored.front().second);
  }
}

}  // namespace
}  // namespace open_home_test
