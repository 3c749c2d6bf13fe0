// Writing a file of the state directory so that a reader, even after a crash or a power cut at any
// moment, finds either the old content whole or the new content whole, never a mix or a cut.
//
// HOST_ReplaceFile writes a temporary file beside `path` (same directory, so that the rename stays on one
// file system), flushes it to disk, renames it over `path`, and flushes the directory so that the rename
// itself is durable. Not thread-safe for one path: one writer per file (the daemon's main loop).
#ifndef HOST_ATOMIC_FILE_H_
#define HOST_ATOMIC_FILE_H_

#include <string>

// Writes all of `text` to `descriptor`, carrying on after EINTR and short writes. False on an error
// (errno tells which).
bool HOST_WriteAll(int descriptor, const std::string& text);

// Flushes the directory that holds `path` to disk (the entry of a rename made there); the rename stands
// without it, only less durably, so failures are ignored.
void HOST_SyncDirectoryOf(const std::string& path);

// Replaces `path` by a file holding `text`, mode 0600. False with *error naming the step, the file and the
// system's reason; `path` is then untouched and the temporary file removed.
bool HOST_ReplaceFile(const std::string& path, const std::string& text, std::string* error);

// Removes the temporary files HOST_ReplaceFile made beside `path` and never renamed (a process killed while
// writing leaves one). Only for a file that one process alone writes, so that every such temporary file is
// a dead writer's. Answers how many were removed.
int HOST_RemoveLeftoverTemporaries(const std::string& path);

#endif  // HOST_ATOMIC_FILE_H_
