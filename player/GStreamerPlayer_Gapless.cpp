// PLAYER_GStreamerPlayer: joining the next track without a gap.
//
// playbin asks for the next URI on a streaming thread (about-to-finish) while the current track still
// plays. The answer comes from what the main thread has published under gaplessMutex_ (the next
// AVTransport URI, or the current track again for a repeat mode), or, in playlist mode, from the playlist
// itself, read on the main thread at the streaming thread's request. The track so queued becomes current
// at its STREAM_START message (OnStreamStart).
#include <algorithm>
#include <chrono>
#include <cstdint>
#include <memory>
#include <string>

#include "GStreamerPlayer.h"
#include "TrackMetaData.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"

namespace {

// How long a streaming thread waits for the main thread to read the playlist. Past it, the current
// track ends and the player advances at the end of the stream.
constexpr auto kPlaylistQueryBound = std::chrono::milliseconds(1000);

}  // namespace

struct PLAYER_GStreamerPlayer::PlaylistQuery {
  PLAYER_GStreamerPlayer* player = nullptr;
  bool answered = false;
  bool found = false;
  Track track;
};

void PLAYER_GStreamerPlayer::UpdateNextSource() {
  NextSource source = NextSource::None;
  if (InPlaylistMode()) {
    source = NextSource::Playlist;
  } else if (playMode_ != "NORMAL") {
    source = NextSource::RepeatCurrent;
  } else if (hasNext_) {
    source = NextSource::NextUri;
  }
  std::lock_guard<std::mutex> lock(gaplessMutex_);
  nextSource_ = source;
  nextForStream_ = source == NextSource::NextUri         ? next_
                   : source == NextSource::RepeatCurrent ? current_
                                                         : Track();
}

void PLAYER_GStreamerPlayer::HoldGapless() {
  // The main thread is about to change the pipeline, which waits for the streaming threads: a streaming
  // thread waiting for the main thread must give up now.
  std::lock_guard<std::mutex> lock(gaplessMutex_);
  gaplessHeld_ = true;
  gaplessChanged_.notify_all();
}

void PLAYER_GStreamerPlayer::ReleaseGapless() {
  std::lock_guard<std::mutex> lock(gaplessMutex_);
  gaplessHeld_ = false;
}

bool PLAYER_GStreamerPlayer::QueuedTrackWaiting() {
  std::lock_guard<std::mutex> lock(gaplessMutex_);
  return hasQueued_;
}

void PLAYER_GStreamerPlayer::ForgetQueuedTrack() {
  if (queuedFailureTimer_ != 0) clock_->Cancel(queuedFailureTimer_);
  queuedFailureTimer_ = 0;
  queuedFailure_ = 0;
  GstObject* source = nullptr;
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    hasQueued_ = false;
    queued_ = Track();
    source = queuedSource_;
    queuedSource_ = nullptr;
  }
  if (source != nullptr) gst_object_unref(source);
}

