#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "StatusJson.h"

using ::testing::HasSubstr;
using ::testing::Not;

namespace {

HOST_StatusReport PlayingReport() {
  HOST_StatusReport report;
  report.running = true;
  report.transportState = "PLAYING";
  report.transportStatus = "OK";
  report.track = {"Blue \"Train\"",
                  "John Coltrane",
                  "Blue Train",
                  "http://10.0.0.2:8200/art/1.jpg",
                  "http://10.0.0.2:8200/m/1.flac",
                  "0:01:05",
                  "0:10:43.000"};
  report.playlist.count = 3;
  report.playlist.tracks = {{7, "One", "A"}, {8, "Two", ""}, {9, "Three", "C"}};
  report.playlist.currentId = 8;
  report.playlist.repeat = true;
  report.volume = 37;
  report.mute = true;
  report.subscriptions = {{"AVTransport", "http://10.0.0.2:4004/event", "10.0.0.2", 1795}};
  report.configuration = {{"friendly name", "Kitchen"}, {"port", "any free port"}};
  report.log = {{4, 1700000000123, HOST_LogLevel::Warning, "port taken"}};
  return report;
}

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
  return count;
}

}  // namespace

TEST(StatusJson, WritesEveryPartOfTheReport) {
  const std::string json = HOST_WriteStatusJson(PlayingReport());
  EXPECT_EQ(json.front(), '{');
  EXPECT_EQ(json.back(), '}');
  EXPECT_THAT(json, HasSubstr(R"("running":true,"transport":{"state":"PLAYING","status":"OK"})"));
  EXPECT_THAT(
      json, HasSubstr(R"("track":{"title":"Blue \"Train\"","artist":"John Coltrane","album":"Blue Train",)"
                      R"("albumArt":"http://10.0.0.2:8200/art/1.jpg","uri":"http://10.0.0.2:8200/m/1.flac",)"
                      R"("position":"0:01:05","duration":"0:10:43.000","positionSeconds":65,)"
                      R"("durationSeconds":643})"));
  EXPECT_THAT(json,
              HasSubstr(R"("playlist":{"count":3,"first":0,"currentId":8,"repeat":true,"shuffle":false,)"
                        R"("tracks":[{"id":7,"title":"One","artist":"A","current":false},)"
                        R"({"id":8,"title":"Two","artist":"","current":true},)"
                        R"({"id":9,"title":"Three","artist":"C","current":false}],"more":0})"));
  EXPECT_THAT(json, HasSubstr(R"("volume":{"volume":37,"mute":true})"));
  EXPECT_THAT(json,
              HasSubstr(R"("subscriptions":{"count":1,"list":[{"service":"AVTransport",)"
                        R"("callback":"http://10.0.0.2:4004/event","from":"10.0.0.2","expiresIn":1795}],)"
                        R"("more":0})"));
  EXPECT_THAT(json, HasSubstr(R"("configuration":[{"name":"friendly name","value":"Kitchen"},)"
                              R"({"name":"port","value":"any free port"}])"));
  EXPECT_THAT(
      json,
      HasSubstr(R"("log":[{"sequence":4,"time":1700000000123,"level":"warning","text":"port taken"}])"));
  EXPECT_THAT(json, HasSubstr(R"("problems":[])"));
}

TEST(StatusJson, UnknownVolumeIsNullAndAStoppedRendererSaysSo) {
  HOST_StatusReport report;
  report.problems = {"GetTransportInfo failed in the service object (-1)"};
  const std::string json = HOST_WriteStatusJson(report);
  EXPECT_THAT(json, HasSubstr(R"("running":false)"));
  EXPECT_THAT(json, HasSubstr(R"("volume":{"volume":null,"mute":false})"));
  EXPECT_THAT(json, HasSubstr(R"("positionSeconds":-1,"durationSeconds":-1)"));
  EXPECT_THAT(json, HasSubstr(R"j("problems":["GetTransportInfo failed in the service object (-1)"])j"));
}

