// Times as AVTransport writes them: "H+:MM:SS[.F+]" or "H+:MM:SS.F0/F1" (hours of any length, minutes
// and seconds of two digits below 60, an optional fraction).
#ifndef PLAYER_TIME_TEXT_H_
#define PLAYER_TIME_TEXT_H_

#include <cstdint>
#include <string>

// The time in nanoseconds; -1 for a text that is not such a time. Forgiving where control points differ:
// one-digit minutes or seconds ("0:1:5") are taken as well.
int64_t PLAYER_ParseTime(const std::string& text);

// "HH:MM:SS" with at least two hour digits ("00:03:25"); a negative time (unknown) is "00:00:00".
std::string PLAYER_FormatTime(int64_t nanoseconds);

// Whole seconds as decimal text ("205"); a negative time is "0".
std::string PLAYER_FormatSeconds(int64_t nanoseconds);

#endif  // PLAYER_TIME_TEXT_H_
