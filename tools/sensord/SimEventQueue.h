#pragma once

#include <aidl/android/frameworks/sensorservice/BnEventQueue.h>
#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>

#include <memory>
#include <vector>

#include "EventDispatcher.h"

namespace sensord {

// One client's event queue. It holds the client's callback; when the client drops its last
// reference the queue goes away and every sensor it enabled stops.
class SimEventQueue : public ::aidl::android::frameworks::sensorservice::BnEventQueue {
public:
    using IEventQueueCallback = ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
    using SensorInfo = ::aidl::android::hardware::sensors::SensorInfo;

    SimEventQueue(uint64_t id, std::shared_ptr<IEventQueueCallback> callback,
                  std::vector<SensorInfo> sensors, std::shared_ptr<EventDispatcher> dispatcher);
    ~SimEventQueue() override;

    // Unknown handle: RESULT_BAD_VALUE. The period is clamped to the sensor's delay range.
    ::ndk::ScopedAStatus enableSensor(int32_t in_sensorHandle, int32_t in_samplingPeriodUs,
                                      int64_t in_maxBatchReportLatencyUs) override;
    // Not enabled on this queue: RESULT_BAD_VALUE.
    ::ndk::ScopedAStatus disableSensor(int32_t in_sensorHandle) override;

private:
    const uint64_t mId;
    const std::shared_ptr<IEventQueueCallback> mCallback;
    const std::vector<SensorInfo> mSensors;
    const std::shared_ptr<EventDispatcher> mDispatcher;
};

}  // namespace sensord
