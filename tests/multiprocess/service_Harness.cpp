#include "service_Harness.h"

#include <android/binder_manager.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <sstream>
#include <thread>

namespace svcmp {

namespace {

std::chrono::steady_clock::time_point deadline() {
    return std::chrono::steady_clock::now() + kPatience;
}

}  // namespace

Process::Process(const std::vector<std::string>& argv, const std::string& stderrPath,
                 const std::vector<std::string>& extraEnv) {
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return;
    mPid = fork();
    if (mPid == 0) {
        dup2(fds[1], STDOUT_FILENO);
        int err = open(stderrPath.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0644);
        if (err >= 0) dup2(err, STDERR_FILENO);
        for (const std::string& entry : extraEnv) putenv(const_cast<char*>(entry.c_str()));
        std::vector<char*> args;
        for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
        args.push_back(nullptr);
        execv(args[0], args.data());
        _exit(127);
    }
    close(fds[1]);
    mStdout = fds[0];
}

Process::~Process() {
    if (mPid > 0) {
        kill(SIGKILL);
        wait();
    }
    if (mStdout >= 0) close(mStdout);
}

bool Process::readLine(std::string* line) {
    const auto end = deadline();
    size_t newline;
    while ((newline = mPending.find('\n')) == std::string::npos) {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(
                end - std::chrono::steady_clock::now());
        pollfd pfd{mStdout, POLLIN, 0};
        if (left.count() <= 0 || poll(&pfd, 1, static_cast<int>(left.count())) <= 0) return false;
        char buffer[512];
        ssize_t n = read(mStdout, buffer, sizeof(buffer));
        if (n <= 0) return false;
        mPending.append(buffer, static_cast<size_t>(n));
    }
    *line = mPending.substr(0, newline);
    mPending.erase(0, newline + 1);
    return true;
}

void Process::kill(int signal) {
    if (mPid > 0) ::kill(mPid, signal);
}

int Process::wait() {
    if (mPid <= 0) return -1;
    int status = 0;
    pid_t pid = mPid;
    mPid = -1;
    if (waitpid(pid, &status, 0) != pid) return -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

std::shared_ptr<aidl::vendor::tavix::tps::ITps> waitForTps() {
    const auto end = deadline();
    while (std::chrono::steady_clock::now() < end) {
        ndk::SpAIBinder binder(AServiceManager_checkService(kTpsInstance));
        if (binder.get() != nullptr && AIBinder_isAlive(binder.get())) {
            return aidl::vendor::tavix::tps::ITps::fromBinder(binder);
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return nullptr;
}

bool waitUntilUnlisted(const char* instance) {
    const auto end = deadline();
    while (std::chrono::steady_clock::now() < end) {
        ndk::SpAIBinder binder(AServiceManager_checkService(instance));
        if (binder.get() == nullptr) return true;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return false;
}

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

int countOccurrences(const std::string& haystack, const std::string& needle) {
    int n = 0;
    for (size_t pos = haystack.find(needle); pos != std::string::npos;
         pos = haystack.find(needle, pos + needle.size())) {
        ++n;
    }
    return n;
}

bool waitForLog(const std::string& path, const std::string& text, int times) {
    const auto end = deadline();
    while (countOccurrences(readFile(path), text) < times) {
        if (std::chrono::steady_clock::now() >= end) return false;
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
    }
    return true;
}

int deadRefs(pid_t pid) {
    std::ifstream proc("/sys/kernel/debug/binder/proc/" + std::to_string(pid));
    std::string line;
    int n = 0;
    while (std::getline(proc, line)) {
        if (line.find(" ref ") != std::string::npos &&
            line.find(" dead node ") != std::string::npos) {
            ++n;
        }
    }
    return n;
}

}  // namespace svcmp
