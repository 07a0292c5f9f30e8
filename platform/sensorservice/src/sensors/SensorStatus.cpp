#include <aidl/android/hardware/sensors/SensorStatus.h>

namespace aidl::android::hardware::sensors {

std::string toString(SensorStatus val) {
    switch (val) {
        case SensorStatus::NO_CONTACT:
            return "NO_CONTACT";
        case SensorStatus::UNRELIABLE:
            return "UNRELIABLE";
        case SensorStatus::ACCURACY_LOW:
            return "ACCURACY_LOW";
        case SensorStatus::ACCURACY_MEDIUM:
            return "ACCURACY_MEDIUM";
        case SensorStatus::ACCURACY_HIGH:
            return "ACCURACY_HIGH";
    }
    return std::to_string(static_cast<int8_t>(val));
}

}  // namespace aidl::android::hardware::sensors
