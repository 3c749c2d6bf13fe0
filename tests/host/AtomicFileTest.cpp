// Replacing a file of the state directory whole: the content, the mode, no temporary file left behind, and
// the leftovers of a writer that was killed removed without touching anything else.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

#include "AtomicFile.h"
#include "TempDirectory.h"

namespace {

int FileCount(const std::string& directory) {
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(directory)) {
    (void)entry;
    ++count;
  }
  return count;
}

}  // namespace

TEST(AtomicFile, ReplaceWritesTheWholeTextWithOwnerOnlyModeAndLeavesNothingElse) {
  TempDirectory directory;
  const std::string path = directory.WriteFile("state.xml", "old");
  std::string error;
  ASSERT_TRUE(HOST_ReplaceFile(path, "new text", &error)) << error;
  EXPECT_EQ(ReadWholeFile(path), "new text");
  struct stat status;
  ASSERT_EQ(::stat(path.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  EXPECT_EQ(FileCount(directory.path()), 1);
}

TEST(AtomicFile, ReplaceInAMissingDirectoryFailsWithTheReason) {
  TempDirectory directory;
  std::string error;
  EXPECT_FALSE(HOST_ReplaceFile(directory.Path("missing/state.xml"), "text", &error));
  EXPECT_EQ(error, "cannot create a temporary file beside '" + directory.Path("missing/state.xml") +
                       "': No such file or directory");
  EXPECT_EQ(FileCount(directory.path()), 0);
}

TEST(AtomicFile, LeftoverTemporariesOfTheFileAloneAreRemoved) {
  TempDirectory directory;
  const std::string path = directory.WriteFile("state.xml", "kept");
  directory.WriteFile("state.xml.a1B2c3", "cut short");
  directory.WriteFile("state.xml.Zz9yX8", "cut short");
  directory.WriteFile("state.xml.bad", "set aside");
  directory.WriteFile("state.xml.a1B2c", "not ours");
  directory.WriteFile("other.xml.a1B2c3", "not ours");
  EXPECT_EQ(HOST_RemoveLeftoverTemporaries(path), 2);
  EXPECT_FALSE(std::filesystem::exists(directory.Path("state.xml.a1B2c3")));
  EXPECT_FALSE(std::filesystem::exists(directory.Path("state.xml.Zz9yX8")));
  EXPECT_EQ(ReadWholeFile(path), "kept");
  EXPECT_EQ(FileCount(directory.path()), 4);
}
