// PLAYER_TestMedia: real media files made for a test, in a temporary directory that lives as long as the
// object (it is removed, with everything in it, on destruction).
//
// Every file is a sine tone made by GStreamer's audiotestsrc in-process and encoded to the requested
// format. The number of sample frames is exact (the source makes exactly that many), and the samples are a
// function of the track's parameters alone: two tracks with different frequencies are told apart, and the
// same parameters give the same samples in every format, so that a lossless file decodes bit for bit to
// the WAV of the same parameters and a played concatenation can be checked against its sources.
//
// Not thread-safe: one test thread uses one object.
#ifndef TESTS_PLAYER_SUPPORT_TEST_MEDIA_H_
#define TESTS_PLAYER_SUPPORT_TEST_MEDIA_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>

enum class PLAYER_MediaFormat { kWav, kFlac, kOggVorbis, kMp3 };

struct PLAYER_TrackParameters {
  PLAYER_MediaFormat format = PLAYER_MediaFormat::kWav;
  // Makes rate * durationMilliseconds / 1000 frames, rounded down.
  int durationMilliseconds = 1000;
  // When nonzero, the exact number of sample frames, in place of durationMilliseconds (for lengths that
  // are not a whole number of milliseconds or buffers).
  std::uint64_t frames = 0;
  int rate = 44100;
  int channels = 2;
  // WAV and FLAC: 16 or 24. The lossy formats are encoded from 16-bit (MP3) or float (Vorbis) samples and
  // ignore it.
  int bits = 16;
  // The tone: give each track of a test its own frequency.
  double frequency = 440.0;
  double volume = 0.5;
  // The file name without its extension; empty: "track-<n>" with a number counting the files made.
  std::string name;
};

struct PLAYER_MediaFile {
  std::string path;
  std::string mimeType;      // the Content-Type to serve it with
  std::uint64_t frames = 0;  // sample frames the encoder was given; see PLAYER_TestMedia::Make
  int rate = 0;
  int channels = 0;
  int bits = 0;
};

class PLAYER_TestMedia {
 public:
  // Creates the directory under $TMPDIR (or /tmp); a test failure if it cannot.
  PLAYER_TestMedia();
  ~PLAYER_TestMedia();

  PLAYER_TestMedia(const PLAYER_TestMedia&) = delete;
  PLAYER_TestMedia& operator=(const PLAYER_TestMedia&) = delete;

  // Makes the file `track` describes, waiting at most `timeout` for the encoder. Returns its path and its
  // exact frame count. WAV and FLAC decode to exactly that many frames; Ogg Vorbis to that many or one more
  // (GStreamer trims the end of a Vorbis stream by time, and the rounding can keep one frame); an MP3 to
  // more (the encoder's delay and padding, which the format does not record). MP3 is constant 128 kbit/s:
  // a variable-rate tone compresses so far that GStreamer's typefinding can take a short piece of it, such
  // as the start of a radio stream, for MPEG-4 video. On failure records a test failure naming the reason
  // (a missing encoder, a bad parameter, the timeout) and returns nothing.
  std::optional<PLAYER_MediaFile> Make(const PLAYER_TrackParameters& track,
                                       std::chrono::milliseconds timeout = std::chrono::seconds(20));

  // A path for a file named `fileName` inside the directory (for a test's own output, such as a recorded
  // WAV), removed with the directory.
  std::string PathFor(const std::string& fileName) const;

  const std::string& Directory() const { return directory_; }

 private:
  std::string directory_;
  unsigned made_ = 0;
};

#endif  // TESTS_PLAYER_SUPPORT_TEST_MEDIA_H_
