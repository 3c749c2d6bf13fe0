// PLAYER_GStreamerPlayer: lifecycle, attachment and the transport commands.
#include "GStreamerPlayer.h"

#include <gst/audio/streamvolume.h>

#include <cstdlib>
#include <string>
#include <utility>

#include "AlsaMixer.h"
#include "AudioOutput.h"
#include "GLibClock.h"
#include "TimeText.h"
#include "TrackMetaData.h"
#include "dmr_cmn/String.h"
#include "playlist/PlaylistData.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/SinkCTSSStateVariableManager.h"

namespace {

// UPnP error numbers the player answers.
constexpr int32_t kInvalidArgs = 402;
constexpr int32_t kTransitionNotAvailable = 701;
constexpr int32_t kSeekModeNotSupported = 710;
constexpr int32_t kIllegalSeekTarget = 711;
constexpr int32_t kPlayModeNotSupported = 712;
constexpr int32_t kResourceNotFound = 716;
constexpr int32_t kPlaySpeedNotSupported = 717;
constexpr int32_t kValueOutOfRange = 601;
constexpr int32_t kActionFailed = 501;

std::string TextOf(const DMR_CMN_String* string) {
  return string != nullptr && string->GetCString() != nullptr ? string->GetCString() : "";
}

// A URI the renderer plays: HTTP and HTTPS, what media servers give. Other schemes GStreamer knows would
// let a control point open local files, descriptors or sockets of the renderer, so they are refused.
bool IsPlayableUri(const std::string& uri) {
  if (!gst_uri_is_valid(uri.c_str())) return false;
  gchar* protocol = gst_uri_get_protocol(uri.c_str());
  const bool web = protocol != nullptr &&
                   (g_ascii_strcasecmp(protocol, "http") == 0 || g_ascii_strcasecmp(protocol, "https") == 0);
  const bool supported = web && gst_uri_protocol_is_supported(GST_URI_SRC, protocol);
  g_free(protocol);
  return supported;
}

// Whole decimal text within [low, high]; false otherwise.
bool ParseInteger(const std::string& text, long low, long high, long* value) {
  if (text.empty() || text.size() > 9) return false;
  for (char c : text) {
    if (c < '0' || c > '9') return false;
  }
  *value = std::strtol(text.c_str(), nullptr, 10);
  return *value >= low && *value <= high;
}

}  // namespace

PLAYER_GStreamerPlayer::PLAYER_GStreamerPlayer(const PLAYER_Options& options, PLAYER_Clock* clock,
                                               std::string* error)
    : options_(options) {
  if (!gst_is_initialized()) gst_init(nullptr, nullptr);
  context_ = options.context != nullptr ? g_main_context_ref(options.context) : nullptr;
  if (clock == nullptr) {
    ownClock_ = std::make_unique<PLAYER_GLibClock>(context_);
    clock = ownClock_.get();
  }
  clock_ = clock;
  // AVTransport's LastChange: at most one event each 200 ms.
  moderator_ = std::make_unique<PLAYER_EventModerator>(*clock_, 200, [this] {
    stateAwaitingEvent_ = false;
    if (writer_.TransportStore() != nullptr) writer_.TransportStore()->SendEvent();
  });

  std::string reason;
  GstElement* playbin = PLAYER_MakePlaybin(options, &reason);
  if (playbin == nullptr) {
    if (error != nullptr) *error = reason;
    g_warning("cannot build the pipeline: %s", reason.c_str());
    return;
  }
  pipeline_ = GST_ELEMENT(gst_object_ref_sink(playbin));
  g_signal_connect(pipeline_, "about-to-finish", G_CALLBACK(&PLAYER_GStreamerPlayer::OnAboutToFinish), this);
  g_signal_connect(pipeline_, "source-setup", G_CALLBACK(&PLAYER_GStreamerPlayer::OnSourceSetup), this);
  bus_ = gst_element_get_bus(pipeline_);
  busWatch_ = gst_bus_create_watch(bus_);
  // A bus watch calls its callback as a GstBusFunc; GLib's signature for it is the generic one.
  g_source_set_callback(busWatch_, G_SOURCE_FUNC(&PLAYER_GStreamerPlayer::OnBusMessage), this, nullptr);
  g_source_attach(busWatch_, context_);
  OpenMixer();
}

