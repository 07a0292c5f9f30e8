// Many threads on one callback proxy, as binder pool threads do during a notification fan-out.
// Meant to run under ThreadSanitizer as well (CTest label "concurrency").

#include <aidl/vendor/tavix/tps/BpTpsCallback.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "ScriptedProxy.h"

namespace aidl::vendor::tavix::tps::test {
namespace {

constexpr int kThreads = 8;
constexpr int kCallsPerThread = 50;

TEST(ConcurrencyTest, CachesAreFilledOnceUnderConcurrentFirstCalls) {
    const Wire version = Wire().ok().i32(1);
    const Wire hash = Wire().ok().str(ITpsCallback::hash);
    RecordingBinder remote(
            ITpsCallback::descriptor, [&](transaction_code_t code, const AParcel*, AParcel* reply) {
                const Wire& wire = code == 16777215 ? version : hash;
                return AParcel_unmarshal(reply, wire.bytes().data(), wire.bytes().size());
            });
    std::shared_ptr<ITpsCallback> proxy = ITpsCallback::fromBinder(remote.binder());
    std::atomic<int> wrong{0};

    std::vector<std::thread> threads;
    for (int t = 0; t < kThreads; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < kCallsPerThread; ++i) {
                int32_t v = 0;
                std::string h;
                if (!proxy->getInterfaceVersion(&v).isOk() || v != 1) ++wrong;
                if (!proxy->getInterfaceHash(&h).isOk() || h != ITpsCallback::hash) ++wrong;
            }
        });
    }
    for (std::thread& thread : threads) thread.join();

    EXPECT_EQ(wrong.load(), 0);
    // The hash is asked under the proxy's lock, so exactly once.
    EXPECT_EQ(remote.countOf(16777214), 1u);
    // The version is lock-free: each thread asks at most once, until it sees the cached value.
    EXPECT_GE(remote.countOf(16777215), 1u);
    EXPECT_LE(remote.countOf(16777215), size_t{kThreads});
}

}  // namespace
}  // namespace aidl::vendor::tavix::tps::test
