// RendererHarness: both service objects started on a real player, as the renderer daemon runs them, with
// recording event handlers on every service, and the GLib main context of the test thread as the
// player's main context. Actions go through the service objects' PerformAction, as a control point's
// would.
#ifndef TESTS_PLAYER_RENDERER_HARNESS_H_
#define TESTS_PLAYER_RENDERER_HARNESS_H_

#include <gtest/gtest.h>

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "GStreamerPlayer.h"
#include "MainLoopRunner.h"
#include "RecordingEventHandler.h"
#include "marlo/Properties.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/SinkCTSSUPnPService.h"

class PLAYER_Clock;

class RendererHarness : public ::testing::Test {
 protected:
  using Args = std::vector<std::pair<std::string, std::string>>;
  struct Reply {
    int32_t result = 0;  // PerformAction's result
    int32_t error = 0;   // the UPnP error in the reply, 0 without one
    std::string description;
    std::map<std::string, std::string> out;
  };

  // Builds the player with Options() and `clock` (null: timers on the test's main context) and starts
  // both services on it.
  void StartRenderer(PLAYER_Clock* clock = nullptr);
  void SetUp() override { StartRenderer(); }
  void TearDown() override;
  // The player's options: the real-time null output unless a test says otherwise.
  virtual PLAYER_Options Options();

  Reply Transport(const char* action, Args in = {});   // AVTransport, InstanceID 0 added
  Reply Connection(const char* action, Args in = {});  // ConnectionManager
  Reply OpenHome(const char* action, Args in = {});    // OpenHome Playlist (and Product, Info, Time)

  // SetAVTransportURI then Play, both answered without an error.
  void PlayUri(const std::string& uri, const std::string& metadata = "");

  std::string TransportVariable(SINK_UPNP_StateVariableName_t index);  // the standard store
  std::string OpenHomeVariable(SINK_UPNP_StateVariableName_t index);   // the OpenHome store

  // Runs the main context until `predicate` holds; false after `milliseconds`.
  bool RunUntil(const std::function<bool()>& predicate, int milliseconds = 5000);
  bool WaitForState(const std::string& state, int milliseconds = 5000);
  // The position GetPositionInfo answers, in seconds.
  double PositionSeconds();

  // The TransportState values of the LastChange documents the AVTransport handler received, in order.
  std::vector<std::string> EventedTransportStates();
  // The last value `name` had in a batch `handler` received; "" when it never came.
  static std::string LastEvented(const RecordingEventHandler& handler, const std::string& name);

  // Inserts a track behind the one inserted last (first: at the front) through the "Insert" action;
  // answers its id.
  uint64_t InsertTrack(const std::string& uri, const std::string& metadata = "");

  PLAYER_MainLoopRunner loop_;
  marlo::Properties properties_;
  RecordingEventHandler transportHandler_;
  RecordingEventHandler connectionHandler_;
  RecordingEventHandler playlistHandler_;
  RecordingEventHandler productHandler_;
  RecordingEventHandler timeHandler_;
  RecordingEventHandler infoHandler_;
  RecordingEventHandler senderHandler_;
  SINK_UPNP_SinkCTSSUPnPService transport_;
  SINK_UPNP_OpenHomeUPnPService openHome_;
  std::unique_ptr<PLAYER_GStreamerPlayer> player_;

 private:
  Reply Perform(marlo::SinkContentTransferSubsystem& service, const char* serviceType, const char* action,
                const Args& in);
  bool started_ = false;
  uint64_t lastInsertedId_ = 0;
};

#endif  // TESTS_PLAYER_RENDERER_HARNESS_H_
