#include "SystemBench.h"

#include <android/binder_manager.h>
#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <random>
#include <thread>

#include "CallbackHost.h"
#include "ProcessMemory.h"
#include "TpsLog.h"
#include "TransactionTrace.h"

namespace sysbench {

namespace {

constexpr int kMaxClientProcesses = 8;
constexpr float kRestingLux = 100.0f;
const char* const kSensorInstance = "android.frameworks.sensorservice.ISensorManager/default";
// In the order one fan-out pair sends them.
const char* const kEvents[] = {"Callback_TavixRenderStart", "Callback_TavixLogoStart",
                               "Callback_TavixRenderStop", "Callback_TavixLogoStop"};

int64_t nowNs() {
    timespec ts;
    clock_gettime(CLOCK_MONOTONIC, &ts);
    return int64_t{ts.tv_sec} * 1000000000 + ts.tv_nsec;
}

double percentileUs(std::vector<int64_t> samples, double q) {
    if (samples.empty()) return 0;
    std::sort(samples.begin(), samples.end());
    const size_t at = std::min(samples.size() - 1, static_cast<size_t>(q * samples.size()));
    return samples[at] / 1000.0;
}

void sleepMs(int ms) {
    std::this_thread::sleep_for(std::chrono::milliseconds(ms));
}

std::string manifest() {
    std::string xml = R"(<manifest version="1.0" type="device">
    <hal format="aidl"><name>vendor.tavix.tps</name><version>1</version>
        <fqname>ITps/default</fqname>
        <interface><name>ITpsCallback</name>
)";
    for (int p = 0; p < kMaxClientProcesses; ++p) {
        for (int c = 0; c < kMaxClientProcesses; ++c) {
            const std::string instance = callbackInstance(p, c);
            xml += "            <instance>" + instance.substr(instance.find('/') + 1) +
                   "</instance>\n";
        }
    }
    return xml + R"(        </interface></hal>
    <hal format="aidl"><name>android.frameworks.sensorservice</name><version>1</version>
        <fqname>ISensorManager/default</fqname></hal>
</manifest>
)";
}

void printMemory(const char* label, const ProcessMemory& m) {
    printf("%-36s %6ld %6ld %6ld %6ld %6ld %6ld %6ld %6ld %6ld %3d\n", label, m.vmRss, m.rss, m.pss,
           m.privateDirty, m.heap, m.stacks, m.otherAnon, m.files, m.hugePages, m.threads);
}

}  // namespace

SystemBench::SystemBench(std::string self, Options options)
    : mSelf(std::move(self)), mOptions(std::move(options)) {}

SystemBench::~SystemBench() {
    mClients.clear();
    if (mLuxPipe >= 0) close(mLuxPipe);
}

int SystemBench::run() {
    if (access("/dev/binder", F_OK) != 0) {
        fprintf(stderr, "system_bench: needs /dev/binder; run it through tools/vm/run-in-vm\n");
        return 1;
    }
    if (!startSystem()) return 1;
    printf("system_bench: service pid %d, %u cpus, %s run; every baseline from this boot\n",
           mService->pid(), std::thread::hardware_concurrency(), mOptions.quick ? "quick" : "full");
    const bool ok = memoryFigure() && fanOutFigure() && luxFigure();
    if (!ok) fprintf(stderr, "system_bench: failed; logs in %s\n", mDir.c_str());
    return ok ? 0 : 1;
}

