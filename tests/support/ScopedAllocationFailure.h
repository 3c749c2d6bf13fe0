// ScopedAllocationFailure: makes the n-th allocation from now fail, in a test binary that links
// ScopedAllocationFailure.cpp (which replaces the global operator new and delete of that binary).
//
// For code whose allocation failure has no fault point of its own: objects that keep their texts in
// standard containers answer no-memory when std::bad_alloc reaches them, and a test loops n = 1, 2, ...
// checking each time that the object answered no-memory, kept its state and leaked nothing.
#ifndef TESTS_SUPPORT_SCOPED_ALLOCATION_FAILURE_H_
#define TESTS_SUPPORT_SCOPED_ALLOCATION_FAILURE_H_

class ScopedAllocationFailure {
 public:
  // The `nth` allocation from now (1 = the next) throws std::bad_alloc (the nothrow forms answer null);
  // with `persistent`, so does every later one until the object goes.
  explicit ScopedAllocationFailure(unsigned long nth, bool persistent = false);
  ~ScopedAllocationFailure();

  ScopedAllocationFailure(const ScopedAllocationFailure&) = delete;
  ScopedAllocationFailure& operator=(const ScopedAllocationFailure&) = delete;

  // How many allocations were made to fail so far.
  unsigned long Fired() const;
};

// The blocks of the global operator new not yet deleted, in such a binary: a test counts what an object
// frees by taking it before and after.
long LiveGlobalAllocations();

#endif  // TESTS_SUPPORT_SCOPED_ALLOCATION_FAILURE_H_
