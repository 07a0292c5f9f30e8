// Cost of one getTavixPrismStatus call through the binder layers in-process (proxy parcels, the
// library's local transaction, the dispatcher, the reply parcel), set against two baselines
// measured in the same run: the bare virtual call and building the reply parcel alone.

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <aidl/vendor/tavix/tps/BpTps.h>
#include <benchmark/benchmark.h>

#include <cstdio>
#include <map>
#include <string>

namespace {

using ::aidl::vendor::tavix::tps::BnTps;
using ::aidl::vendor::tavix::tps::BpTps;
using ::aidl::vendor::tavix::tps::ITps;
using ::aidl::vendor::tavix::tps::ITpsCallback;
using ::ndk::ScopedAStatus;

// Answers the status query the way the service does: seven floats, no locking.
class StatusTps : public BnTps {
public:
    ScopedAStatus getTavixPrismStatus(std::vector<float>* out) override {
        *out = {128.0f, 0.0f, 1.0f, 0.0f, 312.5f, 1080.0f, 2400.0f};
        return ScopedAStatus::ok();
    }
    ScopedAStatus registerCallback(const std::shared_ptr<ITpsCallback>&) override { return ok(); }
    ScopedAStatus registerProcessor(bool) override { return ok(); }
    ScopedAStatus unregisterProcessor() override { return ok(); }
    ScopedAStatus updateParams(int64_t, int64_t) override { return ok(); }
    ScopedAStatus updateDisplayIDs(const std::vector<int32_t>&) override { return ok(); }
    ScopedAStatus getDisplayIDs(std::vector<int32_t>*) override { return ok(); }
    ScopedAStatus setParameters(const std::string&) override { return ok(); }
    ScopedAStatus getParameters(const std::string&, std::string*) override { return ok(); }

private:
    static ScopedAStatus ok() { return ScopedAStatus::ok(); }
};

void BM_VirtualCall(benchmark::State& state) {
    std::shared_ptr<ITps> tps = ::ndk::SharedRefBase::make<StatusTps>();
    for (auto _ : state) {
        std::vector<float> status;
        ScopedAStatus result = tps->getTavixPrismStatus(&status);
        benchmark::DoNotOptimize(status.data());
        benchmark::DoNotOptimize(result.get());
    }
}
BENCHMARK(BM_VirtualCall);

void BM_BuildReply(benchmark::State& state) {
    const float values[7] = {128.0f, 0.0f, 1.0f, 0.0f, 312.5f, 1080.0f, 2400.0f};
    for (auto _ : state) {
        ::ndk::ScopedAParcel reply(AParcel_create());
        ScopedAStatus ok = ScopedAStatus::ok();
        AParcel_writeStatusHeader(reply.get(), ok.get());
        AParcel_writeFloatArray(reply.get(), values, 7);
        benchmark::DoNotOptimize(reply.get());
    }
}
BENCHMARK(BM_BuildReply);

void BM_RoundTrip(benchmark::State& state) {
    auto tps = ::ndk::SharedRefBase::make<StatusTps>();
    // A proxy over the local binder: every call takes the full parcel path.
    auto proxy = ::ndk::SharedRefBase::make<BpTps>(tps->asBinder());
    std::vector<float> check;
    if (!proxy->getTavixPrismStatus(&check).isOk() || check.size() != 7 || check[4] != 312.5f) {
        state.SkipWithError("the round trip does not answer the seven floats");
        return;
    }
    for (auto _ : state) {
        std::vector<float> status;
        ScopedAStatus result = proxy->getTavixPrismStatus(&status);
        benchmark::DoNotOptimize(status.data());
        benchmark::DoNotOptimize(result.get());
    }
}
BENCHMARK(BM_RoundTrip);

// Prints the usual table and remembers each benchmark's CPU time per iteration (ns): on a shared
// machine the wall time also counts other processes' turns.
class RecordingReporter : public benchmark::ConsoleReporter {
public:
    void ReportRuns(const std::vector<Run>& runs) override {
        ConsoleReporter::ReportRuns(runs);
        for (const Run& run : runs) {
            if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
            mNanos[run.run_name.function_name] =
                    run.GetAdjustedCPUTime() *
                    benchmark::GetTimeUnitMultiplier(benchmark::kNanosecond) /
                    benchmark::GetTimeUnitMultiplier(run.time_unit);
        }
    }

    double nanos(const std::string& name) const {
        auto it = mNanos.find(name);
        return it == mNanos.end() ? 0.0 : it->second;
    }

private:
    std::map<std::string, double> mNanos;
};

}  // namespace

int main(int argc, char** argv) {
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 2;
    RecordingReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();

    const double roundTrip = reporter.nanos("BM_RoundTrip");
    const double virtualCall = reporter.nanos("BM_VirtualCall");
    const double buildReply = reporter.nanos("BM_BuildReply");
    if (roundTrip <= 0.0) return 1;
    std::printf("getTavixPrismStatus round trip: %.0f ns CPU per call", roundTrip);
    if (virtualCall > 0.0) std::printf(", %.1fx the bare virtual call", roundTrip / virtualCall);
    if (buildReply > 0.0) std::printf(", %.1fx building the reply alone", roundTrip / buildReply);
    std::printf("\n");
    return 0;
}
