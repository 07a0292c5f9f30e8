#define LOG_TAG "TavixSensorReader"

#include "TpSensorReader.h"

#include <stdio.h>

#include <string>

#include "SensorNodes.h"
#include "TPLightSensorManagerAIDL.h"
#include "TpsLog.h"

namespace tavixPrism {

namespace {

constexpr float kDefaultNodeValue = 255.0f;
constexpr float kDefaultRise = 0.02f;
constexpr float kDefaultFall = 0.004f;
constexpr float kMinIntervalMs = 50.0f;

using UniqueFile = std::unique_ptr<FILE, int (*)(FILE*)>;

UniqueFile openNode(const std::string& path) {
    return UniqueFile(fopen(path.c_str(), "re"), fclose);
}

// Nodes are opened afresh for each read: sysfs values change under us.
float readNode(const std::string& path) {
    UniqueFile file = openNode(path);
    if (!file) {
        TPS_LOGE("fail to open %s brightness file", path.c_str());
        return kDefaultNodeValue;
    }
    float value = kDefaultNodeValue;
    if (fscanf(file.get(), "%f", &value) != 1) {
        TPS_LOGE("Failed to read brightness value from file: %s", path.c_str());
        return kDefaultNodeValue;
    }
    return value;
}

}  // namespace

TpSensorReader::TpSensorReader() {
    mAmbientFilter.setAmbientFilterRise(kDefaultRise);
    mAmbientFilter.setAmbientFilterFall(kDefaultFall);
    mAmbientFilter.setMinIntervalMs(kMinIntervalMs);
    mSensorManager = std::make_shared<TPLightSensorManager>();
}

TpSensorReader::~TpSensorReader() {
    TPS_LOGV("TpSensorReader DROT");
}

void TpSensorReader::enableSensor() {
    for (size_t group = 0; group < kBrightnessNodeGroups.size(); ++group) {
        const BrightnessNodeGroup& nodes = kBrightnessNodeGroups[group];
        if (nodes.brightness.empty() || !openNode(nodes.brightness[0])) continue;
        mNodeGroup = static_cast<int32_t>(group);
        TPS_LOGI("use node group %d", mNodeGroup);
        // Display 0's maximum, whichever display is selected later.
        mMaxBrightness = readNode(nodes.maxBrightness[0]);
        break;
    }

    if (!mSensorManager) return;
    if (mSensorManager->createLightSensor() != 0) {
        TPS_LOGE("Failed to create light sensor");
    } else if (mSensorManager->createEventQueue() != 0) {
        TPS_LOGE("Failed to create light sensor event queue");
    } else if (mSensorManager->enableSensor() != 0) {
        TPS_LOGE("Failed to enable sensor");
    } else {
        return;
    }
    // Not retried: lux reads as 0 until the next reader.
    mSensorManager.reset();
}

bool TpSensorReader::disableSensor() {
    mAmbientFilter.reset();
    mBacklightFilter.reset();
    if (mSensorManager) {
        mSensorManager->disableSensor();
        mSensorManager->destroyEventQueue();
        mSensorManager.reset();
    }
    return true;
}

bool TpSensorReader::checkBrightnessDriverNode(int display) {
    if (mNodeGroup < 0 ||
        static_cast<unsigned>(display) >= kBrightnessNodeGroups[mNodeGroup].brightness.size()) {
        TPS_LOGE("The brightness node of %d display isn't configured.", display);
        return false;
    }
    const BrightnessNodeGroup& nodes = kBrightnessNodeGroups[mNodeGroup];
    const std::string& path = nodes.brightness[display];
    if (!openNode(path)) {
        TPS_LOGE("The brightness node of %d display can't be opened.", display);
        return false;
    }
    TPS_LOGD("found %s for brightness file", path.c_str());
    mDisplayIndex = display;
    mMaxBrightness = readNode(nodes.maxBrightness[display]);
    return true;
}

float TpSensorReader::getBrightnessVal(bool filtered) {
    float current = mMaxBrightness;
    if (mNodeGroup >= 0) {
        current = readNode(kBrightnessNodeGroups[mNodeGroup].brightness[mDisplayIndex]);
    }
    mCurBrightness8bit = current * 255.0f / mMaxBrightness;
    TPS_LOGV("cur_brightness_8bit: %f, cur_brightness: %f, max_brightness: %f", mCurBrightness8bit,
             current, mMaxBrightness);
    if (!filtered) return mCurBrightness8bit;
    mFilteredBrightness = mBacklightFilter.Filter(mCurBrightness8bit);
    return mFilteredBrightness;
}

float TpSensorReader::getFilteredBrightnessVal(float value) {
    return mBacklightFilter.Filter(value);
}

float TpSensorReader::getAmbientLux(bool filtered) {
    if (!mSensorManager) return 0.0f;
    mAmbientLux = mSensorManager->getCurAmbinetLux();
    if (!filtered) return mAmbientLux;
    mFilteredAmbientLux = mAmbientFilter.Filter(mAmbientLux);
    return mFilteredAmbientLux;
}

void TpSensorReader::setAmbientFilterRise(float rise) {
    mAmbientFilter.setAmbientFilterRise(rise);
}

void TpSensorReader::setAmbientFilterFall(float fall) {
    mAmbientFilter.setAmbientFilterFall(fall);
}

}  // namespace tavixPrism
