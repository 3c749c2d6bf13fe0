// Two LastChange documents of one service as one (what a subscriber would know after reading both), and
// one value read out of a document.
#ifndef HOST_LAST_CHANGE_MERGE_H_
#define HOST_LAST_CHANGE_MERGE_H_

#include <string>

// `earlier` with every variable of `later` set over it: a variable of both keeps its place in `earlier`
// and takes its value in `later`; one of `later` only is added after. Variables are told apart by
// instance, name and channel. `later` itself when either cannot be read or there is no memory (the newer
// document is then the better one to send).
std::string HOST_MergeLastChange(const std::string& earlier, const std::string& later);

// The value of variable `name` (without channel) of instance 0 in `document`; "" when it has none or the
// document cannot be read.
std::string HOST_LastChangeValue(const std::string& document, const char* name);

#endif  // HOST_LAST_CHANGE_MERGE_H_
