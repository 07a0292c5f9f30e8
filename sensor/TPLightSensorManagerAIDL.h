#pragma once

#include <cstdint>

namespace tavixPrism {

// Connects to the platform sensor service and keeps the latest ambient light level. Every call
// forwards to Impl; the constructor blocks until the sensor service is registered.
// Return codes: 0 on success, -22 on every failure.
class TPLightSensorManager {
public:
    TPLightSensorManager();
    ~TPLightSensorManager();
    TPLightSensorManager(const TPLightSensorManager&) = delete;
    TPLightSensorManager& operator=(const TPLightSensorManager&) = delete;

    int32_t createLightSensor();
    int32_t createEventQueue();
    int32_t enableSensor();
    int32_t disableSensor();
    void destroyEventQueue();
    float getCurAmbinetLux();

    class Impl;

private:
    Impl* mImpl;
};

}  // namespace tavixPrism
