#pragma once

#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <aidl/android/hardware/sensors/SensorType.h>

#include <istream>
#include <string>
#include <vector>

namespace sensord {

// Builds the simulated sensor list. A sensor is described by one line of comma-separated fields:
//   TYPE,NAME[,VENDOR[,MAX_RANGE[,RESOLUTION[,POWER[,MIN_DELAY_US[,MAX_DELAY_US[,FLAGS]]]]]]]
// TYPE is a number or a lower-case name such as "light" or "proximity". Missing fields take
// defaults suited to the type (reporting mode in FLAGS, string type always from the type).
class SensorCatalog {
public:
    using SensorInfo = ::aidl::android::hardware::sensors::SensorInfo;
    using SensorType = ::aidl::android::hardware::sensors::SensorType;

    static SensorInfo defaultLightSensor(int32_t handle);

    // On failure returns false with *error describing the problem (no position).
    static bool parseSpec(const std::string& spec, int32_t handle, SensorInfo* sensor,
                          std::string* error);

    // One spec per line; blank lines and '#' lines skipped. Handles are numbered from
    // firstHandle. Errors read "<name>:<line>: <problem>".
    static bool parseList(std::istream& in, const std::string& name, int32_t firstHandle,
                          std::vector<SensorInfo>* sensors, std::string* error);
    static bool loadList(const std::string& path, int32_t firstHandle,
                         std::vector<SensorInfo>* sensors, std::string* error);

    // "android.sensor.light" and so on; unknown types get "vendor.sensor.<number>".
    static std::string stringType(SensorType type);
    // Known type names ("light"), or a number.
    static bool parseType(const std::string& text, SensorType* type);
};

}  // namespace sensord
