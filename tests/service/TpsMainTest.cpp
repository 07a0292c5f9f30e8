// Runs the real service executable. Without a binder driver it registers with the in-process
// service manager, which always succeeds, and then sleeps in the thread pool forever.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include "LogCapture.h"

namespace tps::test {
namespace {

constexpr char kServiceName[] = "service name = vendor.tavix.tps.ITps/default";
constexpr char kRegistered[] = "Tavix Prism hal service registered";

class ServiceProcess {
public:
    explicit ServiceProcess(const std::string& propertyDir) {
        int fds[2];
        if (pipe2(fds, O_CLOEXEC) != 0) return;
        mPid = fork();
        if (mPid == 0) {
            dup2(fds[1], STDERR_FILENO);
            setenv("TPS_PROPERTY_DIR", propertyDir.c_str(), 1);
            setenv("TPS_BINDER_DEVICE", "/nonexistent/binder", 1);
            execl(TPS_SERVICE_BINARY, TPS_SERVICE_BINARY, nullptr);
            _exit(127);
        }
        close(fds[1]);
        mStderr = fds[0];
    }

    ~ServiceProcess() {
        if (mPid > 0) {
            kill(mPid, SIGKILL);
            waitpid(mPid, nullptr, 0);
        }
        if (mStderr >= 0) close(mStderr);
    }

    // Reads stderr until `text` appears in it; false if the process ends or goes quiet first.
    bool waitFor(const std::string& text) {
        while (mOutput.find(text) == std::string::npos) {
            if (!readSome(30000)) return false;
        }
        return true;
    }

    // True once the main thread sleeps in a blocking call, that is in the thread pool: every
    // line before the join has then been written.
    bool waitUntilMainThreadSleeps() {
        for (int attempt = 0; attempt < 3000; ++attempt) {
            if (mainThreadSleeps()) {
                while (readSome(0)) {
                }
                return true;
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        return false;
    }

    const std::string& output() const { return mOutput; }

private:
    bool readSome(int timeoutMs) {
        pollfd pfd{mStderr, POLLIN, 0};
        if (poll(&pfd, 1, timeoutMs) <= 0) return false;
        char buffer[4096];
        ssize_t n = read(mStderr, buffer, sizeof(buffer));
        if (n <= 0) return false;
        mOutput.append(buffer, static_cast<size_t>(n));
        return true;
    }

    bool mainThreadSleeps() const {
        std::ifstream stat("/proc/" + std::to_string(mPid) + "/stat");
        std::string content((std::istreambuf_iterator<char>(stat)), {});
        size_t paren = content.rfind(')');
        if (paren == std::string::npos || paren + 2 >= content.size()) return false;
        if (content[paren + 2] != 'S') return false;
        // Also check that the sleep is a wait rather than, say, a file read in progress.
        std::ifstream syscallFile("/proc/" + std::to_string(mPid) + "/syscall");
        long number = -1;
        if (!(syscallFile >> number)) return false;
        for (long waiting : {SYS_futex, SYS_nanosleep, SYS_clock_nanosleep, SYS_pause, SYS_ppoll,
                             SYS_rt_sigtimedwait, SYS_rt_sigsuspend, SYS_ioctl}) {
            if (number == waiting) return true;
        }
        return false;
    }

    pid_t mPid = -1;
    int mStderr = -1;
    std::string mOutput;
};

bool hasLine(const std::string& output, char priority, const std::string& text) {
    std::istringstream lines(output);
    std::string line;
    while (std::getline(lines, line)) {
        if (line.find(std::string(" ") + priority + " TavixPrismAIDLService") !=
                    std::string::npos &&
            line.size() >= text.size() &&
            line.compare(line.size() - text.size(), text.size(), text) == 0) {
            return true;
        }
    }
    return false;
}

TEST(TpsMainTest, StartUpLinesAtDefaultLevel) {
    ScopedPropertyDir properties;
    ServiceProcess service(properties.path());
    ASSERT_TRUE(service.waitFor(kRegistered)) << service.output();
    EXPECT_TRUE(hasLine(service.output(), 'E', kServiceName)) << service.output();
    EXPECT_TRUE(hasLine(service.output(), 'I', kRegistered)) << service.output();
    EXPECT_TRUE(hasLine(service.output(), 'I', "Tps()")) << service.output();
}

TEST(TpsMainTest, LevelZeroWritesOnlyTheServiceName) {
    ScopedPropertyDir properties;
    properties.setLogLevel(0);
    ServiceProcess service(properties.path());
    ASSERT_TRUE(service.waitFor(kServiceName)) << service.output();
    ASSERT_TRUE(service.waitUntilMainThreadSleeps()) << service.output();

    std::istringstream lines(service.output());
    std::string line;
    int count = 0;
    while (std::getline(lines, line)) {
        if (line.find("TavixPrismAIDLService") != std::string::npos) ++count;
    }
    EXPECT_EQ(count, 1) << service.output();
    EXPECT_TRUE(hasLine(service.output(), 'E', kServiceName)) << service.output();
}

}  // namespace
}  // namespace tps::test
