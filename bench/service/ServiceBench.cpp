// In-process costs of the service's status query, parameter commands and filters, each set against
// the work it cannot avoid, measured in the same run. The summary at the end prints every figure
// next to its baseline as a ratio, with the allocations per call.

#include <android/log.h>
#include <benchmark/benchmark.h>
#include <cutils/properties.h>
#include <stdlib.h>
#include <unistd.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <map>
#include <mutex>
#include <shared_mutex>
#include <string>
#include <vector>

#include "AllocationCounter.h"
#include "BenchSeams.h"
#include "ProxyUtilsAmbient.h"
#include "ProxyUtilsBacklight.h"
#include "TavixTpsParameter.h"
#include "Tps.h"

namespace tps::bench {
namespace {

using aidl::vendor::tavix::tps::Tps;

// The ambient filter updates at most every 50 ms; stepping the clock by that much per read makes
// every call take the full blend.
constexpr int64_t kFilterStepNs = 50'000'000;

const char kTypicalSet[] =
        "brightness=128;adjustedBrightness=100;displayID=0;displaySize=1080,2400";
const char kRegisterSet[] = "register_TPDPUProcessor=1;Unregister_TPDPUProcessor=1";

const std::string& pqModesSet() {
    static const std::string text = [] {
        std::string s = "pqModes=";
        for (int i = 0; i < 1000; ++i) {
            if (i > 0) s += ',';
            s += std::to_string(i % 3);
        }
        return s;
    }();
    return text;
}

// Counts heap allocations over the timed loop and publishes them per iteration.
class AllocationScope {
public:
    explicit AllocationScope(benchmark::State& state) : mState(state), mStart(allocationCount()) {}
    ~AllocationScope() {
        mState.counters["allocs"] =
                benchmark::Counter(static_cast<double>(allocationCount() - mStart),
                                   benchmark::Counter::kAvgIterations);
    }

private:
    benchmark::State& mState;
    const uint64_t mStart;
};

std::shared_ptr<Tps> makeService(int bluMode) {
    useBluMode(bluMode);
    return ndk::SharedRefBase::make<Tps>();
}

// ---- Baselines: the operations the measured calls cannot avoid.

void BM_Baseline_Locks(benchmark::State& state) {
    std::shared_mutex statusLock;
    std::mutex sensorLock;
    AllocationScope allocations(state);
    for (auto _ : state) {
        std::unique_lock<std::shared_mutex> a(statusLock);
        std::lock_guard<std::mutex> b(sensorLock);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(BM_Baseline_Locks);

void BM_Baseline_Vector7(benchmark::State& state) {
    float values[7] = {255, 0, 1, 0, 250.5f, 1080, 2400};
    AllocationScope allocations(state);
    for (auto _ : state) {
        std::vector<float> reply;
        benchmark::DoNotOptimize(values);
        reply.clear();
        reply.reserve(7);
        for (float v : values) reply.push_back(v);
        benchmark::DoNotOptimize(reply.data());
    }
}
BENCHMARK(BM_Baseline_Vector7);

double encodePq(float x) {
    const float y = std::max(x * 0.0001f, 0.0f);
    const double p = std::pow(static_cast<double>(y), 0.1593017578125);
    return std::pow(std::max((0.8359375 + 18.8515625 * p) / (1.0 + 18.6875 * p), 0.0), 78.84375);
}

void BM_Baseline_PqRoundTrip(benchmark::State& state) {
    float input = 250.5f;
    float previous = 240.0f;
    AllocationScope allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(input);
        benchmark::DoNotOptimize(previous);
        const float blend = static_cast<float>(encodePq(input)) * 0.5f +
                            0.5f * static_cast<float>(encodePq(previous));
        double q = std::min(std::pow(static_cast<double>(blend), 0.012683313515655966),
                            1.0087792641140467);
        double r = std::max((q - 0.8359375) / (18.8515625 - 18.6875 * q), 0.0);
        float out = static_cast<float>(std::pow(r, 6.277394636015326) * 10000.0);
        benchmark::DoNotOptimize(out);
    }
}
BENCHMARK(BM_Baseline_PqRoundTrip);

void BM_Baseline_NodeRead(benchmark::State& state) {
    const std::string& path = brightnessNodePath();
    AllocationScope allocations(state);
    for (auto _ : state) {
        FILE* file = fopen(path.c_str(), "re");
        float value = 0;
        if (file != nullptr) {
            if (fscanf(file, "%f", &value) != 1) value = -1;
            fclose(file);
        }
        benchmark::DoNotOptimize(value);
    }
}
BENCHMARK(BM_Baseline_NodeRead);

// Every gated log message reads the level property afresh; on the host that opens a file.
void BM_Baseline_LogLevelRead(benchmark::State& state) {
    AllocationScope allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(property_get_int32("persist.vendor.tavix.loglevel", 2));
    }
}
BENCHMARK(BM_Baseline_LogLevelRead);

void BM_Baseline_Parse(benchmark::State& state, std::string text) {
    AllocationScope allocations(state);
    for (auto _ : state) {
        TavixTpsParameter parameters(text);
        benchmark::DoNotOptimize(&parameters);
    }
}
BENCHMARK_CAPTURE(BM_Baseline_Parse, typical, std::string(kTypicalSet));
BENCHMARK_CAPTURE(BM_Baseline_Parse, register, std::string(kRegisterSet));
BENCHMARK_CAPTURE(BM_Baseline_Parse, pqModes1000, pqModesSet());

// A list key also has to be split into integers and stored.
void BM_Baseline_ParseList(benchmark::State& state) {
    std::vector<int> stored;
    AllocationScope allocations(state);
    for (auto _ : state) {
        TavixTpsParameter parameters(pqModesSet());
        std::vector<int> values;
        parameters.get<int>("pqModes", values);
        stored = values;
        benchmark::DoNotOptimize(stored.data());
    }
}
BENCHMARK(BM_Baseline_ParseList);

void BM_Baseline_ReplyAll(benchmark::State& state) {
    AllocationScope allocations(state);
    for (auto _ : state) {
        TavixTpsParameter reply;
        reply.add("brightness", std::to_string(128));
        reply.add("pqMode", std::to_string(1));
        reply.add("displayID", std::to_string(0));
        reply.add("ambientLux", std::to_string(250.5f));
        reply.add("displayWidth", std::to_string(1080));
        reply.add("displayHeight", std::to_string(2400));
        std::string text = reply.toString();
        benchmark::DoNotOptimize(text.data());
    }
}
BENCHMARK(BM_Baseline_ReplyAll);

void BM_Baseline_Fma(benchmark::State& state) {
    float last = 128.0f;
    float input = 100.0f;
    AllocationScope allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(input);
        last = std::fma(input, 0.19999999f, last * 0.8f);
        benchmark::DoNotOptimize(last);
    }
}
BENCHMARK(BM_Baseline_Fma);

// ---- The service.

// A fresh reply vector per call, as the binder stub makes one.
void runStatus(benchmark::State& state, Tps& tps) {
    AllocationScope allocations(state);
    for (auto _ : state) {
        std::vector<float> status;
        tps.getTavixPrismStatus(&status);
        benchmark::DoNotOptimize(status.data());
    }
}

void BM_Status_NoReader(benchmark::State& state) {
    auto tps = makeService(0);
    tps->setParameters("brightness=128");
    runStatus(state, *tps);
}
BENCHMARK(BM_Status_NoReader);

// Once a client has set the lists, the query copies them with the record although it does not
// report them.
void BM_Status_NoReaderWithLists(benchmark::State& state) {
    auto tps = makeService(0);
    tps->setParameters("brightness=128;pqModes=0,1,2;displayIDs=0,1");
    runStatus(state, *tps);
}
BENCHMARK(BM_Status_NoReaderWithLists);

void BM_Status_Blu0Filtered(benchmark::State& state) {
    auto tps = makeService(0);
    tps->setParameters("brightness=128");
    tps->enableSensorReader(true, true);
    setClockStepNs(kFilterStepNs);
    runStatus(state, *tps);
    setClockStepNs(0);
    tps->enableSensorReader(false, true);
}
BENCHMARK(BM_Status_Blu0Filtered);

void BM_Status_Blu2Node(benchmark::State& state) {
    auto tps = makeService(2);
    tps->enableSensorReader(true, false);
    runStatus(state, *tps);
    tps->enableSensorReader(false, true);
}
BENCHMARK(BM_Status_Blu2Node);

void BM_Set(benchmark::State& state, std::string text) {
    auto tps = makeService(0);
    AllocationScope allocations(state);
    for (auto _ : state) tps->setParameters(text);
}
BENCHMARK_CAPTURE(BM_Set, typical, std::string(kTypicalSet));
BENCHMARK_CAPTURE(BM_Set, register, std::string(kRegisterSet));
BENCHMARK_CAPTURE(BM_Set, pqModes1000, pqModesSet());

void BM_GetAll(benchmark::State& state) {
    auto tps = makeService(0);
    tps->setParameters(kTypicalSet);
    AllocationScope allocations(state);
    for (auto _ : state) {
        std::string reply;
        tps->getParameters("all", &reply);
        benchmark::DoNotOptimize(reply.data());
    }
}
BENCHMARK(BM_GetAll);

void BM_Filter_Ambient(benchmark::State& state) {
    tapr::ProxyUtilsAmbient filter;
    filter.setAmbientFilterRise(0.02f);
    filter.setAmbientFilterFall(0.004f);
    filter.setMinIntervalMs(50.0f);
    setClockStepNs(kFilterStepNs);
    float lux = 250.0f;
    AllocationScope allocations(state);
    for (auto _ : state) {
        // Alternate so the output keeps moving in both directions.
        lux = lux == 250.0f ? 900.0f : 250.0f;
        benchmark::DoNotOptimize(filter.Filter(lux));
    }
    setClockStepNs(0);
}
BENCHMARK(BM_Filter_Ambient);

void BM_Filter_Backlight(benchmark::State& state) {
    tapr::ProxyUtilsBacklight filter;
    float input = 100.0f;
    AllocationScope allocations(state);
    for (auto _ : state) {
        benchmark::DoNotOptimize(input);
        benchmark::DoNotOptimize(filter.Filter(input));
    }
}
BENCHMARK(BM_Filter_Backlight);

// ---- Summary.

struct Figure {
    double ns = 0;
    double allocs = 0;
};

// Prints the usual console lines and keeps each benchmark's time per call for the summary.
class SummaryReporter : public benchmark::ConsoleReporter {
public:
    explicit SummaryReporter(OutputOptions options) : ConsoleReporter(options) {}

    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.iterations == 0) continue;
            Figure& figure = mFigures[run.benchmark_name()];
            // CPU time: the machine is shared, and wall time would count other processes' turns.
            figure.ns = run.GetAdjustedCPUTime() *
                        benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
                        benchmark::GetTimeUnitMultiplier(run.time_unit);
            auto it = run.counters.find("allocs");
            if (it != run.counters.end()) figure.allocs = it->second.value;
        }
    }

    void printSummary() const {
        std::printf("\nSummary (CPU ns per call, same run; ratio = figure / baseline)\n");
        std::printf("%-34s %10s %7s  %-44s %10s %7s\n", "figure", "ns", "allocs", "baseline", "ns",
                    "ratio");
        row("status, no reader", "BM_Status_NoReader",
            {"BM_Baseline_Locks", "BM_Baseline_Vector7"});
        row("status, no reader, lists set", "BM_Status_NoReaderWithLists",
            {"BM_Baseline_Locks", "BM_Baseline_Vector7"});
        row("status, BLU 0, filtered", "BM_Status_Blu0Filtered",
            {"BM_Baseline_Locks", "BM_Baseline_Vector7", "BM_Baseline_PqRoundTrip"});
        row("status, BLU 2, node read", "BM_Status_Blu2Node",
            {"BM_Baseline_Locks", "BM_Baseline_Vector7", "BM_Baseline_NodeRead"});
        row("setParameters typical", "BM_Set/typical", {"BM_Baseline_Parse/typical"});
        row("setParameters register+unregister", "BM_Set/register", {"BM_Baseline_Parse/register"});
        row("setParameters pqModes x1000", "BM_Set/pqModes1000", {"BM_Baseline_ParseList"});
        row("getParameters(\"all\")", "BM_GetAll", {"BM_Baseline_ReplyAll"});
        row("ambient Filter (full blend)", "BM_Filter_Ambient", {"BM_Baseline_PqRoundTrip"});
        row("backlight Filter", "BM_Filter_Backlight", {"BM_Baseline_Fma"});
        const Figure logLevel = find("BM_Baseline_LogLevelRead");
        if (logLevel.ns > 0) {
            std::printf(
                    "(each gated log message first reads the log-level property: %.1f ns, "
                    "%.0f allocs on this host's file-backed store)\n",
                    logLevel.ns, logLevel.allocs);
        }

        const Figure noReader = find("BM_Status_NoReader");
        std::printf("\nGoals\n");
        if (noReader.ns > 0) {
            std::printf("  status query without I/O under 1 us: %.0f ns -> %s\n", noReader.ns,
                        noReader.ns < 1000 ? "met" : "MISSED");
        }
        for (const char* name : {"BM_Status_NoReader", "BM_Status_NoReaderWithLists",
                                 "BM_Status_Blu0Filtered", "BM_Status_Blu2Node"}) {
            const Figure f = find(name);
            // The reply vector is the one allocation the query may make.
            if (f.ns == 0) continue;  // filtered out of this run
            std::printf("  %-27s allocations per call %.2f (reply vector: 1) -> %s\n", name,
                        f.allocs, f.allocs <= 1.0 + 1e-9 ? "met" : "MISSED");
        }
    }

