#define LOG_TAG "TavixPrismAIDLService"

#include <cmath>
#include <iterator>
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
    // Only the reported scalars are copied: the record's lists would cost an allocation each.
    float reported[7];
    {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        std::lock_guard<std::mutex> sensorLock(mSensorLock);
        refreshDerivedValuesLocked();
        reported[0] = static_cast<float>(mStatus.mReportedBrightness);
        reported[1] = static_cast<float>(mStatus.mReserved);
        reported[2] = static_cast<float>(mStatus.mMode);
        reported[3] = static_cast<float>(mStatus.mDisplayId);
        reported[4] = mStatus.mLux;
        reported[5] = static_cast<float>(mStatus.mDisplayWidth);
        reported[6] = static_cast<float>(mStatus.mDisplayHeight);
    }

    status->assign(std::begin(reported), std::end(reported));
    return ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::tavix::tps
