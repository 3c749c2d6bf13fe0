#include "Log.h"

#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "LogRing.h"

namespace {

std::atomic<int> gLevel{static_cast<int>(HOST_LogLevel::Info)};
std::atomic<int> gDescriptor{STDERR_FILENO};

// The longest message kept whole. On purpose a fixed buffer on the stack: logging never allocates, so it
// works when memory has run out; and a whole line (at most 4013 bytes) stays under PIPE_BUF (4096), so that
// one write of it into a pipe is atomic even when other processes write there too.
constexpr std::size_t kMaxMessage = 4000;

// Writes all of `size` bytes, going on after a signal or a short write.
void WriteAll(int descriptor, const char* bytes, std::size_t size) {
  while (size > 0) {
    const ssize_t written = ::write(descriptor, bytes, size);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return;  // Nowhere to report a failing log; the line is lost.
    bytes += written;
    size -= static_cast<std::size_t>(written);
  }
}

}  // namespace

const char* HOST_LogLevelWord(HOST_LogLevel level) {
  switch (level) {
    case HOST_LogLevel::Error:
      return "error";
    case HOST_LogLevel::Warning:
      return "warning";
    case HOST_LogLevel::Info:
      return "info";
    case HOST_LogLevel::Debug:
      return "debug";
  }
  return "log";
}

void HOST_SetLogLevel(HOST_LogLevel level) { gLevel.store(static_cast<int>(level)); }

bool HOST_LogEnabled(HOST_LogLevel level) { return static_cast<int>(level) <= gLevel.load(); }

void HOST_SetLogDescriptor(int descriptor) { gDescriptor.store(descriptor); }

void HOST_Log(HOST_LogLevel level, const char* format, ...) {
  // Lines of level Info and above also go to the status page's ring, whatever the level written.
  const bool kept = level <= HOST_LogLevel::Info;
  if ((!HOST_LogEnabled(level) && !kept) || format == nullptr) return;

  // "warning: " + message + "..." + "\n" + the terminator vsnprintf writes.
  char line[16 + kMaxMessage + 5];
  const int prefix = std::snprintf(line, sizeof(line), "%s: ", HOST_LogLevelWord(level));
  char* message = line + prefix;

  va_list arguments;
  va_start(arguments, format);
  const int wanted = std::vsnprintf(message, kMaxMessage + 1, format, arguments);
  va_end(arguments);
  std::size_t length = wanted < 0 ? 0 : static_cast<std::size_t>(wanted);
  if (length > kMaxMessage) {
    std::memcpy(message + kMaxMessage, "...", 3);
    length = kMaxMessage + 3;
  }
  for (std::size_t i = 0; i < length; ++i) {
    const unsigned char c = static_cast<unsigned char>(message[i]);
    if ((c < 0x20 && c != '\t') || c == 0x7f) message[i] = '?';
  }
  if (kept) HOST_RecentLog().Add(level, message, length);
  if (!HOST_LogEnabled(level)) return;
  message[length] = '\n';
  WriteAll(gDescriptor.load(), line, static_cast<std::size_t>(prefix) + length + 1);
}
