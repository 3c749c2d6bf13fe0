// The started standard service object the standard drift tests call, with an application that answers
// everything, and the test's own knowledge of how to call each of its actions validly. See
// ServedActions.h.
#ifndef TESTS_HOST_STANDARD_DRIFT_FIXTURE_H_
#define TESTS_HOST_STANDARD_DRIFT_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "MockTransferService.h"
#include "RecordingEventHandler.h"
#include "ServedActions.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

// How each action of the standard object is called validly: IN arguments in the order its handler reads
// them ("InstanceID" first), with values the handler and the application accept.
extern const std::vector<ValidCall> kStandardCalls;

// Initializes, registers both event handlers and the application, and starts; undoes it all at the end.
class StandardDriftFixture : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  // Serves `action` addressed to `served`'s service with the IN arguments `in` into a fresh reply.
  int32_t Perform(const ServedScpd& served, const std::string& action, const Args& in);

  marlo::Properties properties_;
  RecordingEventHandler transportHandler_;
  RecordingEventHandler connectionHandler_;
  ::testing::NiceMock<MockTransferService> transfer_;
  SINK_UPNP_SinkCTSSUPnPService service_;
  std::unique_ptr<marlo::ActionRequest> request_;
  std::unique_ptr<marlo::ActionResponse> response_;
  // The texts of the IN arguments the application was handed during the last Perform, in the order of
  // its parameters.
  std::vector<std::string> received_;

 private:
  // The application answers 0 to everything, fills every OUT string and records what it receives.
  void AnswerEverything();
  int32_t Receive(std::initializer_list<const DMR_CMN_String*> texts);
};

#endif  // TESTS_HOST_STANDARD_DRIFT_FIXTURE_H_
