// QuietEventHandler: a marlo::EventHandler that takes every batch and keeps nothing, standing in for the
// host's subscribers so that the eventing threads run as in the daemon without the fuzz targets printing.
// It still reads every pair, so that a batch handed on with a bad pointer is caught by AddressSanitizer.
#ifndef FUZZ_SUPPORT_QUIET_EVENT_HANDLER_H_
#define FUZZ_SUPPORT_QUIET_EVENT_HANDLER_H_

#include <atomic>
#include <cstring>

#include "marlo/EventHandler.h"

class QuietEventHandler : public marlo::EventHandler {
 public:
  void HandleEvent(const char* const* names, const char* const* values, long count) override {
    std::size_t length = 0;
    for (long i = 0; i < count; ++i) length += std::strlen(names[i]) + std::strlen(values[i]);
    bytes_.fetch_add(length, std::memory_order_relaxed);
  }

 private:
  std::atomic<std::size_t> bytes_{0};
};

#endif  // FUZZ_SUPPORT_QUIET_EVENT_HANDLER_H_
