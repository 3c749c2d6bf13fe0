// The renderer's player: the application behind both service objects. It implements
// SINK_CORE_TransferService on one GStreamer pipeline, keeps the two state variable stores true to what
// it plays, and moves through the OpenHome playlist on its own at the end of each track.
//
// This is the whole of what a host needs: create the player with its options, hand it to both service
// objects with RegisterTransferService, and run the GLib main context it was given. No GStreamer type
// appears here.
//
// Order: the player's Finalize comes before the host finalizes the service objects (which deletes the
// stores the player writes to); it stops playback and lets go of the stores.
//
// Threads: every operation of the returned transfer service must be called on the thread that runs
// `PLAYER_Options::context` (the host's action thread), one at a time. The player runs its bus watch and
// its timers on that context; its streaming threads never call the host.
#ifndef PLAYER_PLAYER_H_
#define PLAYER_PLAYER_H_

#include <memory>
#include <string>
#include <vector>

class SINK_CORE_TransferService;
typedef struct _GMainContext GMainContext;

// Where the sound goes.
enum class PLAYER_Output {
  Automatic,   // GStreamer's choice of the system's audio output (autoaudiosink)
  Alsa,        // an ALSA device named by `device`, such as "hw:0" or "default"
  PulseAudio,  // a PulseAudio sink named by `device` (empty: the server's default)
  WavFile,     // a WAV file at the path `device`, written in real time
  Null,        // nothing, in real time: position and the end of a track behave as with a speaker
};

struct PLAYER_Options {
  PLAYER_Output output = PLAYER_Output::Automatic;
  std::string device;
  // The longest time an action waits for a stream to start or fail. Past it the action answers and the
  // outcome reaches the stores and the events later.
  int actionTimeoutMilliseconds = 1500;
  // How long an HTTP source waits for a silent server before it gives up with an error.
  int networkTimeoutSeconds = 15;
  std::string userAgent = "OpenRenderer/1.0";
  // The context that runs the bus watch and the timers; null means GLib's global default context.
  GMainContext* context = nullptr;
  // A hardware volume: the ALSA simple-mixer control `mixerControl` ("Master", "PCM", "Digital"; index 0)
  // on the ALSA control device `mixerDevice` ("hw:0", "default"). With both set, GetVolume, SetVolume,
  // GetMute and SetMute act on that control (0..100 on a cubic scale over its decibel range, or linear
  // over its raw range where it has none; mute through its switch, or its minimum where it has none)
  // and the software volume stays at full and unmuted. With both empty, the volume is in software.
  std::string mixerDevice;
  std::string mixerControl;
};

// Creates a player. Answers null, with the reason in *error, when GStreamer or one of the elements the
// options need cannot be had (for example the ALSA output without its plug-in installed).
//
// A hardware mixer that cannot be used (no such device or control, only one of the two named) does not
// fail the creation: the player keeps the volume in software and says why in *warning, for the host to
// log; with a null `warning` the player logs it itself. *warning is emptied when there is nothing to say.
std::unique_ptr<SINK_CORE_TransferService> PLAYER_CreatePlayer(const PLAYER_Options& options,
                                                               std::string* error,
                                                               std::string* warning = nullptr);

// The sink protocol-info entries ("http-get:*:audio/flac:*", ...) of the formats the installed
// GStreamer can really decode, for the "sinkctss.protocolInfo_N" configuration keys.
std::vector<std::string> PLAYER_SupportedProtocolInfo();

#endif  // PLAYER_PLAYER_H_
