// A new private directory under $TMPDIR (else /tmp) for a test's files, named `prefix` plus a unique end.
// Answers "" after reporting a test failure when none can be made.
#ifndef TESTS_PLAYER_SUPPORT_TEMPORARY_DIRECTORY_H_
#define TESTS_PLAYER_SUPPORT_TEMPORARY_DIRECTORY_H_

#include <string>

std::string PLAYER_MakeTemporaryDirectory(const std::string& prefix);

#endif  // TESTS_PLAYER_SUPPORT_TEMPORARY_DIRECTORY_H_
