#include "TempDirectory.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <system_error>
#include <vector>

TempDirectory::TempDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "host_support_XXXXXX").string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  if (::mkdtemp(name.data()) == nullptr) {
    ADD_FAILURE() << "mkdtemp failed for " << pattern;
    return;
  }
  path_ = name.data();
}

TempDirectory::~TempDirectory() {
  if (path_.empty()) return;
  std::error_code ignored;
  // A test may have taken permissions away; give them back so that everything can go.
  for (const auto& entry : std::filesystem::recursive_directory_iterator(
           path_, std::filesystem::directory_options::skip_permission_denied, ignored)) {
    std::filesystem::permissions(entry.path(), std::filesystem::perms::owner_all,
                                 std::filesystem::perm_options::add, ignored);
  }
  std::filesystem::remove_all(path_, ignored);
}

std::string TempDirectory::WriteFile(const std::string& name, const std::string& content) const {
  const std::filesystem::path file = Path(name);
  std::error_code ignored;
  std::filesystem::create_directories(file.parent_path(), ignored);
  std::ofstream stream(file, std::ios::binary | std::ios::trunc);
  stream << content;
  if (!stream) ADD_FAILURE() << "cannot write " << file;
  return file.string();
}

std::string ReadWholeFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}
