#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <aidl/vendor/tavix/tps/ITps.h>
#include <android/binder_manager.h>
#include <android/binder_stability.h>
#include <unistd.h>

#include <atomic>
#include <functional>
#include <limits>
#include <thread>

#include "MpFixture.h"
#include "MpRoles.h"
#include "MpTestUtil.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::BnTpsCallback;
using aidl::vendor::tavix::tps::ITps;
using ndk::ScopedAStatus;

class TpsCallTest : public MultiProcessTest {
protected:
    std::shared_ptr<ITps> startServer(const std::string& maxThreads = "3", bool joinOnly = false) {
        mChildren.push_back(spawnRole({"tps-server", maxThreads, joinOnly ? "1" : "0"}));
        return ITps::fromBinder(ndk::SpAIBinder(AServiceManager_waitForService(kTpsName)));
    }
};

class RecordingCallback : public BnTpsCallback {
public:
    ScopedAStatus onTavixPrismPlaybackStart(bool* out) override {
        *out = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus onTavixPrismPlaybackStop(bool* out) override {
        *out = true;
        return ScopedAStatus::ok();
    }
    ScopedAStatus onTavixNotification(const std::string& event) override {
        lastEvent = event;
        tid = gettid();
        ++calls;
        return ScopedAStatus::ok();
    }
    std::string lastEvent;
    pid_t tid = 0;
    std::atomic<int> calls{0};
};

TEST_F(TpsCallTest, EveryParcelTypeOfTheInterfaceRoundTrips) {
    std::shared_ptr<ITps> tps = startServer();
    ASSERT_NE(tps, nullptr);
    EXPECT_TRUE(tps->isRemote());

    std::vector<float> status;
    ASSERT_TRUE(tps->getTavixPrismStatus(&status).isOk());
    EXPECT_EQ(status, (std::vector<float>{128.5f, 0.0f, 2.0f, 1.0f, 321.25f, 1080.0f, 2400.0f}));

    const std::vector<int32_t> ids = {0, 7, -3, std::numeric_limits<int32_t>::max()};
    std::vector<int32_t> back;
    ASSERT_TRUE(tps->updateDisplayIDs(ids).isOk());
    ASSERT_TRUE(tps->getDisplayIDs(&back).isOk());
    EXPECT_EQ(back, ids);
    ASSERT_TRUE(tps->updateDisplayIDs({}).isOk());
    ASSERT_TRUE(tps->getDisplayIDs(&back).isOk());
    EXPECT_TRUE(back.empty());

    // Strings cross as UTF-16 and come back as the same UTF-8.
    const std::string params = "pqMode=1;brightness=128;名前=値";
    std::string echoed;
    ASSERT_TRUE(tps->setParameters(params).isOk());
    ASSERT_TRUE(tps->getParameters("keys€", &echoed).isOk());
    EXPECT_EQ(echoed, "keys€|" + params);

    ASSERT_TRUE(tps->updateParams(5, std::numeric_limits<int64_t>::min()).isOk());
    ASSERT_TRUE(tps->registerProcessor(true).isOk());
    std::map<std::string, std::string> values = report(tps);
    EXPECT_EQ(values["param"], "5," + std::to_string(std::numeric_limits<int64_t>::min()));
    EXPECT_EQ(values["filtered"], "1");

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

// One call through the raw API; the reply (if any) lands in *reply.
binder_status_t transact(AIBinder* binder, transaction_code_t code, binder_flags_t flags,
                         const std::function<void(AParcel*)>& write,
                         ndk::ScopedAParcel* reply = nullptr) {
    AParcel* in = nullptr;
    if (binder_status_t status = AIBinder_prepareTransaction(binder, &in); status != STATUS_OK) {
        return status;
    }
    if (write) write(in);
    AParcel* out = nullptr;
    const binder_status_t status = AIBinder_transact(binder, code, &in, &out, flags);
    ndk::ScopedAParcel owner(out);
    if (reply != nullptr) *reply = std::move(owner);
    return status;
}

TEST_F(TpsCallTest, OnewayCallsKeepTheirOrder) {
    startServer();
    ndk::SpAIBinder order(AServiceManager_waitForService(kOrderName));
    ASSERT_NE(order.get(), nullptr);
    ASSERT_TRUE(AIBinder_associateClass(order.get(), defineClientClass(kOrderDescriptor)));
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
}

TEST_F(TpsCallTest, TokenAndStabilityAreCheckedAcrossProcesses) {
    mChildren.push_back(spawnRole({"tps-server", "3", "0"}));
    // The first class a proxy gets is the one it keeps: this one writes no interface token.
    ndk::SpAIBinder raw(AServiceManager_waitForService(kTpsName));
    ASSERT_NE(raw.get(), nullptr);
    AIBinder_Class* tokenless = defineClientClass(ITps::descriptor);
    AIBinder_Class_disableInterfaceTokenHeader(tokenless);
    ASSERT_TRUE(AIBinder_associateClass(raw.get(), tokenless));
    EXPECT_EQ(transact(raw.get(), ITps::TRANSACTION_getTavixPrismStatus, 0, nullptr),
              STATUS_BAD_TYPE);

    // A binder the server never marked arrives with system stability: vendor callers may not
    // use it, system callers may.
    ndk::SpAIBinder order(AServiceManager_waitForService(kOrderName));
    const AIBinder_Class* orderClass = defineClientClass(kOrderDescriptor);
    ASSERT_TRUE(AIBinder_associateClass(order.get(), orderClass));
    ndk::ScopedAParcel reply;
    ASSERT_EQ(transact(order.get(), kOrderNewBinder, 0, nullptr, &reply), STATUS_OK);
    ndk::SpAIBinder fresh;
    ASSERT_EQ(AParcel_readStrongBinder(reply.get(), fresh.getR()), STATUS_OK);
    ASSERT_NE(fresh.get(), nullptr);
    ASSERT_TRUE(AIBinder_associateClass(fresh.get(), orderClass));
    const auto writeSeq = [](AParcel* in) { AParcel_writeInt32(in, 0); };
    EXPECT_EQ(transact(fresh.get(), kOrderRecord, FLAG_ONEWAY | FLAG_PRIVATE_VENDOR, writeSeq),
              STATUS_BAD_TYPE);
    EXPECT_EQ(transact(fresh.get(), kOrderRecord, FLAG_ONEWAY, writeSeq), STATUS_OK);
}

TEST_F(TpsCallTest, MinimumSchedulerPolicyHoldsWhileTheNodeIsServed) {
    startServer();
    ndk::SpAIBinder order(AServiceManager_waitForService(kOrderName));
    const AIBinder_Class* orderClass = defineClientClass(kOrderDescriptor);
    ASSERT_TRUE(AIBinder_associateClass(order.get(), orderClass));
    ndk::ScopedAParcel reply;
    ASSERT_EQ(transact(order.get(), kOrderRtBinder, 0, nullptr, &reply), STATUS_OK);
    ndk::SpAIBinder rt;
    ASSERT_EQ(AParcel_readStrongBinder(reply.get(), rt.getR()), STATUS_OK);
    ASSERT_TRUE(AIBinder_associateClass(rt.get(), orderClass));

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
    EXPECT_EQ(schedOf(rt.get()), std::make_pair(SCHED_FIFO, kRtPriority));
    EXPECT_EQ(schedOf(order.get()), std::make_pair(SCHED_OTHER, 0));
}

}  // namespace
}  // namespace mptest
