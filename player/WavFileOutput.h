// The WAV file output: everything the player plays, appended in real time to one WAV file for the
// player's whole life (across stops and new tracks), so that a recording holds exactly the samples that
// were played, joins included.
//
// The samples go to the file as they arrive (an appsink that waits for the clock, as a speaker would), in
// the format of the first track: S16LE, S24LE or S32LE, converted only where a decoder gives another
// format. The header's sizes are rewritten after every buffer, so the file is complete whenever it is
// read. A later track in another format is written as it comes: a WAV file holds one format.
#ifndef PLAYER_WAV_FILE_OUTPUT_H_
#define PLAYER_WAV_FILE_OUTPUT_H_

#include <gst/gst.h>

#include <string>

// A floating reference to the output bin; null with *error set when the file cannot be created or an
// element is missing.
GstElement* PLAYER_MakeWavFileOutput(const std::string& path, std::string* error);

#endif  // PLAYER_WAV_FILE_OUTPUT_H_
