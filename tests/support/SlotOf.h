// SlotOf: the slot of a virtual member function in its class's interface table, read from a pointer to
// that member, so that tests can check the fixed slot numbers of the binary interface.
//
// On the Itanium C++ ABI (g++ and clang on Linux) a pointer to a virtual member function holds 1 + the
// byte offset of its table entry, followed by the adjustment of `this`. Slots count from 1, the two
// destructor entries being 1 and 2; 0 means the function is not virtual.
#ifndef TESTS_SUPPORT_SLOT_OF_H_
#define TESTS_SUPPORT_SLOT_OF_H_

#include <cstddef>
#include <cstring>

#if !defined(__GXX_ABI_VERSION)
#error "slots are read for the Itanium C++ ABI only"
#endif

struct MemberPointerWords {
  std::ptrdiff_t pointerOrOffset;
  std::ptrdiff_t thisAdjustment;
};

template <typename Member>
long SlotOf(Member member) {
  static_assert(sizeof(Member) == sizeof(MemberPointerWords), "Itanium member function pointer");
  MemberPointerWords words;
  std::memcpy(&words, &member, sizeof(words));
  if ((words.pointerOrOffset & 1) == 0) return 0;
  return static_cast<long>((words.pointerOrOffset - 1) / static_cast<std::ptrdiff_t>(sizeof(void*))) + 1;
}

// The adjustment of `this` the pointer carries: 0 when the function is reached through the primary table.
template <typename Member>
std::ptrdiff_t ThisAdjustmentOf(Member member) {
  static_assert(sizeof(Member) == sizeof(MemberPointerWords), "Itanium member function pointer");
  MemberPointerWords words;
  std::memcpy(&words, &member, sizeof(words));
  return words.thisAdjustment;
}

#endif  // TESTS_SUPPORT_SLOT_OF_H_
