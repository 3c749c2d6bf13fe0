#include "PersistentUdn.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <new>

#include "AtomicFile.h"
#include "Uuid.h"
#include "marlo/Result.h"

namespace {

// Two daemons per configuration is a test or a mistake; sixty-four leaves room and bounds the search.
constexpr int kMaxSlots = 64;
// How often a slot is tried again when its file was replaced between opening and locking it.
constexpr int kMaxAttempts = 8;

std::string SystemError(const std::string& what, const std::string& path, int error) {
  return "cannot " + what + " '" + path + "': " + std::strerror(error);
}

// FNV-1a, 64 bits. On purpose a fixed hash written out here, not std::hash: the file name must stay the
// same across builds and library versions, or an update would make the renderer a new device.
uint64_t Fnv1a(const std::string& text) {
  uint64_t hash = 14695981039346656037ull;
  for (const unsigned char c : text) {
    hash ^= c;
    hash *= 1099511628211ull;
  }
  return hash;
}

std::string Hex(uint64_t value) {
  static const char kHex[] = "0123456789abcdef";
  std::string text(16, '0');
  for (int i = 15; i >= 0; --i, value >>= 4) text[static_cast<std::size_t>(i)] = kHex[value & 0x0f];
  return text;
}

// An interface name as a file name part: letters, digits, '.', '_' and '-' stay, anything else is %XX.
std::string Escaped(const std::string& text) {
  static const char kHex[] = "0123456789ABCDEF";
  std::string escaped;
  for (const unsigned char c : text) {
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '.' || c == '_' ||
        c == '-') {
      escaped += static_cast<char>(c);
    } else {
      escaped += '%';
      escaped += kHex[c >> 4];
      escaped += kHex[c & 0x0f];
    }
  }
  return escaped;
}

// Creates `directory` and its missing parents with mode 0700.
bool MakeDirectories(const std::string& directory, std::string* error) {
  for (std::size_t end = directory.find('/', 1);; end = directory.find('/', end + 1)) {
    const std::string part = directory.substr(0, end);
    if (!part.empty() && ::mkdir(part.c_str(), 0700) != 0 && errno != EEXIST) {
      *error = SystemError("create directory", part, errno);
      return false;
    }
    if (end == std::string::npos) break;
  }
  // mkdir answers EEXIST for a file of that name too.
  struct stat status;
  if (::stat(directory.c_str(), &status) != 0) {
    *error = SystemError("create directory", directory, errno);
    return false;
  }
  if (!S_ISDIR(status.st_mode)) {
    *error = SystemError("create directory", directory, ENOTDIR);
    return false;
  }
  return true;
}

// The UUID a file holds: its text without a final line end, when that is a UUID.
bool ReadUuid(int descriptor, std::string* uuid) {
  char buffer[64];
  ssize_t length;
  do {
    length = ::pread(descriptor, buffer, sizeof(buffer), 0);
  } while (length < 0 && errno == EINTR);
  if (length <= 0) return false;
  std::string text(buffer, static_cast<std::size_t>(length));
  if (!text.empty() && text.back() == '\n') text.pop_back();
  if (!HOST_IsUuidText(text)) return false;
  uuid->swap(text);
  return true;
}

}  // namespace

std::string HOST_IdentityFileName(const std::string& configFile, const std::string& interfaceName,
                                  uint16_t port) {
  std::string name = "udn-" + (configFile.empty() ? std::string("default") : Hex(Fnv1a(configFile)));
  if (!interfaceName.empty()) name += "-i" + Escaped(interfaceName);
  return name + "-p" + std::to_string(port);
}

bool HOST_NewRandomUdn(std::string* udn) {
  std::string uuid;
  if (!HOST_NewRandomUuid(&uuid)) return false;
  *udn = "uuid:" + uuid;
  return true;
}

HOST_PersistentUdn::HOST_PersistentUdn() : descriptor_(-1) {}

HOST_PersistentUdn::~HOST_PersistentUdn() { Release(); }

const std::string& HOST_PersistentUdn::GetUdn() const { return udn_; }

const std::string& HOST_PersistentUdn::GetPath() const { return path_; }

