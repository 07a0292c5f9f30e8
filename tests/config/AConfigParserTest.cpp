#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "AConfigParser.h"
#include "LogCapture.h"
#include "TestConfigPaths.h"

namespace tps {

class AConfigParserPeer {
public:
    static std::array<float, AConfigParser::kAmbientParamCount> ambient(const AConfigParser& p) {
        std::array<float, AConfigParser::kAmbientParamCount> out;
        std::copy(std::begin(p.mAmbientParams), std::end(p.mAmbientParams), out.begin());
        return out;
    }
    static bool hasDisplaySections(const AConfigParser& p) { return p.mHasDisplaySections; }
};

namespace test {
namespace {

constexpr char kTag[] = "TavixTPSConfigParser";
constexpr char kMissingId[] =
        "Display ID is missing in config file, please provide a valid display ID!";

using Ambient = std::array<float, AConfigParser::kAmbientParamCount>;
enum AmbientIndex {
    kAmbient,
    kSurroundReflection,
    kScreenReflection,
    kDelay,
    kFall,
    kRise,
    kRate,
    kFrontLux,
    kFrontLuxScale,
    kRearLumScale
};

class ConfigParser : public LoggingTest {
protected:
    void SetUp() override {
        mDir = mProperties.path() + "/cfg";
        std::filesystem::create_directories(mDir);
        for (size_t i = 0; i < kTestConfigPathCount; ++i) {
            std::string p = mDir + "/candidate" + std::to_string(i) + ".cfg";
            snprintf(gTestConfigPaths[i], sizeof(gTestConfigPaths[i]), "%s", p.c_str());
        }
    }
    void writeCandidate(size_t index, const std::string& text) {
        std::ofstream(gTestConfigPaths[index], std::ios::binary) << text;
    }
    // Parses `text` as the file content; the parser is built on no file first.
    AConfigParser parse(std::string text) {
        AConfigParser parser;
        parser.parseCfgBuffer(text);
        return parser;
    }

    std::string mDir;
};

TEST_F(ConfigParser, NoReadableFileLeavesDefaultsSilently) {
    AConfigParser parser;
    EXPECT_TRUE(parser.getDisplayIDs().empty());
    EXPECT_EQ(0, parser.getBLUMode());
    EXPECT_FALSE(AConfigParserPeer::hasDisplaySections(parser));
    EXPECT_EQ(Ambient{}, AConfigParserPeer::ambient(parser));
    EXPECT_EQ(0u, mLog.lines().size()) << mLog.dump();
}

TEST_F(ConfigParser, FirstExistingCandidateWins) {
    writeCandidate(2, "BLUMode = 2\n");
    writeCandidate(4, "BLUMode = 4\n");
    AConfigParser parser;
    EXPECT_EQ(2, parser.getBLUMode());
    EXPECT_EQ(std::vector<int>{0}, parser.getDisplayIDs());
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag,
                             std::string("Found config file at ") + gTestConfigPaths[2]));
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Parsing config file for default display"));
}

// A directory is readable, so it wins the search, and its seek offsets are not sizes.
TEST_F(ConfigParser, EmptyFileOrDirectoryIsFoundButGivesDefaults) {
    for (bool directory : {false, true}) {
        SCOPED_TRACE(directory ? "directory" : "empty file");
        mLog.clear();
        std::filesystem::remove_all(gTestConfigPaths[0]);
        if (directory) {
            std::filesystem::create_directories(std::string(gTestConfigPaths[0]) + "/sub");
        } else {
            writeCandidate(0, "");
        }
        AConfigParser parser;
        EXPECT_TRUE(parser.getDisplayIDs().empty());
        auto lines = mLog.lines();
        ASSERT_EQ(1u, lines.size()) << mLog.dump();
        EXPECT_EQ(std::string("Found config file at ") + gTestConfigPaths[0], lines[0].text);
    }
}

TEST_F(ConfigParser, ShippedExampleFile) {
    writeCandidate(0,
                   "TFrontLuxScale = 1.5   # ambient light tuning\n"
                   "TFrontLux = 100.0\n"
                   "TRearLumScale = 0.8\n"
                   "TScreenReflection = 0.02\n"
                   "TSurroundReflection = 0.18\n"
                   "ALOperationalRate = 10\n"
                   "ALDelayMilliSec = 200\n"
                   "ALResponseRise = 0.5\n"
                   "ALResponseFall = 0.1\n"
                   "BLUMode = 1\n"
                   "[Display]\n"
                   "DisplayID = 0   # built-in panel\n"
                   "[Display]\n"
                   "DisplayID = 1");
    AConfigParser parser;
    EXPECT_EQ((std::vector<int>{0, 1}), parser.getDisplayIDs());
    EXPECT_EQ(1, parser.getBLUMode());
    EXPECT_TRUE(AConfigParserPeer::hasDisplaySections(parser));
    Ambient want{};
    want[kFrontLuxScale] = 1.5f;
    want[kFrontLux] = 100.0f;
    want[kRearLumScale] = 0.8f;
    want[kScreenReflection] = 0.02f;
    want[kSurroundReflection] = 0.18f;
    want[kRate] = 10;
    want[kDelay] = 200;
    want[kRise] = 0.5f;
    want[kFall] = 0.1f;
    EXPECT_EQ(want, AConfigParserPeer::ambient(parser));

    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_INFO, kTag, "Parsing config file for specific displays"));
    // Level 2 hides the VERBOSE position line and the dump.
    EXPECT_TRUE(mLog.hasNoneContaining("Found last occurrence"));
    EXPECT_TRUE(mLog.hasNoneContaining("Cfg file is"));
    EXPECT_EQ(2u, mLog.countContaining(" for display "));
}

