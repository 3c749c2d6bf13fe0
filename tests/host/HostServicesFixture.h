// HOST_HostServices on a GoogleMock player that keeps a volume and a mute like a real one, a manual clock
// for the moderation of RenderingControl's events, and a recording event sink.
#ifndef TESTS_HOST_HOST_SERVICES_FIXTURE_H_
#define TESTS_HOST_HOST_SERVICES_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "HostServices.h"
#include "ManualClock.h"
#include "MockTransferService.h"
#include "RendererFixture.h"

constexpr char kVolumeType[] = "urn:av-openhome-org:service:Volume:1";

using HostArguments = std::vector<std::pair<std::string, std::string>>;

class HostServicesFixture : public ::testing::Test {
 protected:
  HostServicesFixture();

  HOST_ActionOutcome Perform(const char* serviceType, const char* action, const HostArguments& arguments);
  // RenderingControl's InstanceID "0" and Channel "Master", then `more`.
  HOST_ActionOutcome PerformMaster(const char* action, const HostArguments& more = {});
  // The batches sent for `serviceType`, in order.
  std::vector<HOST_EventBatch> BatchesOf(const char* serviceType) const;
  // The Volume and Mute values (channel "Master") of a RenderingControl LastChange document; each empty
  // when the document does not carry it.
  static std::pair<std::string, std::string> MasterLevel(const std::string& document);

  ::testing::NiceMock<MockTransferService> player_;
  unsigned volume_ = 30;
  bool mute_ = false;
  PLAYER_ManualClock clock_;
  RecordingEventSink events_;
  std::unique_ptr<HOST_HostServices> services_ = std::make_unique<HOST_HostServices>(&player_, &events_, &clock_);

  // Replaces the services under test by ones with `settings`.
  void Configure(const HOST_VolumeSettings& settings) {
    services_ = std::make_unique<HOST_HostServices>(&player_, &events_, &clock_, settings);
  }
};

#endif  // TESTS_HOST_HOST_SERVICES_FIXTURE_H_
