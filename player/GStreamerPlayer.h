// PLAYER_GStreamerPlayer: SINK_CORE_TransferService on one GStreamer playbin (audio only).
//
// A small state machine driven by the service objects' commands and by the pipeline's bus messages, all
// on the host's main context. It keeps the attached stores true to what plays (PLAYER_StoreWriter),
// events AVTransport's LastChange at most every 200 ms (PLAYER_EventModerator) and the Time service's
// "Seconds" once a second while playing.
//
// Playlist mode: when the OpenHome service attached its playlist before SetAVTransportURI, the player
// moves through that playlist at the end of each track (repeat and shuffle as the playlist keeps them)
// and writes each new track's id to "Id"; with a null playlist it plays the one URI (and the next URI a
// control point set) and stops at its end.
//
// Gapless: the next track is decided when the pipeline asks for it (playbin's about-to-finish, on a
// streaming thread) and joined without a gap; the stores, "Id" and the events move when that track
// really starts (its STREAM_START message on the bus), not before. The playlist is read only on the main
// thread: a streaming thread asks for the next track through the main context and waits a bounded time,
// and gives up at once when the main thread is about to change the pipeline (the cancel flag), in which
// case the player advances at the end of the stream instead.
//
// Waiting: a command that starts a stream waits at most `actionTimeoutMilliseconds` for it to play or
// fail, so that a 404 is answered 716 and an unplayable type 714; past the bound it answers 0 and the
// outcome reaches the stores later ("TransportStatus" "ERROR_OCCURRED", kept until a new URI is set).
#ifndef PLAYER_GSTREAMER_PLAYER_H_
#define PLAYER_GSTREAMER_PLAYER_H_

#include <gst/gst.h>

#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "Clock.h"
#include "EventModerator.h"
#include "StoreWriter.h"
#include "StreamDetails.h"
#include "TransportState.h"
#include "player/Player.h"
#include "sink_core/TransferService.h"

class PLAYER_AlsaMixer;
class PLAYLIST_PlaylistData;

class PLAYER_GStreamerPlayer : public SINK_CORE_TransferService {
 public:
  // Builds the pipeline. `clock` null: timers on `options.context`. Check Ready() before use.
  PLAYER_GStreamerPlayer(const PLAYER_Options& options, PLAYER_Clock* clock, std::string* error);
  ~PLAYER_GStreamerPlayer() override;
  PLAYER_GStreamerPlayer(const PLAYER_GStreamerPlayer&) = delete;
  PLAYER_GStreamerPlayer& operator=(const PLAYER_GStreamerPlayer&) = delete;

  bool Ready() const { return pipeline_ != nullptr; }
  // Why an option was not honoured though the player works ("" when all were): a hardware mixer that
  // cannot be opened leaves the volume in software.
  const std::string& Warning() const { return warning_; }
  // Whether volume and mute act on a hardware mixer element (else on the pipeline's software volume).
  bool HasHardwareMixer() const { return mixer_ != nullptr; }
  PLAYER_TransportState State() const { return state_; }
  // The playbin, for benchmarks that probe it; not for changing it.
  GstElement* Pipeline() const { return pipeline_; }

