#pragma once

#include <aidl/android/frameworks/sensorservice/BnSensorManager.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>

#include <atomic>
#include <memory>
#include <vector>

#include "EventDispatcher.h"

namespace sensord {

// The simulated platform sensor service. The sensor list is fixed at construction; the list
// modes let a client's failure paths be driven.
class SimSensorManager : public ::aidl::android::frameworks::sensorservice::BnSensorManager {
public:
    enum class ListMode { kNormal, kEmpty, kFail };

    using Ashmem = ::aidl::android::hardware::common::Ashmem;
    using IDirectReportChannel = ::aidl::android::frameworks::sensorservice::IDirectReportChannel;
    using IEventQueue = ::aidl::android::frameworks::sensorservice::IEventQueue;
    using IEventQueueCallback = ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
    using SensorInfo = ::aidl::android::hardware::sensors::SensorInfo;
    using SensorType = ::aidl::android::hardware::sensors::SensorType;

    SimSensorManager(std::vector<SensorInfo> sensors, ListMode listMode,
                     std::shared_ptr<EventDispatcher> dispatcher);

    // Direct channels are not simulated: a well-formed request still fails.
    ::ndk::ScopedAStatus createAshmemDirectChannel(
            const Ashmem& in_mem, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) override;
    ::ndk::ScopedAStatus createEventQueue(const std::shared_ptr<IEventQueueCallback>& in_callback,
                                          std::shared_ptr<IEventQueue>* _aidl_return) override;
    ::ndk::ScopedAStatus createGrallocDirectChannel(
            const ::ndk::ScopedFileDescriptor& in_buffer, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) override;
    // The first sensor of the type in list order; none: RESULT_NOT_EXIST, output untouched.
    ::ndk::ScopedAStatus getDefaultSensor(SensorType in_type, SensorInfo* _aidl_return) override;
    ::ndk::ScopedAStatus getSensorList(std::vector<SensorInfo>* _aidl_return) override;

    const std::shared_ptr<EventDispatcher>& dispatcher() const { return mDispatcher; }

private:
    const std::vector<SensorInfo> mSensors;
    const ListMode mListMode;
    const std::shared_ptr<EventDispatcher> mDispatcher;
    std::atomic<uint64_t> mNextQueueId{1};
};

}  // namespace sensord
