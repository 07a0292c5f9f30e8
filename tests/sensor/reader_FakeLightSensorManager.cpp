#include "reader_FakeLightSensorManager.h"

#include "TPLightSensorManagerAIDL.h"

namespace tps::test {

std::mutex FakeLightSensor::sLock;
FakeLightSensorState FakeLightSensor::sState;

void FakeLightSensor::reset() {
    std::lock_guard<std::mutex> lock(sLock);
    sState = FakeLightSensorState();
}

FakeLightSensorState FakeLightSensor::snapshot() {
    std::lock_guard<std::mutex> lock(sLock);
    return sState;
}

}  // namespace tps::test

using tps::test::FakeLightSensor;
using tps::test::FakeLightSensorState;

namespace tavixPrism {

namespace {

int32_t record(const char* name, int32_t FakeLightSensorState::*result) {
    int32_t answer = 0;
    FakeLightSensor::update([&](FakeLightSensorState& s) {
        s.calls.push_back(name);
        answer = s.*result;
    });
    return answer;
}

}  // namespace

TPLightSensorManager::TPLightSensorManager() : mImpl(nullptr) {
    FakeLightSensor::update([](FakeLightSensorState& s) { ++s.constructed; });
}

TPLightSensorManager::~TPLightSensorManager() {
    FakeLightSensor::update([](FakeLightSensorState& s) { ++s.destroyed; });
}

int32_t TPLightSensorManager::createLightSensor() {
    return record("createLightSensor", &FakeLightSensorState::createLightSensorResult);
}

int32_t TPLightSensorManager::createEventQueue() {
    return record("createEventQueue", &FakeLightSensorState::createEventQueueResult);
}

int32_t TPLightSensorManager::enableSensor() {
    return record("enableSensor", &FakeLightSensorState::enableSensorResult);
}

int32_t TPLightSensorManager::disableSensor() {
    return record("disableSensor", &FakeLightSensorState::disableSensorResult);
}

void TPLightSensorManager::destroyEventQueue() {
    FakeLightSensor::update(
            [](FakeLightSensorState& s) { s.calls.push_back("destroyEventQueue"); });
}

float TPLightSensorManager::getCurAmbinetLux() {
    float lux = 0.0f;
    FakeLightSensor::update([&](FakeLightSensorState& s) {
        s.calls.push_back("getCurAmbinetLux");
        lux = s.lux;
    });
    return lux;
}

}  // namespace tavixPrism
