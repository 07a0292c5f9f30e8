#include "ServiceTestSupport.h"

namespace aidl::vendor::tavix::tps {

int32_t TpsTestPeer::renderCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mRenderProcessorCount;
}

bool TpsTestPeer::renderPlaying() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mIsRenderPlaying;
}

int32_t TpsTestPeer::logoCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mLogoProcessorCount;
}

bool TpsTestPeer::logoPlaying() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mIsLogoPlaying;
}

size_t TpsTestPeer::callbackCount() {
    std::lock_guard<std::mutex> lock(mTps.mCallbackLock);
    return mTps.mCallbacks.size();
}

bool TpsTestPeer::hasReader() {
    std::lock_guard<std::mutex> lock(mTps.mSensorLock);
    return mTps.mSensorReader != nullptr;
}

bool TpsTestPeer::hasBrightnessNode() {
    std::lock_guard<std::mutex> lock(mTps.mSensorLock);
    return mTps.mHasBrightnessNode;
}

int32_t TpsTestPeer::mode() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mMode;
}

int32_t TpsTestPeer::displayId() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mDisplayId;
}

int32_t TpsTestPeer::reportedBrightness() {
    std::shared_lock<std::shared_mutex> lock(mTps.mStatusLock);
    return mTps.mStatus.mReportedBrightness;
}

}  // namespace aidl::vendor::tavix::tps
