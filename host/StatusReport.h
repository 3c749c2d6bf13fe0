// HOST_StatusReport: what the status page shows, read at one moment on the main loop: the track playing,
// the transport, the OpenHome playlist (a window of it), volume and mute, the subscribed control points,
// the configuration in force and the last log lines. Plain data; HOST_WriteStatusJson turns it into the
// page's JSON.
#ifndef HOST_STATUS_REPORT_H_
#define HOST_STATUS_REPORT_H_

#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "LogRing.h"

struct HOST_StatusTrack {
  std::string title;
  std::string artist;
  std::string album;
  std::string albumArtUri;  // as the metadata gives it; the page shows it only when it is http(s)
  std::string uri;
  std::string position;  // "H:MM:SS" as AVTransport reports it
  std::string duration;
};

struct HOST_StatusPlaylistEntry {
  uint32_t id = 0;
  std::string title;  // the metadata's title, else the URI
  std::string artist;
};

struct HOST_StatusPlaylist {
  std::size_t count = 0;                         // tracks in the playlist
  std::size_t first = 0;                         // the position of tracks[0] in the playlist
  std::vector<HOST_StatusPlaylistEntry> tracks;  // a window of the playlist from `first`
  uint32_t currentId = 0;                        // 0: none
  bool repeat = false;
  bool shuffle = false;
};

struct HOST_StatusSubscription {
  std::string service;            // the short name, e.g. "AVTransport"
  std::string callback;           // the first URL of the CALLBACK header
  std::string from;               // the address the SUBSCRIBE came from
  int64_t expiresInSeconds = -1;  // -1: never ("Second-infinite")
};

struct HOST_StatusReport {
  // False while the renderer starts or stops: then only the configuration and the log are filled.
  bool running = false;
  std::string transportState;
  std::string transportStatus;
  HOST_StatusTrack track;
  HOST_StatusPlaylist playlist;
  int volume = -1;  // 0..100; -1 when the player could not say
  bool mute = false;
  std::vector<HOST_StatusSubscription> subscriptions;
  std::vector<std::pair<std::string, std::string>> configuration;  // name, value, in the order shown
  std::vector<HOST_LogRing::Line> log;                             // oldest first
  std::vector<std::string> problems;  // what could not be read this time, one line each
};

#endif  // HOST_STATUS_REPORT_H_
