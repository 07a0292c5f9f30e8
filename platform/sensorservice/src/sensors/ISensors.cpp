#include <aidl/android/hardware/sensors/ISensors.h>

namespace aidl::android::hardware::sensors {

const char* ISensors::descriptor = "android.hardware.sensors.ISensors";

std::string toString(ISensors::RateLevel val) {
    switch (val) {
        case ISensors::RateLevel::STOP:
            return "STOP";
        case ISensors::RateLevel::NORMAL:
            return "NORMAL";
        case ISensors::RateLevel::FAST:
            return "FAST";
        case ISensors::RateLevel::VERY_FAST:
            return "VERY_FAST";
    }
    return std::to_string(static_cast<int32_t>(val));
}

}  // namespace aidl::android::hardware::sensors
