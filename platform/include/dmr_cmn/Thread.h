// DMR_CMN_Thread: a joinable thread that runs the derived class's Run().
//
// Start() once, Join() once. A derived class must make sure its thread has been joined before its own
// destructor finishes (Run is a virtual of the derived object).
#ifndef DMR_CMN_THREAD_H_
#define DMR_CMN_THREAD_H_

#include <pthread.h>

#include <cstdint>

#include "dmr_cmn/Visibility.h"

class DMR_CMN_Thread {
 public:
  DMR_CMN_Thread() noexcept;
  virtual ~DMR_CMN_Thread();

  DMR_CMN_Thread(const DMR_CMN_Thread&) = delete;
  DMR_CMN_Thread& operator=(const DMR_CMN_Thread&) = delete;

  // Starts a thread that calls Run(). Returns 0; DMR_CMN_ERR_THREAD_START (-966) when the system cannot
  // create a thread; -1 when this object has already been started.
  int32_t Start();

  // Waits until Run() has returned. Returns 0; -1 when not started, already joined, or called from the
  // thread itself.
  int32_t Join();

  // True between a successful Start() and Join().
  bool IsRunning() const;

 protected:
  // The thread's work; called once on the new thread.
  virtual void Run() = 0;

 private:
  DMR_CMN_HIDDEN static void* Entry(void* self);

  pthread_t thread_;
  bool started_;
  bool joined_;
};

#endif  // DMR_CMN_THREAD_H_
