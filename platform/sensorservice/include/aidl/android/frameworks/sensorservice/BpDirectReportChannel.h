#pragma once

#include <aidl/android/frameworks/sensorservice/IDirectReportChannel.h>
#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

namespace aidl::android::frameworks::sensorservice {

class BpDirectReportChannel : public ::ndk::BpCInterface<IDirectReportChannel> {
public:
    explicit BpDirectReportChannel(const ::ndk::SpAIBinder& binder);
    virtual ~BpDirectReportChannel();

    ::ndk::ScopedAStatus configure(int32_t in_sensorHandle,
                                   ::aidl::android::hardware::sensors::ISensors::RateLevel in_rate,
                                   int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

    // -1 until the remote side has answered; racing first calls store the same value.
    std::atomic<int32_t> _aidl_cached_version = -1;
    std::string _aidl_cached_hash = "-1";  // guarded by _aidl_cached_hash_mutex
    std::mutex _aidl_cached_hash_mutex;
};

}  // namespace aidl::android::frameworks::sensorservice
