// marlo::ProtocolInfo: one protocol-info entry, "<protocol>:<network>:<contentFormat>:<additionalInfo>"
// (for example "http-get:*:audio/mpeg:*"), as a renderer advertises the media it can take.
//
// Entries can be chained through `next`, which belongs to whoever keeps the chain; the entry never reads
// it. Deleting an entry does not touch the rest of a chain.
#ifndef MARLO_PROTOCOL_INFO_H_
#define MARLO_PROTOCOL_INFO_H_

#include <cstddef>
#include <cstdint>
#include <new>

#include "dmr_cmn/Visibility.h"

namespace marlo {

class ProtocolInfo {
 public:
  ProtocolInfo() noexcept;
  virtual ~ProtocolInfo();

  ProtocolInfo(const ProtocolInfo&) = delete;
  ProtocolInfo& operator=(const ProtocolInfo&) = delete;

  // Null when there is no memory (or fault injection says so).
  static void* operator new(std::size_t size, const std::nothrow_t&) noexcept;
  static void operator delete(void* block) noexcept;
  static void operator delete(void* block, const std::nothrow_t&) noexcept;

  // Parses `text`: four fields separated by ':', blanks around the whole text ignored. The first three
  // fields hold no ':' and none of the four is empty; the last may hold ':' (everything after the third
  // separator). No field may hold ',' (the separator of protocol-info lists) or a control character.
  // Returns 0; kErrorInvalidArgument (-1998) for null or malformed text (the entry keeps its old value);
  // kErrorNoMemory (-1997).
  int32_t Set(const char* text);

  // Prints the entry as "<protocol>:<network>:<contentFormat>:<additionalInfo>" into a buffer allocated
  // with new[]; the caller releases it with delete[]. Returns 0; kErrorInvalidArgument (-1998) for a null
  // `out`; kErrorFailure (-1999) when nothing was set; kErrorNoMemory (-1997).
  int32_t Get(char** out) const;

  // The fields; null before a successful Set.
  const char* GetProtocol() const;
  const char* GetNetwork() const;
  const char* GetContentFormat() const;
  const char* GetAdditionalInfo() const;

  // The next entry of the chain this entry is in; null at the end.
  ProtocolInfo* next;

 private:
  DMR_CMN_HIDDEN void Release();

  // One buffer: the four fields, each zero-terminated, one after the other.
  char* fields_;
  const char* network_;
  const char* contentFormat_;
  const char* additionalInfo_;
};

}  // namespace marlo

#endif  // MARLO_PROTOCOL_INFO_H_
