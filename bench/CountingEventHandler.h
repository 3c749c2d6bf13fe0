// CountingEventHandler: a marlo::EventHandler that only counts batches, so that a benchmark can wait for
// its eventing thread to deliver everything before tearing it down.
#ifndef BENCH_COUNTING_EVENT_HANDLER_H_
#define BENCH_COUNTING_EVENT_HANDLER_H_

#include <condition_variable>
#include <mutex>

#include "marlo/EventHandler.h"

class CountingEventHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const*, const char* const*, long) override {
    std::lock_guard<std::mutex> guard(mutex_);
    ++delivered_;
    changed_.notify_all();
  }

  // Waits until `count` batches have been delivered.
  void WaitFor(long count) {
    std::unique_lock<std::mutex> lock(mutex_);
    changed_.wait(lock, [&] { return delivered_ >= count; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  long delivered_ = 0;
};

#endif  // BENCH_COUNTING_EVENT_HANDLER_H_
