#include "marlo/Properties.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <string>

#include "ScopedAllocationFailure.h"
#include "marlo/Result.h"

namespace {

const std::string kDataDir = std::string(DMR_TEST_DATA_DIR) + "/properties";

// A file under the temporary directory, removed when the object goes.
class TempFile {
 public:
  TempFile(const char* name, const std::string& content)
      : path_((std::filesystem::temp_directory_path() /
               ("hostobj_" + std::to_string(::getpid()) + "_" + name))
                  .string()) {
    std::FILE* file = std::fopen(path_.c_str(), "wb");
    if (file != nullptr) {
      std::fwrite(content.data(), 1, content.size(), file);
      std::fclose(file);
    }
  }
  ~TempFile() { std::remove(path_.c_str()); }

  const char* path() const { return path_.c_str(); }

 private:
  std::string path_;
};

// The value of `key` as a std::string, "<unset>" when the key is not set, so that EXPECT_EQ prints both.
std::string ValueOf(const marlo::Properties& properties, const char* key) {
  const char* value = properties.GetProperty(key);
  return value == nullptr ? "<unset>" : value;
}

}  // namespace

TEST(Properties, GetPropertyIsNullForAKeyNeverSet) {
  marlo::Properties properties;
  EXPECT_EQ(properties.GetProperty("device.docroot"), nullptr);
}

TEST(Properties, GetPropertyIsNullForANullKey) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.GetProperty(nullptr), nullptr);
}

TEST(Properties, SetPropertyStoresTheValueOfTheKey) {
  marlo::Properties properties;
  EXPECT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, KeysAreCaseSensitive) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.GetProperty("Device.DocRoot"), nullptr);
}

TEST(Properties, SetPropertyReplacesTheEarlierValue) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.SetProperty("device.docroot", "/usr/share/www"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/www");
}

TEST(Properties, SetPropertyAcceptsAnEmptyValue) {
  marlo::Properties properties;
  EXPECT_EQ(properties.SetProperty("device.docroot", ""), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "");
}

TEST(Properties, SetPropertyStoresKeyAndValueAsGivenWithoutTrimming) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty(" key ", " value "), 0);
  EXPECT_EQ(ValueOf(properties, " key "), " value ");
  EXPECT_EQ(properties.GetProperty("key"), nullptr);
}

TEST(Properties, SetPropertyRejectsANullKey) {
  marlo::Properties properties;
  EXPECT_EQ(properties.SetProperty(nullptr, "value"), -1998);
}

TEST(Properties, SetPropertyRejectsAnEmptyKey) {
  marlo::Properties properties;
  EXPECT_EQ(properties.SetProperty("", "value"), -1998);
  EXPECT_EQ(properties.GetProperty(""), nullptr);
}

TEST(Properties, SetPropertyRejectsANullValueAndKeepsTheOldOne) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.SetProperty("device.docroot", nullptr), -1998);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, SetPropertyAnswersNoMemoryAndKeepsTheOldValue) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  int32_t result = 0;
  unsigned long fired = 0;
  {
    ScopedAllocationFailure failure(1, true);
    result = properties.SetProperty("device.docroot", "/a/value/longer/than/the/short/string/buffer");
    fired = failure.Fired();
  }
  EXPECT_EQ(result, -1997);
  EXPECT_GE(fired, 1u);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, SetPropertyOfANewKeyAnswersNoMemoryAndAddsNothing) {
  marlo::Properties properties;
  int32_t result = 0;
  {
    ScopedAllocationFailure failure(1, true);
    result = properties.SetProperty("device.docroot", "/srv/www");
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(properties.GetProperty("device.docroot"), nullptr);
}

TEST(Properties, PointerOfAValueStaysValidWhileOtherKeysAreSet) {
  marlo::Properties properties;
  // A short value lives inside the string object itself, so the test also sees a value that moved.
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  const char* docroot = properties.GetProperty("device.docroot");
  ASSERT_NE(docroot, nullptr);
  for (int i = 0; i < 200; ++i) {
    const std::string key = "sinkctss.protocolInfo_" + std::to_string(i);
    ASSERT_EQ(properties.SetProperty(key.c_str(), "http-get:*:audio/mpeg:*"), 0);
  }
  ASSERT_EQ(properties.LoadText("other.key = a value long enough to need its own allocation\n"), 0);
  EXPECT_STREQ(docroot, "/srv/www");
  EXPECT_EQ(properties.GetProperty("device.docroot"), docroot);
}

TEST(Properties, LoadTextReadsKeyValueLines) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("sinkctss.protocolInfo_0=http-get:*:audio/mpeg:*\n"
                                "device.docroot=/srv/www\n"),
            0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadTextReadsALastLineWithoutLineEnd) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("device.docroot=/srv/www"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadTextSplitsAtTheFirstEqualsSign) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText(
                "sinkctss.protocolInfo_1=http-get:*:audio/flac:DLNA.ORG_PN=FLAC;DLNA.ORG_OP=01\n"),
            0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"), "http-get:*:audio/flac:DLNA.ORG_PN=FLAC;DLNA.ORG_OP=01");
}

