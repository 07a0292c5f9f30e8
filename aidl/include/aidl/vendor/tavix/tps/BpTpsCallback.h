#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

#include "aidl/vendor/tavix/tps/ITpsCallback.h"

namespace aidl::vendor::tavix::tps {

class BpTpsCallback : public ::ndk::BpCInterface<ITpsCallback> {
public:
    explicit BpTpsCallback(const ::ndk::SpAIBinder& binder);
    virtual ~BpTpsCallback();

    ::ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* _aidl_return) override;
    ::ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* _aidl_return) override;
    ::ndk::ScopedAStatus onTavixNotification(const std::string& in_event) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;

    // -1 until the remote side has answered. Lock-free on purpose: racing first calls may both
    // transact and store the same value; atomic only so that the race is well defined.
    std::atomic<int32_t> _aidl_cached_version = -1;
    // "-1" until the remote side has answered.
    std::string _aidl_cached_hash = "-1";  // guarded by _aidl_cached_hash_mutex
    // Held for the whole getInterfaceHash call, transaction included.
    std::mutex _aidl_cached_hash_mutex;
};

}  // namespace aidl::vendor::tavix::tps
