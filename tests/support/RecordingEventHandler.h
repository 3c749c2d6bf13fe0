// RecordingEventHandler: a marlo::EventHandler that keeps every batch it is handed, for tests.
//
// Batches arrive on an eventing thread's worker; the test thread reads them after WaitForBatches.
#ifndef TESTS_SUPPORT_RECORDING_EVENT_HANDLER_H_
#define TESTS_SUPPORT_RECORDING_EVENT_HANDLER_H_

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "marlo/EventHandler.h"

class RecordingEventHandler : public marlo::EventHandler {
 public:
  using Pair = std::pair<std::string, std::string>;
  using Batch = std::vector<Pair>;

  void HandleEvent(const char* const* names, const char* const* values, long count) override;

  // Waits until at least `count` batches have arrived or `timeout` has passed; true when they have.
  bool WaitForBatches(std::size_t count,
                      std::chrono::milliseconds timeout = std::chrono::milliseconds(5000)) const;

  // A copy of what has arrived so far, in order.
  std::vector<Batch> Batches() const;
  std::size_t BatchCount() const;

  // Called inside HandleEvent before the batch is recorded (to slow the worker down, say).
  void SetOnEvent(void (*hook)(void* context), void* context);

 private:
  mutable std::mutex mutex_;
  mutable std::condition_variable arrived_;
  std::vector<Batch> batches_;
  void (*hook_)(void*) = nullptr;
  void* hookContext_ = nullptr;
};

#endif  // TESTS_SUPPORT_RECORDING_EVENT_HANDLER_H_
