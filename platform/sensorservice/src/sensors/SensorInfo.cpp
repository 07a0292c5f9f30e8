#include <aidl/android/hardware/sensors/SensorInfo.h>
#include <android/binder_to_string.h>

#include "ParcelFields.h"

namespace aidl::android::hardware::sensors {

const char* SensorInfo::descriptor = "android.hardware.sensors.SensorInfo";

binder_status_t SensorInfo::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&sensorHandle)
            .field(&name)
            .field(&vendor)
            .field(&version)
            .field(&type)
            .field(&typeAsString)
            .field(&maxRange)
            .field(&resolution)
            .field(&power)
            .field(&minDelayUs)
            .field(&fifoReservedEventCount)
            .field(&fifoMaxEventCount)
            .field(&requiredPermission)
            .field(&maxDelayUs)
            .field(&flags)
            .finish();
}

binder_status_t SensorInfo::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel)
            .field(sensorHandle)
            .field(name)
            .field(vendor)
            .field(version)
            .field(type)
            .field(typeAsString)
            .field(maxRange)
            .field(resolution)
            .field(power)
            .field(minDelayUs)
            .field(fifoReservedEventCount)
            .field(fifoMaxEventCount)
            .field(requiredPermission)
            .field(maxDelayUs)
            .field(flags)
            .finish();
}

std::string SensorInfo::toString() const {
    using ::android::internal::ToString;
    return "SensorInfo{sensorHandle: " + ToString(sensorHandle) + ", name: " + ToString(name) +
           ", vendor: " + ToString(vendor) + ", version: " + ToString(version) +
           ", type: " + sensors::toString(type) + ", typeAsString: " + ToString(typeAsString) +
           ", maxRange: " + ToString(maxRange) + ", resolution: " + ToString(resolution) +
           ", power: " + ToString(power) + ", minDelayUs: " + ToString(minDelayUs) +
           ", fifoReservedEventCount: " + ToString(fifoReservedEventCount) +
           ", fifoMaxEventCount: " + ToString(fifoMaxEventCount) +
           ", requiredPermission: " + ToString(requiredPermission) +
           ", maxDelayUs: " + ToString(maxDelayUs) + ", flags: " + ToString(flags) + "}";
}

}  // namespace aidl::android::hardware::sensors
