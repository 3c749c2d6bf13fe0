// Running a finite GStreamer pipeline to its end on the calling thread, with a bounded wait: how the test
// support makes media files and decodes them. No main loop is involved; the bus is read directly.
#ifndef TESTS_PLAYER_SUPPORT_PIPELINE_RUN_H_
#define TESTS_PLAYER_SUPPORT_PIPELINE_RUN_H_

#include <chrono>
#include <string>

#include "GstHandles.h"

// Initialises GStreamer once for the process; every support function that uses GStreamer calls it first.
void PLAYER_EnsureGstreamer();

// `text` quoted for a gst_parse_launch description (a file path, say).
std::string PLAYER_QuoteForLaunch(const std::string& text);

// Builds the pipeline that `description` describes. On failure (an unknown element, a bad property)
// returns null and says why in `error`.
PLAYER_GstElementPtr PLAYER_LaunchPipeline(const std::string& description, std::string* error);

// Sets `pipeline` PLAYING and waits up to `timeout` for its end of stream, then sets it to NULL. Returns
// true at the end of stream; otherwise false with the reason in `error`: the first error message of the
// bus (its source element, text and debug detail), or the timeout.
bool PLAYER_RunToEndOfStream(GstElement* pipeline, std::chrono::milliseconds timeout, std::string* error);

#endif  // TESTS_PLAYER_SUPPORT_PIPELINE_RUN_H_
