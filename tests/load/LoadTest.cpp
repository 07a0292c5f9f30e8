// Load on the real service process over the binder driver: many client processes, each with
// more threads than the service's pool, some killed mid-call, beside long-lived watchers.
// Run through tools/vm/run-in-vm; "--load-seconds N" (or env TPS_LOAD_SECONDS) lengthens it.
//
// The binary doubles as its children: "--child watcher FILE" appends every notification to
// FILE; "--child client SECONDS SESSIONS SEED COUNTFILE" calls every method until SECONDS
// have passed.

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstring>
#include <fstream>
#include <mutex>
#include <random>
#include <sstream>
#include <thread>

#include "MpTestUtil.h"
#include "service_Harness.h"

#if defined(__SANITIZE_ADDRESS__)
#define TPS_LOAD_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TPS_LOAD_SANITIZED 1
#endif
#endif

namespace svcmp {
namespace {

using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;
using Clock = std::chrono::steady_clock;

Clock::time_point in(double seconds) {
    return Clock::now() +
           std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
}

std::string gSelf;
double gLoadSeconds = 0;  // 0: the default for this build

class FileCallback : public BnTpsCallback {
public:
    explicit FileCallback(const char* path) : mOut(path == nullptr ? nullptr : fopen(path, "a")) {}
    ndk::ScopedAStatus onTavixNotification(const std::string& event) override {
        std::lock_guard<std::mutex> guard(mLock);
        if (mOut != nullptr) {
            fprintf(mOut, "%s\n", event.c_str());
            fflush(mOut);
        }
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool*) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool*) override { return ndk::ScopedAStatus::ok(); }

private:
    std::mutex mLock;
    FILE* mOut;  // guarded by mLock; left open for the life of the process
};

int runWatcher(const char* path) {
    ABinderProcess_startThreadPool();
    std::shared_ptr<ITps> tps = waitForTps();
    if (tps == nullptr) return 1;
    if (!tps->registerCallback(ndk::SharedRefBase::make<FileCallback>(path)).isOk()) return 1;
    printf("registered\n");
    fflush(stdout);
    for (;;) pause();
}

// One round of calls; with `sessions`, every session it opens it also closes before returning.
bool clientRound(ITps& tps, bool sessions, std::mt19937& random, long* calls) {
    std::vector<float> values;
    std::string reply;
    int32_t version = 0;
    const int pick = static_cast<int>(random() % 8);
    const std::string brightness = "brightness=" + std::to_string(random() % 256);
    bool ok = tps.getTavixPrismStatus(&values).isOk() && values.size() == 7 &&
              tps.setParameters(brightness + ";pqMode=" + std::to_string(random() % 3)).isOk() &&
              tps.getParameters("all", &reply).isOk() && tps.updateParams(0, 128).isOk() &&
              tps.getInterfaceVersion(&version).isOk() && tps.getInterfaceHash(&reply).isOk() &&
              tps.setParameters("displayID=0;filterRise=0.5").isOk();
    *calls += 7;
    if (!ok || !sessions) return ok;
    static const char* const kProcessors[] = {"TPDPUProcessor", "TPC2Processor", "SDRDPUProcessor",
                                              "SDRC2Processor", "TPPreviewProcessor"};
    if (pick < 5) {
        const std::string name = kProcessors[pick];
        ok = tps.setParameters("register_" + name + "=" + std::to_string(random() % 2)).isOk() &&
             tps.setParameters("filterRise=0.25").isOk() && tps.getTavixPrismStatus(&values).isOk();
        ok = tps.setParameters("Unregister_" + name).isOk() && ok;
    } else {
        ok = tps.registerProcessor(pick == 5).isOk() && tps.getParameters("all", &reply).isOk();
        ok = tps.unregisterProcessor().isOk() && ok;
    }
    *calls += 4;
    return ok;
}

// The service holds a reference to every callback until it notices this process is gone, so
// the callbacks stay reachable to the end instead of looking leaked at exit.
std::shared_ptr<FileCallback> keptCallback() {
    static std::mutex lock;
    static auto* kept = new std::vector<std::shared_ptr<FileCallback>>;  // guarded by lock
    std::lock_guard<std::mutex> guard(lock);
    return kept->emplace_back(ndk::SharedRefBase::make<FileCallback>(nullptr));
}

// Publishes the calls made so far where the test can read them after a SIGKILL.
void publishCalls(const std::string& path, long calls) {
    std::ofstream(path + ".new") << calls;
    rename((path + ".new").c_str(), path.c_str());
}

int runClient(double seconds, bool sessions, unsigned seed, const std::string& countPath) {
    ABinderProcess_startThreadPool();
    std::shared_ptr<ITps> tps = waitForTps();
    if (tps == nullptr) return 1;
    constexpr int kThreads = 6;  // more than the service's pool of 4 plus its main thread
    const auto end = in(seconds);
    std::atomic<long> calls{0};
    std::atomic<int> failures{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&, t] {
            std::mt19937 random(seed * kThreads + t);
            long made = 0;
            for (int round = 0; Clock::now() < end; ++round) {
                // Short-lived: it lives until this process dies and a fan-out drops it.
                if (round % 200 == 0) {
                    ++made;
                    if (!tps->registerCallback(keptCallback()).isOk()) {
                        ++failures;
                    }
                }
                if (!clientRound(*tps, sessions, random, &made)) ++failures;
                calls += made;
                made = 0;
                if (t == 0 && round % 16 == 0) publishCalls(countPath, calls);
            }
        });
    }
    for (auto& thread : threads) thread.join();
    printf("calls %ld failures %d\n", calls.load(), failures.load());
    fflush(stdout);
    return failures == 0 ? 0 : 1;
}