void PLAYER_GStreamerPlayer::OpenMixer() {
  const bool hasDevice = !options_.mixerDevice.empty();
  const bool hasControl = !options_.mixerControl.empty();
  if (!hasDevice && !hasControl) return;
  if (!hasDevice || !hasControl) {
    warning_ = "a hardware mixer needs both a device and a control; the volume stays in software";
    return;
  }
  auto mixer = std::make_unique<PLAYER_AlsaMixer>();
  std::string reason;
  if (!mixer->Open(options_.mixerDevice, options_.mixerControl, &reason)) {
    warning_ = reason + "; the volume stays in software";
    return;
  }
  mixer_ = std::move(mixer);
}

PLAYER_GStreamerPlayer::~PLAYER_GStreamerPlayer() {
  StopSecondsTicks();
  moderator_.reset();
  if (pipeline_ != nullptr) {
    HoldGapless();
    gst_element_set_state(pipeline_, GST_STATE_NULL);
    ReleaseGapless();
    g_signal_handlers_disconnect_by_data(pipeline_, this);
  }
  {
    // A query the main context has not answered yet must not reach a deleted player.
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    pendingQuery_.reset();
    for (GSource* idle : queryIdles_) {
      g_source_destroy(idle);
      g_source_unref(idle);
    }
    queryIdles_.clear();
  }
  if (busWatch_ != nullptr) {
    g_source_destroy(busWatch_);
    g_source_unref(busWatch_);
  }
  if (bus_ != nullptr) gst_object_unref(bus_);
  if (pipeline_ != nullptr) gst_object_unref(pipeline_);
  if (context_ != nullptr) g_main_context_unref(context_);
}

// --- Lifecycle: the pipeline is built with the player; these have nothing more to do. ---

int32_t PLAYER_GStreamerPlayer::Initialize(marlo::Properties*) { return 0; }
int32_t PLAYER_GStreamerPlayer::Finalize() {
  // The host finalizes the service objects, and so deletes the stores, after this: let go of them.
  StopPipeline();
  moderator_->Cancel();
  writer_.AttachTransportStore(nullptr);
  writer_.AttachOpenHomeStore(nullptr);
  return 0;
}
int32_t PLAYER_GStreamerPlayer::StartEngine() { return 0; }
int32_t PLAYER_GStreamerPlayer::StopEngine() {
  StopPipeline();
  return 0;
}
int32_t PLAYER_GStreamerPlayer::WarnTimeOut(unsigned long, unsigned long*, const char**) { return 0; }

// --- Attachment ---

int32_t PLAYER_GStreamerPlayer::AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) {
  writer_.AttachTransportStore(manager);
  return 0;
}

int32_t PLAYER_GStreamerPlayer::AttachOpenHomeStateVariableManager(
    SINK_UPNP_OpenHomeStateVariableManager* manager) {
  writer_.AttachOpenHomeStore(manager);
  return 0;
}

int32_t PLAYER_GStreamerPlayer::AttachPlaylistManager(PLAYLIST_PlaylistManager* playlistManager) {
  // The OpenHome service attaches its playlist before each URI it sets, the AVTransport service a null
  // one: the last attachment says which of them the next URI comes from.
  attachedForNextUri_ = playlistManager;
  if (playlistManager != nullptr) playlist_ = playlistManager;
  return 0;
}

// --- Commands ---

int32_t PLAYER_GStreamerPlayer::SetAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri,
                                                  DMR_CMN_String* metaData) {
  if (!Ready()) return kTransitionNotAvailable;
  Track track;
  track.uri = TextOf(uri);
  track.metadata = TextOf(metaData);
  if (track.uri.empty()) {
    // An empty URI takes the media away.
    StopPipeline();
    current_ = Track();
    hasNext_ = false;
    errorOccurred_ = false;
    SetState(PLAYER_TransportState::NoMediaPresent);
    WriteTrackVariables();
    WriteNextVariables();
    Publish();
    return 0;
  }
  if (!IsPlayableUri(track.uri)) return kResourceNotFound;

  if (attachedForNextUri_ != nullptr) {
    // The OpenHome service has made the track current before setting its URI.
    const PLAYLIST_PlaylistData* currentTrack = attachedForNextUri_->GetCurrentTrackData();
    track.fromPlaylist = true;
    if (currentTrack != nullptr && currentTrack->getUri() != nullptr && track.uri == currentTrack->getUri()) {
      track.playlistId = currentTrack->getId();
    }
  }
  const bool keepPlaying = Moving();
  hasNext_ = false;
  return Load(track, keepPlaying);
}

