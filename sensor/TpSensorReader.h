#pragma once

#include <cstdint>
#include <memory>

#include "ProxyUtilsAmbient.h"
#include "ProxyUtilsBacklight.h"

namespace tavixPrism {

class TPLightSensorManager;

// Ambient lux from the light sensor and backlight brightness (0..255) from sysfs, raw or smoothed.
// No lock of its own: the owner serialises every call. Unreadable nodes read as 255; without a
// working light sensor, lux is 0.
class TpSensorReader {
public:
    // Blocks until the platform sensor service is registered.
    TpSensorReader();
    ~TpSensorReader();
    TpSensorReader(const TpSensorReader&) = delete;
    TpSensorReader& operator=(const TpSensorReader&) = delete;

    // Selects the brightness node group and starts the light sensor.
    void enableSensor();
    // Stops and releases the light sensor for good and re-arms both filters. Always true.
    bool disableSensor();
    // Selects the display whose brightness is read; false when it has no openable node.
    bool checkBrightnessDriverNode(int display);

    float getAmbientLux(bool filtered);
    float getBrightnessVal(bool filtered);
    // Runs a brightness the caller already has through the backlight filter.
    float getFilteredBrightnessVal(float value);

    void setAmbientFilterRise(float rise);
    void setAmbientFilterFall(float fall);

private:
    std::shared_ptr<TPLightSensorManager> mSensorManager;
    float mAmbientLux = 0.0f;
    float mFilteredAmbientLux = 0.0f;
    float mMaxBrightness = 255.0f;
    float mCurBrightness8bit = 255.0f;
    float mFilteredBrightness = 255.0f;
    tapr::ProxyUtilsAmbient mAmbientFilter;
    tapr::ProxyUtilsBacklight mBacklightFilter;
    int32_t mNodeGroup = -1;
    int32_t mDisplayIndex = 0;
};

}  // namespace tavixPrism
