#include "StatusReader.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "HostServices.h"
#include "PlaylistAction.h"
#include "PlaylistSnapshot.h"
#include "ServiceTypes.h"
#include "StatusJson.h"
#include "corva/MediaMetaData.h"
#include "marlo/ActionRequest.h"

namespace {

// The handle of the status page's reads of the daemon's own services: nonzero, apart from the router's
// counter and from the playlist's own actions.
constexpr unsigned long kStatusHandle = 0xfffffff1ul;

const HOST_Arguments kInstanceZero = {{"InstanceID", "0"}};

std::string ArgumentOr(const HOST_Arguments& out, const char* name) {
  const std::string* value = HOST_FindArgument(out, name);
  return value != nullptr ? *value : std::string();
}

// The title and artist of DIDL-Lite metadata; the URI stands in for a missing title.
void ReadTitles(const std::string& metadata, const std::string& uri, std::string* title, std::string* artist,
                std::string* album = nullptr, std::string* albumArt = nullptr) {
  corva::MediaMetaData parsed;
  const bool known = !metadata.empty() && parsed.SetConformMetaData(metadata.c_str()) == 0;
  *title = known ? parsed.GetTitle() : "";
  if (title->empty()) *title = uri;
  *artist = known ? parsed.GetArtist() : "";
  if (album != nullptr) *album = known ? parsed.GetAlbum() : "";
  if (albumArt != nullptr) *albumArt = known ? parsed.GetAlbumArtURI() : "";
}

}  // namespace

HOST_StatusReader::HOST_StatusReader(marlo::SinkContentTransferSubsystem* standardServices,
                                     marlo::SinkContentTransferSubsystem* openHomeServices,
                                     HOST_HostServices* hostServices)
    : standardServices_(standardServices), openHomeServices_(openHomeServices), hostServices_(hostServices) {}

void HOST_StatusReader::Read(HOST_StatusReport* report) {
  ReadTransport(report);
  ReadPlaylist(report);
  ReadVolume(report);
}

void HOST_StatusReader::ReadTransport(HOST_StatusReport* report) {
  HOST_Arguments out;
  std::string error;
  if (HOST_PerformOwnAction(standardServices_, HOST_kAVTransportType, "GetTransportInfo", kInstanceZero, &out,
                            &error)) {
    report->transportState = ArgumentOr(out, "CurrentTransportState");
    report->transportStatus = ArgumentOr(out, "CurrentTransportStatus");
  } else {
    report->problems.push_back(error);
  }
  if (!HOST_PerformOwnAction(standardServices_, HOST_kAVTransportType, "GetPositionInfo", kInstanceZero, &out,
                             &error)) {
    report->problems.push_back(error);
    return;
  }
  HOST_StatusTrack& track = report->track;
  track.uri = ArgumentOr(out, "TrackURI");
  track.position = ArgumentOr(out, "RelTime");
  track.duration = ArgumentOr(out, "TrackDuration");
  if (!track.uri.empty())
    ReadTitles(ArgumentOr(out, "TrackMetaData"), track.uri, &track.title, &track.artist, &track.album,
               &track.albumArtUri);
}

bool HOST_StatusReader::TitlesOf(uint32_t id, Titles* titles, std::string* error) {
  auto known = titles_.find(id);
  if (known != titles_.end()) {
    *titles = known->second;
    return true;
  }
  HOST_Arguments out;
  if (!HOST_PerformPlaylistAction(openHomeServices_, "ReadList", {{"IdList", std::to_string(id)}}, &out,
                                  error))
    return false;
  const std::string* list = HOST_FindArgument(out, "TrackList");
  HOST_SavedTrack track;
  if (list == nullptr || !HOST_ReadSingleTrackList(*list, id, &track)) {
    *error = "ReadList of id " + std::to_string(id) + " answered no track list of that track";
    return false;
  }
  ReadTitles(track.metadata, track.uri, &titles->title, &titles->artist);
  titles_[id] = *titles;
  return true;
}

void HOST_StatusReader::ReadPlaylist(HOST_StatusReport* report) {
  HOST_StatusPlaylist& playlist = report->playlist;
  HOST_Arguments out;
  std::string error;
  std::vector<uint32_t> ids;
  if (!HOST_PerformPlaylistAction(openHomeServices_, "IdArray", {}, &out, &error) ||
      !HOST_DecodeIdArray(ArgumentOr(out, "Array"), &ids)) {
    report->problems.push_back(error.empty() ? "IdArray answered no array of ids" : error);
    return;
  }
  if (HOST_PerformPlaylistAction(openHomeServices_, "Id", {}, &out, &error))
    playlist.currentId = static_cast<uint32_t>(std::strtoul(ArgumentOr(out, "Value").c_str(), nullptr, 10));
  if (HOST_PerformPlaylistAction(openHomeServices_, "Repeat", {}, &out, &error))
    playlist.repeat = ArgumentOr(out, "Value") == "true";
  if (HOST_PerformPlaylistAction(openHomeServices_, "Shuffle", {}, &out, &error))
    playlist.shuffle = ArgumentOr(out, "Value") == "true";

  playlist.count = ids.size();
  const auto current = std::find(ids.begin(), ids.end(), playlist.currentId);
  playlist.first =
      HOST_StatusPlaylistWindowStart(ids.size(), static_cast<std::size_t>(current - ids.begin()));
  const std::size_t end = std::min(ids.size(), playlist.first + HOST_kStatusPlaylistCap);
  std::map<uint32_t, Titles> shown;
  for (std::size_t i = playlist.first; i < end; ++i) {
    Titles titles;
    if (!TitlesOf(ids[i], &titles, &error)) {
      report->problems.push_back(error);
      titles.title = "(track " + std::to_string(ids[i]) + ")";
    } else {
      shown[ids[i]] = titles;
    }
    playlist.tracks.push_back({ids[i], titles.title, titles.artist});
  }
  // Only the tracks in view stay cached: the cache is as bounded as the page.
  titles_.swap(shown);
}

void HOST_StatusReader::ReadVolume(HOST_StatusReport* report) {
  for (const char* action : {"Volume", "Mute"}) {
    marlo::ActionRequest request;
    if (request.SetServiceType(HOST_kVolumeType) != 0 || request.SetActionName(action) != 0) {
      report->problems.push_back(std::string(action) + ": no memory for the request");
      return;
    }
    const HOST_ActionOutcome outcome = hostServices_->Perform(HOST_kVolumeType, request, kStatusHandle);
    const std::string value = ArgumentOr(outcome.out, "Value");
    if (outcome.errorCode != 0 || value.empty()) {
      report->problems.push_back(std::string("Volume ") + action + " answered " +
                                 std::to_string(outcome.errorCode));
      return;
    }
    if (std::strcmp(action, "Volume") == 0) {
      report->volume = std::atoi(value.c_str());
    } else {
      report->mute = value == "true";
    }
  }
}
