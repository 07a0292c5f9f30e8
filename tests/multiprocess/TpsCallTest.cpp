#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>
#include <android/binder_stability.h>
#include <unistd.h>

#include <atomic>
#include <limits>
#include <thread>

#include "MpFixture.h"
#include "MpRoles.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::ITps;
using ndk::ScopedAStatus;

using TpsCallTest = MultiProcessTest;

TEST_F(TpsCallTest, EveryParcelTypeOfTheInterfaceRoundTrips) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    EXPECT_TRUE(tps->isRemote());

    std::vector<float> status;
    ASSERT_TRUE(tps->getTavixPrismStatus(&status).isOk());
    EXPECT_EQ(status, (std::vector<float>{128.5f, 0.0f, 2.0f, 1.0f, 321.25f, 1080.0f, 2400.0f}));

    for (const std::vector<int32_t>& ids :
         {std::vector<int32_t>{0, 7, -3, std::numeric_limits<int32_t>::max()},
          std::vector<int32_t>{}}) {
        std::vector<int32_t> back{1};
        ASSERT_TRUE(tps->updateDisplayIDs(ids).isOk());
        ASSERT_TRUE(tps->getDisplayIDs(&back).isOk());
        EXPECT_EQ(back, ids);
    }

    // Strings cross as UTF-16 and come back as the same UTF-8.
    const std::string params = "pqMode=1;brightness=128;名前=値";
    std::string echoed;
    ASSERT_TRUE(tps->setParameters(params).isOk());
    ASSERT_TRUE(tps->getParameters("keys€", &echoed).isOk());
    EXPECT_EQ(echoed, "keys€|" + params);

    // The server sees who called.
    ASSERT_TRUE(tps->updateParams(5, std::numeric_limits<int64_t>::min()).isOk());
    ASSERT_TRUE(tps->registerProcessor(true).isOk());
    Report values = report(tps);
    EXPECT_EQ(values["param"], "5," + std::to_string(std::numeric_limits<int64_t>::min()));
    EXPECT_EQ(values["filtered"], "1");
    EXPECT_EQ(values["caller"], std::to_string(getpid()) + "," + std::to_string(geteuid()));

    ScopedAStatus failed = tps->updateParams(-1, 42);
    EXPECT_EQ(failed.getExceptionCode(), EX_SERVICE_SPECIFIC);
    EXPECT_EQ(failed.getServiceSpecificError(), 42);
    EXPECT_STREQ(failed.getMessage(), "negative id");
    EXPECT_EQ(tps->registerCallback(nullptr).getExceptionCode(), EX_NULL_POINTER);

    int32_t version = 0;
    std::string hash;
    ASSERT_TRUE(tps->getInterfaceVersion(&version).isOk());
    ASSERT_TRUE(tps->getInterfaceHash(&hash).isOk());
    EXPECT_EQ(version, int32_t{ITps::version});
    EXPECT_EQ(hash, ITps::hash);
}

TEST_F(TpsCallTest, CallbackRunsOnTheCallingThreadWhileItsCallWaits) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    auto callback = ndk::SharedRefBase::make<RecordingCallback>();
    ASSERT_TRUE(tps->registerCallback(callback).isOk());
    EXPECT_EQ(callback->calls, 1);
    EXPECT_EQ(callback->lastEvent, "Callback_TavixRenderStart");
    EXPECT_EQ(callback->tid, gettid());

    // The server calling back inside a later call of this thread lands here again.
    std::string status;
    ASSERT_TRUE(tps->getParameters("callback", &status).isOk());
    EXPECT_EQ(status, "0");
    EXPECT_EQ(callback->calls, 2);
    EXPECT_EQ(callback->tid, gettid());
}

TEST_F(TpsCallTest, FourCallersRunAtOnceOnAFourThreadPool) {
    // The server's main thread plus three loopers the kernel asks for.
    std::shared_ptr<ITps> tps = startServer("3", true);
    ASSERT_NE(tps, nullptr);
    std::vector<std::thread> callers;
    std::atomic<int> ok{0};
    for (int i = 0; i < 4; ++i) {
        callers.emplace_back([&] {
            if (tps->setParameters("barrier:4").isOk()) ++ok;
        });
    }
    for (std::thread& caller : callers) caller.join();
    EXPECT_EQ(ok, 4);
}

