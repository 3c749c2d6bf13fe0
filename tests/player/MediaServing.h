// Serving made media: a test makes a track with PLAYER_TestMedia and serves it from PLAYER_TestHttpServer.
#ifndef TESTS_PLAYER_MEDIA_SERVING_H_
#define TESTS_PLAYER_MEDIA_SERVING_H_

#include <string>

#include "TestHttpServer.h"
#include "TestMedia.h"

struct ServedTrack {
  std::string uri;
  PLAYER_MediaFile file;
};

// Makes `spec` and serves it at `path`; a test failure (and an empty uri) when the track cannot be made.
ServedTrack ServeTrack(PLAYER_TestMedia& media, PLAYER_TestHttpServer& server, const std::string& path,
                       const PLAYER_TrackParameters& spec);

// A WAV tone of `milliseconds` at `frequency` served at `path`.
ServedTrack ServeTone(PLAYER_TestMedia& media, PLAYER_TestHttpServer& server, const std::string& path,
                      int milliseconds, double frequency = 440.0);

#endif  // TESTS_PLAYER_MEDIA_SERVING_H_