bool SystemBench::startSystem() {
    char dir[] = "/tmp/sysbench.XXXXXX";
    if (mkdtemp(dir) == nullptr) return false;
    mDir = dir;
    mkdir((mDir + "/vintf").c_str(), 0755);
    mkdir((mDir + "/properties").c_str(), 0755);
    std::ofstream(mDir + "/vintf/tps.xml") << manifest();
    setenv("TPS_PROPERTY_DIR", (mDir + "/properties").c_str(), 1);

    mManager = std::make_unique<svcmp::Process>(
            std::vector<std::string>{SERVICEMANAGER_PATH, "--vintf-dir", mDir + "/vintf"},
            mDir + "/servicemanager.log");
    if (!svcmp::waitForLog(mDir + "/servicemanager.log", "ready on")) return false;

    // sensord reads its lux from a pipe: lend it our standard input while it starts.
    int fds[2];
    if (pipe2(fds, O_CLOEXEC) != 0) return false;
    const int savedStdin = dup(STDIN_FILENO);
    dup2(fds[0], STDIN_FILENO);
    mSensord = std::make_unique<svcmp::Process>(std::vector<std::string>{SENSORD_PATH, "--stdin"},
                                                mDir + "/sensord.log");
    if (savedStdin >= 0) {
        dup2(savedStdin, STDIN_FILENO);
        close(savedStdin);
    } else {
        close(STDIN_FILENO);
    }
    close(fds[0]);
    mLuxPipe = fds[1];
    if (!feedLux(kRestingLux)) return false;
    ndk::SpAIBinder sensors(AServiceManager_waitForService(kSensorInstance));
    if (sensors.get() == nullptr) return false;

    mService = std::make_unique<svcmp::Process>(std::vector<std::string>{SERVICE_PATH},
                                                mDir + "/service.log");
    mTps = svcmp::waitForTps();
    return mTps != nullptr;
}

bool SystemBench::feedLux(float lux) {
    const std::string line = std::to_string(lux) + "\n";
    return write(mLuxPipe, line.data(), line.size()) == static_cast<ssize_t>(line.size());
}

bool SystemBench::waitForLux(float lux) {
    const int64_t end = nowNs() + int64_t{10} * 1000000000;
    std::vector<float> status;
    while (nowNs() < end) {
        if (mTps->getTavixPrismStatus(&status).isOk() && status.size() == 7 && status[4] == lux) {
            return true;
        }
        sleepMs(5);
    }
    return false;
}

// A sensor-only session without filtering stays open from here on, so that fan-out pairs neither
// build nor tear down the sensor reader, and the status reports the raw lux. A set brightness
// spares every status query the error line about a missing brightness node.
bool SystemBench::openSensorSession() {
    return mTps->setParameters("brightness=128").isOk() &&
           mTps->setParameters("register_SDRC2Processor=0").isOk() && waitForLux(kRestingLux);
}

bool SystemBench::startClients(int callbacks) {
    const int processes = std::min(callbacks, kMaxClientProcesses);
    for (int p = 0; p < processes; ++p) {
        const int count = callbacks / processes + (p < callbacks % processes ? 1 : 0);
        mClients.push_back(
                {std::make_unique<svcmp::Process>(
                         std::vector<std::string>{mSelf, "--child", "callbacks", std::to_string(p),
                                                  std::to_string(count)},
                         mDir + "/client.log"),
                 count});
    }
    // They start side by side; collect their answers afterwards.
    std::string line;
    for (Client& client : mClients) {
        if (!client.process->readLine(&line) || line != "registered") return false;
    }
    return true;
}

bool SystemBench::killClients() {
    for (Client& client : mClients) client.process->kill(SIGKILL);
    for (Client& client : mClients) client.process->wait();
    mClients.clear();
    // The driver may still be releasing a dead process when the first fan-out reaches it.
    for (int attempt = 0; attempt < 50; ++attempt) {
        fanOutPair();
        if (svcmp::deadRefs(mService->pid()) == 0) return true;
        sleepMs(20);
    }
    fprintf(stderr, "system_bench: the service kept references to dead clients\n");
    return false;
}

std::vector<std::shared_ptr<SystemBench::ITpsCallback>> SystemBench::clientCallbacks() const {
    std::vector<std::shared_ptr<ITpsCallback>> callbacks;
    for (size_t p = 0; p < mClients.size(); ++p) {
        for (int c = 0; c < mClients[p].callbacks; ++c) {
            const std::string instance = callbackInstance(static_cast<int>(p), c);
            ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
            if (binder.get() == nullptr) return {};
            callbacks.push_back(ITpsCallback::fromBinder(binder));
        }
    }
    return callbacks;
}

int64_t SystemBench::fanOutPair() {
    const int64_t start = nowNs();
    mTps->registerProcessor(false);
    mTps->unregisterProcessor();
    return nowNs() - start;
}

