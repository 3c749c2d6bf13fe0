// OpenHome playback: the transport operations the actions share, and the Playlist service's Play, Pause,
// Stop, Next, Previous, SeekId, SeekIndex and SeekSecondAbsolute, with the Product service's SourceIndex.
//
// The object plays nothing itself. It chooses the track in its playlist, records the track's id in the
// "Id" variable and drives the application with the commands a standard AVTransport control point would
// give. The application reports the transport state back into the store; the actions read it (variable 0)
// to decide whether playback must be stopped before a new track is loaded. It may be stale by the time the
// action acts on it: the application changes it from its own threads.
//
// Each action ends with its own mapping of the results of its steps, and the mappings differ on purpose:
// which UPnP errors an action answers with 0 (some written into the reply a second time) and which turn it
// into a failure is part of each action's contract with control points.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "playlist/PlaylistData.h"
#include "sink_core/TransferService.h"
#include "sink_upnp/AcceptedErrors.h"
#include "sink_upnp/ActionArguments.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/TransportState.h"
#include "sink_upnp/UPnPError.h"

namespace {

// The OpenHome actions carry no instance: the application's single AVTransport instance 0 is meant.
constexpr unsigned long kInstance = 0;

// The UPnP numbers each transport operation writes into the reply and answers as itself are those of the
// command it sends. Each action answers with 0 at its end the numbers of the command it stands for (Play
// those of Play, Next and Previous those of Next, SeekId and SeekIndex those of Seek); any other nonzero
// result fails the action.
using Accepted = SINK_UPNP_AcceptedErrors;

using TransportState = SINK_UPNP_TransportState;

// The states the paths are chosen by.
bool StateIs(const DMR_CMN_String& state, TransportState which) {
  const char* current = state.GetCString();
  return current != nullptr && std::strcmp(current, SINK_UPNP_AVTransportWord(which)) == 0;
}

// Where a track is loaded without stopping first.
bool IsAtRest(const DMR_CMN_String& state) {
  return StateIs(state, TransportState::kStopped) || StateIs(state, TransportState::kNoMediaPresent);
}

// Where the transport has a track in hand and must be stopped before another is loaded.
bool IsInTrack(const DMR_CMN_String& state) {
  return StateIs(state, TransportState::kPlaying) || StateIs(state, TransportState::kTransitioning) ||
         StateIs(state, TransportState::kPausedPlayback);
}

}  // namespace

// --- The transport operations ---

