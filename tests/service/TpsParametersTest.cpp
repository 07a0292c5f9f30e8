#include "ServiceTestSupport.h"

namespace tps::test {
namespace {

using Floats = std::vector<float>;
using Pairs = std::map<std::string, std::string>;

TEST_F(TpsTest, BrightnessKeysAcceptZeroTo255Only) {
    // The values reach the status through BLU mode 0 (brightness) and 1 (adjusted).
    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    mTps->enableSensorReader(true, false);
    struct Case {
        const char* text;
        float reported;
    };
    const Case brightness[] = {
            {"brightness=255", 255}, {"brightness=0", 0},   {"brightness=256", 0},
            {"brightness=-1", 0},    {"brightness=17", 17}, {"brightness=4294967314", 18},
            {"brightness=x", 18},    {"brightness=", 18},   {"brightness=12abc", 12},
            {"brightness= 13", 13},
    };
    for (const Case& c : brightness) {
        set(c.text);
        EXPECT_EQ(status().at(0), c.reported) << c.text;
    }

    peer().setBluMode(1);
    const Case adjusted[] = {
            {"adjustedBrightness=256", 13},
            {"adjustedBrightness=-5", 13},
            {"adjustedBrightness=255", 255},
            {"adjustedBrightness=0", 0},
    };
    for (const Case& c : adjusted) {
        set(c.text);
        EXPECT_EQ(status().at(0), c.reported) << c.text;
    }
}

TEST_F(TpsTest, PqModeIsStoredAndPersisted) {
    mProperties.setLogLevel(3);
    set("pqMode=2");
    EXPECT_EQ(peer().mode(), 2);
    EXPECT_EQ(mProperties.get("persist.vendor.tavixp.mode"), "2");
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Set Property : 2, ret: 0"));

    for (const char* rejected : {"pqMode=3", "pqMode=-1", "pqMode=abc", "pqMode"}) {
        set(rejected);
        EXPECT_EQ(peer().mode(), 2) << rejected;
        EXPECT_EQ(mProperties.get("persist.vendor.tavixp.mode"), "2") << rejected;
    }

    ASSERT_TRUE(mTps->updateParams(2, 0).isOk());
    EXPECT_EQ(peer().mode(), 0);
    EXPECT_EQ(mProperties.get("persist.vendor.tavixp.mode"), "0");
    ASSERT_TRUE(mTps->updateParams(2, 3).isOk());
    ASSERT_TRUE(mTps->updateParams(2, -1).isOk());
    EXPECT_EQ(peer().mode(), 0);

    // The mode survives a restart of the service.
    set("pqMode=1");
    makeService();
    EXPECT_EQ(peer().mode(), 1);
}

TEST_F(TpsTest, DisplayIdChecksTheReaderOnlyOnChange) {
    mTps->enableSensorReader(true, false);
    ASSERT_EQ(FakeReader::snapshot().checkedDisplays, std::vector<int>{0});

    set("displayID=1");
    set("displayID=1");
    ASSERT_TRUE(mTps->updateParams(3, 1).isOk());
    EXPECT_EQ(FakeReader::snapshot().checkedDisplays, (std::vector<int>{0, 1}));
    EXPECT_EQ(peer().displayId(), 1);

    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    ASSERT_TRUE(mTps->updateParams(3, 0).isOk());
    EXPECT_FALSE(peer().hasBrightnessNode());
    EXPECT_EQ(status().at(3), 0.0f);

    set("displayID=-1");
    ASSERT_TRUE(mTps->updateParams(3, -1).isOk());
    EXPECT_EQ(peer().displayId(), 0);

    // updateParams keeps the low 32 bits of a large id, as the wire's long is cut to int.
    ASSERT_TRUE(mTps->updateParams(3, 0x100000002LL).isOk());
    EXPECT_EQ(peer().displayId(), 2);
    ASSERT_TRUE(mTps->updateParams(3, 0x80000000LL).isOk());
    EXPECT_EQ(peer().displayId(), INT32_MIN);
    EXPECT_EQ(FakeReader::snapshot().checkedDisplays.back(), INT32_MIN);
}

TEST_F(TpsTest, DisplaySizeNeedsTwoNonNegativeItems) {
    struct Case {
        const char* text;
        float width;
        float height;
    };
    const Case cases[] = {
            {"displaySize=1080", 0, 0},         {"displaySize=1080,2400,7", 1080, 2400},
            {"displaySize=-1,100", 1080, 2400}, {"displaySize=100,-1", 1080, 2400},
            {"displaySize=720,x", 1080, 2400},  {"displaySize=720,1600,", 720, 1600},
            {"displaySize=,1", 720, 1600},
    };
    for (const Case& c : cases) {
        set(c.text);
        std::vector<float> values = status();
        EXPECT_EQ(values.at(5), c.width) << c.text;
        EXPECT_EQ(values.at(6), c.height) << c.text;
    }

    ASSERT_TRUE(mTps->updateParams(5, 1440).isOk());
    ASSERT_TRUE(mTps->updateParams(6, 3200).isOk());
    ASSERT_TRUE(mTps->updateParams(6, -3).isOk());
    EXPECT_EQ(status(), (Floats{255, 0, 0, 0, 0, 1440, 3200}));
}

TEST_F(TpsTest, ListKeysShareOneAccumulatingVector) {
    set("displaySize=1080,2400;displayIDs=0,1");
    EXPECT_EQ(pairsOf(get("displayIDs")), (Pairs{{"displayIDs", "1080,2400,0,1"}}));
    std::vector<float> values = status();
    EXPECT_EQ(values.at(5), 1080.0f);

    set("pqModes=3;displayIDs=5");
    EXPECT_EQ(pairsOf(get("pqModes;displayIDs")), (Pairs{{"pqModes", "3"}, {"displayIDs", "3,5"}}));

    // Items read before a bad one stay in the vector for the next key.
    set("pqModes=7,x;displayIDs=8");
    EXPECT_EQ(pairsOf(get("pqModes;displayIDs")), (Pairs{{"pqModes", "3"}, {"displayIDs", "7,8"}}));

    set("displaySize=1,2,3;pqModes=4");
    EXPECT_EQ(pairsOf(get("pqModes")), (Pairs{{"pqModes", "1,2,3,4"}}));

    ASSERT_TRUE(mTps->updateDisplayIDs({3, 1, 3}).isOk());
    EXPECT_EQ(get("displayIDs"), "displayIDs=3,1,3");
    ASSERT_TRUE(mTps->updateDisplayIDs({}).isOk());
    EXPECT_EQ(get("displayIDs"), "displayIDs=");
}

TEST_F(TpsTest, GetParametersAnswersTheRequestedKeys) {
    set("brightness=100;pqMode=1;displayID=1;displaySize=1080,2400;pqModes=0,1,2");
    EXPECT_EQ(pairsOf(get("all")), (Pairs{{"brightness", "255"},
                                          {"pqMode", "1"},
                                          {"displayID", "1"},
                                          {"ambientLux", "0.000000"},
                                          {"displayWidth", "1080"},
                                          {"displayHeight", "2400"}}));
    EXPECT_EQ(get("all;"), "") << "only the exact text all means all";
    EXPECT_EQ(get(" all"), "");
    EXPECT_EQ(get("foo"), "");
    EXPECT_EQ(pairsOf(get("pqMode=9;foo;displayHeight")),
              (Pairs{{"pqMode", "1"}, {"displayHeight", "2400"}}))
            << "values given with keys are ignored";
    EXPECT_EQ(pairsOf(get("pqModes")), (Pairs{{"pqModes", "1080,2400,0,1,2"}}))
            << "the display size items carry over into the next list";

    // With a reader the reply carries the refreshed values.
    FakeReader::update([](FakeReaderState& s) { s.lux = 12.5f; });
    set("register_SDRC2Processor=0");
    Pairs pairs = pairsOf(get("all"));
    EXPECT_EQ(pairs["ambientLux"], "12.500000");
    EXPECT_EQ(pairs["brightness"], "100");
}

TEST_F(TpsTest, FilterSpeedsReachOnlyALiveReader) {
    set("filterRise=0.5;filterFall=0.25");
    mTps->enableSensorReader(true, true);
    EXPECT_TRUE(FakeReader::snapshot().riseSpeeds.empty()) << "dropped without a reader";

    set("filterRise=0.5;filterFall=0.25");
    set("filterRise=abc");
    FakeReaderState reader = FakeReader::snapshot();
    EXPECT_EQ(reader.riseSpeeds, std::vector<float>{0.5f});
    EXPECT_EQ(reader.fallSpeeds, std::vector<float>{0.25f});
}

TEST_F(TpsTest, UpdateParamsKnowsFiveIds) {
    mProperties.setLogLevel(2);
    ASSERT_TRUE(mTps->updateParams(0, 300).isOk());
    ASSERT_TRUE(mTps->updateParams(0, -1).isOk());
    EXPECT_TRUE(mLog.hasNoneContaining("unrecognized")) << "known ids out of range are silent";
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "update param id 0 - value 300"));

