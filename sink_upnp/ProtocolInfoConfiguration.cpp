#include "sink_upnp/ProtocolInfoConfiguration.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "dmr_cmn/Memory.h"
#include "marlo/Properties.h"
#include "marlo/ProtocolInfo.h"
#include "marlo/Result.h"
#include "sink_upnp/ResultCode.h"

namespace {

constexpr int kMaximumEntries = 100;

}  // namespace

int32_t SINK_UPNP_PrepareProtocolInfo(marlo::ProtocolInfo** chain, marlo::Properties* properties) {
  if (chain == nullptr || properties == nullptr) return SINK_UPNP_ERR_GENERIC;
  // Entries an earlier failed attempt left are freed, never joined into this list.
  SINK_UPNP_CleanProtocolInfo(chain);
  marlo::ProtocolInfo** tail = chain;
  for (int index = 0; index < kMaximumEntries; ++index) {
    // Sized for every number read, so that "_10" is never cut to "_1".
    char key[40];
    if (std::snprintf(key, sizeof key, "sinkctss.protocolInfo_%d", index) <= 0) {
      SINK_UPNP_CleanProtocolInfo(chain);
      return SINK_UPNP_ERR_GENERIC;
    }
    const char* value = properties->GetProperty(key);
    // The first missing number ends the list; numbers after a gap are never read. -962 ("out of range")
    // here: no entry is configured at all.
    if (value == nullptr) return *chain != nullptr ? SINK_UPNP_OK : SINK_UPNP_ERR_OUT_OF_RANGE;

    marlo::ProtocolInfo* entry = new (std::nothrow) marlo::ProtocolInfo;
    if (entry == nullptr) {
      SINK_UPNP_CleanProtocolInfo(chain);
      return DMR_CMN_ERR_NO_MEMORY;
    }
    const int32_t parsed = entry->Set(value);
    if (parsed != 0) {
      delete entry;
      if (parsed == marlo::kErrorNoMemory) {
        SINK_UPNP_CleanProtocolInfo(chain);
        return DMR_CMN_ERR_NO_MEMORY;
      }
      if (parsed == marlo::kErrorInvalidArgument) SINK_UPNP_CleanProtocolInfo(chain);
      // Any other failure keeps the entries gathered so far in the chain: the next attempt frees them
      // first, and so does the service's clean-up.
      return SINK_UPNP_ERR_GENERIC;
    }
    *tail = entry;
    tail = &entry->next;
  }
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_GetProtocolInfo(const marlo::ProtocolInfo* chain, char** out) {
  if (out == nullptr || chain == nullptr) return SINK_UPNP_ERR_GENERIC;
  char* joined = nullptr;
  std::size_t length = 0;
  for (const marlo::ProtocolInfo* entry = chain; entry != nullptr; entry = entry->next) {
    char* text = nullptr;
    const int32_t printed = entry->Get(&text);
    if (printed != 0) {
      std::free(joined);
      return printed == marlo::kErrorNoMemory ? DMR_CMN_ERR_NO_MEMORY : SINK_UPNP_ERR_GENERIC;
    }
    const std::size_t added = std::strlen(text);
    // Each step takes a new buffer: the text so far, a comma, the new text and the terminator.
    char* grown = static_cast<char*>(DMR_CMN_Malloc(length + 1 + added + 1));
    if (grown == nullptr) {
      delete[] text;
      std::free(joined);
      return DMR_CMN_ERR_NO_MEMORY;
    }
    std::size_t at = 0;
    if (joined != nullptr) {
      std::memcpy(grown, joined, length);
      grown[length] = ',';
      at = length + 1;
    }
    std::memcpy(grown + at, text, added + 1);
    std::free(joined);
    delete[] text;
    joined = grown;
    length = at + added;
  }
  *out = joined;
  return SINK_UPNP_OK;
}

void SINK_UPNP_CleanProtocolInfo(marlo::ProtocolInfo** chain) {
  if (chain == nullptr) return;
  while (*chain != nullptr) {
    marlo::ProtocolInfo* head = *chain;
    *chain = head->next;
    delete head;
  }
}
