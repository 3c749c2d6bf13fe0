// Two LastChange documents of one service as one: what a subscriber would know after reading both.
#ifndef HOST_LAST_CHANGE_MERGE_H_
#define HOST_LAST_CHANGE_MERGE_H_

#include <string>

// `earlier` with every variable of `later` set over it: a variable of both keeps its place in `earlier`
// and takes its value in `later`; one of `later` only is added after. Variables are told apart by
// instance, name and channel. `later` itself when either cannot be read or there is no memory (the newer
// document is then the better one to send).
std::string HOST_MergeLastChange(const std::string& earlier, const std::string& later);

#endif  // HOST_LAST_CHANGE_MERGE_H_
