// ProcessFigures: what the kernel says about another process: its resident memory and the CPU time its
// threads have used, the descriptors it holds. Linux /proc only.
#ifndef BENCH_HOST_PROCESS_FIGURES_H_
#define BENCH_HOST_PROCESS_FIGURES_H_

#include <sys/types.h>

#include <cstdint>
#include <functional>

struct ProcessMemory {
  long residentKb = -1;      // VmRSS: every page mapped and resident, shared ones counted whole
  long proportionalKb = -1;  // Pss: shared pages divided among the processes that map them
};

// Reads VmRSS from /proc/PID/status and Pss from /proc/PID/smaps_rollup. Returns false when either is
// missing.
bool ReadProcessMemory(pid_t pid, ProcessMemory* memory);

// The CPU time in nanoseconds that every thread of the process has run so far (the first field of
// /proc/PID/task/*/schedstat: nanosecond resolution, unlike the clock ticks of /proc/PID/stat). Threads that
// have exited are not counted. -1 when the process is gone.
int64_t ProcessCpuNanoseconds(pid_t pid);

// Runs `block` and adds to *cpuNs the CPU time the process spent meanwhile (nothing when it is gone).
void AddProcessCpuDuring(pid_t pid, int64_t* cpuNs, const std::function<void()>& block);

// The number of file descriptors the process holds open (entries of /proc/PID/fd); -1 when it is gone.
long OpenDescriptors(pid_t pid);

#endif  // BENCH_HOST_PROCESS_FIGURES_H_
