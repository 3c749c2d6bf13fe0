// Random UUIDs (version 4, variant 1 of RFC 4122) as text: "xxxxxxxx-xxxx-4xxx-yxxx-xxxxxxxxxxxx".
#ifndef HOST_UUID_H_
#define HOST_UUID_H_

#include <string>
#include <string_view>

// Makes a random UUID from the system's random source, in lower case. Returns false, leaving *uuid as it
// was, when the system has no randomness to give (getrandom(2) failing).
bool HOST_NewRandomUuid(std::string* uuid);

// True for text of the form 8-4-4-4-12 hex digits (either case), whatever its version: a UUID a person put
// into a state file by hand is as good as one made here.
bool HOST_IsUuidText(std::string_view text);

#endif  // HOST_UUID_H_
