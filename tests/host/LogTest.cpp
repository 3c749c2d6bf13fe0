#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <thread>
#include <vector>

#include "Log.h"

namespace {

// Catches the log's lines in a pipe for the life of a test, then gives standard error back and the level
// its default.
class CapturedLog {
 public:
  CapturedLog() {
    if (::pipe2(descriptors_, O_CLOEXEC) != 0) ADD_FAILURE() << "pipe2 failed";
    HOST_SetLogDescriptor(descriptors_[1]);
  }
  ~CapturedLog() {
    HOST_SetLogDescriptor(STDERR_FILENO);
    HOST_SetLogLevel(HOST_LogLevel::Info);
    ::close(descriptors_[0]);
    if (descriptors_[1] >= 0) ::close(descriptors_[1]);
  }

  // Closes the writing end, so that a reader sees the end after everything written so far.
  void CloseWriteEnd() {
    HOST_SetLogDescriptor(STDERR_FILENO);
    if (descriptors_[1] >= 0) ::close(descriptors_[1]);
    descriptors_[1] = -1;
  }

  // Everything written so far (the writing end is closed: nothing more can come).
  std::string Read() {
    CloseWriteEnd();
    std::string text;
    char buffer[4096];
    ssize_t count;
    while ((count = ::read(descriptors_[0], buffer, sizeof(buffer))) > 0) text.append(buffer, count);
    return text;
  }

  int readEnd() const { return descriptors_[0]; }

 private:
  int descriptors_[2] = {-1, -1};
};

}  // namespace

TEST(Log, LineIsPrefixedWithItsLevelWordAndEndsTheLine) {
  CapturedLog log;
  HOST_Log(HOST_LogLevel::Info, "listening on %s (%s) at %s", "eth0", "192.168.1.5",
           "http://192.168.1.5:49152/");
  HOST_Log(HOST_LogLevel::Warning, "port %d taken", 80);
  HOST_Log(HOST_LogLevel::Error, "no network");
  EXPECT_EQ(log.Read(),
            "info: listening on eth0 (192.168.1.5) at http://192.168.1.5:49152/\n"
            "warning: port 80 taken\n"
            "error: no network\n");
}

TEST(Log, DefaultLevelWritesInfoButNotDebug) {
  CapturedLog log;
  EXPECT_TRUE(HOST_LogEnabled(HOST_LogLevel::Info));
  EXPECT_FALSE(HOST_LogEnabled(HOST_LogLevel::Debug));
  HOST_Log(HOST_LogLevel::Debug, "action Play");
  HOST_Log(HOST_LogLevel::Info, "started");
  EXPECT_EQ(log.Read(), "info: started\n");
}

TEST(Log, VerboseLevelWritesDebug) {
  CapturedLog log;
  HOST_SetLogLevel(HOST_LogLevel::Debug);
  HOST_Log(HOST_LogLevel::Debug, "action %s", "Play");
  EXPECT_EQ(log.Read(), "debug: action Play\n");
}

TEST(Log, QuietLevelWritesWarningsAndErrorsOnly) {
  CapturedLog log;
  HOST_SetLogLevel(HOST_LogLevel::Warning);
  EXPECT_FALSE(HOST_LogEnabled(HOST_LogLevel::Info));
  HOST_Log(HOST_LogLevel::Info, "started");
  HOST_Log(HOST_LogLevel::Warning, "slow");
  HOST_Log(HOST_LogLevel::Error, "failed");
  EXPECT_EQ(log.Read(), "warning: slow\nerror: failed\n");
}

TEST(Log, ControlCharactersCannotStartANewLine) {
  CapturedLog log;
  HOST_Log(HOST_LogLevel::Info, "uri %s", "http://h/a\nerror: forged\r\x1b[31m\tend");
  EXPECT_EQ(log.Read(), "info: uri http://h/a?error: forged??[31m\tend\n");
}

TEST(Log, LongMessageIsCutAndMarked) {
  CapturedLog log;
  const std::string longText(5000, 'x');
  HOST_Log(HOST_LogLevel::Info, "%s", longText.c_str());
  EXPECT_EQ(log.Read(), "info: " + std::string(4000, 'x') + "...\n");
}

TEST(Log, MessageOfExactlyTheLimitIsWhole) {
  CapturedLog log;
  const std::string text(4000, 'y');
  HOST_Log(HOST_LogLevel::Info, "%s", text.c_str());
  EXPECT_EQ(log.Read(), "info: " + text + "\n");
}

TEST(Log, LinesFromManyThreadsNeverInterleave) {
  CapturedLog log;
  constexpr int kThreads = 4;
  constexpr int kLines = 200;
  // Read while writing: the pipe's buffer would not hold every line.
  std::string text;
  std::thread reader([&] {
    char buffer[4096];
    ssize_t count;
    while ((count = ::read(log.readEnd(), buffer, sizeof(buffer))) > 0) text.append(buffer, count);
  });
  std::vector<std::thread> writers;
  for (int t = 0; t < kThreads; ++t) {
    writers.emplace_back([t] {
      const std::string payload(300 + 100 * t, static_cast<char>('a' + t));
      for (int i = 0; i < kLines; ++i) HOST_Log(HOST_LogLevel::Info, "%d %s", t, payload.c_str());
    });
  }
  for (auto& writer : writers) writer.join();
  log.CloseWriteEnd();
  reader.join();

  int count = 0;
  std::size_t start = 0;
  for (std::size_t end; (end = text.find('\n', start)) != std::string::npos; start = end + 1, ++count) {
    const std::string line = text.substr(start, end - start);
    ASSERT_GE(line.size(), 8u);
    const int t = line[6] - '0';
    ASSERT_TRUE(t >= 0 && t < kThreads) << line.substr(0, 20);
    EXPECT_EQ(line,
              "info: " + std::to_string(t) + " " + std::string(300 + 100 * t, static_cast<char>('a' + t)));
  }
  EXPECT_EQ(start, text.size());
  EXPECT_EQ(count, kThreads * kLines);
}
