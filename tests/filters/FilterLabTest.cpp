#include <gtest/gtest.h>
#include <stdlib.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "FilterLab.h"
#include "Trace.h"

namespace filterlab {
namespace {

class TraceParsing : public ::testing::Test {
protected:
    bool parse(const std::string& text) {
        std::istringstream in(text);
        mError.clear();
        return Trace::parse(in, "t.csv", mTrace, mError);
    }
    std::vector<double> flat() const {
        std::vector<double> out;
        for (const Sample& s : mTrace.samples()) {
            out.push_back(s.ms);
            out.push_back(s.value);
        }
        return out;
    }

    Trace mTrace;
    std::string mError;
};

TEST_F(TraceParsing, AcceptsCommentsHeaderBlanksAndCrlf) {
    ASSERT_TRUE(
            parse("# recorded indoors\n\nmilliseconds,lux\r\n0,1.5\r\n  50 , 2e3 \n"
                  "# note\n50,7\n120.5,-1\n"))
            << mError;
    EXPECT_EQ("lux", mTrace.valueName());
    EXPECT_EQ((std::vector<double>{0, 1.5, 50, 2000, 50, 7, 120.5, -1}), flat());

    ASSERT_TRUE(parse("10,20")) << mError;
    EXPECT_EQ("", mTrace.valueName());
    EXPECT_EQ((std::vector<double>{10, 20}), flat());
}

TEST_F(TraceParsing, ErrorsNameTheFileAndLine) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
            {"0,1\n5\n", "t.csv:2: expected two comma-separated fields, got \"5\""},
            {"0,1,2\n", "t.csv:1: expected two comma-separated fields, got \"0,1,2\""},
            {"# c\n0,1\nabc,2\n", "t.csv:3: time \"abc\" is not a number"},
            {"0,1\n1,lots\n", "t.csv:2: value \"lots\" is not a number"},
            {"0,\n", "t.csv:1: value \"\" is not a number"},
            {"0,nan\n", "t.csv:1: value \"nan\" is not a number"},
            {"0,1e999\n", "t.csv:1: value \"1e999\" is not a number"},
            {"12x,1\n", "t.csv:1: time \"12x\" is not a number"},
            {"ms,lux\nms,lux\n", "t.csv:2: time \"ms\" is not a number"},
            {"0,1\nms,lux\n", "t.csv:2: time \"ms\" is not a number"},
            {"0,1\n100,2\n99.5,3\n", "t.csv:3: time goes backwards (99.5 ms after 100 ms)"},
            {"ms,\n", "t.csv:1: header names no value column"},
            {"", "t.csv: no samples"},
            {"# only\nms,lux\n", "t.csv: no samples"},
    };
    for (const Case& c : cases) {
        EXPECT_FALSE(parse(c.text)) << c.text;
        EXPECT_EQ(c.error, mError) << c.text;
    }
}

// Runs the tool on files in a private directory.
class FilterLabRun : public ::testing::Test {
protected:
    void SetUp() override {
        std::string pattern = (std::filesystem::temp_directory_path() / "filterlab-XXXXXX");
        ASSERT_NE(nullptr, mkdtemp(pattern.data()));
        mDir = pattern;
    }
    void TearDown() override { std::filesystem::remove_all(mDir); }

    std::string file(const std::string& name, const std::string& text) {
        std::string path = mDir + "/" + name;
        std::ofstream(path) << text;
        return path;
    }
    int run(std::vector<std::string> args) {
        args.insert(args.begin(), "tps_filterlab");
        std::vector<const char*> argv;
        for (const std::string& a : args) argv.push_back(a.c_str());
        std::ostringstream out;
        std::ostringstream err;
        int status = runFilterLab(static_cast<int>(argv.size()), argv.data(), out, err);
        mOut = out.str();
        mErr = err.str();
        return status;
    }
    std::vector<std::string> csvLines() const {
        std::vector<std::string> lines;
        std::istringstream in(mOut);
        std::string line;
        while (std::getline(in, line)) lines.push_back(line);
        return lines;
    }

