// CountOption: the numeric options the bench clients share (--rounds, --calls, ...), read into their fields.
#ifndef BENCH_HOST_COUNT_OPTION_H_
#define BENCH_HOST_COUNT_OPTION_H_

#include <initializer_list>
#include <string>
#include <utility>

// Stores `value` (a whole number from 0 to 1 000 000) into the field that `fields` pairs with `option`.
// False for an option not among `fields` and for a value that is not such a number.
bool ReadCountOption(const std::string& option, const char* value,
                     std::initializer_list<std::pair<const char*, int*>> fields);

#endif  // BENCH_HOST_COUNT_OPTION_H_
