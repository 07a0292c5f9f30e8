#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <android/sensor.h>
#include <hardware/sensors-base.h>

// As in the vendor sensor bridge, an ASensor is the sensor service's own SensorInfo.

using ::aidl::android::hardware::sensors::SensorInfo;

namespace {

const SensorInfo* info(ASensor const* sensor) {
    return reinterpret_cast<const SensorInfo*>(sensor);
}

}  // namespace

extern "C" {

const char* ASensor_getName(ASensor const* sensor) {
    return sensor == nullptr ? nullptr : info(sensor)->name.c_str();
}

const char* ASensor_getVendor(ASensor const* sensor) {
    return sensor == nullptr ? nullptr : info(sensor)->vendor.c_str();
}

int ASensor_getType(ASensor const* sensor) {
    return sensor == nullptr ? ASENSOR_TYPE_INVALID : static_cast<int>(info(sensor)->type);
}

float ASensor_getResolution(ASensor const* sensor) {
    return sensor == nullptr ? static_cast<float>(ASENSOR_INVALID) : info(sensor)->resolution;
}

int ASensor_getMinDelay(ASensor const* sensor) {
    return sensor == nullptr ? ASENSOR_INVALID : info(sensor)->minDelayUs;
}

const char* ASensor_getStringType(ASensor const* sensor) {
    return sensor == nullptr ? nullptr : info(sensor)->typeAsString.c_str();
}

int ASensor_getReportingMode(ASensor const* sensor) {
    if (sensor == nullptr) return ASENSOR_REPORTING_MODE_INVALID;
    return static_cast<int>(
            (static_cast<uint32_t>(info(sensor)->flags) & SENSOR_FLAG_MASK_REPORTING_MODE) >>
            SensorInfo::SENSOR_FLAG_SHIFT_REPORTING_MODE);
}

bool ASensor_isWakeUpSensor(ASensor const* sensor) {
    return sensor != nullptr && (info(sensor)->flags & SENSOR_FLAG_WAKE_UP) != 0;
}

int ASensor_getHandle(ASensor const* sensor) {
    return sensor == nullptr ? ASENSOR_INVALID : info(sensor)->sensorHandle;
}

}  // extern "C"