    for (int64_t id : {1, 4, 7, -1}) {
        mLog.clear();
        ASSERT_TRUE(mTps->updateParams(id, 1).isOk());
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, kTag,
                                 "unrecognized paramId: " + std::to_string(id)));
    }

    FakeReader::update([](FakeReaderState& s) { s.nodeCheckResult = false; });
    mTps->enableSensorReader(true, false);
    ASSERT_TRUE(mTps->updateParams(0, 255).isOk());
    EXPECT_EQ(status().at(0), 255.0f);
    ASSERT_TRUE(mTps->updateParams(0, 0).isOk());
    EXPECT_EQ(status().at(0), 0.0f);
    ASSERT_TRUE(mTps->updateParams(0, 0x100000001LL).isOk()) << "unsigned test on 64 bits";
    EXPECT_EQ(status().at(0), 0.0f);
}

TEST_F(TpsTest, SetParametersLogsItsInputAtDebug) {
    mProperties.setLogLevel(2);
    set("pqMode=1;brightness=3");
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_DEBUG, kTag, "setParameters: pqMode=1;brightness=3"));
    mProperties.setLogLevel(1);
    mLog.clear();
    set("pqMode=1");
    EXPECT_TRUE(mLog.hasNoneContaining("setParameters"));
}

}  // namespace
}  // namespace tps::test
