// The service with the real sensor reader: a scripted light sensor manager and backlight nodes in
// a temporary folder stand in for the sensor service and sysfs.

#include <filesystem>
#include <fstream>

#include "FakeConfigPaths.h"
#include "ServiceTestSupport.h"
#include "reader_FakeLightSensorManager.h"
#include "reader_TestNodes.h"

namespace tps::test {
namespace {

using aidl::vendor::tavix::tps::Tps;
using aidl::vendor::tavix::tps::TpsTestPeer;

class TpsReaderTest : public ::testing::Test {
protected:
    void SetUp() override {
        FakeLightSensor::reset();
        clearTestNodes();
        writeNode("backlight/panel0/brightness", "512");
        writeNode("backlight/panel0/max_brightness", "1023");
        writeNode("backlight/panel1/brightness", "300");
        writeNode("backlight/panel1/max_brightness", "1023");
    }

    void TearDown() override {
        mTps.reset();
        setConfigPath("/nonexistent/tavix_prism.cfg");
        std::filesystem::remove(mConfig);
    }

    void makeService(int bluMode) {
        std::ofstream(mConfig) << "BLUMode = " << bluMode << "\n";
        setConfigPath(mConfig);
        mTps = ndk::SharedRefBase::make<Tps>();
    }

    std::vector<float> status() {
        std::vector<float> values;
        EXPECT_TRUE(mTps->getTavixPrismStatus(&values).isOk());
        return values;
    }

    ScopedPropertyDir mProperties;
    LogCapture mLog;
    const std::string mConfig = testNodeRoot() + "/tavix_prism.cfg";
    std::shared_ptr<Tps> mTps;
};

TEST_F(TpsReaderTest, SessionStartsAndStopsTheLightSensor) {
    makeService(0);
    mTps->enableSensorReader(true, false);
    EXPECT_EQ(FakeLightSensor::snapshot().calls,
              (std::vector<std::string>{"createLightSensor", "createEventQueue", "enableSensor"}));

    FakeLightSensor::update([](FakeLightSensorState& s) { s.lux = 250.5f; });
    EXPECT_EQ(status().at(4), 250.5f);

    mTps->enableSensorReader(false, true);
    FakeLightSensorState sensor = FakeLightSensor::snapshot();
    ASSERT_GE(sensor.calls.size(), 2u);
    EXPECT_EQ(sensor.calls[sensor.calls.size() - 2], "disableSensor");
    EXPECT_EQ(sensor.calls.back(), "destroyEventQueue");
    EXPECT_EQ(sensor.constructed, sensor.destroyed);

    // The lux stays as last reported once the session is gone.
    FakeLightSensor::update([](FakeLightSensorState& s) { s.lux = 9.0f; });
    EXPECT_EQ(status().at(4), 250.5f);
}

TEST_F(TpsReaderTest, NodeBrightnessIsScaledAndTruncated) {
    makeService(2);
    mTps->enableSensorReader(true, false);
    EXPECT_EQ(status().at(0), 127.0f) << "512 x 255 / 1023 = 127.62";

    writeNode("backlight/panel0/brightness", "1023");
    EXPECT_EQ(status().at(0), 255.0f) << "nodes are read afresh on every query";

    ASSERT_TRUE(mTps->setParameters("displayID=1").isOk());
    EXPECT_EQ(status().at(0), 74.0f) << "panel1: 300 x 255 / 1023 = 74.78";
    EXPECT_EQ(status().at(3), 1.0f);
}

}  // namespace
}  // namespace tps::test
