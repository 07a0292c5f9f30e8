#pragma once

#include <aidl/android/hardware/sensors/ISensors.h>
#include <android/binder_interface_utils.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#ifdef BINDER_STABILITY_SUPPORT
#include <android/binder_stability.h>
#endif  // BINDER_STABILITY_SUPPORT

namespace aidl::android::frameworks::sensorservice {

class IDirectReportChannelDelegator;

class IDirectReportChannel : public ::ndk::ICInterface {
public:
    typedef IDirectReportChannelDelegator DefaultDelegator;
    static const char* descriptor;
    IDirectReportChannel();
    virtual ~IDirectReportChannel();

    static inline const int32_t version = 1;
    static inline const std::string hash = "514f08f7a595501066b94e5de878d240b4d49456";
    static constexpr uint32_t TRANSACTION_configure = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_getInterfaceVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr uint32_t TRANSACTION_getInterfaceHash = FIRST_CALL_TRANSACTION + 16777213;

    static std::shared_ptr<IDirectReportChannel> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<IDirectReportChannel>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<IDirectReportChannel>* instance);
    static bool setDefaultImpl(const std::shared_ptr<IDirectReportChannel>& impl);
    static const std::shared_ptr<IDirectReportChannel>& getDefaultImpl();

    virtual ::ndk::ScopedAStatus configure(
            int32_t in_sensorHandle,
            ::aidl::android::hardware::sensors::ISensors::RateLevel in_rate,
            int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<IDirectReportChannel> default_impl;
};

class IDirectReportChannelDefault : public IDirectReportChannel {
public:
    ::ndk::ScopedAStatus configure(int32_t in_sensorHandle,
                                   ::aidl::android::hardware::sensors::ISensors::RateLevel in_rate,
                                   int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};

}  // namespace aidl::android::frameworks::sensorservice
