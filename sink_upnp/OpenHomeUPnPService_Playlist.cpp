// OpenHome Playlist editing and queries: Insert, DeleteId, DeleteAll, Read, ReadList, IdArray, TracksMax,
// Id, TransportState, Repeat, Shuffle, SetRepeat and SetShuffle.
//
// The handlers work on the object's playlist, keep the store's Playlist variables in step with it, and use
// the shared transport operations (OpenHomeUPnPService_Transport.cpp) where the current track changes.
// "Publishing" a variable means sending it as an event of its own through the store first and storing it
// after; the store's own eventing does not send these variables again.
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "dmr_cmn/Memory.h"
#include "dmr_cmn/String.h"
#include "marlo/ActionRequest.h"
#include "marlo/ActionResponse.h"
#include "playlist/PlaylistData.h"
#include "playlist/TrackList.h"
#include "sink_upnp/ActionArguments.h"
#include "sink_upnp/AnswerFromStore.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"
#include "sink_upnp/OpenHomeUPnPService.h"
#include "sink_upnp/ResultCode.h"
#include "sink_upnp/TransportState.h"
#include "sink_upnp/UPnPError.h"

namespace {

// The token of the IdArray: the playlist's ids are always sent whole, so the token never changes.
constexpr char kIdArrayToken[] = "1";

// The UPnP numbers Read and ReadList report when writing their last OUT argument answers one of them.
constexpr int32_t kReplyErrors[] = {402, 701, 714, 715, 716, 717, 718};

bool IsReplyError(int32_t result) {
  for (const int32_t error : kReplyErrors) {
    if (error == result) return true;
  }
  return false;
}

// The IdArray text of `playlist` in a buffer from DMR_CMN_Malloc (released with free), or null when there
// is no memory. 9 bytes per track hold the text; the one byte more gives an empty playlist the empty text.
char* NewIdArrayText(PLAYLIST_PlaylistManager& playlist) {
  const std::size_t size = 9 * static_cast<std::size_t>(playlist.GetTrackCount()) + 1;
  char* text = static_cast<char*>(DMR_CMN_Malloc(size));
  if (text == nullptr) return nullptr;
  std::memset(text, 0, size < 4 ? size : 4);
  // A playlist that cannot be encoded leaves the cleared buffer: the empty text.
  static_cast<void>(playlist.GetIdArray(&text));
  return text;
}

// The parsed Repeat or Shuffle value: 1, 0, or -1 for a text that is neither (exact, case-sensitive).
int ParseSwitch(const char* text) {
  for (const char* on : {"true", "1", "yes"}) {
    if (std::strcmp(text, on) == 0) return 1;
  }
  for (const char* off : {"false", "0", "no"}) {
    if (std::strcmp(text, off) == 0) return 0;
  }
  return -1;
}

// The metadata of a ReadList entry is escaped with the store's XML escaping.
const char* EscapeWithStore(void* store, const char* text) {
  return static_cast<SINK_UPNP_OpenHomeStateVariableManager*>(store)->ConvertControlCharacter(text);
}

}  // namespace

// --- Publishing ---

int32_t SINK_UPNP_OpenHomeUPnPService::Publish(const char* name, SINK_UPNP_StateVariableName_t index,
                                              const char* value, bool onlyAfterEvent) {
  DMR_CMN_String names;
  DMR_CMN_String values;
  int32_t copied = names.SetCString(name);
  if (copied == 0) copied = values.SetCString(value);
  if (copied != 0) return copied;
  const int32_t sent = stateVariableManager->SendEventForOpenHome(&names, &values, 1);
  if (!onlyAfterEvent || sent == 0) {
    static_cast<void>(stateVariableManager->ChangeStateVariable(index, &values));
  }
  return sent;
}

void SINK_UPNP_OpenHomeUPnPService::PublishIdArray() {
  char* text = NewIdArrayText(playlistManager);
  // Without memory for the text the change goes unannounced; the playlist itself has changed all the same.
  if (text == nullptr) return;
  static_cast<void>(Publish("IdArray", SINK_UPNP_PLAYLIST_ID_ARRAY, text, false));
  std::free(text);
}

// --- Queries ---

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteTracksMax(unsigned long, marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  // The store's maximum is what is reported; the playlist refuses only its 1002nd track. The two are not
  // tied together.
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response, {{"Value", SINK_UPNP_PLAYLIST_TRACKS_MAX}});
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteId(unsigned long, marlo::ActionRequest* request,
                                                 marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_AnswerFromStore(stateVariableManager, response, {{"Value", SINK_UPNP_PLAYLIST_ID}});
}