private:
    Figure find(const std::string& name) const {
        auto it = mFigures.find(name);
        return it == mFigures.end() ? Figure{} : it->second;
    }

    void row(const char* label, const char* name, std::vector<const char*> baselines) const {
        const Figure figure = find(name);
        double baseline = 0;
        std::string baselineLabel;
        for (const char* b : baselines) {
            baseline += find(b).ns;
            if (!baselineLabel.empty()) baselineLabel += " + ";
            baselineLabel += std::string(b).substr(std::string("BM_Baseline_").size());
        }
        if (figure.ns == 0 || baseline == 0) return;  // filtered out of this run
        std::printf("%-34s %10.1f %7.2f  %-44s %10.1f %7.2f\n", label, figure.ns, figure.allocs,
                    baselineLabel.c_str(), baseline, figure.ns / baseline);
    }

    std::map<std::string, Figure> mFigures;
};

// Keeps the service's messages out of the output; formatting still happens.
void discardLog(const __android_log_message*) {}

}  // namespace
}  // namespace tps::bench

int main(int argc, char** argv) {
    using namespace tps::bench;
    createBenchFolder();
    const std::string propertyDir = std::filesystem::temp_directory_path().string() +
                                    "/tps-bench-properties-" + std::to_string(getpid());
    std::filesystem::create_directories(propertyDir);
    setenv("TPS_PROPERTY_DIR", propertyDir.c_str(), 1);
    __android_log_set_logger(discardLog);

    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    SummaryReporter reporter(isatty(STDOUT_FILENO) ? benchmark::ConsoleReporter::OO_Defaults
                                                   : benchmark::ConsoleReporter::OO_Tabular);
    benchmark::RunSpecifiedBenchmarks(&reporter);
    reporter.printSummary();
    benchmark::Shutdown();

    removeBenchFolder();
    std::filesystem::remove_all(propertyDir);
    return 0;
}
