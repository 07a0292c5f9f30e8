#pragma once

#include <aidl/android/frameworks/sensorservice/IEventQueue.h>
#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

namespace aidl::android::frameworks::sensorservice {

class BpEventQueue : public ::ndk::BpCInterface<IEventQueue> {
public:
    explicit BpEventQueue(const ::ndk::SpAIBinder& binder);
    virtual ~BpEventQueue();

    ::ndk::ScopedAStatus disableSensor(int32_t in_sensorHandle) override;
    ::ndk::ScopedAStatus enableSensor(int32_t in_sensorHandle, int32_t in_samplingPeriodUs,
                                      int64_t in_maxBatchReportLatencyUs) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

    // -1 until the remote side has answered; racing first calls store the same value.
    std::atomic<int32_t> _aidl_cached_version = -1;
    std::string _aidl_cached_hash = "-1";  // guarded by _aidl_cached_hash_mutex
    std::mutex _aidl_cached_hash_mutex;
};

}  // namespace aidl::android::frameworks::sensorservice
