#include "dmr_cmn/Thread.h"

#include "FaultPoint.h"
#include "dmr_cmn/Result.h"

DMR_CMN_Thread::DMR_CMN_Thread() noexcept : thread_(), started_(false), joined_(false) {}

// A thread still running here would call Run() of a destroyed object; the derived class joins first.
DMR_CMN_Thread::~DMR_CMN_Thread() = default;

void* DMR_CMN_Thread::Entry(void* self) {
  static_cast<DMR_CMN_Thread*>(self)->Run();
  return nullptr;
}

int32_t DMR_CMN_Thread::Start() {
  if (started_) return DMR_CMN_ERR_GENERIC;
  int32_t code = DMR_CMN_ERR_THREAD_START;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kThreadStart, &code)) return code;
  if (pthread_create(&thread_, nullptr, &DMR_CMN_Thread::Entry, this) != 0) {
    return DMR_CMN_ERR_THREAD_START;
  }
  started_ = true;
  return DMR_CMN_OK;
}

int32_t DMR_CMN_Thread::Join() {
  int32_t code = DMR_CMN_ERR_GENERIC;
  if (dmr_runtime::FaultPointFails(DMR_CMN_FaultPoint::kThreadJoin, &code)) return code;
  if (!started_ || joined_) return DMR_CMN_ERR_GENERIC;
  if (pthread_equal(thread_, pthread_self())) return DMR_CMN_ERR_GENERIC;
  if (pthread_join(thread_, nullptr) != 0) return DMR_CMN_ERR_GENERIC;
  joined_ = true;
  return DMR_CMN_OK;
}

bool DMR_CMN_Thread::IsRunning() const { return started_ && !joined_; }
