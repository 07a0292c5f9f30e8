// Link-time stand-in for tavixPrism::TpSensorReader: the test executables define the reader's
// members here, so the archive's real reader (and the sensor service it needs) is never linked.

#include "FakeSensorReader.h"

// The fake answers from FakeReaderState and keeps none of the reader's own fields.
#if defined(__clang__)
#pragma clang diagnostic ignored "-Wunused-private-field"
#endif
#include "TpSensorReader.h"

namespace tps::test {

std::mutex FakeReader::sLock;
FakeReaderState FakeReader::sState;

void FakeReader::reset() {
    std::lock_guard<std::mutex> lock(sLock);
    sState = FakeReaderState();
}

FakeReaderState FakeReader::snapshot() {
    std::lock_guard<std::mutex> lock(sLock);
    return sState;
}

}  // namespace tps::test

using tps::test::FakeReader;
using tps::test::FakeReaderState;

namespace tavixPrism {

TpSensorReader::TpSensorReader() {
    FakeReader::update([](FakeReaderState& s) { ++s.constructed; });
}

TpSensorReader::~TpSensorReader() {
    FakeReader::update([](FakeReaderState& s) { ++s.destroyed; });
}

void TpSensorReader::enableSensor() {
    FakeReader::update([](FakeReaderState& s) { ++s.enableSensorCalls; });
}

bool TpSensorReader::disableSensor() {
    FakeReader::update([](FakeReaderState& s) { ++s.disableSensorCalls; });
    return true;
}

bool TpSensorReader::checkBrightnessDriverNode(int display) {
    bool result = false;
    FakeReader::update([&](FakeReaderState& s) {
        s.checkedDisplays.push_back(display);
        result = s.nodeCheckResult;
    });
    return result;
}

float TpSensorReader::getAmbientLux(bool filtered) {
    float lux = 0.0f;
    FakeReader::update([&](FakeReaderState& s) {
        s.ambientLuxFiltered.push_back(filtered);
        lux = filtered ? s.filteredLux : s.lux;
    });
    return lux;
}

float TpSensorReader::getBrightnessVal(bool filtered) {
    float value = 0.0f;
    FakeReader::update([&](FakeReaderState& s) {
        s.brightnessFiltered.push_back(filtered);
        value = filtered ? s.filteredNodeBrightness : s.nodeBrightness;
    });
    return value;
}

float TpSensorReader::getFilteredBrightnessVal(float value) {
    float result = value;
    FakeReader::update([&](FakeReaderState& s) {
        s.filteredBrightnessInputs.push_back(value);
        if (s.filteredBrightness) result = *s.filteredBrightness;
    });
    return result;
}

void TpSensorReader::setAmbientFilterRise(float rise) {
    FakeReader::update([&](FakeReaderState& s) { s.riseSpeeds.push_back(rise); });
}

void TpSensorReader::setAmbientFilterFall(float fall) {
    FakeReader::update([&](FakeReaderState& s) { s.fallSpeeds.push_back(fall); });
}

}  // namespace tavixPrism
