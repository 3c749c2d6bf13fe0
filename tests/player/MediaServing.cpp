#include "MediaServing.h"

#include <gtest/gtest.h>

#include "WavReader.h"

ServedTrack ServeTrack(PLAYER_TestMedia& media, PLAYER_TestHttpServer& server, const std::string& path,
                       const PLAYER_TrackParameters& spec) {
  ServedTrack served;
  const auto file = media.Make(spec);
  if (!file) return served;
  auto bytes = PLAYER_ReadFileBytes(file->path);
  if (!bytes) return served;
  server.AddFile(path, std::move(*bytes), file->mimeType);
  served.uri = server.Url(path);
  served.file = *file;
  return served;
}

ServedTrack ServeTone(PLAYER_TestMedia& media, PLAYER_TestHttpServer& server, const std::string& path,
                      int milliseconds, double frequency) {
  PLAYER_TrackParameters spec;
  spec.durationMilliseconds = milliseconds;
  spec.frequency = frequency;
  return ServeTrack(media, server, path, spec);
}
