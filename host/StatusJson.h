// The status page's JSON (/status.json), from a HOST_StatusReport.
//
// Bounded: whatever the report holds (a playlist of thousands, hundreds of subscribers, titles of a
// megabyte), the document stays under kStatusJsonMaxBytes. Each text is cut to its limit (JsonWriter);
// the lists are cut to their caps, and each says how many it left out ("more"), so that the page can
// write "… and N more".
//
// {"running": true,
//  "transport": {"state": "PLAYING", "status": "OK"},
//  "track": {"title", "artist", "album", "albumArt" (only an http or https URL, else ""), "uri",
//            "position", "duration", "positionSeconds", "durationSeconds" (-1 when unknown)},
//  "playlist": {"count", "first", "currentId", "repeat", "shuffle",
//               "tracks": [{"id", "title", "artist", "current"}], "more"},
//  "volume": {"volume" (null when unknown), "mute"},
//  "subscriptions": {"count", "list": [{"service", "callback", "from", "expiresIn" (-1: never)}], "more"},
//  "configuration": [{"name", "value"}],
//  "log": [{"sequence", "time" (Unix milliseconds), "level", "text"}],
//  "problems": ["..."]}
#ifndef HOST_STATUS_JSON_H_
#define HOST_STATUS_JSON_H_

#include <cstddef>
#include <cstdint>
#include <string>

#include "StatusReport.h"

constexpr std::size_t HOST_kStatusPlaylistCap = 100;
constexpr std::size_t HOST_kStatusSubscriptionCap = 50;
constexpr std::size_t HOST_kStatusConfigurationCap = 32;
constexpr std::size_t HOST_kStatusProblemCap = 8;
// The log lines shown are the ring's (HOST_LogRing::kCapacity).
constexpr std::size_t HOST_kStatusJsonMaxBytes = 256 * 1024;

// The first position of the playlist window the page shows for a playlist of `count` tracks whose current
// track is at `current` (count or more: none): the window of HOST_kStatusPlaylistCap tracks starts a few
// tracks before the current one, so that it shows what played last and what comes next.
std::size_t HOST_StatusPlaylistWindowStart(std::size_t count, std::size_t current);

// Seconds of an AVTransport time ("H:MM:SS", optionally with a fraction); -1 for anything else
// ("NOT_IMPLEMENTED", "").
int64_t HOST_StatusSeconds(const std::string& time);

std::string HOST_WriteStatusJson(const HOST_StatusReport& report);

#endif  // HOST_STATUS_JSON_H_
