#pragma once

#include <aidl/android/frameworks/sensorservice/IDirectReportChannel.h>
#include <aidl/android/frameworks/sensorservice/IEventQueue.h>
#include <aidl/android/frameworks/sensorservice/IEventQueueCallback.h>
#include <aidl/android/hardware/common/Ashmem.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <aidl/android/hardware/sensors/SensorType.h>
#include <android/binder_auto_utils.h>
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

class ISensorManagerDelegator;

class ISensorManager : public ::ndk::ICInterface {
public:
    typedef ISensorManagerDelegator DefaultDelegator;
    static const char* descriptor;
    ISensorManager();
    virtual ~ISensorManager();

    enum : int32_t { RESULT_NOT_EXIST = 1 };
    enum : int32_t { RESULT_NO_MEMORY = 2 };
    enum : int32_t { RESULT_NO_INIT = 3 };
    enum : int32_t { RESULT_PERMISSION_DENIED = 4 };
    enum : int32_t { RESULT_BAD_VALUE = 5 };
    enum : int32_t { RESULT_INVALID_OPERATION = 6 };
    enum : int32_t { RESULT_UNKNOWN_ERROR = 7 };

    static inline const int32_t version = 1;
    static inline const std::string hash = "514f08f7a595501066b94e5de878d240b4d49456";
    static constexpr uint32_t TRANSACTION_createAshmemDirectChannel = FIRST_CALL_TRANSACTION + 0;
    static constexpr uint32_t TRANSACTION_createEventQueue = FIRST_CALL_TRANSACTION + 1;
    static constexpr uint32_t TRANSACTION_createGrallocDirectChannel = FIRST_CALL_TRANSACTION + 2;
    static constexpr uint32_t TRANSACTION_getDefaultSensor = FIRST_CALL_TRANSACTION + 3;
    static constexpr uint32_t TRANSACTION_getSensorList = FIRST_CALL_TRANSACTION + 4;
    static constexpr uint32_t TRANSACTION_getInterfaceVersion = FIRST_CALL_TRANSACTION + 16777214;
    static constexpr uint32_t TRANSACTION_getInterfaceHash = FIRST_CALL_TRANSACTION + 16777213;

    static std::shared_ptr<ISensorManager> fromBinder(const ::ndk::SpAIBinder& binder);
    static binder_status_t writeToParcel(AParcel* parcel,
                                         const std::shared_ptr<ISensorManager>& instance);
    static binder_status_t readFromParcel(const AParcel* parcel,
                                          std::shared_ptr<ISensorManager>* instance);
    static bool setDefaultImpl(const std::shared_ptr<ISensorManager>& impl);
    static const std::shared_ptr<ISensorManager>& getDefaultImpl();

    virtual ::ndk::ScopedAStatus createAshmemDirectChannel(
            const ::aidl::android::hardware::common::Ashmem& in_mem, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus createEventQueue(
            const std::shared_ptr<IEventQueueCallback>& in_callback,
            std::shared_ptr<IEventQueue>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus createGrallocDirectChannel(
            const ::ndk::ScopedFileDescriptor& in_buffer, int64_t in_size,
            std::shared_ptr<IDirectReportChannel>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getDefaultSensor(
            ::aidl::android::hardware::sensors::SensorType in_type,
            ::aidl::android::hardware::sensors::SensorInfo* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getSensorList(
            std::vector<::aidl::android::hardware::sensors::SensorInfo>* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceVersion(int32_t* _aidl_return) = 0;
    virtual ::ndk::ScopedAStatus getInterfaceHash(std::string* _aidl_return) = 0;

private:
    static std::shared_ptr<ISensorManager> default_impl;
};

class ISensorManagerDefault : public ISensorManager {
public:
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
    ::ndk::SpAIBinder asBinder() override;
    bool isRemote() override;
};

}  // namespace aidl::android::frameworks::sensorservice
