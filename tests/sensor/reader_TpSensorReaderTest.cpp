#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeClock.h"
#include "LogCapture.h"
#include "ProxyUtilsAmbient.h"
#include "ProxyUtilsBacklight.h"
#include "TpSensorReader.h"
#include "reader_FakeLightSensorManager.h"
#include "reader_TestNodes.h"

namespace tps::test {
namespace {

constexpr char kTag[] = "TavixSensorReader";
using Calls = std::vector<std::string>;

const Calls kStartCalls = {"createLightSensor", "createEventQueue", "enableSensor"};

class SensorReader : public LoggingTest {
protected:
    void SetUp() override {
        FakeLightSensor::reset();
        clearTestNodes();
        setFakeClockNs(0);
    }
    Calls calls() { return FakeLightSensor::snapshot().calls; }
};

TEST_F(SensorReader, FirstGroupWithANodeWinsAndOnlyItsDisplaysCanBeChecked) {
    {
        tavixPrism::TpSensorReader reader;
        reader.enableSensor();
        EXPECT_FALSE(reader.checkBrightnessDriverNode(0));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                                 "The brightness node of 0 display isn't configured."));
        mLog.clear();
        EXPECT_EQ(255.0f, reader.getBrightnessVal(false));
        EXPECT_EQ(0u, mLog.lines().size()) << mLog.dump();  // nothing was opened
    }
    writeNode("leds/lcd/brightness", "100");
    {
        tavixPrism::TpSensorReader reader;
        reader.enableSensor();
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "use node group 1"));
        EXPECT_FALSE(reader.checkBrightnessDriverNode(1));
    }
    writeNode("backlight/panel0/brightness", "10");
    writeNode("backlight/panel0/max_brightness", "100");
    tavixPrism::TpSensorReader reader;
    reader.enableSensor();
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "use node group 0"));
    // Before any display is checked, display 0 is read against display 0's maximum.
    EXPECT_EQ(10.0f * 255.0f / 100.0f, reader.getBrightnessVal(false));

    EXPECT_FALSE(reader.checkBrightnessDriverNode(1));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                             "The brightness node of 1 display can't be opened."));
    EXPECT_FALSE(reader.checkBrightnessDriverNode(2));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                             "The brightness node of 2 display isn't configured."));

    writeNode("backlight/panel1/brightness", "512");
    writeNode("backlight/panel1/max_brightness", "1023");
    EXPECT_TRUE(reader.checkBrightnessDriverNode(1));
    // Neither rounded nor clamped.
    EXPECT_EQ(512.0f * 255.0f / 1023.0f, reader.getBrightnessVal(false));
    // Back to display 0: its own maximum is read again.
    EXPECT_TRUE(reader.checkBrightnessDriverNode(0));
    EXPECT_EQ(10.0f * 255.0f / 100.0f, reader.getBrightnessVal(false));
}

TEST_F(SensorReader, UnreadableNodesCountAs255AndAreReadAfreshEachTime) {
    writeNode("leds/lcd/brightness", "bright");
    tavixPrism::TpSensorReader reader;
    reader.enableSensor();
    const std::string path = nodePath("leds/lcd/brightness");
    EXPECT_TRUE(mLog.hasOnce(
            ANDROID_LOG_ERROR, kTag,
            "fail to open " + nodePath("leds/lcd/max_brightness") + " brightness file"));
    for (const char* text : {"bright", "51\n", ""}) {
        writeNode("leds/lcd/brightness", text);
        EXPECT_EQ(text[0] == '5' ? 51.0f : 255.0f, reader.getBrightnessVal(false)) << text;
    }
    EXPECT_EQ(2u, mLog.count(ANDROID_LOG_ERROR, kTag,
                             "Failed to read brightness value from file: " + path));
    // A node that disappears after selection: open failure, still 255.
    clearTestNodes();
    EXPECT_EQ(255.0f, reader.getBrightnessVal(false));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "fail to open " + path + " brightness file"));
}

