// The checks a new state variable value must pass, shared by both stores (whose Check* operations answer
// with these). Each answers 0 when the text passes, SINK_UPNP_ERR_INVALID_VALUE (-961) when it does not,
// SINK_UPNP_ERR_GENERIC (-1) for a null text. All comparisons are byte-wise and case-sensitive.
#ifndef SINK_UPNP_STATE_VARIABLE_CHECKS_H_
#define SINK_UPNP_STATE_VARIABLE_CHECKS_H_

#include <cstdint>

#include "sink_upnp/StateVariableCatalogue.h"

// The check of variable `index`: the row's rule for 0..82, SINK_UPNP_ERR_OUT_OF_RANGE (-962) for any
// other index; a null text gives -1 first.
int32_t SINK_UPNP_CheckStateVariable(SINK_UPNP_StateVariableName_t index, const char* text);

int32_t SINK_UPNP_CheckTransportState(const char* text);
int32_t SINK_UPNP_CheckTransportStatus(const char* text);
int32_t SINK_UPNP_CheckPlaybackStorageMedium(const char* text);
int32_t SINK_UPNP_CheckCurrentPlayMode(const char* text);
int32_t SINK_UPNP_CheckTransportPlaySpeed(const char* text);
int32_t SINK_UPNP_CheckRecordMediumWriteStatus(const char* text);
int32_t SINK_UPNP_CheckCurrentRecordQualityMode(const char* text);
// An optional "-" and decimal digits, at most 11 characters, within the signed 32-bit range; "" and a
// lone "-" pass.
int32_t SINK_UPNP_CheckTypeInteger4Byte(const char* text);
// Decimal digits only, at most 10 characters, within 0..4294967295; "" passes.
int32_t SINK_UPNP_CheckTypeUnsignedInteger4Byte(const char* text);

#endif  // SINK_UPNP_STATE_VARIABLE_CHECKS_H_
