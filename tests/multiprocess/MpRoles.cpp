#include "MpRoles.h"

#include <aidl/vendor/tavix/tps/BnTps.h>
#include <android/binder_ibinder_platform.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>

#include "MpTestUtil.h"

namespace mptest {
namespace {

using aidl::vendor::tavix::tps::BnTps;
using aidl::vendor::tavix::tps::ITps;
using aidl::vendor::tavix::tps::ITpsCallback;
using ndk::ScopedAStatus;

// An ITps that echoes what it gets, calls back registered clients at once, and reports what it
// saw through getParameters("report"). setParameters("exit") ends the process inside the call.
class FakeTps : public BnTps {
public:
    FakeTps() : mDeathRecipient(AIBinder_DeathRecipient_new(onDied)) {}

    ScopedAStatus getTavixPrismStatus(std::vector<float>* out) override {
        *out = {128.5f, 0.0f, 2.0f, 1.0f, 321.25f, 1080.0f, 2400.0f};
        return ScopedAStatus::ok();
    }

    ScopedAStatus registerCallback(const std::shared_ptr<ITpsCallback>& callback) override {
        if (callback == nullptr) return ScopedAStatus::fromExceptionCode(EX_NULL_POINTER);
        AIBinder_linkToDeath(callback->asBinder().get(), mDeathRecipient.get(), this);
        {
            std::lock_guard<std::mutex> lock(mLock);
            mCallback = callback;
        }
        // Back into the client while it waits for this call.
        ScopedAStatus status = callback->onTavixNotification("Callback_TavixRenderStart");
        if (!status.isOk()) return ScopedAStatus::fromServiceSpecificError(status.getStatus());
        return ScopedAStatus::ok();
    }

    ScopedAStatus registerProcessor(bool filtered) override {
        std::lock_guard<std::mutex> lock(mLock);
        mFiltered = filtered;
        return ScopedAStatus::ok();
    }

    ScopedAStatus unregisterProcessor() override { return ScopedAStatus::ok(); }

    ScopedAStatus updateParams(int64_t id, int64_t value) override {
        if (id < 0) {
            return ScopedAStatus::fromServiceSpecificErrorWithMessage(static_cast<int32_t>(value),
                                                                      "negative id");
        }
        std::lock_guard<std::mutex> lock(mLock);
        mParam = {id, value};
        mCaller = {AIBinder_getCallingPid(), AIBinder_getCallingUid()};
        return ScopedAStatus::ok();
    }

    ScopedAStatus updateDisplayIDs(const std::vector<int32_t>& ids) override {
        std::lock_guard<std::mutex> lock(mLock);
        mDisplayIds = ids;
        return ScopedAStatus::ok();
    }

    ScopedAStatus getDisplayIDs(std::vector<int32_t>* out) override {
        std::lock_guard<std::mutex> lock(mLock);
        *out = mDisplayIds;
        return ScopedAStatus::ok();
    }

    ScopedAStatus setParameters(const std::string& params) override {
        std::unique_lock<std::mutex> lock(mLock);
        if (params.rfind("barrier:", 0) == 0) {
            // Answers OK only if that many calls were inside at once.
            const int n = std::stoi(params.substr(8));
            ++mInside;
            mChanged.notify_all();
            const bool all = mChanged.wait_for(lock, kPatience, [&] { return mInside >= n; });
            return all ? ScopedAStatus::ok() : ScopedAStatus::fromExceptionCode(EX_ILLEGAL_STATE);
        }
        if (params == "exit") _exit(0);
        if (params == "hold") {
            // Held until the caller's process is gone, then call it back.
            mHolding = true;
            mChanged.wait_for(lock, kPatience, [&] { return mDeaths > 0; });
            std::shared_ptr<ITpsCallback> callback = mCallback;
            lock.unlock();
            const binder_status_t status =
                    callback == nullptr ? STATUS_UNEXPECTED_NULL
                                        : callback->onTavixNotification("late").getStatus();
            lock.lock();
            mCallStatus = status;
            return ScopedAStatus::ok();
        }
        mParams = params;
        return ScopedAStatus::ok();
    }

    ScopedAStatus getParameters(const std::string& keys, std::string* out) override {
        std::unique_lock<std::mutex> lock(mLock);
        if (keys == "report") {
            *out = "deaths=" + std::to_string(mDeaths) + ";holding=" + std::to_string(mHolding) +
                   ";callStatus=" + std::to_string(mCallStatus) +
                   ";filtered=" + std::to_string(mFiltered) +
                   ";param=" + std::to_string(mParam.first) + "," + std::to_string(mParam.second) +
                   ";caller=" + std::to_string(mCaller.first) + "," +
                   std::to_string(mCaller.second);
            return ScopedAStatus::ok();
        }
        if (keys == "callback") {
            // Calls the registered client now (between its calls).
            std::shared_ptr<ITpsCallback> callback = mCallback;
            lock.unlock();
            const binder_status_t status =
                    callback == nullptr ? STATUS_UNEXPECTED_NULL
                                        : callback->onTavixNotification("ping").getStatus();
            *out = std::to_string(status);
            return ScopedAStatus::ok();
        }
        *out = keys + "|" + mParams;
        return ScopedAStatus::ok();
    }

private:
    static void onDied(void* cookie) {
        auto* self = static_cast<FakeTps*>(cookie);
        std::lock_guard<std::mutex> lock(self->mLock);
        ++self->mDeaths;
        self->mChanged.notify_all();
    }

