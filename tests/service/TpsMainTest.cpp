// Runs the real service executable. Without a binder driver it registers with the in-process
// service manager, which always succeeds, and then sleeps in the thread pool forever.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <sstream>
#include <string>

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

}  // namespace
}  // namespace tps::test
