#include "RecordingEventHandler.h"

void RecordingEventHandler::HandleEvent(const char* const* names, const char* const* values, long count) {
  void (*hook)(void*) = nullptr;
  void* context = nullptr;
  {
    std::lock_guard<std::mutex> guard(mutex_);
    hook = hook_;
    context = hookContext_;
  }
  if (hook != nullptr) hook(context);

  Batch batch;
  for (long i = 0; i < count; ++i) batch.emplace_back(names[i], values[i]);
  std::lock_guard<std::mutex> guard(mutex_);
  batches_.push_back(std::move(batch));
  arrived_.notify_all();
}

bool RecordingEventHandler::WaitForBatches(std::size_t count, std::chrono::milliseconds timeout) const {
  std::unique_lock<std::mutex> lock(mutex_);
  return arrived_.wait_for(lock, timeout, [&] { return batches_.size() >= count; });
}

std::vector<RecordingEventHandler::Batch> RecordingEventHandler::Batches() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return batches_;
}

std::size_t RecordingEventHandler::BatchCount() const {
  std::lock_guard<std::mutex> guard(mutex_);
  return batches_.size();
}

void RecordingEventHandler::SetOnEvent(void (*hook)(void*), void* context) {
  std::lock_guard<std::mutex> guard(mutex_);
  hook_ = hook;
  hookContext_ = context;
}