    std::string mDir;
    std::string mOut;
    std::string mErr;
};

TEST_F(FilterLabRun, UsageErrorsExitWithTwo) {
    std::string trace = file("t.csv", "0,1\n");
    const std::vector<std::vector<std::string>> bad = {
            {},
            {"--lux", trace, "--brightness", trace},
            {"--lux"},
            {"--lux", trace, "--frobnicate"},
            {"--lux", trace, "--rise", "fast"},
            {"--lux", trace, "--fall="},
            {"--lux", trace, "--poll", "-5"},
            {"--brightness", trace, "--rise", "0.1"},
            {"--brightness", trace, "--min-interval=10"},
            {"--lux", trace, "--csv="},
    };
    for (const auto& args : bad) {
        EXPECT_EQ(2, run(args)) << testing::PrintToString(args);
        EXPECT_NE(std::string::npos, mErr.find("--help")) << mErr;
        EXPECT_EQ("", mOut);
    }
    EXPECT_EQ(0, run({"--help"}));
    EXPECT_EQ(0u, mOut.rfind("Usage: tps_filterlab", 0));
}

TEST_F(FilterLabRun, BadInputExitsWithOneNamingFileAndLine) {
    std::string missing = mDir + "/absent.csv";
    EXPECT_EQ(1, run({"--lux", missing}));
    EXPECT_EQ("tps_filterlab: " + missing + ": cannot open: No such file or directory\n", mErr);

    std::string broken = file("broken.csv", "ms,lux\n0,10\n60,ten\n");
    EXPECT_EQ(1, run({"--lux", broken}));
    EXPECT_EQ("tps_filterlab: " + broken + ":3: value \"ten\" is not a number\n", mErr);
    EXPECT_EQ("", mOut);

    std::string good = file("good.csv", "0,10\n");
    EXPECT_EQ(1, run({"--lux", good, "--svg", mDir + "/no/such/dir/plot.svg"}));
    EXPECT_NE(std::string::npos, mErr.find("plot.svg: cannot write")) << mErr;
}

TEST_F(FilterLabRun, AmbientReplayHonoursTheMinimumInterval) {
    std::string trace = file("lux.csv", "ms,lux\n1000,100\n1020,900\n1060,900\n");
    ASSERT_EQ(0, run({"--lux", trace})) << mErr;
    auto lines = csvLines();
    ASSERT_EQ(4u, lines.size()) << mOut;
    EXPECT_EQ("milliseconds,input,output", lines[0]);
    EXPECT_EQ("1000,100,100", lines[1]);  // first sample, no time elapsed: exact
    EXPECT_EQ("1020,900,100", lines[2]);  // 20 ms later: held
    EXPECT_NE("1060,900,100", lines[3]);  // 60 ms after the filter was built: moves up

    // A 10 ms interval lets the second sample through; a huge rise takes the input whole.
    ASSERT_EQ(0, run({"--lux", trace, "--min-interval=10", "--rise", "1000"})) << mErr;
    lines = csvLines();
    ASSERT_EQ(4u, lines.size());
    EXPECT_EQ(0u, lines[2].rfind("1020,900,899.9", 0)) << lines[2];
}

TEST_F(FilterLabRun, PollingRepeatsTheLatestSampleOnAFixedGrid) {
    std::string trace = file("b.csv", "0,100\n25,0\n100,0\n");
    ASSERT_EQ(0, run({"--brightness", trace, "--poll", "50"})) << mErr;
    auto lines = csvLines();
    ASSERT_EQ(4u, lines.size()) << mOut;
    EXPECT_EQ("0,100,100", lines[1]);
    EXPECT_EQ("50,0,80", lines[2]);
    EXPECT_EQ("100,0,64", lines[3]);
}

}  // namespace
}  // namespace filterlab
