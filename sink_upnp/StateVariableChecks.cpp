#include "sink_upnp/StateVariableChecks.h"

#include <cerrno>
#include <cstddef>
#include <cstdlib>
#include <cstring>

#include "sink_upnp/ResultCode.h"
#include "sink_upnp/TransportState.h"

namespace {

// The allowed texts of each list check, in the order they are tested. The transport states are the
// AVTransport words of SINK_UPNP_transportStateTable.
const char* const kTransportStatuses[] = {"OK", "ERROR_OCCURRED"};
const char* const kStorageMedia[] = {
    "UNKNOWN", "DV",       "MINI-DV",   "VHS",       "W-VHS",     "S-VHS",    "D-VHS",    "VHSC",
    "VIDEO8",  "HI8",      "CD-ROM",    "CD-DA",     "CD-R",      "CD-RW",    "VIDEO-CD", "SACD",
    "MD-AUDIO", "MD-PICTURE", "DVD-ROM", "DVD-VIDEO", "DVD-R",    "DVD+RW",   "DVD-RW",   "DVD-RAM",
    "DVD-AUDIO", "DAT",    "LD",        "HDD",       "MICRO-MV",  "NETWORK",  "NONE",     "NOT_IMPLEMENTED",
};
const char* const kPlayModes[] = {
    "NORMAL", "SHUFFLE", "REPEAT_ONE", "REPEAT_ALL", "RANDOM", "DIRECT_1", "INTRO",
};
const char* const kPlaySpeeds[] = {"1"};
const char* const kWriteStatuses[] = {"WRITABLE", "PROTECTED", "NOT_WRITABLE", "UNKNOWN", "NOT_IMPLEMENTED"};
const char* const kQualityModes[] = {
    "0:EP", "1:LP", "2:SP", "0:BASIC", "1:MEDIUM", "2:HIGH", "NOT_IMPLEMENTED",
};

template <std::size_t N>
int32_t CheckInList(const char* text, const char* const (&list)[N]) {
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  for (const char* entry : list) {
    if (std::strcmp(text, entry) == 0) return SINK_UPNP_OK;
  }
  return SINK_UPNP_ERR_INVALID_VALUE;
}

bool IsDecimalDigit(char c) { return c >= '0' && c <= '9'; }

}  // namespace

int32_t SINK_UPNP_CheckTransportState(const char* text) {
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  return SINK_UPNP_FindTransportState(text) != nullptr ? SINK_UPNP_OK : SINK_UPNP_ERR_INVALID_VALUE;
}

int32_t SINK_UPNP_CheckTransportStatus(const char* text) { return CheckInList(text, kTransportStatuses); }

int32_t SINK_UPNP_CheckPlaybackStorageMedium(const char* text) { return CheckInList(text, kStorageMedia); }

int32_t SINK_UPNP_CheckCurrentPlayMode(const char* text) { return CheckInList(text, kPlayModes); }

int32_t SINK_UPNP_CheckTransportPlaySpeed(const char* text) { return CheckInList(text, kPlaySpeeds); }

int32_t SINK_UPNP_CheckRecordMediumWriteStatus(const char* text) { return CheckInList(text, kWriteStatuses); }

int32_t SINK_UPNP_CheckCurrentRecordQualityMode(const char* text) { return CheckInList(text, kQualityModes); }

int32_t SINK_UPNP_CheckTypeInteger4Byte(const char* text) {
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  const std::size_t length = std::strlen(text);
  if (length > 11) return SINK_UPNP_ERR_INVALID_VALUE;

  // "" and a lone "-" have no digits to test and pass.
  const std::size_t start = (text[0] == '-') ? 1 : 0;
  for (std::size_t i = start; i < length; ++i) {
    if (!IsDecimalDigit(text[i])) return SINK_UPNP_ERR_INVALID_VALUE;
  }

  // The range is tested against the 32-bit limits themselves, not left to the width of `long`: at most
  // eleven characters always fit a long long, so only the explicit comparison can refuse.
  errno = 0;
  const long long value = std::strtoll(text, nullptr, 10);
  if (errno == ERANGE || value < -2147483648LL || value > 2147483647LL) return SINK_UPNP_ERR_INVALID_VALUE;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_CheckTypeUnsignedInteger4Byte(const char* text) {
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  const std::size_t length = std::strlen(text);
  if (length > 10) return SINK_UPNP_ERR_INVALID_VALUE;

  // "" has no digits to test and passes.
  for (std::size_t i = 0; i < length; ++i) {
    if (!IsDecimalDigit(text[i])) return SINK_UPNP_ERR_INVALID_VALUE;
  }

  // As above: the upper limit is compared explicitly, whatever the width of `unsigned long`.
  errno = 0;
  const unsigned long long value = std::strtoull(text, nullptr, 10);
  if (errno == ERANGE || value > 4294967295ULL) return SINK_UPNP_ERR_INVALID_VALUE;
  return SINK_UPNP_OK;
}

int32_t SINK_UPNP_CheckStateVariable(SINK_UPNP_StateVariableName_t index, const char* text) {
  if (text == nullptr) return SINK_UPNP_ERR_GENERIC;
  // Compared as a wide signed number so that a negative value cast to the enumeration is refused too.
  const long long position = static_cast<long long>(index);
  if (position < 0 || position >= SINK_UPNP_STATE_VARIABLE_COUNT) return SINK_UPNP_ERR_OUT_OF_RANGE;

  switch (SINK_UPNP_stateVariableCatalogue[position].check) {
    case SINK_UPNP_Check::kAny:
      return SINK_UPNP_OK;
    case SINK_UPNP_Check::kTransportState:
      return SINK_UPNP_CheckTransportState(text);
    case SINK_UPNP_Check::kTransportStatus:
      return SINK_UPNP_CheckTransportStatus(text);
    case SINK_UPNP_Check::kStorageMedium:
      return SINK_UPNP_CheckPlaybackStorageMedium(text);
    case SINK_UPNP_Check::kPlayMode:
      return SINK_UPNP_CheckCurrentPlayMode(text);
    case SINK_UPNP_Check::kPlaySpeed:
      return SINK_UPNP_CheckTransportPlaySpeed(text);
    case SINK_UPNP_Check::kWriteStatus:
      return SINK_UPNP_CheckRecordMediumWriteStatus(text);
    case SINK_UPNP_Check::kQualityMode:
      return SINK_UPNP_CheckCurrentRecordQualityMode(text);
    case SINK_UPNP_Check::kUnsigned32:
      return SINK_UPNP_CheckTypeUnsignedInteger4Byte(text);
    case SINK_UPNP_Check::kSigned32:
      return SINK_UPNP_CheckTypeInteger4Byte(text);
  }
  return SINK_UPNP_OK;
}
