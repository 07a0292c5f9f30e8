#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TpsctlArgs.h"
#include "TpsctlFormat.h"

namespace tpsctl {
namespace {

ParseResult parse(std::vector<std::string> args) {
    return parseArguments(args);
}

TEST(TpsctlArgsTest, CommandsParseIntoTheirCalls) {
    ParseResult status = parse({"status"});
    ASSERT_TRUE(status.ok) << status.error;
    EXPECT_EQ(status.options.command, Command::kStatus);
    EXPECT_EQ(status.options.timeoutSeconds, 5.0);

    ParseResult set = parse({"set", "brightness=128", "pqMode=1"});
    ASSERT_TRUE(set.ok) << set.error;
    EXPECT_EQ(set.options.command, Command::kSet);
    EXPECT_EQ(set.options.text, "brightness=128;pqMode=1");

    // A processor key without a value is legal text for the service.
    ParseResult unregister = parse({"set", "Unregister_SDRC2Processor"});
    ASSERT_TRUE(unregister.ok);
    EXPECT_EQ(unregister.options.text, "Unregister_SDRC2Processor");

    ParseResult get = parse({"get", "pqModes", "displayIDs"});
    ASSERT_TRUE(get.ok);
    EXPECT_EQ(get.options.command, Command::kGet);
    EXPECT_EQ(get.options.text, "pqModes;displayIDs");

    ParseResult update = parse({"update", "3", "-1"});
    ASSERT_TRUE(update.ok) << update.error;
    EXPECT_EQ(update.options.paramId, 3);
    EXPECT_EQ(update.options.paramValue, -1);

    ParseResult bigUpdate = parse({"update", "5", "9223372036854775807"});
    ASSERT_TRUE(bigUpdate.ok);
    EXPECT_EQ(bigUpdate.options.paramValue, INT64_MAX);

    EXPECT_EQ(parse({"display-ids"}).options.command, Command::kDisplayIdsGet);
    EXPECT_EQ(parse({"display-ids", "get"}).options.command, Command::kDisplayIdsGet);
    ParseResult ids = parse({"display-ids", "set", "0,1,-2"});
    ASSERT_TRUE(ids.ok) << ids.error;
    EXPECT_EQ(ids.options.command, Command::kDisplayIdsSet);
    EXPECT_EQ(ids.options.displayIds, (std::vector<int32_t>{0, 1, -2}));
    ParseResult empty = parse({"display-ids", "set", ""});
    ASSERT_TRUE(empty.ok);
    EXPECT_TRUE(empty.options.displayIds.empty());

    EXPECT_TRUE(parse({"register"}).options.filter);
    EXPECT_FALSE(parse({"register", "--no-filter"}).options.filter);
    EXPECT_TRUE(parse({"register", "--no-filter", "--filter"}).options.filter);
    EXPECT_EQ(parse({"unregister"}).options.command, Command::kUnregister);
    EXPECT_EQ(parse({"version"}).options.command, Command::kVersion);

    ParseResult watch = parse({"watch"});
    ASSERT_TRUE(watch.ok);
    EXPECT_EQ(watch.options.statusIntervalMs, 0);
    ParseResult polling = parse({"--timeout", "0.5", "watch", "--status-interval", "250"});
    ASSERT_TRUE(polling.ok) << polling.error;
    EXPECT_EQ(polling.options.command, Command::kWatch);
    EXPECT_EQ(polling.options.statusIntervalMs, 250);
    EXPECT_EQ(polling.options.timeoutSeconds, 0.5);

    EXPECT_EQ(parse({"--help"}).options.command, Command::kHelp);
    EXPECT_EQ(parse({"status", "-h"}).options.command, Command::kHelp);
}

TEST(TpsctlArgsTest, GarbageIsAUsageErrorNeverACall) {
    const std::vector<std::vector<std::string>> bad = {
            {},
            {"frobnicate"},
            {"--verbose", "status"},
            {"status", "extra"},
            {"set"},
            {"get"},
            {"update", "0"},
            {"update", "x", "1"},
            {"update", "0", "12abc"},
            {"update", "0", "99999999999999999999"},
            {"display-ids", "set"},
            {"display-ids", "set", "1,,2"},
            {"display-ids", "set", "1,"},
            {"display-ids", "set", "1, 2"},
            {"display-ids", "set", "a"},
            {"display-ids", "set", "2147483648"},
            {"display-ids", "put", "1"},
            {"register", "--filtered"},
            {"watch", "--status-interval"},
            {"watch", "--status-interval", "0"},
            {"watch", "--status-interval", "fast"},
            {"--timeout", "-1", "status"},
            {"--timeout", "soon", "status"},
    };
    for (const auto& args : bad) {
        std::string joined;
        for (const auto& arg : args) joined += "'" + arg + "' ";
        ParseResult result = parse(args);
        EXPECT_FALSE(result.ok) << joined;
        EXPECT_FALSE(result.error.empty()) << joined;
    }
}

TEST(TpsctlFormatTest, StatusIsLabelledInServiceOrder) {
    const std::string text = formatStatus({128, 0, 1, 0, 312.5f, 1080, 2400});
    EXPECT_EQ(text,
              "brightness     128\n"
              "reserved       0\n"
              "pqMode         1\n"
              "displayID      0\n"
              "ambientLux     312.50\n"
              "displayWidth   1080\n"
              "displayHeight  2400\n");
    EXPECT_NE(formatStatus({1, 2}).find("sent 2 values, expected 7"), std::string::npos);
    EXPECT_EQ(formatStatusLine({128, 0, 1, 0, 40.25f, 1080, 2400}),
              "lux 40.25  brightness 128  pqMode 1  display 0");
}

TEST(TpsctlFormatTest, ReplyPairsAreSortedOnePerLine) {
    EXPECT_EQ(formatReply("pqMode=1;brightness=255;displayIDs=0,1"),
              "brightness=255\ndisplayIDs=0,1\npqMode=1\n");
    EXPECT_EQ(formatReply("pqModes="), "pqModes=\n");
    EXPECT_EQ(formatReply(""), "");
}

TEST(TpsctlFormatTest, FailuresNameTheCallAndTheCode) {
    EXPECT_EQ(formatCallFailure("registerCallback", -7, 0, 0, ""),
              "registerCallback failed: exception -7 (EX_UNSUPPORTED_OPERATION)");
    EXPECT_EQ(formatCallFailure("getTavixPrismStatus", -129, -32, 0, ""),
              "getTavixPrismStatus failed: binder status -32 (STATUS_DEAD_OBJECT)");
    EXPECT_EQ(formatCallFailure("setParameters", -8, 0, 5, "busy"),
              "setParameters failed: service-specific error 5: busy");
}

}  // namespace
}  // namespace tpsctl
