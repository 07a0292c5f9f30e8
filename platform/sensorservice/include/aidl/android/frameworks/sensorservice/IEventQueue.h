#pragma once

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

class IEventQueueDelegator;

class IEventQueue : public ::ndk::ICInterface {
public:
    typedef IEventQueueDelegator DefaultDelegator;
    static const char* descriptor;
    IEventQueue();
    virtual ~IEventQueue();

    static inline const int32_t version = 1;
    static inline const std::string hash = "514f08f7a595501066b94e5de878d240b4d49456";
    static constexpr uint32_t TRANSACTION_disableSensor = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_enableSensor = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_getInterfaceVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr uint32_t TRANSACTION_getInterfaceHash = FIRST_CALL_TRANSACTION + 16777213;

    static std::shared_ptr<IEventQueue> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<IEventQueue>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<IEventQueue>* instance);
    static bool setDefaultImpl(const std::shared_ptr<IEventQueue>& impl);
    static const std::shared_ptr<IEventQueue>& getDefaultImpl();

    virtual ::ndk::ScopedAStatus disableSensor(int32_t in_sensorHandle) = 0;
    virtual ::ndk::ScopedAStatus enableSensor(int32_t in_sensorHandle, int32_t in_samplingPeriodUs,
                                              int64_t in_maxBatchReportLatencyUs) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<IEventQueue> default_impl;
};

class IEventQueueDefault : public IEventQueue {
public:
    ::ndk::ScopedAStatus disableSensor(int32_t in_sensorHandle) override;
    ::ndk::ScopedAStatus enableSensor(int32_t in_sensorHandle, int32_t in_samplingPeriodUs,
                                      int64_t in_maxBatchReportLatencyUs) override;
    ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) override;
    ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) override;
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};

}  // namespace aidl::android::frameworks::sensorservice
