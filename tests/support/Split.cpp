#include "Split.h"

std::vector<std::string> Split(const std::string& joined) {
  std::vector<std::string> parts;
  std::string::size_type start = 0;
  for (;;) {
    const std::string::size_type comma = joined.find(',', start);
    parts.push_back(joined.substr(start, comma - start));
    if (comma == std::string::npos) return parts;
    start = comma + 1;
  }
}