TEST(Properties, LoadTextTrimsBlanksAroundKeyAndValue) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("  \tdevice.docroot \t =  /srv/www \t \n"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadTextKeepsBlanksInsideKeyAndValue) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("friendly name = Living Room  Speaker\n"), 0);
  EXPECT_EQ(ValueOf(properties, "friendly name"), "Living Room  Speaker");
}

TEST(Properties, LoadTextAcceptsAnEmptyValue) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("device.docroot =   \n"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "");
}

TEST(Properties, LoadTextSkipsBlankLines) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("\n   \n\t\nsinkctss.protocolInfo_0=http-get:*:audio/mpeg:*\n\n \n"), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
}

TEST(Properties, LoadTextSkipsCommentLinesEvenIndentedOrHoldingEquals) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("# device.docroot=/commented\n"
                                "   \t# sinkctss.protocolInfo_0=commented\n"
                                "#no separator in a comment\n"
                                "sinkctss.protocolInfo_1=http-get:*:audio/mpeg:*\n"),
            0);
  EXPECT_EQ(properties.GetProperty("device.docroot"), nullptr);
  EXPECT_EQ(properties.GetProperty("# device.docroot"), nullptr);
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_0"), nullptr);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"), "http-get:*:audio/mpeg:*");
}

TEST(Properties, LoadTextKeepsAHashInsideAValue) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("device.docroot = /srv/www#1\n"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www#1");
}

TEST(Properties, LoadTextAcceptsCrLfLineEnds) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("# comment\r\n"
                                "\r\n"
                                "sinkctss.protocolInfo_0=http-get:*:audio/mpeg:*\r\n"
                                "device.docroot=/srv/www\r\n"),
            0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadTextOfAnEmptyTextSucceedsAndChangesNothing) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.LoadText(""), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadTextLaterLineOfAKeyReplacesTheEarlierOne) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("device.docroot=/first\ndevice.docroot=/second\n"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/second");
}

TEST(Properties, LoadTextReplacesKeysSetBeforeAndKeepsTheOthers) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  ASSERT_EQ(properties.SetProperty("sinkctss.protocolInfo_0", "http-get:*:audio/mpeg:*"), 0);
  EXPECT_EQ(properties.LoadText("device.docroot=/usr/share/www\n"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/www");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
}

TEST(Properties, SetPropertyAfterLoadTextReplacesTheLoadedValue) {
  marlo::Properties properties;
  ASSERT_EQ(properties.LoadText("device.docroot=/srv/www\n"), 0);
  EXPECT_EQ(properties.SetProperty("device.docroot", "/usr/share/www"), 0);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/www");
}

TEST(Properties, LoadTextRejectsALineWithoutEqualsSignAndKeepsNothingOfTheText) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  EXPECT_EQ(properties.LoadText("device.docroot=/changed\n"
                                "sinkctss.protocolInfo_0=http-get:*:audio/mpeg:*\n"
                                "sinkctss.protocolInfo_1\n"
                                "sinkctss.protocolInfo_2=rtsp-rtp-udp:*:MP3:*\n"),
            -1998);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_0"), nullptr);
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_2"), nullptr);
}

TEST(Properties, LoadTextRejectsAnEmptyKeyAndKeepsNothingOfTheText) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText("device.docroot=/srv/www\n  = value\n"), -1998);
  EXPECT_EQ(properties.GetProperty("device.docroot"), nullptr);
  EXPECT_EQ(properties.GetProperty(""), nullptr);
}

TEST(Properties, LoadTextRejectsNull) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadText(nullptr), -1998);
}

