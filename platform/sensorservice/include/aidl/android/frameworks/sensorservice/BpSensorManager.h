#pragma once

#include <aidl/android/frameworks/sensorservice/ISensorManager.h>
#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

namespace aidl::android::frameworks::sensorservice {

class BpSensorManager : public ::ndk::BpCInterface<ISensorManager> {
public:
    explicit BpSensorManager(const ::ndk::SpAIBinder& binder);
    virtual ~BpSensorManager();

    ::ndk::ScopedAStatus createAshmemDirectChannel(
            const ::aidl::android::hardware::common::Ashmem& in_mem, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) override;
    ::ndk::ScopedAStatus createEventQueue(const std::shared_ptr<IEventQueueCallback>& in_callback,
                                          std::shared_ptr<IEventQueue>* _aidl_return) override;
    ::ndk::ScopedAStatus createGrallocDirectChannel(
            const ::ndk::ScopedFileDescriptor& in_buffer, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) override;
    ::ndk::ScopedAStatus getDefaultSensor(
            ::aidl::android::hardware::sensors::SensorType in_type,
            ::aidl::android::hardware::sensors::SensorInfo* _aidl_return) override;
    ::ndk::ScopedAStatus getSensorList(
            std::vector<::aidl::android::hardware::sensors::SensorInfo>* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

    // -1 until the remote side has answered; racing first calls store the same value.
    std::atomic<int32_t> _aidl_cached_version = -1;
    std::string _aidl_cached_hash = "-1";  // guarded by _aidl_cached_hash_mutex
    std::mutex _aidl_cached_hash_mutex;
};

}  // namespace aidl::android::frameworks::sensorservice