int32_t PLAYER_GStreamerPlayer::SetNextAVTransportURI(unsigned long, unsigned long, DMR_CMN_String* uri,
                                                      DMR_CMN_String* metaData) {
  if (!Ready()) return kTransitionNotAvailable;
  const std::string text = TextOf(uri);
  if (!text.empty() && !IsPlayableUri(text)) return kResourceNotFound;
  if (state_ == PLAYER_TransportState::NoMediaPresent && !text.empty()) return kTransitionNotAvailable;
  next_ = Track();
  next_.uri = text;
  next_.metadata = TextOf(metaData);
  hasNext_ = !text.empty();
  UpdateNextSource();
  WriteNextVariables();
  WriteTransportActions();
  Publish();
  return 0;
}

int32_t PLAYER_GStreamerPlayer::Play(unsigned long, unsigned long, DMR_CMN_String* speed) {
  if (!Ready()) return kTransitionNotAvailable;
  if (TextOf(speed) != "1") return kPlaySpeedNotSupported;
  switch (state_) {
    case PLAYER_TransportState::NoMediaPresent:
      return kTransitionNotAvailable;
    case PLAYER_TransportState::Playing:
    case PLAYER_TransportState::Transitioning:
      return 0;
    case PLAYER_TransportState::PausedPlayback:
      wantPlaying_ = true;
      gst_element_set_state(pipeline_, GST_STATE_PLAYING);
      SetState(PLAYER_TransportState::Playing);
      StartSecondsTicks();
      Publish();
      return 0;
    case PLAYER_TransportState::Stopped:
      return StartPlayback();
  }
  return kTransitionNotAvailable;
}

int32_t PLAYER_GStreamerPlayer::Stop(unsigned long, unsigned long) {
  // Stop is accepted in every state: control points send it before a new URI, and with no media it
  // simply has nothing to stop.
  if (!Ready() || state_ == PLAYER_TransportState::NoMediaPresent) return 0;
  StopPipeline();
  pendingSeek_ = -1;
  SetState(PLAYER_TransportState::Stopped);
  WritePosition();
  Publish();
  return 0;
}

int32_t PLAYER_GStreamerPlayer::Pause(unsigned long, unsigned long) {
  if (!Ready()) return kTransitionNotAvailable;
  switch (state_) {
    case PLAYER_TransportState::NoMediaPresent:
      return kTransitionNotAvailable;
    case PLAYER_TransportState::Stopped:
    case PLAYER_TransportState::PausedPlayback:
      return 0;
    case PLAYER_TransportState::Playing:
    case PLAYER_TransportState::Transitioning:
      wantPlaying_ = false;
      gst_element_set_state(pipeline_, GST_STATE_PAUSED);
      StopSecondsTicks();
      SetState(PLAYER_TransportState::PausedPlayback);
      WritePosition();
      Publish();
      return 0;
  }
  return kTransitionNotAvailable;
}

int32_t PLAYER_GStreamerPlayer::Seek(unsigned long, unsigned long, DMR_CMN_String* unit,
                                     DMR_CMN_String* target) {
  if (!Ready() || state_ == PLAYER_TransportState::NoMediaPresent) return kTransitionNotAvailable;
  const std::string mode = TextOf(unit);
  const std::string where = TextOf(target);
  int64_t position = -1;
  if (mode == "REL_TIME" || mode == "ABS_TIME") {
    position = PLAYER_ParseTime(where);
    if (position < 0) return kIllegalSeekTarget;
    const int64_t duration = QueryDuration();
    if (duration > 0 && position > duration) return kIllegalSeekTarget;
  } else if (mode == "TRACK_NR") {
    long number = 0;
    if (!ParseInteger(where, 1, 1000000, &number)) return kIllegalSeekTarget;
    if (InPlaylistMode()) {
      PLAYLIST_PlaylistData* track = playlist_->SeekIndexTrackData(static_cast<int32_t>(number - 1));
      if (track == nullptr) return kIllegalSeekTarget;
      const bool keepPlaying = Moving();
      return Load(PlaylistTrack(track), keepPlaying);
    }
    // One URI is one track: only its start can be sought.
    if (number != 1) return kIllegalSeekTarget;
    position = 0;
  } else {
    return kSeekModeNotSupported;
  }

  if (state_ == PLAYER_TransportState::Stopped) {
    // Kept for the next Play, which starts there.
    pendingSeek_ = position;
    return 0;
  }
  if (QueuedTrackWaiting()) {
    // The pipeline has moved on to the next track's input already: a seek now would land in that
    // track. The current one is started again at the position instead.
    const bool keepPlaying = state_ != PLAYER_TransportState::PausedPlayback;
    StopPipeline();
    pendingSeek_ = position;
    SetState(PLAYER_TransportState::Stopped);
    Publish();
    return keepPlaying ? StartPlayback() : 0;
  }
  if (state_ == PLAYER_TransportState::Transitioning) {
    // A stream that has not started yet cannot seek: the position waits for it (OnAsyncDone).
    pendingSeek_ = position;
    return 0;
  }
  HoldGapless();
  const gboolean sought = gst_element_seek_simple(
      pipeline_, GST_FORMAT_TIME, static_cast<GstSeekFlags>(GST_SEEK_FLAG_FLUSH | GST_SEEK_FLAG_ACCURATE),
      position);
  ReleaseGapless();
  // A stream that cannot seek (a radio, a server without ranges) says so.
  if (!sought) return kIllegalSeekTarget;
  WritePosition();
  Publish();
  return 0;
}

