#include <aidl/android/hardware/sensors/DynamicSensorInfo.h>
#include <android/binder_to_string.h>

#include "ParcelFields.h"

namespace aidl::android::hardware::sensors {

using ::android::internal::ToString;

const char* DynamicSensorInfo::descriptor = "android.hardware.sensors.DynamicSensorInfo";
const char* DynamicSensorInfo::Uuid::descriptor = "android.hardware.sensors.DynamicSensorInfo.Uuid";

binder_status_t DynamicSensorInfo::Uuid::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel).field(&values).finish();
}

binder_status_t DynamicSensorInfo::Uuid::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(values).finish();
}

std::string DynamicSensorInfo::Uuid::toString() const {
    return "Uuid{values: " + ToString(values) + "}";
}

binder_status_t DynamicSensorInfo::readFromParcel(const AParcel* parcel) {
    return host::StructuredReader(parcel)
            .field(&connected)
            .field(&sensorHandle)
            .field(&uuid)
            .finish();
}

binder_status_t DynamicSensorInfo::writeToParcel(AParcel* parcel) const {
    return host::StructuredWriter(parcel).field(connected).field(sensorHandle).field(uuid).finish();
}

std::string DynamicSensorInfo::toString() const {
    return "DynamicSensorInfo{connected: " + ToString(connected) +
           ", sensorHandle: " + ToString(sensorHandle) + ", uuid: " + uuid.toString() + "}";
}

}  // namespace aidl::android::hardware::sensors
