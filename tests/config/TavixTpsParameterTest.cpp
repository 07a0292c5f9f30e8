#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "LogCapture.h"
#include "TavixTpsParameter.h"

namespace tps::test {
namespace {

constexpr char kServiceTag[] = "TavixPrismAIDLService";
constexpr char kParseError[] = "error in parsing keyValuePairs";

// Splits toString() output back into pairs; the order of pairs is unspecified.
std::map<std::string, std::string> pairsOf(const TavixTpsParameter& p) {
    std::map<std::string, std::string> out;
    std::string text = p.toString();
    size_t pos = 0;
    while (!text.empty()) {
        size_t semi = text.find(';', pos);
        std::string pair = text.substr(pos, semi == std::string::npos ? semi : semi - pos);
        size_t eq = pair.find('=');
        EXPECT_NE(std::string::npos, eq) << text;
        EXPECT_TRUE(out.emplace(pair.substr(0, eq), pair.substr(eq + 1)).second) << text;
        if (semi == std::string::npos) break;
        pos = semi + 1;
    }
    return out;
}

using Pairs = std::map<std::string, std::string>;

class ParameterParsing : public LoggingTest {};

TEST_F(ParameterParsing, TokensKeysAndValues) {
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairsOf(TavixTpsParameter("a=1;b=2")));
    EXPECT_EQ((Pairs{{"a", "1"}, {"b", "2"}}), pairsOf(TavixTpsParameter(";;a=1;;b=2;")));
    EXPECT_EQ((Pairs{{"a", "7"}}), pairsOf(TavixTpsParameter("a=1;a=7")));
    EXPECT_EQ((Pairs{{"a", "b=c"}}), pairsOf(TavixTpsParameter("a=b=c")));
    EXPECT_EQ((Pairs{{"", "5"}}), pairsOf(TavixTpsParameter("=5")));
    EXPECT_EQ((Pairs{{" a ", " 1\n"}}), pairsOf(TavixTpsParameter(" a = 1\n")));
    EXPECT_EQ(0u, mLog.lines().size()) << mLog.dump();
}

TEST_F(ParameterParsing, EmptyInputLogsOnceAndGivesEmptySet) {
    for (const char* input : {"", ";", ";;;"}) {
        mLog.clear();
        TavixTpsParameter p(input);
        EXPECT_EQ("", p.toString());
        EXPECT_FALSE(p.containsKey(""));
        EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, "TavixTpsParameter", kParseError)) << input;
    }
    // The message ignores the service's log level.
    mProperties.setLogLevel(0);
    mLog.clear();
    TavixTpsParameter p("");
    EXPECT_TRUE(mLog.hasOnce(ANDROID_LOG_ERROR, "TavixTpsParameter", kParseError));
    // A reply under construction starts empty without complaint.
    mLog.clear();
    TavixTpsParameter reply;
    EXPECT_EQ("", reply.toString());
    EXPECT_EQ(0u, mLog.lines().size());
}

TEST_F(ParameterParsing, KeyWithoutValueIsPresentButNeverTyped) {
    TavixTpsParameter p("brightness");
    EXPECT_TRUE(p.containsKey("brightness"));
    int i = 5;
    float f = 5;
    std::vector<int> list{9};
    EXPECT_FALSE(p.get<int>("brightness", i));
    EXPECT_FALSE(p.get<float>("brightness", f));
    EXPECT_FALSE(p.get<int>("brightness", list));
    EXPECT_FALSE(p.get<int>("absent", i));
    EXPECT_EQ(5, i);
    EXPECT_EQ(5.0f, f);
    EXPECT_EQ(std::vector<int>{9}, list);
    EXPECT_EQ("brightness=", p.toString());
    EXPECT_EQ(0u, mLog.lines().size()) << mLog.dump();
}

class ParameterGetters : public LoggingTest {
protected:
    // Returns "<ok>:<value>" and the log lines as "P:text" joined by '|'.
    std::string getInt(const std::string& value) {
        TavixTpsParameter p("k=" + value);
        mLog.clear();
        int out = -12345;
        bool ok = p.get<int>("k", out);
        return std::string(ok ? "true:" : "false:") + std::to_string(out) + logText();
    }
    std::string logText() {
        std::string s;
        for (const LogLine& line : mLog.lines()) {
            EXPECT_EQ(kServiceTag, line.tag);
            s += std::string(line.priority == ANDROID_LOG_ERROR ? "|E:" : "|W:") + line.text;
        }
        return s;
    }
};

