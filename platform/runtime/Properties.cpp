#include "marlo/Properties.h"

#include <cstdio>
#include <memory>
#include <new>
#include <utility>

#include "marlo/Result.h"

namespace marlo {

namespace {

// '\r' counts as a blank so that files with "\r\n" line ends read like files with "\n".
bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f'; }

std::string_view Trim(std::string_view text) {
  while (!text.empty() && IsBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && IsBlank(text.back())) text.remove_suffix(1);
  return text;
}

struct FileCloser {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Reads the whole file into *content. Returns false when it cannot be opened or read.
bool ReadWholeFile(const char* path, std::string* content) {
  const std::unique_ptr<std::FILE, FileCloser> file(std::fopen(path, "rb"));
  if (file == nullptr) return false;
  char buffer[4096];
  std::size_t count;
  while ((count = std::fread(buffer, 1, sizeof(buffer), file.get())) > 0) content->append(buffer, count);
  return std::ferror(file.get()) == 0;
}

}  // namespace

Properties::Properties() = default;

Properties::~Properties() = default;

const char* Properties::GetProperty(const char* key) const {
  if (key == nullptr) return nullptr;
  const auto found = values_.find(std::string_view(key));
  return found == values_.end() ? nullptr : found->second.c_str();
}

int32_t Properties::SetProperty(const char* key, const char* value) {
  if (key == nullptr || key[0] == '\0' || value == nullptr) return kErrorInvalidArgument;
  try {
    std::string copy(value);
    const auto found = values_.find(std::string_view(key));
    if (found != values_.end()) {
      found->second.swap(copy);
    } else {
      values_.emplace(key, std::move(copy));
    }
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  return kOk;
}

int32_t Properties::Parse(std::string_view text, Map* parsed) {
  while (!text.empty()) {
    const std::size_t lineEnd = text.find('\n');
    const std::string_view line = Trim(text.substr(0, lineEnd));
    text.remove_prefix(lineEnd == std::string_view::npos ? text.size() : lineEnd + 1);

    if (line.empty() || line.front() == '#') continue;
    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos) return kErrorInvalidArgument;
    const std::string_view key = Trim(line.substr(0, equals));
    if (key.empty()) return kErrorInvalidArgument;
    // A later line of the same text replaces an earlier one, as a later SetProperty would.
    parsed->insert_or_assign(std::string(key), std::string(Trim(line.substr(equals + 1))));
  }
  return kOk;
}

void Properties::Merge(Map* parsed) noexcept {
  while (!parsed->empty()) {
    auto node = parsed->extract(parsed->begin());
    const auto found = values_.find(node.key());
    if (found != values_.end()) {
      found->second.swap(node.mapped());
    } else {
      values_.insert(std::move(node));
    }
  }
}

int32_t Properties::LoadFile(const char* path) {
  if (path == nullptr) return kErrorInvalidArgument;
  try {
    std::string content;
    if (!ReadWholeFile(path, &content)) return kErrorFailure;
    Map parsed;
    const int32_t result = Parse(content, &parsed);
    if (result != kOk) return result;
    Merge(&parsed);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  return kOk;
}

int32_t Properties::LoadText(const char* text) {
  if (text == nullptr) return kErrorInvalidArgument;
  try {
    Map parsed;
    const int32_t result = Parse(text, &parsed);
    if (result != kOk) return result;
    Merge(&parsed);
  } catch (const std::bad_alloc&) {
    return kErrorNoMemory;
  }
  return kOk;
}

void Properties::ForEach(const std::function<void(const char* key, const char* value)>& visit) const {
  for (const auto& [key, value] : values_) visit(key.c_str(), value.c_str());
}

}  // namespace marlo