int32_t SINK_UPNP_OpenHomeUPnPService::SetAVTransportURI(unsigned long actionHandle, const char* uri,
                                                         const char* metadata, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String uriText;
  int32_t copied = SINK_UPNP_CopyArgument(uri != nullptr ? uri : "", &uriText);
  if (copied != 0) return copied;
  DMR_CMN_String metadataText;
  copied = SINK_UPNP_CopyArgument(metadata != nullptr ? metadata : "", &metadataText);
  if (copied != 0) return copied;
  // The application learns which playlist the URI comes from before every URI; it cannot refuse it.
  static_cast<void>(transferService->AttachPlaylistManager(&playlistManager));
  const int32_t result = transferService->SetAVTransportURI(actionHandle, kInstance, &uriText, &metadataText);
  // An accepted error is written and answered as success: the caller goes on as if the URI were set.
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kSetAVTransportURI);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Play(unsigned long actionHandle, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String speed;
  const int32_t copied = SINK_UPNP_CopyArgument("1", &speed);
  if (copied != 0) return copied;
  const int32_t result = transferService->Play(actionHandle, kInstance, &speed);
  return SINK_UPNP_ForwardTransferResult(response, result, Accepted::kPlay);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Stop(unsigned long actionHandle, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_ForwardTransferResult(response, transferService->Stop(actionHandle, kInstance),
                                         Accepted::kStop);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Seek(unsigned long actionHandle, DMR_CMN_String* unit,
                                            DMR_CMN_String* target, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const int32_t result = transferService->Seek(actionHandle, kInstance, unit, target);
  return SINK_UPNP_ForwardTransferResult(response, result, Accepted::kSeek);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Next(unsigned long actionHandle, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_ForwardTransferResult(response, transferService->Next(actionHandle, kInstance),
                                         Accepted::kNext);
}

int32_t SINK_UPNP_OpenHomeUPnPService::Previous(unsigned long actionHandle, marlo::ActionResponse* response) {
  if (transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_ForwardTransferResult(response, transferService->Previous(actionHandle, kInstance),
                                         Accepted::kPrevious);
}

void SINK_UPNP_OpenHomeUPnPService::ReadTransportState(DMR_CMN_String* state) {
  // A state that cannot be read matches none of the known states.
  if (stateVariableManager->GetStateVariable(SINK_UPNP_AVT_TRANSPORT_STATE, state) != 0) {
    static_cast<void>(state->SetCString(""));
  }
}

void SINK_UPNP_OpenHomeUPnPService::StoreCurrentId(uint64_t id) {
  char text[24];
  std::snprintf(text, sizeof text, "%" PRIu64, id);
  DMR_CMN_String value;
  if (value.SetCString(text) != 0) return;
  static_cast<void>(stateVariableManager->ChangeStateVariable(SINK_UPNP_PLAYLIST_ID, &value));
}

// Because SetAVTransportURI answers 0 also after writing an error, Play is then still sent, and the reply
// keeps the first error unless Play writes another.
int32_t SINK_UPNP_OpenHomeUPnPService::LoadTrack(unsigned long actionHandle, const PLAYLIST_PlaylistData* track,
                                                 marlo::ActionResponse* response) {
  StoreCurrentId(track->getId());
  const int32_t result = SetAVTransportURI(actionHandle, track->getUri(), track->getMetaData(), response);
  if (result != 0) return result;
  return Play(actionHandle, response);
}

// --- The actions ---

// The playlist and the "Id" variable are not touched: stopping keeps the current track.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteStop(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_SettleActionResult(response, Stop(actionHandle, response), Accepted::kStop, false);
}

// Pausing looks at no state: the application decides whether it can pause. 705 is not among the answers
// this action reports.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecutePause(unsigned long actionHandle, marlo::ActionRequest* request,
                                                    marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const int32_t result = transferService->Pause(actionHandle, kInstance);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kPause);
}

// Play resumes only from a pause; from every other known state it loads the current track again, so a
// Play while playing sends the track's URI and Play once more.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecutePlay(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  PLAYLIST_PlaylistData* track = playlistManager.GetCurrentTrackData();
  DMR_CMN_String state;
  ReadTransportState(&state);

  int32_t result = SINK_UPNP_ERR_GENERIC;
  if (StateIs(state, TransportState::kPausedPlayback)) result = Play(actionHandle, response);
  if (IsAtRest(state) || StateIs(state, TransportState::kPlaying) ||
      StateIs(state, TransportState::kTransitioning)) {
    if (track == nullptr) return SINK_UPNP_ERR_GENERIC;
    result = LoadTrack(actionHandle, track, response);
  }
  return SINK_UPNP_SettleActionResult(response, result, Accepted::kPlay, false);
}

// Next and Previous step through the playlist, not the application (its own Next and Previous are never
// sent): the transport is stopped and the chosen track loaded.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteNext(unsigned long actionHandle, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  // The state is read, but no state can skip the Stop: a control point may step from any state.
  DMR_CMN_String state;
  ReadTransportState(&state);
  return StepTo(actionHandle, playlistManager.Next(), response);
}

// In shuffled order the playlist's step back goes forward, as Next does: a shuffled order has no way back.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecutePrevious(unsigned long actionHandle, marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String state;
  ReadTransportState(&state);
  return StepTo(actionHandle, playlistManager.Prev(), response);
}