  // --- SINK_CORE_TransferService ---
  int32_t Initialize(marlo::Properties* properties) override;
  int32_t Finalize() override;
  int32_t StartEngine() override;
  int32_t StopEngine() override;
  int32_t GetVolume(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* volume) override;
  int32_t SetVolume(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* volume) override;
  int32_t SetNextAVTransportURI(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* uri,
                                DMR_CMN_String* metaData) override;
  int32_t AttachOpenHomeStateVariableManager(SINK_UPNP_OpenHomeStateVariableManager* manager) override;
  int32_t AttachStateVariableManager(SINK_UPNP_SinkCTSSStateVariableManager* manager) override;
  int32_t WarnTimeOut(unsigned long id, unsigned long* timeout, const char** text) override;
  int32_t SetAVTransportURI(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* uri,
                            DMR_CMN_String* metaData) override;
  int32_t Play(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* speed) override;
  int32_t Stop(unsigned long actionHandle, unsigned long instanceId) override;
  int32_t Pause(unsigned long actionHandle, unsigned long instanceId) override;
  int32_t Seek(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* unit,
               DMR_CMN_String* target) override;
  int32_t Next(unsigned long actionHandle, unsigned long instanceId) override;
  int32_t Previous(unsigned long actionHandle, unsigned long instanceId) override;
  int32_t GetDeviceCapabilities(unsigned long actionHandle, unsigned long instanceId,
                                DMR_CMN_String* playMedia, DMR_CMN_String* recMedia,
                                DMR_CMN_String* recQualityModes) override;
  int32_t GetMediaInfo(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* nrTracks,
                       DMR_CMN_String* mediaDuration, DMR_CMN_String* currentURI,
                       DMR_CMN_String* currentURIMetaData, DMR_CMN_String* nextURI,
                       DMR_CMN_String* nextURIMetaData, DMR_CMN_String* playMedium,
                       DMR_CMN_String* recordMedium, DMR_CMN_String* writeStatus) override;
  int32_t GetPositionInfo(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* track,
                          DMR_CMN_String* trackDuration, DMR_CMN_String* trackMetaData,
                          DMR_CMN_String* trackURI, DMR_CMN_String* relTime, DMR_CMN_String* absTime,
                          DMR_CMN_String* relCount, DMR_CMN_String* absCount) override;
  int32_t GetTransportInfo(unsigned long actionHandle, unsigned long instanceId,
                           DMR_CMN_String* currentTransportState, DMR_CMN_String* currentTransportStatus,
                           DMR_CMN_String* currentSpeed) override;
  int32_t GetTransportSettings(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* playMode,
                               DMR_CMN_String* recQualityMode) override;
  int32_t GetCurrentTransportActions(unsigned long actionHandle, unsigned long instanceId,
                                     DMR_CMN_String* actions) override;
  int32_t GetCurrentConnectionIDs(unsigned long actionHandle, DMR_CMN_String* connectionIds) override;
  int32_t GetCurrentConnectionInfo(unsigned long actionHandle, DMR_CMN_String* connectionId,
                                   DMR_CMN_String* rcsId, DMR_CMN_String* avTransportId,
                                   DMR_CMN_String* protocolInfo, DMR_CMN_String* peerConnectionManager,
                                   DMR_CMN_String* peerConnectionId, DMR_CMN_String* direction,
                                   DMR_CMN_String* status) override;
  int32_t GetProtocolInfo(unsigned long actionHandle, DMR_CMN_String* source, DMR_CMN_String* sink) override;
  int32_t SetPlayMode(unsigned long actionHandle, unsigned long instanceId,
                      DMR_CMN_String* playMode) override;
  int32_t GetMute(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* mute) override;
  int32_t SetMute(unsigned long actionHandle, unsigned long instanceId, DMR_CMN_String* mute) override;
  int32_t AttachPlaylistManager(PLAYLIST_PlaylistManager* playlistManager) override;

 private:
  // One playable item: an AVTransport URI, or a playlist track (with its id).
  struct Track {
    std::string uri;
    std::string metadata;
    uint64_t playlistId = 0;
    bool fromPlaylist = false;
  };
  // Where the next gapless track comes from; read by the streaming thread under gaplessMutex_.
  enum class NextSource { None, NextUri, RepeatCurrent, Playlist };
  // The streaming thread's request for the playlist's next track, answered on the main thread.
  struct PlaylistQuery;
  // What the command now waiting for the pipeline has seen.
  struct Attempt {
    bool active = false;
    int32_t error = 0;
  };

  // --- commands (GStreamerPlayer.cpp) ---
  // Opens the hardware mixer the options name, if any; on failure sets warning_ and keeps software volume.
  void OpenMixer();
  int32_t Load(const Track& track, bool keepPlaying);
  int32_t StartPlayback();
  void StopPipeline();
  // Reads the bus until the stream plays or fails, or `deadline` (monotonic microseconds) passes.
  int32_t AwaitOutcome(gint64 deadline);
  // Playing, or on its way to: a new track keeps playing.
  bool Moving() const {
    return state_ == PLAYER_TransportState::Playing || state_ == PLAYER_TransportState::Transitioning;
  }
  bool InPlaylistMode() const { return current_.fromPlaylist && playlist_ != nullptr; }
  Track PlaylistTrack(const PLAYLIST_PlaylistData* data) const;

