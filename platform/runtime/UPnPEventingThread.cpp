#include "dmr_cmn/UPnPEventingThread.h"

#include <condition_variable>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <mutex>
#include <new>

#include "FaultPoint.h"
#include "dmr_cmn/Memory.h"
#include "dmr_cmn/Result.h"
#include "dmr_cmn/String.h"
#include "marlo/EventHandler.h"

namespace {

// One queued batch: the header and its two pointer arrays share one block, every text sits in a second
// block. Both come from DMR_CMN_Malloc, so that running out of memory is an answer (-989) rather than an
// exception, and so that tests can make either allocation fail.
struct Batch {
  Batch* next;
  long count;
  const char** names;
  const char** values;
  char* text;
};

void FreeBatch(Batch* batch) {
  std::free(batch->text);
  std::free(batch);
}

// Frees every batch from `head` on.
void FreeBatches(Batch* head) {
  while (head != nullptr) {
    Batch* next = head->next;
    FreeBatch(head);
    head = next;
  }
}

// Copies `count` (>= 1) pairs into a new batch. `source(i, &name, &value)` answers the caller's texts of
// pair i (null for an unset string). It is asked exactly once per pair: its answers are noted in the
// batch's own arrays before they are measured and copied, so a source that answered differently on a
// second call (a DMR_CMN_String under fault injection, say) cannot make the copy overrun its block.
// Returns 0 with the batch in *out, or DMR_CMN_ERR_NO_MEMORY with nothing allocated.
template <typename Source>
int32_t NewBatch(long count, Source source, Batch** out) {
  const std::size_t pairs = static_cast<std::size_t>(count);
  if (pairs > (SIZE_MAX - sizeof(Batch)) / (2 * sizeof(const char*))) return DMR_CMN_ERR_NO_MEMORY;
  void* block = DMR_CMN_Malloc(sizeof(Batch) + 2 * pairs * sizeof(const char*));
  if (block == nullptr) return DMR_CMN_ERR_NO_MEMORY;
  Batch* batch = new (block) Batch{nullptr, count, nullptr, nullptr, nullptr};
  batch->names = static_cast<const char**>(static_cast<void*>(batch + 1));
  batch->values = batch->names + pairs;

  std::size_t textSize = 0;
  for (std::size_t i = 0; i < pairs; ++i) {
    const char* name = nullptr;
    const char* value = nullptr;
    source(static_cast<long>(i), &name, &value);
    batch->names[i] = name != nullptr ? name : "";
    batch->values[i] = value != nullptr ? value : "";
    for (const char* text : {batch->names[i], batch->values[i]}) {
      const std::size_t size = std::strlen(text) + 1;
      if (size > SIZE_MAX - textSize) {
        std::free(block);
        return DMR_CMN_ERR_NO_MEMORY;
      }
      textSize += size;
    }
  }

  char* text = static_cast<char*>(DMR_CMN_Malloc(textSize));
  if (text == nullptr) {
    std::free(block);
    return DMR_CMN_ERR_NO_MEMORY;
  }
  batch->text = text;
  for (std::size_t i = 0; i < pairs; ++i) {
    for (const char** slot : {&batch->names[i], &batch->values[i]}) {
      const std::size_t size = std::strlen(*slot) + 1;
      std::memcpy(text, *slot, size);
      *slot = text;
      text += size;
    }
  }
  *out = batch;
  return DMR_CMN_OK;
}

}  // namespace

struct DMR_CMN_UPnPEventingThread::State {
  explicit State(marlo::EventHandler* h) noexcept : handler(h) {}
  ~State() { FreeBatches(head); }

  // Appends `batch` and takes it over. Returns 0; -1 (the batch is freed) once stopped or finalized.
  int32_t Enqueue(Batch* batch) {
    {
      std::lock_guard<std::mutex> guard(mutex);
      if (!stopping && !finalized) {
        if (tail == nullptr) {
          head = batch;
        } else {
          tail->next = batch;
        }
        tail = batch;
        wake.notify_one();
        return DMR_CMN_OK;
      }
    }
    FreeBatch(batch);
    return DMR_CMN_ERR_GENERIC;
  }

  // Tells the worker to end once the queue is empty. Returns false when told already, or finalized.
  bool RequestStop() {
    std::lock_guard<std::mutex> guard(mutex);
    if (stopping || finalized) return false;
    stopping = true;
    wake.notify_one();
    return true;
  }

  // The worker's loop: delivers batches until stopped and empty.
  void Serve() {
    for (;;) {
      Batch* batch = nullptr;
      {
        std::unique_lock<std::mutex> lock(mutex);
        wake.wait(lock, [this] { return head != nullptr || stopping || finalized; });
        // Stop ends the worker only once the queue is empty: whatever was accepted before it goes out. A
        // thread started after Finalize has nothing to serve, and nothing could stop it later.
        if (head == nullptr) {
          workerFinished = true;
          finished.notify_all();
          return;
        }
        batch = head;
        head = batch->next;
        if (head == nullptr) tail = nullptr;
      }
      // Outside the lock: the handler may take long (network), and notifiers must not wait for it.
      handler->HandleEvent(batch->names, batch->values, batch->count);
      FreeBatch(batch);
    }
  }

