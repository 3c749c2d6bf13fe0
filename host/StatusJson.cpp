#include "StatusJson.h"

#include <algorithm>
#include <cctype>

#include "JsonWriter.h"

namespace {

// The limits of the escaped texts. With the caps of StatusJson.h they keep the whole document below
// HOST_kStatusJsonMaxBytes: about 200 KiB at worst, a few KiB usually.
constexpr std::size_t kShortText = 256;   // titles, names, states
constexpr std::size_t kLongText = 1024;   // URIs, paths, log lines
constexpr std::size_t kAddressText = 64;  // an IPv6 address with its scope at most
// How many tracks before the current one the playlist window shows.
constexpr std::size_t kTracksBeforeCurrent = 5;

// Only a web address goes to the page as album art: the browser would otherwise be asked to load
// whatever scheme a control point put into the metadata.
bool IsWebAddress(const std::string& uri) {
  std::string scheme;
  for (char c : uri.substr(0, 8)) scheme += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return scheme.rfind("http://", 0) == 0 || scheme.rfind("https://", 0) == 0;
}

void WriteTrack(HOST_JsonWriter& json, const HOST_StatusTrack& track) {
  json.Key("track");
  json.BeginObject();
  json.Member("title", track.title, kShortText);
  json.Member("artist", track.artist, kShortText);
  json.Member("album", track.album, kShortText);
  // A cut URL would point at nothing: one too long is left out whole.
  const bool art = IsWebAddress(track.albumArtUri) && HOST_JsonEscape(track.albumArtUri).size() <= kLongText;
  json.Member("albumArt", art ? track.albumArtUri : std::string(), kLongText);
  json.Member("uri", track.uri, kLongText);
  json.Member("position", track.position, kShortText);
  json.Member("duration", track.duration, kShortText);
  json.Member("positionSeconds", HOST_StatusSeconds(track.position));
  json.Member("durationSeconds", HOST_StatusSeconds(track.duration));
  json.End();
}

void WritePlaylist(HOST_JsonWriter& json, const HOST_StatusPlaylist& playlist) {
  json.Key("playlist");
  json.BeginObject();
  json.Member("count", static_cast<int64_t>(playlist.count));
  json.Member("first", static_cast<int64_t>(playlist.first));
  json.Member("currentId", static_cast<int64_t>(playlist.currentId));
  json.MemberBool("repeat", playlist.repeat);
  json.MemberBool("shuffle", playlist.shuffle);
  json.Key("tracks");
  json.BeginArray();
  const std::size_t shown = std::min(playlist.tracks.size(), HOST_kStatusPlaylistCap);
  for (std::size_t i = 0; i < shown; ++i) {
    const HOST_StatusPlaylistEntry& entry = playlist.tracks[i];
    json.BeginObject();
    json.Member("id", static_cast<int64_t>(entry.id));
    json.Member("title", entry.title, kShortText);
    json.Member("artist", entry.artist, kShortText);
    json.MemberBool("current", entry.id != 0 && entry.id == playlist.currentId);
    json.End();
  }
  json.End();
  const std::size_t after = playlist.first + shown;
  json.Member("more", static_cast<int64_t>(playlist.count > after ? playlist.count - after : 0));
  json.End();
}

void WriteSubscriptions(HOST_JsonWriter& json, const std::vector<HOST_StatusSubscription>& subscriptions) {
  json.Key("subscriptions");
  json.BeginObject();
  json.Member("count", static_cast<int64_t>(subscriptions.size()));
  json.Key("list");
  json.BeginArray();
  const std::size_t shown = std::min(subscriptions.size(), HOST_kStatusSubscriptionCap);
  for (std::size_t i = 0; i < shown; ++i) {
    json.BeginObject();
    json.Member("service", subscriptions[i].service, kShortText);
    json.Member("callback", subscriptions[i].callback, kLongText);
    json.Member("from", subscriptions[i].from, kAddressText);
    json.Member("expiresIn", subscriptions[i].expiresInSeconds);
    json.End();
  }
  json.End();
  json.Member("more", static_cast<int64_t>(subscriptions.size() - shown));
  json.End();
}

void WriteConfiguration(HOST_JsonWriter& json,
                        const std::vector<std::pair<std::string, std::string>>& configuration) {
  json.Key("configuration");
  json.BeginArray();
  const std::size_t shown = std::min(configuration.size(), HOST_kStatusConfigurationCap);
  for (std::size_t i = 0; i < shown; ++i) {
    json.BeginObject();
    json.Member("name", configuration[i].first, kShortText);
    json.Member("value", configuration[i].second, kLongText);
    json.End();
  }
  json.End();
}

void WriteLog(HOST_JsonWriter& json, const std::vector<HOST_LogRing::Line>& log) {
  json.Key("log");
  json.BeginArray();
  // The newest lines, should a caller hand more than the ring holds.
  const std::size_t shown = std::min(log.size(), HOST_LogRing::kCapacity);
  for (std::size_t i = log.size() - shown; i < log.size(); ++i) {
    json.BeginObject();
    json.Member("sequence", static_cast<int64_t>(log[i].sequence));
    json.Member("time", log[i].unixMilliseconds);
    json.Member("level", HOST_LogLevelWord(log[i].level));
    json.Member("text", log[i].text, kLongText);
    json.End();
  }
  json.End();
}

}  // namespace

