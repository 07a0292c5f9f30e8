#define LOG_TAG "sensord"

#include "SimSensorManager.h"

#include <android/log.h>
#include <hardware/sensors.h>

#include "SimEventQueue.h"

namespace sensord {

namespace {

// The smallest buffer that holds one event.
constexpr int64_t kDirectReportEventSize = sizeof(sensors_event_t);

::ndk::ScopedAStatus result(int32_t code) {
    return ::ndk::ScopedAStatus::fromServiceSpecificError(code);
}

}  // namespace

SimSensorManager::SimSensorManager(std::vector<SensorInfo> sensors, ListMode listMode,
                                   std::shared_ptr<EventDispatcher> dispatcher)
    : mSensors(std::move(sensors)), mListMode(listMode), mDispatcher(std::move(dispatcher)) {}

::ndk::ScopedAStatus SimSensorManager::createAshmemDirectChannel(
        const Ashmem& in_mem, int64_t in_size, std::shared_ptr<IDirectReportChannel>*) {
    if (in_size > in_mem.size || in_size < kDirectReportEventSize) {
        return result(RESULT_BAD_VALUE);
    }
    return result(RESULT_UNKNOWN_ERROR);
}

::ndk::ScopedAStatus SimSensorManager::createGrallocDirectChannel(
        const ::ndk::ScopedFileDescriptor&, int64_t in_size,
        std::shared_ptr<IDirectReportChannel>*) {
    if (in_size < kDirectReportEventSize) return result(RESULT_BAD_VALUE);
    return result(RESULT_UNKNOWN_ERROR);
}

::ndk::ScopedAStatus SimSensorManager::createEventQueue(
        const std::shared_ptr<IEventQueueCallback>& in_callback,
        std::shared_ptr<IEventQueue>* _aidl_return) {
    if (!in_callback) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "createEventQueue: null callback");
        return result(RESULT_BAD_VALUE);
    }
    const uint64_t id = mNextQueueId++;
    *_aidl_return =
            ::ndk::SharedRefBase::make<SimEventQueue>(id, in_callback, mSensors, mDispatcher);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "queue %llu opened",
                        static_cast<unsigned long long>(id));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus SimSensorManager::getDefaultSensor(SensorType in_type,
                                                        SensorInfo* _aidl_return) {
    for (const SensorInfo& sensor : mSensors) {
        if (sensor.type == in_type) {
            *_aidl_return = sensor;
            return ::ndk::ScopedAStatus::ok();
        }
    }
    return result(RESULT_NOT_EXIST);
}

::ndk::ScopedAStatus SimSensorManager::getSensorList(std::vector<SensorInfo>* _aidl_return) {
    _aidl_return->clear();
    switch (mListMode) {
        case ListMode::kFail:
            return result(RESULT_UNKNOWN_ERROR);
        case ListMode::kEmpty:
            return ::ndk::ScopedAStatus::ok();
        case ListMode::kNormal:
            *_aidl_return = mSensors;
            return ::ndk::ScopedAStatus::ok();
    }
    return result(RESULT_UNKNOWN_ERROR);
}

}  // namespace sensord