bool SystemBench::memoryFigure() {
    const int rounds = mOptions.quick ? 3 : 20;
    const pid_t service = mService->pid();
    sleepMs(300);  // at rest: the pool threads have started and nothing is asked of it
    const ProcessMemory rest = ProcessMemory::read(service);
    if (!openSensorSession()) return false;
    const ProcessMemory sensor = ProcessMemory::read(service);

    // Baseline: a client process, the same binder library and runtime, one callback.
    if (!startClients(1)) return false;
    const ProcessMemory client = ProcessMemory::read(mClients.front().process->pid());
    if (!killClients()) return false;

    if (!startClients(64)) return false;
    const ProcessMemory registered = ProcessMemory::read(service);
    if (!killClients()) return false;
    const ProcessMemory dropped = ProcessMemory::read(service);

    std::vector<ProcessMemory> afterRound;
    for (int r = 0; r < rounds; ++r) {
        if (!startClients(64) || !killClients()) return false;
        afterRound.push_back(ProcessMemory::read(service));
    }

    printf("\n== memory of the service process, KiB (64 clients = 8 processes x 8 callbacks)\n");
    printf("%-36s %6s %6s %6s %6s %6s %6s %6s %6s %6s %3s\n", "state", "VmRSS", "Rss", "Pss",
           "PrDirt", "heap", "stacks", "anon", "files", "thp", "thr");
    printMemory("at rest after start", rest);
    printMemory("sensor session open", sensor);
    printMemory("64 clients registered", registered);
    printMemory("they died, next fan-out dropped them", dropped);
    const std::string last = "after " + std::to_string(rounds) + " rounds of 64 clients";
    printMemory(last.c_str(), afterRound.back());
    printMemory("baseline: client process, 1 callback", client);
    printf("PrDirty after each round:");
    for (const ProcessMemory& m : afterRound) printf(" %ld", m.privateDirty);
    printf("\n");
    const ProcessMemory& first = afterRound.front();
    const double perRound = rounds > 1 ? 1.0 / (rounds - 1) : 0;
    printf("growth per round (rounds 2-%d): Rss %+.1f, PrDirty %+.1f, heap %+.1f KiB\n", rounds,
           (afterRound.back().rss - first.rss) * perRound,
           (afterRound.back().privateDirty - first.privateDirty) * perRound,
           (afterRound.back().heap - first.heap) * perRound);
    printf("service / client at rest: Rss %.2f, PrDirty %.2f; goal Rss < 4096 KiB at rest: %s\n",
           static_cast<double>(rest.rss) / client.rss,
           static_cast<double>(rest.privateDirty) / client.privateDirty,
           rest.rss < 4096 ? "met" : "missed");
    fflush(stdout);
    return true;
}