long rssKiB(pid_t pid) {
    std::istringstream status(readFile("/proc/" + std::to_string(pid) + "/status"));
    std::string line;
    while (std::getline(status, line)) {
        if (line.rfind("VmRSS:", 0) == 0) return std::stol(line.substr(6));
    }
    return -1;
}

// What the driver holds for one process.
struct DriverHold {
    int nodes = 0;
    int refs = 0;
    int buffers = 0;
    // A leak only ever adds: a sensor session that was open at the first look may since have
    // closed and released its listener node.
    bool within(const DriverHold& limit) const {
        return nodes <= limit.nodes && refs <= limit.refs && buffers <= limit.buffers;
    }
};

DriverHold driverHold(pid_t pid) {
    const mptest::ProcState state = mptest::binderProcState(pid);
    return {state.nodes, state.refs, state.buffers};
}

std::string describe(const DriverHold& h) {
    return std::to_string(h.nodes) + " nodes, " + std::to_string(h.refs) + " refs, " +
           std::to_string(h.buffers) + " buffers";
}

// Polls until `pid`'s hold is within `expected` (the driver frees things asynchronously).
bool settlesAt(pid_t pid, const DriverHold& expected, DriverHold* last) {
    const auto end = Clock::now() + kPatience;
    while (!(*last = driverHold(pid)).within(expected) && Clock::now() < end) {
        std::this_thread::sleep_for(std::chrono::milliseconds(50));
    }
    return last->within(expected);
}

std::vector<std::string> lines(const std::string& path) {
    std::istringstream in(readFile(path));
    std::vector<std::string> out;
    for (std::string line; std::getline(in, line);) out.push_back(line);
    return out;
}

