// Stopwatch: elapsed time in whole milliseconds, a number that a failing expectation prints readably.
#ifndef TESTS_PLAYER_SUPPORT_STOPWATCH_H_
#define TESTS_PLAYER_SUPPORT_STOPWATCH_H_

#include <chrono>

class Stopwatch {
 public:
  Stopwatch() : start_(std::chrono::steady_clock::now()) {}

  long long Milliseconds() const {
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - start_)
        .count();
  }

 private:
  std::chrono::steady_clock::time_point start_;
};

#endif  // TESTS_PLAYER_SUPPORT_STOPWATCH_H_
