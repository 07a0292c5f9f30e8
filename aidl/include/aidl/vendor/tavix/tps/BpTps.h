#pragma once

#include <android/binder_ibinder.h>

#include <atomic>
#include <mutex>

#include "aidl/vendor/tavix/tps/ITps.h"

namespace aidl::vendor::tavix::tps {

class BpTps : public ::ndk::BpCInterface<ITps> {
public:
    explicit BpTps(const ::ndk::SpAIBinder& binder);
    virtual ~BpTps();

    ::ndk::ScopedAStatus getTavixPrismStatus(std::vector<float>* _aidl_return) override;
    ::ndk::ScopedAStatus registerCallback(
            const std::shared_ptr<ITpsCallback>& in_callback) override;
    ::ndk::ScopedAStatus registerProcessor(bool in_filtered) override;
    ::ndk::ScopedAStatus unregisterProcessor() override;
    ::ndk::ScopedAStatus updateParams(int64_t in_id, int64_t in_value) override;
    ::ndk::ScopedAStatus updateDisplayIDs(const std::vector<int32_t>& in_displayIds) override;
    ::ndk::ScopedAStatus getDisplayIDs(std::vector<int32_t>* _aidl_return) override;
    ::ndk::ScopedAStatus setParameters(const std::string& in_params) override;
    ::ndk::ScopedAStatus getParameters(const std::string& in_keys,
                                       std::string* _aidl_return) override;
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
