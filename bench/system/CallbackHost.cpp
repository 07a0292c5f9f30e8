#include "CallbackHost.h"

#include <aidl/vendor/tavix/tps/BnTpsCallback.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

#include "service_Harness.h"

namespace sysbench {

namespace {

using aidl::vendor::tavix::tps::BnTpsCallback;

// Does nothing, so a notification costs only its round trip.
class QuietCallback : public BnTpsCallback {
public:
    ndk::ScopedAStatus onTavixNotification(const std::string&) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStart(bool*) override {
        return ndk::ScopedAStatus::ok();
    }
    ndk::ScopedAStatus onTavixPrismPlaybackStop(bool*) override { return ndk::ScopedAStatus::ok(); }
};

}  // namespace

std::string callbackInstance(int process, int index) {
    return std::string(BnTpsCallback::descriptor) + "/p" + std::to_string(process) + "c" +
           std::to_string(index);
}

int runCallbackHost(int process, int count) {
    ABinderProcess_startThreadPool();
    std::shared_ptr<aidl::vendor::tavix::tps::ITps> tps = svcmp::waitForTps();
    if (tps == nullptr) return 1;
    std::vector<std::shared_ptr<QuietCallback>> callbacks;
    for (int i = 0; i < count; ++i) {
        auto callback = callbacks.emplace_back(ndk::SharedRefBase::make<QuietCallback>());
        const std::string instance = callbackInstance(process, i);
        if (!tps->registerCallback(callback).isOk() ||
            AServiceManager_addService(callback->asBinder().get(), instance.c_str()) != EX_NONE) {
            return 1;
        }
    }
    printf("registered\n");
    fflush(stdout);
    for (;;) pause();
}

}  // namespace sysbench
