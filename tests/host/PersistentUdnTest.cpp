#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>

#include "PersistentUdn.h"
#include "TempDirectory.h"
#include "Uuid.h"
#include "marlo/Result.h"

namespace {

std::string Contents(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  std::ostringstream text;
  text << stream.rdbuf();
  return text.str();
}

// True for "uuid:" + a version-4, variant-1 UUID in lower case.
bool IsRandomUdn(const std::string& udn) {
  if (udn.rfind("uuid:", 0) != 0 || !HOST_IsUuidText(udn.substr(5))) return false;
  const std::string uuid = udn.substr(5);
  return uuid[14] == '4' && std::string("89ab").find(uuid[19]) != std::string::npos &&
         uuid.find_first_of("ABCDEF") == std::string::npos;
}

// An identity acquired for the default configuration in `directory`; its UDN, or "<failed: reason>".
std::string AcquireDefault(HOST_PersistentUdn* identity, const std::string& directory) {
  std::string error;
  if (identity->Acquire(directory, "", "", 0, &error) != 0) return "<failed: " + error + ">";
  return identity->GetUdn();
}

// Runs `work` in a child process and returns the text it answered. The child uses no test macros: it only
// answers, then ends without running the parent's destructors.
std::string AnswerOfChild(const std::function<std::string()>& work) {
  int pipeEnds[2];
  if (::pipe(pipeEnds) != 0) return "<pipe failed>";
  const pid_t child = ::fork();
  if (child < 0) return "<fork failed>";
  if (child == 0) {
    ::close(pipeEnds[0]);
    const std::string answer = work();
    const ssize_t written = ::write(pipeEnds[1], answer.data(), answer.size());
    ::_exit(written == static_cast<ssize_t>(answer.size()) ? 0 : 1);
  }
  ::close(pipeEnds[1]);
  std::string answer;
  char buffer[512];
  ssize_t count;
  while ((count = ::read(pipeEnds[0], buffer, sizeof(buffer))) > 0) answer.append(buffer, count);
  ::close(pipeEnds[0]);
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFEXITED(status) || WEXITSTATUS(status) != 0) {
    answer += " <child failed>";
  }
  return answer;
}

}  // namespace

TEST(PersistentUdn, UdnIsARandomVersion4Uuid) {
  TempDirectory temp;
  HOST_PersistentUdn identity;
  const std::string udn = AcquireDefault(&identity, temp.path());
  EXPECT_TRUE(IsRandomUdn(udn)) << udn;
  EXPECT_EQ(identity.GetPath(), temp.Path("udn-default-p0"));
  EXPECT_EQ(Contents(identity.GetPath()), udn.substr(5) + "\n");
}

TEST(PersistentUdn, SameConfigurationGivesTheSameUdnAfterARestart) {
  TempDirectory temp;
  std::string first;
  {
    HOST_PersistentUdn identity;
    first = AcquireDefault(&identity, temp.path());
  }
  HOST_PersistentUdn restarted;
  EXPECT_EQ(AcquireDefault(&restarted, temp.path()), first);
  restarted.Release();
  EXPECT_EQ(restarted.GetUdn(), "");
  EXPECT_EQ(AcquireDefault(&restarted, temp.path()), first);
}

TEST(PersistentUdn, TwoHoldersAtOnceGetDifferentUdns) {
  TempDirectory temp;
  HOST_PersistentUdn first;
  HOST_PersistentUdn second;
  const std::string firstUdn = AcquireDefault(&first, temp.path());
  const std::string secondUdn = AcquireDefault(&second, temp.path());
  EXPECT_TRUE(IsRandomUdn(firstUdn)) << firstUdn;
  EXPECT_TRUE(IsRandomUdn(secondUdn)) << secondUdn;
  EXPECT_NE(firstUdn, secondUdn);
  EXPECT_EQ(second.GetPath(), temp.Path("udn-default-p0-2"));

  // Both slots keep their UUIDs: the same two devices come back, in the order they are started.
  first.Release();
  second.Release();
  HOST_PersistentUdn again;
  HOST_PersistentUdn againSecond;
  EXPECT_EQ(AcquireDefault(&again, temp.path()), firstUdn);
  EXPECT_EQ(AcquireDefault(&againSecond, temp.path()), secondUdn);
}

