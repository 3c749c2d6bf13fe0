#include "ProcessFigures.h"

#include <dirent.h>

#include <cstdio>
#include <cstring>
#include <fstream>
#include <string>

namespace {

// The number after "key:" in a "key: value kB" file, -1 when the key is absent.
long KilobytesOf(const std::string& path, const char* key) {
  std::ifstream file(path);
  std::string line;
  const std::size_t keyLength = std::strlen(key);
  while (std::getline(file, line)) {
    if (line.compare(0, keyLength, key) == 0 && line.size() > keyLength && line[keyLength] == ':')
      return std::stol(line.substr(keyLength + 1));
  }
  return -1;
}

}  // namespace

bool ReadProcessMemory(pid_t pid, ProcessMemory* memory) {
  const std::string folder = "/proc/" + std::to_string(pid);
  memory->residentKb = KilobytesOf(folder + "/status", "VmRSS");
  memory->proportionalKb = KilobytesOf(folder + "/smaps_rollup", "Pss");
  return memory->residentKb >= 0 && memory->proportionalKb >= 0;
}

int64_t ProcessCpuNanoseconds(pid_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid) + "/task";
  DIR* tasks = opendir(folder.c_str());
  if (tasks == nullptr) return -1;
  int64_t total = 0;
  while (const dirent* entry = readdir(tasks)) {
    if (entry->d_name[0] == '.') continue;
    std::ifstream file(folder + "/" + entry->d_name + "/schedstat");
    long long nanoseconds = 0;
    if (file >> nanoseconds) total += nanoseconds;
  }
  closedir(tasks);
  return total;
}

long OpenDescriptors(pid_t pid) {
  const std::string folder = "/proc/" + std::to_string(pid) + "/fd";
  DIR* descriptors = opendir(folder.c_str());
  if (descriptors == nullptr) return -1;
  long count = 0;
  while (const dirent* entry = readdir(descriptors)) {
    if (entry->d_name[0] != '.') ++count;
  }
  closedir(descriptors);
  return count;
}

void AddProcessCpuDuring(pid_t pid, int64_t* cpuNs, const std::function<void()>& block) {
  const int64_t before = ProcessCpuNanoseconds(pid);
  block();
  const int64_t after = ProcessCpuNanoseconds(pid);
  if (before >= 0 && after >= 0) *cpuNs += after - before;
}
