#include "dmr_cmn/UPnPEventingThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "FaultInjection.h"
#include "RecordingEventHandler.h"
#include "ScopedFault.h"
#include "dmr_cmn/Result.h"
#include "dmr_cmn/String.h"

namespace {

using Batch = RecordingEventHandler::Batch;
using Pair = RecordingEventHandler::Pair;

constexpr std::chrono::milliseconds kPatience(5000);

struct ThreadDeleter {
  void operator()(DMR_CMN_UPnPEventingThread* thread) const { delete thread; }
};
using ThreadPtr = std::unique_ptr<DMR_CMN_UPnPEventingThread, ThreadDeleter>;

ThreadPtr NewThread() { return ThreadPtr(new (std::nothrow) DMR_CMN_UPnPEventingThread); }

// A thread bound to `handler`, not started.
ThreadPtr NewInitializedThread(RecordingEventHandler* handler) {
  ThreadPtr thread = NewThread();
  if (thread != nullptr && thread->Initialize(handler) != DMR_CMN_OK) thread.reset();
  return thread;
}

// Starts (when not yet started), stops and joins `thread`: afterwards every accepted batch has been handed
// to the handler.
void Drain(DMR_CMN_UPnPEventingThread* thread) {
  if (!thread->IsRunning()) {
    ASSERT_EQ(DMR_CMN_OK, thread->Start());
  }
  ASSERT_EQ(DMR_CMN_OK, thread->Stop());
  ASSERT_EQ(DMR_CMN_OK, thread->Join());
}

// Holds the worker inside HandleEvent until Open(). It never holds longer than kPatience, so that an
// eventing thread that waits for its handler fails the test instead of hanging it.
class Gate {
 public:
  static void Hook(void* self) { static_cast<Gate*>(self)->Pass(); }

  void Pass() {
    std::unique_lock<std::mutex> lock(mutex_);
    ++entered_;
    changed_.notify_all();
    if (!changed_.wait_for(lock, kPatience, [this] { return open_; })) timedOut_ = true;
  }
  bool WaitUntilEntered(int count) {
    std::unique_lock<std::mutex> lock(mutex_);
    return changed_.wait_for(lock, kPatience, [&] { return entered_ >= count; });
  }
  void Open() {
    std::lock_guard<std::mutex> guard(mutex_);
    open_ = true;
    changed_.notify_all();
  }
  bool TimedOut() {
    std::lock_guard<std::mutex> guard(mutex_);
    return timedOut_;
  }

 private:
  std::mutex mutex_;
  std::condition_variable changed_;
  int entered_ = 0;
  bool open_ = false;
  bool timedOut_ = false;
};

// Lets several threads leave at once, so that they really contend.
class StartLine {
 public:
  void Wait() {
    std::unique_lock<std::mutex> lock(mutex_);
    go_.wait(lock, [this] { return open_; });
  }
  void Open() {
    std::lock_guard<std::mutex> guard(mutex_);
    open_ = true;
    go_.notify_all();
  }