std::size_t HOST_StatusPlaylistWindowStart(std::size_t count, std::size_t current) {
  if (count <= HOST_kStatusPlaylistCap) return 0;
  const std::size_t last = count - HOST_kStatusPlaylistCap;
  if (current >= count) return 0;
  const std::size_t start = current > kTracksBeforeCurrent ? current - kTracksBeforeCurrent : 0;
  return std::min(start, last);
}

int64_t HOST_StatusSeconds(const std::string& time) {
  // H+:MM:SS[.F+]
  const std::size_t first = time.find(':');
  if (first == std::string::npos || first == 0 || first > 6 || time.size() < first + 6) return -1;
  const auto digits = [&](std::size_t from, std::size_t to) {
    for (std::size_t i = from; i < to; ++i)
      if (!std::isdigit(static_cast<unsigned char>(time[i]))) return false;
    return true;
  };
  if (!digits(0, first) || time[first + 3] != ':' || !digits(first + 1, first + 3) ||
      !digits(first + 4, first + 6))
    return -1;
  const std::size_t end = first + 6;
  if (end < time.size() && (time[end] != '.' || end + 1 == time.size() || !digits(end + 1, time.size())))
    return -1;
  const int64_t minutes = std::stoll(time.substr(first + 1, 2));
  const int64_t seconds = std::stoll(time.substr(first + 4, 2));
  if (minutes > 59 || seconds > 59) return -1;
  return std::stoll(time.substr(0, first)) * 3600 + minutes * 60 + seconds;
}

std::string HOST_WriteStatusJson(const HOST_StatusReport& report) {
  HOST_JsonWriter json;
  json.BeginObject();
  json.MemberBool("running", report.running);
  json.Key("transport");
  json.BeginObject();
  json.Member("state", report.transportState, kShortText);
  json.Member("status", report.transportStatus, kShortText);
  json.End();
  WriteTrack(json, report.track);
  WritePlaylist(json, report.playlist);
  json.Key("volume");
  json.BeginObject();
  json.Key("volume");
  if (report.volume >= 0) {
    json.Number(report.volume);
  } else {
    json.Null();
  }
  json.MemberBool("mute", report.mute);
  json.End();
  WriteSubscriptions(json, report.subscriptions);
  WriteConfiguration(json, report.configuration);
  WriteLog(json, report.log);
  json.Key("problems");
  json.BeginArray();
  for (std::size_t i = 0; i < std::min(report.problems.size(), HOST_kStatusProblemCap); ++i)
    json.String(report.problems[i], kLongText);
  json.End();
  json.End();
  return json.Text();
}
