#include "TemporaryDirectory.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <vector>

std::string PLAYER_MakeTemporaryDirectory(const std::string& prefix) {
  const char* base = std::getenv("TMPDIR");
  const std::string pattern = std::string(base != nullptr && *base != '\0' ? base : "/tmp") + "/" + prefix + "XXXXXX";
  std::vector<char> buffer(pattern.begin(), pattern.end());
  buffer.push_back('\0');
  if (mkdtemp(buffer.data()) == nullptr) {
    ADD_FAILURE() << "cannot create a directory from " << pattern << ": " << std::strerror(errno);
    return "";
  }
  return buffer.data();
}