TEST(PersistentUdn, SlotFreedByOneHolderIsTakenByTheNext) {
  TempDirectory temp;
  HOST_PersistentUdn first;
  HOST_PersistentUdn second;
  const std::string firstUdn = AcquireDefault(&first, temp.path());
  AcquireDefault(&second, temp.path());
  first.Release();
  HOST_PersistentUdn third;
  EXPECT_EQ(AcquireDefault(&third, temp.path()), firstUdn);
}

TEST(PersistentUdn, HolderInAnotherProcessMakesThisOneTakeTheNextSlot) {
  TempDirectory temp;
  HOST_PersistentUdn mine;
  const std::string myUdn = AcquireDefault(&mine, temp.path());
  const std::string answer = AnswerOfChild([&] {
    HOST_PersistentUdn theirs;
    const std::string udn = AcquireDefault(&theirs, temp.path());
    return theirs.GetPath() + " " + udn;
  });
  EXPECT_EQ(answer.rfind(temp.Path("udn-default-p0-2") + " uuid:", 0), 0u) << answer;
  EXPECT_EQ(answer.find(myUdn), std::string::npos);
}

TEST(PersistentUdn, EachConfigurationHasItsOwnUdn) {
  TempDirectory temp;
  std::set<std::string> udns;
  const struct {
    const char* configFile;
    const char* interfaceName;
    uint16_t port;
  } kConfigurations[] = {
      {"", "", 0},
      {"/etc/open-renderer.conf", "", 0},
      {"/etc/other.conf", "", 0},
      {"", "eth0", 0},
      {"", "", 49494},
      {"/etc/open-renderer.conf", "eth0", 49494},
  };
  for (const auto& configuration : kConfigurations) {
    HOST_PersistentUdn identity;
    std::string error;
    ASSERT_EQ(identity.Acquire(temp.path(), configuration.configFile, configuration.interfaceName,
                               configuration.port, &error),
              0)
        << error;
    udns.insert(identity.GetUdn());
  }
  EXPECT_EQ(udns.size(), sizeof(kConfigurations) / sizeof(kConfigurations[0]));
}

TEST(PersistentUdn, FileIsNamedAfterTheConfiguration) {
  EXPECT_EQ(HOST_IdentityFileName("", "", 0), "udn-default-p0");
  EXPECT_EQ(HOST_IdentityFileName("", "eth0", 8080), "udn-default-ieth0-p8080");
  EXPECT_EQ(HOST_IdentityFileName("", "eth0:1 x/y", 1), "udn-default-ieth0%3A1%20x%2Fy-p1");
  const std::string named = HOST_IdentityFileName("/etc/open-renderer.conf", "", 0);
  EXPECT_EQ(named.size(), std::string("udn-").size() + 16 + std::string("-p0").size()) << named;
  EXPECT_EQ(named.find_first_not_of("0123456789abcdef", 4), 20u) << named;
  // A fixed hash: the name of a configuration never changes from one build to the next.
  EXPECT_EQ(named, HOST_IdentityFileName("/etc/open-renderer.conf", "", 0));
  EXPECT_EQ(HOST_IdentityFileName("/etc/open-renderer.conf", "", 0), "udn-" + named.substr(4, 16) + "-p0");
  EXPECT_NE(named, HOST_IdentityFileName("/etc/open-renderer.con", "", 0));
}

TEST(PersistentUdn, CorruptFileGetsANewUuid) {
  TempDirectory temp;
  const std::string path = temp.WriteFile("udn-default-p0", "not a uuid at all\n");
  HOST_PersistentUdn identity;
  const std::string udn = AcquireDefault(&identity, temp.path());
  EXPECT_TRUE(IsRandomUdn(udn)) << udn;
  EXPECT_EQ(Contents(path), udn.substr(5) + "\n");
  identity.Release();
  EXPECT_EQ(AcquireDefault(&identity, temp.path()), udn);
}

TEST(PersistentUdn, FileCutShortGetsANewUuid) {
  TempDirectory temp;
  temp.WriteFile("udn-default-p0", "0f8fad5b-d9cb-469f-a165-7086772895");
  HOST_PersistentUdn identity;
  const std::string udn = AcquireDefault(&identity, temp.path());
  EXPECT_TRUE(IsRandomUdn(udn)) << udn;
  EXPECT_EQ(udn.find("0f8fad5b"), std::string::npos);
}

TEST(PersistentUdn, UuidWrittenByHandIsKept) {
  TempDirectory temp;
  temp.WriteFile("udn-default-p0", "0F8FAD5B-D9CB-169F-A165-70867728950E");
  HOST_PersistentUdn identity;
  EXPECT_EQ(AcquireDefault(&identity, temp.path()), "uuid:0F8FAD5B-D9CB-169F-A165-70867728950E");
}