TEST_F(ConfigParser, MessagesFollowTheLogLevel) {
    const std::string text = "BLUMode = 1\n[Display]\nDisplayID = 3\n";
    mProperties.setLogLevel(4);
    parse(text);
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Cfg file is:\n" + text));
    // Working text: "BLUMode = 1\n" is 12 bytes before the section.
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_VERBOSE, kTag, "Found last occurrence at 12"));
    auto lines = mLog.lines();
    ASSERT_EQ(4u, lines.size()) << mLog.dump();
    EXPECT_EQ(ANDROID_LOG_INFO, lines[3].priority);
    EXPECT_EQ(0u, lines[3].text.rfind("Found config file 0x", 0)) << lines[3].text;
    EXPECT_NE(std::string::npos, lines[3].text.find(" for display 3"));

    mLog.clear();
    mProperties.setLogLevel(0);
    parse("[Display]\n");
    auto quiet = mLog.lines();
    ASSERT_EQ(1u, quiet.size()) << mLog.dump();
    EXPECT_EQ(ANDROID_LOG_ERROR, quiet[0].priority);
    EXPECT_EQ(kMissingId, quiet[0].text);
}

TEST_F(ConfigParser, DisplaySections) {
    struct Case {
        const char* text;
        std::vector<int> ids;
        bool sections;
        size_t missingErrors;
    };
    const Case cases[] = {
            {"BLUMode = 1\n", {0}, false, 0},
            {"[Display]\nWidth = 5\n", {}, true, 1},
            {"[Display]\nDisplayID = -3\n", {}, true, 1},
            {"[Display]\nDisplayID = 4\n[Display]\nDisplayID = 4\n", {4, 4}, true, 0},
            {"[Display]\nDisplayID = 2\n[Display]\n[Display]\nPanelID = 7\n", {2, 7}, true, 1},
            {"DisplayID = 9\n[Display]\nDisplayID = 1\n", {1}, true, 0},
            // The id must be spelt with blanks around "=" or at least before it.
            {"[Display]\nDisplayID=5\n[Display]\nDisplayID =6\n", {6}, true, 1},
            // A commented-out section does not count.
            {"#[Display]\n# DisplayID = 3\n", {0}, false, 0},
            {"[Display]\nDisplayID = 3 # main\n", {3}, true, 0},
            // A word that is no number does not end the search for the id.
            {"[Display]\nDisplayID = abc\nID = 8\n", {8}, true, 0},
            {"[Display]\nDisplayID = 99999999999\n", {}, true, 1},
    };
    for (const Case& c : cases) {
        mLog.clear();
        AConfigParser parser = parse(c.text);
        EXPECT_EQ(c.ids, parser.getDisplayIDs()) << c.text;
        EXPECT_EQ(c.sections, AConfigParserPeer::hasDisplaySections(parser)) << c.text;
        EXPECT_EQ(c.missingErrors, mLog.count(ANDROID_LOG_ERROR, kTag, kMissingId)) << c.text;
    }
}

