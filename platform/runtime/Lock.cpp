#include "dmr_cmn/Lock.h"

#include <cstdlib>

#include "FaultPoint.h"
#include "dmr_cmn/Result.h"

DMR_CMN_Lock::DMR_CMN_Lock() noexcept : mutex_(), initialized_(false), held_(false), owner_() {}

DMR_CMN_Lock::~DMR_CMN_Lock() {
  if (initialized_ && pthread_mutex_trylock(&mutex_) == 0) {
    pthread_mutex_unlock(&mutex_);
    pthread_mutex_destroy(&mutex_);
  }
}

void* DMR_CMN_Lock::operator new(std::size_t size, const std::nothrow_t&) noexcept {
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLockCreation, nullptr)) return nullptr;
  return std::malloc(size);
}

void DMR_CMN_Lock::operator delete(void* block) noexcept { std::free(block); }

void DMR_CMN_Lock::operator delete(void* block, const std::nothrow_t&) noexcept { std::free(block); }

int32_t DMR_CMN_Lock::Initialize() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLockInitialize, &code)) return code;
  if (initialized_) return DMR_CMN_ERR_GENERIC;
  pthread_mutexattr_t attributes;
  if (pthread_mutexattr_init(&attributes) != 0) return DMR_CMN_ERR_GENERIC;
  // Error checking turns a second Lock on the same thread into a failure instead of a hang.
  int result = pthread_mutexattr_settype(&attributes, PTHREAD_MUTEX_ERRORCHECK);
  if (result == 0) result = pthread_mutex_init(&mutex_, &attributes);
  pthread_mutexattr_destroy(&attributes);
  if (result != 0) return DMR_CMN_ERR_GENERIC;
  initialized_ = true;
  return DMR_CMN_OK;
}

int32_t DMR_CMN_Lock::Lock() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLockLock, &code)) return code;
  if (!initialized_) return DMR_CMN_ERR_GENERIC;
  if (pthread_mutex_lock(&mutex_) != 0) return DMR_CMN_ERR_GENERIC;
  owner_.store(pthread_self(), std::memory_order_relaxed);
  held_.store(true, std::memory_order_relaxed);
  return DMR_CMN_OK;
}

int32_t DMR_CMN_Lock::Unlock() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLockUnlock, &code)) return code;
  if (!initialized_) return DMR_CMN_ERR_GENERIC;
  // Only the holder itself can find its own id here while the lock is held, so this check needs no lock.
  if (!held_.load(std::memory_order_relaxed) ||
      !pthread_equal(owner_.load(std::memory_order_relaxed), pthread_self())) {
    return DMR_CMN_ERR_GENERIC;
  }
  held_.store(false, std::memory_order_relaxed);
  if (pthread_mutex_unlock(&mutex_) != 0) {
    held_.store(true, std::memory_order_relaxed);
    return DMR_CMN_ERR_GENERIC;
  }
  return DMR_CMN_OK;
}

int32_t DMR_CMN_Lock::Finalize() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kLockFinalize, &code)) return code;
  if (!initialized_) return DMR_CMN_ERR_GENERIC;
  // A held lock cannot be finalized: trying it first keeps the mutex intact for its holder (destroying a
  // locked mutex is undefined).
  if (pthread_mutex_trylock(&mutex_) != 0) return DMR_CMN_ERR_GENERIC;
  pthread_mutex_unlock(&mutex_);
  if (pthread_mutex_destroy(&mutex_) != 0) return DMR_CMN_ERR_GENERIC;
  initialized_ = false;
  return DMR_CMN_OK;
}
