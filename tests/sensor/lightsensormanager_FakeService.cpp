#include "lightsensormanager_FakeService.h"

#include <android/binder_manager.h>

#include <string>

namespace lsmtest {

// The queue only records into its service, which it keeps alive.
class FakeSensorService::Queue : public ::aidl::android::frameworks::sensorservice::BnEventQueue {
public:
    explicit Queue(std::shared_ptr<FakeSensorService> service) : mService(std::move(service)) {}

    ::ndk::ScopedAStatus enableSensor(int32_t handle, int32_t periodUs,
                                      int64_t latencyUs) override {
        std::lock_guard<std::mutex> lock(mService->mLock);
        mService->mRecord.enables.push_back({handle, periodUs, latencyUs});
        return result(mService->failEnable);
    }
    ::ndk::ScopedAStatus disableSensor(int32_t handle) override {
        std::lock_guard<std::mutex> lock(mService->mLock);
        mService->mRecord.disables.push_back(handle);
        return result(mService->failDisable);
    }

private:
    static ::ndk::ScopedAStatus result(bool fail) {
        return fail ? fromServiceSpecificError(ISensorManager::RESULT_BAD_VALUE)
                    : ::ndk::ScopedAStatus::ok();
    }

    const std::shared_ptr<FakeSensorService> mService;
};

FakeSensorService::Record FakeSensorService::record() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRecord;
}

::ndk::ScopedAStatus FakeSensorService::createEventQueue(
        const std::shared_ptr<IEventQueueCallback>& callback, std::shared_ptr<IEventQueue>* queue) {
    if (failCreateQueue) return fromServiceSpecificError(RESULT_UNKNOWN_ERROR);
    if (!callback) return fromServiceSpecificError(RESULT_BAD_VALUE);
    auto created = ::ndk::SharedRefBase::make<Queue>(ref<FakeSensorService>());
    std::lock_guard<std::mutex> lock(mLock);
    mRecord.callback = callback;
    mRecord.callbackBinder = callback->asBinder().get();
    mRecord.queue = created;
    *queue = created;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus FakeSensorService::getDefaultSensor(SensorType type, SensorInfo* sensor) {
    if (!defaultSensor || type != SensorType::LIGHT) {
        return fromServiceSpecificError(RESULT_NOT_EXIST);
    }
    *sensor = *defaultSensor;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus FakeSensorService::getSensorList(std::vector<SensorInfo>* list) {
    list->clear();
    if (failList) return fromServiceSpecificError(RESULT_UNKNOWN_ERROR);
    *list = sensors;
    return ::ndk::ScopedAStatus::ok();
}

void useSensorService(AIBinder* binder) {
    AServiceManager_addService(binder,
                               (std::string(ISensorManager::descriptor) + "/default").c_str());
}

Event lightEvent(float lux, int32_t handle) {
    Event event;
    event.timestamp = 1000;
    event.sensorHandle = handle;
    event.sensorType = SensorType::LIGHT;
    event.payload.set<Event::EventPayload::scalar>(lux);
    return event;
}

SensorInfo lightSensor(int32_t handle) {
    SensorInfo sensor;
    sensor.sensorHandle = handle;
    sensor.name = "Light A";
    sensor.vendor = "Vendor A";
    sensor.type = SensorType::LIGHT;
    sensor.typeAsString = "android.sensor.light";
    sensor.maxRange = 30000.0f;
    sensor.power = 0.2f;
    sensor.flags = SensorInfo::SENSOR_FLAG_BITS_ON_CHANGE_MODE;
    return sensor;
}

}  // namespace lsmtest