TEST(Properties, LoadTextAnswersNoMemoryAtEveryAllocationAndKeepsNothingOfTheText) {
  const char* const text =
      "sinkctss.protocolInfo_0 = http-get:*:audio/mpeg:*\n"
      "sinkctss.protocolInfo_1 = rtsp-rtp-udp:*:MP3:*\n"
      "device.docroot = /usr/share/renderer/www\n";
  for (unsigned long nth = 1;; ++nth) {
    marlo::Properties properties;
    ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
    int32_t result = 0;
    unsigned long fired = 0;
    {
      ScopedAllocationFailure failure(nth);
      result = properties.LoadText(text);
      fired = failure.Fired();
    }
    if (fired == 0) {
      // Every allocation of the load has failed once; this run went through.
      EXPECT_EQ(result, 0);
      EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/renderer/www");
      EXPECT_GT(nth, 3u);
      break;
    }
    EXPECT_EQ(result, -1997) << "allocation " << nth;
    EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www") << "allocation " << nth;
    EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_0"), nullptr) << "allocation " << nth;
    EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_1"), nullptr) << "allocation " << nth;
  }
}

TEST(Properties, LoadFileReadsARendererConfiguration) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile((kDataDir + "/renderer.properties").c_str()), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_1"),
            "http-get:*:audio/flac:DLNA.ORG_PN=FLAC;DLNA.ORG_OP=01;DLNA.ORG_FLAGS=01700000000000000000000000000000");
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_2"), "rtsp-rtp-udp:*:MP3:*");
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_3"), nullptr);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/renderer/www");
}

TEST(Properties, LoadFileAcceptsCrLfLineEnds) {
  const TempFile file("crlf.properties",
                      "# written on another system\r\n"
                      "sinkctss.protocolInfo_0 = http-get:*:audio/mpeg:*\r\n"
                      "\r\n"
                      "device.docroot = /srv/www\r\n");
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile(file.path()), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_0"), "http-get:*:audio/mpeg:*");
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadFileReadsAFileLargerThanOneReadBuffer) {
  std::string content;
  for (int i = 0; i < 500; ++i) {
    content += "sinkctss.protocolInfo_" + std::to_string(i) + " = http-get:*:audio/mpeg:*\n";
  }
  content += "device.docroot = /srv/www\n";
  const TempFile file("large.properties", content);
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile(file.path()), 0);
  EXPECT_EQ(ValueOf(properties, "sinkctss.protocolInfo_499"), "http-get:*:audio/mpeg:*");
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
}

TEST(Properties, LoadFileWithAMalformedLineKeepsNothingOfTheFile) {
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/usr/share/www"), 0);
  EXPECT_EQ(properties.LoadFile((kDataDir + "/malformed.properties").c_str()), -1998);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/usr/share/www");
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_0"), nullptr);
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_1"), nullptr);
}

TEST(Properties, LoadFileOfAMissingFileFails) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile((kDataDir + "/no-such-file.properties").c_str()), -1999);
}

TEST(Properties, LoadFileOfADirectoryFails) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile(kDataDir.c_str()), -1999);
}

TEST(Properties, LoadFileRejectsANullPath) {
  marlo::Properties properties;
  EXPECT_EQ(properties.LoadFile(nullptr), -1998);
}

TEST(Properties, LoadFileAnswersNoMemoryAndKeepsNothingOfTheFile) {
  const std::string path = kDataDir + "/renderer.properties";
  marlo::Properties properties;
  ASSERT_EQ(properties.SetProperty("device.docroot", "/srv/www"), 0);
  int32_t result = 0;
  {
    ScopedAllocationFailure failure(1, true);
    result = properties.LoadFile(path.c_str());
  }
  EXPECT_EQ(result, -1997);
  EXPECT_EQ(ValueOf(properties, "device.docroot"), "/srv/www");
  EXPECT_EQ(properties.GetProperty("sinkctss.protocolInfo_0"), nullptr);
}

TEST(Properties, ForEachVisitsEveryKeyOnceInKeyOrder) {
  marlo::Properties properties;
  ASSERT_EQ(properties.LoadText("network.port = 8080\ndevice.friendlyName = Kitchen\n"), 0);
  ASSERT_EQ(properties.SetProperty("audio.output", "alsa"), 0);
  ASSERT_EQ(properties.SetProperty("network.port", "0"), 0);
  std::string visited;
  properties.ForEach(
      [&](const char* key, const char* value) { visited += std::string(key) + "=" + value + ";"; });
  EXPECT_EQ(visited, "audio.output=alsa;device.friendlyName=Kitchen;network.port=0;");
}

TEST(Properties, ForEachOfNoPropertiesVisitsNothing) {
  marlo::Properties properties;
  int calls = 0;
  properties.ForEach([&](const char*, const char*) { ++calls; });
  EXPECT_EQ(calls, 0);
}
