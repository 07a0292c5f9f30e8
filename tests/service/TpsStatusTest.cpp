#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

using Floats = std::vector<float>;

TEST_F(TpsTest, StatusWithoutReaderReportsStoredValues) {
    EXPECT_EQ(status(), (Floats{255, 0, 0, 0, 0, 0, 0}));

    set("brightness=100;pqMode=2;displayID=1;displaySize=1080,2400");
    EXPECT_EQ(status(), (Floats{255, 0, 2, 1, 0, 1080, 2400}))
            << "without a reader the brightness is not recomputed";
    EXPECT_TRUE(FakeReader::snapshot().ambientLuxFiltered.empty());

    // The output is replaced, not appended to.
    std::vector<float> values = {1, 2, 3};
    ASSERT_TRUE(mTps->getTavixPrismStatus(&values).isOk());
    EXPECT_EQ(values.size(), 7u);
}

TEST_F(TpsTest, StatusRefreshesLuxFromTheReader) {
    FakeReader::update([](FakeReaderState& s) {
        s.lux = 312.5f;
        s.filteredLux = 40.25f;
    });
    mTps->enableSensorReader(true, false);
    EXPECT_EQ(status().at(4), 312.5f);
    mTps->enableSensorReader(true, true);
    EXPECT_EQ(status().at(4), 40.25f);
    EXPECT_EQ(FakeReader::snapshot().ambientLuxFiltered, (std::vector<bool>{false, true}));

    // Closing the session keeps the last lux.
    mTps->enableSensorReader(false, true);
    mTps->enableSensorReader(false, true);
    FakeReader::update([](FakeReaderState& s) { s.filteredLux = 1.0f; });
    EXPECT_EQ(status().at(4), 40.25f);
}

TEST_F(TpsTest, BluModeZeroUsesTheClientBrightness) {
    mProperties.setLogLevel(3);
    FakeReader::update([](FakeReaderState& s) { s.nodeBrightness = 127.62f; });
    mTps->enableSensorReader(true, false);
    ASSERT_EQ(peer().bluMode(), 0);

    // Nothing set yet: the node gives the value.
    EXPECT_EQ(status().at(0), 127.0f);
    EXPECT_TRUE(mLog.has(ANDROID_LOG_VERBOSE, kTag, "BLUmode = 0, brightness = 255"));

    set("brightness=128;adjustedBrightness=30");
    mLog.clear();
    EXPECT_EQ(status().at(0), 128.0f) << "mode 0 ignores the HDR-ratio brightness";
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "BLUmode = 0, brightness = 128"));
    EXPECT_TRUE(FakeReader::snapshot().filteredBrightnessInputs.empty()) << "filter is off";
}

TEST_F(TpsTest, BluModeOnePrefersTheHdrRatioBrightness) {
    mProperties.setLogLevel(3);
    peer().setBluMode(1);
    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    mTps->enableSensorReader(true, false);

    // Neither value set and no node: the last value stays, with the error.
    EXPECT_EQ(status().at(0), 255.0f);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                             "Can't get realtime Brightness, use default value"));

    set("brightness=128");
    mLog.clear();
    EXPECT_EQ(status().at(0), 128.0f);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag,
                             "BLUmode = 1, but can't get hdr ratio brightness, use blacklight "
                             "brightness = 128"));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "BLUmode = 1, brightness = 128"));

    set("adjustedBrightness=64");
    mLog.clear();
    EXPECT_EQ(status().at(0), 64.0f);
    EXPECT_TRUE(mLog.hasNoneContaining("blacklight"));
}

TEST_F(TpsTest, FilteredBrightnessIsTruncatedTowardZero) {
    FakeReader::update([](FakeReaderState& s) { s.filteredBrightness = 127.9f; });
    mTps->enableSensorReader(true, true);
    set("brightness=200");
    EXPECT_EQ(status().at(0), 127.0f);
    EXPECT_EQ(FakeReader::snapshot().filteredBrightnessInputs, std::vector<float>{200.0f});

    // Values a float cannot hold in 32 bits saturate instead of being undefined.
    FakeReader::update([](FakeReaderState& s) { s.filteredBrightness = 1e20f; });
    EXPECT_EQ(status().at(0), 2147483647.0f);
    FakeReader::update([](FakeReaderState& s) { s.filteredBrightness = -0.9f; });
    EXPECT_EQ(status().at(0), 0.0f);
}

TEST_F(TpsTest, BluModeTwoReadsTheNode) {
    mProperties.setLogLevel(3);
    peer().setBluMode(2);
    FakeReader::update([](FakeReaderState& s) {
        s.nodeBrightness = 127.62f;
        s.filteredNodeBrightness = 90.5f;
    });
    set("brightness=128;adjustedBrightness=64");
    mTps->enableSensorReader(true, false);
    EXPECT_EQ(status().at(0), 127.0f) << "mode 2 ignores what clients set";
    EXPECT_TRUE(mLog.has(ANDROID_LOG_VERBOSE, kTag, "BLUmode = 2, brightness = 255"));
    mTps->enableSensorReader(true, true);
    EXPECT_EQ(status().at(0), 90.0f);
    EXPECT_EQ(FakeReader::snapshot().brightnessFiltered, (std::vector<bool>{false, true}));

    // A display without a node: the brightness stays at its last value and the error repeats.
    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    set("displayID=1");
    mLog.clear();
    EXPECT_EQ(status().at(0), 90.0f);
    EXPECT_EQ(status().at(0), 90.0f);
    EXPECT_EQ(
            mLog.count(ANDROID_LOG_ERROR, kTag, "Can't get realtime Brightness, use default value"),
            2u);
}

}  // namespace
}  // namespace tps::test
