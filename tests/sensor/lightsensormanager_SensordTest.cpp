#include <android/log.h>
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "Sensord.h"
#include "TPLightSensorManagerAIDL.h"
#include "lightsensormanager_FakeService.h"
#include "sensorservice_TestUtil.h"

namespace {

using tavixPrism::TPLightSensorManager;

constexpr char kTag[] = "TavixLightSensorManager";

// The manager against the simulated sensor service, all in this process.
class LightSensorManagerWithSensordTest : public tps::test::LoggingTest {
protected:
    void serve(const std::vector<std::string>& args) {
        const sensord::ParsedOptions parsed = sensord::parseSensordOptions(args);
        ASSERT_TRUE(parsed.ok) << parsed.error;
        std::string error;
        mSensord = sensord::Sensord::create(parsed.options, -1, &error);
        ASSERT_NE(nullptr, mSensord) << error;
        lsmtest::useSensorService(mSensord->service());
    }

    void TearDown() override { lsmtest::useSensorService(nullptr); }

    std::unique_ptr<sensord::Sensord> mSensord;
};

TEST_F(LightSensorManagerWithSensordTest, LuxFollowsTheSimulatedSensor) {
    serve({"--constant", "321.5", "--additional-info"});
    mProperties.setLogLevel(3);
    TPLightSensorManager manager;
    ASSERT_EQ(0, manager.createLightSensor());
    EXPECT_TRUE(mLog.has(ANDROID_LOG_INFO, kTag, "Name :Ambient Light Sensor (simulated)"));
    ASSERT_EQ(0, manager.createEventQueue());
    ASSERT_EQ(0, manager.enableSensor());

    const auto active = mSensord->service()->dispatcher()->activeSensors();
    ASSERT_EQ(1u, active.size());
    EXPECT_EQ(std::chrono::microseconds(50000), active[0].period);

    ASSERT_TRUE(sensortest::eventually([&] { return manager.getCurAmbinetLux() == 321.5f; }));
    ASSERT_TRUE(sensortest::eventually(
            [&] { return mLog.count(ANDROID_LOG_VERBOSE, kTag, "Sensor LUX =321.500000") > 0; }));

    EXPECT_EQ(0, manager.disableSensor());
    EXPECT_TRUE(mSensord->service()->dispatcher()->activeSensors().empty());
    manager.destroyEventQueue();
    // The additional-info frame went by without a lux line of its own.
    EXPECT_EQ(0u, mLog.countContaining("Sensor LUX =0.000000"));
    EXPECT_EQ(0u, mLog.countContaining("Sensor LUX =25.000000"));
}

TEST_F(LightSensorManagerWithSensordTest, DestroyingTheQueueWithoutDisableStopsDelivery) {
    serve({"--constant", "3"});
    TPLightSensorManager manager;
    ASSERT_EQ(0, manager.createLightSensor());
    ASSERT_EQ(0, manager.createEventQueue());
    ASSERT_EQ(0, manager.enableSensor());
    ASSERT_TRUE(sensortest::eventually([&] { return manager.getCurAmbinetLux() == 3.0f; }));
    manager.destroyEventQueue();
    // The manager held the only reference to the queue.
    EXPECT_TRUE(mSensord->service()->dispatcher()->activeSensors().empty());
}

TEST_F(LightSensorManagerWithSensordTest, SimulatorFailureModesReachTheManager) {
    serve({"--no-light-sensor", "--sensor", "proximity,Near"});
    {
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "Failed to get default sensor"));
    }

    mLog.clear();
    serve({"--empty-list"});
    {
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_TRUE(mLog.hasNoneContaining("Failed to get"));
    }

    mLog.clear();
    serve({"--fail-list"});
    {
        TPLightSensorManager manager;
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_EQ(-22, manager.createLightSensor());
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag, "Failed to get sensor list: "));
    }
}

}  // namespace