void PLAYER_GStreamerPlayer::OnSourceSetup(GstElement*, GstElement* source, gpointer self) {
  auto* player = static_cast<PLAYER_GStreamerPlayer*>(self);
  {
    // A source made after a track was queued is that track's: its errors are told apart by this.
    std::lock_guard<std::mutex> lock(player->gaplessMutex_);
    if (player->hasQueued_ && player->queuedSource_ == nullptr) {
      player->queuedSource_ = GST_OBJECT(gst_object_ref(source));
    }
  }
  GObjectClass* type = G_OBJECT_GET_CLASS(source);
  // An HTTP source: a bound on a silent server, our name, and ICY metadata asked for.
  GParamSpec* timeout = g_object_class_find_property(type, "timeout");
  if (timeout != nullptr && timeout->value_type == G_TYPE_UINT) {
    g_object_set(source, "timeout", static_cast<guint>(player->options_.networkTimeoutSeconds), nullptr);
  }
  if (g_object_class_find_property(type, "user-agent") != nullptr) {
    g_object_set(source, "user-agent", player->options_.userAgent.c_str(), nullptr);
  }
  if (g_object_class_find_property(type, "iradio-mode") != nullptr) {
    g_object_set(source, "iradio-mode", TRUE, nullptr);
  }
  // An ICY stream shows in the caps of the source's output once it answers; the tag handler asks then.
  GstPad* pad = gst_element_get_static_pad(source, "src");
  if (pad != nullptr) {
    gst_pad_add_probe(
        pad, GST_PAD_PROBE_TYPE_EVENT_DOWNSTREAM,
        [](GstPad*, GstPadProbeInfo* info, gpointer data) -> GstPadProbeReturn {
          GstEvent* event = GST_PAD_PROBE_INFO_EVENT(info);
          if (GST_EVENT_TYPE(event) != GST_EVENT_CAPS) return GST_PAD_PROBE_OK;
          GstCaps* caps = nullptr;
          gst_event_parse_caps(event, &caps);
          const GstStructure* structure = caps != nullptr ? gst_caps_get_structure(caps, 0) : nullptr;
          if (structure != nullptr && gst_structure_has_name(structure, "application/x-icy")) {
            auto* owner = static_cast<PLAYER_GStreamerPlayer*>(data);
            std::lock_guard<std::mutex> lock(owner->gaplessMutex_);
            owner->icyStream_ = true;
          }
          return GST_PAD_PROBE_REMOVE;
        },
        player, nullptr);
    gst_object_unref(pad);
  }
}

void PLAYER_GStreamerPlayer::OnAboutToFinish(GstElement* playbin, gpointer self) {
  auto* player = static_cast<PLAYER_GStreamerPlayer*>(self);
  std::unique_lock<std::mutex> lock(player->gaplessMutex_);
  if (player->gaplessHeld_ || player->hasQueued_) return;

  Track next;
  bool found = false;
  if (player->nextSource_ == NextSource::NextUri || player->nextSource_ == NextSource::RepeatCurrent) {
    next = player->nextForStream_;
    found = !next.uri.empty();
  } else if (player->nextSource_ == NextSource::Playlist) {
    // Ask the main thread, which alone touches the playlist, and wait a bounded time for its answer.
    auto query = std::make_shared<PlaylistQuery>();
    query->player = player;
    player->pendingQuery_ = query;
    GSource* idle = g_idle_source_new();
    g_source_set_callback(idle, &PLAYER_GStreamerPlayer::AnswerPlaylistQuery,
                          new std::shared_ptr<PlaylistQuery>(query),
                          [](gpointer data) { delete static_cast<std::shared_ptr<PlaylistQuery>*>(data); });
    g_source_attach(idle, player->context_);
    player->queryIdles_.push_back(idle);
    player->gaplessChanged_.wait_for(lock, kPlaylistQueryBound,
                                     [&] { return query->answered || player->gaplessHeld_; });
    player->pendingQuery_.reset();
    if (query->answered && query->found && !player->gaplessHeld_) {
      next = query->track;
      found = true;
    }
  }
  if (!found) return;
  player->queued_ = next;
  player->hasQueued_ = true;
  lock.unlock();
  g_object_set(playbin, "uri", next.uri.c_str(), nullptr);
}

gboolean PLAYER_GStreamerPlayer::AnswerPlaylistQuery(gpointer data) {
  std::shared_ptr<PlaylistQuery> query = *static_cast<std::shared_ptr<PlaylistQuery>*>(data);
  // The player destroys the sources of the queries it has not answered, so it is still there.
  PLAYER_GStreamerPlayer* player = query->player;
  {
    std::lock_guard<std::mutex> lock(player->gaplessMutex_);
    GSource* running = g_main_current_source();
    auto found = std::find(player->queryIdles_.begin(), player->queryIdles_.end(), running);
    if (found != player->queryIdles_.end()) {
      g_source_unref(*found);
      player->queryIdles_.erase(found);
    }
    // Only the query still waited for is answered: the streaming thread may have given up on it.
    if (player->pendingQuery_ != query) return G_SOURCE_REMOVE;
  }
  Track track;
  bool found = false;
  if (player->InPlaylistMode()) {
    const PLAYLIST_PlaylistData* next = player->playlist_->GetNextTrackData();
    if (next != nullptr) {
      track = player->PlaylistTrack(next);
      found = true;
    }
  }
  std::lock_guard<std::mutex> lock(player->gaplessMutex_);
  query->answered = true;
  query->found = found;
  query->track = track;
  player->gaplessChanged_.notify_all();
  return G_SOURCE_REMOVE;
}

