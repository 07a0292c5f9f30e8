// Faults around the real service process on the real binder driver: clients that die or block
// in their callbacks, a dying sensor service, broken brightness nodes, a property store that
// refuses writes and configuration files that are no use. Run through tools/vm/run-in-vm: the
// guest gives root, writable /odm and /sys/class/{backlight,leds}, and the test lays them out.
//
// The binary doubles as its client processes ("--child watcher|dier|blocker FIFO").

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cmath>
#include <cstring>
#include <deque>
#include <filesystem>
#include <fstream>
#include <random>
#include <thread>

#include "service_Harness.h"

namespace svcmp {
namespace {

namespace fs = std::filesystem;
using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;

const char* const kSensorInstance = "android.frameworks.sensorservice.ISensorManager/default";
const char* const kConfigPath = "/odm/etc/tavix/tavix_prism_clstc.cfg";
const char* const kBacklight = "/sys/class/backlight/panel0-backlight";
const char* const kLeds = "/sys/class/leds/lcd-backlight";
const char* const kModeProperty = "persist.vendor.tavixp.mode";

std::string gSelf;
std::string gWorkDir;

// What a child client does when the render start reaches it.
enum class Reaction { kPrint, kDie, kBlock };

class ChildCallback : public BnTpsCallback {
public:
    ChildCallback(Reaction reaction, std::string fifo) : mReaction(reaction), mFifo(fifo) {}

    ndk::ScopedAStatus onTavixNotification(const std::string& event) override {
        if (event == "Callback_TavixRenderStart" && mReaction == Reaction::kDie) _exit(0);
        if (event == "Callback_TavixRenderStart" && mReaction == Reaction::kBlock) {
            printf("blocked\n");
            fflush(stdout);
            // Opening a FIFO for reading waits for its writer: the test releases us by writing.
            int fd = open(mFifo.c_str(), O_RDONLY);
            char byte;
            if (fd >= 0 && read(fd, &byte, 1) < 0) perror("read");
            if (fd >= 0) close(fd);
        }
        printf("event %s\n", event.c_str());
        fflush(stdout);
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool*) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool*) override { return ndk::ScopedAStatus::ok(); }

private:
    const Reaction mReaction;
    const std::string mFifo;
};

int runChild(Reaction reaction, const std::string& fifo) {
    ABinderProcess_startThreadPool();
    std::shared_ptr<ITps> tps = waitForTps();
    if (tps == nullptr) return 1;
    auto callback = ndk::SharedRefBase::make<ChildCallback>(reaction, fifo);
    if (!tps->registerCallback(callback).isOk()) return 1;
    printf("registered\n");
    fflush(stdout);
    for (;;) pause();
}

void writeFile(const std::string& path, const std::string& text) {
    fs::create_directories(fs::path(path).parent_path());
    std::ofstream(path, std::ios::binary) << text;
}

// servicemanager for the whole run; sensord and the service are started by each test.
class SystemEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        if (access("/dev/binder", F_OK) != 0) return;
        char dir[] = "/tmp/tps-fault.XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        gWorkDir = dir;
        writeFile(gWorkDir + "/vintf/tps.xml", R"(<manifest version="1.0" type="device">
    <hal format="aidl"><name>vendor.tavix.tps</name><version>1</version>
        <fqname>ITps/default</fqname></hal>
    <hal format="aidl"><name>android.frameworks.sensorservice</name><version>1</version>
        <fqname>ISensorManager/default</fqname></hal>
</manifest>
)");
        mManager = std::make_unique<Process>(
                std::vector<std::string>{SERVICEMANAGER_PATH, "--vintf-dir", gWorkDir + "/vintf"},
                gWorkDir + "/servicemanager.log");
        ASSERT_TRUE(waitForLog(gWorkDir + "/servicemanager.log", "ready on"));
    }
    void TearDown() override { mManager.reset(); }

private:
    std::unique_ptr<Process> mManager;
};

class FaultTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (gWorkDir.empty()) GTEST_SKIP() << "no /dev/binder; run through tools/vm/run-in-vm";
        mName = ::testing::UnitTest::GetInstance()->current_test_info()->name();
        mStore = gWorkDir + "/" + mName + ".properties";
        fs::create_directories(mStore);
        setenv("TPS_PROPERTY_DIR", mStore.c_str(), 1);
        clearDevice();
        startSensord({"--constant", "200"});
    }

    void TearDown() override {
        if (gWorkDir.empty()) return;
        stopService();
        mSensord.reset();
        clearDevice();
        const std::string driverState =
                readFile("/sys/kernel/debug/binder/proc/" + std::to_string(getpid()));
        EXPECT_EQ(deadRefs(getpid()), 0) << "this test process leaked a reference\n" << driverState;
        EXPECT_EQ(countOccurrences(driverState, " buffer "), 0) << driverState;
    }

    static void clearDevice() {
        fs::remove_all("/odm/etc");
        for (const char* dir : {kBacklight, kLeds}) fs::remove_all(dir);
    }

    void startSensord(std::vector<std::string> args) {
        mSensord.reset();
        ASSERT_TRUE(waitUntilUnlisted(kSensorInstance));
        args.insert(args.begin(), SENSORD_PATH);
        mSensord = std::make_unique<Process>(args, gWorkDir + "/" + mName + ".sensord.log");
        // Polled rather than waited for: a waiter's registration callback would stay queued
        // in this process, which runs no binder thread, holding a reference to sensord.
        const auto end = std::chrono::steady_clock::now() + kPatience;
        while (ndk::SpAIBinder(AServiceManager_checkService(kSensorInstance)).get() == nullptr) {
            ASSERT_LT(std::chrono::steady_clock::now(), end) << "sensord never registered";
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
    }

    void startService(const std::vector<std::string>& env = {}) {
        ASSERT_TRUE(waitUntilUnlisted(kTpsInstance)) << "the previous service is still listed";
        mLog = gWorkDir + "/" + mName + "." + std::to_string(++mStarts) + ".service.log";
        mService = std::make_unique<Process>(std::vector<std::string>{SERVICE_PATH}, mLog, env);
        mTps = waitForTps();
        ASSERT_NE(mTps, nullptr) << readFile(mLog);
    }

    void stopService() {
        mTps.reset();
        if (mService == nullptr) return;
        mService->kill(SIGTERM);
        mService->wait();
        mService.reset();
    }

    struct Child {
        std::unique_ptr<Process> process;
        std::deque<std::string> early;  // lines printed before "registered"
    };

    std::unique_ptr<Child> startChild(const char* role, const std::string& fifo = "-") {
        auto child = std::make_unique<Child>();
        child->process =
                std::make_unique<Process>(std::vector<std::string>{gSelf, "--child", role, fifo},
                                          gWorkDir + "/" + mName + "." + role + ".log");
        std::string line;
        while (child->process->readLine(&line) && line != "registered") {
            child->early.push_back(line);
        }
        EXPECT_EQ(line, "registered");
        return child;
    }

    static std::string next(Child& child) {
        std::string line;
        if (!child.early.empty()) {
            line = child.early.front();
            child.early.pop_front();
            return line;
        }
        return child.process->readLine(&line) ? line : "(nothing)";
    }

    void set(const std::string& text) { ASSERT_TRUE(mTps->setParameters(text).isOk()) << text; }

    std::vector<float> status() {
        std::vector<float> values;
        EXPECT_TRUE(mTps->getTavixPrismStatus(&values).isOk());
        values.resize(7);
        return values;
    }

    // Every method still answers, the way a client would use them.
    void expectAnswers() {
        std::string reply;
        EXPECT_TRUE(mTps->getParameters("all", &reply).isOk());
        EXPECT_NE(reply.find("pqMode="), std::string::npos) << reply;
        EXPECT_TRUE(mTps->setParameters("displaySize=1080,2400").isOk());
        EXPECT_EQ(status()[5], 1080.0f);
        EXPECT_TRUE(mTps->registerProcessor(false).isOk());
        EXPECT_TRUE(mTps->unregisterProcessor().isOk());
    }

    float waitForLux(float lux) {
        const auto end = std::chrono::steady_clock::now() + kPatience;
        float value = status()[4];
        while (value != lux && std::chrono::steady_clock::now() < end) {
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
            value = status()[4];
        }
        return value;
    }

    std::string mName;
    std::string mStore;
    std::string mLog;
    int mStarts = 0;
    std::unique_ptr<Process> mSensord;
    std::unique_ptr<Process> mService;
    std::shared_ptr<ITps> mTps;
};