TEST(PersistentUdn, MissingStateDirectoryIsCreatedPrivate) {
  TempDirectory temp;
  const std::string directory = temp.Path("state/open-renderer");
  HOST_PersistentUdn identity;
  EXPECT_TRUE(IsRandomUdn(AcquireDefault(&identity, directory)));
  struct stat status;
  ASSERT_EQ(::stat(directory.c_str(), &status), 0);
  EXPECT_TRUE(S_ISDIR(status.st_mode));
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  ASSERT_EQ(::stat(temp.Path("state").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0700u);
  ASSERT_EQ(::stat(identity.GetPath().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST(PersistentUdn, UnusableStateDirectoryIsAnErrorNamingThePathAndTheReason) {
  TempDirectory temp;
  // A file where a directory should be stops even a process that may write anywhere.
  temp.WriteFile("blocker", "");
  const std::string directory = temp.Path("blocker/open-renderer");
  HOST_PersistentUdn identity;
  std::string error;
  EXPECT_EQ(identity.Acquire(directory, "", "", 0, &error), marlo::kErrorFailure);
  EXPECT_EQ(error, "cannot create directory '" + directory + "': Not a directory");
  EXPECT_EQ(identity.GetUdn(), "");
  EXPECT_EQ(identity.GetPath(), "");
}

TEST(PersistentUdn, StateDirectoryThatIsAFileIsAnError) {
  TempDirectory temp;
  const std::string file = temp.WriteFile("state", "");
  HOST_PersistentUdn identity;
  std::string error;
  EXPECT_EQ(identity.Acquire(file, "", "", 0, &error), marlo::kErrorFailure);
  EXPECT_EQ(error, "cannot create directory '" + file + "': Not a directory");
}

TEST(PersistentUdn, UnwritableStateDirectoryIsAnErrorNamingTheFileAndTheReason) {
  TempDirectory temp;
  const std::string directory = temp.Path("read-only");
  ASSERT_EQ(::chmod(temp.path().c_str(), 0755), 0);
  ASSERT_EQ(::mkdir(directory.c_str(), 0555), 0);
  ASSERT_EQ(::chmod(directory.c_str(), 0555), 0);  // whatever the umask
  // In a child that is no superuser (permissions do not stop one): a user of its own when run as root.
  const std::string answer = AnswerOfChild([&] {
    if (::geteuid() == 0 && ::setuid(65534) != 0) return std::string("setuid failed");
    HOST_PersistentUdn identity;
    std::string error;
    const int32_t result = identity.Acquire(directory, "", "", 0, &error);
    return std::to_string(result) + " " + error + (identity.GetUdn().empty() ? "" : " (has a UDN)");
  });
  EXPECT_EQ(answer, "-1999 cannot open '" + directory + "/udn-default-p0': Permission denied");
}

TEST(PersistentUdn, NoTemporaryFileIsLeftBehind) {
  TempDirectory temp;
  temp.WriteFile("udn-default-p0", "garbage");
  HOST_PersistentUdn identity;
  AcquireDefault(&identity, temp.path());
  struct stat status;
  EXPECT_NE(::stat(temp.Path("udn-default-p0.new").c_str(), &status), 0);
}

TEST(PersistentUdn, RandomUdnsForARunWithoutStateDiffer) {
  std::string first;
  std::string second;
  ASSERT_TRUE(HOST_NewRandomUdn(&first));
  ASSERT_TRUE(HOST_NewRandomUdn(&second));
  EXPECT_TRUE(IsRandomUdn(first)) << first;
  EXPECT_NE(first, second);
}

TEST(Uuid, TextFormIsRecognised) {
  EXPECT_TRUE(HOST_IsUuidText("0f8fad5b-d9cb-469f-a165-70867728950e"));
  EXPECT_FALSE(HOST_IsUuidText("0f8fad5b-d9cb-469f-a165-70867728950"));
  EXPECT_FALSE(HOST_IsUuidText("0f8fad5b-d9cb-469f-a165-70867728950e0"));
  EXPECT_FALSE(HOST_IsUuidText("0f8fad5bd9cb-469f-a165-70867728950e0"));
  EXPECT_FALSE(HOST_IsUuidText("0f8fad5b-d9cb-469f-a165-70867728950g"));
  EXPECT_FALSE(HOST_IsUuidText(""));
}
