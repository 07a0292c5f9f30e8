#pragma once

#include <aidl/android/hardware/sensors/SensorType.h>
#include <android/binder_parcel.h>
#include <android/binder_parcelable_utils.h>

#include <compare>
#include <cstdint>
#include <string>
#include <type_traits>

namespace aidl::android::hardware::sensors {

class SensorInfo {
public:
    typedef std::false_type fixed_size;
    static const char* descriptor;

    int32_t sensorHandle = 0;
    std::string name;
    std::string vendor;
    int32_t version = 0;
    SensorType type = SensorType(0);
    std::string typeAsString;
    float maxRange = 0.000000f;
    float resolution = 0.000000f;
    float power = 0.000000f;
    int32_t minDelayUs = 0;
    int32_t fifoReservedEventCount = 0;
    int32_t fifoMaxEventCount = 0;
    std::string requiredPermission;
    int32_t maxDelayUs = 0;
    int32_t flags = 0;

    binder_status_t readFromParcel(const AParcel* parcel);
    binder_status_t writeToParcel(AParcel* parcel) const;

    bool operator==(const SensorInfo&) const = default;
    auto operator<=>(const SensorInfo&) const = default;

    enum : int32_t { SENSOR_FLAG_BITS_WAKE_UP = 1 };
    enum : int32_t { SENSOR_FLAG_BITS_CONTINUOUS_MODE = 0 };
    enum : int32_t { SENSOR_FLAG_BITS_ON_CHANGE_MODE = 2 };
    enum : int32_t { SENSOR_FLAG_BITS_ONE_SHOT_MODE = 4 };
    enum : int32_t { SENSOR_FLAG_BITS_SPECIAL_REPORTING_MODE = 6 };
    enum : int32_t { SENSOR_FLAG_BITS_DATA_INJECTION = 16 };
    enum : int32_t { SENSOR_FLAG_BITS_DYNAMIC_SENSOR = 32 };
    enum : int32_t { SENSOR_FLAG_BITS_ADDITIONAL_INFO = 64 };
    enum : int32_t { SENSOR_FLAG_BITS_DIRECT_CHANNEL_ASHMEM = 1024 };
    enum : int32_t { SENSOR_FLAG_BITS_DIRECT_CHANNEL_GRALLOC = 2048 };
    enum : int32_t { SENSOR_FLAG_BITS_MASK_REPORTING_MODE = 14 };
    enum : int32_t { SENSOR_FLAG_BITS_MASK_DIRECT_REPORT = 896 };
    enum : int32_t { SENSOR_FLAG_BITS_MASK_DIRECT_CHANNEL = 3072 };
    enum : int32_t { SENSOR_FLAG_SHIFT_REPORTING_MODE = 1 };
    enum : int32_t { SENSOR_FLAG_SHIFT_DATA_INJECTION = 4 };
    enum : int32_t { SENSOR_FLAG_SHIFT_DYNAMIC_SENSOR = 5 };
    enum : int32_t { SENSOR_FLAG_SHIFT_ADDITIONAL_INFO = 6 };
    enum : int32_t { SENSOR_FLAG_SHIFT_DIRECT_REPORT = 7 };
    enum : int32_t { SENSOR_FLAG_SHIFT_DIRECT_CHANNEL = 10 };

    static const ::ndk::parcelable_stability_t _aidl_stability = ::ndk::STABILITY_VINTF;

    std::string toString() const;
};

}  // namespace aidl::android::hardware::sensors