TEST_F(TpsCallTest, RawCallsKeepOnewayOrderAndReturnTheServersStatus) {
    startServer();
    ndk::SpAIBinder order = orderBinder();
    ASSERT_NE(order.get(), nullptr);
    constexpr int32_t kCount = 300;
    for (int32_t i = 0; i < kCount; ++i) {
        ASSERT_EQ(transact(order.get(), kOrderRecord, FLAG_ONEWAY,
                           [i](AParcel* in) { AParcel_writeInt32(in, i); }),
                  STATUS_OK);
    }
    ndk::ScopedAParcel reply;
    ASSERT_EQ(transact(
                      order.get(), kOrderLog, 0,
                      [](AParcel* in) { AParcel_writeInt32(in, kCount); }, &reply),
              STATUS_OK);
    int32_t count = 0;
    bool inOrder = false;
    EXPECT_EQ(AParcel_readInt32(reply.get(), &count), STATUS_OK);
    EXPECT_EQ(AParcel_readBool(reply.get(), &inOrder), STATUS_OK);
    EXPECT_EQ(count, kCount);
    EXPECT_TRUE(inOrder);

    // Failures come back as status-only replies, and the next call still works.
    EXPECT_EQ(transact(order.get(), kOrderRecord, 0, nullptr), STATUS_NOT_ENOUGH_DATA);
    EXPECT_EQ(transact(order.get(), 77, 0, nullptr), STATUS_UNKNOWN_TRANSACTION);
    EXPECT_EQ(transact(order.get(), kOrderSchedInfo, 0, nullptr), STATUS_OK);
}

TEST_F(TpsCallTest, TokenStabilityAndSchedulerPolicyHoldAcrossProcesses) {
    mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
    // The first class a proxy gets is the one it keeps: this one writes no interface token.
    ndk::SpAIBinder raw(AServiceManager_waitForService(kTpsName));
    ASSERT_NE(raw.get(), nullptr);
    AIBinder_Class* tokenless = defineClientClass(ITps::descriptor);
    AIBinder_Class_disableInterfaceTokenHeader(tokenless);
    ASSERT_TRUE(AIBinder_associateClass(raw.get(), tokenless));
    EXPECT_EQ(transact(raw.get(), ITps::TRANSACTION_getTavixPrismStatus, 0, nullptr),
              STATUS_BAD_TYPE);

    ndk::SpAIBinder order = orderBinder();
    const auto fresh = [&](OrderCode code) {
        ndk::ScopedAParcel reply;
        ndk::SpAIBinder binder;
        if (transact(order.get(), code, 0, nullptr, &reply) == STATUS_OK &&
            AParcel_readStrongBinder(reply.get(), binder.getR()) == STATUS_OK &&
            binder.get() != nullptr) {
            AIBinder_associateClass(binder.get(), orderClientClass());
        }
        return binder;
    };
    // A binder the server never marked arrives with system stability: vendor callers may not
    // use it, system callers may.
    ndk::SpAIBinder unmarked = fresh(kOrderNewBinder);
    ASSERT_NE(unmarked.get(), nullptr);
    const auto writeSeq = [](AParcel* in) { AParcel_writeInt32(in, 0); };
    EXPECT_EQ(transact(unmarked.get(), kOrderRecord, FLAG_ONEWAY | FLAG_PRIVATE_VENDOR, writeSeq),
              STATUS_BAD_TYPE);
    EXPECT_EQ(transact(unmarked.get(), kOrderRecord, FLAG_ONEWAY, writeSeq), STATUS_OK);

    // A node's minimum policy holds only while that node is served.
    const auto schedOf = [&](AIBinder* binder) {
        ndk::ScopedAParcel out;
        int32_t policy = -1;
        int32_t priority = -1;
        if (transact(binder, kOrderSchedInfo, 0, nullptr, &out) == STATUS_OK) {
            AParcel_readInt32(out.get(), &policy);
            AParcel_readInt32(out.get(), &priority);
        }
        return std::make_pair(policy, priority);
    };
    ndk::SpAIBinder rt = fresh(kOrderRtBinder);
    EXPECT_EQ(schedOf(rt.get()), std::make_pair(SCHED_FIFO, kRtPriority));
    EXPECT_EQ(schedOf(order.get()), std::make_pair(SCHED_OTHER, 0));
}

}  // namespace
}  // namespace mptest
