#define LOG_TAG "TavixPrismAIDLService"

#include "Tps.h"

#include <sys/system_properties.h>

#include <cstdlib>

#include "TpsConstants.h"
#include "TpsLog.h"

namespace aidl::vendor::tavix::tps {

Tps::Tps() {
    TPS_LOGI("Tps()");

    char value[1024] = {};
    int length = __system_property_get(kModeProperty, value);
    TPS_LOGV("Got the system property: %s , ret: %d", value, length);
    mStatus.mMode = length >= 1 ? atoi(value) : 0;

    mStatus.mDisplayIDs = mConfigParser.getDisplayIDs();
    mBluMode = mConfigParser.getBLUMode();
}

Tps::~Tps() {
    TPS_LOGI("~Tps()");

    std::lock_guard<std::mutex> lock(mCallbackLock);
    if (!mCallbacks.empty()) {
        TPS_LOGD("[%s] clear callbacks from clients, size: %d", "~Tps",
                 static_cast<int32_t>(mCallbacks.size()));
        while (!mCallbacks.empty()) mCallbacks.pop_back();
    }
}

ndk::ScopedAStatus Tps::registerCallback(const std::shared_ptr<ITpsCallback>& callback) {
    TPS_LOGV("Assigning callback");
    if (callback == nullptr) {
        return ndk::ScopedAStatus::fromExceptionCode(EX_UNSUPPORTED_OPERATION);
    }

    std::lock_guard<std::mutex> lock(mCallbackLock);
    mCallbacks.push_back(callback);
    maybeNeedToRegisterProcessor(callback);
    return ndk::ScopedAStatus::ok();
}

void Tps::maybeNeedToRegisterProcessor(const std::shared_ptr<ITpsCallback>& callback) {
    // A failed catch-up leaves the client registered; only the fan-out drops clients.
    if (mLogoProcessorCount >= 1 && mIsLogoPlaying) {
        TPS_LOGD("[%s] notify tavixPrism_Callback_TavixLogoStart", __func__);
        if (!callback->onTavixNotification(kEventLogoStart).isOk()) {
            TPS_LOGE("onTavixPrismPlayback transaction fail");
        }
    }
    if (mRenderProcessorCount >= 1 && mIsRenderPlaying) {
        TPS_LOGD("[%s] notify tavixPrism_Callback_TavixRenderStart", __func__);
        if (!callback->onTavixNotification(kEventRenderStart).isOk()) {
            TPS_LOGE("onTavixNotification transaction fail");
        }
    }
}

}  // namespace aidl::vendor::tavix::tps
