// The real service in its own process on the real binder driver, with servicemanager, sensord
// and client processes around it. Run through tools/vm/run-in-vm (CTest label vm).
//
// The binary doubles as its client processes: "--child watcher" registers a callback and prints
// every notification it receives.

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <cstring>
#include <deque>
#include <fstream>
#include <thread>

#include "service_Harness.h"

namespace svcmp {
namespace {

using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;

constexpr float kSensorLux = 200.0f;
const char* const kSensorInstance = "android.frameworks.sensorservice.ISensorManager/default";

std::string gSelf;     // this binary, for the child processes
std::string gWorkDir;  // logs, property store and VINTF fragments of this run

class PrintingCallback : public BnTpsCallback {
public:
    ndk::ScopedAStatus onTavixNotification(const std::string& event) override {
        printf("event %s\n", event.c_str());
        fflush(stdout);
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool*) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool*) override { return ndk::ScopedAStatus::ok(); }
};

int runWatcher() {
    ABinderProcess_startThreadPool();
    std::shared_ptr<ITps> tps = waitForTps();
    if (tps == nullptr) return 1;
    auto callback = ndk::SharedRefBase::make<PrintingCallback>();
    if (!tps->registerCallback(callback).isOk()) return 1;
    printf("registered\n");
    fflush(stdout);
    for (;;) pause();
}

void writeFile(const std::string& path, const std::string& text) {
    std::ofstream(path) << text;
}

// servicemanager and sensord for the whole run; each test starts the service afresh.
class SystemEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (access("/dev/binder", F_OK) != 0) return;
        char dir[] = "/tmp/tps-service-mp.XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        gWorkDir = dir;
        mkdir((gWorkDir + "/vintf").c_str(), 0755);
        writeFile(gWorkDir + "/vintf/tps.xml", R"(<manifest version="1.0" type="device">
    <hal format="aidl"><name>vendor.tavix.tps</name><version>1</version>
        <fqname>ITps/default</fqname></hal>
    <hal format="aidl"><name>android.frameworks.sensorservice</name><version>1</version>
        <fqname>ISensorManager/default</fqname></hal>
</manifest>
)");
        setenv("TPS_PROPERTY_DIR", (gWorkDir + "/properties").c_str(), 1);
        mkdir((gWorkDir + "/properties").c_str(), 0755);

        mManager = std::make_unique<Process>(
                std::vector<std::string>{SERVICEMANAGER_PATH, "--vintf-dir", gWorkDir + "/vintf"},
                gWorkDir + "/servicemanager.log");
        ASSERT_TRUE(waitForLog(gWorkDir + "/servicemanager.log", "ready on"));
        mSensord = std::make_unique<Process>(
                std::vector<std::string>{SENSORD_PATH, "--constant", "200"},
                gWorkDir + "/sensord.log");
        ndk::SpAIBinder sensors(AServiceManager_waitForService(kSensorInstance));
        ASSERT_NE(sensors.get(), nullptr);
    }

    void TearDown() override {
        mSensord.reset();
        mManager.reset();
    }

private:
    std::unique_ptr<Process> mManager;
    std::unique_ptr<Process> mSensord;
};

class ServiceProcessTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (gWorkDir.empty()) GTEST_SKIP() << "no /dev/binder; run through tools/vm/run-in-vm";
        const ::testing::TestInfo* info = ::testing::UnitTest::GetInstance()->current_test_info();
        mLog = gWorkDir + "/" + info->name() + ".service.log";
        startService();
    }

    void startService() {
        ASSERT_TRUE(waitUntilUnlisted(kTpsInstance)) << "the previous service is still listed";
        mService = std::make_unique<Process>(std::vector<std::string>{SERVICE_PATH}, mLog);
        mTps = waitForTps();
        ASSERT_NE(mTps, nullptr) << readFile(mLog);
    }

    // A client process with a registered callback. Its catch-up events may come before the
    // line saying that registerCallback returned; they are kept for next().
    struct Watcher {
        std::unique_ptr<Process> process;
        std::deque<std::string> early;
    };

    std::unique_ptr<Watcher> startWatcher() {
        auto watcher = std::make_unique<Watcher>();
        watcher->process = std::make_unique<Process>(
                std::vector<std::string>{gSelf, "--child", "watcher"}, gWorkDir + "/watcher.log");
        std::string line;
        while (watcher->process->readLine(&line) && line != "registered") {
            watcher->early.push_back(line);
        }
        EXPECT_EQ(line, "registered");
        return watcher;
    }

    void set(const std::string& text) { ASSERT_TRUE(mTps->setParameters(text).isOk()); }

    std::vector<float> status() {
        std::vector<float> values;
        EXPECT_TRUE(mTps->getTavixPrismStatus(&values).isOk());
        return values;
    }

    static std::string next(Watcher& watcher) {
        std::string line;
        if (!watcher.early.empty()) {
            line = watcher.early.front();
            watcher.early.pop_front();
            return line;
        }
        return watcher.process->readLine(&line) ? line : "(nothing)";
    }

    std::string mLog;
    std::unique_ptr<Process> mService;
    std::shared_ptr<ITps> mTps;
};

TEST_F(ServiceProcessTest, RoadOfOneRequest) {
    EXPECT_TRUE(waitForLog(mLog, "service name = vendor.tavix.tps.ITps/default"));
    EXPECT_TRUE(waitForLog(mLog, "Tavix Prism hal service registered"));
    auto watcher = startWatcher();

    set("register_TPDPUProcessor=1");
    EXPECT_EQ(next(*watcher), "event Callback_TavixRenderStart");
    EXPECT_EQ(next(*watcher), "event Callback_TavixLogoStart");
    EXPECT_TRUE(waitForLog(mLog, "setParameters: register_TPDPUProcessor=1"));

    // Lux comes from sensord's events through the filter. The filter takes its first sample at the
    // first query, which may come before sensord's first event (0 lux); from then on it only rises
    // toward the sensor's value.
    std::vector<float> values;
    const auto end = std::chrono::steady_clock::now() + kPatience;
    while ((values = status()).at(4) == 0.0f && std::chrono::steady_clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    EXPECT_GT(values.at(4), 0.0f);
    EXPECT_LE(values.at(4), kSensorLux + 1.0f);
    std::this_thread::sleep_for(std::chrono::milliseconds(60));
    const float later = status().at(4);
    EXPECT_GE(later, values.at(4));
    EXPECT_LE(later, kSensorLux + 1.0f);
    set("brightness=100");
    EXPECT_EQ(status().at(0), 100.0f) << "the backlight filter's first sample passes unchanged";

    set("Unregister_TPDPUProcessor");
    EXPECT_EQ(next(*watcher), "event Callback_TavixRenderStop");
    EXPECT_EQ(next(*watcher), "event Callback_TavixLogoStop");
}

}  // namespace
}  // namespace svcmp

int main(int argc, char** argv) {
    svcmp::gSelf = argv[0];
    if (argc == 3 && strcmp(argv[1], "--child") == 0 && strcmp(argv[2], "watcher") == 0) {
        return svcmp::runWatcher();
    }
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new svcmp::SystemEnvironment);
    return RUN_ALL_TESTS();
}
