// PLAYER_GStreamerPlayer: what it writes into the stores, and when it asks for events.
#include <string>

#include "GStreamerPlayer.h"
#include "TimeText.h"
#include "playlist/PlaylistManager.h"
#include "sink_upnp/OpenHomeStateVariableManager.h"

namespace {

// RelativeCounterPosition and AbsoluteCounterPosition: byte counts the player does not keep.
constexpr const char* kCounterNotKept = "2147483647";

}  // namespace

void PLAYER_GStreamerPlayer::SetState(PLAYER_TransportState state) {
  // Every transport state reaches the subscribers, in order: a state still waiting in a moderated
  // LastChange goes out now rather than be overwritten by the next one (TRANSITIONING by PLAYING, or the
  // STOPPED between two tracks), since control points follow the transport through these events.
  if (state != state_ && stateAwaitingEvent_) moderator_->Flush();
  if (state != state_) stateAwaitingEvent_ = true;
  state_ = state;
  writer_.SetTransport(SINK_UPNP_AVT_TRANSPORT_STATE, PLAYER_TransportStateText(state));
  writer_.SetTransport(SINK_UPNP_AVT_TRANSPORT_STATUS, errorOccurred_ ? "ERROR_OCCURRED" : "OK");
  WriteTransportActions();
}

void PLAYER_GStreamerPlayer::WriteTransportActions() {
  const bool tracks = InPlaylistMode() && playlist_->GetTrackCount() > 0;
  const bool hasNext =
      tracks ? playlist_->GetNextTrackData() != nullptr || playlist_->GetRepeat() == 1 : hasNext_;
  const bool hasPrevious = tracks && playlist_->GetTrackCount() > 1;
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRANSPORT_ACTIONS,
                       PLAYER_TransportActions(state_, hasNext, hasPrevious));
}

void PLAYER_GStreamerPlayer::WriteTrackVariables() {
  const bool present = !current_.uri.empty();
  writer_.SetTransport(SINK_UPNP_AVT_AV_TRANSPORT_URI, current_.uri);
  writer_.SetTransport(SINK_UPNP_AVT_AV_TRANSPORT_URI_METADATA, current_.metadata);
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRACK_URI, current_.uri);
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRACK_METADATA, current_.metadata);
  writer_.SetTransport(SINK_UPNP_AVT_NUMBER_OF_TRACKS, present ? "1" : "0");
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRACK, present ? "1" : "0");
  writer_.SetTransport(SINK_UPNP_AVT_PLAYBACK_STORAGE_MEDIUM, present ? "NETWORK" : "NONE");
  writer_.SetOpenHome(SINK_UPNP_INFO_URI, current_.uri);
  writer_.SetOpenHome(SINK_UPNP_INFO_METADATA, current_.metadata);
  WriteDuration();
}

void PLAYER_GStreamerPlayer::WriteNextVariables() {
  writer_.SetTransport(SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI, hasNext_ ? next_.uri : "");
  writer_.SetTransport(SINK_UPNP_AVT_NEXT_AV_TRANSPORT_URI_METADATA, hasNext_ ? next_.metadata : "");
}

void PLAYER_GStreamerPlayer::WriteDuration() {
  const int64_t duration = QueryDuration();
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_TRACK_DURATION, PLAYER_FormatTime(duration));
  writer_.SetTransport(SINK_UPNP_AVT_CURRENT_MEDIA_DURATION, PLAYER_FormatTime(duration));
  writer_.SetOpenHome(SINK_UPNP_TIME_DURATION, PLAYER_FormatSeconds(duration));
  writer_.SetOpenHome(SINK_UPNP_INFO_DURATION, PLAYER_FormatSeconds(duration));
}

void PLAYER_GStreamerPlayer::WritePosition() {
  const int64_t position = state_ == PLAYER_TransportState::Stopped && pendingSeek_ < 0 ? 0 : QueryPosition();
  const std::string time = PLAYER_FormatTime(position);
  // The positions are stored without an event (AVTransport events them only on request), and so is
  // the counter pair.
  writer_.SetTransport(SINK_UPNP_AVT_RELATIVE_TIME_POSITION, time);
  writer_.SetTransport(SINK_UPNP_AVT_ABSOLUTE_TIME_POSITION, time);
  writer_.SetTransport(SINK_UPNP_AVT_RELATIVE_COUNTER_POSITION, kCounterNotKept);
  writer_.SetTransport(SINK_UPNP_AVT_ABSOLUTE_COUNTER_POSITION, kCounterNotKept);
  writer_.SetOpenHome(SINK_UPNP_TIME_SECONDS, PLAYER_FormatSeconds(position));
}

void PLAYER_GStreamerPlayer::WriteDetails() {
  writer_.SetOpenHome(SINK_UPNP_INFO_DETAILS_COUNT, std::to_string(detailsCount_));
  writer_.SetOpenHome(SINK_UPNP_INFO_BIT_RATE, std::to_string(details_.bitRate));
  writer_.SetOpenHome(SINK_UPNP_INFO_BIT_DEPTH, std::to_string(details_.bitDepth));
  writer_.SetOpenHome(SINK_UPNP_INFO_SAMPLE_RATE, std::to_string(details_.sampleRate));
  writer_.SetOpenHome(SINK_UPNP_INFO_LOSSLESS, details_.lossless ? "true" : "false");
  writer_.SetOpenHome(SINK_UPNP_INFO_CODEC_NAME, details_.codecName);
}

void PLAYER_GStreamerPlayer::Publish() {
  if (writer_.TakeTransportChanged()) {
    moderator_->Changed();
    // A new transport state goes out at once, with whatever waited beside it: it is what a control
    // point waits for after Play or Stop, and 200 ms is long enough to see on its button. The other
    // variables stay moderated.
    if (stateAwaitingEvent_) moderator_->Flush();
  }
  if (!moderator_->Scheduled()) stateAwaitingEvent_ = false;
  // The OpenHome services are evented at once: their changes are few and each matters to the display.
  if (writer_.TakeOpenHomeChanged() && writer_.OpenHomeStore() != nullptr)
    writer_.OpenHomeStore()->SendEvent();
}

int64_t PLAYER_GStreamerPlayer::QueryPosition() const {
  if (pipeline_ == nullptr) return -1;
  gint64 position = -1;
  if (!gst_element_query_position(pipeline_, GST_FORMAT_TIME, &position))
    return pendingSeek_ >= 0 ? pendingSeek_ : -1;
  return position;
}

int64_t PLAYER_GStreamerPlayer::QueryDuration() const {
  gint64 duration = -1;
  if (pipeline_ != nullptr && gst_element_query_duration(pipeline_, GST_FORMAT_TIME, &duration) &&
      duration > 0) {
    return duration;
  }
  // Before the stream has started, the metadata's word for it.
  return durationHint_;
}

// --- Seconds: once a second while playing ---

void PLAYER_GStreamerPlayer::StartSecondsTicks() {
  if (secondsTimer_ != 0) return;
  secondsTimer_ = clock_->Schedule(1000, [this] {
    secondsTimer_ = 0;
    SecondsTick();
  });
}

void PLAYER_GStreamerPlayer::StopSecondsTicks() {
  if (secondsTimer_ == 0) return;
  clock_->Cancel(secondsTimer_);
  secondsTimer_ = 0;
}

void PLAYER_GStreamerPlayer::SecondsTick() {
  if (state_ != PLAYER_TransportState::Playing) return;
  WritePosition();
  // A stream's duration and details may only be known once it has played a little.
  WriteDuration();
  RefreshDetails();
  Publish();
  StartSecondsTicks();
}
