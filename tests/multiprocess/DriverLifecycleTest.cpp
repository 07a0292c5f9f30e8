#include <sched.h>
#include <unistd.h>

#include "DriverTestFixture.h"

namespace drivertest {
namespace {

using DriverLifecycleTest = DriverTest;

constexpr binder_uintptr_t kDeathCookie = 0xd1;

TEST_F(DriverLifecycleTest, DeathBetweenCallsIsReportedOnceAndLaterCallsFail) {
    startServer({});
    openClient();
    mProcess->startThreadPool();  // deaths go to a looper
    thread().incWeakHandle(0);
    thread().incStrongHandle(0);
    mHandler.watch(kDeathCookie, 0);
    ASSERT_EQ(thread().requestDeathNotification(0, kDeathCookie), STATUS_OK);
    ReceivedBuffer reply;
    ASSERT_EQ(call(kPing, RawParcel().int32(1), &reply), STATUS_OK);
    reply.reset();

    mServer->kill();
    ASSERT_TRUE(mHandler.waitFor(
            [](const RecordingHandler::Counts& c) { return c.cleared.count(kDeathCookie) != 0; }));
    EXPECT_EQ(call(kPing, RawParcel().int32(1), &reply), STATUS_DEAD_OBJECT);
    EXPECT_EQ(call(kPing, RawParcel().int32(1), nullptr, TF_ONE_WAY), STATUS_DEAD_OBJECT);
    const RecordingHandler::Counts counts = mHandler.counts();
    EXPECT_EQ(counts.deaths.at(kDeathCookie), 1);
    EXPECT_EQ(counts.cleared.at(kDeathCookie), 1);
    thread().decStrongHandle(0);
    thread().decWeakHandle(0);
}

TEST_F(DriverLifecycleTest, ServerDeathDuringACallFailsIt) {
    startServer({});
    openClient();
    ReceivedBuffer reply;
    EXPECT_EQ(call(kExitNow, RawParcel(), &reply), STATUS_DEAD_OBJECT);
    EXPECT_EQ(mServer->wait(), 0);
}

TEST_F(DriverLifecycleTest, ServerSeesItsCallerDieDuringTheCall) {
    Pipe watching;
    startServer({.maxThreads = 1, .watching = &watching});
    ChildProcess client([] {
        RecordingHandler handler;
        auto process = DriverProcess::open(&handler);
        if (process == nullptr) return 2;
        ReceivedBuffer reply;
        // Never answered: the test kills this process inside the call.
        process->thread().transact(0, kWatchAndWait, RawParcel().node(0x5000, 0x6000).buffer(), 0,
                                   &reply);
        return 3;
    });
    ASSERT_TRUE(watching.await());
    client.kill();
    EXPECT_EQ(client.wait(), 128 + SIGKILL);
    openClient();

    // The server answers the dead caller once it has seen the death and tried to call back.
    int32_t callStatus = 1;
    int32_t deaths = 0;
    int32_t buffers = -1;
    const auto deadline = std::chrono::steady_clock::now() + kPatience;
    while (callStatus == 1 && std::chrono::steady_clock::now() < deadline) {
        ReceivedBuffer reply;
        ASSERT_EQ(call(kReport, RawParcel(), &reply), STATUS_OK);
        RawReader report(reply);
        buffers = report.int32();
        (void)report.int32();
        deaths = report.int32();
        callStatus = report.int32();
    }
    EXPECT_EQ(callStatus, STATUS_DEAD_OBJECT);
    EXPECT_EQ(deaths, 1);
    EXPECT_EQ(buffers, 0);
}

TEST_F(DriverLifecycleTest, RealTimeNodePolicyHoldsOnlyDuringItsCalls) {
    // One serving thread, so both calls below run on it.
    startServer({.startPool = false});
    openClient();
    ReceivedBuffer reply;
    ASSERT_EQ(call(kGetNode, RawParcel(), &reply), STATUS_OK);
    const flat_binder_object* node = RawReader(reply).object(0);
    ASSERT_NE(node, nullptr);
    ASSERT_EQ(node->hdr.type, static_cast<uint32_t>(BINDER_TYPE_HANDLE));
    const uint32_t handle = node->handle;
    thread().incWeakHandle(handle);
    thread().incStrongHandle(handle);
    reply.reset();

    ASSERT_EQ(thread().transact(handle, kSchedInfo, RawParcel().buffer(), 0, &reply), STATUS_OK);
    RawReader boosted(reply);
    EXPECT_EQ(boosted.int32(), SCHED_FIFO);
    EXPECT_EQ(boosted.int32(), kRtPriority);

    ASSERT_EQ(call(kSchedInfo, RawParcel(), &reply), STATUS_OK);
    RawReader normal(reply);
    EXPECT_EQ(normal.int32(), SCHED_OTHER);
    EXPECT_EQ(normal.int32(), 0);
    reply.reset();
    thread().decStrongHandle(handle);
    thread().decWeakHandle(handle);
}

}  // namespace
}  // namespace drivertest
