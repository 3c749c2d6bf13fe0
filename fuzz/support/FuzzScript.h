// FuzzScript: reads a fuzz input as a script of choices (which action, which argument, which answer), so
// that one input drives a whole sequence of calls and the same input always drives the same sequence.
//
// Every choice either picks one of a list of meaningful words (action names, argument names, values the
// code compares against) or, now and then, takes an arbitrary text from the input, so that the fuzzer
// reaches both the paths the words open and what no word foresees. An exhausted input answers the first
// word, 0 or "" from then on; callers stop their loops on Done().
#ifndef FUZZ_SUPPORT_FUZZ_SCRIPT_H_
#define FUZZ_SUPPORT_FUZZ_SCRIPT_H_

#include <fuzzer/FuzzedDataProvider.h>

#include <cstddef>
#include <cstdint>
#include <string>

class FuzzScript {
 public:
  FuzzScript(const uint8_t* data, std::size_t size) : input_(data, size) {}

  bool Done() { return input_.remaining_bytes() == 0; }

  uint8_t Byte() { return input_.ConsumeIntegral<uint8_t>(); }
  bool Flag() { return input_.ConsumeBool(); }
  template <typename T>
  T Number() {
    return input_.ConsumeIntegral<T>();
  }
  template <typename T>
  T Between(T low, T high) {
    return input_.ConsumeIntegralInRange<T>(low, high);
  }

  // An arbitrary text of at most `maxLength` bytes (it may hold any byte but NUL, which ends a C string).
  std::string Text(std::size_t maxLength) {
    std::string text = input_.ConsumeRandomLengthString(maxLength);
    return text.substr(0, text.find('\0'));
  }

  // One of the `count` `words` (seven times in eight), else an arbitrary text of at most `maxLength` bytes.
  std::string Pick(const char* const* words, std::size_t count, std::size_t maxLength) {
    const uint8_t choice = Byte();
    if (choice < 224) return words[choice % count];
    return Text(maxLength);
  }
  template <std::size_t N>
  std::string Pick(const char* const (&words)[N], std::size_t maxLength) {
    return Pick(words, N, maxLength);
  }

 private:
  FuzzedDataProvider input_;
};

#endif  // FUZZ_SUPPORT_FUZZ_SCRIPT_H_
