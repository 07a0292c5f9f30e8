#pragma once

#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <cstdint>
#include <memory>
#include <string>

#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl::vendor::tavix::tps {

class ITpsCallback : public ::ndk::ICInterface {
public:
    static const char* descriptor;
    ITpsCallback();
    virtual ~ITpsCallback();

    static inline const int32_t version = 1;
    static inline const std::string hash = "eaad8d02dd91409c780a7acdcf0716d9ceb57b9b";
    static constexpr uint32_t TRANSACTION_onTavixPrismPlaybackStart = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_onTavixPrismPlaybackStop = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_onTavixNotification = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_getInterfaceVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr uint32_t TRANSACTION_getInterfaceHash = FIRST_CALL_TRANSACTION + 16777213;

    static std::shared_ptr<ITpsCallback> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<ITpsCallback>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<ITpsCallback>* instance);
    // Answers proxy calls that the remote side does not know (STATUS_UNKNOWN_TRANSACTION).
    // Unlike the generated original, nullptr clears it again; returns whether one is set.
    // Not synchronised with proxy calls: set it before any proxy is in use.
    static bool setDefaultImpl(const std::shared_ptr<ITpsCallback>& impl);
    static const std::shared_ptr<ITpsCallback>& getDefaultImpl();

    virtual ::ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus onTavixNotification(const std::string& in_event) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<ITpsCallback> default_impl;
};

class ITpsCallbackDefault : public ITpsCallback {
public:
    ::ndk::ScopedAStatus onTavixPrismPlaybackStart(bool* _aidl_return) override;
    ::ndk::ScopedAStatus onTavixPrismPlaybackStop(bool* _aidl_return) override;
    ::ndk::ScopedAStatus onTavixNotification(const std::string& in_event) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};

}  // namespace aidl::vendor::tavix::tps