bool PLAYER_GStreamerPlayer::FromQueuedTrack(GstMessage* message, int32_t code, const std::string& reason) {
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    if (!hasQueued_ || queuedSource_ == nullptr) return false;
    // The source itself, or an element beside it in the bin that decodes the queued track.
    GstObject* bin = gst_object_get_parent(queuedSource_);
    const bool queued = GST_MESSAGE_SRC(message) == queuedSource_ ||
                        (bin != nullptr && gst_object_has_as_ancestor(GST_MESSAGE_SRC(message), bin));
    if (bin != nullptr) gst_object_unref(bin);
    if (!queued) return false;
  }
  if (queuedFailure_ != 0) return true;  // reported already
  g_warning("cannot play the next track: %s (UPnP error %d)", reason.c_str(), static_cast<int>(code));
  queuedFailure_ = code;
  // The current track plays on; the pipeline will not end it by itself now, so a timer does at its end.
  const int64_t duration = QueryDuration();
  const int64_t position = QueryPosition();
  const int64_t left =
      duration > 0 && position >= 0 && duration > position ? (duration - position) / 1000000 : 0;
  queuedFailureTimer_ = clock_->Schedule(left + 250, [this] {
    queuedFailureTimer_ = 0;
    OnQueuedTrackFailed();
  });
  return true;
}

void PLAYER_GStreamerPlayer::OnQueuedTrackFailed() {
  Track failed;
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    if (!hasQueued_) return;
    failed = queued_;
  }
  const int32_t code = queuedFailure_;
  ForgetQueuedTrack();
  // The failed track becomes current where the stores and the playlist are concerned; a playlist then
  // moves on past it, a single next URI stops with the error.
  CommitQueuedTrack(failed);
  if (failed.fromPlaylist && playlist_ != nullptr) {
    StopPipeline();
    OnEndOfStream();
    return;
  }
  Fail(code, "the next track cannot be played");
}

void PLAYER_GStreamerPlayer::CommitQueuedTrack(const Track& track) {
  g_info("joined %s", track.uri.c_str());
  if (track.fromPlaylist && playlist_ != nullptr) {
    // The playlist moves now that the track plays. Next gives the track that was read ahead unless the
    // playlist changed since; then the track is found by its id, and when it was deleted meanwhile the
    // position goes back to the track before it, so that the end of this one moves on from there.
    const uint64_t previousId = current_.playlistId;
    const PLAYLIST_PlaylistData* moved = playlist_->Next();
    if (moved == nullptr || moved->getId() != track.playlistId) {
      const bool found = track.playlistId <= INT32_MAX &&
                         playlist_->SeekIdTrackData(static_cast<int32_t>(track.playlistId)) != nullptr;
      if (!found && previousId <= INT32_MAX) playlist_->SeekIdTrackData(static_cast<int32_t>(previousId));
    }
    writer_.SetOpenHome(SINK_UPNP_PLAYLIST_ID, std::to_string(track.playlistId));
  } else if (!track.fromPlaylist && hasNext_ && next_.uri == track.uri) {
    // The next URI has become the current one (a next URI set after it was queued stays next).
    hasNext_ = false;
  }
  current_ = track;
  durationHint_ = PLAYER_MetaDataDuration(track.metadata);
  ForgetStreamDetails();
  UpdateNextSource();
  WriteTrackVariables();
  WriteNextVariables();
  WriteTransportActions();
  WritePosition();
}