// The standard transport state in OpenHome's terms, in upper case on purpose: one spelling of the state
// words for both services' replies.
// Recording is not a playlist state: the action fails. A state the table does not know reads as stopped.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteTransportState(unsigned long, marlo::ActionRequest* request,
                                                             marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  DMR_CMN_String state;
  ReadTransportState(&state);
  const SINK_UPNP_TransportStateWords* known = SINK_UPNP_FindTransportState(state.GetCString());
  if (known == nullptr) known = &SINK_UPNP_TransportStateWordsOf(SINK_UPNP_TransportState::kStopped);
  const char* reply = known->openHomeReply;
  if (reply == nullptr) return SINK_UPNP_ERR_GENERIC;
  return response->SetArgumentValue("Value", reply) == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteRepeat(unsigned long, marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response) {
  return AnswerPlaylistMode(request, response, &PLAYLIST_PlaylistManager::GetRepeat);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteShuffle(unsigned long, marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response) {
  return AnswerPlaylistMode(request, response, &PLAYLIST_PlaylistManager::GetShuffle);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSetRepeat(unsigned long, marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response) {
  return SetPlaylistMode(request, response, "Repeat", SINK_UPNP_PLAYLIST_REPEAT, &PLAYLIST_PlaylistManager::SetRepeat);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteSetShuffle(unsigned long, marlo::ActionRequest* request,
                                                         marlo::ActionResponse* response) {
  return SetPlaylistMode(request, response, "Shuffle", SINK_UPNP_PLAYLIST_SHUFFLE,
                         &PLAYLIST_PlaylistManager::SetShuffle);
}

int32_t SINK_UPNP_OpenHomeUPnPService::AnswerPlaylistMode(marlo::ActionRequest* request,
                                                          marlo::ActionResponse* response,
                                                          int (PLAYLIST_PlaylistManager::*get)()) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* value = (playlistManager.*get)() == 1 ? "true" : "false";
  return response->SetArgumentValue("Value", value) == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
}

// A text that is neither on nor off leaves the mode alone and publishes the empty value, without an error
// in the reply, on purpose: the action is forgiving and the reply tells the control point what was kept.
// The answer is the event's.
int32_t SINK_UPNP_OpenHomeUPnPService::SetPlaylistMode(marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response, const char* name,
                                                       SINK_UPNP_StateVariableName_t index,
                                                       int32_t (PLAYLIST_PlaylistManager::*set)(int)) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* value = nullptr;
  if (!SINK_UPNP_ReadArguments(request, response, {{"Value", &value}})) return SINK_UPNP_OK;
  const int mode = ParseSwitch(value);
  if (mode != -1) static_cast<void>((playlistManager.*set)(mode));
  const char* published = mode == 1 ? "true" : mode == 0 ? "false" : "";
  return Publish(name, index, published, true);
}

int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteIdArray(unsigned long, marlo::ActionRequest* request,
                                                      marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  if (response->SetArgumentValue("Token", kIdArrayToken) != 0) return SINK_UPNP_ERR_GENERIC;
  char* text = NewIdArrayText(playlistManager);
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  const int32_t written = response->SetArgumentValue("Array", text);
  std::free(text);
  return written == 0 ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
}

// Read describes the current track whatever "Id" asks for, and answers -1 after a complete reply unless
// writing "Meta" answered a UPnP error. Both are the contract of this action: a control point reads the
// current track's description from it, and the final -1 makes the host's reply a failure.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteRead(unsigned long, marlo::ActionRequest* request,
                                                   marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const PLAYLIST_PlaylistData* current = playlistManager.GetCurrentTrackData();
  if (current == nullptr) {
    static_cast<void>(response->SetArgumentValue("Uri", ""));
    static_cast<void>(response->SetArgumentValue("Meta", ""));
    return SINK_UPNP_OK;
  }
  static_cast<void>(response->SetArgumentValue("Uri", current->getUri()));
  const int32_t written = response->SetArgumentValue("Meta", current->getMetaData());
  if (!IsReplyError(written)) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_WriteUPnPError(response, written);
}

