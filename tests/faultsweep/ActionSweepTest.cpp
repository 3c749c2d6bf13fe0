// Every action of both service objects, and the host's queries for evented variables, swept with every
// failable runtime operation failing in turn while the started object serves it. After each run: the
// result is one the action may give (a UPnP error in a reply with result 0 is one of the renderer's), only
// deliberate lasting effects remain (DeliberateEffects.h), and once those are undone the object serves
// actions, keeps a consistent playlist and events changes.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <ostream>
#include <set>
#include <string>
#include <vector>

#include "ActionReplies.h"
#include "DeliberateEffects.h"
#include "FaultSweep.h"
#include "SweptServices.h"

namespace {

constexpr char kAVTransport[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManager[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kPlaylist[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kProduct[] = "urn:av-openhome-org:service:Product:1";
constexpr char kTime[] = "urn:av-openhome-org:service:Time:1";
constexpr char kInfo[] = "urn:av-openhome-org:service:Info:1";
constexpr char kSender[] = "urn:av-openhome-org:service:Sender:1";

constexpr char kUri[] = "http://127.0.0.1:9/inserted.flac";
constexpr char kMetadata[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item><dc:title>Tom &amp; Jerry</dc:title></item>"
    "</DIDL-Lite>";

// What PerformAction may answer: 0, and the service-level codes of a handler's no memory (-1997) and other
// failure (-1999). Which of the two failures an action can have follows from its handler: only handlers
// that copy an argument into a string, or whose result is an event call's, can run out of memory.
const std::set<int32_t> kAnswersOrFails = {0, -1999};
const std::set<int32_t> kAnswersOrFailsOrNoMemory = {0, -1997, -1999};
// What a query for an evented variable may answer.
const std::set<int32_t> kQueryResults = {0, -1996, -1997, -1999};

// One action as a control point sends it, the object's state before it, and its results.
struct ActionScenario {
  const char* name;          // the test's name
  const char* serviceType;
  const char* action;
  ActionArgs args;
  int tracks;                // OpenHome: tracks in the playlist before the action
  const char* transportState;  // OpenHome: the standard transport state before the action
  int32_t cleanResult;       // the result without a fault
  int32_t cleanError;        // the UPnP error in the reply without a fault (0: none)
  std::set<int32_t> allowed;  // the results with a fault
};

const std::vector<ActionScenario> kStandardActions = {
    {"SetAVTransportURI", kAVTransport, "SetAVTransportURI",
     {{"InstanceID", "0"}, {"CurrentURI", kUri}, {"CurrentURIMetaData", kMetadata}}, 0, nullptr, 0, 0,
     kAnswersOrFailsOrNoMemory},
    {"GetMediaInfo", kAVTransport, "GetMediaInfo", {{"InstanceID", "0"}}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"GetTransportInfo", kAVTransport, "GetTransportInfo", {{"InstanceID", "0"}}, 0, nullptr, 0, 0,
     kAnswersOrFails},
    {"GetPositionInfo", kAVTransport, "GetPositionInfo", {{"InstanceID", "0"}}, 0, nullptr, 0, 0,
     kAnswersOrFails},
    {"GetDeviceCapabilities", kAVTransport, "GetDeviceCapabilities", {{"InstanceID", "0"}}, 0, nullptr, 0, 0,
     kAnswersOrFails},
    {"GetTransportSettings", kAVTransport, "GetTransportSettings", {{"InstanceID", "0"}}, 0, nullptr, 0, 0,
     kAnswersOrFails},
    {"GetCurrentTransportActions", kAVTransport, "GetCurrentTransportActions", {{"InstanceID", "0"}}, 0, nullptr,
     0, 0, kAnswersOrFails},
    {"Stop", kAVTransport, "Stop", {{"InstanceID", "0"}}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"Play", kAVTransport, "Play", {{"InstanceID", "0"}, {"Speed", "1"}}, 0, nullptr, 0, 0,
     kAnswersOrFailsOrNoMemory},
    {"Pause", kAVTransport, "Pause", {{"InstanceID", "0"}}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"Seek", kAVTransport, "Seek", {{"InstanceID", "0"}, {"Unit", "REL_TIME"}, {"Target", "0:00:10"}}, 0, nullptr,
     0, 0, kAnswersOrFailsOrNoMemory},
    {"Next", kAVTransport, "Next", {{"InstanceID", "0"}}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"Previous", kAVTransport, "Previous", {{"InstanceID", "0"}}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"SetPlayMode", kAVTransport, "SetPlayMode", {{"InstanceID", "0"}, {"NewPlayMode", "NORMAL"}}, 0, nullptr, 0,
     0, kAnswersOrFailsOrNoMemory},
    {"GetProtocolInfo", kConnectionManager, "GetProtocolInfo", {}, 0, nullptr, 0, 0, kAnswersOrFails},
    {"GetCurrentConnectionIDs", kConnectionManager, "GetCurrentConnectionIDs", {}, 0, nullptr, 0, 0,
     kAnswersOrFails},
    {"GetCurrentConnectionInfo", kConnectionManager, "GetCurrentConnectionInfo", {{"ConnectionID", "0"}}, 0,
     nullptr, 0, 0, kAnswersOrFailsOrNoMemory},
};

// The OpenHome handlers give up with -1 (so -1999) whatever failed beneath them; only SetRepeat and
// SetShuffle answer their event call's result, and SeekSecondAbsolute the copy of its seek target into a
// string, no memory included.
const std::vector<ActionScenario> kOpenHomeActions = {
    {"InsertAfterATrack", kPlaylist, "Insert", {{"AfterId", "2"}, {"Uri", kUri}, {"Metadata", kMetadata}}, 3,
     "STOPPED", 0, 0, kAnswersOrFails},
    {"InsertIntoAnEmptyPlaylist", kPlaylist, "Insert", {{"AfterId", "0"}, {"Uri", kUri}, {"Metadata", kMetadata}},
     0, "STOPPED", 0, 0, kAnswersOrFails},
    {"DeleteIdOfThePlayingTrack", kPlaylist, "DeleteId", {{"Value", "1"}}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"DeleteIdOfTheLastTrack", kPlaylist, "DeleteId", {{"Value", "1"}}, 1, "STOPPED", 0, 0, kAnswersOrFails},
    {"DeleteAll", kPlaylist, "DeleteAll", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"Stop", kPlaylist, "Stop", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"PlayWhileStopped", kPlaylist, "Play", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"PlayWhilePaused", kPlaylist, "Play", {}, 3, "PAUSED_PLAYBACK", 0, 0, kAnswersOrFails},
    {"Pause", kPlaylist, "Pause", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"SeekSecondAbsolute", kPlaylist, "SeekSecondAbsolute", {{"Value", "3725"}}, 3, "PLAYING", 0, 0,
     kAnswersOrFailsOrNoMemory},
    {"Next", kPlaylist, "Next", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"PreviousAtTheFirstTrack", kPlaylist, "Previous", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"SeekId", kPlaylist, "SeekId", {{"Value", "2"}}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    {"SeekIndex", kPlaylist, "SeekIndex", {{"Value", "2"}}, 3, "PAUSED_PLAYBACK", 0, 0, kAnswersOrFails},
    {"Repeat", kPlaylist, "Repeat", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"SetRepeat", kPlaylist, "SetRepeat", {{"Value", "true"}}, 3, "STOPPED", 0, 0, kAnswersOrFailsOrNoMemory},
    {"Shuffle", kPlaylist, "Shuffle", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"SetShuffle", kPlaylist, "SetShuffle", {{"Value", "yes"}}, 3, "STOPPED", 0, 0, kAnswersOrFailsOrNoMemory},
    {"Id", kPlaylist, "Id", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"TransportState", kPlaylist, "TransportState", {}, 3, "PLAYING", 0, 0, kAnswersOrFails},
    // Read answers -1 after a complete reply whenever the playlist has a track (the action's contract).
    {"Read", kPlaylist, "Read", {{"Id", "1"}}, 3, "STOPPED", -1999, 0, kAnswersOrFails},
    {"ReadList", kPlaylist, "ReadList", {{"IdList", "1 2 3 2"}}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"IdArray", kPlaylist, "IdArray", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"TracksMax", kPlaylist, "TracksMax", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"Standby", kProduct, "Standby", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"SetStandby", kProduct, "SetStandby", {{"Value", "1"}}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"SourceXml", kProduct, "SourceXml", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"SetSourceIndex", kProduct, "SetSourceIndex", {{"Value", "0"}}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"SourceIndex", kProduct, "SourceIndex", {}, 3, "STOPPED", 0, 0, kAnswersOrFails},
    {"Manufacturer", kProduct, "Manufacturer", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Model", kProduct, "Model", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Product", kProduct, "Product", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Track", kInfo, "Track", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Details", kInfo, "Details", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Metatext", kInfo, "Metatext", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    {"Time", kTime, "Time", {}, 0, "STOPPED", 0, 0, kAnswersOrFails},
    // The Sender service's actions are not served: 401 "Invalid Action" with result 0.
    {"SenderPresentationUrl", kSender, "PresentationUrl", {}, 0, "STOPPED", 0, 401, {0}},
};

// A query for an evented variable, as the host makes it for a new subscriber.
struct QueryScenario {
  const char* name;
  const char* serviceType;
  const char* variable;
  int tracks;
};

const std::vector<QueryScenario> kStandardQueries = {
    {"AVTransportLastChange", kAVTransport, "LastChange", 0},
    {"SinkProtocolInfo", kConnectionManager, "SinkProtocolInfo", 0},
};

const std::vector<QueryScenario> kOpenHomeQueries = {
    {"PlaylistLastChange", kPlaylist, "LastChange", 0},
    {"PlaylistIdArray", kPlaylist, "IdArray", 3},
    {"ProductManufacturerName", kProduct, "ManufacturerName", 0},
    {"InfoCodecName", kInfo, "CodecName", 0},
};

// The scenario's name in a failure message, instead of the bytes of the parameter.
void PrintTo(const ActionScenario& scenario, std::ostream* out) { *out << scenario.name; }
void PrintTo(const QueryScenario& scenario, std::ostream* out) { *out << scenario.name; }

bool IsRendererError(int32_t code) {
  for (const UPnPErrorText& error : kUPnPErrorTexts) {
    if (error.code == code) return true;
  }
  return false;
}

void Arrange(SweptStandardService&, int, const char*) {}
void Arrange(SweptOpenHomeService& object, int tracks, const char* state) { object.Arrange(tracks, state); }
void ExpectPlaylistKept(SweptStandardService&) {}
void ExpectPlaylistKept(SweptOpenHomeService& object) { object.ExpectPlaylistConsistent(); }

// What every faulted run checks after the part under test: only deliberate effects, then usable.
template <typename T>
void ExpectUsableAfterwards(T& object, const FaultCase& fault) {
  ExpectOnlyDeliberateEffects(fault, object.UndoLastingEffectsWhileStarted());
  ExpectPlaylistKept(object);
  object.ExpectUsable();
  object.ShutdownFaultFree();
}

template <typename T>
bool RunAction(const ActionScenario& scenario, const FaultCase& fault) {
  auto object = std::make_unique<T>();
  object->StartFaultFree();
  Arrange(*object, scenario.tracks, scenario.transportState);
  if (::testing::Test::HasFatalFailure()) return false;

  fault.Arm();
  const int32_t result = object->Perform(scenario.serviceType, scenario.action, scenario.args);
  const bool fired = fault.Disarm();
  const int32_t error = object->Reply().GetErrorCode();
  if (!fault.IsFaulted()) {
    EXPECT_EQ(result, scenario.cleanResult);
    EXPECT_EQ(error, scenario.cleanError);
  } else {
    EXPECT_EQ(scenario.allowed.count(result), 1u) << "PerformAction answered " << result;
    if (error != 0) {
      EXPECT_TRUE(IsRendererError(error)) << "UPnP error " << error;
    }
  }
  ExpectUsableAfterwards(*object, fault);
  return fired;
}

template <typename T>
bool RunQuery(const QueryScenario& scenario, const FaultCase& fault) {
  auto object = std::make_unique<T>();
  object->StartFaultFree();
  Arrange(*object, scenario.tracks, "STOPPED");
  if (::testing::Test::HasFatalFailure()) return false;

  fault.Arm();
  const int32_t result = object->Query(scenario.serviceType, scenario.variable);
  const bool fired = fault.Disarm();
  if (!fault.IsFaulted()) {
    EXPECT_EQ(result, 0);
  } else {
    EXPECT_EQ(kQueryResults.count(result), 1u) << "GetStateVariable answered " << result;
  }
  ExpectUsableAfterwards(*object, fault);
  return fired;
}

class FaultSweepStandardAction : public ::testing::TestWithParam<ActionScenario> {};
class FaultSweepOpenHomeAction : public ::testing::TestWithParam<ActionScenario> {};
class FaultSweepStandardQuery : public ::testing::TestWithParam<QueryScenario> {};
class FaultSweepOpenHomeQuery : public ::testing::TestWithParam<QueryScenario> {};

TEST_P(FaultSweepStandardAction, SurvivesEveryFailureOfTheHost) {
  const ActionScenario& scenario = GetParam();
  ReportSweep(std::string("standard ") + scenario.name,
              SweepFaults([&](const FaultCase& fault) { return RunAction<SweptStandardService>(scenario, fault); }));
}

TEST_P(FaultSweepOpenHomeAction, SurvivesEveryFailureOfTheHost) {
  const ActionScenario& scenario = GetParam();
  ReportSweep(std::string("OpenHome ") + scenario.name,
              SweepFaults([&](const FaultCase& fault) { return RunAction<SweptOpenHomeService>(scenario, fault); }));
}

TEST_P(FaultSweepStandardQuery, SurvivesEveryFailureOfTheHost) {
  const QueryScenario& scenario = GetParam();
  ReportSweep(std::string("standard query ") + scenario.name,
              SweepFaults([&](const FaultCase& fault) { return RunQuery<SweptStandardService>(scenario, fault); }));
}

TEST_P(FaultSweepOpenHomeQuery, SurvivesEveryFailureOfTheHost) {
  const QueryScenario& scenario = GetParam();
  ReportSweep(std::string("OpenHome query ") + scenario.name,
              SweepFaults([&](const FaultCase& fault) { return RunQuery<SweptOpenHomeService>(scenario, fault); }));
}

template <typename Scenario>
std::string ScenarioName(const ::testing::TestParamInfo<Scenario>& info) {
  return info.param.name;
}

INSTANTIATE_TEST_SUITE_P(Actions, FaultSweepStandardAction, ::testing::ValuesIn(kStandardActions),
                         ScenarioName<ActionScenario>);
INSTANTIATE_TEST_SUITE_P(Actions, FaultSweepOpenHomeAction, ::testing::ValuesIn(kOpenHomeActions),
                         ScenarioName<ActionScenario>);
INSTANTIATE_TEST_SUITE_P(Queries, FaultSweepStandardQuery, ::testing::ValuesIn(kStandardQueries),
                         ScenarioName<QueryScenario>);
INSTANTIATE_TEST_SUITE_P(Queries, FaultSweepOpenHomeQuery, ::testing::ValuesIn(kOpenHomeQueries),
                         ScenarioName<QueryScenario>);

}  // namespace
