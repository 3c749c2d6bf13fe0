// The application's side of eventing, swept like the actions: it changes state variables in the store it
// was handed and asks for the changes to be sent (on the standard object, with the transport listener the
// daemon registers, so that the sent document is also decoded for it). After each run: each call answered
// a result it may give, only deliberate lasting effects remain, and the object is usable again.
#include <gtest/gtest.h>

#include <cstdint>
#include <memory>
#include <set>
#include <string>

#include "DeliberateEffects.h"
#include "FaultSweep.h"
#include "SweptServices.h"
#include "dmr_cmn/String.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace {

constexpr char kTrackMetaData[] =
    "<DIDL-Lite xmlns=\"urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/\" "
    "xmlns:dc=\"http://purl.org/dc/elements/1.1/\"><item><dc:title>Tom &amp; Jerry</dc:title></item>"
    "</DIDL-Lite>";

// ChangeStateVariable: stored (0), no memory (-989), another failure (-1), or the application's string
// answering no text when the store reads it (-999); the values below are all valid.
const std::set<int32_t> kChangeResults = {0, -1, -989, -999};
// SendEvent: sent (0), nothing pending because recording the change failed (-962, standard store only),
// no memory (-989), or another failure (-1).
const std::set<int32_t> kSendResults = {0, -1, -962, -989};

// The application's text for a change; copying it is the application's business, made before the fault
// is armed.
struct Change {
  SINK_UPNP_StateVariableName_t index;
  const char* value;
};

template <typename T, typename Store>
bool RunEvents(const FaultCase& fault, std::initializer_list<Change> changes) {
  auto object = std::make_unique<T>();
  object->StartFaultFree();
  if (::testing::Test::HasFatalFailure()) return false;
  Store* store = object->Store();
  std::vector<std::unique_ptr<DMR_CMN_String>> values;
  for (const Change& change : changes) {
    values.push_back(std::make_unique<DMR_CMN_String>());
    EXPECT_EQ(values.back()->SetCString(change.value), 0);
  }

  fault.Arm();
  std::vector<int32_t> changed;
  std::size_t i = 0;
  for (const Change& change : changes) changed.push_back(store->ChangeStateVariable(change.index, values[i++].get()));
  const int32_t sent = store->SendEvent();
  const bool fired = fault.Disarm();

  for (int32_t result : changed) {
    if (fault.IsFaulted()) {
      EXPECT_EQ(kChangeResults.count(result), 1u) << "ChangeStateVariable answered " << result;
    } else {
      EXPECT_EQ(result, 0);
    }
  }
  if (fault.IsFaulted()) {
    EXPECT_EQ(kSendResults.count(sent), 1u) << "SendEvent answered " << sent;
  } else {
    EXPECT_EQ(sent, 0);
  }
  ExpectOnlyDeliberateEffects(fault, object->UndoLastingEffectsWhileStarted());
  object->ExpectUsable();
  object->ShutdownFaultFree();
  return fired;
}

TEST(FaultSweepApplicationEvents, StandardStoreChangesAndSendsThroughEveryFailureOfTheHost) {
  ReportSweep("standard events", SweepFaults([](const FaultCase& fault) {
                return RunEvents<SweptStandardService, SINK_UPNP_SinkCTSSStateVariableManager>(
                    fault, {{SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"},
                            {SINK_UPNP_AVT_CURRENT_TRACK_METADATA, kTrackMetaData},
                            {SINK_UPNP_AVT_CURRENT_TRACK_URI, "http://127.0.0.1:9/a.flac"}});
              }));
}

TEST(FaultSweepApplicationEvents, OpenHomeStoreChangesAndSendsThroughEveryFailureOfTheHost) {
  ReportSweep("OpenHome events", SweepFaults([](const FaultCase& fault) {
                return RunEvents<SweptOpenHomeService, SINK_UPNP_OpenHomeStateVariableManager>(
                    fault, {{SINK_UPNP_AVT_TRANSPORT_STATE, "PLAYING"},
                            {SINK_UPNP_TIME_SECONDS, "12"},
                            {SINK_UPNP_INFO_BIT_RATE, "1411200"}});
              }));
}

}  // namespace
