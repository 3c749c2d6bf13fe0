"""What the kernel says about a process: resident memory (VmRSS, Pss) and CPU time."""

import os


def memory_kb(pid):
    """(VmRSS, Pss) in KiB of the process, or (None, None) when it is gone."""
    rss = pss = None
    try:
        with open("/proc/%d/status" % pid) as status:
            for line in status:
                if line.startswith("VmRSS:"):
                    rss = int(line.split()[1])
        with open("/proc/%d/smaps_rollup" % pid) as rollup:
            for line in rollup:
                if line.startswith("Pss:"):
                    pss = int(line.split()[1])
    except OSError:
        pass
    return rss, pss


def cpu_seconds(pid):
    """utime + stime of the whole process (all its threads, those that ended included), in seconds."""
    with open("/proc/%d/stat" % pid) as stat:
        fields = stat.read().rsplit(")", 1)[1].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def smaps_by_library(pid, field="Rss"):
    """`field` (Rss or Pss) in KiB of every mapping of the process grouped by file name (anonymous memory
    under "[anon]", the heap under "[heap]"), from /proc/PID/smaps."""
    groups = {}
    name = "[anon]"
    with open("/proc/%d/smaps" % pid) as smaps:
        for line in smaps:
            fields = line.split()
            if not fields:
                continue
            if "-" in fields[0] and not fields[0].endswith(":"):
                name = fields[5] if len(fields) >= 6 else "[anon]"
            elif fields[0] == field + ":":
                groups[name] = groups.get(name, 0) + int(fields[1])
    return groups