TEST_F(FaultTest, ClientDyingInsideTheFanOut) {
    startService();
    auto before = startChild("watcher");
    auto dier = startChild("dier");
    auto after = startChild("watcher");

    set("register_SDRDPUProcessor=0");
    EXPECT_EQ(dier->process->wait(), 0) << "the dying client exits inside its callback";
    EXPECT_EQ(next(*before), "event Callback_TavixRenderStart");
    EXPECT_EQ(next(*after), "event Callback_TavixRenderStart");
    const std::string failure =
            "onTavixNotification tavixPrism_Callback_TavixRenderStart transaction fail";
    EXPECT_EQ(countOccurrences(readFile(mLog), failure), 1) << readFile(mLog);
    EXPECT_EQ(deadRefs(mService->pid()), 0) << "the dead client was not dropped";

    set("Unregister_SDRDPUProcessor");
    EXPECT_EQ(next(*before), "event Callback_TavixRenderStop");
    EXPECT_EQ(next(*after), "event Callback_TavixRenderStop");
    EXPECT_EQ(countOccurrences(readFile(mLog), "transaction fail"), 1) << "dropped for good";

    auto late = startChild("watcher");
    set("register_TPC2Processor=0");
    EXPECT_EQ(next(*late), "event Callback_TavixLogoStart");
    set("Unregister_TPC2Processor");
    EXPECT_EQ(next(*late), "event Callback_TavixLogoStop");
    expectAnswers();
}

TEST_F(FaultTest, ClientBlockingInItsCallback) {
    startService();
    const std::string fifo = gWorkDir + "/release.fifo";
    ASSERT_EQ(mkfifo(fifo.c_str(), 0600), 0);
    auto blocker = startChild("blocker", fifo);
    auto watcher = startChild("watcher");

    std::atomic<bool> renderDone{false};
    std::atomic<bool> logoDone{false};
    std::thread render([&] {
        set("register_SDRDPUProcessor=0");
        renderDone = true;
    });
    ASSERT_EQ(next(*blocker), "blocked");
    std::thread logo([&] {
        set("register_TPC2Processor=0");
        logoDone = true;
    });
    // The second call has reached the service: it logs each request on entry.
    ASSERT_TRUE(waitForLog(mLog, "setParameters: register_TPC2Processor=0"));

    // Queries and the keys that do not touch callbacks or sessions answer meanwhile.
    set("displayID=1;displaySize=720,1600;pqMode=1");
    std::vector<float> values = status();
    EXPECT_EQ(values[2], 1.0f);
    EXPECT_EQ(values[3], 1.0f);
    EXPECT_EQ(values[6], 1600.0f);
    std::string reply;
    EXPECT_TRUE(mTps->getParameters("displayWidth", &reply).isOk());
    EXPECT_EQ(reply, "displayWidth=720");
    EXPECT_FALSE(renderDone) << "the blocked fan-out returned";
    EXPECT_FALSE(logoDone) << "a logo call passed a blocked fan-out";

    int fd = open(fifo.c_str(), O_WRONLY);
    ASSERT_GE(fd, 0);
    ASSERT_EQ(write(fd, "x", 1), 1);
    close(fd);
    render.join();
    logo.join();
    EXPECT_EQ(next(*blocker), "event Callback_TavixRenderStart");
    EXPECT_EQ(next(*blocker), "event Callback_TavixLogoStart");
    EXPECT_EQ(next(*watcher), "event Callback_TavixRenderStart");
    EXPECT_EQ(next(*watcher), "event Callback_TavixLogoStart");
    EXPECT_EQ(countOccurrences(readFile(mLog), "transaction fail"), 0);
}