class LoadTest : public ::testing::Test {
protected:
    void SetUp() override {
        if (access("/dev/binder", F_OK) != 0) GTEST_SKIP() << "run through tools/vm/run-in-vm";
        char dir[] = "/tmp/tps-load.XXXXXX";
        ASSERT_NE(mkdtemp(dir), nullptr);
        mDir = dir;
        mkdir((mDir + "/vintf").c_str(), 0755);
        mkdir((mDir + "/properties").c_str(), 0755);
        std::ofstream(mDir + "/vintf/tps.xml") << R"(<manifest version="1.0" type="device">
    <hal format="aidl"><name>vendor.tavix.tps</name><version>1</version>
        <fqname>ITps/default</fqname></hal>
    <hal format="aidl"><name>android.frameworks.sensorservice</name><version>1</version>
        <fqname>ISensorManager/default</fqname></hal>
</manifest>
)";
        setenv("TPS_PROPERTY_DIR", (mDir + "/properties").c_str(), 1);
        mManager = start({SERVICEMANAGER_PATH, "--vintf-dir", mDir + "/vintf"}, "servicemanager");
        ASSERT_TRUE(waitForLog(mDir + "/servicemanager.log", "ready on"));
        mSensord = start({SENSORD_PATH, "--constant", "200"}, "sensord");
        ndk::SpAIBinder sensors(AServiceManager_waitForService(
                "android.frameworks.sensorservice.ISensorManager/default"));
        ASSERT_NE(sensors.get(), nullptr);
        mService = start({SERVICE_PATH}, "service");
        mTps = waitForTps();
        ASSERT_NE(mTps, nullptr) << readFile(mDir + "/service.log");
    }

    std::unique_ptr<Process> start(const std::vector<std::string>& argv, const std::string& name) {
        return std::make_unique<Process>(argv, mDir + "/" + name + ".log");
    }

    std::unique_ptr<Process> startWatcher(const std::string& events) {
        auto watcher = start({gSelf, "--child", "watcher", events}, "watcher");
        std::string line;
        EXPECT_TRUE(watcher->readLine(&line) && line == "registered");
        return watcher;
    }

    // Session clients run their time out and exit; the others never open a session and are
    // killed at a random moment, mid-call, and replaced until the time is up.
    void runLoad(double seconds, int clients) {
        struct Slot {
            std::unique_ptr<Process> process;
            Clock::time_point due;
            bool sessions = false;
            std::string calls;  // where the client publishes its count of calls
        };
        std::mt19937 random(7);
        const auto end = in(seconds);
        std::vector<Slot> slots(clients);
        auto launch = [&](Slot& slot, int index) {
            const double left = std::chrono::duration<double>(end - Clock::now()).count();
            slot.sessions = index % 2 == 0;
            const double life = slot.sessions ? std::min(left, 2.0 + random() % 2) : left + 60;
            slot.due = in(slot.sessions ? life : 0.3 + random() % 12 * 0.1);
            slot.calls = mDir + "/calls" + std::to_string(++mStarted);
            slot.process = start({gSelf, "--child", "client", std::to_string(life),
                                  slot.sessions ? "1" : "0", std::to_string(mStarted), slot.calls},
                                 "client");
        };
        auto finish = [&](Slot& slot) {
            if (slot.sessions) {
                std::string line;
                EXPECT_TRUE(slot.process->readLine(&line)) << "a client did not finish";
                long calls = 0;
                int failures = -1;
                EXPECT_EQ(sscanf(line.c_str(), "calls %ld failures %d", &calls, &failures), 2);
                EXPECT_EQ(failures, 0) << line;
                mCalls += calls;
                EXPECT_EQ(slot.process->wait(), 0) << readFile(mDir + "/client.log");
            } else {
                slot.process->kill(SIGKILL);
                EXPECT_EQ(slot.process->wait(), 128 + SIGKILL) << "a client died by itself";
                mCalls += atol(readFile(slot.calls).c_str());
                ++mKilled;
            }
            slot.process.reset();
        };
        for (int i = 0; i < clients; ++i) launch(slots[i], i);
        while (Clock::now() < end) {
            for (int i = 0; i < clients; ++i) {
                if (slots[i].process == nullptr || Clock::now() < slots[i].due) continue;
                finish(slots[i]);
                if (in(0.5) < end) launch(slots[i], i);
            }
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
        }
        for (auto& slot : slots) {
            if (slot.process != nullptr) finish(slot);
        }
    }

    // One open and close from this process: a full round of notifications to every watcher.
    void fanOutOnce() {
        ASSERT_TRUE(mTps->registerProcessor(true).isOk());
        ASSERT_TRUE(mTps->unregisterProcessor().isOk());
    }

    std::string mDir;
    std::unique_ptr<Process> mManager, mSensord, mService;
    std::shared_ptr<ITps> mTps;
    int mStarted = 0;
    int mKilled = 0;
    long mCalls = 0;
};