TEST(StatusJson, AlbumArtIsGivenOnlyAsAWebAddress) {
  HOST_StatusReport report = PlayingReport();
  for (const char* refused : {"javascript:alert(1)", "data:image/png;base64,AAAA", "file:///etc/passwd",
                              "//x/y.png", " http://x/y.png"}) {
    report.track.albumArtUri = refused;
    EXPECT_THAT(HOST_WriteStatusJson(report), HasSubstr(R"("albumArt":"",)")) << refused;
  }
  report.track.albumArtUri = "HTTPS://art.example/a.png";
  EXPECT_THAT(HOST_WriteStatusJson(report), HasSubstr(R"("albumArt":"HTTPS://art.example/a.png",)"));
  // A cut address would point at nothing: one that is too long is left out.
  report.track.albumArtUri = "http://x/" + std::string(2000, 'a');
  EXPECT_THAT(HOST_WriteStatusJson(report), HasSubstr(R"("albumArt":"",)"));
}

TEST(StatusJson, TextFromControlPointsIsEscapedAndValidUtf8) {
  HOST_StatusReport report = PlayingReport();
  report.track.title = "</script><b>\xFF\x01";
  report.playlist.tracks[0].title = "line\nbreak \xE2\x80\xA8";
  report.log[0].text = "control point 10.0.0.2 subscribes to /AVTransport/event & <more>";
  const std::string json = HOST_WriteStatusJson(report);
  EXPECT_THAT(json, HasSubstr(R"("title":"\u003c/script\u003e\u003cb\u003e)"
                              "\xEF\xBF\xBD"
                              R"(\u0001")"));
  EXPECT_THAT(json, HasSubstr(R"("title":"line\nbreak \u2028")"));
  EXPECT_THAT(json, HasSubstr(R"(/AVTransport/event \u0026 \u003cmore\u003e")"));
  EXPECT_THAT(json, Not(HasSubstr("<")));
  EXPECT_THAT(json, Not(HasSubstr("\xFF")));
}

TEST(StatusJson, PlaylistWindowSaysHowManyTracksFollowIt) {
  HOST_StatusReport report;
  report.playlist.count = 250;
  report.playlist.first = 40;
  for (uint32_t id = 41; id <= 140; ++id) report.playlist.tracks.push_back({id, "t", ""});
  const std::string json = HOST_WriteStatusJson(report);
  EXPECT_THAT(json, HasSubstr(R"("count":250,"first":40,)"));
  EXPECT_THAT(json, HasSubstr(R"("more":110})"));
}

TEST(StatusJson, StaysWithinItsBoundForTheLargestReport) {
  // Every list far over its cap, every text far over its limit and made of characters that escape to six
  // bytes each.
  const std::string huge(20000, '<');
  HOST_StatusReport report;
  report.running = true;
  report.transportState = report.transportStatus = huge;
  report.track = {huge, huge, huge, "http://" + huge, huge, huge, huge};
  report.playlist.count = 100000;
  for (uint32_t id = 1; id <= 1000; ++id) report.playlist.tracks.push_back({id, huge, huge});
  for (int i = 0; i < 1000; ++i) report.subscriptions.push_back({huge, huge, huge, 1800});
  for (int i = 0; i < 1000; ++i) report.configuration.emplace_back(huge, huge);
  for (uint64_t i = 1; i <= 1000; ++i) report.log.push_back({i, 0, HOST_LogLevel::Info, huge});
  for (int i = 0; i < 1000; ++i) report.problems.push_back(huge);

  const std::string json = HOST_WriteStatusJson(report);
  EXPECT_LE(json.size(), HOST_kStatusJsonMaxBytes);
  EXPECT_GT(json.size(), HOST_kStatusJsonMaxBytes / 2) << "the bound is far from the worst case: lower it";
  EXPECT_EQ(Count(json, R"("current":)"), HOST_kStatusPlaylistCap);
  EXPECT_THAT(json, HasSubstr(R"("more":99900})"));
  EXPECT_EQ(Count(json, R"("expiresIn":)"), HOST_kStatusSubscriptionCap);
  EXPECT_THAT(json, HasSubstr(R"("count":1000,)"));
  EXPECT_THAT(json, HasSubstr(R"("more":950})"));
  EXPECT_EQ(Count(json, R"({"name":)"), HOST_kStatusConfigurationCap);
  EXPECT_EQ(Count(json, R"("sequence":)"), HOST_LogRing::kCapacity);
  // The newest log lines are the ones kept.
  EXPECT_THAT(json, HasSubstr(R"("sequence":1000,)"));
  EXPECT_THAT(json, Not(HasSubstr(R"("sequence":950,)")));
}

TEST(StatusPlaylistWindow, StartsAFewTracksBeforeTheCurrentOneAndNeverPastTheEnd) {
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(0, 0), 0u);
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(100, 99), 0u);  // all of it fits
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(500, 3), 0u);
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(500, 200), 195u);
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(500, 499), 400u);
  EXPECT_EQ(HOST_StatusPlaylistWindowStart(500, 500), 0u);  // no current track
}

TEST(StatusSeconds, ReadsAVTransportTimesAndRefusesAnythingElse) {
  EXPECT_EQ(HOST_StatusSeconds("0:00:00"), 0);
  EXPECT_EQ(HOST_StatusSeconds("0:03:25"), 205);
  EXPECT_EQ(HOST_StatusSeconds("1:00:01.500"), 3601);
  EXPECT_EQ(HOST_StatusSeconds("12:59:59"), 46799);
  for (const char* refused : {"", "NOT_IMPLEMENTED", "0:3:25", "0:60:00", "0:00:60", ":00:00", "0:00:00.",
                              "a:00:00", "0:00:00x", "-1:00:00"})
    EXPECT_EQ(HOST_StatusSeconds(refused), -1) << refused;
}