// A missing "IdList" lists nothing.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteReadList(unsigned long, marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* idList = request->GetArgumentValue("IdList");
  std::string document;
  const int32_t built = PLAYLIST_BuildTrackList(&playlistManager, idList != nullptr ? idList : "",
                                                &EscapeWithStore, stateVariableManager, &document);
  if (built != 0) return built;
  const int32_t written = response->SetArgumentValue("TrackList", document.c_str());
  if (IsReplyError(written)) return SINK_UPNP_WriteUPnPError(response, written);
  return written == 0 || written == SINK_UPNP_ERR_GENERIC ? SINK_UPNP_OK : SINK_UPNP_ERR_GENERIC;
}

// --- Editing ---

// "AfterId" is read in base 0 (decimal, 0x-hexadecimal, 0-octal); text that is no number inserts at the
// front. A new track that becomes current (the first of an empty playlist, or one put in front of the
// current position 0) is handed to the transport without being played.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteInsert(unsigned long actionHandle, marlo::ActionRequest* request,
                                                     marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  const char* afterIdText = nullptr;
  const char* uri = nullptr;
  if (!SINK_UPNP_ReadArguments(request, response, {{"AfterId", &afterIdText}, {"Uri", &uri}})) {
    return SINK_UPNP_OK;
  }
  const char* metadata = request->GetArgumentValue("Metadata");
  if (metadata == nullptr) metadata = "";

  const uint64_t afterId = static_cast<uint64_t>(std::strtoll(afterIdText, nullptr, 0));
  uint64_t newId = 0;
  // A failed insertion may have used up an id: the next one skips it.
  if (playlistManager.Insert(uri, metadata, afterId, &newId) != 0) return SINK_UPNP_ERR_GENERIC;
  char newIdText[24];
  std::snprintf(newIdText, sizeof newIdText, "%" PRIu64, newId);
  if (response->SetArgumentValue("NewId", newIdText) != 0) return SINK_UPNP_ERR_GENERIC;

  const PLAYLIST_PlaylistData* current = playlistManager.GetCurrentTrackData();
  if (current != nullptr && current->getId() == newId) {
    StoreCurrentId(newId);
    static_cast<void>(SetAVTransportURI(actionHandle, uri, metadata, response));
  }
  PublishIdArray();
  return SINK_UPNP_OK;
}

// Deleting the current track stops the transport and hands over the track that takes its place; playback
// goes on with it only when it was playing and a next track existed before the deletion.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteDeleteId(unsigned long actionHandle, marlo::ActionRequest* request,
                                                       marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  // A missing "Value" reads as 0, which names no track.
  const char* value = request->GetArgumentValue("Value");
  const int32_t id = std::atoi(value != nullptr ? value : "");
  const int hadNext = playlistManager.CheckNext();
  DMR_CMN_String state;
  ReadTransportState(&state);

  int wasCurrent = 0;
  if (playlistManager.DeleteId(id, &wasCurrent) != 0) return SINK_UPNP_ERR_GENERIC;
  if (wasCurrent == 1) {
    static_cast<void>(Stop(actionHandle, response));
    if (const PLAYLIST_PlaylistData* current = playlistManager.GetCurrentTrackData()) {
      StoreCurrentId(current->getId());
      int32_t last = SetAVTransportURI(actionHandle, current->getUri(), current->getMetaData(), response);
      const char* stored = state.GetCString();
      const char* playing = SINK_UPNP_AVTransportWord(SINK_UPNP_TransportState::kPlaying);
      if (stored != nullptr && std::strcmp(stored, playing) == 0 && hadNext == 1) {
        last = Play(actionHandle, response);
      }
      if (last == SINK_UPNP_ERR_GENERIC) return SINK_UPNP_ERR_GENERIC;
    } else if (playlistManager.GetTrackCount() == 0) {
      static_cast<void>(SetAVTransportURI(actionHandle, nullptr, nullptr, response));
    }
  }
  PublishIdArray();
  return SINK_UPNP_OK;
}

// Stopping and clearing the transport happens even when the playlist was already empty, so that a control
// point can always bring the renderer to rest with it.
int32_t SINK_UPNP_OpenHomeUPnPService::ExecuteDeleteAll(unsigned long actionHandle, marlo::ActionRequest* request,
                                                        marlo::ActionResponse* response) {
  if (request == nullptr || response == nullptr) return SINK_UPNP_ERR_GENERIC;
  static_cast<void>(playlistManager.DeleteAll());
  static_cast<void>(Stop(actionHandle, response));
  static_cast<void>(SetAVTransportURI(actionHandle, nullptr, nullptr, response));
  static_cast<void>(Publish("IdArray", SINK_UPNP_PLAYLIST_ID_ARRAY, "", false));
  return SINK_UPNP_OK;
}