TEST_F(ParameterGetters, IntegerConversionOutcomes) {
    EXPECT_EQ("true:42", getInt("42"));
    EXPECT_EQ("true:-42", getInt("  -42"));
    EXPECT_EQ("true:7", getInt("+7 \t\n"));
    EXPECT_EQ("true:2147483647", getInt("2147483647"));
    EXPECT_EQ("true:1|W:tryParseIntegralString: out of range: 4294967297", getInt("4294967297"));
    EXPECT_EQ("true:-2147483648|W:tryParseIntegralString: out of range: 2147483648",
              getInt("2147483648"));
    EXPECT_EQ("false:-12345|E:try to get Integral value failed from: 99999999999999999999",
              getInt("99999999999999999999"));
    EXPECT_EQ("false:-12345|E:try to get Integral value failed from: abc", getInt("abc"));
    EXPECT_EQ("true:0|W:tryParseIntegralString: extra characters: 0x10", getInt("0x10"));
    EXPECT_EQ("true:12|W:tryParseIntegralString: extra characters: 12abc 5", getInt("12abc 5"));
    EXPECT_EQ("true:12|W:tryParseIntegralString: extra characters: 12 x", getInt("12 x"));
}

TEST_F(ParameterGetters, BlanksAroundKeysStayPartOfTheKey) {
    TavixTpsParameter p(" a = 1");
    int out = 0;
    EXPECT_FALSE(p.get<int>("a", out));
    EXPECT_TRUE(p.get<int>(" a ", out));
    EXPECT_EQ(1, out);
}

TEST_F(ParameterGetters, IntegerListOutcomes) {
    struct Case {
        const char* value;
        bool ok;
        std::vector<int> list;
        const char* log;
    };
    const Case cases[] = {
            {"1,2,3", true, {1, 2, 3}, ""},
            {"1,2,", true, {1, 2}, ""},
            {"5", true, {5}, ""},
            {" 3,3 ", true, {3, 3}, ""},
            {"1,,2", false, {1}, "|E:try to get Integral value failed from: 1,,2"},
            {",1", false, {}, "|E:try to get Integral value failed from: ,1"},
            {"1,x,3", false, {1}, "|E:try to get Integral value failed from: 1,x,3"},
            {"4294967297,2a",
             true,
             {1, 2},
             "|W:tryParseIntegralString: out of range: 4294967297"
             "|W:tryParseIntegralString: extra characters: 2a"},
    };
    for (const Case& c : cases) {
        TavixTpsParameter p(std::string("k=") + c.value);
        mLog.clear();
        std::vector<int> out{-1};
        EXPECT_EQ(c.ok, p.get<int>("k", out)) << c.value;
        std::vector<int> want{-1};
        want.insert(want.end(), c.list.begin(), c.list.end());
        EXPECT_EQ(want, out) << c.value;
        EXPECT_EQ(c.log, logText()) << c.value;
    }
}

TEST_F(ParameterGetters, FloatConversionOutcomes) {
    auto getFloat = [this](const std::string& value, float& out) {
        TavixTpsParameter p("k=" + value);
        mLog.clear();
        return p.get<float>("k", out);
    };
    float out = -1;
    EXPECT_TRUE(getFloat("0.5", out));
    EXPECT_EQ(0.5f, out);
    EXPECT_EQ("", logText());

    EXPECT_TRUE(getFloat("1e39", out));
    EXPECT_TRUE(std::isinf(out) && out > 0);
    EXPECT_EQ("|W:tryParseFloatingString: out of range: 1e39", logText());

    EXPECT_TRUE(getFloat("-1e39", out));
    EXPECT_TRUE(std::isinf(out) && out < 0);

    EXPECT_TRUE(getFloat("3.4028234663852886e38", out));
    EXPECT_EQ("", logText());

    EXPECT_TRUE(getFloat("2.5kg", out));
    EXPECT_EQ(2.5f, out);
    EXPECT_EQ("|W:tryParseFloatingString: extra characters: 2.5kg", logText());

    out = -1;
    EXPECT_FALSE(getFloat("abc", out));
    EXPECT_EQ(-1.0f, out);
    EXPECT_EQ("|E:try to get Floating value failed from: abc", logText());

    EXPECT_FALSE(getFloat("1e400", out));
    EXPECT_EQ("|E:try to get Floating value failed from: 1e400", logText());
}

TEST_F(ParameterGetters, MessagesIgnoreTheLogLevel) {
    mProperties.setLogLevel(0);
    EXPECT_EQ("true:1|W:tryParseIntegralString: out of range: 4294967297", getInt("4294967297"));
}

TEST(ParameterAdd, ListsAreJoinedAndReplaceEarlierValues) {
    TavixTpsParameter p;
    p.add<int>("k", {1, -2, 3});
    EXPECT_EQ("k=1,-2,3", p.toString());
    p.add<int>("k", {});
    EXPECT_EQ("k=", p.toString());
    p.add<int>("k", {INT32_MIN});
    std::vector<int> back;
    EXPECT_TRUE(p.get<int>("k", back));
    EXPECT_EQ(std::vector<int>{INT32_MIN}, back);
    p.add("lux", "12.500000");
    EXPECT_EQ((Pairs{{"k", "-2147483648"}, {"lux", "12.500000"}}), pairsOf(p));
}

}  // namespace
}  // namespace tps::test
