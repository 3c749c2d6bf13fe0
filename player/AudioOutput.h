// The audio sink for the configured output, and the playbin around it.
#ifndef PLAYER_AUDIO_OUTPUT_H_
#define PLAYER_AUDIO_OUTPUT_H_

#include <gst/gst.h>

#include <string>

#include "player/Player.h"

// A floating reference to the sink element (or bin) for `options.output`; null with *error set when an
// element it needs is not installed.
GstElement* PLAYER_MakeAudioSink(const PLAYER_Options& options, std::string* error);

// A playbin that plays audio only, with software volume, on that sink. Null with *error set.
GstElement* PLAYER_MakePlaybin(const PLAYER_Options& options, std::string* error);

#endif  // PLAYER_AUDIO_OUTPUT_H_
