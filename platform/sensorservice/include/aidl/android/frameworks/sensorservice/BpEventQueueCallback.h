#pragma once

#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>
#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

namespace aidl::android::frameworks::sensorservice {

class BpEventQueueCallback : public ::ndk::BpCInterface<IEventQueueCallback> {
public:
    explicit BpEventQueueCallback(const ::ndk::SpAIBinder& binder);
    virtual ~BpEventQueueCallback();

    ::ndk::ScopedAStatus onEvent(
            const ::aidl::android::hardware::sensors::Event& in_event) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

    // -1 until the remote side has answered; racing first calls store the same value.
    std::atomic<int32_t> _aidl_cached_version = -1;
    std::string _aidl_cached_hash = "-1";  // guarded by _aidl_cached_hash_mutex
    std::mutex _aidl_cached_hash_mutex;
};

}  // namespace aidl::android::frameworks::sensorservice
