#pragma once

#include <aidl/android/hardware/sensors/ISensors.h>
#include <hardware/sensors.h>

namespace android::hardware::sensors::implementation {

// Fills every field of *dst from src; fields the event type does not use are zero. Events whose
// payload member does not match their sensor type abort.
void convertToSensorEvent(const ::aidl::android::hardware::sensors::Event& src,
                          sensors_event_t* dst);

}  // namespace android::hardware::sensors::implementation
