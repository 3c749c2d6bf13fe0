// DMR_CMN_Lock: a non-recursive mutex with explicit Initialize/Finalize.
//
// Lifecycle: new (std::nothrow) DMR_CMN_Lock; Initialize(); any number of Lock()/Unlock(); Finalize();
// delete. Creation goes through new (std::nothrow) only, so that "no lock could be had" is a null pointer
// the caller can handle (and the runtime's fault injection can produce).
//
// The mutex checks errors: taking it twice on one thread fails instead of hanging, and releasing a lock
// that this thread does not hold fails.
#ifndef DMR_CMN_LOCK_H_
#define DMR_CMN_LOCK_H_

#include <pthread.h>

#include <atomic>
#include <cstddef>
#include <cstdint>
#include <new>

#include "dmr_cmn/ThreadAnnotations.h"

class DMR_CMN_CAPABILITY("mutex") DMR_CMN_Lock {
 public:
  DMR_CMN_Lock() noexcept;
  // Releases the mutex if Finalize was never called and the lock is free.
  ~DMR_CMN_Lock();

  DMR_CMN_Lock(const DMR_CMN_Lock&) = delete;
  DMR_CMN_Lock& operator=(const DMR_CMN_Lock&) = delete;

  // Null when there is no memory (or fault injection says so).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // Creates the mutex. Returns 0; -1 when already initialized or the mutex cannot be created.
  int32_t Initialize();
  // Takes the mutex, waiting for it. Returns 0; -1 when not initialized or already held by this thread.
  int32_t Lock() DMR_CMN_TRY_ACQUIRE(0);
  // Releases the mutex. Returns 0; -1 when not initialized or not held by this thread.
  int32_t Unlock() DMR_CMN_RELEASE();
  // Destroys the mutex. Returns 0; -1 when not initialized or while the lock is held (it stays usable).
  int32_t Finalize();

 private:
  pthread_mutex_t mutex_;
  bool initialized_;
  // The holder, so that Unlock refuses a thread that does not hold the lock without touching the mutex.
  std::atomic<bool> held_;
  std::atomic<pthread_t> owner_;
};

#endif  // DMR_CMN_LOCK_H_
