#define LOG_TAG "TavixPrismAIDLService"

#include <sys/system_properties.h>

#include <string>
#include <vector>

#include "TavixTpsParameter.h"
#include "Tps.h"
#include "TpsConstants.h"
#include "TpsLog.h"

namespace aidl::vendor::tavix::tps {

namespace {

// Unsigned range tests: a negative value fails them as well.
bool atMost(int32_t value, uint32_t max) {
    return static_cast<uint32_t>(value) <= max;
}
bool atMost(int64_t value, uint64_t max) {
    return static_cast<uint64_t>(value) <= max;
}

}  // namespace

void Tps::persistMode(int32_t mode) {
    char value[1024] = {};
    value[0] = static_cast<char>('0' + mode);
    int ret = __system_property_set(kModeProperty, value);
    if (ret < 0) TPS_LOGE("Error setting property: %s\n", kModeProperty);
    TPS_LOGV("Set Property : %s, ret: %d", value, ret);
}

void Tps::setDisplayId(int32_t displayId) {
    {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        if (displayId == mStatus.mDisplayId) return;
        mStatus.mDisplayId = displayId;
    }
    // Without a reader only the index changes; the next session's reader picks it up.
    std::lock_guard<std::mutex> sensorLock(mSensorLock);
    if (mSensorReader != nullptr) {
        mHasBrightnessNode = mSensorReader->checkBrightnessDriverNode(displayId);
    }
}

ndk::ScopedAStatus Tps::setParameters(const std::string& keyValuePairs) {
    TPS_LOGD("setParameters: %s", keyValuePairs.c_str());
    TavixTpsParameter params(keyValuePairs);
    // Shared by the three list keys and never emptied between them: clients rely on the items of
    // one key carrying over into the next.
    std::vector<int> list;
    int value = 0;

    if (params.get<int>("brightness", value) && atMost(value, 255u)) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mBrightness = value;
    }
    if (params.get<int>("adjustedBrightness", value) && atMost(value, 255u)) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mAdjustedBrightness = value;
    }
    if (params.get<int>("pqMode", value) && atMost(value, 2u)) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mMode = value;
        persistMode(value);
    }
    if (params.get<int>("displayID", value) && value >= 0) {
        setDisplayId(value);
    }
    if (params.get<int>("displaySize", list) && list.size() >= 2 && list[0] >= 0 && list[1] >= 0) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mDisplayWidth = list[0];
        mStatus.mDisplayHeight = list[1];
    }
    if (params.get<int>("pqModes", list)) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mPqModes.assign(list.begin(), list.end());
    }
    if (params.get<int>("displayIDs", list)) {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        mStatus.mDisplayIDs.assign(list.begin(), list.end());
    }

    if (params.get<int>("register_TPDPUProcessor", value)) {
        onTavixRenderNotification(true);
        onTavixLogoNotification(true);
        enableSensorReader(true, value != 0);
    }
    if (params.containsKey("Unregister_TPDPUProcessor")) {
        onTavixRenderNotification(false);
        onTavixLogoNotification(false);
        enableSensorReader(false, true);
    }
    if (params.get<int>("register_TPC2Processor", value)) {
        onTavixLogoNotification(true);
        enableSensorReader(true, value != 0);
    }
    if (params.containsKey("Unregister_TPC2Processor")) {
        onTavixLogoNotification(false);
        enableSensorReader(false, true);
    }
    if (params.get<int>("register_SDRDPUProcessor", value)) {
        onTavixRenderNotification(true);
        enableSensorReader(true, value != 0);
    }
    if (params.containsKey("Unregister_SDRDPUProcessor")) {
        onTavixRenderNotification(false);
        enableSensorReader(false, true);
    }
    if (params.get<int>("register_SDRC2Processor", value)) {
        enableSensorReader(true, value != 0);
    }
    if (params.containsKey("Unregister_SDRC2Processor")) {
        enableSensorReader(false, true);
    }
    if (params.get<int>("register_TPPreviewProcessor", value)) {
        enableSensorReader(true, value != 0);
    }
    if (params.containsKey("Unregister_TPPreviewProcessor")) {
        enableSensorReader(false, true);
    }

    float speed = 0.0f;
    if (params.get<float>("filterRise", speed)) {
        std::lock_guard<std::mutex> sensorLock(mSensorLock);
        if (mSensorReader != nullptr) mSensorReader->setAmbientFilterRise(speed);
    }
    if (params.get<float>("filterFall", speed)) {
        std::lock_guard<std::mutex> sensorLock(mSensorLock);
        if (mSensorReader != nullptr) mSensorReader->setAmbientFilterFall(speed);
    }
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus Tps::getParameters(const std::string& keys, std::string* reply) {
    StatusBlock snapshot;
    {
        std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
        std::lock_guard<std::mutex> sensorLock(mSensorLock);
        refreshDerivedValuesLocked();
        snapshot = mStatus;
    }

    TavixTpsParameter replyParams;
    auto addInt = [&](const char* key, int32_t value) {
        replyParams.add(key, std::to_string(value));
    };
    auto addList = [&](const char* key, const std::vector<int32_t>& values) {
        replyParams.add<int>(key, std::vector<int>(values.begin(), values.end()));
    };
    if (keys == "all") {
        // The lists are left out of "all" on purpose.
        addInt("brightness", snapshot.mReportedBrightness);
        addInt("pqMode", snapshot.mMode);
        addInt("displayID", snapshot.mDisplayId);
        replyParams.add("ambientLux", std::to_string(snapshot.mLux));
        addInt("displayWidth", snapshot.mDisplayWidth);
        addInt("displayHeight", snapshot.mDisplayHeight);
    } else {
        TavixTpsParameter requested(keys);
        if (requested.containsKey("brightness")) addInt("brightness", snapshot.mReportedBrightness);
        if (requested.containsKey("pqMode")) addInt("pqMode", snapshot.mMode);
        if (requested.containsKey("displayID")) addInt("displayID", snapshot.mDisplayId);
        if (requested.containsKey("ambientLux")) {
            replyParams.add("ambientLux", std::to_string(snapshot.mLux));
        }
        if (requested.containsKey("displayWidth")) addInt("displayWidth", snapshot.mDisplayWidth);
        if (requested.containsKey("displayHeight")) {
            addInt("displayHeight", snapshot.mDisplayHeight);
        }
        if (requested.containsKey("pqModes")) addList("pqModes", snapshot.mPqModes);
        if (requested.containsKey("displayIDs")) addList("displayIDs", snapshot.mDisplayIDs);
    }

    *reply = replyParams.toString();
    TPS_LOGV("getParameters: %s", reply->c_str());
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus Tps::updateParams(int64_t paramId, int64_t value) {
    TPS_LOGD("update param id %ld - value %ld", static_cast<long>(paramId),
             static_cast<long>(value));

    switch (paramId) {
        case 0:
            if (atMost(value, uint64_t{255})) {
                std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
                mStatus.mBrightness = static_cast<int32_t>(value);
            }
            break;
        case 2:
            if (atMost(value, uint64_t{2})) {
                {
                    std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
                    mStatus.mMode = static_cast<int32_t>(value);
                }
                persistMode(static_cast<int32_t>(value));
            }
            break;
        case 3:
            if (value >= 0) setDisplayId(static_cast<int32_t>(value));
            break;
        case 5:
            if (value >= 0) {
                std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
                mStatus.mDisplayWidth = static_cast<int32_t>(value);
            }
            break;
        case 6:
            if (value >= 0) {
                std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
                mStatus.mDisplayHeight = static_cast<int32_t>(value);
            }
            break;
        default:
            TPS_LOGE("unrecognized paramId: %ld", static_cast<long>(paramId));
            break;
    }
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus Tps::updateDisplayIDs(const std::vector<int32_t>& ids) {
    std::unique_lock<std::shared_mutex> statusLock(mStatusLock);
    mStatus.mDisplayIDs = ids;
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus Tps::getDisplayIDs(std::vector<int32_t>* ids) {
    std::shared_lock<std::shared_mutex> statusLock(mStatusLock);
    *ids = mStatus.mDisplayIDs;
    return ndk::ScopedAStatus::ok();
}

}  // namespace aidl::vendor::tavix::tps
