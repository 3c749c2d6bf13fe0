#include "AtomicFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

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
  const std::size_t slash = path.rfind('/');
  const std::string directory = slash == std::string::npos ? "." : slash == 0 ? "/" : path.substr(0, slash);
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
