#include "CountOption.h"

#include <cstdlib>

bool ReadCountOption(const std::string& option, const char* value,
                     std::initializer_list<std::pair<const char*, int*>> fields) {
  char* end = nullptr;
  const long number = std::strtol(value, &end, 10);
  if (end == value || *end != '\0' || number < 0 || number > 1000000) return false;
  for (const auto& field : fields) {
    if (option != field.first) continue;
    *field.second = static_cast<int>(number);
    return true;
  }
  return false;
}