int32_t PLAYER_GStreamerPlayer::Next(unsigned long, unsigned long) {
  if (!Ready() || state_ == PLAYER_TransportState::NoMediaPresent) return kTransitionNotAvailable;
  const bool keepPlaying = Moving();
  if (InPlaylistMode()) {
    PLAYLIST_PlaylistData* track = playlist_->Next();
    if (track == nullptr) return kTransitionNotAvailable;
    return Load(PlaylistTrack(track), keepPlaying);
  }
  if (!hasNext_) return kTransitionNotAvailable;
  Track track = next_;
  hasNext_ = false;
  return Load(track, keepPlaying);
}

int32_t PLAYER_GStreamerPlayer::Previous(unsigned long, unsigned long) {
  if (!Ready() || state_ == PLAYER_TransportState::NoMediaPresent) return kTransitionNotAvailable;
  if (!InPlaylistMode()) return kTransitionNotAvailable;
  PLAYLIST_PlaylistData* track = playlist_->Prev();
  if (track == nullptr) return kTransitionNotAvailable;
  const bool keepPlaying = Moving();
  return Load(PlaylistTrack(track), keepPlaying);
}

int32_t PLAYER_GStreamerPlayer::SetPlayMode(unsigned long, unsigned long, DMR_CMN_String* playMode) {
  const std::string mode = TextOf(playMode);
  // A URI is one track, so both repeat modes play it again at its end.
  if (mode != "NORMAL" && mode != "REPEAT_ONE" && mode != "REPEAT_ALL") return kPlayModeNotSupported;
  playMode_ = mode;
  UpdateNextSource();
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_PLAY_MODE, playMode_);
  Publish();
  return 0;
}

int32_t PLAYER_GStreamerPlayer::GetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) {
  if (!Ready() || volume == nullptr) return kInvalidArgs;
  if (mixer_ != nullptr) {
    int level = 0;
    if (!mixer_->GetVolume(&level)) return kActionFailed;
    return volume->SetCString(std::to_string(level).c_str()) == 0 ? 0 : kInvalidArgs;
  }
  gdouble linear = 1.0;
  g_object_get(pipeline_, "volume", &linear, nullptr);
  // Stored linear, shown on the cubic scale people hear as even steps.
  const double cubic = gst_stream_volume_convert_volume(GST_STREAM_VOLUME_FORMAT_LINEAR,
                                                        GST_STREAM_VOLUME_FORMAT_CUBIC, linear);
  const long percent = static_cast<long>(cubic * 100.0 + 0.5);
  return volume->SetCString(std::to_string(percent).c_str()) == 0 ? 0 : kInvalidArgs;
}

int32_t PLAYER_GStreamerPlayer::SetVolume(unsigned long, unsigned long, DMR_CMN_String* volume) {
  if (!Ready()) return kInvalidArgs;
  long percent = 0;
  const std::string text = TextOf(volume);
  if (!ParseInteger(text, 0, 1000000, &percent)) return kInvalidArgs;
  if (percent > 100) return kValueOutOfRange;
  if (mixer_ != nullptr) return mixer_->SetVolume(static_cast<int>(percent)) ? 0 : kActionFailed;
  const double linear = gst_stream_volume_convert_volume(GST_STREAM_VOLUME_FORMAT_CUBIC,
                                                         GST_STREAM_VOLUME_FORMAT_LINEAR, percent / 100.0);
  g_object_set(pipeline_, "volume", linear, nullptr);
  return 0;
}

int32_t PLAYER_GStreamerPlayer::GetMute(unsigned long, unsigned long, DMR_CMN_String* mute) {
  if (!Ready() || mute == nullptr) return kInvalidArgs;
  if (mixer_ != nullptr) {
    bool silent = false;
    if (!mixer_->GetMute(&silent)) return kActionFailed;
    return mute->SetCString(silent ? "1" : "0") == 0 ? 0 : kInvalidArgs;
  }
  gboolean muted = FALSE;
  g_object_get(pipeline_, "mute", &muted, nullptr);
  return mute->SetCString(muted ? "1" : "0") == 0 ? 0 : kInvalidArgs;
}

