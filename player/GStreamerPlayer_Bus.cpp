// PLAYER_GStreamerPlayer: the pipeline's bus messages, handled on the main context.
#include <string>

#include "GStreamerPlayer.h"
#include "TrackMetaData.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"

namespace {

constexpr int32_t kIllegalMimeType = 714;
constexpr int32_t kResourceNotFound = 716;
constexpr int32_t kPlayingFailed = 704;

// The UPnP error an error message stands for: the resource could not be had (716), its type cannot be
// played (714), or the output failed (704).
int32_t UPnPErrorOf(const GError* error) {
  if (error == nullptr) return kPlayingFailed;
  if (error->domain == GST_RESOURCE_ERROR) {
    switch (error->code) {
      case GST_RESOURCE_ERROR_NOT_FOUND:
      case GST_RESOURCE_ERROR_OPEN_READ:
      case GST_RESOURCE_ERROR_OPEN_READ_WRITE:
      case GST_RESOURCE_ERROR_READ:
      case GST_RESOURCE_ERROR_SEEK:
      case GST_RESOURCE_ERROR_NOT_AUTHORIZED:
      case GST_RESOURCE_ERROR_FAILED:
        return kResourceNotFound;
      default:
        return kPlayingFailed;
    }
  }
  // A stream that stops flowing without saying why has failed to arrive (a source that timed out, say);
  // every other stream error is about its content.
  if (error->domain == GST_STREAM_ERROR) {
    return error->code == GST_STREAM_ERROR_FAILED ? kResourceNotFound : kIllegalMimeType;
  }
  if (error->domain == GST_CORE_ERROR && error->code == GST_CORE_ERROR_MISSING_PLUGIN)
    return kIllegalMimeType;
  return kPlayingFailed;
}

}  // namespace

gboolean PLAYER_GStreamerPlayer::OnBusMessage(GstBus*, GstMessage* message, gpointer self) {
  static_cast<PLAYER_GStreamerPlayer*>(self)->HandleMessage(message);
  return G_SOURCE_CONTINUE;
}

void PLAYER_GStreamerPlayer::HandleMessage(GstMessage* message) {
  switch (GST_MESSAGE_TYPE(message)) {
    case GST_MESSAGE_ERROR:
      OnError(message);
      break;
    case GST_MESSAGE_WARNING: {
      GError* error = nullptr;
      gst_message_parse_warning(message, &error, nullptr);
      g_warning("%s: %s", GST_OBJECT_NAME(GST_MESSAGE_SRC(message)), error != nullptr ? error->message : "");
      g_clear_error(&error);
      break;
    }
    case GST_MESSAGE_EOS:
      OnEndOfStream();
      break;
    case GST_MESSAGE_STATE_CHANGED:
      if (GST_MESSAGE_SRC(message) == GST_OBJECT(pipeline_)) OnStateChanged(message);
      break;
    case GST_MESSAGE_ASYNC_DONE:
      OnAsyncDone();
      break;
    case GST_MESSAGE_STREAM_START:
      OnStreamStart();
      break;
    case GST_MESSAGE_DURATION_CHANGED:
      WriteDuration();
      Publish();
      break;
    case GST_MESSAGE_TAG:
      OnTags(message);
      break;
    case GST_MESSAGE_ELEMENT: {
      // A decoder or demuxer that is not installed: the type cannot be played.
      const GstStructure* structure = gst_message_get_structure(message);
      if (structure != nullptr && gst_structure_has_name(structure, "missing-plugin")) {
        const std::string reason = "a GStreamer plug-in the stream needs is not installed";
        if (!FromQueuedTrack(message, kIllegalMimeType, reason)) Fail(kIllegalMimeType, reason);
      }
      break;
    }
    default:
      break;
  }
}

void PLAYER_GStreamerPlayer::OnError(GstMessage* message) {
  GError* error = nullptr;
  gchar* debug = nullptr;
  gst_message_parse_error(message, &error, &debug);
  const int32_t code = UPnPErrorOf(error);
  std::string reason = error != nullptr ? error->message : "unknown error";
  if (debug != nullptr) g_debug("%s", debug);
  g_clear_error(&error);
  g_free(debug);
  if (FromQueuedTrack(message, code, reason)) return;
  Fail(code, reason);
}

void PLAYER_GStreamerPlayer::Fail(int32_t code, const std::string& reason) {
  if (attempt_.active && attempt_.error == 0) attempt_.error = code;
  if (state_ == PLAYER_TransportState::Stopped && errorOccurred_) return;  // already reported
  g_warning("cannot play %s: %s (UPnP error %d)", current_.uri.c_str(), reason.c_str(),
            static_cast<int>(code));
  StopPipeline();
  // Sticky: the status says so until a new URI is set.
  errorOccurred_ = true;
  SetState(PLAYER_TransportState::Stopped);
  WritePosition();
  Publish();
}