  marlo::EventHandler* const handler;

  std::mutex mutex;
  // The worker waits here for a batch or for Stop; it is the only waiter.
  std::condition_variable wake;
  // The destructor waits here for the worker's end when it could not join it.
  std::condition_variable finished;

  // Everything below is guarded by `mutex`.
  Batch* head = nullptr;  // next batch to deliver
  Batch* tail = nullptr;  // where the next notification goes
  bool stopping = false;
  bool finalized = false;
  bool workerFinished = false;
};

DMR_CMN_UPnPEventingThread::DMR_CMN_UPnPEventingThread() noexcept : state_(nullptr) {}

DMR_CMN_UPnPEventingThread::~DMR_CMN_UPnPEventingThread() {
  // Run() belongs to this object: the worker must be gone before the state is freed and before the base
  // destructor changes what Run() resolves to.
  if (IsRunning()) {
    if (state_ != nullptr) state_->RequestStop();
    // Join fails only when fault injection says so (or on the worker itself: a handler never deletes its
    // own thread). One retry covers a one-shot fault; against a fault armed for good, at least wait until
    // the worker is done with the state. The thread's handle is then lost, never memory.
    if (Join() != DMR_CMN_OK && IsRunning() && Join() != DMR_CMN_OK && state_ != nullptr) {
      std::unique_lock<std::mutex> lock(state_->mutex);
      state_->finished.wait(lock, [this] { return state_->workerFinished; });
    }
  }
  if (state_ != nullptr) {
    state_->~State();
    std::free(state_);
  }
}

void* DMR_CMN_UPnPEventingThread::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadCreation, nullptr)) {
    return nullptr;
  }
  return std::malloc(size);
}

void DMR_CMN_UPnPEventingThread::operator delete(void* block) noexcept { std::free(block); }

void DMR_CMN_UPnPEventingThread::operator delete(void* block, const std::nothrow_t&) noexcept {
  std::free(block);
}

int32_t DMR_CMN_UPnPEventingThread::Initialize(marlo::EventHandler* handler) {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadInitialize, &code)) return code;
  if (handler == nullptr || state_ != nullptr) return DMR_CMN_ERR_GENERIC;
  // A worker started before Initialize found nothing to serve and ended (see Run); binding the thread now
  // would also write state_ while that worker may still be reading it.
  if (IsRunning()) return DMR_CMN_ERR_GENERIC;
  void* block = DMR_CMN_Malloc(sizeof(State));
  if (block == nullptr) return DMR_CMN_ERR_NO_MEMORY;
  state_ = new (block) State(handler);
  return DMR_CMN_OK;
}

int32_t DMR_CMN_UPnPEventingThread::Stop() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadStop, &code)) return code;
  if (state_ == nullptr) return DMR_CMN_ERR_GENERIC;
  return state_->RequestStop() ? DMR_CMN_OK : DMR_CMN_ERR_GENERIC;
}

int32_t DMR_CMN_UPnPEventingThread::Finalize() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadFinalize, &code)) return code;
  if (state_ == nullptr || IsRunning()) return DMR_CMN_ERR_GENERIC;
  Batch* dropped = nullptr;
  {
    std::lock_guard<std::mutex> guard(state_->mutex);
    if (state_->finalized) return DMR_CMN_ERR_GENERIC;
    dropped = state_->head;
    state_->head = nullptr;
    state_->tail = nullptr;
    state_->finalized = true;
  }
  // The mutex and condition variables stay until the destructor, so a late notification still finds a
  // valid state to be refused by.
  FreeBatches(dropped);
  return DMR_CMN_OK;
}

int32_t DMR_CMN_UPnPEventingThread::NotifyUpdate(const char* name, const char* value) {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadNotify, &code)) return code;
  if (name == nullptr || value == nullptr || state_ == nullptr) return DMR_CMN_ERR_GENERIC;
  Batch* batch = nullptr;
  code = NewBatch(
      1,
      [name, value](long, const char** n, const char** v) {
        *n = name;
        *v = value;
      },
      &batch);
  if (code != DMR_CMN_OK) return code;
  return state_->Enqueue(batch);
}

int32_t DMR_CMN_UPnPEventingThread::NotifyUpdateForOpenHome(DMR_CMN_String* names, DMR_CMN_String* values,
                                                            long count) {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kEventingThreadNotify, &code)) return code;
  if (names == nullptr || values == nullptr || count < 1 || state_ == nullptr) return DMR_CMN_ERR_GENERIC;
  Batch* batch = nullptr;
  code = NewBatch(
      count,
      [names, values](long i, const char** n, const char** v) {
        *n = names[i].GetCString();
        *v = values[i].GetCString();
      },
      &batch);
  if (code != DMR_CMN_OK) return code;
  return state_->Enqueue(batch);
}

void DMR_CMN_UPnPEventingThread::Run() {
  // Initialize refuses to bind a running thread, so state_ cannot change under this read; a thread started
  // unbound has nothing to serve.
  if (state_ != nullptr) state_->Serve();
}
