// Split: the parts of a comma-separated list, as the joined protocol list is written.
#ifndef TESTS_SUPPORT_SPLIT_H_
#define TESTS_SUPPORT_SPLIT_H_

#include <string>
#include <vector>

// The texts between the commas of `joined`, in order; an empty text gives one empty part, and a comma at
// either end gives an empty part there.
std::vector<std::string> Split(const std::string& joined);

#endif  // TESTS_SUPPORT_SPLIT_H_