TEST_F(SensorReader, StopReleasesTheManagerForGood) {
    {
        tavixPrism::TpSensorReader reader;
        EXPECT_EQ(Calls{}, calls());
        reader.enableSensor();
        FakeLightSensor::update([](FakeLightSensorState& s) { s.lux = 321.5f; });
        EXPECT_EQ(321.5f, reader.getAmbientLux(false));
        EXPECT_TRUE(reader.disableSensor());
        Calls want = kStartCalls;
        want.insert(want.end(), {"getCurAmbinetLux", "disableSensor", "destroyEventQueue"});
        EXPECT_EQ(want, calls());
        EXPECT_EQ(1, FakeLightSensor::snapshot().destroyed);

        // Lux is 0 and nothing is asked any more, not even by a new start.
        EXPECT_EQ(0.0f, reader.getAmbientLux(true));
        EXPECT_TRUE(reader.disableSensor());
        reader.enableSensor();
        EXPECT_EQ(want, calls());
    }
    EXPECT_EQ(1, FakeLightSensor::snapshot().constructed);
    EXPECT_EQ(1, FakeLightSensor::snapshot().destroyed);
    EXPECT_EQ(0u, mLog.lines().size()) << mLog.dump();
}

TEST_F(SensorReader, EachStartFailureStopsAndReleasesTheManager) {
    const struct {
        int32_t FakeLightSensorState::*failing;
        size_t callsMade;
        const char* message;
    } cases[] = {
            {&FakeLightSensorState::createLightSensorResult, 1, "Failed to create light sensor"},
            {&FakeLightSensorState::createEventQueueResult, 2,
             "Failed to create light sensor event queue"},
            {&FakeLightSensorState::enableSensorResult, 3, "Failed to enable sensor"},
    };
    for (const auto& c : cases) {
        FakeLightSensor::reset();
        mLog.clear();
        FakeLightSensor::update([&](FakeLightSensorState& s) {
            s.*c.failing = -22;
            s.lux = 99.0f;
        });
        tavixPrism::TpSensorReader reader;
        reader.enableSensor();
        EXPECT_EQ(Calls(kStartCalls.begin(), kStartCalls.begin() + c.callsMade), calls())
                << c.message;
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, c.message));
        EXPECT_EQ(1, FakeLightSensor::snapshot().destroyed) << c.message;
        EXPECT_EQ(0.0f, reader.getAmbientLux(false));
        // Disabling finds no manager to stop.
        EXPECT_TRUE(reader.disableSensor());
        EXPECT_EQ(c.callsMade, calls().size());
    }
}

TEST_F(SensorReader, LuxFollowsAnAmbientFilterWithTheDefaultSpeedsUntilTheyAreSet) {
    tapr::ProxyUtilsAmbient reference;  // built at the same fake instant as the reader's
    reference.setAmbientFilterRise(0.02f);
    reference.setAmbientFilterFall(0.004f);
    tavixPrism::TpSensorReader reader;
    reader.enableSensor();

    const struct {
        int64_t ms;
        float lux;
        float rise;  // set on both before the step when not 0
    } steps[] = {{0, 100.0f, 0}, {1000, 900.0f, 0}, {1030, 5.0f, 0}, {4000, 40000.0f, 1.0f}};
    for (const auto& step : steps) {
        if (step.rise != 0) {
            reader.setAmbientFilterRise(step.rise);
            reference.setAmbientFilterRise(step.rise);
        }
        setFakeClockNs(step.ms * 1000000);
        FakeLightSensor::update([&](FakeLightSensorState& s) { s.lux = step.lux; });
        EXPECT_EQ(reference.Filter(step.lux), reader.getAmbientLux(true)) << step.ms;
        // The raw value is the manager's, unfiltered.
        EXPECT_EQ(step.lux, reader.getAmbientLux(false));
    }
}

TEST_F(SensorReader, BrightnessFilterIsSharedByBothEntryPoints) {
    writeNode("leds/lcd/brightness", "0");
    writeNode("leds/lcd/max_brightness", "255");
    tavixPrism::TpSensorReader reader;
    reader.enableSensor();

    tapr::ProxyUtilsBacklight reference;
    EXPECT_EQ(reference.Filter(100.0f), reader.getFilteredBrightnessVal(100.0f));
    EXPECT_EQ(reference.Filter(0.0f), reader.getBrightnessVal(true));  // node reads 0
    // Raw reads leave the filter alone.
    writeNode("leds/lcd/brightness", "255");
    EXPECT_EQ(255.0f, reader.getBrightnessVal(false));
    EXPECT_EQ(reference.Filter(255.0f), reader.getBrightnessVal(true));

    // Disabling re-arms it: the next value passes whole.
    EXPECT_TRUE(reader.disableSensor());
    EXPECT_EQ(33.0f, reader.getFilteredBrightnessVal(33.0f));
}

}  // namespace
}  // namespace tps::test