 private:
  std::mutex mutex_;
  std::condition_variable go_;
  bool open_ = false;
};

TEST(EventingThread, DeliversMixedNotificationsInQueueOrder) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  DMR_CMN_String names[2];
  DMR_CMN_String values[2];
  ASSERT_EQ(DMR_CMN_OK, names[0].SetCString("TransportState"));
  ASSERT_EQ(DMR_CMN_OK, values[0].SetCString("PLAYING"));
  ASSERT_EQ(DMR_CMN_OK, names[1].SetCString("Id"));
  ASSERT_EQ(DMR_CMN_OK, values[1].SetCString("7"));

  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdate("LastChange", "<Event/>"));
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(names, values, 2));
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdate("Volume", "12"));
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(names + 1, values + 1, 1));
  Drain(thread.get());

  const std::vector<Batch> expected = {
      {{"LastChange", "<Event/>"}},
      {{"TransportState", "PLAYING"}, {"Id", "7"}},
      {{"Volume", "12"}},
      {{"Id", "7"}},
  };
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyUpdateCopiesItsArguments) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  char name[] = "Volume";
  char value[] = "42";
  auto heapName = std::make_unique<std::string>("Mute");
  auto heapValue = std::make_unique<std::string>("1");

  // Queued before Start, so the worker cannot have read anything before the caller changes it.
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate(name, value));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate(heapName->c_str(), heapValue->c_str()));
  std::strcpy(name, "Treble");
  std::strcpy(value, "-3");
  heapName.reset();
  heapValue.reset();
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"Volume", "42"}}, {{"Mute", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyUpdateForOpenHomeCopiesItsStrings) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  // One staging pair of arrays, reused for every notification as the state store does.
  auto names = std::unique_ptr<DMR_CMN_String[]>(new (std::nothrow) DMR_CMN_String[2]);
  auto values = std::unique_ptr<DMR_CMN_String[]>(new (std::nothrow) DMR_CMN_String[2]);
  ASSERT_EQ(DMR_CMN_OK, names[0].SetCString("Shuffle"));
  ASSERT_EQ(DMR_CMN_OK, values[0].SetCString("false"));
  ASSERT_EQ(DMR_CMN_OK, names[1].SetCString("Repeat"));
  ASSERT_EQ(DMR_CMN_OK, values[1].SetCString("true"));

  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(names.get(), values.get(), 2));
  ASSERT_EQ(DMR_CMN_OK, values[0].SetCString("true"));
  values[1].Clear();
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(names.get(), values.get(), 2));
  names.reset();
  values.reset();
  Drain(thread.get());

  const std::vector<Batch> expected = {
      {{"Shuffle", "false"}, {"Repeat", "true"}},
      {{"Shuffle", "true"}, {"Repeat", ""}},
  };
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, UnsetStringGoesOutAsEmptyText) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String names[2];
  DMR_CMN_String values[2];
  ASSERT_EQ(DMR_CMN_OK, names[0].SetCString("Metadata"));
  ASSERT_EQ(DMR_CMN_OK, values[1].SetCString("x"));

  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(names, values, 2));
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"Metadata", ""}, {"", "x"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyReturnsWhileTheHandlerIsBlocked) {
  RecordingEventHandler handler;
  Gate gate;
  handler.SetOnEvent(&Gate::Hook, &gate);
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("A", "1"));
  ASSERT_TRUE(gate.WaitUntilEntered(1));

  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("B"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("2"));
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdate("C", "3"));
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdateForOpenHome(&name, &value, 1));
  // Had either call waited for the handler, the gate would have timed out and let a batch through.
  EXPECT_EQ(0u, handler.BatchCount());
  gate.Open();
  Drain(thread.get());

  EXPECT_FALSE(gate.TimedOut());
  const std::vector<Batch> expected = {{{"A", "1"}}, {{"C", "3"}}, {{"B", "2"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, StopDeliversEverythingQueuedBeforeIt) {
  RecordingEventHandler handler;
  Gate gate;
  handler.SetOnEvent(&Gate::Hook, &gate);
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("n", "0"));
  ASSERT_TRUE(gate.WaitUntilEntered(1));
  for (int i = 1; i < 50; ++i) {
    ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("n", std::to_string(i).c_str()));
  }

  // Stop arrives while 49 batches still wait behind the blocked one.
  ASSERT_EQ(DMR_CMN_OK, thread->Stop());
  gate.Open();
  ASSERT_EQ(DMR_CMN_OK, thread->Join());

  const std::vector<Batch> batches = handler.Batches();
  ASSERT_EQ(50u, batches.size());
  for (int i = 0; i < 50; ++i) EXPECT_EQ(Batch({{"n", std::to_string(i)}}), batches[i]);
}

TEST(EventingThread, NotifyAfterStopAnswersMinusOneAndDeliversNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->Stop());
  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("a"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("b"));

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "b"));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, &value, 1));
  ASSERT_EQ(DMR_CMN_OK, thread->Join());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "b"));
  EXPECT_EQ(0u, handler.BatchCount());
}

TEST(EventingThread, StopTwiceAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  EXPECT_EQ(DMR_CMN_OK, thread->Stop());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Stop());
  EXPECT_EQ(DMR_CMN_OK, thread->Join());
}