TEST_F(FaultTest, SensorServiceDyingWithASessionOpen) {
    startService();
    set("register_SDRC2Processor=0");
    ASSERT_EQ(waitForLux(200.0f), 200.0f);

    mSensord->kill(SIGKILL);
    mSensord->wait();
    EXPECT_TRUE(waitForLog(mLog, "Ambinet light Sensor service died"));
    EXPECT_EQ(status()[4], 200.0f) << "lux keeps its last value";

    // Nothing reconnects the open session to a new sensor service.
    startSensord({"--constant", "50"});
    EXPECT_EQ(status()[4], 200.0f);
    set("Unregister_SDRC2Processor");

    // A sensor service without a light sensor: the next session fails cleanly, lux 0.
    startSensord({"--no-light-sensor"});
    set("register_SDRC2Processor=0");
    EXPECT_TRUE(waitForLog(mLog, "Failed to create light sensor"));
    EXPECT_EQ(status()[4], 0.0f);
    set("Unregister_SDRC2Processor");

    // A healthy one again: a new session reads it.
    startSensord({"--constant", "50"});
    set("register_SDRC2Processor=0");
    EXPECT_EQ(waitForLux(50.0f), 50.0f);
    set("Unregister_SDRC2Processor");
    expectAnswers();
}

TEST_F(FaultTest, BrokenBrightnessNodes) {
    const std::string bl = kBacklight;
    // Node content, or "<dir>" for a directory at the path (it opens, but reading it fails:
    // root bypasses mode bits), or nullptr for no node.
    struct Row {
        const char* name;
        const std::string group;
        const char* brightness;
        const char* maximum;
        float reported;
        const char* message;  // "/node" stands for the message of a failed read of that node
    };
    const std::string leds = kLeds;
    const Row rows[] = {
            {"healthy", bl, "100", "510", 50.0f, "use node group 0"},
            {"no nodes", bl, nullptr, nullptr, 255.0f,
             "Can't get realtime Brightness, use default value"},
            {"unreadable", bl, "<dir>", "510", 127.0f, "/brightness"},
            {"non-numeric", bl, "bright", "510", 127.0f, "/brightness"},
            {"no maximum", bl, "100", nullptr, 100.0f, nullptr},
            // Scaled by 255 / 0 and not clamped: far beyond the scale, and no crash.
            {"zero maximum", bl, "100", "0", INFINITY, nullptr},
            {"non-numeric maximum", bl, "100", "max", 100.0f, "/max_brightness"},
            {"second group", leds, "100", "1020", 25.0f, "use node group 1"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        clearDevice();
        writeFile(kConfigPath, "BLUMode = 2\n");
        for (auto [node, content] : {std::pair{"/brightness", row.brightness},
                                     std::pair{"/max_brightness", row.maximum}}) {
            if (content == nullptr) continue;
            if (strcmp(content, "<dir>") == 0) {
                fs::create_directories(row.group + node);
            } else {
                writeFile(row.group + node, std::string(content) + "\n");
            }
        }
        startService();
        set("brightness=30;register_SDRC2Processor=0");
        if (std::isinf(row.reported)) {
            EXPECT_GT(status()[0], 255.0f);
        } else {
            EXPECT_EQ(status()[0], row.reported) << readFile(mLog);
        }
        std::string log = readFile(mLog);
        if (row.message != nullptr && row.message[0] == '/') {
            const std::string failure =
                    "Failed to read brightness value from file: " + row.group + row.message;
            EXPECT_NE(log.find(failure), std::string::npos) << log;
        } else if (row.message != nullptr) {
            EXPECT_NE(log.find(row.message), std::string::npos) << log;
        }
        if (row.maximum == nullptr && row.brightness != nullptr) {
            EXPECT_NE(log.find("fail to open " + row.group + "/max_brightness brightness file"),
                      std::string::npos)
                    << log;
        }
        set("Unregister_SDRC2Processor");
        expectAnswers();
        stopService();
    }
}

TEST_F(FaultTest, PropertyStoreRefusingWrites) {
    writeFile(mStore + "/" + kModeProperty, "1");
    // A read-only bind mount refuses even root's writes while reads go on.
    ASSERT_EQ(mount(mStore.c_str(), mStore.c_str(), nullptr, MS_BIND, nullptr), 0);
    ASSERT_EQ(mount(nullptr, mStore.c_str(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr),
              0);
    startService();
    EXPECT_EQ(status()[2], 1.0f) << "the mode is read at start-up";
    set("pqMode=2");
    EXPECT_EQ(status()[2], 2.0f) << "the mode holds although it was not stored";
    EXPECT_TRUE(waitForLog(mLog, std::string("Error setting property: ") + kModeProperty));
    expectAnswers();
    stopService();
    EXPECT_EQ(readFile(mStore + "/" + kModeProperty), "1");
    ASSERT_EQ(umount(mStore.c_str()), 0);

    // A store below a regular file can be neither read nor written: mode 0 at start-up.
    const std::string file = mStore + "/not-a-directory";
    writeFile(file, "");
    startService({"TPS_PROPERTY_DIR=" + file + "/store"});
    EXPECT_EQ(status()[2], 0.0f);
    set("pqMode=1");
    EXPECT_EQ(status()[2], 1.0f);
    EXPECT_TRUE(waitForLog(mLog, std::string("Error setting property: ") + kModeProperty));
    expectAnswers();
}

TEST_F(FaultTest, UselessConfigurationFiles) {
    std::string huge;
    for (int i = 0; huge.size() < (8u << 20); ++i) {
        huge += "TFrontLuxScaleX" + std::to_string(i) + " == not a number\n";
    }
    std::mt19937 random(7);
    std::string binary(1 << 16, '\0');
    for (char& c : binary) c = static_cast<char>(random() % 7 == 0 ? 0 : random());
    struct Row {
        const char* name;
        const std::string* content;
        const char* displayIds;  // a file read whole without sections names display 0
    };
    const Row rows[] = {{"empty", nullptr, "displayIDs="},
                        {"huge", &huge, "displayIDs=0"},
                        {"binary", &binary, "displayIDs=0"},
                        {"directory", nullptr, "displayIDs="}};
    const std::string empty;
    for (auto [name, content, displayIds] : rows) {
        SCOPED_TRACE(name);
        clearDevice();
        if (strcmp(name, "directory") == 0) {
            fs::create_directories(kConfigPath);
        } else {
            writeFile(kConfigPath, content == nullptr ? empty : *content);
        }
        startService();
        // BLU mode 0 reports the framework's brightness; any other mode would report 255.
        set("brightness=40;register_SDRC2Processor=0");
        EXPECT_EQ(status()[0], 40.0f) << readFile(mLog);
        set("Unregister_SDRC2Processor");
        std::string reply;
        EXPECT_TRUE(mTps->getParameters("displayIDs", &reply).isOk());
        EXPECT_EQ(reply, displayIds);
        expectAnswers();
        stopService();
    }
}

}  // namespace
}  // namespace svcmp

int main(int argc, char** argv) {
    svcmp::gSelf = argv[0];
    if (argc == 4 && strcmp(argv[1], "--child") == 0) {
        using svcmp::Reaction;
        const std::string role = argv[2];
        Reaction reaction = role == "dier"      ? Reaction::kDie
                            : role == "blocker" ? Reaction::kBlock
                                                : Reaction::kPrint;
        return svcmp::runChild(reaction, argv[3]);
    }
    ::testing::InitGoogleTest(&argc, argv);
    ::testing::AddGlobalTestEnvironment(new svcmp::SystemEnvironment);
    return RUN_ALL_TESTS();
}
