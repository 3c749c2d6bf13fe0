// The started OpenHome service object the OpenHome drift tests call, and the test's own knowledge of how
// to call each of its actions validly. See ServedActions.h.
#ifndef TESTS_HOST_OPEN_HOME_DRIFT_FIXTURE_H_
#define TESTS_HOST_OPEN_HOME_DRIFT_FIXTURE_H_

#include <vector>

#include "OpenHomeServiceFixture.h"
#include "ServedActions.h"

// How each action of the OpenHome object is called validly: IN arguments in the order its handler reads
// them, with values it accepts ("{first}" stands for the id of the playlist's first track).
extern const std::vector<ValidCall> kOpenHomeCalls;

// The OpenHome OUT values that need not be of their variable's type.
extern const std::vector<UntypedOut> kOpenHomeUntypedOut;

// The OpenHome service fixture of the plug-in's tests, with an application that answers 0 to every
// command.
class OpenHomeDriftFixture : public open_home_test::OpenHomeServiceFixture {
 protected:
  void SetUp() override;

  // Brings the playlist to the state `call` is made in (empty, or two tracks with the first current; the
  // transport stopped) and answers `in` with the first track's id put in.
  Args Prepare(const ValidCall& call, Args in);
};

#endif  // TESTS_HOST_OPEN_HOME_DRIFT_FIXTURE_H_
