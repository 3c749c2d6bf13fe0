#include "PlaylistKeeper.h"

#include <glib.h>

#include <cstring>
#include <utility>

#include "AtomicFile.h"
#include "Log.h"
#include "PlaylistFile.h"
#include "PlaylistRestore.h"
#include "PlaylistSnapshot.h"

namespace {

constexpr char kPlaylistType[] = "urn:av-openhome-org:service:Playlist:1";

bool ChangesThePlaylist(const char* action) {
  for (const char* name : {"Insert", "DeleteId", "DeleteAll", "SetRepeat", "SetShuffle"})
    if (std::strcmp(action, name) == 0) return true;
  return false;
}

}  // namespace

HOST_PlaylistKeeper::HOST_PlaylistKeeper(marlo::SinkContentTransferSubsystem* openHome, GMainContext* context,
                                         std::string path, Writer writer)
    : openHome_(openHome), context_(context), path_(std::move(path)),
      writer_(writer ? std::move(writer) : Writer(HOST_ReplaceFile)) {}

HOST_PlaylistKeeper::~HOST_PlaylistKeeper() { CancelTimer(); }

void HOST_PlaylistKeeper::Restore() {
  const int leftovers = HOST_RemoveLeftoverTemporaries(path_);
  if (leftovers > 0)
    HOST_Log(HOST_LogLevel::Info, "removed %d unfinished copies of the saved playlist (a save was cut short)",
             leftovers);
  HOST_SavedPlaylist playlist;
  std::string error;
  switch (HOST_ReadPlaylistFile(path_, &playlist, &error)) {
    case HOST_PlaylistFileStatus::Missing:
      HOST_Log(HOST_LogLevel::Debug, "no saved playlist in %s", path_.c_str());
      return;
    case HOST_PlaylistFileStatus::Refused: {
      std::string asideError;
      if (HOST_SetPlaylistFileAside(path_, &asideError)) {
        HOST_Log(HOST_LogLevel::Warning, "the saved playlist %s is refused (%s): set aside as %s.bad, starting empty",
                 path_.c_str(), error.c_str(), path_.c_str());
      } else {
        HOST_Log(HOST_LogLevel::Warning, "the saved playlist %s is refused (%s), starting empty; %s", path_.c_str(),
                 error.c_str(), asideError.c_str());
      }
      return;
    }
    case HOST_PlaylistFileStatus::Read:
      break;
  }
  if (!HOST_RestorePlaylist(openHome_, playlist, &error)) {
    HOST_Log(HOST_LogLevel::Warning, "the saved playlist was put back only in part: %s", error.c_str());
    return;
  }
  HOST_Log(HOST_LogLevel::Info, "playlist of %zu tracks put back (repeat %s, shuffle %s)", playlist.tracks.size(),
           playlist.repeat ? "on" : "off", playlist.shuffle ? "on" : "off");
}

void HOST_PlaylistKeeper::ActionSucceeded(const char* serviceType, const char* action) {
  if (std::strcmp(serviceType, kPlaylistType) != 0 || !ChangesThePlaylist(action) || timer_ != 0) return;
  GSource* source = g_timeout_source_new(kSaveDelayMilliseconds);
  g_source_set_callback(source, &HOST_PlaylistKeeper::OnTimer, this, nullptr);
  timer_ = g_source_attach(source, context_);
  g_source_unref(source);
}

int HOST_PlaylistKeeper::OnTimer(void* self) {
  auto* keeper = static_cast<HOST_PlaylistKeeper*>(self);
  keeper->timer_ = 0;
  keeper->Save();
  return G_SOURCE_REMOVE;
}

void HOST_PlaylistKeeper::Flush() {
  if (timer_ != 0) Save();
}

bool HOST_PlaylistKeeper::Save() {
  // This save covers every change so far: a pending one would only write the same again.
  CancelTimer();
  const gint64 start = g_get_monotonic_time();
  HOST_SavedPlaylist playlist;
  std::string error;
  if (!HOST_TakePlaylistSnapshot(openHome_, &playlist, &error)) {
    HOST_Log(HOST_LogLevel::Warning, "the playlist is not saved: %s", error.c_str());
    return false;
  }
  const std::string text = HOST_WritePlaylistText(playlist);
  if (text.empty() || !writer_(path_, text, &error)) {
    HOST_Log(HOST_LogLevel::Warning, "the playlist is not saved: %s", text.empty() ? "no memory" : error.c_str());
    return false;
  }
  HOST_Log(HOST_LogLevel::Debug, "playlist of %zu tracks saved in %lld ms", playlist.tracks.size(),
           static_cast<long long>((g_get_monotonic_time() - start) / 1000));
  return true;
}

void HOST_PlaylistKeeper::CancelTimer() {
  if (timer_ == 0) return;
  GSource* source = g_main_context_find_source_by_id(context_, timer_);
  if (source != nullptr) g_source_destroy(source);
  timer_ = 0;
}
