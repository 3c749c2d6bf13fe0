// What the OpenHome service object's answers and events hold, held against the SCPDs the build wrote:
// which variables reach a subscriber of each service, and which words and types the values take.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "OpenHomeDriftFixture.h"
#include "ServedActions.h"
#include "marlo/StateVariable.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

using OpenHomeServedValues = OpenHomeDriftFixture;

// A subscription makes the host ask for every evented variable's value: the object must answer each.
TEST_F(OpenHomeServedValues, EveryEventedVariableCanBeAskedOfTheObject) {
  for (const ServedScpd& served : ScpdsAnsweredBy(HOST_Responder::OpenHomeServices)) {
    for (const std::string& name : served.scpd.EventedNames()) {
      marlo::StateVariable value;
      EXPECT_EQ(service_.GetStateVariable(served.service->serviceType, name.c_str(), &value), 0)
          << served.service->name << " " << name;
    }
  }
}

// A new value for every variable of the store, of the kind its check accepts; null where the only value
// the check accepts is already stored.
std::string NewValue(int index) {
  switch (SINK_UPNP_stateVariableCatalogue[index].check) {
    case SINK_UPNP_Check::kTransportState:
      return "PLAYING";
    case SINK_UPNP_Check::kTransportStatus:
      return "ERROR_OCCURRED";
    case SINK_UPNP_Check::kStorageMedium:
      return "NETWORK";
    case SINK_UPNP_Check::kPlayMode:
      return "SHUFFLE";
    case SINK_UPNP_Check::kPlaySpeed:
      return "";
    case SINK_UPNP_Check::kWriteStatus:
      return "WRITABLE";
    case SINK_UPNP_Check::kQualityMode:
      return "0:EP";
    case SINK_UPNP_Check::kUnsigned32:
      return "7";
    case SINK_UPNP_Check::kSigned32:
      return "-7";
    case SINK_UPNP_Check::kAny:
      break;
  }
  return "changed " + std::to_string(index);
}

// Variables the application sends itself on a service's thread (the Info service's metatext and its count,
// which it sends together), beyond what the store and the service object send.
const std::set<std::string> kSentByTheApplication[] = {{}, {}, {}, {"MetatextCount", "Metatext"}, {}};

// What reaches a subscriber of each service is exactly what its SCPD marks as evented: every variable of
// the store changed and sent, then every action called once.
TEST_F(OpenHomeServedValues, EventedVariablesAreExactlyTheOnesSentOnTheirService) {
  for (int index = 0; index < SINK_UPNP_STATE_VARIABLE_COUNT; ++index) {
    const std::string value = NewValue(index);
    if (!value.empty()) SetVariable(static_cast<SINK_UPNP_StateVariableName_t>(index), value.c_str());
  }
  ASSERT_EQ(Store()->SendEvent(), 0);
  for (const ValidCall& call : kOpenHomeCalls) {
    const ScpdDocument scpd = LoadBuiltScpd(call.service);
    const ScpdAction* action = scpd.FindAction(call.action);
    ASSERT_NE(action, nullptr) << call.action;
    Perform(call.action, Prepare(call, InArguments(*action, call)));
  }
  ASSERT_EQ(Store()->SendEvent(), 0);

  struct Subscriber {
    const char* service;
    RecordingEventHandler* handler;
    const char* marker;  // a variable of the service, to know when all it was sent has arrived
  };
  const Subscriber subscribers[] = {{"Playlist", &playlistHandler_, "IdArrayChanged"},
                                    {"Product", &productHandler_, "Standby"},
                                    {"Time", &timeHandler_, "Seconds"},
                                    {"Info", &infoHandler_, "DetailsCount"},
                                    {"Sender", &senderHandler_, "Status"}};
  for (std::size_t i = 0; i < sizeof(subscribers) / sizeof(subscribers[0]); ++i) {
    SCOPED_TRACE(subscribers[i].service);
    std::set<std::string> sent = kSentByTheApplication[i];
    for (const auto& batch : NewEvents(*subscribers[i].handler, subscribers[i].marker)) {
      for (const auto& pair : batch) sent.insert(pair.first);
    }
    const std::vector<std::string> evented = LoadBuiltScpd(subscribers[i].service).EventedNames();
    EXPECT_EQ(std::set<std::string>(evented.begin(), evented.end()), sent);
  }
}

// The words the Playlist's transport state takes, as evented and as its action answers, for every
// transport state the application reports.
TEST_F(OpenHomeServedValues, TransportStateWordsAreAllowedValues) {
  const ScpdDocument scpd = LoadBuiltScpd("Playlist");
  const ScpdVariable* evented = scpd.FindVariable("TransportState");
  const ScpdAction* action = scpd.FindAction("TransportState");
  ASSERT_NE(evented, nullptr);
  ASSERT_NE(action, nullptr);
  const std::set<std::string> eventedWords(evented->allowedValues.begin(), evented->allowedValues.end());
  for (const char* state : {"STOPPED", "PLAYING", "TRANSITIONING", "PAUSED_PLAYBACK", "NO_MEDIA_PRESENT"}) {
    SCOPED_TRACE(state);
    SetTransportState(state);
    marlo::StateVariable value;
    ASSERT_EQ(service_.GetStateVariable(open_home_test::kPlaylistService, "TransportState", &value), 0);
    EXPECT_EQ(eventedWords.count(value.GetValue()), 1u) << value.GetValue();
    const int32_t result = Perform("TransportState");
    ExpectAnsweredAsDescribed(result, Reply(), *action);
    ExpectValuesAsDescribed(Reply(), scpd, *action, kOpenHomeUntypedOut);
  }
}

}  // namespace
