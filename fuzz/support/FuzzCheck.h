// FUZZ_CHECK(condition): an invariant of a fuzz target. When it does not hold, the target says which one
// and where on standard error and aborts, which libFuzzer reports as a crash with its reproducer.
#ifndef FUZZ_SUPPORT_FUZZ_CHECK_H_
#define FUZZ_SUPPORT_FUZZ_CHECK_H_

#include <cstdio>
#include <cstdlib>

[[noreturn]] inline void FuzzCheckFailed(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: invariant broken: %s\n", file, line, condition);
  std::abort();
}

#define FUZZ_CHECK(condition) ((condition) ? static_cast<void>(0) : FuzzCheckFailed(#condition, __FILE__, __LINE__))

#endif  // FUZZ_SUPPORT_FUZZ_CHECK_H_
