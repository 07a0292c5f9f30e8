#pragma once

#include <sys/types.h>

#include <string>

namespace sysbench {

// Resident memory of one process in KiB, summed over its mappings in /proc/<pid>/smaps (the
// same totals smaps_rollup gives), split by what the mapping holds.
struct ProcessMemory {
    long vmRss = 0;  // VmRSS: the kernel's counters, which lag behind on this kernel
    long rss = 0;    // the page walk of smaps: what is mapped in right now
    long pss = 0;    // shared pages divided among their users
    long privateDirty = 0;
    long heap = 0;       // [heap]: the main thread's malloc arena, the emergency pool
    long stacks = 0;     // [stack] and anonymous mappings right above a guard page
    long otherAnon = 0;  // other anonymous memory: per-thread malloc arenas, big blocks
    long files = 0;      // the program, its libraries, the binder mapping, [vdso]
    long hugePages = 0;  // AnonHugePages: transparent huge pages, also counted above
    int threads = 0;

    static ProcessMemory read(pid_t pid);
    static ProcessMemory parse(const std::string& smaps, const std::string& status);
};

}  // namespace sysbench