TEST(EventingThread, StopBeforeInitializeAnswersMinusOne) {
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Stop());
}

TEST(EventingThread, StopAfterFinalizeAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Finalize());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Stop());
}

TEST(EventingThread, FinalizeWhileTheWorkerRunsAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Finalize());
  ASSERT_EQ(DMR_CMN_OK, thread->Stop());
  // Stopped but not joined: the worker may still be delivering.
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Finalize());
  ASSERT_EQ(DMR_CMN_OK, thread->Join());
  EXPECT_EQ(DMR_CMN_OK, thread->Finalize());
  const std::vector<Batch> expected = {{{"a", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, FinalizeOfANeverStartedThreadDropsWhatIsQueued) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("b", "2"));

  EXPECT_EQ(DMR_CMN_OK, thread->Finalize());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("c", "3"));
  // Started now, the worker finds nothing left to deliver.
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->Join());
  EXPECT_EQ(0u, handler.BatchCount());
}

TEST(EventingThread, FinalizeTwiceAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  EXPECT_EQ(DMR_CMN_OK, thread->Finalize());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Finalize());
}

TEST(EventingThread, FinalizeBeforeInitializeAnswersMinusOne) {
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Finalize());
}

TEST(EventingThread, DeletingARunningThreadDeliversWhatWasQueuedAndJoins) {
  RecordingEventHandler handler;
  Gate gate;
  handler.SetOnEvent(&Gate::Hook, &gate);
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  ASSERT_TRUE(gate.WaitUntilEntered(1));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("b", "2"));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("c", "3"));

  // Opened from another thread only once the destructor is under way (or about to be): the destructor
  // must wait for the worker, which is still inside the handler.
  std::thread opener([&gate] { gate.Open(); });
  thread.reset();
  opener.join();

  EXPECT_FALSE(gate.TimedOut());
  const std::vector<Batch> expected = {{{"a", "1"}}, {{"b", "2"}}, {{"c", "3"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, DeletingARunningThreadSurvivesAOneShotJoinFault) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  ScopedFault fault(DMR_CMN_FaultPoint::kThreadJoin, 1, -4321);

  thread.reset();

  EXPECT_EQ(1u, fault.Fired());
  const std::vector<Batch> expected = {{{"a", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, DeletingANeverStartedThreadReleasesItsQueue) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));

  // No Finalize: the leak checker of the sanitizer build holds the destructor to its word.
  thread.reset();

  EXPECT_EQ(0u, handler.BatchCount());
}

TEST(EventingThread, StartFailureLeavesAThreadThatCanBeFinalizedAndDeleted) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kThreadStart, 1, DMR_CMN_ERR_THREAD_START);
    EXPECT_EQ(DMR_CMN_ERR_THREAD_START, thread->Start());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_FALSE(thread->IsRunning());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Join());

  EXPECT_EQ(DMR_CMN_OK, thread->Finalize());
  thread.reset();
  EXPECT_EQ(0u, handler.BatchCount());
}

TEST(EventingThread, InitializeRejectsANullHandler) {
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Initialize(nullptr));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "1"));
}

TEST(EventingThread, InitializeTwiceAnswersMinusOneAndKeepsTheFirstHandler) {
  RecordingEventHandler first;
  RecordingEventHandler second;
  ThreadPtr thread = NewInitializedThread(&first);
  ASSERT_NE(nullptr, thread);

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Initialize(&second));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  Drain(thread.get());
  EXPECT_EQ(1u, first.BatchCount());
  EXPECT_EQ(0u, second.BatchCount());
}

TEST(EventingThread, InitializeAfterFinalizeAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Finalize());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Initialize(&handler));
}

TEST(EventingThread, InitializeOfAStartedThreadAnswersMinusOne) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  // Started unbound, the worker has nothing to serve and ends on its own.
  ASSERT_EQ(DMR_CMN_OK, thread->Start());

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->Initialize(&handler));
  EXPECT_EQ(DMR_CMN_OK, thread->Join());
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "1"));
}