void HOST_PersistentUdn::Release() {
  if (descriptor_ >= 0) ::close(descriptor_);  // closing the last descriptor releases the flock
  descriptor_ = -1;
  udn_.clear();
  path_.clear();
}

int32_t HOST_PersistentUdn::Acquire(const std::string& stateDirectory, const std::string& configFile,
                                     const std::string& interfaceName, uint16_t port, std::string* error) {
  Release();
  std::string ignored;
  std::string* why = error != nullptr ? error : &ignored;
  try {
    if (stateDirectory.empty()) {
      *why = "no state directory";
      return marlo::kErrorFailure;
    }
    if (!MakeDirectories(stateDirectory, why)) return marlo::kErrorFailure;
    const std::string base = stateDirectory + "/" + HOST_IdentityFileName(configFile, interfaceName, port);
    for (int slot = 1; slot <= kMaxSlots; ++slot) {
      const std::string path = slot == 1 ? base : base + "-" + std::to_string(slot);
      switch (TrySlot(path, why)) {
        case SlotOutcome::Taken:
          return marlo::kOk;
        case SlotOutcome::Failed:
          Release();
          return marlo::kErrorFailure;
        case SlotOutcome::Held:
          break;
      }
    }
    *why = "all " + std::to_string(kMaxSlots) + " identities '" + base + "...' are held by other processes";
  } catch (const std::bad_alloc&) {
    Release();
    *why = "no memory for the device's identity";
  }
  return marlo::kErrorFailure;
}

HOST_PersistentUdn::SlotOutcome HOST_PersistentUdn::TrySlot(const std::string& path, std::string* error) {
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
      *error = SystemError("open", path, errno);
      return SlotOutcome::Failed;
    }
    if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
      const int reason = errno;
      ::close(descriptor);
      if (reason == EWOULDBLOCK) return SlotOutcome::Held;
      *error = SystemError("lock", path, reason);
      return SlotOutcome::Failed;
    }
    // The holder before us may have renamed a new file over the path between our open and our lock: then
    // we hold a file that is no longer there, and must try the one that is.
    struct stat held;
    struct stat named;
    if (::fstat(descriptor, &held) != 0 || ::stat(path.c_str(), &named) != 0 || held.st_dev != named.st_dev ||
        held.st_ino != named.st_ino) {
      ::close(descriptor);
      continue;
    }
    descriptor_ = descriptor;
    std::string uuid;
    if (!ReadUuid(descriptor_, &uuid) && !Replace(path, &uuid, error)) return SlotOutcome::Failed;
    udn_ = "uuid:" + uuid;
    path_ = path;
    return SlotOutcome::Taken;
  }
  *error = "'" + path + "' keeps being replaced by another process";
  return SlotOutcome::Failed;
}

bool HOST_PersistentUdn::Replace(const std::string& path, std::string* uuid, std::string* error) {
  if (!HOST_NewRandomUuid(uuid)) {
    *error = SystemError("make a random UUID for", path, errno);
    return false;
  }
  // The slot's lock is ours, so no other process writes this temporary name.
  const std::string temporary = path + ".new";
  ::unlink(temporary.c_str());
  const int descriptor = ::open(temporary.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
  if (descriptor < 0) {
    *error = SystemError("create", temporary, errno);
    return false;
  }
  const char* failed = nullptr;
  if (::flock(descriptor, LOCK_EX | LOCK_NB) != 0) {
    failed = "lock";
  } else if (!HOST_WriteAll(descriptor, *uuid + "\n") || ::fsync(descriptor) != 0) {
    failed = "write";
  } else if (::rename(temporary.c_str(), path.c_str()) != 0) {
    failed = "rename into place";
  }
  if (failed != nullptr) {
    *error = SystemError(failed, temporary, errno);
    ::close(descriptor);
    ::unlink(temporary.c_str());
    return false;
  }
  HOST_SyncDirectoryOf(path);
  // The old file's lock goes with its descriptor; the new file, locked, is the one at the path now.
  ::close(descriptor_);
  descriptor_ = descriptor;
  return true;
}
