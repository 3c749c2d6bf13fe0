// OpenHomeServiceFixture: a started OpenHome service object as the host leaves it before the first action,
// with the five OpenHome eventing handlers recording what they are sent, a strict application mock, and
// the helpers the OpenHome action tests share (requests, replies, the store, the playlist).
//
// Every test starts with fault injection reset, an empty playlist, the store at its initial values and
// "STOPPED" as the transport state. The mock is a StrictMock: a call a test does not expect fails it.
#ifndef TESTS_SINK_UPNP_OPEN_HOME_SERVICE_FIXTURE_H_
#define TESTS_SINK_UPNP_OPEN_HOME_SERVICE_FIXTURE_H_

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "ActionReplies.h"
#include "MockTransferService.h"
#include "OpenHomeUPnPServiceTestPeer.h"
#include "RecordingEventHandler.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "marlo/Properties.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/StateVariableCatalogue.h"

namespace open_home_test {

// A handle that is neither 0 nor 1, so that an operation passing something else on is caught.
constexpr unsigned long kHandle = 0x0E11;

constexpr char kPlaylistService[] = "urn:av-openhome-org:service:Playlist:1";
constexpr char kProductService[] = "urn:av-openhome-org:service:Product:1";
constexpr char kTimeService[] = "urn:av-openhome-org:service:Time:1";
constexpr char kInfoService[] = "urn:av-openhome-org:service:Info:1";
constexpr char kSenderService[] = "urn:av-openhome-org:service:Sender:1";

// The reply checks both services' tests share (ActionReplies.h).
using ::Args;
using ::Description;
using ::ExpectError;
using ::ExpectUntouched;
using ::OutArguments;

using Batch = RecordingEventHandler::Batch;
using Batches = std::vector<Batch>;

// A batch of one pair, as publishing a variable sends it.
Batch Event(const char* name, const std::string& value);

class OpenHomeServiceFixture : public ::testing::Test {
 protected:
  using Peer = SINK_UPNP_OpenHomeUPnPServiceTestPeer;

  // Initializes with one protocol-info entry and the test description folder as "device.docroot",
  // registers the five OpenHome handlers and the transfer service, and starts.
  void SetUp() override;
  // Stops, unregisters and finalizes.
  void TearDown() override;

  // Serves `action` with the IN arguments `in` through PerformAction into a fresh reply (Reply()).
  int32_t Perform(const char* action, const Args& in = {});
  // Calls the handler of `action` directly (to reach what PerformAction never passes on).
  int32_t CallHandler(const char* action, marlo::ActionRequest* request, marlo::ActionResponse* response);

  // The store's value of variable `index`.
  std::string Variable(SINK_UPNP_StateVariableName_t index);
  // Changes variable `index` in the store, as the application would; the change must be accepted.
  void SetVariable(SINK_UPNP_StateVariableName_t index, const char* value);
  // Sets the standard transport state (variable 0), as the application reports it.
  void SetTransportState(const char* state) { SetVariable(SINK_UPNP_AVT_TRANSPORT_STATE, state); }

  // Inserts a track at the end straight into the playlist (no action, no event); answers its id.
  uint64_t AddTrack(const std::string& uri, const std::string& metadata);
  // The ids of the playlist's tracks in playlist order.
  std::vector<uint64_t> TrackIds();
  // The id of the current track, or 0 when there is none.
  uint64_t CurrentId();

  // Waits for `count` batches on `handler` and answers all batches received so far.
  std::vector<RecordingEventHandler::Batch> Events(RecordingEventHandler& handler, std::size_t count);

  // Everything `handler` received since the last look. A marker batch (`markerName`, a variable of the
  // handler's service) is sent behind it through the store; the eventing thread delivers in order, so
  // once the marker is in, nothing sent before it can still be on its way.
  Batches NewEvents(RecordingEventHandler& handler, const char* markerName);
  // What the Playlist handler received since the last look.
  Batches PlaylistEvents() { return NewEvents(playlistHandler_, "IdArrayChanged"); }
  // The Product, Time, Info and Sender handlers received nothing since the last look.
  void ExpectNoOtherServiceEvents();
  // Exactly `playlist` went to the Playlist handler since the last look, and nothing to the other four.
  void ExpectEvents(const Batches& playlist);

  // The application's side of the commands, to be set inside an InSequence.
  void ExpectSetUri(const std::string& uri, const std::string& meta, int32_t answer = 0);
  void ExpectStop(int32_t answer = 0);
  void ExpectPlay(int32_t answer = 0);
  // Checks the calls expected so far, so that a failure is reported where it happened.
  void VerifyTransfer() { EXPECT_TRUE(::testing::Mock::VerifyAndClearExpectations(&transfer_)); }

  PLAYLIST_PlaylistManager& Playlist() { return Peer::Playlist(service_); }
  SINK_UPNP_OpenHomeStateVariableManager* Store() { return Peer::Store(service_); }

  marlo::Properties properties_;
  RecordingEventHandler playlistHandler_;
  RecordingEventHandler productHandler_;
  RecordingEventHandler timeHandler_;
  RecordingEventHandler infoHandler_;
  RecordingEventHandler senderHandler_;
  ::testing::StrictMock<MockTransferService> transfer_;
  SINK_UPNP_OpenHomeUPnPService service_;
  // The reply of the last Perform.
  marlo::ActionResponse& Reply() { return *response_; }

  std::unique_ptr<marlo::ActionRequest> request_ = std::make_unique<marlo::ActionRequest>();
  std::unique_ptr<marlo::ActionResponse> response_ = std::make_unique<marlo::ActionResponse>();

 private:
  // How many of each handler's batches NewEvents has already answered.
  std::map<const RecordingEventHandler*, std::size_t> seen_;
};

}  // namespace open_home_test

#endif  // TESTS_SINK_UPNP_OPEN_HOME_SERVICE_FIXTURE_H_
