#define LOG_TAG "TavixPrismAIDLService"

#include <cmath>
#include <limits>

#include "Tps.h"
#include "TpsLog.h"

namespace aidl::vendor::tavix::tps {

namespace {

constexpr int32_t kNoBrightness = 255;

// Truncation toward zero as the device's float-to-int conversion does it, saturating instead of
// leaving out-of-range values undefined (a maximum-brightness node of 0 yields infinity).
int32_t truncateToInt32(float value) {
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0f) return std::numeric_limits<int32_t>::max();
    if (value <= -2147483648.0f) return std::numeric_limits<int32_t>::min();
    return static_cast<int32_t>(value);
}

}  // namespace

void Tps::refreshDerivedValuesLocked() {
    if (mSensorReader == nullptr) return;

    mStatus.mLux = mSensorReader->getAmbientLux(mEnableFilter);

    int32_t brightness = kNoBrightness;
    bool valid = false;
    switch (mBluMode) {
        case 0:
            if (mStatus.mBrightness >= 0) {
                brightness = mStatus.mBrightness;
                valid = true;
            }
            break;
        case 1:
            if (mStatus.mAdjustedBrightness >= 0) {
                brightness = mStatus.mAdjustedBrightness;
                valid = true;
            } else if (mStatus.mBrightness >= 0) {
                TPS_LOGV(
                        "BLUmode = %d, but can't get hdr ratio brightness, use blacklight "
                        "brightness = %d",
                        mBluMode, mStatus.mBrightness);
                brightness = mStatus.mBrightness;
                valid = true;
            }
            break;
        default:
            break;
    }
    TPS_LOGV("BLUmode = %d, brightness = %d", mBluMode, brightness);

    if (valid) {
        float value = static_cast<float>(brightness);
        if (mEnableFilter) value = mSensorReader->getFilteredBrightnessVal(value);
        mStatus.mReportedBrightness = truncateToInt32(value);
    } else if (mHasBrightnessNode) {
        mStatus.mReportedBrightness =
                truncateToInt32(mSensorReader->getBrightnessVal(mEnableFilter));
    } else {
        TPS_LOGE("Can't get realtime Brightness, use default value");
    }
}

ndk::ScopedAStatus Tps::getTavixPrismStatus(std::vector<float>* status) {
    StatusBlock snapshot;
    {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        std::lock_guard<std::mutex> sensorLock(mSensorLock);
        refreshDerivedValuesLocked();
        snapshot = mStatus;
    }

    status->clear();
    status->reserve(7);
    status->push_back(static_cast<float>(snapshot.mReportedBrightness));
    status->push_back(static_cast<float>(snapshot.mReserved));
    status->push_back(static_cast<float>(snapshot.mMode));
    status->push_back(static_cast<float>(snapshot.mDisplayId));
    status->push_back(snapshot.mLux);
    status->push_back(static_cast<float>(snapshot.mDisplayWidth));
    status->push_back(static_cast<float>(snapshot.mDisplayHeight));
    return ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::tavix::tps