bool SystemBench::fanOutFigure() {
    printf("\n== fan-out: registerProcessor(false) + unregisterProcessor(), four fan-outs, "
           "against 4 x N direct calls\n   to the same callbacks from one thread; microseconds, "
           "medians; \"quiet\": the same pair at log level 0\n");
    printf("%8s %7s %10s %12s %12s %7s %12s %7s\n", "clients", "layout", "pair", "pair-pair(0)",
           "4N calls", "ratio", "quiet p-p(0)", "ratio");
    const std::string defaultLevel = std::to_string(tps::kDefaultLogLevel);
    double pairZero = 0;
    double quietZero = 0;
    for (const int n : {0, 1, 4, 16, 64}) {
        if (!startClients(n)) return false;
        const std::vector<std::shared_ptr<ITpsCallback>> callbacks = clientCallbacks();
        if (callbacks.size() != static_cast<size_t>(n)) return false;
        // Small sizes are cheap: more rounds there steady the subtraction of pair(0).
        const int rounds = mOptions.quick ? 5 : n <= 16 ? 150 : 60;
        std::vector<int64_t> pairs, quietPairs, direct;
        for (const bool quiet : {false, true}) {
            // The service reads the level before every message, so this takes effect at once.
            property_set(tps::kLogLevelProperty, quiet ? "0" : defaultLevel.c_str());
            for (int r = -3; r < rounds; ++r) {  // three rounds of warm-up
                const int64_t pair = fanOutPair();
                const int64_t start = nowNs();
                for (const char* event : kEvents) {
                    for (const auto& callback : callbacks) {
                        if (!callback->onTavixNotification(event).isOk()) return false;
                    }
                }
                if (r < 0) continue;
                (quiet ? quietPairs : pairs).push_back(pair);
                if (!quiet) direct.push_back(nowNs() - start);
            }
        }
        property_set(tps::kLogLevelProperty, defaultLevel.c_str());
        const double pair = percentileUs(pairs, 0.5);
        const double quiet = percentileUs(quietPairs, 0.5);
        if (n == 0) {
            pairZero = pair;
            quietZero = quiet;
        }
        const double calls = percentileUs(direct, 0.5);
        const std::string layout = n == 0 ? "-"
                                          : std::to_string(mClients.size()) + "x" +
                                                    std::to_string(mClients.front().callbacks);
        printf("%8d %7s %10.1f %12.1f %12.1f", n, layout.c_str(), pair, pair - pairZero, calls);
        if (n > 0) {
            printf(" %7.2f %12.1f %7.2f", (pair - pairZero) / calls, quiet - quietZero,
                   (quiet - quietZero) / calls);
        } else {
            printf(" %7s %12.1f", "", quiet);
        }
        printf("\n");
        if (n > 0 && !killClients()) return false;
    }
    printf("goal: ratio <= 1.2\n");
    fflush(stdout);
    return true;
}

bool SystemBench::luxFigure() {
    const int trials = mOptions.quick ? 15 : 150;
    TransactionTrace trace(mService->pid());
    std::minstd_rand random(1);
    std::vector<int64_t> roundTrips, fromEvent, fromWrite;
    std::vector<float> status;
    for (int t = 0; t < trials; ++t) {
        sleepMs(static_cast<int>(random() % 20));  // no fixed phase against the sampling period
        const float lux = 1000.0f + static_cast<float>(t);
        if (trace.ok()) trace.clear();
        const int64_t written = nowNs();
        if (!feedLux(lux)) return false;
        int64_t seen = 0;
        while (seen == 0 && nowNs() - written < int64_t{5} * 1000000000) {
            const int64_t start = nowNs();
            if (!mTps->getTavixPrismStatus(&status).isOk() || status.size() != 7) return false;
            const int64_t end = nowNs();
            roundTrips.push_back(end - start);
            if (status[4] == lux) seen = end;
        }
        if (seen == 0) return false;
        fromWrite.push_back(seen - written);
        if (!trace.ok()) continue;
        // The event that carried the value: the last one sent before the client saw it.
        const std::vector<int64_t> sends = trace.onewaySendTimes();
        const auto after = std::upper_bound(sends.begin(), sends.end(), seen);
        if (after != sends.begin() && *(after - 1) >= written)
            fromEvent.push_back(seen - *(after - 1));
    }

    const double roundTrip = percentileUs(roundTrips, 0.5);
    printf("\n== sensor event to visible lux: sensord --stdin, unfiltered sensor session, one "
           "client polling\n   getTavixPrismStatus in a tight loop; %d trials; microseconds\n",
           trials);
    printf("%-40s %10s %10s %9s\n", "figure", "median", "p90", "ratio");
    printf("%-40s %10.1f %10.1f %9s\n", "baseline: one status round trip (poll)", roundTrip,
           percentileUs(roundTrips, 0.9), "1.00");
    if (trace.ok()) {
        const double median = percentileUs(fromEvent, 0.5);
        printf("%-40s %10.1f %10.1f %9.2f   (%zu matched)\n",
               "event sent -> first status showing it", median, percentileUs(fromEvent, 0.9),
               median / roundTrip, fromEvent.size());
    } else {
        printf("(no binder tracepoint: event send times unknown)\n");
    }
    const double median = percentileUs(fromWrite, 0.5);
    printf("%-40s %10.1f %10.1f %9.2f\n", "stdin write -> visible (50 ms sampling)", median,
           percentileUs(fromWrite, 0.9), median / roundTrip);
    fflush(stdout);
    return true;
}

}  // namespace sysbench