  // --- the stores (GStreamerPlayer_Stores.cpp) ---
  void SetState(PLAYER_TransportState state);
  void WriteTrackVariables();
  void WriteNextVariables();
  void WriteTransportActions();
  void WritePosition();
  void WriteDuration();
  void WriteDetails();
  void Publish();
  void StartSecondsTicks();
  void StopSecondsTicks();
  void SecondsTick();
  int64_t QueryPosition() const;
  int64_t QueryDuration() const;

  // --- the bus (GStreamerPlayer_Bus.cpp) ---
  static gboolean OnBusMessage(GstBus* bus, GstMessage* message, gpointer self);
  void HandleMessage(GstMessage* message);
  void OnError(GstMessage* message);
  // True when `message` comes from the next track's elements, queued but not yet playing: its failure
  // must not cut the track that still plays. Its outcome is then taken when the current track ends.
  bool FromQueuedTrack(GstMessage* message, int32_t code, const std::string& reason);
  void OnQueuedTrackFailed();
  // The stream failed with UPnP error `code`: stopped, "ERROR_OCCURRED" until a new URI, events.
  void Fail(int32_t code, const std::string& reason);
  void OnEndOfStream();
  void OnStateChanged(GstMessage* message);
  void OnAsyncDone();
  void OnStreamStart();
  void OnTags(GstMessage* message);
  void RefreshDetails();
  // A new track: what Info told of the last one (details, Metatext) is cleared in the stores.
  void ForgetStreamDetails();

  // --- gapless (GStreamerPlayer_Gapless.cpp) ---
  static void OnAboutToFinish(GstElement* playbin, gpointer self);
  static void OnSourceSetup(GstElement* playbin, GstElement* source, gpointer self);
  static gboolean AnswerPlaylistQuery(gpointer query);
  void UpdateNextSource();
  void HoldGapless();
  void ReleaseGapless();
  void ForgetQueuedTrack();
  bool QueuedTrackWaiting();
  void CommitQueuedTrack(const Track& track);

  PLAYER_Options options_;
  GMainContext* context_ = nullptr;
  std::unique_ptr<PLAYER_Clock> ownClock_;
  PLAYER_Clock* clock_ = nullptr;
  GstElement* pipeline_ = nullptr;
  GstBus* bus_ = nullptr;
  GSource* busWatch_ = nullptr;
  // The hardware mixer element, when the options name one that could be opened; the pipeline's software
  // volume then stays at 1.0 and unmuted.
  std::unique_ptr<PLAYER_AlsaMixer> mixer_;
  std::string warning_;

  PLAYER_StoreWriter writer_;
  std::unique_ptr<PLAYER_EventModerator> moderator_;
  uint64_t secondsTimer_ = 0;

  // Main-thread state.
  PLAYER_TransportState state_ = PLAYER_TransportState::NoMediaPresent;
  bool errorOccurred_ = false;
  bool stateAwaitingEvent_ = false;  // a transport state change waits in a moderated LastChange
  bool wantPlaying_ = false;
  Track current_;
  Track next_;
  bool hasNext_ = false;
  PLAYLIST_PlaylistManager* playlist_ = nullptr;            // the OpenHome playlist, once attached
  PLAYLIST_PlaylistManager* attachedForNextUri_ = nullptr;  // the last AttachPlaylistManager argument
  std::string playMode_ = "NORMAL";
  int64_t durationHint_ = -1;
  int64_t pendingSeek_ = -1;
  unsigned trackCount_ = 0;
  unsigned detailsCount_ = 0;
  unsigned metatextCount_ = 0;
  PLAYER_StreamDetails details_;
  std::string metatext_;
  Attempt attempt_;

  // Shared with the streaming threads.
  std::mutex gaplessMutex_;
  std::condition_variable gaplessChanged_;
  bool gaplessHeld_ = false;
  NextSource nextSource_ = NextSource::None;
  Track nextForStream_;
  bool hasQueued_ = false;
  Track queued_;
  std::shared_ptr<PlaylistQuery> pendingQuery_;
  std::vector<GSource*> queryIdles_;  // attached to the context, not yet run
  bool icyStream_ = false;
  GstObject* queuedSource_ = nullptr;  // the queued track's source element (a reference)
  // Main thread: the queued track failed with this UPnP error; acted on when the current track ends.
  int32_t queuedFailure_ = 0;
  uint64_t queuedFailureTimer_ = 0;
};

#endif  // PLAYER_GSTREAMER_PLAYER_H_
