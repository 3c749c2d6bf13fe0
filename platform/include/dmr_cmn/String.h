// DMR_CMN_String: the host's owned, zero-terminated text.
//
// A string is either unset (the state after construction and after Clear) or holds a text, possibly "".
// Every state variable value and every text exchanged with the transfer service is one of these.
//
// Thread safety: none; a string is guarded by whoever owns it.
#ifndef DMR_CMN_STRING_H_
#define DMR_CMN_STRING_H_

#include <cstddef>
#include <cstdint>
#include <new>

class DMR_CMN_String {
 public:
  DMR_CMN_String() noexcept;
  ~DMR_CMN_String();

  DMR_CMN_String(const DMR_CMN_String&) = delete;
  DMR_CMN_String& operator=(const DMR_CMN_String&) = delete;

  // Arrays of strings are created with new (std::nothrow) only, through DMR_CMN_Malloc, so that "no
  // memory for the array" is a null pointer the caller can handle (and fault injection can produce).
  static void* operator new[](std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete[](void* block) noexcept;
  static void operator delete[](void* block, const std::nothrow_t&) noexcept;

  // Replaces the content with a copy of `text`.
  // Returns 0; DMR_CMN_ERR_NO_MEMORY (-989) when the copy cannot be allocated (the old content stays);
  // DMR_CMN_ERR_GENERIC (-1) for a null `text` (the old content stays).
  int32_t SetCString(const char* text);

  // Appends a copy of `text`; an unset string is taken as "".
  // Returns 0; -989 when there is no memory (the old content stays); -1 for a null `text`.
  int32_t AppendCString(const char* text);

  // Returns the zero-terminated text, or null while the string is unset. The pointer is valid until the
  // next change or the destruction of the string.
  const char* GetCString() const;

  // Compares the content byte-wise with `text`. Returns 0 when equal and -1 when different; an unset
  // string and a null `text` differ from everything.
  int32_t Equals(const char* text) const;

  // Length of the text in bytes, 0 while unset.
  std::size_t GetLength() const;

  // Makes the string unset and releases its text.
  void Clear();

 private:
  char* text_;
  std::size_t length_;
};

#endif  // DMR_CMN_STRING_H_
