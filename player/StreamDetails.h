// PLAYER_StreamDetails: what the OpenHome Info service tells of the playing stream, read from the
// decoded caps and the stream's tags.
#ifndef PLAYER_STREAM_DETAILS_H_
#define PLAYER_STREAM_DETAILS_H_

#include <gst/gst.h>

#include <string>

struct PLAYER_StreamDetails {
  std::string codecName;  // "FLAC", "MP3", "Vorbis", "WAV", ... ("" while unknown)
  bool lossless = false;
  unsigned bitRate = 0;  // bits per second
  unsigned bitDepth = 0;
  unsigned sampleRate = 0;
  unsigned channels = 0;

  bool operator==(const PLAYER_StreamDetails& other) const {
    return codecName == other.codecName && lossless == other.lossless && bitRate == other.bitRate &&
           bitDepth == other.bitDepth && sampleRate == other.sampleRate && channels == other.channels;
  }
  bool operator!=(const PLAYER_StreamDetails& other) const { return !(*this == other); }
};

// Fills the details from the decoded audio caps (rate, channels, depth; either may be null) and the
// stream's tags (codec, bit rate). A lossless stream without a bit-rate tag is given its PCM rate.
PLAYER_StreamDetails PLAYER_ReadStreamDetails(const GstCaps* decodedCaps, const GstTagList* tags);

// The short codec name for a codec or container description ("Free Lossless Audio Codec (FLAC)" →
// "FLAC"); the description itself when it names no codec we know.
std::string PLAYER_ShortCodecName(const std::string& description, bool* lossless);

#endif  // PLAYER_STREAM_DETAILS_H_
