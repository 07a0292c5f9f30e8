#pragma once

#include <aidl/android/frameworks/sensorservice/BnEventQueue.h>
#include <aidl/android/frameworks/sensorservice/BnSensorManager.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>

#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace lsmtest {

using ::aidl::android::frameworks::sensorservice::IDirectReportChannel;
using ::aidl::android::frameworks::sensorservice::IEventQueue;
using ::aidl::android::frameworks::sensorservice::IEventQueueCallback;
using ::aidl::android::frameworks::sensorservice::ISensorManager;
using ::aidl::android::hardware::sensors::Event;
using ::aidl::android::hardware::sensors::SensorInfo;
using ::aidl::android::hardware::sensors::SensorType;

// A platform sensor service whose answers each test scripts, and which records what it is asked.
class FakeSensorService : public ::aidl::android::frameworks::sensorservice::BnSensorManager {
public:
    struct Enable {
        int32_t handle;
        int32_t samplingPeriodUs;
        int64_t maxBatchReportLatencyUs;
    };

    // ---- script ----
    std::vector<SensorInfo> sensors;          // getSensorList's answer
    std::optional<SensorInfo> defaultSensor;  // for LIGHT only; none: RESULT_NOT_EXIST
    bool failList = false;
    bool failCreateQueue = false;
    bool failEnable = false;
    bool failDisable = false;

    // What the service has been asked.
    struct Record {
        std::vector<Enable> enables;
        std::vector<int32_t> disables;
        std::shared_ptr<IEventQueueCallback> callback;  // of the last queue created
        const AIBinder* callbackBinder = nullptr;       // its binder then; compare only
        std::weak_ptr<IEventQueue> queue;               // the last queue created
    };
    Record record() const;

    ::ndk::ScopedAStatus createAshmemDirectChannel(
            const ::aidl::android::hardware::common::Ashmem&, int64_t,
            std::shared_ptr<IDirectReportChannel>*) override {
        return fromServiceSpecificError(RESULT_UNKNOWN_ERROR);
    }
    ::ndk::ScopedAStatus createGrallocDirectChannel(
            const ::ndk::ScopedFileDescriptor&, int64_t,
            std::shared_ptr<IDirectReportChannel>*) override {
        return fromServiceSpecificError(RESULT_UNKNOWN_ERROR);
    }
    ::ndk::ScopedAStatus createEventQueue(const std::shared_ptr<IEventQueueCallback>& callback,
                                          std::shared_ptr<IEventQueue>* queue) override;
    ::ndk::ScopedAStatus getDefaultSensor(SensorType type, SensorInfo* sensor) override;
    ::ndk::ScopedAStatus getSensorList(std::vector<SensorInfo>* list) override;

private:
    class Queue;
    static ::ndk::ScopedAStatus fromServiceSpecificError(int32_t code) {
        return ::ndk::ScopedAStatus::fromServiceSpecificError(code);
    }

    mutable std::mutex mLock;
    Record mRecord;  // guarded by mLock
};

// Puts `binder` under the platform sensor service's name, replacing what was there.
void useSensorService(AIBinder* binder);
inline void useSensorService(const std::shared_ptr<ISensorManager>& service) {
    useSensorService(service->asBinder().get());
}

// A light event with the given lux, and a light sensor's description.
Event lightEvent(float lux, int32_t handle = 1);
SensorInfo lightSensor(int32_t handle);

}  // namespace lsmtest
