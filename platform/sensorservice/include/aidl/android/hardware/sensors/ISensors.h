#pragma once

#include <aidl/android/hardware/sensors/AdditionalInfo.h>
#include <aidl/android/hardware/sensors/DynamicSensorInfo.h>
#include <aidl/android/hardware/sensors/Event.h>
#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <aidl/android/hardware/sensors/SensorStatus.h>
#include <aidl/android/hardware/sensors/SensorType.h>
#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::sensors {

// Only the declarations of the sensor HAL interface that clients of the sensor service use: its
// nested enum and constants. Nothing on the host talks to a sensor HAL.
class ISensors {
public:
    static const char* descriptor;

    enum class RateLevel : int32_t {
        STOP = 0,
        NORMAL = 1,
        FAST = 2,
        VERY_FAST = 3,
    };

    enum : int32_t { ERROR_NO_MEMORY = -12 };
    enum : int32_t { ERROR_BAD_VALUE = -22 };
    enum : int32_t { RUNTIME_SENSORS_HANDLE_BASE = 1593835520 };
    enum : int32_t { RUNTIME_SENSORS_HANDLE_END = 1610612735 };
};

[[nodiscard]] std::string toString(ISensors::RateLevel val);

}  // namespace aidl::android::hardware::sensors

namespace ndk::internal {

template <>
constexpr inline std::array<aidl::android::hardware::sensors::ISensors::RateLevel, 4>
        enum_values<aidl::android::hardware::sensors::ISensors::RateLevel> = {
                aidl::android::hardware::sensors::ISensors::RateLevel::STOP,
                aidl::android::hardware::sensors::ISensors::RateLevel::NORMAL,
                aidl::android::hardware::sensors::ISensors::RateLevel::FAST,
                aidl::android::hardware::sensors::ISensors::RateLevel::VERY_FAST,
};

}  // namespace ndk::internal