void PLAYER_GStreamerPlayer::OnEndOfStream() {
  g_info("end of %s", current_.uri.c_str());
  // The pipeline ends here only when no next track was joined gaplessly: move on by hand.
  if (InPlaylistMode() && playlist_ != nullptr) {
    PLAYLIST_PlaylistData* track = playlist_->Next();
    if (track != nullptr) {
      Load(PlaylistTrack(track), true);
      return;
    }
  } else if (playMode_ != "NORMAL" && QueryPosition() > 0) {
    // A track that ended where it began (no samples) is not repeated: it would start over for ever.
    Load(current_, true);
    return;
  } else if (hasNext_) {
    Track track = next_;
    hasNext_ = false;
    Load(track, true);
    return;
  }
  StopPipeline();
  SetState(PLAYER_TransportState::Stopped);
  WritePosition();
  Publish();
}

void PLAYER_GStreamerPlayer::OnStateChanged(GstMessage* message) {
  GstState oldState = GST_STATE_VOID_PENDING;
  GstState newState = GST_STATE_VOID_PENDING;
  gst_message_parse_state_changed(message, &oldState, &newState, nullptr);
  if (newState == GST_STATE_PLAYING && wantPlaying_ && state_ != PLAYER_TransportState::Playing) {
    SetState(PLAYER_TransportState::Playing);
    WriteDuration();
    RefreshDetails();
    StartSecondsTicks();
    Publish();
  }
}

void PLAYER_GStreamerPlayer::OnAsyncDone() {
  if (pendingSeek_ >= 0) {
    const int64_t position = pendingSeek_;
    pendingSeek_ = -1;
    HoldGapless();
    gst_element_seek_simple(pipeline_, GST_FORMAT_TIME,
                            static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
                            position);
    ReleaseGapless();
    // Prerolled paused to seek first: now play from there.
    if (wantPlaying_) gst_element_set_state(pipeline_, GST_STATE_PLAYING);
  }
  WriteDuration();
  RefreshDetails();
  Publish();
}

void PLAYER_GStreamerPlayer::OnStreamStart() {
  Track queued;
  bool joined = false;
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    if (hasQueued_) {
      queued = queued_;
      hasQueued_ = false;
      joined = true;
    }
  }
  if (joined) CommitQueuedTrack(queued);
  // Each track that starts counts, for the Time and Info services.
  ++trackCount_;
  writer_.SetOpenHome(SINK_UPNP_TIME_TRACK_COUNT, std::to_string(trackCount_));
  writer_.SetOpenHome(SINK_UPNP_INFO_TRACK_COUNT, std::to_string(trackCount_));
  RefreshDetails();
  Publish();
}

void PLAYER_GStreamerPlayer::OnTags(GstMessage* message) {
  GstTagList* tags = nullptr;
  gst_message_parse_tag(message, &tags);
  gchar* title = nullptr;
  bool radio = false;
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    radio = icyStream_;
  }
  // A title is the stream's text (Metatext) on a radio stream: an ICY stream, or one that plays without
  // a duration. A file's own title tag is not (its metadata names it already), and a file's tags come
  // while it prerolls, before it plays.
  gint64 duration = -1;
  if (!radio && state_ == PLAYER_TransportState::Playing) {
    radio = !gst_element_query_duration(pipeline_, GST_FORMAT_TIME, &duration) || duration <= 0;
  }
  if (radio && tags != nullptr && gst_tag_list_get_string(tags, GST_TAG_TITLE, &title) && title != nullptr &&
      metatext_ != title) {
    metatext_ = title;
    ++metatextCount_;
    g_info("stream title: %s", title);
    const std::string metadata = PLAYER_MetaDataWithTitle(current_.metadata, current_.uri, metatext_);
    writer_.PublishMetatext(std::to_string(metatextCount_), metadata);
    writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRACK_METADATA, metadata);
  }
  g_free(title);
  if (tags != nullptr) gst_tag_list_unref(tags);
  RefreshDetails();
  Publish();
}

void PLAYER_GStreamerPlayer::ForgetStreamDetails() {
  details_ = PLAYER_StreamDetails();
  WriteDetails();
  if (!metatext_.empty()) {
    metatext_.clear();
    writer_.PublishMetatext(std::to_string(++metatextCount_), "");
  }
}

void PLAYER_GStreamerPlayer::RefreshDetails() {
  if (pipeline_ == nullptr) return;
  GstPad* pad = nullptr;
  g_signal_emit_by_name(pipeline_, "get-audio-pad", 0, &pad);
  GstCaps* caps = pad != nullptr ? gst_pad_get_current_caps(pad) : nullptr;
  GstTagList* tags = nullptr;
  g_signal_emit_by_name(pipeline_, "get-audio-tags", 0, &tags);
  const PLAYER_StreamDetails details = PLAYER_ReadStreamDetails(caps, tags);
  if (tags != nullptr) gst_tag_list_unref(tags);
  if (caps != nullptr) gst_caps_unref(caps);
  if (pad != nullptr) gst_object_unref(pad);
  if (details == details_ || (details.sampleRate == 0 && details.codecName.empty())) return;
  details_ = details;
  ++detailsCount_;
  WriteDetails();
}
