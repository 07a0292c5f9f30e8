// The light sensor manager against sensord in its own process, over the real binder driver, with
// the project's servicemanager. Run through tools/vm/run-in-vm (CTest label vm).

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <fstream>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TPLightSensorManagerAIDL.h"
#include "sensorservice_TestUtil.h"

namespace {

using ::aidl::android::frameworks::sensorservice::ISensorManager;
using tavixPrism::TPLightSensorManager;

constexpr char kTag[] = "TavixLightSensorManager";
const std::string kInstance = std::string(ISensorManager::descriptor) + "/default";

std::string gWorkDir;  // empty without a binder driver

std::string readFile(const std::string& path) {
    std::ifstream in(path);
    std::stringstream content;
    content << in.rdbuf();
    return content.str();
}

// A program started with fork/exec, its stderr in a file. Killed and reaped on destruction.
class Process {
public:
    Process(const std::vector<std::string>& argv, const std::string& stderrPath) {
        mPid = fork();
        if (mPid == 0) {
            const int err = open(stderrPath.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0644);
            if (err >= 0) dup2(err, STDERR_FILENO);
            std::vector<char*> args;
            for (const std::string& arg : argv) args.push_back(const_cast<char*>(arg.c_str()));
            args.push_back(nullptr);
            execv(args[0], args.data());
            _exit(127);
        }
    }
    ~Process() { kill(SIGKILL); }
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    void kill(int signal) {
        if (mPid <= 0) return;
        ::kill(mPid, signal);
        waitpid(mPid, nullptr, 0);
        mPid = -1;
    }

private:
    pid_t mPid = -1;
};

bool serviceListed() {
    ::ndk::SpAIBinder binder(AServiceManager_checkService(kInstance.c_str()));
    return binder.get() != nullptr && AIBinder_isAlive(binder.get());
}

// servicemanager for the whole run; this process serves its own callbacks on a thread pool.
class DriverEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (access("/dev/binder", F_OK) != 0) return;
        char dir[] = "/tmp/tps-sensor-mp.XXXXXX";
        ASSERT_NE(nullptr, mkdtemp(dir));
        gWorkDir = dir;
        mkdir((gWorkDir + "/vintf").c_str(), 0755);
        std::ofstream(gWorkDir + "/vintf/sensors.xml")
                << R"(<manifest version="1.0" type="framework">
    <hal format="aidl"><name>android.frameworks.sensorservice</name><version>1</version>
        <fqname>ISensorManager/default</fqname></hal>
</manifest>
)";
        mServiceManager = std::make_unique<Process>(
                std::vector<std::string>{SERVICEMANAGER_PATH, "--vintf-dir", gWorkDir + "/vintf"},
                gWorkDir + "/servicemanager.log");
        ASSERT_TRUE(sensortest::eventually([] {
            return readFile(gWorkDir + "/servicemanager.log").find("ready on") != std::string::npos;
        }));
        ABinderProcess_setThreadPoolMaxThreadCount(2);
        ABinderProcess_startThreadPool();
    }
    void TearDown() override { mServiceManager.reset(); }

private:
    std::unique_ptr<Process> mServiceManager;
};

class SensordProcessTest : public tps::test::LoggingTest {
protected:
    void SetUp() override {
        if (gWorkDir.empty()) GTEST_SKIP() << "no /dev/binder; run through tools/vm/run-in-vm";
    }
};

TEST_F(SensordProcessTest, LuxArrivesFromTheOtherProcessUntilItDies) {
    Process sensord({SENSORD_PATH, "--constant", "123.5", "--additional-info"},
                    gWorkDir + "/sensord.log");
    ASSERT_TRUE(sensortest::eventually(serviceListed)) << readFile(gWorkDir + "/sensord.log");
    TPLightSensorManager manager;
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag,
                             "Link to sensor service death notification successful"));
    ASSERT_EQ(0, manager.createLightSensor());
    ASSERT_EQ(0, manager.createEventQueue());
    ASSERT_EQ(0, manager.enableSensor());
    EXPECT_TRUE(mLog.has(ANDROID_LOG_INFO, kTag, "Name :Ambient Light Sensor (simulated)"));
    ASSERT_TRUE(sensortest::eventually([&] { return manager.getCurAmbinetLux() == 123.5f; }));
    EXPECT_EQ(0, manager.disableSensor());
    ASSERT_EQ(0, manager.enableSensor());

    sensord.kill(SIGKILL);
    EXPECT_TRUE(sensortest::eventually([&] {
        return mLog.count(ANDROID_LOG_ERROR, kTag, "Ambinet light Sensor service died") == 1;
    })) << mLog.dump();
    EXPECT_EQ(-22, manager.disableSensor());
    EXPECT_EQ(123.5f, manager.getCurAmbinetLux());
    manager.destroyEventQueue();
}

}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new DriverEnvironment());
    return RUN_ALL_TESTS();
}