    ndk::ScopedAIBinder_DeathRecipient mDeathRecipient;
    std::mutex mLock;
    std::condition_variable mChanged;
    std::shared_ptr<ITpsCallback> mCallback;  // guarded by mLock
    std::vector<int32_t> mDisplayIds;         // guarded by mLock
    std::string mParams;                      // guarded by mLock
    std::pair<int64_t, int64_t> mParam;       // guarded by mLock
    std::pair<pid_t, uid_t> mCaller;          // guarded by mLock; of the last updateParams
    bool mFiltered = false;                   // guarded by mLock
    bool mHolding = false;                    // guarded by mLock
    int mInside = 0;                          // guarded by mLock
    int mDeaths = 0;                          // guarded by mLock
    binder_status_t mCallStatus = 1;          // guarded by mLock; 1 = no call made yet
};

// ---- IOrder -------------------------------------------------------------------------------------

struct Order {
    std::mutex lock;
    std::condition_variable changed;
    std::vector<int32_t> seen;  // guarded by lock
};

binder_status_t orderTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                              AParcel* out);

const AIBinder_Class* orderClass() {
    static const AIBinder_Class* clazz = AIBinder_Class_define(
            kOrderDescriptor, [](void* args) { return args; }, [](void*) {}, orderTransact);
    return clazz;
}

binder_status_t orderTransact(AIBinder* binder, transaction_code_t code, const AParcel* in,
                              AParcel* out) {
    auto* order = static_cast<Order*>(AIBinder_getUserData(binder));
    switch (code) {
        case kOrderRecord: {
            int32_t seq = 0;
            if (binder_status_t s = AParcel_readInt32(in, &seq); s != STATUS_OK) return s;
            std::lock_guard<std::mutex> lock(order->lock);
            order->seen.push_back(seq);
            order->changed.notify_all();
            return STATUS_OK;
        }
        case kOrderLog: {
            int32_t n = 0;
            if (binder_status_t s = AParcel_readInt32(in, &n); s != STATUS_OK) return s;
            std::unique_lock<std::mutex> lock(order->lock);
            order->changed.wait_for(lock, kPatience,
                                    [&] { return order->seen.size() >= static_cast<size_t>(n); });
            bool inOrder = true;
            for (size_t i = 0; i < order->seen.size(); ++i) {
                inOrder = inOrder && order->seen[i] == static_cast<int32_t>(i);
            }
            AParcel_writeInt32(out, static_cast<int32_t>(order->seen.size()));
            return AParcel_writeBool(out, inOrder);
        }
        case kOrderNewBinder:
        case kOrderRtBinder: {
            static Order unused;
            ndk::SpAIBinder fresh(AIBinder_new(orderClass(), &unused));
            if (code == kOrderRtBinder) {
                AIBinder_setMinSchedulerPolicy(fresh.get(), SCHED_FIFO, kRtPriority);
            }
            return AParcel_writeStrongBinder(out, fresh.get());
        }
        case kOrderSchedInfo: {
            int policy = 0;
            sched_param param{};
            pthread_getschedparam(pthread_self(), &policy, &param);
            AParcel_writeInt32(out, policy);
            return AParcel_writeInt32(out, param.sched_priority);
        }
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
}

// ---- roles
// ---------------------------------------------------------------------------------------

int tpsServer(uint32_t maxThreads, bool joinOnly) {
    ABinderProcess_setThreadPoolMaxThreadCount(maxThreads);
    if (!joinOnly) ABinderProcess_startThreadPool();
    auto tps = ndk::SharedRefBase::make<FakeTps>();
    if (AServiceManager_addService(tps->asBinder().get(), kTpsName) != EX_NONE) return 10;
    static Order order;
    ndk::SpAIBinder orderBinder(AIBinder_new(orderClass(), &order));
    if (AServiceManager_addService(orderBinder.get(), kOrderName) != EX_NONE) return 11;
    ABinderProcess_joinThreadPool();
    return 12;
}

int tpsUndeclared() {
    auto tps = ndk::SharedRefBase::make<FakeTps>();
    return -AServiceManager_addService(tps->asBinder().get(), kUndeclaredTpsName);
}

int callbackClient(const std::string& mode) {
    ndk::SpAIBinder binder(AServiceManager_waitForService(kTpsName));
    std::shared_ptr<ITps> tps = ITps::fromBinder(binder);
    if (tps == nullptr) return 20;
    auto callback = ndk::SharedRefBase::make<RecordingCallback>();
    if (!tps->registerCallback(callback).isOk()) return 21;
    // Gone at once, as a crashing client would be: the server still references its callback.
    if (mode == "exit") _exit(0);
    if (mode == "hold") {
        (void)tps->setParameters("hold");  // killed inside
        return 22;
    }
    return 23;
}

}  // namespace

int runRole(const std::vector<std::string>& args) {
    if (args.empty()) return 2;
    if (args[0] == "tps-server" && args.size() == 3) {
        return tpsServer(static_cast<uint32_t>(std::stoul(args[1])), args[2] == "1");
    }
    if (args[0] == "tps-undeclared") return tpsUndeclared();
    if (args[0] == "callback-client" && args.size() == 2) return callbackClient(args[1]);
    return 2;
}

}  // namespace mptest
