#include "lightsensormanager_FakeService.h"

#include <android/binder_manager.h>

#include <string>

namespace lsmtest {

using ::aidl::android::frameworks::sensorservice::IDirectReportChannel;
using ::aidl::android::hardware::common::Ashmem;

namespace {

::ndk::ScopedAStatus serviceError(int32_t code) {
    return ::ndk::ScopedAStatus::fromServiceSpecificError(code);
}

std::string sensorServiceName() {
    return std::string(ISensorManager::descriptor) + "/default";
}

}  // namespace

// The queue only records into its service, which it keeps alive.
class FakeSensorService::Queue : public ::aidl::android::frameworks::sensorservice::BnEventQueue {
public:
    explicit Queue(std::shared_ptr<FakeSensorService> service) : mService(std::move(service)) {}

    ::ndk::ScopedAStatus enableSensor(int32_t handle, int32_t periodUs,
                                      int64_t latencyUs) override {
        std::lock_guard<std::mutex> lock(mService->mLock);
        mService->mRecord.enables.push_back({handle, periodUs, latencyUs});
        if (mService->failEnable) return serviceError(ISensorManager::RESULT_BAD_VALUE);
        return ::ndk::ScopedAStatus::ok();
    }
    ::ndk::ScopedAStatus disableSensor(int32_t handle) override {
        std::lock_guard<std::mutex> lock(mService->mLock);
        mService->mRecord.disables.push_back(handle);
        if (mService->failDisable) return serviceError(ISensorManager::RESULT_BAD_VALUE);
        return ::ndk::ScopedAStatus::ok();
    }

private:
    const std::shared_ptr<FakeSensorService> mService;
};

FakeSensorService::Record FakeSensorService::record() const {
    std::lock_guard<std::mutex> lock(mLock);
    return mRecord;
}

::ndk::ScopedAStatus FakeSensorService::createAshmemDirectChannel(
        const Ashmem&, int64_t, std::shared_ptr<IDirectReportChannel>*) {
    return serviceError(RESULT_UNKNOWN_ERROR);
}

::ndk::ScopedAStatus FakeSensorService::createGrallocDirectChannel(
        const ::ndk::ScopedFileDescriptor&, int64_t, std::shared_ptr<IDirectReportChannel>*) {
    return serviceError(RESULT_UNKNOWN_ERROR);
}

::ndk::ScopedAStatus FakeSensorService::createEventQueue(
        const std::shared_ptr<IEventQueueCallback>& callback, std::shared_ptr<IEventQueue>* queue) {
    if (failCreateQueue) return serviceError(RESULT_UNKNOWN_ERROR);
    if (!callback) return serviceError(RESULT_BAD_VALUE);
    auto created = ::ndk::SharedRefBase::make<Queue>(ref<FakeSensorService>());
    std::lock_guard<std::mutex> lock(mLock);
    mRecord.callback = callback;
    mRecord.callbackBinder = callback->asBinder().get();
    mRecord.queue = created;
    *queue = created;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus FakeSensorService::getDefaultSensor(SensorType type, SensorInfo* sensor) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        ++mRecord.defaultSensorCalls;
    }
    if (!defaultSensor || type != SensorType::LIGHT) return serviceError(RESULT_NOT_EXIST);
    *sensor = *defaultSensor;
    return ::ndk::ScopedAStatus::ok();
}

::ndk::ScopedAStatus FakeSensorService::getSensorList(std::vector<SensorInfo>* list) {
    {
        std::lock_guard<std::mutex> lock(mLock);
        ++mRecord.sensorListCalls;
    }
    list->clear();
    if (failList) return serviceError(RESULT_UNKNOWN_ERROR);
    *list = sensors;
    return ::ndk::ScopedAStatus::ok();
}

void registerUnderSensorServiceName(AIBinder* binder) {
    AServiceManager_addService(binder, sensorServiceName().c_str());
}

void useSensorService(const std::shared_ptr<ISensorManager>& service) {
    registerUnderSensorServiceName(service->asBinder().get());
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
    sensor.version = 1;
    sensor.type = SensorType::LIGHT;
    sensor.typeAsString = "android.sensor.light";
    sensor.maxRange = 30000.0f;
    sensor.resolution = 1.0f;
    sensor.power = 0.2f;
    sensor.flags = SensorInfo::SENSOR_FLAG_BITS_ON_CHANGE_MODE;
    return sensor;
}

}  // namespace lsmtest
