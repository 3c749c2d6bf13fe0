#include "FaultInjection.h"

#include "FaultPoint.h"

#include <atomic>
#include <mutex>

namespace {

constexpr int kPointCount = static_cast<int>(DMR_CMN_FaultPoint::kCount);

struct Point {
  std::atomic<bool> armed{false};
  std::atomic<unsigned long> calls{0};
  std::atomic<unsigned long> fired{0};
  // Guarded by gArmMutex; read only while `armed`.
  unsigned long countdown = 0;
  int32_t code = 0;
  bool persistent = false;
};

Point gPoints[kPointCount];
// Serialises arming with the countdown of armed points; unarmed points never take it.
std::mutex gArmMutex;

Point& At(DMR_CMN_FaultPoint point) { return gPoints[static_cast<int>(point)]; }

// From here on every call is counted: the flag is set before anything the call counts could be read.
void StartCounting() { dmr_runtime::gFaultInjectionInUse.store(true, std::memory_order_release); }

}  // namespace

std::atomic<bool> dmr_runtime::gFaultInjectionInUse{false};

void DMR_CMN_FaultInjection::Arm(DMR_CMN_FaultPoint point, unsigned long nth, int32_t code,
                                 bool persistent) {
  std::lock_guard<std::mutex> guard(gArmMutex);
  StartCounting();
  Point& p = At(point);
  p.countdown = nth == 0 ? 1 : nth;
  p.code = code;
  p.persistent = persistent;
  p.fired.store(0, std::memory_order_relaxed);
  p.armed.store(true, std::memory_order_release);
}

void DMR_CMN_FaultInjection::Disarm(DMR_CMN_FaultPoint point) {
  std::lock_guard<std::mutex> guard(gArmMutex);
  At(point).armed.store(false, std::memory_order_release);
}

void DMR_CMN_FaultInjection::Reset() {
  std::lock_guard<std::mutex> guard(gArmMutex);
  StartCounting();
  for (Point& p : gPoints) {
    p.armed.store(false, std::memory_order_release);
    p.calls.store(0, std::memory_order_relaxed);
    p.fired.store(0, std::memory_order_relaxed);
  }
}

unsigned long DMR_CMN_FaultInjection::CallCount(DMR_CMN_FaultPoint point) {
  return At(point).calls.load(std::memory_order_relaxed);
}

unsigned long DMR_CMN_FaultInjection::FiredCount(DMR_CMN_FaultPoint point) {
  return At(point).fired.load(std::memory_order_relaxed);
}

bool DMR_CMN_FaultInjection::ShouldFail(DMR_CMN_FaultPoint point, int32_t* code) {
  // The runtime has checked this already; a test calling in directly has not.
  if (!dmr_runtime::gFaultInjectionInUse.load(std::memory_order_relaxed)) return false;
  Point& p = At(point);
  p.calls.fetch_add(1, std::memory_order_relaxed);
  if (!p.armed.load(std::memory_order_acquire)) return false;

  std::lock_guard<std::mutex> guard(gArmMutex);
  if (!p.armed.load(std::memory_order_relaxed)) return false;
  if (p.countdown > 1) {
    --p.countdown;
    return false;
  }
  if (!p.persistent) p.armed.store(false, std::memory_order_relaxed);
  p.fired.fetch_add(1, std::memory_order_relaxed);
  if (code != nullptr) *code = p.code;
  return true;
}
