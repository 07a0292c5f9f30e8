#include <cutils/properties.h>
#include <gtest/gtest.h>
#include <sys/system_properties.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <string>
#include <vector>

#include "LogCapture.h"

namespace tps::test {
namespace {

std::string getValue(const char* name) {
    char value[PROP_VALUE_MAX];
    __system_property_get(name, value);
    return value;
}

class Properties : public ::testing::Test {
protected:
    ScopedPropertyDir mStore;
};

TEST_F(Properties, GetAndSetFollowTheDeviceContract) {
    char value[PROPERTY_VALUE_MAX];
    EXPECT_EQ(0, __system_property_get("vendor.unset", value));
    EXPECT_STREQ("", value);
    EXPECT_EQ(3, property_get("vendor.unset", value, "def"));
    EXPECT_STREQ("def", value);
    EXPECT_EQ(0, property_get("vendor.unset", value, nullptr));
    EXPECT_STREQ("", value);

    EXPECT_EQ(0, __system_property_set("vendor.a", "hello"));
    EXPECT_EQ(5, __system_property_get("vendor.a", value));
    EXPECT_STREQ("hello", value);
    EXPECT_EQ(0, property_set("vendor.a", "again"));
    EXPECT_EQ(5, property_get("vendor.a", value, "def"));
    EXPECT_STREQ("again", value);

    // An empty value reads as unset for the convenience layer.
    EXPECT_EQ(0, property_set("vendor.a", ""));
    EXPECT_EQ(3, property_get("vendor.a", value, "def"));

    // A default longer than a value is cut to fit.
    std::string longDefault(200, 'd');
    EXPECT_EQ(PROPERTY_VALUE_MAX - 1, property_get("vendor.unset", value, longDefault.c_str()));
}

TEST_F(Properties, RefusesBadNamesLongValuesAndSecondReadOnlyWrite) {
    std::string max(PROP_VALUE_MAX - 1, 'v');
    EXPECT_EQ(0, __system_property_set("vendor.max", max.c_str()));
    EXPECT_EQ(max, getValue("vendor.max"));
    std::string tooLong(PROP_VALUE_MAX, 'v');
    EXPECT_EQ(-1, __system_property_set("vendor.long", tooLong.c_str()));
    EXPECT_EQ(-1, __system_property_set("vendor.max", tooLong.c_str()));
    EXPECT_EQ(max, getValue("vendor.max"));

    for (const char* bad : {"", ".hidden", "trailing.", "a..b", "a/b", "../escape", "sp ace"}) {
        EXPECT_EQ(-1, __system_property_set(bad, "1")) << bad;
    }
    EXPECT_EQ(-1, __system_property_set(nullptr, "1"));
    EXPECT_EQ(-1, __system_property_set("vendor.x", nullptr));
    EXPECT_EQ(0, __system_property_set("vendor.ok-name_1@x:y", "1"));

    EXPECT_EQ(0, __system_property_set("ro.vendor.once", "first"));
    EXPECT_EQ(-1, __system_property_set("ro.vendor.once", "second"));
    EXPECT_EQ("first", getValue("ro.vendor.once"));
}

TEST_F(Properties, TypedGettersParseLikeTheDevice) {
    struct Case {
        const char* value;
        int64_t want64;
        int32_t want32;
    };
    const Case cases[] = {
            {"42", 42, 42},
            {"-7", -7, -7},
            {"0x10", 16, 16},
            {"010", 8, 8},
            {"12abc", 12, 12},
            {" 5", 5, 5},
            {"abc", -1, -1},
            {"2147483648", 2147483648LL, -1},
            {"-2147483648", -2147483648LL, INT32_MIN},
            {"9223372036854775808", -1, -1},
    };
    for (const Case& c : cases) {
        mStore.set("vendor.n", c.value);
        EXPECT_EQ(c.want64, property_get_int64("vendor.n", -1)) << c.value;
        EXPECT_EQ(c.want32, property_get_int32("vendor.n", -1)) << c.value;
    }
    EXPECT_EQ(99, property_get_int32("vendor.unset", 99));

    for (const char* yes : {"1", "y", "yes", "on", "true"}) {
        mStore.set("vendor.b", yes);
        EXPECT_EQ(1, property_get_bool("vendor.b", 0)) << yes;
    }
    for (const char* no : {"0", "n", "no", "off", "false"}) {
        mStore.set("vendor.b", no);
        EXPECT_EQ(0, property_get_bool("vendor.b", 1)) << no;
    }
    for (const char* other : {"TRUE", "2", "yess"}) {
        mStore.set("vendor.b", other);
        EXPECT_EQ(7, property_get_bool("vendor.b", 7)) << other;
    }
}

TEST_F(Properties, StoreIsChosenPerCallAndSharedAcrossProcesses) {
    mStore.set("persist.vendor.kept", "1");
    {
        ScopedPropertyDir other;
        EXPECT_EQ("", getValue("persist.vendor.kept"));
        other.set("persist.vendor.kept", "2");
    }
    EXPECT_EQ("1", getValue("persist.vendor.kept"));

    // A value written by one process is seen by the next one started on the same store.
    pid_t child = fork();
    ASSERT_GE(child, 0);
    if (child == 0) _exit(__system_property_set("persist.vendor.child", "from-child") == 0 ? 0 : 1);
    int status = 0;
    waitpid(child, &status, 0);
    ASSERT_EQ(0, status);
    EXPECT_EQ("from-child", getValue("persist.vendor.child"));
}

// Several processes rewrite one property while others read it: every read must be one complete
// value. With in-place writes, readers would see empty or mixed values.
TEST_F(Properties, ConcurrentWritersFromSeveralProcessesNeverTearAValue) {
    constexpr int kWriters = 3;
    constexpr int kRounds = 300;
    std::vector<std::string> values;
    for (int i = 0; i < kWriters; ++i) values.emplace_back(80, static_cast<char>('a' + i));
    mStore.set("vendor.shared", values[0]);

    std::vector<pid_t> children;
    for (int w = 0; w < kWriters; ++w) {
        pid_t pid = fork();
        ASSERT_GE(pid, 0);
        if (pid == 0) {
            for (int r = 0; r < kRounds; ++r) {
                if (__system_property_set("vendor.shared", values[w].c_str()) != 0) _exit(1);
            }
            _exit(0);
        }
        children.push_back(pid);
    }
    int bad = 0;
    for (int r = 0; r < kRounds * 2; ++r) {
        std::string seen = getValue("vendor.shared");
        bool whole = false;
        for (const std::string& v : values) whole = whole || seen == v;
        if (!whole) ++bad;
    }
    for (pid_t pid : children) {
        int status = 0;
        waitpid(pid, &status, 0);
        EXPECT_EQ(0, status);
    }
    EXPECT_EQ(0, bad);
}

TEST_F(Properties, RacingReadOnlyWritersHaveExactlyOneWinner) {
    for (int round = 0; round < 20; ++round) {
        std::string name = "ro.vendor.race" + std::to_string(round);
        std::vector<pid_t> children;
        for (int w = 0; w < 4; ++w) {
            pid_t pid = fork();
            ASSERT_GE(pid, 0);
            if (pid == 0) {
                std::string value = "writer" + std::to_string(w);
                _exit(__system_property_set(name.c_str(), value.c_str()) == 0 ? 0 : 1);
            }
            children.push_back(pid);
        }
        int winners = 0;
        std::string winnerValue;
        for (size_t w = 0; w < children.size(); ++w) {
            int status = 0;
            waitpid(children[w], &status, 0);
            ASSERT_TRUE(WIFEXITED(status));
            if (WEXITSTATUS(status) == 0) {
                ++winners;
                winnerValue = "writer" + std::to_string(w);
            }
        }
        EXPECT_EQ(1, winners) << name;
        EXPECT_EQ(winnerValue, getValue(name.c_str()));
    }
}

}  // namespace
}  // namespace tps::test
