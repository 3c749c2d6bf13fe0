#include "AtomicFile.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

namespace {

// The suffix mkostemp puts in place of "XXXXXX".
constexpr std::size_t kTemporarySuffixLength = 6;

std::string DirectoryOf(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  return slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
}

bool IsTemporaryOf(const std::string& name, const std::string& base) {
  if (name.size() != base.size() + 1 + kTemporarySuffixLength || name.compare(0, base.size(), base) != 0 ||
      name[base.size()] != '.')
    return false;
  for (std::size_t i = base.size() + 1; i < name.size(); ++i) {
    const char c = name[i];
    if (!((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))) return false;
  }
  return true;
}

}  // namespace

bool HOST_WriteAll(int descriptor, const std::string& text) {
  std::size_t written = 0;
  while (written < text.size()) {
    const ssize_t count = ::write(descriptor, text.data() + written, text.size() - written);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return false;
    written += static_cast<std::size_t>(count);
  }
  return true;
}

void HOST_SyncDirectoryOf(const std::string& path) {
  const std::string directory = DirectoryOf(path);
  const int descriptor = ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (descriptor < 0) return;
  ::fsync(descriptor);
  ::close(descriptor);
}

bool HOST_ReplaceFile(const std::string& path, const std::string& text, std::string* error) {
  // mkstemp's unique name: a temporary file left by a process killed mid-write is never reused, and never
  // read, since only `path` is.
  std::string temporary = path + ".XXXXXX";
  const int descriptor = ::mkostemp(temporary.data(), O_CLOEXEC);
  if (descriptor < 0) {
    *error = "cannot create a temporary file beside '" + path + "': " + std::strerror(errno);
    return false;
  }
  const char* failed = nullptr;
  int reason = 0;
  if (::fchmod(descriptor, 0600) != 0) {
    failed = "set the mode of";
  } else if (!HOST_WriteAll(descriptor, text)) {
    failed = "write";
  } else if (::fsync(descriptor) != 0) {
    failed = "flush";
  }
  if (failed != nullptr) reason = errno;
  if (::close(descriptor) != 0 && failed == nullptr) {
    failed = "close";
    reason = errno;
  }
  if (failed == nullptr && ::rename(temporary.c_str(), path.c_str()) != 0) {
    failed = "rename into place";
    reason = errno;
  }
  if (failed != nullptr) {
    *error = std::string("cannot ") + failed + " '" + temporary + "': " + std::strerror(reason);
    ::unlink(temporary.c_str());
    return false;
  }
  HOST_SyncDirectoryOf(path);
  return true;
}

int HOST_RemoveLeftoverTemporaries(const std::string& path) {
  const std::string directory = DirectoryOf(path);
  const std::size_t slash = path.rfind('/');
  const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
  DIR* listing = ::opendir(directory.c_str());
  if (listing == nullptr) return 0;
  int removed = 0;
  while (const dirent* entry = ::readdir(listing)) {
    const std::string name = entry->d_name;
    if (IsTemporaryOf(name, base) && ::unlink((directory + "/" + name).c_str()) == 0) ++removed;
  }
  ::closedir(listing);
  return removed;
}