int32_t PLAYER_GStreamerPlayer::SetMute(unsigned long, unsigned long, DMR_CMN_String* mute) {
  if (!Ready()) return kInvalidArgs;
  const std::string text = TextOf(mute);
  // "1"/"0" as RenderingControl writes booleans; "true"/"false" as some control points send them.
  bool muted = false;
  if (text == "1" || text == "true") {
    muted = true;
  } else if (text != "0" && text != "false") {
    return kInvalidArgs;
  }
  if (mixer_ != nullptr) return mixer_->SetMute(muted) ? 0 : kActionFailed;
  g_object_set(pipeline_, "mute", muted ? TRUE : FALSE, nullptr);
  return 0;
}

// --- Shared steps ---

PLAYER_GStreamerPlayer::Track PLAYER_GStreamerPlayer::PlaylistTrack(const PLAYLIST_PlaylistData* data) const {
  Track track;
  track.uri = data->getUri() != nullptr ? data->getUri() : "";
  track.metadata = data->getMetaData() != nullptr ? data->getMetaData() : "";
  track.playlistId = data->getId();
  track.fromPlaylist = true;
  return track;
}

int32_t PLAYER_GStreamerPlayer::Load(const Track& track, bool keepPlaying) {
  StopPipeline();
  current_ = track;
  errorOccurred_ = false;
  pendingSeek_ = -1;
  durationHint_ = PLAYER_MetaDataDuration(track.metadata);
  ForgetStreamDetails();
  if (track.fromPlaylist && track.playlistId != 0) {
    writer_.SetOpenHome(SINK_UPNP_PLAYLIST_ID, std::to_string(track.playlistId));
  }
  UpdateNextSource();
  SetState(PLAYER_TransportState::Stopped);
  WriteTrackVariables();
  WriteNextVariables();
  WritePosition();
  Publish();
  if (!keepPlaying) return 0;
  return StartPlayback();
}

int32_t PLAYER_GStreamerPlayer::StartPlayback() {
  ForgetQueuedTrack();
  errorOccurred_ = false;
  wantPlaying_ = true;
  g_object_set(pipeline_, "uri", current_.uri.c_str(), nullptr);
  SetState(PLAYER_TransportState::Transitioning);
  Publish();
  g_info("playing %s", current_.uri.c_str());
  attempt_ = Attempt{true, 0};
  // The bound counts from here: building the stream's elements is part of the wait.
  const gint64 deadline =
      g_get_monotonic_time() + static_cast<gint64>(options_.actionTimeoutMilliseconds) * 1000;
  // With a position to start from, the stream is first prerolled paused and sought there (OnAsyncDone).
  const GstStateChangeReturn changed =
      gst_element_set_state(pipeline_, pendingSeek_ >= 0 ? GST_STATE_PAUSED : GST_STATE_PLAYING);
  int32_t result = 0;
  if (changed == GST_STATE_CHANGE_FAILURE) {
    // The element that failed has posted its error already: read what is there, without waiting.
    while (GstMessage* message = gst_bus_pop(bus_)) {
      HandleMessage(message);
      gst_message_unref(message);
    }
    if (attempt_.error == 0) Fail(kResourceNotFound, "the stream cannot be opened");
    result = attempt_.error;
  } else {
    result = AwaitOutcome(deadline);
  }
  attempt_ = Attempt();
  return result;
}

int32_t PLAYER_GStreamerPlayer::AwaitOutcome(gint64 deadline) {
  for (;;) {
    if (attempt_.error != 0) return attempt_.error;
    if (state_ != PLAYER_TransportState::Transitioning) return 0;
    const gint64 remaining = deadline - g_get_monotonic_time();
    if (remaining <= 0) return 0;
    // The bus is read here as the watch would read it, so every message is handled once, in order.
    GstMessage* message = gst_bus_timed_pop(bus_, static_cast<GstClockTime>(remaining) * GST_USECOND);
    if (message == nullptr) return 0;
    HandleMessage(message);
    gst_message_unref(message);
  }
}

void PLAYER_GStreamerPlayer::StopPipeline() {
  wantPlaying_ = false;
  StopSecondsTicks();
  if (pipeline_ == nullptr) return;
  HoldGapless();
  gst_element_set_state(pipeline_, GST_STATE_NULL);
  ReleaseGapless();
  ForgetQueuedTrack();
  {
    std::lock_guard<std::mutex> lock(gaplessMutex_);
    icyStream_ = false;
  }
}