TEST(EventingThread, InitializeWithoutMemoryAnswersNoMemoryAndCanBeRetried) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, 1, 0);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, thread->Initialize(&handler));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "1"));

  EXPECT_EQ(DMR_CMN_OK, thread->Initialize(&handler));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  Drain(thread.get());
  EXPECT_EQ(1u, handler.BatchCount());
}

TEST(EventingThread, NotifyBeforeInitializeAnswersMinusOne) {
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("a"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("b"));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "b"));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, &value, 1));
}

TEST(EventingThread, NotifyUpdateRejectsANullNameOrValueAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate(nullptr, "1"));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", nullptr));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate(nullptr, nullptr));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("last", "1"));
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"last", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyUpdateForOpenHomeRejectsACountBelowOneAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("a"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("1"));

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, &value, 0));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, &value, -1));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, &value, -2147483647L));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("last", "1"));
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"last", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyUpdateForOpenHomeRejectsNullArraysAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("a"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("1"));

  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(nullptr, &value, 1));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(&name, nullptr, 1));
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdateForOpenHome(nullptr, nullptr, 1));
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("last", "1"));
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"last", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

// Fails the 1st, 2nd, ... allocation of one notification until it gets through: each failure answers
// -989 and queues nothing, so exactly one batch arrives in the end.
TEST(EventingThread, NotifyUpdateWithoutMemoryAnswersNoMemoryAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  int failures = 0;
  for (unsigned long nth = 1;; ++nth) {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, nth, 0);
    const int32_t result = thread->NotifyUpdate("Volume", "42");
    if (fault.Fired() == 0) {
      ASSERT_EQ(DMR_CMN_OK, result);
      break;
    }
    ASSERT_EQ(DMR_CMN_ERR_NO_MEMORY, result) << "allocation " << nth;
    ++failures;
  }
  Drain(thread.get());

  EXPECT_EQ(2, failures);  // the batch and its texts
  const std::vector<Batch> expected = {{{"Volume", "42"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyUpdateForOpenHomeWithoutMemoryAnswersNoMemoryAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String names[2];
  DMR_CMN_String values[2];
  ASSERT_EQ(DMR_CMN_OK, names[0].SetCString("Shuffle"));
  ASSERT_EQ(DMR_CMN_OK, values[0].SetCString("true"));
  ASSERT_EQ(DMR_CMN_OK, names[1].SetCString("Repeat"));
  ASSERT_EQ(DMR_CMN_OK, values[1].SetCString("false"));
  int failures = 0;
  for (unsigned long nth = 1;; ++nth) {
    ScopedFault fault(DMR_CMN_FaultPoint::kMemoryAllocation, nth, 0);
    const int32_t result = thread->NotifyUpdateForOpenHome(names, values, 2);
    if (fault.Fired() == 0) {
      ASSERT_EQ(DMR_CMN_OK, result);
      break;
    }
    ASSERT_EQ(DMR_CMN_ERR_NO_MEMORY, result) << "allocation " << nth;
    ++failures;
  }
  Drain(thread.get());

  EXPECT_EQ(2, failures);
  const std::vector<Batch> expected = {{{"Shuffle", "true"}, {"Repeat", "false"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, CreationFaultAnswersNull) {
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadCreation, 1, 0);
    ThreadPtr thread = NewThread();
    EXPECT_EQ(nullptr, thread);
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_NE(nullptr, NewThread());
}

TEST(EventingThread, InitializeFaultAnswersTheCodeAndChangesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewThread();
  ASSERT_NE(nullptr, thread);
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadInitialize, 1, -1234);
    EXPECT_EQ(-1234, thread->Initialize(&handler));
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(DMR_CMN_ERR_GENERIC, thread->NotifyUpdate("a", "1"));

  EXPECT_EQ(DMR_CMN_OK, thread->Initialize(&handler));
}

TEST(EventingThread, StopFaultAnswersTheCodeAndKeepsTheWorkerAccepting) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadStop, 1, -1235);
    EXPECT_EQ(-1235, thread->Stop());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));

  ASSERT_EQ(DMR_CMN_OK, thread->Stop());
  ASSERT_EQ(DMR_CMN_OK, thread->Join());
  const std::vector<Batch> expected = {{{"a", "1"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, FinalizeFaultAnswersTheCodeAndKeepsTheQueue) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("a", "1"));
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadFinalize, 1, -1236);
    EXPECT_EQ(-1236, thread->Finalize());
    EXPECT_EQ(1u, fault.Fired());
  }
  EXPECT_EQ(DMR_CMN_OK, thread->NotifyUpdate("b", "2"));

  Drain(thread.get());
  EXPECT_EQ(DMR_CMN_OK, thread->Finalize());
  const std::vector<Batch> expected = {{{"a", "1"}}, {{"b", "2"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, NotifyFaultAnswersTheCodeAndQueuesNothing) {
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  DMR_CMN_String name;
  DMR_CMN_String value;
  ASSERT_EQ(DMR_CMN_OK, name.SetCString("b"));
  ASSERT_EQ(DMR_CMN_OK, value.SetCString("2"));
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadNotify, 1, -1237);
    EXPECT_EQ(-1237, thread->NotifyUpdate("a", "1"));
    EXPECT_EQ(1u, fault.Fired());
  }
  {
    ScopedFault fault(DMR_CMN_FaultPoint::kEventingThreadNotify, 1, DMR_CMN_ERR_NO_MEMORY);
    EXPECT_EQ(DMR_CMN_ERR_NO_MEMORY, thread->NotifyUpdateForOpenHome(&name, &value, 1));
    EXPECT_EQ(1u, fault.Fired());
  }
  ASSERT_EQ(DMR_CMN_OK, thread->NotifyUpdate("last", "3"));
  Drain(thread.get());

  const std::vector<Batch> expected = {{{"last", "3"}}};
  EXPECT_EQ(expected, handler.Batches());
}