// Stop always comes first. Without a track to step to (the end of the list with repeat off, the start for
// Previous) the current track's URI is set again and not played, so the renderer rests on it.
int32_t SINK_UPNP_OpenHomeUPnPService::StepTo(unsigned long actionHandle, const PLAYLIST_PlaylistData* track,
                                              marlo::ActionResponse* response) {
  int32_t result = Stop(actionHandle, response);
  if (track != nullptr) {
    result = LoadTrack(actionHandle, track, response);
  } else if (const PLAYLIST_PlaylistData* current = playlistManager.GetCurrentTrackData()) {
    StoreCurrentId(current->getId());
    result = SetAVTransportURI(actionHandle, current->getUri(), current->getMetaData(), response);
  }
  return SINK_UPNP_SettleActionResult(response, result, Accepted::kNext, true);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSeekIndex(unsigned long actionHandle, marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response) {
  return SeekTrack(actionHandle, request, response, &PLAYLIST_PlaylistManager::SeekIndexTrackData, true);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSeekId(unsigned long actionHandle, marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response) {
  return SeekTrack(actionHandle, request, response, &PLAYLIST_PlaylistManager::SeekIdTrackData, false);
}

// A "Value" that names no track is refused with 402 before anything changes. Otherwise the transport is
// stopped first only when it has a track in hand; from rest the track is loaded at once; from a state that
// is neither (empty or unknown) nothing is sent and the action fails.
int32_t SINK_UPNP_OpenHomeUPnPService::SeekTrack(unsigned long actionHandle, marlo::ActionRequest* request,
                                                 marlo::ActionResponse* response,
                                                 PLAYLIST_PlaylistData* (PLAYLIST_PlaylistManager::*seek)(int32_t),
                                                 bool resetSeconds) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* value = nullptr;
  if (!SINK_UPNP_ReadArguments(request, response, {{"Value", &value}})) return SINK_UPNP_OK;
  DMR_CMN_String state;
  ReadTransportState(&state);
  const PLAYLIST_PlaylistData* track = (playlistManager.*seek)(std::atoi(value));
  if (track == nullptr) return SINK_UPNP_WriteUPnPError(response, 402);

  int32_t result = SINK_UPNP_ERR_GENERIC;
  if (IsInTrack(state)) result = Stop(actionHandle, response);
  if (IsAtRest(state)) result = SINK_UPNP_OK;
  if (result == 0) result = LoadTrack(actionHandle, track, response);

  if (resetSeconds) {
    // The new track starts at its beginning, whatever came of the attempt.
    DMR_CMN_String seconds;
    if (seconds.SetCString("0") == 0) {
      static_cast<void>(stateVariableManager->ChangeStateVariable(SINK_UPNP_TIME_SECONDS, &seconds));
    }
  }
  return SINK_UPNP_SettleActionResult(response, result, Accepted::kSeek, true);
}

// Despite the name the seek is relative to the start of the current track ("REL_TIME"), which for a
// playlist renderer is the same thing. Negative seconds and more than 99999 hours are refused.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSeekSecondAbsolute(unsigned long actionHandle,
                                                                 marlo::ActionRequest* request,
                                                                 marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr || transferService == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* value = nullptr;
  if (!SINK_UPNP_ReadArguments(request, response, {{"Value", &value}})) return SINK_UPNP_OK;
  const int32_t total = std::atoi(value);
  const int32_t hours = total / 3600;
  const int32_t minutes = (total / 60) % 60;
  const int32_t seconds = total % 60;
  if (static_cast<uint32_t>(hours) > 99999 || minutes < 0 || minutes > 59 || seconds < 0 || seconds > 59) {
    return SINK_UPNP_ERR_GENERIC;
  }
  char targetText[32];
  std::snprintf(targetText, sizeof targetText, "%ld:%02ld:%02ld", static_cast<long>(hours),
                static_cast<long>(minutes), static_cast<long>(seconds));
  DMR_CMN_String unit;
  int32_t copied = SINK_UPNP_CopyArgument("REL_TIME", &unit);
  if (copied != 0) return copied;
  DMR_CMN_String target;
  copied = SINK_UPNP_CopyArgument(targetText, &target);
  if (copied != 0) return copied;
  const int32_t result = transferService->Seek(actionHandle, kInstance, &unit, &target);
  return SINK_UPNP_AnswerTransferResult(response, result, Accepted::kSeek);
}

// The Product service's source index is answered with the playlist's current track id: the renderer has
// one source, its playlist, so the track id is the only index that names what is playing.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSourceIndex(unsigned long, marlo::ActionRequest* request,
                                                          marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const PLAYLIST_PlaylistData* current = playlistManager.GetCurrentTrackData();
  if (current == nullptr) {
    static_cast<void>(response->SetArgumentValue("Value", "0"));
    return SINK_UPNP_OK;
  }
  char text[24];
  std::snprintf(text, sizeof text, "%" PRIu64, current->getId());
  return response->SetArgumentValue("Value", text);
}
