#include "ProcessMemory.h"

#include <fstream>
#include <sstream>

namespace sysbench {

namespace {

std::string readAll(const std::string& path) {
    std::ifstream in(path);
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// "Name:   123 kB" -> 123 when the line starts with `name`.
bool field(const std::string& line, const char* name, long* value) {
    if (line.rfind(name, 0) != 0) return false;
    *value = std::stol(line.substr(line.find(':') + 1));
    return true;
}

}  // namespace

ProcessMemory ProcessMemory::read(pid_t pid) {
    const std::string proc = "/proc/" + std::to_string(pid);
    return parse(readAll(proc + "/smaps"), readAll(proc + "/status"));
}

ProcessMemory ProcessMemory::parse(const std::string& smaps, const std::string& status) {
    ProcessMemory memory;
    std::istringstream statusLines(status);
    long value = 0;
    for (std::string line; std::getline(statusLines, line);) {
        if (field(line, "VmRSS:", &value)) memory.vmRss = value;
        if (field(line, "Threads:", &value)) memory.threads = static_cast<int>(value);
    }

    long* bucket = nullptr;
    bool afterGuard = false;  // the previous mapping was an inaccessible anonymous one
    std::istringstream lines(smaps);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream words(line);
        std::string range, perms, offset, device, inode, path;
        words >> range >> perms;
        const bool header = range.find('-') != std::string::npos && perms.size() == 4;
        if (header) {
            words >> offset >> device >> inode >> path;
            const bool anonymous = path.empty() || path.rfind("[anon", 0) == 0;
            if (path == "[heap]") {
                bucket = &memory.heap;
            } else if (path == "[stack]" || (anonymous && afterGuard && perms[0] == 'r')) {
                bucket = &memory.stacks;
            } else if (anonymous) {
                bucket = &memory.otherAnon;
            } else {
                bucket = &memory.files;
            }
            // Thread stacks sit right above a guard page or two; malloc arenas leave tens of
            // megabytes of inaccessible reserve, which must not count as a guard.
            const size_t dash = range.find('-');
            const unsigned long size = std::stoul(range.substr(dash + 1), nullptr, 16) -
                                       std::stoul(range.substr(0, dash), nullptr, 16);
            afterGuard = anonymous && perms.rfind("---", 0) == 0 && size <= 64 * 1024;
        } else if (bucket != nullptr && field(line, "Rss:", &value)) {
            *bucket += value;
            memory.rss += value;
        } else if (field(line, "Pss:", &value)) {
            memory.pss += value;
        } else if (field(line, "Private_Dirty:", &value)) {
            memory.privateDirty += value;
        } else if (field(line, "AnonHugePages:", &value)) {
            memory.hugePages += value;
        }
    }
    return memory;
}

}  // namespace sysbench
