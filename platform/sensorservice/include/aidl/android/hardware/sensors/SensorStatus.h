#pragma once

#include <android/binder_enums.h>

#include <array>
#include <cstdint>
#include <string>

namespace aidl::android::hardware::sensors {

enum class SensorStatus : int8_t {
    NO_CONTACT = -1,
    UNRELIABLE = 0,
    ACCURACY_LOW = 1,
    ACCURACY_MEDIUM = 2,
    ACCURACY_HIGH = 3,
};

[[nodiscard]] std::string toString(SensorStatus val);

}  // namespace aidl::android::hardware::sensors

namespace ndk::internal {

template <>
constexpr inline std::array<aidl::android::hardware::sensors::SensorStatus, 5>
        enum_values<aidl::android::hardware::sensors::SensorStatus> = {
                aidl::android::hardware::sensors::SensorStatus::NO_CONTACT,
                aidl::android::hardware::sensors::SensorStatus::UNRELIABLE,
                aidl::android::hardware::sensors::SensorStatus::ACCURACY_LOW,
                aidl::android::hardware::sensors::SensorStatus::ACCURACY_MEDIUM,
                aidl::android::hardware::sensors::SensorStatus::ACCURACY_HIGH,
};

}  // namespace ndk::internal
