#include <gst/gst.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "player/Player.h"

namespace {

bool Lists(const std::vector<std::string>& entries, const std::string& entry) {
  return std::find(entries.begin(), entries.end(), entry) != entries.end();
}

TEST(PlayerProtocolList, ListsTheFormatsTheInstalledDecodersTake) {
  const std::vector<std::string> entries = PLAYER_SupportedProtocolInfo();
  for (const char* mime :
       {"audio/flac", "audio/x-flac", "audio/mpeg", "audio/ogg", "audio/wav", "audio/x-wav"}) {
    EXPECT_TRUE(Lists(entries, std::string("http-get:*:") + mime + ":*")) << mime;
  }
  EXPECT_TRUE(Lists(entries, "http-get:*:audio/L16;rate=44100;channels=2:*"));
  EXPECT_TRUE(Lists(entries, "http-get:*:audio/L16;rate=48000;channels=1:*"));
}

TEST(PlayerProtocolList, OffersAacOnlyWithAnAacDecoder) {
  const std::vector<std::string> entries = PLAYER_SupportedProtocolInfo();
  bool decoder = false;
  for (const char* name : {"avdec_aac", "faad", "fdkaacdec"}) {
    GstElementFactory* factory = gst_element_factory_find(name);
    if (factory != nullptr) {
      decoder = true;
      gst_object_unref(factory);
    }
  }
  EXPECT_EQ(Lists(entries, "http-get:*:audio/aac:*"), decoder);
}

TEST(PlayerProtocolList, EveryEntryIsAnHttpGetSinkEntry) {
  for (const std::string& entry : PLAYER_SupportedProtocolInfo()) {
    EXPECT_EQ(entry.rfind("http-get:*:audio/", 0) == 0 || entry.rfind("http-get:*:application/", 0) == 0,
              true)
        << entry;
    EXPECT_EQ(entry.substr(entry.size() - 2), ":*") << entry;
  }
}

}  // namespace
