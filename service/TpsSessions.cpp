#define LOG_TAG "TavixPrismAIDLService"

#include "Tps.h"
#include "TpsConstants.h"
#include "TpsLog.h"

namespace aidl::vendor::tavix::tps {

void Tps::notifyCallbacksLocked(const std::string& event, const char* failureLine) {
    std::vector<bool> failed(mCallbacks.size(), false);
    for (size_t i = 0; i < mCallbacks.size(); ++i) {
        // A strong reference of our own: the entry must outlive the synchronous call.
        std::shared_ptr<ITpsCallback> client = mCallbacks[i];
        if (!client->onTavixNotification(event).isOk()) {
            TPS_LOGE("%s", failureLine);
            failed[i] = true;
        }
    }

    // Drop the failed clients in one pass; the others keep their registration order.
    size_t kept = 0;
    for (size_t i = 0; i < mCallbacks.size(); ++i) {
        if (failed[i]) continue;
        if (kept != i) mCallbacks[kept] = std::move(mCallbacks[i]);
        ++kept;
    }
    mCallbacks.resize(kept);
}

void Tps::onTavixRenderNotification(bool enable) {
    std::lock_guard<std::mutex> lock(mCallbackLock);

    if (enable) {
        ++mRenderProcessorCount;
        TPS_LOGV(
                "[%s] enable: %d, mRenderProcessorCount: %d, mIsRenderPlaying: %d, "
                "callbackCount: %zu",
                __func__, 1, mRenderProcessorCount, mIsRenderPlaying, mCallbacks.size());
        // The flag, not the count, decides: a start is sent whenever none is outstanding.
        if (mIsRenderPlaying) {
            TPS_LOGI("skip due to has already notified tavixPrism_Callback_TavixRenderStart");
            return;
        }
        TPS_LOGI("[%s] notify tavixPrism_Callback_TavixRenderStart, size: %zu", __func__,
                 mCallbacks.size());
        notifyCallbacksLocked(kEventRenderStart,
                              "onTavixNotification tavixPrism_Callback_TavixRenderStart "
                              "transaction fail");
        mIsRenderPlaying = true;
        return;
    }

    const int32_t count = --mRenderProcessorCount;
    TPS_LOGV("[%s] enable: %d, mRenderProcessorCount: %d, isRenderPlaying: %d, callbackCount: %zu",
             __func__, 0, count, mIsRenderPlaying, mCallbacks.size());
    if (count <= 0) mRenderProcessorCount = 0;
    if (!mIsRenderPlaying || count > 0) {
        TPS_LOGI("skip due to has already notified tavixPrism_Callback_RenderStop");
        return;
    }
    TPS_LOGI("[%s] notify tavixPrism_Callback_RenderStop, size: %zu", __func__, mCallbacks.size());
    notifyCallbacksLocked(kEventRenderStop,
                          "onTavixNotification tavixPrism_Callback_TavixRenderStop transaction "
                          "fail");
    mIsRenderPlaying = false;
}

void Tps::onTavixLogoNotification(bool enable) {
    std::lock_guard<std::mutex> lock(mCallbackLock);

    if (enable) {
        ++mLogoProcessorCount;
        TPS_LOGV("[%s] enable: %d, mLogoProcessorCount: %d, isLogoPlaying: %d, callbackCount: %zu",
                 __func__, 1, mLogoProcessorCount, mIsLogoPlaying, mCallbacks.size());
        if (mIsLogoPlaying) {
            TPS_LOGI("skip due to has already notified tavixPrism_Callback_TavixLogoStart");
            return;
        }
        TPS_LOGI("[%s] notify tavixPrism_Callback_TavixLogoStart, size: %zu", __func__,
                 mCallbacks.size());
        notifyCallbacksLocked(kEventLogoStart,
                              "onTavixNotification tavixPrism_Callback_TavixLogoStart transaction "
                              "fail");
        mIsLogoPlaying = true;
        return;
    }

    const int32_t count = --mLogoProcessorCount;
    TPS_LOGV("[%s] enable: %d, mLogoProcessorCount: %d, isLogoPlaying: %d, callbackCount: %zu",
             __func__, 0, count, mIsLogoPlaying, mCallbacks.size());
    if (count <= 0) mLogoProcessorCount = 0;
    if (!mIsLogoPlaying || count > 0) {
        TPS_LOGI("skip due to has already notified tavixPrism_Callback_LogoStop");
        return;
    }
    TPS_LOGI("[%s] notify tavixPrism_Callback_LogoStop, size: %zu", __func__, mCallbacks.size());
    notifyCallbacksLocked(kEventLogoStop,
                          "onTavixNotification tavixPrism_Callback_LogoStop transaction fail");
    mIsLogoPlaying = false;
}

void Tps::enableSensorReader(bool enable, bool enableFilter) {
    if (enable) {
        const int32_t count = ++mSensorProcessorCount;
        mEnableFilter = enableFilter;
        TPS_LOGV(
                "[%s] enable: %d, mSensorProcessorCount: %d, mIsSensorPlaying: %d, "
                "enableFilter: %d",
                __func__, 1, count, mIsSensorPlaying.load(), mEnableFilter.load());
        if (mIsSensorPlaying) return;

        int32_t displayId;
        {
            std::shared_lock<std::shared_mutex> statusLock(mStatusLock);
            displayId = mStatus.mDisplayId;
        }
        {
            std::lock_guard<std::mutex> sensorLock(mSensorLock);
            if (mSensorReader == nullptr) {
                // Blocks until the platform sensor service is registered.
                mSensorReader = std::make_unique<tavixPrism::TpSensorReader>();
                mSensorReader->enableSensor();
                mHasBrightnessNode = mSensorReader->checkBrightnessDriverNode(displayId);
            }
        }
        mIsSensorPlaying = true;
        return;
    }

    int32_t count = --mSensorProcessorCount;
    TPS_LOGV("[%s] enable: %d, mSensorProcessorCount: %d, mIsSensorPlaying: %d", __func__, 0, count,
             mIsSensorPlaying.load());
    // Clamp an unbalanced close without losing an open that raced in since the decrement.
    count = mSensorProcessorCount.load();
    while (count < 1 && !mSensorProcessorCount.compare_exchange_weak(count, 0)) {
    }
    if (!mIsSensorPlaying || mSensorProcessorCount.load() != 0) return;

    mIsSensorPlaying = false;
    std::lock_guard<std::mutex> sensorLock(mSensorLock);
    if (mSensorReader != nullptr) {
        mSensorReader->disableSensor();
        mSensorReader.reset();
    }
}

ndk::ScopedAStatus Tps::registerProcessor(bool enableFilter) {
    onTavixRenderNotification(true);
    onTavixLogoNotification(true);
    enableSensorReader(true, enableFilter);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus Tps::unregisterProcessor() {
    onTavixRenderNotification(false);
    onTavixLogoNotification(false);
    enableSensorReader(false, true);
    return ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::tavix::tps