TEST(EventingThread, ManyProducersGetEveryBatchDeliveredOnceInEachProducersOrder) {
  constexpr int kProducers = 4;
  constexpr int kBatchesEach = 500;
  RecordingEventHandler handler;
  ThreadPtr thread = NewInitializedThread(&handler);
  ASSERT_NE(nullptr, thread);
  ASSERT_EQ(DMR_CMN_OK, thread->Start());
  StartLine line;
  std::vector<int> refused(kProducers, 0);
  std::vector<std::thread> producers;
  for (int p = 0; p < kProducers; ++p) {
    producers.emplace_back([&, p] {
      const std::string name = "producer" + std::to_string(p);
      DMR_CMN_String names[1];
      DMR_CMN_String values[1];
      line.Wait();
      for (int i = 0; i < kBatchesEach; ++i) {
        const std::string value = std::to_string(i);
        int32_t result;
        // Half of each producer's batches take the other entry point, so both interleave.
        if (i % 2 == 0) {
          result = thread->NotifyUpdate(name.c_str(), value.c_str());
        } else if (names[0].SetCString(name.c_str()) == DMR_CMN_OK &&
                   values[0].SetCString(value.c_str()) == DMR_CMN_OK) {
          result = thread->NotifyUpdateForOpenHome(names, values, 1);
        } else {
          result = DMR_CMN_ERR_NO_MEMORY;
        }
        if (result != DMR_CMN_OK) ++refused[p];
      }
    });
  }
  line.Open();
  for (std::thread& producer : producers) producer.join();
  Drain(thread.get());

  for (int p = 0; p < kProducers; ++p) EXPECT_EQ(0, refused[p]) << "producer " << p;
  const std::vector<Batch> batches = handler.Batches();
  ASSERT_EQ(static_cast<std::size_t>(kProducers * kBatchesEach), batches.size());
  std::vector<int> next(kProducers, 0);
  for (const Batch& batch : batches) {
    ASSERT_EQ(1u, batch.size());
    const int p = batch[0].first.back() - '0';
    ASSERT_TRUE(p >= 0 && p < kProducers) << batch[0].first;
    ASSERT_EQ(std::to_string(next[p]), batch[0].second) << "producer " << p;
    ++next[p];
  }
  for (int p = 0; p < kProducers; ++p) EXPECT_EQ(kBatchesEach, next[p]);
}

}  // namespace
