// PlaybinRun: a real playbin (audio only, into a fakesink that does not wait for the clock) driven from the
// test thread by reading its bus directly, so that the tests of the test servers prove that GStreamer's
// own HTTP source works with them.
#ifndef TESTS_PLAYER_SUPPORT_PLAYBIN_RUN_H_
#define TESTS_PLAYER_SUPPORT_PLAYBIN_RUN_H_

#include <chrono>
#include <cstdint>
#include <string>
#include <vector>

#include "GstHandles.h"

class PlaybinRun {
 public:
  explicit PlaybinRun(const std::string& uri);
  // Sets the pipeline to NULL.
  ~PlaybinRun();

  PlaybinRun(const PlaybinRun&) = delete;
  PlaybinRun& operator=(const PlaybinRun&) = delete;

  // Sets the state and, for PAUSED and PLAYING, waits for the change to complete. False on failure, with
  // the reason in Error(): the bus's error message when there is one.
  bool SetState(GstState state, std::chrono::milliseconds timeout = std::chrono::seconds(5));

  // Reads the bus until the end of stream; false on an error message or the timeout.
  bool WaitForEnd(std::chrono::milliseconds timeout = std::chrono::seconds(5));

  // Reads the bus until a tag message carries `title` (perhaps seen already); false on an error, the end
  // of stream or the timeout.
  bool WaitForTitle(const std::string& title, std::chrono::milliseconds timeout = std::chrono::seconds(5));

  // A flushing seek to `position` in a paused or playing pipeline, waiting for it to complete.
  bool Seek(std::chrono::milliseconds position, std::chrono::milliseconds timeout = std::chrono::seconds(5));

  // Every title the tag messages carried, in order.
  const std::vector<std::string>& Titles() const { return titles_; }
  const std::string& Error() const { return error_; }

 private:
  // Pops bus messages until one of `types` arrives (returned), an error (recorded, null) or the timeout
  // (recorded, null). Titles are recorded on the way.
  PLAYER_GstMessagePtr WaitFor(GstMessageType types, std::chrono::milliseconds timeout);

  PLAYER_GstElementPtr playbin_;
  PLAYER_GstBusPtr bus_;
  std::vector<std::string> titles_;
  std::string error_;
};

#endif  // TESTS_PLAYER_SUPPORT_PLAYBIN_RUN_H_
