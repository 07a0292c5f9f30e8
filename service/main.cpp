#define LOG_TAG "TavixPrismAIDLService"

#include <android/binder_manager.h>
#include <android/binder_process.h>

#include <memory>
#include <string>

#include "Tps.h"
#include "TpsLog.h"

using aidl::vendor::tavix::tps::Tps;

int main() {
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();

    std::shared_ptr<Tps> tps = ndk::SharedRefBase::make<Tps>();
    ndk::SpAIBinder binder = tps->asBinder();
    const std::string instance = std::string(Tps::descriptor) + "/default";
    TPS_LOGE("service name = %s", instance.c_str());

    // A failed registration still serves whatever reaches the process.
    if (AServiceManager_addService(binder.get(), instance.c_str()) != EX_NONE) {
        TPS_LOGE("Cannot register Tavix Prism hal service");
    } else {
        TPS_LOGI("Tavix Prism hal service registered");
    }

    ABinderProcess_joinThreadPool();
    binder.set(nullptr);
    tps.reset();
    return 1;
}
