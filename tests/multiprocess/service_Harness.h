#pragma once

#include <aidl/vendor/tavix/tps/ITps.h>
#include <sys/types.h>

#include <chrono>
#include <memory>
#include <string>
#include <vector>

namespace svcmp {

// Slow TCG guests: anything waiting on another process gives up only after this long.
inline constexpr std::chrono::seconds kPatience{30};
inline constexpr char kTpsInstance[] = "vendor.tavix.tps.ITps/default";

// A program started with fork/exec: stdout readable line by line through a pipe, stderr in a
// file. Killed and reaped on destruction.
class Process {
public:
    Process(const std::vector<std::string>& argv, const std::string& stderrPath,
            const std::vector<std::string>& extraEnv = {});
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    pid_t pid() const { return mPid; }
    // The next line of stdout without its newline; false at end of output or after kPatience.
    bool readLine(std::string* line);
    void kill(int signal);
    int wait();  // exit status, or 128 + signal

private:
    pid_t mPid = -1;
    int mStdout = -1;
    std::string mPending;
};

// The service's connection, waited for up to kPatience; null if it never appears.
std::shared_ptr<aidl::vendor::tavix::tps::ITps> waitForTps();
// Waits until the service manager no longer lists `instance` (its process has died).
bool waitUntilUnlisted(const char* instance);

std::string readFile(const std::string& path);
// Polls a log file until `text` occurs in it `times` times.
bool waitForLog(const std::string& path, const std::string& text, int times = 1);
int countOccurrences(const std::string& haystack, const std::string& needle);

// References that process `pid` holds on nodes whose owner has died (binder debugfs).
int deadRefs(pid_t pid);

}  // namespace svcmp
