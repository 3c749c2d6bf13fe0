// A HOST_Renderer prepared and started on a GoogleMock transfer service, with a recording event sink and
// a main context of the test's own, and SOAP bodies to feed its router: the daemon without a network.
#ifndef TESTS_HOST_RENDERER_FIXTURE_H_
#define TESTS_HOST_RENDERER_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <glib.h>

#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "EventSink.h"
#include "MockTransferService.h"
#include "Renderer.h"
#include "marlo/Properties.h"

constexpr char kAVTransportType[] = "urn:schemas-upnp-org:service:AVTransport:1";
constexpr char kConnectionManagerType[] = "urn:schemas-upnp-org:service:ConnectionManager:1";
constexpr char kRenderingControlType[] = "urn:schemas-upnp-org:service:RenderingControl:1";
constexpr char kPlaylistType[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kTimeType[] = "urn:av-openhome-org:service:Time:1";

// The batches the main loop delivered, by service type, in order.
class RecordingEventSink : public HOST_EventSink {
 public:
  void Notify(const std::string& serviceType, const HOST_EventBatch& batch) override {
    batches.emplace_back(serviceType, batch);
  }
  std::vector<std::pair<std::string, HOST_EventBatch>> batches;
};

// A SOAP request as control points send it, with each argument escaped.
std::string SoapBody(const std::string& serviceType, const std::string& action,
                     const std::vector<std::pair<std::string, std::string>>& arguments);

class RendererFixture : public ::testing::Test {
 protected:
  RendererFixture();
  ~RendererFixture() override;

  // Prepares and starts the renderer on the mock; every step must succeed.
  void StartRenderer();
  HOST_ActionOutcome Perform(const char* serviceType, const std::string& action,
                             const std::vector<std::pair<std::string, std::string>>& arguments);
  // Runs the test's main context until nothing is ready.
  void RunPending();

  GMainContext* context_;
  marlo::Properties properties_;
  ::testing::NiceMock<MockTransferService> player_;
  SINK_UPNP_SinkCTSSStateVariableManager* transportStore_ = nullptr;
  SINK_UPNP_OpenHomeStateVariableManager* openHomeStore_ = nullptr;
  RecordingEventSink events_;
  std::unique_ptr<HOST_Renderer> renderer_;
};

#endif  // TESTS_HOST_RENDERER_FIXTURE_H_
