#define LOG_TAG "sensord"

#include "SimEventQueue.h"

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/log.h>

#include <algorithm>

namespace sensord {

using ::aidl::android::frameworks::sensorservice::ISensorManager;

SimEventQueue::SimEventQueue(uint64_t id, std::shared_ptr<IEventQueueCallback> callback,
                             std::vector<SensorInfo> sensors,
                             std::shared_ptr<EventDispatcher> dispatcher)
    : mId(id),
      mCallback(std::move(callback)),
      mSensors(std::move(sensors)),
      mDispatcher(std::move(dispatcher)) {}

SimEventQueue::~SimEventQueue() {
    mDispatcher->removeQueue(mId);
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "queue %llu closed",
                        static_cast<unsigned long long>(mId));
}

::ndk::ScopedAStatus SimEventQueue::enableSensor(int32_t in_sensorHandle,
                                                 int32_t in_samplingPeriodUs,
                                                 int64_t /*in_maxBatchReportLatencyUs*/) {
    auto sensor = std::find_if(mSensors.begin(), mSensors.end(), [&](const SensorInfo& s) {
        return s.sensorHandle == in_sensorHandle;
    });
    if (sensor == mSensors.end()) {
        __android_log_print(ANDROID_LOG_WARN, LOG_TAG, "queue %llu: enable of unknown handle %d",
                            static_cast<unsigned long long>(mId), in_sensorHandle);
        return ::ndk::ScopedAStatus::fromServiceSpecificError(ISensorManager::RESULT_BAD_VALUE);
    }

    // Clamped, not rejected: up to the fastest rate, down to the slowest when there is one.
    int64_t periodUs = std::max<int64_t>(in_samplingPeriodUs, sensor->minDelayUs);
    if (sensor->maxDelayUs > 0) periodUs = std::min<int64_t>(periodUs, sensor->maxDelayUs);
    mDispatcher->enable(mId, mCallback, *sensor, std::chrono::microseconds(periodUs));
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "queue %llu: enabled handle %d every %lld us",
                        static_cast<unsigned long long>(mId), in_sensorHandle,
                        static_cast<long long>(periodUs));
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus SimEventQueue::disableSensor(int32_t in_sensorHandle) {
    if (!mDispatcher->disable(mId, in_sensorHandle)) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(ISensorManager::RESULT_BAD_VALUE);
    }
    __android_log_print(ANDROID_LOG_INFO, LOG_TAG, "queue %llu: disabled handle %d",
                        static_cast<unsigned long long>(mId), in_sensorHandle);
    return ::ndk::ScopedAStatus::ok();
}

}  // namespace sensord
