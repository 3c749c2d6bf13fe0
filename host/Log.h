// The daemon's log: one line per event worth knowing, to standard error, prefixed with its level word
// ("info: listening on eth0 (192.168.1.5) at http://..."). No timestamps: the journal (or whoever reads
// standard error) adds them.
//
// Thread-safety: every function may be called from any thread. Each line goes out in one write(2), so lines
// from different threads never interleave within a line.
#ifndef HOST_LOG_H_
#define HOST_LOG_H_

enum class HOST_LogLevel {
  Error,    // the daemon cannot do what it was asked
  Warning,  // something is wrong, the daemon goes on
  Info,     // what a person running the daemon wants to see: start, addresses, the device's name
  Debug,    // every action and event
};

// The word a line of `level` begins with ("error", "warning", "info", "debug"), which the status page
// shows too.
const char* HOST_LogLevelWord(HOST_LogLevel level);

// The most detailed level written; lines of a more detailed level are dropped. Set once at start
// (--quiet: Warning, the default: Info, --verbose: Debug); Info until then.
void HOST_SetLogLevel(HOST_LogLevel level);

// True when a line of `level` would be written: lets a caller skip building an expensive message.
bool HOST_LogEnabled(HOST_LogLevel level);

// Writes "<level word>: <message>\n", the message formatted as by printf. A message longer than 4000 bytes
// is cut there and marked with "..."; a control character in it (a line end in a URI a control point sent,
// say) becomes '?', so that one call is always exactly one line.
void HOST_Log(HOST_LogLevel level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Where the lines go: a file descriptor, standard error (2) until set. For tests, which read the lines back
// from a pipe; the descriptor stays the caller's to close, after setting another one.
void HOST_SetLogDescriptor(int descriptor);

#endif  // HOST_LOG_H_
