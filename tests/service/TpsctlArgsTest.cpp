#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "TpsctlArgs.h"
#include "TpsctlFormat.h"

namespace tpsctl {
namespace {

Options parsed(std::vector<std::string> args) {
    ParseResult result = parseArguments(args);
    EXPECT_TRUE(result.ok) << result.error;
    return result.options;
}

TEST(TpsctlArgsTest, CommandsCarryTheirArguments) {
    EXPECT_EQ(parsed({"status"}).timeoutSeconds, 5.0);
    EXPECT_EQ(parsed({"--timeout", "0.5", "status"}).timeoutSeconds, 0.5);
    EXPECT_EQ(parsed({"set", "brightness=128", "pqMode=1"}).text, "brightness=128;pqMode=1");
    EXPECT_EQ(parsed({"set", "Unregister_SDRC2Processor"}).text, "Unregister_SDRC2Processor");
    EXPECT_EQ(parsed({"get", "pqModes", "displayIDs"}).text, "pqModes;displayIDs");

    Options update = parsed({"update", "3", "-9223372036854775808"});
    EXPECT_EQ(update.paramId, 3);
    EXPECT_EQ(update.paramValue, INT64_MIN);

    EXPECT_EQ(parsed({"display-ids"}).command, Command::kDisplayIdsGet);
    Options ids = parsed({"display-ids", "set", "0,1,-2147483648"});
    EXPECT_EQ(ids.command, Command::kDisplayIdsSet);
    EXPECT_EQ(ids.displayIds, (std::vector<int32_t>{0, 1, INT32_MIN}));
    EXPECT_TRUE(parsed({"display-ids", "set", ""}).displayIds.empty()) << "'' empties the list";

    EXPECT_TRUE(parsed({"register"}).filter);
    EXPECT_FALSE(parsed({"register", "--no-filter"}).filter);
    EXPECT_EQ(parsed({"watch"}).statusIntervalMs, 0);
    EXPECT_EQ(parsed({"watch", "--status-interval", "250"}).statusIntervalMs, 250);
    EXPECT_EQ(parsed({"status", "-h"}).command, Command::kHelp);
}

TEST(TpsctlArgsTest, GarbageIsAUsageErrorNeverACall) {
    const std::vector<std::vector<std::string>> bad = {
            {},
            {"frobnicate"},
            {"--verbose", "status"},
            {"status", "extra"},
            {"set"},
            {"update", "0"},
            {"update", "x", "1"},
            {"update", "0", "12abc"},
            {"update", "0", "99999999999999999999"},
            {"display-ids", "set"},
            {"display-ids", "set", "1,,2"},
            {"display-ids", "set", "1,"},
            {"display-ids", "set", "1, 2"},
            {"display-ids", "set", "2147483648"},
            {"display-ids", "put", "1"},
            {"register", "--filtered"},
            {"watch", "--status-interval", "0"},
            {"watch", "--status-interval", "fast"},
            {"--timeout", "-1", "status"},
    };
    for (const auto& args : bad) {
        std::string joined;
        for (const auto& arg : args) joined += "'" + arg + "' ";
        ParseResult result = parseArguments(args);
        EXPECT_FALSE(result.ok) << joined;
        EXPECT_FALSE(result.error.empty()) << joined;
    }
}

TEST(TpsctlFormatTest, OutputIsLabelledSortedAndNamesFailures) {
    EXPECT_EQ(formatStatus({128, 0, 1, 0, 312.5f, 1080, 2400}),
              "brightness     128\nreserved       0\npqMode         1\ndisplayID      0\n"
              "ambientLux     312.50\ndisplayWidth   1080\ndisplayHeight  2400\n");
    EXPECT_NE(formatStatus({1, 2}).find("sent 2 values, expected 7"), std::string::npos);
    EXPECT_EQ(formatStatusLine({128, 0, 1, 0, 40.25f, 1080, 2400}),
              "lux 40.25  brightness 128  pqMode 1  display 0");
    EXPECT_EQ(formatReply("pqMode=1;brightness=255;displayIDs=0,1"),
              "brightness=255\ndisplayIDs=0,1\npqMode=1\n");
    EXPECT_EQ(formatReply(""), "");

    EXPECT_EQ(formatCallFailure("registerCallback", -7, 0, 0, ""),
              "registerCallback failed: exception -7 (EX_UNSUPPORTED_OPERATION)");
    EXPECT_EQ(formatCallFailure("getTavixPrismStatus", -129, -32, 0, ""),
              "getTavixPrismStatus failed: binder status -32 (STATUS_DEAD_OBJECT)");
    EXPECT_EQ(formatCallFailure("setParameters", -8, 0, 5, "busy"),
              "setParameters failed: service-specific error 5: busy");
}

}  // namespace
}  // namespace tpsctl