// Killed clients never open a session, so once every session client has exited normally all
// counts must be back at zero: any session left open shows up as a missing stop below, and a
// killed client costs the service only its callback proxies, dropped at the next fan-out.
TEST_F(LoadTest, ManyClientsLeaveNothingBehind) {
    double seconds = gLoadSeconds;
    if (seconds <= 0) {
#ifdef TPS_LOAD_SANITIZED
        seconds = 4;
#else
        seconds = 8;
#endif
    }
    constexpr int kWatchers = 3;
    constexpr int kClients = 10;
    std::vector<std::unique_ptr<Process>> watchers;
    for (int i = 0; i < kWatchers; ++i) {
        watchers.push_back(startWatcher(mDir + "/watcher" + std::to_string(i) + ".events"));
    }
    runLoad(1.5, 4);  // warm-up: pools, caches and the registry reach their working size
    // A killed client's last call may still be under way in the service and leave a callback
    // there after the fan-out; a newcomer's start-up outlasts it, as it does after the load.
    startWatcher(mDir + "/settle.events").reset();
    fanOutOnce();
    const pid_t servicePid = mService->pid();
    const DriverHold serviceBefore = driverHold(servicePid);
    const DriverHold selfBefore = driverHold(getpid());
    const DriverHold managerBefore = driverHold(mManager->pid());
    const long rssBefore = rssKiB(servicePid);
    const auto began = Clock::now();
    const int warmStarted = mStarted, warmKilled = mKilled;  // file names stay unique
    mCalls = 0;

    runLoad(seconds, kClients);
    const double took = std::chrono::duration<double>(Clock::now() - began).count();

    // All sessions are closed: a newcomer gets no catch-up, then exactly one of each event.
    const std::string lateEvents = mDir + "/late.events";
    auto late = startWatcher(lateEvents);
    EXPECT_EQ(readFile(lateEvents), "") << "catch-up although every session was closed";
    const std::vector<std::string> before = lines(mDir + "/watcher0.events");
    fanOutOnce();
    const std::vector<std::string> round = {"Callback_TavixRenderStart", "Callback_TavixLogoStart",
                                            "Callback_TavixRenderStop", "Callback_TavixLogoStop"};
    EXPECT_TRUE(waitForLog(lateEvents, "Callback_TavixLogoStop"));
    EXPECT_EQ(lines(lateEvents), round);
    const std::vector<std::string> after = lines(mDir + "/watcher0.events");
    ASSERT_EQ(after.size(), before.size() + round.size());
    EXPECT_TRUE(std::equal(round.begin(), round.end(), after.begin() + before.size()));
    late->kill(SIGKILL);
    late->wait();
    fanOutOnce();  // drops the newcomer, now dead, as it dropped the killed clients

    // Every transition reached every long-lived watcher once, alternating per kind.
    for (int i = 0; i < kWatchers; ++i) {
        const std::vector<std::string> events =
                lines(mDir + "/watcher" + std::to_string(i) + ".events");
        EXPECT_EQ(events.size(), after.size() + round.size());
        EXPECT_EQ(events, lines(mDir + "/watcher0.events"))
                << "watcher " << i << " saw other transitions than watcher 0";
        for (const std::string kind : {"Render", "Logo"}) {
            bool playing = false;
            for (const std::string& event : events) {
                if (event.find("Tavix" + kind) == std::string::npos) continue;
                EXPECT_EQ(event, "Callback_Tavix" + kind + (playing ? "Stop" : "Start"));
                playing = !playing;
            }
            EXPECT_FALSE(playing) << kind << " still playing at the end";
        }
    }

    // The fan-outs above dropped every dead client; nothing else may be left in the driver.
    DriverHold last;
    EXPECT_EQ(deadRefs(servicePid), 0);
    EXPECT_EQ(driverHold(servicePid).buffers, 0);
    EXPECT_TRUE(settlesAt(servicePid, serviceBefore, &last))
            << describe(last) << " instead of at most " << describe(serviceBefore);
    EXPECT_TRUE(settlesAt(getpid(), selfBefore, &last)) << describe(last);
    EXPECT_TRUE(settlesAt(mManager->pid(), managerBefore, &last)) << describe(last);

    const long rssAfter = rssKiB(servicePid);
    printf("[ load ] %ld calls, %d clients started, %d killed, %.1f s, %zu events per watcher, "
           "service RSS %ld KiB -> %ld KiB, service %s\n",
           mCalls, mStarted - warmStarted, mKilled - warmKilled, took, after.size(), rssBefore,
           rssAfter, describe(driverHold(servicePid)).c_str());
#ifdef TPS_LOAD_SANITIZED
    constexpr long kRssBoundKiB = 64 * 1024;  // freed memory sits in the sanitizer's quarantine
#else
    constexpr long kRssBoundKiB = 512;
#endif
    EXPECT_LT(rssAfter - rssBefore, kRssBoundKiB);
    EXPECT_GT(mKilled, warmKilled);
    EXPECT_GT(mCalls, 0);
}

}  // namespace
}  // namespace svcmp

int main(int argc, char** argv) {
    svcmp::gSelf = argv[0];
    if (argc == 4 && strcmp(argv[1], "--child") == 0 && strcmp(argv[2], "watcher") == 0) {
        return svcmp::runWatcher(argv[3]);
    }
    if (argc == 7 && strcmp(argv[1], "--child") == 0 && strcmp(argv[2], "client") == 0) {
        return svcmp::runClient(atof(argv[3]), argv[4][0] == '1',
                                static_cast<unsigned>(atoi(argv[5])), argv[6]);
    }
    ::testing::InitGoogleTest(&argc, argv);
    if (const char* env = getenv("TPS_LOAD_SECONDS")) svcmp::gLoadSeconds = atof(env);
    for (int i = 1; i + 1 < argc; ++i) {
        if (strcmp(argv[i], "--load-seconds") == 0) svcmp::gLoadSeconds = atof(argv[i + 1]);
    }
    return RUN_ALL_TESTS();
}
