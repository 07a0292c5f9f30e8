#include <unistd.h>

#include <thread>
#include <vector>

#include "DriverTestFixture.h"

namespace drivertest {
namespace {

using DriverCallTest = DriverTest;

TEST_F(DriverCallTest, RepliesCarryDataSenderAndStatus) {
    startServer({});
    openClient();
    for (int32_t i = 0; i < 50; ++i) {
        ReceivedBuffer reply;
        ASSERT_EQ(call(kPing, RawParcel().int32(i), &reply), STATUS_OK);
        RawReader out(reply);
        EXPECT_EQ(out.int32(), i + 1);
        EXPECT_EQ(out.int32(), getpid());
        EXPECT_EQ(out.int32(), static_cast<int32_t>(geteuid()));
    }

    ReceivedBuffer reply;
    EXPECT_EQ(call(kStatusReply, RawParcel().int32(-22), &reply), -22);
    EXPECT_EQ(reply.size(), 0u);
    EXPECT_EQ(call(kStatusReply, RawParcel().int32(0), &reply), STATUS_OK);
    EXPECT_EQ(reply.size(), 0u);
    EXPECT_EQ(call(kNoAnswer, RawParcel(), &reply), STATUS_FAILED_TRANSACTION);
    EXPECT_EQ(call(77, RawParcel(), &reply), STATUS_UNKNOWN_TRANSACTION);
    // Calls still work after the failures.
    ASSERT_EQ(call(kPing, RawParcel().int32(7), &reply), STATUS_OK);
    EXPECT_EQ(RawReader(reply).int32(), 8);
}

TEST_F(DriverCallTest, CallbackRunsOnTheWaitingThreadAndNodeRefsBalance) {
    startServer({});
    openClient();
    // No thread pool: only the thread waiting for its reply can serve the callback.
    ReceivedBuffer reply;
    ASSERT_EQ(call(kCallBack, RawParcel().node(0x1000, 0x2000), &reply), STATUS_OK);
    RawReader out(reply);
    EXPECT_EQ(out.int32(), STATUS_OK);
    EXPECT_EQ(out.int32(), 42);
    EXPECT_EQ(out.int32(), gettid());
    reply.reset();

    RecordingHandler::Counts counts = mHandler.counts();
    EXPECT_EQ(counts.callbacks, 1);
    EXPECT_GE(counts.incRefs, 1);
    EXPECT_GE(counts.acquires, 1);
    // Releases go to whichever looper reads next.
    mProcess->startThreadPool();
    EXPECT_TRUE(mHandler.waitFor([](const RecordingHandler::Counts& c) {
        return c.releases == c.acquires && c.decRefs == c.incRefs;
    }));
    counts = mHandler.counts();
    EXPECT_EQ(counts.releases, counts.acquires);
    EXPECT_EQ(counts.decRefs, counts.incRefs);
}

TEST_F(DriverCallTest, FourCallersRunAtOnceOnAFourThreadPool) {
    // The main thread plus three loopers the kernel asks for.
    startServer({.maxThreads = 3, .startPool = false});
    openClient();
    std::vector<int32_t> results(4, -1);
    std::vector<std::thread> callers;
    for (size_t i = 0; i < results.size(); ++i) {
        callers.emplace_back([this, &results, i] {
            ReceivedBuffer reply;
            if (call(kBarrier, RawParcel().int32(4), &reply) == STATUS_OK) {
                results[i] = RawReader(reply).int32();
            }
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(results, std::vector<int32_t>(4, 1));

    ReceivedBuffer reply;
    ASSERT_EQ(call(kReport, RawParcel(), &reply), STATUS_OK);
    RawReader report(reply);
    EXPECT_EQ(report.int32(), 0) << "buffers the server holds";
    EXPECT_EQ(report.int32(), 3) << "loopers the server started";
}

TEST_F(DriverCallTest, OnewayCallsArriveInOrder) {
    startServer({.maxThreads = 3});
    openClient();
    constexpr int32_t kCount = 200;
    for (int32_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(call(kOneway, RawParcel().int32(i), nullptr, TF_ONE_WAY), STATUS_OK);
    }
    ReceivedBuffer reply;
    ASSERT_EQ(call(kOnewayLog, RawParcel().int32(kCount), &reply), STATUS_OK);
    RawReader out(reply);
    EXPECT_EQ(out.int32(), kCount);
    EXPECT_EQ(out.int32(), 1) << "oneway calls were served out of order";
}

}  // namespace
}  // namespace drivertest
