// HOST_PlaylistKeeper: keeps the OpenHome playlist (tracks, order, repeat, shuffle) in a file of the state
// directory across restarts.
//
// Saving: told by the router of each successful Playlist action that may change the playlist (Insert,
// DeleteId, DeleteAll, SetRepeat, SetShuffle), it saves on a timer of the main loop, kSaveDelay after the
// first change that found nothing pending. A burst of changes (a control point inserting an album track by
// track) is so written at most once every kSaveDelay, and the last change is on disk kSaveDelay after it at
// the latest. Each save reads the playlist through the service object's actions (PlaylistSnapshot) and
// replaces the file atomically (AtomicFile): a crash leaves a playlist that existed, never a torn file.
//
// Restoring: at start-up, right after the OpenHome service object started and before the device is
// announced, Restore puts the saved playlist back through the service object's actions
// (PlaylistRestore). A file that is refused (PlaylistFile) is reported in the log and set aside as
// "<file>.bad"; the playlist then starts empty. Nothing here stops the daemon from starting.
//
// Main loop only. The keeper must go before the service object and the main context it was given.
#ifndef HOST_PLAYLIST_KEEPER_H_
#define HOST_PLAYLIST_KEEPER_H_

#include <functional>
#include <string>

#include "ActionObserver.h"

namespace marlo {
class SinkContentTransferSubsystem;
}
typedef struct _GMainContext GMainContext;

class HOST_PlaylistKeeper : public HOST_ActionObserver {
 public:
  // Replaces the file at `path` by `text`; false with *error. HOST_ReplaceFile unless a test counts.
  using Writer = std::function<bool(const std::string& path, const std::string& text, std::string* error)>;

  static constexpr unsigned kSaveDelayMilliseconds = 500;

  HOST_PlaylistKeeper(marlo::SinkContentTransferSubsystem* openHome, GMainContext* context, std::string path,
                      Writer writer = {});
  // Drops a pending save without making it (Flush first to keep it).
  ~HOST_PlaylistKeeper() override;
  HOST_PlaylistKeeper(const HOST_PlaylistKeeper&) = delete;
  HOST_PlaylistKeeper& operator=(const HOST_PlaylistKeeper&) = delete;

  // Puts the saved playlist back; see above.
  void Restore();

  void ActionSucceeded(const char* serviceType, const char* action) override;

  // Makes a pending save now (at shutdown, while the service object still runs).
  void Flush();

  // Saves now, in place of a pending save; false (logged) when the snapshot or the write failed, the file then as it was.
  bool Save();

  bool SavePending() const { return timer_ != 0; }
  const std::string& Path() const { return path_; }

 private:
  static int OnTimer(void* self);
  void CancelTimer();

  marlo::SinkContentTransferSubsystem* openHome_;
  GMainContext* context_;
  std::string path_;
  Writer writer_;
  unsigned timer_ = 0;
};

#endif  // HOST_PLAYLIST_KEEPER_H_
