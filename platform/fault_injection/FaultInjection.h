// DMR_CMN_FaultInjection: makes chosen runtime operations fail on demand, so that every failure path of
// the code above the runtime can be tested, not only the happy one.
//
// Each fallible runtime operation is a fault point. A test arms a point to fail the n-th call from now
// (counting from 1), once or from then on, with a result code of its choosing; the operation then fails
// exactly as it would for real (a creation answers null, an operation answers the code, a text getter
// answers null) and changes nothing.
//
// The control is for tests only: this header is not on the include path of the runtime's other users
// (link the target dmr_fault_injection to see it). Calls are counted from the first Reset or Arm in the
// process on. Until then, and so in every process that never uses the control (the daemon, the player),
// a fault point costs one relaxed atomic load and a branch that is never taken, and writes nothing that
// threads share.
//
//   DMR_CMN_FaultInjection::Arm(DMR_CMN_FaultPoint::kLastChangeSetType, 1, -1999);
//   ... the next SetType answers -1999 ...
//   DMR_CMN_FaultInjection::Reset();
//
// The loop that proves an operation handles every failure (SQLite's way): for n = 1, 2, ... arm the point
// for the n-th call, run the operation, check its result and that nothing leaked, until a run completes
// without the fault having fired (FiredCount() stays 0).
//
// Thread safety: all functions may be called from any thread; counts are exact.
#ifndef DMR_CMN_FAULT_INJECTION_H_
#define DMR_CMN_FAULT_INJECTION_H_

#include <cstdint>

enum class DMR_CMN_FaultPoint : int {
  kMemoryAllocation,           // DMR_CMN_Malloc answers null
  kStringAllocation,           // DMR_CMN_String::SetCString / AppendCString answer the code
  kStringGetCString,           // DMR_CMN_String::GetCString answers null
  kStringEquals,               // DMR_CMN_String::Equals answers the code
  kLockCreation,               // new (std::nothrow) DMR_CMN_Lock answers null
  kLockInitialize,             // DMR_CMN_Lock::Initialize answers the code
  kLockLock,                   // DMR_CMN_Lock::Lock answers the code (the lock is not taken)
  kLockUnlock,                 // DMR_CMN_Lock::Unlock answers the code (the lock stays held)
  kLockFinalize,               // DMR_CMN_Lock::Finalize answers the code
  kThreadStart,                // DMR_CMN_Thread::Start answers the code (no thread is created)
  kThreadJoin,                 // DMR_CMN_Thread::Join answers the code (the thread is not joined)
  kEventingThreadCreation,     // new (std::nothrow) DMR_CMN_UPnPEventingThread answers null
  kEventingThreadInitialize,   // DMR_CMN_UPnPEventingThread::Initialize answers the code
  kEventingThreadStop,         // DMR_CMN_UPnPEventingThread::Stop answers the code
  kEventingThreadFinalize,     // DMR_CMN_UPnPEventingThread::Finalize answers the code
  kEventingThreadNotify,       // NotifyUpdate / NotifyUpdateForOpenHome answer the code, queue nothing
  kLastChangeCreation,         // new (std::nothrow) marlo::LastChange answers null
  kLastChangeSetType,          // marlo::LastChange::SetType answers the code
  kLastChangeSetStateVariable, // marlo::LastChange::SetStateVariable answers the code
  kLastChangeGetXMLText,       // marlo::LastChange::GetXMLText answers null
  kLastChangeSetXMLText,       // marlo::LastChange::SetXMLText answers the code
  kProtocolInfoCreation,       // new (std::nothrow) marlo::ProtocolInfo answers null
  kProtocolInfoSet,            // marlo::ProtocolInfo::Set answers the code
  kProtocolInfoGet,            // marlo::ProtocolInfo::Get answers the code
  kStateVariableSetValue,      // marlo::StateVariable::SetValue answers the code
  kActionResponseSetArgument,  // marlo::ActionResponse::SetArgumentValue answers the code
  kMetaDataSet,                // corva::MediaMetaData::SetConformMetaData answers the code
  kCount
};

class DMR_CMN_FaultInjection {
 public:
  // Arms `point`: its `nth` call from now (1 = the next one) fails with `code`; with `persistent`, every
  // call from the nth on fails until the point is disarmed. Resets the point's fired count.
  static void Arm(DMR_CMN_FaultPoint point, unsigned long nth, int32_t code, bool persistent = false);
  static void Disarm(DMR_CMN_FaultPoint point);
  // Disarms every point and sets every count to 0.
  static void Reset();

  // Calls of `point` since the last Reset (failed ones included); 0 before the control is first used.
  static unsigned long CallCount(DMR_CMN_FaultPoint point);
  // Calls of `point` that were made to fail since it was last armed.
  static unsigned long FiredCount(DMR_CMN_FaultPoint point);

  // The runtime's side: once the control is in use, counts the call and answers true, with the code in
  // *code, when it must fail; before that answers false at once.
  static bool ShouldFail(DMR_CMN_FaultPoint point, int32_t* code);
};

#endif  // DMR_CMN_FAULT_INJECTION_H_
