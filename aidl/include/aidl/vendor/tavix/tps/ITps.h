#pragma once

#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "aidl/vendor/tavix/tps/ITpsCallback.h"

#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl::vendor::tavix::tps {

class ITps : public ::ndk::ICInterface {
public:
    static const char* descriptor;
    ITps();
    virtual ~ITps();

    static inline const int32_t version = 1;
    static inline const std::string hash = "eaad8d02dd91409c780a7acdcf0716d9ceb57b9b";
    static constexpr uint32_t TRANSACTION_getTavixPrismStatus = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_registerCallback = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_registerProcessor = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_unregisterProcessor = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_updateParams = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_updateDisplayIDs = FIRST_CALL_TRANSACTION + 5;
    static constexpr uint32_t TRANSACTION_getDisplayIDs = FIRST_CALL_TRANSACTION + 6;
    static constexpr uint32_t TRANSACTION_setParameters = FIRST_CALL_TRANSACTION + 7;
    static constexpr uint32_t TRANSACTION_getParameters = FIRST_CALL_TRANSACTION + 8;
    static constexpr uint32_t TRANSACTION_getInterfaceVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr uint32_t TRANSACTION_getInterfaceHash = FIRST_CALL_TRANSACTION + 16777213;

    static std::shared_ptr<ITps> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel, const std::shared_ptr<ITps>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel, std::shared_ptr<ITps>* instance);
    // Answers proxy calls that the remote side does not know (STATUS_UNKNOWN_TRANSACTION).
    // Unlike the generated original, nullptr clears it again; returns whether one is set.
    // Not synchronised with proxy calls: set it before any proxy is in use.
    static bool setDefaultImpl(const std::shared_ptr<ITps>& impl);
    static const std::shared_ptr<ITps>& getDefaultImpl();

    virtual ::ndk::ScopedAStatus getTavixPrismStatus(std::vector<float>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus registerCallback(
            const std::shared_ptr<ITpsCallback>& in_callback) = 0;
    virtual ::ndk::ScopedAStatus registerProcessor(bool in_filtered) = 0;
    virtual ::ndk::ScopedAStatus unregisterProcessor() = 0;
    virtual ::ndk::ScopedAStatus updateParams(int64_t in_id, int64_t in_value) = 0;
    virtual ::ndk::ScopedAStatus updateDisplayIDs(const std::vector<int32_t>& in_displayIds) = 0;
    virtual ::ndk::ScopedAStatus getDisplayIDs(std::vector<int32_t>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus setParameters(const std::string& in_params) = 0;
    virtual ::ndk::ScopedAStatus getParameters(const std::string& in_keys,
                                               std::string* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<ITps> default_impl;
};

class ITpsDefault : public ITps {
public:
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
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};

}  // namespace aidl::vendor::tavix::tps
