// DMR_CMN_UPnPEventingThread: delivers state-variable changes of one UPnP service to its event handler on
// a thread of its own.
//
// NotifyUpdate and NotifyUpdateForOpenHome copy their arguments into a queue and return at once; the
// worker hands each queued batch, in the order they were queued, to the marlo::EventHandler given to
// Initialize. Callers may therefore notify while holding their own locks, and may reuse or change what
// they passed as soon as the call returns.
//
// Lifecycle: new (std::nothrow); Initialize(handler); Start(); any number of notifications; Stop();
// Join(); Finalize(); delete. Stop lets the worker deliver every batch queued before it and then end;
// notifications after Stop are refused. Finalize drops whatever was never delivered (a thread that was
// never started). Deleting a thread that is still running stops and joins it first.
//
// Thread safety: the notifications may be called from any number of threads at once. Initialize, Start,
// Stop, Join and Finalize are the owner's and are called from one thread.
#ifndef DMR_CMN_UPNP_EVENTING_THREAD_H_
#define DMR_CMN_UPNP_EVENTING_THREAD_H_

#include <cstddef>
#include <cstdint>
#include <new>

#include "dmr_cmn/Thread.h"

class DMR_CMN_String;
namespace marlo {
class EventHandler;
}

class DMR_CMN_UPnPEventingThread : public DMR_CMN_Thread {
 public:
  DMR_CMN_UPnPEventingThread() noexcept;
  ~DMR_CMN_UPnPEventingThread() override;

  // Null when there is no memory (or fault injection says so).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // Binds the thread to `handler` (not owned; it must outlive the thread). Returns 0;
  // DMR_CMN_ERR_NO_MEMORY (-989) when the queue cannot be set up; -1 for a null handler or a second call.
  int32_t Initialize(marlo::EventHandler* handler);

  // Asks the worker to deliver what is queued and end. Returns 0; -1 when not initialized or already
  // stopped.
  int32_t Stop();

  // Releases the queue, dropping batches never delivered. Returns 0; -1 when not initialized or while the
  // worker runs (Stop and Join first).
  int32_t Finalize();

  // Queues one batch holding the single pair (name, value). Returns 0; DMR_CMN_ERR_NO_MEMORY (-989) when
  // the copy cannot be made (nothing is queued); -1 for a null argument, before Initialize, after Stop.
  int32_t NotifyUpdate(const char* name, const char* value);

  // Queues one batch of `count` pairs names[i], values[i]; an unset string is sent as "". Returns as
  // NotifyUpdate; -1 also for null arrays or a count below 1.
  int32_t NotifyUpdateForOpenHome(DMR_CMN_String* names, DMR_CMN_String* values, long count);

 protected:
  void Run() override;

 private:
  // The queue, its lock and the worker's flags (UPnPEventingThread.cpp).
  struct State;

  // Null until Initialize; then lives until the destructor, so that the worker and late callers never see
  // it go away under them.
  State* state_;
};

#endif  // DMR_CMN_UPNP_EVENTING_THREAD_H_