TEST_F(ConfigParser, BluModeSpelling) {
    struct Case {
        const char* text;
        int mode;
    };
    const Case cases[] = {
            {"BLUMode = 1\n", 1},
            {"BLUMode =1\n", 1},
            {"BLUMode=1\n", 0},
            {"BLUMode 1\n", 0},
            {"BLUMode = 2 # mode\n", 2},
            {"BLUMode = 1\nBLUMode = 3\n", 3},
            {"BLUMode = 3\nBLUMode =\n", 3},
            {"BLUMode = 2x\n", 2},
            {"BLUMode = x\n", 0},
            {"  MyBLUMode = -1\n", -1},
            {"#BLUMode = 1\n", 0},
            {"PictureMode = 1\nBLUMode = 5\n", 5},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.mode, parse(c.text).getBLUMode()) << c.text;
    }
}

TEST_F(ConfigParser, AmbientScanQuirks) {
    auto ambient = [this](const char* text) { return AConfigParserPeer::ambient(parse(text)); };

    Ambient a = ambient("TFrontLux = 5\nTFrontLuxScale = 2\n");
    EXPECT_EQ(2.0f, a[kFrontLux]);
    EXPECT_EQ(2.0f, a[kFrontLuxScale]);

    a = ambient("TFrontLux=1\n");
    EXPECT_EQ(0.0f, a[kFrontLux]);
    a = ambient("TFrontLux =1\n");
    EXPECT_EQ(1.0f, a[kFrontLux]);

    // Any line mentioning the key sets it, also with another first word; the last one wins.
    a = ambient("Ambient = 3\nAmbientSection\n");
    EXPECT_EQ(0.0f, a[kAmbient]);
    a = ambient("Ambient = 3\nMyAmbient = 4\n");
    EXPECT_EQ(4.0f, a[kAmbient]);

    // The first "PictureMode" line is still scanned (its own number lands in every key it
    // mentions), nothing after it is.
    a =
            ambient("ALResponseRise = 0.5\nPictureMode = 1 ALResponseFall\nALResponseRise = 0.9\n"
                    "ALResponseFall = 0.7\n");
    EXPECT_EQ(0.5f, a[kRise]);
    EXPECT_EQ(1.0f, a[kFall]);

    a = ambient("TRearLumScale = 0.8 # TScreenReflection = 5\n");
    EXPECT_EQ(0.8f, a[kRearLumScale]);
    EXPECT_EQ(0.0f, a[kScreenReflection]);

    std::string longName(130, 'x');
    a = ambient((longName + "ALDelayMilliSec = 200\n").c_str());
    EXPECT_EQ(0.0f, a[kDelay]);
}

TEST_F(ConfigParser, PictureModeStopsOnlyTheAmbientScan) {
    AConfigParser parser =
            parse("ALOperationalRate = 10\nPictureMode = 2\nALOperationalRate = 20\nBLUMode = 1\n"
                  "[Display]\nDisplayID = 5\n");
    EXPECT_EQ(10.0f, AConfigParserPeer::ambient(parser)[kRate]);
    EXPECT_EQ(1, parser.getBLUMode());
    EXPECT_EQ(std::vector<int>{5}, parser.getDisplayIDs());
}

}  // namespace
}  // namespace test
}  // namespace tps
