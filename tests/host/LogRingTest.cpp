#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <thread>
#include <vector>

#include "Log.h"
#include "LogRing.h"

namespace {

void Add(HOST_LogRing& ring, const std::string& text, HOST_LogLevel level = HOST_LogLevel::Info) {
  ring.Add(level, text.data(), text.size());
}

// Sends the log's lines to /dev/null for the life of a test, then gives standard error back and the level
// its default.
class QuietLog {
 public:
  QuietLog() : descriptor_(::open("/dev/null", O_WRONLY | O_CLOEXEC)) { HOST_SetLogDescriptor(descriptor_); }
  ~QuietLog() {
    HOST_SetLogDescriptor(STDERR_FILENO);
    HOST_SetLogLevel(HOST_LogLevel::Info);
    ::close(descriptor_);
  }

 private:
  int descriptor_;
};

}  // namespace

TEST(LogRing, KeepsTheNewestLinesOldestFirstWithTheirLevels) {
  HOST_LogRing ring;
  EXPECT_TRUE(ring.Lines().empty());
  Add(ring, "first", HOST_LogLevel::Error);
  Add(ring, "second", HOST_LogLevel::Warning);
  std::vector<HOST_LogRing::Line> lines = ring.Lines();
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0].text, "first");
  EXPECT_EQ(lines[0].level, HOST_LogLevel::Error);
  EXPECT_EQ(lines[0].sequence, 1u);
  EXPECT_EQ(lines[1].text, "second");
  EXPECT_EQ(lines[1].level, HOST_LogLevel::Warning);
  EXPECT_GT(lines[1].unixMilliseconds, 1600000000000);

  for (int i = 3; i <= 120; ++i) Add(ring, "line " + std::to_string(i));
  lines = ring.Lines();
  ASSERT_EQ(lines.size(), HOST_LogRing::kCapacity);
  EXPECT_EQ(ring.Added(), 120u);
  EXPECT_EQ(lines.front().text, "line 71");
  EXPECT_EQ(lines.front().sequence, 71u);
  EXPECT_EQ(lines.back().text, "line 120");
  EXPECT_EQ(lines.back().sequence, 120u);
}

TEST(LogRing, CutsALongLineAtACharacterBoundaryAndMarksTheCut) {
  HOST_LogRing ring;
  Add(ring, std::string(HOST_LogRing::kMaxText, 'a'));
  Add(ring, std::string(HOST_LogRing::kMaxText + 1, 'b'));
  // A two-byte "é" across the limit goes whole or not at all.
  Add(ring, std::string(HOST_LogRing::kMaxText - 1, 'c') + "\xC3\xA9" + "tail");
  const std::vector<HOST_LogRing::Line> lines = ring.Lines();
  ASSERT_EQ(lines.size(), 3u);
  EXPECT_EQ(lines[0].text, std::string(HOST_LogRing::kMaxText, 'a'));
  EXPECT_EQ(lines[1].text, std::string(HOST_LogRing::kMaxText, 'b') + "...");
  EXPECT_EQ(lines[2].text, std::string(HOST_LogRing::kMaxText - 1, 'c') + "...");
}

TEST(LogRing, ConcurrentWritersAndAReaderSeeOnlyWholeLinesInOrder) {
  HOST_LogRing ring;
  constexpr int kWriters = 4;
  constexpr int kLinesEach = 5000;
  std::atomic<bool> writing{true};
  std::atomic<int> badSnapshots{0};
  std::thread reader([&] {
    while (writing.load()) {
      const std::vector<HOST_LogRing::Line> lines = ring.Lines();
      if (lines.size() > HOST_LogRing::kCapacity) ++badSnapshots;
      for (std::size_t i = 0; i < lines.size(); ++i) {
        // Each writer's line is its number repeated: a torn line would mix two numbers.
        const std::string& text = lines[i].text;
        if (text.size() != 200 || text.find_first_not_of(text[0]) != std::string::npos) ++badSnapshots;
        if (i > 0 && lines[i].sequence != lines[i - 1].sequence + 1) ++badSnapshots;
      }
    }
  });
  std::vector<std::thread> writers;
  for (int w = 0; w < kWriters; ++w)
    writers.emplace_back([&ring, w] {
      const std::string text(200, static_cast<char>('0' + w));
      for (int i = 0; i < kLinesEach; ++i) Add(ring, text);
    });
  for (std::thread& writer : writers) writer.join();
  writing.store(false);
  reader.join();
  EXPECT_EQ(badSnapshots.load(), 0);
  EXPECT_EQ(ring.Added(), static_cast<uint64_t>(kWriters * kLinesEach));
  EXPECT_EQ(ring.Lines().size(), HOST_LogRing::kCapacity);
}

TEST(LogRing, HostLogKeepsInfoAndAboveWhateverLevelItWrites) {
  QuietLog quiet;
  HOST_SetLogLevel(HOST_LogLevel::Warning);
  const uint64_t before = HOST_RecentLog().Added();
  HOST_Log(HOST_LogLevel::Info, "ring test: %s at info", "kept");
  HOST_Log(HOST_LogLevel::Debug, "ring test: dropped at debug");
  HOST_SetLogLevel(HOST_LogLevel::Debug);
  HOST_Log(HOST_LogLevel::Debug, "ring test: dropped at debug even when written");
  HOST_Log(HOST_LogLevel::Error, "ring test: line\nbreak");
  const std::vector<HOST_LogRing::Line> lines = HOST_RecentLog().Lines();
  ASSERT_EQ(HOST_RecentLog().Added(), before + 2);
  EXPECT_EQ(lines[lines.size() - 2].text, "ring test: kept at info");
  EXPECT_EQ(lines[lines.size() - 2].level, HOST_LogLevel::Info);
  // The same text as the written line: a control character is '?'.
  EXPECT_EQ(lines.back().text, "ring test: line?break");
  EXPECT_EQ(lines.back().level, HOST_LogLevel::Error);
}
