#include "ScopedAllocationFailure.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> gAllocationArmed{false};
std::atomic<bool> gAllocationPersistent{false};
std::atomic<unsigned long> gAllocationCountdown{0};
std::atomic<unsigned long> gAllocationFired{0};
std::atomic<long> gLiveBlocks{0};

bool AllocationMustFail() {
  if (!gAllocationArmed.load(std::memory_order_acquire)) return false;
  if (gAllocationCountdown.fetch_sub(1) > 1) return false;
  if (!gAllocationPersistent.load()) gAllocationArmed.store(false);
  gAllocationFired.fetch_add(1);
  return true;
}

// Out of line, so that the compiler does not pair the free() of an inlined operator delete with the
// operator new it came from and warn of a mismatch that is none: both sides use malloc and free.
[[gnu::noinline]] void ReleaseBlock(void* block) noexcept {
  if (block != nullptr) gLiveBlocks.fetch_sub(1, std::memory_order_relaxed);
  std::free(block);
}

}  // namespace

ScopedAllocationFailure::ScopedAllocationFailure(unsigned long nth, bool persistent) {
  gAllocationFired.store(0);
  gAllocationCountdown.store(nth);
  gAllocationPersistent.store(persistent);
  gAllocationArmed.store(true, std::memory_order_release);
}

ScopedAllocationFailure::~ScopedAllocationFailure() { gAllocationArmed.store(false); }

unsigned long ScopedAllocationFailure::Fired() const { return gAllocationFired.load(); }

long LiveGlobalAllocations() { return gLiveBlocks.load(std::memory_order_relaxed); }

void* operator new(std::size_t size) {
  if (AllocationMustFail()) throw std::bad_alloc();
  void* block = std::malloc(size == 0 ? 1 : size);
  if (block == nullptr) throw std::bad_alloc();
  gLiveBlocks.fetch_add(1, std::memory_order_relaxed);
  return block;
}

void* operator new[](std::size_t size) { return ::operator new(size); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return ::operator new(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
  return ::operator new(size, std::nothrow);
}

void operator delete(void* block) noexcept { ReleaseBlock(block); }
void operator delete[](void* block) noexcept { ReleaseBlock(block); }
void operator delete(void* block, std::size_t) noexcept { ReleaseBlock(block); }
void operator delete[](void* block, std::size_t) noexcept { ReleaseBlock(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { ReleaseBlock(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { ReleaseBlock(block); }
